#!/usr/bin/env bash
# The main job on the sample data. With a screen: the dialog. Without: the scripted road, with a screenshot in out/.
set -euo pipefail
cd "$(dirname "$0")/.."
sample=$PWD/out/sample
export ZELVAR_DEFINITIONS_DIR=$sample/definitions ZELVAR_TEMPLATES_DIR=$sample/templates
export ZELVAR_SETTINGS=${ZELVAR_SETTINGS:-$PWD/out/settings.db}
zelvar=build/release/zelvar
echo "== zelvar ls out/sample/images"
$zelvar ls "$sample/images"
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  echo "== zelvar open out/sample/images (pick something and press OK)"
  $zelvar open "$sample/images" --multiple || [ $? -eq 1 ]
else
  first=$($zelvar ls "$sample/images" --sort name | awk -F'\t' '$1 == "file" && $4 ~ /\.jpg$/ { print $4; exit }')
  echo "== zelvar open out/sample/images --select '$first' --accept --shot out/open.png"
  $zelvar open "$sample/images" --select "$first" --accept --shot out/open.png
  echo "The dialog's picture: out/open.png"
fi
