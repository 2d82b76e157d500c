// Every instruction form of the reductions, dot products, ADR and the
// per-element bit operations, one line each. Included with the shape macros
// defined by the user; a shape the user leaves undefined expands to nothing,
// so each source of the family takes only its own lines. reduce.h makes the
// declarations from it.
//
// Shapes, with the operand fields they cut:
//   RED_K, RED_R  vd 4..0, pg 12..10, zn 9..5         scalar = reduce(active zn)
//   DOT           zda 4..0, zn 9..5, zm 20..16        zda += four products each
//   DOTI          zda 4..0, zn 9..5; index and zm:
//                 32-bit 20..19 and 18..16, 64-bit 20 and 19..16
//   ADR_K, ADR_R  zd 4..0, zn 9..5, zm 20..16         zd = zn + (offset << shift)
//   BIT_K, BIT_R  zd 4..0, pg 12..10, zn 9..5         zd = pg ? op(zn) : zd
// K forms go to a kernel, R forms to the reference operation. `op` names the
// element operation, `ext` how ADR takes its offset (packed element, or the
// low word sign- or zero-extended).
#ifndef RED_K
#define RED_K(name, kernel, N, op)
#endif
#ifndef RED_R
#define RED_R(name, N, op)
#endif
#ifndef DOT
#define DOT(name, N, unsigned_)
#endif
#ifndef DOTI
#define DOTI(name, N, unsigned_)
#endif
#ifndef ADR_K
#define ADR_K(name, kernel, shift)
#endif
#ifndef ADR_R
#define ADR_R(name, N, shift, ext)
#endif
#ifndef BIT_K
#define BIT_K(name, kernel, N, op)
#endif
#ifndef BIT_R
#define BIT_R(name, N, op)
#endif

// saddv, uaddv
RED_R(VecS8AddReduceV, 8, sadd)
RED_R(VecS16AddReduceV, 16, sadd)
RED_R(VecS32AddReduceV, 32, sadd)
RED_K(VecU8AddReduceV, sve_uaddv_vpz, 8, uadd)
RED_K(VecU16AddReduceV, sve_uaddv_vpz, 16, uadd)
RED_K(VecU32AddReduceV, sve_uaddv_vpz, 32, uadd)
RED_K(VecU64AddReduceV, sve_uaddv_vpz, 64, uadd)
// smaxv, sminv, umaxv, uminv
RED_K(VecS8MaxReduceV, sve_smaxv_vpz, 8, smax)
RED_K(VecS16MaxReduceV, sve_smaxv_vpz, 16, smax)
RED_K(VecS32MaxReduceV, sve_smaxv_vpz, 32, smax)
RED_K(VecS64MaxReduceV, sve_smaxv_vpz, 64, smax)
RED_K(VecS8MinReduceV, sve_sminv_vpz, 8, smin)
RED_K(VecS16MinReduceV, sve_sminv_vpz, 16, smin)
RED_K(VecS32MinReduceV, sve_sminv_vpz, 32, smin)
RED_K(VecS64MinReduceV, sve_sminv_vpz, 64, smin)
RED_K(VecU8MaxReduceV, sve_umaxv_vpz, 8, umax)
RED_K(VecU16MaxReduceV, sve_umaxv_vpz, 16, umax)
RED_K(VecU32MaxReduceV, sve_umaxv_vpz, 32, umax)
RED_K(VecU64MaxReduceV, sve_umaxv_vpz, 64, umax)
RED_K(VecU8MinReduceV, sve_uminv_vpz, 8, umin)
RED_K(VecU16MinReduceV, sve_uminv_vpz, 16, umin)
RED_K(VecU32MinReduceV, sve_uminv_vpz, 32, umin)
RED_K(VecU64MinReduceV, sve_uminv_vpz, 64, umin)
// andv, orv, eorv
RED_K(VecU8AndReduceV, sve_andv_vpz, 8, andv)
RED_K(VecU16AndReduceV, sve_andv_vpz, 16, andv)
RED_K(VecU32AndReduceV, sve_andv_vpz, 32, andv)
RED_K(VecU64AndReduceV, sve_andv_vpz, 64, andv)
RED_K(VecU8OrReduceV, sve_orv_vpz, 8, orv)
RED_K(VecU16OrReduceV, sve_orv_vpz, 16, orv)
RED_K(VecU32OrReduceV, sve_orv_vpz, 32, orv)
RED_K(VecU64OrReduceV, sve_orv_vpz, 64, orv)
RED_K(VecU8XorReduceV, sve_eorv_vpz, 8, eorv)
RED_K(VecU16XorReduceV, sve_eorv_vpz, 16, eorv)
RED_K(VecU32XorReduceV, sve_eorv_vpz, 32, eorv)
RED_K(VecU64XorReduceV, sve_eorv_vpz, 64, eorv)

// sdot, udot: 8-bit sources into 32-bit accumulators, 16-bit into 64-bit
DOT(VecS32DotVVVX, 32, 0)
DOT(VecU32DotVVVX, 32, 1)
DOT(VecS64DotVVVX, 64, 0)
DOT(VecU64DotVVVX, 64, 1)
DOTI(VecS32DotVVVIX, 32, 0)
DOTI(VecU32DotVVVIX, 32, 1)
DOTI(VecS64DotVVVIX, 64, 0)
DOTI(VecU64DotVVVIX, 64, 1)

// adr: the digit of the name is the scale, the shift here
ADR_R(VecU32LEA1VV, 32, 0, packed)
ADR_R(VecU32LEA2VV, 32, 1, packed)
ADR_R(VecU32LEA4VV, 32, 2, packed)
ADR_R(VecU32LEA8VV, 32, 3, packed)
ADR_K(VecU64LEA1VV, sve_adr_scaled_zzz, 0)
ADR_K(VecU64LEA2VV, sve_adr_scaled_zzz, 1)
ADR_K(VecU64LEA4VV, sve_adr_scaled_zzz, 2)
ADR_K(VecU64LEA8VV, sve_adr_scaled_zzz, 3)
ADR_R(VecU64LEA1XVV, 64, 0, sxtw)
ADR_R(VecU64LEA2XVV, 64, 1, sxtw)
ADR_R(VecU64LEA4XVV, 64, 2, sxtw)
ADR_R(VecU64LEA8XVV, 64, 3, sxtw)
ADR_R(VecU64LEA1YVV, 64, 0, uxtw)
ADR_R(VecU64LEA2YVV, 64, 1, uxtw)
ADR_R(VecU64LEA4YVV, 64, 2, uxtw)
ADR_R(VecU64LEA8YVV, 64, 3, uxtw)

// cnt, cls, clz, rbit
BIT_R(VecU8CntVM, 8, cnt)
BIT_R(VecU16CntVM, 16, cnt)
BIT_R(VecU32CntVM, 32, cnt)
BIT_R(VecU64CntVM, 64, cnt)
BIT_R(VecU8ClsVM, 8, cls)
BIT_R(VecU16ClsVM, 16, cls)
BIT_R(VecU32ClsVM, 32, cls)
BIT_R(VecU64ClsVM, 64, cls)
BIT_R(VecU8ClzVM, 8, clz)
BIT_R(VecU16ClzVM, 16, clz)
BIT_R(VecU32ClzVM, 32, clz)
BIT_R(VecU64ClzVM, 64, clz)
BIT_K(VecU8RBitVM, sve_rbit_zpz, 8, rbit)
BIT_K(VecU16RBitVM, sve_rbit_zpz, 16, rbit)
BIT_K(VecU32RBitVM, sve_rbit_zpz, 32, rbit)
BIT_K(VecU64RBitVM, sve_rbit_zpz, 64, rbit)
// revb, revh, revw: the digit of the name is the chunk size in bytes
BIT_R(VecU16Rev1V, 16, rev1)
BIT_R(VecU32Rev1V, 32, rev1)
BIT_R(VecU64Rev1V, 64, rev1)
BIT_R(VecU32Rev2V, 32, rev2)
BIT_R(VecU64Rev2V, 64, rev2)
BIT_K(VecU64Rev4V, sve_revw_zpz, 64, rev4)

#undef RED_K
#undef RED_R
#undef DOT
#undef DOTI
#undef ADR_K
#undef ADR_R
#undef BIT_K
#undef BIT_R
