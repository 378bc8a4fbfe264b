#!/usr/bin/env bash
# clang-tidy over the sources that changed since the last state that landed; over all with TIDY_ALL=1, over those named as arguments.
set -uo pipefail
cd "$(dirname "$0")/.." || exit
command -v clang-tidy >/dev/null || tools/setup.sh clang-tidy
# A configuration of its own: the compiler's precompiled header means nothing to clang.
cmake --preset dev -B build/tidy -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null || exit 2
cmake --build build/tidy --target zelvar_wire_messages >/dev/null || exit 2 # headers that are made
base=${TIDY_BASE:-$(git merge-base HEAD origin/main 2>/dev/null || git rev-list --max-parents=0 HEAD | tail -1)}
if [ $# -gt 0 ]; then files=$(printf '%s\n' "$@")
elif [ -n "${TIDY_ALL:-}" ]; then files=$(git ls-files '*.cpp')
else files=$(git diff --name-only --diff-filter=d "$base" -- '*.cpp'); fi

# The program that makes the sample data is compiled by its own script and has no line in the build's list.
alone='(^|/)tools/sample-data/'
tidy() { # tidy ARGUMENTS...: the names of the files come from stdin
  xargs -r -P "$(nproc)" -I '{}' clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option '{}' "$@" \
    2> >(grep -v 'warnings generated' >&2)
}
failed=0
tidy -p build/tidy < <(grep -Ev "$alone" <<<"$files") || failed=1
# shellcheck disable=SC2046 # the flags are words
tidy -- -std=c++20 $(pkg-config --cflags gdal) < <(grep -E "$alone" <<<"$files") || failed=1
exit $failed
