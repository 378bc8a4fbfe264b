#!/usr/bin/env bash
# The example in the README is the one that is compiled.
cd "$(dirname "$0")/.." || exit 2
diff <(sed -n '/^```cpp$/,/^```$/p' README.md | sed '1d;$d') docs/examples/open-and-save.cpp
