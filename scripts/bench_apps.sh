#!/usr/bin/env bash
# What the preload host costs: for a few programs (tests/apps/bench), the wall
# time of the emulated run (qemu-aarch64 -cpu cortex-a72, libsve_trap_512.so
# preloaded) against the reference run of the same binary under the same qemu
# (-cpu max, 512-bit SVE), and SVE instructions emulated per second. Where a
# program can be built without SVE, the time of that build on the cortex-a72
# is shown too: what recompiling for the processor would give. A last line
# measures a bare SIGILL round trip under the same qemu, the floor of any
# signal-based emulation.
#
# Every time is the best of REPEAT runs (default 3); CPU time (user + system)
# is shown beside the wall time, as it moves less on a busy machine. The
# emulated output must equal the reference output, or the row is marked.
#
#   scripts/bench_apps.sh [SCALE]    SCALE multiplies the passes (default 1)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build/pre-aarch64}
scale=${1:-1}
repeat=${REPEAT:-3}
bash "$root/scripts/deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/aarch64-linux-gnu.cmake" >/dev/null
cmake --build "$build" -j "${JOBS:-2}" --target sve_trap_512 sve_bench_apps >/dev/null

lib=$build/hosts/preload/libsve_trap_512.so
bin=$build/tests/apps/bin
sysroot=/usr/aarch64-linux-gnu
ref_q=(qemu-aarch64 -L "$sysroot" -cpu max,sve512=on,sve-default-vector-length=64)
a72_q=(qemu-aarch64 -L "$sysroot" -cpu cortex-a72)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

calc() { awk "BEGIN { printf \"$1\", $2 }"; }

# best_of OUT ERR CMD...: runs CMD $repeat times, keeps the last output, and
# prints "wall cpu" of the run with the shortest wall time, in seconds.
best_of() {
  local out=$1 err=$2 best= line; shift 2
  for _ in $(seq "$repeat"); do
    line=$( { TIMEFORMAT='%R %U %S'; time "$@" >"$out" 2>"$err"; } 2>&1 ) || true
    line=$(echo "$line" | tail -n 1 | awk '{ printf "%.3f %.3f", $1, $2 + $3 }')
    if [ -z "$best" ] || awk "BEGIN { exit !(${line% *} < ${best% *}) }"; then best=$line; fi
  done
  echo "$best"
}

# program and passes at SCALE 1: a few seconds of emulation each.
programs=(bench_add:200 bench_arith:40 bench_gather:300 bench_soa:150)

printf '%-13s %6s %10s %15s %15s %8s %11s %15s %9s\n' program passes "SVE instrs" "ref wall/cpu s" \
  "emu wall/cpu s" "emu/ref" "SVE instr/s" "us/instr w/cpu" "no-SVE s"
for entry in "${programs[@]}"; do
  name=${entry%%:*}
  passes=$((${entry##*:} * scale))
  read -r ref_w ref_c <<<"$(best_of "$work/ref.out" "$work/ref.err" "${ref_q[@]}" "$bin/$name" "$passes")"
  read -r emu_w emu_c <<<"$(best_of "$work/emu.out" "$work/emu.err" "${a72_q[@]}" -E "LD_PRELOAD=$lib" "$bin/$name" "$passes")"
  count=$(sed -n "s/^$name: \([0-9][0-9]*\) SVE instructions executed\$/\1/p" "$work/emu.err" | tail -n 1)
  nosve=-
  if [ -x "$bin/${name}_nosve" ]; then
    read -r nosve _ <<<"$(best_of "$work/nosve.out" "$work/nosve.err" "${a72_q[@]}" "$bin/${name}_nosve" "$passes")"
  fi
  if [ -z "$count" ] || [ "$count" -eq 0 ]; then
    printf '%-13s %6s  not emulated: %s\n' "$name" "$passes" \
      "$(grep -m1 'libsve_trap_512' "$work/emu.err" || tail -n1 "$work/emu.err")"
    continue
  fi
  mark=
  cmp -s "$work/ref.out" "$work/emu.out" || mark="  (emulated output differs from the reference!)"
  printf '%-13s %6s %10s %15s %15s %7.1fx %11.0f %15s %9s%s\n' "$name" "$passes" "$count" "$ref_w/$ref_c" \
    "$emu_w/$emu_c" "$(calc %f "$emu_w / $ref_w")" "$(calc %f "$count / $emu_w")" \
    "$(calc %.2f "($emu_w - $ref_w) * 1000000 / $count")/$(calc %.2f "($emu_c - $ref_c) * 1000000 / $count")" \
    "$nosve" "$mark"
done
traps=$((500000 * scale))
read -r floor_w floor_c <<<"$(best_of "$work/floor.out" "$work/floor.err" "${a72_q[@]}" "$bin/trap_floor" "$traps")"
printf 'bare SIGILL round trip under qemu -cpu cortex-a72: %s traps in %s s wall, %s s cpu: %s us per trap\n' \
  "$traps" "$floor_w" "$floor_c" "$(calc %.2f "$floor_w * 1000000 / $traps")/$(calc %.2f "$floor_c * 1000000 / $traps")"
echo "ref: -cpu max with 512-bit SVE; emu: -cpu cortex-a72 with the preload library;"
echo "us/instr: (emu - ref) / SVE instrs, wall and cpu; no-SVE s: the program built without SVE, on the cortex-a72"
