#!/bin/bash
# pictures: take the pictures of the README and of the guide anew
#
# Runs ./quilldeck run on a virtual screen and puts the pictures into docs/pictures.
set -euo pipefail

unset DISPLAY
export QUILLDECK_PICTURES=$ROOT/docs/pictures
exec "$ROOT/tools/build/run.sh"
