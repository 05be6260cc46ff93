#!/usr/bin/env bash
# Configures and builds the variants of the project below build/: release (what people run and most
# tests use), sanitize (address and undefined-behaviour sanitizers), coverage, fuzz (clang's fuzzer with
# both sanitizers; only its programs and what they need), machine and bench. Says nothing more than a
# headline when all goes well. Warnings are errors in each of them.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# Variants put a relative folder in front of the daemon's absolute paths, so that each process finds
# them below the folder that it works in. "machine" is what `./dev run --machine` runs from anywhere, and
# "bench" the same with what it is measured against, by the compiler options of the package.
common_options=(-Dwerror=true -Dpath_prefix=./root)

# Sets options to how a variant is configured, and targets to what is built of it: nothing for all.
options_of() {
  targets=()
  case $1 in
    release) options=(-Dbuildtype=release -Doptimization=2) ;;
    sanitize)
      options=(-Dbuildtype=debugoptimized -Doptimization=1 "-Db_sanitize=address,undefined" -Db_lundef=false)
      ;;
    coverage) options=(-Dbuildtype=debug -Db_coverage=true) ;;
    fuzz)
      options=(-Dbuildtype=debugoptimized -Doptimization=1 "-Db_sanitize=address,undefined" -Db_lundef=false)
      options+=(-Dfuzz=true)
      targets=(fuzz-harnesses)
      ;;
    machine) options=(-Dbuildtype=release -Ddevelopment=false) ;;
    bench) options=(-Dbuildtype=plain -Ddevelopment=false -Dbench=true) ;;
    *) die 2 "build: unknown variant '$1'; there are release, sanitize, coverage, fuzz, machine and bench" ;;
  esac
  options=("${common_options[@]}" "${options[@]}")
  if [[ $1 == machine || $1 == bench ]]; then
    options+=("-Dpath_prefix=$root/build/$1-image")
  fi
}

# Runs a command, keeping what it prints for the case that it fails.
quietly() {
  local log=$1
  shift
  if ! "$@" >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    return 1
  fi
}

build() {
  local variant=$1 options targets folder stamp asked
  options_of "$variant"
  local -x LDFLAGS=${LDFLAGS:-}
  if [[ $variant == sanitize ]] && ! "${CXX:-c++}" --version | grep -qi clang; then
    # g++'s undefined-behaviour sanitizer writes its reports to files only when linked this way,
    # which is clang's own.
    LDFLAGS+=" -static-libasan -static-libubsan"
  fi
  if [[ $variant == fuzz ]] && ! "${CXX:-c++}" --version | grep -qi clang; then
    local -x CXX=clang++
    if command -v ccache >/dev/null; then
      # Meson looks for it only when it chooses the compiler itself.
      CXX="ccache clang++"
    fi
  fi
  if [[ $variant == bench ]]; then
    # Those of debian/rules: what is measured is what people install.
    local name
    for name in CFLAGS CXXFLAGS CPPFLAGS LDFLAGS; do
      local -x "$name=$(cd "$root" && DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get "$name")"
    done
  fi
  folder=$root/build/$variant
  stamp=$folder/dev-options
  # The compiler and its flags are part of what a folder is configured with.
  asked="${options[*]} CC=${CC:-} CXX=${CXX:-} CFLAGS=${CFLAGS:-} CXXFLAGS=${CXXFLAGS:-}"
  asked+=" CPPFLAGS=${CPPFLAGS:-} LDFLAGS=$LDFLAGS"

  if [[ ! -f $stamp || $(<"$stamp") != "$asked" ]]; then
    say "build: configuring build/$variant"
    rm -rf "$folder"
    if ! quietly "$root/build/$variant.log" meson setup "${options[@]}" "$folder" "$root"; then
      rm -rf "$folder"
      die 1 "configuring build/$variant failed"
    fi
    printf '%s\n' "$asked" >"$stamp"
  fi

  say "build: building build/$variant"
  if [[ -t 2 ]]; then
    ninja -C "$folder" "${targets[@]}" >&2 || die 1 "building build/$variant failed"
  else
    # All errors of one run, not just the first.
    quietly "$root/build/$variant.log" ninja -C "$folder" --quiet -k 0 "${targets[@]}" ||
      die 1 "building build/$variant failed"
  fi
}

if (($# == 0)); then
  set -- release
fi
mkdir -p "$root/build"
# Two runs in one folder would spoil each other's files.
exec 9>"$root/build/lock"
flock 9
for variant in "$@"; do
  build "$variant"
done
