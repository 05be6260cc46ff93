# What the verbs share that need more than ./dev setup installs: root, packages that nobody else needs,
# and things that are made once and kept. The caller sets verb, its name, and folder, where it keeps what
# it makes. To be sourced after common.sh.
# shellcheck shell=bash

: "${root:?common.sh comes first}" "${verb:?}" "${folder:?}"

as_root=()
if [[ $(id -u) != 0 ]]; then
  command -v sudo >/dev/null || die 1 "$verb: it needs root or sudo"
  as_root=(sudo)
fi

# Installs those of the packages that this machine lacks; PORTMELD_SKIP_SETUP leaves them to people.
need() {
  local package missing=()
  for package in "$@"; do
    if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
      missing+=("$package")
    fi
  done
  if ! ((${#missing[@]})); then
    return
  fi
  if [[ -n ${PORTMELD_SKIP_SETUP:-} ]]; then
    say "$verb: PORTMELD_SKIP_SETUP is set, and these packages are not installed: ${missing[*]}"
    return
  fi
  say "$verb: installing ${missing[*]} (log: ${folder#"$root"/}/setup.log)"
  if ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -o DPkg::Lock::Timeout=300 \
    --no-install-recommends install "${missing[@]}" >"$folder/setup.log" 2>&1 </dev/null; then
    tail -n 20 "$folder/setup.log" >&2
    die 1 "$verb: could not install them; apt-get update may help"
  fi
}

# Runs a command unless what it was made from is as it was: made NAME CONTENT COMMAND...
made() {
  local name=$1 content=$2 stamp=$folder/$1.stamp began=$SECONDS
  shift 2
  if [[ -f $stamp && $(<"$stamp") == "$content" ]]; then
    return
  fi
  rm -f "$stamp"
  say "$verb: making the $name (log: ${folder#"$root"/}/$name.log)"
  if ! nice -n 5 "$@" >"$folder/$name.log" 2>&1 </dev/null; then
    tail -n 40 "$folder/$name.log" >&2
    die 1 "$verb: could not make the $name"
  fi
  printf '%s\n' "$content" >"$stamp"
  say "$verb: made the $name in $((SECONDS - began)) s"
}

# One number for the contents of files and folders: sum PATH...
sum() {
  find "$@" -type f -not -path '*/__pycache__/*' -print0 | sort -z | xargs -0 sha256sum | sha256sum
}
