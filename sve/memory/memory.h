// Memory primitives shared by the memory kernels and reference operations.
#pragma once

#include <csetjmp>
#include <csignal>
#include <cstdint>

extern volatile int SVEFaultRegion;
extern sigjmp_buf sveFaultJB;
extern "C" void SVESigHandler(int signal, siginfo_t* info, void* context);

// Sets the global reference context (cpu_ctxt, ctxt) at load time.
void sve_reference_context_init();
