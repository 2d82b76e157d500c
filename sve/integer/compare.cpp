// Integer compares: immediate, register and wide forms, signed and unsigned.
// Every compare zeroes its inactive elements and sets NZCV by PredTest of
// the result against the governing predicate.
#include <cstring>
#include <type_traits>

#include "sve/core/handler_util.h"
#include "sve/integer/kernel_util.h"
#include "sve/integer/predicate.h"

namespace {

struct Eq { template <typename A> bool operator()(A a, A b) const { return a == b; } };
struct Ne { template <typename A> bool operator()(A a, A b) const { return a != b; } };
struct Gt { template <typename A> bool operator()(A a, A b) const { return a > b; } };
struct Ge { template <typename A> bool operator()(A a, A b) const { return a >= b; } };
struct Lt { template <typename A> bool operator()(A a, A b) const { return a < b; } };
struct Le { template <typename A> bool operator()(A a, A b) const { return a <= b; } };

// Element i of Pd becomes 1 at element width where Pg is active and the
// condition holds, 0 otherwise; every byte of the buffer is written, so the
// higher bytes of each group come out 0. The flags read Pg before Pd is
// written, which keeps Pd == Pg right.
template <typename E, typename Flag, typename Rhs, typename Cond>
void compare_into(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, const uint8_t* zn, Rhs rhs, Cond cond) {
    const uint8_t* g = s->p[pg.num];
    uint8_t buf[64];
    for (unsigned i = 0; i < 64 / sizeof(E); ++i)
        set_elem<E>(buf, i, E(active<E>(g, i) && cond(elem<E>(zn, i), rhs(i))));
    sve_ptest<Flag>(s, g, buf);
    std::memcpy(s->p[pd.num], buf, 64);
}

template <bool Signed, typename U>
using cmp_t = std::conditional_t<Signed, std::make_signed_t<U>, U>;

template <bool Signed, typename Cond>
aarch64_decode_rc compare_imm(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int64_t imm,
                              Cond cond) {
    const uint8_t* a = s->z[zn.num];
    return by_size(pd.qualifier, [&]<typename U>() {
        using E = cmp_t<Signed, U>;
        compare_into<E, std::make_signed_t<U>>(s, pd, pg, a, [&](unsigned) { return E(imm); }, cond);
    });
}

// FlagSigned only picks the stride type handed to sve_ptest; both give the
// same flags.
template <bool Signed, bool FlagSigned, typename Cond>
aarch64_decode_rc compare_vec(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, aarch64_z_reg zm,
                              Cond cond) {
    const uint8_t* a = s->z[zn.num];
    const uint8_t* b = s->z[zm.num];
    return by_size(pd.qualifier, [&]<typename U>() {
        using E = cmp_t<Signed, U>;
        compare_into<E, cmp_t<FlagSigned, U>>(s, pd, pg, a, [&](unsigned i) { return elem<E>(b, i); }, cond);
    });
}

// Reference form: the element is widened to W (int64_t or uint64_t, by the
// compare's signedness) and compared with rhs(e), already of type W.
template <typename E, typename W, typename Rhs, typename Cond>
PredV compare_ref(const PredV& pg, const VecVal& zn, Rhs rhs, Cond cond, CpuContext* c) {
    constexpr unsigned esize = 8 * sizeof(E);
    PredV r{};
    const unsigned n = elements(c, esize);
    for (unsigned e = 0; e < n; ++e)
        if (pbit(pg, e, esize)) pset(r, e, esize, cond(W(vget<E>(zn, e)), rhs(e)));
    PredSetNZCV(pg, r, esize, c);
    return r;
}

}  // namespace

extern "C" {
aarch64_decode_rc sve_cmpeq_ppzi(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm) {
    return compare_imm<true>(s, pd, pg, zn, imm, Eq{});
}
aarch64_decode_rc sve_cmpne_ppzi(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm) {
    return compare_imm<true>(s, pd, pg, zn, imm, Ne{});
}
aarch64_decode_rc sve_cmpgt_ppzi(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm) {
    return compare_imm<true>(s, pd, pg, zn, imm, Gt{});
}
aarch64_decode_rc sve_cmplt_ppzi(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm) {
    return compare_imm<true>(s, pd, pg, zn, imm, Lt{});
}
aarch64_decode_rc sve_cmple_ppzi(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm) {
    return compare_imm<true>(s, pd, pg, zn, imm, Le{});
}
aarch64_decode_rc sve_cmphi_ppzi(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, unsigned imm) {
    return compare_imm<false>(s, pd, pg, zn, imm, Gt{});
}
aarch64_decode_rc sve_cmplo_ppzi(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, unsigned imm) {
    return compare_imm<false>(s, pd, pg, zn, imm, Lt{});
}

#define CMP_VEC_KERNEL(kernel, Signed, FlagSigned, Cond)                                                     \
    aarch64_decode_rc kernel(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, aarch64_z_reg zm) { \
        return compare_vec<Signed, FlagSigned>(s, pd, pg, zn, zm, Cond{});                                  \
    }
CMP_VEC_KERNEL(sve_cmpeq_ppzz, true, true, Eq)
CMP_VEC_KERNEL(sve_cmpne_ppzz, true, true, Ne)
CMP_VEC_KERNEL(sve_cmpgt_ppzz, true, true, Gt)
CMP_VEC_KERNEL(sve_cmpge_ppzz, true, true, Ge)
CMP_VEC_KERNEL(sve_cmphi_ppzz, false, true, Gt)
CMP_VEC_KERNEL(sve_cmphs_ppzz, false, false, Ge)
#undef CMP_VEC_KERNEL
}

// Immediates: signed 5 bits at 20..16, unsigned 7 bits at 20..14.
#define SIMM5(w) sbits_of(w, 20, 16)
#define UIMM7(w) bits_of(w, 20, 14)

#define CMP_IMM_KERNEL_HANDLER(Handler, kernel, size, imm)                                                   \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                                    \
        set_instruction(s, w);                                                                               \
        return kernel(s, preg(f_pd(w), size), preg(f_pg3(w), QUAL_ZERO), zreg(f_zn(w), size), imm(w));      \
    }
CMP_IMM_KERNEL_HANDLER(VecS8CmpFlgEQVIZ, sve_cmpeq_ppzi, ES_B, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS16CmpFlgEQVIZ, sve_cmpeq_ppzi, ES_H, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS32CmpFlgEQVIZ, sve_cmpeq_ppzi, ES_S, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS64CmpFlgEQVIZ, sve_cmpeq_ppzi, ES_D, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS8CmpFlgNEVIZ, sve_cmpne_ppzi, ES_B, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS16CmpFlgNEVIZ, sve_cmpne_ppzi, ES_H, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS32CmpFlgNEVIZ, sve_cmpne_ppzi, ES_S, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS64CmpFlgNEVIZ, sve_cmpne_ppzi, ES_D, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS8CmpFlgGTVIZ, sve_cmpgt_ppzi, ES_B, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS16CmpFlgGTVIZ, sve_cmpgt_ppzi, ES_H, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS32CmpFlgGTVIZ, sve_cmpgt_ppzi, ES_S, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS64CmpFlgGTVIZ, sve_cmpgt_ppzi, ES_D, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS8CmpFlgLTVIZ, sve_cmplt_ppzi, ES_B, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS16CmpFlgLTVIZ, sve_cmplt_ppzi, ES_H, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS32CmpFlgLTVIZ, sve_cmplt_ppzi, ES_S, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS64CmpFlgLTVIZ, sve_cmplt_ppzi, ES_D, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS8CmpFlgLEVIZ, sve_cmple_ppzi, ES_B, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS16CmpFlgLEVIZ, sve_cmple_ppzi, ES_H, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS32CmpFlgLEVIZ, sve_cmple_ppzi, ES_S, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecS64CmpFlgLEVIZ, sve_cmple_ppzi, ES_D, SIMM5)
CMP_IMM_KERNEL_HANDLER(VecU8CmpFlgGTVIZ, sve_cmphi_ppzi, ES_B, UIMM7)
CMP_IMM_KERNEL_HANDLER(VecU16CmpFlgGTVIZ, sve_cmphi_ppzi, ES_H, UIMM7)
CMP_IMM_KERNEL_HANDLER(VecU32CmpFlgGTVIZ, sve_cmphi_ppzi, ES_S, UIMM7)
CMP_IMM_KERNEL_HANDLER(VecU64CmpFlgGTVIZ, sve_cmphi_ppzi, ES_D, UIMM7)
CMP_IMM_KERNEL_HANDLER(VecU8CmpFlgLTVIZ, sve_cmplo_ppzi, ES_B, UIMM7)
CMP_IMM_KERNEL_HANDLER(VecU16CmpFlgLTVIZ, sve_cmplo_ppzi, ES_H, UIMM7)
CMP_IMM_KERNEL_HANDLER(VecU32CmpFlgLTVIZ, sve_cmplo_ppzi, ES_S, UIMM7)
CMP_IMM_KERNEL_HANDLER(VecU64CmpFlgLTVIZ, sve_cmplo_ppzi, ES_D, UIMM7)
#undef CMP_IMM_KERNEL_HANDLER

#define CMP_VEC_KERNEL_HANDLER(Handler, kernel, size)                                                              \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                                          \
        set_instruction(s, w);                                                                                     \
        return kernel(s, preg(f_pd(w), size), preg(f_pg3(w), QUAL_ZERO), zreg(f_zn(w), size), zreg(f_zm(w), size)); \
    }
CMP_VEC_KERNEL_HANDLER(VecS8CmpFlgEQVVZ, sve_cmpeq_ppzz, ES_B)
CMP_VEC_KERNEL_HANDLER(VecS16CmpFlgEQVVZ, sve_cmpeq_ppzz, ES_H)
CMP_VEC_KERNEL_HANDLER(VecS32CmpFlgEQVVZ, sve_cmpeq_ppzz, ES_S)
CMP_VEC_KERNEL_HANDLER(VecS64CmpFlgEQVVZ, sve_cmpeq_ppzz, ES_D)
CMP_VEC_KERNEL_HANDLER(VecS8CmpFlgNEVVZ, sve_cmpne_ppzz, ES_B)
CMP_VEC_KERNEL_HANDLER(VecS16CmpFlgNEVVZ, sve_cmpne_ppzz, ES_H)
CMP_VEC_KERNEL_HANDLER(VecS32CmpFlgNEVVZ, sve_cmpne_ppzz, ES_S)
CMP_VEC_KERNEL_HANDLER(VecS64CmpFlgNEVVZ, sve_cmpne_ppzz, ES_D)
CMP_VEC_KERNEL_HANDLER(VecS8CmpFlgGTVVZ, sve_cmpgt_ppzz, ES_B)
CMP_VEC_KERNEL_HANDLER(VecS16CmpFlgGTVVZ, sve_cmpgt_ppzz, ES_H)
CMP_VEC_KERNEL_HANDLER(VecS32CmpFlgGTVVZ, sve_cmpgt_ppzz, ES_S)
CMP_VEC_KERNEL_HANDLER(VecS64CmpFlgGTVVZ, sve_cmpgt_ppzz, ES_D)
CMP_VEC_KERNEL_HANDLER(VecS8CmpFlgGEVVZ, sve_cmpge_ppzz, ES_B)
CMP_VEC_KERNEL_HANDLER(VecS16CmpFlgGEVVZ, sve_cmpge_ppzz, ES_H)
CMP_VEC_KERNEL_HANDLER(VecS32CmpFlgGEVVZ, sve_cmpge_ppzz, ES_S)
CMP_VEC_KERNEL_HANDLER(VecS64CmpFlgGEVVZ, sve_cmpge_ppzz, ES_D)
CMP_VEC_KERNEL_HANDLER(VecU8CmpFlgGTVVZ, sve_cmphi_ppzz, ES_B)
CMP_VEC_KERNEL_HANDLER(VecU16CmpFlgGTVVZ, sve_cmphi_ppzz, ES_H)
CMP_VEC_KERNEL_HANDLER(VecU32CmpFlgGTVVZ, sve_cmphi_ppzz, ES_S)
CMP_VEC_KERNEL_HANDLER(VecU64CmpFlgGTVVZ, sve_cmphi_ppzz, ES_D)
CMP_VEC_KERNEL_HANDLER(VecU8CmpFlgGEVVZ, sve_cmphs_ppzz, ES_B)
CMP_VEC_KERNEL_HANDLER(VecU16CmpFlgGEVVZ, sve_cmphs_ppzz, ES_H)
CMP_VEC_KERNEL_HANDLER(VecU32CmpFlgGEVVZ, sve_cmphs_ppzz, ES_S)
CMP_VEC_KERNEL_HANDLER(VecU64CmpFlgGEVVZ, sve_cmphs_ppzz, ES_D)
#undef CMP_VEC_KERNEL_HANDLER

// Reference route, immediate forms: cmpge, cmphs, cmpls.
#define CMP_IMM_REF(Handler, E, W, Cond, imm)                                                  \
    extern "C" PredV Handler(PredV pg, VecVal zn, int64_t v, CpuContext* c) {                  \
        return compare_ref<E, W>(pg, zn, [&](unsigned) { return W(v); }, Cond{}, c);            \
    }                                                                                          \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                      \
        RefFrame f(s);                                                                         \
        PredV pg = f.pred(f_pg3(w));                                                           \
        VecVal zn = f.zv(f_zn(w));                                                             \
        f.put_p(f_pd(w), Handler(pg, zn, imm(w), f.c()));                                      \
        return aarch64_decode_rc(f.finish());                                                  \
    }
CMP_IMM_REF(VecS8CmpFlgGEVIZ, int8_t, int64_t, Ge, SIMM5)
CMP_IMM_REF(VecS16CmpFlgGEVIZ, int16_t, int64_t, Ge, SIMM5)
CMP_IMM_REF(VecS32CmpFlgGEVIZ, int32_t, int64_t, Ge, SIMM5)
CMP_IMM_REF(VecS64CmpFlgGEVIZ, int64_t, int64_t, Ge, SIMM5)
CMP_IMM_REF(VecU8CmpFlgGEVIZ, uint8_t, uint64_t, Ge, UIMM7)
CMP_IMM_REF(VecU16CmpFlgGEVIZ, uint16_t, uint64_t, Ge, UIMM7)
CMP_IMM_REF(VecU32CmpFlgGEVIZ, uint32_t, uint64_t, Ge, UIMM7)
CMP_IMM_REF(VecU64CmpFlgGEVIZ, uint64_t, uint64_t, Ge, UIMM7)
CMP_IMM_REF(VecU8CmpFlgLEVIZ, uint8_t, uint64_t, Le, UIMM7)
CMP_IMM_REF(VecU16CmpFlgLEVIZ, uint16_t, uint64_t, Le, UIMM7)
CMP_IMM_REF(VecU32CmpFlgLEVIZ, uint32_t, uint64_t, Le, UIMM7)
CMP_IMM_REF(VecU64CmpFlgLEVIZ, uint64_t, uint64_t, Le, UIMM7)
#undef CMP_IMM_REF

// Reference route, wide forms: element e of E against the 64-bit lane of Zm
// that overlaps it, lane e * esize / 64. cmpeq and cmpne are signed.
#define CMP_WIDE_REF(Handler, E, W, Cond)                                                          \
    extern "C" PredV Handler(PredV pg, VecVal zn, VecVal zm, CpuContext* c) {                      \
        return compare_ref<E, W>(pg, zn, [&](unsigned e) { return vget<W>(zm, e * sizeof(E) / 8); }, Cond{}, c); \
    }                                                                                              \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                          \
        RefFrame f(s);                                                                             \
        PredV pg = f.pred(f_pg3(w));                                                               \
        VecVal zn = f.zv(f_zn(w)), zm = f.zv(f_zm(w));                                             \
        f.put_p(f_pd(w), Handler(pg, zn, zm, f.c()));                                              \
        return aarch64_decode_rc(f.finish());                                                      \
    }
CMP_WIDE_REF(VecS8CmpFlgEQVWZ, int8_t, int64_t, Eq)
CMP_WIDE_REF(VecS16CmpFlgEQVWZ, int16_t, int64_t, Eq)
CMP_WIDE_REF(VecS32CmpFlgEQVWZ, int32_t, int64_t, Eq)
CMP_WIDE_REF(VecS8CmpFlgNEVWZ, int8_t, int64_t, Ne)
CMP_WIDE_REF(VecS16CmpFlgNEVWZ, int16_t, int64_t, Ne)
CMP_WIDE_REF(VecS32CmpFlgNEVWZ, int32_t, int64_t, Ne)
CMP_WIDE_REF(VecS8CmpFlgGTVWZ, int8_t, int64_t, Gt)
CMP_WIDE_REF(VecS16CmpFlgGTVWZ, int16_t, int64_t, Gt)
CMP_WIDE_REF(VecS32CmpFlgGTVWZ, int32_t, int64_t, Gt)
CMP_WIDE_REF(VecS8CmpFlgGEVWZ, int8_t, int64_t, Ge)
CMP_WIDE_REF(VecS16CmpFlgGEVWZ, int16_t, int64_t, Ge)
CMP_WIDE_REF(VecS32CmpFlgGEVWZ, int32_t, int64_t, Ge)
CMP_WIDE_REF(VecS8CmpFlgLTVWZ, int8_t, int64_t, Lt)
CMP_WIDE_REF(VecS16CmpFlgLTVWZ, int16_t, int64_t, Lt)
CMP_WIDE_REF(VecS32CmpFlgLTVWZ, int32_t, int64_t, Lt)
CMP_WIDE_REF(VecS8CmpFlgLEVWZ, int8_t, int64_t, Le)
CMP_WIDE_REF(VecS16CmpFlgLEVWZ, int16_t, int64_t, Le)
CMP_WIDE_REF(VecS32CmpFlgLEVWZ, int32_t, int64_t, Le)
CMP_WIDE_REF(VecU8CmpFlgGTVWZ, uint8_t, uint64_t, Gt)
CMP_WIDE_REF(VecU16CmpFlgGTVWZ, uint16_t, uint64_t, Gt)
CMP_WIDE_REF(VecU32CmpFlgGTVWZ, uint32_t, uint64_t, Gt)
CMP_WIDE_REF(VecU8CmpFlgGEVWZ, uint8_t, uint64_t, Ge)
CMP_WIDE_REF(VecU16CmpFlgGEVWZ, uint16_t, uint64_t, Ge)
CMP_WIDE_REF(VecU32CmpFlgGEVWZ, uint32_t, uint64_t, Ge)
CMP_WIDE_REF(VecU8CmpFlgLTVWZ, uint8_t, uint64_t, Lt)
CMP_WIDE_REF(VecU16CmpFlgLTVWZ, uint16_t, uint64_t, Lt)
CMP_WIDE_REF(VecU32CmpFlgLTVWZ, uint32_t, uint64_t, Lt)
CMP_WIDE_REF(VecU8CmpFlgLEVWZ, uint8_t, uint64_t, Le)
CMP_WIDE_REF(VecU16CmpFlgLEVWZ, uint16_t, uint64_t, Le)
CMP_WIDE_REF(VecU32CmpFlgLEVWZ, uint32_t, uint64_t, Le)
#undef CMP_WIDE_REF
