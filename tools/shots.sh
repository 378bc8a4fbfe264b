#!/usr/bin/env bash
# A PNG of every window in its states into the folder given, at font scales, pixel ratios and in the palettes that users
# have.
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-out/shots}; mkdir -p "$out"; out=$(realpath "$out")
export LC_ALL=C.UTF-8 TZ=UTC
for ratio in 1 2; do
  for scale in 1.0 1.5; do
    for palette in light dark; do
      folder=$out/ratio$ratio-font$scale-$palette; mkdir -p "$folder"
      for program in build/dev/tests/*/*_test build/dev/tests/*/*/*_test; do
        [ -x "$program" ] && grep -aq ZELVAR_SHOTS "$program" || continue
        # In other colours than a check expects it may fail: the pictures are what is wanted.
        ZELVAR_SHOTS=$folder ZELVAR_PALETTE=$palette ZELVAR_FONT_SCALE=$scale QT_SCALE_FACTOR=$ratio \
          QT_QPA_PLATFORM=offscreen "$program" >"$folder/$(basename "$program").log" 2>&1 ||
          [ $palette = dark ] || echo "failed: $program at $folder"
      done
    done
  done
done
# And laid out for those who read from the right.
folder=$out/right-to-left; mkdir -p "$folder"
for room in platform/ui/platform_ui lists/lists thematic/thematic controls/controls opends/opends filedlg/filedlg; do
  # Checks of places on the left may fail, and what they did not open stays open.
  ZELVAR_SHOTS=$folder QT_QPA_PLATFORM=offscreen timeout 120 "build/dev/tests/${room}_test" -reverse \
    >"$folder/$(basename "$room").log" 2>&1 || true
done
# And in longer texts and in German: checks of English texts fail, and what they did not open stays open.
for language in x-pseudo de; do
  folder=$out/$language; mkdir -p "$folder"
  for program in build/dev/tests/*/*_test build/dev/tests/*/*/*_test; do
    [ -x "$program" ] && grep -aq ZELVAR_SHOTS "$program" || continue
    ZELVAR_SHOTS=$folder ZELVAR_LANGUAGE=$language QT_QPA_PLATFORM=offscreen timeout 300 "$program" \
      >"$folder/$(basename "$program").log" 2>&1 || true
  done
done
find "$out" -name '*.png' | wc -l | sed 's/$/ pictures in '"${out//\//\\/}"'/'
