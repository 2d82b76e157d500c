#!/usr/bin/env bash
# Runs one SVE program three ways under qemu-aarch64 and compares:
#   1. reference: a CPU with 512-bit SVE; its output is the expectation;
#   2. a CPU without SVE (cortex-a72), no library: must die of SIGILL, which
#      proves the program really executes SVE instructions;
#   3. the same CPU with libsve_trap_512.so preloaded: must print exactly what
#      the reference printed, exit the same way, and report a non-zero number
#      of emulated SVE instructions.
# Exit 0 on success, 1 on failure, 77 (skip) when run 3 fails and the program
# contains SVE words that this build has no handler for yet; those are listed.
#
# usage: run_app.sh --qemu Q --sysroot DIR --objdump OBJDUMP --lib LIB
#                   --unhandled TOOL [--also LIB]... [--keep DIR] PROGRAM [ARGS...]
# --also names a shared library of the program whose SVE words count too.
set -uo pipefail

qemu=qemu-aarch64 sysroot=/usr/aarch64-linux-gnu objdump=aarch64-linux-gnu-objdump
lib= tool= keep= also=()
while [ $# -gt 0 ]; do
  case "$1" in
    --qemu) qemu=$2; shift 2 ;;
    --sysroot) sysroot=$2; shift 2 ;;
    --objdump) objdump=$2; shift 2 ;;
    --lib) lib=$2; shift 2 ;;
    --unhandled) tool=$2; shift 2 ;;
    --keep) keep=$2; shift 2 ;;
    --also) also+=("$2"); shift 2 ;;
    --) shift; break ;;
    -*) echo "run_app.sh: unknown option $1" >&2; exit 2 ;;
    *) break ;;
  esac
done
[ $# -ge 1 ] && [ -n "$lib" ] && [ -n "$tool" ] || { echo "usage: see the top of $0" >&2; exit 2; }
prog=$1; shift
name=$(basename "$prog")

work=${keep:-$(mktemp -d)}
mkdir -p "$work"
[ -n "$keep" ] || trap 'rm -rf "$work"' EXIT

ref_cpu=(-cpu max,sve512=on,sve-default-vector-length=64)
nosve_cpu=(-cpu cortex-a72)
# A run that loops (a flag written back wrongly can do that) is cut off.
limit=${SVE_APP_TIMEOUT:-60}
q=(timeout -k 5 "$limit" "$qemu" -L "$sysroot")

# Which SVE words of the program this build cannot emulate (static: not every
# word is necessarily executed).
for f in "$prog" "${also[@]}"; do "$objdump" -d "$f"; done | "${q[@]}" "${nosve_cpu[@]}" "$tool" >"$work/unhandled.txt"
summary=$(tail -n 1 "$work/unhandled.txt")
echo "$name: $summary"
grep '^unhandled ' "$work/unhandled.txt" | sed 's/^/  /'

"${q[@]}" "${ref_cpu[@]}" "$prog" "$@" >"$work/ref.out" 2>"$work/ref.err"
ref_rc=$?
if [ $ref_rc -ne 0 ]; then
  echo "FAIL: the reference run exited with $ref_rc"; cat "$work/ref.err"; exit 1
fi

# (The braces keep the shell's own notice of the signal out of the log.)
{ "${q[@]}" "${nosve_cpu[@]}" "$prog" "$@" >"$work/nosve.out" 2>"$work/nosve.err"; } 2>/dev/null
nosve_rc=$?
if [ $nosve_rc -ne 132 ]; then
  echo "FAIL: without SVE and without the library the program exited with $nosve_rc, not by SIGILL (132)"
  exit 1
fi

{ "${q[@]}" "${nosve_cpu[@]}" -E "LD_PRELOAD=$lib" "$prog" "$@" >"$work/emu.out" 2>"$work/emu.err"; } 2>/dev/null
emu_rc=$?
count=$(sed -n "s/^$name: \([0-9][0-9]*\) SVE instructions executed\$/\1/p" "$work/emu.err" | tail -n 1)

problems=()
[ $emu_rc -ne 124 ] || problems+=("no end after ${limit}s")
[ $emu_rc -eq $ref_rc ] || problems+=("exit status $emu_rc, reference $ref_rc")
cmp -s "$work/ref.out" "$work/emu.out" || problems+=("output differs from the reference")
[ -n "$count" ] && [ "$count" -gt 0 ] || problems+=("no SVE total, or a total of 0, on standard error")
if [ ${#problems[@]} -eq 0 ]; then
  echo "PASS: $name: output identical to the reference ($(wc -l <"$work/ref.out") lines), $count SVE instructions emulated"
  exit 0
fi

printf '%s\n' "${problems[@]}" | sed 's/^/  /'
echo "-- emulated run, standard error (last lines):"; tail -n 5 "$work/emu.err"
# Skip only when the run itself stopped at an instruction without a handler;
# any other difference is a fault, whatever else the program contains.
stopped=$(sed -n 's/^libsve_trap_512: no emulation for SVE instruction \(0x[0-9a-f]*\) .*/\1/p' "$work/emu.err" | head -n 1)
if [ -n "$stopped" ] && [ $emu_rc -eq 132 ]; then
  waits=$(grep '^unhandled ' "$work/unhandled.txt" | awk '{print $2 "(" $4 ")"}' | tr '\n' ' ')
  echo "SKIP: $name stopped at $stopped, which has no handler yet; it waits on: $waits"
  exit 77
fi
echo "-- diff reference emulated:"; diff "$work/ref.out" "$work/emu.out" | head -n 20
echo "FAIL: $name"
exit 1
