#!/usr/bin/env python3
"""Writes decode-table rows from example instructions.

Input lines (file or stdin):  Handler | decode_map__... | example asm | expectation
Output: one SVE_ROW(...) line per input line, with the mask of the map and the
fixed bits taken from the assembled example. Check the result with
scripts/asm_check.py, which tries random operand bits.

  scripts/row_tool.py rows.txt >> sve/integer/rows_arith.def
"""
import sys

import sve_asm


def main():
    src = open(sys.argv[1]) if len(sys.argv) > 1 else sys.stdin
    entries = []
    for line in src:
        line = line.strip()
        if not line or line.startswith("#"):
            continue
        name, mapname, example, expect = [p.strip() for p in line.split("|")]
        entries.append((name, mapname, example, expect))
    masks = sve_asm.map_masks()
    words = sve_asm.assemble([e[2] for e in entries])
    for (name, mapname, example, expect), w in zip(entries, words):
        if mapname not in masks:
            sys.exit("unknown map %s for %s" % (mapname, name))
        mask = masks[mapname]
        print('SVE_ROW(%s, 0x%08x, 0x%08x, "%s")' % (name, mask, w & mask, expect))


if __name__ == "__main__":
    main()
