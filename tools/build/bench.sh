#!/bin/bash
# bench: build and run the benchmarks
#
# Runs every bench_*.exe of the release under Wine, one after another in one prefix, against a fresh
# store and a second one behind vsftpd. bench NAME runs bench_NAME alone; what follows goes to it:
# bench transfer [MEGABYTES [REPEATS]]. The figures of the native curl stand before those of
# bench_transfer.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

# Inside the store's and the prefix's life: the programs in turn.
if [ "${1:-}" = --inside ]; then
    shift
    status=0
    "$PYTHON" "$ROOT/bench/populate.py" "$QUILLDECK_TEST_READY"
    case ${1:-transfer} in
    transfer)
        "$PYTHON" "$ROOT/bench/native_curl.py" "$QUILLDECK_TEST_HTTPS_URL" "own server" "${2:-256}"
        "$PYTHON" "$ROOT/bench/native_curl.py" "$QUILLDECK_TEST_VSFTPD_HTTPS_URL" vsftpd "${2:-256}"
        ;;
    esac
    for program in "$ROOT"/build/release/bin/bench_${1:-*}.exe; do
        [ -e "$program" ] || die "there is no benchmark bench_${1:-*}"
        say "${program##*/}"
        "$ROOT/tools/build/wine-run" "$program" "${@:2}" || status=$?
    done
    exit "$status"
fi

"$ROOT/tools/build/build.sh" release
exec "$PYTHON" "$ROOT/tests/support/with_service.py" --vsftpd -- \
    "$ROOT/tools/build/wine-run" --host "$ROOT/tools/build/bench.sh" --inside "$@"
