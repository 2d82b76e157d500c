// Permutes and moves: the opcode handlers. Each cuts its word into fields and
// either calls a kernel (after storing the word) or marshals values through
// the reference frame into the operation of its own name.
#include "sve/core/handler_util.h"
#include "sve/integer/perm_ops.h"

namespace {

// In the destructive forms (EXT, SPLICE, CLASTA/CLASTB, INSR) the second
// source sits at 9..5, where the other forms keep Zn or Rn.
inline uint32_t f_src2(uint32_t w) { return bits_of(w, 9, 5); }
// Governing predicate of the CPY immediate forms.
inline uint32_t f_pg_cpy(uint32_t w) { return bits_of(w, 19, 16); }
// Low 64 bits of a SIMD and FP scalar register.
inline uint64_t vlow(const RefFrame& f, unsigned n) { return vget<uint64_t>(f.zv(n), 0); }
inline aarch64_decode_rc done(RefFrame& f) { return static_cast<aarch64_decode_rc>(f.finish()); }

}  // namespace

// ---- Kernel route ------------------------------------------------------------

#define SVE_H_ZZZ(name, kernel, es)                                                \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                             \
        set_instruction(s, w);                                                     \
        return kernel(s, zreg(f_zd(w), es), zreg(f_zn(w), es), zreg(f_zm(w), es)); \
    }
// Predicates that hold data: the qualifier is the element size.
#define SVE_H_PPP(name, kernel, es)                                                \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                             \
        set_instruction(s, w);                                                     \
        return kernel(s, preg(f_pd(w), es), preg(f_pn(w), es), preg(f_pm(w), es)); \
    }
#define SVE_H_ZZ(name, kernel, es_d, es_n)                          \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {              \
        set_instruction(s, w);                                      \
        return kernel(s, zreg(f_zd(w), es_d), zreg(f_zn(w), es_n)); \
    }
#define SVE_H_PP(name, kernel, es_d, es_n)                          \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {              \
        set_instruction(s, w);                                      \
        return kernel(s, preg(f_pd(w), es_d), preg(f_pn(w), es_n)); \
    }

SVE_H_ZZZ(VecU8Zip1VV, sve_zip1_zzz, ES_B)
SVE_H_ZZZ(VecU16Zip1VV, sve_zip1_zzz, ES_H)
SVE_H_ZZZ(VecU32Zip1VV, sve_zip1_zzz, ES_S)
SVE_H_ZZZ(VecU64Zip1VV, sve_zip1_zzz, ES_D)
SVE_H_ZZZ(VecU8Zip2VV, sve_zip2_zzz, ES_B)
SVE_H_ZZZ(VecU16Zip2VV, sve_zip2_zzz, ES_H)
SVE_H_ZZZ(VecU32Zip2VV, sve_zip2_zzz, ES_S)
SVE_H_ZZZ(VecU64Zip2VV, sve_zip2_zzz, ES_D)
SVE_H_ZZZ(VecU8Uzp1VV, sve_uzp1_zzz, ES_B)
SVE_H_ZZZ(VecU16Uzp1VV, sve_uzp1_zzz, ES_H)
SVE_H_ZZZ(VecU32Uzp1VV, sve_uzp1_zzz, ES_S)
SVE_H_ZZZ(VecU64Uzp1VV, sve_uzp1_zzz, ES_D)
SVE_H_ZZZ(VecU8Uzp2VV, sve_uzp2_zzz, ES_B)
SVE_H_ZZZ(VecU16Uzp2VV, sve_uzp2_zzz, ES_H)
SVE_H_ZZZ(VecU32Uzp2VV, sve_uzp2_zzz, ES_S)
SVE_H_ZZZ(VecU64Uzp2VV, sve_uzp2_zzz, ES_D)
SVE_H_ZZZ(VecU8Trn2VV, sve_trn2_zzz, ES_B)
SVE_H_ZZZ(VecU16Trn2VV, sve_trn2_zzz, ES_H)
SVE_H_ZZZ(VecU32Trn2VV, sve_trn2_zzz, ES_S)
SVE_H_ZZZ(VecU64Trn2VV, sve_trn2_zzz, ES_D)
SVE_H_ZZZ(VecU8TblVV, sve_tbl_zzz, ES_B)
SVE_H_ZZZ(VecU16TblVV, sve_tbl_zzz, ES_H)
SVE_H_ZZZ(VecU32TblVV, sve_tbl_zzz, ES_S)
SVE_H_ZZZ(VecU64TblVV, sve_tbl_zzz, ES_D)

SVE_H_PPP(VecP8Zip1PP, sve_zip1_ppp, ES_B)
SVE_H_PPP(VecP16Zip1PP, sve_zip1_ppp, ES_H)
SVE_H_PPP(VecP32Zip1PP, sve_zip1_ppp, ES_S)
SVE_H_PPP(VecP64Zip1PP, sve_zip1_ppp, ES_D)
SVE_H_PPP(VecP8Zip2PP, sve_zip2_ppp, ES_B)
SVE_H_PPP(VecP16Zip2PP, sve_zip2_ppp, ES_H)
SVE_H_PPP(VecP32Zip2PP, sve_zip2_ppp, ES_S)
SVE_H_PPP(VecP64Zip2PP, sve_zip2_ppp, ES_D)
SVE_H_PPP(VecP8Uzp1PP, sve_uzp1_ppp, ES_B)
SVE_H_PPP(VecP16Uzp1PP, sve_uzp1_ppp, ES_H)
SVE_H_PPP(VecP32Uzp1PP, sve_uzp1_ppp, ES_S)
SVE_H_PPP(VecP64Uzp1PP, sve_uzp1_ppp, ES_D)

SVE_H_ZZ(VecU8ReverseV, sve_rev_zz, ES_B, ES_B)
SVE_H_ZZ(VecU16ReverseV, sve_rev_zz, ES_H, ES_H)
SVE_H_ZZ(VecU32ReverseV, sve_rev_zz, ES_S, ES_S)
SVE_H_ZZ(VecU64ReverseV, sve_rev_zz, ES_D, ES_D)
SVE_H_PP(VecP8ReverseP, sve_rev_pp, ES_B, ES_B)
SVE_H_PP(VecP16ReverseP, sve_rev_pp, ES_H, ES_H)
SVE_H_PP(VecP32ReverseP, sve_rev_pp, ES_S, ES_S)
SVE_H_PP(VecP64ReverseP, sve_rev_pp, ES_D, ES_D)

SVE_H_ZZ(VecS64UnpackHiV, sve_sunpkhi_s2d_zz, ES_D, ES_S)
SVE_H_ZZ(VecS64UnpackLoV, sve_sunpklo_s2d_zz, ES_D, ES_S)
SVE_H_ZZ(VecU16UnpackHiV, sve_uunpkhi_b2h_zz, ES_H, ES_B)
SVE_H_ZZ(VecU32UnpackHiV, sve_uunpkhi_h2s_zz, ES_S, ES_H)
SVE_H_ZZ(VecU64UnpackHiV, sve_uunpkhi_s2d_zz, ES_D, ES_S)
SVE_H_ZZ(VecU16UnpackLoV, sve_uunpklo_b2h_zz, ES_H, ES_B)
SVE_H_ZZ(VecU32UnpackLoV, sve_uunpklo_h2s_zz, ES_S, ES_H)
SVE_H_ZZ(VecU64UnpackLoV, sve_uunpklo_s2d_zz, ES_D, ES_S)
SVE_H_PP(VecPUnpackHiP, sve_punpkhi_pp, ES_H, ES_B)
SVE_H_PP(VecPUnpackLoP, sve_punpklo_pp, ES_H, ES_B)

// EXT: the byte offset is imm8h (20..16) above imm8l (12..10); Zm at 9..5.
aarch64_decode_rc VecU8SlideVI(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    unsigned imm = bits_of(w, 20, 16) << 3 | bits_of(w, 12, 10);
    return sve_ext_zzi(s, zreg_dst(f_zd(w), ES_B), zreg(f_src2(w), ES_B), imm);
}

// CLASTB and LASTB to a general register, LASTB to a SIMD and FP scalar. The
// governing predicate carries no /m or /z: a plain operand.
#define SVE_H_CLASTB_R(name, es)                                                                          \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                    \
        set_instruction(s, w);                                                                            \
        return sve_clastb_rpz(s, ireg_dst(f_zd(w), es), preg(f_pg3(w), QUAL_PLAIN), zreg(f_src2(w), es)); \
    }
#define SVE_H_LASTB_R(name, es)                                                                    \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                             \
        set_instruction(s, w);                                                                     \
        return sve_lastb_rpz(s, ireg(f_zd(w), es), preg(f_pg3(w), QUAL_PLAIN), zreg(f_zn(w), es)); \
    }
#define SVE_H_LASTB_V(name, es)                                                          \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                   \
        set_instruction(s, w);                                                           \
        return sve_lastb_vpz(s, f_zd(w), preg(f_pg3(w), QUAL_PLAIN), zreg(f_zn(w), es)); \
    }
SVE_H_CLASTB_R(VecU8CondXBSV, ES_B)
SVE_H_CLASTB_R(VecU16CondXBSV, ES_H)
SVE_H_CLASTB_R(VecU32CondXBSV, ES_S)
SVE_H_CLASTB_R(VecU64CondXBSV, ES_D)
SVE_H_LASTB_R(VecU8LastBV, ES_B)
SVE_H_LASTB_R(VecU16LastBV, ES_H)
SVE_H_LASTB_R(VecU32LastBV, ES_S)
SVE_H_LASTB_R(VecU64LastBV, ES_D)
SVE_H_LASTB_V(VecB8LastBV, ES_B)
SVE_H_LASTB_V(VecH16LastBV, ES_H)
SVE_H_LASTB_V(VecF32LastBV, ES_S)
SVE_H_LASTB_V(VecD64LastBV, ES_D)

// DUP and CPY of an immediate: imm8 at 12..5 sign-extended, shifted left by 8
// when bit 13 is set. CPY's Pg is at 19..16, bit 14 telling /m from /z.
#define SVE_H_DUP_I(name, es)                                  \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {         \
        set_instruction(s, w);                                 \
        return sve_dup_zi(s, zreg(f_zd(w), es), imm_dup_s(w)); \
    }
#define SVE_H_CPY_I(name, es, qual)                                                      \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                   \
        set_instruction(s, w);                                                           \
        return sve_cpy_zpi(s, zreg(f_zd(w), es), preg(f_pg_cpy(w), qual), imm_dup_s(w)); \
    }
SVE_H_DUP_I(VecS8DupI, ES_B)
SVE_H_DUP_I(VecS16DupI, ES_H)
SVE_H_DUP_I(VecS32DupI, ES_S)
SVE_H_DUP_I(VecS64DupI, ES_D)
SVE_H_CPY_I(VecS8DupIM, ES_B, QUAL_MERGE)
SVE_H_CPY_I(VecS16DupIM, ES_H, QUAL_MERGE)
SVE_H_CPY_I(VecS32DupIM, ES_S, QUAL_MERGE)
SVE_H_CPY_I(VecS64DupIM, ES_D, QUAL_MERGE)
SVE_H_CPY_I(VecS8DupIZ, ES_B, QUAL_ZERO)
SVE_H_CPY_I(VecS16DupIZ, ES_H, QUAL_ZERO)
SVE_H_CPY_I(VecS32DupIZ, ES_S, QUAL_ZERO)
SVE_H_CPY_I(VecS64DupIZ, ES_D, QUAL_ZERO)

// DUP and CPY of a general register (31 is SP) or of a SIMD and FP scalar.
#define SVE_H_DUP_R(name, es)                                         \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                \
        set_instruction(s, w);                                        \
        return sve_dup_zr(s, zreg(f_zd(w), es), rspreg(f_zn(w), es)); \
    }
#define SVE_H_CPY_R(name, es)                                                                      \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                             \
        set_instruction(s, w);                                                                     \
        return sve_cpy_zpr(s, zreg(f_zd(w), es), preg(f_pg3(w), QUAL_MERGE), rspreg(f_zn(w), es)); \
    }
#define SVE_H_CPY_V(name, es)                                                          \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                 \
        set_instruction(s, w);                                                         \
        return sve_cpy_zpv(s, zreg(f_zd(w), es), preg(f_pg3(w), QUAL_MERGE), f_zn(w)); \
    }
SVE_H_DUP_R(VecU8DupS, ES_B)
SVE_H_DUP_R(VecU16DupS, ES_H)
SVE_H_DUP_R(VecU32DupS, ES_S)
SVE_H_DUP_R(VecU64DupS, ES_D)
SVE_H_CPY_R(VecU8DupSM, ES_B)
SVE_H_CPY_R(VecU16DupSM, ES_H)
SVE_H_CPY_R(VecU32DupSM, ES_S)
SVE_H_CPY_R(VecU64DupSM, ES_D)
SVE_H_CPY_V(VecB8DupSM, ES_B)
SVE_H_CPY_V(VecH16DupSM, ES_H)
SVE_H_CPY_V(VecF32DupSM, ES_S)
SVE_H_CPY_V(VecD64DupSM, ES_D)

// DUP (indexed): the index is imm2:tsz less the size-marking low bits of tsz.
#define SVE_H_DUP_X(name, es)                                                              \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                     \
        set_instruction(s, w);                                                             \
        return sve_dup_zzi(s, zreg(f_zd(w), es), zreg(f_zn(w), es), imm_dup_index(w, es)); \
    }
SVE_H_DUP_X(VecU8ExtDupVI, ES_B)
SVE_H_DUP_X(VecU16ExtDupVI, ES_H)
SVE_H_DUP_X(VecU32ExtDupVI, ES_S)
SVE_H_DUP_X(VecU64ExtDupVI, ES_D)
SVE_H_DUP_X(VecU128ExtDupVI, ES_Q)

// DUPM: the logical immediate at 17..5. The reserved encodings define no mask,
// and the word is refused.
aarch64_decode_rc VecS64DupMaskI(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    bool ok;
    uint64_t mask = decode_logical_imm(bits_of(w, 17, 5), &ok);
    if (!ok) return DECODE_UNKNOWN;
    return sve_dupm_zi(s, zreg(f_zd(w), ES_D), aarch64_sve_logical64_imm{mask});
}

// INDEX: start at 9..5 and step at 20..16, each an immediate sign-extended from
// five bits or a general register where 31 reads 0.
#define SVE_H_INDEX(name, kernel, es, start, step)        \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {    \
        set_instruction(s, w);                            \
        return kernel(s, zreg(f_zd(w), es), start, step); \
    }
#define SVE_IDX_IMM_N sbits_of(w, 9, 5)
#define SVE_IDX_IMM_M sbits_of(w, 20, 16)
#define SVE_IDX_REG_N(es) ireg(f_zn(w), es)
#define SVE_IDX_REG_M(es) ireg(f_zm(w), es)
SVE_H_INDEX(VecS8IndexII, sve_index_zii, ES_B, SVE_IDX_IMM_N, SVE_IDX_IMM_M)
SVE_H_INDEX(VecS16IndexII, sve_index_zii, ES_H, SVE_IDX_IMM_N, SVE_IDX_IMM_M)
SVE_H_INDEX(VecS32IndexII, sve_index_zii, ES_S, SVE_IDX_IMM_N, SVE_IDX_IMM_M)
SVE_H_INDEX(VecS64IndexII, sve_index_zii, ES_D, SVE_IDX_IMM_N, SVE_IDX_IMM_M)
SVE_H_INDEX(VecS8IndexIS, sve_index_zir, ES_B, SVE_IDX_IMM_N, SVE_IDX_REG_M(ES_B))
SVE_H_INDEX(VecS16IndexIS, sve_index_zir, ES_H, SVE_IDX_IMM_N, SVE_IDX_REG_M(ES_H))
SVE_H_INDEX(VecS32IndexIS, sve_index_zir, ES_S, SVE_IDX_IMM_N, SVE_IDX_REG_M(ES_S))
SVE_H_INDEX(VecS64IndexIS, sve_index_zir, ES_D, SVE_IDX_IMM_N, SVE_IDX_REG_M(ES_D))
SVE_H_INDEX(VecS8IndexSI, sve_index_zri, ES_B, SVE_IDX_REG_N(ES_B), SVE_IDX_IMM_M)
SVE_H_INDEX(VecS16IndexSI, sve_index_zri, ES_H, SVE_IDX_REG_N(ES_H), SVE_IDX_IMM_M)
SVE_H_INDEX(VecS32IndexSI, sve_index_zri, ES_S, SVE_IDX_REG_N(ES_S), SVE_IDX_IMM_M)
SVE_H_INDEX(VecS64IndexSI, sve_index_zri, ES_D, SVE_IDX_REG_N(ES_D), SVE_IDX_IMM_M)
SVE_H_INDEX(VecS8IndexSS, sve_index_zrr, ES_B, SVE_IDX_REG_N(ES_B), SVE_IDX_REG_M(ES_B))
SVE_H_INDEX(VecS16IndexSS, sve_index_zrr, ES_H, SVE_IDX_REG_N(ES_H), SVE_IDX_REG_M(ES_H))
SVE_H_INDEX(VecS32IndexSS, sve_index_zrr, ES_S, SVE_IDX_REG_N(ES_S), SVE_IDX_REG_M(ES_S))
SVE_H_INDEX(VecS64IndexSS, sve_index_zrr, ES_D, SVE_IDX_REG_N(ES_D), SVE_IDX_REG_M(ES_D))

// ---- Reference route -----------------------------------------------------------

#define SVE_R_PPP(name)                                                  \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                   \
        RefFrame f(s);                                                   \
        f.put_p(f_pd(w), name(f.pred(f_pn(w)), f.pred(f_pm(w)), f.c())); \
        return done(f);                                                  \
    }
SVE_R_PPP(VecP8Uzp2PP)
SVE_R_PPP(VecP16Uzp2PP)
SVE_R_PPP(VecP32Uzp2PP)
SVE_R_PPP(VecP64Uzp2PP)
SVE_R_PPP(VecP8Trn1PP)
SVE_R_PPP(VecP16Trn1PP)
SVE_R_PPP(VecP32Trn1PP)
SVE_R_PPP(VecP64Trn1PP)
SVE_R_PPP(VecP8Trn2PP)
SVE_R_PPP(VecP16Trn2PP)
SVE_R_PPP(VecP32Trn2PP)
SVE_R_PPP(VecP64Trn2PP)

#define SVE_R_ZZZ(name)                                              \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {               \
        RefFrame f(s);                                               \
        f.put_z(f_zd(w), name(f.zv(f_zn(w)), f.zv(f_zm(w)), f.c())); \
        return done(f);                                              \
    }
SVE_R_ZZZ(VecU8Trn1VV)
SVE_R_ZZZ(VecU16Trn1VV)
SVE_R_ZZZ(VecU32Trn1VV)
SVE_R_ZZZ(VecU64Trn1VV)

// SPLICE, CLASTA/CLASTB of vectors: Zdn, Pg, Zdn, Zm with Zm at 9..5.
#define SVE_R_ZPZZ(name)                                                                 \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                   \
        RefFrame f(s);                                                                   \
        f.put_z(f_zd(w), name(f.pred(f_pg3(w)), f.zv(f_zd(w)), f.zv(f_src2(w)), f.c())); \
        return done(f);                                                                  \
    }
SVE_R_ZPZZ(VecU8SpliceVV)
SVE_R_ZPZZ(VecU16SpliceVV)
SVE_R_ZPZZ(VecU32SpliceVV)
SVE_R_ZPZZ(VecU64SpliceVV)
SVE_R_ZPZZ(VecU8VCondXAVV)
SVE_R_ZPZZ(VecU16VCondXAVV)
SVE_R_ZPZZ(VecU32VCondXAVV)
SVE_R_ZPZZ(VecU64VCondXAVV)
SVE_R_ZPZZ(VecU8VCondXBVV)
SVE_R_ZPZZ(VecU16VCondXBVV)
SVE_R_ZPZZ(VecU32VCondXBVV)
SVE_R_ZPZZ(VecU64VCondXBVV)

#define SVE_R_ZPZ(name)                                                 \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                  \
        RefFrame f(s);                                                  \
        f.put_z(f_zd(w), name(f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c())); \
        return done(f);                                                 \
    }
SVE_R_ZPZ(VecU32CompressVV)
SVE_R_ZPZ(VecU64CompressVV)

#define SVE_R_ZZ(name)                                 \
    aarch64_decode_rc name(cpu_state* s, unsigned w) { \
        RefFrame f(s);                                 \
        f.put_z(f_zd(w), name(f.zv(f_zn(w)), f.c()));  \
        return done(f);                                \
    }
SVE_R_ZZ(VecS16UnpackHiV)
SVE_R_ZZ(VecS16UnpackLoV)
SVE_R_ZZ(VecS32UnpackHiV)
SVE_R_ZZ(VecS32UnpackLoV)

// CLASTA to a general register (31 reads 0, a result for 31 is dropped), and
// CLASTA/CLASTB to a SIMD and FP scalar (the element at the low end, the rest
// of the register cleared).
#define SVE_R_CLAST_R(name)                                                              \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                   \
        RefFrame f(s);                                                                   \
        f.put_x(f_zd(w), name(f.pred(f_pg3(w)), f.xr(f_zd(w)), f.zv(f_src2(w)), f.c())); \
        return done(f);                                                                  \
    }
#define SVE_R_CLAST_V(name, bytes)                                                                 \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                             \
        RefFrame f(s);                                                                             \
        f.put_v(f_zd(w), name(f.pred(f_pg3(w)), vlow(f, f_zd(w)), f.zv(f_src2(w)), f.c()), bytes); \
        return done(f);                                                                            \
    }
SVE_R_CLAST_R(VecU8CondXASV)
SVE_R_CLAST_R(VecU16CondXASV)
SVE_R_CLAST_R(VecU32CondXASV)
SVE_R_CLAST_R(VecU64CondXASV)
SVE_R_CLAST_V(VecB8CondXASV, 1)
SVE_R_CLAST_V(VecH16CondXASV, 2)
SVE_R_CLAST_V(VecF32CondXASV, 4)
SVE_R_CLAST_V(VecD64CondXASV, 8)
SVE_R_CLAST_V(VecB8CondXBSV, 1)
SVE_R_CLAST_V(VecH16CondXBSV, 2)
SVE_R_CLAST_V(VecF32CondXBSV, 4)
SVE_R_CLAST_V(VecD64CondXBSV, 8)

#define SVE_R_LAST_R(name)                                              \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                  \
        RefFrame f(s);                                                  \
        f.put_x(f_zd(w), name(f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c())); \
        return done(f);                                                 \
    }
#define SVE_R_LAST_V(name, bytes)                                              \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                         \
        RefFrame f(s);                                                         \
        f.put_v(f_zd(w), name(f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c()), bytes); \
        return done(f);                                                        \
    }
SVE_R_LAST_R(VecU8LastAV)
SVE_R_LAST_R(VecU16LastAV)
SVE_R_LAST_R(VecU32LastAV)
SVE_R_LAST_R(VecU64LastAV)
SVE_R_LAST_V(VecB8LastAV, 1)
SVE_R_LAST_V(VecH16LastAV, 2)
SVE_R_LAST_V(VecF32LastAV, 4)
SVE_R_LAST_V(VecD64LastAV, 8)

// INSR: Zdn, then Rm (31 reads 0) or Vm at 9..5.
#define SVE_R_INSR_R(name)                                             \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                 \
        RefFrame f(s);                                                 \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.xr(f_src2(w)), f.c())); \
        return done(f);                                                \
    }
#define SVE_R_INSR_V(name)                                                \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                    \
        RefFrame f(s);                                                    \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), vlow(f, f_src2(w)), f.c())); \
        return done(f);                                                   \
    }
SVE_R_INSR_R(VecU8InsertS)
SVE_R_INSR_R(VecU16InsertS)
SVE_R_INSR_R(VecU32InsertS)
SVE_R_INSR_R(VecU64InsertS)
SVE_R_INSR_V(VecB8InsertS)
SVE_R_INSR_V(VecH16InsertS)
SVE_R_INSR_V(VecF32InsertS)
SVE_R_INSR_V(VecD64InsertS)
