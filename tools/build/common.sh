# shellcheck shell=bash disable=SC2034
# What all parts of ./quilldeck share. Sourced with ROOT set to the top folder.

PYTHON=/usr/bin/python3
export LC_ALL=C.UTF-8

say() { printf 'quilldeck: %s\n' "$*" >&2; }
die() {
    say "$*"
    exit 1
}

# shellcheck source=tools/build/cache.sh
. "$(dirname "${BASH_SOURCE[0]}")/cache.sh"

# The version, from its one place.
version() { sed -n 's/^project(quilldeck VERSION \([0-9.]*\).*/\1/p' "$ROOT/CMakeLists.txt"; }

# Prepares the build of a preset; says something only when that fails.
cmake_configure() {
    local output
    output=$(cmake --preset "$1" 2>&1) || {
        printf '%s\n' "$output" >&2
        return 1
    }
}
