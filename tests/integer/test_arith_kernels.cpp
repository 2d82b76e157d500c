// Kernel-route handlers of the arithmetic family, driven by assembled words.
// Expected values follow from the architecture's definition of each
// instruction at the element width; the comments show the arithmetic.
#include <gtest/gtest.h>

#include <climits>

#include "arith_case.h"
#include "sve/core/handler_util.h"
#include "sve/integer/arith.h"

namespace {
using namespace inttest;

constexpr uint32_t I32MIN = 0x80000000u, I32MAX = 0x7fffffffu;
constexpr uint64_t I64MIN = 0x8000000000000000ull, I64MAX = 0x7fffffffffffffffull;
constexpr uint32_t neg32(int32_t v) { return static_cast<uint32_t>(v); }
constexpr uint64_t neg64(int64_t v) { return static_cast<uint64_t>(v); }

// --- Division: divisor 0 gives 0, signed minimum / -1 gives the minimum, the
// host never divides either; inactive elements keep the old Zdn.

TEST(Division, Signed) {
    run_elems<uint32_t>(VecS32DivVVM, 0x04940861,  // sdiv z1.s, p2/m, z1.s, z3.s
                        {{7, 2, 1, 3}, {neg32(-7), 2, 1, neg32(-3)}, {7, neg32(-2), 1, neg32(-3)},  // toward zero
                         {neg32(-7), neg32(-2), 1, 3}, {12345, 0, 1, 0}, {I32MIN, neg32(-1), 1, I32MIN},
                         {5, neg32(-1), 1, neg32(-5)}, {I32MIN, I32MIN, 1, 1}, {I32MAX, I32MIN, 1, 0}, {0, 0, 1, 0},
                         {99, 0, 0, 99},                                    // inactive with divisor 0
                         {77, 0, 2, 77}, {100, 7, 3, 14}, {100, 7, GROUP_0111, 100}});  // junk bytes: bit 0 decides
    run_elems<uint64_t>(VecS64DivVVM, 0x04d40861,  // sdiv z1.d
                        {{I64MIN, neg64(-1), 1, I64MIN}, {I64MIN, 0, 1, 0}, {neg64(-9), 4, 1, neg64(-2)},
                         {I64MAX, neg64(-1), 1, neg64(-I64MAX)}, {I64MIN, neg64(-1), 0, I64MIN}, {5, 0, GROUP_0111, 5}});
}

TEST(Division, ReversedTakesTheDivisorFromZdn) {
    run_elems<uint32_t>(VecS32DivRVVM, 0x04960861,  // sdivr z1.s, p2/m, z1.s, z3.s: z3 / z1
                        {{0, 55, 1, 0}, {0, I32MIN, 1, 0}, {neg32(-1), 55, 1, neg32(-55)}, {neg32(-1), I32MIN, 1, I32MIN},
                         {2, 7, 1, 3}, {7, 2, 1, 0}, {0, 9, 0, 0}, {3, 9, 2, 3}});
    run_elems<uint64_t>(VecS64DivRVVM, 0x04d60861,  // sdivr z1.d
                        {{0, 55, 1, 0}, {neg64(-1), I64MIN, 1, I64MIN}, {3, I64MAX, 1, 0x2aaaaaaaaaaaaaaaull}});
    run_elems<uint32_t>(VecU32DivRVVM, 0x04970861,  // udivr z1.s
                        {{0, 5, 1, 0}, {0xffffffff, 5, 1, 0}, {2, 0xffffffff, 1, 0x7fffffff}, {4, 0, 0, 4}});
    run_elems<uint64_t>(VecU64DivRVVM, 0x04d70861,  // udivr z1.d
                        {{0, ~0ull, 1, 0}, {~0ull, ~0ull, 1, 1}, {3, ~0ull, 1, 0x5555555555555555ull}});
}

TEST(Division, UnsignedTreatsAllOnesAsALargeDivisor) {
    run_elems<uint32_t>(VecU32DivVVM, 0x04950861,  // udiv z1.s, p2/m, z1.s, z3.s
                        {{0xffffffff, 0xffffffff, 1, 1}, {5, 0xffffffff, 1, 0}, {0xfffffffe, 2, 1, 0x7fffffff},
                         {0xffffffff, 0, 1, 0}, {I32MIN, 0xffffffff, 1, 0}, {100, 0, 0, 100}, {100, 7, GROUP_0111, 100}});
    run_elems<uint64_t>(VecU64DivVVM, 0x04d50861,  // udiv z1.d
                        {{~0ull, ~0ull, 1, 1}, {~0ull, 0, 1, 0}, {~0ull, 2, 1, I64MAX}, {I64MIN, neg64(-1), 1, 0}, {9, 0, 2, 9}});
}

TEST(Division, SizesBelow32BitsFallTo32Bits) {
    for (uint32_t size : {uint32_t(ES_B), uint32_t(ES_H), 7u}) {
        auto s = noisy_state(size);
        pall(*s, 2);
        for (unsigned i = 0; i < 16; ++i) {
            zput<uint32_t>(*s, 1, i, 1000 + i % 10);
            zput<uint32_t>(*s, 3, i, neg32(-10));
        }
        EXPECT_EQ(sve_sdiv_zpz(s.get(), zreg_dst(1, size), preg(2, QUAL_MERGE), zreg(3, size)), DECODE_OK);
        for (unsigned i = 0; i < 16; ++i) EXPECT_EQ(zget<uint32_t>(*s, 1, i), neg32(-100)) << size << " " << i;
    }
}

// --- Predicate bytes: only bit 0 of an element's first byte matters.

TEST(Predicate, JunkBytesInTheGroupHaveNoEffect) {
    run_elems<uint16_t>(VecU16AddVVM, 0x04400861,  // add z1.h, p2/m, z1.h, z3.h
                        {{1, 2, 1, 3}, {1, 2, 2, 1}, {1, 2, 3, 3}, {1, 2, 0xfe, 1}, {1, 2, 0xff, 3}, {1, 2, GROUP_0111, 1}});
    run_elems<uint32_t>(VecU32AddVVM, 0x04800861,  // add z1.s, p2/m, z1.s, z3.s
                        {{1, 2, 1, 3}, {1, 2, 2, 1}, {1, 2, GROUP_0111, 1}, {1, 2, 0x81, 3}});
    run_elems<uint64_t>(VecU64SubVVM, 0x04c10861,  // sub z1.d, p2/m, z1.d, z3.d
                        {{1, 2, 1, neg64(-1)}, {1, 2, 2, 1}, {1, 2, GROUP_0111, 1}, {1, 2, 3, neg64(-1)}});
}

// --- Element operations at the sign boundaries.

TEST(Elements, SignBoundaries) {
    // smin reads 0x80000000 as the smallest .s value and 0xffffffff as -1;
    // umax reads both as large. Each pair comes in both orders.
    run_elems<uint32_t>(VecS32MinVVM, 0x048a0861,  // smin z1.s, p2/m, z1.s, z3.s
                        {{I32MAX, I32MIN, 1, I32MIN}, {I32MIN, I32MAX, 1, I32MIN}, {0, 0xffffffff, 1, 0xffffffff},
                         {0xffffffff, 0, 1, 0xffffffff}, {1, 2, 1, 1}, {9, 1, 0, 9}});
    run_elems<uint32_t>(VecU32MaxVVM, 0x04890861,  // umax z1.s
                        {{I32MAX, I32MIN, 1, I32MIN}, {I32MIN, I32MAX, 1, I32MIN}, {0, 0xffffffff, 1, 0xffffffff},
                         {0xffffffff, 0, 1, 0xffffffff}, {1, 2, 1, 2}, {9, 1, 0, 9}});
    run_elems<uint64_t>(VecS64MaxVVM, 0x04c80861, {{I64MAX, I64MIN, 1, I64MAX}, {~0ull, 0, 1, 0}});  // smax z1.d
    // mul z1.h: 0xffff * 0xffff = 0xfffe0001, a product that overflows a promoted int.
    run_elems<uint16_t>(VecS16MulVVM, 0x04500861, {{0xffff, 0xffff, 1, 1}, {0x8000, 2, 1, 0}, {0x7fff, 0x7fff, 1, 1}});
    // neg of the minimum is the minimum.
    run_elems<uint8_t>(VecS8NegVM, 0x0417a861, {{0x55, 0x80, 1, 0x80}, {0x55, 0x01, 1, 0xff}, {0x55, 0x7f, 0, 0x55}});
    run_elems<uint64_t>(VecS64Extnd48VM, 0x04d4a861,  // sxtw z1.d
                        {{0, 0x0000000080000000ull, 1, 0xffffffff80000000ull}, {0, 0xffffffff7fffffffull, 1, 0x7fffffff}});
}

TEST(Elements, ExtensionKernelsFallToTheirNarrowestForm) {
    auto s = noisy_state(3);
    pall(*s, 2);
    for (unsigned i = 0; i < 32; ++i) zput<uint16_t>(*s, 3, i, 0x1280);
    EXPECT_EQ(sve_sxtb_zpz(s.get(), zreg(1, ES_B), preg(2, QUAL_MERGE), zreg(3, ES_B)), DECODE_OK);
    for (unsigned i = 0; i < 32; ++i) EXPECT_EQ(zget<uint16_t>(*s, 1, i), 0xff80u);
    for (unsigned i = 0; i < 16; ++i) zput<uint32_t>(*s, 3, i, 0x12348000);
    EXPECT_EQ(sve_sxth_zpz(s.get(), zreg(1, ES_H), preg(2, QUAL_MERGE), zreg(3, ES_H)), DECODE_OK);
    for (unsigned i = 0; i < 16; ++i) EXPECT_EQ(zget<uint32_t>(*s, 1, i), 0xffff8000u);
    EXPECT_EQ(sve_uxth_zpz(s.get(), zreg(1, ES_B), preg(2, QUAL_MERGE), zreg(3, ES_B)), DECODE_OK);
    for (unsigned i = 0; i < 16; ++i) EXPECT_EQ(zget<uint32_t>(*s, 1, i), 0x8000u);
    for (unsigned i = 0; i < 8; ++i) zput<uint64_t>(*s, 3, i, 0x0000000180000000ull);
    EXPECT_EQ(sve_sxtw_zpz(s.get(), zreg(1, ES_S), preg(2, QUAL_MERGE), zreg(3, ES_S)), DECODE_OK);
    for (unsigned i = 0; i < 8; ++i) EXPECT_EQ(zget<uint64_t>(*s, 1, i), 0xffffffff80000000ull);
}

// --- Aliasing: the destination may be any source; every element is computed
// from the registers as they were before the instruction.

TEST(Aliasing, DestinationEqualToEachSource) {
    auto s0 = noisy_state(21);
    for (unsigned i = 0; i < 16; ++i) {
        zput<uint32_t>(*s0, 5, i, 0x10001 * i + 3);
        zput<uint32_t>(*s0, 6, i, 0x3000 * i + 7);
    }
    pall(*s0, 0);
    std::memset(s0->p[1], 0, 64);
    const cpu_state base = *s0;
    auto a = [&](unsigned i) { return zget<uint32_t>(base, 5, i); };
    auto b = [&](unsigned i) { return zget<uint32_t>(base, 6, i); };
    struct Case {
        const char* text;
        sve_handler h;
        uint32_t word;
        uint32_t (*want)(uint32_t a, uint32_t b);  // a = old z5, b = z6
    } cases[] = {
        {"add z5.s, z5.s, z5.s", VecU32AddVVX, 0x04a500a5, [](uint32_t a, uint32_t) { return a + a; }},
        {"sub z5.s, z6.s, z5.s", VecU32SubVVX, 0x04a504c5, [](uint32_t a, uint32_t b) { return b - a; }},
        {"add z5.s, p0/m, z5.s, z5.s", VecU32AddVVM, 0x048000a5, [](uint32_t a, uint32_t) { return a + a; }},
        {"mla z5.s, p0/m, z5.s, z5.s", VecS32MLAVVVM, 0x048540a5, [](uint32_t a, uint32_t) { return a + a * a; }},
        {"mls z5.s, p0/m, z6.s, z5.s", VecS32MLSVVVM, 0x048560c5, [](uint32_t a, uint32_t b) { return a - b * a; }},
        {"mad z5.s, p0/m, z5.s, z5.s", VecS32MADDVVVM, 0x0485c0a5, [](uint32_t a, uint32_t) { return a + a * a; }},
        {"msb z5.s, p0/m, z6.s, z5.s", VecS32MSUBVVVM, 0x0486e0a5, [](uint32_t a, uint32_t b) { return a - a * b; }},
        {"neg z5.s, p0/m, z5.s", VecS32NegVM, 0x0497a0a5, [](uint32_t a, uint32_t) { return 0 - a; }},
        {"sdiv z5.s, p0/m, z5.s, z5.s", VecS32DivVVM, 0x049400a5, [](uint32_t a, uint32_t) { return a ? 1u : 0u; }},
        {"sel z5.s, p0, z5.s, z6.s", VecU32SelVV, 0x05a6c0a5, [](uint32_t a, uint32_t) { return a; }},
        {"sel z5.s, p1, z6.s, z5.s", VecU32SelVV, 0x05a5c4c5, [](uint32_t a, uint32_t) { return a; }},
        {"sel z5.s, p1, z5.s, z6.s", VecU32SelVV, 0x05a6c4a5, [](uint32_t, uint32_t b) { return b; }},
        {"movprfx z5.s, p0/z, z5.s", VecU32MovePrefix1VZ, 0x049020a5, [](uint32_t a, uint32_t) { return a; }},
        {"movprfx z5, z5", VecU32SpecialMoveV, 0x0420bca5, [](uint32_t a, uint32_t) { return a; }},
        {"and z5.d, z5.d, z5.d", VecU64AndVVX, 0x042530a5, [](uint32_t a, uint32_t) { return a; }},
        {"bic z5.d, z6.d, z5.d", VecU64BicVVX, 0x04e530c5, [](uint32_t a, uint32_t b) { return b & ~a; }},
        {"smax z5.s, p0/m, z5.s, z6.s", VecS32MaxVVM, 0x048800c5, [](uint32_t a, uint32_t b) { return int32_t(a) > int32_t(b) ? a : b; }},
    };
    for (const Case& c : cases) {
        auto s = std::make_unique<cpu_state>(base);
        EXPECT_EQ(c.h(s.get(), c.word), DECODE_OK) << c.text;
        for (unsigned i = 0; i < 16; ++i) EXPECT_EQ(zget<uint32_t>(*s, 5, i), c.want(a(i), b(i))) << c.text << " element " << i;
        expect_rest_unchanged(base, *s, 5, Route::kernel);
    }
}

// --- MOVPRFX and SEL.

TEST(MovePrefix, ZeroingClearsAndMergingKeeps) {
    auto s0 = noisy_state(31);
    std::memset(s0->p[1], 0, 64);
    const cpu_state base = *s0;
    // movprfx z5.d, p1/z, z6.d with no active element clears z5.
    auto s = std::make_unique<cpu_state>(base);
    EXPECT_EQ(VecU64MovePrefix1VZ(s.get(), 0x04d024c5), DECODE_OK);
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(s->z[5][i], 0) << i;
    expect_rest_unchanged(base, *s, 5, Route::kernel);
    // movprfx z5.h, p1/m, z6.h with no active element leaves z5.
    s = std::make_unique<cpu_state>(base);
    EXPECT_EQ(VecU16MovePrefix1VM(s.get(), 0x045124c5), DECODE_OK);
    EXPECT_EQ(std::memcmp(s->z[5], base.z[5], 64), 0);
    // The kernel itself decides by the qualifier: 5 zeroes, anything else merges.
    for (uint32_t q : {QUAL_ZERO, QUAL_MERGE, QUAL_PLAIN, 0u}) {
        s = std::make_unique<cpu_state>(base);
        pfill(*s, 1, 4, 0x5555);  // even .s elements active
        s->p[1][4] = 2;           // element 1: junk, inactive
        s->p[1][8] = 0;           // element 2: inactive
        EXPECT_EQ(sve_movprfx_zpz(s.get(), zreg(5, ES_S), preg(1, q), zreg(6, ES_S)), DECODE_OK);
        for (unsigned i = 0; i < 16; ++i) {
            bool act = i % 2 == 0 && i != 2;
            uint32_t want = act ? zget<uint32_t>(base, 6, i) : q == QUAL_ZERO ? 0 : zget<uint32_t>(base, 5, i);
            EXPECT_EQ(zget<uint32_t>(*s, 5, i), want) << "qualifier " << q << " element " << i;
        }
    }
}

TEST(MovePrefix, UnpredicatedCopiesAllBytes) {
    auto s = noisy_state(32);
    cpu_state before = *s;
    EXPECT_EQ(VecU32SpecialMoveV(s.get(), 0x0420bc61), DECODE_OK);  // movprfx z1, z3
    EXPECT_EQ(std::memcmp(s->z[1], before.z[3], 64), 0);
    expect_rest_unchanged(before, *s, 1, Route::kernel);
}

TEST(Select, InactiveElementsTakeZm) {
    auto s0 = noisy_state(41);
    std::memset(s0->p[9], 0, 64);
    const cpu_state base = *s0;
    auto s = std::make_unique<cpu_state>(base);
    EXPECT_EQ(VecU32SelVV(s.get(), 0x05a4e461), DECODE_OK);  // sel z1.s, p9, z3.s, z4.s
    EXPECT_EQ(std::memcmp(s->z[1], base.z[4], 64), 0);
    expect_rest_unchanged(base, *s, 1, Route::kernel);
    // Element by element at .d, with junk predicate bytes.
    s = std::make_unique<cpu_state>(base);
    s->p[9][0] = 1;
    s->p[9][8] = 2;
    s->p[9][16] = 3;
    std::memset(s->p[9] + 25, 1, 7);  // element 3: (0, 1, ..., 1)
    EXPECT_EQ(VecU64SelVV(s.get(), 0x05e4e461), DECODE_OK);  // sel z1.d, p9, z3.d, z4.d
    const int from_zn[8] = {1, 0, 1, 0, 0, 0, 0, 0};
    for (unsigned i = 0; i < 8; ++i) EXPECT_EQ(zget<uint64_t>(*s, 1, i), zget<uint64_t>(base, from_zn[i] ? 3 : 4, i)) << i;
}

// --- Immediates.

TEST(Immediates, AddSubShiftedAndNarrowedToTheElement) {
    // add z1.h, z1.h, #0xff, lsl #8 adds 0xff00.
    run_all<uint16_t>(VecU16AddVIX, 0x2560ffe1, {0x0000, 0x0100, 0x00ff, 0xffff}, {0xff00, 0x0000, 0xffff, 0xfeff});
    // At .d the same immediate is zero-extended, not sign-extended.
    run_all<uint64_t>(VecU64AddVIX, 0x25e0ffe1, {0, ~0ull}, {0xff00, 0xfeff});
    // add z1.b, z1.b, #0x7f
    run_all<uint8_t>(VecU8AddVIX, 0x2520cfe1, {0, 0x81, 0xff}, {0x7f, 0x00, 0x7e});
    // The byte form with bit 13 set: 0xff00 narrowed to a byte adds nothing.
    run_all<uint8_t>(VecU8AddVIX, 0x2520ffe1, {0, 0x81, 0xff}, {0, 0x81, 0xff});
    // sub z1.s, z1.s, #0x80, lsl #8
    run_all<uint32_t>(VecU32SubVIX, 0x25a1f001, {0x8000, 0, 0x18000}, {0, 0xffff8000, 0x10000});
}

TEST(Immediates, MulIsSignExtended) {
    run_all<uint64_t>(VecS64MulVIX, 0x25f0dfa1, {5, neg64(-1), 0}, {neg64(-15), 3, 0});  // mul z1.d, z1.d, #-3
    run_all<uint8_t>(VecS8MulVIX, 0x2530d001, {3, 1, 0xff}, {0x80, 0x80, 0x80});          // mul z1.b, z1.b, #-128
    run_all<uint16_t>(VecS16MulVIX, 0x2570cfe1, {0xffff, 0x0203, 0x8000}, {0xff81, 0xff7d, 0x8000});  // mul z1.h, #127
}

TEST(Immediates, LogicalMaskAndReservedEncodings) {
    run_all<uint32_t>(VecU64AndVIX, 0x058000e1, {0x12345678, 0xffffff00}, {0x78, 0});              // and z1.s, #0xff
    run_all<uint16_t>(VecU64OrVIX, 0x05000c21, {0x0000, 0x7ffe, 0x1234}, {0x8001, 0xffff, 0x9235});  // orr z1.h, #0x8001
    run_all<uint8_t>(VecU64XorVIX, 0x05400781, {0x00, 0x55, 0xff}, {0x55, 0x00, 0xaa});            // eor z1.b, #0x55
    run_all<uint8_t>(VecU64AndVIX, 0x05803ec1, {0xff, 0x01}, {0xfe, 0x00});                        // and z1.b, #0xfe
    // Encodings that name no mask (the assembler prints them as undefined):
    // N 0 with imms 111111, N 1 with imms 111111 (a 64-bit run of ones), and
    // imms that fill the whole element at 2 and 8 bits. The handler refuses the
    // word and changes no register; 0x036 is the valid neighbour, #0x7f.
    struct Op {
        sve_handler h;
        uint32_t base;
    } ops[] = {{VecU64AndVIX, 0x05800000}, {VecU64OrVIX, 0x05000000}, {VecU64XorVIX, 0x05400000}};
    for (const Op& o : ops) {
        for (uint32_t imm13 : {0x003fu, 0x103fu, 0x003du, 0x0037u}) {
            uint32_t w = o.base | imm13 << 5 | 1;
            auto s = noisy_state(w);
            cpu_state before = *s;
            EXPECT_EQ(o.h(s.get(), w), DECODE_UNKNOWN) << std::hex << w;
            EXPECT_EQ(std::memcmp(s->z, before.z, sizeof before.z), 0) << std::hex << w;
        }
    }
    run_all<uint8_t>(VecU64AndVIX, 0x058006c1, {0xff, 0x80}, {0x7f, 0x00});
}

}  // namespace
