#!/usr/bin/env bash
# What the tests notice: makes small random changes to the sources in a scratch copy, runs the tests that reach them, and
# lists by room how many were noticed, then the rest.
#   tools/mutants.sh [--seed N[,N...]] [--count 300] [--room ROOM] [--keep] [-j JOBS]
# All changes stand in one build, and an environment variable says which of them holds. The same seed draws the same
# changes from the same sources; of several each draws its count. --keep leaves the scratch copy, below TMPDIR.
set -euo pipefail
cd "$(dirname "$0")/.."
seed=1 count=300 room='' keep='' jobs=$(nproc)
while [ $# -gt 0 ]; do
  case $1 in
    --seed) seed=$2; shift ;;
    --count) count=$2; shift ;;
    --room) room=$2; shift ;;
    -j) jobs=$2; shift ;;
    --keep) keep=yes ;;
    *) sed -n '2,6s/^# \?//p' "$0" >&2; exit 2 ;;
  esac
  shift
done
tools/setup.sh python3-clang-14
# The same place for the same tree, so that ccache knows again what is not changed.
scratch=${TMPDIR:-/tmp}/zelvar-mutants.$(pwd | cksum | cut -d' ' -f1)
mkdir "$scratch" || { echo "Another run is under way, or was kept: $scratch" >&2; exit 1; }
if [ -n "$keep" ]; then trap 'echo "The scratch copy: $scratch" >&2' EXIT; else trap 'rm -rf "$scratch"' EXIT; fi

mkdir "$scratch/tree"
git ls-files -co --exclude-standard -z | while IFS= read -rd '' file; do [ ! -f "$file" ] || printf '%s\0' "$file"; done |
  tar --null -T - -c | tar -x -C "$scratch/tree"
cd "$scratch/tree"
cmake --preset dev >/dev/null
# For clang, to which the compiler's precompiled headers mean nothing.
cmake --preset dev -B build/tidy -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
cmake --build build/tidy --target zelvar_wire_messages >/dev/null
export PYTHONDONTWRITEBYTECODE=1
/usr/bin/python3 tools/mutants "$scratch" --seed "$seed" --count "$count" ${room:+--room "$room"} -j "$jobs" &
runner=$!
trap 'kill "$runner"' INT TERM # what was tried until then is printed
wait "$runner" || wait "$runner"
