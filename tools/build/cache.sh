# shellcheck shell=bash
# The cache: libraries, Wine prefixes and results of checks, which all clones of a user share. What
# sources this has a function die.

CACHE=${QUILLDECK_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/quilldeck}
case $CACHE in /*) ;; *) CACHE=$PWD/$CACHE ;; esac
# Neither another current folder nor the home of a Wine prefix makes it another cache.
export QUILLDECK_CACHE=$CACHE

# What we put there, as patterns of find. The last one is from older versions.
CACHE_NAMES=(CACHEDIR.TAG lock parts prefixes tidy wine.lock '*.log' 'wine-*' 'work.*'
    "$(printf '[0-9a-f]%.0s' {1..12})" compile32)

# A folder is our cache when it says so itself.
is_our_cache() { grep -qs "Quilldeck's cache" "$CACHE/CACHEDIR.TAG"; }

# Ends with a word when one of these is there and another user's: we could not change his files, or he
# not ours.
require_own() {
    local path me
    me=$(id -un 2>/dev/null || id -u)
    for path; do
        if [ -e "$path" ] && [ ! -O "$path" ]; then
            die "$path belongs to $(stat -c %U "$path"), not to $me: remove it, or make it yours" \
                "by: chown -R $me: $path"
        fi
    done
}

# Makes the cache, or marks one from before there were marks. A folder with other things is not taken,
# as it would be ours to clean.
claim_cache() {
    mkdir -p "$CACHE" || die "the cache $CACHE cannot be made; QUILLDECK_CACHE names another"
    require_own "$CACHE" "$CACHE"/*
    ! is_our_cache || return 0
    [ -d "$CACHE/parts" ] && [ -e "$CACHE/lock" ] || [ -z "$(ls -A "$CACHE")" ] ||
        die "$CACHE is not empty, and no cache of ours: let QUILLDECK_CACHE name a folder of its own"
    printf '%s\n' 'Signature: 8a477f597d28d172789f06886806bc55' \
        "# Quilldeck's cache. ./quilldeck clean --all removes what is ours here, and nothing else." \
        >"$CACHE/CACHEDIR.TAG"
}

# Removes what is ours in the cache, and the folder when nothing else is in it.
remove_cache() {
    local name
    is_our_cache || die "$CACHE does not say that it is our cache: nothing in it was removed"
    for name in "${CACHE_NAMES[@]}"; do
        find "$CACHE" -mindepth 1 -maxdepth 1 -name "$name" -exec rm -rf {} +
    done
    rmdir "$CACHE" 2>/dev/null || say "left in $CACHE what is not ours: $(ls -A "$CACHE")"
}
