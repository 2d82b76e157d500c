// What the conformance sweep cannot see of the loads and stores: no access
// under an all-false predicate, the process's death on a fault with the
// elements below it done, register groups wrapping from Z31 to Z0, and the
// memory image of a spilled predicate.
#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <vector>

#include "memory/mem_test_util.h"
#include "sve/core/decode.h"
#include "sve/memory/mem_kernels.h"

namespace {

// Every predicated memory row of the decode table, on words with random
// operand fields, with every predicate all false (in both spellings), every
// base and index register on a no-access page and every vector element 0 (so
// a vector-plus-immediate base is the null page): nothing may be read or
// written, and FFR keeps every bit.
TEST(AllFalsePredicate, NoMemoryRowTouchesAnything) {
    SharedState st;  // before the hole, so that it cannot land there
    Pages pg(16);
    for (size_t k = 0; k < 16; ++k) pg.protect(k, PROT_NONE);
    const std::regex memory_row("Vec.*(Load|Store|Prefetch).*");
    std::mt19937 rng(2024);
    unsigned rows = 0;
    for (size_t r = 0; r < sve_row_count; ++r) {
        const sve_row& row = sve_rows[r];
        if (!row.handler || !std::regex_match(row.name, memory_row)) continue;
        ++rows;
        uint32_t words[6] = {row.bits, row.bits | ~row.mask};
        for (int k = 2; k < 6; ++k) words[k] = row.bits | (rng() & ~row.mask);
        cpu_state* s = st.s;
        for (uint64_t& x : s->x) x = pg.addr(8);
        std::memset(s->z, 0, sizeof s->z);
        for (unsigned p = 0; p < 16; ++p) std::memset(s->p[p], p & 1 ? 0xFE : 0x00, 64);
        std::memset(s->ffr, 1, 64);
        ChildResult res = run_in_child([&] {
            for (uint32_t w : words) row.handler(s, w);
        });
        EXPECT_TRUE(completed(res)) << row.name << " " << res.status << " " << res.err;
        for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->ffr[k], 1) << row.name << " FFR byte " << k;
    }
    EXPECT_GT(rows, 300u);
}

// ld1w {z17.s}, p5/z, [x9, #-3, mul vl] with element 5 on a no-access page:
// elements 0 to 4 are in the register when the process dies, 5 on are not.
// With the elements on the bad page inactive the same load completes.
TEST(ContiguousFaults, LoadDiesOnTheFirstBadActiveElementWithElementsBelowDone) {
    SharedState st;
    cpu_state* s = st.s;
    Pages pg(2);
    pg.protect(1, PROT_NONE);
    fill(pg.base, host_page(), 7);
    std::memset(s->p[5], 1, 64);
    const uint64_t base = pg.addr(1, -5 * 4);
    s->x[9] = base + 3 * 64;
    ChildResult r = run_in_child([&] { VecU32CLoad4SIZ(s, 0xa54db531); });
    EXPECT_TRUE(died_once_by_segv(r)) << r.status << r.err;
    for (unsigned i = 0; i < 16; ++i)
        EXPECT_EQ(get(s->z[17] + 4 * i, 4), i < 5 ? get(base + 4 * i, 4) : 0xA5A5A5A5u) << i;
    for (unsigned i = 5; i < 16; ++i) s->p[5][4 * i] = 0;
    r = run_in_child([&] { VecU32CLoad4SIZ(s, 0xa54db531); });
    EXPECT_TRUE(completed(r)) << r.status;
    EXPECT_EQ(get(s->z[17] + 4 * 15, 4), 0u);
}

// st1h {z17.d}, p5, [x9, x12, lsl #1] with element 3 on a read-only page:
// elements 0 to 2 are stored, nothing around them.
TEST(ContiguousFaults, StoreDiesOnElementThreeAfterStoringZeroToTwo) {
    SharedState st;
    cpu_state* s = st.s;
    Pages pg(2);
    std::memset(pg.base, 0x5A, 2 * host_page());
    pg.protect(1, PROT_READ);
    std::memset(s->p[5], 1, 64);
    fill(s->z[17], 64, 13);
    s->x[9] = pg.addr(1, -3 * 2 - 20);
    s->x[12] = 10;
    ChildResult r = run_in_child([&] { VecU64CStore2LSSZ(s, 0xe4ec5531); });
    EXPECT_TRUE(died_once_by_segv(r)) << r.status << r.err;
    const uint8_t* at = pg.page(1) - 6;
    for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(get(at + 2 * i, 2), get(s->z[17] + 8 * i, 2)) << i;
    EXPECT_EQ(at[-1], 0x5A);
    EXPECT_EQ(pg.page(1)[0], 0x5A);
}

// Member k of structure i is at base + (i * N + k) * size and belongs to
// register (zt + k) mod 32. The register after the group is not touched.
TEST(Structure, RegisterGroupsWrapFromZ31ToZ0) {
    struct {
        const char* what;
        sve_handler h;
        uint32_t word;
        unsigned zt, n, size, xn;
        long imm;  // bytes the immediate adds to x[xn]
        bool store;
    } cases[] = {
        {"ld3b {z31.b, z0.b, z1.b}, p0/z, [x1]", VecU8E3Load1SIZ, 0xa440e03f, 31, 3, 1, 1, 0, false},
        {"ld4d {z30.d-z1.d}, p3/z, [x7, #-8, mul vl]", VecU64E4Load8SIZ, 0xa5eeecfe, 30, 4, 8, 7, -512, false},
        {"st4b {z30.b-z1.b}, p3, [x7, #-8, mul vl]", VecU8E4Store1SIZ, 0xe47eecfe, 30, 4, 1, 7, -512, true},
        {"st2h {z31.h, z0.h}, p3, [x7, #-4, mul vl]", VecU16E2Store2SIZ, 0xe4beecff, 31, 2, 2, 7, -256, true},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(is_sve(c.word), c.h) << c.what;
        SharedState st;
        std::vector<uint8_t> mem(1024, 0x5A);
        if (!c.store) fill(mem.data(), mem.size(), 151);
        for (unsigned k = 0; k < c.n; ++k) fill(st.s->z[(c.zt + k) & 31], 64, 37 + 2 * k);
        std::memset(st.s->p[0], 1, 64);
        std::memset(st.s->p[3], 1, 64);
        uint8_t* base = mem.data() + 256;
        st.s->x[c.xn] = reinterpret_cast<uint64_t>(base) - c.imm;
        ASSERT_EQ(c.h(st.s, c.word), DECODE_OK) << c.what;
        for (unsigned i = 0; i < 64 / c.size; ++i)
            for (unsigned k = 0; k < c.n; ++k)
                ASSERT_EQ(get(st.s->z[(c.zt + k) & 31] + i * c.size, c.size), get(base + (i * c.n + k) * c.size, c.size))
                    << c.what << " z" << ((c.zt + k) & 31) << " element " << i;
        EXPECT_EQ(get(st.s->z[(c.zt + c.n) & 31], 8), kUntouched) << c.what;
        if (c.store) {
            EXPECT_EQ(base[-1] & base[c.n * 64], 0x5A) << c.what;
        }
    }
}

// str p13, [sp, #-256, mul vl] writes one bit per vector byte (bit 0 of each
// predicate byte), 8 bytes in all; ldr p13, [x14, #255, mul vl] reads them
// back into bit 0 of each byte.
TEST(SpillFill, PRegisterImageIsOneBitPerVectorByte) {
    SharedState st;
    uint64_t mem[600] = {};
    uint64_t* mid = mem + 300;
    for (unsigned k = 0; k < 64; ++k) st.s->p[13][k] = k % 2 ? 0xFE : 0xFF;
    st.s->x[31] = reinterpret_cast<uint64_t>(mid);
    ASSERT_EQ(VecPSpillSI(st.s, 0xe5a003ed), DECODE_OK);
    EXPECT_EQ(mid[-256], 0x5555555555555555u);
    EXPECT_EQ(mid[-255] | mid[-257], 0u);

    st.s->x[14] = reinterpret_cast<uint64_t>(mid);
    mid[255] = 0x8000000000000001;
    ASSERT_EQ(VecPFillSI(st.s, 0x859f1dcd), DECODE_OK);
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(st.s->p[13][k], k == 0 || k == 63 ? 1 : 0) << k;
}

}  // namespace
