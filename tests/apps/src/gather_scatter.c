// Indexed access: table look-ups through an index array, and a permutation
// written through one.
#include "apps_common.h"

#define N 1200
#define T 4096
int tab[T];
long ltab[T];
int idx[N], perm[N];
int looked[N], permuted[N];
long llooked[N];

__attribute__((noinline)) void lookup(int* restrict out, const int* restrict t, const int* restrict ix, int n) {
    for (int i = 0; i < n; ++i) out[i] = t[ix[i]] + i;
}
__attribute__((noinline)) void lookup_long(long* restrict out, const long* restrict t, const int* restrict ix, int n) {
    for (int i = 0; i < n; ++i) out[i] = t[ix[i]] * 2;
}
__attribute__((noinline)) void scatter(int* restrict out, const int* restrict p, const int* restrict v, int n) {
    for (int i = 0; i < n; ++i) out[p[i]] = v[i];
}

int main(void) {
    for (int i = 0; i < T; ++i) {
        tab[i] = (int)apps_rand();
        ltab[i] = (long)apps_rand() * 65537;
    }
    for (int i = 0; i < N; ++i) {
        idx[i] = (int)(apps_rand() % T);
        perm[i] = i;
    }
    for (int i = N - 1; i > 0; --i) {  // a fixed shuffle
        int j = (int)(apps_rand() % (unsigned)(i + 1));
        int t = perm[i];
        perm[i] = perm[j];
        perm[j] = t;
    }
    lookup(looked, tab, idx, N);
    lookup_long(llooked, ltab, idx, N);
    scatter(permuted, perm, looked, N);
    printf("looked[0]=%d looked[%d]=%d llooked[3]=%ld permuted[42]=%d\n", looked[0], N - 1, looked[N - 1], llooked[3],
           permuted[42]);
    APPS_PRINT_SUM("looked", looked);
    APPS_PRINT_SUM("llooked", llooked);
    APPS_PRINT_SUM("permuted", permuted);
    return 0;
}
