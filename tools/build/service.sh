#!/bin/bash
# service: run the local store in the foreground
#
# Serves https://localhost:8443 and ftp://localhost:2121 from the folder service-data until it is
# interrupted. Options go to the store; service -- --help lists them, --demo fills it with demo
# accounts and files.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

[ "${1:-}" != -- ] || shift
require_own "$ROOT/service-data"
"$ROOT/tools/build/setup.sh"
exec "$PYTHON" "$ROOT/service/quilldeck_service.py" --data "$ROOT/service-data" "$@"
