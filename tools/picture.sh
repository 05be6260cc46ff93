#!/usr/bin/env bash
# Makes the picture of the workbench's page that the README shows: the browser test that compares it
# takes it anew.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

"$root/tools/setup.sh"
"$root/tools/build.sh" release
made=$root/build/results/workbench.png
rm -f "$made"
# The test fails while the old picture stands; what it took counts.
PORTMELD_BUILD_DIR=$root/build/release "$python" -m pytest -q --tb=line -p no:cacheprovider --rootdir="$root" \
  "$root/tests/workbench/browser/test_readme_picture.py" -k as_it_is || true
[[ -f $made ]] || die 1 'the page could not be pictured'
cp "$made" "$root/docs/workbench.png"
say 'docs/workbench.png is new: look at it before you commit it'
