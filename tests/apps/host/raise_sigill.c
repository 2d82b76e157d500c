// Runs SVE code, then sends itself SIGILL with raise(). A SIGILL that no
// instruction raised is not ours to emulate: the program must die of it.
#include <signal.h>
#include <stdio.h>

int v[100];

int main(void) {
    for (int i = 0; i < 100; ++i) v[i] = i * 5;
    long s = 0;
    for (int i = 0; i < 100; ++i) s += v[i];
    printf("sum=%ld\n", s);
    fflush(stdout);
    raise(SIGILL);
    printf("not reached\n");
    return 0;
}
