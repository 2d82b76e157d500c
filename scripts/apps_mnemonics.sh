#!/usr/bin/env bash
# Lists, for each built test program (tests/apps), the SVE mnemonics in its
# code and in its SVE shared library, from the disassembler: words whose bits
# 28..25 are 0010, the SVE encoding group. Run scripts/apps.sh first.
#
#   scripts/apps_mnemonics.sh [PROGRAM...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build/pre-aarch64}
bin=$build/tests/apps/bin
objdump=aarch64-linux-gnu-objdump
command -v "$objdump" >/dev/null || objdump=objdump
if [ $# -eq 0 ]; then
  set -- $(cd "$root/tests/apps" && ls src/*.c host/*.c | sed 's#.*/##; s#\.c$##')
fi
for name in "$@"; do
  files=("$bin/$name")
  [[ $name == shlib_* ]] && files+=("$bin/libapps_kernels.so")
  [ -f "$bin/$name" ] || { echo "$name: not built"; continue; }
  list=$(for f in "${files[@]}"; do "$objdump" -d "$f"; done | awk -F'\t' '
    function hex(c) { return index("0123456789abcdef", c) - 1 }
    NF >= 3 && $2 ~ /^[0-9a-f]+ *$/ && length($2) >= 8 &&
      (hex(substr($2, 1, 1)) % 2) * 8 + int(hex(substr($2, 2, 1)) / 2) == 2 { n[$3]++ }
    END { for (k in n) print k }' | sort | paste -sd' ')
  printf '%-16s %s\n' "$name" "$list"
done
