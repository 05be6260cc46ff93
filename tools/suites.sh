# How a suite or a check is run: in what surroundings, with what time limit, where its output and
# its results go. test.sh and coverage.sh say which. To be sourced after common.sh; it empties
# the folder of results and sets the environment that tests work in.
# shellcheck shell=bash

: "${root:?common.sh comes first}" "${python:?}"

results=${PORTMELD_RESULTS:-$root/build/results}
# How many times longer than usual everything may take: for an emulated machine.
patience=${PORTMELD_PATIENCE:-1}
# One line for each thing that ran, tab-separated; tests/house/summary.py adds them up.
manifest=$results/manifest
sanitizer_reports=$results/sanitizer-reports

rm -rf "$results"
mkdir -p "$sanitizer_reports"
: >"$manifest"

export PORTMELD_SOURCE_DIR=$root PYTHONDONTWRITEBYTECODE=1
# GLib's complaints end a test; slices come from malloc, where the sanitizers see them.
export G_DEBUG=fatal-criticals G_SLICE=always-malloc
# The same texts on every machine.
export LC_ALL=C.UTF-8
unset LANGUAGE
# No test talks to the buses of the person who runs it.
export DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/session-bus
export DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent/system-bus

# The exit status of what ran last, and the process that runs now.
status=0
running=
trap 'kill ${running:-} 2>/dev/null; exit 130' INT TERM

# Runs a command with a time limit in seconds, its output in a log that is shown when it fails; sets
# status: limited NAME LIMIT COMMAND...
limited() {
  local name=$1 limit=$(($2 * patience)) log=$results/${1// /-}.log began=$SECONDS
  shift 2
  printf '\n== %s\n' "$name"
  status=0
  # timeout(1) leaves the terminal's process group, so that an interrupt reaches only this script,
  # which therefore waits in a way that lets the trap pass it on. Bash has background commands
  # ignore interrupts, which tests must not inherit.
  env --default-signal=INT,QUIT timeout --kill-after=10 "$limit" "$@" >"$log" 2>&1 </dev/null &
  running=$!
  wait "$running" || status=$?
  running=
  if ((status == 0)); then
    printf 'ok, %d s\n' $((SECONDS - began))
    return
  fi
  tail -n 300 "$log"
  if ((status == 124 || status == 137)); then
    printf 'FAILED: no end within %d s\n' "$limit"
  else
    printf 'FAILED: exit status %d after %d s; all output: %s\n' \
      "$status" $((SECONDS - began)) "${log#"$root"/}"
  fi
}

# One command that counts as one check: check NAME LIMIT COMMAND...
check() {
  limited "$@"
  printf 'check\t%s\t%d\n' "$1" "$status" >>"$manifest"
}

# A suite that writes its cases to a file: cases NAME LIMIT RESULT-FILE COMMAND...
cases() {
  local name=$1 limit=$2 file=$3
  shift 3
  limited "$name" "$limit" "$@"
  printf 'cases\t%s\t%d\t%s\n' "$name" "$status" "$file" >>"$manifest"
}

# What cannot run because what it needs was not built: blocked NAME
blocked() {
  printf '\n== %s\nFAILED: not run, its build failed\n' "$1"
  printf 'blocked\t%s\n' "$1" >>"$manifest"
}

# The GoogleTest program of a build, in a fresh folder of its own: unit NAME VARIANT
unit() {
  local file=$results/${1// /-}.xml scratch
  scratch=$(mktemp -d "$results/scratch.XXXXXX")
  cases "$1" 300 "$file" env -C "$scratch" "PORTMELD_BUILD_DIR=$root/build/$2" \
    "GTEST_OUTPUT=xml:$file" GTEST_BRIEF=1 GTEST_COLOR=no "$root/build/$2/tests/unit/unit-tests"
}

# The pytest files of a folder, against a build, some at a time where they mostly wait:
# pytests NAME VARIANT FOLDER [AT-A-TIME [OPTION...]]
pytests() {
  local file=$results/${1// /-}.xml
  cases "$1" 600 "$file" env -C "$root" "PORTMELD_BUILD_DIR=$root/build/$2" \
    "$python" -m pytest -q --tb=short -p no:cacheprovider --rootdir="$root" \
    --numprocesses="${4:-0}" --junitxml="$file" "${@:5}" "$3"
}

# A short slice of the endurance runs, with the seed of every time and with another:
# soak PART CYCLES STEPS-BETWEEN-TWO-LOOKS-AT-THE-MEMORY
soak() {
  local seed
  for seed in 1 "$RANDOM"; do
    check "soak $1 seed $seed" 300 "$python" "$root/tests/soak/soak.py" \
      --build "$root/build/release" "$1" --seed "$seed" --cycles "$2" --rest-every "$3"
  done
}

# Fails when a sanitizer wrote a report, whichever process it was in, and shows the reports.
no_sanitizer_reports() {
  # shellcheck disable=SC2016  # the inner bash expands it
  check 'no sanitizer reports' 60 \
    bash -c 'cd "$1" && if [[ -n $(ls) ]]; then head -n 80 -- *; exit 1; fi' - \
    "$sanitizer_reports"
}
