// A program with SIGILL handling of its own, as libraries that probe the
// processor have: it installs a SIGILL handler, tries an instruction the
// processor may lack, and jumps back out of the handler. Then it runs SVE
// code, and a handler installed with signal() that runs SVE code too.
#include <setjmp.h>
#include <signal.h>
#include <string.h>

#include "apps_common.h"

#define N 800
int v[N], w[N];
static sigjmp_buf probe_jump;
volatile long usr1_result;

static void on_probe_sigill(int sig) {
    (void)sig;
    siglongjmp(probe_jump, 1);
}

__attribute__((noinline)) long weighted(const int* a, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += (long)a[i] * (i & 15);
    return s;
}

static void on_usr1(int sig) {
    (void)sig;
    usr1_result = weighted(w, N);
}

// Whether an undefined instruction traps: the answer is yes everywhere; what
// matters is that the program's own handler gets it and can jump out.
static int probe(void) {
    struct sigaction sa, old;
    memset(&sa, 0, sizeof sa);
    sa.sa_handler = on_probe_sigill;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGILL, &sa, &old);
    int trapped = 0;
    if (sigsetjmp(probe_jump, 1) == 0)
        __asm__ volatile("udf #1");
    else
        trapped = 1;
    sigaction(SIGILL, &old, NULL);
    return trapped;
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        v[i] = (int)(apps_rand() % 5000);
        w[i] = (int)(apps_rand() % 300) - 150;
    }
    long before = weighted(v, N);
    int trapped = probe();
    long after = weighted(v, N);
    signal(SIGUSR1, on_usr1);
    raise(SIGUSR1);
    struct sigaction now;
    sigaction(SIGILL, NULL, &now);
    printf("probe trapped=%d before=%ld after=%ld usr1=%ld sigill default=%d\n", trapped, before, after, usr1_result,
           now.sa_handler == SIG_DFL);
    return 0;
}
