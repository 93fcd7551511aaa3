#!/bin/bash
# bench: build and run the benchmarks
#
# bench [transfer [MEGABYTES [REPEATS]] | reply]: runs the release's benchmarks under Wine, one after
# another in one prefix, against a fresh store and a second one behind vsftpd, and this machine's own
# curl beside them. Each line has our figure, that of the peer from the same run, and the bound.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

# Within the life of the stores and the prefix.
transfer() {
    "$ROOT/tools/build/wine-run" "$ROOT/build/release/bin/bench_transfer.exe" "$@"
    "$PYTHON" "$ROOT/bench/native_curl.py" "$QUILLDECK_TEST_HTTPS_URL" 'own server' "${@:1:1}"
    "$PYTHON" "$ROOT/bench/native_curl.py" "$QUILLDECK_TEST_VSFTPD_HTTPS_URL" vsftpd "${@:1:1}"
}
reply() {
    "$PYTHON" "$ROOT/bench/populate.py" "$QUILLDECK_TEST_READY"
    "$ROOT/tools/build/wine-run" "$ROOT/build/release/bin/bench_reply.exe"
}

case ${1:-} in
--inside)
    "${@:2}"
    exit
    ;;
transfer | reply) parts=("$*") ;;
'') parts=(reply transfer) ;;
*) die "there is no benchmark $1 (transfer, reply)" ;;
esac
"$ROOT/tools/build/build.sh" release
status=0
for part in "${parts[@]}"; do
    say "measuring $part"
    # shellcheck disable=SC2086 # the part and its numbers are words of their own
    "$PYTHON" "$ROOT/tests/support/with_service.py" --vsftpd -- "$ROOT/tools/build/wine-run" --host \
        "$ROOT/tools/build/bench.sh" --inside $part || status=$?
done
exit "$status"
