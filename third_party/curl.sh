# shellcheck shell=bash
# libcurl, static, HTTP(S) and FTP(S) only. Its sources are compiled directly with the
# config-win32.h that they bring: the configure step would take longer than the compiler.
# Called by build.sh with the work folder as $1, the install folder as $2, OpenSSL's as $3.

CURL_DEFINITIONS=(
    BUILDING_LIBCURL CURL_STATICLIB USE_OPENSSL USE_IPV6
    CURL_DISABLE_OPENSSL_AUTO_LOAD_CONFIG OPENSSL_NO_OCSP
    CURL_DISABLE_LDAP CURL_DISABLE_LDAPS CURL_DISABLE_DICT CURL_DISABLE_FILE CURL_DISABLE_GOPHER
    CURL_DISABLE_IMAP CURL_DISABLE_POP3 CURL_DISABLE_SMTP CURL_DISABLE_SMB CURL_DISABLE_RTSP
    CURL_DISABLE_TELNET CURL_DISABLE_TFTP CURL_DISABLE_MQTT CURL_DISABLE_NTLM
    CURL_DISABLE_WEBSOCKETS CURL_DISABLE_IPFS
    # The size of one call of the write callback; programs that include curl.h must agree, so
    # cmake/third_party.cmake hands the same value on.
    CURL_MAX_WRITE_SIZE=262144
    _WIN32_WINNT=0x0601 NDEBUG
)

# Debian's fixes belong in; those that begin with 9 only rename the library for the GnuTLS flavour.
apply_curl_patches() {
    local patch
    while read -r patch _; do
        case $patch in '' | '#'* | 9*) continue ;; esac
        patch -p1 --batch <"debian/patches/$patch"
    done <debian/patches/series
}

build_curl() {
    local work=$1 out=$2 openssl=$3
    fetch_source curl "$CURL_VERSION" "$CURL_SUITE" "$work"
    dpkg-source --no-check --skip-patches -x "$work"/*.dsc "$work/source"
    cd "$work/source"
    apply_curl_patches
    mkdir "$work/objects"
    # Each compiler gets one source; the object is named after the path, as names repeat in folders.
    find lib -name '*.c' -print0 | OBJECTS=$work/objects xargs -0 -P "$JOBS" -I'{}' \
        bash -c 'name=${1//\//-}; shift; "$@" -o "$OBJECTS/${name%.c}.o"' _ '{}' \
        "$HOST-gcc-posix" -O2 -ffunction-sections -fdata-sections -w \
        "${CURL_DEFINITIONS[@]/#/-D}" -Iinclude -Ilib "-I$openssl/include" -c '{}'
    mkdir -p "$out/include/curl" "$out/lib"
    "$HOST-gcc-ar-posix" rcs "$out/lib/libcurl.a" "$work"/objects/*.o
    cp include/curl/*.h "$out/include/curl/"
    cp COPYING "$out/LICENSE"
}
