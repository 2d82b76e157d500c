// Register-file helpers for the arithmetic tests. Words are assembled with Z1
// as destination, P2 as governing predicate and Z3 as the other source; the
// register file starts as noise, so that a stray write shows up.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <memory>
#include <random>

#include "sve/core/cpu_state.h"

namespace inttest {

inline std::unique_ptr<cpu_state> noisy_state(uint32_t seed) {
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

// Everything but Zd must be as it was; a kernel-route handler also stores its word.
inline void expect_rest_unchanged(const cpu_state& before, const cpu_state& after, unsigned zd) {
    for (unsigned z = 0; z < 32; ++z)
        if (z != zd) {
            EXPECT_EQ(std::memcmp(before.z[z], after.z[z], 64), 0) << "z" << z << " changed";
        }
    EXPECT_EQ(std::memcmp(before.p, after.p, sizeof before.p), 0) << "p changed";
    EXPECT_EQ(std::memcmp(before.x, after.x, sizeof before.x), 0) << "x changed";
    EXPECT_EQ(std::memcmp(before.ffr, after.ffr, 64), 0) << "ffr changed";
    EXPECT_EQ(before.nzcv, after.nzcv);
}

// Predicate group of an element: a first-byte value, or GROUP_0111 for a
// first byte 0 and the other bytes 1 (inactive).
constexpr uint16_t GROUP_0111 = 0x100;
template <typename T>
struct Elem {
    T z1, z3;
    uint16_t pred;
    T want;
};

// Runs `word` through `h` with the elements laid out from element 0; those
// beyond the list are inactive and must keep their noise.
template <typename T>
void run_elems(sve_handler h, uint32_t word, std::initializer_list<Elem<T>> elems) {
    constexpr unsigned n = 64 / sizeof(T);
    auto s = noisy_state(word);
    std::memset(s->p[2], 0, 64);
    unsigned i = 0;
    for (const Elem<T>& e : elems) {
        zput<T>(*s, 1, i, e.z1);
        zput<T>(*s, 3, i, e.z3);
        if (e.pred == GROUP_0111)
            std::memset(s->p[2] + i * sizeof(T) + 1, 1, sizeof(T) - 1);
        else
            s->p[2][i * sizeof(T)] = static_cast<uint8_t>(e.pred);
        ++i;
    }
    const cpu_state before = *s;
    EXPECT_EQ(h(s.get(), word), DECODE_OK);
    i = 0;
    for (const Elem<T>& e : elems) {
        EXPECT_EQ(zget<T>(*s, 1, i), e.want) << std::hex << "word " << word << " element " << std::dec << i;
        ++i;
    }
    for (; i < n; ++i) EXPECT_EQ(zget<T>(*s, 1, i), zget<T>(before, 1, i)) << "inactive element " << i;
    EXPECT_EQ(s->instruction, word);
    expect_rest_unchanged(before, *s, 1);
}

}  // namespace inttest
