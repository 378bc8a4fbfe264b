#!/usr/bin/env bash
# clang-tidy over the sources that changed since the last state that landed; over all with TIDY_ALL=1.
set -uo pipefail
cd "$(dirname "$0")/.."
command -v clang-tidy >/dev/null || tools/setup.sh clang-tidy
base=${TIDY_BASE:-$(git merge-base HEAD origin/main 2>/dev/null || git rev-list --max-parents=0 HEAD | tail -1)}
if [ -n "${TIDY_ALL:-}" ]; then files=$(git ls-files 'src/*.cpp'); else files=$(git diff --name-only --diff-filter=d "$base" -- 'src/*.cpp'); fi
[ -n "$files" ] || exit 0
xargs -P "$(nproc)" -n 1 clang-tidy -p build/dev --quiet <<<"$files"
