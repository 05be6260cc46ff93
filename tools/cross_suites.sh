#!/usr/bin/env bash
# Inside the system of ./dev cross: builds the project for an architecture, runs suites of its tests with
# the architecture's programs under an emulator, and makes the packages: cross_suites.sh ARCHITECTURE
# SUITE...
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

architecture=$1
shift
asked=("$@")
variant=cross/$architecture
folder=$root/build/$variant
declare -A emulators=([armhf]=qemu-arm [arm64]=qemu-aarch64)

# True when one of the named suites is asked for.
wanted() {
  local name
  for name in "$@"; do
    if [[ " ${asked[*]} " == *" $name "* ]]; then
      return 0
    fi
  done
  return 1
}

# Runs what prints figures, as on a television without what tests set, and shows them: figures NAME COMMAND...
figures() {
  check "$1 on $architecture" 60 env -u G_DEBUG -u G_SLICE "${@:2}"
  cat "$results/$1-on-$architecture.log"
}

export PORTMELD_RESULTS=$folder/results PORTMELD_PATIENCE=6 PORTMELD_TEST_LIMIT=300
export PORTMELD_SKIP_SETUP=1
# shellcheck source=tools/suites.sh
source "$root/tools/suites.sh"

built=0
if wanted unit bus ctl memory; then
  check "build for $architecture" 1200 \
    "$root/tools/cross_build.sh" "$architecture" "${emulators[$architecture]}" "$folder"
  built=$status
fi
if wanted unit; then
  if ((built == 0)); then unit "unit on $architecture" "$variant/run"; else blocked unit; fi
fi
for suite in bus ctl; do
  if wanted "$suite"; then
    if ((built == 0)); then
      pytests "$suite on $architecture" "$variant/run" "tests/$suite" 2
    else
      blocked "$suite"
    fi
  fi
done
if wanted memory; then
  if ((built == 0)); then
    figures memory "$root/tools/cross_memory.py" "${emulators[$architecture]}" \
      "$folder/tests/src/portmeld" "$root"
  else
    blocked memory
  fi
fi
if wanted packages; then
  check "packages for $architecture" 1200 \
    "$root/tools/package.sh" --arch "$architecture" "$folder/package"
  if ((status == 0)); then
    figures sizes "$root/tools/cross_sizes.sh" "$folder/package"
  fi
fi

echo
exec "$python" "$root/tests/house/summary.py" "$manifest" "$root/tests/house/allowed-skips.txt"
