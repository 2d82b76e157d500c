// Element counts of the 32 predicate-constraint patterns at 512 bits, through
// every instruction that takes a pattern and a multiplier: cnt, inc and dec on
// a scalar or a vector, and the saturating forms away from their limits.
#include "shift/test_machine.h"

namespace {

// The architecture's element count of a pattern for a vector of n elements
// (n a power of 2 here): POW2 is the largest power of 2 not above n; VL1 to
// VL8 and VL16 to VL256 are their number when it fits, else 0; MUL4 and MUL3
// round n down to a multiple; ALL is n; the unnamed values 14 to 28 give 0.
unsigned pattern_elements(unsigned pattern, unsigned n) {
    if (pattern == 0) return n;
    if (pattern >= 1 && pattern <= 8) return pattern <= n ? pattern : 0;
    if (pattern >= 9 && pattern <= 13) return (16u << (pattern - 9)) <= n ? 16u << (pattern - 9) : 0;
    if (pattern == 29) return n - n % 4;
    if (pattern == 30) return n - n % 3;
    if (pattern == 31) return n;
    return 0;
}

TEST(Patterns, TheCountsOfTheArchitecture) {
    // A few spelled out, so that the rule above is itself checked.
    EXPECT_EQ(pattern_elements(30, 64), 63u);  // MUL3 .b
    EXPECT_EQ(pattern_elements(30, 8), 6u);    // MUL3 .d
    EXPECT_EQ(pattern_elements(9, 8), 0u);     // VL16 .d
    EXPECT_EQ(pattern_elements(11, 64), 64u);  // VL64 .b
    EXPECT_EQ(pattern_elements(12, 64), 0u);   // VL128 .b
    EXPECT_EQ(pattern_elements(8, 8), 8u);     // VL8 .d
    EXPECT_EQ(pattern_elements(20, 64), 0u);
}

enum Reg { X, W, Z };
enum Op { SET, ADD, SUB };
// Words with Rd or Zd 3, pattern ALL and multiplier 1, from the assembler; the
// test puts other patterns at 9..5 and multipliers at 19..16 (checked against
// "incb x3, mul3, mul #16" = 0x043fe3c3).
struct PatternForm {
    uint32_t word;
    unsigned N;
    Op op;
    Reg reg;
    const char* text;
};
const PatternForm pattern_forms[] = {
    {0x0420e3e3, 8, SET, X, "cntb x3"},       {0x0460e3e3, 16, SET, X, "cnth x3"},
    {0x04a0e3e3, 32, SET, X, "cntw x3"},      {0x04e0e3e3, 64, SET, X, "cntd x3"},
    {0x0430e3e3, 8, ADD, X, "incb x3"},       {0x0470e3e3, 16, ADD, X, "inch x3"},
    {0x04b0e3e3, 32, ADD, X, "incw x3"},      {0x04f0e3e3, 64, ADD, X, "incd x3"},
    {0x0430e7e3, 8, SUB, X, "decb x3"},       {0x0470e7e3, 16, SUB, X, "dech x3"},
    {0x04b0e7e3, 32, SUB, X, "decw x3"},      {0x04f0e7e3, 64, SUB, X, "decd x3"},
    {0x0470c3e3, 16, ADD, Z, "inch z3.h"},    {0x04b0c3e3, 32, ADD, Z, "incw z3.s"},
    {0x04f0c3e3, 64, ADD, Z, "incd z3.d"},    {0x0470c7e3, 16, SUB, Z, "dech z3.h"},
    {0x04b0c7e3, 32, SUB, Z, "decw z3.s"},    {0x04f0c7e3, 64, SUB, Z, "decd z3.d"},
    {0x0420f3e3, 8, ADD, W, "sqincb x3, w3"}, {0x0460f3e3, 16, ADD, W, "sqinch x3, w3"},
    {0x04a0f3e3, 32, ADD, W, "sqincw x3, w3"}, {0x04e0f3e3, 64, ADD, W, "sqincd x3, w3"},
    {0x0420f7e3, 8, ADD, W, "uqincb w3"},     {0x0460f7e3, 16, ADD, W, "uqinch w3"},
    {0x04a0f7e3, 32, ADD, W, "uqincw w3"},    {0x04e0f7e3, 64, ADD, W, "uqincd w3"},
    {0x0420fbe3, 8, SUB, W, "sqdecb x3, w3"}, {0x0460fbe3, 16, SUB, W, "sqdech x3, w3"},
    {0x04a0fbe3, 32, SUB, W, "sqdecw x3, w3"}, {0x04e0fbe3, 64, SUB, W, "sqdecd x3, w3"},
    {0x0420ffe3, 8, SUB, W, "uqdecb w3"},     {0x0460ffe3, 16, SUB, W, "uqdech w3"},
    {0x04a0ffe3, 32, SUB, W, "uqdecw w3"},    {0x04e0ffe3, 64, SUB, W, "uqdecd w3"},
    {0x0430f3e3, 8, ADD, X, "sqincb x3"},     {0x0470f3e3, 16, ADD, X, "sqinch x3"},
    {0x04b0f3e3, 32, ADD, X, "sqincw x3"},    {0x04f0f3e3, 64, ADD, X, "sqincd x3"},
    {0x0430f7e3, 8, ADD, X, "uqincb x3"},     {0x0470f7e3, 16, ADD, X, "uqinch x3"},
    {0x04b0f7e3, 32, ADD, X, "uqincw x3"},    {0x04f0f7e3, 64, ADD, X, "uqincd x3"},
    {0x0430fbe3, 8, SUB, X, "sqdecb x3"},     {0x0470fbe3, 16, SUB, X, "sqdech x3"},
    {0x04b0fbe3, 32, SUB, X, "sqdecw x3"},    {0x04f0fbe3, 64, SUB, X, "sqdecd x3"},
    {0x0430ffe3, 8, SUB, X, "uqdecb x3"},     {0x0470ffe3, 16, SUB, X, "uqdech x3"},
    {0x04b0ffe3, 32, SUB, X, "uqdecw x3"},    {0x04f0ffe3, 64, SUB, X, "uqdecd x3"},
    {0x0460c3e3, 16, ADD, Z, "sqinch z3.h"},  {0x04a0c3e3, 32, ADD, Z, "sqincw z3.s"},
    {0x04e0c3e3, 64, ADD, Z, "sqincd z3.d"},  {0x0460c7e3, 16, ADD, Z, "uqinch z3.h"},
    {0x04a0c7e3, 32, ADD, Z, "uqincw z3.s"},  {0x04e0c7e3, 64, ADD, Z, "uqincd z3.d"},
    {0x0460cbe3, 16, SUB, Z, "sqdech z3.h"},  {0x04a0cbe3, 32, SUB, Z, "sqdecw z3.s"},
    {0x04e0cbe3, 64, SUB, Z, "sqdecd z3.d"},  {0x0460cfe3, 16, SUB, Z, "uqdech z3.h"},
    {0x04a0cfe3, 32, SUB, Z, "uqdecw z3.s"},  {0x04e0cfe3, 64, SUB, Z, "uqdecd z3.d"},
};

uint32_t with_pattern(uint32_t word, unsigned pattern, unsigned multiplier) {
    return (word & ~0x000f03e0u) | pattern << 5 | (multiplier - 1) << 16;
}

TEST(Patterns, WordsCarryPatternAndMultiplierWhereTheAssemblerPutsThem) {
    EXPECT_EQ(with_pattern(0x0430e3e3, 30, 16), 0x043fe3c3u);  // incb x3, mul3, mul #16
    EXPECT_EQ(with_pattern(0x0430e3e3, 14, 2), 0x0431e1c3u);   // incb x3, #14, mul #2
    EXPECT_EQ(with_pattern(0x0420ffe3, 7, 3), 0x0422fce3u);    // uqdecb w3, vl7, mul #3
}

// Start values far from every limit, so that the saturating forms add and
// subtract exactly; the W forms get noise in the high word, which they drop.
TEST(Patterns, EveryPatternAtEverySizeWithMultipliers1And16) {
    for (const PatternForm& f : pattern_forms)
        for (unsigned pattern = 0; pattern < 32; ++pattern)
            for (unsigned mult : {1u, 16u}) {
                Machine m;
                const uint64_t amount = uint64_t(pattern_elements(pattern, 512 / f.N)) * mult;
                const uint64_t x = f.reg == W ? 0xABCD123400010000 : 0x100000000;
                m.s()->x[3] = x;
                m.fill_z(3, f.N, 0x4000);
                ASSERT_EQ(m.exec(with_pattern(f.word, pattern, mult)), DECODE_OK);
                const char* what = f.text;
                if (f.reg == Z) {
                    const uint64_t want = f.op == ADD ? 0x4000 + amount : 0x4000 - amount;
                    for (unsigned i = 0; i < 512 / f.N; ++i)
                        ASSERT_EQ(m.z(3, i, f.N), want) << what << " pattern " << pattern << " mul " << mult;
                    ASSERT_EQ(m.s()->x[3], x);
                    continue;
                }
                uint64_t want = f.op == SET ? amount : f.op == ADD ? x + amount : x - amount;
                if (f.reg == W) want = uint32_t(want);
                ASSERT_EQ(m.s()->x[3], want) << what << " pattern " << pattern << " mul " << mult;
            }
}

// A vector increment by more than the element holds wraps; inc and dec of a
// general register wrap at 64 bits.
TEST(Patterns, NonSaturatingFormsWrap) {
    Machine m;
    m.fill_z(3, 16, 0xFFF0);
    ASSERT_EQ(m.exec(with_pattern(0x0470c3e3, 31, 16)), DECODE_OK);  // inch z3.h, all, mul #16: +512
    EXPECT_EQ(m.z(3, 31, 16), 0x01F0u);
    m.s()->x[3] = 10;
    ASSERT_EQ(m.exec(with_pattern(0x0430e7e3, 30, 1)), DECODE_OK);   // decb x3, mul3: -63
    EXPECT_EQ(m.s()->x[3], uint64_t(10 - 63));
    m.s()->x[3] = ~0ull - 5;
    ASSERT_EQ(m.exec(with_pattern(0x04f0e3e3, 29, 2)), DECODE_OK);   // incd x3, mul4, mul #2: +16
    EXPECT_EQ(m.s()->x[3], 10u);
}

}  // namespace
