// Helpers of the permute tests: a register file full of noise, element access
// at any width, and predicates as the register file holds them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <random>
#include <vector>

#include "sve/core/cpu_state.h"
#include "sve/core/decode.h"
#include "sve/core/handler_util.h"
#include "sve/integer/perm_ops.h"

namespace permtest {

// Every byte random, so that an element forgotten or written where it should
// not be shows up.
inline std::unique_ptr<cpu_state> noisy_state(uint32_t seed = 1) {
    auto s = std::make_unique<cpu_state>();
    std::mt19937_64 rng(seed);
    uint8_t* raw = reinterpret_cast<uint8_t*>(s.get());
    for (size_t i = 0; i < sizeof(cpu_state); ++i) raw[i] = static_cast<uint8_t>(rng());
    return s;
}

// Element e of `bytes` bytes, zero-extended.
inline uint64_t el(const uint8_t* r, unsigned bytes, unsigned e) {
    uint64_t v = 0;
    std::memcpy(&v, r + e * bytes, bytes);
    return v;
}
// Byte k of the register is base + k: every byte tells where it came from.
inline void seq(uint8_t* r, uint8_t base) {
    for (unsigned k = 0; k < 64; ++k) r[k] = static_cast<uint8_t>(base + k);
}
inline std::vector<uint8_t> bytes(const uint8_t* r, unsigned from, unsigned n) { return {r + from, r + from + n}; }

// A predicate of `bytes`-byte elements with exactly the listed ones active;
// `junk` fills the other bytes of each group and bits 7..1 of the first.
inline void pset(uint8_t* p, unsigned bytes, std::initializer_list<unsigned> on, uint8_t junk = 0) {
    for (unsigned k = 0; k < 64; ++k) p[k] = junk & (k % bytes ? 0xff : 0xfe);
    for (unsigned e : on) p[e * bytes] |= 1;
}

}  // namespace permtest
