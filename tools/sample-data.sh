#!/usr/bin/env bash
# Writes the sample images, definitions and templates into the folder given, unless they are there and newer than the
# program that makes them.
set -euo pipefail
folder=$(realpath -m "${1:?usage: tools/sample-data.sh FOLDER}")
cd "$(dirname "$0")/sample-data"
program=../../build/sample-data/sample-data
if [ ! -x $program ] || [ -n "$(find . -newer $program -name '*.[ch]*')" ]; then
  mkdir -p "$(dirname $program)"
  # shellcheck disable=SC2046 # the flags are words
  ${CXX:-c++} -std=c++20 -O2 -Wall -Wextra ./*.cpp -o $program $(pkg-config --cflags --libs gdal)
fi
[ "$folder/templates" -nt $program ] && exit 0
$program "$folder"
touch "$folder/templates"
echo "sample data: $folder"
