// The integer library under the reference operations, at the edges where a
// 128-bit model of the pseudocode's integers goes wrong: widths 1 and 64,
// bits above the width, shift counts around 64, 65 and 128, saturation limits
// and what each saturating helper leaves in the bits above the element.
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

TEST(IntLib, WidthsOneTo64AndTheBitsAboveThem) {
    struct Case {
        uint64_t x;
        unsigned N, u;
        Integer want;
    } cases[] = {
        {0x1ff, 8, 1, 255}, {0x1ff, 8, 0, -1}, {0x100, 8, 0, 0},  // bits above N are not part of the value
        {1, 1, 0, -1}, {1, 1, 1, 1}, {2, 1, 0, 0},                // a 1-bit signed value is 0 or -1
        {0x4000000000000000ull, 63, 0, -P2(62)}, {M64, 64, 0, -P2(63)}, {~0ull, 64, 1, P2(64) - 1},
        {~0ull, 0, 0, 0}, {M64, 65, 0, -P2(63)},                  // 0 is nothing, above 64 the whole argument
    };
    for (const Case& c : cases) EXPECT_INT(Int(c.x, c.N, c.u), c.want) << " x=" << std::hex << c.x << " N=" << std::dec << c.N;
    EXPECT_INT(SInt(0x40, 7), Integer(0));  // SInt knows only the element widths
    EXPECT_INT(SInt(M64, 64), -P2(63));
    EXPECT_EQ(ones(0), ~0ull);
    EXPECT_EQ(ones(63), X64);
    // Wrapping arithmetic: the largest unsigned 64-bit square keeps its low 128 bits.
    Integer sq = MulInt(P2(64) - 1, P2(64) - 1);
    EXPECT_EQ(bits(sq), 1u);
    EXPECT_EQ(static_cast<uint64_t>(static_cast<UInteger>(sq) >> 64), 0xfffffffffffffffeull);
    EXPECT_INT(AbsInt(-P2(63)), P2(63));
}

TEST(IntLib, ShiftLeftClipsAt64AndTurnsNegativeCountsRight) {
    struct Case {
        Integer v, count, want;
    } cases[] = {
        {1, 63, P2(63)}, {1, 64, P2(64)}, {1, 65, P2(64)}, {1, 128, P2(64)}, {-1, 65, -P2(64)},
        {P2(64) - 1, 64, -P2(64)},                                 // the top 64 bits, two's complement
        {-256, -4, -16}, {1, -1, 0}, {-1, -1, -1},                 // negative: a right shift
        {P2(100), -66, P2(35)},                                    // ... clipped at 65
        {-1, -128, -1}, {P2(126), -128, 0},                        // ... with the rule for exactly 128
        {-P2(100), I128_MIN, -P2(35)},
    };
    for (const Case& c : cases) EXPECT_INT(ShiftLeftInt(c.v, c.count), c.want) << " v=" << hex(c.v) << " count=" << hex(c.count);
}

TEST(IntLib, ShiftRightClipsAt65AndHasARuleForExactly128) {
    struct Case {
        Integer v, count, want;
    } cases[] = {
        {-P2(63), 64, -1}, {-P2(63), 65, -1}, {P2(64) - 1, 63, 1}, {P2(64) - 1, 64, 0},
        {P2(100), 65, P2(35)}, {P2(100), 66, P2(35)}, {P2(100), 127, P2(35)}, {P2(100), 129, P2(35)},  // above 65: 65
        {I128_MIN, 127, -P2(62)},
        // Exactly 128: all ones if bits 127 and 126 are both set, else 0.
        {-1, 128, -1}, {-P2(126), 128, -1}, {I128_MIN, 128, 0}, {P2(126), 128, 0}, {5, 128, 0},
        // Negative counts shift left, clipped at 64.
        {1, -64, P2(64)}, {1, -65, P2(64)}, {1, -128, P2(64)}, {3, I128_MIN, 3 * P2(64)},
    };
    for (const Case& c : cases) EXPECT_INT(ShiftRightInt(c.v, c.count), c.want) << " v=" << hex(c.v) << " count=" << hex(c.count);
}

TEST(IntLib, SatQAtWidths1To64) {
    struct Case {
        Integer v;
        unsigned N, u;
        uint64_t result;
        bool sat;
    } cases[] = {
        {128, 8, 0, 0x7f, true}, {-128, 8, 0, 0x80, false},
        {-129, 8, 0, 0x80, true},  // the bare pattern, not sign-extended
        {-1, 8, 0, 0xff, false},   // in range: low N bits, zero-extended
        {-P2(31) - 1, 32, 0, 0x80000000, true}, {-5, 32, 0, 0xfffffffb, false},
        {P2(63), 64, 0, X64, true}, {-P2(63) - 1, 64, 0, M64, true}, {-1, 64, 0, ~0ull, false}, {P2(100), 64, 0, X64, true},
        {1, 1, 0, 0, true}, {-1, 1, 0, 1, false}, {-2, 1, 0, 1, true},
        {-1, 8, 1, 0, true}, {256, 8, 1, 0xff, true}, {P2(64) - 1, 64, 1, ~0ull, false}, {P2(64), 64, 1, ~0ull, true},
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
        {0xff, 0xff, 8, 0, 0xfffffffffffffffeull},                 // -2, sign-extended to 64 bits
        {0x80, 0, 8, 0, 0xffffffffffffff80ull}, {0x80, 0xff, 8, 0, 0x80},  // saturated: the bare pattern
        {0x80000000, 0x7fffffff, 32, 0, ~0ull}, {M64, ~0ull, 64, 0, M64},
        {0x1ff, 0x101, 8, 1, 0xff},                                // only the low N bits count
    };
    for (const Add& c : adds)
        EXPECT_EQ(SatAdd(c.a, c.b, c.N, c.u), c.want) << std::hex << c.a << " + " << c.b << " N=" << std::dec << c.N << " u=" << c.u;
    struct Sub {
        uint64_t a, b;
        unsigned N, u;
        uint64_t result;
        bool sat;
    } subs[] = {
        {0, 1, 8, 1, 0, true}, {0, 1, 8, 0, 0xff, false},          // -1, masked to 8 bits
        {0x80, 1, 8, 0, 0x80, true}, {0, M64, 64, 0, X64, true}, {5, 7, 32, 0, 0xfffffffe, false},
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
        {0, M64, 64, 0, 0, M64}, {0, M64, 64, 1, M64, 0},
        {5, 9, 5, 0, 0, 0}, {5, 9, 0, 1, 0, 0}, {5, 9, 63, 1, 0, 0},  // not an element width
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Max(c.a, c.b, c.N, c.u), c.max) << std::hex << c.a << "," << c.b << " N=" << std::dec << c.N << " u=" << c.u;
        EXPECT_EQ(Min(c.a, c.b, c.N, c.u), c.min) << std::hex << c.a << "," << c.b << " N=" << std::dec << c.N << " u=" << c.u;
    }
}

TEST(IntLib, BitQueriesSeeOnlyTheLowNBits) {
    struct Case {
        uint64_t x;
        int N, hbs, clz, cls, cnt;
    } cases[] = {
        {0, 8, -1, 8, 7, 0}, {0xff, 8, 7, 0, 7, 8}, {0x7f, 8, 6, 1, 0, 7},
        {0x1ff, 8, 7, 0, 7, 8}, {0x100, 8, -1, 8, 7, 0},  // bits above N do not exist
        {0, 64, -1, 64, 63, 0}, {~0ull, 64, 63, 0, 63, 64}, {M64, 64, 63, 0, 0, 1},
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
    const uint64_t rbit[][3] = {{0x100, 8, 0}, {1, 1, 1}, {1, 64, M64}, {~0ull, 0, 0}};
    for (auto [x, n, want] : rbit) EXPECT_EQ(BitReverse(x, static_cast<int>(n)), want) << std::hex << x << " N " << n;
    EXPECT_EQ(BitReverse(~0ull, -3), 0u);
    const uint64_t x = 0x0102030405060708ull;
    const uint64_t rev[][4] = {{x, 64, 4, 0x0506070801020304ull}, {0xaaaa01020304ull, 32, 1, 0x04030201},
                               {x, 64, 8, 0}, {x, 64, 3, 0}, {x, 64, 0, 0}};
    for (auto [v, n, chunk, want] : rev)
        EXPECT_EQ(Reverse(v, static_cast<int>(n), static_cast<int>(chunk)), want) << std::hex << v << " chunk " << chunk;
}

}  // namespace
