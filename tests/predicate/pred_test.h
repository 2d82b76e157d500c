// Shared helpers of the predicate tests: a register file full of junk, and
// readers and writers of predicates that put junk wherever our byte rules
// say a byte or bit is ignored.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <string>

#include "sve/core/cpu_state.h"
#include "sve/core/handler_util.h"
#include "sve/core/reference.h"
#include "sve/integer/predicate.h"

// Handlers under test, called directly with assembled words.
#define PT_DECLARE(h) aarch64_decode_rc h(cpu_state*, unsigned);
#define PT_HANDLERS(X)                                                                                       \
    X(VecPAndPPZ) X(VecPBicPPZ) X(VecPXorPPZ) X(VecPNorPPZ) X(VecPOrPPZ) X(VecPSelPP) X(VecPAndFlgPPZ)       \
    X(VecPBicFlgPPZ) X(VecPXorFlgPPZ) X(VecPNandPPZ) X(VecPNandFlgPPZ) X(VecPNorFlgPPZ) X(VecPOrNPPZ)       \
    X(VecPOrNFlgPPZ) X(VecPOrFlgPPZ) X(VecP8TrueI) X(VecP16TrueI) X(VecP32TrueI) X(VecP64TrueI)            \
    X(VecP8TrueFlgI) X(VecP16TrueFlgI) X(VecP32TrueFlgI) X(VecP64TrueFlgI) X(VecPFalse)                    \
    X(VecPSetFirstActiveP) X(VecP8GenNextP) X(VecP16GenNextP) X(VecP32GenNextP) X(VecP64GenNextP)          \
    X(VecPTestPZ) X(VecPActualP) X(VecPActualFlgP) X(VecPReadFFSRP) X(VecPWriteFFSRP) X(VecPClearFFSR)      \
    X(VecPBreakAPM) X(VecPBreakAPZ) X(VecPBreakAFlgPZ) X(VecPBreakBPM) X(VecPBreakBPZ) X(VecPBreakBFlgPZ)  \
    X(VecPBreakNextPZ) X(VecPBreakNextFlgPZ) X(VecPBreakPrevAPZ) X(VecPBreakPrevAFlgPZ)                    \
    X(VecPBreakPrevBPZ) X(VecPBreakPrevBFlgPZ) X(VecU32CTermEQ) X(VecU32CTermNE) X(VecU64CTermEQ)         \
    X(VecU64CTermNE)
PT_HANDLERS(PT_DECLARE)

namespace pt {

// NZCV with every bit but the four flags set to a recognisable pattern, and
// the flags themselves set to `flags` (N at bit 3 ... V at bit 0).
constexpr uint64_t kNzcvJunk = 0xa5c3e1f0'0b5a5a5aull;
inline uint64_t nzcv_with(unsigned flags) { return kNzcvJunk | uint64_t(flags & 15) << 28; }

// Flags as a 4-bit number N Z C V, for readable expectations: F(1,0,1,0).
constexpr unsigned F(unsigned n, unsigned z, unsigned c, unsigned v = 0) { return n << 3 | z << 2 | c << 1 | v; }
inline unsigned flags(const cpu_state* s) { return unsigned(s->nzcv >> 28) & 15; }
inline unsigned flags(const CpuContext& c) { return (c.nzcv >> 28) & 15; }

// A byte whose bit 0 is clear and whose other bits vary with k.
inline uint8_t junk_hi(unsigned k) { return uint8_t((0x5a + 37 * k) & 0xfe); }
// A byte of any value, used where a whole byte is ignored.
inline uint8_t junk_any(unsigned k) { return uint8_t(0x93 + 71 * k); }

inline std::unique_ptr<cpu_state> make_state() {
    auto s = std::make_unique<cpu_state>();
    auto* raw = reinterpret_cast<uint8_t*>(s.get());
    for (size_t i = 0; i < sizeof(cpu_state); ++i) raw[i] = junk_any(unsigned(i));
    s->nzcv = nzcv_with(0);
    return s;
}

// Element i of `size` (0..3) active where bit i of `elems` is set. The first
// byte of each group carries the bit under junk upper bits; the other bytes
// of the group are junk of any value, bit 0 included.
inline void set_pelems(uint8_t* bytes, unsigned size, uint64_t elems) {
    const unsigned w = 1u << size;
    for (unsigned k = 0; k < 64; ++k)
        bytes[k] = (k % w == 0) ? uint8_t((elems >> (k / w) & 1) | junk_hi(k)) : uint8_t(junk_any(k) | 1);
}
// The exact bytes of a predicate written at element size `size` with the
// given elements: 1 in the first byte of a true element, 0 everywhere else.
inline void expect_clean_elems(const uint8_t* bytes, unsigned size, uint64_t elems, const char* what) {
    const unsigned w = 1u << size;
    for (unsigned k = 0; k < 64; ++k) {
        uint8_t want = (k % w == 0) ? uint8_t(elems >> (k / w) & 1) : 0;
        EXPECT_EQ(bytes[k], want) << what << ": byte " << k;
    }
}

// One instruction that writes p1 from predicates p1..p4, each loaded with
// set_pelems at the row's element size. `flags` -1: the instruction sets no
// flag. Reference-route rows lose bits 63..32 of nzcv; kernel rows keep them.
typedef aarch64_decode_rc (*Handler)(cpu_state*, unsigned);
struct PredRow {
    const char* name;
    Handler handler;
    unsigned word;
    unsigned size;
    uint64_t p1, p2, p3, p4;
    uint64_t want;
    int flags;
    bool reference_route;
};

inline void run_pred_rows(const PredRow* rows, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const PredRow& r = rows[i];
        auto s = make_state();
        const uint64_t in[4] = {r.p1, r.p2, r.p3, r.p4};
        for (unsigned n = 0; n < 4; ++n) set_pelems(s->p[n + 1], r.size, in[n]);
        const unsigned flags_in = r.flags < 0 ? F(1, 0, 1, 1) : F(1, 1, 1, 1) ^ unsigned(r.flags);
        s->nzcv = nzcv_with(flags_in);
        ASSERT_EQ(r.handler(s.get(), r.word), DECODE_OK) << r.name;
        expect_clean_elems(s->p[1], r.size, r.want, r.name);
        EXPECT_EQ(flags(s.get()), r.flags < 0 ? flags_in : unsigned(r.flags)) << r.name;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, r.reference_route ? kNzcvJunk & 0x0fffffffu : kNzcvJunk) << r.name;
    }
}
template <size_t N>
inline void run_pred_rows(const PredRow (&rows)[N]) {
    run_pred_rows(rows, N);
}

inline CpuContext make_ctx(unsigned flags_in = 0) {
    CpuContext c{};
    c.nzcv = uint32_t(nzcv_with(flags_in));
    c.vl = 8;
    return c;
}
inline PredV pv(uint64_t w0) {
    PredV p{};
    p.w[0] = w0;
    return p;
}

}  // namespace pt
