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

// Element size of a Z operand: a read-only or write-only operand carries it in
// `size`, a destructive one in `dst_size`, the other field holding 5.
inline uint32_t zsize(const aarch64_z_reg& r) { return r.size < 5 ? r.size : r.dst_size; }

// All ones when element i is active, else 0. Reading the predicate at the
// element's width and testing bit 0 of the little-endian value is the same as
// testing the group's first byte, and keeps the loop free of strided loads.
template <typename T>
inline T lane_mask(const uint8_t* pred, unsigned i) {
    return T(T(0) - T(elem<T>(pred, i) & 1));
}

// by_size for kernels without the narrow forms: sizes below Narrowest's fall
// to Narrowest (sxtb has no byte form, sxth/uxth no halfword form; division
// knows only 32 and 64 bits).
template <typename Narrowest, typename F>
inline aarch64_decode_rc by_size_from(uint32_t size, F&& f) {
    if (size == 3)
        f.template operator()<uint64_t>();
    else if constexpr (sizeof(Narrowest) == 8)
        f.template operator()<uint64_t>();
    else if (size == 2)
        f.template operator()<uint32_t>();
    else if constexpr (sizeof(Narrowest) == 4)
        f.template operator()<uint32_t>();
    else if (size == 1)
        f.template operator()<uint16_t>();
    else if constexpr (sizeof(Narrowest) == 2)
        f.template operator()<uint16_t>();
    else
        f.template operator()<uint8_t>();
    return DECODE_OK;
}

// The element loops of the kernel shape. Results go to a local buffer that is
// copied to the destination at the end, so the destination may be any source.
// The predicated loop selects between the new and the old element with a mask
// rather than a branch, which lets the compiler vectorise it; op(i) is also
// evaluated for inactive elements and must therefore be harmless there.
template <typename T, typename Op>
inline void merge_loop(uint8_t* dst, const uint8_t* pred, Op&& op) {
    uint8_t buf[64];
    for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
        T m = lane_mask<T>(pred, i);
        set_elem<T>(buf, i, T((T(op(i)) & m) | (elem<T>(dst, i) & T(~m))));
    }
    std::memcpy(dst, buf, 64);
}
template <typename T, typename Op>
inline void map_loop(uint8_t* dst, Op&& op) {
    uint8_t buf[64];
    for (unsigned i = 0; i < 64 / sizeof(T); ++i) set_elem<T>(buf, i, T(op(i)));
    std::memcpy(dst, buf, 64);
}
