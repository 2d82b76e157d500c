// The decoder: keys, map membership, lookups, and bad input.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <set>
#include <string>

#include "sve/core/decode.h"

namespace {

const sve_row* find_row(const char* name) {
    for (size_t i = 0; i < sve_row_count; ++i)
        if (std::strcmp(sve_rows[i].name, name) == 0) return &sve_rows[i];
    return nullptr;
}

TEST(DecodeMaps, KeyCompositionMatchesTheWrittenExamples) {
    struct Case {
        uint32_t mask, word, key;
    } cases[] = {
        // 31_9__4_0: (word >> 9) << 5 | (word & 31)
        {0xfffffe1f, 0x2528901f, (0x2528901fu >> 9) << 5 | 31},
        // 31_14__9_9__4_0: (word >> 14) << 6 | bit 9 << 5 | (word & 31)
        {0xffffc21f, 0x2550c200, (0x2550c200u >> 14) << 6 | 1 << 5},
        // The worked ADD: 31_21__15_10 gives 0x940.
        {0xffe0fc00, 0x04a20020, 0x940},
        // The worked LSR: 31_20__15_10 gives 0x10e5.
        {0xfff0fc00, 0x04319421, 0x10e5},
        {0xffffffff, 0x252c9000, 0x252c9000},
    };
    for (const Case& c : cases) EXPECT_EQ(sve_map_key(c.mask, c.word), c.key) << std::hex << c.word;
}

TEST(DecodeMaps, EveryRowBelongsToOneMapAndEachMapHasItsRows) {
    std::map<uint32_t, int> count;
    std::set<std::string> names;
    for (size_t i = 0; i < sve_row_count; ++i) {
        const sve_row& r = sve_rows[i];
        EXPECT_TRUE(names.insert(r.name).second) << r.name << " written twice";
        EXPECT_EQ(r.bits & ~r.mask, 0u) << r.name;
        bool found = false;
        for (size_t m = 0; m < SVE_MAP_COUNT; ++m) found |= sve_maps[m].mask == r.mask;
        EXPECT_TRUE(found) << r.name << " has a mask of no map";
        ++count[r.mask];
    }
    int total = 0;
    for (size_t m = 0; m < SVE_MAP_COUNT; ++m) {
        EXPECT_EQ(count[sve_maps[m].mask], sve_maps[m].expected_rows) << sve_maps[m].name;
        total += sve_maps[m].expected_rows;
    }
    EXPECT_EQ(total, 1483);
    EXPECT_EQ(sve_row_count, 1483u);
}

TEST(DecodeMaps, RowsArePairwiseDisjoint) {
    for (size_t i = 0; i < sve_row_count; ++i)
        for (size_t j = i + 1; j < sve_row_count; ++j) {
            const sve_row &a = sve_rows[i], &b = sve_rows[j];
            EXPECT_NE((a.bits ^ b.bits) & a.mask & b.mask, 0u) << a.name << " overlaps " << b.name;
        }
}

TEST(DecodeMaps, WalkOrdersArePermutations) {
    std::set<int> places;
    for (size_t m = 0; m < SVE_MAP_COUNT; ++m) places.insert(sve_maps[m].is_sve_place);
    EXPECT_EQ(places.size(), SVE_MAP_COUNT);
    EXPECT_EQ(*places.begin(), 1);
    EXPECT_EQ(*places.rbegin(), 44);
}

TEST(IsSve, EveryImplementedRowIsFoundWhateverItsOperandBits) {
    std::mt19937 rng(7);
    for (size_t i = 0; i < sve_row_count; ++i) {
        const sve_row& r = sve_rows[i];
        for (int k = 0; k < 32; ++k) {
            uint32_t w = r.bits | (rng() & ~r.mask);
            EXPECT_EQ(is_sve(w), r.handler) << r.name << " " << std::hex << w;
        }
    }
}

TEST(IsSve, WordsWithoutARowGiveNull) {
    EXPECT_EQ(is_sve(0x252c9001), nullptr);  // SETFFR with a stray operand bit
    EXPECT_EQ(is_sve(0xd503201f), nullptr);  // NOP
    EXPECT_EQ(is_sve(0x00000000), nullptr);
    EXPECT_EQ(is_sve(0xffffffff), nullptr);
}

TEST(IsSve, AnyWordGivesAKnownHandlerOrNull) {
    std::set<sve_handler> known;
    for (size_t i = 0; i < sve_row_count; ++i) known.insert(sve_rows[i].handler);
    std::mt19937 rng(11);
    for (int k = 0; k < 200000; ++k) {
        uint32_t w = rng();
        sve_handler h = is_sve(w);
        if (h) {
            EXPECT_TRUE(known.count(h)) << std::hex << w;
        }
    }
}

TEST(ExecuteSveInstruction, UnknownWordLeavesStateAndStatistics) {
    static cpu_state s;
    std::memset(&s, 0x5a, sizeof s);
    uint32_t code[2] = {0x252c9001, 0};
    s.pc = code;
    sve_stats_reset();
    cpu_state before = s;
    EXPECT_EQ(execute_sve_instruction(&s), DECODE_UNKNOWN);
    EXPECT_EQ(std::memcmp(&before, &s, sizeof s), 0);
    EXPECT_EQ(sve_instr_count_read(), 0u);
}

TEST(ExecuteSveInstruction, KnownWordRunsCountsAndAdvances) {
    static cpu_state s;
    std::memset(&s, 0, sizeof s);
    s.z[1][0] = 5;
    s.z[2][0] = 7;
    uint32_t code[2] = {0x04a20020, 0};
    s.pc = code;
    sve_stats_reset();
    EXPECT_EQ(execute_sve_instruction(&s), DECODE_OK);
    EXPECT_EQ(s.z[0][0], 12);
    EXPECT_EQ(s.pc, code + 1);
    EXPECT_EQ(sve_instr_count_read(), 1u);
    EXPECT_EQ(s.instruction, 0x04a20020u);
}

TEST(Rows, TellingRowsHaveTheirKeys) {
    struct Case {
        const char* name;
        uint32_t key;
    } cases[] = {
        {"VecPClearFFSR", 0x252c9000}, {"VecPFalse", 0x2518e40},       {"VecPReadFFSRP", 0x2519f00},
        {"VecPWriteFFSRP", 0x2528900}, {"VecPTestPZ", 0x2550c0},       {"VecS64VLX", 0x97ea},
        {"VecU32CTermEQ", 0x96900},    {"VecU32CTermNE", 0x96910},     {"VecU64CTermEQ", 0x97900},
        {"VecU64CTermNE", 0x97910},    {"VecF16FCMLAVVVM", 0x644},     {"VecF32FCMLAVVVM", 0x648},
        {"VecD64FCMLAVVVM", 0x64c},    {"VecU128ExtDupVI", 0x5c08},    {"VecU8Zip2VV", 0xa59},
        {"VecB8CondXASV", 0x2954},     {"VecU16ShrVIX", 0x10e5},       {"VecU32AddVVX", 0x940},
    };
    for (const Case& c : cases) {
        const sve_row* r = find_row(c.name);
        ASSERT_NE(r, nullptr) << c.name;
        EXPECT_EQ(sve_map_key(r->mask, r->bits), c.key) << c.name;
    }
}

TEST(Rows, EveryKeyHasAnSveTopByte) {
    const std::set<uint32_t> tops = {0x04, 0x05, 0x24, 0x25, 0x44, 0x64, 0x65, 0x84,
                                     0x85, 0xa4, 0xa5, 0xc4, 0xc5, 0xe4, 0xe5};
    for (size_t i = 0; i < sve_row_count; ++i) EXPECT_TRUE(tops.count(sve_rows[i].bits >> 24)) << sve_rows[i].name;
}

TEST(Rows, WorkedAddIsInTheTable) {
    const sve_row* r = find_row("VecU32AddVVX");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->mask, 0xffe0fc00u);
    EXPECT_EQ(is_sve(0x04a20020), r->handler);
}

}  // namespace
