#!/bin/bash
# setup: install what is missing and build the libraries
#
# Installs the Debian packages of tools/build/packages.txt that are not there yet (as root), and those
# that are named behind the command, for what only a few need; builds
# the libraries that we link with, and makes the template of the Wine prefixes. The libraries and
# the template lie in QUILLDECK_CACHE (default ~/.cache/quilldeck) and serve every clone of a user:
# where root has installed the packages, each user's first command makes his own.
# The other commands begin with this by themselves.
set -euo pipefail
. "$ROOT/tools/build/common.sh"
. "$ROOT/tools/build/wine.sh"

missing_packages() {
    local wanted
    mapfile -t wanted < <(sed '/^#/d; /^$/d' "$ROOT/tools/build/packages.txt")
    wanted+=("${@:2}")
    # dpkg-query fails when it does not know a package: that is what we want to hear about.
    { dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true; } |
        sed -n 's/^installed //p' | sort >"$1"
    printf '%s\n' "${wanted[@]}" | sort | comm -23 - "$1"
}

install_packages() {
    local log policy='' status=0
    if [ "$(id -u)" != 0 ]; then
        say "these packages are missing; install them as root with"
        die "    apt-get install --no-install-recommends $*"
    fi
    log=$(mktemp)
    say "reading the lists of packages"
    export DEBIAN_FRONTEND=noninteractive
    apt-get -q update </dev/null >"$log" 2>&1 || status=$?
    # vsftpd is only ever run by the tests, with settings of their own: the machine's own service must
    # neither start now nor with the next boot.
    if [ ! -e /usr/sbin/policy-rc.d ]; then
        policy=/usr/sbin/policy-rc.d
        printf '#!/bin/sh\nexit 101\n' >"$policy"
        chmod +x "$policy"
        trap 'rm -f "$list" /usr/sbin/policy-rc.d' EXIT
    fi
    if [ "$status" = 0 ]; then
        say "installing $# packages: $*"
        apt-get -q -y --no-install-recommends -o Acquire::Retries=3 install "$@" \
            </dev/null >"$log" 2>&1 || status=$?
    fi
    [ "$status" = 0 ] || tail -n 25 "$log" >&2
    rm -f "$log"
    [ -z "$policy" ] || rm -f "$policy"
    case " $* " in *' vsftpd '*) systemctl disable -q vsftpd 2>/dev/null || true ;; esac
    [ "$status" = 0 ] || die "the packages could not be installed: is there a network?"
}

command -v dpkg-query >/dev/null || die "this is no Debian: Quilldeck is built on Debian 12"
list=$(mktemp)
trap 'rm -f "$list"' EXIT
mapfile -t missing < <(missing_packages "$list" "$@")
if [ ${#missing[@]} != 0 ]; then
    # shellcheck source=/dev/null
    release=$(. /etc/os-release && echo "$ID ${VERSION_ID:-}")
    [ "$release" = "debian 12" ] ||
        die "this is $release, not Debian 12; missing here: ${missing[*]}"
    install_packages "${missing[@]}"
fi

claim_cache
[ -d "$("$ROOT/third_party/build.sh" --prefix)" ] || "$ROOT/third_party/build.sh"
if [ ! -d "$(wine_template)" ]; then
    say "making the Wine prefix"
    wine_make_template || die "Wine could not make a prefix; see $CACHE/wine.log"
fi
