#!/usr/bin/env bash
# Installs a build into a folder of its own and builds against that alone, by CMake and by pkg-config: the README's
# example, a program of its own, and one that needs each inline function of each installed header. Usage: tools/check-install.sh BUILD_FOLDER
set -euo pipefail
source=$(cd "$(dirname "$0")/.." && pwd)
scratch=$(mktemp -d); trap 'rm -rf "$scratch"' EXIT
cmake --install "$1" --prefix "$scratch/usr" >/dev/null
cp "$source/docs/examples/open-and-save.cpp" "$scratch/main.cpp"
cat >"$scratch/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(app LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 20)
find_package(Zelvar REQUIRED)
add_executable(app main.cpp)
target_link_libraries(app PRIVATE Zelvar::zelvar)
add_executable(own main-own.cpp)
target_link_libraries(own PRIVATE Zelvar::zelvar-core)
add_executable(every every.cpp)
target_compile_options(every PRIVATE -fkeep-inline-functions)
target_link_libraries(every PRIVATE Zelvar::zelvar)
CMAKE
(cd "$scratch/usr/include" && find zelvar -name '*.h' | sort | sed 's/.*/#include "&"/') >"$scratch/every.cpp"
echo 'int main() { return 0; }' >>"$scratch/every.cpp"
cat >"$scratch/main-own.cpp" <<'CPP'
// Reads an image in its own process.
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/reader/DriverModule.h"
int main(int, char **words) {
    zelvar::UseOwnProcessDrivers();
    zelvar::ImageInfo info;
    return zelvar::ReadImageInfo({words[1], nullptr}, "", nullptr, info) && info.width > 0 &&
                   zelvar::CountReaders().started == 0
               ? 0
               : 1;
}
CPP
cmake -S "$scratch" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/usr" >/dev/null
cmake --build "$scratch/build" >/dev/null
flags=$(PKG_CONFIG_PATH=$(dirname "$(find "$scratch/usr" -name zelvar.pc)") pkg-config --define-prefix --cflags --libs zelvar)
case "$flags" in *-lzelvar*) ;; *) echo "pkg-config says: $flags"; exit 1 ;; esac
# The headers of the lower library need it alone.
export PKG_CONFIG_PATH; PKG_CONFIG_PATH=$(dirname "$(find "$scratch/usr" -name zelvar-core.pc)")
printf '#include "zelvar/Core.h"\n#include <cstdio>\nint main() { std::puts(zelvar::GetInstallDir().c_str()); }\n' >"$scratch/core.cpp"
# shellcheck disable=SC2046 # words
g++ -std=c++20 -fkeep-inline-functions "$scratch/core.cpp" -o "$scratch/core" \
  $(pkg-config --define-prefix --cflags --libs zelvar-core)
# The shared data is found where the loader comes to the library through a link, as "/lib" is one.
ln -s usr/lib "$scratch/lib"
libraries=$(dirname "$(find "$scratch/usr/lib" -name libzelvar-core.so)")
said=$(LD_LIBRARY_PATH=$scratch/lib${libraries#"$scratch/usr/lib"} "$scratch/core")
[ "$said" = "$scratch/usr" ] || { echo "through a link the data is looked for in $said"; exit 1; }
mkdir "$scratch/empty" "$scratch/home"
ZELVAR_SETTINGS=$scratch/settings.db HOME=$scratch/home "$scratch/usr/bin/zelvar" ls "$scratch/empty" || [ $? -eq 1 ] # nothing found
# What is read is read by the installed reader, with the installed drivers.
ZELVAR_SETTINGS=$scratch/settings.db HOME=$scratch/home "$scratch/usr/bin/zelvar" info "$source/docs/open-dialog.png" |
  grep -q '^Driver	Portable Network Graphics' || { echo "the installed command reads no image"; exit 1; }
"$scratch/build/own" "$source/docs/open-dialog.png" || { echo "no image is read in the own process"; exit 1; }
echo "installed, found and linked"
