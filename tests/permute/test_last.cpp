// LASTA, LASTB, CLASTA, CLASTB and INSR.
#include "perm_test_util.h"

namespace {
using namespace permtest;

// Zn holds bytes 0x00..0x3f, so element e of `bytes` bytes is known. Each
// row lists the active elements and the element LASTB and LASTA must pick.
struct LastCase {
    unsigned bytes;
    std::initializer_list<unsigned> active;
    unsigned lastb, lasta;
} const kLast[] = {
    {1, {}, 63, 0},  // none active: LASTB the last element, LASTA element 0
    {1, {5}, 5, 6},
    {1, {0, 63}, 63, 0},  // the last element active: LASTA wraps to 0
    {2, {}, 31, 0},
    {2, {3, 17}, 17, 18},
    {4, {14}, 14, 15},
    {4, {15}, 15, 0},
    {8, {}, 7, 0},
    {8, {0}, 0, 1},
    {8, {6}, 6, 7},
};

uint64_t element(const uint8_t* z, unsigned bytes, unsigned e) {
    uint64_t v = 0;
    std::memcpy(&v, z + e * bytes, bytes);
    return v;
}
uint32_t size_of(unsigned bytes) { return bytes == 1 ? 0 : bytes == 2 ? 1 : bytes == 4 ? 2 : 3; }

TEST(Last, LastbToGeneralAndSimdRegistersAndLastaReference) {
    CpuContext c = ctx512();
    uint64_t (*const lasta[])(PredV, VecVal, CpuContext*) = {VecU8LastAV, VecU16LastAV, VecU32LastAV, VecU64LastAV};
    uint64_t (*const lasta_v[])(PredV, VecVal, CpuContext*) = {VecB8LastAV, VecH16LastAV, VecF32LastAV, VecD64LastAV};
    for (const LastCase& k : kLast) {
        uint32_t size = size_of(k.bytes);
        auto s = noisy_state();
        seq(s->z[3], 0);
        pset_elems(s->p[2], k.bytes, k.active, 0xaa);  // junk in every other bit
        aarch64_p_reg pg{2, QUAL_PLAIN, 7, 7};
        sve_lastb_rpz(s.get(), {4, size, 4, 4}, pg, {3, size, 5, 5});
        EXPECT_EQ(s->x[4], element(s->z[3], k.bytes, k.lastb)) << k.bytes << " " << k.lastb;
        sve_lastb_vpz(s.get(), 5, pg, {3, size, 5, 5});
        EXPECT_EQ(get<uint64_t>(s->z[5], 0), element(s->z[3], k.bytes, k.lastb));
        EXPECT_EQ(bytes(s->z[5], 8, 56), std::vector<uint8_t>(56, 0));

        PredV p = pack_pred(s->p[2]);
        EXPECT_EQ(lasta[size](p, vec_of(s->z[3]), &c), element(s->z[3], k.bytes, k.lasta)) << k.bytes;
        EXPECT_EQ(lasta_v[size](p, vec_of(s->z[3]), &c), element(s->z[3], k.bytes, k.lasta)) << k.bytes;
    }
}

TEST(Last, LastbEdgesOfTheRegisters) {
    auto s = noisy_state();
    seq(s->z[3], 0x80);
    pset_elems(s->p[1], 4, {9});
    uint64_t x = s->x[0];
    sve_lastb_rpz(s.get(), {31, 2, 4, 4}, {1, QUAL_PLAIN, 7, 7}, {3, 2, 5, 5});  // to wzr: dropped
    EXPECT_EQ(s->x[0], x);
    sve_lastb_rpz(s.get(), {30, 2, 4, 4}, {1, QUAL_PLAIN, 7, 7}, {3, 2, 5, 5});
    EXPECT_EQ(s->x[30], 0x00000000a7a6a5a4ull);  // zero-extended
    // Vd equal to Zn: the element is read before the register is cleared.
    sve_lastb_vpz(s.get(), 3, {1, QUAL_PLAIN, 7, 7}, {3, 2, 5, 5});
    EXPECT_EQ(get<uint32_t>(s->z[3], 0), 0xa7a6a5a4u);
    EXPECT_EQ(bytes(s->z[3], 4, 60), std::vector<uint8_t>(60, 0));
    // .b: only the byte survives.
    seq(s->z[3], 0x80);
    sve_lastb_vpz(s.get(), 7, {1, QUAL_PLAIN, 7, 7}, {3, 0, 5, 5});  // p1.b: element 36 active
    EXPECT_EQ(s->z[7][0], 0xa4);
    EXPECT_EQ(bytes(s->z[7], 1, 63), std::vector<uint8_t>(63, 0));
}

TEST(Clast, ClastbToAGeneralRegister) {
    struct {
        uint32_t size;
        std::initializer_list<unsigned> active;
        unsigned rdn;
        uint64_t old, expect;
    } const cases[] = {
        {0, {}, 3, 0x1234567890abcdefull, 0xef},  // only the low byte of the old value
        {1, {}, 3, 0x1234567890abcdefull, 0xcdef},
        {2, {}, 3, 0x1234567890abcdefull, 0x90abcdef},
        {3, {}, 3, 0x1234567890abcdefull, 0x1234567890abcdefull},
        {0, {7, 40}, 3, 0, 0xa8},
        {2, {0}, 3, 0, 0x83828180u},
        {2, {15}, 3, ~0ull, 0xbfbebdbcu},  // zero-extended over the old value
        {3, {1, 2}, 3, 0, 0x9796959493929190ull},
    };
    for (const auto& k : cases) {
        auto s = noisy_state();
        seq(s->z[4], 0x80);
        pset_elems(s->p[5], 1u << k.size, k.active, 0x5a);
        s->x[k.rdn] = k.old;
        sve_clastb_rpz(s.get(), {k.rdn, 4, k.size, k.size}, {5, QUAL_PLAIN, 7, 7}, {4, k.size, 5, 5});
        EXPECT_EQ(s->x[k.rdn], k.expect) << k.size;
    }
    // Rdn 31: reads as 0, and the write is dropped.
    auto s = noisy_state();
    pset_elems(s->p[5], 1, {});
    cpu_state before = *s;
    sve_clastb_rpz(s.get(), {31, 4, 0, 0}, {5, QUAL_PLAIN, 7, 7}, {4, 0, 5, 5});
    EXPECT_EQ(0, std::memcmp(s->x, before.x, sizeof s->x));
}

TEST(Clast, ClastaAndClastbReferenceScalars) {
    CpuContext c = ctx512();
    uint8_t z[64];
    seq(z, 0x80);
    const uint64_t old = 0xfedcba9876543210ull;
    struct {
        const char* what;
        uint64_t (*op)(PredV, uint64_t, VecVal, CpuContext*);
        PredV pg;
        uint64_t expect;
    } const cases[] = {
        {"clasta .b none", VecU8CondXASV, packed({}), 0x10},
        {"clasta .b 5", VecU8CondXASV, packed({5}), 0x86},
        {"clasta .b 63 wraps", VecU8CondXASV, packed({2, 63}), 0x80},
        {"clasta .h none", VecU16CondXASV, packed({1, 63}), 0x3210},  // odd bits are no .h element
        {"clasta .s 14", VecU32CondXASV, packed({56}), 0xbfbebdbcu},
        {"clasta .d 7 wraps", VecU64CondXASV, packed({56}), 0x8786858483828180ull},
        {"clasta .d none", VecU64CondXASV, packed({}), old},
        {"clasta b none", VecB8CondXASV, packed({}), 0x10},
        {"clasta h 30", VecH16CondXASV, packed({60}), 0xbfbe},
        {"clasta s none", VecF32CondXASV, packed({}), 0x76543210u},
        {"clasta d 0", VecD64CondXASV, packed({0}), 0x8f8e8d8c8b8a8988ull},
        {"clastb b none", VecB8CondXBSV, packed({}), 0x10},
        {"clastb b 63", VecB8CondXBSV, packed({63}), 0xbf},
        {"clastb h 0", VecH16CondXBSV, packed({0}), 0x8180},
        {"clastb s none", VecF32CondXBSV, packed({}), 0x76543210u},
        {"clastb d 3", VecD64CondXBSV, packed({0, 24}), 0x9f9e9d9c9b9a9998ull},
    };
    for (const auto& k : cases) EXPECT_EQ(k.op(k.pg, old, vec_of(z), &c), k.expect) << k.what;
}

TEST(Clast, VectorFormsBroadcastOrKeepZdn) {
    CpuContext c = ctx512();
    uint8_t a[64], b[64];
    seq(a, 0x00);
    seq(b, 0x40);
    VecVal r = VecU32VCondXBVV(packed({}), vec_of(a), vec_of(b), &c);
    EXPECT_EQ(bytes(r.b, 0, 64), reg(a));
    r = VecU32VCondXAVV(packed({2}), vec_of(a), vec_of(b), &c);  // no .s element
    EXPECT_EQ(bytes(r.b, 0, 64), reg(a));
    r = VecU32VCondXBVV(packed({8, 20}), vec_of(a), vec_of(b), &c);  // last active 5
    for (unsigned e = 0; e < 16; ++e) EXPECT_EQ(get<uint32_t>(r.b, e), 0x57565554u) << e;
    r = VecU32VCondXAVV(packed({8, 20}), vec_of(a), vec_of(b), &c);  // element 6
    for (unsigned e = 0; e < 16; ++e) EXPECT_EQ(get<uint32_t>(r.b, e), 0x5b5a5958u) << e;
    r = VecU8VCondXAVV(packed({63}), vec_of(a), vec_of(b), &c);  // wraps to 0
    EXPECT_EQ(bytes(r.b, 0, 64), std::vector<uint8_t>(64, 0x40));
    r = VecU64VCondXBVV(packed({56}), vec_of(a), vec_of(b), &c);
    for (unsigned e = 0; e < 8; ++e) EXPECT_EQ(get<uint64_t>(r.b, e), 0x7f7e7d7c7b7a7978ull) << e;
    r = VecU16VCondXAVV(packed({0}), vec_of(a), vec_of(b), &c);
    for (unsigned e = 0; e < 32; ++e) EXPECT_EQ(get<uint16_t>(r.b, e), 0x4342) << e;
    r = VecU8VCondXBVV(packed({}), vec_of(a), vec_of(b), &c);
    EXPECT_EQ(bytes(r.b, 0, 64), reg(a));
    r = VecU64VCondXAVV(packed({}), vec_of(a), vec_of(b), &c);
    EXPECT_EQ(bytes(r.b, 0, 64), reg(a));
    r = VecU16VCondXBVV(packed({}), vec_of(a), vec_of(b), &c);
    EXPECT_EQ(bytes(r.b, 0, 64), reg(a));
}

TEST(Insr, ShiftsUpAndDropsTheTopElement) {
    CpuContext c = ctx512();
    uint8_t z[64];
    seq(z, 0x00);
    VecVal r = VecU64InsertS(vec_of(z), 0x1122334455667788ull, &c);
    EXPECT_EQ(get<uint64_t>(r.b, 0), 0x1122334455667788ull);
    EXPECT_EQ(get<uint64_t>(r.b, 1), 0x0706050403020100ull);
    EXPECT_EQ(get<uint64_t>(r.b, 7), 0x3736353433323130ull);  // old element 6; 7 is lost
    r = VecU8InsertS(vec_of(z), 0x1ff, &c);                   // the scalar cut to the element
    EXPECT_EQ(r.b[0], 0xff);
    for (unsigned e = 1; e < 64; ++e) EXPECT_EQ(r.b[e], e - 1);
    r = VecU16InsertS(vec_of(z), 0xabcd1234, &c);
    EXPECT_EQ(get<uint16_t>(r.b, 0), 0x1234);
    EXPECT_EQ(get<uint16_t>(r.b, 31), 0x3d3c);
    r = VecU32InsertS(vec_of(z), 0, &c);
    EXPECT_EQ(get<uint32_t>(r.b, 0), 0u);
    EXPECT_EQ(get<uint32_t>(r.b, 15), 0x3b3a3938u);
    r = VecB8InsertS(vec_of(z), 0x7766, &c);
    EXPECT_EQ(r.b[0], 0x66);
    r = VecH16InsertS(vec_of(z), 0x7766, &c);
    EXPECT_EQ(get<uint16_t>(r.b, 0), 0x7766);
    EXPECT_EQ(get<uint16_t>(r.b, 1), 0x0100);
    r = VecF32InsertS(vec_of(z), 0x3f800000, &c);
    EXPECT_EQ(get<uint32_t>(r.b, 0), 0x3f800000u);
    r = VecD64InsertS(vec_of(z), ~0ull, &c);
    EXPECT_EQ(get<uint64_t>(r.b, 0), ~0ull);
    EXPECT_EQ(get<uint64_t>(r.b, 7), 0x3736353433323130ull);
}

TEST(Stubs, ReportTheWordAndRefuse) {
    auto s = noisy_state();
    s->instruction = 0x05243800;
    cpu_state before = *s;
    testing::internal::CaptureStderr();
    EXPECT_EQ(sve_insr_zr(s.get(), {0, 5, 0, 0}, {1, 0, 4, 4}), DECODE_UNKNOWN);
    EXPECT_EQ(sve_uzp2_ppp(s.get(), {0, 0, 7, 7}, {1, 0, 7, 7}, {2, 0, 7, 7}), DECODE_UNKNOWN);
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("Unimplemented instruction: [  "), std::string::npos) << err;
    EXPECT_NE(err.find("05243800\t sve_insr_zr  ]\n"), std::string::npos) << err;
    EXPECT_NE(err.find("sve_uzp2_ppp"), std::string::npos) << err;
    EXPECT_EQ(0, std::memcmp(s.get(), &before, sizeof before));
}

}  // namespace
