// WHILE and CTERM: the W forms read only the low 32 bits of each operand
// (every row's upper halves would change the answer), results are written
// clean over a junk-filled p1, and reference routes lose nzcv bits 63..32.
// Every WHILE word writes p1 from x2 (op1) and x3 (op2).
#include "pred_test.h"

#define WHILE_HANDLERS(X)                                                                            \
    X(VecS16While4LTSS) X(VecS32While4LTSS) X(VecU16While4LTSS) X(VecU64While8LTSS) X(VecU32While4LESS) \
    X(VecS8While4LESS) X(VecS16While4LESS)
WHILE_HANDLERS(PT_DECLARE)

using namespace pt;

namespace {

TEST(PredWhile, UpperHalvesIgnoredAndCleanWrites) {
    const struct {
        const char* name;
        Handler handler;
        unsigned word;
        unsigned size;
        uint64_t x2, x3;
        unsigned count;  // true elements from element 0
        unsigned flags;
        bool reference_route;
    } cases[] = {
        {"whilelt .h w", VecS16While4LTSS, 0x25630441, 1, 0x1fffffffdull, 0xffffffff00000002ull, 5, F(1, 0, 1), false},
        {"whilelt .s w", VecS32While4LTSS, 0x25a30441, 2, 0xffffffff00000000ull, 0x100000004ull, 4, F(1, 0, 1), false},
        {"whilelo .h w", VecU16While4LTSS, 0x25630c41, 1, 0xffffffff00000000ull, 5, 5, F(1, 0, 1), false},
        {"whilels .s w", VecU32While4LESS, 0x25a30c51, 2, 0xabcd0000fffffffeull, 0xffffffff, 16, F(1, 0, 0), false},
        {"whilele .b w", VecS8While4LESS, 0x25230451, 0, 0x7ffffff0, 0xaaaaaaaa7fffffffull, 64, F(1, 0, 0), true},
        {"whilele .h w", VecS16While4LESS, 0x25630451, 1, 0x1234567800000002ull, 3, 2, F(1, 0, 1), true},
        {"whilelo .d x", VecU64While8LTSS, 0x25e31c41, 3, 0, 5, 5, F(1, 0, 1), false},
    };
    for (auto& c : cases) {
        auto s = make_state();
        s->x[2] = c.x2;
        s->x[3] = c.x3;
        std::memset(s->p[1], 0xff, 64);
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.flags);
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        expect_clean_elems(s->p[1], c.size, first_n(c.count), c.name);
        EXPECT_EQ(flags(s.get()), c.flags) << c.name;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, c.reference_route ? kNzcvJunk & 0x0fffffffu : kNzcvJunk) << c.name;
    }
}

// CTERMEQ / CTERMNE x1|w1, x2|w2, with C=0 and Z=1 coming in: N=1, V=0 on
// termination, else N=0, V=1.
TEST(PredCterm, UpperHalvesIgnoredByWForms) {
    const uint64_t a = 0x0000000100000005ull, b = 0x0000000200000005ull;
    const struct {
        const char* name;
        Handler handler;
        unsigned word;
        bool terminates;
    } cases[] = {
        {"ctermeq w", VecU32CTermEQ, 0x25a22020, true},
        {"ctermne w", VecU32CTermNE, 0x25a22030, false},
        {"ctermeq x", VecU64CTermEQ, 0x25e22020, false},
        {"ctermne x", VecU64CTermNE, 0x25e22030, true},
    };
    for (auto& c : cases) {
        auto s = make_state();
        s->x[1] = a;
        s->x[2] = b;
        s->nzcv = nzcv_with(F(!c.terminates, 1, 0, c.terminates));
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        EXPECT_EQ(flags(s.get()), F(c.terminates, 1, 0, !c.terminates)) << c.name;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk & 0x0fffffffu) << c.name;
    }
}

}  // namespace
