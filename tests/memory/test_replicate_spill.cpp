// LD1R, and LDR/STR of Z and P, through their handlers with words from the
// assembler.
#include <gtest/gtest.h>

#include "mem_test_util.h"
#include "sve/core/decode.h"
#include "sve/memory/mem_kernels.h"

namespace {

// Every word is ld1r* {z9.T}, p6/z, [x13, #63 * m].
const struct {
    const char* name;
    sve_handler h;
    uint32_t word;
    unsigned m, c;
    bool sign;
} kLd1r[] = {
    {"ld1rb .b", VecU8LoadDup1SIZ, 0x847f99a9, 1, 1, false},
    {"ld1rb .h", VecU16LoadDup1SIZ, 0x847fb9a9, 1, 2, false},
    {"ld1rb .s", VecU32LoadDup1SIZ, 0x847fd9a9, 1, 4, false},
    {"ld1rb .d", VecU64LoadDup1SIZ, 0x847ff9a9, 1, 8, false},
    {"ld1rh .h", VecU16LoadDup2SIZ, 0x84ffb9a9, 2, 2, false},
    {"ld1rh .s", VecU32LoadDup2SIZ, 0x84ffd9a9, 2, 4, false},
    {"ld1rh .d", VecU64LoadDup2SIZ, 0x84fff9a9, 2, 8, false},
    {"ld1rw .s", VecU32LoadDup4SIZ, 0x857fd9a9, 4, 4, false},
    {"ld1rw .d", VecU64LoadDup4SIZ, 0x857ff9a9, 4, 8, false},
    {"ld1rd .d", VecU64LoadDup8SIZ, 0x85fff9a9, 8, 8, false},
    {"ld1rsb .h", VecS16LoadDup1SIZ, 0x85ffd9a9, 1, 2, true},
    {"ld1rsb .s", VecS32LoadDup1SIZ, 0x85ffb9a9, 1, 4, true},
    {"ld1rsb .d", VecS64LoadDup1SIZ, 0x85ff99a9, 1, 8, true},
    {"ld1rsh .s", VecS32LoadDup2SIZ, 0x857fb9a9, 2, 4, true},
    {"ld1rsh .d", VecS64LoadDup2SIZ, 0x857f99a9, 2, 8, true},
    {"ld1rsw .d", VecS64LoadDup4SIZ, 0x84ff99a9, 4, 8, true},
};

uint64_t get(const uint8_t* p, unsigned bytes) {
    uint64_t v = 0;
    std::memcpy(&v, p, bytes);
    return v;
}

TEST(Replicate, TheDecoderFindsEachFormsHandler) {
    for (const auto& f : kLd1r) EXPECT_EQ(is_sve(f.word), f.h) << f.name;
    EXPECT_EQ(is_sve(0x85a041d5), &VecU64FillSI);
    EXPECT_EQ(is_sve(0xe59f5dd5), &VecU64SpillSI);
    EXPECT_EQ(is_sve(0x859f1dcd), &VecPFillSI);
    EXPECT_EQ(is_sve(0xe5a003ed), &VecPSpillSI);
}

TEST(Replicate, EveryFormCopiesOneExtendedElementIntoActiveElements) {
    // The element lies at x13 + 63 * m; every byte of it has its top bit set.
    const uint8_t element[8] = {0xF1, 0x82, 0x93, 0xA4, 0xB5, 0xC6, 0xD7, 0xE8};
    for (const auto& f : kLd1r) {
        SharedState st;
        uint8_t mem[600] = {};
        std::memcpy(mem + 63 * f.m, element, f.m);
        st.s->x[13] = reinterpret_cast<uint64_t>(mem);
        for (unsigned k = 0; k < 64; ++k) st.s->p[6][k] = k % f.c ? 1 : (k / f.c) % 3 == 1 ? 0xFE : 0xFF;
        ASSERT_EQ(f.h(st.s, f.word), DECODE_OK);
        uint64_t v = get(element, f.m);
        if (f.sign && f.m < 8) v |= ~0ull << 8 * f.m;
        if (f.c < 8) v &= (1ull << 8 * f.c) - 1;
        for (unsigned i = 0; i < 64 / f.c; ++i)
            EXPECT_EQ(get(st.s->z[9] + i * f.c, f.c), i % 3 == 1 ? 0 : v) << f.name << " element " << i;
    }
}

TEST(Replicate, HandWorkedValuesAndAnAllFalsePredicateOnABadAddress) {
    SharedState st;
    uint32_t mem[64] = {};
    mem[63] = 0x80000001;  // x13 + 252
    std::memset(st.s->p[6], 1, 64);
    st.s->x[13] = reinterpret_cast<uint64_t>(mem);
    ASSERT_EQ(VecU64LoadDup4SIZ(st.s, 0x857ff9a9), DECODE_OK);  // ld1rw {z9.d}, p6/z, [x13, #252]
    EXPECT_EQ(get(st.s->z[9] + 56, 8), 0x0000000080000001u);
    reinterpret_cast<uint8_t*>(mem)[63] = 0xFF;
    ASSERT_EQ(VecS32LoadDup1SIZ(st.s, 0x85ffb9a9), DECODE_OK);  // ld1rsb {z9.s}, p6/z, [x13, #63]
    EXPECT_EQ(get(st.s->z[9] + 60, 4), 0xFFFFFFFFu);

    Pages pg(1);
    pg.protect(0, PROT_NONE);
    for (const auto& f : kLd1r) {
        std::memset(st.s->p[6], 0xFE, 64);
        st.s->x[13] = pg.addr(0);
        ASSERT_EQ(f.h(st.s, f.word), DECODE_OK) << f.name;
        EXPECT_EQ(get(st.s->z[9], 8) | get(st.s->z[9] + 56, 8), 0u) << f.name;
    }
}

TEST(SpillFill, ZRegisterImageIsItsBytesInOrderAtTheScaledOffset) {
    struct {
        const char* what;
        sve_handler h;
        uint32_t word;
        unsigned zt, xn;
        long offset;
        bool fill;
    } cases[] = {
        {"ldr z21, [x14, #-256, mul vl]", VecU64FillSI, 0x85a041d5, 21, 14, -16384, true},
        {"str z21, [x14, #255, mul vl]", VecU64SpillSI, 0xe59f5dd5, 21, 14, 16320, false},
        {"ldr z0, [sp, #5, mul vl]", VecU64FillSI, 0x858057e0, 0, 31, 320, true},
    };
    Pages pg(12);
    for (const auto& c : cases) {
        SharedState st;
        std::memset(pg.base, 0x5A, 12 * host_page());
        uint8_t* at = pg.page(6) + c.offset;
        for (unsigned k = 0; k < 64; ++k) (c.fill ? at : st.s->z[c.zt])[k] = uint8_t(3 * k + 1);
        st.s->x[c.xn] = pg.addr(6);
        ASSERT_EQ(c.h(st.s, c.word), DECODE_OK) << c.what;
        EXPECT_EQ(std::memcmp(at, st.s->z[c.zt], 64), 0) << c.what;
        EXPECT_EQ(at[-1], 0x5A) << c.what;
        EXPECT_EQ(at[64], 0x5A) << c.what;
    }
}

TEST(SpillFill, PRegisterImageIsOneBitPerVectorByte) {
    SharedState st;
    uint64_t mem[600] = {};
    uint64_t* mid = mem + 300;
    for (unsigned k = 0; k < 64; ++k) st.s->p[13][k] = k % 2 ? 0xFE : 0xFF;
    st.s->x[31] = reinterpret_cast<uint64_t>(mid);
    ASSERT_EQ(VecPSpillSI(st.s, 0xe5a003ed), DECODE_OK);  // str p13, [sp, #-256, mul vl]
    EXPECT_EQ(mid[-256], 0x5555555555555555u);
    EXPECT_EQ(mid[-255] | mid[-257], 0u);

    st.s->x[14] = reinterpret_cast<uint64_t>(mid);
    mid[255] = 0x8000000000000001;
    ASSERT_EQ(VecPFillSI(st.s, 0x859f1dcd), DECODE_OK);  // ldr p13, [x14, #255, mul vl]
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(st.s->p[13][k], k == 0 || k == 63 ? 1 : 0) << k;

    // Round trip: bit 0 of every byte survives, the upper bits do not.
    for (unsigned k = 0; k < 64; ++k) st.s->p[2][k] = uint8_t(k * 37 + 5);
    ASSERT_EQ(sve_str_pri(st.s, {2, 6, 7, 7}, {31, 3}, 4), DECODE_OK);
    ASSERT_EQ(sve_ldr_pri(st.s, {3, 6, 7, 7}, {31, 3}, 4), DECODE_OK);
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(st.s->p[3][k], (k * 37 + 5) & 1) << k;
}

}  // namespace
