#!/bin/bash
# clean: remove what was built
#
# Removes build/ and dist/. clean --all also removes the cache with the libraries and the Wine prefix.
# The store's data in service-data/ stays.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

case ${1:-} in
'') ;;
--all)
    rm -rf "$CACHE"
    say "removed $CACHE"
    ;;
*) die "clean knows --all only, not $1" ;;
esac
rm -rf "$ROOT/build" "$ROOT/dist"
say "removed build/ and dist/"
