// Benchmark: element-wise sums of two int arrays with the SVE intrinsics,
// repeated. Argument: number of passes (default 200).
#include <arm_sve.h>
#include <stdlib.h>

#include "../src/apps_common.h"

#define N 4096
int32_t a[N], b[N], c[N];

__attribute__((noinline)) void add_arrays(int32_t* restrict o, const int32_t* restrict x, const int32_t* restrict y,
                                          int n) {
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, n);
        svst1_s32(pg, o + i, svadd_s32_x(pg, svld1_s32(pg, x + i), svld1_s32(pg, y + i)));
    }
}

int main(int argc, char** argv) {
    int passes = argc > 1 ? atoi(argv[1]) : 200;
    for (int i = 0; i < N; ++i) {
        a[i] = (int32_t)apps_rand();
        b[i] = (int32_t)apps_rand();
    }
    for (int p = 0; p < passes; ++p) {
        add_arrays(c, a, b, N);
        add_arrays(a, c, b, N);
    }
    APPS_PRINT_SUM("a", a);
    return 0;
}
