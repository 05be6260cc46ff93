# What every script in tools/ shares: where the project stands, how to speak and how to give up,
# and which files are its sources. To be sourced after `set -euo pipefail`; it does nothing itself.
# shellcheck shell=bash

# The project's folder, whatever folder the caller works in.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# Python with the distribution's own modules (gi, pytest); another python may be first on PATH.
# shellcheck disable=SC2034  # used by the scripts that source this file
python=/usr/bin/python3

# Says something about the work itself; standard output is left to what the work prints.
say() {
  printf '%s\n' "$*" >&2
}

# Gives up: die STATUS MESSAGE...
die() {
  local status=$1
  shift
  printf 'dev: %s\n' "$*" >&2
  exit "$status"
}

# Prints the C++ files below the given folders of the project, ended by NUL, sorted. A folder that
# does not exist holds none.
cxx_files() {
  local folder found=()
  for folder in "$@"; do
    if [[ -d $root/$folder ]]; then
      found+=("$root/$folder")
    fi
  done
  if ((${#found[@]})); then
    find "${found[@]}" -type f \( -name '*.cpp' -o -name '*.h' \) -print0 | sort -z
  fi
}

# Prints the project's shell scripts, ended by NUL: by name, or by the first line, which tells how they are
# run or judged.
shell_scripts() {
  local file first
  find "$root" \( -path "$root/build" -o -path "$root/.git" -o -name __pycache__ \) -prune \
    -o -type f -print0 | sort -z | while IFS= read -r -d '' file; do
    first=
    IFS= read -r first 2>/dev/null <"$file" || true
    if [[ $file == *.sh || $first =~ ^'#!'.*[/\ ](ba|da|)sh($|\ ) || $first == '# shellcheck shell='* ]]; then
      printf '%s\0' "$file"
    fi
  done
}

# The folders that hold C++ of ours.
# shellcheck disable=SC2034  # used by the scripts that source this file
cxx_folders=(text src platform handlers workbench ctl tests bench)
