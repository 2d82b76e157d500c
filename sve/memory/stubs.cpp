// The unimplemented-kernel diagnostic, and the stubs of the memory family,
// one for each name of stubs.def.
#include "sve/memory/stubs.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

aarch64_decode_rc unimplemented_kernel(const cpu_state* s, const char* name) {
    fprintf(stderr, "Unimplemented instruction: [  %tx:\t %08x\t %s  ]\n",
            static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(s->pc)), static_cast<unsigned>(s->instruction), name);
    return DECODE_UNKNOWN;
}

#define SVE_STUB(name, shape) SVE_STUB_KERNEL(name, SVE_STUB_SHAPE_##shape)
#include "sve/memory/stubs.def"
#undef SVE_STUB
