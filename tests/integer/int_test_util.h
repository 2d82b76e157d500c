// Register-file helpers for the integer tests: element access by size, and
// predicates written byte by byte the way the register file holds them.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>

#include "sve/core/cpu_state.h"

namespace inttest {

// A register file filled with a fixed noise pattern, so that a kernel that
// forgets an element, or writes one it should not, shows up.
inline std::unique_ptr<cpu_state> noisy_state(uint32_t seed = 1) {
    auto s = std::make_unique<cpu_state>();
    std::mt19937_64 rng(seed);
    uint8_t* raw = reinterpret_cast<uint8_t*>(s.get());
    for (size_t i = 0; i < sizeof(cpu_state); ++i) raw[i] = static_cast<uint8_t>(rng());
    return s;
}

template <typename T>
inline T zget(const cpu_state& s, unsigned z, unsigned i) {
    T v;
    std::memcpy(&v, s.z[z] + i * sizeof(T), sizeof(T));
    return v;
}
template <typename T>
inline void zput(cpu_state& s, unsigned z, unsigned i, T v) {
    std::memcpy(s.z[z] + i * sizeof(T), &v, sizeof(T));
}
// Byte form of a predicate: element i of `bytes`-byte elements active or not,
// the other bytes of each group cleared.
inline void pfill(cpu_state& s, unsigned p, unsigned bytes, uint64_t active_bits) {
    std::memset(s.p[p], 0, 64);
    for (unsigned i = 0; i < 64 / bytes; ++i) s.p[p][i * bytes] = active_bits >> i & 1;
}
inline void pall(cpu_state& s, unsigned p) { std::memset(s.p[p], 1, 64); }

}  // namespace inttest
