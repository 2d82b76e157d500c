// ZIP, UZP, TRN, REV, TBL, EXT, SPLICE, COMPACT and the unpacks.
#include "perm_test_util.h"

namespace {
using namespace permtest;

typedef aarch64_decode_rc (*zzz_kernel)(cpu_state*, aarch64_z_reg, aarch64_z_reg, aarch64_z_reg);
aarch64_z_reg Z(uint32_t n, uint32_t size) { return {n, size, 5, 5}; }
aarch64_p_reg P(uint32_t n, uint32_t qual) { return {n, qual, 7, 7}; }

// Zn holds bytes 0x00..0x3f and Zm 0x40..0x7f, so each result byte names its
// source. First and last result bytes worked out by hand (n pairs):
//   zip1 a0 b0 a1 b1..  zip2 a[n] b[n]..  uzp1 a0 a2..|b0 b2..
//   uzp2 a1 a3..|b1 b3..  trn1 a0 b0 a2 b2..  trn2 a1 b1 a3 b3..
struct {
    const char* what;
    zzz_kernel k;
    uint32_t size;
    uint8_t first[8], last[8];
} const kPairs[] = {
    {"zip1.b", sve_zip1_zzz, 0, {0x00, 0x40, 0x01, 0x41, 0x02, 0x42, 0x03, 0x43}, {0x1c, 0x5c, 0x1d, 0x5d, 0x1e, 0x5e, 0x1f, 0x5f}},
    {"zip1.h", sve_zip1_zzz, 1, {0x00, 0x01, 0x40, 0x41, 0x02, 0x03, 0x42, 0x43}, {0x1c, 0x1d, 0x5c, 0x5d, 0x1e, 0x1f, 0x5e, 0x5f}},
    {"zip1.d", sve_zip1_zzz, 3, {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07}, {0x58, 0x59, 0x5a, 0x5b, 0x5c, 0x5d, 0x5e, 0x5f}},
    {"zip2.b", sve_zip2_zzz, 0, {0x20, 0x60, 0x21, 0x61, 0x22, 0x62, 0x23, 0x63}, {0x3c, 0x7c, 0x3d, 0x7d, 0x3e, 0x7e, 0x3f, 0x7f}},
    {"zip2.s", sve_zip2_zzz, 2, {0x20, 0x21, 0x22, 0x23, 0x60, 0x61, 0x62, 0x63}, {0x3c, 0x3d, 0x3e, 0x3f, 0x7c, 0x7d, 0x7e, 0x7f}},
    {"uzp1.b", sve_uzp1_zzz, 0, {0x00, 0x02, 0x04, 0x06, 0x08, 0x0a, 0x0c, 0x0e}, {0x70, 0x72, 0x74, 0x76, 0x78, 0x7a, 0x7c, 0x7e}},
    {"uzp1.h", sve_uzp1_zzz, 1, {0x00, 0x01, 0x04, 0x05, 0x08, 0x09, 0x0c, 0x0d}, {0x70, 0x71, 0x74, 0x75, 0x78, 0x79, 0x7c, 0x7d}},
    {"uzp2.s", sve_uzp2_zzz, 2, {0x04, 0x05, 0x06, 0x07, 0x0c, 0x0d, 0x0e, 0x0f}, {0x74, 0x75, 0x76, 0x77, 0x7c, 0x7d, 0x7e, 0x7f}},
    {"uzp2.d", sve_uzp2_zzz, 3, {0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f}, {0x78, 0x79, 0x7a, 0x7b, 0x7c, 0x7d, 0x7e, 0x7f}},
    {"trn1.b", sve_trn1_zzz, 0, {0x00, 0x40, 0x02, 0x42, 0x04, 0x44, 0x06, 0x46}, {0x38, 0x78, 0x3a, 0x7a, 0x3c, 0x7c, 0x3e, 0x7e}},
    {"trn1.h", sve_trn1_zzz, 1, {0x00, 0x01, 0x40, 0x41, 0x04, 0x05, 0x44, 0x45}, {0x38, 0x39, 0x78, 0x79, 0x3c, 0x3d, 0x7c, 0x7d}},
    {"trn2.b", sve_trn2_zzz, 0, {0x01, 0x41, 0x03, 0x43, 0x05, 0x45, 0x07, 0x47}, {0x39, 0x79, 0x3b, 0x7b, 0x3d, 0x7d, 0x3f, 0x7f}},
    {"trn2.s", sve_trn2_zzz, 2, {0x04, 0x05, 0x06, 0x07, 0x44, 0x45, 0x46, 0x47}, {0x3c, 0x3d, 0x3e, 0x3f, 0x7c, 0x7d, 0x7e, 0x7f}},
    {"trn2.d", sve_trn2_zzz, 3, {0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f}, {0x78, 0x79, 0x7a, 0x7b, 0x7c, 0x7d, 0x7e, 0x7f}},
};

TEST(Permute, PairsAtTheEdgesOfTheRegister) {
    for (const auto& c : kPairs) {
        auto s = noisy_state();
        seq(s->z[2], 0x00);
        seq(s->z[3], 0x40);
        ASSERT_EQ(c.k(s.get(), Z(1, c.size), Z(2, c.size), Z(3, c.size)), DECODE_OK);
        EXPECT_EQ(bytes(s->z[1], 0, 8), std::vector<uint8_t>(c.first, c.first + 8)) << c.what;
        EXPECT_EQ(bytes(s->z[1], 56, 8), std::vector<uint8_t>(c.last, c.last + 8)) << c.what;
    }
}

// Predicate kernels move each group whole, its higher bytes too; the raw
// helper writes its 64 bytes and no more.
TEST(Permute, PredicateKernelsAndRawHelpers) {
    auto s = noisy_state();
    seq(s->p[2], 0x00);
    seq(s->p[3], 0x40);
    sve_zip1_ppp(s.get(), P(2, 1), P(2, 1), P(3, 1));  // Pd is Pn
    EXPECT_EQ(bytes(s->p[2], 0, 4), (std::vector<uint8_t>{0x00, 0x01, 0x40, 0x41}));
    seq(s->p[2], 0x00);
    sve_uzp1_ppp(s.get(), P(4, 1), P(2, 1), P(3, 1));
    EXPECT_EQ(bytes(s->p[4], 0, 4), (std::vector<uint8_t>{0x00, 0x01, 0x04, 0x05}));
    sve_zip2_ppp(s.get(), P(4, 0), P(2, 0), P(3, 0));
    EXPECT_EQ(bytes(s->p[4], 62, 2), (std::vector<uint8_t>{0x3f, 0x7f}));
    char a[64], b[64], d[72];
    seq(reinterpret_cast<uint8_t*>(a), 0x00);
    seq(reinterpret_cast<uint8_t*>(b), 0x40);
    std::memset(d, 0x5a, sizeof d);
    sve_uzp1(d, a, b, ES_B);
    EXPECT_EQ(bytes(reinterpret_cast<uint8_t*>(d), 30, 4), (std::vector<uint8_t>{0x3c, 0x3e, 0x40, 0x42}));
    EXPECT_EQ(bytes(reinterpret_cast<uint8_t*>(d), 63, 9), (std::vector<uint8_t>{0x7e, 0x5a, 0x5a, 0x5a, 0x5a, 0x5a, 0x5a, 0x5a, 0x5a}));
}

// The reference forms move one bit per element, the first of its group, and
// leave every other bit 0. At .h, element e is bit 2e; odd bits are junk.
TEST(Permute, PredicateReferenceFormsDropTheOtherBitsOfAGroup) {
    CpuContext c = ctx512();
    PredV pn = packed({2, 6, 12, 3, 9, 13}), pm = packed({0, 2, 62, 1, 5});  // Pn 1, 3, 6; Pm 0, 1, 31
    EXPECT_EQ(VecP16Uzp2PP(pn, pm, &c).w[0], 1ull << 0 | 1ull << 2 | 1ull << 32 | 1ull << 62);
    EXPECT_EQ(VecP16Trn1PP(pn, pm, &c).w[0], 1ull << 12 | 1ull << 2);
    EXPECT_EQ(VecP16Trn2PP(pn, pm, &c).w[0], 1ull << 0 | 1ull << 4 | 1ull << 2 | 1ull << 62);
    pn = packed({8, 24, 7});  // .d: Pn 1, 3; Pm 0, 7
    pm = packed({0, 56, 1});
    EXPECT_EQ(VecP64Uzp2PP(pn, pm, &c).w[0], 1ull << 0 | 1ull << 8 | 1ull << 56);
    EXPECT_EQ(VecP64Trn1PP(pn, pm, &c).w[0], 1ull << 8);
    EXPECT_EQ(VecP64Trn2PP(pn, pm, &c).w[0], 1ull << 0 | 1ull << 16 | 1ull << 56);
    EXPECT_EQ(VecP8Uzp2PP(packed({1, 63}), packed({3}), &c).w[0], 1ull << 0 | 1ull << 31 | 1ull << 33);
    EXPECT_EQ(VecP32Trn1PP(packed({0, 1, 2, 3}), packed({}), &c).w[0], 1ull);
    uint8_t a[64], b[64];
    seq(a, 0x00);
    seq(b, 0x40);
    VecVal r = VecU16Trn1VV(vec_of(a), vec_of(b), &c);
    EXPECT_EQ(bytes(r.b, 56, 8), (std::vector<uint8_t>{0x38, 0x39, 0x78, 0x79, 0x3c, 0x3d, 0x7c, 0x7d}));
    EXPECT_EQ(el(VecU64Trn1VV(vec_of(a), vec_of(b), &c).b, 8, 7), 0x7776757473727170ull);
}

TEST(Permute, ReverseVectorsAndPredicateGroups) {
    const uint8_t first[4][4] = {{0x3f, 0x3e, 0x3d, 0x3c}, {0x3e, 0x3f, 0x3c, 0x3d}, {0x3c, 0x3d, 0x3e, 0x3f}, {0x38, 0x39, 0x3a, 0x3b}};
    for (uint32_t size = 0; size < 4; ++size) {
        auto s = noisy_state();
        seq(s->z[4], 0);
        seq(s->p[1], 0);
        sve_rev_zz(s.get(), Z(4, size), Z(4, size));
        sve_rev_pp(s.get(), P(0, size), P(1, size));
        EXPECT_EQ(bytes(s->z[4], 0, 4), std::vector<uint8_t>(first[size], first[size] + 4)) << size;
        EXPECT_EQ(bytes(s->p[0], 0, 4), std::vector<uint8_t>(first[size], first[size] + 4)) << size;
        EXPECT_EQ(s->z[4][64 - (1u << size)], 0x00) << size;  // the first element went last
    }
}

// TBL: Zn is bytes 0x00..0x3f; one index goes into element `at` of Zm, whose
// other elements ask for element 0.
TEST(Permute, TblIndicesAtAndPastTheEndOfTheTable) {
    struct {
        unsigned bytes, at;
        uint64_t index, expect;
    } const cases[] = {
        {1, 1, 63, 0x3f},   {1, 2, 64, 0},     {1, 63, 255, 0},
        {2, 0, 31, 0x3f3e}, {2, 1, 32, 0},     {2, 2, 0x0100, 0},  // not element 0: no wrap
        {2, 31, 1, 0x0302}, {4, 0, 15, 0x3f3e3d3c}, {4, 1, 16, 0}, {4, 15, 0x80000000u, 0},
        {8, 0, 7, 0x3f3e3d3c3b3a3938ull}, {8, 1, 8, 0}, {8, 2, 1ull << 32, 0}, {8, 7, 1ull << 63, 0},
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        seq(s->z[1], 0);
        std::memset(s->z[2], 0, 64);
        set_el(s->z[2], c.bytes, c.at, c.index);
        uint32_t size = __builtin_ctz(c.bytes);
        sve_tbl_zzz(s.get(), Z(3, size), Z(1, size), Z(2, size));
        EXPECT_EQ(el(s->z[3], c.bytes, c.at), c.expect) << c.bytes << " " << c.index;
        EXPECT_EQ(el(s->z[3], c.bytes, c.at ? 0 : 1), el(s->z[1], c.bytes, 0));
    }
}

TEST(Permute, ExtOffsetsAtTheEdges) {
    for (unsigned imm : {0u, 1u, 32u, 63u, 64u, 200u, 255u}) {
        auto s = noisy_state();
        seq(s->z[1], 0x00);
        seq(s->z[2], 0x40);
        sve_ext_zzi(s.get(), {1, 5, 0, 0}, Z(2, 0), imm);
        unsigned off = imm > 63 ? 0 : imm;  // 64 and more count as 0: Zdn unchanged
        for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->z[1][k], off + k) << imm << " byte " << k;
    }
}

// SPLICE: Zdn 0x00.., Zm 0x40..; the result is a run of Zdn elements from
// `first` (`count` of them), then Zm from element 0.
TEST(Permute, SpliceSegmentOfZdnThenZm) {
    CpuContext c = ctx512();
    uint8_t a[64], b[64];
    seq(a, 0x00);
    seq(b, 0x40);
    struct {
        VecVal (*op)(PredV, VecVal, VecVal, CpuContext*);
        unsigned bytes;
        PredV pg;
        unsigned first, count;
    } const cases[] = {
        {VecU32SpliceVV, 4, packed({1, 2, 3, 61}), 0, 0},  // no .s element active: Zm
        {VecU32SpliceVV, 4, packed({60}), 15, 1},          // only the last
        {VecU32SpliceVV, 4, packed({8, 16}), 2, 3},        // 2 and 4: the inactive 3 comes too
        {VecU8SpliceVV, 1, packed({5, 62}), 5, 58},
        {VecU16SpliceVV, 2, packed({62, 63}), 31, 1},
        {VecU64SpliceVV, 8, packed({0, 8, 16, 24, 32, 40, 48, 56}), 0, 8},
    };
    for (const auto& k : cases) {
        VecVal r = k.op(k.pg, vec_of(a), vec_of(b), &c);
        for (unsigned e = 0; e < 64 / k.bytes; ++e)
            ASSERT_EQ(el(r.b, k.bytes, e), e < k.count ? el(a, k.bytes, k.first + e) : el(b, k.bytes, e - k.count))
                << k.bytes << " " << k.first << " element " << e;
    }
    EXPECT_EQ(el(VecU32SpliceVV(packed({8, 16}), vec_of(a), vec_of(b), &c).b, 4, 3), 0x43424140u);
}

TEST(Permute, CompactPacksActiveElementsLow) {
    CpuContext c = ctx512();
    uint8_t z[64];
    seq(z, 0x00);
    VecVal r = VecU32CompressVV(packed({4, 12, 60, 1}), vec_of(z), &c);  // elements 1, 3, 15
    const uint32_t want[4] = {0x07060504u, 0x0f0e0d0cu, 0x3f3e3d3cu, 0};
    for (unsigned e = 0; e < 16; ++e) EXPECT_EQ(el(r.b, 4, e), want[e < 3 ? e : 3]) << e;
    r = VecU64CompressVV(packed({0, 8, 16, 24, 32, 40, 48, 56}), vec_of(z), &c);
    EXPECT_EQ(bytes(r.b, 0, 64), bytes(z, 0, 64));
    r = VecU64CompressVV(packed({1, 2, 63}), vec_of(z), &c);
    EXPECT_EQ(bytes(r.b, 0, 64), std::vector<uint8_t>(64, 0));
}

// Source elements at the edges of both halves: byte 0 = 0x80, 31 = 0xff,
// 32 = 0x80, 63 = 0x7f; 16-bit 16 = 0x8001; 32-bit 0 = 0xffffffff, 8 = 0x80000000.
TEST(Permute, UnpackSignAndZeroExtensionOfBothHalves) {
    auto s = noisy_state();
    CpuContext c = ctx512();
    uint8_t* z = s->z[1];
    seq(z, 0x00);
    z[0] = 0x80, z[31] = 0xff, z[32] = 0x80, z[63] = 0x7f;
    EXPECT_EQ(el(VecS16UnpackLoV(vec_of(z), &c).b, 2, 0), 0xff80u);
    EXPECT_EQ(el(VecS16UnpackLoV(vec_of(z), &c).b, 2, 31), 0xffffu);
    EXPECT_EQ(el(VecS16UnpackHiV(vec_of(z), &c).b, 2, 31), 0x007fu);
    sve_uunpklo_b2h_zz(s.get(), Z(2, 1), Z(1, 0));
    EXPECT_EQ(el(s->z[2], 2, 31), 0x00ffu);
    sve_uunpkhi_b2h_zz(s.get(), Z(2, 1), Z(1, 0));
    EXPECT_EQ(el(s->z[2], 2, 0), 0x0080u);
    set_el(z, 2, 16, 0x8001);
    EXPECT_EQ(el(VecS32UnpackHiV(vec_of(z), &c).b, 4, 0), 0xffff8001u);
    EXPECT_EQ(el(VecS32UnpackLoV(vec_of(z), &c).b, 4, 0), 0x00000180u);
    sve_uunpkhi_h2s_zz(s.get(), Z(2, 2), Z(1, 1));
    EXPECT_EQ(el(s->z[2], 4, 0), 0x00008001u);
    sve_uunpklo_h2s_zz(s.get(), Z(2, 2), Z(1, 1));
    EXPECT_EQ(el(s->z[2], 4, 0), 0x00000180u);
    set_el(z, 4, 0, 0xffffffffu);
    set_el(z, 4, 8, 0x80000000u);
    struct {
        aarch64_decode_rc (*k)(cpu_state*, aarch64_z_reg, aarch64_z_reg);
        uint64_t e0;
    } const wide[] = {{sve_sunpklo_s2d_zz, ~0ull}, {sve_sunpkhi_s2d_zz, 0xffffffff80000000ull},
                      {sve_uunpklo_s2d_zz, 0xffffffffull}, {sve_uunpkhi_s2d_zz, 0x80000000ull}};
    for (const auto& k : wide) {
        k.k(s.get(), Z(3, 3), Z(1, 2));
        EXPECT_EQ(el(s->z[3], 8, 0), k.e0);
    }
}

// PUNPKLO/PUNPKHI: bit 0 of source byte i (or 32 + i) becomes the first byte
// of 16-bit group i, whatever else the byte holds; the second byte is 0.
TEST(Permute, PunpkTakesBitZeroAndClearsTheOddBytes) {
    auto s = noisy_state();
    std::memset(s->p[2], 0xfe, 64);
    s->p[2][0] = 0x03, s->p[2][31] = 0x01, s->p[2][32] = 0xff, s->p[2][63] = 0x81, s->p[2][33] = 0x02;
    std::vector<uint8_t> want(64, 0);
    want[0] = want[62] = 1;
    sve_punpklo_pp(s.get(), P(1, 1), P(2, 0));
    EXPECT_EQ(bytes(s->p[1], 0, 64), want);
    sve_punpkhi_pp(s.get(), P(2, 1), P(2, 0));  // Pd is Pn
    EXPECT_EQ(bytes(s->p[2], 0, 64), want);
}

// Every kernel that goes through a buffer or writes in place, with its
// destination also a source: the result must be what the same kernel gives
// with that source in another register holding the same bytes.
TEST(Permute, DestinationEqualToASource) {
    typedef void (*Run)(cpu_state*, unsigned d, unsigned src);
    const Run runs[] = {
        [](cpu_state* s, unsigned d, unsigned n) { sve_zip1_zzz(s, Z(d, 3), Z(n, 3), Z(9, 3)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_zip2_zzz(s, Z(d, 0), Z(9, 0), Z(m, 0)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_uzp1_zzz(s, Z(d, 1), Z(n, 1), Z(9, 1)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_uzp2_zzz(s, Z(d, 2), Z(9, 2), Z(m, 2)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_trn1_zzz(s, Z(d, 0), Z(n, 0), Z(9, 0)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_trn2_zzz(s, Z(d, 2), Z(9, 2), Z(m, 2)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_rev_zz(s, Z(d, 1), Z(n, 1)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_tbl_zzz(s, Z(d, 0), Z(n, 0), Z(9, 0)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_tbl_zzz(s, Z(d, 0), Z(9, 0), Z(m, 0)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_ext_zzi(s, {d, 5, 0, 0}, Z(m, 0), 5); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_sunpkhi_s2d_zz(s, Z(d, 3), Z(n, 2)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_uunpklo_b2h_zz(s, Z(d, 1), Z(n, 0)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_dup_zzi(s, Z(d, 2), Z(n, 2), 9); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_dup_zzi(s, Z(d, 4), Z(n, 4), 1); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_cpy_zpv(s, Z(d, 0), P(3, QUAL_MERGE), n); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_lastb_vpz(s, d, P(3, QUAL_PLAIN), Z(n, 1)); },
    };
    for (size_t i = 0; i < sizeof runs / sizeof runs[0]; ++i) {
        auto aliased = noisy_state(7), apart = noisy_state(7);
        pset(aliased->p[3], 1, {1, 2, 40});
        pset(apart->p[3], 1, {1, 2, 40});
        for (unsigned k = 0; k < 64; ++k) aliased->z[5][k] = apart->z[6][k] = static_cast<uint8_t>(k * 37 + 3);
        std::memcpy(apart->z[5], aliased->z[5], 64);
        runs[i](aliased.get(), 5, 5);
        runs[i](apart.get(), 5, 6);
        EXPECT_EQ(bytes(aliased->z[5], 0, 64), bytes(apart->z[5], 0, 64)) << "kernel " << i;
    }
}

}  // namespace
