// The integer of the architecture's pseudocode, and the helpers that the
// reference operations are written with. The pseudocode's integers are
// unbounded; a signed 128-bit value holds every element of up to 64 bits and
// the sum or difference of two, so operations widen an element, compute, and
// cut the result back to the element with `bits`.
//
// Width arguments `N` are bit counts from 1 to 64; `unsigned_` is 1 for an
// unsigned reading of the bits and 0 for a signed one.
#pragma once

#include <cstdint>

typedef __int128 Integer;
typedef unsigned __int128 UInteger;

// Low N bits set; N of 0 sets all 64, because the shift count is taken modulo 64.
inline uint64_t ones(unsigned N) { return ~0ull >> ((64 - N) & 63); }
// Low 64 bits.
inline uint64_t bits(Integer v) { return static_cast<uint64_t>(v); }
// Low N bits of x, zero-extended when unsigned_ is 1, else sign-extended from
// bit N-1. Widths above 64 mean the whole argument. Inline: the reference
// operations call it for every element.
inline Integer Int(uint64_t x, unsigned N, unsigned unsigned_) {
    if (N == 0) return 0;
    if (N > 64) N = 64;
    if (unsigned_) return x & ones(N);
    unsigned up = 64 - N;
    return static_cast<int64_t>(x << up) >> up;
}
inline Integer UInt(uint64_t x, unsigned N) { return Int(x, N, 1); }
// Sign-extension of the widths an element can have (8, 16, 32, 64); 0 for any other.
inline Integer SInt(uint64_t x, unsigned N) {
    return (N == 8 || N == 16 || N == 32 || N == 64) ? Int(x, N, 0) : 0;
}

// Arithmetic modulo 2^128, so that no product or negation is undefined. A
// product of two unsigned 64-bit values can exceed the signed range; its low
// 128 bits are still right, and so is everything `bits` cuts from them.
inline Integer NegInt(Integer a) { return static_cast<Integer>(UInteger(0) - static_cast<UInteger>(a)); }
inline Integer AddInt(Integer a, Integer b) { return static_cast<Integer>(static_cast<UInteger>(a) + static_cast<UInteger>(b)); }
inline Integer SubInt(Integer a, Integer b) { return static_cast<Integer>(static_cast<UInteger>(a) - static_cast<UInteger>(b)); }
inline Integer MulInt(Integer a, Integer b) { return static_cast<Integer>(static_cast<UInteger>(a) * static_cast<UInteger>(b)); }
inline Integer AbsInt(Integer v) { return v < 0 ? NegInt(v) : v; }

// Shifts with the clipping that keeps the shift inside 128 bits: a left count
// above 64 counts as 64, a right count above 65 as 65 (a full sign fill for
// any widened element), and a right count of exactly 128 is all ones when the
// two top bits are both set, else 0. A negative count shifts the other way.
Integer ShiftLeftInt(Integer value, Integer count);
Integer ShiftRightInt(Integer value, Integer count);

// Saturation of an exact value to N bits. Result in the low 64 bits, the
// saturated flag in bit 0 of the high half. An in-range result is the low N
// bits zero-extended; a signed negative limit is the bare bit pattern 1 << (N-1).
Integer SatQ(Integer value, unsigned N, unsigned unsigned_);
inline uint64_t SatQValue(Integer q) { return bits(q); }
inline bool SatQFlag(Integer q) { return static_cast<uint64_t>(static_cast<UInteger>(q) >> 64) & 1; }
// Saturating add. Unsaturated, the low 64 bits of the exact sum are returned
// without masking, so a negative sum arrives sign-extended; the caller narrows.
uint64_t SatAdd(uint64_t a, uint64_t b, unsigned N, unsigned unsigned_);
// Saturating subtract: the SatQ pair of the exact difference (masked to N bits).
Integer SatSub(uint64_t a, uint64_t b, unsigned N, unsigned unsigned_);

// The first argument unless the second is strictly greater (Max) or less (Min)
// at width N; the chosen argument is returned whole. 0 unless N is 8, 16, 32 or 64.
uint64_t Max(uint64_t a, uint64_t b, unsigned N, unsigned unsigned_);
uint64_t Min(uint64_t a, uint64_t b, unsigned N, unsigned unsigned_);

// Bit queries on the low N bits.
int HighestBitSet(uint64_t x, int N);          // -1 when none is set
int CountLeadingZeroBits(uint64_t x, int N);   // N for 0
int CountLeadingSignBits(uint64_t x, int N);   // sign copies below the top bit
int BitCount(uint64_t x, int N);               // 0 for N below 1
uint64_t BitReverse(uint64_t x, int N);        // 0 for N below 1
// The low N bits with the order of their chunks of `chunk` bytes (1, 2 or 4)
// reversed; any other chunk size gives 0.
uint64_t Reverse(uint64_t x, int N, int chunk);

// Element count of a predicate-constraint pattern (bits 9..5 of PTRUE, CNT,
// INC and the like) for a vector of n elements.
unsigned VecTrueILength(unsigned pattern, unsigned n);
