// Permutes and moves: ZIP, UZP, TRN, REV, TBL, EXT, SPLICE, COMPACT, the
// unpacks, CLASTA/CLASTB, LASTA/LASTB, INSR, DUP, CPY, DUPM and INDEX.
//
// Kernels and reference operations have C linkage. A reference operation
// bears the name of its opcode handler; the two are told apart by their
// parameters (the handler takes (cpu_state*, unsigned) and has C++ linkage).
#pragma once

#include <cstdint>

#include "sve/core/cpu_state.h"
#include "sve/core/reference.h"

extern "C" {
// Raw-byte permutes of a 64-byte register, Z or P alike: an element is a group
// of 1 << size bytes and moves whole. `dst` must not overlap a source; the
// kernels pass a local buffer and copy it out.
void sve_zip1(char* dst, const char* a, const char* b, element_size size);
void sve_zip2(char* dst, const char* a, const char* b, element_size size);
void sve_uzp1(char* dst, const char* a, const char* b, element_size size);

#define SVE_PERM_ZZZ(k) aarch64_decode_rc k(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm);
#define SVE_PERM_PPP(k) aarch64_decode_rc k(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm);
SVE_PERM_ZZZ(sve_zip1_zzz)
SVE_PERM_ZZZ(sve_zip2_zzz)
SVE_PERM_ZZZ(sve_uzp1_zzz)
SVE_PERM_ZZZ(sve_uzp2_zzz)
SVE_PERM_ZZZ(sve_trn1_zzz)
SVE_PERM_ZZZ(sve_trn2_zzz)
SVE_PERM_ZZZ(sve_tbl_zzz)
SVE_PERM_PPP(sve_zip1_ppp)
SVE_PERM_PPP(sve_zip2_ppp)
SVE_PERM_PPP(sve_uzp1_ppp)
SVE_PERM_PPP(sve_trn1_ppp)
#undef SVE_PERM_ZZZ
#undef SVE_PERM_PPP

aarch64_decode_rc sve_rev_zz(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn);
aarch64_decode_rc sve_rev_pp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pn);
aarch64_decode_rc sve_ext_zzi(cpu_state*, aarch64_z_reg zdn, aarch64_z_reg zm, unsigned imm);

#define SVE_UNPK(k) aarch64_decode_rc k(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn);
SVE_UNPK(sve_sunpkhi_s2d_zz)
SVE_UNPK(sve_sunpklo_s2d_zz)
SVE_UNPK(sve_uunpkhi_b2h_zz)
SVE_UNPK(sve_uunpkhi_h2s_zz)
SVE_UNPK(sve_uunpkhi_s2d_zz)
SVE_UNPK(sve_uunpklo_b2h_zz)
SVE_UNPK(sve_uunpklo_h2s_zz)
SVE_UNPK(sve_uunpklo_s2d_zz)
#undef SVE_UNPK
aarch64_decode_rc sve_punpkhi_pp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pn);
aarch64_decode_rc sve_punpklo_pp(cpu_state*, aarch64_p_reg pd, aarch64_p_reg pn);

aarch64_decode_rc sve_clastb_rpz(cpu_state*, aarch64_i_reg rdn, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_lastb_rpz(cpu_state*, aarch64_i_reg rd, aarch64_p_reg pg, aarch64_z_reg zn);
aarch64_decode_rc sve_lastb_vpz(cpu_state*, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn);

aarch64_decode_rc sve_dup_zi(cpu_state*, aarch64_z_reg zd, int imm);
aarch64_decode_rc sve_dup_zr(cpu_state*, aarch64_z_reg zd, aarch64_i_rsp_reg rn);
aarch64_decode_rc sve_dup_zzi(cpu_state*, aarch64_z_reg zd, aarch64_z_reg zn, unsigned index);
aarch64_decode_rc sve_dupm_zi(cpu_state*, aarch64_z_reg zd, aarch64_sve_logical64_imm imm);
aarch64_decode_rc sve_cpy_zpi(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, int imm);
aarch64_decode_rc sve_cpy_zpr(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_i_rsp_reg rn);
aarch64_decode_rc sve_cpy_zpv(cpu_state*, aarch64_z_reg zd, aarch64_p_reg pg, unsigned vn);
aarch64_decode_rc sve_index_zii(cpu_state*, aarch64_z_reg zd, int start, int step);
aarch64_decode_rc sve_index_zir(cpu_state*, aarch64_z_reg zd, int start, aarch64_i_reg rm);
aarch64_decode_rc sve_index_zri(cpu_state*, aarch64_z_reg zd, aarch64_i_reg rn, int step);
aarch64_decode_rc sve_index_zrr(cpu_state*, aarch64_z_reg zd, aarch64_i_reg rn, aarch64_i_reg rm);

// Reference operations of the reference-route handlers, parameters in
// assembler operand order, the context last. A scalar, general or SIMD, comes
// and goes as a 64-bit value with the element in its low bits; a result is
// zero-extended from the element.
PredV VecP8Uzp2PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP16Uzp2PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP32Uzp2PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP64Uzp2PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP8Trn1PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP16Trn1PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP32Trn1PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP64Trn1PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP8Trn2PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP16Trn2PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP32Trn2PP(PredV pn, PredV pm, CpuContext* c);
PredV VecP64Trn2PP(PredV pn, PredV pm, CpuContext* c);

VecVal VecU8Trn1VV(VecVal zn, VecVal zm, CpuContext* c);
VecVal VecU16Trn1VV(VecVal zn, VecVal zm, CpuContext* c);
VecVal VecU32Trn1VV(VecVal zn, VecVal zm, CpuContext* c);
VecVal VecU64Trn1VV(VecVal zn, VecVal zm, CpuContext* c);

VecVal VecU8SpliceVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU16SpliceVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU32SpliceVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU64SpliceVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);

VecVal VecU32CompressVV(PredV pg, VecVal zn, CpuContext* c);
VecVal VecU64CompressVV(PredV pg, VecVal zn, CpuContext* c);

VecVal VecS16UnpackHiV(VecVal zn, CpuContext* c);
VecVal VecS16UnpackLoV(VecVal zn, CpuContext* c);
VecVal VecS32UnpackHiV(VecVal zn, CpuContext* c);
VecVal VecS32UnpackLoV(VecVal zn, CpuContext* c);

uint64_t VecU8CondXASV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecU16CondXASV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecU32CondXASV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecU64CondXASV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecB8CondXASV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecH16CondXASV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecF32CondXASV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecD64CondXASV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecB8CondXBSV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecH16CondXBSV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecF32CondXBSV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);
uint64_t VecD64CondXBSV(PredV pg, uint64_t old, VecVal zm, CpuContext* c);

VecVal VecU8VCondXAVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU16VCondXAVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU32VCondXAVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU64VCondXAVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU8VCondXBVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU16VCondXBVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU32VCondXBVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);
VecVal VecU64VCondXBVV(PredV pg, VecVal zdn, VecVal zm, CpuContext* c);

uint64_t VecU8LastAV(PredV pg, VecVal zn, CpuContext* c);
uint64_t VecU16LastAV(PredV pg, VecVal zn, CpuContext* c);
uint64_t VecU32LastAV(PredV pg, VecVal zn, CpuContext* c);
uint64_t VecU64LastAV(PredV pg, VecVal zn, CpuContext* c);
uint64_t VecB8LastAV(PredV pg, VecVal zn, CpuContext* c);
uint64_t VecH16LastAV(PredV pg, VecVal zn, CpuContext* c);
uint64_t VecF32LastAV(PredV pg, VecVal zn, CpuContext* c);
uint64_t VecD64LastAV(PredV pg, VecVal zn, CpuContext* c);

VecVal VecU8InsertS(VecVal zdn, uint64_t value, CpuContext* c);
VecVal VecU16InsertS(VecVal zdn, uint64_t value, CpuContext* c);
VecVal VecU32InsertS(VecVal zdn, uint64_t value, CpuContext* c);
VecVal VecU64InsertS(VecVal zdn, uint64_t value, CpuContext* c);
VecVal VecB8InsertS(VecVal zdn, uint64_t value, CpuContext* c);
VecVal VecH16InsertS(VecVal zdn, uint64_t value, CpuContext* c);
VecVal VecF32InsertS(VecVal zdn, uint64_t value, CpuContext* c);
VecVal VecD64InsertS(VecVal zdn, uint64_t value, CpuContext* c);
}

// Opcode handlers of the family, one for each row, for the decode table and the tests.
aarch64_decode_rc VecU8Zip1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU16Zip1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU32Zip1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU64Zip1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU8Zip2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU16Zip2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU32Zip2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU64Zip2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU8Uzp1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU16Uzp1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU32Uzp1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU64Uzp1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU8Uzp2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU16Uzp2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU32Uzp2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU64Uzp2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU8Trn1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU16Trn1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU32Trn1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU64Trn1VV(cpu_state*, unsigned);
aarch64_decode_rc VecU8Trn2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU16Trn2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU32Trn2VV(cpu_state*, unsigned);
aarch64_decode_rc VecU64Trn2VV(cpu_state*, unsigned);
aarch64_decode_rc VecP8Zip1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP16Zip1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP32Zip1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP64Zip1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP8Zip2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP16Zip2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP32Zip2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP64Zip2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP8Uzp1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP16Uzp1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP32Uzp1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP64Uzp1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP8Uzp2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP16Uzp2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP32Uzp2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP64Uzp2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP8Trn1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP16Trn1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP32Trn1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP64Trn1PP(cpu_state*, unsigned);
aarch64_decode_rc VecP8Trn2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP16Trn2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP32Trn2PP(cpu_state*, unsigned);
aarch64_decode_rc VecP64Trn2PP(cpu_state*, unsigned);
aarch64_decode_rc VecU8ReverseV(cpu_state*, unsigned);
aarch64_decode_rc VecU16ReverseV(cpu_state*, unsigned);
aarch64_decode_rc VecU32ReverseV(cpu_state*, unsigned);
aarch64_decode_rc VecU64ReverseV(cpu_state*, unsigned);
aarch64_decode_rc VecP8ReverseP(cpu_state*, unsigned);
aarch64_decode_rc VecP16ReverseP(cpu_state*, unsigned);
aarch64_decode_rc VecP32ReverseP(cpu_state*, unsigned);
aarch64_decode_rc VecP64ReverseP(cpu_state*, unsigned);
aarch64_decode_rc VecU8TblVV(cpu_state*, unsigned);
aarch64_decode_rc VecU16TblVV(cpu_state*, unsigned);
aarch64_decode_rc VecU32TblVV(cpu_state*, unsigned);
aarch64_decode_rc VecU64TblVV(cpu_state*, unsigned);
aarch64_decode_rc VecU8SlideVI(cpu_state*, unsigned);
aarch64_decode_rc VecU8SpliceVV(cpu_state*, unsigned);
aarch64_decode_rc VecU16SpliceVV(cpu_state*, unsigned);
aarch64_decode_rc VecU32SpliceVV(cpu_state*, unsigned);
aarch64_decode_rc VecU64SpliceVV(cpu_state*, unsigned);
aarch64_decode_rc VecU32CompressVV(cpu_state*, unsigned);
aarch64_decode_rc VecU64CompressVV(cpu_state*, unsigned);
aarch64_decode_rc VecS16UnpackHiV(cpu_state*, unsigned);
aarch64_decode_rc VecS32UnpackHiV(cpu_state*, unsigned);
aarch64_decode_rc VecS64UnpackHiV(cpu_state*, unsigned);
aarch64_decode_rc VecS16UnpackLoV(cpu_state*, unsigned);
aarch64_decode_rc VecS32UnpackLoV(cpu_state*, unsigned);
aarch64_decode_rc VecS64UnpackLoV(cpu_state*, unsigned);
aarch64_decode_rc VecU16UnpackHiV(cpu_state*, unsigned);
aarch64_decode_rc VecU32UnpackHiV(cpu_state*, unsigned);
aarch64_decode_rc VecU64UnpackHiV(cpu_state*, unsigned);
aarch64_decode_rc VecU16UnpackLoV(cpu_state*, unsigned);
aarch64_decode_rc VecU32UnpackLoV(cpu_state*, unsigned);
aarch64_decode_rc VecU64UnpackLoV(cpu_state*, unsigned);
aarch64_decode_rc VecPUnpackHiP(cpu_state*, unsigned);
aarch64_decode_rc VecPUnpackLoP(cpu_state*, unsigned);
aarch64_decode_rc VecU8CondXASV(cpu_state*, unsigned);
aarch64_decode_rc VecU16CondXASV(cpu_state*, unsigned);
aarch64_decode_rc VecU32CondXASV(cpu_state*, unsigned);
aarch64_decode_rc VecU64CondXASV(cpu_state*, unsigned);
aarch64_decode_rc VecB8CondXASV(cpu_state*, unsigned);
aarch64_decode_rc VecH16CondXASV(cpu_state*, unsigned);
aarch64_decode_rc VecF32CondXASV(cpu_state*, unsigned);
aarch64_decode_rc VecD64CondXASV(cpu_state*, unsigned);
aarch64_decode_rc VecU8CondXBSV(cpu_state*, unsigned);
aarch64_decode_rc VecU16CondXBSV(cpu_state*, unsigned);
aarch64_decode_rc VecU32CondXBSV(cpu_state*, unsigned);
aarch64_decode_rc VecU64CondXBSV(cpu_state*, unsigned);
aarch64_decode_rc VecB8CondXBSV(cpu_state*, unsigned);
aarch64_decode_rc VecH16CondXBSV(cpu_state*, unsigned);
aarch64_decode_rc VecF32CondXBSV(cpu_state*, unsigned);
aarch64_decode_rc VecD64CondXBSV(cpu_state*, unsigned);
aarch64_decode_rc VecU8VCondXAVV(cpu_state*, unsigned);
aarch64_decode_rc VecU16VCondXAVV(cpu_state*, unsigned);
aarch64_decode_rc VecU32VCondXAVV(cpu_state*, unsigned);
aarch64_decode_rc VecU64VCondXAVV(cpu_state*, unsigned);
aarch64_decode_rc VecU8VCondXBVV(cpu_state*, unsigned);
aarch64_decode_rc VecU16VCondXBVV(cpu_state*, unsigned);
aarch64_decode_rc VecU32VCondXBVV(cpu_state*, unsigned);
aarch64_decode_rc VecU64VCondXBVV(cpu_state*, unsigned);
aarch64_decode_rc VecU8LastAV(cpu_state*, unsigned);
aarch64_decode_rc VecU16LastAV(cpu_state*, unsigned);
aarch64_decode_rc VecU32LastAV(cpu_state*, unsigned);
aarch64_decode_rc VecU64LastAV(cpu_state*, unsigned);
aarch64_decode_rc VecB8LastAV(cpu_state*, unsigned);
aarch64_decode_rc VecH16LastAV(cpu_state*, unsigned);
aarch64_decode_rc VecF32LastAV(cpu_state*, unsigned);
aarch64_decode_rc VecD64LastAV(cpu_state*, unsigned);
aarch64_decode_rc VecU8LastBV(cpu_state*, unsigned);
aarch64_decode_rc VecU16LastBV(cpu_state*, unsigned);
aarch64_decode_rc VecU32LastBV(cpu_state*, unsigned);
aarch64_decode_rc VecU64LastBV(cpu_state*, unsigned);
aarch64_decode_rc VecB8LastBV(cpu_state*, unsigned);
aarch64_decode_rc VecH16LastBV(cpu_state*, unsigned);
aarch64_decode_rc VecF32LastBV(cpu_state*, unsigned);
aarch64_decode_rc VecD64LastBV(cpu_state*, unsigned);
aarch64_decode_rc VecU8InsertS(cpu_state*, unsigned);
aarch64_decode_rc VecU16InsertS(cpu_state*, unsigned);
aarch64_decode_rc VecU32InsertS(cpu_state*, unsigned);
aarch64_decode_rc VecU64InsertS(cpu_state*, unsigned);
aarch64_decode_rc VecB8InsertS(cpu_state*, unsigned);
aarch64_decode_rc VecH16InsertS(cpu_state*, unsigned);
aarch64_decode_rc VecF32InsertS(cpu_state*, unsigned);
aarch64_decode_rc VecD64InsertS(cpu_state*, unsigned);
aarch64_decode_rc VecS8DupI(cpu_state*, unsigned);
aarch64_decode_rc VecS16DupI(cpu_state*, unsigned);
aarch64_decode_rc VecS32DupI(cpu_state*, unsigned);
aarch64_decode_rc VecS64DupI(cpu_state*, unsigned);
aarch64_decode_rc VecS8DupIM(cpu_state*, unsigned);
aarch64_decode_rc VecS16DupIM(cpu_state*, unsigned);
aarch64_decode_rc VecS32DupIM(cpu_state*, unsigned);
aarch64_decode_rc VecS64DupIM(cpu_state*, unsigned);
aarch64_decode_rc VecS8DupIZ(cpu_state*, unsigned);
aarch64_decode_rc VecS16DupIZ(cpu_state*, unsigned);
aarch64_decode_rc VecS32DupIZ(cpu_state*, unsigned);
aarch64_decode_rc VecS64DupIZ(cpu_state*, unsigned);
aarch64_decode_rc VecU8DupS(cpu_state*, unsigned);
aarch64_decode_rc VecU16DupS(cpu_state*, unsigned);
aarch64_decode_rc VecU32DupS(cpu_state*, unsigned);
aarch64_decode_rc VecU64DupS(cpu_state*, unsigned);
aarch64_decode_rc VecU8DupSM(cpu_state*, unsigned);
aarch64_decode_rc VecU16DupSM(cpu_state*, unsigned);
aarch64_decode_rc VecU32DupSM(cpu_state*, unsigned);
aarch64_decode_rc VecU64DupSM(cpu_state*, unsigned);
aarch64_decode_rc VecB8DupSM(cpu_state*, unsigned);
aarch64_decode_rc VecH16DupSM(cpu_state*, unsigned);
aarch64_decode_rc VecF32DupSM(cpu_state*, unsigned);
aarch64_decode_rc VecD64DupSM(cpu_state*, unsigned);
aarch64_decode_rc VecU8ExtDupVI(cpu_state*, unsigned);
aarch64_decode_rc VecU16ExtDupVI(cpu_state*, unsigned);
aarch64_decode_rc VecU32ExtDupVI(cpu_state*, unsigned);
aarch64_decode_rc VecU64ExtDupVI(cpu_state*, unsigned);
aarch64_decode_rc VecU128ExtDupVI(cpu_state*, unsigned);
aarch64_decode_rc VecS64DupMaskI(cpu_state*, unsigned);
aarch64_decode_rc VecS8IndexII(cpu_state*, unsigned);
aarch64_decode_rc VecS16IndexII(cpu_state*, unsigned);
aarch64_decode_rc VecS32IndexII(cpu_state*, unsigned);
aarch64_decode_rc VecS64IndexII(cpu_state*, unsigned);
aarch64_decode_rc VecS8IndexIS(cpu_state*, unsigned);
aarch64_decode_rc VecS16IndexIS(cpu_state*, unsigned);
aarch64_decode_rc VecS32IndexIS(cpu_state*, unsigned);
aarch64_decode_rc VecS64IndexIS(cpu_state*, unsigned);
aarch64_decode_rc VecS8IndexSI(cpu_state*, unsigned);
aarch64_decode_rc VecS16IndexSI(cpu_state*, unsigned);
aarch64_decode_rc VecS32IndexSI(cpu_state*, unsigned);
aarch64_decode_rc VecS64IndexSI(cpu_state*, unsigned);
aarch64_decode_rc VecS8IndexSS(cpu_state*, unsigned);
aarch64_decode_rc VecS16IndexSS(cpu_state*, unsigned);
aarch64_decode_rc VecS32IndexSS(cpu_state*, unsigned);
aarch64_decode_rc VecS64IndexSS(cpu_state*, unsigned);
