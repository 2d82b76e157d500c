// Kernels, opcode handlers and reference operations of the reductions, dot
// products, ADR and the per-element bit operations (reduce.cpp, dot_adr.cpp,
// bitops.cpp), with the small helpers the three sources share. A handler and
// its reference operation share a name: the handler takes (cpu_state*, word)
// and has C++ linkage, the operation takes values and is exported plainly.
#pragma once

#include <cstdint>
#include <cstring>

#include "sve/core/cpu_state.h"
#include "sve/core/reference.h"

extern "C" {
// Reductions: (vd, pg, zn). The destination is a bare SIMD register number;
// the element size is in zn.size. The scalar goes to the low end of z[vd] and
// the other bytes of the 64 become 0.
aarch64_decode_rc sve_uaddv_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_smaxv_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_sminv_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_umaxv_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_uminv_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_andv_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_orv_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_eorv_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);
// ADR, packed elements: the width (bit 22) and the shift (bits 11..10) come
// from cpu_state.instruction, not from the operands.
aarch64_decode_rc sve_adr_scaled_zzz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
// Bit operations, predicated, merging into the old zd: (zd, pg, zn).
aarch64_decode_rc sve_rbit_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_revw_zpz(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn);
}

// Handlers and reference operations of every form.
#define RED_K(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" uint64_t name(PredV pg, VecVal zn, CpuContext* c);
#define RED_R(name, N, op) RED_K(name, -, N, op)
#define DOT(name, N, unsigned_)                   \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zda, VecVal zn, VecVal zm, CpuContext* c);
#define DOTI(name, N, unsigned_)                  \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zda, VecVal zn, VecVal zm, uint64_t index, CpuContext* c);
#define ADR_K(name, kernel, shift)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c);
#define ADR_R(name, N, shift, ext) ADR_K(name, -, shift)
#define BIT_K(name, kernel, N, op)                \
    aarch64_decode_rc name(cpu_state*, unsigned); \
    extern "C" VecVal name(VecVal zd, PredV pg, VecVal zn, CpuContext* c);
#define BIT_R(name, N, op) BIT_K(name, -, N, op)
#include "sve/integer/reduce_forms.h"

// ---------------------------------------------------------------------------
// Shared by the three sources of the family.
namespace red {

constexpr uint32_t es_of(unsigned N) { return N == 8 ? ES_B : N == 16 ? ES_H : N == 32 ? ES_S : ES_D; }

// Element e of N bits of a vector value, zero-extended, and its store.
inline uint64_t get(const VecVal& v, unsigned e, unsigned N) {
    uint64_t x = 0;
    std::memcpy(&x, v.b + e * (N / 8), N / 8);
    return x;
}
inline void set(VecVal& v, unsigned e, unsigned N, uint64_t x) { std::memcpy(v.b + e * (N / 8), &x, N / 8); }

inline aarch64_decode_rc done(RefFrame& f) { return static_cast<aarch64_decode_rc>(f.finish()); }

}  // namespace red
