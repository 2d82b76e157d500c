// Integer arithmetic and logic on Z registers: the kernels, the reference
// operations, and the opcode handlers of every form listed in arith_forms.h.
#include "sve/integer/arith.h"

#include <type_traits>

#include "sve/core/handler_util.h"
#include "sve/integer/intlib.h"
#include "sve/integer/kernel_util.h"

namespace {
template <typename T>
using S = std::make_signed_t<T>;
// Element arithmetic is done in an unsigned type at least as wide as int:
// 8- and 16-bit elements would otherwise be promoted to signed int, and the
// product of two 16-bit elements overflows it.
template <typename T>
using W = std::conditional_t<(sizeof(T) < sizeof(unsigned)), unsigned, T>;
// Sign-extends the low `from` bits of an element. A shift pair rather than a
// narrowing cast, so that the vectoriser sees lane-wide shifts.
template <typename T, unsigned from>
inline T sext(W<T> a) {
    constexpr unsigned up = 8 * sizeof(T) - from;
    return T(S<T>(T(a << up)) >> up);
}
}  // namespace

// ---------------------------------------------------------------------------
// Kernels

// Binary, predicated, merging: zdn = pg ? (a op b) : a.
#define KERNEL_ZPZ(kname, expr)                                                                       \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) { \
        uint8_t* d = s->z[zdn.num];                                                                   \
        const uint8_t* p = s->p[pg.num];                                                              \
        const uint8_t* m = s->z[zm.num];                                                              \
        return by_size(zsize(zdn), [&]<typename T>() {                                                \
            merge_loop<T>(d, p, [&](unsigned i) {                                                     \
                W<T> a = elem<T>(d, i), b = elem<T>(m, i);                                            \
                return expr;                                                                          \
            });                                                                                       \
        });                                                                                           \
    }
KERNEL_ZPZ(sve_add_zpz, a + b)
KERNEL_ZPZ(sve_sub_zpz, a - b)
KERNEL_ZPZ(sve_mul_zpz, a * b)
KERNEL_ZPZ(sve_smin_zpz, S<T>(a) < S<T>(b) ? a : b)
KERNEL_ZPZ(sve_smax_zpz, S<T>(a) > S<T>(b) ? a : b)
KERNEL_ZPZ(sve_umin_zpz, a < b ? a : b)
KERNEL_ZPZ(sve_umax_zpz, a > b ? a : b)
KERNEL_ZPZ(sve_and_zpz, a & b)
KERNEL_ZPZ(sve_orr_zpz, a | b)
KERNEL_ZPZ(sve_eor_zpz, a ^ b)
KERNEL_ZPZ(sve_bic_zpz, a & ~b)

// Division. The host's divide instruction must never see a zero divisor or,
// signed, the minimum value over -1: the first gives 0 and the second is the
// wrapped negation, which the architecture defines and the host may trap on.
// The predicate is tested first so that inactive elements divide nothing.
namespace {
template <typename T, bool Signed>
inline T quotient(T x, T y) {
    if (y == 0) return 0;
    if constexpr (Signed) {
        if (S<T>(y) == -1) return T(T(0) - x);
        return T(S<T>(x) / S<T>(y));
    }
    return x / y;
}
template <bool Signed, bool Reversed>
aarch64_decode_rc div_kernel(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    uint8_t* d = s->z[zdn.num];
    const uint8_t* p = s->p[pg.num];
    const uint8_t* m = s->z[zm.num];
    return by_size_from<uint32_t>(zsize(zdn), [&]<typename T>() {
        uint8_t buf[64];
        for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
            T a = elem<T>(d, i), r = a;
            if (active<T>(p, i)) {
                T b = elem<T>(m, i);
                r = Reversed ? quotient<T, Signed>(b, a) : quotient<T, Signed>(a, b);
            }
            set_elem<T>(buf, i, r);
        }
        std::memcpy(d, buf, 64);
    });
}
}  // namespace

extern "C" aarch64_decode_rc sve_sdiv_zpz(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return div_kernel<true, false>(s, zdn, pg, zm);
}
extern "C" aarch64_decode_rc sve_sdivr_zpz(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return div_kernel<true, true>(s, zdn, pg, zm);
}
extern "C" aarch64_decode_rc sve_udiv_zpz(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return div_kernel<false, false>(s, zdn, pg, zm);
}
extern "C" aarch64_decode_rc sve_udivr_zpz(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return div_kernel<false, true>(s, zdn, pg, zm);
}

// Unpredicated: zd = zn op zm, every element.
#define KERNEL_ZZZ(kname, expr)                                                                        \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) { \
        const uint8_t* n = s->z[zn.num];                                                               \
        const uint8_t* m = s->z[zm.num];                                                               \
        return by_size(zsize(zd), [&]<typename T>() {                                                  \
            map_loop<T>(s->z[zd.num], [&](unsigned i) {                                                \
                W<T> a = elem<T>(n, i), b = elem<T>(m, i);                                             \
                return expr;                                                                           \
            });                                                                                        \
        });                                                                                            \
    }
KERNEL_ZZZ(sve_add_zzz, a + b)
KERNEL_ZZZ(sve_sub_zzz, a - b)

// Bitwise forms have no element size: the 64 bytes are taken as they stand.
#define KERNEL_BITWISE_ZZZ(kname, expr)                                                                \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) { \
        const uint8_t* n = s->z[zn.num];                                                               \
        const uint8_t* m = s->z[zm.num];                                                               \
        map_loop<uint64_t>(s->z[zd.num], [&](unsigned i) {                                             \
            uint64_t a = elem<uint64_t>(n, i), b = elem<uint64_t>(m, i);                               \
            return expr;                                                                               \
        });                                                                                            \
        return DECODE_OK;                                                                              \
    }
KERNEL_BITWISE_ZZZ(sve_and_zzz, a & b)
KERNEL_BITWISE_ZZZ(sve_orr_zzz, a | b)
KERNEL_BITWISE_ZZZ(sve_eor_zzz, a ^ b)
KERNEL_BITWISE_ZZZ(sve_bic_zzz, a & ~b)

// Immediate: zdn = zdn op imm, every element; the immediate is narrowed to the
// element (zero-extended for add and sub, sign-extended for mul).
#define KERNEL_ZI(kname, immtype, expr)                                                 \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zdn, immtype imm) {  \
        uint8_t* d = s->z[zdn.num];                                                     \
        return by_size(zsize(zdn), [&]<typename T>() {                                  \
            const W<T> b = T(imm);                                                      \
            map_loop<T>(d, [&](unsigned i) {                                            \
                W<T> a = elem<T>(d, i);                                                 \
                return expr;                                                            \
            });                                                                         \
        });                                                                             \
    }
KERNEL_ZI(sve_add_zi, unsigned, a + b)
KERNEL_ZI(sve_sub_zi, unsigned, a - b)
KERNEL_ZI(sve_mul_zi, int, a * b)

#define KERNEL_LOGICAL_ZI(kname, op)                                                                       \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zdn, aarch64_sve_logical64_imm imm) { \
        uint8_t* d = s->z[zdn.num];                                                                        \
        map_loop<uint64_t>(d, [&](unsigned i) { return elem<uint64_t>(d, i) op imm.value; });              \
        return DECODE_OK;                                                                                  \
    }
KERNEL_LOGICAL_ZI(sve_and_zi, &)
KERNEL_LOGICAL_ZI(sve_orr_zi, |)
KERNEL_LOGICAL_ZI(sve_eor_zi, ^)

// Unary, predicated: zd = pg ? f(zn) : old zd. Narrowest is the smallest
// element the instruction has; smaller size values fall to it.
#define KERNEL_UN(kname, Narrowest, expr)                                                              \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) { \
        const uint8_t* p = s->p[pg.num];                                                               \
        const uint8_t* n = s->z[zn.num];                                                               \
        return by_size_from<Narrowest>(zsize(zd), [&]<typename T>() {                                  \
            merge_loop<T>(s->z[zd.num], p, [&](unsigned i) {                                           \
                W<T> a = elem<T>(n, i);                                                                \
                return expr;                                                                           \
            });                                                                                        \
        });                                                                                            \
    }
KERNEL_UN(sve_neg_zpz, uint8_t, W<T>(0) - a)
KERNEL_UN(sve_sxtb_zpz, uint16_t, (sext<T, 8>(a)))
KERNEL_UN(sve_sxth_zpz, uint32_t, (sext<T, 16>(a)))
KERNEL_UN(sve_sxtw_zpz, uint64_t, (sext<T, 32>(a)))
KERNEL_UN(sve_uxth_zpz, uint32_t, T(uint16_t(a)))
KERNEL_UN(sve_uxtw_zpz, uint64_t, T(uint32_t(a)))

// Multiply-accumulate, predicated: a is the old destructive element, b and c
// the two other operands in assembler order.
#define KERNEL_ZPZZ(kname, expr)                                                                          \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg z1, \
                                       aarch64_z_reg z2) {                                                \
        uint8_t* d = s->z[zdn.num];                                                                       \
        const uint8_t* p = s->p[pg.num];                                                                  \
        const uint8_t* x = s->z[z1.num];                                                                  \
        const uint8_t* y = s->z[z2.num];                                                                  \
        return by_size(zsize(zdn), [&]<typename T>() {                                                    \
            merge_loop<T>(d, p, [&](unsigned i) {                                                         \
                W<T> a = elem<T>(d, i), b = elem<T>(x, i), c = elem<T>(y, i);                             \
                return expr;                                                                              \
            });                                                                                           \
        });                                                                                               \
    }
KERNEL_ZPZZ(sve_mad_zpzz, c + a * b)  // (zdn, pg, zm, za): za + zdn * zm
KERNEL_ZPZZ(sve_msb_zpzz, c - a * b)  // za - zdn * zm
KERNEL_ZPZZ(sve_mla_zpzz, a + b * c)  // (zda, pg, zn, zm): zda + zn * zm
KERNEL_ZPZZ(sve_mls_zpzz, a - b * c)  // zda - zn * zm

// MOVPRFX runs as an instruction of its own: the copy happens here and now.
extern "C" aarch64_decode_rc sve_movprfx_zpz(cpu_state* s, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    const uint8_t* p = s->p[pg.num];
    const uint8_t* n = s->z[zn.num];
    uint8_t* d = s->z[zd.num];
    if (pg.qualifier == QUAL_ZERO)
        return by_size(zsize(zd), [&]<typename T>() {
            map_loop<T>(d, [&](unsigned i) { return T(elem<T>(n, i) & lane_mask<T>(p, i)); });
        });
    return by_size(zsize(zd), [&]<typename T>() { merge_loop<T>(d, p, [&](unsigned i) { return elem<T>(n, i); }); });
}

extern "C" aarch64_decode_rc sve_movprfx_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    uint8_t buf[64];
    std::memcpy(buf, s->z[zn.num], 64);
    std::memcpy(s->z[zd.num], buf, 64);
    return DECODE_OK;
}

extern "C" aarch64_decode_rc sve_sel_zpzz(cpu_state* s, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn,
                                          aarch64_z_reg zm) {
    const uint8_t* p = s->p[pg.num];
    const uint8_t* n = s->z[zn.num];
    const uint8_t* m = s->z[zm.num];
    return by_size(zsize(zd), [&]<typename T>() {
        map_loop<T>(s->z[zd.num], [&](unsigned i) {
            T k = lane_mask<T>(p, i);
            return T((elem<T>(n, i) & k) | (elem<T>(m, i) & T(~k)));
        });
    });
}

// ---------------------------------------------------------------------------
// Reference operations: the element operations on the pseudocode's integers,
// and the loops that apply them over the context's vector length.

namespace {
uint64_t op_add(uint64_t a, uint64_t b, unsigned N) { return bits(UInt(a, N) + UInt(b, N)); }
uint64_t op_sub(uint64_t a, uint64_t b, unsigned N) { return bits(UInt(a, N) - UInt(b, N)); }
uint64_t op_subr(uint64_t a, uint64_t b, unsigned N) { return bits(UInt(b, N) - UInt(a, N)); }
uint64_t op_mul(uint64_t a, uint64_t b, unsigned N) { return bits(MulInt(SInt(a, N), SInt(b, N))); }
uint64_t op_smulh(uint64_t a, uint64_t b, unsigned N) {
    return bits(ShiftRightInt(MulInt(SInt(a, N), SInt(b, N)), N));
}
uint64_t op_umulh(uint64_t a, uint64_t b, unsigned N) {
    return bits(ShiftRightInt(MulInt(UInt(a, N), UInt(b, N)), N));
}
// Integer division of the widened values rounds toward zero, and the minimum
// value over -1 is representable in 128 bits, so only 0 needs a rule.
uint64_t op_sdiv(uint64_t a, uint64_t b, unsigned N) {
    Integer d = SInt(b, N);
    return d == 0 ? 0 : bits(SInt(a, N) / d);
}
uint64_t op_udiv(uint64_t a, uint64_t b, unsigned N) {
    Integer d = UInt(b, N);
    return d == 0 ? 0 : bits(UInt(a, N) / d);
}
uint64_t op_sdivr(uint64_t a, uint64_t b, unsigned N) { return op_sdiv(b, a, N); }
uint64_t op_udivr(uint64_t a, uint64_t b, unsigned N) { return op_udiv(b, a, N); }
uint64_t op_smin(uint64_t a, uint64_t b, unsigned N) { return Min(a, b, N, 0); }
uint64_t op_smax(uint64_t a, uint64_t b, unsigned N) { return Max(a, b, N, 0); }
uint64_t op_umin(uint64_t a, uint64_t b, unsigned N) { return Min(a, b, N, 1); }
uint64_t op_umax(uint64_t a, uint64_t b, unsigned N) { return Max(a, b, N, 1); }
uint64_t op_sabd(uint64_t a, uint64_t b, unsigned N) { return bits(AbsInt(SInt(a, N) - SInt(b, N))); }
uint64_t op_uabd(uint64_t a, uint64_t b, unsigned N) { return bits(AbsInt(UInt(a, N) - UInt(b, N))); }
uint64_t op_and(uint64_t a, uint64_t b, unsigned) { return a & b; }
uint64_t op_orr(uint64_t a, uint64_t b, unsigned) { return a | b; }
uint64_t op_eor(uint64_t a, uint64_t b, unsigned) { return a ^ b; }
uint64_t op_bic(uint64_t a, uint64_t b, unsigned) { return a & ~b; }

uint64_t op_abs(uint64_t a, unsigned N) { return bits(AbsInt(SInt(a, N))); }
uint64_t op_neg(uint64_t a, unsigned N) { return bits(NegInt(SInt(a, N))); }
uint64_t op_sxtb(uint64_t a, unsigned) { return bits(SInt(a, 8)); }
uint64_t op_sxth(uint64_t a, unsigned) { return bits(SInt(a, 16)); }
uint64_t op_sxtw(uint64_t a, unsigned) { return bits(SInt(a, 32)); }
uint64_t op_uxtb(uint64_t a, unsigned) { return bits(UInt(a, 8)); }
uint64_t op_uxth(uint64_t a, unsigned) { return bits(UInt(a, 16)); }
uint64_t op_uxtw(uint64_t a, unsigned) { return bits(UInt(a, 32)); }
uint64_t op_not(uint64_t a, unsigned) { return ~a; }
uint64_t op_cnot(uint64_t a, unsigned N) { return UInt(a, N) == 0 ? 1 : 0; }

uint64_t op_mad(uint64_t zdn, uint64_t zm, uint64_t za, unsigned N) {
    return bits(AddInt(UInt(za, N), MulInt(UInt(zdn, N), UInt(zm, N))));
}
uint64_t op_msb(uint64_t zdn, uint64_t zm, uint64_t za, unsigned N) {
    return bits(SubInt(UInt(za, N), MulInt(UInt(zdn, N), UInt(zm, N))));
}
uint64_t op_mla(uint64_t zda, uint64_t zn, uint64_t zm, unsigned N) {
    return bits(AddInt(UInt(zda, N), MulInt(UInt(zn, N), UInt(zm, N))));
}
uint64_t op_mls(uint64_t zda, uint64_t zn, uint64_t zm, unsigned N) {
    return bits(SubInt(UInt(zda, N), MulInt(UInt(zn, N), UInt(zm, N))));
}
uint64_t op_copy(uint64_t a, unsigned) { return a; }

template <unsigned N>
using elem_t = std::conditional_t<N == 8, uint8_t,
                                  std::conditional_t<N == 16, uint16_t, std::conditional_t<N == 32, uint32_t, uint64_t>>>;
constexpr uint32_t es_of(unsigned N) { return N == 8 ? ES_B : N == 16 ? ES_H : N == 32 ? ES_S : ES_D; }

template <unsigned N, typename Op>
VecVal ref_zpz(const VecVal& a, const PredV& g, const VecVal& b, const CpuContext* c, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) {
        T x = vget<T>(a, e);
        vset<T>(r, e, pbit(g, e, N) ? T(op(x, vget<T>(b, e), N)) : x);
    }
    return r;
}
template <unsigned N, typename Op>
VecVal ref_zzz(const VecVal& a, const VecVal& b, const CpuContext* c, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) vset<T>(r, e, T(op(vget<T>(a, e), vget<T>(b, e), N)));
    return r;
}
template <unsigned N, typename Op>
VecVal ref_zi(const VecVal& a, uint64_t imm, const CpuContext* c, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) vset<T>(r, e, T(op(vget<T>(a, e), imm, N)));
    return r;
}
template <unsigned N, typename Op>
VecVal ref_un(const VecVal& old, const PredV& g, const VecVal& src, const CpuContext* c, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e)
        vset<T>(r, e, pbit(g, e, N) ? T(op(vget<T>(src, e), N)) : vget<T>(old, e));
    return r;
}
template <unsigned N, typename Op>
VecVal ref_zpzz(const VecVal& a, const PredV& g, const VecVal& b, const VecVal& d, const CpuContext* c, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) {
        T x = vget<T>(a, e);
        vset<T>(r, e, pbit(g, e, N) ? T(op(x, vget<T>(b, e), vget<T>(d, e), N)) : x);
    }
    return r;
}
template <unsigned N>
VecVal ref_prfx_zero(const PredV& g, const VecVal& src, const CpuContext* c) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) vset<T>(r, e, pbit(g, e, N) ? vget<T>(src, e) : T(0));
    return r;
}
VecVal ref_copy(const VecVal& src, const CpuContext* c) {
    VecVal r;
    for (unsigned e = 0, n = elements(c, 64); e < n; ++e) vset<uint64_t>(r, e, vget<uint64_t>(src, e));
    return r;
}
template <unsigned N>
VecVal ref_sel(const PredV& g, const VecVal& a, const VecVal& b, const CpuContext* c) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) vset<T>(r, e, vget<T>(pbit(g, e, N) ? a : b, e));
    return r;
}

// Immediates of the arithmetic forms (the shifted add/sub field is imm_arith_u).
inline int32_t imm_s8(uint32_t w) { return sbits_of(w, 12, 5); }
inline uint32_t imm_u8(uint32_t w) { return bits_of(w, 12, 5); }

inline aarch64_decode_rc done(RefFrame& f) { return static_cast<aarch64_decode_rc>(f.finish()); }
}  // namespace

// ---------------------------------------------------------------------------
// Handlers and reference operations of every form. A kernel-route handler
// stores the word (the unimplemented-kernel message prints it) and calls the
// kernel; a reference-route handler marshals through RefFrame.

#define K_ZPZ(name, kernel, N, op)                                                                              \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, CpuContext* c) { return ref_zpz<N>(zdn, pg, zm, c, op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                          \
        set_instruction(s, w);                                                                                  \
        return kernel(s, zreg_dst(f_zd(w), es_of(N)), preg(f_pg3(w), QUAL_MERGE), zreg(f_zn(w), es_of(N)));    \
    }
#define R_ZPZ(name, N, op)                                                                                      \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, CpuContext* c) { return ref_zpz<N>(zdn, pg, zm, c, op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                          \
        RefFrame f(s);                                                                                          \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c()));                        \
        return done(f);                                                                                         \
    }
#define K_ZZZ(name, kernel, N, op)                                                                      \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c) { return ref_zzz<N>(zn, zm, c, op); }   \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                  \
        set_instruction(s, w);                                                                          \
        return kernel(s, zreg(f_zd(w), es_of(N)), zreg(f_zn(w), es_of(N)), zreg(f_zm(w), es_of(N)));   \
    }
#define K_ZI(name, kernel, N, op, immf)                                                                  \
    extern "C" VecVal name(VecVal zdn, uint64_t imm, CpuContext* c) { return ref_zi<N>(zdn, imm, c, op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                   \
        set_instruction(s, w);                                                                           \
        return kernel(s, zreg_dst(f_zd(w), es_of(N)), immf(w));                                          \
    }
#define R_ZI(name, N, op, immf)                                                                          \
    extern "C" VecVal name(VecVal zdn, uint64_t imm, CpuContext* c) { return ref_zi<N>(zdn, imm, c, op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                   \
        RefFrame f(s);                                                                                   \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), static_cast<uint64_t>(immf(w)), f.c()));                   \
        return done(f);                                                                                  \
    }
// A reserved logical immediate has no mask: the word is refused like an unknown one.
#define K_ZLI(name, kernel, op)                                                                           \
    extern "C" VecVal name(VecVal zdn, uint64_t imm, CpuContext* c) { return ref_zi<64>(zdn, imm, c, op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                    \
        set_instruction(s, w);                                                                            \
        bool ok;                                                                                          \
        uint64_t mask = decode_logical_imm(bits_of(w, 17, 5), &ok);                                       \
        if (!ok) return DECODE_UNKNOWN;                                                                   \
        return kernel(s, zreg_dst(f_zd(w), ES_D), aarch64_sve_logical64_imm{mask});                       \
    }
#define K_UN(name, kernel, N, op)                                                                                 \
    extern "C" VecVal name(VecVal zd, PredV pg, VecVal zn, CpuContext* c) { return ref_un<N>(zd, pg, zn, c, op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                            \
        set_instruction(s, w);                                                                                    \
        return kernel(s, zreg(f_zd(w), es_of(N)), preg(f_pg3(w), QUAL_MERGE), zreg(f_zn(w), es_of(N)));          \
    }
#define R_UN(name, N, op)                                                                                         \
    extern "C" VecVal name(VecVal zd, PredV pg, VecVal zn, CpuContext* c) { return ref_un<N>(zd, pg, zn, c, op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                            \
        RefFrame f(s);                                                                                            \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c()));                          \
        return done(f);                                                                                           \
    }
// mad/msb: Zm at 20..16, Za at 9..5.
#define K_MAD(name, kernel, N, op)                                                             \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, VecVal za, CpuContext* c) {        \
        return ref_zpzz<N>(zdn, pg, zm, za, c, op);                                            \
    }                                                                                          \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                         \
        set_instruction(s, w);                                                                 \
        return kernel(s, zreg_dst(f_zd(w), es_of(N)), preg(f_pg3(w), QUAL_MERGE), zreg(f_zm(w), es_of(N)), \
                      zreg(f_zn(w), es_of(N)));                                                \
    }
// mla/mls: Zn at 9..5, Zm at 20..16.
#define K_MLA(name, kernel, N, op)                                                             \
    extern "C" VecVal name(VecVal zda, PredV pg, VecVal zn, VecVal zm, CpuContext* c) {        \
        return ref_zpzz<N>(zda, pg, zn, zm, c, op);                                            \
    }                                                                                          \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                         \
        set_instruction(s, w);                                                                 \
        return kernel(s, zreg_dst(f_zd(w), es_of(N)), preg(f_pg3(w), QUAL_MERGE), zreg(f_zn(w), es_of(N)), \
                      zreg(f_zm(w), es_of(N)));                                                \
    }
#define K_PRFXM(name, kernel, N) K_UN(name, kernel, N, op_copy)
#define K_PRFXZ(name, kernel, N)                                                                        \
    extern "C" VecVal name(PredV pg, VecVal zn, CpuContext* c) { return ref_prfx_zero<N>(pg, zn, c); }  \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                  \
        set_instruction(s, w);                                                                          \
        return kernel(s, zreg(f_zd(w), es_of(N)), preg(f_pg3(w), QUAL_ZERO), zreg(f_zn(w), es_of(N)));  \
    }
#define K_MOV(name, kernel)                                                                       \
    extern "C" VecVal name(VecVal zn, CpuContext* c) { return ref_copy(zn, c); }                 \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                            \
        set_instruction(s, w);                                                                    \
        return kernel(s, zreg(f_zd(w), ES_S), zreg(f_zn(w), ES_S));                               \
    }
#define K_SEL(name, kernel, N)                                                                                  \
    extern "C" VecVal name(PredV pg, VecVal zn, VecVal zm, CpuContext* c) { return ref_sel<N>(pg, zn, zm, c); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                          \
        set_instruction(s, w);                                                                                  \
        return kernel(s, zreg(f_zd(w), es_of(N)), preg(f_pg4(w), QUAL_PLAIN), zreg(f_zn(w), es_of(N)),          \
                      zreg(f_zm(w), es_of(N)));                                                                 \
    }
#include "sve/integer/arith_forms.h"
