// The integer library under the reference operations, at the edges where a
// 128-bit model of the pseudocode's integers goes wrong: sign boundaries,
// widths 1 and 64, shift counts around 64, 65 and 128, saturation limits.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "sve/integer/intlib.h"

namespace {

std::string hex(Integer v) {
    char b[40];
    UInteger u = static_cast<UInteger>(v);
    std::snprintf(b, sizeof b, "0x%016llx_%016llx", (unsigned long long)(u >> 64), (unsigned long long)u);
    return b;
}
constexpr Integer P2(int k) { return static_cast<Integer>(UInteger(1) << k); }
constexpr Integer I128_MIN = static_cast<Integer>(UInteger(1) << 127);
constexpr uint64_t M64 = 0x8000000000000000ull, X64 = 0x7fffffffffffffffull;

#define EXPECT_INT(a, b) EXPECT_TRUE((a) == (b)) << #a << " = " << hex(a) << ", expected " << hex(b)

TEST(IntLib, IntWidensByWidthAndSignedness) {
    struct Case {
        uint64_t x;
        unsigned N, u;
        Integer want;
    } cases[] = {
        {0x80, 8, 0, -128}, {0x80, 8, 1, 128}, {0x7f, 8, 0, 127}, {0xff, 8, 0, -1},
        {0x1ff, 8, 1, 255}, {0x1ff, 8, 0, -1}, {0x100, 8, 0, 0},  // bits above N are not part of the value
        {1, 1, 0, -1}, {1, 1, 1, 1}, {2, 1, 0, 0},                // a 1-bit signed value is 0 or -1
        {0x10, 5, 0, -16}, {0x0f, 5, 0, 15}, {0x8000, 16, 0, -32768}, {0xffff7fff, 16, 0, 32767},
        {0x7fffffff80000000ull, 32, 0, -P2(31)}, {0x7fffffff80000000ull, 32, 1, P2(31)},
        {0x4000000000000000ull, 63, 0, -P2(62)}, {0x4000000000000000ull, 63, 1, P2(62)},
        {M64, 64, 0, -P2(63)}, {M64, 64, 1, P2(63)}, {~0ull, 64, 1, P2(64) - 1}, {~0ull, 64, 0, -1},
    };
    for (const Case& c : cases) EXPECT_INT(Int(c.x, c.N, c.u), c.want) << " x=" << std::hex << c.x << " N=" << std::dec << c.N << " u=" << c.u;
    EXPECT_INT(UInt(~0ull, 64), P2(64) - 1);
    // SInt knows only the element widths.
    EXPECT_INT(SInt(0x80, 8), Integer(-128));
    EXPECT_INT(SInt(M64, 64), -P2(63));
    EXPECT_INT(SInt(0x40, 7), Integer(0));
    EXPECT_INT(SInt(0xff, 12), Integer(0));
}

TEST(IntLib, BitsOnesAndWrappingArithmetic) {
    EXPECT_EQ(bits(-1), ~0ull);
    EXPECT_EQ(bits(P2(64) + 5), 5u);
    const uint64_t ones_of[][2] = {{0, ~0ull}, {1, 1}, {8, 0xff}, {63, X64}, {64, ~0ull}};
    for (auto [n, want] : ones_of) EXPECT_EQ(ones(static_cast<unsigned>(n)), want) << n;
    EXPECT_INT(AbsInt(-P2(63)), P2(63));
    EXPECT_INT(AbsInt(Integer(-1)), Integer(1));
    // The largest unsigned 64-bit product: high half 2^64 - 2, low half 1.
    Integer sq = MulInt(P2(64) - 1, P2(64) - 1);
    EXPECT_EQ(bits(sq), 1u);
    EXPECT_EQ(static_cast<uint64_t>(static_cast<UInteger>(sq) >> 64), 0xfffffffffffffffeull);
    EXPECT_INT(MulInt(-P2(63), -P2(63)), P2(126));
}

TEST(IntLib, ShiftLeftClipsAt64AndTurnsNegativeCountsRight) {
    struct Case {
        Integer v, count, want;
    } cases[] = {
        {1, 0, 1}, {1, 63, P2(63)}, {1, 64, P2(64)}, {1, 65, P2(64)}, {1, 127, P2(64)}, {1, 128, P2(64)},
        {-1, 64, -P2(64)}, {-1, 65, -P2(64)}, {P2(63), 1, P2(64)},
        {P2(64) - 1, 64, -P2(64)},  // the top 64 bits, as a two's complement value
        {256, -4, 16}, {-256, -4, -16}, {1, -1, 0}, {-1, -1, -1},  // negative: a right shift
        {P2(100), -66, P2(35)},                                      // ... clipped at 65
        {-1, -128, -1}, {P2(126), -128, 0},                          // ... with the rule for exactly 128
        {-P2(100), I128_MIN, -P2(35)},
    };
    for (const Case& c : cases) EXPECT_INT(ShiftLeftInt(c.v, c.count), c.want) << " v=" << hex(c.v) << " count=" << hex(c.count);
}

TEST(IntLib, ShiftRightClipsAt65AndHasARuleForExactly128) {
    struct Case {
        Integer v, count, want;
    } cases[] = {
        {-1, 0, -1}, {-P2(63), 63, -1}, {-P2(63), 64, -1}, {-P2(63), 65, -1},
        {P2(64) - 1, 63, 1}, {P2(64) - 1, 64, 0}, {P2(64) - 1, 65, 0},
        {P2(100), 65, P2(35)}, {P2(100), 66, P2(35)}, {P2(100), 127, P2(35)}, {P2(100), 129, P2(35)},  // above 65: 65
        {-P2(100), 127, -P2(35)}, {I128_MIN, 127, -P2(62)},
        // Exactly 128: all ones if bits 127 and 126 are both set, else 0.
        {-1, 128, -1}, {-P2(126), 128, -1}, {I128_MIN, 128, 0}, {P2(126), 128, 0}, {5, 128, 0},
        // Negative counts shift left, clipped at 64.
        {1, -3, 8}, {1, -64, P2(64)}, {1, -65, P2(64)}, {1, -128, P2(64)}, {3, I128_MIN, 3 * P2(64)},
    };
    for (const Case& c : cases) EXPECT_INT(ShiftRightInt(c.v, c.count), c.want) << " v=" << hex(c.v) << " count=" << hex(c.count);
}

TEST(IntLib, SatQAtEveryElementWidth) {
    struct Case {
        Integer v;
        unsigned N, u;
        uint64_t result;
        bool sat;
    } cases[] = {
        {127, 8, 0, 0x7f, false}, {128, 8, 0, 0x7f, true}, {-128, 8, 0, 0x80, false},
        {-129, 8, 0, 0x80, true},  // the bare pattern, not sign-extended
        {-1, 8, 0, 0xff, false},   // in range: low N bits, zero-extended
        {32768, 16, 0, 0x7fff, true}, {-32769, 16, 0, 0x8000, true}, {-32768, 16, 0, 0x8000, false},
        {P2(31), 32, 0, 0x7fffffff, true}, {-P2(31) - 1, 32, 0, 0x80000000, true}, {-5, 32, 0, 0xfffffffb, false},
        {P2(63) - 1, 64, 0, X64, false}, {P2(63), 64, 0, X64, true}, {-P2(63), 64, 0, M64, false},
        {-P2(63) - 1, 64, 0, M64, true}, {-1, 64, 0, ~0ull, false}, {P2(100), 64, 0, X64, true},
        {1, 1, 0, 0, true}, {-1, 1, 0, 1, false}, {-2, 1, 0, 1, true},
        {-1, 8, 1, 0, true}, {255, 8, 1, 0xff, false}, {256, 8, 1, 0xff, true}, {65536, 16, 1, 0xffff, true},
        {P2(32), 32, 1, 0xffffffff, true}, {P2(64) - 1, 64, 1, ~0ull, false}, {P2(64), 64, 1, ~0ull, true},
        {-P2(100), 64, 1, 0, true},
    };
    for (const Case& c : cases) {
        Integer q = SatQ(c.v, c.N, c.u);
        EXPECT_EQ(SatQValue(q), c.result) << hex(c.v) << " N=" << c.N << " u=" << c.u;
        // The flag is bit 0 of the high half, and nothing else is there.
        EXPECT_EQ(static_cast<uint64_t>(static_cast<UInteger>(q) >> 64), c.sat ? 1u : 0u) << hex(c.v) << " N=" << c.N;
    }
}

TEST(IntLib, SatAddLeavesAnUnsaturatedSumUnmaskedSatSubMasks) {
    struct Add {
        uint64_t a, b;
        unsigned N, u;
        uint64_t want;
    } adds[] = {
        {0x7f, 1, 8, 0, 0x7f}, {0xff, 0xff, 8, 0, 0xfffffffffffffffeull},  // -2, sign-extended to 64 bits
        {0x80, 0xff, 8, 0, 0x80}, {0x80, 0, 8, 0, 0xffffffffffffff80ull},  // saturated: the bare pattern
        {0x7fff, 1, 16, 0, 0x7fff}, {0x8000, 0x8000, 16, 0, 0x8000}, {0x80000000, 0x7fffffff, 32, 0, ~0ull},
        {X64, 1, 64, 0, X64}, {M64, ~0ull, 64, 0, M64}, {M64, X64, 64, 0, ~0ull},
        {0xfe, 1, 8, 1, 0xff}, {0xff, 1, 8, 1, 0xff}, {0x1ff, 0x101, 8, 1, 0xff},  // only the low N bits count
        {0xffffffff, 1, 32, 1, 0xffffffff}, {~0ull, ~0ull, 64, 1, ~0ull},
    };
    for (const Add& c : adds)
        EXPECT_EQ(SatAdd(c.a, c.b, c.N, c.u), c.want) << std::hex << c.a << " + " << c.b << " N=" << std::dec << c.N << " u=" << c.u;
    struct Sub {
        uint64_t a, b;
        unsigned N, u;
        uint64_t result;
        bool sat;
    } subs[] = {
        {0, 1, 8, 1, 0, true}, {0, 1, 8, 0, 0xff, false},  // -1, masked to 8 bits
        {0x80, 1, 8, 0, 0x80, true}, {0x7f, 0xff, 8, 0, 0x7f, true}, {M64, 1, 64, 0, M64, true},
        {0, M64, 64, 0, X64, true}, {5, 7, 64, 1, 0, true}, {5, 7, 32, 0, 0xfffffffe, false},
        {0x8000, 0x7fff, 16, 1, 1, false}, {0x8000, 0x7fff, 16, 0, 0x8000, true},
    };
    for (const Sub& c : subs) {
        Integer q = SatSub(c.a, c.b, c.N, c.u);
        EXPECT_EQ(SatQValue(q), c.result) << std::hex << c.a << " - " << c.b << " N=" << std::dec << c.N;
        EXPECT_EQ(SatQFlag(q), c.sat) << std::hex << c.a << " - " << c.b << " N=" << std::dec << c.N;
    }
}

TEST(IntLib, MaxMinCompareAtWidthAndReturnTheArgumentWhole) {
    struct Case {
        uint64_t a, b;
        unsigned N, u;
        uint64_t max, min;
    } cases[] = {
        {0x7f, 0x80, 8, 0, 0x7f, 0x80}, {0x7f, 0x80, 8, 1, 0x80, 0x7f},
        {0x17f, 0x280, 8, 1, 0x280, 0x17f},  // whole argument, upper bits and all
        {0x17f, 0x27f, 8, 1, 0x17f, 0x17f},  // equal at N: the first argument
        {0x7fff, 0x8000, 16, 0, 0x7fff, 0x8000}, {0xffffffff, 0, 32, 0, 0, 0xffffffff}, {0xffffffff, 0, 32, 1, 0xffffffff, 0},
        {0, M64, 64, 0, 0, M64}, {0, M64, 64, 1, M64, 0},
        {5, 9, 5, 0, 0, 0}, {5, 9, 0, 1, 0, 0}, {5, 9, 63, 1, 0, 0},  // not an element width
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Max(c.a, c.b, c.N, c.u), c.max) << std::hex << c.a << "," << c.b << " N=" << std::dec << c.N << " u=" << c.u;
        EXPECT_EQ(Min(c.a, c.b, c.N, c.u), c.min) << std::hex << c.a << "," << c.b << " N=" << std::dec << c.N << " u=" << c.u;
    }
}

TEST(IntLib, BitQueries) {
    struct Case {
        uint64_t x;
        int N, hbs, clz, cls, cnt;
    } cases[] = {
        {0, 8, -1, 8, 7, 0}, {1, 8, 0, 7, 6, 1}, {0x80, 8, 7, 0, 0, 1}, {0xff, 8, 7, 0, 7, 8}, {0x7f, 8, 6, 1, 0, 7},
        {0xc0, 8, 7, 0, 1, 2}, {0x3f, 8, 5, 2, 1, 6},
        {0x1ff, 8, 7, 0, 7, 8}, {0x100, 8, -1, 8, 7, 0},  // bits above N do not exist
        {0xffff, 16, 15, 0, 15, 16}, {1, 16, 0, 15, 14, 1},
        {0, 64, -1, 64, 63, 0}, {1, 64, 0, 63, 62, 1}, {~0ull, 64, 63, 0, 63, 64}, {M64, 64, 63, 0, 0, 1},
        {0xc000000000000000ull, 64, 63, 0, 1, 2}, {M64, 63, -1, 63, 62, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(HighestBitSet(c.x, c.N), c.hbs) << std::hex << c.x << " N=" << std::dec << c.N;
        EXPECT_EQ(CountLeadingZeroBits(c.x, c.N), c.clz) << std::hex << c.x << " N=" << std::dec << c.N;
        EXPECT_EQ(CountLeadingSignBits(c.x, c.N), c.cls) << std::hex << c.x << " N=" << std::dec << c.N;
        EXPECT_EQ(BitCount(c.x, c.N), c.cnt) << std::hex << c.x << " N=" << std::dec << c.N;
    }
    EXPECT_EQ(BitCount(~0ull, 0), 0);
    EXPECT_EQ(BitCount(~0ull, -1), 0);
}

TEST(IntLib, BitReverseAndChunkReverse) {
    const uint64_t rbit[][3] = {{1, 8, 0x80}, {0x0f, 8, 0xf0}, {0x100, 8, 0}, {1, 1, 1}, {1, 64, M64},
                                {0x0123456789abcdefull, 64, 0xf7b3d591e6a2c480ull}};
    for (auto [x, n, want] : rbit) EXPECT_EQ(BitReverse(x, static_cast<int>(n)), want) << std::hex << x;
    EXPECT_EQ(BitReverse(~0ull, 0), 0u);
    EXPECT_EQ(BitReverse(~0ull, -3), 0u);
    const uint64_t x = 0x0102030405060708ull;
    const uint64_t rev[][4] = {{x, 64, 1, 0x0807060504030201ull}, {x, 64, 2, 0x0708050603040102ull},
                               {x, 64, 4, 0x0506070801020304ull}, {0x0102, 16, 1, 0x0201},
                               {0x01020304, 32, 2, 0x03040102}, {0xaaaa01020304ull, 32, 1, 0x04030201},
                               {x, 64, 8, 0}, {x, 64, 3, 0}, {x, 64, 0, 0}};
    for (auto [v, n, chunk, want] : rev)
        EXPECT_EQ(Reverse(v, static_cast<int>(n), static_cast<int>(chunk)), want) << std::hex << v << " chunk " << chunk;
}

// The element counts at 512 bits, pattern by pattern, for .b .h .s .d.
TEST(Patterns, CountsAt512Bits) {
    const unsigned n[4] = {64, 32, 16, 8};
    struct Row {
        unsigned pattern, count[4];
    } rows[] = {
        {0, {64, 32, 16, 8}}, {1, {1, 1, 1, 1}}, {2, {2, 2, 2, 2}}, {3, {3, 3, 3, 3}}, {4, {4, 4, 4, 4}},
        {5, {5, 5, 5, 5}}, {6, {6, 6, 6, 6}}, {7, {7, 7, 7, 7}}, {8, {8, 8, 8, 8}}, {9, {16, 16, 16, 0}},
        {10, {32, 32, 0, 0}}, {11, {64, 0, 0, 0}}, {12, {0, 0, 0, 0}}, {13, {0, 0, 0, 0}},
        {29, {64, 32, 16, 8}}, {30, {63, 30, 15, 6}}, {31, {64, 32, 16, 8}},
    };
    for (const Row& r : rows)
        for (int s = 0; s < 4; ++s) EXPECT_EQ(VecTrueILength(r.pattern, n[s]), r.count[s]) << "pattern " << r.pattern << " n " << n[s];
    for (unsigned p = 14; p <= 28; ++p)
        for (int s = 0; s < 4; ++s) EXPECT_EQ(VecTrueILength(p, n[s]), 0u) << "pattern " << p;
    // Other element counts.
    const unsigned general[][3] = {{0, 0, 1}, {0, 1, 1}, {0, 3, 2}, {0, 63, 32}, {0, 129, 128}, {7, 6, 0}, {7, 7, 7},
                                   {9, 15, 0}, {12, 128, 128}, {13, 255, 0}, {13, 256, 256}, {29, 7, 4}, {30, 2, 0},
                                   {30, 128, 126}, {31, 7, 6}, {31, 128, 128}, {32, 64, 0}};
    for (auto [p, count, want] : general) EXPECT_EQ(VecTrueILength(p, count), want) << "pattern " << p << " n " << count;
}

}  // namespace
