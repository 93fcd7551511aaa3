#!/bin/bash
# Builds the libraries that Quilldeck links with into the user's cache, once for each recipe.
#
#   third_party/build.sh            build what is missing
#   third_party/build.sh --prefix   print the folder that holds (or will hold) them
#
# The cache: parts/<name>-<hash of its recipe>/ for each library, and <hash of all recipes>/ with a
# link to each of them, which appears only when all are whole.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# What we say reaches the user also from within a build, whose own words go to its log.
exec 3>&2
. "$TP_DIR/openssl.sh"
. "$TP_DIR/curl.sh"
. "$TP_DIR/headers.sh"

compiler=$("$HOST-gcc-posix" -dumpfullversion 2>/dev/null || echo none)

declare -A part
part[openssl]=openssl-$(hash_of "$TP_DIR/openssl.sh" "$OPENSSL_VERSION" "$compiler")
part[curl]=curl-$(hash_of "$TP_DIR/curl.sh" "$CURL_VERSION" "${part[openssl]}")
part[utfcpp]=utfcpp-$(hash_of "$TP_DIR/headers.sh")
part[boost]=boost-$(hash_of "$TP_DIR/headers.sh")
part[googletest]=googletest-$(hash_of "$TP_DIR/headers.sh")
part[pugixml]=pugixml-$(hash_of "$TP_DIR/headers.sh" "$PUGIXML_VERSION")
order=(utfcpp boost googletest pugixml openssl curl)

prefix=$CACHE/$(hash_of "${part[@]}" "${order[@]}")
if [ "${1:-}" = --prefix ]; then
    printf '%s\n' "$prefix"
    exit
fi
if [ -d "$prefix" ]; then
    say "ready in $prefix"
    exit
fi
[ "$compiler" != none ] || die "$HOST-gcc-posix is missing: run ./quilldeck setup"

claim_cache
mkdir -p "$CACHE/parts"
# One builder at a time; a second one waits and then finds everything there.
exec 9>"$CACHE/lock"
flock 9

# Everything is built aside and renamed when whole, so that an interruption leaves nothing that
# could be taken for a library. What a killed build left goes first, as we hold the lock.
rm -rf "$CACHE"/work.*
work=$(mktemp -d "$CACHE/work.XXXXXX")
trap 'rm -rf "$work"' EXIT
for name in "${order[@]}"; do
    final=$CACHE/parts/${part[$name]}
    [ ! -d "$final" ] || continue
    say "building $name (${final##*/})"
    started=$SECONDS
    mkdir -p "$work/$name" "$work/$name.out"
    log=$CACHE/$name.log
    # Not "if ! ( … )": there errexit would be off inside.
    set +e
    (
        set -e
        trap - EXIT
        "build_$name" "$work/$name" "$work/$name.out" "$CACHE/parts/${part[openssl]}"
    ) >"$log" 2>&1
    status=$?
    set -e
    if [ "$status" != 0 ]; then
        tail -n 25 "$log" >&2
        die "$name failed; the whole log is $log"
    fi
    mv "$work/$name.out" "$final"
    say "built $name in $((SECONDS - started)) s"
done

mkdir "$work/prefix"
for name in "${order[@]}"; do ln -s "../parts/${part[$name]}" "$work/prefix/$name"; done
mv -T "$work/prefix" "$prefix"
say "ready in $prefix"
