#!/usr/bin/env bash
# Installs the Debian packages the project needs, only those missing.
set -euo pipefail
pkgs=(cmake ninja-build g++ python3 ccache googletest libgtest-dev libgmock-dev libbenchmark-dev
      g++-aarch64-linux-gnu qemu-user clang libclang-rt-14-dev)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq "${missing[@]}"
fi
