// A host of the emulation core that needs nothing but the dynamic loader:
// loaded with LD_PRELOAD into a program on an AArch64 processor without SVE,
// it takes the SIGILL that each SVE instruction raises, emulates the
// instruction on the thread's cpu_state, and resumes the program after it.
// The program's own signal handlers are looked after in app_signals.cpp.
//
// What the handler may and may not do. It runs in signal context, on the
// application's thread, at an SVE instruction of the application's code. The
// things on its path, and why each is acceptable:
//
// - The per-thread cpu_state, decode cache and alternate stack come from one
//   mmap per thread, claimed and recycled with atomics (below): no malloc, no
//   lock. The alternate stack keeps our frames (the kernel's signal frame,
//   this handler, the deepest reference operation) off stacks the application
//   sized for itself.
// - is_sve walks the decode maps, which are read-only after load; the
//   per-thread cache in front of it is the thread's own.
// - The handlers and kernels touch only the cpu_state and the application's
//   memory. A fault there goes to the core's own SIGSEGV/SIGBUS handler, which
//   we leave unblocked for that reason. The readability probe of the
//   first-fault loads swaps the SIGSEGV action through our sigaction, whose
//   lock is taken with every signal blocked and held for a few stores only.
// - update_sve_stats takes a std::mutex and, on the first execution at an
//   address, allocates a map node with operator new. Neither is
//   async-signal-safe. The mutex can only deadlock if the interrupted code
//   holds it already, and it is only ever held inside this handler, which
//   blocks every asynchronous signal while it runs (sa_mask), so no handler
//   of the application can come in between. The allocation can only deadlock
//   if the interrupted code is inside malloc itself; SIGILL is synchronous,
//   so that would take an SVE instruction inside the allocator, or in an
//   asynchronous handler of the application that interrupted the allocator.
//   The C library picks its non-SVE routines on a processor without SVE. An
//   application whose allocator runs SVE code, or whose asynchronous handler
//   interrupts malloc and then runs an SVE instruction at an address never
//   executed before, can deadlock here; that is accepted, for the price of
//   the alternative (an allocation-free table in the core's statistics).
// - The core's thread-locals (the readability probe's flag) use the
//   general-dynamic TLS model; for a library loaded at start-up that resolves
//   to the static TLS block without allocating.
//
// Messages from the handler are formatted by hand and written with write(2),
// so that no stdio lock is taken there.
#include <errno.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "hosts/preload/preload.h"
#include "sve/core/decode.h"

namespace {

// Room for the signal frame the kernel pushes (about 4.5 KB without SVE
// state), this handler and the deepest reference operation of the core.
constexpr size_t kAltStackBytes = 64 * 1024;
constexpr uint64_t kNzcvMask = 0xf0000000u;

// One per thread that has executed an SVE instruction. Never unmapped: a
// thread's slot is recycled once the thread is gone, so the number of
// mappings is the largest number of such threads alive at once.
// The DynamoRIO client decodes a word once, when it rewrites the block; here
// every execution arrives as a new signal, and walking the 44 decode maps each
// time would cost more than the emulation itself. So each thread remembers the
// handler of the addresses it has met, checked against the word found there,
// so that code written at run time is decoded afresh.
constexpr unsigned kDecodeCacheEntries = 1024;
struct decode_entry {
    const unsigned* pc;
    unsigned word;
    sve_handler handler;
};

struct thread_slot {
    cpu_state state;
    std::atomic<pid_t> owner;  // thread id, 0 when free
    thread_slot* next;         // list of every slot, only ever pushed
    void* altstack;
    decode_entry decoded[kDecodeCacheEntries];
};

std::atomic<thread_slot*> all_slots{nullptr};

// initial-exec: reaching it is one load from the thread pointer, with no call
// into the dynamic loader that might allocate.
__thread thread_slot* my_slot __attribute__((tls_model("initial-exec")));

size_t page_bytes = 4096;

pid_t current_tid() { return static_cast<pid_t>(syscall(SYS_gettid)); }

bool thread_gone(pid_t tid) {
    return syscall(SYS_tgkill, getpid(), tid, 0) == -1 && errno == ESRCH;
}

// Takes a slot for the calling thread: a free one, one whose thread has
// exited (its id no longer names a thread of this process), or a fresh
// mapping. Only atomics and system calls, so it is safe in the handler.
thread_slot* claim_slot() {
    pid_t me = current_tid();
    thread_slot* slot = nullptr;
    for (thread_slot* s = all_slots.load(std::memory_order_acquire); s != nullptr && slot == nullptr; s = s->next) {
        pid_t owner = s->owner.load(std::memory_order_relaxed);
        // A slot that bears our own id belongs to an exited thread whose id
        // was given to us: we have no slot yet.
        if (owner == 0 || owner == me || thread_gone(owner)) {
            if (s->owner.compare_exchange_strong(owner, me)) slot = s;
        }
    }
    if (slot == nullptr) {
        // [guard page][alternate stack][slot], the slot rounded up to pages.
        size_t slot_bytes = (sizeof(thread_slot) + page_bytes - 1) & ~(page_bytes - 1);
        size_t total = page_bytes + kAltStackBytes + slot_bytes;
        void* m = mmap(nullptr, total, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED) return nullptr;
        char* base = static_cast<char*>(m);
        mprotect(base, page_bytes, PROT_NONE);
        slot = reinterpret_cast<thread_slot*>(base + page_bytes + kAltStackBytes);
        slot->altstack = base + page_bytes;
        slot->owner.store(me);
        thread_slot* head = all_slots.load(std::memory_order_relaxed);
        do {
            slot->next = head;
        } while (!all_slots.compare_exchange_weak(head, slot, std::memory_order_release, std::memory_order_relaxed));
    }
    // A new thread starts with clear SVE state, which makes runs repeatable.
    memset(&slot->state, 0, sizeof slot->state);
    memset(slot->decoded, 0, sizeof slot->decoded);
    // Later SIGILLs of this thread run on our stack, unless the application
    // gave the thread one of its own, which we leave in place.
    stack_t cur;
    if (sigaltstack(nullptr, &cur) == 0 && (cur.ss_flags & SS_DISABLE)) {
        stack_t ours = {};
        ours.ss_sp = slot->altstack;
        ours.ss_size = kAltStackBytes;
        sigaltstack(&ours, nullptr);
    }
    return slot;
}

// After fork the child's only thread keeps its slot pointer; the slot must
// bear the child's thread id, or another thread of the child would take it
// for the slot of an exited thread.
void after_fork_in_child() {
    if (my_slot != nullptr) my_slot->owner.store(current_tid());
}

// --- messages from signal context -----------------------------------------

struct line_buf {
    char text[256];
    size_t len = 0;
    void str(const char* s) {
        while (*s && len < sizeof text) text[len++] = *s++;
    }
    void hex(uint64_t v, int min_digits) {
        char d[16];
        int n = 0;
        do {
            d[n++] = "0123456789abcdef"[v & 15];
            v >>= 4;
        } while (v != 0 || n < min_digits);
        while (n > 0 && len < sizeof text) text[len++] = d[--n];
    }
    // As printf's %p prints it.
    void ptr(const void* p) {
        if (p == nullptr) {
            str("(nil)");
            return;
        }
        str("0x");
        hex(reinterpret_cast<uintptr_t>(p), 1);
    }
    void flush() {
        size_t done = 0;
        while (done < len) {
            ssize_t n = write(STDERR_FILENO, text + done, len - done);
            if (n <= 0) {
                if (n < 0 && errno == EINTR) continue;
                break;
            }
            done += static_cast<size_t>(n);
        }
    }
};

// The top-level encoding group of SVE: bits 28..25 = 0010.
bool in_sve_space(uint32_t word) { return (word >> 25 & 0xf) == 0x2; }

// Hand the signal back, as the processor would: to the application's own
// SIGILL handler if it has one; otherwise the instruction runs again and meets
// the default action, so the application dies of SIGILL as it would without
// this library.
void pass_on(const char* why, uint32_t word, const void* pc, siginfo_t* info, void* context) {
    if (why != nullptr) {
        line_buf b;
        b.str("libsve_trap_512: ");
        b.str(why);
        b.str(" 0x");
        b.hex(word, 8);
        b.str(" at PC ");
        b.ptr(pc);
        b.str(", the program receives SIGILL\n");
        b.flush();
    }
    if (preload_deliver_app_sigill(SIGILL, info, context)) return;
    preload_default_sigill();
    // Sent with kill or raise: returning would not raise it again, so send
    // it once more; it stays pending until this handler returns.
    if (info->si_code <= 0) raise(SIGILL);
}

fpsimd_context* find_fpsimd(mcontext_t* mc) {
    unsigned char* p = mc->__reserved;
    unsigned char* end = p + sizeof mc->__reserved;
    while (p + sizeof(_aarch64_ctx) <= end) {
        _aarch64_ctx* head = reinterpret_cast<_aarch64_ctx*>(p);
        if (head->magic == 0 || head->size < sizeof(_aarch64_ctx)) break;
        if (head->magic == FPSIMD_MAGIC) return reinterpret_cast<fpsimd_context*>(head);
        p += head->size;
    }
    return nullptr;
}

void on_sigill(int, siginfo_t* info, void* context) {
    int saved_errno = errno;
    ucontext_t* uc = static_cast<ucontext_t*>(context);
    mcontext_t* mc = &uc->uc_mcontext;
    unsigned* pc = reinterpret_cast<unsigned*>(mc->pc);

    // Sent with kill or raise: not an instruction of ours to emulate.
    if (info->si_code <= 0) {
        pass_on(nullptr, 0, pc, info, context);
        errno = saved_errno;
        return;
    }
    unsigned word = *pc;
    thread_slot* slot = my_slot;
    decode_entry* cached = nullptr;
    sve_handler handler = nullptr;
    if (slot != nullptr) {
        cached = &slot->decoded[(reinterpret_cast<uintptr_t>(pc) >> 2) % kDecodeCacheEntries];
        if (cached->pc == pc && cached->word == word) handler = cached->handler;
    }
    if (handler == nullptr) {
        handler = is_sve(word);
        if (cached != nullptr && handler != nullptr) *cached = {pc, word, handler};
    }
    fpsimd_context* fp = find_fpsimd(mc);
    if (handler != nullptr && fp != nullptr && slot == nullptr) slot = my_slot = claim_slot();
    if (handler == nullptr || fp == nullptr || slot == nullptr) {
        const char* why = nullptr;
        if (handler == nullptr)
            why = in_sve_space(word) ? "no emulation for SVE instruction" : nullptr;
        else if (fp == nullptr)
            why = "no FP/SIMD record in the signal frame for instruction";
        else
            why = "no memory for the register file of this thread at instruction";
        pass_on(why, word, pc, info, context);
        errno = saved_errno;
        return;
    }

    cpu_state* s = &slot->state;
    memcpy(s->x, mc->regs, 31 * sizeof(uint64_t));
    s->x[31] = mc->sp;
    s->pc = pc;
    s->nzcv = mc->pstate & kNzcvMask;
    s->fpsr = fp->fpsr;
    s->fpcr = fp->fpcr;
    for (unsigned n = 0; n < SVE_NUM_Z; ++n) memcpy(s->z[n], &fp->vregs[n], 16);

    // The same steps as the DynamoRIO client's emulation call.
    aarch64_decode_rc rc = handler(s, word);
    if (rc != DECODE_OK) {
        line_buf b;
        b.str("Error: failed to emulate SVE instruction 0x");
        b.hex(*pc, 8);  // read afresh, as the message shows memory as it is now
        b.str(" at PC ");
        b.ptr(pc);
        b.str("\n");
        b.flush();
    } else {
        update_sve_stats(pc, word);
    }

    memcpy(mc->regs, s->x, 31 * sizeof(uint64_t));
    mc->sp = s->x[31];
    mc->pstate = (mc->pstate & ~kNzcvMask) | (s->nzcv & kNzcvMask);
    fp->fpsr = s->fpsr;
    fp->fpcr = s->fpcr;
    for (unsigned n = 0; n < SVE_NUM_Z; ++n) memcpy(&fp->vregs[n], s->z[n], 16);
    mc->pc = reinterpret_cast<uint64_t>(pc + 1);
    errno = saved_errno;
}

__attribute__((constructor)) void install() {
    long pg = sysconf(_SC_PAGESIZE);
    if (pg > 0) page_bytes = static_cast<size_t>(pg);
    pthread_atfork(nullptr, nullptr, after_fork_in_child);

    struct sigaction sa = {};
    sa.sa_sigaction = on_sigill;
    sa.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    // Block every asynchronous signal while we emulate (see the top of this
    // file), but not the synchronous ones: a fault inside an emulated memory
    // access must reach the core's SIGSEGV/SIGBUS handler.
    sigfillset(&sa.sa_mask);
    sigdelset(&sa.sa_mask, SIGSEGV);
    sigdelset(&sa.sa_mask, SIGBUS);
    sigdelset(&sa.sa_mask, SIGFPE);
    sigdelset(&sa.sa_mask, SIGTRAP);
    preload_take_sigill(sa);
}

// The DynamoRIO client's report names the main module; its base name here is
// that of /proc/self/exe.
const char* program_name(char* buf, size_t size) {
    ssize_t n = readlink("/proc/self/exe", buf, size - 1);
    if (n <= 0) return program_invocation_short_name;
    buf[n] = '\0';
    const char* slash = strrchr(buf, '/');
    return slash ? slash + 1 : buf;
}

__attribute__((destructor)) void report() {
    char path[PATH_MAX];
    const char* name = program_name(path, sizeof path);
    fprintf(stderr, "%s: %lu SVE instructions executed\n", name, static_cast<unsigned long>(sve_instr_count_read()));
    // Without rewriting the program's code there is nothing that sees the
    // other instructions go by, and a made-up number would mislead.
    fprintf(stderr, "%s: non-SVE AArch64 instructions are not counted by this host\n", name);
    fflush(stderr);
}

}  // namespace

cpu_state* preload_thread_state() { return my_slot != nullptr ? &my_slot->state : nullptr; }
