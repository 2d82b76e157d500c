// A program whose SVE code is in a shared library (shlib/apps_kernels.c); the
// program itself is built without SVE.
#include "apps_common.h"
#include "shlib/apps_kernels.h"

#define N 1500
int x[N], y[N], out[N];
short s[N];

int main(void) {
    for (int i = 0; i < N; ++i) {
        x[i] = (int)(apps_rand() % 2000) - 1000;
        y[i] = (int)apps_rand();
        s[i] = (short)apps_rand();
    }
    kernels_scale_add(out, x, y, 7, N);
    printf("out[0]=%d out[%d]=%d dot=%ld above=%d\n", out[0], N - 1, out[N - 1], kernels_dot(x, out, N),
           kernels_count_above(s, 1000, N));
    APPS_PRINT_SUM("out", out);
    return 0;
}
