// Benchmark: compiler-vectorised integer arithmetic on int, short and long
// arrays (the loops of vec_arith), repeated. Argument: passes (default 100).
#include <stdlib.h>

#include "../src/apps_common.h"

#define N 4096
int a[N], b[N], c[N];
short hs[N], ht[N], hr[N];
long la[N], lb[N], lr[N];

__attribute__((noinline)) void mix32(int* restrict out, const int* restrict x, const int* restrict y, int n) {
    for (int i = 0; i < n; ++i) out[i] = x[i] * 3 + y[i] - (x[i] >> 2);
}
__attribute__((noinline)) void mix16(short* restrict out, const short* restrict x, const short* restrict y, int n) {
    for (int i = 0; i < n; ++i) out[i] = (short)(x[i] - y[i] * 5);
}
__attribute__((noinline)) void mix64(long* restrict out, const long* restrict x, const long* restrict y, int n) {
    for (int i = 0; i < n; ++i) out[i] = (x[i] ^ y[i]) + (x[i] & 0xffff) * 7 - (y[i] | 3);
}

int main(int argc, char** argv) {
    int passes = argc > 1 ? atoi(argv[1]) : 100;
    for (int i = 0; i < N; ++i) {
        a[i] = (int)apps_rand();
        b[i] = (int)apps_rand();
        hs[i] = (short)apps_rand();
        ht[i] = (short)apps_rand();
        la[i] = (long)apps_rand() << 7;
        lb[i] = (long)apps_rand() << 19;
    }
    for (int p = 0; p < passes; ++p) {
        mix32(c, a, b, N);
        mix32(a, c, b, N);
        mix16(hr, hs, ht, N);
        mix16(hs, hr, ht, N);
        mix64(lr, la, lb, N);
        mix64(la, lr, lb, N);
    }
    APPS_PRINT_SUM("a", a);
    APPS_PRINT_SUM("hs", hs);
    APPS_PRINT_SUM("la", la);
    return 0;
}
