// Every instruction form of the shift family, one line each: handler name,
// kernel (kernel route only), element bits, element operation, and for the
// immediate forms the function that cuts the count from the word. Included
// with the shape macros defined by the user: shift.cpp makes handlers and
// reference operations from it, shift.h declarations, the tests tables.
//
// Shapes, with the operand fields they cut:
//   VVM   zdn 4..0, pg 12..10, zm 9..5     zdn = pg ? op(zdn, count zm) : zdn
//   RVVM  zdn 4..0, pg 12..10, zm 9..5     zdn = pg ? op(zm, count zdn) : zdn   (reversed)
//   IM    zdn 4..0, pg 12..10, tsz:imm3 in 23..22, 9..5      zdn = pg ? op(zdn, imm) : zdn
//   IX    zd 4..0, zn 9..5, tsz:imm3 in 23..22, 20..16       zd = op(zn, imm)
//   WM    zdn 4..0, pg 12..10, zm 9..5 (.d)  count from the 64-bit lane of zm over the element
//   WX    zd 4..0, zn 9..5, zm 20..16 (.d)   the same, unpredicated
// K_ forms go to the kernel, R_ forms to the reference operation.
// op_lsl, op_lsr: unsigned value; op_asr, op_asrd: signed value.

// lsl, lsr, asr: vectors, predicated (kernels)
K_VVM(VecU8ShlVVM, sve_lsl_zpz, 8, op_lsl)
K_VVM(VecU16ShlVVM, sve_lsl_zpz, 16, op_lsl)
K_VVM(VecU32ShlVVM, sve_lsl_zpz, 32, op_lsl)
K_VVM(VecU64ShlVVM, sve_lsl_zpz, 64, op_lsl)
K_VVM(VecU8ShrVVM, sve_lsr_zpz, 8, op_lsr)
K_VVM(VecU16ShrVVM, sve_lsr_zpz, 16, op_lsr)
K_VVM(VecU32ShrVVM, sve_lsr_zpz, 32, op_lsr)
K_VVM(VecU64ShrVVM, sve_lsr_zpz, 64, op_lsr)
K_VVM(VecS8ShrVVM, sve_asr_zpz, 8, op_asr)
K_VVM(VecS16ShrVVM, sve_asr_zpz, 16, op_asr)
K_VVM(VecS32ShrVVM, sve_asr_zpz, 32, op_asr)
K_VVM(VecS64ShrVVM, sve_asr_zpz, 64, op_asr)
// lslr, lsrr, asrr
R_RVVM(VecU8ShlRVVM, 8, op_lsl)
R_RVVM(VecU16ShlRVVM, 16, op_lsl)
R_RVVM(VecU32ShlRVVM, 32, op_lsl)
R_RVVM(VecU64ShlRVVM, 64, op_lsl)
R_RVVM(VecU8ShrRVVM, 8, op_lsr)
R_RVVM(VecU16ShrRVVM, 16, op_lsr)
R_RVVM(VecU32ShrRVVM, 32, op_lsr)
R_RVVM(VecU64ShrRVVM, 64, op_lsr)
R_RVVM(VecS8ShrRVVM, 8, op_asr)
R_RVVM(VecS16ShrRVVM, 16, op_asr)
R_RVVM(VecS32ShrRVVM, 32, op_asr)
R_RVVM(VecS64ShrRVVM, 64, op_asr)
// lsl, asr, lsr, asrd: immediate, predicated
K_IM(VecU8ShlVIM, sve_lsl_zpi, 8, op_lsl, imm_shl_m)
K_IM(VecU16ShlVIM, sve_lsl_zpi, 16, op_lsl, imm_shl_m)
K_IM(VecU32ShlVIM, sve_lsl_zpi, 32, op_lsl, imm_shl_m)
K_IM(VecU64ShlVIM, sve_lsl_zpi, 64, op_lsl, imm_shl_m)
K_IM(VecS8ShrVIM, sve_asr_zpi, 8, op_asr, imm_shr_m)
K_IM(VecS16ShrVIM, sve_asr_zpi, 16, op_asr, imm_shr_m)
K_IM(VecS32ShrVIM, sve_asr_zpi, 32, op_asr, imm_shr_m)
K_IM(VecS64ShrVIM, sve_asr_zpi, 64, op_asr, imm_shr_m)
R_IM(VecU8ShrVIM, 8, op_lsr, imm_shr_m)
R_IM(VecU16ShrVIM, 16, op_lsr, imm_shr_m)
R_IM(VecU32ShrVIM, 32, op_lsr, imm_shr_m)
R_IM(VecU64ShrVIM, 64, op_lsr, imm_shr_m)
R_IM(VecS8ShrDVIM, 8, op_asrd, imm_shr_m)
R_IM(VecS16ShrDVIM, 16, op_asrd, imm_shr_m)
R_IM(VecS32ShrDVIM, 32, op_asrd, imm_shr_m)
R_IM(VecS64ShrDVIM, 64, op_asrd, imm_shr_m)
// lsl, asr, lsr: immediate, unpredicated. VecU16ShrVIX, the worked example
// of the reference route, lives in shift_lsr.cpp.
K_IX(VecU8ShlVIX, sve_lsl_zzi, 8, op_lsl, imm_shl_x)
K_IX(VecU16ShlVIX, sve_lsl_zzi, 16, op_lsl, imm_shl_x)
K_IX(VecU32ShlVIX, sve_lsl_zzi, 32, op_lsl, imm_shl_x)
K_IX(VecU64ShlVIX, sve_lsl_zzi, 64, op_lsl, imm_shl_x)
K_IX(VecS8ShrVIX, sve_asr_zzi, 8, op_asr, imm_shr_x)
K_IX(VecS16ShrVIX, sve_asr_zzi, 16, op_asr, imm_shr_x)
K_IX(VecS32ShrVIX, sve_asr_zzi, 32, op_asr, imm_shr_x)
K_IX(VecS64ShrVIX, sve_asr_zzi, 64, op_asr, imm_shr_x)
R_IX(VecU8ShrVIX, 8, op_lsr, imm_shr_x)
R_IX(VecU32ShrVIX, 32, op_lsr, imm_shr_x)
R_IX(VecU64ShrVIX, 64, op_lsr, imm_shr_x)
// lsl, lsr, asr: wide counts (no 64-bit form)
R_WM(VecU8ShlVWM, 8, op_lsl)
R_WM(VecU16ShlVWM, 16, op_lsl)
R_WM(VecU32ShlVWM, 32, op_lsl)
R_WM(VecU8ShrVWM, 8, op_lsr)
R_WM(VecU16ShrVWM, 16, op_lsr)
R_WM(VecU32ShrVWM, 32, op_lsr)
R_WM(VecS8ShrVWM, 8, op_asr)
R_WM(VecS16ShrVWM, 16, op_asr)
R_WM(VecS32ShrVWM, 32, op_asr)
R_WX(VecU8ShlVWX, 8, op_lsl)
R_WX(VecU16ShlVWX, 16, op_lsl)
R_WX(VecU32ShlVWX, 32, op_lsl)
R_WX(VecU8ShrVWX, 8, op_lsr)
R_WX(VecU16ShrVWX, 16, op_lsr)
R_WX(VecU32ShrVWX, 32, op_lsr)
R_WX(VecS8ShrVWX, 8, op_asr)
R_WX(VecS16ShrVWX, 16, op_asr)
R_WX(VecS32ShrVWX, 32, op_asr)
