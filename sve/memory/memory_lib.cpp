// Memory primitives: the readability probe, the guarded and plain reads of the
// reference operations, their writes, and the inert simulation entries.
//
// Races that are accepted here, process-wide:
//
// - addr_is_readable swaps the SIGSEGV disposition with two unlocked
//   sigaction calls. While one thread is between them, a SIGSEGV raised by any
//   other thread is taken for the probe's own: that thread's faulting load is
//   stepped over instead of ending the process. Two threads probing at once
//   can restore in the wrong order and leave the probe's handler installed in
//   place of SVESigHandler.
// - sveFaultJB and SVEFaultRegion are single objects with no lock and no
//   atomic access. Two threads inside guarded reads at once overwrite each
//   other's jump buffer, and a fault of one can land in the other's frame.
//
// Nothing in the system serialises memory instructions, and a lock here would
// have to be taken inside every emulated first-fault element. Probes and
// guarded reads are short and only first-fault and non-fault loads use them,
// so they are assumed not to overlap between threads.
#include <ucontext.h>

#include <csetjmp>
#include <csignal>
#include <cstdint>

#include "sve/memory/memory.h"
#include "sve/memory/mem_kernels.h"

namespace {

constexpr int kProbeFlags = SA_SIGINFO | SA_RESTART | SA_NODEFER;  // 0x50000004

// The probe's load must be exactly one instruction of a length the signal
// handler knows, so that it can resume the thread just after it.
#if defined(__aarch64__)
constexpr uintptr_t kProbeLoadLength = 4;
inline void probe_load(const volatile char* address) {
    uint32_t discard;
    asm volatile("ldrb %w0, [%1]" : "=r"(discard) : "r"(address) : "memory");
}
inline void step_over_probe(ucontext_t* uc) { uc->uc_mcontext.pc += kProbeLoadLength; }
#elif defined(__x86_64__)
// movb (%rdi), %al encodes as 8a 07. The registers are pinned so that no REX
// prefix, SIB byte or displacement can change the length; the assembler
// rejects the build if it ever differs.
constexpr uintptr_t kProbeLoadLength = 2;
inline void probe_load(const volatile char* address) {
    char discard;
    asm volatile(
        "0: movb (%1), %0\n\t"
        "1:\n\t"
        ".if 1b - 0b - 2\n\t"
        ".error \"probe load is not 2 bytes long\"\n\t"
        ".endif"
        : "=a"(discard)
        : "D"(address)
        : "memory");
}
inline void step_over_probe(ucontext_t* uc) { uc->uc_mcontext.gregs[REG_RIP] += kProbeLoadLength; }
#else
#error "addr_is_readable needs this host's load length and saved program counter"
#endif

template <typename T>
inline T load(unsigned long address) {
    // volatile keeps it one access of the full width, never split or merged.
    return mem_load<T>(address);
}

template <typename T>
inline void store(unsigned long address, T value) {
    mem_store<T>(address, value);
}

// A fault between SVEFaultRegion = 1 and = 0 comes back here through
// SVESigHandler's siglongjmp, with the signal mask as it was at the
// __sigsetjmp (SA_NODEFER leaves nothing blocked anyway, but the mask is saved
// so that a caller's own blocked signals survive the jump). The two touches
// test the element's first and last byte, which catches an element that
// straddles into an unreadable page; the value itself is then read outside
// the region with one load of the full width.
template <typename T>
uint64_t read_lib(unsigned long address, bool* fault) {
    if (fault == nullptr) return load<T>(address);
    if (__sigsetjmp(sveFaultJB, 1) != 0) {
        *fault = true;
        return 0;
    }
    SVEFaultRegion = 1;
    (void)load<uint8_t>(address);
    (void)load<uint8_t>(address + sizeof(T) - 1);
    SVEFaultRegion = 0;
    return load<T>(address);
}

}  // namespace

template <typename T>
bool addr_is_readable(T volatile* address) {
    // Thread-local so that the answer belongs to the probing thread even while
    // another thread probes; the handler runs on the thread that faulted.
    static thread_local volatile bool access_violation;
    // The address under probe, for a debugger stopped in the handler.
    [[maybe_unused]] static thread_local uint64_t access_violation_addr;

    struct sigaction probe = {};
    struct sigaction previous;
    // Any SIGSEGV while this is installed is taken for the probe's own: it is
    // not told apart by address, see the races above.
    probe.sa_sigaction = [](int, siginfo_t*, void* context) {
        access_violation = true;
        step_over_probe(static_cast<ucontext_t*>(context));
    };
    sigemptyset(&probe.sa_mask);
    probe.sa_flags = kProbeFlags;

    access_violation_addr = reinterpret_cast<uint64_t>(address);
    access_violation = false;
    // Only SIGSEGV is swapped: a SIGBUS of the probe still ends the process.
    sigaction(SIGSEGV, &probe, &previous);
    probe_load(reinterpret_cast<const volatile char*>(address));
    sigaction(SIGSEGV, &previous, nullptr);
    return access_violation ^ 1;
}

template bool addr_is_readable<char>(char volatile* address);

uint64_t ReadMemLib1(unsigned long address, int, bool* fault, CpuContext*) { return read_lib<uint8_t>(address, fault); }
uint64_t ReadMemLib2(unsigned long address, int, bool* fault, CpuContext*) { return read_lib<uint16_t>(address, fault); }
uint64_t ReadMemLib4(unsigned long address, int, bool* fault, CpuContext*) { return read_lib<uint32_t>(address, fault); }
uint64_t ReadMemLib8(unsigned long address, int, bool* fault, CpuContext*) { return read_lib<uint64_t>(address, fault); }

void WriteMemLib1(unsigned char value, unsigned long address, CpuContext*) { store(address, value); }
void WriteMemLib2(unsigned short value, unsigned long address, CpuContext*) { store(address, value); }
void WriteMemLib4(unsigned int value, unsigned long address, CpuContext*) { store(address, value); }
void WriteMemLib8(unsigned long value, unsigned long address, CpuContext*) { store(address, value); }

uint64_t ReadMem(unsigned long, int, int, bool* fault, CpuContext*) {
    *fault = false;
    return 0;
}
uint64_t ReadMemSim(unsigned long, int, int, bool* fault, bool, CpuContext*) {
    *fault = false;
    return 0;
}
void WriteMem(unsigned long, unsigned long, int, CpuContext*) {}
void WriteMemSim(unsigned long, unsigned long, int, bool, CpuContext*) {}
