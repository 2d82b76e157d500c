// Saturating arithmetic, element counts and increments: the kernels, the
// reference operations, and the opcode handlers of every form listed in
// satcount_forms.h.
//
// The vector length is a number in this family: an element count is what
// these instructions add, subtract or report. The kernels have the counts of
// this build's 512 bits compiled in; the reference operations derive them from
// the context's vector length through VecTrueILength.
#include "sve/integer/satcount.h"

#include <type_traits>

#include "sve/core/handler_util.h"
#include "sve/integer/intlib.h"
#include "sve/integer/kernel_util.h"

// Rows: .b, .h, .s, .d (64, 32, 16, 8 elements).
const uint8_t sve_pattern_count[4][32] = {
    // POW2 VL1..VL8                VL16 VL32 VL64 VL128 VL256  14..28 unnamed                 MUL4 MUL3 ALL
    {64, 1, 2, 3, 4, 5, 6, 7, 8, 16, 32, 64, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 64, 63, 64},
    {32, 1, 2, 3, 4, 5, 6, 7, 8, 16, 32, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 32, 30, 32},
    {16, 1, 2, 3, 4, 5, 6, 7, 8, 16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 15, 16},
    {8, 1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 8, 6, 8},
};

namespace {
// A size field outside 0..3 falls to bytes, as in every kernel's size branch.
inline unsigned size_log(uint32_t size) { return size <= 3 ? size : 0; }

template <unsigned Size>
inline uint64_t pattern_amount(unsigned pattern, unsigned multiplier) {
    return uint64_t(sve_pattern_count[Size][pattern & 31]) * multiplier;
}
}  // namespace

// ---------------------------------------------------------------------------
// Kernels

// inc and dec of a general register: modulo 2^64, register 31 reads 0 and
// drops the write.
#define INCDEC_RII(kname, Size, sign)                                                                        \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier) { \
        write_xr(s, rdn, read_xr(s, rdn) sign pattern_amount<Size>(pattern, multiplier));                    \
        return DECODE_OK;                                                                                    \
    }
INCDEC_RII(sve_incb_rii, 0, +)
INCDEC_RII(sve_inch_rii, 1, +)
INCDEC_RII(sve_incw_rii, 2, +)
INCDEC_RII(sve_incd_rii, 3, +)
INCDEC_RII(sve_decb_rii, 0, -)
INCDEC_RII(sve_dech_rii, 1, -)
INCDEC_RII(sve_decw_rii, 2, -)
INCDEC_RII(sve_decd_rii, 3, -)

// inc and dec of every element: the amount is narrowed to the element first,
// then added modulo the element. The kernel's name fixes the element size.
namespace {
template <typename T, bool Dec>
aarch64_decode_rc incdec_zii(cpu_state* s, aarch64_z_reg zdn, unsigned pattern, unsigned multiplier) {
    constexpr unsigned Size = sizeof(T) == 2 ? 1 : sizeof(T) == 4 ? 2 : 3;
    const T d = T(pattern_amount<Size>(pattern, multiplier));
    uint8_t* z = s->z[zdn.num];
    map_loop<T>(z, [&](unsigned i) { return Dec ? T(elem<T>(z, i) - d) : T(elem<T>(z, i) + d); });
    return DECODE_OK;
}
}  // namespace
#define INCDEC_ZII(kname, T, Dec)                                                                            \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zdn, unsigned pattern, unsigned multiplier) { \
        return incdec_zii<T, Dec>(s, zdn, pattern, multiplier);                                              \
    }
INCDEC_ZII(sve_inch_zii, uint16_t, false)
INCDEC_ZII(sve_incw_zii, uint32_t, false)
INCDEC_ZII(sve_incd_zii, uint64_t, false)
INCDEC_ZII(sve_dech_zii, uint16_t, true)
INCDEC_ZII(sve_decw_zii, uint32_t, true)
INCDEC_ZII(sve_decd_zii, uint64_t, true)

#define CNT_RII(kname, Size)                                                                                 \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_i_reg rd, unsigned pattern, unsigned multiplier) { \
        write_xr(s, rd, uint64_t(64u >> Size) * multiplier);                                                 \
        return DECODE_OK;                                                                                    \
    }
CNT_RII(sve_cntb_rii, 0)
CNT_RII(sve_cnth_rii, 1)
CNT_RII(sve_cntw_rii, 2)
CNT_RII(sve_cntd_rii, 3)

// The pattern rules on 64 >> esize elements, repeated here rather than read
// from the table, at the register's width: a W register saturates at 0 of its
// own 32 bits, and the high word of the result is 0.
template <typename T>
aarch64_decode_rc sve_uqdec(cpu_state* s, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier, unsigned esize) {
    const unsigned n = 64u >> size_log(esize);
    unsigned c;
    switch (pattern & 31) {
        case 0: c = n; break;  // POW2: n is itself a power of 2
        case 1: case 2: case 3: case 4: case 5: case 6: case 7: case 8: c = (pattern & 31) <= n ? pattern & 31 : 0; break;
        case 9: case 10: case 11: case 12: case 13: c = (1u << ((pattern & 31) - 5)) <= n ? 1u << ((pattern & 31) - 5) : 0; break;
        case 29: c = n & ~3u; break;     // MUL4
        case 30: c = n / 3 * 3; break;   // MUL3
        case 31: c = n; break;           // ALL
        default: c = 0; break;
    }
    const T v = T(read_xr(s, rdn));
    const T d = T(T(c) * T(multiplier));
    write_xr(s, rdn, uint64_t(v > d ? T(v - d) : T(0)));
    return DECODE_OK;
}
template aarch64_decode_rc sve_uqdec<uint32_t>(cpu_state*, aarch64_i_reg, unsigned, unsigned, unsigned);
template aarch64_decode_rc sve_uqdec<uint64_t>(cpu_state*, aarch64_i_reg, unsigned, unsigned, unsigned);

#define UQDEC_RII(kname, Size)                                                                               \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier) { \
        return rdn.dst_size == ES_D ? sve_uqdec<uint64_t>(s, rdn, pattern, multiplier, Size)                 \
                                    : sve_uqdec<uint32_t>(s, rdn, pattern, multiplier, Size);                \
    }
UQDEC_RII(sve_uqdecb_rii, ES_B)
UQDEC_RII(sve_uqdecw_rii, ES_S)
UQDEC_RII(sve_uqdecd_rii, ES_D)

namespace {
// Elements of 1 << size bytes whose first predicate byte has bit 0 set.
inline unsigned active_elements(const uint8_t* p, unsigned size) {
    unsigned n = 0;
    for (unsigned i = 0; i < 64u >> size; ++i) n += p[i << size] & 1;
    return n;
}
}  // namespace

extern "C" aarch64_decode_rc sve_incp_rp(cpu_state* s, aarch64_i_reg rdn, aarch64_p_reg pg) {
    write_xr(s, rdn, read_xr(s, rdn) + active_elements(s->p[pg.num], size_log(pg.qualifier)));
    return DECODE_OK;
}

extern "C" aarch64_decode_rc sve_cntp_rpp(cpu_state* s, aarch64_i_reg rd, aarch64_p_reg pg, aarch64_p_reg pn) {
    const unsigned size = size_log(pn.qualifier);
    const uint8_t* g = s->p[pg.num];
    const uint8_t* p = s->p[pn.num];
    unsigned n = 0;
    for (unsigned i = 0; i < 64u >> size; ++i) n += g[i << size] & p[i << size] & 1;
    write_xr(s, rd, n);
    return DECODE_OK;
}

// The product is formed in 32 bits and sign-extended, as the architecture's
// 32-bit immediate multiply does; the immediate is -32..31, so it is exact.
extern "C" aarch64_decode_rc sve_rdvl_ri(cpu_state* s, aarch64_i_reg rd, int imm) {
    write_xr(s, rd, uint64_t(int64_t(int32_t(uint32_t(imm) * SVE_VL_BYTES))));
    return DECODE_OK;
}
extern "C" aarch64_decode_rc sve_addvl_rri(cpu_state* s, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn, int imm) {
    write_xsp(s, rd, read_xsp(s, rn) + uint64_t(int64_t(imm)) * SVE_VL_BYTES);
    return DECODE_OK;
}
extern "C" aarch64_decode_rc sve_addpl_rri(cpu_state* s, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn, int imm) {
    write_xsp(s, rd, read_xsp(s, rn) + uint64_t(int64_t(imm)) * (SVE_VL_BYTES / 8));
    return DECODE_OK;
}

// ---------------------------------------------------------------------------
// Reference operations

namespace {
template <unsigned N>
using elem_t = std::conditional_t<N == 8, uint8_t,
                                  std::conditional_t<N == 16, uint16_t, std::conditional_t<N == 32, uint32_t, uint64_t>>>;
constexpr uint32_t es_of(unsigned N) { return N == 8 ? ES_B : N == 16 ? ES_H : N == 32 ? ES_S : ES_D; }

// count + field * count, the pattern's elements of N bits times field + 1.
uint64_t pattern_scaled(unsigned pattern, unsigned field, unsigned N, const CpuContext* c) {
    uint64_t n = VecTrueILength(pattern, elements(c, N));
    return n + uint64_t(field) * n;
}
uint64_t active_count(const PredV& p, unsigned N, const CpuContext* c) {
    uint64_t k = 0;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) k += pbit(p, e, N);
    return k;
}

// Scalars, modulo 2^64.
uint64_t op_add_x(uint64_t x, uint64_t d) { return x + d; }
uint64_t op_sub_x(uint64_t x, uint64_t d) { return x - d; }
// Scalars, saturating at the register's width. A 32-bit result goes back
// sign-extended for the signed forms and zero-extended for the unsigned ones;
// SatQ's bare negative limit 0x80000000 becomes 0xFFFFFFFF80000000 so.
inline uint64_t sext32(uint64_t v) { return uint64_t(int64_t(int32_t(uint32_t(v)))); }
inline uint64_t zext32(uint64_t v) { return uint32_t(v); }
uint64_t op_sqadd_x(uint64_t x, uint64_t d) { return SatAdd(x, d, 64, 0); }
uint64_t op_uqadd_x(uint64_t x, uint64_t d) { return SatAdd(x, d, 64, 1); }
uint64_t op_sqsub_x(uint64_t x, uint64_t d) { return SatQValue(SatSub(x, d, 64, 0)); }
uint64_t op_uqsub_x(uint64_t x, uint64_t d) { return SatQValue(SatSub(x, d, 64, 1)); }
uint64_t op_sqadd_w(uint64_t x, uint64_t d) { return sext32(SatAdd(x, d, 32, 0)); }
uint64_t op_uqadd_w(uint64_t x, uint64_t d) { return zext32(SatAdd(x, d, 32, 1)); }
uint64_t op_sqsub_w(uint64_t x, uint64_t d) { return sext32(SatQValue(SatSub(x, d, 32, 0))); }
uint64_t op_uqsub_w(uint64_t x, uint64_t d) { return zext32(SatQValue(SatSub(x, d, 32, 1))); }

// Elements, modulo the element.
uint64_t op_add(uint64_t e, uint64_t d, unsigned N) { return bits(UInt(e, N) + UInt(d, 64)); }
uint64_t op_sub(uint64_t e, uint64_t d, unsigned N) { return bits(UInt(e, N) - UInt(d, 64)); }
// Elements and a non-negative amount (an unsigned immediate, a count): the
// exact sum or difference, saturated. The amount is not narrowed to the
// element: sqadd .b of 200 adds 200 to a signed byte.
uint64_t op_sqinc(uint64_t e, uint64_t d, unsigned N) { return SatQValue(SatQ(SInt(e, N) + UInt(d, 64), N, 0)); }
uint64_t op_uqinc(uint64_t e, uint64_t d, unsigned N) { return SatQValue(SatQ(UInt(e, N) + UInt(d, 64), N, 1)); }
uint64_t op_sqdec(uint64_t e, uint64_t d, unsigned N) { return SatQValue(SatQ(SInt(e, N) - UInt(d, 64), N, 0)); }
uint64_t op_uqdec(uint64_t e, uint64_t d, unsigned N) { return SatQValue(SatQ(UInt(e, N) - UInt(d, 64), N, 1)); }
// Two values of the element width.
uint64_t op_sqadd(uint64_t a, uint64_t b, unsigned N) { return SatAdd(a, b, N, 0); }
uint64_t op_uqadd(uint64_t a, uint64_t b, unsigned N) { return SatAdd(a, b, N, 1); }
uint64_t op_sqsub(uint64_t a, uint64_t b, unsigned N) { return SatQValue(SatSub(a, b, N, 0)); }
uint64_t op_uqsub(uint64_t a, uint64_t b, unsigned N) { return SatQValue(SatSub(a, b, N, 1)); }

// Every element of v through op with the same second operand.
template <unsigned N, typename Op>
VecVal ref_each(const VecVal& v, uint64_t d, const CpuContext* c, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) vset<T>(r, e, T(op(vget<T>(v, e), d, N)));
    return r;
}
template <unsigned N, typename Op>
VecVal ref_pair(const VecVal& a, const VecVal& b, const CpuContext* c, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) vset<T>(r, e, T(op(vget<T>(a, e), vget<T>(b, e), N)));
    return r;
}

// Fields of the word.
inline uint32_t f_rd(uint32_t w) { return bits_of(w, 4, 0); }
inline uint32_t f_rn(uint32_t w) { return bits_of(w, 20, 16); }  // addvl, addpl
inline uint32_t f_pattern(uint32_t w) { return bits_of(w, 9, 5); }
inline uint32_t f_mulfield(uint32_t w) { return bits_of(w, 19, 16); }
inline int32_t f_vlimm(uint32_t w) { return sbits_of(w, 10, 5); }
// A 32-bit register operand is read as its low word.
template <unsigned R>
inline uint64_t reg_in(uint64_t x) { return R == 32 ? uint32_t(x) : x; }

inline aarch64_decode_rc done(RefFrame& f) { return static_cast<aarch64_decode_rc>(f.finish()); }
}  // namespace

// ---------------------------------------------------------------------------
// Handlers and reference operations of every form. The kernel route passes
// the multiplier as field + 1; the reference route passes the field.

#define R_CNT(name, N)                                                            \
    extern "C" uint64_t name(unsigned pattern, unsigned field, CpuContext* c) {   \
        return pattern_scaled(pattern, field, N, c);                              \
    }                                                                             \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                            \
        RefFrame f(s);                                                            \
        f.put_x(f_rd(w), name(f_pattern(w), f_mulfield(w), f.c()));               \
        return done(f);                                                           \
    }
#define K_RII(name, kernel, N, op)                                                                \
    extern "C" uint64_t name(uint64_t xdn, unsigned pattern, unsigned field, CpuContext* c) {    \
        return op(xdn, pattern_scaled(pattern, field, N, c));                                     \
    }                                                                                             \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                            \
        set_instruction(s, w);                                                                    \
        return kernel(s, ireg_dst(f_rd(w), ES_D), f_pattern(w), f_mulfield(w) + 1);               \
    }
#define R_QSI(name, N, R, op)                                                                     \
    extern "C" uint64_t name(uint64_t xdn, unsigned pattern, unsigned field, CpuContext* c) {    \
        return op(xdn, pattern_scaled(pattern, field, N, c));                                     \
    }                                                                                             \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                            \
        RefFrame f(s);                                                                            \
        f.put_x(f_rd(w), name(reg_in<R>(f.xr(f_rd(w))), f_pattern(w), f_mulfield(w), f.c()));    \
        return done(f);                                                                           \
    }
#define K_QSI(name, kernel, N, R, op)                                                             \
    extern "C" uint64_t name(uint64_t xdn, unsigned pattern, unsigned field, CpuContext* c) {    \
        return op(xdn, pattern_scaled(pattern, field, N, c));                                     \
    }                                                                                             \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                            \
        set_instruction(s, w);                                                                    \
        return kernel(s, ireg_dst(f_rd(w), R == 32 ? ES_S : ES_D), f_pattern(w), f_mulfield(w) + 1); \
    }
#define K_ZII(name, kernel, N, op)                                                               \
    extern "C" VecVal name(VecVal zdn, unsigned pattern, unsigned field, CpuContext* c) {        \
        return ref_each<N>(zdn, pattern_scaled(pattern, field, N, c), c, op);                    \
    }                                                                                            \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                           \
        set_instruction(s, w);                                                                   \
        return kernel(s, zreg_dst(f_zd(w), es_of(N)), f_pattern(w), f_mulfield(w) + 1);          \
    }
#define R_QVI(name, N, op)                                                                       \
    extern "C" VecVal name(VecVal zdn, unsigned pattern, unsigned field, CpuContext* c) {        \
        return ref_each<N>(zdn, pattern_scaled(pattern, field, N, c), c, op);                    \
    }                                                                                            \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                           \
        RefFrame f(s);                                                                           \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f_pattern(w), f_mulfield(w), f.c()));               \
        return done(f);                                                                          \
    }
#define K_SP(name, kernel, N, op)                                                         \
    extern "C" uint64_t name(uint64_t xdn, PredV pm, CpuContext* c) {                     \
        return op(xdn, active_count(pm, N, c));                                           \
    }                                                                                     \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                    \
        set_instruction(s, w);                                                            \
        return kernel(s, ireg_dst(f_rd(w), ES_D), preg(f_pn(w), es_of(N)));               \
    }
#define R_SP(name, N, op)                                                                 \
    extern "C" uint64_t name(uint64_t xdn, PredV pm, CpuContext* c) {                     \
        return op(xdn, active_count(pm, N, c));                                           \
    }                                                                                     \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                    \
        RefFrame f(s);                                                                    \
        f.put_x(f_rd(w), name(f.xr(f_rd(w)), f.pred(f_pn(w)), f.c()));                    \
        return done(f);                                                                   \
    }
#define R_QSP(name, N, R, op)                                                             \
    extern "C" uint64_t name(uint64_t xdn, PredV pm, CpuContext* c) {                     \
        return op(xdn, active_count(pm, N, c));                                           \
    }                                                                                     \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                    \
        RefFrame f(s);                                                                    \
        f.put_x(f_rd(w), name(reg_in<R>(f.xr(f_rd(w))), f.pred(f_pn(w)), f.c()));         \
        return done(f);                                                                   \
    }
#define R_PV(name, N, op)                                                                 \
    extern "C" VecVal name(VecVal zdn, PredV pm, CpuContext* c) {                         \
        return ref_each<N>(zdn, active_count(pm, N, c), c, op);                           \
    }                                                                                     \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                    \
        RefFrame f(s);                                                                    \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.pred(f_pn(w)), f.c()));                    \
        return done(f);                                                                   \
    }
#define K_CNTP(name, kernel, N)                                                                       \
    extern "C" uint64_t name(PredV pg, PredV pn, CpuContext* c) {                                     \
        uint64_t k = 0;                                                                               \
        for (unsigned e = 0, n = elements(c, N); e < n; ++e) k += pbit(pg, e, N) && pbit(pn, e, N);   \
        return k;                                                                                     \
    }                                                                                                 \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                \
        set_instruction(s, w);                                                                        \
        return kernel(s, ireg(f_rd(w), ES_D), preg(f_pg4(w), QUAL_PLAIN), preg(f_pn(w), es_of(N)));   \
    }
#define R_QVIX(name, N, op)                                                               \
    extern "C" VecVal name(VecVal zdn, uint64_t imm, CpuContext* c) {                     \
        return ref_each<N>(zdn, imm, c, op);                                              \
    }                                                                                     \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                    \
        RefFrame f(s);                                                                    \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), imm_arith_u(w), f.c()));                     \
        return done(f);                                                                   \
    }
#define R_QVVX(name, N, op)                                                               \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c) { return ref_pair<N>(zn, zm, c, op); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                    \
        RefFrame f(s);                                                                    \
        f.put_z(f_zd(w), name(f.zv(f_zn(w)), f.zv(f_zm(w)), f.c()));                      \
        return done(f);                                                                   \
    }
// The vector length in bytes is 8 units of 64 bits here; the operations read
// it from the context, the kernels have it as a constant.
#define K_VLX(name, kernel)                                                               \
    extern "C" uint64_t name(int64_t imm, CpuContext* c) {                                \
        return uint64_t(imm * int64_t((c->vl & 0x3ffffff) * 8));                          \
    }                                                                                     \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                    \
        set_instruction(s, w);                                                            \
        return kernel(s, ireg(f_rd(w), ES_D), f_vlimm(w));                                \
    }
#define K_ADDVL(name, kernel, scale)                                                      \
    extern "C" uint64_t name(uint64_t xn, int64_t imm, CpuContext* c) {                   \
        return xn + uint64_t(imm * int64_t((c->vl & 0x3ffffff) * 8 * scale / 64));        \
    }                                                                                     \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                    \
        set_instruction(s, w);                                                            \
        return kernel(s, rspreg(f_rd(w), ES_D), rspreg(f_rn(w), ES_D), f_vlimm(w));       \
    }
#include "sve/integer/satcount_forms.h"
