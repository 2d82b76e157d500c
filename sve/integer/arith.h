// Kernels, opcode handlers and reference operations of the integer
// arithmetic and logic family. A handler and its reference operation share a
// name: the handler takes (cpu_state*, word) and has C++ linkage, the
// operation takes values and is exported under the plain name.
#pragma once

#include <cstdint>

#include "sve/core/cpu_state.h"
#include "sve/core/reference.h"

extern "C" {
// Binary, predicated, merging: (zdn, pg, zm).
aarch64_decode_rc sve_add_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_sub_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_mul_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_sdiv_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_sdivr_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_udiv_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_udivr_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_smin_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_smax_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_umin_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_umax_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_and_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_orr_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_eor_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_bic_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
// Unpredicated: (zd, zn, zm).
aarch64_decode_rc sve_add_zzz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_sub_zzz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_and_zzz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_orr_zzz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_eor_zzz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_bic_zzz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
// Immediate: (zdn, imm). add/sub take the shifted unsigned field, mul the
// sign-extended one; each kernel narrows it to the element.
aarch64_decode_rc sve_add_zi(cpu_state*, aarch64_z_reg zdn, unsigned imm);
aarch64_decode_rc sve_sub_zi(cpu_state*, aarch64_z_reg zdn, unsigned imm);
aarch64_decode_rc sve_mul_zi(cpu_state*, aarch64_z_reg zdn, int imm);
aarch64_decode_rc sve_and_zi(cpu_state*, aarch64_z_reg zdn, aarch64_sve_logical64_imm imm);
aarch64_decode_rc sve_orr_zi(cpu_state*, aarch64_z_reg zdn, aarch64_sve_logical64_imm imm);
aarch64_decode_rc sve_eor_zi(cpu_state*, aarch64_z_reg zdn, aarch64_sve_logical64_imm imm);
// Unary, predicated, merging into the old zd: (zd, pg, zn).
aarch64_decode_rc sve_neg_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_sxtb_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_sxth_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_sxtw_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_uxth_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_uxtw_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
// Multiply-accumulate: mad/msb (zdn, pg, zm, za), mla/mls (zda, pg, zn, zm).
aarch64_decode_rc sve_mad_zpzz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm, aarch64_z_reg za);
aarch64_decode_rc sve_msb_zpzz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm, aarch64_z_reg za);
aarch64_decode_rc sve_mla_zpzz(cpu_state*, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn, aarch64_z_reg zm);
aarch64_decode_rc sve_mls_zpzz(cpu_state*, aarch64_z_reg zda, aarch64_p_reg pg, aarch64_z_reg zn, aarch64_z_reg zm);
// movprfx: predicated (qualifier 5 zeroing, else merging) and unpredicated; sel.
aarch64_decode_rc sve_movprfx_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_movprfx_zz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn);
aarch64_decode_rc sve_sel_zpzz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn, aarch64_z_reg zm);
}

// Handlers and reference operations of every form.
#define K_ZPZ(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, CpuContext* c);
#define R_ZPZ(name, N, op) K_ZPZ(name, -, N, op)
#define K_ZZZ(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c);
#define K_ZI(name, kernel, N, op, immf)           \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zdn, uint64_t imm, CpuContext* c);
#define R_ZI(name, N, op, immf) K_ZI(name, -, N, op, immf)
#define K_ZLI(name, kernel, op) K_ZI(name, kernel, 64, op, -)
#define K_UN(name, kernel, N, op)                 \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zd, PredV pg, VecVal zn, CpuContext* c);
#define R_UN(name, N, op) K_UN(name, -, N, op)
#define K_MAD(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, VecVal za, CpuContext* c);
#define K_MLA(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zda, PredV pg, VecVal zn, VecVal zm, CpuContext* c);
#define K_PRFXM(name, kernel, N) K_UN(name, kernel, N, -)
#define K_PRFXZ(name, kernel, N)                  \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(PredV pg, VecVal zn, CpuContext* c);
#define K_MOV(name, kernel)                       \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zn, CpuContext* c);
#define K_SEL(name, kernel, N)                    \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
#include "sve/integer/arith_forms.h"
#undef K_ZPZ
#undef R_ZPZ
#undef K_ZZZ
#undef K_ZI
#undef R_ZI
#undef K_ZLI
#undef K_UN
#undef R_UN
#undef K_MAD
#undef K_MLA
#undef K_PRFXM
#undef K_PRFXZ
#undef K_MOV
#undef K_SEL

// The worked LSR (shift family): LSR Zd.H, Zn.H, #shift, unpredicated.
aarch64_decode_rc VecU16ShrVIX(cpu_state*, unsigned);
extern "C" VecVal VecU16ShrVIX(VecVal zn, uint64_t shift, CpuContext* c);
