#!/usr/bin/env bash
# Prints the table of the public classes: header, page of the gallery, tests. With --check it compares it with
# docs/classes.md instead.
#   classes.sh ZELVAR [--check]      ZELVAR: the built command, which knows the gallery's pages
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C
pages=$("$1" gallery --list)

# Classes, and in the rooms that are made of functions these.
names() {
  grep -oE '^(class|struct) ZELVAR_API [A-Za-z_]+' "$1" | awk '{print $3}' || true
  # A class that is all in its header is public by being installed.
  [ -f "${1%.h}.cpp" ] || grep -oE '^class [A-Za-z_]+( final)?( : .*)? \{' "$1" | awk '{print $2}' || true
  case $1 in src/dialogs/core/*) ;; src/drawing/* | src/dialogs/* | src/library/*)
    grep -oE '^(\[\[nodiscard\]\] )?ZELVAR_API [A-Za-z_:<> ]+[ *&][A-Za-z_]+\(' "$1" | sed 's/($//; s/.*[ *&]//' || true ;;
  esac
}

headers() { # that are installed: from "PUBLIC_HEADERS" to the next keyword
  local room
  for room in src/*/ src/*/*/; do
    [ -f "$room/CMakeLists.txt" ] || continue
    { tr '\n' ' ' <"$room/CMakeLists.txt" | grep -oP 'PUBLIC_HEADERS\K( +\w+\.h)+' | tr ' ' '\n' | sed "/./!d; s|^|$room|" || true; }
  done | LC_ALL=C sort
}

mentions=$(grep -roE --include='*Test.cpp' '\b[A-Z][A-Za-z]+\b|\bcdxC[A-Za-z]+\b' tests | sort | uniq -c | awk '{print $1, $2}')

table() {
  # shellcheck disable=SC2016 # the quotes are text
  printf '%s\n' '# Classes' '' \
    'Every public class with its header, the page of `zelvar gallery` that shows it, and the tests that know it best.' \
    'Made by `tools/classes.sh`; a test tells when it is out of date.' ''
  local room='' header line class page tests
  while read -r header; do
    while read -r class; do
      if [ "$room" != "$(dirname "$header")" ]; then
        room=$(dirname "$header")
        printf '\n## %s\n\n| Class | Header | Page | Tests |\n|---|---|---|---|\n' "${room#src/}"
      fi
      page=$(awk -F'\t' -v class="$class" '{ n = split($3, c, " "); for (i = 1; i <= n; ++i) if (c[i] == class) print $1 }' <<<"$pages" | head -1)
      tests=$(awk -v class="$class" '{ split($2, f, ":"); if (f[2] == class) print $1, f[1] }' <<<"$mentions" | sort -k1,1nr -k2 | head -1 | awk '{print $2}')
      printf '| `%s` | `zelvar/%s` | %s | %s |\n' "$class" "${header#src/}" "${page:--}" "${tests:-tests/${room#src/}}"
    done < <(names "$header" | awk '!seen[$0]++')
  done < <(headers)
}

if [ "${2:-}" = --check ]; then
  diff <(table) docs/classes.md
else
  table
fi
