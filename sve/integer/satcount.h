// Kernels, opcode handlers and reference operations of the saturating
// arithmetic, element count and increment family: sqadd, uqadd, sqsub, uqsub,
// inc*, dec*, sqinc*, uqinc*, sqdec*, uqdec*, incp, decp and their saturating
// forms, cnt[bhwd], cntp, rdvl, addvl, addpl.
#pragma once

#include <cstdint>

#include "sve/core/cpu_state.h"
#include "sve/core/reference.h"

// Element counts of the 32 predicate-constraint patterns at 512 bits, by
// element size (.b, .h, .s, .d). The inc and dec kernels read their row.
extern const uint8_t sve_pattern_count[4][32];

extern "C" {
// Scalar with pattern: (rdn, pattern, multiplier), the multiplier already 1..16.
aarch64_decode_rc sve_incb_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_inch_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_incw_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_incd_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_decb_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_dech_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_decw_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_decd_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
// Vector with pattern: (zdn, pattern, multiplier).
aarch64_decode_rc sve_inch_zii(cpu_state*, aarch64_z_reg zdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_incw_zii(cpu_state*, aarch64_z_reg zdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_incd_zii(cpu_state*, aarch64_z_reg zdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_dech_zii(cpu_state*, aarch64_z_reg zdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_decw_zii(cpu_state*, aarch64_z_reg zdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_decd_zii(cpu_state*, aarch64_z_reg zdn, unsigned pattern, unsigned multiplier);
// The full element count times the multiplier; the pattern is not looked at.
// No handler calls these: cnt[bhwd] take the reference route.
aarch64_decode_rc sve_cntb_rii(cpu_state*, aarch64_i_reg rd, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_cnth_rii(cpu_state*, aarch64_i_reg rd, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_cntw_rii(cpu_state*, aarch64_i_reg rd, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_cntd_rii(cpu_state*, aarch64_i_reg rd, unsigned pattern, unsigned multiplier);
// Unsigned saturating decrement with pattern. The register's dst_size picks
// the width: 3 is the X form, anything else the W form. uqdecw and uqdecd
// have no caller among the handlers.
aarch64_decode_rc sve_uqdecb_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_uqdecw_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
aarch64_decode_rc sve_uqdecd_rii(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier);
// incp: the element size is in pg's qualifier. cntp: in pn's qualifier.
aarch64_decode_rc sve_incp_rp(cpu_state*, aarch64_i_reg rdn, aarch64_p_reg pg);
aarch64_decode_rc sve_cntp_rpp(cpu_state*, aarch64_i_reg rd, aarch64_p_reg pg, aarch64_p_reg pn);
// rdvl: x[d] = imm * 64. addvl, addpl: x[d] = x[n] + imm * 64 or * 8, 31 is SP.
aarch64_decode_rc sve_rdvl_ri(cpu_state*, aarch64_i_reg rd, int imm);
aarch64_decode_rc sve_addvl_rri(cpu_state*, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn, int imm);
aarch64_decode_rc sve_addpl_rri(cpu_state*, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn, int imm);
}

// Unsigned saturating decrement of a general register of T's width by the
// count of a pattern at element size esize (0..3) times the multiplier.
template <typename T>
aarch64_decode_rc sve_uqdec(cpu_state*, aarch64_i_reg rdn, unsigned pattern, unsigned multiplier, unsigned esize);

// Handlers and reference operations of every form. Scalars come and go as
// 64-bit values; the pattern and the multiplier field arrive raw.
#define R_CNT(name, N)                            \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" uint64_t name(unsigned pattern, unsigned field, CpuContext* c);
#define K_RII(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" uint64_t name(uint64_t xdn, unsigned pattern, unsigned field, CpuContext* c);
#define R_QSI(name, N, R, op) K_RII(name, -, N, op)
#define K_QSI(name, kernel, N, R, op) K_RII(name, kernel, N, op)
#define K_ZII(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zdn, unsigned pattern, unsigned field, CpuContext* c);
#define R_QVI(name, N, op) K_ZII(name, -, N, op)
#define K_SP(name, kernel, N, op)                 \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" uint64_t name(uint64_t xdn, PredV pm, CpuContext* c);
#define R_SP(name, N, op) K_SP(name, -, N, op)
#define R_QSP(name, N, R, op) K_SP(name, -, N, op)
#define R_PV(name, N, op)                         \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zdn, PredV pm, CpuContext* c);
#define K_CNTP(name, kernel, N)                   \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" uint64_t name(PredV pg, PredV pn, CpuContext* c);
#define R_QVIX(name, N, op)                       \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zdn, uint64_t imm, CpuContext* c);
#define R_QVVX(name, N, op)                       \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c);
#define K_VLX(name, kernel)                       \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" uint64_t name(int64_t imm, CpuContext* c);
#define K_ADDVL(name, kernel, scale)              \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" uint64_t name(uint64_t xn, int64_t imm, CpuContext* c);
#include "sve/integer/satcount_forms.h"
#undef R_CNT
#undef K_RII
#undef R_QSI
#undef K_QSI
#undef K_ZII
#undef R_QVI
#undef K_SP
#undef R_SP
#undef R_QSP
#undef R_PV
#undef K_CNTP
#undef R_QVIX
#undef R_QVVX
#undef K_VLX
#undef K_ADDVL
