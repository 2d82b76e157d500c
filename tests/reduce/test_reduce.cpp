// Reductions with no active element: the identity at the element width, the
// other bytes of the register 0. Destinations that are also sources. The ADR
// kernel's width and shift, read from the stored word. The route of every
// handler of the family.
#include <cstring>
#include <regex>
#include <string>
#include <utility>

#include "reduce/red_test.h"

namespace {
using namespace redtest;

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

TEST(Reduce, NoActiveElementGivesTheIdentityAtElementWidth) {
    for (const Op& op : ops)
        for (unsigned k = 0; k < 4 && op.word[k]; ++k) {
            Machine m;
            noise(m);
            const unsigned N = 8u << k, bytes = std::strstr(op.text, "add") ? 8 : N / 8;
            for (unsigned i = 0; i < 512 / N; ++i) m.set_active(2, i, N, false);
            ASSERT_EQ(m.exec(op.word[k]), DECODE_OK);
            uint64_t got = 0;
            std::memcpy(&got, m.st->z[3], bytes);
            EXPECT_EQ(got, op.identity[k]) << op.text << " " << N;
            for (unsigned b = bytes; b < 64; ++b) ASSERT_EQ(m.st->z[3][b], 0) << op.text << " " << N << " byte " << b;
        }
}

// Each word with z5 as destination and source, against the same form with
// the sources in z6 and z7, which hold z5's bytes.
TEST(Reduce, DestinationEqualToASource) {
    const struct {
        uint32_t aliased, apart;
        const char* text;
    } cases[] = {
        {0x044b28a5, 0x044b28c5, "uminv h5, p2, z5.h"},   {0x040828a5, 0x040828c5, "smaxv b5, p2, z5.b"},
        {0x048128a5, 0x048128c5, "uaddv d5, p2, z5.s"},   {0x040028a5, 0x040028c5, "saddv d5, p2, z5.b"},
        {0x05e688a5, 0x05e688c5, "revw z5.d, p2/m, z5.d"}, {0x056788a5, 0x056788c5, "rbit z5.h, p2/m, z5.h"},
        {0x04e5a4a5, 0x04e7a4c5, "adr z5.d, [z5.d, z5.d, lsl #1]"}, {0x448500a5, 0x448700c5, "sdot z5.s, z5.b, z5.b"},
    };
    for (const auto& c : cases) {
        Machine aliased, apart;
        for (Machine* m : {&aliased, &apart}) {
            noise(*m);
            std::memcpy(m->st->z[6], m->st->z[5], 64);
            std::memcpy(m->st->z[7], m->st->z[5], 64);
        }
        run(aliased, is_sve(c.aliased), c.aliased);
        run(apart, is_sve(c.apart), c.apart);
        EXPECT_EQ(0, std::memcmp(aliased.st->z[5], apart.st->z[5], 64)) << c.text;
    }
}

// The operand records carry no shift: the kernel takes the width (bit 22) and
// the shift (bits 11..10) from cpu_state.instruction. Zn 0x1000 and Zm all
// ones give 0x1000 - (1 << shift) at either width.
TEST(Adr, KernelReadsWidthAndShiftFromTheStoredWord) {
    for (unsigned sz = 0; sz < 2; ++sz)
        for (unsigned shift = 0; shift < 4; ++shift) {
            Machine m;
            noise(m);
            const unsigned N = sz ? 64 : 32;
            m.fill_z(5, N, 0x1000);
            m.fill_z(6, N, ones_of(N));
            m.st->instruction = 0x04a6a0a3 | sz << 22 | shift << 10;  // adr z3, [z5, z6, lsl #shift]
            ASSERT_EQ(sve_adr_scaled_zzz(m.s(), {3, 3, 5, 5}, {5, 3, 5, 5}, {6, 3, 5, 5}), DECODE_OK);
            for (unsigned e = 0; e < 512 / N; ++e)
                ASSERT_EQ(m.z(3, e, N), 0x1000 - (1u << shift)) << N << " lsl " << shift << " element " << e;
        }
}

// The route of every handler, told by what only one route does: the kernel
// route stores the word in cpu_state.instruction; the reference route leaves
// it, and writes back the flags zero-extended and FFR with one bit a byte.
const std::regex kernel_route("Vec(U..?AddReduceV|...?(Max|Min|And|Or|Xor)ReduceV|U64LEA.VV|U..?RBitVM|U64Rev4V)");
const std::pair<const char*, sve_handler> handlers[] = {
#define RED_K(name, ...) {#name, name},
#define RED_R RED_K
#define DOT RED_K
#define DOTI RED_K
#define ADR_K RED_K
#define ADR_R RED_K
#define BIT_K RED_K
#define BIT_R RED_K
#include "sve/integer/reduce_forms.h"
};

TEST(Routes, EachRowTakesItsRoute) {
    unsigned kernels = 0, rows = 0;
    for (const auto& [name, h] : handlers) {
        for (size_t i = 0; i < sve_row_count; ++i) {
            if (std::string(sve_rows[i].name) != name) continue;
            const uint32_t w = sve_rows[i].bits;
            const bool kernel = std::regex_match(name, kernel_route);
            Machine m;
            m.st->instruction = 0xc0ffee;
            m.st->nzcv = 0xffffffff60000000ull;
            std::memset(m.st->ffr, 0xfe, 64);
            run(m, h, w);
            EXPECT_EQ(m.st->instruction, kernel ? w : 0xc0ffeeu) << name;
            EXPECT_EQ(m.st->nzcv, kernel ? 0xffffffff60000000ull : 0x60000000u) << name;
            EXPECT_EQ(m.st->ffr[0], kernel ? 0xfe : 0) << name;
            kernels += kernel;
            ++rows;
        }
    }
    EXPECT_EQ(rows, 81u);
    EXPECT_EQ(kernels, 41u);
}

}  // namespace
