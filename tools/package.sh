#!/usr/bin/env bash
# Builds the Debian packages from the files of this checkout, in a copy of their own, and checks them.
# Usage: tools/package.sh FOLDER: there the packages are afterwards.
set -euo pipefail
cd "$(dirname "$0")/.."
mkdir -p "$1"
out=$(cd "$1" && pwd)
version=$(sed -n 's/^project(Zelvar VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
copy=$out/zelvar-$version
rm -rf "$copy" "$out"/*.deb
mkdir -p "$copy"
git ls-files -co --exclude-standard -z | xargs -0 cp --parents -t "$copy"
cp -r packaging/debian "$copy/debian"
# The compiler's cache stays where it is: debhelper gives its builds a home of their own.
CCACHE_DIR=${CCACHE_DIR:-$(ccache -k cache_dir 2>/dev/null || true)}
[ -n "$CCACHE_DIR" ] && export CCACHE_DIR
(cd "$copy" && dpkg-buildpackage -us -uc -b >"$out/build.log" 2>&1) || { tail -n 40 "$out/build.log"; exit 1; }
desktop-file-validate packaging/*.desktop
appstreamcli validate --no-net packaging/*.metainfo.xml >/dev/null
lintian --allow-root --fail-on error "$out"/*.changes
rm -rf "$copy"
ls "$out"/*.deb
