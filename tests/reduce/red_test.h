// Helpers of the reduction, dot product, ADR and bit operation tests: a
// register file full of noise, and a word run through its handler once the
// decoder has said that this is the word's handler.
#pragma once

#include <gtest/gtest.h>

#include <random>

#include "shift/test_machine.h"
#include "sve/integer/reduce.h"

namespace redtest {

// Every Z and P byte random, so that a byte written or left by mistake shows.
inline void noise(Machine& m) {
    std::mt19937 rng(7);
    for (auto& z : m.st->z)
        for (auto& b : z) b = static_cast<uint8_t>(rng());
    for (auto& p : m.st->p)
        for (auto& b : p) b = static_cast<uint8_t>(rng());
}

inline void run(Machine& m, sve_handler h, uint32_t word) {
    ASSERT_EQ(is_sve(word), h) << std::hex << word;
    ASSERT_EQ(h(m.s(), word), DECODE_OK);
}

}  // namespace redtest
