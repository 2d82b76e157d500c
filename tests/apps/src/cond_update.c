// Conditional updates: clamping, selecting between two arrays, and updates of
// only the elements that pass a test.
#include "apps_common.h"

#define N 1500
int x[N], y[N], z[N];
unsigned flags[N];

__attribute__((noinline)) void clamp(int* v, int lo, int hi, int n) {
    for (int i = 0; i < n; ++i) {
        if (v[i] < lo) v[i] = lo;
        if (v[i] > hi) v[i] = hi;
    }
}
__attribute__((noinline)) void select_larger(int* restrict out, const int* restrict a, const int* restrict b, int n) {
    for (int i = 0; i < n; ++i) out[i] = a[i] > b[i] ? a[i] - b[i] : b[i] * 2;
}
__attribute__((noinline)) void update_if(int* restrict v, const unsigned* restrict f, int n) {
    for (int i = 0; i < n; ++i)
        if (f[i] & 4) v[i] += 100;
}
__attribute__((noinline)) int count_negative(const int* v, int n) {
    int c = 0;
    for (int i = 0; i < n; ++i) c += v[i] < 0;
    return c;
}
__attribute__((noinline)) void abs_in_place(int* v, int n) {
    for (int i = 0; i < n; ++i)
        if (v[i] < 0) v[i] = -v[i];
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        x[i] = (int)(apps_rand() % 20001) - 10000;
        y[i] = (int)(apps_rand() % 20001) - 10000;
        flags[i] = apps_rand();
    }
    printf("negative before: %d\n", count_negative(x, N));
    select_larger(z, x, y, N);
    update_if(z, flags, N);
    clamp(x, -5000, 7000, N);
    printf("negative after clamp: %d\n", count_negative(x, N));
    abs_in_place(y, N);
    printf("negative after abs: %d\n", count_negative(y, N));
    printf("x[3]=%d z[3]=%d z[%d]=%d y[10]=%d\n", x[3], z[3], N - 1, z[N - 1], y[10]);
    APPS_PRINT_SUM("x", x);
    APPS_PRINT_SUM("y", y);
    APPS_PRINT_SUM("z", z);
    return 0;
}
