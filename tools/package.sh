#!/usr/bin/env bash
# Makes the Debian packages in a copy of the project and has lintian judge them; they are left in
# build/package, or in the folder that is named. Packages of a project that has not changed since are
# kept. The tests are not run: ./dev test packaging tries the packages. With --arch ARCHITECTURE the
# packages are for other machines, whose compiler and libraries must be there: ./dev cross sees to that.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

architecture=
if [[ ${1:-} == --arch && -n ${2:-} ]]; then
  architecture=$2
  shift 2
fi
if (($# > 1)) || [[ ${1:-} == -* ]]; then
  die 2 "package: takes --arch ARCHITECTURE, and the folder to leave the packages in"
fi
folder=${1:-$root/build/package}
mkdir -p "$folder"
folder=$(cd "$folder" && pwd -P)

"$root/tools/setup.sh" --packaging
for tool in dpkg-buildpackage lintian; do
  command -v "$tool" >/dev/null || die 1 "package: there is no $tool on this machine"
done

# The project as an archive whose files lie below a folder: archive FOLDER [OPTION-OF-TAR...]
archive() {
  tar -C "$root" --exclude-vcs --exclude=./build --exclude=./obj-* --exclude=__pycache__ \
    --exclude=.cache --exclude=.pytest_cache --sort=name --owner=0 --group=0 \
    --numeric-owner --transform="s|^\.|$1|" "${@:2}" -c .
}

exec 9>"$folder/lock"
flock 9
log=$folder/log
stamp=$folder/stamp
content=$architecture$(archive project --mtime=@0 | sha256sum)
profiles=nocheck
builder=(dpkg-buildpackage --no-sign)
if [[ -n $architecture ]]; then
  profiles+=" cross"
  builder+=(--host-arch "$architecture")
fi
if [[ -f $stamp && $(<"$stamp") == "$content" ]]; then
  say "package: nothing has changed"
else
  say "package: building (log: $log)"
  rm -rf "$stamp" "$folder"/portmeld-* "$folder"/portmeld_*
  version=$(dpkg-parsechangelog -l "$root/debian/changelog" -S Version)
  archive "portmeld-$version" | tar -C "$folder" -x
  cd "$folder/portmeld-$version"
  if ! DEB_BUILD_OPTIONS="nocheck parallel=$(nproc) ${DEB_BUILD_OPTIONS:-}" DEB_BUILD_PROFILES=$profiles \
    "${builder[@]}" >"$log" 2>&1 </dev/null; then
    tail -n 100 "$log" >&2
    die 1 "package: dpkg-buildpackage failed"
  fi
  cd "$folder"
  rm -rf "portmeld-$version"
  say "package: lintian"
  options=(--fail-on "error,warning" --color never)
  if [[ $(id -u) == 0 ]]; then
    options+=(--allow-root)
  fi
  lintian "${options[@]}" ./*.changes </dev/null >&2 || die 1 "package: lintian is not content"
  printf '%s\n' "$content" >"$stamp"
fi
printf '%s\n' "$folder"/*.deb
