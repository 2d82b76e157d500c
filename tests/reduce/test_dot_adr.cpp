// Dot products at the extremes of their sources, with accumulators that wrap,
// and the indexed forms at both sizes and every index; ADR in its four forms
// at every shift, with offsets whose low word is 0xFFFFFFFF.
#include "reduce/red_test.h"

namespace {
using namespace redtest;

// Every element of Zd (or Zda) starts at `d`, of Zn at `n` and of Zm at `m`
// (the sources of a dot product are a quarter of its width); every element of
// Zd must end at `want`.
struct Uniform {
    uint32_t word;
    sve_handler h;
    unsigned N, src;
    uint64_t d, n, m, want;
    const char* text;
};
constexpr uint64_t LOW_ONES = 0x12345678ffffffff;  // low word 0xFFFFFFFF, high word noise
const Uniform uniform[] = {
    {0x448600a3, VecS32DotVVVX, 32, 8, 0, 0x80, 0x80, 65536, "sdot z3.s, z5.b, z6.b"},
    {0x448604a3, VecU32DotVVVX, 32, 8, 0, 0xff, 0xff, 260100, "udot z3.s, z5.b, z6.b"},
    {0x448600a3, VecS32DotVVVX, 32, 8, 0x7fffffff, 0xff, 0xff, 0x80000003, "sdot: wraps at 32 bits"},
    {0x448604a3, VecU32DotVVVX, 32, 8, 0xffffffff, 1, 1, 3, "udot: wraps at 32 bits"},
    {0x44c600a3, VecS64DotVVVX, 64, 16, 0, 0x8000, 0x8000, 0x100000000, "sdot z3.d, z5.h, z6.h"},
    {0x44c604a3, VecU64DotVVVX, 64, 16, 0, 0xffff, 0xffff, 0x3fff80004, "udot z3.d, z5.h, z6.h"},
    {0x44c600a3, VecS64DotVVVX, 64, 16, 1ull << 63, 0xffff, 1, 0x7ffffffffffffffc, "sdot: wraps at 64"},
    {0x44830063, VecS32DotVVVX, 32, 8, 0x02020202, 2, 2, 0x02020212, "sdot z3.s, z3.b, z3.b"},
    {0x04a6a0a3, VecU32LEA1VV, 32, 32, 0, 0x10000000, 0xffffffff, 0x0fffffff, "adr z3.s, [z5.s, z6.s]"},
    {0x04a6a4a3, VecU32LEA2VV, 32, 32, 0, 0x10000000, 0xffffffff, 0x0ffffffe, "adr z3.s, [z5.s, z6.s, lsl #1]"},
    {0x04a6a8a3, VecU32LEA4VV, 32, 32, 0, 0x10000000, 0xffffffff, 0x0ffffffc, "adr z3.s, [z5.s, z6.s, lsl #2]"},
    {0x04a6aca3, VecU32LEA8VV, 32, 32, 0, 0x10000000, 0x20000001, 0x10000008, "adr z3.s, [z5.s, z6.s, lsl #3]"},
    {0x04e6a0a3, VecU64LEA1VV, 64, 64, 0, 0x1000, ~0ull, 0xfff, "adr z3.d, [z5.d, z6.d]"},
    {0x04e6a4a3, VecU64LEA2VV, 64, 64, 0, 0x1000, 0x8000000000000001, 0x1002, "adr z3.d, [z5.d, z6.d, lsl #1]"},
    {0x04e6a8a3, VecU64LEA4VV, 64, 64, 0, 0x1000, 1, 0x1004, "adr z3.d, [z5.d, z6.d, lsl #2]"},
    {0x04e6aca3, VecU64LEA8VV, 64, 64, 0, 0x1000, 1, 0x1008, "adr z3.d, [z5.d, z6.d, lsl #3]"},
    {0x04e5a4a5, VecU64LEA2VV, 64, 64, 0, 0x1111, 0x1111, 0x3333, "adr z5.d, [z5.d, z5.d, lsl #1]"},
    {0x0426a0a3, VecU64LEA1XVV, 64, 64, 0, 0x1000, LOW_ONES, 0xfff, "adr z3.d, [z5.d, z6.d, sxtw]"},
    {0x0426a4a3, VecU64LEA2XVV, 64, 64, 0, 0x1000, LOW_ONES, 0xffe, "adr z3.d, [z5.d, z6.d, sxtw #1]"},
    {0x0426a8a3, VecU64LEA4XVV, 64, 64, 0, 0x1000, LOW_ONES, 0xffc, "adr z3.d, [z5.d, z6.d, sxtw #2]"},
    {0x0426aca3, VecU64LEA8XVV, 64, 64, 0, 0x1000, LOW_ONES, 0xff8, "adr z3.d, [z5.d, z6.d, sxtw #3]"},
    {0x0426aca3, VecU64LEA8XVV, 64, 64, 0, 0x1000, 0xffffffff7fffffff, 0x400000ff8, "sxtw #3 of 2^31 - 1"},
    {0x0466a0a3, VecU64LEA1YVV, 64, 64, 0, 0x1000, LOW_ONES, 0x100000fff, "adr z3.d, [z5.d, z6.d, uxtw]"},
    {0x0466a4a3, VecU64LEA2YVV, 64, 64, 0, 0x1000, LOW_ONES, 0x200000ffe, "adr z3.d, [z5.d, z6.d, uxtw #1]"},
    {0x0466a8a3, VecU64LEA4YVV, 64, 64, 0, 0x1000, LOW_ONES, 0x400000ffc, "adr z3.d, [z5.d, z6.d, uxtw #2]"},
    {0x0466aca3, VecU64LEA8YVV, 64, 64, 0, 0x1000, LOW_ONES, 0x800000ff8, "adr z3.d, [z5.d, z6.d, uxtw #3]"},
    {0x0466aca3, VecU64LEA8YVV, 64, 64, 0, ~0ull << 4, 0xffffffff00000002, 0, "uxtw #3: the sum wraps"},
};

TEST(DotAdr, EveryElementAlike) {
    for (const Uniform& u : uniform) {
        Machine m;
        noise(m);
        m.fill_z(F_d(u.word), u.N, u.d);
        m.fill_z(F_n(u.word), u.src, u.n);
        m.fill_z(F_m(u.word), u.src, u.m);
        run(m, u.h, u.word);
        for (unsigned e = 0; e < 512 / u.N; ++e) ASSERT_EQ(m.z(F_d(u.word), e, u.N), u.want) << u.text << " " << e;
    }
}

// Zn all 1 (-1 for sdot), Zm element j = j, accumulators 0x100: accumulator
// e adds (or subtracts) the group of four Zm elements it pairs with, whose
// sum is 16g + 6 for group g. The vector form pairs e with group e, the
// indexed form with group `index` of the 128-bit segment that holds e.
struct Group {
    uint32_t word;
    sve_handler h;
    unsigned N, zm;
    int index;  // -1: vector form
    const char* text;
};
const Group groups[] = {
    {0x448600a3, VecS32DotVVVX, 32, 6, -1, "sdot z3.s, z5.b, z6.b"},
    {0x44c604a3, VecU64DotVVVX, 64, 6, -1, "udot z3.d, z5.h, z6.h"},
    {0x44a700a3, VecS32DotVVVIX, 32, 7, 0, "sdot z3.s, z5.b, z7.b[0]"},
    {0x44af00a3, VecS32DotVVVIX, 32, 7, 1, "sdot z3.s, z5.b, z7.b[1]"},
    {0x44b700a3, VecS32DotVVVIX, 32, 7, 2, "sdot z3.s, z5.b, z7.b[2]"},
    {0x44bf00a3, VecS32DotVVVIX, 32, 7, 3, "sdot z3.s, z5.b, z7.b[3]"},
    {0x44a704a3, VecU32DotVVVIX, 32, 7, 0, "udot z3.s, z5.b, z7.b[0]"},
    {0x44af04a3, VecU32DotVVVIX, 32, 7, 1, "udot z3.s, z5.b, z7.b[1]"},
    {0x44b704a3, VecU32DotVVVIX, 32, 7, 2, "udot z3.s, z5.b, z7.b[2]"},
    {0x44bf04a3, VecU32DotVVVIX, 32, 7, 3, "udot z3.s, z5.b, z7.b[3]"},
    {0x44ef00a3, VecS64DotVVVIX, 64, 15, 0, "sdot z3.d, z5.h, z15.h[0]"},
    {0x44ff00a3, VecS64DotVVVIX, 64, 15, 1, "sdot z3.d, z5.h, z15.h[1]"},
    {0x44ef04a3, VecU64DotVVVIX, 64, 15, 0, "udot z3.d, z5.h, z15.h[0]"},
    {0x44ff04a3, VecU64DotVVVIX, 64, 15, 1, "udot z3.d, z5.h, z15.h[1]"},
};

TEST(DotAdr, EachAccumulatorTakesItsGroup) {
    for (const Group& g : groups) {
        Machine m;
        noise(m);
        const unsigned M = g.N / 4;
        const bool is_signed = g.text[0] == 's';
        m.fill_z(3, g.N, 0x100);
        m.fill_z(5, M, is_signed ? ones_of(M) : 1);
        for (unsigned j = 0; j < 512 / M; ++j) m.set_z(g.zm, j, M, j);
        run(m, g.h, g.word);
        for (unsigned e = 0; e < 512 / g.N; ++e) {
            uint64_t group = g.index < 0 ? e : e - e % (128 / g.N) + g.index, sum = 16 * group + 6;
            ASSERT_EQ(m.z(3, e, g.N), (is_signed ? 0x100 - sum : 0x100 + sum) & ones_of(g.N)) << g.text << " " << e;
        }
    }
}

}  // namespace
