// Kernel names of the saturating and count family whose instructions take the
// reference route: no handler calls them, and if anything ever does, they say
// so. The scalar forms serve the W and the X register alike, as uqdecb does.
#include "sve/memory/stubs.h"

#define RII aarch64_i_reg, unsigned, unsigned
#define ZII aarch64_z_reg, unsigned, unsigned
#define RP aarch64_i_reg, aarch64_p_reg
#define ZP aarch64_z_reg, aarch64_p_reg
#define ZZZ aarch64_z_reg, aarch64_z_reg, aarch64_z_reg
#define ZI aarch64_z_reg, unsigned

SVE_STUB_KERNEL(sve_decp_rp, RP)
SVE_STUB_KERNEL(sve_decp_zp, ZP)
SVE_STUB_KERNEL(sve_incp_zp, ZP)

SVE_STUB_KERNEL(sve_sqadd_zzz, ZZZ)
SVE_STUB_KERNEL(sve_sqadd_zi, ZI)
SVE_STUB_KERNEL(sve_uqadd_zzz, ZZZ)
SVE_STUB_KERNEL(sve_uqadd_zi, ZI)
SVE_STUB_KERNEL(sve_sqsub_zzz, ZZZ)
SVE_STUB_KERNEL(sve_sqsub_zi, ZI)
SVE_STUB_KERNEL(sve_uqsub_zzz, ZZZ)
SVE_STUB_KERNEL(sve_uqsub_zi, ZI)

SVE_STUB_KERNEL(sve_sqincb_rii, RII)
SVE_STUB_KERNEL(sve_sqinch_rii, RII)
SVE_STUB_KERNEL(sve_sqincw_rii, RII)
SVE_STUB_KERNEL(sve_sqincd_rii, RII)
SVE_STUB_KERNEL(sve_sqinch_zii, ZII)
SVE_STUB_KERNEL(sve_sqincw_zii, ZII)
SVE_STUB_KERNEL(sve_sqincd_zii, ZII)
SVE_STUB_KERNEL(sve_sqincp_rp, RP)
SVE_STUB_KERNEL(sve_sqincp_zp, ZP)

SVE_STUB_KERNEL(sve_uqincb_rii, RII)
SVE_STUB_KERNEL(sve_uqinch_rii, RII)
SVE_STUB_KERNEL(sve_uqincw_rii, RII)
SVE_STUB_KERNEL(sve_uqincd_rii, RII)
SVE_STUB_KERNEL(sve_uqinch_zii, ZII)
SVE_STUB_KERNEL(sve_uqincw_zii, ZII)
SVE_STUB_KERNEL(sve_uqincd_zii, ZII)
SVE_STUB_KERNEL(sve_uqincp_rp, RP)
SVE_STUB_KERNEL(sve_uqincp_zp, ZP)

SVE_STUB_KERNEL(sve_sqdecb_rii, RII)
SVE_STUB_KERNEL(sve_sqdech_rii, RII)
SVE_STUB_KERNEL(sve_sqdecw_rii, RII)
SVE_STUB_KERNEL(sve_sqdecd_rii, RII)
SVE_STUB_KERNEL(sve_sqdech_zii, ZII)
SVE_STUB_KERNEL(sve_sqdecw_zii, ZII)
SVE_STUB_KERNEL(sve_sqdecd_zii, ZII)
SVE_STUB_KERNEL(sve_sqdecp_rp, RP)
SVE_STUB_KERNEL(sve_sqdecp_zp, ZP)

SVE_STUB_KERNEL(sve_uqdech_rii, RII)
SVE_STUB_KERNEL(sve_uqdech_zii, ZII)
SVE_STUB_KERNEL(sve_uqdecw_zii, ZII)
SVE_STUB_KERNEL(sve_uqdecd_zii, ZII)
