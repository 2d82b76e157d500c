// Helpers of the permute tests: a register file full of noise, element access
// by width, predicates written byte by byte as the register file holds them,
// and the reference context at this build's vector length.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "sve/core/cpu_state.h"
#include "sve/core/reference.h"
#include "sve/integer/perm_ops.h"

namespace permtest {

// Every byte random, so that a kernel that forgets an element or writes one it
// should not leave shows up.
inline std::unique_ptr<cpu_state> noisy_state(uint32_t seed = 1) {
    auto s = std::make_unique<cpu_state>();
    std::mt19937_64 rng(seed);
    uint8_t* raw = reinterpret_cast<uint8_t*>(s.get());
    for (size_t i = 0; i < sizeof(cpu_state); ++i) raw[i] = static_cast<uint8_t>(rng());
    return s;
}

template <typename T>
inline T get(const uint8_t* r, unsigned i) {
    T v;
    std::memcpy(&v, r + i * sizeof(T), sizeof(T));
    return v;
}
template <typename T>
inline void put(uint8_t* r, unsigned i, T v) {
    std::memcpy(r + i * sizeof(T), &v, sizeof(T));
}

// Byte k of the register is base + k: every byte tells where it came from.
inline void seq(uint8_t* r, uint8_t base) {
    for (unsigned k = 0; k < 64; ++k) r[k] = static_cast<uint8_t>(base + k);
}

// A predicate of `bytes`-byte elements with exactly the listed ones active;
// `junk` goes into the other bytes of every group (and bits 1..7 of the first).
inline void pset_elems(uint8_t* p, unsigned bytes, std::initializer_list<unsigned> on, uint8_t junk = 0) {
    for (unsigned k = 0; k < 64; ++k) p[k] = junk & (k % bytes ? 0xff : 0xfe);
    for (unsigned e : on) p[e * bytes] |= 1;
}
inline void pset_all(uint8_t* p, unsigned bytes, uint8_t junk = 0) {
    for (unsigned k = 0; k < 64; ++k) p[k] = k % bytes ? junk : uint8_t((junk & 0xfe) | 1);
}

inline std::vector<uint8_t> bytes(const uint8_t* r, unsigned from, unsigned n) { return {r + from, r + from + n}; }
inline std::vector<uint8_t> reg(const uint8_t* r) { return bytes(r, 0, 64); }

inline VecVal vec_of(const uint8_t* r) {
    VecVal v{};
    std::memcpy(v.b, r, 64);
    return v;
}
// Packed predicate with the listed bits (vector byte positions) set.
inline PredV packed(std::initializer_list<unsigned> bits) {
    PredV p{};
    for (unsigned b : bits) p.w[b >> 6] |= 1ull << (b & 63);
    return p;
}
inline CpuContext ctx512() {
    CpuContext c{};
    c.vl = 8;
    return c;
}

}  // namespace permtest
