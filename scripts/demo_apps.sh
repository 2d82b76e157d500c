#!/usr/bin/env bash
# The demonstration of the preload host: one ordinary C program, compiled for
# SVE with gcc, run three ways:
#   1. on a CPU with 512-bit SVE (qemu -cpu max): the reference output;
#   2. on a CPU without SVE (cortex-a72, or this machine when it is an AArch64
#      one without SVE): it dies of SIGILL at its first SVE instruction;
#   3. the same, with libsve_trap_512.so preloaded: the same output as 1, and
#      the number of SVE instructions emulated.
#
#   scripts/demo_apps.sh [PROGRAM]     PROGRAM: a name from tests/apps/src
#                                      (default vec_arith)
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
app=${1:-vec_arith}
[ -f "$root/tests/apps/src/$app.c" ] || { echo "no program tests/apps/src/$app.c" >&2; exit 2; }

native=0
[ "$(uname -m)" = aarch64 ] && native=1
if [ $native -eq 1 ]; then
  build=${BUILD_DIR:-$root/build/pre-native}
  sysroot=/
  objdump=objdump
  toolchain=()
else
  build=${BUILD_DIR:-$root/build/pre-aarch64}
  sysroot=/usr/aarch64-linux-gnu
  objdump=aarch64-linux-gnu-objdump
  toolchain=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/aarch64-linux-gnu.cmake")
fi

set -e
# The project's package list is that of the x86-64 development machine (cross
# compiler, qemu); an AArch64 machine needs only its own gcc and cmake.
[ $native -eq 1 ] || bash "$root/scripts/deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${toolchain[@]}" >/dev/null
cmake --build "$build" -j "${JOBS:-2}" --target sve_trap_512 sve_apps >/dev/null
set +e
lib=$build/hosts/preload/libsve_trap_512.so
prog=$build/tests/apps/bin/$app
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

rule() { printf '\n== %s ==\n' "$*"; }
ref=(qemu-aarch64 -L "$sysroot" -cpu max,sve512=on,sve-default-vector-length=64)
if [ $native -eq 1 ]; then
  nosve=()
  where="this machine ($(uname -m), natively, no qemu)"
  if grep -qw sve /proc/cpuinfo 2>/dev/null; then
    echo "note: this processor has SVE itself, so nothing will trap and nothing will be emulated"
  fi
else
  nosve=(qemu-aarch64 -L "$sysroot" -cpu cortex-a72)
  where="qemu-aarch64 -cpu cortex-a72 (an AArch64 CPU without SVE)"
fi

rule "the program: tests/apps/src/$app.c, built with gcc -O3 -march=armv8-a+sve"
sed -n '1,/^#include/p' "$root/tests/apps/src/$app.c" | grep '^//' || true
echo "SVE instructions the compiler used (mnemonic, times in the code):"
"$objdump" -d "$prog" | awk -F'\t' '
  function hex(c) { return index("0123456789abcdef", c) - 1 }
  # The SVE encoding group: bits 28..25 of the word are 0010.
  NF >= 3 && $2 ~ /^[0-9a-f]+ *$/ && length($2) >= 8 && (hex(substr($2, 1, 1)) % 2) * 8 + int(hex(substr($2, 2, 1)) / 2) == 2 {
    n[$3]++ }
  END { for (k in n) printf "%s %d\n", k, n[k] }' | sort -k2,2nr -k1,1 | paste -sd' ' | fold -s -w 100 | sed 's/^/  /'

rule "1. reference: qemu-aarch64 -cpu max with 512-bit SVE"
if command -v qemu-aarch64 >/dev/null; then
  "${ref[@]}" "$prog" >"$out/ref.out" 2>"$out/ref.err"
  echo "exit status $?"
  cat "$out/ref.out"
else
  echo "(qemu-aarch64 is not installed: no reference run)"
  : >"$out/ref.out"
fi

rule "2. $where, without the library"
# (The braces keep the shell's own "Illegal instruction" notice out.)
{ "${nosve[@]}" "$prog" >"$out/nosve.out" 2>"$out/nosve.err"; } 2>/dev/null
rc=$?
cat "$out/nosve.out" "$out/nosve.err"
if [ $rc -eq 132 ]; then echo "exit status 132: killed by SIGILL at the first SVE instruction"; else echo "exit status $rc"; fi

rule "3. $where, with LD_PRELOAD=libsve_trap_512.so"
if [ $native -eq 1 ]; then
  LD_PRELOAD=$lib "$prog" >"$out/emu.out" 2>"$out/emu.err"
else
  "${nosve[@]}" -E "LD_PRELOAD=$lib" "$prog" >"$out/emu.out" 2>"$out/emu.err"
fi
rc=$?
echo "exit status $rc"
cat "$out/emu.out"
echo "-- standard error (the totals of the preload host):"
cat "$out/emu.err"

rule "reference (left) beside emulated (right)"
diff -y -W 130 "$out/ref.out" "$out/emu.out"
if [ -s "$out/ref.out" ] && cmp -s "$out/ref.out" "$out/emu.out"; then
  echo "=> identical: the emulated run printed exactly what the SVE CPU printed"
  exit 0
fi
echo "=> the outputs differ"
exit 1
