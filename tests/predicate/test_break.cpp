// The break instructions on junk-filled registers: which read bit 0 and
// which a whole byte, which keep whole bytes and which write clean ones.
// Registers: Pd (or Pdm) p1, Pg p2, Pn p3, Pm p4.
#include "pred_test.h"

using namespace pt;

namespace {

// BRKA/BRKB kernels: Pg active at bytes 0, 1, 2, 3, 5 under junk upper
// bits, inactive bytes 0xfe; Pn breaks at 2 and 5, 0xfe elsewhere. Active
// bytes come out 0 or 1; inactive ones 0 (zeroing) or Pd's old whole byte.
TEST(PredBreak, BrkaBrkbKernels) {
    const struct {
        const char* name;
        Handler handler;
        unsigned word;
        bool merging;
        uint64_t want;
    } cases[] = {
        {"brka /z", VecPBreakAPZ, 0x25104861, false, 0x07},
        {"brka /m", VecPBreakAPM, 0x25104871, true, 0x07},
        {"brkb /z", VecPBreakBPZ, 0x25904861, false, 0x03},
        {"brkb /m", VecPBreakBPM, 0x25904871, true, 0x03},
    };
    const uint64_t g = 0x2f, breaks = 1u << 2 | 1u << 5;
    for (auto& c : cases) {
        auto s = make_state();
        for (unsigned k = 0; k < 64; ++k) {
            s->p[2][k] = (g >> k & 1) ? uint8_t(1 | junk_hi(k)) : 0xfe;
            s->p[3][k] = (breaks >> k & 1) ? uint8_t(1 | junk_hi(k + 1)) : 0xfe;
        }
        uint8_t old[64];
        std::memcpy(old, s->p[1], 64);
        const uint64_t nzcv_before = s->nzcv;
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        for (unsigned k = 0; k < 64; ++k) {
            const uint8_t want = (g >> k & 1) ? uint8_t(c.want >> k & 1) : c.merging ? old[k] : 0;
            EXPECT_EQ(s->p[1][k], want) << c.name << ": byte " << k;
        }
        EXPECT_EQ(s->nzcv, nzcv_before) << c.name;
    }
}

// BRKN(S) p1.b, p2/z, p3.b, p1.b: Pn's whole byte at Pg's last active
// position clears Pdm or leaves it exactly as it was. BRKNS then tests Pdm
// as it stands (bit 0 of each byte) against an all-true mask. Pdm holds 0
// but for bytes 0, 5, 63.
TEST(PredBreak, BrknAndBrkns) {
    const struct {
        const char* name;
        unsigned last;  // Pg = {3, last}; Pn is 0 but for byte `last`
        uint8_t pn_byte, d0, d5, d63;
        bool keeps;
        unsigned flags;
    } cases[] = {
        {"Pn byte 1, Pdm byte 0 is 2", 10, 1, 2, 1, 0xfe, true, F(0, 0, 1)},
        {"Pn byte 0", 10, 0, 1, 1, 1, false, F(0, 1, 1)},
        {"Pn byte 0x80, no bit 0 kept", 63, 0x80, 2, 0x10, 0xfe, true, F(0, 1, 1)},
    };
    for (auto& c : cases)
        for (bool set_flags : {false, true}) {
            auto s = make_state();
            set_pelems(s->p[2], 0, 1ull << 3 | 1ull << c.last);
            std::memset(s->p[3], 0, 64);
            s->p[3][c.last] = c.pn_byte;
            uint8_t old[64] = {c.d0, 0, 0, 0, 0, c.d5};
            old[63] = c.d63;
            std::memcpy(s->p[1], old, 64);
            const unsigned flags_in = F(1, 1, 1, 1) ^ c.flags;
            s->nzcv = nzcv_with(flags_in);
            Handler h = set_flags ? VecPBreakNextFlgPZ : VecPBreakNextPZ;
            ASSERT_EQ(h(s.get(), set_flags ? 0x25584861 : 0x25184861), DECODE_OK);
            for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->p[1][k], c.keeps ? old[k] : 0) << c.name << ": " << k;
            EXPECT_EQ(flags(s.get()), set_flags ? c.flags : flags_in) << c.name;
            EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk) << c.name;
        }
}

// BRKPA(S) run the packed reference route and see bit 0 of Pn; BRKPB(S)
// run kernels that see Pn's whole byte. Pg active at 1, 2, 4, 6 (last 6),
// Pm at 4.
TEST(PredBreak, BrkpaBrkpbReadPnDifferently) {
    const struct {
        const char* name;
        Handler handler;
        unsigned word;
        bool is_a, sets_flags, reference_route;
    } forms[] = {
        {"brkpa", VecPBreakPrevAPZ, 0x2504c861, true, false, true},
        {"brkpas", VecPBreakPrevAFlgPZ, 0x2544c861, true, true, true},
        {"brkpb", VecPBreakPrevBPZ, 0x2504c871, false, false, false},
        {"brkpbs", VecPBreakPrevBFlgPZ, 0x2544c871, false, true, false},
    };
    const struct {
        const char* name;
        uint8_t pn6, pn_rest;  // Pn's byte at 6, and its other bytes
        uint64_t want_a, want_b;
        unsigned flags_a, flags_b;
    } cases[] = {
        {"Pn byte 2 at the last active position", 2, 0, 0, 0x06, F(0, 1, 1), F(1, 0, 1)},
        {"Pn clear at the last active position, 0xff elsewhere", 0, 0xff, 0, 0, F(0, 1, 1), F(0, 1, 1)},
    };
    for (auto& f : forms)
        for (auto& c : cases) {
            auto s = make_state();
            set_pelems(s->p[2], 0, 0x56);
            std::memset(s->p[3], c.pn_rest, 64);
            s->p[3][6] = c.pn6;
            set_pelems(s->p[4], 0, 1u << 4);
            const unsigned want_flags = f.is_a ? c.flags_a : c.flags_b;
            const unsigned flags_in = f.sets_flags ? F(1, 1, 1, 1) ^ want_flags : F(1, 0, 1, 1);
            s->nzcv = nzcv_with(flags_in);
            ASSERT_EQ(f.handler(s.get(), f.word), DECODE_OK) << f.name;
            expect_clean_elems(s->p[1], 0, f.is_a ? c.want_a : c.want_b, f.name);
            EXPECT_EQ(flags(s.get()), f.sets_flags ? want_flags : flags_in) << f.name << ": " << c.name;
            EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, f.reference_route ? kNzcvJunk & 0x0fffffffu : kNzcvJunk)
                << f.name << ": " << c.name;
        }
}

}  // namespace
