// Contiguous loads and stores, through their handlers with words from the
// assembler, against a model of the architecture's LD1/ST1 written here.
#include <gtest/gtest.h>

#include "mem_test_util.h"
#include "sve/core/decode.h"
#include "sve/memory/mem_kernels.h"

namespace {

struct Form {
    const char* name;
    sve_handler si;  // [x9, #-3, mul vl]
    sve_handler ss;  // [x9, x12, lsl #log2(m)]
    uint32_t si_word, ss_word;
    unsigned m, c;  // memory and register element sizes in bytes
    bool sign, store;
};

// Every word is {z17.T}, p5(/z), with x9 the base and x12 the index.
const Form kForms[] = {
    {"ld1b .b", VecU8CLoad1SIZ, VecU8CLoad1LSSZ, 0xa40db531, 0xa40c5531, 1, 1, false, false},
    {"ld1b .h", VecU16CLoad1SIZ, VecU16CLoad1LSSZ, 0xa42db531, 0xa42c5531, 1, 2, false, false},
    {"ld1b .s", VecU32CLoad1SIZ, VecU32CLoad1LSSZ, 0xa44db531, 0xa44c5531, 1, 4, false, false},
    {"ld1b .d", VecU64CLoad1SIZ, VecU64CLoad1LSSZ, 0xa46db531, 0xa46c5531, 1, 8, false, false},
    {"ld1h .h", VecU16CLoad2SIZ, VecU16CLoad2LSSZ, 0xa4adb531, 0xa4ac5531, 2, 2, false, false},
    {"ld1h .s", VecU32CLoad2SIZ, VecU32CLoad2LSSZ, 0xa4cdb531, 0xa4cc5531, 2, 4, false, false},
    {"ld1h .d", VecU64CLoad2SIZ, VecU64CLoad2LSSZ, 0xa4edb531, 0xa4ec5531, 2, 8, false, false},
    {"ld1w .s", VecU32CLoad4SIZ, VecU32CLoad4LSSZ, 0xa54db531, 0xa54c5531, 4, 4, false, false},
    {"ld1w .d", VecU64CLoad4SIZ, VecU64CLoad4LSSZ, 0xa56db531, 0xa56c5531, 4, 8, false, false},
    {"ld1d .d", VecU64CLoad8SIZ, VecU64CLoad8LSSZ, 0xa5edb531, 0xa5ec5531, 8, 8, false, false},
    {"ld1sb .h", VecS16CLoad1SIZ, VecS16CLoad1LSSZ, 0xa5cdb531, 0xa5cc5531, 1, 2, true, false},
    {"ld1sb .s", VecS32CLoad1SIZ, VecS32CLoad1LSSZ, 0xa5adb531, 0xa5ac5531, 1, 4, true, false},
    {"ld1sb .d", VecS64CLoad1SIZ, VecS64CLoad1LSSZ, 0xa58db531, 0xa58c5531, 1, 8, true, false},
    {"ld1sh .s", VecS32CLoad2SIZ, VecS32CLoad2LSSZ, 0xa52db531, 0xa52c5531, 2, 4, true, false},
    {"ld1sh .d", VecS64CLoad2SIZ, VecS64CLoad2LSSZ, 0xa50db531, 0xa50c5531, 2, 8, true, false},
    {"ld1sw .d", VecS64CLoad4SIZ, VecS64CLoad4LSSZ, 0xa48db531, 0xa48c5531, 4, 8, true, false},
    {"st1b .b", VecU8CStore1SIZ, VecU8CStore1LSSZ, 0xe40df531, 0xe40c5531, 1, 1, false, true},
    {"st1b .h", VecU16CStore1SIZ, VecU16CStore1LSSZ, 0xe42df531, 0xe42c5531, 1, 2, false, true},
    {"st1b .s", VecU32CStore1SIZ, VecU32CStore1LSSZ, 0xe44df531, 0xe44c5531, 1, 4, false, true},
    {"st1b .d", VecU64CStore1SIZ, VecU64CStore1LSSZ, 0xe46df531, 0xe46c5531, 1, 8, false, true},
    {"st1h .h", VecU16CStore2SIZ, VecU16CStore2LSSZ, 0xe4adf531, 0xe4ac5531, 2, 2, false, true},
    {"st1h .s", VecU32CStore2SIZ, VecU32CStore2LSSZ, 0xe4cdf531, 0xe4cc5531, 2, 4, false, true},
    {"st1h .d", VecU64CStore2SIZ, VecU64CStore2LSSZ, 0xe4edf531, 0xe4ec5531, 2, 8, false, true},
    {"st1w .s", VecU32CStore4SIZ, VecU32CStore4LSSZ, 0xe54df531, 0xe54c5531, 4, 4, false, true},
    {"st1w .d", VecU64CStore4SIZ, VecU64CStore4LSSZ, 0xe56df531, 0xe56c5531, 4, 8, false, true},
    {"st1d .d", VecU64CStore8SIZ, VecU64CStore8LSSZ, 0xe5edf531, 0xe5ec5531, 8, 8, false, true},
    {"ldnt1b .b", VecU8CLoadNT1SIZ, VecU8CLoadNT1LSSZ, 0xa40df531, 0xa40cd531, 1, 1, false, false},
    {"ldnt1h .h", VecU16CLoadNT2SIZ, VecU16CLoadNT2LSSZ, 0xa48df531, 0xa48cd531, 2, 2, false, false},
    {"ldnt1w .s", VecU32CLoadNT4SIZ, VecU32CLoadNT4LSSZ, 0xa50df531, 0xa50cd531, 4, 4, false, false},
    {"ldnt1d .d", VecU64CLoadNT8SIZ, VecU64CLoadNT8LSSZ, 0xa58df531, 0xa58cd531, 8, 8, false, false},
    {"stnt1b .b", VecU8CStoreNT1SIZ, VecU8CStoreNT1LSSZ, 0xe41df531, 0xe40c7531, 1, 1, false, true},
    {"stnt1h .h", VecU16CStoreNT2SIZ, VecU16CStoreNT2LSSZ, 0xe49df531, 0xe48c7531, 2, 2, false, true},
    {"stnt1w .s", VecU32CStoreNT4SIZ, VecU32CStoreNT4LSSZ, 0xe51df531, 0xe50c7531, 4, 4, false, true},
    {"stnt1d .d", VecU64CStoreNT8SIZ, VecU64CStoreNT8LSSZ, 0xe59df531, 0xe58c7531, 8, 8, false, true},
};

constexpr unsigned ZT = 17, PG = 5, XN = 9, XM = 12;

uint64_t get(const uint8_t* p, unsigned bytes) {
    uint64_t v = 0;
    for (unsigned b = 0; b < bytes; ++b) v |= uint64_t(p[b]) << 8 * b;
    return v;
}
uint64_t truncate(uint64_t v, unsigned bytes) { return bytes == 8 ? v : v & ((1ull << 8 * bytes) - 1); }
uint64_t extend(uint64_t v, unsigned from, bool sign) {
    if (!sign || from == 8 || !(v >> (8 * from - 1) & 1)) return v;
    return v | ~0ull << 8 * from;
}

// Elements 1, 4, 7, ... are inactive; the first byte of each group says so
// in both spellings (0x00 and 0xFE for off, 0x01 and 0xFF for on) and every
// other byte of a group is 1, which must not matter.
bool is_active(unsigned i) { return i % 3 != 1; }
void set_predicate(cpu_state* s, unsigned c) {
    for (unsigned k = 0; k < 64; ++k) {
        unsigned i = k / c;
        s->p[PG][k] = k % c ? 0x01 : is_active(i) ? (i & 1 ? 0x01 : 0xFF) : (i & 1 ? 0xFE : 0x00);
    }
}

void fill(uint8_t* p, size_t n, unsigned seed) {
    for (size_t k = 0; k < n; ++k) p[k] = uint8_t(k * seed + 29);
}

// Points x9 (and x12) so that the form reads or writes at a chosen base.
struct Placed {
    uint64_t base;
    uint32_t word;
    sve_handler h;
};
Placed place(const Form& f, bool scalar_index, cpu_state* s, const Pages& pg) {
    if (!scalar_index) {
        uint64_t base = pg.addr(1, 40);
        s->x[XN] = base + 3 * (64 / f.c) * f.m;
        return {base, f.si_word, f.si};
    }
    s->x[XN] = pg.addr(1, 8);
    s->x[XM] = 37;
    return {pg.addr(1, 8) + 37 * f.m, f.ss_word, f.ss};
}

TEST(Contiguous, TheDecoderFindsEachFormsHandler) {
    for (const Form& f : kForms) {
        EXPECT_EQ(is_sve(f.si_word), f.si) << f.name;
        EXPECT_EQ(is_sve(f.ss_word), f.ss) << f.name;
    }
    EXPECT_EQ(is_sve(0x85c00000), &VecU8Prefetch1SI);  // prfb pldl1keep, p0, [x0]
}

TEST(Contiguous, EveryLoadReadsActiveElementsAndZeroesTheRest) {
    for (const Form& f : kForms) {
        if (f.store) continue;
        for (bool ss : {false, true}) {
            SharedState st;
            cpu_state* s = st.s;
            Pages pg(4);
            fill(pg.base, 4 * host_page(), 151);
            set_predicate(s, f.c);
            Placed r = place(f, ss, s, pg);
            ASSERT_EQ(r.h(s, r.word), DECODE_OK);
            EXPECT_EQ(s->instruction, r.word);
            const uint8_t* mem = reinterpret_cast<const uint8_t*>(r.base);
            for (unsigned i = 0; i < 64 / f.c; ++i) {
                uint64_t want = is_active(i) ? truncate(extend(get(mem + i * f.m, f.m), f.m, f.sign), f.c) : 0;
                EXPECT_EQ(get(s->z[ZT] + i * f.c, f.c), want) << f.name << (ss ? " ss" : " si") << " element " << i;
            }
            for (unsigned z : {ZT - 1, ZT + 1}) EXPECT_EQ(get(s->z[z], 8), 0xA5A5A5A5A5A5A5A5u);
        }
    }
}

TEST(Contiguous, EveryStoreWritesActiveElementsAndNothingElse) {
    for (const Form& f : kForms) {
        if (!f.store) continue;
        for (bool ss : {false, true}) {
            SharedState st;
            cpu_state* s = st.s;
            Pages pg(4);
            std::memset(pg.base, 0x5A, 4 * host_page());
            fill(s->z[ZT], 64, 73);
            set_predicate(s, f.c);
            Placed r = place(f, ss, s, pg);
            ASSERT_EQ(r.h(s, r.word), DECODE_OK);
            for (size_t k = 0; k < 4 * host_page(); ++k) {
                uint64_t a = pg.addr(0, k);
                uint8_t want = 0x5A;
                if (a >= r.base && a < r.base + (64 / f.c) * f.m) {
                    unsigned i = (a - r.base) / f.m, b = (a - r.base) % f.m;
                    if (is_active(i)) want = s->z[ZT][i * f.c + b];
                }
                ASSERT_EQ(pg.base[k], want) << f.name << (ss ? " ss" : " si") << " byte " << k;
            }
        }
    }
}

TEST(Contiguous, AllFalsePredicateTouchesNoMemory) {
    Pages pg(1);
    pg.protect(0, PROT_NONE);
    for (const Form& f : kForms) {
        for (uint32_t w : {f.si_word, f.ss_word}) {
            SharedState st;
            cpu_state* s = st.s;
            std::memset(s->p[PG], 0xFE, 64);
            s->x[XN] = pg.addr(0, 64);
            s->x[XM] = 1;
            ASSERT_EQ((w == f.si_word ? f.si : f.ss)(s, w), DECODE_OK) << f.name;
            for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->z[ZT][k], f.store ? 0xA5 : 0) << f.name;
        }
    }
}

// Single words whose expectations are worked out by hand.
TEST(Contiguous, HandWorkedAddressingAndExtension) {
    struct {
        const char* what;
        sve_handler h;
        uint32_t word;
        unsigned zt, pg, xn, xm;
        uint64_t xm_value;
        long offset;  // where element 0 must be read, from x[xn]
        uint64_t mem;  // the bytes there, little-endian
        uint64_t element0;
        unsigned c;
    } cases[] = {
        {"ld1sb {z17.h}, p5/z, [x9, #-3, mul vl]", VecS16CLoad1SIZ, 0xa5cdb531, 17, 5, 9, 12, 0, -96, 0x80, 0xFF80, 2},
        {"ld1b {z17.h}, p5/z, [x9, #-3, mul vl]", VecU16CLoad1SIZ, 0xa42db531, 17, 5, 9, 12, 0, -96, 0x80, 0x0080, 2},
        {"ld1sh {z17.s}, p5/z, [x9, x12, lsl #1]", VecS32CLoad2LSSZ, 0xa52c5531, 17, 5, 9, 12, 5, 10, 0x7FFF, 0x7FFF, 4},
        {"ld1sw {z17.d}, p5/z, [x9, #-3, mul vl]", VecS64CLoad4SIZ, 0xa48db531, 17, 5, 9, 12, 0, -96, 0x80000000,
         0xFFFFFFFF80000000, 8},
        {"ld1b {z31.d}, p7/z, [x0, #-8, mul vl]", VecU64CLoad1SIZ, 0xa468bc1f, 31, 7, 0, 31, 0, -64, 0xFE, 0xFE, 8},
        {"ld1h {z17.h}, p5/z, [x9, x12, lsl #1], x12 = 3", VecU16CLoad2LSSZ, 0xa4ac5531, 17, 5, 9, 12, 3, 6, 0xBEEF,
         0xBEEF, 2},
        {"ld1sh {z4.d}, p3/z, [sp, xzr, lsl #1]", VecS64CLoad2LSSZ, 0xa51f4fe4, 4, 3, 31, 30, 1000, 0, 0x8001,
         0xFFFFFFFFFFFF8001, 8},
        {"ld1w {z0.s}, p0/z, [sp, #7, mul vl]", VecU32CLoad4SIZ, 0xa547a3e0, 0, 0, 31, 7, 0, 448, 0xCAFEF00D,
         0xCAFEF00D, 4},
        {"ld1d {z17.d}, p5/z, [x9, x12, lsl #3], x12 = -1", VecU64CLoad8LSSZ, 0xa5ec5531, 17, 5, 9, 12, ~0ull, -8,
         0x0123456789ABCDEF, 0x0123456789ABCDEF, 8},
    };
    for (const auto& c : cases) {
        SharedState st;
        cpu_state* s = st.s;
        uint8_t buf[1024] = {};
        std::memset(s->p[c.pg], 1, 64);
        s->x[c.xn] = reinterpret_cast<uint64_t>(buf) + 512;
        if (c.xm != 31) s->x[c.xm] = c.xm_value;
        std::memcpy(buf + 512 + c.offset, &c.mem, 8);
        ASSERT_EQ(c.h(s, c.word), DECODE_OK) << c.what;
        EXPECT_EQ(get(s->z[c.zt], c.c), c.element0) << c.what;
    }
}

// ld1w {z17.s}, p5/z, [x9, #-3, mul vl] with element 5 on a no-access page:
// elements 0 to 4 are in the register when the process dies, 5 on are not.
TEST(ContiguousFaults, LoadDiesOnTheFirstBadActiveElementWithElementsBelowDone) {
    SharedState st;
    cpu_state* s = st.s;
    Pages pg(2);
    pg.protect(1, PROT_NONE);
    fill(pg.base, host_page(), 7);
    std::memset(s->p[PG], 1, 64);
    uint64_t base = pg.addr(1, -5 * 4);
    s->x[XN] = base + 3 * 64;
    ChildResult r = run_in_child([&] { VecU32CLoad4SIZ(s, 0xa54db531); });
    EXPECT_TRUE(died_by(r, SIGSEGV)) << r.status;
    EXPECT_EQ(count_of(r.err, kSegvMessage), 1) << r.err;
    for (unsigned i = 0; i < 16; ++i)
        EXPECT_EQ(get(s->z[ZT] + 4 * i, 4), i < 5 ? get(reinterpret_cast<uint8_t*>(base) + 4 * i, 4) : 0xA5A5A5A5u)
            << i;
    // With the elements on the bad page inactive the same load completes.
    for (unsigned i = 5; i < 16; ++i) s->p[PG][4 * i] = 0;
    r = run_in_child([&] { VecU32CLoad4SIZ(s, 0xa54db531); });
    EXPECT_TRUE(WIFEXITED(r.status) && WEXITSTATUS(r.status) == 0) << r.status;
    EXPECT_EQ(get(s->z[ZT] + 4 * 15, 4), 0u);
}

// st1h {z17.d}, p5, [x9, x12, lsl #1] with element 3 on a read-only page.
TEST(ContiguousFaults, StoreDiesOnElementThreeAfterStoringZeroToTwo) {
    SharedState st;
    cpu_state* s = st.s;
    Pages pg(2);
    std::memset(pg.base, 0x5A, 2 * host_page());
    pg.protect(1, PROT_READ);
    std::memset(s->p[PG], 1, 64);
    fill(s->z[ZT], 64, 13);
    s->x[XN] = pg.addr(1, -3 * 2 - 20);
    s->x[XM] = 10;
    ChildResult r = run_in_child([&] { VecU64CStore2LSSZ(s, 0xe4ec5531); });
    EXPECT_TRUE(died_by(r, SIGSEGV)) << r.status;
    EXPECT_EQ(count_of(r.err, kSegvMessage), 1) << r.err;
    const uint8_t* at = pg.page(1) - 6;
    for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(get(at + 2 * i, 2), get(s->z[ZT] + 8 * i, 2)) << i;
    EXPECT_EQ(at[-1], 0x5A);
    EXPECT_EQ(pg.page(1)[0], 0x5A);
}

TEST(Prefetch, EveryFormDoesNothingAtAll) {
    const sve_handler all[] = {
        VecU8Prefetch1SI,   VecU16Prefetch2SI,  VecU32Prefetch4SI,  VecU64Prefetch8SI,  VecU8Prefetch1LSS,
        VecU16Prefetch2LSS, VecU32Prefetch4LSS, VecU64Prefetch8LSS, VecU32Prefetch1VI,  VecU32Prefetch2VI,
        VecU32Prefetch4VI,  VecU32Prefetch8VI,  VecU32Prefetch1XSV, VecU32Prefetch2XSV, VecU32Prefetch4XSV,
        VecU32Prefetch8XSV, VecU32Prefetch1YSV, VecU32Prefetch2YSV, VecU32Prefetch4YSV, VecU32Prefetch8YSV,
        VecU64Prefetch1VI,  VecU64Prefetch2VI,  VecU64Prefetch4VI,  VecU64Prefetch8VI,  VecU64Prefetch1XSV,
        VecU64Prefetch2XSV, VecU64Prefetch4XSV, VecU64Prefetch8XSV, VecU64Prefetch1YSV, VecU64Prefetch2YSV,
        VecU64Prefetch4YSV, VecU64Prefetch8YSV, VecU64Prefetch1SV,  VecU64Prefetch2SV,  VecU64Prefetch4SV,
        VecU64Prefetch8SV,
    };
    static_assert(sizeof all / sizeof all[0] == 36);
    SharedState st;
    cpu_state* s = st.s;
    std::memset(s->x, 0, sizeof s->x);  // prfb pldl1keep, p0, [x0] with x0 = 0
    std::memset(s->p[0], 1, 64);
    cpu_state before = *s;
    for (sve_handler h : all) {
        EXPECT_EQ(h(s, 0x85c00000), DECODE_OK);
        EXPECT_EQ(std::memcmp(s, &before, sizeof before), 0);
    }
}

}  // namespace
