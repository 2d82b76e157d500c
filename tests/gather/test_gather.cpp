// Gathers, scatters and LD1RQ where the conformance sweep cannot look: the
// process's death on a fault (with what each route has done by then), the
// first-fault gathers swallowing even the first active element's fault, the
// last writer among scatter elements to one address, 32-bit bases past
// 4 GiB, and an index field that the reference CPU rejects.
#include <gtest/gtest.h>

#include "memory/mem_test_util.h"
#include "sve/core/decode.h"
#include "sve/memory/mem_kernels.h"

namespace {

constexpr unsigned ZT = 17, PG = 5, XN = 9, ZV = 20;

// Element 5 of a plain gather or scatter on a no-access page ends the process
// with the handler's message. A kernel has loaded elements 0 to 4 into the
// register; a reference operation hands its result over only at the end, so
// the register is untouched. Stores below element 5 are done on both routes.
TEST(GatherFaults, AnActiveElementOnABadPageEndsTheProcessAfterTheElementsBelow) {
    struct {
        const char* what;
        sve_handler h;
        uint32_t word;  // Zt = z17, Pg = p5, Xn = x9, Zm/Zn = z20, immediate 5 elements
        unsigned c, m;
        bool sign, store, scaled, vi, kernel;
    } forms[] = {
        {"ld1d .d [x9, z20.d]", VecU64Load8VSZ, 0xc5d4d531, 8, 8, false, false, false, false, true},
        {"ld1w .s [x9, z20.s, sxtw #2]", VecU32Load4XSVZ, 0x85745531, 4, 4, false, false, true, false, true},
        {"ld1sb .d [x9, z20.d, uxtw]", VecS64Load1YVSZ, 0xc4141531, 8, 1, true, false, false, false, true},
        {"ld1b .d [x9, z20.d, uxtw]", VecU64Load1YVSZ, 0xc4145531, 8, 1, false, false, false, false, false},
        {"ld1w .s [x9, z20.s, uxtw #2]", VecU32Load4SVZ, 0x85345531, 4, 4, false, false, true, false, false},
        {"st1d .d [x9, z20.d, sxtw]", VecU64Store8XVSZ, 0xe594d531, 8, 8, false, true, false, false, false},
        {"st1w .s [x9, z20.s, sxtw #2]", VecU32Store4XSVZ, 0xe574d531, 4, 4, false, true, true, false, true},
        {"st1w .s [z20.s, #20]", VecU32Store4VIZ, 0xe565b691, 4, 4, false, true, false, true, false},
        {"st1h .d [z20.d, #10]", VecU64Store2VIZ, 0xe4c5b691, 8, 2, false, true, false, true, true},
    };
    Pages lp(4, true);
    ASSERT_NE(lp.base, nullptr);
    lp.protect(3, PROT_NONE);
    for (const auto& f : forms) {
        ASSERT_EQ(is_sve(f.word), f.h) << f.what;
        fill(lp.base, 3 * host_page(), 17);
        SharedState st;
        cpu_state* s = st.s;
        std::memset(s->p[PG], 1, 64);
        fill(s->z[ZT], 64, 91);
        uint8_t before[64];
        std::memcpy(before, s->z[ZT], 64);
        const uint64_t xn = lp.addr(1, 64);
        s->x[XN] = xn;
        uint64_t target[16];
        for (unsigned i = 0; i < 64 / f.c; ++i) {
            target[i] = i == 5 ? lp.addr(3, 8) : xn + 16 * i;
            const uint64_t v = f.vi ? target[i] - 5 * f.m : f.scaled ? (target[i] - xn) / f.m : target[i] - xn;
            put(s->z[ZV] + i * f.c, f.c, v);
        }
        ChildResult r = run_in_child([&] { f.h(s, f.word); });
        EXPECT_TRUE(died_once_by_segv(r)) << f.what << " " << r.status << " " << r.err;
        for (unsigned i = 0; i < 64 / f.c; ++i) {
            if (i == 5) continue;
            if (f.store) {
                uint8_t pattern[8];
                for (unsigned b = 0; b < 8; ++b) pattern[b] = uint8_t((target[i] - lp.addr(0) + b) * 17 + 29);
                EXPECT_EQ(get(target[i], f.m), get(i < 5 ? s->z[ZT] + i * f.c : pattern, f.m)) << f.what << " " << i;
            } else {
                uint64_t want = get(before + i * f.c, f.c);
                if (f.kernel && i < 5) {
                    want = get(target[i], f.m);
                    if (f.sign && (want >> (8 * f.m - 1) & 1)) want |= ~0ull << 8 * f.m;
                    if (f.c < 8) want &= (1ull << 8 * f.c) - 1;
                }
                EXPECT_EQ(get(s->z[ZT] + i * f.c, f.c), want) << f.what << " element " << i;
            }
        }
    }
}

// ldff1d {z17.d}, p5/z, [z20.d, #40] and ldff1w {z17.s}, p5/z, [z20.s, #20]
// with the first active element on a no-access page: no fault, every element
// 0, FFR 0 from that element on and 1 below it (element 0 inactive).
TEST(FirstFaultGathers, TheFirstActiveElementsFaultIsSwallowed) {
    struct {
        sve_handler h;
        uint32_t word;
        unsigned c, m, first;
    } cases[] = {
        {VecU64LoadFF8VIZ, 0xc5a5f691, 8, 8, 0},
        {VecU64LoadFF8VIZ, 0xc5a5f691, 8, 8, 1},
        {VecU32LoadFF4VIZ, 0x8525f691, 4, 4, 0},
        {VecU32LoadFF4VIZ, 0x8525f691, 4, 4, 1},
    };
    Pages lp(2, true);
    ASSERT_NE(lp.base, nullptr);
    lp.protect(1, PROT_NONE);
    for (const auto& c : cases) {
        SharedState st;
        cpu_state* s = st.s;
        std::memset(s->p[PG], 1, 64);
        s->p[PG][0] = c.first == 0;
        std::memset(s->ffr, 0xFF, 64);
        for (unsigned i = 0; i < 64 / c.c; ++i)
            put(s->z[ZV] + i * c.c, c.c, (i == c.first ? lp.addr(1, 8) : lp.addr(0, 16 * i)) - 5 * c.m);
        ChildResult r = run_in_child([&] { c.h(s, c.word); });
        ASSERT_TRUE(completed(r)) << c.c << " " << c.first << ": " << r.err;
        for (unsigned k = 0; k < 64; ++k) {
            EXPECT_EQ(s->z[ZT][k], 0) << c.c << " " << c.first << " byte " << k;
            EXPECT_EQ(s->ffr[k], k < c.first * c.c ? 1 : 0) << c.c << " " << c.first << " FFR byte " << k;
        }
    }
}

// All elements store to one address: the highest active element's value is
// there, on the kernel route and on the reference route; the byte after it
// is untouched.
TEST(Scatters, TheHighestActiveElementIsTheLastWriter) {
    struct {
        const char* what;
        sve_handler h;
        uint32_t word;
        uint64_t offset;  // every element of z20
        unsigned m, at;   // bytes stored, where from x9
    } cases[] = {
        {"st1d {z17.d}, p5, [x9, z20.d] (kernel)", VecU64Store8VSZ, 0xe594b531, 40, 8, 40},
        {"st1h {z17.d}, p5, [x9, z20.d, uxtw #1] (reference)", VecU64Store2YSVZ, 0xe4b49531, 0xFFFFFFFF00000004ull, 2, 8},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(is_sve(c.word), c.h) << c.what;
        uint8_t buf[128];
        std::memset(buf, 0x5A, sizeof buf);
        SharedState st;
        cpu_state* s = st.s;
        std::memset(s->p[PG], 1, 64);
        s->x[XN] = reinterpret_cast<uint64_t>(buf);
        for (unsigned i = 0; i < 8; ++i) {
            put(s->z[ZV] + 8 * i, 8, c.offset);
            put(s->z[ZT] + 8 * i, 8, 0x0101010101010101ull * (i + 1));
        }
        for (uint64_t last : {8, 7}) {
            if (last == 7) s->p[PG][56] = 0;
            ASSERT_EQ(c.h(s, c.word), DECODE_OK) << c.what;
            EXPECT_EQ(get(buf + c.at, c.m), get(s->z[ZT] + 8 * (last - 1), c.m)) << c.what << " element " << last;
            EXPECT_EQ(buf[c.at + c.m], 0x5A) << c.what;
        }
    }
}

// ld1w {z17.s}, p5/z, [z20.s, #20] with base element 0xFFFFFFFC reads at
// 0x100000010: the 32-bit base is widened before the addition, nothing wraps
// at 32 bits.
TEST(Gathers, VectorPlusImmediateWith32BitBasesCrosses4GiB) {
    const uint64_t four_g = 0x100000000ull;
    void* p = mmap(reinterpret_cast<void*>(four_g - host_page()), 2 * host_page(), PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (p != reinterpret_cast<void*>(four_g - host_page())) {
        if (p != MAP_FAILED) munmap(p, 2 * host_page());
        GTEST_SKIP() << "no mapping possible at 4 GiB";
    }
    put(reinterpret_cast<uint8_t*>(four_g + 16), 4, 0xC0FFEE11u);
    put(reinterpret_cast<uint8_t*>(four_g + 12), 4, 0x0BADF00Du);  // element 1: 0xFFFFFFF8 + 20
    SharedState st;
    cpu_state* s = st.s;
    std::memset(s->p[PG], 0, 64);
    s->p[PG][0] = s->p[PG][4] = 1;
    put(s->z[ZV], 4, 0xFFFFFFFCu);
    put(s->z[ZV] + 4, 4, 0xFFFFFFF8u);
    ChildResult r = run_in_child([&] { VecU32Load4VIZ(s, 0x8525d691); });
    EXPECT_TRUE(completed(r)) << r.err;
    EXPECT_EQ(get(s->z[ZT], 4), 0xC0FFEE11u);
    EXPECT_EQ(get(s->z[ZT] + 4, 4), 0x0BADF00Du);
    munmap(p, 2 * host_page());
}

// ld1rqd {z17.d}, p5/z, [x9, #-16] with element 1 on a no-access page: LD1RQ
// reads through the plain reads of the reference operations and dies.
TEST(LD1RQ, AnActiveElementOnABadPageEndsTheProcess) {
    Pages pg(2);
    pg.protect(1, PROT_NONE);
    SharedState st;
    std::memset(st.s->p[PG], 1, 64);
    st.s->x[XN] = pg.addr(1) - 8 + 16;
    ChildResult r = run_in_child([&] { VecU64LoadDup8QSIZ(st.s, 0xa58f3531); });
    EXPECT_TRUE(died_once_by_segv(r)) << r.status << " " << r.err;
}

// ld1rqh {z17.h}, p5/z, [x9, x12, lsl #1] with the Rm field 31 (an
// unallocated encoding that the row accepts and the reference CPU rejects):
// 31 reads as zero, so the segment is at x9 whatever x30 holds.
TEST(LD1RQ, IndexRegister31AddsNothing) {
    alignas(16) uint16_t mem[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    SharedState st;
    std::memset(st.s->p[PG], 1, 64);
    st.s->x[XN] = reinterpret_cast<uint64_t>(mem);
    st.s->x[30] = 1000;
    const uint32_t word = 0xa48c1531 | 31u << 16;
    ASSERT_EQ(is_sve(word), static_cast<sve_handler>(VecU16LoadDup2QSSZ));
    ASSERT_EQ(VecU16LoadDup2QSSZ(st.s, word), DECODE_OK);
    for (unsigned e = 0; e < 32; ++e) EXPECT_EQ(get(st.s->z[ZT] + 2 * e, 2), mem[e % 8]) << e;
}

}  // namespace
