#!/usr/bin/env bash
# Inside the system of ./dev cross: builds programs and tests for an architecture, warnings as errors, and
# lays beside them a folder in which each program is a script that starts it under an emulator; the tests
# take that for their build folder: cross_build.sh ARCHITECTURE EMULATOR FOLDER
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

architecture=$1
emulator=$2
folder=$3
build=$folder/tests
run=$folder/run

if [[ ! -f $build/build.ninja ]]; then
  meson env2mfile --cross --debarch="$architecture" -o "$folder/machine.ini"
  printf "[binaries]\nexe_wrapper = '%s'\n" "$emulator" >"$folder/emulator.ini"
  rm -rf "$build"
  meson setup --cross-file="$folder/machine.ini" --cross-file="$folder/emulator.ini" \
    -Dwerror=true -Dpath_prefix=./root -Dbuildtype=release -Doptimization=2 "$build" "$root"
fi
ninja -C "$build" --quiet -k 0

rm -rf "$run"
while IFS= read -r -d '' program; do
  script=$run/${program#"$build"/}
  mkdir -p "${script%/*}"
  # shellcheck disable=SC2016  # the script expands it
  printf '#!/bin/sh\nexec %s %q "$@"\n' "$emulator" "$program" >"$script"
  chmod +x "$script"
done < <(find "$build" -type f -executable ! -name '*.so*' ! -path '*/meson-private/*' -print0)
ln -s ../tests/res "$run/res"
