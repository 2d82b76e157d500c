#!/usr/bin/env bash
# Fuzzes the decoder and the handlers (tests/fuzz/fuzz_decode.cpp) with
# libFuzzer, in a clang build of the tree kept in build/fuzz.
#
#   scripts/fuzz.sh [SECONDS]   replay the kept cases, then fuzz SECONDS (default
#                               600) from the corpus kept in build/fuzz/work;
#                               a crashing input is copied to
#                               tests/fuzz/corpus/open/ as a regression case
#   scripts/fuzz.sh --ctest     what the test suite runs: build if needed, run
#                               the self-tests of the checks, replay the kept
#                               cases, fuzz 60 s with a fixed seed from an empty
#                               corpus
#   scripts/fuzz.sh --replay    replay the kept cases only (tests/fuzz/corpus/*)
#   scripts/fuzz.sh --replay-open   replay the cases of open bugs
#   --binary PATH               use this fuzzer instead of building build/fuzz
#   --run SECONDS               fuzz with a fixed seed from an empty corpus
#
# Cases in tests/fuzz/corpus/ must pass; those in tests/fuzz/corpus/open/ are
# known failures waiting for a fix, each named in tests/fuzz/corpus/open/README.
# JOBS sets the build's parallelism (default 2).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/fuzz
corpus=$root/tests/fuzz/corpus
jobs=${JOBS:-2}

mode=long seconds=600 binary=
while [ $# -gt 0 ]; do
  case "$1" in
    --ctest) mode=ctest; seconds=60; shift ;;
    --replay) mode=replay; shift ;;
    --replay-open) mode=replay-open; shift ;;
    --run) mode=run; seconds=$2; shift 2 ;;
    --binary) binary=$2; shift 2 ;;
    [0-9]*) seconds=$1; shift ;;
    *) echo "usage: $0 [SECONDS] | --ctest | --replay | --replay-open | --run SECONDS [--binary PATH]" >&2; exit 2 ;;
  esac
done

build_fuzzer() {
  command -v clang++ >/dev/null || { echo "fuzz.sh: clang++ not found (scripts/deps.sh installs it)" >&2; exit 1; }
  mkdir -p "$build"
  # Two test runs may ask for the build at once; one builds, the other waits.
  exec 9>"$build.lock"
  flock 9
  if [ ! -f "$build/build.ninja" ]; then
    CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DSVE_FUZZ=ON >/dev/null
  fi
  cmake --build "$build" -j "$jobs" --target fuzz_decode
  flock -u 9
  binary=$build/tests/fuzz/fuzz_decode
}

# Options common to every run. The input is at most 9 header bytes and the
# register file; a handler that takes 10 s on one word is hung.
fuzz_opts=(-timeout=10 -rss_limit_mb=4096 -max_len=3600 -print_final_stats=1)

replay() {
  local dir=$1 files=()
  shopt -s nullglob
  for f in "$dir"/*; do
    [ -f "$f" ] && [ "$(basename "$f")" != README ] && files+=("$f")
  done
  shopt -u nullglob
  if [ ${#files[@]} -eq 0 ]; then
    echo "fuzz.sh: no cases in $dir"
    return 0
  fi
  echo "fuzz.sh: replaying ${#files[@]} cases from $dir"
  "$binary" "${fuzz_opts[@]}" "${files[@]}"
}

# fuzz SECONDS WORKDIR [extra libFuzzer options]: runs, reports the number of
# executions, and on a crash names the input it kept.
fuzz() {
  local secs=$1 work=$2 artifacts log status=0
  shift 2
  artifacts=$build/artifacts
  mkdir -p "$work" "$artifacts"
  log=$(mktemp)
  # The progress lines of every new input are left out of the output.
  set +e
  "$binary" "${fuzz_opts[@]}" -max_total_time="$secs" -artifact_prefix="$artifacts/" "$@" \
    "$work" 2>&1 | tee "$log" | grep -v '^#[0-9]*[[:space:]]*\(NEW\|REDUCE\|pulse\)'
  status=${PIPESTATUS[0]}
  set -e
  local execs
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  if [ "$status" -eq 0 ] && [ -n "$execs" ]; then
    echo "fuzz.sh: $execs executions in ${secs} s, about $((execs / secs)) per second"
  fi
  if [ "$status" -ne 0 ]; then
    local kept
    kept=$(sed -n 's/.*Test unit written to \(.*\)$/\1/p' "$log" | tail -n 1)
    echo "fuzz.sh: the fuzzer failed (status $status)${kept:+; input kept in $kept}" >&2
    if [ -n "$kept" ] && [ "$mode" = long ]; then
      mkdir -p "$corpus/open"
      cp "$kept" "$corpus/open/"
      echo "fuzz.sh: copied to $corpus/open/$(basename "$kept"); describe it in $corpus/open/README" >&2
    fi
  fi
  rm -f "$log"
  return "$status"
}

if [ -z "$binary" ]; then build_fuzzer; fi

case "$mode" in
  replay) replay "$corpus" ;;
  replay-open) replay "$corpus/open" ;;
  run|ctest)
    if [ "$mode" = ctest ]; then
      # Each check of the fuzzer must be seen to fire before a quiet run means anything.
      ctest --test-dir "$build" -R '^fuzz_selftest_' --output-on-failure
    fi
    replay "$corpus"
    work=$(mktemp -d "${TMPDIR:-/tmp}/sve-fuzz.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    fuzz "$seconds" "$work/corpus" -seed=1
    ;;
  long)
    replay "$corpus"
    fuzz "$seconds" "$build/work/corpus"
    ;;
esac
