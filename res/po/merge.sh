#!/bin/sh
# Bring the comments and the new message ids of portmeld.pot into every catalogue. Translations
# stay as they are, none is guessed: a new id starts empty, and the tests name the catalogues that
# lack it.
set -eu

cd "$(dirname "$0")"
sed 's/#.*//' LINGUAS | while read -r language; do
  if [ -n "$language" ]; then
    msgmerge --quiet --update --backup=none --no-fuzzy-matching --no-wrap \
      "$language.po" portmeld.pot
  fi
done
