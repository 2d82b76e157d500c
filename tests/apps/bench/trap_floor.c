// The cost of the trap itself: executes an undefined instruction N times
// (argument, default 100000) and steps over each in its own SIGILL handler,
// doing no other work. The time per trap is the floor under which no
// signal-based emulation can go on the same system.
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <ucontext.h>

static void step_over(int sig, siginfo_t* info, void* context) {
    (void)sig;
    (void)info;
    ((ucontext_t*)context)->uc_mcontext.pc += 4;
}

int main(int argc, char** argv) {
    int n = argc > 1 ? atoi(argv[1]) : 100000;
    struct sigaction sa = {0};
    sa.sa_sigaction = step_over;
    sa.sa_flags = SA_SIGINFO;
    sigaction(SIGILL, &sa, NULL);
    for (int i = 0; i < n; ++i) __asm__ volatile("udf #0");
    printf("%d traps\n", n);
    return 0;
}
