#!/usr/bin/env bash
# Installs what the project needs and this machine lacks. The list is the Build-Depends field of
# debian/control and nothing else; when all of it is there, nothing is started and no network is
# needed. debhelper-compat serves only the making of packages and is asked for by --packaging.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

control=$root/debian/control

# Prints the relations of Build-Depends, one on a line, comments and indentation removed.
relations() {
  awk '
    /^#/ { next }
    /^[ \t]*$/ { if (any) exit; next }
    { any = 1 }
    /^[^ \t]/ { inside = (tolower($0) ~ /^build-depends:/); sub(/^[^:]*:/, "") }
    inside { text = text " " $0 }
    END {
      count = split(text, parts, ",")
      for (i = 1; i <= count; i++) {
        gsub(/^[ \t]+|[ \t]+$/, "", parts[i])
        if (parts[i] != "") print parts[i]
      }
    }' "$control"
}

# The versions in which a name is installed, or provided by something else ("-": provided without
# a version), each after a blank.
declare -A installed=()
read_installed() {
  local status name version provides item
  local provided='^[, ]*([a-z0-9][a-z0-9+.-]+)(:[a-z0-9]+)?( *\(= *([^)]+)\))?(.*)$'
  installed=()
  while IFS=$'\t' read -r status name version provides; do
    [[ $status == installed ]] || continue
    installed[$name]+=" $version"
    while [[ $provides =~ $provided ]]; do
      item=${BASH_REMATCH[1]}
      installed[$item]+=" ${BASH_REMATCH[4]:--}"
      provides=${BASH_REMATCH[5]}
    done
  done < <(dpkg-query -W -f='${db:Status-Status}\t${Package}\t${Version}\t${Provides}\n')
}

# Takes one alternative of a relation apart: sets name, operator and wanted; fails on what it
# does not know rather than guess.
parse_alternative() {
  local pattern='^([a-z0-9][a-z0-9+.-]+)(:(any|native))?'
  pattern+='( *\((<<|<=|=|>=|>>) *([^ )]+)\))?( *<!nocheck>)?$'
  [[ $1 =~ $pattern ]] || die 1 "debian/control: cannot read the build dependency '$1'"
  name=${BASH_REMATCH[1]}
  operator=${BASH_REMATCH[5]}
  wanted=${BASH_REMATCH[6]}
}

# True when one of the alternatives of a relation is installed; sets first to the one to install.
satisfied() {
  local alternatives alternative name operator wanted there
  first=
  IFS='|' read -ra alternatives <<<"$1"
  for alternative in "${alternatives[@]}"; do
    alternative=${alternative#"${alternative%%[! ]*}"}
    alternative=${alternative%"${alternative##*[! ]}"}
    parse_alternative "$alternative"
    first=${first:-$name}
    for there in ${installed[$name]:-}; do
      if [[ -z $operator ]]; then
        return 0
      fi
      if [[ $there != - ]] && dpkg --compare-versions "$there" "$operator" "$wanted"; then
        return 0
      fi
    done
  done
  return 1
}

# Sets missing to the packages to install.
missing=()
find_missing() {
  local relation first
  missing=()
  for relation in "${wanted_relations[@]}"; do
    if ! satisfied "$relation"; then
      missing+=("$first")
    fi
  done
}

packaging=false
case ${1:-} in
  --packaging) packaging=true ;;
  '') ;;
  *) die 2 "setup: unknown argument '$1'" ;;
esac

[[ -r $control ]] || die 1 "cannot read $control, the list of what has to be installed"
wanted_relations=()
while IFS= read -r line; do
  if [[ $line == debhelper* ]] && ! $packaging; then
    continue
  fi
  wanted_relations+=("$line")
done < <(relations)
((${#wanted_relations[@]})) || die 1 "debian/control: no Build-Depends found"

if [[ -n ${PORTMELD_SKIP_SETUP:-} ]]; then
  say "setup: skipped, PORTMELD_SKIP_SETUP is set"
  exit 0
fi

if ! command -v dpkg-query >/dev/null; then
  say "This machine has no dpkg, so ./dev cannot tell what is installed. portmeld needs what these"
  say "packages of Debian 12 hold:"
  printf '  %s\n' "${wanted_relations[@]}" >&2
  say "Install their counterparts, then set PORTMELD_SKIP_SETUP=1 and run ./dev again."
  exit 1
fi

read_installed
find_missing
if ! ((${#missing[@]})); then
  say "setup: nothing is missing"
  exit 0
fi

say "setup: missing: ${missing[*]}"
if ! command -v apt-get >/dev/null; then
  die 1 "there is no apt-get on this machine; install these packages yourself: ${missing[*]}"
fi
as_root=()
if [[ $(id -u) != 0 ]]; then
  if ! command -v sudo >/dev/null; then
    die 1 "installing needs root or sudo; as root run: apt-get install ${missing[*]}"
  fi
  as_root=(sudo)
fi

mkdir -p "$root/build"
log=$root/build/setup.log
apt() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y \
    -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 "$@" </dev/null >>"$log" 2>&1
}
: >"$log"
say "setup: apt-get update"
# A list that could not be fetched need not be one that is wanted here: the installation decides.
if ! apt update; then
  say "setup: apt-get update failed; going on with the lists that are there"
fi
say "setup: apt-get install (this can take some minutes; log: build/setup.log)"
if ! apt --no-install-recommends install "${missing[@]}"; then
  tail -n 30 "$log" >&2
  die 1 "could not install: ${missing[*]}"
fi

read_installed
find_missing
if ((${#missing[@]})); then
  die 1 "still missing after the installation: ${missing[*]}"
fi
say "setup: done"
