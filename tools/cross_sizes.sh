#!/usr/bin/env bash
# Prints how large the programs in packages are: cross_sizes.sh FOLDER. "text" is code and constants,
# "data" what is written to from the start, "bss" what begins as zeros; all in bytes. "file" is the program
# as it is installed.
set -euo pipefail

folder=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

printf '%-14s %8s %8s %8s %8s\n' program text data bss file
for package in "$folder"/portmeld_*.deb "$folder"/portmeld-handlers_*.deb; do
  dpkg-deb --extract "$package" "$scratch"
done
for program in usr/bin/portmeld usr/bin/portmeldctl usr/libexec/portmeld/portmeld-open; do
  # The second line; the first is a headline of its own.
  read -r text data bss _ < <(size "$scratch/$program" | tail -n 1)
  printf '%-14s %8s %8s %8s %8s\n' "${program##*/}" "$text" "$data" "$bss" \
    "$(stat --format=%s "$scratch/$program")"
done
