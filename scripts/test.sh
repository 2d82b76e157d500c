#!/usr/bin/env bash
# Builds both targets and runs every test: natively on x86-64, the AArch64
# build under qemu on a CPU without SVE, and the native unit tests once more
# under the address and undefined-behaviour sanitizers.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/deps.sh"
bash "$root/scripts/build.sh"
cd "$root"
jobs=${JOBS:-$(nproc)}
status=0
echo "== native tests =="
ctest --test-dir build/native -j "$jobs" --output-on-failure || status=1
echo "== aarch64 tests (qemu, cortex-a72) =="
ctest --test-dir build/aarch64 -j "$jobs" --output-on-failure || status=1
echo "== native unit tests under AddressSanitizer and UndefinedBehaviorSanitizer =="
bash "$root/scripts/sanitize.sh" || status=1
exit $status
