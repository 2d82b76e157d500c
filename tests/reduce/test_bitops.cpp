// Bit operations at 0, all ones and the sign boundary of every size, merging
// of inactive elements, Zd equal to Zn; and the route of every handler of the
// family.
#include <regex>
#include <string>
#include <utility>

#include "reduce/red_test.h"

namespace {
using namespace redtest;

// Element i of Zn holds in[i % 6]; active elements take out[i % 6], the
// others (every fourth) keep the old Zd.
struct Bit {
    uint32_t word;
    sve_handler h;
    unsigned N;
    uint64_t in[6], out[6];
    const char* text;
};
#define SIGN_EDGES(N) {0, ones_of(N), smin_of(N), smax_of(N), 1, ones_of(N) << (N - 2) & ones_of(N)}
const Bit bits_cases[] = {
    {0x041aa8a3, VecU8CntVM, 8, SIGN_EDGES(8), {0, 8, 1, 7, 1, 2}, "cnt z3.b, p2/m, z5.b"},
    {0x045aa8a3, VecU16CntVM, 16, SIGN_EDGES(16), {0, 16, 1, 15, 1, 2}, "cnt z3.h, p2/m, z5.h"},
    {0x049aa8a3, VecU32CntVM, 32, SIGN_EDGES(32), {0, 32, 1, 31, 1, 2}, "cnt z3.s, p2/m, z5.s"},
    {0x04daa8a3, VecU64CntVM, 64, SIGN_EDGES(64), {0, 64, 1, 63, 1, 2}, "cnt z3.d, p2/m, z5.d"},
    {0x0418a8a3, VecU8ClsVM, 8, SIGN_EDGES(8), {7, 7, 0, 0, 6, 1}, "cls z3.b, p2/m, z5.b"},
    {0x0458a8a3, VecU16ClsVM, 16, SIGN_EDGES(16), {15, 15, 0, 0, 14, 1}, "cls z3.h, p2/m, z5.h"},
    {0x0498a8a3, VecU32ClsVM, 32, SIGN_EDGES(32), {31, 31, 0, 0, 30, 1}, "cls z3.s, p2/m, z5.s"},
    {0x04d8a8a3, VecU64ClsVM, 64, SIGN_EDGES(64), {63, 63, 0, 0, 62, 1}, "cls z3.d, p2/m, z5.d"},
    {0x0419a8a3, VecU8ClzVM, 8, SIGN_EDGES(8), {8, 0, 0, 1, 7, 0}, "clz z3.b, p2/m, z5.b"},
    {0x0459a8a3, VecU16ClzVM, 16, SIGN_EDGES(16), {16, 0, 0, 1, 15, 0}, "clz z3.h, p2/m, z5.h"},
    {0x0499a8a3, VecU32ClzVM, 32, SIGN_EDGES(32), {32, 0, 0, 1, 31, 0}, "clz z3.s, p2/m, z5.s"},
    {0x04d9a8a3, VecU64ClzVM, 64, SIGN_EDGES(64), {64, 0, 0, 1, 63, 0}, "clz z3.d, p2/m, z5.d"},
    {0x0459bca5, VecU16ClzVM, 16, SIGN_EDGES(16), {16, 0, 0, 1, 15, 0}, "clz z5.h, p7/m, z5.h"},
    // rbit and the revs on three values; the other three elements of each six hold 0
    {0x052788a3, VecU8RBitVM, 8, {0x01, 0x0f, 0xb4}, {0x80, 0xf0, 0x2d}, "rbit z3.b, p2/m, z5.b"},
    {0x056788a3, VecU16RBitVM, 16, {0x0001, 0x1234, 0x00ff}, {0x8000, 0x2c48, 0xff00}, "rbit z3.h, p2/m, z5.h"},
    {0x05a788a3, VecU32RBitVM, 32, {1, 0x12345678, 0xffff}, {1u << 31, 0x1e6a2c48, 0xffff0000}, "rbit z3.s, p2/m, z5.s"},
    {0x05e788a3, VecU64RBitVM, 64, {1, 0x0123456789abcdef, 0xffffffff}, {1ull << 63, 0xf7b3d591e6a2c480, ~0ull << 32},
     "rbit z3.d, p2/m, z5.d"},
    {0x056488a3, VecU16Rev1V, 16, {0x0102, 0x8001, 0x1234}, {0x0201, 0x0180, 0x3412}, "revb z3.h, p2/m, z5.h"},
    {0x05a488a3, VecU32Rev1V, 32, {0x01020304, 0x80000001, 0xff}, {0x04030201, 0x01000080, 0xff000000},
     "revb z3.s, p2/m, z5.s"},
    {0x05e488a3, VecU64Rev1V, 64, {0x0102030405060708, 1, 0xff}, {0x0807060504030201, 1ull << 56, 0xffull << 56},
     "revb z3.d, p2/m, z5.d"},
    {0x05a588a3, VecU32Rev2V, 32, {0x11112222, 0x0102ffff, 0x8000}, {0x22221111, 0xffff0102, 0x80000000},
     "revh z3.s, p2/m, z5.s"},
    {0x05e588a3, VecU64Rev2V, 64, {0x0102030405060708, 0xffff, 1ull << 63}, {0x0708050603040102, 0xffffull << 48, 0x8000},
     "revh z3.d, p2/m, z5.d"},
    {0x05e688a3, VecU64Rev4V, 64, {0x0102030405060708, 0xffffffff, 1}, {0x0506070801020304, ~0ull << 32, 1ull << 32},
     "revw z3.d, p2/m, z5.d"},
    {0x05e688a5, VecU64Rev4V, 64, {0x0102030405060708, 0xffffffff, 1}, {0x0506070801020304, ~0ull << 32, 1ull << 32},
     "revw z5.d, p2/m, z5.d"},
};

TEST(BitOps, EdgesAndMerging) {
    for (const Bit& b : bits_cases) {
        Machine m;
        noise(m);
        const unsigned n = 512 / b.N, d = F_d(b.word);
        for (unsigned i = 0; i < n; ++i) {
            m.set_z(F_n(b.word), i, b.N, b.in[i % 6]);
            m.set_active(F_pg(b.word), i, b.N, i % 4 != 3);
        }
        Machine old;
        std::memcpy(old.st->z, m.st->z, sizeof m.st->z);
        run(m, b.h, b.word);
        for (unsigned i = 0; i < n; ++i) {
            uint64_t want = i % 4 != 3 ? b.out[i % 6] : old.z(d, i, b.N);
            ASSERT_EQ(m.z(d, i, b.N), want) << b.text << " element " << i;
        }
    }
}

// The route of every handler, told by what only one route does: the kernel
// route stores the word in cpu_state.instruction; the reference route leaves
// it, and writes back the flags zero-extended and FFR with one bit a byte.
const std::regex kernel_route(
    "Vec(U..?AddReduceV|...?(Max|Min|And|Or|Xor)ReduceV|U64LEA.VV|U..?RBitVM|U64Rev4V)");
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
