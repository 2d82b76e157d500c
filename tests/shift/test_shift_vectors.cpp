// Shifts by a vector of counts: lsl, lsr, asr (kernels), their reversed forms
// lslr, lsrr, asrr (reference operations) and the wide forms, whose count is a
// 64-bit lane. Every count of the element width and above has a fixed result.
#include <vector>

#include "shift/test_machine.h"
#include "sve/integer/shift.h"

namespace {

// a shifted by count: the expected lsl, lsr and asr results.
struct Row {
    uint64_t a, count, lsl, lsr, asr;
};

const std::vector<Row> rows8 = {
    {0x81, 0, 0x81, 0x81, 0x81},
    {0x81, 1, 0x02, 0x40, 0xC0},
    {0x81, 7, 0x80, 0x01, 0xFF},
    {0x81, 8, 0x00, 0x00, 0xFF},
    {0x81, 0x80, 0x00, 0x00, 0xFF},  // a negative count to a host vector shift
    {0x81, 0xFF, 0x00, 0x00, 0xFF},
    {0x7F, 7, 0x80, 0x00, 0x00},
    {0x7F, 200, 0x00, 0x00, 0x00},
    {0x3C, 2, 0xF0, 0x0F, 0x0F},
};
const std::vector<Row> rows16 = {
    {0x8001, 0, 0x8001, 0x8001, 0x8001},
    {0x8001, 15, 0x8000, 0x0001, 0xFFFF},
    {0x8001, 16, 0, 0, 0xFFFF},
    {0x8001, 17, 0, 0, 0xFFFF},
    {0x8001, 0x0100, 0, 0, 0xFFFF},  // the whole element counts, not its low byte
    {0x8001, 0xFFFF, 0, 0, 0xFFFF},
    {0x4321, 4, 0x3210, 0x0432, 0x0432},
    {0x7FFF, 16, 0, 0, 0},
};
const std::vector<Row> rows32 = {
    {0x80000001, 31, 0x80000000, 1, 0xFFFFFFFF},
    {0x80000001, 32, 0, 0, 0xFFFFFFFF},
    {0x80000001, 33, 0, 0, 0xFFFFFFFF},
    {0x80000001, 0x100, 0, 0, 0xFFFFFFFF},
    {0x80000001, 0x80000000, 0, 0, 0xFFFFFFFF},
    {0x80000001, 0xFFFFFFFF, 0, 0, 0xFFFFFFFF},
    {0x87654321, 4, 0x76543210, 0x08765432, 0xF8765432},
    {0x7FFFFFFF, 31, 0x80000000, 0, 0},
    {0x7FFFFFFF, 32, 0, 0, 0},
};
const std::vector<Row> rows64 = {
    {0x8000000000000001, 63, 0x8000000000000000, 1, ~0ull},
    {0x8000000000000001, 64, 0, 0, ~0ull},
    {0x8000000000000001, 65, 0, 0, ~0ull},
    {0x8000000000000001, 0x100000000, 0, 0, ~0ull},  // low word 0
    {0x8000000000000001, 0x100000001, 0, 0, ~0ull},  // low word 1
    {0x8000000000000001, 0x8000000000000000, 0, 0, ~0ull},
    {0x8000000000000001, ~0ull, 0, 0, ~0ull},
    {0x0123456789ABCDEF, 4, 0x123456789ABCDEF0, 0x00123456789ABCDE, 0x00123456789ABCDE},
    {0xFEDCBA9876543210, 32, 0x7654321000000000, 0x00000000FEDCBA98, 0xFFFFFFFFFEDCBA98},
    {0x7FFFFFFFFFFFFFFF, 63, 0x8000000000000000, 0, 0},
    {0x7FFFFFFFFFFFFFFF, 64, 0, 0, 0},
};

uint64_t expected(const Row& r, int op) { return op == 0 ? r.lsl : op == 1 ? r.lsr : r.asr; }

struct VectorForms {
    unsigned N;
    const std::vector<Row>* rows;
    uint32_t direct[3];    // lsl, lsr, asr  z1, p2/m, z1, z3
    uint32_t reversed[3];  // lslr, lsrr, asrr  z1, p2/m, z1, z3
};
const VectorForms vector_forms[] = {
    {8, &rows8, {0x04138861, 0x04118861, 0x04108861}, {0x04178861, 0x04158861, 0x04148861}},
    {16, &rows16, {0x04538861, 0x04518861, 0x04508861}, {0x04578861, 0x04558861, 0x04548861}},
    {32, &rows32, {0x04938861, 0x04918861, 0x04908861}, {0x04978861, 0x04958861, 0x04948861}},
    {64, &rows64, {0x04d38861, 0x04d18861, 0x04d08861}, {0x04d78861, 0x04d58861, 0x04d48861}},
};
const char* const op_names[] = {"lsl", "lsr", "asr"};

// Rows go to the first elements, one a row, active; the others are inactive
// and hold a value that any shift by their count of 1 would change.
TEST(ShiftVectors, EveryCountHasItsResultAndInactiveElementsKeepZdn) {
    for (const VectorForms& f : vector_forms) {
        const unsigned elems = 512 / f.N, chunk = elems - 1;
        const uint64_t idle = 0x5A5A5A5A5A5A5A5Aull & ones_of(f.N);
        for (int op = 0; op < 3; ++op)
            for (size_t start = 0; start < f.rows->size(); start += chunk)
                for (bool rev : {false, true}) {
                    Machine m;
                    const unsigned val = rev ? 3 : 1, cnt = rev ? 1 : 3;
                    for (unsigned i = 0; i < elems; ++i) {
                        bool row = i < chunk && start + i < f.rows->size();
                        m.set_z(val, i, f.N, row ? (*f.rows)[start + i].a : idle);
                        m.set_z(cnt, i, f.N, row ? (*f.rows)[start + i].count : 1);
                        m.set_active(2, i, f.N, row);
                    }
                    Machine before = {};
                    *before.st = *m.st;
                    ASSERT_EQ(m.exec(rev ? f.reversed[op] : f.direct[op]), DECODE_OK);
                    for (unsigned i = 0; i < elems; ++i) {
                        bool row = i < chunk && start + i < f.rows->size();
                        // Inactive: the old Zdn, which holds the count in the reversed forms.
                        uint64_t want = row ? expected((*f.rows)[start + i], op) : before.z(1, i, f.N);
                        EXPECT_EQ(m.z(1, i, f.N), want) << op_names[op] << (rev ? "r" : "") << " ." << f.N << " element " << i;
                        EXPECT_EQ(m.z(3, i, f.N), before.z(3, i, f.N)) << "Zm changed";
                    }
                }
    }
}

// Zdn and Zm the same register: every element is shifted by itself, and the
// count is read before the element is replaced.
TEST(ShiftVectors, KernelsAllowZdnToBeZm) {
    Machine m;
    m.fill_z(1, 8, 3);
    std::memset(m.s()->p[2], 1, 64);
    ASSERT_EQ(sve_lsl_zpz(m.s(), {1, 5, ES_B, ES_B}, {2, QUAL_MERGE, 7, 7}, {1, ES_B, 5, 5}), DECODE_OK);
    for (unsigned i = 0; i < 64; ++i) ASSERT_EQ(m.z(1, i, 8), 24u);
    m.fill_z(1, 64, 40);
    ASSERT_EQ(sve_asr_zpz(m.s(), {1, 5, ES_D, ES_D}, {2, QUAL_MERGE, 7, 7}, {1, ES_D, 5, 5}), DECODE_OK);
    for (unsigned i = 0; i < 8; ++i) ASSERT_EQ(m.z(1, i, 64), 0u);
}

// Wide forms: a value and a 64-bit count per lane; every element of lane L
// takes the count of lane L.
struct WideForms {
    unsigned N;
    Row lanes[8];
    uint32_t pred[3];    // lsl, lsr, asr  z7, p3/m, z7, z8.d
    uint32_t unpred[3];  // lsl, lsr, asr  z7, z9, z8.d
};
const WideForms wide_forms[] = {
    {8,
     {{0x81, 8, 0, 0, 0xFF},
      {0x81, 7, 0x80, 0x01, 0xFF},
      {0x81, 255, 0, 0, 0xFF},
      {0x81, 0x8000000000000000, 0, 0, 0xFF},
      {0x81, ~0ull, 0, 0, 0xFF},
      {0x81, 0x100000001, 0, 0, 0xFF},
      {0x81, 1, 0x02, 0x40, 0xC0},
      {0x7F, 0x8000000000000000, 0, 0, 0}},
     {0x041b8d07, 0x04198d07, 0x04188d07},
     {0x04288d27, 0x04288527, 0x04288127}},
    {16,
     {{0x8001, 16, 0, 0, 0xFFFF},
      {0x8001, 15, 0x8000, 1, 0xFFFF},
      {0x8001, 255, 0, 0, 0xFFFF},
      {0x8001, 0x8000000000000000, 0, 0, 0xFFFF},
      {0x8001, ~0ull, 0, 0, 0xFFFF},
      {0x8001, 0x10000, 0, 0, 0xFFFF},
      {0xF0F0, 4, 0x0F00, 0x0F0F, 0xFF0F},
      {0x7FFF, 0x8000000000000000, 0, 0, 0}},
     {0x045b8d07, 0x04598d07, 0x04588d07},
     {0x04688d27, 0x04688527, 0x04688127}},
    {32,
     {{0x80000001, 32, 0, 0, 0xFFFFFFFF},
      {0x80000001, 31, 0x80000000, 1, 0xFFFFFFFF},
      {0x80000001, 255, 0, 0, 0xFFFFFFFF},
      {0x80000001, 0x8000000000000000, 0, 0, 0xFFFFFFFF},
      {0x80000001, ~0ull, 0, 0, 0xFFFFFFFF},
      {0x80000001, 0x100000000, 0, 0, 0xFFFFFFFF},
      {0x87654321, 4, 0x76543210, 0x08765432, 0xF8765432},
      {0x7FFFFFFF, 0x8000000000000000, 0, 0, 0}},
     {0x049b8d07, 0x04998d07, 0x04988d07},
     {0x04a88d27, 0x04a88527, 0x04a88127}},
};

TEST(ShiftWide, EachElementTakesTheLaneOverItAsAnUnsignedCount) {
    for (const WideForms& f : wide_forms)
        for (int op = 0; op < 3; ++op)
            for (bool pred : {true, false}) {
                Machine m;
                const unsigned per_lane = 64 / f.N, src = pred ? 7 : 9;
                m.fill_z(7, 64, 0xEEEEEEEEEEEEEEEE);
                for (unsigned L = 0; L < 8; ++L) {
                    m.set_z(8, L, 64, f.lanes[L].count);
                    for (unsigned k = 0; k < per_lane; ++k) m.set_z(src, L * per_lane + k, f.N, f.lanes[L].a);
                }
                for (unsigned i = 0; i < 512 / f.N; ++i) m.set_active(3, i, f.N, i % 3 != 2);
                ASSERT_EQ(m.exec(pred ? f.pred[op] : f.unpred[op]), DECODE_OK);
                for (unsigned i = 0; i < 512 / f.N; ++i) {
                    const Row& r = f.lanes[i / per_lane];
                    uint64_t want = pred && i % 3 == 2 ? r.a : expected(r, op);
                    EXPECT_EQ(m.z(7, i, f.N), want) << op_names[op] << " wide ." << f.N << (pred ? " /m" : "") << " element " << i;
                }
                for (unsigned L = 0; L < 8; ++L) EXPECT_EQ(m.z(8, L, 64), f.lanes[L].count);
            }
}

}  // namespace
