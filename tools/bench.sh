#!/usr/bin/env bash
# All figures, one line each: name, value, unit, and in brackets the limit or the alternative measured beside it.
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8 TZ=UTC QT_QPA_PLATFORM=offscreen
scratch=$(mktemp -d); trap 'rm -rf "$scratch"' EXIT
export ZELVAR_SETTINGS=$scratch/settings.db ZELVAR_DEFINITIONS_DIR=$scratch/definitions ZELVAR_TEMPLATES_DIR=
mkdir "$scratch/empty" "$scratch/definitions"
build/release/bench/zelvar_bench_core "$@"
build/release/bench/zelvar_bench_gui "$@"
build/release/bench/zelvar_bench_images "$@"
build/release/bench/zelvar_bench_reader "$@"
build/release/bench/zelvar_bench_dialogs "$@"

# Starts of the command, whole processes: the median of 15. Nothing found is no failure.
median_ms() {
  for _ in $(seq 15); do
    local start=$EPOCHREALTIME; "$@" >/dev/null 2>&1 || [ $? -eq 1 ]; local end=$EPOCHREALTIME
    echo $(((${end/./} - ${start/./})))
  done | sort -n | sed -n 8p | awk '{ printf "%.3f", $1 / 1000 }'
}
printf '%-44s %12s %-8s (%s)\n' start.ls_empty_folder "$(median_ms build/release/zelvar ls "$scratch/empty")" ms "at most 30"
# Nobody presses anything off screen, so the dialog ends cancelled.
first_paint_ms() {
  ZELVAR_TRACE_FIRST_PAINT=1 build/release/zelvar open "$scratch/empty" 2>&1 >/dev/null || true
}
first=$(for _ in $(seq 9); do first_paint_ms; done | sed -n 's/^first paint \([0-9.]*\) ms.*/\1/p' | sort -n | sed -n 5p)
printf '%-44s %12s %-8s (%s)\n' start.dialog_first_paint "${first:-none}" ms "at most 350 after the process began"
