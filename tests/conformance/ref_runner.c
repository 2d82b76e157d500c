/* Reference runner: executes each case's instruction on a CPU that has SVE
 * (in practice qemu-aarch64 -cpu max,sve512=on,sve-default-vector-length=64)
 * and writes the resulting state. What it computes is the truth the
 * conformance comparison holds our core to.
 *
 * Reads conf_case records on stdin until end of file, writes one conf_result
 * (plus its changed DATA bytes) per case on stdout, each with one write(2) so
 * that a runner that dies leaves every finished result behind it: the driver
 * then knows which case killed it.
 */
#define _GNU_SOURCE
#include <errno.h>
#include <setjmp.h>
#include <signal.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "conf_format.h"
#include "conf_offsets.h"

_Static_assert(offsetof(struct conf_state, x) == ST_X, "x");
_Static_assert(offsetof(struct conf_state, sp) == ST_SP, "sp");
_Static_assert(offsetof(struct conf_state, nzcv) == ST_NZCV, "nzcv");
_Static_assert(offsetof(struct conf_state, fpcr) == ST_FPCR, "fpcr");
_Static_assert(offsetof(struct conf_state, fpsr) == ST_FPSR, "fpsr");
_Static_assert(offsetof(struct conf_state, z) == ST_Z, "z");
_Static_assert(offsetof(struct conf_state, p) == ST_P, "p");
_Static_assert(offsetof(struct conf_state, ffr) == ST_FFR, "ffr");

/* Shared with ref_runner_exec.S. */
struct conf_state conf_in __attribute__((aligned(64)));
struct conf_state conf_out __attribute__((aligned(64)));
uint64_t conf_saved[SAVED_WORDS] __attribute__((aligned(16)));
extern void conf_run_one(void);
extern uint32_t conf_slot;

static sigjmp_buf case_jb;
static volatile sig_atomic_t caught_signal;
/* The few memory images the cases ask for, each built once. */
static struct {
    uint64_t seed;
    int valid;
    uint8_t bytes[CONF_DATA_SIZE];
} images[8];
static const uint8_t* image_for(uint64_t seed) {
    __typeof__(images[0])* im = &images[seed % 8];
    if (!im->valid || im->seed != seed) {
        conf_fill_memory(im->bytes, CONF_DATA_SIZE, seed);
        im->seed = seed;
        im->valid = 1;
    }
    return im->bytes;
}

static void die(const char* what) {
    fprintf(stderr, "ref_runner: %s: %s\n", what, strerror(errno));
    exit(2);
}

static void on_signal(int sig, siginfo_t* info, void* uc) {
    (void)info;
    (void)uc;
    /* The instruction may have left TPIDR_EL0 holding a case register if the
     * signal came after the slot; the C library needs its own back first. */
    __asm__ volatile("msr tpidr_el0, %0" ::"r"(conf_saved[SAVED_TPIDR / 8]));
    caught_signal = sig;
    siglongjmp(case_jb, 1);
}

static void install_handlers(void) {
    static uint8_t altstack[1 << 16] __attribute__((aligned(16)));
    stack_t ss = {.ss_sp = altstack, .ss_size = sizeof altstack, .ss_flags = 0};
    /* SP belongs to the case, so handlers must not run on it. */
    if (sigaltstack(&ss, NULL) != 0) die("sigaltstack");
    const int sigs[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGTRAP, SIGALRM, SIGSYS};
    for (size_t i = 0; i < sizeof sigs / sizeof sigs[0]; ++i) {
        struct sigaction sa;
        memset(&sa, 0, sizeof sa);
        sa.sa_sigaction = on_signal;
        sa.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
        sigemptyset(&sa.sa_mask);
        if (sigaction(sigs[i], &sa, NULL) != 0) die("sigaction");
    }
}

static void map_area(void) {
    void* want = (void*)(uintptr_t)CONF_RESERVE_BASE;
    void* got = mmap(want, CONF_RESERVE_SIZE, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (got != want) die("mapping the data area at its fixed address");
    if (mprotect((void*)(uintptr_t)CONF_RO_BASE, CONF_RO_SIZE, PROT_READ | PROT_WRITE) != 0) die("mprotect");
    conf_fill_memory((uint8_t*)(uintptr_t)CONF_RO_BASE, CONF_RO_SIZE, CONF_RO_SEED);
    if (mprotect((void*)(uintptr_t)CONF_RO_BASE, CONF_RO_SIZE, PROT_READ) != 0) die("mprotect");
    if (mprotect((void*)(uintptr_t)CONF_DATA_BASE, CONF_DATA_SIZE, PROT_READ | PROT_WRITE) != 0) die("mprotect");
}

static void write_all(const void* buf, size_t n) {
    const uint8_t* p = (const uint8_t*)buf;
    while (n > 0) {
        ssize_t k = write(1, p, n);
        if (k < 0 && errno == EINTR) continue;
        if (k <= 0) die("write");
        p += k;
        n -= (size_t)k;
    }
}

int main(void) {
    uint64_t vl;
    __asm__ volatile("rdvl %0, #1" : "=r"(vl));
    if (vl != 64) {
        fprintf(stderr, "ref_runner: vector length is %llu bytes, the cases are for 64\n", (unsigned long long)vl);
        return 2;
    }
    long pg = sysconf(_SC_PAGESIZE);
    if (pg != (long)CONF_PAGE) {
        fprintf(stderr, "ref_runner: page size %ld, the data area is laid out for %u\n", pg, CONF_PAGE);
        return 2;
    }
    uintptr_t code = (uintptr_t)&conf_slot;
    if (code & (CONF_PAGE - 1)) {
        fprintf(stderr, "ref_runner: the instruction slot is not at the start of a page\n");
        return 2;
    }
    if (mprotect((void*)code, CONF_PAGE, PROT_READ | PROT_WRITE | PROT_EXEC) != 0) die("mprotect slot page");
    map_area();
    install_handlers();

    uint8_t* data = (uint8_t*)(uintptr_t)CONF_DATA_BASE;
    uint64_t current_seed = 0;
    int data_valid = 0;
    static struct conf_case c;
    static struct {
        struct conf_result r;
        uint32_t mem[CONF_DATA_SIZE];
    } out;

    for (;;) {
        size_t got = fread(&c, 1, sizeof c, stdin);
        if (got == 0) break;
        if (got != sizeof c || c.magic != CONF_CASE_MAGIC) {
            fprintf(stderr, "ref_runner: malformed case record\n");
            return 2;
        }
        const uint8_t* pristine = image_for(c.mem_seed);
        if (!data_valid || c.mem_seed != current_seed) {
            memcpy(data, pristine, CONF_DATA_SIZE);
            current_seed = c.mem_seed;
            data_valid = 1;
        }

        conf_slot = c.word;
        __builtin___clear_cache((char*)&conf_slot, (char*)(&conf_slot + 1));
        conf_in = c.st;

        memset(&out.r, 0, sizeof out.r);
        out.r.magic = CONF_RESULT_MAGIC;
        out.r.seed = c.seed;
        out.r.rc = CONF_RC_OK;
        out.r.row = CONF_NO_ROW;
        caught_signal = 0;
        if (sigsetjmp(case_jb, 1) == 0) {
            alarm(5);
            conf_run_one();
            alarm(0);
            out.r.st = conf_out;
        } else {
            alarm(0);
            /* The jump restored the callee-saved registers and SP; FPCR and
             * FPSR may still hold the case's values. */
            __asm__ volatile("msr fpcr, %0\n\tmsr fpsr, %1" ::"r"(conf_saved[SAVED_FPCR / 8]),
                             "r"(conf_saved[SAVED_FPSR / 8]));
            out.r.signal = (uint32_t)caught_signal;
            out.r.st = c.st;
        }

        uint32_t n = 0;
        if (memcmp(data, pristine, CONF_DATA_SIZE) != 0) {
            for (uint32_t i = 0; i < CONF_DATA_SIZE; ++i)
                if (data[i] != pristine[i]) out.mem[n++] = i | (uint32_t)data[i] << 24;
            /* Back to the image for the next case that asks for this seed. */
            memcpy(data, pristine, CONF_DATA_SIZE);
        }
        out.r.nmem = n;
        write_all(&out, sizeof out.r + n * sizeof(uint32_t));
    }
    return 0;
}
