#!/usr/bin/env bash
# Runs the fuzz harnesses, each for a while, or replays inputs. How is tools/fuzz.py's affair; what an
# input must not bring about is said in tests/fuzz/.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

"$root/tools/setup.sh"
"$root/tools/build.sh" fuzz
exec "$python" "$root/tools/fuzz.py" "$root" "$@"
