// LD1RQ: a 16-byte segment under the first 16 predicate bits, replicated.
#include <gtest/gtest.h>

#include "gather/gather_test_util.h"
#include "sve/core/decode.h"

namespace gather_test {
namespace {

struct RQForm {
    const char* name;
    sve_handler h;
    uint32_t word;
    unsigned m;
    bool index;     // scalar plus scalar: x12 counts elements
    long imm;       // bytes the immediate adds (scalar plus immediate)
};

// ld1rq{b,h,w,d} {z17.T}, p5/z, [x9, #-16], [x9, #112], [x9, x12{, lsl #k}]
const RQForm kRQ[] = {
    {"ld1rqb #-16", VecU8LoadDup1QSIZ, 0xa40f3531, 1, false, -16},
    {"ld1rqb #112", VecU8LoadDup1QSIZ, 0xa4073531, 1, false, 112},
    {"ld1rqb x12", VecU8LoadDup1QSSZ, 0xa40c1531, 1, true, 0},
    {"ld1rqh #-16", VecU16LoadDup2QSIZ, 0xa48f3531, 2, false, -16},
    {"ld1rqh #112", VecU16LoadDup2QSIZ, 0xa4873531, 2, false, 112},
    {"ld1rqh x12", VecU16LoadDup2QSSZ, 0xa48c1531, 2, true, 0},
    {"ld1rqw #-16", VecU32LoadDup4QSIZ, 0xa50f3531, 4, false, -16},
    {"ld1rqw #112", VecU32LoadDup4QSIZ, 0xa5073531, 4, false, 112},
    {"ld1rqw x12", VecU32LoadDup4QSSZ, 0xa50c1531, 4, true, 0},
    {"ld1rqd #-16", VecU64LoadDup8QSIZ, 0xa58f3531, 8, false, -16},
    {"ld1rqd #112", VecU64LoadDup8QSIZ, 0xa5873531, 8, false, 112},
    {"ld1rqd x12", VecU64LoadDup8QSSZ, 0xa58c1531, 8, true, 0},
};

TEST(LD1RQ, TheDecoderFindsEachFormsHandler) {
    for (const RQForm& f : kRQ) EXPECT_EQ(is_sve(f.word), f.h) << f.name;
}

// The segment lies across the end of a readable page: its upper 8 bytes are
// on a no-access page, and the elements there are inactive, so nothing may
// touch them. The lower elements alternate active (three of every four,
// spelled 0x01 or 0xFF) and inactive (0x00 or 0xFE). Predicate bytes 16 to
// 63 are set to 1 and must not matter; every copy of the segment is the same.
TEST(LD1RQ, EveryFormReadsTheActiveElementsOfOneSegmentAndReplicatesIt) {
    LowPages lp(2);
    ASSERT_NE(lp.base, nullptr);
    for (size_t k = 0; k < host_page(); ++k) lp.base[k] = uint8_t(k * 37 + 11);
    const uint64_t segment = lp.trap() - 8;
    for (const RQForm& f : kRQ) {
        for (int64_t index : {int64_t(3), int64_t(-2)}) {
            if (!f.index && index != 3) continue;
            SharedState st;
            cpu_state* s = st.s;
            auto active = [&](unsigned e) { return e * f.m < 8 && e % 4 != 2; };
            for (unsigned k = 0; k < 64; ++k) {
                unsigned e = k / f.m;
                s->p[PG][k] = k >= 16 ? 1 : k % f.m ? 1 : active(e) ? (e & 1 ? 0x01 : 0xFF) : (e & 1 ? 0xFE : 0x00);
            }
            std::memset(s->ffr, 0x03, 64);
            if (f.index) {
                s->x[12] = static_cast<uint64_t>(index);
                s->x[XN] = segment - static_cast<uint64_t>(index) * f.m;
            } else {
                s->x[XN] = segment - f.imm;
            }
            ChildResult r = run_in_child([&] { f.h(s, f.word); });
            ASSERT_TRUE(WIFEXITED(r.status) && WEXITSTATUS(r.status) == 0) << f.name << ": " << r.err;
            for (unsigned k = 0; k < 64; ++k) {
                unsigned b = k % 16, e = b / f.m;
                uint8_t want = active(e) ? reinterpret_cast<uint8_t*>(segment)[b] : 0;
                ASSERT_EQ(s->z[ZT][k], want) << f.name << " index " << index << " byte " << k;
            }
            for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->ffr[k], 1) << f.name;
            EXPECT_EQ(get(reinterpret_cast<uint8_t*>(&s->instruction), 8), 0xA5A5A5A5A5A5A5A5ull) << f.name;
        }
    }
}

// ld1rqw {z17.s}, p5/z, [x9, #-16] with predicate bits 0 and 8 set and 4 and
// 12 clear: elements 0 and 2 of each segment from base - 16, 1 and 3 zero;
// bits 16 to 63 have no effect.
TEST(LD1RQ, HandWorkedWordSegment) {
    alignas(16) uint32_t mem[8] = {0x11111111, 0x22222222, 0x33333333, 0x44444444, 0x55555555, 0, 0, 0};
    SharedState st;
    cpu_state* s = st.s;
    std::memset(s->p[PG], 0, 64);
    s->p[PG][0] = s->p[PG][8] = 1;
    for (unsigned k = 16; k < 64; k += 4) s->p[PG][k] = 1;
    s->x[XN] = reinterpret_cast<uint64_t>(&mem[4]);
    ASSERT_EQ(VecU32LoadDup4QSIZ(s, 0xa50f3531), DECODE_OK);
    const uint32_t want[4] = {0x11111111, 0, 0x33333333, 0};
    for (unsigned e = 0; e < 16; ++e) EXPECT_EQ(get(s->z[ZT] + 4 * e, 4), want[e % 4]) << e;
}

// ld1rqh {z17.h}, p5/z, [x9, x12, lsl #1] with the Rm field 31 (an
// unallocated encoding that the row accepts): 31 reads as zero, so the
// segment is at x9 whatever x30 holds.
TEST(LD1RQ, IndexRegister31AddsNothing) {
    alignas(16) uint16_t mem[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    SharedState st;
    cpu_state* s = st.s;
    std::memset(s->p[PG], 1, 64);
    s->x[XN] = reinterpret_cast<uint64_t>(mem);
    s->x[30] = 1000;
    const uint32_t word = 0xa48c1531 | 31u << 16;
    ASSERT_EQ(is_sve(word), static_cast<sve_handler>(VecU16LoadDup2QSSZ));
    ASSERT_EQ(VecU16LoadDup2QSSZ(s, word), DECODE_OK);
    for (unsigned e = 0; e < 32; ++e) EXPECT_EQ(get(s->z[ZT] + 2 * e, 2), mem[e % 8]) << e;
}

// An active element on an unreadable page ends the process: LD1RQ reads
// through the plain reads of the reference operations.
TEST(LD1RQ, AnActiveElementOnABadPageEndsTheProcess) {
    LowPages lp(2);
    ASSERT_NE(lp.base, nullptr);
    SharedState st;
    cpu_state* s = st.s;
    std::memset(s->p[PG], 1, 64);
    s->x[XN] = lp.trap() - 8 + 16;  // ld1rqd #-16: element 1 on the bad page
    ChildResult r = run_in_child([&] { VecU64LoadDup8QSIZ(s, 0xa58f3531); });
    EXPECT_TRUE(died_by(r, SIGSEGV)) << r.status;
    EXPECT_EQ(count_of(r.err, kSegvMessage), 1) << r.err;
}

}  // namespace
}  // namespace gather_test
