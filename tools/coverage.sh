#!/usr/bin/env bash
# Which lines of src/ the unit and bus tests reach. The judgement, and the table, are made by
# tools/coverage_report.py from what gcovr counted.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

"$root/tools/setup.sh"
# shellcheck source=tools/suites.sh
source "$root/tools/suites.sh"

check 'build coverage' 1200 "$root/tools/build.sh" coverage
((status == 0)) || die 1 "there is nothing to measure"
# Counts of earlier runs do not belong to this one.
find "$root/build/coverage" -name '*.gcda' -delete
unit 'unit for coverage' coverage
pytests 'bus for coverage' coverage tests/bus

echo
tests=0
"$python" "$root/tests/house/summary.py" "$manifest" "$root/tests/house/allowed-skips.txt" ||
  tests=1

echo
counts=$results/coverage.json
gcovr --root "$root" --filter "$root/src/" --json "$counts" "$root/build/coverage"
"$python" "$root/tools/coverage_report.py" "$counts" "$root/tests/coverage-exceptions.txt"
((tests == 0)) || die 1 "the figures above are from tests that did not all pass"
