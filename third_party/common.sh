# shellcheck shell=bash disable=SC2034
# What every recipe shares: where things lie, how sources are fetched, the cross compiler.
# Source it from a script that has set -euo pipefail and file descriptor 3 for what the user reads.

TP_DIR=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
HOST=x86_64-w64-mingw32
JOBS=${QUILLDECK_JOBS:-$(nproc)}

# shellcheck source=third_party/versions.sh
. "$TP_DIR/versions.sh"

say() { printf 'third_party: %s\n' "$*" >&3; }
die() {
    say "$*"
    exit 1
}

# shellcheck source=tools/build/cache.sh
. "$TP_DIR/../tools/build/cache.sh"

# The first twelve digits of a hash over the given files and words.
hash_of() {
    local word
    for word; do
        if [ -f "$word" ]; then cat "$word"; else printf '%s\n' "$word"; fi
    done | sha256sum | cut -c1-12
}

# The address of the Debian archive that this machine itself uses. apt parses its own sources for
# us, so both the one-line and the deb822 style are understood.
debian_archive() {
    apt-get indextargets --format '$(REPO_URI) $(RELEASE)' 'Created-By: Packages' 2>/dev/null |
        awk '$2 == "bookworm" && !seen { print $1; seen = 1 }'
}

# apt with private lists and cache below $1, so that the machine's own state is not touched.
private_apt() {
    local state=$1
    shift
    apt-get -q -o "Dir::Etc::sourcelist=$state/sources.list" -o Dir::Etc::sourceparts=/dev/null \
        -o "Dir::State::lists=$state/lists" -o "Dir::Cache=$state/cache" \
        -o APT::Sandbox::User=root -o Acquire::Retries=3 -o Acquire::Languages=none "$@"
}

# fetch_source NAME VERSION SUITE FOLDER: leaves the package's files (.dsc and tarballs) in FOLDER,
# and what apt needed for it in FOLDER.apt.
fetch_source() {
    local name=$1 version=$2 suite=$3 folder=$4 uri state options=''
    local keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    uri=$(debian_archive)
    [ -n "$uri" ] || die "no Debian bookworm archive among this machine's apt sources"
    [ ! -f "$keyring" ] || options="[signed-by=$keyring] "
    state=$folder.apt
    mkdir -p "$folder" "$state/lists/partial" "$state/cache/archives/partial"
    printf 'deb-src %s%s %s main\n' "$options" "$uri" "$suite" >"$state/sources.list"
    say "fetching the source of $name $version from $suite"
    if ! private_apt "$state" update >"$state/log" 2>&1; then
        cat "$state/log" >&3
        die "cannot read the list of source packages of $suite: is there a network?"
    fi
    if ! (cd "$folder" && private_apt "$state" --download-only source "$name=$version") \
        >"$state/log" 2>&1; then
        cat "$state/log" >&3
        say "versions that $suite offers now:"
        apt-cache -o "Dir::Etc::sourcelist=$state/sources.list" -o Dir::Etc::sourceparts=/dev/null \
            -o "Dir::State::lists=$state/lists" -o "Dir::Cache=$state/cache" showsrc "$name" 2>/dev/null |
            sed -n 's/^Version: /    /p' | sort -u >&3
        die "$name $version could not be fetched; if the archive has dropped it, raise it in third_party/versions.sh"
    fi
}
