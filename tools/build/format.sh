#!/bin/bash
# format: lay out the C++ code as .clang-format says
set -euo pipefail
. "$ROOT/tools/build/common.sh"
. "$ROOT/tools/build/sources.sh"

"$ROOT/tools/build/setup.sh"
cd "$ROOT"
cpp_files | xargs -r clang-format-19 -i
say "formatted $(cpp_files | wc -l) files"
