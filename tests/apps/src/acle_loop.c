// A loop written with the SVE intrinsics: a predicated saxpy on ints with a
// WHILELT-governed tail, and a reduction of the result.
#include <arm_sve.h>

#include "apps_common.h"

#define N 1001
int32_t x[N], y[N], out[N];

__attribute__((noinline)) void axpy(int32_t* restrict o, const int32_t* restrict a, const int32_t* restrict b,
                                    int32_t k, int n) {
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, n);
        svint32_t va = svld1_s32(pg, a + i);
        svint32_t vb = svld1_s32(pg, b + i);
        svint32_t r = svmla_n_s32_x(pg, vb, va, k);
        svst1_s32(pg, o + i, r);
    }
}

__attribute__((noinline)) int64_t total(const int32_t* a, int n) {
    svint64_t acc = svdup_s64(0);
    for (int i = 0; i < n; i += (int)svcntd()) {
        svbool_t pg = svwhilelt_b64(i, n);
        svint64_t v = svld1sw_s64(pg, a + i);
        acc = svadd_s64_m(pg, acc, v);
    }
    return svaddv_s64(svptrue_b64(), acc);
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        x[i] = (int32_t)(apps_rand() % 10000) - 5000;
        y[i] = (int32_t)apps_rand();
    }
    axpy(out, x, y, 7, N);
    printf("vector bytes=%d out[0]=%d out[%d]=%d total=%lld\n", (int)svcntb(), out[0], N - 1, out[N - 1],
           (long long)total(out, N));
    APPS_PRINT_SUM("out", out);
    return 0;
}
