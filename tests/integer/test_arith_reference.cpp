// Reference-route handlers of the arithmetic family and the worked LSR: the
// element results at their edges, and what the marshalling frame does to the
// rest of the register file.
#include <gtest/gtest.h>

#include "arith_case.h"
#include "sve/integer/arith.h"

namespace {
using namespace inttest;

constexpr Route REF = Route::reference;
constexpr uint64_t I64MIN = 0x8000000000000000ull, I64MAX = 0x7fffffffffffffffull;
constexpr uint64_t n64(int64_t v) { return static_cast<uint64_t>(v); }

TEST(WorkedLsr, HalfwordsShiftedRightBy15) {
    // LSR Z1.H, Z1.H, #15: only the top bit survives.
    run_all<uint16_t>(VecU16ShrVIX, 0x04319421, {0x8000, 0x7fff, 0xffff, 0x0000, 0xc001}, {1, 0, 1, 0, 1}, REF);
}

TEST(WorkedLsr, ShiftFieldAndRegisters) {
    // lsr z1.h, z1.h, #16 (field 0): every bit goes.
    run_all<uint16_t>(VecU16ShrVIX, 0x04309421, {0xffff, 0x8000, 1}, {0, 0, 0}, REF);
    run_all<uint16_t>(VecU16ShrVIX, 0x04389421, {0xffff, 0x8000, 0x01ff}, {0xff, 0x80, 0x01}, REF);  // #8
    // lsr z2.h, z5.h, #1: source and destination are different registers.
    auto s = noisy_state(5);
    for (unsigned i = 0; i < 32; ++i) zput<uint16_t>(*s, 5, i, static_cast<uint16_t>(0x8001 + 2 * i));
    cpu_state before = *s;
    EXPECT_EQ(VecU16ShrVIX(s.get(), 0x043f94a2), DECODE_OK);
    for (unsigned i = 0; i < 32; ++i) EXPECT_EQ(zget<uint16_t>(*s, 2, i), (0x8001 + 2 * i) >> 1) << i;
    expect_rest_unchanged(before, *s, 2, REF);
}

TEST(WorkedLsr, OperationTakesItsLengthFromTheContext) {
    VecVal zn;
    for (unsigned i = 0; i < 128; ++i) vset<uint16_t>(zn, i, static_cast<uint16_t>(0x8000 | i));
    CpuContext c{};
    c.vl = 16;  // 1024 bits: 64 halfwords
    VecVal r = VecU16ShrVIX(zn, 15, &c);
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(vget<uint16_t>(r, i), 1u) << i;
    c.vl = 0x84000010;  // the bits above the low 26 are not part of the length
    for (unsigned i = 0; i < 128; ++i) vset<uint16_t>(zn, i, 0xffff);
    r = VecU16ShrVIX(zn, 4, &c);
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(vget<uint16_t>(r, i), 0x0fffu) << i;
}

TEST(WorkedLsr, FrameEffects) {
    auto s = noisy_state(9);
    s->nzcv = 0xabcdef01f0000000ull;
    s->fpcr_extra = 0x00000400;
    s->fpcr = 0x03000000;
    for (unsigned i = 0; i < 64; ++i) s->ffr[i] = static_cast<uint8_t>(i % 4 == 0 ? 0xfe : i % 4 == 1 ? 0x03 : i);
    s->instruction = 0x1234;
    EXPECT_EQ(VecU16ShrVIX(s.get(), 0x04319421), DECODE_OK);
    EXPECT_EQ(s->nzcv, 0xf0000000u);
    EXPECT_EQ(s->fpcr, 0x03000400u);
    EXPECT_EQ(s->instruction, 0x1234u);
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(s->ffr[i], i % 4 == 0 ? 0 : i % 4 == 1 ? 1 : i & 1) << i;
}

TEST(Reference, EdgesOfTheReferenceForms) {
    // subr z1.s, z1.s, #0x100: the shifted immediate minus each element.
    run_all<uint32_t>(VecU32SubRVIX, 0x25a3e021, {0, 0x100, 0x101}, {0x100, 0, 0xffffffff}, REF);
    // smulh/umulh z1.d: the high half of the exact 128-bit product.
    run_elems<uint64_t>(VecS64MulHVVM, 0x04d20861,
                        {{n64(-1), n64(-1), 1, 0}, {I64MIN, I64MIN, 1, 0x4000000000000000ull}, {n64(-1), 1, 1, ~0ull},
                         {I64MIN, I64MAX, 1, 0xc000000000000000ull}, {7, 7, 0, 7}}, REF);
    run_elems<uint64_t>(VecU64MulHVVM, 0x04d30861, {{~0ull, ~0ull, 1, 0xfffffffffffffffeull}, {I64MIN, 2, 1, 1}}, REF);
    // sabd z1.b: |127 - -128| = 255 wraps into the byte; uabd reads the same bytes as 127 and 128.
    run_elems<uint8_t>(VecS8AbdVVM, 0x040c0861, {{0x7f, 0x80, 1, 0xff}, {0x80, 0x7f, 1, 0xff}, {0xff, 0x01, 1, 2}}, REF);
    run_elems<uint8_t>(VecU8AbdVVM, 0x040d0861, {{0x7f, 0x80, 1, 1}, {0, 0xff, 1, 0xff}}, REF);
    // abs z1.d, p2/m, z3.d: the minimum stays the minimum. cnot z1.s: 1 only for 0.
    run_elems<uint64_t>(VecS64AbsVM, 0x04d6a861, {{0, I64MIN, 1, I64MIN}, {0, n64(-5), 1, 5}, {9, n64(-5), 2, 9}}, REF);
    run_elems<uint32_t>(VecU32NotVM, 0x049ba861, {{7, 0, 1, 1}, {7, 1, 1, 0}, {7, 0x80000000, 1, 0}, {7, 0, 0, 7}}, REF);
    // smin z1.d, #-3 and umin z1.d, #255: the immediate is signed for one, unsigned for the other.
    run_all<uint64_t>(VecS64MinVIX, 0x25eadfa1, {0, n64(-5), I64MIN, I64MAX}, {n64(-3), n64(-5), I64MIN, n64(-3)}, REF);
    run_all<uint64_t>(VecU64MinVIX, 0x25ebdfe1, {0x1000, 5, ~0ull}, {0xff, 5, 0xff}, REF);
    run_all<uint16_t>(VecS16MaxVIX, 0x2568d001, {0x8000, 0xff7f, 0, 0xff80}, {0xff80, 0xff80, 0, 0xff80}, REF);  // #-128
}

}  // namespace
