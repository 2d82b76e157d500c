// Kernel names without an implementation, one list for every family
// (stub_kernels.def). Each is an exported C symbol that prints
//   "Unimplemented instruction: [  <pc>:\t <word>\t <name>  ]"
// on standard error, with the pc and the instruction word of the cpu_state,
// and returns DECODE_UNKNOWN. No handler calls one: the instructions behind
// them take the reference route or do nothing.
//
// The stubs are weak, so a real kernel written later under a listed name takes
// its place at link time instead of clashing with it; `sve_stub_kernels` lets
// the tests see that and ask for the name to leave the list.
#pragma once

#include <cstddef>

#include "sve/core/cpu_state.h"

// Operand records after cpu_state*, by the kernel name's operand letters: z a
// Z register, p a predicate, r a general register (zero register or SP as the
// kernel family takes it), v a SIMD scalar by number, i an immediate. A suffix
// tells two shapes of the same letters apart by the immediate's type.
#define SVE_STUB_SHAPE_ZZ aarch64_z_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_ZZZ aarch64_z_reg, aarch64_z_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_ZZI aarch64_z_reg, aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_ZZZI aarch64_z_reg, aarch64_z_reg, aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_ZZZII aarch64_z_reg, aarch64_z_reg, aarch64_z_reg, unsigned, unsigned
#define SVE_STUB_SHAPE_ZPZ aarch64_z_reg, aarch64_p_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_ZPI aarch64_z_reg, aarch64_p_reg, unsigned
#define SVE_STUB_SHAPE_ZPI_FP aarch64_z_reg, aarch64_p_reg, aarch64_sve_fp_arith_imm
#define SVE_STUB_SHAPE_ZPI_FPDUP aarch64_z_reg, aarch64_p_reg, aarch64_sve_fp_dup_imm
#define SVE_STUB_SHAPE_ZPZZI aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_ZI aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_ZI_INT aarch64_z_reg, int
#define SVE_STUB_SHAPE_ZII aarch64_z_reg, unsigned, unsigned
#define SVE_STUB_SHAPE_ZP aarch64_z_reg, aarch64_p_reg
#define SVE_STUB_SHAPE_ZR aarch64_z_reg, aarch64_i_reg
#define SVE_STUB_SHAPE_ZV aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_RII aarch64_i_reg, unsigned, unsigned
#define SVE_STUB_SHAPE_RP aarch64_i_reg, aarch64_p_reg
#define SVE_STUB_SHAPE_RPZ aarch64_i_reg, aarch64_p_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_RR aarch64_i_reg, aarch64_i_reg
#define SVE_STUB_SHAPE_VPZ unsigned, aarch64_p_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_PI aarch64_p_reg, unsigned
#define SVE_STUB_SHAPE_PP aarch64_p_reg, aarch64_p_reg
#define SVE_STUB_SHAPE_PPP aarch64_p_reg, aarch64_p_reg, aarch64_p_reg
#define SVE_STUB_SHAPE_PPPP aarch64_p_reg, aarch64_p_reg, aarch64_p_reg, aarch64_p_reg
#define SVE_STUB_SHAPE_PPZ aarch64_p_reg, aarch64_p_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_PPZI aarch64_p_reg, aarch64_p_reg, aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_PPZI_INT aarch64_p_reg, aarch64_p_reg, aarch64_z_reg, int
#define SVE_STUB_SHAPE_PPZZ aarch64_p_reg, aarch64_p_reg, aarch64_z_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_PRR aarch64_p_reg, aarch64_i_reg, aarch64_i_reg
// Memory: a base register takes SP for 31, an index register the zero
// register. ZPZR is (Zt, Pg, Zm, Xn), ZPRZ (Zt, Pg, Xn, Zm); the prefetches
// take the prefetch operation first.
#define SVE_STUB_SHAPE_ZPRI aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, int
#define SVE_STUB_SHAPE_ZPRR aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_i_reg
#define SVE_STUB_SHAPE_ZPZI aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_ZPZR aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, aarch64_i_rsp_reg
#define SVE_STUB_SHAPE_ZPRZ aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_IPRI unsigned, aarch64_p_reg, aarch64_i_rsp_reg, int
#define SVE_STUB_SHAPE_IPRR unsigned, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_i_reg
#define SVE_STUB_SHAPE_IPZI unsigned, aarch64_p_reg, aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_IPRZ unsigned, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_z_reg

extern "C" {
#define SVE_STUB(family, name, shape) aarch64_decode_rc name(cpu_state*, SVE_STUB_SHAPE_##shape);
#include "sve/core/stub_kernels.def"
#undef SVE_STUB
}

// One entry for each line of the list, in its order.
struct sve_stub_kernel {
    typedef void (*code)();
    const char* family;  // the list's family tag: MEMORY, ARITH, FP, ...
    const char* name;
    const char* shape;   // the shape's name: "ZPZ", "ZPI_FP", ...
    code body;           // the stub's own code
    code symbol;         // what the exported name resolves to: `body`, or a real kernel
};
extern const sve_stub_kernel sve_stub_kernels[];
extern const size_t sve_stub_kernel_count;
