// Predicate logic, PTRUE/PTRUES/PFALSE, PFIRST, PNEXT, PTEST and the FFR
// instructions, through their handlers with assembled words. Unless a row
// says otherwise: Pd (or Pdn) p1, Pg p2, Pn p3, Pm p4.
#include <vector>

#include "pred_test.h"

using namespace pt;

namespace {

// ---------------------------------------------------------------------------
// Logical kernels combine whole bytes. Bytes 0..9 are spelled out; 10..62
// are Pg 1 with both sources 0; 63 is inactive with both sources 1.
const uint8_t kPg[10] = {0x01, 0x01, 0x01, 0x01, 0x00, 0x03, 0xfe, 0x01, 0x01, 0x01};
const uint8_t kPn[10] = {0x03, 0x02, 0x00, 0x01, 0x01, 0x81, 0x01, 0xf0, 0x02, 0x00};
const uint8_t kPm[10] = {0x01, 0x03, 0x00, 0x00, 0x01, 0x01, 0x01, 0x0f, 0x04, 0x02};

struct ByteLogicCase {
    const char* name;
    Handler handler;
    unsigned word;
    uint8_t head[10], middle, last;
};

const ByteLogicCase kByteLogic[] = {
    {"and", VecPAndPPZ, 0x25044861, {0x01, 0x02, 0, 0, 0, 0x01, 0, 0x00, 0x00, 0x00}, 0, 0},
    {"bic", VecPBicPPZ, 0x25044871, {0x02, 0x00, 0, 1, 0, 0x80, 0, 0xf0, 0x02, 0x00}, 0, 0},
    {"eor", VecPXorPPZ, 0x25044a61, {0x02, 0x01, 0, 1, 0, 0x80, 0, 0xff, 0x06, 0x02}, 0, 0},
    {"orr", VecPOrPPZ, 0x25844861, {0x03, 0x03, 0, 1, 0, 0x81, 0, 0xff, 0x06, 0x02}, 0, 0},
    // nor takes each byte as a truth value: 0x02 and 0x04 are both true.
    {"nor", VecPNorPPZ, 0x25844a61, {0x00, 0x00, 1, 0, 0, 0x00, 0, 0x00, 0x00, 0x00}, 1, 0},
    // sel: Pn's byte where active, Pm's where not, both whole.
    {"sel", VecPSelPP, 0x25044a71, {0x03, 0x02, 0, 1, 1, 0x81, 1, 0xf0, 0x02, 0x00}, 0, 1},
};

void load_byte_operands(cpu_state* s) {
    for (unsigned k = 0; k < 64; ++k) {
        s->p[2][k] = k < 10 ? kPg[k] : k < 63 ? 1 : 0;
        s->p[3][k] = k < 10 ? kPn[k] : k < 63 ? 0 : 1;
        s->p[4][k] = k < 10 ? kPm[k] : k < 63 ? 0 : 1;
    }
}

TEST(PredLogic, KernelsCombineWholeBytes) {
    for (const ByteLogicCase& c : kByteLogic) {
        auto s = make_state();
        load_byte_operands(s.get());
        uint8_t ffr_before[64];
        std::memcpy(ffr_before, s->ffr, 64);
        const uint64_t nzcv_before = s->nzcv;
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        for (unsigned k = 0; k < 64; ++k)
            EXPECT_EQ(s->p[1][k], k < 10 ? c.head[k] : k < 63 ? c.middle : c.last) << c.name << ": byte " << k;
        EXPECT_EQ(s->instruction, c.word) << c.name;
        EXPECT_EQ(s->nzcv, nzcv_before) << c.name;
        EXPECT_EQ(std::memcmp(s->ffr, ffr_before, 64), 0) << c.name << ": kernels leave FFR's bytes alone";
    }
}

// The handlers pass qualifier 5; the merging branch keeps Pd's whole byte.
TEST(PredLogic, MergingBranchKeepsOldBytes) {
    auto s = make_state();
    load_byte_operands(s.get());
    uint8_t old[64];
    std::memcpy(old, s->p[1], 64);
    sve_nor_pppp(s.get(), preg(1, ES_B), preg(2, QUAL_MERGE), preg(3, ES_B), preg(4, ES_B));
    for (unsigned k : {4u, 6u, 63u}) EXPECT_EQ(s->p[1][k], old[k]) << k;
    EXPECT_EQ(s->p[1][2], 1);
}

// and p2.b, p2/z, p2.b, p4.b: Pd, Pg and Pn are one register.
TEST(PredLogic, KernelDestinationMayAliasSources) {
    auto s = make_state();
    std::memset(s->p[2], 0, 64);
    std::memset(s->p[4], 0, 64);
    const uint8_t g[4] = {0x03, 0x01, 0x00, 0xfe}, m[4] = {0x01, 0x00, 0x01, 0xff}, want[4] = {1, 0, 0, 0};
    std::memcpy(s->p[2], g, 4);
    std::memcpy(s->p[4], m, 4);
    VecPAndPPZ(s.get(), 0x25044842);
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->p[2][k], k < 4 ? want[k] : 0) << k;
}

// ---------------------------------------------------------------------------
// Reference routes and PNEXT: bit 0 of the first byte of each element, under
// junk everywhere else. Flags are PredTest(Pg, result) by hand.
constexpr uint64_t G = 0x80000000000000f0ull, N = 0x8000000000000030ull, M = 0x60, ALL = ~0ull;

const PredRow kRows[] = {
    // Pg = 4..7, 63; Pn = 4, 5, 63; Pm = 5, 6.
    {"ands", VecPAndFlgPPZ, 0x25444861, 0, ALL, G, N, M, 0x20, F(0, 0, 1), true},
    {"bics", VecPBicFlgPPZ, 0x25444871, 0, ALL, G, N, M, 0x8000000000000010ull, F(1, 0, 0), true},
    {"eors", VecPXorFlgPPZ, 0x25444a61, 0, ALL, G, N, M, 0x8000000000000050ull, F(1, 0, 0), true},
    {"nand", VecPNandPPZ, 0x25844a71, 0, ALL, G, N, M, 0x80000000000000d0ull, -1, true},
    {"nands", VecPNandFlgPPZ, 0x25c44a71, 0, ALL, G, N, M, 0x80000000000000d0ull, F(1, 0, 0), true},
    {"nors", VecPNorFlgPPZ, 0x25c44a61, 0, ALL, G, N, M, 0x80, F(0, 0, 1), true},
    {"orn", VecPOrNPPZ, 0x25844871, 0, ALL, G, N, M, 0x80000000000000b0ull, -1, true},
    {"orns", VecPOrNFlgPPZ, 0x25c44871, 0, ALL, G, N, M, 0x80000000000000b0ull, F(1, 0, 0), true},
    {"orrs", VecPOrFlgPPZ, 0x25c44861, 0, ALL, G, N, M, 0x8000000000000070ull, F(1, 0, 0), true},
    {"ands, empty Pg", VecPAndFlgPPZ, 0x25444861, 0, ALL, 0, ALL, ALL, 0, F(0, 1, 1), true},
    {"ands, nothing in common", VecPAndFlgPPZ, 0x25444861, 0, 0, 0xf0, 0x0f, ALL, 0, F(0, 1, 1), true},
    {"nors, all of Pg", VecPNorFlgPPZ, 0x25c44a61, 0, 0, ALL, 0, 0, ALL, F(1, 0, 0), true},
    // pfirst p1.b, p2, p1.b: Pdn p1, Pg p2.
    {"pfirst, empty Pg keeps Pdn", VecPSetFirstActiveP, 0x2558c041, 0, 0x5, 0, 0, 0, 0x5, F(0, 1, 1), true},
    {"pfirst", VecPSetFirstActiveP, 0x2558c041, 0, 1u << 5, 1u << 3 | 1u << 7, 0, 0, 0x28, F(1, 0, 1), true},
    {"pfirst, already set", VecPSetFirstActiveP, 0x2558c041, 0, 1u << 3, 1u << 3, 0, 0, 1u << 3, F(1, 0, 0), true},
    {"pfirst, Pg 0 and 63", VecPSetFirstActiveP, 0x2558c041, 0, 2, 1ull << 63 | 1, 0, 0, 3, F(1, 0, 1), true},
    // pnext p1.<T>, p2, p1.<T>: Pdn p1, Pv p2. Non-first bytes hold junk with bit 0 set.
    {"pnext .b, empty Pdn", VecP8GenNextP, 0x2519c441, 0, 0, 0x24, 0, 0, 1u << 2, F(1, 0, 1), false},
    {"pnext .b, 2 to 5", VecP8GenNextP, 0x2519c441, 0, 1u << 2, 0x24, 0, 0, 1u << 5, F(0, 0, 0), false},
    {"pnext .b, 3 to 5", VecP8GenNextP, 0x2519c441, 0, 1u << 3, 0x24, 0, 0, 1u << 5, F(0, 0, 0), false},
    {"pnext .b, at Pv's last", VecP8GenNextP, 0x2519c441, 0, 1u << 5, 0x24, 0, 0, 0, F(0, 1, 1), false},
    {"pnext .b, after Pv's last", VecP8GenNextP, 0x2519c441, 0, 1u << 7, 0x24, 0, 0, 0, F(0, 1, 1), false},
    {"pnext .b, to 63", VecP8GenNextP, 0x2519c441, 0, 1ull << 62 | 1, ALL, 0, 0, 1ull << 63, F(0, 0, 0), false},
    {"pnext .h, from the last", VecP16GenNextP, 0x2559c441, 1, 1u << 31, ALL, 0, 0, 0, F(0, 1, 1), false},
    {"pnext .s", VecP32GenNextP, 0x2599c441, 2, 1u << 1, 0xa, 0, 0, 1u << 3, F(0, 0, 0), false},
    {"pnext .s, empty Pdn", VecP32GenNextP, 0x2599c441, 2, 0, 0xa, 0, 0, 1u << 1, F(1, 0, 1), false},
    {"pnext .d", VecP64GenNextP, 0x25d9c441, 3, 1, 0x91, 0, 0, 1u << 4, F(0, 0, 1), false},
    {"pnext .d, empty Pv", VecP64GenNextP, 0x25d9c441, 3, 0, 0, 0, 0, 0, F(0, 1, 1), false},
};

TEST(PredLogic, ReferenceRoutesPfirstPnext) { run_pred_rows(kRows); }

// ands p2.b, p2/z, p3.b, p4.b: guard and flags use the old Pg. Pg = {3, 9}:
// the new Pg ({3}) would give C=0; with the old one element 9 is last.
TEST(PredLogic, FlagsUseOldGoverningPredicateWhenAliased) {
    auto s = make_state();
    set_pelems(s->p[2], 0, 1u << 3 | 1u << 9);
    set_pelems(s->p[3], 0, 1u << 3 | 1u << 4);
    set_pelems(s->p[4], 0, 1u << 3 | 1u << 9);
    VecPAndFlgPPZ(s.get(), 0x25444862);
    expect_clean_elems(s->p[2], 0, 1u << 3, "ands aliased");
    EXPECT_EQ(flags(s.get()), F(1, 0, 1));
}

TEST(PredLogic, ReferenceRouteNormalisesFfrKernelRouteDoesNot) {
    auto s = make_state();
    s->ffr[0] = 0xfe;
    s->ffr[1] = 0x03;
    uint8_t before[64];
    std::memcpy(before, s->ffr, 64);
    VecPOrPPZ(s.get(), 0x25844861);
    EXPECT_EQ(std::memcmp(s->ffr, before, 64), 0);
    VecPOrNPPZ(s.get(), 0x25844871);
    EXPECT_EQ(s->ffr[0], 0);
    EXPECT_EQ(s->ffr[1], 1);
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->ffr[k], before[k] & 1) << k;
}

// ---------------------------------------------------------------------------
// PTRUE p3.<T>, <pattern> and PTRUES: counts at 512 bits, by hand from the
// pattern rules. PTRUES tests the result against itself: N=1, Z=0, C=0 when
// anything is set.
TEST(PredPtrue, PatternsAndFlags) {
    const struct {
        unsigned size, pattern, count;
    } patterns[] = {
        {0, 0, 64}, {1, 0, 32}, {2, 0, 16}, {3, 0, 8},                 // POW2
        {0, 1, 1}, {3, 3, 3}, {3, 7, 7}, {3, 8, 8},                    // VL1..VL8
        {3, 9, 0}, {2, 9, 16}, {1, 10, 32}, {2, 10, 0}, {0, 11, 64},   // VL16..VL64
        {1, 11, 0}, {0, 12, 0}, {0, 13, 0}, {0, 14, 0}, {0, 28, 0},    // VL128, VL256, unnamed
        {0, 29, 64}, {3, 29, 8}, {0, 30, 63}, {1, 30, 30}, {2, 30, 15}, {3, 30, 6},  // MUL4, MUL3
        {0, 31, 64}, {1, 31, 32}, {2, 31, 16}, {3, 31, 8},             // ALL
    };
    const Handler ptrue[4] = {VecP8TrueI, VecP16TrueI, VecP32TrueI, VecP64TrueI};
    const Handler ptrues[4] = {VecP8TrueFlgI, VecP16TrueFlgI, VecP32TrueFlgI, VecP64TrueFlgI};
    std::vector<std::string> names;
    std::vector<PredRow> rows;
    for (auto& p : patterns)
        names.push_back("size " + std::to_string(p.size) + " pattern " + std::to_string(p.pattern));
    for (size_t i = 0; i < names.size(); ++i) {
        const auto& p = patterns[i];
        const uint64_t want = p.count >= 64 ? ALL : (1ull << p.count) - 1;
        const unsigned fields = p.size << 22 | p.pattern << 5 | 1;  // Pd p1
        rows.push_back({names[i].c_str(), ptrue[p.size], 0x2518e000u | fields, p.size, ALL, 0, 0, 0, want, -1, false});
        rows.push_back({names[i].c_str(), ptrues[p.size], 0x2519e000u | fields, p.size, ALL, 0, 0, 0, want,
                        int(p.count ? F(1, 0, 0) : F(0, 1, 1)), true});
    }
    run_pred_rows(rows.data(), rows.size());
}

TEST(PredPtrue, PfalseClearsAllBytes) {
    auto s = make_state();
    const uint64_t nzcv_before = s->nzcv;
    ASSERT_EQ(VecPFalse(s.get(), 0x2518e407), DECODE_OK);  // pfalse p7.b
    expect_clean_elems(s->p[7], 0, 0, "pfalse");
    EXPECT_EQ(s->nzcv, nzcv_before);
}

// PTEST p2, p3.b: byte granularity, bit 0 only, nothing written.
TEST(PredPtest, Table) {
    const struct {
        uint64_t pg, pn;
        unsigned flags;
    } cases[] = {
        {0, ALL, F(0, 1, 1)},       {ALL, 1, F(1, 0, 1)},           {1ull << 63, 1ull << 63, F(1, 0, 0)},
        {0xff00, 0x0100, F(1, 0, 1)}, {0xff00, 0x0200, F(0, 0, 1)}, {0xff00, 0x8000, F(0, 0, 0)},
    };
    for (auto& c : cases) {
        auto s = make_state();
        set_pelems(s->p[2], 0, c.pg);
        set_pelems(s->p[3], 0, c.pn);
        uint8_t before[16][64];
        std::memcpy(before, s->p, sizeof before);
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.flags);
        ASSERT_EQ(VecPTestPZ(s.get(), 0x2550c860), DECODE_OK);
        EXPECT_EQ(flags(s.get()), c.flags) << std::hex << c.pg << " " << c.pn;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk);
        EXPECT_EQ(std::memcmp(s->p, before, sizeof before), 0);
    }
    auto s = make_state();  // a result byte of 2 is clear
    std::memset(s->p[2], 1, 64);
    std::memset(s->p[3], 2, 64);
    VecPTestPZ(s.get(), 0x2550c860);
    EXPECT_EQ(flags(s.get()), F(0, 1, 1));
}

// ---------------------------------------------------------------------------
// FFR: kernels move whole bytes, the reference route cleans.
TEST(PredFfr, KernelsMoveWholeBytes) {
    auto s = make_state();
    const uint64_t nzcv_before = s->nzcv;
    uint8_t ffr[64], p2[64], p3[64];
    std::memcpy(ffr, s->ffr, 64);
    std::memcpy(p2, s->p[2], 64);
    std::memcpy(p3, s->p[3], 64);
    ASSERT_EQ(VecPActualP(s.get(), 0x2518f041), DECODE_OK);  // rdffr p1.b, p2/z
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->p[1][k], uint8_t(ffr[k] & p2[k])) << k;
    ASSERT_EQ(VecPReadFFSRP(s.get(), 0x2519f001), DECODE_OK);  // rdffr p1.b
    EXPECT_EQ(std::memcmp(s->p[1], ffr, 64), 0);
    ASSERT_EQ(VecPWriteFFSRP(s.get(), 0x25289060), DECODE_OK);  // wrffr p3.b
    EXPECT_EQ(std::memcmp(s->ffr, p3, 64), 0);
    ASSERT_EQ(VecPClearFFSR(s.get(), 0x252c9000), DECODE_OK);  // setffr
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->ffr[k], 1) << k;
    EXPECT_EQ(s->nzcv, nzcv_before);
}

// rdffrs p1.b, p2/z: FFR AND Pg, flags against Pg, FFR cleaned on the way.
TEST(PredFfr, RdffrsSetsFlagsAndNormalisesFfr) {
    const struct {
        uint64_t ffr, pg, want;
        unsigned flags;
    } cases[] = {
        {0x27, 0x0e, 0x06, F(1, 0, 1)}, {ALL, 0, 0, F(0, 1, 1)}, {0, ALL, 0, F(0, 1, 1)},
        {ALL, 1ull << 63, 1ull << 63, F(1, 0, 0)},
    };
    for (auto& c : cases) {
        auto s = make_state();
        set_pelems(s->ffr, 0, c.ffr);
        set_pelems(s->p[2], 0, c.pg);
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.flags);
        ASSERT_EQ(VecPActualFlgP(s.get(), 0x2558f041), DECODE_OK);
        expect_clean_elems(s->p[1], 0, c.want, "rdffrs");
        EXPECT_EQ(flags(s.get()), c.flags) << std::hex << c.ffr << " " << c.pg;
        expect_clean_elems(s->ffr, 0, c.ffr, "ffr after rdffrs");
    }
}

}  // namespace
