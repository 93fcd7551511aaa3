# shellcheck shell=bash
# Header-only libraries and those that we compile ourselves, taken from Debian's -dev packages.
# The cross compiler must never see /usr/include, so each one gets a folder of its own.
# Called by build.sh with the work folder as $1 and the install folder as $2.

build_utfcpp() {
    local out=$2
    mkdir -p "$out/include"
    cp -rL /usr/include/utf8cpp/. "$out/include/"
    cp /usr/share/doc/libutfcpp-dev/copyright "$out/LICENSE"
}

# A link and not a copy: 170 MB of headers, whose version the package pins.
build_boost() {
    local out=$2
    grep -q 'BOOST_LIB_VERSION "1_81"' /usr/include/boost/version.hpp ||
        die "/usr/include/boost is not Boost 1.81 (package libboost1.81-dev)"
    mkdir -p "$out/include"
    ln -s /usr/include/boost "$out/include/boost"
    cp /usr/share/doc/libboost1.81-dev/copyright "$out/LICENSE"
}

build_googletest() {
    local out=$2
    mkdir -p "$out"
    cp -rL /usr/src/googletest/. "$out/"
}

build_pugixml() {
    local work=$1 out=$2
    fetch_source pugixml "$PUGIXML_VERSION" "$PUGIXML_SUITE" "$work"
    dpkg-source --no-check -x "$work"/*.dsc "$work/source"
    mkdir -p "$out"
    cp "$work"/source/src/pugi* "$out/"
    cp "$work/source/LICENSE.md" "$out/LICENSE" 2>/dev/null || cp "$work/source/debian/copyright" "$out/LICENSE"
}
