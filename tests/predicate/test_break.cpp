// The break instructions. Registers of every word: Pd (or Pdm) p1, Pg p2,
// Pn p3, Pm p4, except where a row says otherwise.
#include "pred_test.h"

using namespace pt;

namespace {

// Pg active at bytes 0, 1, 2, 3, 5 (upper bits junk); inactive bytes are
// 0xfe. Pn has bit 0 set at the bytes in `breaks`, 0xfe elsewhere.
void load_ab(cpu_state* s, uint64_t breaks) {
    const uint64_t g = 0x2f;
    for (unsigned k = 0; k < 64; ++k) {
        s->p[2][k] = (g >> k & 1) ? uint8_t(1 | junk_hi(k)) : 0xfe;
        s->p[3][k] = (breaks >> k & 1) ? uint8_t(1 | junk_hi(k + 1)) : 0xfe;
        s->p[1][k] = junk_any(k + 11);
    }
}

struct AbCase {
    const char* name;
    Handler handler;
    unsigned word;
    bool merging;
    uint64_t breaks;
    uint64_t want;  // active bytes that come out 1 (the other active bytes 0)
};

const AbCase kAb[] = {
    {"brka /z", VecPBreakAPZ, 0x25104861, false, 1u << 2 | 1u << 5, 0x07},
    {"brka /m", VecPBreakAPM, 0x25104871, true, 1u << 2 | 1u << 5, 0x07},
    {"brkb /z", VecPBreakBPZ, 0x25904861, false, 1u << 2 | 1u << 5, 0x03},
    {"brkb /m", VecPBreakBPM, 0x25904871, true, 1u << 2 | 1u << 5, 0x03},
    {"brka /z, break at the first active byte", VecPBreakAPZ, 0x25104861, false, 1, 0x01},
    {"brkb /z, break at the first active byte", VecPBreakBPZ, 0x25904861, false, 1, 0},
    {"brka /z, break only at an inactive byte", VecPBreakAPZ, 0x25104861, false, 1u << 4, 0x2f},
    {"brkb /m, no break", VecPBreakBPM, 0x25904871, true, 0, 0x2f},
};

TEST(PredBreak, BrkaBrkbTable) {
    for (const AbCase& c : kAb) {
        auto s = make_state();
        load_ab(s.get(), c.breaks);
        uint8_t old[64];
        std::memcpy(old, s->p[1], 64);
        const uint64_t nzcv_before = s->nzcv;
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        for (unsigned k = 0; k < 64; ++k) {
            const bool active = uint64_t(0x2f) >> k & 1;
            const uint8_t want = active ? uint8_t(c.want >> k & 1) : c.merging ? old[k] : 0;
            EXPECT_EQ(s->p[1][k], want) << c.name << ": byte " << k;
        }
        EXPECT_EQ(s->nzcv, nzcv_before) << c.name;
    }
}

// brkas, brkbs p1.b, p2/z, p3.b: zeroing, flags PredTest(Pg, result).
TEST(PredBreak, BrkasBrkbsTable) {
    const PredRow rows[] = {
        {"brkas", VecPBreakAFlgPZ, 0x25504861, 0, ~0ull, 0x2f, 0x24, 0, 0x07, F(1, 0, 1), true},
        {"brkbs", VecPBreakBFlgPZ, 0x25d04861, 0, ~0ull, 0x2f, 0x24, 0, 0x03, F(1, 0, 1), true},
        {"brkas, break first", VecPBreakAFlgPZ, 0x25504861, 0, ~0ull, 0x2f, 0x01, 0, 0x01, F(1, 0, 1), true},
        {"brkbs, break first", VecPBreakBFlgPZ, 0x25d04861, 0, ~0ull, 0x2f, 0x01, 0, 0, F(0, 1, 1), true},
        {"brkas, no break", VecPBreakAFlgPZ, 0x25504861, 0, ~0ull, 0x2f, 0x10, 0, 0x2f, F(1, 0, 0), true},
        {"brkbs, empty Pg", VecPBreakBFlgPZ, 0x25d04861, 0, ~0ull, 0, ~0ull, 0, 0, F(0, 1, 1), true},
        {"brkas, break at the last", VecPBreakAFlgPZ, 0x25504861, 0, 0, ~0ull, 1ull << 63, 0, ~0ull, F(1, 0, 0), true},
    };
    run_pred_rows(rows);
}

// ---------------------------------------------------------------------------
// BRKN p1.b, p2/z, p3.b, p1.b: Pdm is cleared, or left exactly as it was,
// by Pn's whole byte at Pg's last active position. BRKNS then tests Pdm as
// it stands against an all-true mask. Pdm holds 0 but for bytes 0, 5, 63.
TEST(PredBreak, BrknAndBrkns) {
    const struct {
        const char* name;
        uint64_t pg;
        int pn_at;  // Pn is 0 but for this byte
        uint8_t pn_byte, d0, d5, d63;
        bool keeps;
        unsigned flags;
    } cases[] = {
        {"empty Pg", 0, 5, 1, 1, 1, 1, false, F(0, 1, 1)},
        {"Pn byte 2 at the last active position", 1u << 3 | 1u << 10, 10, 2, 1, 0, 1, true, F(1, 0, 0)},
        {"Pn byte 1, Pdm byte 0 is 2", 1u << 3 | 1u << 10, 10, 1, 2, 1, 0xfe, true, F(0, 0, 1)},
        {"Pn byte 0", 1u << 3 | 1u << 10, 10, 0, 1, 1, 1, false, F(0, 1, 1)},
        {"Pn set only before the last active", 1u << 3 | 1u << 10, 3, 1, 1, 1, 1, false, F(0, 1, 1)},
        {"last active byte 63, no bit 0 kept", 1ull << 63, 63, 0x80, 2, 0x10, 0xfe, true, F(0, 1, 1)},
    };
    for (auto& c : cases)
        for (bool set_flags : {false, true}) {
            auto s = make_state();
            set_pelems(s->p[2], 0, c.pg);
            std::memset(s->p[3], 0, 64);
            s->p[3][c.pn_at] = c.pn_byte;
            std::memset(s->p[1], 0, 64);
            s->p[1][0] = c.d0;
            s->p[1][5] = c.d5;
            s->p[1][63] = c.d63;
            uint8_t old[64];
            std::memcpy(old, s->p[1], 64);
            const unsigned flags_in = F(1, 1, 1, 1) ^ c.flags;
            s->nzcv = nzcv_with(flags_in);
            Handler h = set_flags ? VecPBreakNextFlgPZ : VecPBreakNextPZ;
            ASSERT_EQ(h(s.get(), set_flags ? 0x25584861 : 0x25184861), DECODE_OK);
            for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->p[1][k], c.keeps ? old[k] : 0) << c.name << ": " << k;
            EXPECT_EQ(flags(s.get()), set_flags ? c.flags : flags_in) << c.name;
            EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk) << c.name;
        }
}

// ---------------------------------------------------------------------------
// BRKPA, BRKPB and their flag-setting forms. Pg active at 1, 2, 4, 6; the
// last active position is 6.
struct PrevCase {
    const char* name;
    uint64_t pg;
    uint8_t pn6;      // Pn's byte at position 6
    uint8_t pn_rest;  // Pn's other bytes
    uint64_t pm;
    uint64_t want_a, want_b;  // brkpa and brkpb results
    unsigned flags_a, flags_b;
};

const PrevCase kPrev[] = {
    // BRKPA keeps the break element, BRKPB stops before it.
    {"break at 4", 0x56, 1, 0, 1u << 4 | 1u << 3, 0x16, 0x06, F(1, 0, 1), F(1, 0, 1)},
    // The packed route sees bit 0 of Pn (clear in 2); brkpb's kernel sees
    // the whole byte (non-zero).
    {"Pn byte 2 at the last active position", 0x56, 2, 0, 1u << 4, 0, 0x06, F(0, 1, 1), F(1, 0, 1)},
    {"Pn clear at the last active position", 0x56, 0, 0xff, 1u << 4, 0, 0, F(0, 1, 1), F(0, 1, 1)},
    {"break only at an inactive position", 0x56, 1, 0, 1u << 3, 0x56, 0x56, F(1, 0, 0), F(1, 0, 0)},
    {"break at the first active", 0x56, 1, 0, 1u << 1, 0x02, 0, F(1, 0, 1), F(0, 1, 1)},
    {"empty Pg", 0, 1, 0xff, 0, 0, 0, F(0, 1, 1), F(0, 1, 1)},
};

void load_prev(cpu_state* s, const PrevCase& c) {
    set_pelems(s->p[2], 0, c.pg);
    std::memset(s->p[3], c.pn_rest, 64);
    s->p[3][6] = c.pn6;
    set_pelems(s->p[4], 0, c.pm);
}

TEST(PredBreak, BrkpbTable) {
    for (const PrevCase& c : kPrev) {
        auto s = make_state();
        load_prev(s.get(), c);
        const uint64_t nzcv_before = s->nzcv;
        ASSERT_EQ(VecPBreakPrevBPZ(s.get(), 0x2504c871), DECODE_OK) << c.name;
        expect_clean_elems(s->p[1], 0, c.want_b, c.name);
        EXPECT_EQ(s->nzcv, nzcv_before) << c.name;

        s = make_state();
        load_prev(s.get(), c);
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.flags_b);
        ASSERT_EQ(VecPBreakPrevBFlgPZ(s.get(), 0x2544c871), DECODE_OK) << c.name;
        expect_clean_elems(s->p[1], 0, c.want_b, c.name);
        EXPECT_EQ(flags(s.get()), c.flags_b) << c.name;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk) << c.name;
    }
}

TEST(PredBreak, BrkpaTable) {
    for (const PrevCase& c : kPrev) {
        auto s = make_state();
        load_prev(s.get(), c);
        s->nzcv = nzcv_with(F(1, 0, 1, 1));
        ASSERT_EQ(VecPBreakPrevAPZ(s.get(), 0x2504c861), DECODE_OK) << c.name;
        expect_clean_elems(s->p[1], 0, c.want_a, c.name);
        EXPECT_EQ(flags(s.get()), F(1, 0, 1, 1)) << c.name << ": brkpa sets no flag";

        s = make_state();
        load_prev(s.get(), c);
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.flags_a);
        ASSERT_EQ(VecPBreakPrevAFlgPZ(s.get(), 0x2544c861), DECODE_OK) << c.name;
        expect_clean_elems(s->p[1], 0, c.want_a, c.name);
        EXPECT_EQ(flags(s.get()), c.flags_a) << c.name;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk & 0x0fffffffu) << c.name;
    }
}

// brkpbs p2.b, p2/z, p3.b, p4.b: the flags see the old Pg, whose last active
// element (6) is false in the result; the result alone would end true.
TEST(PredBreak, BrkpbsFlagsUseOldPgWhenPdIsPg) {
    auto s = make_state();
    load_prev(s.get(), kPrev[0]);
    VecPBreakPrevBFlgPZ(s.get(), 0x2544c872);
    expect_clean_elems(s->p[2], 0, 0x06, "brkpbs into Pg");
    EXPECT_EQ(flags(s.get()), F(1, 0, 1));
}

}  // namespace
