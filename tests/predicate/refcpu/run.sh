#!/usr/bin/env bash
# Compares the predicate, compare, WHILE, break and CTERM instructions of the
# emulator with a CPU that has SVE at 512 bits (qemu's "max" CPU), on random
# register contents. Links against the emulation core of an AArch64 build:
#
#   tests/predicate/refcpu/run.sh [build-dir] [trials-per-row]
#
# The build directory defaults to build/aarch64 and must have built sve_core.
set -euo pipefail
root=$(cd "$(dirname "$0")/../../.." && pwd)
build=${1:-$root/build/aarch64}
trials=${2:-200}
objs=$(find "$build/CMakeFiles/sve_core.dir" -name '*.o')
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
aarch64-linux-gnu-g++ -std=c++20 -O1 -I"$root" -o "$out/refcpu_check" \
  "$root/tests/predicate/refcpu/refcpu_check.cpp" $objs -lpthread
qemu-aarch64 -cpu max,sve512=on,sve-default-vector-length=64 -L /usr/aarch64-linux-gnu \
  "$out/refcpu_check" "$trials"
