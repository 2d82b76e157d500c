// Kernel-route arithmetic handlers where a unit test sees what the
// reference-CPU sweep cannot: divisions that must never reach the host's
// divide, predicate bytes other than bit 0 of an element's first, aliasing
// through the kernels' buffer, MOVPRFX's qualifier, the size branch, and
// logical immediates that name no mask.
#include <gtest/gtest.h>

#include "arith_case.h"
#include "sve/core/handler_util.h"
#include "sve/integer/arith.h"

namespace {
using namespace inttest;

constexpr uint32_t I32MIN = 0x80000000u, M1 = 0xffffffffu;
constexpr uint64_t I64MIN = 0x8000000000000000ull;

// Divisor 0 and MIN / -1 are computed without the host's divide (which traps
// on both); an inactive element divides nothing, even with divisor 0. The
// predicate bytes 2 and (0,1,1,1) are inactive.
TEST(Division, ZeroAndMinOverMinusOneNeverReachTheHost) {
    run_elems<uint32_t>(VecS32DivVVM, 0x04940861,  // sdiv z1.s, p2/m, z1.s, z3.s
                        {{12345, 0, 1, 0}, {I32MIN, M1, 1, I32MIN}, {I32MIN, M1, 0, I32MIN}, {99, 0, 0, 99},
                         {77, 0, 2, 77}, {100, 0, GROUP_0111, 100}, {100, 7, 3, 14}});
    run_elems<uint64_t>(VecS64DivVVM, 0x04d40861,  // sdiv z1.d
                        {{I64MIN, ~0ull, 1, I64MIN}, {I64MIN, 0, 1, 0}, {5, 0, GROUP_0111, 5}, {I64MIN, ~0ull, 2, I64MIN}});
    run_elems<uint32_t>(VecS32DivRVVM, 0x04960861,  // sdivr z1.s: z3 / z1
                        {{0, 55, 1, 0}, {M1, I32MIN, 1, I32MIN}, {0, 9, 0, 0}, {M1, I32MIN, 2, M1}});
    run_elems<uint64_t>(VecS64DivRVVM, 0x04d60861, {{0, 55, 1, 0}, {~0ull, I64MIN, 1, I64MIN}});  // sdivr z1.d
    run_elems<uint32_t>(VecU32DivVVM, 0x04950861, {{M1, 0, 1, 0}, {M1, M1, 1, 1}, {100, 0, 2, 100}});  // udiv z1.s
    run_elems<uint64_t>(VecU64DivVVM, 0x04d50861, {{~0ull, 0, 1, 0}, {9, 0, GROUP_0111, 9}});       // udiv z1.d
    run_elems<uint32_t>(VecU32DivRVVM, 0x04970861, {{0, 5, 1, 0}, {0, 5, 0, 0}});                   // udivr z1.s
    run_elems<uint64_t>(VecU64DivRVVM, 0x04d70861, {{0, ~0ull, 1, 0}});                              // udivr z1.d
}

// Only bit 0 of an element's first predicate byte decides, at every width.
TEST(Predicate, JunkBytesInTheGroupHaveNoEffect) {
    run_elems<uint16_t>(VecU16AddVVM, 0x04400861,  // add z1.h, p2/m, z1.h, z3.h
                        {{1, 2, 1, 3}, {1, 2, 2, 1}, {1, 2, 3, 3}, {1, 2, 0xfe, 1}, {1, 2, 0xff, 3}, {1, 2, GROUP_0111, 1}});
    run_elems<uint32_t>(VecU32AddVVM, 0x04800861, {{1, 2, 2, 1}, {1, 2, GROUP_0111, 1}, {1, 2, 0x81, 3}});
    run_elems<uint64_t>(VecU64SubVVM, 0x04c10861, {{1, 2, 2, 1}, {1, 2, GROUP_0111, 1}, {1, 2, 3, ~0ull}});
    // sel z1.d, p9, z3.d, z4.d: an inactive element takes Zm, junk or not.
    auto s = noisy_state(41);
    std::memset(s->p[9], 0, 64);
    s->p[9][0] = 1;
    s->p[9][8] = 2;
    s->p[9][16] = 3;
    std::memset(s->p[9] + 25, 1, 7);
    const cpu_state base = *s;
    EXPECT_EQ(VecU64SelVV(s.get(), 0x05e4e461), DECODE_OK);
    const int from_zn[8] = {1, 0, 1, 0, 0, 0, 0, 0};
    for (unsigned i = 0; i < 8; ++i) EXPECT_EQ(zget<uint64_t>(*s, 1, i), zget<uint64_t>(base, from_zn[i] ? 3 : 4, i)) << i;
}

// Size values below a kernel's narrowest element fall to that element:
// division knows 32 and 64 bits, sxtb starts at .h, sxth and uxth at .s.
TEST(SizeBranch, SizesBelowTheNarrowestFallToIt) {
    for (uint32_t size : {uint32_t(ES_B), uint32_t(ES_H), 7u}) {
        auto s = noisy_state(size);
        std::memset(s->p[2], 1, 64);
        for (unsigned i = 0; i < 16; ++i) {
            zput<uint32_t>(*s, 1, i, 1000);
            zput<uint32_t>(*s, 3, i, uint32_t(-10));
        }
        EXPECT_EQ(sve_sdiv_zpz(s.get(), zreg_dst(1, size), preg(2, QUAL_MERGE), zreg(3, size)), DECODE_OK);
        for (unsigned i = 0; i < 16; ++i) EXPECT_EQ(zget<uint32_t>(*s, 1, i), uint32_t(-100)) << size << " " << i;
    }
    struct Case {
        aarch64_decode_rc (*k)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg);
        uint32_t size;
        unsigned bytes;
        uint64_t in, want;
    } cases[] = {{sve_sxtb_zpz, ES_B, 2, 0x1280, 0xff80},
                 {sve_sxth_zpz, ES_H, 4, 0x12348000, 0xffff8000},
                 {sve_uxth_zpz, ES_B, 4, 0x12348000, 0x8000}};
    for (const Case& c : cases) {
        auto s = noisy_state(3);
        std::memset(s->p[2], 1, 64);
        for (unsigned i = 0; i < 64 / c.bytes; ++i) std::memcpy(s->z[3] + i * c.bytes, &c.in, c.bytes);
        EXPECT_EQ(c.k(s.get(), zreg(1, c.size), preg(2, QUAL_MERGE), zreg(3, c.size)), DECODE_OK);
        for (unsigned i = 0; i < 64 / c.bytes; ++i) {
            uint64_t got = 0;
            std::memcpy(&got, s->z[1] + i * c.bytes, c.bytes);
            EXPECT_EQ(got, c.want) << std::hex << c.in << " element " << i;
        }
    }
}

// The destination may be any source: every element comes from the registers
// as they were before the instruction.
TEST(Aliasing, DestinationEqualToEachSource) {
    auto s0 = noisy_state(21);
    for (unsigned i = 0; i < 16; ++i) {
        zput<uint32_t>(*s0, 5, i, 0x10001 * i + 3);
        zput<uint32_t>(*s0, 6, i, 0x3000 * i + 7);
    }
    std::memset(s0->p[0], 1, 64);
    std::memset(s0->p[1], 0, 64);
    const cpu_state base = *s0;
    struct Case {
        const char* text;
        sve_handler h;
        uint32_t word;
        uint32_t (*want)(uint32_t a, uint32_t b);  // a = old z5, b = z6
    } cases[] = {
        {"sub z5.s, z6.s, z5.s", VecU32SubVVX, 0x04a504c5, [](uint32_t a, uint32_t b) { return b - a; }},
        {"mla z5.s, p0/m, z5.s, z5.s", VecS32MLAVVVM, 0x048540a5, [](uint32_t a, uint32_t) { return a + a * a; }},
        {"mls z5.s, p0/m, z6.s, z5.s", VecS32MLSVVVM, 0x048560c5, [](uint32_t a, uint32_t b) { return a - b * a; }},
        {"msb z5.s, p0/m, z6.s, z5.s", VecS32MSUBVVVM, 0x0486e0a5, [](uint32_t a, uint32_t b) { return a - a * b; }},
        {"sdiv z5.s, p0/m, z5.s, z5.s", VecS32DivVVM, 0x049400a5, [](uint32_t a, uint32_t) { return a ? 1u : 0u; }},
        {"sel z5.s, p1, z6.s, z5.s", VecU32SelVV, 0x05a5c4c5, [](uint32_t a, uint32_t) { return a; }},
        {"sel z5.s, p1, z5.s, z6.s", VecU32SelVV, 0x05a6c4a5, [](uint32_t, uint32_t b) { return b; }},
        {"movprfx z5.s, p0/z, z5.s", VecU32MovePrefix1VZ, 0x049020a5, [](uint32_t a, uint32_t) { return a; }},
        {"movprfx z5, z5", VecU32SpecialMoveV, 0x0420bca5, [](uint32_t a, uint32_t) { return a; }},
        {"bic z5.d, z6.d, z5.d", VecU64BicVVX, 0x04e530c5, [](uint32_t a, uint32_t b) { return b & ~a; }},
        {"smax z5.s, p0/m, z5.s, z6.s", VecS32MaxVVM, 0x048800c5,
         [](uint32_t a, uint32_t b) { return int32_t(a) > int32_t(b) ? a : b; }},
    };
    for (const Case& c : cases) {
        auto s = std::make_unique<cpu_state>(base);
        EXPECT_EQ(c.h(s.get(), c.word), DECODE_OK) << c.text;
        for (unsigned i = 0; i < 16; ++i)
            EXPECT_EQ(zget<uint32_t>(*s, 5, i), c.want(zget<uint32_t>(base, 5, i), zget<uint32_t>(base, 6, i))) << c.text << " " << i;
        expect_rest_unchanged(base, *s, 5);
    }
}

// The movprfx kernel decides by the qualifier: QUAL_ZERO zeroes inactive
// elements, any other qualifier merges.
TEST(MovePrefix, QualifierDecidesZeroingOrMerging) {
    const auto base = noisy_state(31);
    for (uint32_t q : {QUAL_ZERO, QUAL_MERGE, QUAL_PLAIN, 0u}) {
        auto s = std::make_unique<cpu_state>(*base);
        std::memset(s->p[1], 0, 64);
        for (unsigned i = 0; i < 16; i += 2) s->p[1][4 * i] = 1;  // even .s elements active
        s->p[1][4] = 2;                                            // element 1: junk, inactive
        s->p[1][8] = 0;                                            // element 2: inactive
        EXPECT_EQ(sve_movprfx_zpz(s.get(), zreg(5, ES_S), preg(1, q), zreg(6, ES_S)), DECODE_OK);
        for (unsigned i = 0; i < 16; ++i) {
            bool act = i % 2 == 0 && i != 2;
            uint32_t want = act ? zget<uint32_t>(*base, 6, i) : q == QUAL_ZERO ? 0 : zget<uint32_t>(*base, 5, i);
            EXPECT_EQ(zget<uint32_t>(*s, 5, i), want) << "qualifier " << q << " element " << i;
        }
    }
}

// Logical immediates that name no mask (N 0 or 1 with imms 111111, imms that
// fill a 2- or 8-bit element) are refused without touching a register; 0x036
// is the valid neighbour, #0x7f.
TEST(Immediates, LogicalEncodingsWithoutAMaskAreRefused) {
    for (auto [h, base] : {std::pair<sve_handler, uint32_t>{VecU64AndVIX, 0x05800000}, {VecU64OrVIX, 0x05000000},
                           {VecU64XorVIX, 0x05400000}}) {
        for (uint32_t imm13 : {0x003fu, 0x103fu, 0x003du, 0x0037u}) {
            const uint32_t w = base | imm13 << 5 | 1;
            auto s = noisy_state(w);
            const cpu_state before = *s;
            EXPECT_EQ(h(s.get(), w), DECODE_UNKNOWN) << std::hex << w;
            EXPECT_EQ(std::memcmp(s->z, before.z, sizeof before.z), 0) << std::hex << w;
        }
    }
    auto s = noisy_state(1);
    std::memset(s->z[1], 0xff, 64);
    EXPECT_EQ(VecU64AndVIX(s.get(), 0x058006c1), DECODE_OK);  // and z1.b, z1.b, #0x7f
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(s->z[1][i], 0x7f) << i;
}

}  // namespace
