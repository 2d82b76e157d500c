#include "sve/integer/intlib.h"

namespace {
constexpr Integer pow2(unsigned k) { return static_cast<Integer>(UInteger(1) << k); }
// Widths beyond the 64 bits of the argument mean the whole argument.
constexpr unsigned clip64(int N) { return N > 64 ? 64u : static_cast<unsigned>(N); }
Integer pair(uint64_t result, bool flag) {
    return static_cast<Integer>(static_cast<UInteger>(flag) << 64 | result);
}
}  // namespace

Integer ShiftLeftInt(Integer value, Integer count) {
    // Any right count above 128 behaves as 65; keep -count away from overflow.
    if (count < 0) return ShiftRightInt(value, count < -1000 ? Integer(1000) : -count);
    if (count > 64) count = 64;
    return static_cast<Integer>(static_cast<UInteger>(value) << static_cast<unsigned>(count));
}

Integer ShiftRightInt(Integer value, Integer count) {
    if (count == 128) return (static_cast<UInteger>(value) >> 126) == 3 ? Integer(-1) : Integer(0);
    if (count < 0) return ShiftLeftInt(value, count < -1000 ? Integer(1000) : -count);
    if (count > 65) count = 65;
    return value >> static_cast<unsigned>(count);
}

Integer SatQ(Integer value, unsigned N, unsigned unsigned_) {
    N = clip64(N);
    if (unsigned_) {
        if (value < 0) return pair(0, true);
        if ((value >> N) != 0) return pair(ones(N), true);
        return pair(bits(value) & ones(N), false);
    }
    Integer max = pow2(N - 1) - 1, min = -pow2(N - 1);
    if (value > max) return pair(bits(max), true);
    if (value < min) return pair(1ull << (N - 1), true);
    return pair(bits(value) & ones(N), false);
}

uint64_t SatAdd(uint64_t a, uint64_t b, unsigned N, unsigned unsigned_) {
    Integer sum = Int(a, N, unsigned_) + Int(b, N, unsigned_);
    Integer q = SatQ(sum, N, unsigned_);
    return SatQFlag(q) ? SatQValue(q) : bits(sum);
}

Integer SatSub(uint64_t a, uint64_t b, unsigned N, unsigned unsigned_) {
    return SatQ(Int(a, N, unsigned_) - Int(b, N, unsigned_), N, unsigned_);
}

namespace {
bool element_width(unsigned N) { return N == 8 || N == 16 || N == 32 || N == 64; }
}  // namespace

uint64_t Max(uint64_t a, uint64_t b, unsigned N, unsigned unsigned_) {
    if (!element_width(N)) return 0;
    return Int(b, N, unsigned_) > Int(a, N, unsigned_) ? b : a;
}

uint64_t Min(uint64_t a, uint64_t b, unsigned N, unsigned unsigned_) {
    if (!element_width(N)) return 0;
    return Int(b, N, unsigned_) < Int(a, N, unsigned_) ? b : a;
}

int HighestBitSet(uint64_t x, int N) {
    for (int i = static_cast<int>(clip64(N)) - 1; i >= 0; --i)
        if (x >> i & 1) return i;
    return -1;
}

int CountLeadingZeroBits(uint64_t x, int N) { return N - 1 - HighestBitSet(x, N); }

int CountLeadingSignBits(uint64_t x, int N) {
    // Bit i of the XOR is set where bit i+1 differs from bit i; the sign
    // copies are the run of clear bits from the top.
    return CountLeadingZeroBits((x & ~(1ull << 63)) ^ (x >> 1), N - 1);
}

int BitCount(uint64_t x, int N) {
    int n = 0;
    for (int i = 0; i < static_cast<int>(clip64(N)); ++i) n += x >> i & 1;
    return n;
}

uint64_t BitReverse(uint64_t x, int N) {
    uint64_t r = 0;
    int w = static_cast<int>(clip64(N));
    for (int i = 0; i < w; ++i) r |= (x >> i & 1) << (w - 1 - i);
    return r;
}

uint64_t Reverse(uint64_t x, int N, int chunk) {
    if (chunk != 1 && chunk != 2 && chunk != 4) return 0;
    int cbits = 8 * chunk, w = static_cast<int>(clip64(N));
    int count = w / cbits;
    uint64_t cmask = ones(static_cast<unsigned>(cbits)), r = 0;
    for (int j = 0; j < count; ++j) r |= (x >> (j * cbits) & cmask) << ((count - 1 - j) * cbits);
    return r;
}

unsigned VecTrueILength(unsigned pattern, unsigned n) {
    switch (pattern) {
        case 0: {  // POW2
            unsigned p = 1;
            while (p * 2 <= n) p *= 2;
            return p;
        }
        case 1: case 2: case 3: case 4: case 5: case 6: case 7: case 8:  // VL1..VL8
            return pattern <= n ? pattern : 0;
        case 9: case 10: case 11: case 12: case 13: {  // VL16..VL256
            unsigned v = 1u << (pattern - 5);
            return v <= n ? v : 0;
        }
        case 29: return n & ~3u;      // MUL4
        case 30: return n / 3 * 3;    // MUL3
        case 31: return n & ~1u;      // ALL
        default: return 0;
    }
}
