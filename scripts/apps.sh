#!/usr/bin/env bash
# Builds the preload library and the SVE test programs (AArch64 cross build),
# runs every program three ways under qemu (tests/apps/run_app.sh), and prints
# one line per program: PASS, WAIT (stopped at an instruction whose handler is
# not built yet, with the handlers it waits on) or FAIL.
#
#   scripts/apps.sh [ctest -R regex]
# BUILD_DIR overrides the build directory (default build/pre-aarch64).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build/pre-aarch64}
jobs=${JOBS:-2}
bash "$root/scripts/deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/aarch64-linux-gnu.cmake" >/dev/null
cmake --build "$build" -j "$jobs" --target sve_trap_512 sve_unhandled sve_apps

log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
ctest --test-dir "$build" -L apps -j "$jobs" -V ${1:+-R "$1"} >"$log" 2>&1 || status=$?

echo "== SVE applications: emulated run against the reference =="
sed -n 's/^[0-9]*: \(PASS\|SKIP\|FAIL\)\(: \)\{0,1\}/\1 /p' "$log" | sed 's/^SKIP /WAIT /' | sort -k1,1 -s
pass=$(grep -c '^[0-9]*: PASS: ' "$log" || true)
wait=$(grep -c '^[0-9]*: SKIP: ' "$log" || true)
fail=$(grep -c '^[0-9]*: FAIL' "$log" || true)
echo "$pass passed, $fail failed, $wait waiting on handlers"
if [ "$status" -ne 0 ]; then
  echo "-- failures in full:"
  grep -E '^[0-9]+: ' "$log" | grep -v 'Test command\|Working Directory\|Test timeout' | tail -n 80
fi
exit "$status"
