#!/usr/bin/env bash
# Runs every test and check, or the suites that are named, and counts them. Each works to its end
# whatever happened before it. What the results add up to is decided by tests/house/summary.py.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

all_suites=(unit bus ctl linux faults workbench resources packaging soak sanitize fuzz house lint)
asked=("$@")
if ! ((${#asked[@]})); then
  asked=("${all_suites[@]}")
fi
for suite in "${asked[@]}"; do
  if [[ " ${all_suites[*]} " != *" $suite "* ]]; then
    die 2 "test: unknown suite '$suite'; there are: ${all_suites[*]}"
  fi
done

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

"$root/tools/setup.sh"
# shellcheck source=tools/suites.sh
source "$root/tools/suites.sh"

release=0
if wanted unit bus ctl linux faults workbench resources soak house lint; then
  check 'build release' 1200 "$root/tools/build.sh" release
  release=$status
fi
if wanted unit; then
  if ((release == 0)); then unit unit release; else blocked unit; fi
fi
declare -A at_a_time=([linux]=4 [faults]=4 [ctl]=2 [workbench]=2)
for suite in bus ctl linux faults workbench resources; do
  if wanted "$suite"; then
    if ((release == 0)); then
      pytests "$suite" release "tests/$suite" "${at_a_time[$suite]:-0}"
    else
      blocked "$suite"
    fi
  fi
done

if wanted packaging; then
  # What is tried is what people install: the packages themselves.
  check 'packages' 1200 "$root/tools/package.sh"
  if ((status == 0)); then pytests packaging package tests/packaging; else blocked packaging; fi
fi

if wanted soak; then
  if ((release == 0)); then
    soak simulated 4000 500
    soak linux 40 40
  else
    blocked soak
  fi
fi

if wanted sanitize; then
  check 'build sanitize' 1200 "$root/tools/build.sh" sanitize
  if ((status == 0)); then
    # Reports go to files: those of a daemon that a test started are then seen as well.
    export ASAN_OPTIONS="detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1"
    ASAN_OPTIONS+=":log_path=$sanitizer_reports/address"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
    UBSAN_OPTIONS+=":log_path=$sanitizer_reports/undefined"
    # What a loaded machine needs for it is no failure; nothing waits as long unless something is missing.
    export PORTMELD_TEST_LIMIT=180
    unit 'unit under sanitizers' sanitize
    for suite in bus ctl linux; do
      pytests "$suite under sanitizers" sanitize "tests/$suite" "${at_a_time[$suite]:-0}"
    done
    # A browser would only make these slow; what its cases ask of the program others ask as well.
    # What a library leaks is told by where it was allocated, which only the slow way back finds.
    ASAN_OPTIONS="fast_unwind_on_malloc=0:$ASAN_OPTIONS"
    export LSAN_OPTIONS="suppressions=$root/tests/workbench/leaks.supp:print_suppressions=0"
    pytests 'workbench under sanitizers' sanitize tests/workbench 4 --ignore=tests/workbench/browser
    unset ASAN_OPTIONS UBSAN_OPTIONS LSAN_OPTIONS PORTMELD_TEST_LIMIT
    no_sanitizer_reports
  else
    for suite in unit bus ctl linux workbench; do
      blocked "$suite under sanitizers"
    done
  fi
fi

if wanted fuzz; then
  check 'build fuzz' 1200 "$root/tools/build.sh" fuzz
  if ((status == 0)); then pytests fuzz fuzz tests/fuzz 2; else blocked fuzz; fi
fi

if wanted house; then
  check 'floors' 60 "$python" "$root/tests/house/floors.py" "$root"
  check 'rooms' 60 "$python" "$root/tests/house/rooms.py" "$root"
  pytests 'house' release tests/house
fi

if wanted lint; then
  check 'clang-format' 120 "$root/tools/lint.sh" format
  check 'shellcheck' 120 "$root/tools/lint.sh" shell
  if ((release == 0)); then
    check 'clang-tidy' 1200 "$root/tools/lint.sh" tidy
  else
    blocked 'clang-tidy'
  fi
fi

echo
exec "$python" "$root/tests/house/summary.py" "$manifest" "$root/tests/house/allowed-skips.txt"
