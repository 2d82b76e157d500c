// The application's signal handlers, and the SVE state they must not disturb.
//
// On an SVE processor the kernel saves the whole SVE state of the interrupted
// code in the signal frame and restores it at sigreturn, so a handler may use
// SVE freely. Here the kernel saves only what the processor has: X, the low
// 128 bits of each vector register, and the flags. The upper 48 bytes of each
// Z register, the predicates and FFR live in the thread's cpu_state, and a
// handler that runs SVE code would overwrite them under the feet of the code
// it interrupted. So every handler the application installs is called through
// a trampoline that keeps a copy of that state on its own stack frame (as the
// kernel of an SVE machine does in the signal frame) and puts it back when
// the handler returns. A handler that leaves by longjmp does not come back
// through the trampoline, and the state it leaves is what it made, as on the
// processor, where only sigreturn restores.
//
// For that, this library stands in front of the C library's sigaction and of
// the signal() family, records the action the application asked for, and
// gives the kernel the trampoline instead; a query returns the recorded
// action, so the application sees what it installed. SIGILL is different: the
// kernel keeps our emulation handler for good, and the application's SIGILL
// action only receives the SIGILLs that are not SVE instructions.
//
// The core installs its SIGSEGV/SIGBUS handler through the same sigaction; it
// is wrapped like any other, which costs one copy per fault and changes
// nothing for it. Not covered: sigset() and raw rt_sigaction system calls,
// which go past these entry points.
#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstring>

#include "hosts/preload/preload.h"
#include "sve/core/cpu_state.h"

namespace {

typedef int (*sigaction_fn)(int, const struct sigaction*, struct sigaction*);
// Everything here is constant-initialised (constinit): the core's load-time
// initialiser calls our sigaction before this file's own initialisers would
// run, and must find the table already in its final, zeroed state.
constinit std::atomic<sigaction_fn> real_sigaction_fn{nullptr};

// The action the application asked for, per signal.
struct app_action {
    std::atomic<uintptr_t> handler{0};  // sa_handler or sa_sigaction, as given
    std::atomic<int> flags{0};
    sigset_t mask{};
    bool known = false;  // recorded from the application or taken from the kernel
};
constinit app_action actions[NSIG];

// Guards `actions` against concurrent sigaction calls. Held with every signal
// blocked, so that a handler calling sigaction cannot interrupt its holder on
// the same thread.
constinit std::atomic_flag actions_lock = ATOMIC_FLAG_INIT;

sigaction_fn real_fn() {
    sigaction_fn f = real_sigaction_fn.load(std::memory_order_acquire);
    if (f == nullptr) {
        // First use comes from the load-time initialisers (the core installs
        // its fault handler then), never from a signal handler.
        f = reinterpret_cast<sigaction_fn>(dlsym(RTLD_NEXT, "sigaction"));
        if (f == nullptr) {
            static const char msg[] = "libsve_trap_512: cannot find the C library's sigaction\n";
            ssize_t ignored = write(STDERR_FILENO, msg, sizeof msg - 1);
            (void)ignored;
            _exit(127);
        }
        real_sigaction_fn.store(f, std::memory_order_release);
    }
    return f;
}

// The part of the SVE state that the processor does not hold.
struct sve_upper_state {
    uint8_t z[SVE_NUM_Z][SVE_VL_BYTES - 16];
    uint8_t p[SVE_NUM_P][SVE_VL_BYTES];
    uint8_t ffr[SVE_VL_BYTES];
};

void save_upper(sve_upper_state* to, const cpu_state* s) {
    for (unsigned n = 0; n < SVE_NUM_Z; ++n) memcpy(to->z[n], s->z[n] + 16, sizeof to->z[n]);
    memcpy(to->p, s->p, sizeof to->p);
    memcpy(to->ffr, s->ffr, sizeof to->ffr);
}

void restore_upper(cpu_state* s, const sve_upper_state* from) {
    for (unsigned n = 0; n < SVE_NUM_Z; ++n) memcpy(s->z[n] + 16, from->z[n], sizeof from->z[n]);
    memcpy(s->p, from->p, sizeof from->p);
    memcpy(s->ffr, from->ffr, sizeof from->ffr);
}

bool is_handler(uintptr_t h) {
    return h != reinterpret_cast<uintptr_t>(SIG_DFL) && h != reinterpret_cast<uintptr_t>(SIG_IGN);
}

// Calls the application's handler for `sig` with the SVE state of the
// interrupted code kept aside. False when there is no handler to call.
bool call_app_handler(int sig, siginfo_t* info, void* context) {
    app_action& a = actions[sig];
    uintptr_t h = a.handler.load(std::memory_order_acquire);
    int flags = a.flags.load(std::memory_order_relaxed);
    if (!is_handler(h)) return false;
    // The kernel has reset the action already; the record follows.
    if (flags & SA_RESETHAND) a.handler.store(reinterpret_cast<uintptr_t>(SIG_DFL), std::memory_order_release);

    cpu_state* s = preload_thread_state();
    sve_upper_state saved;
    if (s != nullptr) save_upper(&saved, s);
    if (flags & SA_SIGINFO)
        reinterpret_cast<void (*)(int, siginfo_t*, void*)>(h)(sig, info, context);
    else
        reinterpret_cast<void (*)(int)>(h)(sig);
    // A thread that had no SVE state before the handler has none to get back.
    if (s != nullptr) restore_upper(s, &saved);
    return true;
}

void trampoline(int sig, siginfo_t* info, void* context) {
    if (!call_app_handler(sig, info, context)) {
        // The application changed the action while this signal was on its
        // way; what it asked for now is not a handler, and there is nothing
        // that could sensibly be run.
    }
}

struct locked {
    sigset_t old_mask;
    locked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &old_mask);
        while (actions_lock.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~locked() {
        actions_lock.clear(std::memory_order_release);
        pthread_sigmask(SIG_SETMASK, &old_mask, nullptr);
    }
};

void record(app_action& a, const struct sigaction& act) {
    a.handler.store(act.sa_flags & SA_SIGINFO ? reinterpret_cast<uintptr_t>(act.sa_sigaction)
                                              : reinterpret_cast<uintptr_t>(act.sa_handler),
                    std::memory_order_release);
    a.flags.store(act.sa_flags, std::memory_order_relaxed);
    a.mask = act.sa_mask;
    a.known = true;
}

void report(const app_action& a, struct sigaction* out) {
    memset(out, 0, sizeof *out);
    int flags = a.flags.load(std::memory_order_relaxed);
    uintptr_t h = a.handler.load(std::memory_order_acquire);
    if (flags & SA_SIGINFO)
        out->sa_sigaction = reinterpret_cast<void (*)(int, siginfo_t*, void*)>(h);
    else
        out->sa_handler = reinterpret_cast<void (*)(int)>(h);
    out->sa_flags = flags;
    out->sa_mask = a.mask;
}

}  // namespace

int preload_real_sigaction(int sig, const struct sigaction* act, struct sigaction* old) {
    return real_fn()(sig, act, old);
}

bool preload_deliver_app_sigill(int sig, siginfo_t* info, void* context) {
    return call_app_handler(sig, info, context);
}

void preload_take_sigill(const struct sigaction& ours) {
    locked guard;
    struct sigaction before;
    if (real_fn()(SIGILL, &ours, &before) != 0) return;
    // What was there is the application's, as far as it will ever see.
    if (!actions[SIGILL].known) record(actions[SIGILL], before);
}

void preload_default_sigill() {
    locked guard;
    struct sigaction dfl;
    memset(&dfl, 0, sizeof dfl);
    dfl.sa_handler = SIG_DFL;
    sigemptyset(&dfl.sa_mask);
    real_fn()(SIGILL, &dfl, nullptr);
}

extern "C" int sigaction(int sig, const struct sigaction* act, struct sigaction* old) noexcept {
    if (sig <= 0 || sig >= NSIG || sig == SIGKILL || sig == SIGSTOP) return real_fn()(sig, act, old);
    locked guard;
    app_action& a = actions[sig];
    if (!a.known) {
        // Whatever the kernel has now was set before we were asked: the
        // default, or what our own start-up put there (SIGILL).
        struct sigaction current;
        if (real_fn()(sig, nullptr, &current) != 0) return -1;
        record(a, current);
    }
    struct sigaction before;
    report(a, &before);
    if (act != nullptr) {
        bool handler = (act->sa_flags & SA_SIGINFO) ? is_handler(reinterpret_cast<uintptr_t>(act->sa_sigaction))
                                                    : is_handler(reinterpret_cast<uintptr_t>(act->sa_handler));
        // SIGILL stays with the emulation; the record alone changes.
        if (sig != SIGILL) {
            struct sigaction k = *act;
            if (handler) {
                k.sa_sigaction = trampoline;
                k.sa_flags |= SA_SIGINFO;
            }
            if (real_fn()(sig, &k, nullptr) != 0) return -1;
        }
        record(a, *act);
    }
    if (old != nullptr) *old = before;
    return 0;
}

namespace {
sighandler_t set_handler(int sig, sighandler_t h, int flags, bool mask_self) {
    struct sigaction act, old;
    memset(&act, 0, sizeof act);
    act.sa_handler = h;
    sigemptyset(&act.sa_mask);
    if (mask_self && sig > 0 && sig < NSIG) sigaddset(&act.sa_mask, sig);
    act.sa_flags = flags;
    if (sigaction(sig, &act, &old) != 0) return SIG_ERR;
    return old.sa_handler;
}
}  // namespace

// BSD semantics, as the C library gives signal(): the handler stays, the
// signal is blocked while it runs, and system calls restart.
extern "C" sighandler_t signal(int sig, sighandler_t h) noexcept { return set_handler(sig, h, SA_RESTART, true); }
extern "C" sighandler_t bsd_signal(int sig, sighandler_t h) noexcept { return set_handler(sig, h, SA_RESTART, true); }
// System V semantics: one delivery, then the default; the signal not blocked.
extern "C" sighandler_t sysv_signal(int sig, sighandler_t h) noexcept {
    return set_handler(sig, h, SA_RESETHAND | SA_NODEFER, false);
}
extern "C" sighandler_t __sysv_signal(int sig, sighandler_t h) noexcept {
    return set_handler(sig, h, SA_RESETHAND | SA_NODEFER, false);
}
