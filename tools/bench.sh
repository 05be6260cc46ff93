#!/usr/bin/env bash
# Measures the daemon on this machine: builds it as it is shipped, and with it what it is measured
# against, and runs bench/bench.py.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

image=$root/build/bench-image

"$root/tools/setup.sh"
"$root/tools/build.sh" bench
rm -rf "${image:?}"
DESTDIR=$image meson install -C "$root/build/bench" --quiet >/dev/null
mkdir -p "$image/var/lib/portmeld/db/portmeld" "$image/run/portmeld/memory"
cd "$root"
PYTHONDONTWRITEBYTECODE=1 exec "$python" "$root/bench/bench.py" \
  --build "$root/build/bench" --image "$image" "$@"
