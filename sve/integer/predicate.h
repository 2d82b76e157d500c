// Condition flags from predicates, in both worlds: sve_ptest<> on the
// byte-per-vector-byte registers of the kernels, PredSetNZCV on the packed
// values of the reference operations. Then the kernels and reference
// operations of predicate logic, PTRUE/PFALSE/PFIRST/PNEXT/PTEST, the FFR
// instructions, integer compares, WHILE, the break instructions and CTERM.
//
// Kernels and reference operations have C linkage. A reference operation
// bears the name of its opcode handler; the two are told apart by their
// parameters (the handler takes (cpu_state*, unsigned) and has C++ linkage).
#pragma once

#include <cstdint>

#include "sve/core/cpu_state.h"
#include "sve/core/reference.h"

// The four flags, in the layout of the NZCV system register.
constexpr uint64_t NZCV_N = 1ull << 31;
constexpr uint64_t NZCV_Z = 1ull << 30;
constexpr uint64_t NZCV_C = 1ull << 29;
constexpr uint64_t NZCV_V = 1ull << 28;
constexpr uint64_t NZCV_FLAGS = NZCV_N | NZCV_Z | NZCV_C | NZCV_V;

// PredTest for kernels. `mask` and `result` are 64-byte predicate registers
// read at the stride of T: element i is bit 0 of byte i * sizeof(T), nothing
// else. N = result at the first active element, Z = no active element set,
// C = NOT result at the last active element, V = 0. Only bits 31..28 of
// nzcv change; the upper half of the 64-bit field survives. Callers pass
// their local result buffer before copying it out, so a destination that
// aliases the mask is read as it was.
template <typename T>
inline void sve_ptest(cpu_state* s, const uint8_t* mask, const uint8_t* result) {
    constexpr unsigned n = 64 / sizeof(T);
    constexpr unsigned st = sizeof(T);
    uint64_t nf = 0, zf = NZCV_Z, cf = NZCV_C;
    for (unsigned i = 0; i < n; ++i)
        if (mask[i * st] & 1) {
            nf = (result[i * st] & 1) ? NZCV_N : 0;
            break;
        }
    for (unsigned i = 0; i < n; ++i)
        if (mask[i * st] & result[i * st] & 1) {
            zf = 0;
            break;
        }
    for (unsigned i = n; i-- > 0;)
        if (mask[i * st] & 1) {
            cf = (result[i * st] & 1) ? 0 : NZCV_C;
            break;
        }
    s->nzcv = (s->nzcv & ~NZCV_FLAGS) | nf | zf | cf;
}

// PredTest for reference operations, esize in bits (8, 16, 32, 64). Z and C
// look at the whole bit group of an element, N at its first bit only.
// PredSetNZC leaves V; PredSetNZCV clears it.
void PredSetNZC(PredV mask, PredV result, int esize, CpuContext* c);
void PredSetNZCV(PredV mask, PredV result, int esize, CpuContext* c);
// Index of the highest / lowest element whose first bit is set in `mask`, or
// -1 (also for an esize of 0).
int32_t FindLastActive(PredV mask, int esize, CpuContext* c);
int32_t FindFirstActive(PredV mask, int esize, CpuContext* c);

extern "C" {
// Predicate logic and whole-predicate kernels.
aarch64_decode_rc sve_and_pppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_bic_pppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_eor_pppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_nor_pppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_orr_pppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_sel_pppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_ptrue_pi(cpu_state*, aarch64_p_reg pd, unsigned pattern);
aarch64_decode_rc sve_pfalse_p(cpu_state*, aarch64_p_reg pd);
aarch64_decode_rc sve_pnext_pp(cpu_state*, aarch64_p_reg pdn, aarch64_p_reg pv);
aarch64_decode_rc sve_ptest_pp(cpu_state*, aarch64_p_reg pg, aarch64_p_reg pn);
aarch64_decode_rc sve_rdffr_pp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg);
aarch64_decode_rc sve_rdffr_p(cpu_state*, aarch64_p_reg pd);
aarch64_decode_rc sve_wrffr_p(cpu_state*, aarch64_p_reg pn);
aarch64_decode_rc sve_setffr(cpu_state*);

// Compares: the element size is Pd's qualifier.
aarch64_decode_rc sve_cmpeq_ppzi(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm);
aarch64_decode_rc sve_cmpne_ppzi(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm);
aarch64_decode_rc sve_cmpgt_ppzi(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm);
aarch64_decode_rc sve_cmplt_ppzi(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm);
aarch64_decode_rc sve_cmple_ppzi(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, int imm);
aarch64_decode_rc sve_cmphi_ppzi(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, unsigned imm);
aarch64_decode_rc sve_cmplo_ppzi(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, unsigned imm);
aarch64_decode_rc sve_cmpeq_ppzz(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm);
aarch64_decode_rc sve_cmpne_ppzz(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm);
aarch64_decode_rc sve_cmpgt_ppzz(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm);
aarch64_decode_rc sve_cmpge_ppzz(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm);
aarch64_decode_rc sve_cmphi_ppzz(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm);
aarch64_decode_rc sve_cmphs_ppzz(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm);

// WHILE: element size from Pd's qualifier, width from Rn's size (3 = 64-bit).
aarch64_decode_rc sve_whilelt_prr(cpu_state*, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm);
aarch64_decode_rc sve_whilelo_prr(cpu_state*, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm);
aarch64_decode_rc sve_whilels_prr(cpu_state*, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm);

// Breaks. Merging or zeroing by Pg's qualifier (4 or 5).
aarch64_decode_rc sve_brka_ppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn);
aarch64_decode_rc sve_brkb_ppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn);
aarch64_decode_rc sve_brkn_ppp(cpu_state*, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn);
aarch64_decode_rc sve_brkns_ppp(cpu_state*, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn);
aarch64_decode_rc sve_brkpb_pppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm);
aarch64_decode_rc sve_brkpbs_pppp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm);
}

// The shared bodies of BRKN/BRKNS and BRKPB/BRKPBS.
aarch64_decode_rc sve_brkn(cpu_state*, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn, bool set_flags);
aarch64_decode_rc sve_brkpb(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm,
                            bool set_flags);

// Reference operations of the reference-route handlers of this family.
extern "C" {
PredV VecPAndFlgPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPBicFlgPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPXorFlgPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPNandPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPNandFlgPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPNorFlgPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPOrNPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPOrNFlgPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPOrFlgPPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecP8TrueFlgI(unsigned pattern, CpuContext* c);
PredV VecP16TrueFlgI(unsigned pattern, CpuContext* c);
PredV VecP32TrueFlgI(unsigned pattern, CpuContext* c);
PredV VecP64TrueFlgI(unsigned pattern, CpuContext* c);
PredV VecPSetFirstActiveP(PredV pg, PredV pdn, CpuContext* c);
PredV VecPActualFlgP(PredV pg, CpuContext* c);

PredV VecS8CmpFlgGEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecS16CmpFlgGEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecS32CmpFlgGEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecS64CmpFlgGEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecU8CmpFlgGEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecU16CmpFlgGEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecU32CmpFlgGEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecU64CmpFlgGEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecU8CmpFlgLEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecU16CmpFlgLEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecU32CmpFlgLEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecU64CmpFlgLEVIZ(PredV pg, VecVal zn, int64_t imm, CpuContext* c);
PredV VecS8CmpFlgEQVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS16CmpFlgEQVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS32CmpFlgEQVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS8CmpFlgNEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS16CmpFlgNEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS32CmpFlgNEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS8CmpFlgGTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS16CmpFlgGTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS32CmpFlgGTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS8CmpFlgGEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS16CmpFlgGEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS32CmpFlgGEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS8CmpFlgLTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS16CmpFlgLTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS32CmpFlgLTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS8CmpFlgLEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS16CmpFlgLEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecS32CmpFlgLEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU8CmpFlgGTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU16CmpFlgGTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU32CmpFlgGTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU8CmpFlgGEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU16CmpFlgGEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU32CmpFlgGEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU8CmpFlgLTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU16CmpFlgLTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU32CmpFlgLTVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU8CmpFlgLEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU16CmpFlgLEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);
PredV VecU32CmpFlgLEVWZ(PredV pg, VecVal zn, VecVal zm, CpuContext* c);

PredV VecS8While4LESS(int32_t op1, int32_t op2, CpuContext* c);
PredV VecS16While4LESS(int32_t op1, int32_t op2, CpuContext* c);
PredV VecS32While4LESS(int32_t op1, int32_t op2, CpuContext* c);
PredV VecS64While4LESS(int32_t op1, int32_t op2, CpuContext* c);
PredV VecS8While8LESS(int64_t op1, int64_t op2, CpuContext* c);
PredV VecS16While8LESS(int64_t op1, int64_t op2, CpuContext* c);
PredV VecS32While8LESS(int64_t op1, int64_t op2, CpuContext* c);
PredV VecS64While8LESS(int64_t op1, int64_t op2, CpuContext* c);

PredV VecPBreakAFlgPZ(PredV pg, PredV pn, CpuContext* c);
PredV VecPBreakBFlgPZ(PredV pg, PredV pn, CpuContext* c);
PredV VecPBreakPrevAPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);
PredV VecPBreakPrevAFlgPZ(PredV pg, PredV pn, PredV pm, CpuContext* c);

void VecU32CTermEQ(uint32_t op1, uint32_t op2, CpuContext* c);
void VecU32CTermNE(uint32_t op1, uint32_t op2, CpuContext* c);
void VecU64CTermEQ(uint64_t op1, uint64_t op2, CpuContext* c);
void VecU64CTermNE(uint64_t op1, uint64_t op2, CpuContext* c);
}
