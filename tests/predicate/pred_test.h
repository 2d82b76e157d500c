// Shared helpers of the predicate tests: a register file full of junk, and
// readers and writers of predicates that put junk wherever our byte rules
// say a byte or bit is ignored.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>

#include "sve/core/cpu_state.h"
#include "sve/core/handler_util.h"
#include "sve/core/reference.h"
#include "sve/integer/predicate.h"

// Handlers under test, called directly with assembled words.
typedef aarch64_decode_rc (*Handler)(cpu_state*, unsigned);
#define PT_DECLARE(h) aarch64_decode_rc h(cpu_state*, unsigned);
#define PT_HANDLERS(X)                                                                                   \
    X(VecPAndPPZ) X(VecPBicPPZ) X(VecPXorPPZ) X(VecPNorPPZ) X(VecPOrPPZ) X(VecPSelPP) X(VecPAndFlgPPZ)   \
    X(VecPNandPPZ) X(VecPNandFlgPPZ) X(VecPOrNPPZ) X(VecP64TrueI) X(VecP64TrueFlgI) X(VecPFalse)         \
    X(VecPSetFirstActiveP) X(VecP64GenNextP) X(VecPTestPZ) X(VecPActualP) X(VecPActualFlgP)              \
    X(VecPReadFFSRP) X(VecPWriteFFSRP) X(VecPClearFFSR) X(VecPBreakAPM) X(VecPBreakAPZ)                  \
    X(VecPBreakAFlgPZ) X(VecPBreakBPM) X(VecPBreakBPZ) X(VecPBreakBFlgPZ) X(VecPBreakNextPZ)             \
    X(VecPBreakNextFlgPZ) X(VecPBreakPrevAPZ) X(VecPBreakPrevAFlgPZ) X(VecPBreakPrevBPZ)                 \
    X(VecPBreakPrevBFlgPZ) X(VecU32CTermEQ) X(VecU32CTermNE) X(VecU64CTermEQ) X(VecU64CTermNE)
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

inline uint64_t first_n(unsigned n) { return n >= 64 ? ~0ull : (1ull << n) - 1; }

}  // namespace pt
