# shellcheck shell=bash
# OpenSSL, static, cut down to what TLS over TCP and the Blowfish cipher need.
# Called by build.sh with the work folder as $1 and the install folder as $2.

OPENSSL_OPTIONS=(
    mingw64 "--cross-compile-prefix=$HOST-" CC=gcc-posix --libdir=lib
    no-shared no-tests no-engine no-legacy no-module no-dso no-comp no-ssl3 no-dtls no-psk no-srp
    no-cms no-ts no-ct no-idea no-camellia no-seed no-aria no-sm2 no-sm3 no-sm4 no-cast no-rc2
    no-rc4 no-md4 no-mdc2 no-rmd160 no-whirlpool no-siphash no-gost no-ec2m no-ui-console no-stdio
    -ffunction-sections -fdata-sections
)

build_openssl() {
    local work=$1 out=$2
    fetch_source openssl "$OPENSSL_VERSION" "$OPENSSL_SUITE" "$work"
    dpkg-source --no-check -x "$work"/*.dsc "$work/source"
    cd "$work/source"
    ./Configure "${OPENSSL_OPTIONS[@]}" --prefix=/usr
    make -j"$JOBS" build_generated
    make -j"$JOBS" libcrypto.a libssl.a
    mkdir -p "$out/include/openssl" "$out/lib"
    cp include/openssl/*.h "$out/include/openssl/"
    cp libcrypto.a libssl.a "$out/lib/"
    cp LICENSE.txt "$out/LICENSE"
}
