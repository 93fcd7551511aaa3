#!/bin/bash
# run: build, start the store, open the drive in the file manager and take the tour
#
# Builds the release and starts the local store with its demo account. Then the drive is opened in a
# window of the file manager: on your screen, where it stays until you close it (sign in as demo,
# password demo), or without one on a virtual screen, where it is used by mouse and keyboard and
# pictures are put into build/pictures. At last tour.exe signs in, uploads a folder, reads it back
# and compares every byte. run FOLDER takes a folder of yours. A store that ./quilldeck service
# already runs is used as it is. Ends with a code of 0 when both went well.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

url=https://localhost:8443
arguments=()
for argument; do
    # Wine shows the whole file system as drive Z.
    if [ -e "$argument" ]; then argument=Z:$(realpath "$argument"); fi
    arguments+=("$argument")
done

require_own "$ROOT/service-data"
"$ROOT/tools/build/build.sh" release
cd "$ROOT"
there=0
"$PYTHON" tools/build/probe_store.py "$url" || there=$?
case $there in
0) say "using the store that already serves $url" ;;
1)
    say "starting the store on $url"
    mkdir -p service-data
    ready=$(mktemp -d)
    log=service-data/service.log
    "$PYTHON" service/quilldeck_service.py --demo --data service-data --https-port 8443 \
        --ftp-port 2121 --ready-file "$ready/ready.json" </dev/null >"$log" 2>&1 &
    store=$!
    stop() {
        kill "$store" 2>/dev/null || true
        wait "$store" 2>/dev/null || true
        rm -rf "$ready"
    }
    trap stop EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    until [ -e "$ready/ready.json" ]; do
        kill -0 "$store" 2>/dev/null || {
            cat "$log" >&2
            die "the store did not start"
        }
        sleep 0.1
    done
    ;;
*) die "port 8443 is in use by something else than our store; end it and try again" ;;
esac

window=
if [ -n "${DISPLAY:-}" ]; then
    say "opening the drive; sign in as demo, password demo; the store runs until you close the window"
    QUILLDECK_SCREEN=own tools/build/wine-run --host tools/desktop/drive.sh --open >&2 &
    window=$!
else
    pictures=${QUILLDECK_PICTURES:-$ROOT/build/pictures}
    say "using the drive on a virtual screen; pictures go to $pictures"
    "$PYTHON" tools/desktop/on_screen.py --pictures "$pictures" -- \
        tools/build/wine-run --host tools/desktop/drive.sh || die "the drive did not work as it should"
fi

say "taking the tour"
status=0
tools/build/wine-run build/release/bin/tour.exe "${arguments[@]}" || status=$?
if [ -n "$window" ]; then
    wait "$window" || die "the drive could not be opened"
fi
exit "$status"
