// Saturation at both ends of every width, the 32-bit scalar forms' extension,
// predicate counts, cntp, rdvl, addvl and addpl with SP, register 31, and the
// route of every form of the family.
#include <vector>

#include "shift/test_machine.h"
#include "sve/integer/satcount.h"

namespace {

// sqadd, uqadd, sqsub, uqsub z2, z5, z6 at N bits, written with the element's
// limits so that one table serves every width.
struct VVRow {
    uint64_t a, b, sqadd, uqadd, sqsub, uqsub;
};
std::vector<VVRow> vv_rows(unsigned N) {
    const uint64_t max = smax_of(N), min = smin_of(N), ones = ones_of(N);
    return {
        {max, 1, max, min, max - 1, max - 1},
        {min, ones, min, ones, min + 1, 0},       // min + -1; 2^(N-1) + all ones
        {min, 1, min + 1, min + 1, min, max},     // min - 1 stays min
        {ones, ones, ones - 1, ones, 0, 0},       // -1 + -1 = -2
        {3, 5, 8, 8, ones - 1, 0},                // 3 - 5: -2, or 0 unsigned
        {max, min, ones, ones, max, 0},           // max - min saturates to max
        {0, min, min, min, max, 0},               // 0 - min = 2^(N-1) saturates
        {0, 0, 0, 0, 0, 0},
    };
}
struct VVWords {
    unsigned N;
    uint32_t words[4];
};
const VVWords vv_words[] = {
    {8, {0x042610a2, 0x042614a2, 0x042618a2, 0x04261ca2}},   // sqadd, uqadd, sqsub, uqsub z2.b, z5.b, z6.b
    {16, {0x046610a2, 0x046614a2, 0x046618a2, 0x04661ca2}},
    {32, {0x04a610a2, 0x04a614a2, 0x04a618a2, 0x04a61ca2}},
    {64, {0x04e610a2, 0x04e614a2, 0x04e618a2, 0x04e61ca2}},
};

TEST(Saturation, VectorsAtBothEndsOfEveryWidth) {
    for (const VVWords& w : vv_words) {
        const std::vector<VVRow> rows = vv_rows(w.N);
        for (int op = 0; op < 4; ++op) {
            Machine m;
            for (unsigned i = 0; i < 512 / w.N; ++i) {
                m.set_z(5, i, w.N, rows[i % rows.size()].a);
                m.set_z(6, i, w.N, rows[i % rows.size()].b);
            }
            ASSERT_EQ(m.exec(w.words[op]), DECODE_OK);
            for (unsigned i = 0; i < 512 / w.N; ++i) {
                const VVRow& r = rows[i % rows.size()];
                const uint64_t want[] = {r.sqadd, r.uqadd, r.sqsub, r.uqsub};
                EXPECT_EQ(m.z(2, i, w.N), want[op]) << std::hex << w.words[op] << " a " << r.a << " b " << r.b;
            }
        }
    }
}

// The immediate is unsigned, also for the signed instructions.
struct ImmRow {
    unsigned N;
    uint64_t a;
    uint32_t words[4];  // sqadd, uqadd, sqsub, uqsub z2, z2, #imm
    uint64_t want[4];
};
const ImmRow imm_rows[] = {
    {8, 0x9C, {0x2524d902, 0x2525d902, 0x2526d902, 0x2527d902}, {0x64, 0xFF, 0x80, 0x00}},  // #200, a = -100
    {8, 0x7F, {0x2524c022, 0x2525c022, 0x2526c022, 0x2527c022}, {0x7F, 0x80, 0x7E, 0x7E}},  // #1
    {8, 0x80, {0x2524dfe2, 0x2525dfe2, 0x2526dfe2, 0x2527dfe2}, {0x7F, 0xFF, 0x80, 0x00}},  // #255
    {8, 0xFF, {0x2524c022, 0x2525c022, 0x2526c022, 0x2527c022}, {0x00, 0xFF, 0xFE, 0xFE}},  // #1
    {8, 0x00, {0x2524c002, 0x2525c002, 0x2526c002, 0x2527c002}, {0x00, 0x00, 0x00, 0x00}},  // #0
    {16, 0x8000, {0x2564ffe2, 0x2565ffe2, 0x2566ffe2, 0x2567ffe2}, {0x7F00, 0xFFFF, 0x8000, 0x0000}},  // #255, lsl #8
    {16, 0x7FFF, {0x2564c022, 0x2565c022, 0x2566c022, 0x2567c022}, {0x7FFF, 0x8000, 0x7FFE, 0x7FFE}},  // #1
    {16, 0x0100, {0x2564e022, 0x2565e022, 0x2566e022, 0x2567e022}, {0x0200, 0x0200, 0x0000, 0x0000}},  // #1, lsl #8
    {16, 0xFFFF, {0x2564dfe2, 0x2565dfe2, 0x2566dfe2, 0x2567dfe2}, {0x00FE, 0xFFFF, 0xFF00, 0xFF00}},  // #255
    {32, 0x80000000, {0x25a4ffe2, 0x25a5ffe2, 0x25a6ffe2, 0x25a7ffe2}, {0x8000FF00, 0x8000FF00, 0x80000000, 0x7FFF0100}},
    {32, 0x7FFFFF00, {0x25a4ffe2, 0x25a5ffe2, 0x25a6ffe2, 0x25a7ffe2}, {0x7FFFFFFF, 0x8000FE00, 0x7FFF0000, 0x7FFF0000}},
    {32, 0x00000000, {0x25a4c022, 0x25a5c022, 0x25a6c022, 0x25a7c022}, {0x00000001, 0x00000001, 0xFFFFFFFF, 0x00000000}},
    {64, 0x7FFFFFFFFFFFFF00, {0x25e4ffe2, 0x25e5ffe2, 0x25e6ffe2, 0x25e7ffe2},
     {0x7FFFFFFFFFFFFFFF, 0x800000000000FE00, 0x7FFFFFFFFFFF0000, 0x7FFFFFFFFFFF0000}},
    {64, 0x8000000000000000, {0x25e4c022, 0x25e5c022, 0x25e6c022, 0x25e7c022},
     {0x8000000000000001, 0x8000000000000001, 0x8000000000000000, 0x7FFFFFFFFFFFFFFF}},
    {64, 0xFFFFFFFFFFFFFF00, {0x25e4ffe2, 0x25e5ffe2, 0x25e6ffe2, 0x25e7ffe2},
     {0x000000000000FE00, 0xFFFFFFFFFFFFFFFF, 0xFFFFFFFFFFFF0000, 0xFFFFFFFFFFFF0000}},
};

TEST(Saturation, UnsignedImmediateAtBothEnds) {
    for (const ImmRow& r : imm_rows)
        for (int op = 0; op < 4; ++op) {
            Machine m;
            m.fill_z(2, r.N, r.a);
            ASSERT_EQ(m.exec(r.words[op]), DECODE_OK);
            for (unsigned i = 0; i < 512 / r.N; ++i)
                ASSERT_EQ(m.z(2, i, r.N), r.want[op]) << std::hex << r.words[op] << " a " << r.a;
        }
}

// Scalar forms with a pattern: register x3 before and after.
struct ScalarCase {
    uint32_t word;
    uint64_t before, after;
};
const ScalarCase scalar_cases[] = {
    {0x0420f3e3, 0xFFFFFFFF7FFFFFFF, 0x000000007FFFFFFF},  // sqincb x3, w3: saturates, sign-extended
    {0x0420f1c3, 0x0000000080000000, 0xFFFFFFFF80000000},  // sqincb x3, w3, #14: count 0, still extended
    {0x0420fbe3, 0x0000000080000005, 0xFFFFFFFF80000000},  // sqdecb x3, w3
    {0x04a0f883, 0x0000000000000001, 0xFFFFFFFFFFFFFFFD},  // sqdecw x3, w3, vl4
    {0x04a0f083, 0x12345678FFFFFFFE, 0x0000000000000002},  // sqincw x3, w3, vl4
    {0x0420f7e3, 0xFFFFFFFFFFFFFFF0, 0x00000000FFFFFFFF},  // uqincb w3: zero-extended
    {0x0420f7e3, 0x00000000FFFFFFBF, 0x00000000FFFFFFFF},  // uqincb w3: exactly the limit
    {0x0420ffe3, 0xFFFFFFFF00000010, 0},                   // uqdecb w3: only the low word counts
    {0x0420ffe3, 0x1234567800000100, 0x00000000000000C0},  // uqdecb w3
    {0x0420ffe3, 0x0000000000000040, 0},                   // uqdecb w3: value equal to the count
    {0x0430ffe3, 0x0000000000000040, 0},                   // uqdecb x3
    {0x0430ffe3, 0x1234567800000100, 0x12345678000000C0},  // uqdecb x3
    {0x0460ffe3, 0x0000000000000010, 0},                   // uqdech w3
    {0x04fff3e3, 0x7FFFFFFFFFFFFF80, 0x7FFFFFFFFFFFFFFF},  // sqincd x3, all, mul #16
    {0x04fff3e3, 0x7FFFFFFFFFFFFF7F, 0x7FFFFFFFFFFFFFFF},  // sqincd x3, all, mul #16: exactly
    {0x04fffbe3, 0x8000000000000010, 0x8000000000000000},  // sqdecd x3, all, mul #16
    {0x04fff7e3, 0xFFFFFFFFFFFFFF90, 0xFFFFFFFFFFFFFFFF},  // uqincd x3, all, mul #16
    {0x04ffffe3, 100, 0},                                  // uqdecd x3, all, mul #16
    {0x0430f3e3, 0x7FFFFFFFFFFFFFF0, 0x7FFFFFFFFFFFFFFF},  // sqincb x3
    {0x0430fbe3, 0x8000000000000000, 0x8000000000000000},  // sqdecb x3
    {0x0430fbe3, 0x0000000000000000, 0xFFFFFFFFFFFFFFC0},  // sqdecb x3
    {0x0430f7e3, 0xFFFFFFFFFFFFFFC0, 0xFFFFFFFFFFFFFFFF},  // uqincb x3
    {0x0430f7e3, 0xFFFFFFFFFFFFFFBF, 0xFFFFFFFFFFFFFFFF},  // uqincb x3
};

TEST(Saturation, ScalarFormsWithPatternAndTheWFormsExtension) {
    for (const ScalarCase& c : scalar_cases) {
        Machine m;
        m.s()->x[3] = c.before;
        ASSERT_EQ(m.exec(c.word), DECODE_OK);
        EXPECT_EQ(m.s()->x[3], c.after) << std::hex << c.word << " from " << c.before;
    }
}

// Vector forms with a pattern: element i starts at a[i % 3].
struct VectorCase {
    uint32_t word;
    unsigned N;
    uint64_t a[3], want[3];
};
const VectorCase vector_cases[] = {
    {0x046fc3e3, 16, {0x7F00, 0x8000, 0x7DFF}, {0x7FFF, 0x8200, 0x7FFF}},  // sqinch z3.h, all, mul #16
    {0x046fc7e3, 16, {0xFF00, 0x0010, 0xFDFF}, {0xFFFF, 0x0210, 0xFFFF}},  // uqinch z3.h, all, mul #16
    {0x046fcbe3, 16, {0x8100, 0x0000, 0x8200}, {0x8000, 0xFE00, 0x8000}},  // sqdech z3.h, all, mul #16
    {0x046fcfe3, 16, {0x0100, 0x0200, 0x1000}, {0, 0, 0x0E00}},            // uqdech z3.h, all, mul #16
    {0x04afc3e3, 32, {0x7FFFFF00, 0x7FFFFF01, 0xFFFFFFFF}, {0x7FFFFFFF, 0x7FFFFFFF, 0xFF}},  // sqincw z3.s
    {0x04afcfe3, 32, {0xFF, 0x100, 0x101}, {0, 0, 1}},                                     // uqdecw z3.s
    {0x04efcbe3, 64, {0x8000000000000001, 0, 0x800000000000007F},
     {0x8000000000000000, 0xFFFFFFFFFFFFFF80, 0x8000000000000000}},                        // sqdecd z3.d
    {0x04efc7e3, 64, {0xFFFFFFFFFFFFFFFA, 0, 0xFFFFFFFFFFFFFF7F},
     {0xFFFFFFFFFFFFFFFF, 128, 0xFFFFFFFFFFFFFFFF}},                                       // uqincd z3.d
};

TEST(Saturation, VectorFormsWithPattern) {
    for (const VectorCase& c : vector_cases) {
        Machine m;
        for (unsigned i = 0; i < 512 / c.N; ++i) m.set_z(3, i, c.N, c.a[i % 3]);
        ASSERT_EQ(m.exec(c.word), DECODE_OK);
        for (unsigned i = 0; i < 512 / c.N; ++i)
            ASSERT_EQ(m.z(3, i, c.N), c.want[i % 3]) << std::hex << c.word << " element " << std::dec << i;
    }
}

// p4 is active at bytes 0, 1, 2, 4, 8 and 63, with 0xFE (bit 0 clear) at byte
// 5: 6 elements at .b, 4 at .h (bytes 0, 2, 4, 8), 3 at .s, 2 at .d.
void predicate_p4(Machine& m) {
    for (unsigned k : {0, 1, 2, 4, 8, 63}) m.s()->p[4][k] = 1;
    m.s()->p[4][5] = 0xFE;
}

const ScalarCase pred_scalar_cases[] = {
    {0x252c8883, 10, 16},                                  // incp x3, p4.b
    {0x256c8883, 10, 14},                                  // incp x3, p4.h
    {0x25ac8883, 10, 13},                                  // incp x3, p4.s
    {0x25ec8883, 10, 12},                                  // incp x3, p4.d
    {0x252d8883, 10, 4},                                   // decp x3, p4.b
    {0x256d8883, 10, 6},                                   // decp x3, p4.h
    {0x25ad8883, 10, 7},                                   // decp x3, p4.s
    {0x25ed8883, 1, 0xFFFFFFFFFFFFFFFF},                   // decp x3, p4.d: wraps
    {0x25288883, 0xFFFFFFFF7FFFFFFD, 0x000000007FFFFFFF},  // sqincp x3, p4.b, w3
    {0x252a8883, 0x0000000080000002, 0xFFFFFFFF80000000},  // sqdecp x3, p4.b, w3
    {0x25698883, 0xFFFFFFFFFFFFFFFE, 0x00000000FFFFFFFF},  // uqincp w3, p4.h
    {0x25ab8883, 0xFFFFFFFF00000002, 0},                   // uqdecp w3, p4.s
    {0x25e88c83, 0x7FFFFFFFFFFFFFFF, 0x7FFFFFFFFFFFFFFF},  // sqincp x3, p4.d
    {0x25eb8c83, 1, 0},                                    // uqdecp x3, p4.d
    {0x25e98c83, 0xFFFFFFFFFFFFFFFE, 0xFFFFFFFFFFFFFFFF},  // uqincp x3, p4.d
    {0x256a8c83, 0x8000000000000003, 0x8000000000000000},  // sqdecp x3, p4.h
    {0x25209483, 99, 4},                                   // cntp x3, p5, p4.b
    {0x25609483, 99, 2},                                   // cntp x3, p5, p4.h
    {0x25a09483, 99, 2},                                   // cntp x3, p5, p4.s
    {0x25e09483, 99, 1},                                   // cntp x3, p5, p4.d
};

TEST(PredicateCounts, ScalarFormsCountTheFirstByteOfEachElement) {
    for (const ScalarCase& c : pred_scalar_cases) {
        Machine m;
        predicate_p4(m);
        // p5, the governing predicate of cntp: all active but byte 2 (0) and byte 8 (0x02).
        std::memset(m.s()->p[5], 1, 64);
        m.s()->p[5][2] = 0;
        m.s()->p[5][8] = 0x02;
        m.s()->x[3] = c.before;
        ASSERT_EQ(m.exec(c.word), DECODE_OK);
        EXPECT_EQ(m.s()->x[3], c.after) << std::hex << c.word;
    }
}

const VectorCase pred_vector_cases[] = {
    {0x256c8083, 16, {0xFFFE, 0, 0}, {0x0002, 4, 4}},                            // incp z3.h, p4.h
    {0x25ac8083, 32, {7, 0, 0}, {10, 3, 3}},                                     // incp z3.s, p4.s
    {0x25ec8083, 64, {7, 0, 0}, {9, 2, 2}},                                      // incp z3.d, p4.d
    {0x256d8083, 16, {3, 0, 4}, {0xFFFF, 0xFFFC, 0}},                            // decp z3.h, p4.h
    {0x25ad8083, 32, {1, 3, 4}, {0xFFFFFFFE, 0, 1}},                             // decp z3.s, p4.s
    {0x25ed8083, 64, {0, 2, 3}, {0xFFFFFFFFFFFFFFFE, 0, 1}},                     // decp z3.d, p4.d
    {0x25688083, 16, {0x7FFE, 0x8000, 0x7FFB}, {0x7FFF, 0x8004, 0x7FFF}},        // sqincp z3.h, p4.h
    {0x25ab8083, 32, {2, 3, 4}, {0, 0, 1}},                                      // uqdecp z3.s, p4.s
    {0x25ea8083, 64, {0x8000000000000001, 0x8000000000000002, 0},
     {0x8000000000000000, 0x8000000000000000, 0xFFFFFFFFFFFFFFFE}},              // sqdecp z3.d, p4.d
    {0x25698083, 16, {0xFFFD, 0xFFFB, 0}, {0xFFFF, 0xFFFF, 4}},                  // uqincp z3.h, p4.h
};

TEST(PredicateCounts, VectorForms) {
    for (const VectorCase& c : pred_vector_cases) {
        Machine m;
        predicate_p4(m);
        for (unsigned i = 0; i < 512 / c.N; ++i) m.set_z(3, i, c.N, c.a[i % 3]);
        ASSERT_EQ(m.exec(c.word), DECODE_OK);
        for (unsigned i = 0; i < 512 / c.N; ++i)
            ASSERT_EQ(m.z(3, i, c.N), c.want[i % 3]) << std::hex << c.word << " element " << std::dec << i;
    }
}

TEST(PredicateCounts, AByteOneOnlyPredicateIsOneByteAndNoHalfword) {
    Machine m;
    m.s()->p[4][1] = 1;
    ASSERT_EQ(m.exec(0x252c8883), DECODE_OK);  // incp x3, p4.b
    EXPECT_EQ(m.s()->x[3], 1u);
    ASSERT_EQ(m.exec(0x256c8883), DECODE_OK);  // incp x3, p4.h
    EXPECT_EQ(m.s()->x[3], 1u);
}

TEST(VectorLength, RdvlAddvlAddplWithSp) {
    struct Case {
        uint32_t word;
        unsigned dest;
        uint64_t want;
    } cases[] = {
        {0x04bf57e3, 3, 0xFFFFFFFFFFFFFFC0},  // rdvl x3, #-1
        {0x04bf53e3, 3, 1984},                // rdvl x3, #31
        {0x04bf503f, 31, 0x10000},            // rdvl xzr, #1: SP untouched
        {0x043f57ff, 31, 0x10000 - 64},       // addvl sp, sp, #-1
        {0x047f5023, 3, 0x10008},             // addpl x3, sp, #1
        {0x042453e3, 3, 0x1000 + 1984},       // addvl x3, x4, #31
        {0x0464541f, 31, 0x1000 - 256},       // addpl sp, x4, #-32
    };
    for (const Case& c : cases) {
        Machine m;
        for (unsigned r = 0; r < 31; ++r) m.s()->x[r] = 0x1111 * r;
        m.s()->x[4] = 0x1000;
        m.s()->x[31] = 0x10000;
        const cpu_state before = *m.s();
        ASSERT_EQ(m.exec(c.word), DECODE_OK);
        for (unsigned r = 0; r < 32; ++r)
            EXPECT_EQ(m.s()->x[r], r == c.dest ? c.want : before.x[r]) << std::hex << c.word << " x" << std::dec << r;
    }
}

// Register 31 is the zero register in every scalar form of the family: it
// reads 0 and the result is dropped, on either route, and SP stays.
TEST(VectorLength, ZeroRegisterDestinationsWriteNothing) {
    for (uint32_t word : {0x252c889fu,    // incp xzr, p4.b
                          0x2520949fu,    // cntp xzr, p5, p4.b
                          0x0430f3ffu,    // sqincb xzr
                          0x252d889fu,    // decp xzr, p4.b
                          0x0420ffffu}) { // uqdecb wzr
        Machine m;
        predicate_p4(m);
        std::memset(m.s()->p[5], 1, 64);
        for (unsigned r = 0; r < 32; ++r) m.s()->x[r] = 0x1000 + r;
        ASSERT_EQ(m.exec(word), DECODE_OK);
        for (unsigned r = 0; r < 32; ++r) EXPECT_EQ(m.s()->x[r], 0x1000u + r) << std::hex << word;
    }
}

// The kernels no handler calls: cnt[bhwd] ignore the pattern, and uqdecw and
// uqdecd count at their own element size.
TEST(VectorLength, KernelsWithoutHandlers) {
    Machine m;
    ASSERT_EQ(sve_cnth_rii(m.s(), {3, 3, 5, 5}, 1, 16), DECODE_OK);  // VL1 ignored
    EXPECT_EQ(m.s()->x[3], 512u);
    ASSERT_EQ(sve_cntd_rii(m.s(), {3, 3, 5, 5}, 14, 1), DECODE_OK);
    EXPECT_EQ(m.s()->x[3], 8u);
    m.s()->x[3] = 0xFFFFFFFF00000020;
    ASSERT_EQ(sve_uqdecw_rii(m.s(), {3, 4, ES_S, ES_S}, 31, 1), DECODE_OK);  // W form, -16
    EXPECT_EQ(m.s()->x[3], 0x10u);
    m.s()->x[3] = 0x100000005;
    ASSERT_EQ(sve_uqdecd_rii(m.s(), {3, 4, ES_D, ES_D}, 30, 2), DECODE_OK);  // X form, MUL3 = 6, times 2
    EXPECT_EQ(m.s()->x[3], 0x100000005u - 12);
}

struct Form {
    const char* name;
    sve_handler handler;
    bool kernel;
};
#define H(name, k) {#name, static_cast<sve_handler>(&name), k},
#define R_CNT(name, N) H(name, false)
#define K_RII(name, kernel, N, op) H(name, true)
#define R_QSI(name, N, R, op) H(name, false)
#define K_QSI(name, kernel, N, R, op) H(name, true)
#define K_ZII(name, kernel, N, op) H(name, true)
#define R_QVI(name, N, op) H(name, false)
#define K_SP(name, kernel, N, op) H(name, true)
#define R_SP(name, N, op) H(name, false)
#define R_QSP(name, N, R, op) H(name, false)
#define R_PV(name, N, op) H(name, false)
#define K_CNTP(name, kernel, N) H(name, true)
#define R_QVIX(name, N, op) H(name, false)
#define R_QVVX(name, N, op) H(name, false)
#define K_VLX(name, kernel) H(name, true)
#define K_ADDVL(name, kernel, scale) H(name, true)
const Form forms[] = {
#include "sve/integer/satcount_forms.h"
};

TEST(SatCountRoutes, EveryFormHasItsRowAndRoute) {
    EXPECT_EQ(sizeof forms / sizeof forms[0], 159u);
    for (const Form& f : forms) {
        const sve_row* row = nullptr;
        for (size_t i = 0; i < sve_row_count; ++i)
            if (std::strcmp(sve_rows[i].name, f.name) == 0) row = &sve_rows[i];
        ASSERT_NE(row, nullptr) << f.name;
        EXPECT_EQ(row->handler, f.handler) << f.name;
        EXPECT_EQ(is_sve(row->bits | 0x7), f.handler) << f.name;
        Machine m;
        m.s()->instruction = 0xdeadbeef;
        m.s()->ffr[0] = 0xfe;
        EXPECT_EQ(m.exec(row->bits | 0x7), DECODE_OK) << f.name;
        EXPECT_EQ(m.s()->instruction, f.kernel ? row->bits | 0x7 : 0xdeadbeef) << f.name;
        EXPECT_EQ(m.s()->ffr[0], f.kernel ? 0xfe : 0) << f.name;
    }
}

}  // namespace
