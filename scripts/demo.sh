#!/usr/bin/env bash
# The demonstration: builds everything, emulates the worked ADD natively
# and as the AArch64 build on a CPU without SVE, then runs a compiled SVE
# program three ways: on a CPU with SVE, without it, and without it through
# the preload library.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/deps.sh"
bash "$root/scripts/build.sh"
echo "== native =="
"$root/build/native/hosts/sve_demo_add"
echo "== AArch64 build under qemu -cpu cortex-a72 (no SVE) =="
qemu-aarch64 -cpu cortex-a72 -L /usr/aarch64-linux-gnu "$root/build/aarch64/hosts/sve_demo_add"
echo "== a compiled SVE program on a CPU without SVE, through the preload library =="
BUILD_DIR="$root/build/aarch64" bash "$root/scripts/demo_apps.sh" "${1:-vec_arith}"
