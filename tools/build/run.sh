#!/bin/bash
# run: build, start the store and take the tour
#
# Builds the release, starts the local store with its demo account, and runs tour.exe under Wine: it
# signs in, uploads a folder, reads it back and compares every byte. run FOLDER takes a folder of
# yours. A store that ./quilldeck service already runs is used as it is. Ends with the tour's code.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

url=https://localhost:8443
arguments=()
for argument; do
    # Wine shows the whole file system as drive Z.
    if [ -e "$argument" ]; then argument=Z:$(realpath "$argument"); fi
    arguments+=("$argument")
done

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

say "taking the tour"
status=0
tools/build/wine-run build/release/bin/tour.exe "${arguments[@]}" || status=$?
exit "$status"
