#!/usr/bin/env bash
# The linters, one at a time: lint.sh format|shell|tidy. Each fails when it finds no file to look
# at.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# Reads a list of files, ended by NUL, into files.
files=()
take() {
  mapfile -d '' files
  ((${#files[@]})) || die 1 "lint: there is no file to look at"
}

cd "$root"
case ${1:-} in
  format)
    take < <(cxx_files "${cxx_folders[@]}")
    if ! findings=$(clang-format --dry-run --Werror "${files[@]}" 2>&1); then
      # One line for a file; where and how is what ./dev format shows by doing it.
      grep -oP "^\\Q$root\\E/\K[^:]+(?=:\d+:\d+: error)" <<<"$findings" | uniq -c ||
        printf '%s\n' "$findings"
      echo "lines that are not in the form of .clang-format, by file; ./dev format mends them"
      exit 1
    fi
    ;;
  shell)
    take < <(shell_scripts)
    shellcheck -x "${files[@]}"
    ;;
  tidy)
    take < <(cxx_files src platform handlers workbench ctl)
    "$python" "$root/tools/tidy.py" "$root/build/release" "${files[@]}"
    ;;
  *)
    die 2 "lint: which one? format, shell or tidy"
    ;;
esac
