#!/usr/bin/env bash
# Takes the marked texts of the sources into the catalogues of translations/: new ones come without a translation, those
# that are gone go. With --check it changes nothing and fails on a catalogue that is not up to date, lacks a translation
# or has one whose places for values differ from the text's.
set -euo pipefail
cd "$(dirname "$0")/.."
check=; [ "${1:-}" = --check ] && check=yes
work=$(mktemp -d); trap 'rm -r "$work"' EXIT
extract() { # extract KEYWORDS... < files
  xgettext --files-from=- --language=C++ --qt --from-code=UTF-8 --add-location=file --sort-by-file --keyword \
    --join-existing --output="$work/zelvar.pot" --package-name=Zelvar --copyright-holder= \
    --keyword=Mark --keyword=Translated:1,1t --keyword=Translated:1,2,3t --keyword=Shown \
    --flag=Translated:1:pass-c-format "$@"
}
: >"$work/zelvar.pot"
# What is told to the user is translated by `Report` itself.
git ls-files -co --exclude-standard 'src/*.h' 'src/*.cpp' | grep -v '^src/\(gallery\|reader\|data/gdal\)/' |
  extract --keyword=UserNotification --keyword=UserNotificationEnforced --keyword=UserWarning
# And by the gallery's pages what they are given.
git ls-files -co --exclude-standard 'src/gallery/*Page*.h' 'src/gallery/*Page*.cpp' src/gallery/Gallery.cpp |
  extract --keyword=Add:1,2t --keyword=AddWide --keyword=AddButton --keyword=AddSwitch --keyword=Say
status=0
for catalogue in translations/*.po; do
  # The dates would make every run a change.
  msgmerge --quiet --no-fuzzy-matching --sort-by-file --add-location=file "$catalogue" "$work/zelvar.pot" 2>"$work/errors" |
    msgattrib --no-obsolete --sort-by-file --add-location=file | sed '/^"POT-Creation-Date:/d' >"$work/now.po" ||
    { cat "$work/errors"; exit 1; }
  if [ -z "$check" ]; then
    cp "$work/now.po" "$catalogue"
    msgfmt --statistics --output-file=/dev/null "$catalogue"
    continue
  fi
  cmp -s "$work/now.po" "$catalogue" ||
    { echo "$catalogue: not up to date, run tools/translations.sh"; diff "$catalogue" "$work/now.po" | head -20; status=1; }
  missing=$(msgattrib --untranslated --no-obsolete "$catalogue"; msgattrib --only-fuzzy --no-obsolete "$catalogue")
  [ -z "$missing" ] || { printf '%s: without a translation\n%s\n' "$catalogue" "$missing"; status=1; }
  msgfmt --check --output-file=/dev/null "$catalogue" || status=1
done
exit $status
