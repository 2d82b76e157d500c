// Predicate logic, PTRUE/PFALSE, PFIRST, PNEXT, BRKAS/BRKBS, PTEST and FFR
// through their handlers: which kernels combine whole bytes, which writers
// clean, which routes normalise FFR. Ordinary results are the conformance
// sweep's. Unless a row says otherwise: Pd (or Pdn) p1, Pg p2, Pn p3, Pm p4.
#include "pred_test.h"

using namespace pt;

namespace {

// ---------------------------------------------------------------------------
// Logical kernels combine whole bytes. Bytes 0..9 are spelled out; 10..62
// are Pg 1 with both sources 0; 63 is inactive with both sources 1.
const uint8_t kPg[10] = {0x01, 0x01, 0x01, 0x01, 0x00, 0x03, 0xfe, 0x01, 0x01, 0x01};
const uint8_t kPn[10] = {0x03, 0x02, 0x00, 0x01, 0x01, 0x81, 0x01, 0xf0, 0x02, 0x00};
const uint8_t kPm[10] = {0x01, 0x03, 0x00, 0x00, 0x01, 0x01, 0x04, 0x0f, 0x04, 0x02};

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
    {"sel", VecPSelPP, 0x25044a71, {0x03, 0x02, 0, 1, 1, 0x81, 0x04, 0xf0, 0x02, 0x00}, 0, 1},
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
        const uint64_t nzcv_before = s->nzcv;
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        for (unsigned k = 0; k < 64; ++k)
            EXPECT_EQ(s->p[1][k], k < 10 ? c.head[k] : k < 63 ? c.middle : c.last) << c.name << ": byte " << k;
        EXPECT_EQ(s->nzcv, nzcv_before) << c.name;
    }
}

// No handler reaches the merging branch (they pass qualifier 5), so the
// sweep never does: it keeps Pd's whole byte where Pg is false.
TEST(PredLogic, MergingBranchKeepsOldBytes) {
    auto s = make_state();
    load_byte_operands(s.get());
    uint8_t old[64];
    std::memcpy(old, s->p[1], 64);
    sve_nor_pppp(s.get(), preg(1, ES_B), preg(2, QUAL_MERGE), preg(3, ES_B), preg(4, ES_B));
    for (unsigned k : {4u, 6u, 63u}) EXPECT_EQ(s->p[1][k], old[k]) << k;
    EXPECT_EQ(s->p[1][2], 1);
}

// ---------------------------------------------------------------------------
// Instructions that write p1 from p1..p4, each loaded with set_pelems at the
// row's element size: they read bit 0 of each element's first byte and
// write clean bytes; reference routes lose nzcv bits 63..32. `flags` -1:
// sets no flag. The reference route packs and unpacks alike for every
// handler, so a few of its rows stand for all.
struct PredRow {
    const char* name;
    Handler handler;
    unsigned word;
    unsigned size;
    uint64_t p1, p2, p3, p4;
    uint64_t want;
    int flags;
    bool reference_route;
};

constexpr uint64_t G = 0x80000000000000f0ull, N = 0x8000000000000030ull, M = 0x60, ALL = ~0ull;

const PredRow kRows[] = {
    // Pg = 4..7, 63; Pn = 4, 5, 63; Pm = 5, 6.
    {"ands", VecPAndFlgPPZ, 0x25444861, 0, ALL, G, N, M, 0x20, F(0, 0, 1), true},
    {"nand", VecPNandPPZ, 0x25844a71, 0, ALL, G, N, M, 0x80000000000000d0ull, -1, true},
    {"nands", VecPNandFlgPPZ, 0x25c44a71, 0, ALL, G, N, M, 0x80000000000000d0ull, F(1, 0, 0), true},
    // brkas, brkbs p1.b, p2/z, p3.b.
    {"brkas", VecPBreakAFlgPZ, 0x25504861, 0, ALL, 0x2f, 0x24, 0, 0x07, F(1, 0, 1), true},
    {"brkbs", VecPBreakBFlgPZ, 0x25d04861, 0, ALL, 0x2f, 0x24, 0, 0x03, F(1, 0, 1), true},
    // pfirst p1.b, p2, p1.b and pnext p1.<T>, p2, p1.<T>: Pdn p1, Pg/Pv p2.
    {"pfirst", VecPSetFirstActiveP, 0x2558c041, 0, 1u << 5, 1u << 3 | 1u << 7, 0, 0, 0x28, F(1, 0, 1), true},
    {"pnext .d", VecP64GenNextP, 0x25d9c441, 3, 1, 0x91, 0, 0, 1u << 4, F(0, 0, 1), false},
    // ptrue(s) p1.<T>, mul3 over a junk-filled p1; pfalse p1.b.
    {"ptrue .d", VecP64TrueI, 0x25d8e3c1, 3, ALL, 0, 0, 0, first_n(6), -1, false},
    {"ptrues .d", VecP64TrueFlgI, 0x25d9e3c1, 3, ALL, 0, 0, 0, first_n(6), F(1, 0, 0), true},
    {"pfalse", VecPFalse, 0x2518e401, 0, ALL, 0, 0, 0, 0, -1, false},
    // rdffrs p1.b, p2/z with FFR (0x27) under junk.
    {"rdffrs", VecPActualFlgP, 0x2558f041, 0, ALL, 0x0e, 0, 0, 0x06, F(1, 0, 1), true},
};

TEST(PredLogic, JunkInCleanOut) {
    for (const PredRow& r : kRows) {
        auto s = make_state();
        const uint64_t in[4] = {r.p1, r.p2, r.p3, r.p4};
        for (unsigned n = 0; n < 4; ++n) set_pelems(s->p[n + 1], r.size, in[n]);
        set_pelems(s->ffr, 0, 0x27);
        const unsigned flags_in = r.flags < 0 ? F(1, 0, 1, 1) : F(1, 1, 1, 1) ^ unsigned(r.flags);
        s->nzcv = nzcv_with(flags_in);
        ASSERT_EQ(r.handler(s.get(), r.word), DECODE_OK) << r.name;
        expect_clean_elems(s->p[1], r.size, r.want, r.name);
        EXPECT_EQ(flags(s.get()), r.flags < 0 ? flags_in : unsigned(r.flags)) << r.name;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, r.reference_route ? kNzcvJunk & 0x0fffffffu : kNzcvJunk) << r.name;
    }
}

// PTEST p2, p3.b: a byte of 2 is false (bit 0 only); nothing is written and
// nzcv bits 63..32 survive.
TEST(PredPtest, BitZeroOfEachByte) {
    auto s = make_state();
    std::memset(s->p[2], 1, 64);
    std::memset(s->p[3], 2, 64);
    uint8_t before[16][64];
    std::memcpy(before, s->p, sizeof before);
    ASSERT_EQ(VecPTestPZ(s.get(), 0x2550c860), DECODE_OK);
    EXPECT_EQ(flags(s.get()), F(0, 1, 1));
    EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk);
    EXPECT_EQ(std::memcmp(s->p, before, sizeof before), 0);
}

// ---------------------------------------------------------------------------
// FFR: kernels move whole bytes; the reference route cleans FFR on the way,
// whatever instruction it runs.
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
    ASSERT_EQ(VecPOrPPZ(s.get(), 0x25844861), DECODE_OK);  // orr: FFR untouched
    EXPECT_EQ(std::memcmp(s->ffr, ffr, 64), 0);
    ASSERT_EQ(VecPWriteFFSRP(s.get(), 0x25289060), DECODE_OK);  // wrffr p3.b
    EXPECT_EQ(std::memcmp(s->ffr, p3, 64), 0);
    ASSERT_EQ(VecPClearFFSR(s.get(), 0x252c9000), DECODE_OK);  // setffr
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->ffr[k], 1) << k;
    EXPECT_EQ(s->nzcv, nzcv_before);
}

TEST(PredFfr, ReferenceRouteNormalisesFfr) {
    auto s = make_state();
    uint8_t before[64];
    std::memcpy(before, s->ffr, 64);
    ASSERT_EQ(VecPOrNPPZ(s.get(), 0x25844871), DECODE_OK);  // orn, no FFR operand
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->ffr[k], before[k] & 1) << k;
}

}  // namespace
