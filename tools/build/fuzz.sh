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
count=0
for program in build/native/bin/fuzz_${2:-*}; do
    [ -x "$program" ] || continue
    name=${program##*/fuzz_}
    say "fuzzing $name for $seconds s"
    mkdir -p "build/native/corpus/$name" "fuzz/corpus/$name"
    "$program" "-max_total_time=$seconds" -timeout=10 -print_final_stats=1 -verbosity=0 \
        "-artifact_prefix=build/native/failures/$name-" \
        "build/native/corpus/$name" "fuzz/corpus/$name" </dev/null ||
        die "$name failed; the input is in build/native/failures"
    count=$((count + 1))
done
[ "$count" != 0 ] || die "there is no fuzzer fuzz_${2:-*}"
say "$count fuzzers, no failure"
