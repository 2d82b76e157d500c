// Runs SVE code, then an undefined instruction that is not SVE. With the
// preload library the SVE part is emulated and the undefined instruction must
// still kill the program with SIGILL, as it does on a CPU with SVE.
#include <stdio.h>

int v[100];

int main(void) {
    for (int i = 0; i < 100; ++i) v[i] = i * 3;
    long s = 0;
    for (int i = 0; i < 100; ++i) s += v[i];
    printf("sum=%ld\n", s);
    fflush(stdout);
    __asm__ volatile("udf #7");
    printf("not reached\n");
    return 0;
}
