// Benchmark: table look-ups through an index array (gather loads) and a
// permutation written through one (scatter stores), repeated.
// Argument: passes (default 100).
#include <stdlib.h>

#include "../src/apps_common.h"

#define N 4096
#define T 16384
int tab[T], idx[N], perm[N], looked[N], out[N];

__attribute__((noinline)) void lookup(int* restrict o, const int* restrict t, const int* restrict ix, int n) {
    for (int i = 0; i < n; ++i) o[i] = t[ix[i]] + i;
}
__attribute__((noinline)) void scatter(int* restrict o, const int* restrict p, const int* restrict v, int n) {
    for (int i = 0; i < n; ++i) o[p[i]] = v[i];
}

int main(int argc, char** argv) {
    int passes = argc > 1 ? atoi(argv[1]) : 100;
    for (int i = 0; i < T; ++i) tab[i] = (int)apps_rand();
    for (int i = 0; i < N; ++i) {
        idx[i] = (int)(apps_rand() % T);
        perm[i] = (i * 1237) % N;  // 1237 is odd, so this is a permutation of 0..N-1
    }
    for (int p = 0; p < passes; ++p) {
        lookup(looked, tab, idx, N);
        scatter(out, perm, looked, N);
        tab[p % T] ^= out[p % N];
    }
    APPS_PRINT_SUM("out", out);
    return 0;
}
