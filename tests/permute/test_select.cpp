// TBL, EXT, SPLICE, COMPACT and the unpacks.
#include "perm_test_util.h"

namespace {
using namespace permtest;

// Zn (the table) holds bytes 0x00..0x3f; each row puts one index into element
// `at` of Zm and names the element the result must hold there.
struct TblCase {
    uint32_t size;
    unsigned at;
    uint64_t index, expect;
} const kTbl[] = {
    {0, 0, 0, 0x00},
    {0, 1, 63, 0x3f},
    {0, 2, 64, 0},  // index = element count
    {0, 63, 255, 0},
    {1, 0, 31, 0x3f3e},
    {1, 1, 32, 0},      // element count
    {1, 2, 0x0100, 0},  // not element 0: the whole element is the index
    {1, 3, 0xffff, 0},
    {1, 31, 1, 0x0302},
    {2, 0, 15, 0x3f3e3d3c},
    {2, 1, 16, 0},
    {2, 2, 0x80000000u, 0},
    {2, 15, 0x100, 0},
    {3, 0, 7, 0x3f3e3d3c3b3a3938ull},
    {3, 1, 8, 0},
    {3, 2, 1ull << 32, 0},  // no truncation to 32 bits
    {3, 3, 1ull << 63, 0},
    {3, 7, 0, 0x0706050403020100ull},
};

void put_any(uint8_t* r, uint32_t size, unsigned i, uint64_t v) { std::memcpy(r + (i << size), &v, 1u << size); }
uint64_t get_any(const uint8_t* r, uint32_t size, unsigned i) {
    uint64_t v = 0;
    std::memcpy(&v, r + (i << size), 1u << size);
    return v;
}

TEST(Tbl, IndicesAtAndPastTheEndOfTheTable) {
    for (const TblCase& c : kTbl) {
        auto s = noisy_state();
        seq(s->z[1], 0);
        // Every other element of Zm asks for element 0, so its result is known.
        std::memset(s->z[2], 0, 64);
        put_any(s->z[2], c.size, c.at, c.index);
        sve_tbl_zzz(s.get(), {3, c.size, 5, 5}, {1, c.size, 5, 5}, {2, c.size, 5, 5});
        EXPECT_EQ(get_any(s->z[3], c.size, c.at), c.expect) << "size " << c.size << " index " << c.index;
        unsigned other = c.at == 0 ? 1 : 0;
        EXPECT_EQ(get_any(s->z[3], c.size, other), get_any(s->z[1], c.size, 0));
    }
}

TEST(Tbl, DestinationEqualToTableAndIndices) {
    auto s = noisy_state();
    for (unsigned i = 0; i < 64; ++i) s->z[4][i] = static_cast<uint8_t>(63 - i);
    sve_tbl_zzz(s.get(), {4, 0, 5, 5}, {4, 0, 5, 5}, {4, 0, 5, 5});  // tbl z4.b, {z4.b}, z4.b
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(s->z[4][i], i);
}

TEST(Ext, OffsetsAtTheEdges) {
    struct {
        unsigned imm;
        uint8_t first, last;  // bytes 0 and 63 of the result
    } const cases[] = {
        {0, 0x00, 0x3f},  {1, 0x01, 0x40},   {32, 0x20, 0x5f},
        {63, 0x3f, 0x7e}, {64, 0x00, 0x3f},  // 64 or more counts as 0
        {200, 0x00, 0x3f}, {255, 0x00, 0x3f},
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        seq(s->z[1], 0x00);
        seq(s->z[2], 0x40);
        sve_ext_zzi(s.get(), {1, 5, 0, 0}, {2, 0, 5, 5}, c.imm);
        EXPECT_EQ(s->z[1][0], c.first) << c.imm;
        EXPECT_EQ(s->z[1][63], c.last) << c.imm;
        unsigned off = c.imm > 63 ? 0 : c.imm;
        for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->z[1][k], off + k) << c.imm << " byte " << k;
    }
}

TEST(Ext, ZdnEqualToZm) {
    auto s = noisy_state();
    seq(s->z[9], 0x00);
    sve_ext_zzi(s.get(), {9, 5, 0, 0}, {9, 0, 5, 5}, 1);  // ext z9.b, z9.b, z9.b, #1: a rotation
    for (unsigned k = 0; k < 63; ++k) EXPECT_EQ(s->z[9][k], k + 1);
    EXPECT_EQ(s->z[9][63], 0x00);
}

// SPLICE: Zdn holds 0x00.., Zm 0x40..; results written as element indices.
TEST(Splice, SegmentOfZdnThenZm) {
    CpuContext c = ctx512();
    uint8_t a[64], b[64];
    seq(a, 0x00);
    seq(b, 0x40);
    struct {
        const char* what;
        VecVal (*op)(PredV, VecVal, VecVal, CpuContext*);
        unsigned bytes;
        PredV pg;
        unsigned from_zdn_first, from_zdn_count;  // a run of Zdn elements at the low end
    } const cases[] = {
        {"none active: Zm", VecU32SpliceVV, 4, packed({1, 2, 3, 61}), 0, 0},  // bits off the .s elements
        {"only the last", VecU32SpliceVV, 4, packed({60}), 15, 1},
        {"2 and 4: the inactive 3 comes too", VecU32SpliceVV, 4, packed({8, 16}), 2, 3},
        {"all", VecU32SpliceVV, 4, packed({0, 4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 48, 52, 56, 60}), 0, 16},
        {"only the first .b", VecU8SpliceVV, 1, packed({0}), 0, 1},
        {"5 to 62 .b", VecU8SpliceVV, 1, packed({5, 62}), 5, 58},
        {"the last .d", VecU64SpliceVV, 8, packed({56}), 7, 1},
        {".h 31 only", VecU16SpliceVV, 2, packed({62, 63}), 31, 1},
    };
    for (const auto& k : cases) {
        VecVal r = k.op(k.pg, vec_of(a), vec_of(b), &c);
        unsigned n = 64 / k.bytes;
        for (unsigned e = 0; e < n; ++e) {
            const uint8_t* src = e < k.from_zdn_count ? a + (k.from_zdn_first + e) * k.bytes : b + (e - k.from_zdn_count) * k.bytes;
            ASSERT_EQ(0, std::memcmp(r.b + e * k.bytes, src, k.bytes)) << k.what << " element " << e;
        }
    }
    // Spelled out once: 2 and 4 active at .s.
    VecVal r = VecU32SpliceVV(packed({8, 16}), vec_of(a), vec_of(b), &c);
    EXPECT_EQ(get<uint32_t>(r.b, 0), 0x0b0a0908u);
    EXPECT_EQ(get<uint32_t>(r.b, 2), 0x13121110u);
    EXPECT_EQ(get<uint32_t>(r.b, 3), 0x43424140u);
    EXPECT_EQ(get<uint32_t>(r.b, 15), 0x73727170u);
}

TEST(Compact, ActiveElementsPackedLowZerosAbove) {
    CpuContext c = ctx512();
    uint8_t z[64];
    seq(z, 0x00);
    VecVal r = VecU32CompressVV(packed({0, 4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 48, 52, 56, 60}), vec_of(z), &c);
    EXPECT_EQ(bytes(r.b, 0, 64), reg(z));
    r = VecU32CompressVV(packed({1, 2, 3, 5, 63}), vec_of(z), &c);  // no .s element active
    EXPECT_EQ(bytes(r.b, 0, 64), std::vector<uint8_t>(64, 0));
    r = VecU32CompressVV(packed({4, 12, 60}), vec_of(z), &c);  // elements 1, 3, 15
    EXPECT_EQ(get<uint32_t>(r.b, 0), 0x07060504u);
    EXPECT_EQ(get<uint32_t>(r.b, 1), 0x0f0e0d0cu);
    EXPECT_EQ(get<uint32_t>(r.b, 2), 0x3f3e3d3cu);
    for (unsigned e = 3; e < 16; ++e) EXPECT_EQ(get<uint32_t>(r.b, e), 0u) << e;
    r = VecU64CompressVV(packed({4, 56}), vec_of(z), &c);  // element 7 only
    EXPECT_EQ(get<uint64_t>(r.b, 0), 0x3f3e3d3c3b3a3938ull);
    for (unsigned e = 1; e < 8; ++e) EXPECT_EQ(get<uint64_t>(r.b, e), 0u) << e;
}

// Source values at the edges of both halves, extended by sign or by zero.
TEST(Unpack, SignAndZeroExtensionOfBothHalves) {
    uint8_t src[64];
    seq(src, 0x00);
    put<uint8_t>(src, 0, 0x80);
    put<uint8_t>(src, 31, 0xff);
    put<uint8_t>(src, 32, 0x80);
    put<uint8_t>(src, 63, 0x7f);
    CpuContext c = ctx512();
    VecVal r = VecS16UnpackLoV(vec_of(src), &c);
    EXPECT_EQ(get<uint16_t>(r.b, 0), 0xff80);
    EXPECT_EQ(get<uint16_t>(r.b, 1), 0x0001);
    EXPECT_EQ(get<uint16_t>(r.b, 31), 0xffff);
    r = VecS16UnpackHiV(vec_of(src), &c);
    EXPECT_EQ(get<uint16_t>(r.b, 0), 0xff80);
    EXPECT_EQ(get<uint16_t>(r.b, 1), 0x0021);
    EXPECT_EQ(get<uint16_t>(r.b, 31), 0x007f);

    uint8_t h[64];
    seq(h, 0x00);
    put<uint16_t>(h, 0, 0x8000);
    put<uint16_t>(h, 16, 0x8001);
    put<uint16_t>(h, 31, 0x7fff);
    r = VecS32UnpackLoV(vec_of(h), &c);
    EXPECT_EQ(get<uint32_t>(r.b, 0), 0xffff8000u);
    EXPECT_EQ(get<uint32_t>(r.b, 15), 0x00001f1eu);
    r = VecS32UnpackHiV(vec_of(h), &c);
    EXPECT_EQ(get<uint32_t>(r.b, 0), 0xffff8001u);
    EXPECT_EQ(get<uint32_t>(r.b, 15), 0x00007fffu);

    auto s = noisy_state();
    std::memcpy(s->z[1], src, 64);
    sve_uunpklo_b2h_zz(s.get(), {2, 1, 5, 5}, {1, 0, 5, 5});
    EXPECT_EQ(get<uint16_t>(s->z[2], 0), 0x0080);
    EXPECT_EQ(get<uint16_t>(s->z[2], 31), 0x00ff);
    sve_uunpkhi_b2h_zz(s.get(), {2, 1, 5, 5}, {1, 0, 5, 5});
    EXPECT_EQ(get<uint16_t>(s->z[2], 0), 0x0080);
    EXPECT_EQ(get<uint16_t>(s->z[2], 31), 0x007f);

    std::memcpy(s->z[3], h, 64);
    sve_uunpklo_h2s_zz(s.get(), {4, 2, 5, 5}, {3, 1, 5, 5});
    EXPECT_EQ(get<uint32_t>(s->z[4], 0), 0x00008000u);
    sve_uunpkhi_h2s_zz(s.get(), {4, 2, 5, 5}, {3, 1, 5, 5});
    EXPECT_EQ(get<uint32_t>(s->z[4], 0), 0x00008001u);
    EXPECT_EQ(get<uint32_t>(s->z[4], 15), 0x00007fffu);

    uint8_t w[64];
    seq(w, 0x00);
    put<uint32_t>(w, 0, 0xffffffffu);
    put<uint32_t>(w, 7, 0x7fffffffu);
    put<uint32_t>(w, 8, 0x80000000u);
    put<uint32_t>(w, 15, 0x00000001u);
    struct {
        aarch64_decode_rc (*k)(cpu_state*, aarch64_z_reg, aarch64_z_reg);
        uint64_t e0, e7;
    } const wide[] = {
        {sve_sunpklo_s2d_zz, 0xffffffffffffffffull, 0x000000007fffffffull},
        {sve_sunpkhi_s2d_zz, 0xffffffff80000000ull, 0x0000000000000001ull},
        {sve_uunpklo_s2d_zz, 0x00000000ffffffffull, 0x000000007fffffffull},
        {sve_uunpkhi_s2d_zz, 0x0000000080000000ull, 0x0000000000000001ull},
    };
    for (const auto& k : wide) {
        std::memcpy(s->z[5], w, 64);
        k.k(s.get(), {5, 3, 5, 5}, {5, 2, 5, 5});  // Zd is Zn
        EXPECT_EQ(get<uint64_t>(s->z[5], 0), k.e0);
        EXPECT_EQ(get<uint64_t>(s->z[5], 7), k.e7);
    }
}

// PUNPKLO/PUNPKHI: bit 0 of source byte i (or 32 + i) becomes the first byte
// of 16-bit group i; the second byte of every group is 0.
TEST(Unpack, PredicateHalvesTakeBitZeroAndClearTheOddBytes) {
    auto s = noisy_state();
    std::memset(s->p[2], 0xfe, 64);  // every bit 0 clear, every other bit set
    s->p[2][0] = 0x03;
    s->p[2][31] = 0x01;
    s->p[2][32] = 0xff;
    s->p[2][63] = 0x81;
    std::memset(s->p[1], 0xff, 64);
    sve_punpklo_pp(s.get(), {1, 1, 7, 7}, {2, 0, 7, 7});
    std::vector<uint8_t> lo(64, 0);
    lo[0] = 1;
    lo[62] = 1;
    EXPECT_EQ(reg(s->p[1]), lo);
    sve_punpkhi_pp(s.get(), {2, 1, 7, 7}, {2, 0, 7, 7});  // Pd is Pn
    std::vector<uint8_t> hi(64, 0);
    hi[0] = 1;
    hi[62] = 1;
    EXPECT_EQ(reg(s->p[2]), hi);
}

}  // namespace
