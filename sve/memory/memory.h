// Memory primitives shared by the memory kernels and reference operations.
//
// Every emulated access uses the application's address as it stands: there is
// no translation and no permission model here. A fault of the application's
// own ends the process through SVESigHandler; only the guarded reads and the
// readability probe come back from a fault.
#pragma once

#include <csetjmp>
#include <csignal>
#include <cstdint>

struct CpuContext;

// Non-zero only while a guarded read touches the application's memory;
// SVESigHandler then jumps back to sveFaultJB instead of ending the process.
// Both are single process-wide objects (see memory_lib.cpp for why that is
// accepted).
extern volatile int SVEFaultRegion;
extern sigjmp_buf sveFaultJB;
extern "C" void SVESigHandler(int signal, siginfo_t* info, void* context);

// Sets the global reference context (cpu_ctxt, ctxt) at load time.
void sve_reference_context_init();

// True when a one-byte read of `address` does not raise SIGSEGV. Only the
// instantiation for char exists.
template <typename T>
bool addr_is_readable(T volatile* address);
extern template bool addr_is_readable<char>(char volatile* address);

// Reads of 1, 2, 4 or 8 bytes, little-endian as the host reads them. With a
// null `fault` the read is plain and a fault ends the process; with a non-null
// `fault` a fault sets *fault and the read returns 0 (*fault is never
// cleared). `nonfault` and `context` are ignored.
uint64_t ReadMemLib1(unsigned long address, int nonfault, bool* fault, CpuContext* context);
uint64_t ReadMemLib2(unsigned long address, int nonfault, bool* fault, CpuContext* context);
uint64_t ReadMemLib4(unsigned long address, int nonfault, bool* fault, CpuContext* context);
uint64_t ReadMemLib8(unsigned long address, int nonfault, bool* fault, CpuContext* context);

// One store of the given width; no guarded form exists.
void WriteMemLib1(unsigned char value, unsigned long address, CpuContext* context);
void WriteMemLib2(unsigned short value, unsigned long address, CpuContext* context);
void WriteMemLib4(unsigned int value, unsigned long address, CpuContext* context);
void WriteMemLib8(unsigned long value, unsigned long address, CpuContext* context);

// The simulation interface, which does nothing in this build.
uint64_t ReadMem(unsigned long address, int size, int nonfault, bool* fault, CpuContext* context);
uint64_t ReadMemSim(unsigned long address, int size, int nonfault, bool* fault, bool sim, CpuContext* context);
void WriteMem(unsigned long value, unsigned long address, int size, CpuContext* context);
void WriteMemSim(unsigned long value, unsigned long address, int size, bool sim, CpuContext* context);
