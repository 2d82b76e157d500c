#!/usr/bin/env bash
# Builds the native tree with gcc's AddressSanitizer and UndefinedBehaviorSanitizer
# (-DSVE_SANITIZE=ON, in build/asan-native) and runs the whole unit suite there.
# Any sanitizer report fails the test that raised it: UBSan does not recover,
# ASan stops at its first error.
#
#   scripts/sanitize.sh [ctest arguments, e.g. -R Gather]
#   scripts/sanitize.sh --thread   ThreadSanitizer instead, on the two-thread
#                                  tests only (build/tsan-native, test_robust)
# BUILD_DIR overrides the build directory, JOBS the parallelism (default 2).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=${JOBS:-2}
bash "$root/scripts/deps.sh"

if [ "${1:-}" = --thread ]; then
  shift
  build=${BUILD_DIR:-$root/build/tsan-native}
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS="-fsanitize=thread" -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=thread" \
    -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=thread" >/dev/null
  cmake --build "$build" -j "$jobs" --target test_robust
  export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}
  exec ctest --test-dir "$build" -R '^StatsStress\.' --output-on-failure "$@"
fi

build=${BUILD_DIR:-$root/build/asan-native}
start=$(date +%s)
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSVE_SANITIZE=ON >/dev/null
cmake --build "$build" -j "$jobs"
built=$(date +%s)

# check_initialization_order: the decode maps and the statistics are built by
# a static initialiser, which must not read another file's globals before they
# are made. The caller's settings win.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:check_initialization_order=1:strict_init_order=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
# conformance_quick runs the AArch64 build's runner under qemu: nothing of
# this build is in it.
status=0
ctest --test-dir "$build" -j "$jobs" --output-on-failure -E '^conformance_quick$' "$@" || status=$?
end=$(date +%s)
echo "sanitize.sh: build $((built - start)) s, tests $((end - built)) s"
exit "$status"
