// Elements at odd addresses. An SVE load or store of Normal memory may put an
// element at any byte address, so the emulator must make such accesses too,
// and make them in a way the language defines: the sanitizer build
// (scripts/sanitize.sh, whose UBSan checks alignment) fails these tests where
// an access goes through a misaligned pointer to a wider type. In the ordinary
// builds they check the values.
#include <gtest/gtest.h>

#include <cstring>

#include "sve/core/decode.h"

namespace {

// LD1H {z0.h}, p0/z, [x0]             kernel route
// ST1H {z1.h}, p0, [x2]               kernel route
// LD1H {z3.d}, p1/z, [x4, z5.d, sxtw] reference route (ReadMemLib2)
// ST1H {z6.d}, p1, [x4, z5.d, sxtw]   reference route (WriteMemLib2)
constexpr uint32_t kLd1h = 0xa4a0a000u, kSt1h = 0xe4a0e041u, kGather = 0xc4c54483u, kScatter = 0xe485c486u;

struct Fixture {
    alignas(64) uint8_t mem[512];
    cpu_state s;
    Fixture() {
        for (unsigned i = 0; i < sizeof mem; ++i) mem[i] = static_cast<uint8_t>(i * 7 + 3);
        std::memset(&s, 0, sizeof s);
        std::memset(s.p[0], 1, 64);
        std::memset(s.p[1], 1, 64);
    }
    uint16_t half_at(unsigned off) const { return static_cast<uint16_t>(mem[off] | mem[off + 1] << 8); }
};

aarch64_decode_rc run(cpu_state* s, uint32_t word) {
    sve_handler h = is_sve(word);
    if (h == nullptr) {
        ADD_FAILURE() << "no handler for " << std::hex << word;
        return DECODE_UNKNOWN;
    }
    return h(s, word);
}

TEST(UnalignedElements, ContiguousLoadAndStoreOfHalfwordsAtAnOddBase) {
    Fixture f;
    f.s.x[0] = reinterpret_cast<uint64_t>(f.mem + 1);
    ASSERT_EQ(run(&f.s, kLd1h), DECODE_OK);
    for (unsigned i = 0; i < 32; ++i) {
        uint16_t v;
        std::memcpy(&v, f.s.z[0] + 2 * i, 2);
        EXPECT_EQ(v, f.half_at(1 + 2 * i)) << "element " << i;
    }
    for (unsigned i = 0; i < 64; ++i) f.s.z[1][i] = static_cast<uint8_t>(0xc0 + i);
    f.s.x[2] = reinterpret_cast<uint64_t>(f.mem + 129);
    ASSERT_EQ(run(&f.s, kSt1h), DECODE_OK);
    EXPECT_EQ(std::memcmp(f.mem + 129, f.s.z[1], 64), 0);
    EXPECT_EQ(f.mem[128], static_cast<uint8_t>(128 * 7 + 3));
    EXPECT_EQ(f.mem[193], static_cast<uint8_t>(193 * 7 + 3));
}

TEST(UnalignedElements, GatherAndScatterOfHalfwordsAtOddOffsets) {
    Fixture f;
    f.s.x[4] = reinterpret_cast<uint64_t>(f.mem + 256);
    // Offsets -13, -9, ..., 15: all odd, some negative (SXTW of the low half).
    for (unsigned e = 0; e < 8; ++e) {
        int64_t off = -13 + 4 * static_cast<int64_t>(e);
        std::memcpy(f.s.z[5] + 8 * e, &off, 8);
    }
    ASSERT_EQ(run(&f.s, kGather), DECODE_OK);
    for (unsigned e = 0; e < 8; ++e) {
        uint64_t v;
        std::memcpy(&v, f.s.z[3] + 8 * e, 8);
        EXPECT_EQ(v, f.half_at(256 - 13 + 4 * e)) << "element " << e;
    }
    for (unsigned e = 0; e < 8; ++e) {
        uint64_t v = 0xabcd0000u + 0x1111u * e;
        std::memcpy(f.s.z[6] + 8 * e, &v, 8);
    }
    ASSERT_EQ(run(&f.s, kScatter), DECODE_OK);
    for (unsigned e = 0; e < 8; ++e)
        EXPECT_EQ(f.half_at(256 - 13 + 4 * e), static_cast<uint16_t>(0x1111u * e)) << "element " << e;
}

}  // namespace
