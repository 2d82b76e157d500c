// Kernels and handlers of the memory instructions, and the element loops that
// the contiguous, structure and replicate kernels share.
#pragma once

#include <cstdint>

#include "sve/core/cpu_state.h"
#include "sve/core/handler_util.h"

// The two operand shapes of the contiguous and structure kernels.
typedef aarch64_decode_rc (*sve_zpri_kernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, int);
typedef aarch64_decode_rc (*sve_zprr_kernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_i_reg);

// An element of memory at any address: application data need not be aligned,
// and reading it through an M* would promise an alignment the program never
// gave. Both hosts load and store unaligned in one instruction.
template <typename M>
struct __attribute__((packed, may_alias)) unaligned_cell {
    M v;
};

// One access of exactly the element's memory width at an application address.
// volatile keeps the compiler from splitting, widening or merging it.
template <typename M>
inline M mem_load(uint64_t address) {
    return reinterpret_cast<const volatile unaligned_cell<M>*>(address)->v;
}
template <typename M>
inline void mem_store(uint64_t address, M value) {
    reinterpret_cast<volatile unaligned_cell<M>*>(address)->v = value;
}

// The handlers of both shapes cut the same fields: Zt 4..0, Pg 12..10, Xn
// 9..5 (31 is SP), and either a signed 4-bit immediate at 19..16 or Xm at
// 20..16 (31 is the zero register). `ES` is the register's element size and
// `PQ` the governing predicate's qualifier: zeroing for loads, plain for
// stores.
template <sve_zpri_kernel K, uint32_t ES, uint32_t PQ>
inline aarch64_decode_rc zpri_handler(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return K(s, zreg(f_zd(w), ES), preg(f_pg3(w), PQ), rspreg(f_zn(w), ES_D), sbits_of(w, 19, 16));
}
template <sve_zprr_kernel K, uint32_t ES, uint32_t PQ>
inline aarch64_decode_rc zprr_handler(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return K(s, zreg(f_zd(w), ES), preg(f_pg3(w), PQ), rspreg(f_zn(w), ES_D), ireg(f_zm(w), ES_D));
}

#define SVE_ZPRI_KERNEL(name) \
    extern "C" aarch64_decode_rc name(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, int);
#define SVE_ZPRR_KERNEL(name) \
    extern "C" aarch64_decode_rc name(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_i_reg);
#define SVE_HANDLER(name) aarch64_decode_rc name(cpu_state*, unsigned);

// Contiguous LD1, ST1, LDNT1, STNT1.
SVE_ZPRI_KERNEL(sve_ld1b_zpri)
SVE_ZPRI_KERNEL(sve_ld1b_h_zpri)
SVE_ZPRI_KERNEL(sve_ld1b_s_zpri)
SVE_ZPRI_KERNEL(sve_ld1b_d_zpri)
SVE_ZPRI_KERNEL(sve_ld1h_zpri)
SVE_ZPRI_KERNEL(sve_ld1h_s_zpri)
SVE_ZPRI_KERNEL(sve_ld1h_d_zpri)
SVE_ZPRI_KERNEL(sve_ld1w_zpri)
SVE_ZPRI_KERNEL(sve_ld1w_d_zpri)
SVE_ZPRI_KERNEL(sve_ld1d_zpri)
SVE_ZPRI_KERNEL(sve_ld1sb_h_zpri)
SVE_ZPRI_KERNEL(sve_ld1sb_s_zpri)
SVE_ZPRI_KERNEL(sve_ld1sb_d_zpri)
SVE_ZPRI_KERNEL(sve_ld1sh_s_zpri)
SVE_ZPRI_KERNEL(sve_ld1sh_d_zpri)
SVE_ZPRI_KERNEL(sve_ld1sw_d_zpri)
SVE_ZPRI_KERNEL(sve_st1b_zpri)
SVE_ZPRI_KERNEL(sve_st1b_h_zpri)
SVE_ZPRI_KERNEL(sve_st1b_s_zpri)
SVE_ZPRI_KERNEL(sve_st1b_d_zpri)
SVE_ZPRI_KERNEL(sve_st1h_zpri)
SVE_ZPRI_KERNEL(sve_st1h_s_zpri)
SVE_ZPRI_KERNEL(sve_st1h_d_zpri)
SVE_ZPRI_KERNEL(sve_st1w_zpri)
SVE_ZPRI_KERNEL(sve_st1w_d_zpri)
SVE_ZPRI_KERNEL(sve_st1d_zpri)
SVE_ZPRI_KERNEL(sve_ldnt1b_zpri)
SVE_ZPRI_KERNEL(sve_ldnt1h_zpri)
SVE_ZPRI_KERNEL(sve_ldnt1w_zpri)
SVE_ZPRI_KERNEL(sve_ldnt1d_zpri)
SVE_ZPRI_KERNEL(sve_stnt1b_zpri)
SVE_ZPRI_KERNEL(sve_stnt1h_zpri)
SVE_ZPRI_KERNEL(sve_stnt1w_zpri)
SVE_ZPRI_KERNEL(sve_stnt1d_zpri)

SVE_ZPRR_KERNEL(sve_ld1b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1b_h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1b_s_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1b_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1h_s_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1h_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1w_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1sb_h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1sb_s_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1sb_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1sh_s_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1sh_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld1sw_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1b_h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1b_s_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1b_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1h_s_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1h_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1w_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st1d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldnt1b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldnt1h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldnt1w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldnt1d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_stnt1b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_stnt1h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_stnt1w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_stnt1d_scaled_zprr)

SVE_HANDLER(VecU8CLoad1SIZ)
SVE_HANDLER(VecU16CLoad1SIZ)
SVE_HANDLER(VecU32CLoad1SIZ)
SVE_HANDLER(VecU64CLoad1SIZ)
SVE_HANDLER(VecU16CLoad2SIZ)
SVE_HANDLER(VecU32CLoad2SIZ)
SVE_HANDLER(VecU64CLoad2SIZ)
SVE_HANDLER(VecU32CLoad4SIZ)
SVE_HANDLER(VecU64CLoad4SIZ)
SVE_HANDLER(VecU64CLoad8SIZ)
SVE_HANDLER(VecS16CLoad1SIZ)
SVE_HANDLER(VecS32CLoad1SIZ)
SVE_HANDLER(VecS64CLoad1SIZ)
SVE_HANDLER(VecS32CLoad2SIZ)
SVE_HANDLER(VecS64CLoad2SIZ)
SVE_HANDLER(VecS64CLoad4SIZ)
SVE_HANDLER(VecU8CStore1SIZ)
SVE_HANDLER(VecU16CStore1SIZ)
SVE_HANDLER(VecU32CStore1SIZ)
SVE_HANDLER(VecU64CStore1SIZ)
SVE_HANDLER(VecU16CStore2SIZ)
SVE_HANDLER(VecU32CStore2SIZ)
SVE_HANDLER(VecU64CStore2SIZ)
SVE_HANDLER(VecU32CStore4SIZ)
SVE_HANDLER(VecU64CStore4SIZ)
SVE_HANDLER(VecU64CStore8SIZ)
SVE_HANDLER(VecU8CLoadNT1SIZ)
SVE_HANDLER(VecU16CLoadNT2SIZ)
SVE_HANDLER(VecU32CLoadNT4SIZ)
SVE_HANDLER(VecU64CLoadNT8SIZ)
SVE_HANDLER(VecU8CStoreNT1SIZ)
SVE_HANDLER(VecU16CStoreNT2SIZ)
SVE_HANDLER(VecU32CStoreNT4SIZ)
SVE_HANDLER(VecU64CStoreNT8SIZ)

SVE_HANDLER(VecU8CLoad1LSSZ)
SVE_HANDLER(VecU16CLoad1LSSZ)
SVE_HANDLER(VecU32CLoad1LSSZ)
SVE_HANDLER(VecU64CLoad1LSSZ)
SVE_HANDLER(VecU16CLoad2LSSZ)
SVE_HANDLER(VecU32CLoad2LSSZ)
SVE_HANDLER(VecU64CLoad2LSSZ)
SVE_HANDLER(VecU32CLoad4LSSZ)
SVE_HANDLER(VecU64CLoad4LSSZ)
SVE_HANDLER(VecU64CLoad8LSSZ)
SVE_HANDLER(VecS16CLoad1LSSZ)
SVE_HANDLER(VecS32CLoad1LSSZ)
SVE_HANDLER(VecS64CLoad1LSSZ)
SVE_HANDLER(VecS32CLoad2LSSZ)
SVE_HANDLER(VecS64CLoad2LSSZ)
SVE_HANDLER(VecS64CLoad4LSSZ)
SVE_HANDLER(VecU8CStore1LSSZ)
SVE_HANDLER(VecU16CStore1LSSZ)
SVE_HANDLER(VecU32CStore1LSSZ)
SVE_HANDLER(VecU64CStore1LSSZ)
SVE_HANDLER(VecU16CStore2LSSZ)
SVE_HANDLER(VecU32CStore2LSSZ)
SVE_HANDLER(VecU64CStore2LSSZ)
SVE_HANDLER(VecU32CStore4LSSZ)
SVE_HANDLER(VecU64CStore4LSSZ)
SVE_HANDLER(VecU64CStore8LSSZ)
SVE_HANDLER(VecU8CLoadNT1LSSZ)
SVE_HANDLER(VecU16CLoadNT2LSSZ)
SVE_HANDLER(VecU32CLoadNT4LSSZ)
SVE_HANDLER(VecU64CLoadNT8LSSZ)
SVE_HANDLER(VecU8CStoreNT1LSSZ)
SVE_HANDLER(VecU16CStoreNT2LSSZ)
SVE_HANDLER(VecU32CStoreNT4LSSZ)
SVE_HANDLER(VecU64CStoreNT8LSSZ)

// Structure LD2 to LD4, ST2 to ST4.
SVE_ZPRI_KERNEL(sve_ld2b_zpri)
SVE_ZPRI_KERNEL(sve_ld2h_zpri)
SVE_ZPRI_KERNEL(sve_ld2w_zpri)
SVE_ZPRI_KERNEL(sve_ld2d_zpri)
SVE_ZPRI_KERNEL(sve_ld3b_zpri)
SVE_ZPRI_KERNEL(sve_ld3h_zpri)
SVE_ZPRI_KERNEL(sve_ld3w_zpri)
SVE_ZPRI_KERNEL(sve_ld3d_zpri)
SVE_ZPRI_KERNEL(sve_ld4b_zpri)
SVE_ZPRI_KERNEL(sve_ld4h_zpri)
SVE_ZPRI_KERNEL(sve_ld4w_zpri)
SVE_ZPRI_KERNEL(sve_ld4d_zpri)
SVE_ZPRI_KERNEL(sve_st2b_zpri)
SVE_ZPRI_KERNEL(sve_st2h_zpri)
SVE_ZPRI_KERNEL(sve_st2w_zpri)
SVE_ZPRI_KERNEL(sve_st2d_zpri)
SVE_ZPRI_KERNEL(sve_st3b_zpri)
SVE_ZPRI_KERNEL(sve_st3h_zpri)
SVE_ZPRI_KERNEL(sve_st3w_zpri)
SVE_ZPRI_KERNEL(sve_st3d_zpri)
SVE_ZPRI_KERNEL(sve_st4b_zpri)
SVE_ZPRI_KERNEL(sve_st4h_zpri)
SVE_ZPRI_KERNEL(sve_st4w_zpri)
SVE_ZPRI_KERNEL(sve_st4d_zpri)
SVE_ZPRR_KERNEL(sve_ld2b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld2h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld2w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld2d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld3b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld3h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld3w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld3d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld4b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld4h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld4w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ld4d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st2b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st2h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st2w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st2d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st3b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st3h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st3w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st3d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st4b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st4h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st4w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_st4d_scaled_zprr)
SVE_HANDLER(VecU8E2Load1SIZ)
SVE_HANDLER(VecU16E2Load2SIZ)
SVE_HANDLER(VecU32E2Load4SIZ)
SVE_HANDLER(VecU64E2Load8SIZ)
SVE_HANDLER(VecU8E3Load1SIZ)
SVE_HANDLER(VecU16E3Load2SIZ)
SVE_HANDLER(VecU32E3Load4SIZ)
SVE_HANDLER(VecU64E3Load8SIZ)
SVE_HANDLER(VecU8E4Load1SIZ)
SVE_HANDLER(VecU16E4Load2SIZ)
SVE_HANDLER(VecU32E4Load4SIZ)
SVE_HANDLER(VecU64E4Load8SIZ)
SVE_HANDLER(VecU8E2Store1SIZ)
SVE_HANDLER(VecU16E2Store2SIZ)
SVE_HANDLER(VecU32E2Store4SIZ)
SVE_HANDLER(VecU64E2Store8SIZ)
SVE_HANDLER(VecU8E3Store1SIZ)
SVE_HANDLER(VecU16E3Store2SIZ)
SVE_HANDLER(VecU32E3Store4SIZ)
SVE_HANDLER(VecU64E3Store8SIZ)
SVE_HANDLER(VecU8E4Store1SIZ)
SVE_HANDLER(VecU16E4Store2SIZ)
SVE_HANDLER(VecU32E4Store4SIZ)
SVE_HANDLER(VecU64E4Store8SIZ)
SVE_HANDLER(VecU8E2Load1LSSZ)
SVE_HANDLER(VecU16E2Load2LSSZ)
SVE_HANDLER(VecU32E2Load4LSSZ)
SVE_HANDLER(VecU64E2Load8LSSZ)
SVE_HANDLER(VecU8E3Load1LSSZ)
SVE_HANDLER(VecU16E3Load2LSSZ)
SVE_HANDLER(VecU32E3Load4LSSZ)
SVE_HANDLER(VecU64E3Load8LSSZ)
SVE_HANDLER(VecU8E4Load1LSSZ)
SVE_HANDLER(VecU16E4Load2LSSZ)
SVE_HANDLER(VecU32E4Load4LSSZ)
SVE_HANDLER(VecU64E4Load8LSSZ)
SVE_HANDLER(VecU8E2Store1LSSZ)
SVE_HANDLER(VecU16E2Store2LSSZ)
SVE_HANDLER(VecU32E2Store4LSSZ)
SVE_HANDLER(VecU64E2Store8LSSZ)
SVE_HANDLER(VecU8E3Store1LSSZ)
SVE_HANDLER(VecU16E3Store2LSSZ)
SVE_HANDLER(VecU32E3Store4LSSZ)
SVE_HANDLER(VecU64E3Store8LSSZ)
SVE_HANDLER(VecU8E4Store1LSSZ)
SVE_HANDLER(VecU16E4Store2LSSZ)
SVE_HANDLER(VecU32E4Store4LSSZ)
SVE_HANDLER(VecU64E4Store8LSSZ)

// Load-and-replicate, and the spill and fill of Z and P.
typedef aarch64_decode_rc (*sve_ld1r_kernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rb_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rb_h_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rb_s_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rb_d_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rh_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rh_s_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rh_d_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rw_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rw_d_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rd_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rsb_h_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rsb_s_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rsb_d_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rsh_s_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rsh_d_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ld1rsw_d_zpri(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, unsigned);
extern "C" aarch64_decode_rc sve_ldr_zri(cpu_state*, aarch64_z_reg, aarch64_i_rsp_reg, int);
extern "C" aarch64_decode_rc sve_str_zri(cpu_state*, aarch64_z_reg, aarch64_i_rsp_reg, int);
extern "C" aarch64_decode_rc sve_ldr_pri(cpu_state*, aarch64_p_reg, aarch64_i_rsp_reg, int);
extern "C" aarch64_decode_rc sve_str_pri(cpu_state*, aarch64_p_reg, aarch64_i_rsp_reg, int);
SVE_HANDLER(VecU8LoadDup1SIZ)
SVE_HANDLER(VecU16LoadDup1SIZ)
SVE_HANDLER(VecU32LoadDup1SIZ)
SVE_HANDLER(VecU64LoadDup1SIZ)
SVE_HANDLER(VecU16LoadDup2SIZ)
SVE_HANDLER(VecU32LoadDup2SIZ)
SVE_HANDLER(VecU64LoadDup2SIZ)
SVE_HANDLER(VecU32LoadDup4SIZ)
SVE_HANDLER(VecU64LoadDup4SIZ)
SVE_HANDLER(VecU64LoadDup8SIZ)
SVE_HANDLER(VecS16LoadDup1SIZ)
SVE_HANDLER(VecS32LoadDup1SIZ)
SVE_HANDLER(VecS64LoadDup1SIZ)
SVE_HANDLER(VecS32LoadDup2SIZ)
SVE_HANDLER(VecS64LoadDup2SIZ)
SVE_HANDLER(VecS64LoadDup4SIZ)
SVE_HANDLER(VecU64FillSI)
SVE_HANDLER(VecU64SpillSI)
SVE_HANDLER(VecPFillSI)
SVE_HANDLER(VecPSpillSI)

// Prefetches: no effect at all.
SVE_HANDLER(VecU8Prefetch1SI)
SVE_HANDLER(VecU16Prefetch2SI)
SVE_HANDLER(VecU32Prefetch4SI)
SVE_HANDLER(VecU64Prefetch8SI)
SVE_HANDLER(VecU8Prefetch1LSS)
SVE_HANDLER(VecU16Prefetch2LSS)
SVE_HANDLER(VecU32Prefetch4LSS)
SVE_HANDLER(VecU64Prefetch8LSS)
SVE_HANDLER(VecU32Prefetch1VI)
SVE_HANDLER(VecU32Prefetch2VI)
SVE_HANDLER(VecU32Prefetch4VI)
SVE_HANDLER(VecU32Prefetch8VI)
SVE_HANDLER(VecU32Prefetch1XSV)
SVE_HANDLER(VecU32Prefetch2XSV)
SVE_HANDLER(VecU32Prefetch4XSV)
SVE_HANDLER(VecU32Prefetch8XSV)
SVE_HANDLER(VecU32Prefetch1YSV)
SVE_HANDLER(VecU32Prefetch2YSV)
SVE_HANDLER(VecU32Prefetch4YSV)
SVE_HANDLER(VecU32Prefetch8YSV)
SVE_HANDLER(VecU64Prefetch1VI)
SVE_HANDLER(VecU64Prefetch2VI)
SVE_HANDLER(VecU64Prefetch4VI)
SVE_HANDLER(VecU64Prefetch8VI)
SVE_HANDLER(VecU64Prefetch1XSV)
SVE_HANDLER(VecU64Prefetch2XSV)
SVE_HANDLER(VecU64Prefetch4XSV)
SVE_HANDLER(VecU64Prefetch8XSV)
SVE_HANDLER(VecU64Prefetch1YSV)
SVE_HANDLER(VecU64Prefetch2YSV)
SVE_HANDLER(VecU64Prefetch4YSV)
SVE_HANDLER(VecU64Prefetch8YSV)
SVE_HANDLER(VecU64Prefetch1SV)
SVE_HANDLER(VecU64Prefetch2SV)
SVE_HANDLER(VecU64Prefetch4SV)
SVE_HANDLER(VecU64Prefetch8SV)

// ---- First-fault and non-fault loads, gathers, scatters, LD1RQ -------------

struct PredV;
struct VecVal;
struct CpuContext;

// Non-fault LDNF1, scalar plus immediate.
SVE_ZPRI_KERNEL(sve_ldnf1b_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1b_h_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1b_s_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1b_d_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1h_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1h_s_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1h_d_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1w_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1w_d_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1d_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1sb_h_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1sb_s_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1sb_d_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1sh_s_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1sh_d_zpri)
SVE_ZPRI_KERNEL(sve_ldnf1sw_d_zpri)
SVE_HANDLER(VecU8CLoadNF1SIZ)
SVE_HANDLER(VecU16CLoadNF1SIZ)
SVE_HANDLER(VecU32CLoadNF1SIZ)
SVE_HANDLER(VecU64CLoadNF1SIZ)
SVE_HANDLER(VecU16CLoadNF2SIZ)
SVE_HANDLER(VecU32CLoadNF2SIZ)
SVE_HANDLER(VecU64CLoadNF2SIZ)
SVE_HANDLER(VecU32CLoadNF4SIZ)
SVE_HANDLER(VecU64CLoadNF4SIZ)
SVE_HANDLER(VecU64CLoadNF8SIZ)
SVE_HANDLER(VecS16CLoadNF1SIZ)
SVE_HANDLER(VecS32CLoadNF1SIZ)
SVE_HANDLER(VecS64CLoadNF1SIZ)
SVE_HANDLER(VecS32CLoadNF2SIZ)
SVE_HANDLER(VecS64CLoadNF2SIZ)
SVE_HANDLER(VecS64CLoadNF4SIZ)

// First-fault LDFF1, scalar plus scalar: the kernel forms, then the forms
// that run as reference operations (governing predicate, base, index value
// with 0 for Xm = 31).
SVE_ZPRR_KERNEL(sve_ldff1b_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldff1b_h_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldff1b_s_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldff1b_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldff1w_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldff1w_d_scaled_zprr)
SVE_ZPRR_KERNEL(sve_ldff1d_scaled_zprr)
SVE_HANDLER(VecU8CLoadFF1LSSZ)
SVE_HANDLER(VecU16CLoadFF1LSSZ)
SVE_HANDLER(VecU32CLoadFF1LSSZ)
SVE_HANDLER(VecU64CLoadFF1LSSZ)
SVE_HANDLER(VecU32CLoadFF4LSSZ)
SVE_HANDLER(VecU64CLoadFF4LSSZ)
SVE_HANDLER(VecU64CLoadFF8LSSZ)
#define SVE_FF_CONTIGUOUS_OP(name) \
    SVE_HANDLER(name)              \
    extern "C" VecVal name(PredV pg, uint64_t base, uint64_t index, CpuContext* context);
SVE_FF_CONTIGUOUS_OP(VecU16CLoadFF2LSSZ)
SVE_FF_CONTIGUOUS_OP(VecU32CLoadFF2LSSZ)
SVE_FF_CONTIGUOUS_OP(VecU64CLoadFF2LSSZ)
SVE_FF_CONTIGUOUS_OP(VecS16CLoadFF1LSSZ)
SVE_FF_CONTIGUOUS_OP(VecS32CLoadFF1LSSZ)
SVE_FF_CONTIGUOUS_OP(VecS64CLoadFF1LSSZ)
SVE_FF_CONTIGUOUS_OP(VecS32CLoadFF2LSSZ)
SVE_FF_CONTIGUOUS_OP(VecS64CLoadFF2LSSZ)
SVE_FF_CONTIGUOUS_OP(VecS64CLoadFF4LSSZ)
#undef SVE_FF_CONTIGUOUS_OP

// The element loop of every first-fault reference operation, contiguous and
// gather alike: `address[e]` is element e's address (computed for every
// element; only those the loop reads are touched), `c` the element and `m` the
// memory size in bytes, `sign` the extension. Clears context->ffr as it goes.
VecVal first_fault_elements(const PredV& pg, const uint64_t* address, unsigned c, unsigned m, bool sign,
                            CpuContext* context);

// Gathers and scatters. Kernel shapes by suffix: zpzi (Zt, Pg, Zn, imm),
// zpzr (Zt, Pg, Zm, Xn), zprz (Zt, Pg, Xn, Zm).
typedef aarch64_decode_rc (*sve_zpzi_kernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, unsigned);
typedef aarch64_decode_rc (*sve_zpzr_kernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, aarch64_i_rsp_reg);
typedef aarch64_decode_rc (*sve_zprz_kernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_z_reg);
#define SVE_ZPZI_KERNEL(name) \
    extern "C" aarch64_decode_rc name(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, unsigned);
#define SVE_ZPZR_KERNEL(name) \
    extern "C" aarch64_decode_rc name(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, aarch64_i_rsp_reg);
#define SVE_ZPRZ_KERNEL(name) \
    extern "C" aarch64_decode_rc name(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_z_reg);

// Every gather, first-fault gather and scatter handler, and the kernels of
// the forms that have one. The reference operations have the handlers' names
// and take the governing predicate, the operands of the addressing form
// (VI: Zn, imm; VS, XVS, YVS: Zm, base; SV, XSV, YSV: base, Zm), for a store
// the data Zt, and the context.
#define SVE_GATHER_K(h, op, e, m, sign, form, kernel, shape) SVE_HANDLER(h) SVE_##shape##_KERNEL(kernel)
#define SVE_GATHER_R(h, op, e, m, sign, form) SVE_HANDLER(h)
#include "sve/memory/gather_forms.def"
#undef SVE_GATHER_K
#undef SVE_GATHER_R

// LD1RQ: (Pg, base, offset, context), the offset being the signed 4-bit
// immediate for QSIZ and X[m] (0 for 31) for QSSZ.
#define SVE_LD1RQ_OP(name) \
    SVE_HANDLER(name)      \
    extern "C" VecVal name(PredV pg, uint64_t base, int64_t offset, CpuContext* context);
SVE_LD1RQ_OP(VecU8LoadDup1QSIZ)
SVE_LD1RQ_OP(VecU16LoadDup2QSIZ)
SVE_LD1RQ_OP(VecU32LoadDup4QSIZ)
SVE_LD1RQ_OP(VecU64LoadDup8QSIZ)
SVE_LD1RQ_OP(VecU8LoadDup1QSSZ)
SVE_LD1RQ_OP(VecU16LoadDup2QSSZ)
SVE_LD1RQ_OP(VecU32LoadDup4QSSZ)
SVE_LD1RQ_OP(VecU64LoadDup8QSSZ)
#undef SVE_LD1RQ_OP
