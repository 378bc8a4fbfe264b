#!/usr/bin/env bash
# clang-tidy over the sources that changed since the last state that landed; over all with TIDY_ALL=1, over those named as arguments.
set -uo pipefail
cd "$(dirname "$0")/.."
command -v clang-tidy >/dev/null || tools/setup.sh clang-tidy
# A configuration of its own: the compiler's precompiled header means nothing to clang.
[ -f build/tidy/compile_commands.json ] ||
  cmake --preset dev -B build/tidy -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
base=${TIDY_BASE:-$(git merge-base HEAD origin/main 2>/dev/null || git rev-list --max-parents=0 HEAD | tail -1)}
if [ $# -gt 0 ]; then files=$(printf '%s\n' "$@")
elif [ -n "${TIDY_ALL:-}" ]; then files=$(git ls-files 'src/*.cpp')
else files=$(git diff --name-only --diff-filter=d "$base" -- 'src/*.cpp'); fi
[ -n "$files" ] || exit 0
xargs -P "$(nproc)" -n 1 clang-tidy -p build/tidy --quiet --extra-arg=-Wno-unknown-warning-option <<<"$files" 2> >(grep -v 'warnings generated' >&2)
