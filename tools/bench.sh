#!/usr/bin/env bash
# All figures, one line each: name, value, unit, and in brackets the limit and the alternatives measured beside it.
#   tools/bench.sh [--json|--list] [--build DIR] [NAME...]
# NAME: the benches whose names begin so. --list prints the names. --json prints one array over all programs: objects of
# name, value, unit, limit (null for none), alternatives (objects of name and value, null where not installed), note.
set -euo pipefail
build=$(dirname "$0")/../build/release form=() words=()
while [ $# -gt 0 ]; do
  case $1 in
    --json|--list) form=("$1") ;;
    --build) build=${2?--build DIR}; shift ;;
    -*) sed -n '2,5s/^# *//p' "$0" >&2; exit 2 ;;
    *) words+=("$1") ;;
  esac
  shift
done
programs=("$build"/bench/zelvar_bench_*)
[ -x "${programs[0]}" ] || { echo "bench.sh: no benches in $build: cmake --build DIR --target all benches" >&2; exit 2; }
export LC_ALL=C.UTF-8 TZ=UTC QT_QPA_PLATFORM=offscreen
scratch=$(mktemp -d); trap 'rm -rf "$scratch"' EXIT
export ZELVAR_SETTINGS=$scratch/settings.db ZELVAR_DEFINITIONS_DIR=$scratch/definitions ZELVAR_TEMPLATES_DIR=
export XDG_RUNTIME_DIR=$scratch/runtime
mkdir "$scratch/definitions"; mkdir -m 700 "$XDG_RUNTIME_DIR"
run() { for program in "${programs[@]}"; do "$program" "${form[@]}" "${words[@]}"; done; }
if [ "${form[*]}" != --json ]; then run; exit; fi
run >"$scratch/figures"
# Each program prints an array, an element a line.
[ "$(grep -c '^\[$' "$scratch/figures")" = ${#programs[@]} ] || { echo "bench.sh: $build is too old for --json" >&2; exit 1; }
printf '['
sed -n '/^{/ { s/},$/}/; p }' "$scratch/figures" | awk '{ printf "%s\n%s", (NR > 1 ? "," : ""), $0 } END { print "\n]" }'
