# shellcheck shell=bash disable=SC2034
# What all parts of ./quilldeck share. Sourced with ROOT set to the top folder.

CACHE=${QUILLDECK_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/quilldeck}
PYTHON=/usr/bin/python3
export LC_ALL=C.UTF-8

say() { printf 'quilldeck: %s\n' "$*" >&2; }
die() {
    say "$*"
    exit 1
}

# The version, from its one place.
version() { sed -n 's/^project(quilldeck VERSION \([0-9.]*\).*/\1/p' "$ROOT/CMakeLists.txt"; }
