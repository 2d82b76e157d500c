// Table-driven runner for the arithmetic tests: one instruction word, a list
// of elements (old Z1, Z3, the predicate byte group of P2, expected Z1), run
// through the handler on a noisy register file. All words are assembled with
// Z1 as destination, P2 as governing predicate and Z3 as the other source.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <vector>

#include "int_test_util.h"
#include "sve/core/cpu_state.h"

namespace inttest {

// Predicate group codes: a first-byte value, or GROUP_0111 for a group whose
// first byte is 0 and whose other bytes are 1 (inactive).
constexpr uint16_t GROUP_0111 = 0x100;

template <typename T>
struct Elem {
    T z1, z3;
    uint16_t pred;
    T want;
};

enum class Route { kernel, reference };

// Everything in the register file but the destination must be as it was. The
// kernel route also writes `instruction`; the reference route writes nothing
// there but rewrites nzcv (zero-extended), fpcr (with fpcr_extra) and ffr.
inline void expect_rest_unchanged(const cpu_state& before, const cpu_state& after, unsigned zd, Route route) {
    for (unsigned z = 0; z < 32; ++z)
        if (z != zd) {
            EXPECT_EQ(std::memcmp(before.z[z], after.z[z], 64), 0) << "z" << z << " changed";
        }
    EXPECT_EQ(std::memcmp(before.p, after.p, sizeof before.p), 0) << "p changed";
    EXPECT_EQ(std::memcmp(before.x, after.x, sizeof before.x), 0) << "x changed";
    EXPECT_EQ(before.fpsr, after.fpsr);
    if (route == Route::kernel) {
        EXPECT_EQ(before.nzcv, after.nzcv);
        EXPECT_EQ(before.fpcr, after.fpcr);
        EXPECT_EQ(std::memcmp(before.ffr, after.ffr, 64), 0) << "ffr changed";
    } else {
        EXPECT_EQ(before.instruction, after.instruction) << "the reference route must not write instruction";
        EXPECT_EQ(after.nzcv, before.nzcv & 0xffffffffu);
        EXPECT_EQ(after.fpcr, before.fpcr | before.fpcr_extra);
        for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(after.ffr[i], before.ffr[i] & 1) << "ffr byte " << i;
    }
}

// Runs `word` through `h` with the elements laid out from element 0; the
// elements beyond the list are inactive and must keep their noise.
template <typename T>
void run_elems(sve_handler h, uint32_t word, std::initializer_list<Elem<T>> elems, Route route = Route::kernel) {
    constexpr unsigned n = 64 / sizeof(T);
    ASSERT_LE(elems.size(), n);
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
    cpu_state before = *s;
    EXPECT_EQ(h(s.get(), word), DECODE_OK);
    i = 0;
    for (const Elem<T>& e : elems) {
        EXPECT_EQ(zget<T>(*s, 1, i), e.want) << std::hex << "word " << word << " element " << std::dec << i << ": z1 "
                                             << std::hex << +e.z1 << " z3 " << +e.z3 << " pred " << e.pred;
        ++i;
    }
    for (; i < n; ++i) EXPECT_EQ(zget<T>(*s, 1, i), zget<T>(before, 1, i)) << "inactive element " << i;
    if (route == Route::kernel) {
        EXPECT_EQ(s->instruction, word);
    }
    expect_rest_unchanged(before, *s, 1, route);
}

// Unpredicated forms: every element of Z1 is written from its old value (the
// immediate forms) and the expectations cover all of them.
template <typename T>
void run_all(sve_handler h, uint32_t word, const std::vector<T>& z1, const std::vector<T>& want, Route route = Route::kernel) {
    constexpr unsigned n = 64 / sizeof(T);
    auto s = noisy_state(word);
    for (unsigned i = 0; i < n; ++i) zput<T>(*s, 1, i, z1[i % z1.size()]);
    cpu_state before = *s;
    EXPECT_EQ(h(s.get(), word), DECODE_OK);
    for (unsigned i = 0; i < n; ++i)
        EXPECT_EQ(zget<T>(*s, 1, i), want[i % want.size()]) << std::hex << "word " << word << " element " << std::dec << i;
    if (route == Route::kernel) {
        EXPECT_EQ(s->instruction, word);
    }
    expect_rest_unchanged(before, *s, 1, route);
}

}  // namespace inttest
