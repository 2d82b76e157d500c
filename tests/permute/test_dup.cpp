// DUP, DUPM, CPY and INDEX: the kernels that write the destination in place.
#include "perm_test_util.h"

namespace {
using namespace permtest;

uint64_t element(const uint8_t* z, uint32_t size, unsigned e) {
    uint64_t v = 0;
    std::memcpy(&v, z + (e << size), 1u << size);
    return v;
}
// Every element of z at `size` equal to v.
::testing::AssertionResult all_equal(const uint8_t* z, uint32_t size, uint64_t v) {
    for (unsigned e = 0; e < (64u >> size); ++e)
        if (element(z, size, e) != v)
            return ::testing::AssertionFailure() << "element " << e << " is 0x" << std::hex << element(z, size, e)
                                                 << ", not 0x" << v;
    return ::testing::AssertionSuccess();
}

TEST(Dup, ImmediateNarrowedToTheElement) {
    struct {
        uint32_t size;
        int imm;
        uint64_t expect;
    } const cases[] = {
        {0, -128, 0x80},
        {0, 127 << 8, 0x00},  // the shifted forms leave nothing in a byte
        {0, -32768, 0x00},
        {1, -32768, 0x8000},
        {1, 256, 0x0100},
        {2, -3, 0xfffffffd},
        {3, -512, 0xfffffffffffffe00ull},  // sign-extended at .d
        {3, 127, 0x7f},
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        sve_dup_zi(s.get(), {6, c.size, 5, 5}, c.imm);
        EXPECT_TRUE(all_equal(s->z[6], c.size, c.expect)) << c.size << " " << c.imm;
    }
}

TEST(Dup, GeneralRegisterWith31AsSP) {
    auto s = noisy_state();
    s->x[31] = 0x0000fffff7e3c5a0ull;
    s->x[5] = 0x1122334455667788ull;
    sve_dup_zr(s.get(), {1, 3, 5, 5}, {31, 3});
    EXPECT_TRUE(all_equal(s->z[1], 3, 0x0000fffff7e3c5a0ull));
    sve_dup_zr(s.get(), {1, 2, 5, 5}, {31, 2});
    EXPECT_TRUE(all_equal(s->z[1], 2, 0xf7e3c5a0u));
    sve_dup_zr(s.get(), {2, 0, 5, 5}, {5, 0});
    EXPECT_TRUE(all_equal(s->z[2], 0, 0x88));
    sve_dup_zr(s.get(), {2, 1, 5, 5}, {5, 1});
    EXPECT_TRUE(all_equal(s->z[2], 1, 0x7788));
}

TEST(Dup, IndexedAtEverySizeIncludingQuadwords) {
    struct {
        uint32_t size;
        unsigned index;
        uint64_t expect;  // of the first 64-bit lane at .q
    } const cases[] = {
        {0, 0, 0x00}, {0, 63, 0x3f}, {1, 31, 0x3f3e}, {2, 15, 0x3f3e3d3c}, {2, 5, 0x17161514},
        {3, 7, 0x3f3e3d3c3b3a3938ull}, {0, 64, 0}, {3, 8, 0},  // past the register: 0
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        seq(s->z[1], 0);
        sve_dup_zzi(s.get(), {1, c.size, 5, 5}, {1, c.size, 5, 5}, c.index);  // Zd is Zn
        EXPECT_TRUE(all_equal(s->z[1], c.size, c.expect)) << c.size << " [" << c.index << "]";
    }
    for (unsigned q = 0; q < 5; ++q) {
        auto s = noisy_state();
        seq(s->z[2], 0);
        sve_dup_zzi(s.get(), {2, ES_Q, 5, 5}, {2, ES_Q, 5, 5}, q);
        for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->z[2][k], q < 4 ? 16 * q + k % 16 : 0) << q << " " << k;
    }
}

TEST(Dupm, PatternInEveryLane) {
    auto s = noisy_state();
    sve_dupm_zi(s.get(), {3, 3, 5, 5}, aarch64_sve_logical64_imm{0x00ff00ff00ff00ffull});
    EXPECT_TRUE(all_equal(s->z[3], 3, 0x00ff00ff00ff00ffull));
}

// Active elements take the value; inactive ones keep theirs (merging) or
// become 0 (zeroing, qualifier 5). Only the first byte of a group counts: the
// junk 0xff puts bit 0 in every other byte and clears it in the first.
TEST(Cpy, ImmediateMergingAndZeroing) {
    struct {
        uint32_t size, qualifier;
        int imm;
        std::initializer_list<unsigned> active;
        uint64_t value;
    } const cases[] = {
        {3, QUAL_ZERO, -1, {0, 7}, ~0ull},
        {3, QUAL_MERGE, -1, {0, 7}, ~0ull},
        {0, QUAL_MERGE, 127, {0, 63}, 0x7f},
        {0, QUAL_ZERO, -129, {5}, 0x7f},
        {1, QUAL_MERGE, -256, {1, 31}, 0xff00},
        {1, QUAL_ZERO, -256, {}, 0},
        {2, QUAL_ZERO, 0x7f00, {15}, 0x7f00},
        {2, QUAL_PLAIN, 1, {3}, 1},  // anything but 5 merges
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        pset_elems(s->p[9], 1u << c.size, c.active, 0xff);
        seq(s->z[4], 0x80);
        uint8_t old[64];
        std::memcpy(old, s->z[4], 64);
        sve_cpy_zpi(s.get(), {4, c.size, 5, 5}, {9, c.qualifier, 7, 7}, c.imm);
        for (unsigned e = 0; e < (64u >> c.size); ++e) {
            bool on = false;
            for (unsigned a : c.active) on |= a == e;
            uint64_t expect = on ? c.value : c.qualifier == QUAL_ZERO ? 0 : element(old, c.size, e);
            ASSERT_EQ(element(s->z[4], c.size, e), expect) << c.size << " q" << c.qualifier << " e" << e;
        }
    }
}

TEST(Cpy, ScalarFromSPOrARegisterMerges) {
    auto s = noisy_state();
    s->x[31] = 0x0000ffffeeee1230ull;
    seq(s->z[7], 0);
    pset_elems(s->p[1], 8, {2, 5});
    sve_cpy_zpr(s.get(), {7, 3, 5, 5}, {1, QUAL_MERGE, 7, 7}, {31, 3});
    EXPECT_EQ(get<uint64_t>(s->z[7], 2), 0x0000ffffeeee1230ull);
    EXPECT_EQ(get<uint64_t>(s->z[7], 5), 0x0000ffffeeee1230ull);
    EXPECT_EQ(get<uint64_t>(s->z[7], 1), 0x0f0e0d0c0b0a0908ull);
    EXPECT_EQ(get<uint64_t>(s->z[7], 6), 0x3736353433323130ull);

    s->x[8] = 0xabcdef;
    pset_elems(s->p[1], 1, {0, 63});
    sve_cpy_zpr(s.get(), {7, 0, 5, 5}, {1, QUAL_MERGE, 7, 7}, {8, 0});
    EXPECT_EQ(s->z[7][0], 0xef);
    EXPECT_EQ(s->z[7][63], 0xef);
    EXPECT_EQ(s->z[7][1], 0x01);
}

TEST(Cpy, SimdScalarIsReadBeforeTheDestinationChanges) {
    auto s = noisy_state();
    seq(s->z[5], 0x40);
    pset_elems(s->p[2], 2, {0, 1, 31});
    sve_cpy_zpv(s.get(), {5, 1, 5, 5}, {2, QUAL_MERGE, 7, 7}, 5);  // cpy z5.h, p2/m, h5
    EXPECT_EQ(get<uint16_t>(s->z[5], 0), 0x4140);
    EXPECT_EQ(get<uint16_t>(s->z[5], 1), 0x4140);
    EXPECT_EQ(get<uint16_t>(s->z[5], 2), 0x4544);
    EXPECT_EQ(get<uint16_t>(s->z[5], 31), 0x4140);

    seq(s->z[6], 0x00);
    pset_all(s->p[2], 8);
    sve_cpy_zpv(s.get(), {7, 3, 5, 5}, {2, QUAL_MERGE, 7, 7}, 6);
    EXPECT_TRUE(all_equal(s->z[7], 3, 0x0706050403020100ull));
}

TEST(Index, WrapsAtEveryElementWidth) {
    struct {
        uint32_t size;
        int start, step;
        unsigned at;
        uint64_t expect;
    } const cases[] = {
        {0, 0, 1, 63, 63},
        {0, 0, 5, 51, 255},
        {0, 0, 5, 52, 4},  // 260 mod 256
        {0, 0, 5, 63, 59},
        {0, -16, 15, 0, 0xf0},
        {1, -16, 15, 0, 0xfff0},
        {1, -16, 15, 31, 0x01c1},
        {1, 15, 15, 31, 480},
        {2, 15, -16, 15, 0xffffff1f},
        {2, -16, -16, 15, 0xffffff00},
        {3, -1, -1, 7, 0xfffffffffffffff8ull},
        {3, 15, 15, 7, 120},
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        sve_index_zii(s.get(), {3, c.size, 5, 5}, c.start, c.step);
        EXPECT_EQ(element(s->z[3], c.size, c.at), c.expect) << c.size << " " << c.start << " " << c.step;
        EXPECT_EQ(element(s->z[3], c.size, 0), uint64_t(int64_t(c.start)) & (~0ull >> (64 - (8u << c.size))));
    }
}

TEST(Index, RegistersAtElementWidthAnd31ReadsZero) {
    auto s = noisy_state();
    s->x[31] = 0x5555555555555555ull;  // SP is not what 31 means here
    s->x[4] = 0x12345678fffffff0ull;
    s->x[5] = 0x7fffffffffffffffull;
    s->x[6] = 3;
    sve_index_zri(s.get(), {1, 2, 5, 5}, {4, 2, 4, 4}, 1);  // index z1.s, w4, #1
    EXPECT_EQ(get<uint32_t>(s->z[1], 0), 0xfffffff0u);
    EXPECT_EQ(get<uint32_t>(s->z[1], 15), 0xffffffffu);
    sve_index_zri(s.get(), {1, 2, 5, 5}, {4, 2, 4, 4}, 2);
    EXPECT_EQ(get<uint32_t>(s->z[1], 8), 0u);  // wraps at 2^32
    sve_index_zri(s.get(), {1, 1, 5, 5}, {4, 1, 4, 4}, 1);
    EXPECT_EQ(get<uint16_t>(s->z[1], 15), 0xffff);
    EXPECT_EQ(get<uint16_t>(s->z[1], 16), 0x0000);
    sve_index_zrr(s.get(), {2, 3, 5, 5}, {5, 3, 4, 4}, {6, 3, 4, 4});  // index z2.d, x5, x6
    EXPECT_EQ(get<uint64_t>(s->z[2], 0), 0x7fffffffffffffffull);
    EXPECT_EQ(get<uint64_t>(s->z[2], 1), 0x8000000000000002ull);
    EXPECT_EQ(get<uint64_t>(s->z[2], 7), 0x8000000000000014ull);
    sve_index_zrr(s.get(), {2, 0, 5, 5}, {31, 0, 4, 4}, {6, 0, 4, 4});  // index z2.b, wzr, w6
    EXPECT_EQ(s->z[2][0], 0);
    EXPECT_EQ(s->z[2][63], 189);
    sve_index_zir(s.get(), {2, 3, 5, 5}, -7, {31, 3, 4, 4});  // index z2.d, #-7, xzr
    EXPECT_TRUE(all_equal(s->z[2], 3, 0xfffffffffffffff9ull));
    sve_index_zir(s.get(), {2, 2, 5, 5}, 1, {6, 2, 4, 4});
    EXPECT_EQ(get<uint32_t>(s->z[2], 15), 46u);
    sve_index_zrr(s.get(), {2, 1, 5, 5}, {6, 1, 4, 4}, {31, 1, 4, 4});
    EXPECT_TRUE(all_equal(s->z[2], 1, 3));
}

}  // namespace
