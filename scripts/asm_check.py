#!/usr/bin/env python3
"""Checks every row of the decode table against the assembler's disassembler.

For each row, words are made from the row's fixed bits with random bits in
every operand position; each must disassemble to the instruction the row
claims (mnemonic and element size, as written in its expectation). Also checks
that no word is accepted by two rows, and that each mask is a decode map's.

  scripts/asm_check.py --rows-dump build/native/tests/sve_rows_dump [--seed N]
"""
import argparse
import random
import subprocess
import sys

import sve_asm


def load_rows(dump):
    rows = []
    out = subprocess.run([dump], check=True, capture_output=True, text=True).stdout
    for line in out.splitlines():
        name, mask, bits, impl, expect = line.split(" ", 4)
        rows.append((name, int(mask, 16), int(bits, 16), impl == "1", expect))
    return rows


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--rows-dump", required=True)
    ap.add_argument("--words-per-row", type=int, default=24)
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--only", help="check only rows whose name contains this")
    args = ap.parse_args()

    rows = load_rows(args.rows_dump)
    if args.only:
        rows = [r for r in rows if args.only in r[0]]
    rng = random.Random(args.seed)
    failures = []

    masks = set(sve_asm.map_masks().values())
    names = set()
    for name, mask, bits, _, _ in rows:
        if mask not in masks:
            failures.append("%s: mask %08x is not the key mask of any decode map" % (name, mask))
        if bits & ~mask:
            failures.append("%s: fixed bits %08x outside its mask %08x" % (name, bits, mask))
        if name in names:
            failures.append("%s: row written twice" % name)
        names.add(name)

    # Pairwise disjointness: two rows overlap when they agree on every bit that both fix.
    for i in range(len(rows)):
        ni, mi, bi = rows[i][0], rows[i][1], rows[i][2]
        for j in range(i + 1, len(rows)):
            nj, mj, bj = rows[j][0], rows[j][1], rows[j][2]
            if (bi ^ bj) & mi & mj == 0:
                failures.append("%s and %s accept the same word %08x" % (ni, nj, bi | bj))

    words, owners = [], []
    for name, mask, bits, _, expect in rows:
        free = ~mask & 0xffffffff
        cands = [bits, bits | free] + [bits | (rng.getrandbits(32) & free) for _ in range(args.words_per_row)]
        for w in cands:
            words.append(w)
            owners.append((name, expect))
    dis = sve_asm.disassemble(words) if words else []
    bad_rows = {}
    defined = {}
    for w, (name, expect), (mn, ops) in zip(words, owners, dis):
        if not sve_asm.expectation_matches(expect, mn, ops):
            bad_rows.setdefault(name, []).append("%08x: %s %s (expected %s)" % (w, mn, ops, expect))
        elif not sve_asm.is_undefined(mn, ops):
            defined[name] = defined.get(name, 0) + 1
    # A row that tolerates unallocated words must still be mostly the instruction it claims.
    per_row = args.words_per_row + 2
    for name, mask, bits, _, expect in rows:
        if sve_asm.UNDEF in expect.split() and name not in bad_rows and defined.get(name, 0) * 4 < per_row:
            bad_rows[name] = ["only %d of %d words are defined instructions" % (defined.get(name, 0), per_row)]
    for name, msgs in bad_rows.items():
        failures.append("%s: %d words disassemble wrongly, e.g.\n    %s" % (name, len(msgs), "\n    ".join(msgs[:3])))

    implemented = sum(1 for r in rows if r[3])
    print("asm_check: %d rows (%d with handlers), %d words, seed %d" % (len(rows), implemented, len(words), args.seed))
    for f in failures:
        print("FAIL " + f)
    print("%d passed, %d failed" % (len(rows) - len(bad_rows), len(bad_rows) + (len(failures) - len(bad_rows))))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
