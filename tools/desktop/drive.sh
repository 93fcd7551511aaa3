#!/bin/bash
# Inside a prefix: registers some kinds of files and the extension of the release, and runs the
# walkthrough with the arguments given. tools/build/run.sh calls it by wine-run --host.
set -euo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
bin=$(readlink -f "$here/../../build/release/bin")
"$here/../build/wine-run" regedit /S "Z:$here/file_types.reg"
"$here/../build/wine-run" regsvr32 /s "Z:$bin/Quilldeck.dll"
exec "$here/../build/wine-run" "$bin/walkthrough.exe" "$@"
