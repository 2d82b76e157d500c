// A timer signal whose handler runs vector code of its own, arriving while
// the main program runs vector code: both must see their own registers, and
// a signal that arrives during an emulated instruction must wait for it.
#include <signal.h>
#include <string.h>
#include <sys/time.h>

#include "apps_common.h"

#define N 1500
#define H 256
int work[N], other[N];
int hdata[H];
volatile sig_atomic_t ticks;
volatile long handler_result;

__attribute__((noinline)) long hsum(const int* v, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += v[i] * 3 - 1;
    return s;
}

static void on_alarm(int sig) {
    (void)sig;
    handler_result = hsum(hdata, H);  // the same value on every run
    ticks++;
}

__attribute__((noinline)) void step(int* restrict v, const int* restrict w, int n) {
    for (int i = 0; i < n; ++i) v[i] = (v[i] ^ w[i]) + (v[i] >> 1) - w[i] * 5;
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        work[i] = (int)apps_rand();
        other[i] = (int)(apps_rand() % 1000);
    }
    for (int i = 0; i < H; ++i) hdata[i] = i * 7 - 300;

    struct sigaction sa;
    memset(&sa, 0, sizeof sa);
    sa.sa_handler = on_alarm;
    sa.sa_flags = SA_RESTART;
    sigaction(SIGALRM, &sa, NULL);
    struct itimerval every = {{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &every, NULL);

    // A fixed amount of work, then more until the handler has run a few
    // times; only the fixed part is printed, so the output does not depend on
    // how often the timer fired.
    for (int r = 0; r < 60; ++r) step(work, other, N);
    long checksum = hsum(work, N);
    while (ticks < 3) step(other, work, N);

    struct itimerval off = {{0, 0}, {0, 0}};
    setitimer(ITIMER_REAL, &off, NULL);
    printf("checksum=%ld handler_result=%ld\n", checksum, handler_result);
    APPS_PRINT_SUM("hdata", hdata);
    return 0;
}
