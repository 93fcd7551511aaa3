#!/bin/bash
# lint: check format, code, scripts and layers
#
# clang-format and clang-tidy over the C++ code, whether the extension compiles for 32 bits, the
# directions of includes between the folders of src/, shellcheck over the scripts, and mypy over the
# Python code. Changes nothing; ./quilldeck format mends the format. Good results of the
# slow checks are kept in the cache.
set -euo pipefail
. "$ROOT/tools/build/common.sh"
. "$ROOT/tools/build/sources.sh"

require_own "$ROOT/build" "$ROOT"/build/*
"$ROOT/tools/build/setup.sh"
cd "$ROOT"
failed=()
check() {
    local what=$1
    shift
    say "checking $what"
    "$@" || failed+=("$what")
}

check_format() { cpp_files | xargs -r clang-format-19 --dry-run -Werror; }
check_scripts() { shell_files | xargs shellcheck -x -P SCRIPTDIR -P "$ROOT"; }
check_python() { mypy --cache-dir build/mypy --no-error-summary; }
configure() { for preset in checked release win32; do cmake_configure "$preset" || return; done; }
check_code() { "$PYTHON" tools/build/tidy.py --cache "$CACHE/tidy" build/checked build/release; }
check_32_bits() { cmake --build --preset win32 >&2; }

check format check_format
check layers "$PYTHON" tools/build/layers.py
check scripts check_scripts
check python check_python
check configuration configure
check code check_code
check '32 bits' check_32_bits

[ ${#failed[@]} = 0 ] || die "lint failed: ${failed[*]}"
say "lint found nothing"
