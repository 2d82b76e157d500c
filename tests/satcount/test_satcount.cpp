// The family's exact tables and edges: the pattern counts (the kernels' table,
// VecTrueILength and the uqdec kernel's own copy of the rules), the 32-bit
// scalar forms' extension, predicate bytes other than bit 0 of an element's
// first, ADDVL and ADDPL with SP, register 31, and every form's route.
#include "shift/test_machine.h"
#include "sve/integer/intlib.h"
#include "sve/integer/satcount.h"

namespace {

// Element counts at 512 bits for .b .h .s .d; patterns 14..28 count 0.
TEST(Patterns, TableRowsAt512Bits) {
    struct Row {
        unsigned pattern, count[4];
    } rows[] = {
        {0, {64, 32, 16, 8}}, {1, {1, 1, 1, 1}}, {2, {2, 2, 2, 2}}, {3, {3, 3, 3, 3}}, {4, {4, 4, 4, 4}},
        {5, {5, 5, 5, 5}}, {6, {6, 6, 6, 6}}, {7, {7, 7, 7, 7}}, {8, {8, 8, 8, 8}}, {9, {16, 16, 16, 0}},
        {10, {32, 32, 0, 0}}, {11, {64, 0, 0, 0}}, {12, {0, 0, 0, 0}}, {13, {0, 0, 0, 0}},
        {29, {64, 32, 16, 8}}, {30, {63, 30, 15, 6}}, {31, {64, 32, 16, 8}},
    };
    unsigned want[32][4] = {};
    for (const Row& r : rows)
        for (int s = 0; s < 4; ++s) want[r.pattern][s] = r.count[s];
    for (unsigned p = 0; p < 32; ++p)
        for (unsigned s = 0; s < 4; ++s) {
            EXPECT_EQ(sve_pattern_count[s][p], want[p][s]) << "table, pattern " << p << " size " << s;
            EXPECT_EQ(VecTrueILength(p, 64 >> s), want[p][s]) << "VecTrueILength, pattern " << p << " size " << s;
            Machine m;  // uqdec repeats the rules; x3 = 1000 - count
            m.s()->x[3] = 1000;
            ASSERT_EQ(sve_uqdec<uint64_t>(m.s(), {3, 4, ES_D, ES_D}, p, 1, s), DECODE_OK);
            EXPECT_EQ(m.s()->x[3], 1000 - want[p][s]) << "uqdec, pattern " << p << " size " << s;
        }
    // Element counts that are not powers of 2 (other vector lengths).
    const unsigned general[][3] = {{0, 0, 1}, {0, 3, 2}, {0, 129, 128}, {7, 6, 0}, {9, 15, 0}, {13, 256, 256},
                                   {29, 7, 4}, {30, 2, 0}, {30, 128, 126}, {31, 7, 6}, {32, 64, 0}};
    for (auto [p, count, n] : general) EXPECT_EQ(VecTrueILength(p, count), n) << "pattern " << p << " n " << count;
}

// p4 is active at bytes 0, 1, 2, 4, 8 (0x03) and 63, with 0xFE (bit 0 clear)
// at byte 5: 6 elements at .b, 4 at .h (bytes 0, 2, 4, 8), 3 at .s, 2 at .d;
// byte 63 alone makes the last group (0, .., 1) inactive at .h .s .d.
// p5, the governing predicate of cntp, is active but at byte 2 (0) and byte 8
// (0x02, which shares a bit with p4's 0x03 there but not bit 0).
void predicates(Machine& m) {
    for (unsigned k : {0, 1, 2, 4, 63}) m.s()->p[4][k] = 1;
    m.s()->p[4][8] = 0x03;
    m.s()->p[4][5] = 0xFE;
    std::memset(m.s()->p[5], 1, 64);
    m.s()->p[5][2] = 0;
    m.s()->p[5][8] = 0x02;
}

struct ScalarCase {
    uint32_t word;
    uint64_t before, after;
};
const ScalarCase junk_cases[] = {
    {0x252c8883, 10, 16},  // incp x3, p4.b
    {0x256c8883, 10, 14},  // incp x3, p4.h
    {0x25ac8883, 10, 13},  // incp x3, p4.s
    {0x25ed8883, 1, ~0ull},  // decp x3, p4.d: wraps
    {0x25209483, 99, 4},   // cntp x3, p5, p4.b
    {0x25609483, 99, 2},   // cntp x3, p5, p4.h
    {0x25a09483, 99, 2},   // cntp x3, p5, p4.s
    {0x25e09483, 99, 1},   // cntp x3, p5, p4.d
};
// The W forms saturate at 32 bits; the signed ones sign-extend the result into
// x3, the unsigned ones zero-extend it, and only the low word is read.
const ScalarCase w_cases[] = {
    {0x0420f3e3, 0xFFFFFFFF7FFFFFFF, 0x000000007FFFFFFF},  // sqincb x3, w3: saturates
    {0x0420f1c3, 0x0000000080000000, 0xFFFFFFFF80000000},  // sqincb x3, w3, #14: count 0, still extended
    {0x0420fbe3, 0x0000000080000005, 0xFFFFFFFF80000000},  // sqdecb x3, w3
    {0x04a0f883, 0x0000000000000001, 0xFFFFFFFFFFFFFFFD},  // sqdecw x3, w3, vl4
    {0x04a0f083, 0x12345678FFFFFFFE, 0x0000000000000002},  // sqincw x3, w3, vl4
    {0x0420f7e3, 0xFFFFFFFFFFFFFFF0, 0x00000000FFFFFFFF},  // uqincb w3
    {0x0420ffe3, 0xFFFFFFFF00000010, 0},                   // uqdecb w3
    {0x0420ffe3, 0x1234567800000100, 0x00000000000000C0},  // uqdecb w3
    {0x25288883, 0xFFFFFFFF7FFFFFFD, 0x000000007FFFFFFF},  // sqincp x3, p4.b, w3
    {0x252a8883, 0x0000000080000002, 0xFFFFFFFF80000000},  // sqdecp x3, p4.b, w3
    {0x25698883, 0xFFFFFFFFFFFFFFFE, 0x00000000FFFFFFFF},  // uqincp w3, p4.h
    {0x25ab8883, 0xFFFFFFFF00000002, 0},                   // uqdecp w3, p4.s
};

TEST(Scalars, JunkPredicateBytesAndTheWFormsExtension) {
    auto run = [](const ScalarCase& c) {
        Machine m;
        predicates(m);
        m.s()->x[3] = c.before;
        ASSERT_EQ(m.exec(c.word), DECODE_OK);
        EXPECT_EQ(m.s()->x[3], c.after) << std::hex << c.word << " from " << c.before;
    };
    for (const ScalarCase& c : junk_cases) run(c);
    for (const ScalarCase& c : w_cases) run(c);
}

TEST(VectorLength, RdvlAddvlAddplWithSp) {
    struct Case {
        uint32_t word;
        unsigned dest;
        uint64_t want;
    } cases[] = {
        {0x04bf57e3, 3, 0xFFFFFFFFFFFFFFC0},  // rdvl x3, #-1
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

// Register 31 is the zero register in every other scalar form: it reads 0 and
// the result is dropped, on either route, and SP stays.
TEST(VectorLength, ZeroRegisterDestinationsWriteNothing) {
    for (uint32_t word : {0x252c889fu,    // incp xzr, p4.b
                          0x2520949fu,    // cntp xzr, p5, p4.b
                          0x0430f3ffu,    // sqincb xzr
                          0x0420ffffu}) { // uqdecb wzr
        Machine m;
        predicates(m);
        for (unsigned r = 0; r < 32; ++r) m.s()->x[r] = 0x1000 + r;
        ASSERT_EQ(m.exec(word), DECODE_OK);
        for (unsigned r = 0; r < 32; ++r) EXPECT_EQ(m.s()->x[r], 0x1000u + r) << std::hex << word;
    }
}

// Every row reaches its own handler, and the handler takes its route: the
// kernel route stores the word, the reference route normalises FFR.
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
