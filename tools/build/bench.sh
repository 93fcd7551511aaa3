#!/bin/bash
# bench: build and run the benchmarks
#
# bench [NAME [ARGUMENTS]]: runs the release's bench_*.exe, or bench_NAME alone, under Wine, one after
# another, each with a fresh store and a second one behind vsftpd. Each line has our figure, that of
# the peer from the same run, and the bound. bench transfer MEGABYTES REPEATS is a shorter run; this
# machine's own curl is shown beside it. bench --small runs all of them with short transfers, to see
# that they work: its figures say little.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

# Within the life of the stores and the prefix.
inside() {
    local name=$1
    shift
    case $name in
    reply | data_object | properties) "$PYTHON" "$ROOT/bench/populate.py" "$QUILLDECK_TEST_READY" ;;
    esac
    "$ROOT/tools/build/wine-run" "$ROOT/build/release/bin/bench_$name.exe" "$@"
    if [ "$name" = transfer ]; then
        "$PYTHON" "$ROOT/bench/native_curl.py" "$QUILLDECK_TEST_HTTPS_URL" 'own server' "${@:1:1}"
        "$PYTHON" "$ROOT/bench/native_curl.py" "$QUILLDECK_TEST_VSFTPD_HTTPS_URL" vsftpd "${@:1:1}"
    fi
}

if [ "${1:-}" = --inside ]; then
    inside "${@:2}"
    exit
fi
small=
if [ "${1:-}" = --small ]; then
    small=yes
    shift
fi
"$ROOT/tools/build/build.sh" release
if [ "${1:-}" = line ]; then
    exec "$PYTHON" "$ROOT/bench/slow_line.py" "$ROOT/build/release/bin/slow_line.exe" "${@:2}"
fi
status=0
for program in "$ROOT"/build/release/bin/bench_${1:-*}.exe; do
    name=${program##*/bench_}
    name=${name%.exe}
    [ -e "$program" ] || die "there is no benchmark bench_$name"
    say "measuring $name"
    arguments=("${@:2}")
    case $small$name in
    yestransfer | yesdata_object | yesopen) arguments=(8 1) ;;
    yesdrop) arguments=(20 8 1) ;;
    yesproperties) arguments=(1) ;;
    yestrash) arguments=(20 1) ;;
    esac
    "$PYTHON" "$ROOT/tools/support/with_service.py" --vsftpd -- "$ROOT/tools/build/wine-run" --host \
        "$ROOT/tools/build/bench.sh" --inside "$name" "${arguments[@]}" || status=$?
done
exit "$status"
