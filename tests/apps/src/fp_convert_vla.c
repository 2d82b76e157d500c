// Conversions and rounding, written without a fixed vector length: integers
// to floats and back, float to double and back, floor and round, and a
// comparison that selects between two arrays.
#include <math.h>

#include "apps_common.h"

#define N 1200
int ints[N], back[N];
float f[N], fl[N], rn[N], pick[N];
double d[N];
float narrowed[N];
long longs[N];

__attribute__((noinline)) void to_float(float* restrict out, const int* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (float)in[i] / 16.0f;
}
__attribute__((noinline)) void to_int(int* restrict out, const float* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (int)(in[i] * 3.0f);
}
__attribute__((noinline)) void widen(double* restrict out, const float* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (double)in[i] * 1.0000001;
}
__attribute__((noinline)) void narrow(float* restrict out, const double* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (float)in[i];
}
__attribute__((noinline, optimize("no-math-errno"))) void rounding(float* restrict a, float* restrict b,
                                                                    const float* restrict in, int n) {
    for (int i = 0; i < n; ++i) {
        a[i] = floorf(in[i]);
        b[i] = roundf(in[i]);
    }
}
__attribute__((noinline)) void select_smaller(float* restrict out, const float* restrict a, const float* restrict b,
                                              int n) {
    for (int i = 0; i < n; ++i) out[i] = a[i] < b[i] ? a[i] : b[i] * 0.5f;
}
__attribute__((noinline)) void to_long(long* restrict out, const double* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (long)(in[i] * 1000.0);
}

int main(void) {
    for (int i = 0; i < N; ++i) ints[i] = (int)(apps_rand() % 200001) - 100000;
    to_float(f, ints, N);
    to_int(back, f, N);
    widen(d, f, N);
    narrow(narrowed, d, N);
    rounding(fl, rn, f, N);
    select_smaller(pick, f, fl, N);
    to_long(longs, d, N);
    printf("f[1]=%a back[1]=%d d[1]=%a narrowed[1]=%a fl[2]=%a rn[2]=%a pick[3]=%a longs[4]=%ld\n", f[1], back[1],
           d[1], narrowed[1], fl[2], rn[2], pick[3], longs[4]);
    APPS_PRINT_SUM("back", back);
    APPS_PRINT_SUM("d", d);
    APPS_PRINT_SUM("narrowed", narrowed);
    APPS_PRINT_SUM("fl", fl);
    APPS_PRINT_SUM("rn", rn);
    APPS_PRINT_SUM("pick", pick);
    APPS_PRINT_SUM("longs", longs);
    return 0;
}
