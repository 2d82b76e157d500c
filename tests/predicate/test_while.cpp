// WHILE and CTERM. Every WHILE word writes p1 from x2 (op1) and x3 (op2);
// the flags are PredTest with an all-true mask: N = element 0, Z = nothing
// set, C = NOT the last element.
#include "pred_test.h"

#define WHILE_HANDLERS(X)                                                                                    \
    X(VecS8While8LTSS) X(VecS8While4LTSS) X(VecS16While4LTSS) X(VecS32While4LTSS) X(VecS64While8LTSS)      \
    X(VecU8While8LTSS) X(VecU8While4LTSS) X(VecU16While4LTSS) X(VecU32While4LTSS) X(VecU64While8LTSS)      \
    X(VecU8While8LESS) X(VecU16While4LESS) X(VecU16While8LESS) X(VecU32While4LESS) X(VecU64While8LESS)     \
    X(VecS8While4LESS) X(VecS16While4LESS) X(VecS16While8LESS) X(VecS32While4LESS) X(VecS64While8LESS)
WHILE_HANDLERS(PT_DECLARE)

using namespace pt;

namespace {

struct WhileCase {
    const char* name;
    Handler handler;
    unsigned word;
    unsigned size;
    uint64_t x2, x3;
    unsigned count;  // true elements from element 0
    unsigned flags;
    bool reference_route = false;
};

constexpr uint64_t kMax64 = INT64_MAX, kMin64 = uint64_t(INT64_MIN);

const WhileCase kCases[] = {
    {"whilelt .b x: equal operands", VecS8While8LTSS, 0x25231441, 0, 5, 5, 0, F(0, 1, 1)},
    {"whilelt .b x: op1 above op2", VecS8While8LTSS, 0x25231441, 0, 10, 3, 0, F(0, 1, 1)},
    {"whilelt .b x: -3 to 2", VecS8While8LTSS, 0x25231441, 0, uint64_t(-3), 2, 5, F(1, 0, 1)},
    {"whilelt .b x: top of the signed range", VecS8While8LTSS, 0x25231441, 0, kMax64 - 2, kMax64, 2, F(1, 0, 1)},
    {"whilelt .b x: from the bottom", VecS8While8LTSS, 0x25231441, 0, kMin64, kMax64, 64, F(1, 0, 0)},
    {"whilelt .d x: far limit", VecS64While8LTSS, 0x25e31441, 3, 0, 100, 8, F(1, 0, 0)},
    // W forms: only the low 32 bits; the upper halves would change the answer.
    {"whilelt .s w: 0 to 4 under junk", VecS32While4LTSS, 0x25a30441, 2, 0xffffffff00000000ull, 0x0000000100000004ull,
     4, F(1, 0, 1)},
    {"whilelt .b w: top of the 32-bit range", VecS8While4LTSS, 0x25230441, 0, 0x7ffffffd, 0x123456787fffffffull, 2,
     F(1, 0, 1)},
    {"whilelt .h w: -3 to 2 under junk", VecS16While4LTSS, 0x25630441, 1, 0x1fffffffdull, 0xffffffff00000002ull, 5,
     F(1, 0, 1)},
    {"whilelo .s w: 0 to 3", VecU32While4LTSS, 0x25a30c41, 2, 0, 3, 3, F(1, 0, 1)},
    {"whilelo .d x: exactly n", VecU64While8LTSS, 0x25e31c41, 3, 0, 8, 8, F(1, 0, 0)},
    {"whilelo .b x: top of the unsigned range", VecU8While8LTSS, 0x25231c41, 0, ~0ull - 15, ~0ull, 15, F(1, 0, 1)},
    {"whilelo .b x: both at the top", VecU8While8LTSS, 0x25231c41, 0, ~0ull, ~0ull, 0, F(0, 1, 1)},
    {"whilelo .h w: 0 to 5 under junk", VecU16While4LTSS, 0x25630c41, 1, 0xffffffff00000000ull, 5, 5, F(1, 0, 1)},
    {"whilels .b x: op2 the largest value wraps and stays true", VecU8While8LESS, 0x25231c51, 0, ~0ull - 1, ~0ull,
     64, F(1, 0, 0)},
    {"whilels .s w: 0xfffffffe to 0xffffffff", VecU32While4LESS, 0x25a30c51, 2, 0xabcd0000fffffffeull, 0xffffffff, 16,
     F(1, 0, 0)},
    {"whilels .s w: 0 to 0xffffffff under junk", VecU32While4LESS, 0x25a30c51, 2, 0, 0x1ffffffffull, 16, F(1, 0, 0)},
    {"whilels .h w: op1 above op2", VecU16While4LESS, 0x25630c51, 1, 3, 2, 0, F(0, 1, 1)},
    {"whilels .h x: 0 to 0", VecU16While8LESS, 0x25631c51, 1, 0, 0, 1, F(1, 0, 1)},
    {"whilels .d x: 5 to 9", VecU64While8LESS, 0x25e31c51, 3, 5, 9, 5, F(1, 0, 1)},
    // whilele, reference route.
    {"whilele .d x: op2 the largest", VecS64While8LESS, 0x25e31451, 3, 5, kMax64, 8, F(1, 0, 0), true},
    {"whilele .d x: both the largest", VecS64While8LESS, 0x25e31451, 3, kMax64, kMax64, 8, F(1, 0, 0), true},
    {"whilele .b w: below the largest", VecS8While4LESS, 0x25230451, 0, 0x7ffffff0, 0x7ffffffe, 15, F(1, 0, 1), true},
    {"whilele .b w: the largest under junk", VecS8While4LESS, 0x25230451, 0, 0x7ffffff0, 0xaaaaaaaa7fffffffull, 64,
     F(1, 0, 0), true},
    {"whilele .s w: -1 to -1", VecS32While4LESS, 0x25a30451, 2, 0xffffffff, 0xffffffff, 1, F(1, 0, 1), true},
    {"whilele .s w: from the smallest", VecS32While4LESS, 0x25a30451, 2, 0x80000000, 0x80000003, 4, F(1, 0, 1), true},
    {"whilele .h x: op1 above op2", VecS16While8LESS, 0x25631451, 1, 5, 4, 0, F(0, 1, 1), true},
    {"whilele .h x: from the smallest", VecS16While8LESS, 0x25631451, 1, kMin64, kMin64 + 40, 32, F(1, 0, 0), true},
    {"whilele .h w: 2 to 3 under junk", VecS16While4LESS, 0x25630451, 1, 0x1234567800000002ull, 3, 2, F(1, 0, 1),
     true},
};

uint64_t first_n(unsigned n) { return n >= 64 ? ~0ull : (1ull << n) - 1; }

TEST(PredWhile, Table) {
    for (const WhileCase& c : kCases) {
        auto s = make_state();
        s->x[2] = c.x2;
        s->x[3] = c.x3;
        std::memset(s->p[1], 0xff, 64);
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.flags);
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        expect_clean_elems(s->p[1], c.size, first_n(c.count), c.name);
        EXPECT_EQ(flags(s.get()), c.flags) << c.name;
        const uint64_t others = c.reference_route ? kNzcvJunk & 0x0fffffffu : kNzcvJunk;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, others) << c.name;
        EXPECT_EQ(s->x[2], c.x2);
        EXPECT_EQ(s->x[3], c.x3);
    }
}

// whilelo p1.b, wzr, w3: register 31 reads 0, not SP.
TEST(PredWhile, RegisterThirtyOneReadsZero) {
    auto s = make_state();
    s->x[31] = 1;
    s->x[3] = 2;
    ASSERT_EQ(VecU8While4LTSS(s.get(), 0x25230fe1), DECODE_OK);
    expect_clean_elems(s->p[1], 0, 0x3, "whilelo wzr");
}

// ---------------------------------------------------------------------------
// CTERMEQ / CTERMNE x1|w1, x2|w2. On termination N=1, V=0; otherwise N=0 and
// V = NOT C. Z and C keep their values.
struct CtermCase {
    const char* name;
    Handler handler;
    unsigned word;
    uint64_t x1, x2;
    unsigned c_in;
    unsigned n, v;
};

TEST(PredCterm, Table) {
    const uint64_t a = 0x0000000100000005ull, b = 0x0000000200000005ull;
    const CtermCase cases[] = {
        {"eq w, equal, C=0", VecU32CTermEQ, 0x25a22020, 5, 5, 0, 1, 0},
        {"eq w, equal, C=1", VecU32CTermEQ, 0x25a22020, 5, 5, 1, 1, 0},
        {"eq w, unequal, C=0", VecU32CTermEQ, 0x25a22020, 5, 6, 0, 0, 1},
        {"eq w, unequal, C=1", VecU32CTermEQ, 0x25a22020, 5, 6, 1, 0, 0},
        {"eq w, equal low halves", VecU32CTermEQ, 0x25a22020, a, b, 0, 1, 0},
        {"eq x, unequal high halves", VecU64CTermEQ, 0x25e22020, a, b, 0, 0, 1},
        {"eq x, equal", VecU64CTermEQ, 0x25e22020, b, b, 1, 1, 0},
        {"ne w, unequal", VecU32CTermNE, 0x25a22030, 5, 6, 1, 1, 0},
        {"ne w, equal, C=0", VecU32CTermNE, 0x25a22030, 5, 5, 0, 0, 1},
        {"ne w, equal, C=1", VecU32CTermNE, 0x25a22030, 5, 5, 1, 0, 0},
        {"ne w, equal low halves", VecU32CTermNE, 0x25a22030, a, b, 0, 0, 1},
        {"ne x, unequal high halves", VecU64CTermNE, 0x25e22030, a, b, 0, 1, 0},
    };
    for (const CtermCase& c : cases)
        for (unsigned z_in : {0u, 1u}) {
            auto s = make_state();
            s->x[1] = c.x1;
            s->x[2] = c.x2;
            s->nzcv = nzcv_with(F(!c.n, z_in, c.c_in, !c.v));
            ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
            EXPECT_EQ(flags(s.get()), F(c.n, z_in, c.c_in, c.v)) << c.name << " Z=" << z_in;
            EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk & 0x0fffffffu) << c.name;
        }
    // ctermeq xzr, x2: register 31 is zero.
    auto s = make_state();
    s->x[31] = 7;
    s->x[2] = 0;
    s->nzcv = nzcv_with(F(0, 0, 0, 1));
    VecU64CTermEQ(s.get(), 0x25e223e0);
    EXPECT_EQ(flags(s.get()), F(1, 0, 0, 0));
}

}  // namespace
