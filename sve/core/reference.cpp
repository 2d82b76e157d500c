#include "sve/core/reference.h"

#include "sve/memory/memory.h"

CpuContext cpu_ctxt;
CpuContext* ctxt;

// The vl of 2 (128 bits) is what the load-time context has always held;
// every reference call builds its own context with the real length.
void sve_reference_context_init() {
    cpu_ctxt.vl = 2;
    ctxt = &cpu_ctxt;
}
