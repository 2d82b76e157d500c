// Building blocks of the element kernels: element access on a 64-byte
// register, the governing-predicate test, and the size branch.
#pragma once

#include <cstdint>
#include <cstring>

#include "sve/core/cpu_state.h"

template <typename T>
inline T elem(const uint8_t* reg, unsigned i) {
    T v;
    std::memcpy(&v, reg + i * sizeof(T), sizeof(T));
    return v;
}
template <typename T>
inline void set_elem(uint8_t* reg, unsigned i, T v) {
    std::memcpy(reg + i * sizeof(T), &v, sizeof(T));
}
// An element is active when bit 0 of the first byte of its predicate group is 1.
template <typename T>
inline bool active(const uint8_t* pred, unsigned i) {
    return pred[i * sizeof(T)] & 1;
}

// Runs f.template operator()<T>() with T the unsigned integer of the element
// size: 2 -> 32 bits, 3 -> 64 bits, 1 -> 16 bits, anything else -> 8 bits.
template <typename F>
inline aarch64_decode_rc by_size(uint32_t size, F&& f) {
    switch (size) {
        case 2: f.template operator()<uint32_t>(); break;
        case 3: f.template operator()<uint64_t>(); break;
        case 1: f.template operator()<uint16_t>(); break;
        default: f.template operator()<uint8_t>(); break;
    }
    return DECODE_OK;
}
