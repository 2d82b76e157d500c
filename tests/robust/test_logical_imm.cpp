// The logical immediate of AND, ORR, EOR and DUPM over all 8192 values of its
// N:immr:imms field. The reserved values (N 0 with imms 11111x, or an element
// of all ones) define no mask: the handler must refuse the word with 2 and
// leave the register file as it was; every other value must give the mask,
// which this test builds bit by bit without the decoder's shifts.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "sve/core/decode.h"

namespace {

const sve_row* row_named(const char* name) {
    for (size_t i = 0; i < sve_row_count; ++i)
        if (std::strcmp(sve_rows[i].name, name) == 0) return &sve_rows[i];
    return nullptr;
}

// The element size from N and imms, or 0 where none exists.
unsigned element_bits(unsigned n, unsigned imms) {
    if (n) return 64;
    for (unsigned e = 32; e >= 2; e /= 2)
        // imms = ones above a zero at the bit that names e: 0xxxxx is 32,
        // 10xxxx is 16, ..., 11110x is 2.
        if ((imms & (e | (~(2 * e - 1) & 63))) == (~(2 * e - 1) & 63)) return e;
    return 0;
}

// The mask, or false for a reserved field.
bool expected_mask(uint32_t field, uint64_t* mask) {
    unsigned n = field >> 12 & 1, immr = field >> 6 & 63, imms = field & 63;
    unsigned e = element_bits(n, imms);
    if (e == 0) return false;
    unsigned s = imms & (e - 1), r = immr & (e - 1);
    if (s == e - 1) return false;
    // Bits 0..s of each element are set before the rotation; rotating right by
    // r puts unrotated bit (i + r) mod e at bit i.
    uint64_t m = 0;
    for (unsigned i = 0; i < 64; ++i)
        if ((i % e + r) % e <= s) m |= 1ull << i;
    *mask = m;
    return true;
}

TEST(LogicalImmediate, ReferenceMaskCountsAndExamples) {
    int reserved = 0;
    uint64_t m = 0;
    for (uint32_t f = 0; f < 8192; ++f) reserved += !expected_mask(f, &m);
    // N 0 with imms 11111x: 2 x 64; an all-ones element at each of the six
    // element sizes: 6 x 64.
    EXPECT_EQ(reserved, 128 + 6 * 64);
    // N 1, immr 0, imms 0: one bit. N 0, imms 111100 (2-bit elements, S 0): 0x5555...
    ASSERT_TRUE(expected_mask(1u << 12, &m));
    EXPECT_EQ(m, 1u);
    ASSERT_TRUE(expected_mask(0x3c, &m));
    EXPECT_EQ(m, 0x5555555555555555ull);
    // 8-bit elements of 4 ones rotated right by 1: 0x87 in each byte.
    ASSERT_TRUE(expected_mask(1u << 6 | 0x33, &m));
    EXPECT_EQ(m, 0x8787878787878787ull);
    // 63 ones rotated right by 63, that is left by 1: bit 0 clear.
    ASSERT_TRUE(expected_mask(1u << 12 | 63u << 6 | 62, &m));
    EXPECT_EQ(m, 0xfffffffffffffffeull);
}

enum class Op { And, Orr, Eor, Dupm };

struct Form {
    const char* name;
    Op op;
};

class LogicalImmediateRow : public ::testing::TestWithParam<Form> {};

void fill_random(cpu_state* s, std::mt19937_64& rng) {
    static_assert(sizeof(cpu_state) % 8 == 0, "filled 8 bytes at a time");
    uint8_t* b = reinterpret_cast<uint8_t*>(s);
    for (size_t i = 0; i < sizeof *s; i += 8) {
        uint64_t v = rng();
        std::memcpy(b + i, &v, 8);
    }
}

TEST_P(LogicalImmediateRow, EveryFieldValue) {
    const Form form = GetParam();
    const sve_row* row = row_named(form.name);
    ASSERT_NE(row, nullptr) << form.name;
    ASSERT_NE(row->handler, nullptr) << form.name << " is not built";
    std::mt19937_64 rng(0x10c1ca1 + static_cast<int>(form.op));
    static cpu_state before, s;
    int refused = 0, done = 0;
    for (uint32_t field = 0; field < 8192; ++field) {
        fill_random(&before, rng);
        before.instruction = 0xfeedfacecafef00dull;  // no word equals it
        unsigned zd = static_cast<unsigned>(rng() & 31);
        uint32_t word = row->bits | field << 5 | zd;
        ASSERT_EQ(is_sve(word), row->handler) << std::hex << word;
        s = before;
        aarch64_decode_rc rc = row->handler(&s, word);
        uint64_t mask = 0;
        // Only the destination may change, and the instruction field may hold
        // the word (the kernel route stores it before it looks at the field).
        cpu_state expect = before;
        bool valid = expected_mask(field, &mask);
        if (valid) {
            for (unsigned e = 0; e < 8; ++e) {
                uint64_t v;
                std::memcpy(&v, before.z[zd] + 8 * e, 8);
                switch (form.op) {
                    case Op::And: v &= mask; break;
                    case Op::Orr: v |= mask; break;
                    case Op::Eor: v ^= mask; break;
                    case Op::Dupm: v = mask; break;
                }
                std::memcpy(expect.z[zd] + 8 * e, &v, 8);
            }
        }
        ASSERT_EQ(rc, valid ? DECODE_OK : DECODE_UNKNOWN)
            << form.name << " field 0x" << std::hex << field << " word 0x" << word;
        ASSERT_EQ(std::memcmp(&s, &expect, offsetof(cpu_state, instruction)), 0)
            << form.name << " field 0x" << std::hex << field << " word 0x" << word
            << (valid ? ": wrong result or a register other than Zd changed" : ": a refused word changed cpu_state");
        if (valid)
            EXPECT_EQ(s.instruction, word) << std::hex << word;
        else
            EXPECT_TRUE(s.instruction == word || s.instruction == before.instruction) << std::hex << word;
        (valid ? done : refused)++;
    }
    EXPECT_EQ(refused, 512);
    EXPECT_EQ(done, 8192 - 512);
}

// Through the direct entry, a refused word leaves pc where it was and moves no
// statistic.
TEST_P(LogicalImmediateRow, RefusedWordThroughTheDirectEntry) {
    const Form form = GetParam();
    const sve_row* row = row_named(form.name);
    ASSERT_NE(row, nullptr);
    ASSERT_NE(row->handler, nullptr);
    sve_stats_reset();
    static cpu_state s;
    std::memset(&s, 0, sizeof s);
    // N 0, imms 111111: the encoding that has no element size at all.
    uint32_t code[2] = {row->bits | 0x3fu << 5 | 3, row->bits | 0x3eu << 5 | 3};
    for (uint32_t& w : code) {
        s.pc = &w;
        EXPECT_EQ(execute_sve_instruction(&s), DECODE_UNKNOWN) << std::hex << w;
        EXPECT_EQ(s.pc, &w);
    }
    EXPECT_EQ(sve_instr_count_read(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Rows, LogicalImmediateRow,
                         ::testing::Values(Form{"VecU64AndVIX", Op::And}, Form{"VecU64OrVIX", Op::Orr},
                                           Form{"VecU64XorVIX", Op::Eor}, Form{"VecS64DupMaskI", Op::Dupm}),
                         [](const ::testing::TestParamInfo<Form>& info) { return std::string(info.param.name); });

}  // namespace
