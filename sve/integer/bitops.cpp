// Per-element bit operations, predicated and merging: cnt, cls, clz, revb
// and revh on the reference route through the integer library; rbit and revw
// as kernels.
#include "sve/core/handler_util.h"
#include "sve/integer/intlib.h"
#include "sve/integer/kernel_util.h"
#include "sve/integer/reduce.h"

// ---------------------------------------------------------------------------
// Kernels

namespace {
// The host's 64-bit bit reverse: bytes swapped, then nibbles, bit pairs and
// bits within each byte. Plain shifts and masks, so the element loop stays
// vectorisable.
inline uint64_t bit_reverse64(uint64_t x) {
    x = __builtin_bswap64(x);
    x = (x & 0x0f0f0f0f0f0f0f0full) << 4 | (x >> 4 & 0x0f0f0f0f0f0f0f0full);
    x = (x & 0x3333333333333333ull) << 2 | (x >> 2 & 0x3333333333333333ull);
    x = (x & 0x5555555555555555ull) << 1 | (x >> 1 & 0x5555555555555555ull);
    return x;
}
}  // namespace

// An element of N bits is the low end of a 64-bit value: reversed in 64 bits
// it lands at the top, and a shift by 64 - N brings it back.
extern "C" aarch64_decode_rc sve_rbit_zpz(cpu_state* s, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    const uint8_t* p = s->p[pg.num];
    const uint8_t* n = s->z[zn.num];
    return by_size(zsize(zd), [&]<typename T>() {
        merge_loop<T>(s->z[zd.num], p, [&](unsigned i) { return T(bit_reverse64(elem<T>(n, i)) >> (64 - 8 * sizeof(T))); });
    });
}

// Only 64-bit elements exist: the two words of each swap places.
extern "C" aarch64_decode_rc sve_revw_zpz(cpu_state* s, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    const uint8_t* n = s->z[zn.num];
    merge_loop<uint64_t>(s->z[zd.num], s->p[pg.num], [&](unsigned i) {
        uint64_t x = elem<uint64_t>(n, i);
        return x >> 32 | x << 32;
    });
    return DECODE_OK;
}

// ---------------------------------------------------------------------------
// Reference operations: the library function of the element at its width,
// elements zero-extended; counts are stored at the element width.

namespace {
uint64_t op_cnt(uint64_t x, unsigned N) { return static_cast<uint64_t>(BitCount(x, N)); }
uint64_t op_cls(uint64_t x, unsigned N) { return static_cast<uint64_t>(CountLeadingSignBits(x, N)); }
uint64_t op_clz(uint64_t x, unsigned N) { return static_cast<uint64_t>(CountLeadingZeroBits(x, N)); }
uint64_t op_rbit(uint64_t x, unsigned N) { return BitReverse(x, N); }
uint64_t op_rev1(uint64_t x, unsigned N) { return Reverse(x, N, 1); }
uint64_t op_rev2(uint64_t x, unsigned N) { return Reverse(x, N, 2); }
uint64_t op_rev4(uint64_t x, unsigned N) { return Reverse(x, N, 4); }

template <unsigned N>
VecVal ref_bit(const VecVal& zd, const PredV& pg, const VecVal& zn, const CpuContext* c,
               uint64_t (*op)(uint64_t, unsigned)) {
    VecVal r{};
    for (unsigned e = 0; e < elements(c, N); ++e)
        red::set(r, e, N, pbit(pg, e, N) ? op(red::get(zn, e, N), N) : red::get(zd, e, N));
    return r;
}
}  // namespace

// ---------------------------------------------------------------------------
// Handlers

#define BIT_K(name, kernel, N, op)                                                                        \
    extern "C" VecVal name(VecVal zd, PredV pg, VecVal zn, CpuContext* c) { return ref_bit<N>(zd, pg, zn, c, op_##op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                    \
        set_instruction(s, w);                                                                            \
        return kernel(s, zreg(f_zd(w), red::es_of(N)), preg(f_pg3(w), QUAL_MERGE), zreg(f_zn(w), red::es_of(N))); \
    }
#define BIT_R(name, N, op)                                                                                \
    extern "C" VecVal name(VecVal zd, PredV pg, VecVal zn, CpuContext* c) { return ref_bit<N>(zd, pg, zn, c, op_##op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                    \
        RefFrame f(s);                                                                                    \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c()));                  \
        return red::done(f);                                                                              \
    }
#include "sve/integer/reduce_forms.h"
