// ZIP, UZP, TRN and REV of vectors and of predicates.
#include "perm_test_util.h"

namespace {
using namespace permtest;

typedef aarch64_decode_rc (*zzz_kernel)(cpu_state*, aarch64_z_reg, aarch64_z_reg, aarch64_z_reg);

// Zn holds bytes 0x00..0x3f and Zm 0x40..0x7f, so each result byte names its
// source. The first and last eight result bytes are worked out by hand from
// the element rules (n = 32 / element bytes pairs):
//   zip1: a0 b0 a1 b1 ..   zip2: a[n] b[n] ..   uzp1: a0 a2 .. | b0 b2 ..
//   uzp2: a1 a3 .. | b1 b3 ..   trn1: a0 b0 a2 b2 ..   trn2: a1 b1 a3 b3 ..
struct Case {
    const char* what;
    zzz_kernel kernel;
    uint32_t size;
    uint8_t first[8], last[8];
} const kCases[] = {
    {"zip1 .b", sve_zip1_zzz, 0, {0x00, 0x40, 0x01, 0x41, 0x02, 0x42, 0x03, 0x43}, {0x1c, 0x5c, 0x1d, 0x5d, 0x1e, 0x5e, 0x1f, 0x5f}},
    {"zip1 .h", sve_zip1_zzz, 1, {0x00, 0x01, 0x40, 0x41, 0x02, 0x03, 0x42, 0x43}, {0x1c, 0x1d, 0x5c, 0x5d, 0x1e, 0x1f, 0x5e, 0x5f}},
    {"zip1 .s", sve_zip1_zzz, 2, {0x00, 0x01, 0x02, 0x03, 0x40, 0x41, 0x42, 0x43}, {0x1c, 0x1d, 0x1e, 0x1f, 0x5c, 0x5d, 0x5e, 0x5f}},
    {"zip1 .d", sve_zip1_zzz, 3, {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07}, {0x58, 0x59, 0x5a, 0x5b, 0x5c, 0x5d, 0x5e, 0x5f}},
    {"zip2 .b", sve_zip2_zzz, 0, {0x20, 0x60, 0x21, 0x61, 0x22, 0x62, 0x23, 0x63}, {0x3c, 0x7c, 0x3d, 0x7d, 0x3e, 0x7e, 0x3f, 0x7f}},
    {"zip2 .d", sve_zip2_zzz, 3, {0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27}, {0x78, 0x79, 0x7a, 0x7b, 0x7c, 0x7d, 0x7e, 0x7f}},
    {"uzp1 .b", sve_uzp1_zzz, 0, {0x00, 0x02, 0x04, 0x06, 0x08, 0x0a, 0x0c, 0x0e}, {0x70, 0x72, 0x74, 0x76, 0x78, 0x7a, 0x7c, 0x7e}},
    {"uzp1 .h", sve_uzp1_zzz, 1, {0x00, 0x01, 0x04, 0x05, 0x08, 0x09, 0x0c, 0x0d}, {0x70, 0x71, 0x74, 0x75, 0x78, 0x79, 0x7c, 0x7d}},
    {"uzp1 .d", sve_uzp1_zzz, 3, {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07}, {0x70, 0x71, 0x72, 0x73, 0x74, 0x75, 0x76, 0x77}},
    {"uzp2 .b", sve_uzp2_zzz, 0, {0x01, 0x03, 0x05, 0x07, 0x09, 0x0b, 0x0d, 0x0f}, {0x71, 0x73, 0x75, 0x77, 0x79, 0x7b, 0x7d, 0x7f}},
    {"uzp2 .s", sve_uzp2_zzz, 2, {0x04, 0x05, 0x06, 0x07, 0x0c, 0x0d, 0x0e, 0x0f}, {0x74, 0x75, 0x76, 0x77, 0x7c, 0x7d, 0x7e, 0x7f}},
    {"uzp2 .d", sve_uzp2_zzz, 3, {0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f}, {0x78, 0x79, 0x7a, 0x7b, 0x7c, 0x7d, 0x7e, 0x7f}},
    {"trn1 .b", sve_trn1_zzz, 0, {0x00, 0x40, 0x02, 0x42, 0x04, 0x44, 0x06, 0x46}, {0x38, 0x78, 0x3a, 0x7a, 0x3c, 0x7c, 0x3e, 0x7e}},
    {"trn1 .h", sve_trn1_zzz, 1, {0x00, 0x01, 0x40, 0x41, 0x04, 0x05, 0x44, 0x45}, {0x38, 0x39, 0x78, 0x79, 0x3c, 0x3d, 0x7c, 0x7d}},
    {"trn2 .b", sve_trn2_zzz, 0, {0x01, 0x41, 0x03, 0x43, 0x05, 0x45, 0x07, 0x47}, {0x39, 0x79, 0x3b, 0x7b, 0x3d, 0x7d, 0x3f, 0x7f}},
    {"trn2 .s", sve_trn2_zzz, 2, {0x04, 0x05, 0x06, 0x07, 0x44, 0x45, 0x46, 0x47}, {0x3c, 0x3d, 0x3e, 0x3f, 0x7c, 0x7d, 0x7e, 0x7f}},
    {"trn2 .d", sve_trn2_zzz, 3, {0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f}, {0x78, 0x79, 0x7a, 0x7b, 0x7c, 0x7d, 0x7e, 0x7f}},
};

TEST(Interleave, VectorKernelsAtTheEdgesOfTheRegister) {
    for (const Case& c : kCases) {
        auto s = noisy_state();
        seq(s->z[2], 0x00);
        seq(s->z[3], 0x40);
        ASSERT_EQ(c.kernel(s.get(), {1, c.size, 5, 5}, {2, c.size, 5, 5}, {3, c.size, 5, 5}), DECODE_OK) << c.what;
        EXPECT_EQ(bytes(s->z[1], 0, 8), std::vector<uint8_t>(c.first, c.first + 8)) << c.what;
        EXPECT_EQ(bytes(s->z[1], 56, 8), std::vector<uint8_t>(c.last, c.last + 8)) << c.what;
        EXPECT_EQ(reg(s->z[2])[63], 0x3f) << c.what << ": a source changed";
    }
}

// Every element, not only the edges: the rules restated per element index.
TEST(Interleave, EveryElementFollowsItsRule) {
    for (uint32_t size = 0; size < 4; ++size) {
        unsigned eb = 1u << size, n = 32 / eb;
        auto s = noisy_state(size);
        seq(s->z[2], 0x00);
        seq(s->z[3], 0x80);
        struct {
            zzz_kernel k;
            unsigned (*src)(unsigned e, unsigned n);  // element e of the result: source index, +64 for b
        } rules[] = {
            {sve_zip1_zzz, [](unsigned e, unsigned) { return (e & 1) * 64 + e / 2; }},
            {sve_zip2_zzz, [](unsigned e, unsigned n) { return (e & 1) * 64 + n + e / 2; }},
            {sve_uzp1_zzz, [](unsigned e, unsigned n) { return (e >= n) * 64 + 2 * (e % n); }},
            {sve_uzp2_zzz, [](unsigned e, unsigned n) { return (e >= n) * 64 + 2 * (e % n) + 1; }},
            {sve_trn1_zzz, [](unsigned e, unsigned) { return (e & 1) * 64 + (e & ~1u); }},
            {sve_trn2_zzz, [](unsigned e, unsigned) { return (e & 1) * 64 + (e | 1u); }},
        };
        for (auto& r : rules) {
            r.k(s.get(), {4, size, 5, 5}, {2, size, 5, 5}, {3, size, 5, 5});
            for (unsigned e = 0; e < 2 * n; ++e) {
                unsigned from = r.src(e, n);
                const uint8_t* src = from >= 64 ? s->z[3] : s->z[2];
                ASSERT_EQ(0, std::memcmp(s->z[4] + e * eb, src + (from % 64) * eb, eb)) << "size " << size << " e " << e;
            }
        }
    }
}

// The result goes through a buffer, so a destination that is also a source
// is read as it was before the instruction.
TEST(Interleave, DestinationEqualToASource) {
    auto s = noisy_state();
    seq(s->z[5], 0x00);
    seq(s->z[6], 0x40);
    sve_zip1_zzz(s.get(), {5, 3, 5, 5}, {5, 3, 5, 5}, {6, 3, 5, 5});  // zip1 z5.d, z5.d, z6.d
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(get<uint64_t>(s->z[5], 2 * i), 0x0706050403020100ull + 0x0808080808080808ull * i);
        EXPECT_EQ(get<uint64_t>(s->z[5], 2 * i + 1), 0x4746454443424140ull + 0x0808080808080808ull * i);
    }
    seq(s->z[7], 0x00);
    sve_uzp2_zzz(s.get(), {7, 0, 5, 5}, {7, 0, 5, 5}, {7, 0, 5, 5});  // uzp2 z7.b, z7.b, z7.b
    for (unsigned i = 0; i < 32; ++i) {
        EXPECT_EQ(s->z[7][i], 2 * i + 1);
        EXPECT_EQ(s->z[7][32 + i], 2 * i + 1);
    }
    seq(s->z[8], 0x00);
    seq(s->z[9], 0x40);
    sve_trn2_zzz(s.get(), {9, 2, 5, 5}, {8, 2, 5, 5}, {9, 2, 5, 5});  // trn2 z9.s, z8.s, z9.s
    EXPECT_EQ(get<uint32_t>(s->z[9], 0), 0x07060504u);
    EXPECT_EQ(get<uint32_t>(s->z[9], 1), 0x47464544u);
    EXPECT_EQ(get<uint32_t>(s->z[9], 15), 0x7f7e7d7cu);
}

TEST(Interleave, RawHelpersWriteOnlyTheirDestination) {
    char a[64], b[64], d[80];
    seq(reinterpret_cast<uint8_t*>(a), 0x00);
    seq(reinterpret_cast<uint8_t*>(b), 0x40);
    std::memset(d, 0x5a, sizeof d);
    sve_uzp1(d, a, b, ES_B);
    EXPECT_EQ(uint8_t(d[0]), 0x00);
    EXPECT_EQ(uint8_t(d[31]), 0x3e);
    EXPECT_EQ(uint8_t(d[32]), 0x40);
    EXPECT_EQ(uint8_t(d[63]), 0x7e);
    for (int k = 64; k < 80; ++k) EXPECT_EQ(d[k], 0x5a);
    sve_zip2(d, a, b, ES_H);
    EXPECT_EQ(get<uint16_t>(reinterpret_cast<uint8_t*>(d), 0), 0x2120);
    EXPECT_EQ(get<uint16_t>(reinterpret_cast<uint8_t*>(d), 1), 0x6160);
}

// The kernel forms of predicates move each group whole: the bytes above the
// first travel with it. Pn's bytes are 0x00..0x3f, Pm's 0x40..0x7f.
TEST(Interleave, PredicateKernelsMoveWholeGroups) {
    typedef aarch64_decode_rc (*ppp_kernel)(cpu_state*, aarch64_p_reg, aarch64_p_reg, aarch64_p_reg);
    struct {
        const char* what;
        ppp_kernel k;
        uint32_t size;
        uint8_t first[4];
    } const cases[] = {
        {"zip1 .h", sve_zip1_ppp, 1, {0x00, 0x01, 0x40, 0x41}},
        {"zip2 .b", sve_zip2_ppp, 0, {0x20, 0x60, 0x21, 0x61}},
        {"uzp1 .s", sve_uzp1_ppp, 2, {0x00, 0x01, 0x02, 0x03}},
        {"uzp1 .h", sve_uzp1_ppp, 1, {0x00, 0x01, 0x04, 0x05}},
        {"trn1 .b", sve_trn1_ppp, 0, {0x00, 0x40, 0x02, 0x42}},
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        seq(s->p[2], 0x00);
        seq(s->p[3], 0x40);
        c.k(s.get(), {2, c.size, 7, 7}, {2, c.size, 7, 7}, {3, c.size, 7, 7});  // Pd is Pn
        EXPECT_EQ(bytes(s->p[2], 0, 4), std::vector<uint8_t>(c.first, c.first + 4)) << c.what;
    }
}

// The reference forms move one bit per element: bit 0 of a group's first
// byte; all other bits come back 0 whatever the sources held there.
TEST(Interleave, PredicateReferenceFormsDropTheHigherBitsOfAGroup) {
    CpuContext c = ctx512();
    // .h elements: Pn active at 1, 3, 6; Pm at 0, 1, 31 (bit positions 2e).
    PredV pn = packed({2, 6, 12, 3, 9, 13}), pm = packed({0, 2, 62, 1, 5});
    PredV r = VecP16Uzp2PP(pn, pm, &c);  // elements 2i+1: Pn 1, 3 -> 0, 1; Pm 1, 31 -> 16, 31
    EXPECT_EQ(r.w[0], (1ull << 0) | (1ull << 2) | (1ull << 32) | (1ull << 62));
    r = VecP16Trn1PP(pn, pm, &c);  // (a[2p], b[2p]): a 6 -> result 6; b 0 -> result 1
    EXPECT_EQ(r.w[0], (1ull << 12) | (1ull << 2));
    r = VecP16Trn2PP(pn, pm, &c);  // (a[2p+1], b[2p+1]): a 1, 3 -> 0, 2; b 1, 31 -> 1, 31
    EXPECT_EQ(r.w[0], (1ull << 0) | (1ull << 4) | (1ull << 2) | (1ull << 62));
    // .d: eight elements, bits 0, 8, .. 56.
    pn = packed({8, 24, 7});
    pm = packed({0, 56, 1});
    EXPECT_EQ(VecP64Uzp2PP(pn, pm, &c).w[0], (1ull << 0) | (1ull << 8) | (1ull << 56));
    EXPECT_EQ(VecP64Trn1PP(pn, pm, &c).w[0], (1ull << 8));
    EXPECT_EQ(VecP64Trn2PP(pn, pm, &c).w[0], (1ull << 0) | (1ull << 16) | (1ull << 56));
    // .b: every bit an element.
    pn = packed({1, 63});
    pm = packed({3});
    EXPECT_EQ(VecP8Uzp2PP(pn, pm, &c).w[0], (1ull << 0) | (1ull << 31) | (1ull << 33));
    EXPECT_EQ(VecP8Trn2PP(pn, pm, &c).w[0], (1ull << 0) | (1ull << 62) | (1ull << 3));
    EXPECT_EQ(VecP32Trn1PP(packed({0, 1, 2, 3}), packed({}), &c).w[0], 1ull);
}

TEST(Interleave, Trn1ReferenceOfVectors) {
    CpuContext c = ctx512();
    uint8_t a[64], b[64];
    seq(a, 0x00);
    seq(b, 0x40);
    VecVal r = VecU16Trn1VV(vec_of(a), vec_of(b), &c);
    EXPECT_EQ(bytes(r.b, 0, 8), (std::vector<uint8_t>{0x00, 0x01, 0x40, 0x41, 0x04, 0x05, 0x44, 0x45}));
    EXPECT_EQ(bytes(r.b, 56, 8), (std::vector<uint8_t>{0x38, 0x39, 0x78, 0x79, 0x3c, 0x3d, 0x7c, 0x7d}));
    r = VecU64Trn1VV(vec_of(a), vec_of(b), &c);
    EXPECT_EQ(get<uint64_t>(r.b, 6), 0x3736353433323130ull);
    EXPECT_EQ(get<uint64_t>(r.b, 7), 0x7776757473727170ull);
    r = VecU8Trn1VV(vec_of(a), vec_of(b), &c);
    EXPECT_EQ(r.b[62], 0x3e);
    EXPECT_EQ(r.b[63], 0x7e);
    r = VecU32Trn1VV(vec_of(a), vec_of(b), &c);
    EXPECT_EQ(get<uint32_t>(r.b, 3), 0x4b4a4948u);
}

TEST(Reverse, VectorsAtEverySize) {
    struct {
        uint32_t size;
        uint8_t first[8];
    } const cases[] = {
        {0, {0x3f, 0x3e, 0x3d, 0x3c, 0x3b, 0x3a, 0x39, 0x38}},
        {1, {0x3e, 0x3f, 0x3c, 0x3d, 0x3a, 0x3b, 0x38, 0x39}},
        {2, {0x3c, 0x3d, 0x3e, 0x3f, 0x38, 0x39, 0x3a, 0x3b}},
        {3, {0x38, 0x39, 0x3a, 0x3b, 0x3c, 0x3d, 0x3e, 0x3f}},
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        seq(s->z[4], 0);
        sve_rev_zz(s.get(), {4, c.size, 5, 5}, {4, c.size, 5, 5});  // in place
        EXPECT_EQ(bytes(s->z[4], 0, 8), std::vector<uint8_t>(c.first, c.first + 8)) << c.size;
        // The last element is the first one of the source.
        unsigned eb = 1u << c.size;
        for (unsigned k = 0; k < eb; ++k) EXPECT_EQ(s->z[4][64 - eb + k], k) << c.size;
    }
}

TEST(Reverse, PredicateGroupsKeepTheirFirstByteFirst) {
    auto s = noisy_state();
    seq(s->p[1], 0x00);
    sve_rev_pp(s.get(), {0, 2, 7, 7}, {1, 2, 7, 7});  // rev p0.s, p1.s
    EXPECT_EQ(bytes(s->p[0], 0, 8), (std::vector<uint8_t>{0x3c, 0x3d, 0x3e, 0x3f, 0x38, 0x39, 0x3a, 0x3b}));
    EXPECT_EQ(bytes(s->p[0], 60, 4), (std::vector<uint8_t>{0x00, 0x01, 0x02, 0x03}));
    sve_rev_pp(s.get(), {1, 0, 7, 7}, {1, 0, 7, 7});  // rev p1.b, p1.b
    EXPECT_EQ(s->p[1][0], 0x3f);
    EXPECT_EQ(s->p[1][63], 0x00);
}

}  // namespace
