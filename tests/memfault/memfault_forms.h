// The non-fault and contiguous first-fault forms, with words from the
// assembler. All use Zt = z17, Pg = p5, Xn = x9; LDNF1 comes with the
// immediates #1 and #-8 (mul vl), LDFF1 with Xm = x12 and with xzr.
#pragma once

#include <cstdint>

#include "memory/mem_test_util.h"
#include "sve/core/cpu_state.h"
#include "sve/memory/mem_kernels.h"

namespace memfault_test {

constexpr unsigned ZT = 17, PG = 5, XN = 9, XM = 12;

struct NFForm {
    const char* name;
    sve_handler h;
    uint32_t word_plus1, word_minus8;
    unsigned m, c;
    bool sign;
};

inline const NFForm kNF[] = {
    {"VecU8CLoadNF1SIZ", VecU8CLoadNF1SIZ, 0xa411b531, 0xa418b531, 1, 1, false},  // ldnf1b {z17.b}, p5/z, [x9, #1, mul vl]
    {"VecU16CLoadNF1SIZ", VecU16CLoadNF1SIZ, 0xa431b531, 0xa438b531, 1, 2, false},  // ldnf1b {z17.h}, p5/z, [x9, #1, mul vl]
    {"VecU32CLoadNF1SIZ", VecU32CLoadNF1SIZ, 0xa451b531, 0xa458b531, 1, 4, false},  // ldnf1b {z17.s}, p5/z, [x9, #1, mul vl]
    {"VecU64CLoadNF1SIZ", VecU64CLoadNF1SIZ, 0xa471b531, 0xa478b531, 1, 8, false},  // ldnf1b {z17.d}, p5/z, [x9, #1, mul vl]
    {"VecU16CLoadNF2SIZ", VecU16CLoadNF2SIZ, 0xa4b1b531, 0xa4b8b531, 2, 2, false},  // ldnf1h {z17.h}, p5/z, [x9, #1, mul vl]
    {"VecU32CLoadNF2SIZ", VecU32CLoadNF2SIZ, 0xa4d1b531, 0xa4d8b531, 2, 4, false},  // ldnf1h {z17.s}, p5/z, [x9, #1, mul vl]
    {"VecU64CLoadNF2SIZ", VecU64CLoadNF2SIZ, 0xa4f1b531, 0xa4f8b531, 2, 8, false},  // ldnf1h {z17.d}, p5/z, [x9, #1, mul vl]
    {"VecU32CLoadNF4SIZ", VecU32CLoadNF4SIZ, 0xa551b531, 0xa558b531, 4, 4, false},  // ldnf1w {z17.s}, p5/z, [x9, #1, mul vl]
    {"VecU64CLoadNF4SIZ", VecU64CLoadNF4SIZ, 0xa571b531, 0xa578b531, 4, 8, false},  // ldnf1w {z17.d}, p5/z, [x9, #1, mul vl]
    {"VecU64CLoadNF8SIZ", VecU64CLoadNF8SIZ, 0xa5f1b531, 0xa5f8b531, 8, 8, false},  // ldnf1d {z17.d}, p5/z, [x9, #1, mul vl]
    {"VecS16CLoadNF1SIZ", VecS16CLoadNF1SIZ, 0xa5d1b531, 0xa5d8b531, 1, 2, true},  // ldnf1sb {z17.h}, p5/z, [x9, #1, mul vl]
    {"VecS32CLoadNF1SIZ", VecS32CLoadNF1SIZ, 0xa5b1b531, 0xa5b8b531, 1, 4, true},  // ldnf1sb {z17.s}, p5/z, [x9, #1, mul vl]
    {"VecS64CLoadNF1SIZ", VecS64CLoadNF1SIZ, 0xa591b531, 0xa598b531, 1, 8, true},  // ldnf1sb {z17.d}, p5/z, [x9, #1, mul vl]
    {"VecS32CLoadNF2SIZ", VecS32CLoadNF2SIZ, 0xa531b531, 0xa538b531, 2, 4, true},  // ldnf1sh {z17.s}, p5/z, [x9, #1, mul vl]
    {"VecS64CLoadNF2SIZ", VecS64CLoadNF2SIZ, 0xa511b531, 0xa518b531, 2, 8, true},  // ldnf1sh {z17.d}, p5/z, [x9, #1, mul vl]
    {"VecS64CLoadNF4SIZ", VecS64CLoadNF4SIZ, 0xa491b531, 0xa498b531, 4, 8, true},  // ldnf1sw {z17.d}, p5/z, [x9, #1, mul vl]
};

struct FFForm {
    const char* name;
    sve_handler h;
    uint32_t word_xm, word_xzr;
    unsigned m, c;
    bool sign;
    bool kernel;  // the handler goes to a kernel; otherwise to the reference operation
};

inline const FFForm kFF[] = {
    {"VecU8CLoadFF1LSSZ", VecU8CLoadFF1LSSZ, 0xa40c7531, 0xa41f7531, 1, 1, false, true},  // ldff1b {z17.b}, p5/z, [x9, x12]
    {"VecU16CLoadFF1LSSZ", VecU16CLoadFF1LSSZ, 0xa42c7531, 0xa43f7531, 1, 2, false, true},  // ldff1b {z17.h}, p5/z, [x9, x12]
    {"VecU32CLoadFF1LSSZ", VecU32CLoadFF1LSSZ, 0xa44c7531, 0xa45f7531, 1, 4, false, true},  // ldff1b {z17.s}, p5/z, [x9, x12]
    {"VecU64CLoadFF1LSSZ", VecU64CLoadFF1LSSZ, 0xa46c7531, 0xa47f7531, 1, 8, false, true},  // ldff1b {z17.d}, p5/z, [x9, x12]
    {"VecU32CLoadFF4LSSZ", VecU32CLoadFF4LSSZ, 0xa54c7531, 0xa55f7531, 4, 4, false, true},  // ldff1w {z17.s}, p5/z, [x9, x12, lsl #2]
    {"VecU64CLoadFF4LSSZ", VecU64CLoadFF4LSSZ, 0xa56c7531, 0xa57f7531, 4, 8, false, true},  // ldff1w {z17.d}, p5/z, [x9, x12, lsl #2]
    {"VecU64CLoadFF8LSSZ", VecU64CLoadFF8LSSZ, 0xa5ec7531, 0xa5ff7531, 8, 8, false, true},  // ldff1d {z17.d}, p5/z, [x9, x12, lsl #3]
    {"VecU16CLoadFF2LSSZ", VecU16CLoadFF2LSSZ, 0xa4ac7531, 0xa4bf7531, 2, 2, false, false},  // ldff1h {z17.h}, p5/z, [x9, x12, lsl #1]
    {"VecU32CLoadFF2LSSZ", VecU32CLoadFF2LSSZ, 0xa4cc7531, 0xa4df7531, 2, 4, false, false},  // ldff1h {z17.s}, p5/z, [x9, x12, lsl #1]
    {"VecU64CLoadFF2LSSZ", VecU64CLoadFF2LSSZ, 0xa4ec7531, 0xa4ff7531, 2, 8, false, false},  // ldff1h {z17.d}, p5/z, [x9, x12, lsl #1]
    {"VecS16CLoadFF1LSSZ", VecS16CLoadFF1LSSZ, 0xa5cc7531, 0xa5df7531, 1, 2, true, false},  // ldff1sb {z17.h}, p5/z, [x9, x12]
    {"VecS32CLoadFF1LSSZ", VecS32CLoadFF1LSSZ, 0xa5ac7531, 0xa5bf7531, 1, 4, true, false},  // ldff1sb {z17.s}, p5/z, [x9, x12]
    {"VecS64CLoadFF1LSSZ", VecS64CLoadFF1LSSZ, 0xa58c7531, 0xa59f7531, 1, 8, true, false},  // ldff1sb {z17.d}, p5/z, [x9, x12]
    {"VecS32CLoadFF2LSSZ", VecS32CLoadFF2LSSZ, 0xa52c7531, 0xa53f7531, 2, 4, true, false},  // ldff1sh {z17.s}, p5/z, [x9, x12, lsl #1]
    {"VecS64CLoadFF2LSSZ", VecS64CLoadFF2LSSZ, 0xa50c7531, 0xa51f7531, 2, 8, true, false},  // ldff1sh {z17.d}, p5/z, [x9, x12, lsl #1]
    {"VecS64CLoadFF4LSSZ", VecS64CLoadFF4LSSZ, 0xa48c7531, 0xa49f7531, 4, 8, true, false},  // ldff1sw {z17.d}, p5/z, [x9, x12, lsl #2]
};

inline uint64_t get(const uint8_t* p, unsigned bytes) {
    uint64_t v = 0;
    std::memcpy(&v, p, bytes);
    return v;
}
inline uint64_t truncate(uint64_t v, unsigned bytes) { return bytes == 8 ? v : v & ((1ull << 8 * bytes) - 1); }
inline uint64_t extend(uint64_t v, unsigned from, bool sign) {
    if (!sign || from == 8 || !(v >> (8 * from - 1) & 1)) return v;
    return v | ~0ull << 8 * from;
}
// The register element that an active element read from `at` must hold.
inline uint64_t loaded(uint64_t at, unsigned m, unsigned c, bool sign) {
    return truncate(extend(get(reinterpret_cast<const uint8_t*>(at), m), m, sign), c);
}

// Predicates by element: the first byte of each group says it, in both
// spellings (0x01/0xFF on, 0x00/0xFE off), the other bytes hold 1.
template <typename F>
void set_predicate(cpu_state* s, unsigned c, F active) {
    for (unsigned k = 0; k < 64; ++k) {
        unsigned i = k / c;
        s->p[PG][k] = k % c ? 0x01 : active(i) ? (i & 1 ? 0x01 : 0xFF) : (i & 1 ? 0xFE : 0x00);
    }
}

// FFR bytes: bit 0 clear in every fifth byte, and upper bits set everywhere,
// so that a kernel's untouched bytes and a reference route's normalised ones
// can be told apart.
inline void set_ffr(cpu_state* s) {
    for (unsigned k = 0; k < 64; ++k) s->ffr[k] = k % 5 == 0 ? 0xFE : 0x03;
}
inline uint8_t ffr_input(unsigned k) { return k % 5 == 0 ? 0xFE : 0x03; }

inline void fill(uint8_t* p, size_t n, unsigned seed) {
    for (size_t k = 0; k < n; ++k) p[k] = uint8_t(k * seed + 29);
}

inline bool completed(const ChildResult& r) { return WIFEXITED(r.status) && WEXITSTATUS(r.status) == 0; }

const uint64_t kUntouched = 0xA5A5A5A5A5A5A5A5ull;

}  // namespace memfault_test
