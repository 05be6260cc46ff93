#!/usr/bin/env bash
# Installs what is missing, builds, and lets the daemon endure: tests/soak/soak.py tells the arguments.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

if [[ " $* " != *" --help "* && " $* " != *" -h "* ]]; then
  "$root/tools/setup.sh"
  "$root/tools/build.sh" release
fi
exec "$python" "$root/tests/soak/soak.py" --build "$root/build/release" "$@"
