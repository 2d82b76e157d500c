// LASTA, LASTB, CLASTA, CLASTB, INSR, DUP, DUPM, CPY and INDEX.
#include <algorithm>
#include <string>

#include "perm_test_util.h"

namespace {
using namespace permtest;

aarch64_z_reg Z(uint32_t n, uint32_t size) { return {n, size, 5, 5}; }
aarch64_p_reg P(uint32_t n, uint32_t qual) { return {n, qual, 7, 7}; }
uint32_t size_of(unsigned bytes) { return __builtin_ctz(bytes); }
::testing::AssertionResult all_equal(const uint8_t* z, unsigned bytes, uint64_t v) {
    for (unsigned e = 0; e < 64 / bytes; ++e)
        if (el(z, bytes, e) != v) return ::testing::AssertionFailure() << "element " << e << " is " << el(z, bytes, e);
    return ::testing::AssertionSuccess();
}

// Zn holds bytes 0x00..0x3f; each row: active elements, then the element that
// LASTB and LASTA must pick. None active: LASTB the last, LASTA element 0.
TEST(Moves, LastbKernelsAndLastaReference) {
    struct {
        unsigned bytes;
        std::initializer_list<unsigned> active;
        unsigned lastb, lasta;
    } const cases[] = {
        {1, {}, 63, 0}, {1, {5}, 5, 6}, {1, {0, 63}, 63, 0}, {2, {}, 31, 0}, {2, {3, 17}, 17, 18},
        {4, {15}, 15, 0}, {8, {}, 7, 0}, {8, {6}, 6, 7},
    };
    uint64_t (*const lasta[])(PredV, VecVal, CpuContext*) = {VecU8LastAV, VecU16LastAV, VecU32LastAV, VecU64LastAV};
    uint64_t (*const lasta_v[])(PredV, VecVal, CpuContext*) = {VecB8LastAV, VecH16LastAV, VecF32LastAV, VecD64LastAV};
    CpuContext c = ctx512();
    for (const auto& k : cases) {
        uint32_t size = size_of(k.bytes);
        auto s = noisy_state();
        seq(s->z[3], 0);
        pset(s->p[2], k.bytes, k.active, 0xaa);
        sve_lastb_rpz(s.get(), {4, size, 4, 4}, P(2, QUAL_PLAIN), Z(3, size));
        EXPECT_EQ(s->x[4], el(s->z[3], k.bytes, k.lastb)) << k.bytes << " " << k.lastb;
        sve_lastb_vpz(s.get(), 5, P(2, QUAL_PLAIN), Z(3, size));
        EXPECT_EQ(el(s->z[5], 8, 0), el(s->z[3], k.bytes, k.lastb));
        EXPECT_EQ(bytes(s->z[5], 8, 56), std::vector<uint8_t>(56, 0));  // the rest cleared
        PredV p = pack_pred(s->p[2]);
        EXPECT_EQ(lasta[size](p, vec_of(s->z[3]), &c), el(s->z[3], k.bytes, k.lasta)) << k.bytes;
        EXPECT_EQ(lasta_v[size](p, vec_of(s->z[3]), &c), el(s->z[3], k.bytes, k.lasta)) << k.bytes;
    }
    auto s = noisy_state();
    uint64_t x = s->x[0];
    sve_lastb_rpz(s.get(), {31, 2, 4, 4}, P(2, QUAL_PLAIN), Z(3, 2));  // to wzr: dropped
    EXPECT_EQ(s->x[0], x);
}

TEST(Moves, ClastbKernelKeepsTheOldValueCutToTheElement) {
    struct {
        uint32_t size;
        std::initializer_list<unsigned> active;
        uint64_t old, expect;
    } const cases[] = {
        {0, {}, 0x1234567890abcdefull, 0xef},  {1, {}, 0x1234567890abcdefull, 0xcdef},
        {2, {}, 0x1234567890abcdefull, 0x90abcdef}, {3, {}, 0x1234567890abcdefull, 0x1234567890abcdefull},
        {0, {7, 40}, 0, 0xa8}, {2, {15}, ~0ull, 0xbfbebdbcu}, {3, {1, 2}, 0, 0x9796959493929190ull},
    };
    for (const auto& k : cases) {
        auto s = noisy_state();
        seq(s->z[4], 0x80);
        pset(s->p[5], 1u << k.size, k.active, 0x5a);
        s->x[3] = k.old;
        sve_clastb_rpz(s.get(), {3, 4, k.size, k.size}, P(5, QUAL_PLAIN), Z(4, k.size));
        EXPECT_EQ(s->x[3], k.expect) << k.size;
    }
    auto s = noisy_state();  // Rdn 31 reads 0 and is not written: SP stays
    uint64_t sp = s->x[31];
    sve_clastb_rpz(s.get(), {31, 4, 0, 0}, P(5, QUAL_PLAIN), Z(4, 0));
    EXPECT_EQ(s->x[31], sp);
}

// Zm holds bytes 0x80..0xbf; the old scalar is 0xfedcba9876543210.
TEST(Moves, ClastReferenceScalarsAndVectors) {
    CpuContext c = ctx512();
    uint8_t z[64], d[64];
    seq(z, 0x80);
    seq(d, 0x00);
    const uint64_t old = 0xfedcba9876543210ull;
    struct {
        uint64_t (*op)(PredV, uint64_t, VecVal, CpuContext*);
        PredV pg;
        uint64_t expect;
    } const scalars[] = {
        {VecU8CondXASV, packed({}), 0x10},           {VecU8CondXASV, packed({5}), 0x86},
        {VecU8CondXASV, packed({2, 63}), 0x80},      // after the last element: wraps to 0
        {VecU16CondXASV, packed({1, 63}), 0x3210},   // odd bits are no .h element
        {VecU32CondXASV, packed({56}), 0xbfbebdbcu}, {VecU64CondXASV, packed({}), old},
        {VecH16CondXASV, packed({60}), 0xbfbe},      {VecF32CondXASV, packed({}), 0x76543210u},
        {VecD64CondXASV, packed({56}), 0x8786858483828180ull}, {VecB8CondXBSV, packed({}), 0x10},
        {VecB8CondXBSV, packed({63}), 0xbf},         {VecD64CondXBSV, packed({0, 24}), 0x9f9e9d9c9b9a9998ull},
    };
    for (const auto& k : scalars) EXPECT_EQ(k.op(k.pg, old, vec_of(z), &c), k.expect) << k.expect;
    struct {
        VecVal (*op)(PredV, VecVal, VecVal, CpuContext*);
        unsigned bytes;
        PredV pg;
        int element;  // of Zm, -1 for Zdn unchanged
    } const vectors[] = {
        {VecU32VCondXBVV, 4, packed({}), -1}, {VecU32VCondXAVV, 4, packed({2}), -1},
        {VecU32VCondXBVV, 4, packed({8, 20}), 5}, {VecU32VCondXAVV, 4, packed({8, 20}), 6},
        {VecU8VCondXAVV, 1, packed({63}), 0}, {VecU64VCondXBVV, 8, packed({56}), 7},
        {VecU16VCondXAVV, 2, packed({0}), 1}, {VecU64VCondXAVV, 8, packed({}), -1},
    };
    for (const auto& k : vectors) {
        VecVal r = k.op(k.pg, vec_of(d), vec_of(z), &c);
        if (k.element < 0)
            EXPECT_EQ(bytes(r.b, 0, 64), bytes(d, 0, 64));
        else
            EXPECT_TRUE(all_equal(r.b, k.bytes, el(z, k.bytes, k.element))) << k.bytes << " " << k.element;
    }
}

TEST(Moves, InsrShiftsUpAndDropsTheTopElement) {
    CpuContext c = ctx512();
    uint8_t z[64];
    seq(z, 0x00);
    VecVal r = VecU64InsertS(vec_of(z), 0x1122334455667788ull, &c);
    EXPECT_EQ(el(r.b, 8, 0), 0x1122334455667788ull);
    EXPECT_EQ(el(r.b, 8, 7), 0x3736353433323130ull);  // old element 6; 7 is lost
    r = VecU8InsertS(vec_of(z), 0x1ff, &c);           // the scalar cut to the element
    EXPECT_EQ(bytes(r.b, 0, 3), (std::vector<uint8_t>{0xff, 0x00, 0x01}));
    EXPECT_EQ(r.b[63], 0x3e);
    EXPECT_EQ(el(VecU16InsertS(vec_of(z), 0xabcd1234, &c).b, 2, 31), 0x3d3cu);
    EXPECT_EQ(el(VecU32InsertS(vec_of(z), 0, &c).b, 4, 0), 0u);
    EXPECT_EQ(el(VecH16InsertS(vec_of(z), 0x7766, &c).b, 2, 0), 0x7766u);
    EXPECT_EQ(el(VecF32InsertS(vec_of(z), 0x3f800000, &c).b, 4, 15), 0x3b3a3938u);
    EXPECT_EQ(el(VecB8InsertS(vec_of(z), 0x66, &c).b, 1, 1), 0u);
    EXPECT_EQ(el(VecD64InsertS(vec_of(z), ~0ull, &c).b, 8, 0), ~0ull);
}

TEST(Moves, DupImmediateScalarAndIndexed) {
    struct {
        unsigned bytes;
        int imm;
        uint64_t expect;
    } const imms[] = {
        {1, -128, 0x80}, {1, 127 << 8, 0}, {2, -32768, 0x8000}, {2, 256, 0x0100},
        {4, -3, 0xfffffffd}, {8, -512, 0xfffffffffffffe00ull}, {8, 127, 0x7f},
    };
    for (const auto& k : imms) {
        auto s = noisy_state();
        sve_dup_zi(s.get(), Z(6, size_of(k.bytes)), k.imm);
        EXPECT_TRUE(all_equal(s->z[6], k.bytes, k.expect)) << k.bytes << " " << k.imm;
    }
    auto s = noisy_state();
    s->x[31] = 0x0000fffff7e3c5a0ull;
    s->x[5] = 0x1122334455667788ull;
    sve_dup_zr(s.get(), Z(1, 3), {31, 3});  // 31 is SP
    EXPECT_TRUE(all_equal(s->z[1], 8, 0x0000fffff7e3c5a0ull));
    sve_dup_zr(s.get(), Z(1, 1), {5, 1});
    EXPECT_TRUE(all_equal(s->z[1], 2, 0x7788));

    struct {
        uint32_t size;
        unsigned index;
        uint64_t even, odd;  // the 64-bit lanes of the result
    } const idx[] = {
        {0, 63, 0x3f3f3f3f3f3f3f3full, 0x3f3f3f3f3f3f3f3full}, {1, 31, 0x3f3e3f3e3f3e3f3eull, 0x3f3e3f3e3f3e3f3eull},
        {2, 5, 0x1716151417161514ull, 0x1716151417161514ull},  {3, 7, 0x3f3e3d3c3b3a3938ull, 0x3f3e3d3c3b3a3938ull},
        {4, 3, 0x3736353433323130ull, 0x3f3e3d3c3b3a3938ull},  {4, 0, 0x0706050403020100ull, 0x0f0e0d0c0b0a0908ull},
        {0, 64, 0, 0}, {4, 4, 0, 0},  // past the register: 0
    };
    for (const auto& k : idx) {
        seq(s->z[2], 0);
        sve_dup_zzi(s.get(), Z(2, k.size), Z(2, k.size), k.index);  // Zd is Zn
        for (unsigned l = 0; l < 8; ++l) EXPECT_EQ(el(s->z[2], 8, l), l % 2 ? k.odd : k.even) << k.size << " " << l;
    }
    sve_dupm_zi(s.get(), Z(3, 3), aarch64_sve_logical64_imm{0x00ff00ff00ff00ffull});
    EXPECT_TRUE(all_equal(s->z[3], 8, 0x00ff00ff00ff00ffull));
}

// Active elements take the value; inactive ones keep theirs, or become 0 for
// qualifier 5. Junk 0xff puts bit 0 in the other bytes of every group and
// clears it in the first: only the first byte counts.
TEST(Moves, CpyImmediateScalarAndSimd) {
    struct {
        unsigned bytes;
        uint32_t qualifier;
        int imm;
        std::initializer_list<unsigned> active;
        uint64_t value;
    } const cases[] = {
        {8, QUAL_ZERO, -1, {0, 7}, ~0ull}, {8, QUAL_MERGE, -1, {0, 7}, ~0ull}, {1, QUAL_MERGE, 127, {0, 63}, 0x7f},
        {1, QUAL_ZERO, -129, {5}, 0x7f},   {2, QUAL_MERGE, -256, {1, 31}, 0xff00}, {2, QUAL_ZERO, -256, {}, 0},
        {4, QUAL_PLAIN, 1, {3}, 1},  // anything but 5 merges
    };
    for (const auto& k : cases) {
        auto s = noisy_state();
        pset(s->p[9], k.bytes, k.active, 0xff);
        uint8_t old[64];
        std::memcpy(old, s->z[4], 64);
        sve_cpy_zpi(s.get(), Z(4, size_of(k.bytes)), P(9, k.qualifier), k.imm);
        for (unsigned e = 0; e < 64 / k.bytes; ++e) {
            bool on = std::find(k.active.begin(), k.active.end(), e) != k.active.end();
            ASSERT_EQ(el(s->z[4], k.bytes, e), on ? k.value : k.qualifier == QUAL_ZERO ? 0 : el(old, k.bytes, e))
                << k.bytes << " q" << k.qualifier << " e" << e;
        }
    }
    auto s = noisy_state();
    s->x[31] = 0x0000ffffeeee1230ull;
    seq(s->z[7], 0);
    pset(s->p[1], 8, {2, 5});
    sve_cpy_zpr(s.get(), Z(7, 3), P(1, QUAL_MERGE), {31, 3});  // 31 is SP
    EXPECT_EQ(el(s->z[7], 8, 5), 0x0000ffffeeee1230ull);
    EXPECT_EQ(el(s->z[7], 8, 6), 0x3736353433323130ull);
    seq(s->z[5], 0x40);
    pset(s->p[2], 2, {0, 1, 31});
    sve_cpy_zpv(s.get(), Z(5, 1), P(2, QUAL_MERGE), 5);  // cpy z5.h, p2/m, h5
    EXPECT_EQ(bytes(s->z[5], 0, 6), (std::vector<uint8_t>{0x40, 0x41, 0x40, 0x41, 0x44, 0x45}));
    EXPECT_EQ(el(s->z[5], 2, 31), 0x4140u);
}

TEST(Moves, IndexWrapsAtEveryElementWidth) {
    struct {
        unsigned bytes;
        int start, step;
        unsigned at;
        uint64_t expect;
    } const cases[] = {
        {1, 0, 1, 63, 63},   {1, 0, 5, 51, 255},  {1, 0, 5, 52, 4},  // 260 mod 256
        {1, -16, 15, 0, 0xf0}, {2, -16, 15, 31, 0x01c1}, {2, 15, 15, 31, 480},
        {4, 15, -16, 15, 0xffffff1f}, {4, -16, -16, 15, 0xffffff00}, {8, -1, -1, 7, 0xfffffffffffffff8ull},
    };
    for (const auto& k : cases) {
        auto s = noisy_state();
        sve_index_zii(s.get(), Z(3, size_of(k.bytes)), k.start, k.step);
        EXPECT_EQ(el(s->z[3], k.bytes, k.at), k.expect) << k.bytes << " " << k.start << " " << k.step;
    }
    auto s = noisy_state();
    s->x[31] = 0x5555555555555555ull;  // not what 31 means here
    s->x[4] = 0x12345678fffffff0ull;
    s->x[5] = 0x7fffffffffffffffull;
    s->x[6] = 3;
    sve_index_zri(s.get(), Z(1, 2), {4, 2, 4, 4}, 2);  // index z1.s, w4, #2
    EXPECT_EQ(el(s->z[1], 4, 0), 0xfffffff0u);
    EXPECT_EQ(el(s->z[1], 4, 8), 0u);  // wraps at 2^32
    sve_index_zri(s.get(), Z(1, 1), {4, 1, 4, 4}, 1);
    EXPECT_EQ(el(s->z[1], 2, 16), 0u);  // wraps at 2^16
    sve_index_zrr(s.get(), Z(2, 3), {5, 3, 4, 4}, {6, 3, 4, 4});
    EXPECT_EQ(el(s->z[2], 8, 7), 0x8000000000000014ull);  // wraps at 2^64
    sve_index_zrr(s.get(), Z(2, 0), {31, 0, 4, 4}, {6, 0, 4, 4});  // index z2.b, wzr, w6
    EXPECT_EQ(bytes(s->z[2], 62, 2), (std::vector<uint8_t>{186, 189}));
    sve_index_zir(s.get(), Z(2, 3), -7, {31, 3, 4, 4});  // index z2.d, #-7, xzr
    EXPECT_TRUE(all_equal(s->z[2], 8, 0xfffffffffffffff9ull));
}

}  // namespace
