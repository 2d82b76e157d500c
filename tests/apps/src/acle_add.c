// The first loop most people write with the SVE intrinsics: element-wise sums
// of two int arrays under a WHILELT predicate, then the same sum with the
// tail handled by a merging add into a copy.
#include <arm_sve.h>

#include "apps_common.h"

#define N 1234
int32_t a[N], b[N], c[N], d[N];

__attribute__((noinline)) void add_arrays(int32_t* restrict o, const int32_t* restrict x, const int32_t* restrict y,
                                          int n) {
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, n);
        svst1_s32(pg, o + i, svadd_s32_x(svptrue_b32(), svld1_s32(pg, x + i), svld1_s32(pg, y + i)));
    }
}

// Adds y into o only where o is still the copy of x, element by element: the
// predicate comes from WHILELO, so the tail is governed the same way.
__attribute__((noinline)) void add_into(int32_t* restrict o, const int32_t* restrict y, int n) {
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, n);
        svint32_t acc = svld1_s32(pg, o + i);
        svst1_s32(pg, o + i, svadd_s32_x(pg, acc, svld1_s32(pg, y + i)));
    }
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        a[i] = (int32_t)apps_rand() - (1 << 23);
        b[i] = (int32_t)(apps_rand() * 3u);
        d[i] = a[i];
    }
    add_arrays(c, a, b, N);
    add_into(d, b, N);
    add_into(d, a, N - 3);
    printf("c[0]=%d c[%d]=%d d[5]=%d d[%d]=%d\n", c[0], N - 1, c[N - 1], d[5], N - 1, d[N - 1]);
    APPS_PRINT_SUM("c", c);
    APPS_PRINT_SUM("d", d);
    return 0;
}
