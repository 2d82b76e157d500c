// Process signals: one handler for SIGSEGV and SIGBUS that tells a fault
// inside a guarded read (which returns to the reader) from a fault of the
// application (which ends the process as it would without us).
#include <csetjmp>
#include <csignal>
#include <cstdio>

#include "sve/core/decode.h"
#include "sve/memory/memory.h"

namespace {
int SVELibInitialized = 0;
constexpr int kSigFlags = SA_SIGINFO | SA_RESTART | SA_NODEFER;  // 0x50000004
}  // namespace

// Process-wide, deliberately: guarded reads are assumed not to overlap between
// threads. Two threads inside a guarded read at once would overwrite each
// other's jump buffer; nothing serialises memory instructions.
volatile int SVEFaultRegion = 0;
sigjmp_buf sveFaultJB;

// SA_NODEFER leaves the signal unblocked inside the handler, so a fault while
// printing is delivered too rather than hanging the thread. A fault of the
// application's own is never handed on to a handler of the application: these
// settings replace its handlers, and the process dies as it would have
// without us.
extern "C" void SVESigHandler(int signal, siginfo_t*, void*) {
    if (SVEFaultRegion) {
        // A guarded read: back to its __sigsetjmp, which reports the fault.
        SVEFaultRegion = 0;
        siglongjmp(sveFaultJB, 1);
    }
    struct sigaction dfl = {};
    dfl.sa_handler = SIG_DFL;
    sigemptyset(&dfl.sa_mask);
    dfl.sa_flags = kSigFlags;
    sigaction(SIGSEGV, &dfl, nullptr);
    sigaction(SIGBUS, &dfl, nullptr);
    fprintf(stderr,
            "tarn's SVESigHandler caught signal %s from the process being emulated, passing it to the default "
            "signal handler.\n",
            signal == SIGSEGV ? "SIGSEGV" : "SIGBUS");
    fflush(stderr);
    // Returning re-runs the faulting access, which now meets the default action.
}

extern "C" int SVEInitialize() {
    if (SVELibInitialized) return SVELibInitialized;
    sve_reference_context_init();
    struct sigaction sa = {};
    sa.sa_sigaction = SVESigHandler;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = kSigFlags;
    sigaction(SIGSEGV, &sa, nullptr);
    sigaction(SIGBUS, &sa, nullptr);
    SVELibInitialized = 1;
    return 1;
}
