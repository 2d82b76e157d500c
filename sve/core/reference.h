// The frame in which reference operations run: values, not registers.
#pragma once

#include <cstdint>
#include <cstring>

// Packed predicate: bit k of the 256-bit value governs vector byte k. At this
// build's vector length only word 0 carries anything.
struct PredV {
    uint64_t w[4];
};

// A vector value of up to 2048 bits; only the first 64 bytes are defined here.
struct VecVal {
    uint8_t b[256];
};

struct CpuContext {
    uint32_t nzcv;  // N bit 31, Z 30, C 29, V 28
    uint32_t fpsr;
    uint32_t fpcr;
    uint32_t vl;    // vector length in 64-bit units, low 26 bits
    PredV ffr;
};

// Written once at load time by SVEInitialize; no operation reads them.
extern CpuContext cpu_ctxt;
extern CpuContext* ctxt;

// Element access inside reference operations (little-endian, by index).
template <typename T>
inline T vget(const VecVal& v, unsigned i) {
    T r;
    std::memcpy(&r, v.b + i * sizeof(T), sizeof(T));
    return r;
}
template <typename T>
inline void vset(VecVal& v, unsigned i, T x) {
    std::memcpy(v.b + i * sizeof(T), &x, sizeof(T));
}
// Predicate bit of element e of esize bits.
inline bool pbit(const PredV& p, unsigned e, unsigned esize) {
    unsigned pos = e * esize / 8;
    return p.w[pos >> 6] >> (pos & 63) & 1;
}
inline void pset(PredV& p, unsigned e, unsigned esize, bool on) {
    unsigned pos = e * esize / 8;
    if (on)
        p.w[pos >> 6] |= 1ull << (pos & 63);
    else
        p.w[pos >> 6] &= ~(1ull << (pos & 63));
}
// Element count of esize-bit elements at the context's vector length.
inline unsigned elements(const CpuContext* c, unsigned esize) { return (c->vl & 0x3ffffff) * 64 / esize; }

struct cpu_state;

// The marshalling that every reference-route handler performs, written once.
// Construction builds the context and packs FFR; the handler then packs its
// operands in assembler order, calls the operation, stores the result with
// one of the put_ functions and returns finish(), which writes back the
// flags, the FP status and control words, and FFR.
class RefFrame {
public:
    explicit RefFrame(cpu_state* s);
    CpuContext ctx;
    CpuContext* c() { return &ctx; }

    PredV pred(unsigned n) const;           // p[n] packed, bit 0 of each byte
    VecVal zv(unsigned n) const;            // copy of z[n]'s 64 bytes
    uint64_t xr(unsigned n) const;          // 31 reads 0
    uint64_t xsp(unsigned n) const;         // 31 reads SP (a base address)

    void put_z(unsigned d, const VecVal& v);
    void put_p(unsigned d, const PredV& p);
    void put_x(unsigned d, uint64_t v);     // 31 drops the write
    void put_v(unsigned d, uint64_t v, unsigned bytes);  // SIMD scalar, rest of the 64 bytes zeroed
    unsigned finish();                      // returns 0

private:
    cpu_state* s_;
};

// Pack and unpack between the byte-per-vector-byte form and PredV.
PredV pack_pred(const uint8_t* bytes);
void unpack_pred(uint8_t* bytes, const PredV& p);
