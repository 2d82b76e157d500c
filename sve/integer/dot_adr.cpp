// Dot products (sdot, udot, by vector and indexed), on the reference route,
// and the vector address computation ADR: its packed 64-bit forms as a
// kernel, the packed 32-bit and the SXTW and UXTW forms as reference
// operations.
#include "sve/core/handler_util.h"
#include "sve/integer/intlib.h"
#include "sve/integer/kernel_util.h"
#include "sve/integer/reduce.h"

// ---------------------------------------------------------------------------
// ADR kernel

// The operand records carry no shift, so this kernel decodes the element width
// (bit 22) and the shift (bits 11..10) from the word the handler stored. Only
// the 64-bit forms come here; the 32-bit branch keeps the kernel whole for any
// word of the packed encoding.
extern "C" aarch64_decode_rc sve_adr_scaled_zzz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    const unsigned shift = s->instruction >> 10 & 3;
    const uint8_t* n = s->z[zn.num];
    const uint8_t* m = s->z[zm.num];
    auto run = [&]<typename T>() {
        map_loop<T>(s->z[zd.num], [&](unsigned i) { return T(elem<T>(n, i) + T(elem<T>(m, i) << shift)); });
    };
    if (s->instruction >> 22 & 1)
        run.template operator()<uint64_t>();
    else
        run.template operator()<uint32_t>();
    return DECODE_OK;
}

// ---------------------------------------------------------------------------
// Reference operations

namespace {
// One accumulator: four products of N/4-bit source elements, exact in the
// pseudocode's integers, added to the accumulator and cut to N bits, so the
// accumulation wraps at the accumulator's width.
template <unsigned N, unsigned U>
uint64_t dot4(uint64_t acc, const VecVal& zn, unsigned ni, const VecVal& zm, unsigned mi) {
    constexpr unsigned M = N / 4;
    Integer sum = Int(acc, N, U);
    for (unsigned k = 0; k < 4; ++k)
        sum = AddInt(sum, MulInt(Int(red::get(zn, ni + k, M), M, U), Int(red::get(zm, mi + k, M), M, U)));
    return bits(sum) & ones(N);
}

// The vector form pairs accumulator e with group e of Zm; the indexed form
// with group `index` of the 128-bit segment that holds e.
template <unsigned N, unsigned U>
VecVal ref_dot(const VecVal& zda, const VecVal& zn, const VecVal& zm, const CpuContext* c, bool indexed,
               unsigned index) {
    constexpr unsigned per_segment = 128 / N;
    VecVal r{};
    for (unsigned e = 0; e < elements(c, N); ++e) {
        unsigned g = indexed ? e - e % per_segment + index : e;
        red::set(r, e, N, dot4<N, U>(red::get(zda, e, N), zn, 4 * e, zm, 4 * g));
    }
    return r;
}

// How ADR takes its offset: the whole element, or its low word sign- or
// zero-extended.
enum adr_ext { adr_packed, adr_sxtw, adr_uxtw };
template <unsigned N, unsigned shift, adr_ext ext>
VecVal ref_adr(const VecVal& zn, const VecVal& zm, const CpuContext* c) {
    VecVal r{};
    for (unsigned e = 0; e < elements(c, N); ++e) {
        uint64_t m = red::get(zm, e, N);
        Integer offset = ext == adr_sxtw ? SInt(m, 32) : ext == adr_uxtw ? UInt(m, 32) : UInt(m, N);
        red::set(r, e, N, bits(AddInt(UInt(red::get(zn, e, N), N), ShiftLeftInt(offset, shift))));
    }
    return r;
}

// Index and Zm of the indexed dot product: 32-bit accumulators have a 2-bit
// index at 20..19 and Zm at 18..16, 64-bit ones a 1-bit index at 20 and Zm
// at 19..16.
constexpr unsigned doti_index(uint32_t w, unsigned N) { return N == 32 ? bits_of(w, 20, 19) : bits_of(w, 20, 20); }
constexpr unsigned doti_zm(uint32_t w, unsigned N) { return N == 32 ? bits_of(w, 18, 16) : bits_of(w, 19, 16); }
}  // namespace

// ---------------------------------------------------------------------------
// Handlers

#define DOT(name, N, unsigned_)                                                         \
    extern "C" VecVal name(VecVal zda, VecVal zn, VecVal zm, CpuContext* c) {          \
        return ref_dot<N, unsigned_>(zda, zn, zm, c, false, 0);                         \
    }                                                                                   \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                  \
        RefFrame f(s);                                                                  \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.zv(f_zn(w)), f.zv(f_zm(w)), f.c()));     \
        return red::done(f);                                                            \
    }
#define DOTI(name, N, unsigned_)                                                                \
    extern "C" VecVal name(VecVal zda, VecVal zn, VecVal zm, uint64_t index, CpuContext* c) {  \
        return ref_dot<N, unsigned_>(zda, zn, zm, c, true, static_cast<unsigned>(index));       \
    }                                                                                           \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                          \
        RefFrame f(s);                                                                          \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.zv(f_zn(w)), f.zv(doti_zm(w, N)), doti_index(w, N), f.c())); \
        return red::done(f);                                                                    \
    }
#define ADR_K(name, kernel, shift)                                                                      \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c) { return ref_adr<64, shift, adr_packed>(zn, zm, c); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                  \
        set_instruction(s, w);                                                                          \
        return kernel(s, zreg(f_zd(w), ES_D), zreg(f_zn(w), ES_D), zreg(f_zm(w), ES_D));                \
    }
#define ADR_R(name, N, shift, ext)                                                                      \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c) { return ref_adr<N, shift, adr_##ext>(zn, zm, c); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                  \
        RefFrame f(s);                                                                                  \
        f.put_z(f_zd(w), name(f.zv(f_zn(w)), f.zv(f_zm(w)), f.c()));                                   \
        return red::done(f);                                                                            \
    }
#include "sve/integer/reduce_forms.h"
