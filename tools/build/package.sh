#!/bin/bash
# package: make the archive to hand out, dist/quilldeck-VERSION-win64.zip
#
# Builds the release and packs the shell extension, its companions and the scripts that register it,
# with the licences of what is linked into them and the SHA-256 sum of every file. The same sources
# give the same archive.
set -euo pipefail
. "$ROOT/tools/build/common.sh"

"$ROOT/tools/build/build.sh" release
cd "$ROOT"
name=quilldeck-$(version)-win64
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
out=$stage/$name
mkdir -p "$out/licences" dist

# -p: by itself strip would write the time into the programs.
for program in Quilldeck.dll Quilldeck_Session.exe Quilldeck_Tray.exe; do
    x86_64-w64-mingw32-strip -p -o "$out/$program" "build/release/bin/$program"
done
cp installer/register.cmd installer/unregister.cmd "$out/"

prefix=$(third_party/build.sh --prefix)
for library in openssl curl boost utfcpp; do
    cp "$prefix/$library/LICENSE" "$out/licences/$library.txt"
done
cp /usr/share/doc/g++-mingw-w64-x86-64-posix/copyright "$out/licences/gcc-runtime.txt"
cp /usr/share/doc/mingw-w64-x86-64-dev/copyright "$out/licences/mingw-w64.txt"
cp README.md CHANGELOG.md THIRD_PARTY.md "$out/"
(cd "$out" && find . -type f -printf '%P\n' | sort | xargs sha256sum >"$stage/sums")
mv "$stage/sums" "$out/SHA256SUMS"

"$PYTHON" tools/build/pack.py "$stage" "dist/$name.zip"
(cd dist && sha256sum "$name.zip" >"$name.zip.sha256")
say "packed dist/$name.zip"
