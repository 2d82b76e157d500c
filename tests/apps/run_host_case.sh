#!/usr/bin/env bash
# A program that ends by a signal, run under qemu-aarch64 three ways; checks
# that the preload library changes nothing about how it ends:
#   1. reference (512-bit SVE): must end with STATUS (128 + signal);
#   2. cortex-a72 without the library: must die of SIGILL before printing
#      anything, so the program's first output comes after SVE code;
#   3. cortex-a72 with the library: must print what the reference printed and
#      end with STATUS; with --quiet, the library must have said nothing (the
#      signal was not an SVE instruction, so it is none of its business).
#
# usage: run_host_case.sh --qemu Q --sysroot DIR --lib LIB --status STATUS
#                         [--quiet] PROGRAM
set -uo pipefail
qemu=qemu-aarch64 sysroot=/usr/aarch64-linux-gnu lib= status= quiet=0
while [ $# -gt 0 ]; do
  case "$1" in
    --qemu) qemu=$2; shift 2 ;;
    --sysroot) sysroot=$2; shift 2 ;;
    --lib) lib=$2; shift 2 ;;
    --status) status=$2; shift 2 ;;
    --quiet) quiet=1; shift ;;
    -*) echo "run_host_case.sh: unknown option $1" >&2; exit 2 ;;
    *) break ;;
  esac
done
[ $# -eq 1 ] && [ -n "$lib" ] && [ -n "$status" ] || { echo "usage: see the top of $0" >&2; exit 2; }
prog=$1
name=$(basename "$prog")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
q=(timeout -k 5 "${SVE_APP_TIMEOUT:-60}" "$qemu" -L "$sysroot")

{ "${q[@]}" -cpu max,sve512=on,sve-default-vector-length=64 "$prog" >"$work/ref.out" 2>"$work/ref.err"; } 2>/dev/null
ref_rc=$?
{ "${q[@]}" -cpu cortex-a72 "$prog" >"$work/nosve.out" 2>"$work/nosve.err"; } 2>/dev/null
nosve_rc=$?
{ "${q[@]}" -cpu cortex-a72 -E "LD_PRELOAD=$lib" "$prog" >"$work/emu.out" 2>"$work/emu.err"; } 2>/dev/null
emu_rc=$?

fail=0
check() { if ! eval "$1"; then echo "  not so: $2"; fail=1; fi; }
check '[ $ref_rc -eq $status ]' "reference ends with $status (it ended with $ref_rc)"
check '[ -s "$work/ref.out" ]' "the reference printed something"
check '[ $nosve_rc -eq 132 ] && [ ! -s "$work/nosve.out" ]' \
  "without SVE and without the library it dies of SIGILL before any output (status $nosve_rc)"
check '[ $emu_rc -eq $status ]' "the emulated run ends with $status (it ended with $emu_rc)"
check 'cmp -s "$work/ref.out" "$work/emu.out"' "the emulated run printed what the reference printed"
if [ $quiet -eq 1 ]; then
  check '! grep -q "libsve_trap_512" "$work/emu.err"' "the library said nothing"
fi
if [ $fail -ne 0 ]; then
  echo "-- reference output:"; cat "$work/ref.out"
  echo "-- emulated output and standard error:"; cat "$work/emu.out" "$work/emu.err"
  echo "FAIL: $name"
  exit 1
fi
echo "PASS: $name: ends with status $status as on the SVE CPU, same output ($(wc -l <"$work/ref.out") lines)"
