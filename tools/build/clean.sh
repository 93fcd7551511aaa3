#!/bin/bash
# clean: remove what was built
#
# Removes build/ and dist/. clean --all also removes the cache with the libraries and the Wine prefix,
# which other clones of yours may use too. The store's data in service-data/ stays.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

case ${1:-} in
'') ;;
--all)
    if [ -e "$CACHE" ]; then remove_cache; fi
    say "removed the cache in $CACHE"
    ;;
*) die "clean knows --all only, not $1" ;;
esac
rm -rf "$ROOT/build" "$ROOT/dist"
say "removed build/ and dist/"
