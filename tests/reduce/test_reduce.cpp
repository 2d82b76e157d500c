// Reductions: the identity of each operation and size when no element is
// active; sums that outgrow the element, signed at every saddv size; results
// at element width with the other bytes of the register 0; inactive elements
// that would change the result; Vd equal to Zn.
#include <cstring>

#include "reduce/red_test.h"

namespace {
using namespace redtest;

// The scalar in the low `bytes` of z[d], every other byte 0.
void expect_scalar(Machine& m, unsigned d, unsigned bytes, uint64_t want, const char* what) {
    uint64_t got = 0;
    std::memcpy(&got, m.st->z[d], bytes);
    EXPECT_EQ(got, want) << what;
    for (unsigned b = bytes; b < 64; ++b) ASSERT_EQ(m.st->z[d][b], 0) << what << " byte " << b;
}

// "op v3, p2, z5.T" at .b, .h, .s, .d (saddv has no .d), words from the
// assembler, and the identity at each size; a sum is a 64-bit scalar.
struct Op {
    const char* text;
    uint32_t word[4];
    uint64_t identity[4];
};
const Op ops[] = {
    {"saddv", {0x040028a3, 0x044028a3, 0x048028a3}, {}},
    {"uaddv", {0x040128a3, 0x044128a3, 0x048128a3, 0x04c128a3}, {}},
    {"smaxv", {0x040828a3, 0x044828a3, 0x048828a3, 0x04c828a3}, {0x80, 0x8000, 0x80000000, 1ull << 63}},
    {"sminv", {0x040a28a3, 0x044a28a3, 0x048a28a3, 0x04ca28a3}, {0x7f, 0x7fff, 0x7fffffff, ~0ull >> 1}},
    {"umaxv", {0x040928a3, 0x044928a3, 0x048928a3, 0x04c928a3}, {}},
    {"uminv", {0x040b28a3, 0x044b28a3, 0x048b28a3, 0x04cb28a3}, {0xff, 0xffff, 0xffffffff, ~0ull}},
    {"andv", {0x041a28a3, 0x045a28a3, 0x049a28a3, 0x04da28a3}, {0xff, 0xffff, 0xffffffff, ~0ull}},
    {"orv", {0x041828a3, 0x045828a3, 0x049828a3, 0x04d828a3}, {}},
    {"eorv", {0x041928a3, 0x045928a3, 0x049928a3, 0x04d928a3}, {}},
};

TEST(Reduce, NoActiveElementGivesTheIdentity) {
    for (const Op& op : ops)
        for (unsigned k = 0; k < 4 && op.word[k]; ++k) {
            Machine m;
            noise(m);
            const unsigned N = 8u << k;
            for (unsigned i = 0; i < 512 / N; ++i) m.set_active(2, i, N, false);
            ASSERT_EQ(m.exec(op.word[k]), DECODE_OK);
            expect_scalar(m, 3, std::strstr(op.text, "add") ? 8 : N / 8, op.identity[k], op.text);
        }
}

// Zn holds `fill` but in the elements set; `active` has a bit per element.
struct Case {
    uint32_t word;
    sve_handler h;
    unsigned N, bytes;
    uint64_t fill, active;
    struct { unsigned i; uint64_t v; } set[3];
    uint64_t want;
    const char* why;
};
constexpr uint64_t ALL = ~0ull;
const Case cases[] = {
    {0x040128a3, VecU8AddReduceV, 8, 8, 0xff, ALL, {}, 16320, "64 x 255 does not fit a byte"},
    {0x044128a3, VecU16AddReduceV, 16, 8, 0xffff, ALL, {}, 2097120, "32 x 65535"},
    {0x048128a3, VecU32AddReduceV, 32, 8, 0xffffffff, ALL, {}, 0xffffffff0, "16 x 0xffffffff"},
    {0x04c128a3, VecU64AddReduceV, 64, 8, 0x1000, 0x3, {{0, ~0ull}, {1, 2}}, 1, "wraps at 64 bits"},
    {0x040028a3, VecS8AddReduceV, 8, 8, 0x01, 1ull << 7, {{7, 0xff}}, ~0ull, "one active -1 is a 64-bit -1"},
    {0x040028a3, VecS8AddReduceV, 8, 8, 0x80, ALL, {}, 0xffffffffffffe000, "64 x -128"},
    {0x044028a3, VecS16AddReduceV, 16, 8, 0x8000, ALL, {}, 0xfffffffffff00000, "32 x -32768"},
    {0x048028a3, VecS32AddReduceV, 32, 8, 0x80000000, ALL, {}, 0xfffffff800000000, "16 x -2^31"},
    {0x048028a3, VecS32AddReduceV, 32, 8, 0x7fffffff, ALL, {}, 0x7fffffff0, "16 x (2^31 - 1)"},
    {0x040828a3, VecS8MaxReduceV, 8, 1, 0x80, ~(1ull << 9), {{9, 0x7f}, {3, 0xfe}, {60, 0xfd}}, 0xfe, "-2"},
    {0x04c828a3, VecS64MaxReduceV, 64, 8, (uint64_t)-5, ~4ull, {{2, 0x7fffffffffffffff}}, (uint64_t)-5, "-5"},
    {0x048a28a3, VecS32MinReduceV, 32, 4, 1, ALL, {{4, 0x80000000}, {5, 0xffffffff}}, 0x80000000, "minimum"},
    {0x044a28a3, VecS16MinReduceV, 16, 2, 0x7fff, ~(1ull << 31), {{31, 0x8000}, {30, 0xffff}}, 0xffff, "-1"},
    {0x044928a3, VecU16MaxReduceV, 16, 2, 1, ~1ull, {{0, 0xffff}, {17, 0x8000}}, 0x8000, "unsigned"},
    {0x040b28a3, VecU8MinReduceV, 8, 1, 0xff, ~(1ull << 63), {{63, 0}, {62, 0x7f}}, 0x7f, "unsigned"},
    {0x041a28a3, VecU8AndReduceV, 8, 1, 0xf3, ~2ull, {{1, 0}, {2, 0x3f}}, 0x33, "inactive 0 skipped"},
    {0x045828a3, VecU16OrReduceV, 16, 2, 0, ~(1ull << 7), {{5, 0x0101}, {6, 0x8000}, {7, 0xffff}}, 0x8101, ""},
    {0x049928a3, VecU32XorReduceV, 32, 4, 0x0f0f0f0f, ~(1ull << 8), {{3, 0xffffffff}}, 0xffffffff, "14 cancel"},
    {0x04d928a3, VecU64XorReduceV, 64, 8, 1, ALL, {{0, 0x8000000000000000}}, 0x8000000000000001, "7 ones"},
    {0x044b28a5, VecU16MinReduceV, 16, 2, 0x1234, ALL, {{20, 0x42}}, 0x42, "uminv h5, p2, z5.h"},
    {0x04003ca5, VecS8AddReduceV, 8, 8, 0xff, ALL, {}, (uint64_t)-64, "saddv d5, p7, z5.b"},
};

TEST(Reduce, ActiveElementsOnly) {
    for (const Case& c : cases) {
        Machine m;
        noise(m);
        m.fill_z(F_n(c.word), c.N, c.fill);
        for (auto& s : c.set)
            if (s.i || s.v) m.set_z(F_n(c.word), s.i, c.N, s.v);
        for (unsigned i = 0; i < 512 / c.N; ++i) m.set_active(F_pg(c.word), i, c.N, c.active >> i & 1);
        run(m, c.h, c.word);
        expect_scalar(m, F_d(c.word), c.bytes, c.want, c.why);
    }
}

}  // namespace
