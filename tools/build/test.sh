#!/bin/bash
# test: build everything with checks and run all tests
#
# Builds the preset "checked" and runs ctest: the C++ tests as Windows programs under Wine, the
# store's tests in Python. Arguments go to ctest: test -R session runs what matches "session".
set -euo pipefail
. "$ROOT/tools/build/common.sh"

"$ROOT/tools/build/build.sh" checked
cd "$ROOT"
say "testing"
exec ctest --preset checked "$@" </dev/null
