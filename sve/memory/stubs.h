// Kernel names without an implementation. Their instructions take the
// reference route, or do nothing, so no handler calls them; they exist so
// that the kernel family is complete by name, and say so if ever reached.
//
// A family keeps its own list of names and defines each with
// SVE_STUB_KERNEL(name, operand types after cpu_state*...), usually by
// including its list under a macro, as stubs.cpp does for the memory family.
// Before adding a name, make sure no real kernel of that name exists.
#pragma once

#include "sve/core/cpu_state.h"

// Prints "Unimplemented instruction: [  <pc>:\t <word>\t <name>  ]" on
// standard error, with the pc and the instruction word of `s`, and returns
// DECODE_UNKNOWN.
aarch64_decode_rc unimplemented_kernel(const cpu_state* s, const char* name);

#define SVE_STUB_KERNEL(name, ...) \
    extern "C" aarch64_decode_rc name(cpu_state* s, __VA_ARGS__) { return unimplemented_kernel(s, #name); }
#define SVE_STUB_DECLARE(name, ...) extern "C" aarch64_decode_rc name(cpu_state* s, __VA_ARGS__);

// Operand types of the shapes used by the memory family's list.
#define SVE_STUB_SHAPE_ZPRI aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, int
#define SVE_STUB_SHAPE_ZPRR aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_i_reg
#define SVE_STUB_SHAPE_ZPZI aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_ZPZR aarch64_z_reg, aarch64_p_reg, aarch64_z_reg, aarch64_i_rsp_reg
#define SVE_STUB_SHAPE_ZPRZ aarch64_z_reg, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_z_reg
#define SVE_STUB_SHAPE_IPRI unsigned, aarch64_p_reg, aarch64_i_rsp_reg, int
#define SVE_STUB_SHAPE_IPRR unsigned, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_i_reg
#define SVE_STUB_SHAPE_IPZI unsigned, aarch64_p_reg, aarch64_z_reg, unsigned
#define SVE_STUB_SHAPE_IPRZ unsigned, aarch64_p_reg, aarch64_i_rsp_reg, aarch64_z_reg
