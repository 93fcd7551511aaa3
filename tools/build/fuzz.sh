#!/bin/bash
# fuzz: build the fuzzers natively and run each for some seconds
#
# fuzz [SECONDS] [NAME]: runs each fuzzer (or the named one) for SECONDS (default 30) with address and
# undefined behaviour sanitizers, from the inputs in fuzz/corpus/NAME. New inputs go to
# build/native/corpus/NAME, those that fail to build/native/failures.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

seconds=${1:-30}
case $seconds in '' | *[!0-9]*) die "not a number of seconds: $seconds" ;; esac
"$ROOT/tools/build/build.sh" native
cd "$ROOT"
mkdir -p build/native/failures
export ASAN_SYMBOLIZER_PATH=/usr/bin/llvm-symbolizer-19
count=0
for program in build/native/bin/fuzz_${2:-*}; do
    [ -x "$program" ] || continue
    name=${program##*/fuzz_}
    say "fuzzing $name for $seconds s"
    mkdir -p "build/native/corpus/$name" "fuzz/corpus/$name"
    log=build/native/$name.log
    "$program" "-max_total_time=$seconds" -timeout=10 -print_final_stats=1 \
        "-artifact_prefix=build/native/failures/$name-" \
        "build/native/corpus/$name" "fuzz/corpus/$name" </dev/null >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        die "$name failed; the input is in build/native/failures, the whole log is $log"
    }
    sed -n 's/^stat::number_of_executed_units: */    inputs tried: /p' "$log"
    count=$((count + 1))
done
[ "$count" != 0 ] || die "there is no fuzzer fuzz_${2:-*}"
say "$count fuzzers, no failure"
