#!/usr/bin/env bash
# Two builds beside each other: which figures changed beyond the noise. See --help.
set -euo pipefail
root=$(dirname "$0")/..
command -v python3 >/dev/null || "$root/tools/setup.sh" python3
export PYTHONDONTWRITEBYTECODE=1
exec python3 "$root/tools/bench-compare" "$@"
