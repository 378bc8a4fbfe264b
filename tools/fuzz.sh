#!/usr/bin/env bash
# Runs each fuzz target with clang's engine for the seconds given, from its seeds; stops at the first finding.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v clang++-14 >/dev/null || tools/setup.sh clang-14
[ -f build/fuzz/build.ninja ] || cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 -DZELVAR_FUZZ=ON -DZELVAR_SANITIZE=address,undefined >/dev/null
for source in fuzz/Fuzz*.cpp; do
  name=$(sed -n "s/^zelvar_fuzz(\([a-z_]*\) $(basename "$source").*/\1/p" fuzz/CMakeLists.txt)
  [ -n "$name" ] || continue
  cmake --build build/fuzz --target "fuzz_$name"
  mkdir -p "build/fuzz/corpus/$name"
  echo "== $name"
  "$(find build/fuzz -name "fuzz_$name" -type f | head -1)" -max_total_time="${1:-60}" -print_final_stats=1 \
    "build/fuzz/corpus/$name" "fuzz/seeds/$name"
done
