// What the reference CPU cannot show: destinations that are also sources of
// the kernels that write through a buffer or in place, and predicates held a
// byte per bit, with bits 7..1 of each byte and the other bytes of a group
// free to hold anything.
#include "perm_test_util.h"

namespace {
using namespace permtest;

// The result with the destination also a source must be what the same kernel
// gives with that source in another register holding the same bytes.
TEST(Kernels, DestinationEqualToASource) {
    typedef void (*Run)(cpu_state*, unsigned d, unsigned src);
    const Run runs[] = {
        [](cpu_state* s, unsigned d, unsigned n) { sve_zip1_zzz(s, zreg(d, 3), zreg(n, 3), zreg(9, 3)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_zip2_zzz(s, zreg(d, 0), zreg(9, 0), zreg(m, 0)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_uzp1_zzz(s, zreg(d, 1), zreg(n, 1), zreg(9, 1)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_uzp2_zzz(s, zreg(d, 2), zreg(9, 2), zreg(m, 2)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_trn1_zzz(s, zreg(d, 0), zreg(n, 0), zreg(9, 0)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_trn2_zzz(s, zreg(d, 2), zreg(9, 2), zreg(m, 2)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_rev_zz(s, zreg(d, 1), zreg(n, 1)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_tbl_zzz(s, zreg(d, 0), zreg(n, 0), zreg(9, 0)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_tbl_zzz(s, zreg(d, 0), zreg(9, 0), zreg(m, 0)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_ext_zzi(s, zreg_dst(d, 0), zreg(m, 0), 5); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_sunpkhi_s2d_zz(s, zreg(d, 3), zreg(n, 2)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_uunpklo_b2h_zz(s, zreg(d, 1), zreg(n, 0)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_dup_zzi(s, zreg(d, 2), zreg(n, 2), 9); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_dup_zzi(s, zreg(d, 4), zreg(n, 4), 1); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_cpy_zpv(s, zreg(d, 0), preg(3, QUAL_MERGE), n); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_lastb_vpz(s, d, preg(3, QUAL_PLAIN), zreg(n, 1)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_zip1_ppp(s, preg(d, 1), preg(n, 1), preg(9, 1)); },
        [](cpu_state* s, unsigned d, unsigned m) { sve_zip2_ppp(s, preg(d, 0), preg(9, 0), preg(m, 0)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_uzp1_ppp(s, preg(d, 2), preg(n, 2), preg(9, 2)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_rev_pp(s, preg(d, 1), preg(n, 1)); },
        [](cpu_state* s, unsigned d, unsigned n) { sve_punpkhi_pp(s, preg(d, 1), preg(n, 0)); },
    };
    for (size_t i = 0; i < sizeof runs / sizeof runs[0]; ++i) {
        auto aliased = noisy_state(7), apart = noisy_state(7);
        pset(aliased->p[3], 1, {1, 2, 40});
        pset(apart->p[3], 1, {1, 2, 40});
        for (cpu_state* s : {aliased.get(), apart.get()})
            for (unsigned k = 0; k < 64; ++k) s->z[5][k] = s->z[6][k] = s->p[5][k] = s->p[6][k] = uint8_t(k * 37 + 3);
        runs[i](aliased.get(), 5, 5);
        runs[i](apart.get(), 5, 6);
        EXPECT_EQ(bytes(aliased->z[5], 0, 64), bytes(apart->z[5], 0, 64)) << "kernel " << i;
        EXPECT_EQ(bytes(aliased->p[5], 0, 64), bytes(apart->p[5], 0, 64)) << "kernel " << i;
    }
}

// Predicates that hold data, every source byte 0xff: the kernel forms move
// each group whole, bytes and bits as they are; the reference forms and the
// unpacks keep bit 0 of the first byte of a group and clear the rest.
TEST(Kernels, PredicateFormsKeepOrDropTheRestOfAGroup) {
    struct {
        uint32_t word;
        const char* text;
        unsigned group;
        uint8_t first, rest;
    } const cases[] = {
        {0x05634041, "zip1 p1.h, p2.h, p3.h", 2, 0xff, 0xff},   {0x05b44083, "rev p3.s, p4.s", 4, 0xff, 0xff},
        {0x052648a4, "uzp1 p4.b, p5.b, p6.b", 1, 0xff, 0xff},   {0x05ac516a, "trn1 p10.s, p11.s, p12.s", 4, 1, 0},
        {0x05694d07, "uzp2 p7.h, p8.h, p9.h", 2, 1, 0},         {0x053040c5, "punpklo p5.h, p6.b", 2, 1, 0},
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        std::memset(s->p, 0xff, sizeof s->p);
        ASSERT_EQ(is_sve(c.word)(s.get(), c.word), DECODE_OK) << c.text;
        for (unsigned k = 0; k < 64; ++k)
            ASSERT_EQ(s->p[c.word & 15][k], k % c.group ? c.rest : c.first) << c.text << " " << k;
    }
    // The raw helper writes its 64 bytes and no more.
    char a[64], d[72];
    std::memset(a, 0x11, 64);
    std::memset(d, 0x5a, sizeof d);
    sve_uzp1(d, a, a, ES_B);
    EXPECT_EQ(bytes(reinterpret_cast<uint8_t*>(d), 62, 4), (std::vector<uint8_t>{0x11, 0x11, 0x5a, 0x5a}));
}

// A governing predicate counts bit 0 of the first byte of a group: here every
// other byte has bit 0 set and every first byte bits 7..1, and only element 1
// is active.
TEST(Kernels, GoverningPredicateReadsBitZeroOfTheFirstByteOnly) {
    for (uint32_t size = 0; size < 4; ++size) {
        const unsigned b = 1u << size;
        auto s = noisy_state();
        pset(s->p[2], b, {1}, 0xff);
        sve_lastb_rpz(s.get(), ireg(4, 3), preg(2, QUAL_PLAIN), zreg(3, size));
        EXPECT_EQ(s->x[4], el(s->z[3], b, 1)) << b;
        sve_clastb_rpz(s.get(), ireg_dst(4, size), preg(2, QUAL_PLAIN), zreg(6, size));
        EXPECT_EQ(s->x[4], el(s->z[6], b, 1)) << b;
        sve_cpy_zpi(s.get(), zreg(7, size), preg(2, QUAL_ZERO), 5);
        for (unsigned e = 0; e < 64 / b; ++e) ASSERT_EQ(el(s->z[7], b, e), e == 1 ? 5u : 0u) << b << " " << e;
    }
}

}  // namespace
