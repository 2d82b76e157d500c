// The stub kernels of stub_kernels.def: one message for all, one body each.
#include "sve/core/stub_kernels.h"

#include <cstdint>
#include <cstdio>

namespace {

// The word comes from cpu_state.instruction, which the kernel route stores
// before its call, so the line names the instruction that got here.
__attribute__((noinline)) aarch64_decode_rc unimplemented_kernel(const cpu_state* s, const char* name) {
    fprintf(stderr, "Unimplemented instruction: [  %tx:\t %08x\t %s  ]\n",
            static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(s->pc)), static_cast<unsigned>(s->instruction), name);
    return DECODE_UNKNOWN;
}

// Each body is local, under the assembler name "<name>.stub", so that the
// table below keeps its address even when a real kernel takes the exported
// name.
#define SVE_STUB(family, name, shape)                                                              \
    aarch64_decode_rc name##_stub(cpu_state* s, SVE_STUB_SHAPE_##shape) __asm__(#name ".stub");   \
    aarch64_decode_rc name##_stub(cpu_state* s, SVE_STUB_SHAPE_##shape) { return unimplemented_kernel(s, #name); }
#include "sve/core/stub_kernels.def"
#undef SVE_STUB

}  // namespace

// The exported names.
#define SVE_STUB(family, name, shape) \
    extern "C" __attribute__((weak, alias(#name ".stub"))) aarch64_decode_rc name(cpu_state*, SVE_STUB_SHAPE_##shape);
#include "sve/core/stub_kernels.def"
#undef SVE_STUB

const sve_stub_kernel sve_stub_kernels[] = {
#define SVE_STUB(family, name, shape)                                                          \
    {#family, #name, #shape, reinterpret_cast<sve_stub_kernel::code>(&name##_stub),          \
     reinterpret_cast<sve_stub_kernel::code>(&name)},
#include "sve/core/stub_kernels.def"
#undef SVE_STUB
};
const size_t sve_stub_kernel_count = sizeof(sve_stub_kernels) / sizeof(sve_stub_kernels[0]);
