// Kernels, opcode handlers and reference operations of the shift family:
// lsl, lsr, asr in every form, the reversed forms and asrd. A handler and its
// reference operation share a name: the handler takes (cpu_state*, word) and
// has C++ linkage, the operation takes values and is exported under the plain
// name.
#pragma once

#include <cstdint>

#include "sve/core/cpu_state.h"
#include "sve/core/reference.h"

extern "C" {
// Vectors, predicated, merging: (zdn, pg, zm). The count is the whole element
// of zm, unsigned: lsl and lsr give 0 from the element width up, asr the sign.
aarch64_decode_rc sve_lsl_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_lsr_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
aarch64_decode_rc sve_asr_zpz(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm);
// Immediate, predicated: (zdn, pg, count); unpredicated: (zd, zn, count).
// The 8- and 16-bit branches look at the low 8 and 16 bits of the count.
aarch64_decode_rc sve_lsl_zpi(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned count);
aarch64_decode_rc sve_lsr_zpi(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned count);
aarch64_decode_rc sve_asr_zpi(cpu_state*, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned count);
aarch64_decode_rc sve_lsl_zzi(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, unsigned count);
aarch64_decode_rc sve_lsr_zzi(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, unsigned count);
aarch64_decode_rc sve_asr_zzi(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, unsigned count);
}

#define K_VVM(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, CpuContext* c);
#define R_RVVM(name, N, op) K_VVM(name, -, N, op)
#define R_WM(name, N, op) K_VVM(name, -, N, op)
#define K_IM(name, kernel, N, op, immf)           \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zdn, PredV pg, uint64_t shift, CpuContext* c);
#define R_IM(name, N, op, immf) K_IM(name, -, N, op, immf)
#define K_IX(name, kernel, N, op, immf)           \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zn, uint64_t shift, CpuContext* c);
#define R_IX(name, N, op, immf) K_IX(name, -, N, op, immf)
#define R_WX(name, N, op)                         \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c);
#include "sve/integer/shift_forms.h"
#undef K_VVM
#undef R_RVVM
#undef R_WM
#undef K_IM
#undef R_IM
#undef K_IX
#undef R_IX
#undef R_WX

// Defined in shift_lsr.cpp.
aarch64_decode_rc VecU16ShrVIX(cpu_state*, unsigned);
extern "C" VecVal VecU16ShrVIX(VecVal zn, uint64_t shift, CpuContext* c);
