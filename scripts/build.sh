#!/usr/bin/env bash
# Configures and builds the native (x86-64) and the AArch64 cross build.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
jobs=${JOBS:-$(nproc)}
cmake -S . -B build/native -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/native -j "$jobs"
cmake -S . -B build/aarch64 -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/aarch64-linux-gnu.cmake" >/dev/null
cmake --build build/aarch64 -j "$jobs"
