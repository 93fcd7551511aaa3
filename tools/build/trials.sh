#!/bin/bash
# trials: put a store under load, kills, power cuts and bad input, and look at its pages
#
# trials NAME [NUMBERS], each with a store of its own and all traffic on loopback: load, stalls and
# backup [ACCOUNTS [SECONDS]], kills and power [ACCOUNTS [COUNT]], nonsense [ROUNDS]. trials pages [FOLDER] takes
# pictures of what the store shows in a browser into build/pages, with a headless Chromium that it
# installs. What each saw is printed; the everyday tests run short ones.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

if [ "${1:-}" = pages ]; then
    "$ROOT/tools/build/setup.sh" chromium-headless-shell fonts-dejavu-core
    exec "$PYTHON" "$ROOT/tools/store_trials/trials.py" pages "${2:-$ROOT/build/pages}"
fi
"$ROOT/tools/build/setup.sh"
exec "$PYTHON" "$ROOT/tools/store_trials/trials.py" "$@"
