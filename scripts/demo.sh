#!/usr/bin/env bash
# The demonstration: builds everything and emulates the worked ADD, natively
# and as the AArch64 build on a CPU without SVE.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/deps.sh"
bash "$root/scripts/build.sh"
echo "== native =="
"$root/build/native/hosts/sve_demo_add"
echo "== AArch64 build under qemu -cpu cortex-a72 (no SVE) =="
qemu-aarch64 -cpu cortex-a72 -L /usr/aarch64-linux-gnu "$root/build/aarch64/hosts/sve_demo_add"
