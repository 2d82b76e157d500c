// Kernel names of the shift family whose instructions take the reference
// route: no handler calls them, and if anything ever does, they say so.
#include "sve/memory/stubs.h"

#define ZPZ aarch64_z_reg, aarch64_p_reg, aarch64_z_reg
#define ZZZ aarch64_z_reg, aarch64_z_reg, aarch64_z_reg

SVE_STUB_KERNEL(sve_lslr_zpz, ZPZ)
SVE_STUB_KERNEL(sve_lsrr_zpz, ZPZ)
SVE_STUB_KERNEL(sve_asrr_zpz, ZPZ)
SVE_STUB_KERNEL(sve_asrd_zpi, aarch64_z_reg, aarch64_p_reg, unsigned)
// Counts from the 64-bit lanes of Zm, at byte, halfword and word elements.
SVE_STUB_KERNEL(sve_lsl_wide_d2b_zpz, ZPZ)
SVE_STUB_KERNEL(sve_lsl_wide_d2h_zpz, ZPZ)
SVE_STUB_KERNEL(sve_lsl_wide_d2s_zpz, ZPZ)
SVE_STUB_KERNEL(sve_lsl_wide_zzz, ZZZ)
SVE_STUB_KERNEL(sve_lsr_wide_d2b_zpz, ZPZ)
SVE_STUB_KERNEL(sve_lsr_wide_d2h_zpz, ZPZ)
SVE_STUB_KERNEL(sve_lsr_wide_d2s_zpz, ZPZ)
SVE_STUB_KERNEL(sve_lsr_wide_zzz, ZZZ)
SVE_STUB_KERNEL(sve_asr_wide_d2b_zpz, ZPZ)
SVE_STUB_KERNEL(sve_asr_wide_d2h_zpz, ZPZ)
SVE_STUB_KERNEL(sve_asr_wide_d2s_zpz, ZPZ)
SVE_STUB_KERNEL(sve_asr_wide_zzz, ZZZ)
