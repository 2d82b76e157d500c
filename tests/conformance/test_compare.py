"""Unit tests of the conformance comparator: that differences are found,
that departures explain exactly what they declare and nothing beside it, and
that the reviewed departure file is well formed."""
import os
import struct
import unittest

import conformance_compare as cc

HERE = os.path.dirname(os.path.abspath(__file__))
DEPARTURES = os.path.join(HERE, "departures.toml")


def state(x=None, sp=0x40009000, nzcv=0, fpcr=0, fpsr=0, z=None, p=None, ffr=(1 << 64) - 1):
    x = list(x or [0] * 31)
    z = z or [bytes(64)] * 32
    p = p or [0] * 16
    raw = struct.pack("<35Q", *(x + [sp, nzcv, fpcr, fpsr]))
    raw += b"".join(z) + struct.pack("<16Q", *p) + struct.pack("<Q", ffr)
    assert len(raw) == cc.STATE_SIZE
    return raw


def case(word, raw_state, row=7, seed=0x1234, mem_seed=1):
    buf = cc.HEADER.pack(cc.CASE_MAGIC, word, seed, mem_seed, row, 0) + raw_state
    return cc.parse_cases(buf)[0]


def result(raw_state, signal=0, rc=0, row=7, mem=None, info=0, seed=0x1234):
    mem = mem or {}
    buf = cc.RHEADER.pack(cc.RESULT_MAGIC, signal, seed, rc, info, len(mem), row) + raw_state
    buf += b"".join(struct.pack("<I", o | v << 24) for o, v in sorted(mem.items()))
    return cc.parse_results(buf)[0]


def dep(**kw):
    d = {"id": "t", "handlers": ["*"], "allow": [], "reason": "test"}
    d.update(kw)
    return cc.Departure(d)


def zreg(n, elem_bytes, values):
    out = bytearray(64)
    for i, v in enumerate(values):
        out[i * elem_bytes:(i + 1) * elem_bytes] = (v & ((1 << (8 * elem_bytes)) - 1)).to_bytes(elem_bytes, "little")
    return bytes(out)


def with_z(zs):
    z = [bytes(64)] * 32
    for n, v in zs.items():
        z[n] = v
    return z


ADD_S = 0x04A20020            # add z0.s, z1.s, z2.s
LDNF1H = 0xA4B0A000 | 1 << 5  # ldnf1h {z0.h}, p0/z, [x1]
LDFF1B_LSS = 0xA4006000 | 1 << 5 | 2 << 16  # ldff1b {z0.b}, p0/z, [x1, x2]


class FindsDifferences(unittest.TestCase):
    def test_identical_states_match(self):
        s = state(x=list(range(31)))
        v = cc.compare(case(ADD_S, s), result(s), result(s), "VecU32AddVVX", [])
        self.assertEqual(v.status, "match")

    def test_every_part_of_the_state_is_compared(self):
        base = dict(x=[0] * 31)
        variants = {
            "x": dict(x=[0] * 30 + [5]),
            "sp": dict(sp=0x40009010),
            "nzcv": dict(nzcv=0x20000000),
            "fpcr": dict(fpcr=1 << 24),
            "fpsr": dict(fpsr=1),
            "z": dict(z=with_z({31: zreg(31, 4, [0] * 15 + [1])})),
            "p": dict(p=[0] * 15 + [1 << 63]),
            "ffr": dict(ffr=(1 << 64) - 2),
        }
        a = state(**base)
        for kind, kw in variants.items():
            b = state(**dict(base, **kw))
            v = cc.compare(case(ADD_S, a), result(a), result(b), "VecU32AddVVX", [])
            self.assertEqual(v.status, "mismatch", kind)
            self.assertEqual(v.diffs[0].kind, kind)

    def test_memory_is_compared_and_shown_by_address(self):
        s = state()
        v = cc.compare(case(ADD_S, s), result(s, mem={16: 0xAB}), result(s, mem={}), "VecU32AddVVX", [])
        self.assertEqual(v.status, "mismatch")
        text = " ".join(cc.describe(v.diffs[0], "VecU32AddVVX"))
        self.assertIn("0x%x" % (cc.DATA_BASE + 16), text)
        self.assertIn("ab", text)

    def test_z_differences_are_named_by_register_and_lane(self):
        a = state(z=with_z({3: zreg(3, 4, [1, 2, 3, 4, 5, 6])}))
        b = state(z=with_z({3: zreg(3, 4, [1, 2, 3, 4, 5, 7])}))
        v = cc.compare(case(ADD_S, a), result(a), result(b), "VecU32AddVVX", [])
        self.assertEqual(cc.describe(v.diffs[0], "VecU32AddVVX"),
                         ["z3.s[5]: ref 0x00000006 ours 0x00000007"])

    def test_no_handler_and_rc2_and_wrong_row_fail(self):
        s = state()
        c = case(ADD_S, s, row=7)
        self.assertFalse(cc.compare(c, result(s), result(s, rc=cc.RC_NO_HANDLER), "VecU32AddVVX", []).ok)
        self.assertFalse(cc.compare(c, result(s), result(s, rc=2), "VecU32AddVVX", []).ok)
        self.assertFalse(cc.compare(c, result(s), result(s, row=8), "VecU32AddVVX", []).ok)

    def test_a_dead_runner_is_a_failure(self):
        s = state()
        c = case(ADD_S, s)
        self.assertFalse(cc.compare(c, None, result(s), "VecU32AddVVX", []).ok)
        self.assertFalse(cc.compare(c, result(s), None, "VecU32AddVVX", []).ok)

    def test_truncated_result_stream_keeps_whole_records(self):
        s = state()
        one = cc.RHEADER.pack(cc.RESULT_MAGIC, 0, 1, 0, 0, 0, 0) + s
        self.assertEqual(len(cc.parse_results(one + one[:100])), 1)


class SignalsAndDepartures(unittest.TestCase):
    def test_same_signal_needs_a_departure_and_the_same_signal(self):
        s = state()
        c = case(ADD_S, s)
        same = dep(id="same", allow=["same_signal"])
        self.assertFalse(cc.compare(c, result(s, signal=11), result(s, signal=11), "VecU32AddVVX", []).ok)
        self.assertTrue(cc.compare(c, result(s, signal=11), result(s, signal=11), "VecU32AddVVX", [same]).ok)
        self.assertFalse(cc.compare(c, result(s, signal=11), result(s, signal=7), "VecU32AddVVX", [same]).ok)
        self.assertFalse(cc.compare(c, result(s, signal=11), result(s), "VecU32AddVVX", [same]).ok)

    def test_handler_patterns_limit_a_departure(self):
        s = state()
        c = case(ADD_S, s)
        d = dep(handlers=["VecU64*"], allow=["same_signal"])
        self.assertFalse(cc.compare(c, result(s, signal=11), result(s, signal=11), "VecU32AddVVX", [d]).ok)

    def test_field_condition_decides(self):
        d = dep(handlers=["VecU8CLoad1LSSZ"], when=["bits 20:16 == 31"], allow=["ref_signal:SIGILL"])
        s = state()
        rm31 = case(0xA4004000 | 31 << 16, s)
        rm5 = case(0xA4004000 | 5 << 16, s)
        self.assertTrue(cc.compare(rm31, result(s, signal=4), result(s), "VecU8CLoad1LSSZ", [d]).ok)
        self.assertFalse(cc.compare(rm5, result(s, signal=4), result(s), "VecU8CLoad1LSSZ", [d]).ok)
        # The departure is about SIGILL only.
        self.assertFalse(cc.compare(rm31, result(s, signal=11), result(s), "VecU8CLoad1LSSZ", [d]).ok)

    def test_rc2_only_against_sigill(self):
        d = dep(allow=["ref_sigill_ours_rc2"])
        s = state()
        c = case(ADD_S, s)
        self.assertTrue(cc.compare(c, result(s, signal=4), result(s, rc=2), "VecU64AndVIX", [d]).ok)
        self.assertFalse(cc.compare(c, result(s), result(s, rc=2), "VecU64AndVIX", [d]).ok)

    def test_reference_death_needs_the_condition_and_our_signal(self):
        d = dep(handlers=["VecU16CLoad2SIZ"], when=["active_element_straddles_unreadable"],
                allow=["ref_died_ours_signal:SIGSEGV"])
        word = 0xA4A0A000 | 1 << 5  # ld1h {z0.h}, p0/z, [x1]
        all_h = 0x5555555555555555
        x = [0] * 31
        x[1] = cc.GUARD_BASE - 3  # element 1 straddles into the guard page
        straddle = state(x=x, p=[all_h] + [0] * 15)
        x2 = list(x)
        x2[1] = cc.GUARD_BASE - 64  # fits exactly
        inside = state(x=x2, p=[all_h] + [0] * 15)
        self.assertTrue(cc.compare(case(word, straddle), None, result(straddle, signal=11),
                                   "VecU16CLoad2SIZ", [d]).ok)
        self.assertFalse(cc.compare(case(word, straddle), None, result(straddle), "VecU16CLoad2SIZ", [d]).ok)
        self.assertFalse(cc.compare(case(word, inside), None, result(inside, signal=11), "VecU16CLoad2SIZ", [d]).ok)

    def test_unknown_allowance_or_condition_is_refused(self):
        with self.assertRaises(ValueError):
            dep(allow=["anything_goes"])
        with self.assertRaises(ValueError):
            dep(allow=["same_signal"], when=["moon_is_full"])


class LaneAllowances(unittest.TestCase):
    """The first-fault and non-fault allowances, which must stay inside the
    lanes they name."""

    NAME = "VecU16CLoadNF2SIZ"
    BASE = cc.DATA_BASE + 0x200
    ALL_H = 0x5555555555555555

    def memory_z(self):
        return b"".join(cc.memory_bytes(3, self.BASE + 2 * i, 2) for i in range(32))

    def nf(self, ref_ffr, ours_ffr, ref_z, ours_z, in_ffr=(1 << 64) - 1, other=None):
        d = [dep(id="holes", handlers=["Vec*CLoadNF*SIZ"], allow=["ffr_where_ours_loaded_memory"]),
             dep(id="lanes", handlers=["Vec*CLoadNF*SIZ"], allow=["dest_lanes_where_ref_ffr_clear"])]
        x = [0] * 31
        x[1] = self.BASE
        p = [self.ALL_H] + [0] * 15
        c = case(LDNF1H, state(x=x, p=p, ffr=in_ffr), mem_seed=3)
        ref = result(state(x=x, p=p, ffr=ref_ffr, z=with_z({0: ref_z})))
        zs = {0: ours_z}
        if other:
            zs.update(other)
        ours = result(state(x=x, p=p, ffr=ours_ffr, z=with_z(zs)))
        return cc.compare(c, ref, ours, self.NAME, d)

    def test_ffr_kept_where_ours_loaded_memory_is_accepted(self):
        ref_ffr = (1 << 10) - 1               # cleared from element 5 (.h) on
        ours_ffr = ref_ffr | 0xFF << 40       # ours kept elements 20 to 23
        z = self.memory_z()
        v = self.nf(ref_ffr, ours_ffr, z[:10] + bytes(54), z)
        self.assertEqual(v.status, "explained")

    def test_ffr_kept_with_a_value_memory_does_not_hold_is_not(self):
        ref_ffr = (1 << 10) - 1
        ours_ffr = ref_ffr | 0xFF << 40
        z = bytearray(self.memory_z())
        z[41] ^= 0x10                          # element 20, which ours claims loaded
        v = self.nf(ref_ffr, ours_ffr, bytes(z[:10]) + bytes(54), bytes(z))
        self.assertEqual(v.status, "mismatch")
        self.assertEqual([d.kind for d in v.diffs], ["ffr"])
        self.assertEqual(sorted(v.diffs[0].lanes), [40, 41])

    def test_ffr_cleared_by_ours_alone_is_not(self):
        ref_ffr = (1 << 64) - 1
        ours_ffr = ref_ffr & ~(3 << 2)        # element 1 cleared by ours only
        z = self.memory_z()
        self.assertEqual(self.nf(ref_ffr, ours_ffr, z, z).status, "mismatch")

    def test_ffr_bits_that_were_zero_cannot_come_back(self):
        in_ffr = ((1 << 64) - 1) & ~(3 << 40)
        ref_ffr = (1 << 10) - 1
        ours_ffr = ref_ffr | 3 << 40          # element 20 was false on input
        z = self.memory_z()
        self.assertEqual(self.nf(ref_ffr, ours_ffr, z, z, in_ffr=in_ffr).status, "mismatch")

    def test_destination_lanes_only_where_the_reference_ffr_is_clear(self):
        ref_ffr = (1 << 10) - 1               # elements 0..4 true
        ref_z = zreg(0, 2, list(range(32)))
        lanes = list(range(32))
        lanes[20] = 999                        # FFR false there: free
        self.assertEqual(self.nf(ref_ffr, ref_ffr, ref_z, zreg(0, 2, lanes)).status, "explained")
        lanes[3] = 999                         # FFR true there: must match
        v = self.nf(ref_ffr, ref_ffr, ref_z, zreg(0, 2, lanes))
        self.assertEqual(v.status, "mismatch")
        self.assertEqual([d.kind for d in v.diffs], ["z"])
        self.assertEqual(sorted(v.diffs[0].lanes), [6, 7])

    def test_lane_allowance_does_not_reach_other_registers(self):
        ref_ffr = (1 << 10) - 1
        z = zreg(0, 2, list(range(32)))
        v = self.nf(ref_ffr, ref_ffr, z, z, other={5: zreg(5, 2, [1] * 32)})
        self.assertEqual(v.status, "mismatch")
        self.assertEqual(v.diffs[0].index, 5)

    def test_zero_tail_needs_untouched_lanes_and_an_unreadable_next_page(self):
        name = "VecU8CLoadFF1LSSZ"
        d = [dep(id="early", handlers=[name], when=["next_page_unreadable"],
                 allow=["ffr_in_ours_zero_tail", "dest_lanes_input_in_ours_zero_tail"])]
        zin = zreg(0, 1, [0x55] * 64)
        loaded = zreg(0, 1, [7] * 64)
        kept = zreg(0, 1, [7] * 6 + [0x55] * 58)   # ours stopped after 6 bytes
        x = [0] * 31
        x[1] = cc.GUARD_BASE - 6                    # page after the base is the guard
        x[2] = 0
        c = case(LDFF1B_LSS, state(x=x, z=with_z({0: zin})))
        ref = result(state(x=x, z=with_z({0: loaded}), ffr=(1 << 64) - 1))
        ours = result(state(x=x, z=with_z({0: kept}), ffr=(1 << 6) - 1))
        self.assertEqual(cc.compare(c, ref, ours, name, d).status, "explained")
        # A lane in the tail that ours changed to something else.
        bad = zreg(0, 1, [7] * 6 + [0x55] * 50 + [1] + [0x55] * 7)
        ours_bad = result(state(x=x, z=with_z({0: bad}), ffr=(1 << 6) - 1))
        self.assertEqual(cc.compare(c, ref, ours_bad, name, d).status, "mismatch")
        # A lane before the tail that ours did not load, though its FFR says so.
        early = zreg(0, 1, [7, 7, 0x55, 7, 7, 7] + [0x55] * 58)
        ours_early = result(state(x=x, z=with_z({0: early}), ffr=(1 << 6) - 1))
        self.assertEqual(cc.compare(c, ref, ours_early, name, d).status, "mismatch")
        # The same results when the next page is readable: nothing accepted.
        x2 = list(x)
        x2[1] = cc.DATA_BASE + cc.PAGE - 6
        c2 = case(LDFF1B_LSS, state(x=x2, z=with_z({0: zin})))
        ref2 = result(state(x=x2, z=with_z({0: loaded}), ffr=(1 << 64) - 1))
        ours2 = result(state(x=x2, z=with_z({0: kept}), ffr=(1 << 6) - 1))
        self.assertEqual(cc.compare(c2, ref2, ours2, name, d).status, "mismatch")


class ArchitectureModel(unittest.TestCase):
    """Where the reference is set aside, ours is held to the pseudocode on
    the case's memory image."""

    NAME = "VecU16CLoadNF2SIZ"

    def setup(self, pred, base):
        x = [0] * 31
        x[1] = base
        self.p = [pred] + [0] * 15
        self.x = x
        return case(LDNF1H, state(x=x, p=self.p), mem_seed=3)

    def memory_lanes(self, base, pred):
        out = bytearray(64)
        for i in range(32):
            mb = cc.memory_bytes(3, base + 2 * i, 2)
            if pred >> (2 * i) & 1 and mb is not None:
                out[2 * i:2 * i + 2] = mb
        return bytes(out)

    def test_ours_is_held_to_memory_when_the_reference_is_set_aside(self):
        d = [dep(id="model", handlers=[self.NAME], when=["governing_element0_inactive"],
                 allow=["reference_from_model"])]
        pred = 0x5555555555555550            # element 0 and 1 inactive
        base = cc.DATA_BASE + 0x100
        c = self.setup(pred, base)
        wrong_ref = result(state(x=self.x, p=self.p))  # what the faulty reference gives: zeros
        good = result(state(x=self.x, p=self.p, z=with_z({0: self.memory_lanes(base, pred)})))
        v = cc.compare(c, wrong_ref, good, self.NAME, d)
        self.assertEqual((v.status, v.used), ("explained", ["model"]))
        bad_lanes = bytearray(self.memory_lanes(base, pred))
        bad_lanes[20] ^= 1
        bad = result(state(x=self.x, p=self.p, z=with_z({0: bytes(bad_lanes)})))
        self.assertEqual(cc.compare(c, wrong_ref, bad, self.NAME, d).status, "mismatch")
        # With element 0 active the reference stands: the zeros it gave are
        # compared as they are.
        c0 = self.setup(pred | 1, base)
        good0 = result(state(x=self.x, p=self.p, z=with_z({0: self.memory_lanes(base, pred | 1)})))
        self.assertEqual(cc.compare(c0, wrong_ref, good0, self.NAME, d).status, "mismatch")

    def test_model_clears_ffr_from_the_first_unreadable_element(self):
        pred = 0x5555555555555554
        base = cc.GUARD_BASE - 20              # elements 10 and up are unreadable
        c = self.setup(pred, base)
        m = cc.load_model(c, self.NAME)
        self.assertEqual(m.signal, 0)
        self.assertEqual(m.st.ffr, (1 << 20) - 1)
        self.assertEqual(m.st.z[0][:20], self.memory_lanes(base, pred)[:20])
        # A first-fault load faults on its first active element instead.
        cf = case(LDFF1B_LSS, state(x=[0, cc.GUARD_BASE] + [0] * 29, p=[0xFFFFFFFFFFFFFFFF] + [0] * 15))
        self.assertEqual(cc.load_model(cf, "VecU8CLoadFF1LSSZ").signal, 11)

    def test_ffr_kept_by_ours_needs_the_memory_value(self):
        d = [dep(id="stop", handlers=[self.NAME], allow=["ffr_where_ours_loaded_memory"]),
             dep(id="lanes", handlers=[self.NAME], allow=["dest_lanes_where_ref_ffr_clear"])]
        pred = 0x5555555555555555
        base = cc.DATA_BASE + cc.PAGE - 62       # element 31 on the next, readable page
        c = self.setup(pred, base)
        lanes = self.memory_lanes(base, pred)
        ref = result(state(x=self.x, p=self.p, ffr=(1 << 62) - 1, z=with_z({0: lanes[:62] + bytes(2)})))
        ours = result(state(x=self.x, p=self.p, z=with_z({0: lanes})))
        self.assertEqual(cc.compare(c, ref, ours, self.NAME, d).status, "explained")
        wrong = result(state(x=self.x, p=self.p, z=with_z({0: lanes[:62] + b"\x00\x00"})))
        if lanes[62:] != b"\x00\x00":
            self.assertEqual(cc.compare(c, ref, wrong, self.NAME, d).status, "mismatch")


class PredicateAllowances(unittest.TestCase):
    TRN1_H = 0x05605000 | 2 << 16 | 1 << 5 | 3  # trn1 p3.h, p1.h, p2.h

    def test_non_first_bits_only_where_ours_cleared_them(self):
        d = [dep(handlers=["VecP16Trn1PP"], allow=["dest_predicate_nonfirst_bits_zero"])]
        s = state()
        c = case(self.TRN1_H, s)
        ref = result(state(p=[0, 0, 0, 0b1111] + [0] * 12))
        self.assertTrue(cc.compare(c, ref, result(state(p=[0, 0, 0, 0b0101] + [0] * 12)), "VecP16Trn1PP", d).ok)
        # A first bit (an element's value) differs: not covered.
        self.assertFalse(cc.compare(c, ref, result(state(p=[0, 0, 0, 0b1110] + [0] * 12)), "VecP16Trn1PP", d).ok)
        # A non-first bit ours set where the reference has 0: not covered.
        ref0 = result(state(p=[0, 0, 0, 0b0101] + [0] * 12))
        self.assertFalse(cc.compare(c, ref0, result(state(p=[0, 0, 0, 0b0111] + [0] * 12)), "VecP16Trn1PP", d).ok)
        # Another predicate register: not covered.
        self.assertFalse(cc.compare(c, ref, result(state(p=[0, 0, 0b10, 0b1111] + [0] * 12)), "VecP16Trn1PP", d).ok)

    def test_junk_condition_follows_the_case_flag(self):
        d = [dep(handlers=["VecPNorPPZ"], when=["predicate_bytes_junk"], allow=["dest_predicate", "nzcv"])]
        nor = 0x25804200 | 2 << 16 | 1 << 5 | 3
        ref = result(state(p=[0, 0, 0, 1] + [0] * 12))
        ours = result(state(p=[0] * 16, nzcv=0x20000000))
        clean = cc.parse_cases(cc.HEADER.pack(cc.CASE_MAGIC, nor, 1, 1, 7, 0) + state())[0]
        junk = cc.parse_cases(cc.HEADER.pack(cc.CASE_MAGIC, nor, 1, 1, 7, cc.FLAG_PRED_JUNK) + state())[0]
        self.assertFalse(cc.compare(clean, ref, ours, "VecPNorPPZ", d).ok)
        self.assertTrue(cc.compare(junk, ref, ours, "VecPNorPPZ", d).ok)
        # Still only the destination predicate and the flags.
        other = result(state(p=[1, 0, 0, 0] + [0] * 12))
        self.assertFalse(cc.compare(junk, ref, other, "VecPNorPPZ", d).ok)


class Conditions(unittest.TestCase):
    def test_logical_immediates(self):
        def word(n, immr, imms):
            return 0x05C00000 | n << 17 | immr << 11 | imms << 5
        reserved = [(0, 0, 0b111111), (1, 0, 0b111111), (0, 0, 0b111101), (0, 3, 0b111011), (0, 0, 0b011111)]
        valid = [(1, 0, 0), (0, 0, 0b111100), (0, 1, 0b111000), (1, 5, 0b111110), (0, 0, 0b011110)]
        for n, immr, imms in reserved:
            self.assertTrue(cc.logical_imm_reserved(word(n, immr, imms), "VecS64DupMaskI"), (n, immr, imms))
        for n, immr, imms in valid:
            self.assertFalse(cc.logical_imm_reserved(word(n, immr, imms), "VecS64DupMaskI"), (n, immr, imms))

    def test_first_active_element_unreadable_follows_the_predicate_and_the_gather_offsets(self):
        name = "VecU64LoadFF8XVSZ"
        word = 0xC5C06000 | 15 << 16 | 6 << 5 | 26  # ldff1d {z26.d}, p0/z, [x6, z15.d, sxtw]
        x = [0] * 31
        x[6] = cc.DATA_BASE + 0x100
        offs = zreg(15, 8, [0, 8, 16, 24, 32, 40, 48, 56])
        far = zreg(15, 8, [cc.GUARD_BASE - x[6] + 8, 8, 16, 24, 32, 40, 48, 56])  # element 0 in the guard page
        all_d = 0x0101010101010101
        self.assertFalse(cc.first_active_element_unreadable(
            case(word, state(x=x, z=with_z({15: offs}), p=[all_d] + [0] * 15)), None, None, name))
        self.assertTrue(cc.first_active_element_unreadable(
            case(word, state(x=x, z=with_z({15: far}), p=[all_d] + [0] * 15)), None, None, name))
        # Element 0 inactive: the first active one is element 1, which is readable.
        self.assertFalse(cc.first_active_element_unreadable(
            case(word, state(x=x, z=with_z({15: far}), p=[all_d & ~1] + [0] * 15)), None, None, name))
        # The high half of an SXTW offset is ignored.
        junk_hi = zreg(15, 8, [0xDEADBEEF00000000 | (cc.GUARD_BASE - x[6] + 8), 8, 16, 24, 32, 40, 48, 56])
        self.assertTrue(cc.first_active_element_unreadable(
            case(word, state(x=x, z=with_z({15: junk_hi}), p=[all_d] + [0] * 15)), None, None, name))

    def test_structure_accesses_are_whole_structures(self):
        word = 0xA540E000 | 1 << 5  # ld3w {z0.s-z2.s}, p0/z, [x1]
        x = [0] * 31
        x[1] = cc.GUARD_BASE - 64   # structure 5 has members on both pages
        all_s = 0x1111111111111111
        c = case(word, state(x=x, p=[all_s] + [0] * 15))
        acc = cc.contiguous_accesses(c, "VecU32E3Load4SIZ")
        self.assertEqual(len(acc), 16)
        self.assertEqual(acc[5], (cc.GUARD_BASE - 4, 12))
        self.assertTrue(cc.active_element_straddles_unreadable(c, None, None, "VecU32E3Load4SIZ"))


class TheDepartureFile(unittest.TestCase):
    def test_loads_and_every_entry_is_complete(self):
        deps = cc.load_departures(DEPARTURES)
        self.assertTrue(deps)
        for d in deps:
            self.assertIn(d.kind, ("ours", "architecture", "reference"), d.id)
            self.assertGreater(len(d.reason.strip()), 40, d.id)
            self.assertTrue(d.handlers and d.allow, d.id)

    def test_general_entries_come_last(self):
        deps = cc.load_departures(DEPARTURES)
        wildcard = [i for i, d in enumerate(deps) if d.handlers == ["*"]]
        self.assertEqual(wildcard, list(range(len(deps) - len(wildcard), len(deps))))

    def test_non_fault_entries_do_not_cover_plain_loads(self):
        deps = cc.load_departures(DEPARTURES)
        x = [0] * 31
        x[1] = cc.DATA_BASE
        p = [0x5555555555555555] + [0] * 15
        word = 0xA4A0A000 | 1 << 5  # ld1h {z0.h}, p0/z, [x1]
        c = case(word, state(x=x, p=p))
        ref = result(state(x=x, p=p, ffr=(1 << 10) - 1, z=with_z({0: zreg(0, 2, [1] * 32)})))
        ours = result(state(x=x, p=p, ffr=(1 << 64) - 1, z=with_z({0: zreg(0, 2, [2] * 32)})))
        self.assertFalse(cc.compare(c, ref, ours, "VecU16CLoad2SIZ", deps).ok)
        # The same difference on the non-fault form is partly explained (the
        # FFR-false lanes) but not the lanes whose FFR stayed true, nor FFR
        # kept by ours where its values are not memory's.
        v = cc.compare(case(LDNF1H, state(x=x, p=p)), ref, ours, "VecU16CLoadNF2SIZ", deps)
        self.assertEqual(v.status, "mismatch")
        self.assertEqual([d.kind for d in v.diffs], ["z", "ffr"])
        self.assertEqual(sorted({k // 2 for k in v.diffs[0].lanes}), [0, 1, 2, 3, 4])


if __name__ == "__main__":
    unittest.main()
