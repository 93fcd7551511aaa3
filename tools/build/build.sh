#!/bin/bash
# build: build the Windows programs into build/release/bin
#
# build [PRESET] builds another preset of CMakePresets.json: release (optimised, the default),
# checked (undefined behaviour and container overruns trap; what the tests run) or native (the
# fuzzers, with sanitizers).
set -euo pipefail
. "$ROOT/tools/build/common.sh"

preset=${1:-release}
case $preset in
release | checked | native) ;;
*) die "no such preset: $preset (release, checked, native)" ;;
esac
require_own "$ROOT/build" "$ROOT"/build/*
"$ROOT/tools/build/setup.sh"
cd "$ROOT"
say "building $preset"
cmake_configure "$preset" || die "the build could not be configured"
cmake --build --preset "$preset" >&2 || die "the build failed"
