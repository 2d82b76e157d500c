// Vectors kept alive across calls to ordinary functions: the compiler must
// save them on the stack in frames sized by the vector length (ADDVL on SP,
// STR/LDR of Z and P registers), which the emulation has to follow exactly.
#include <arm_sve.h>

#include "apps_common.h"

#define N 777
int32_t a[N], b[N], out[N];
int calls;

__attribute__((noinline)) int32_t tick(int32_t v) {
    calls++;
    return v ^ (calls & 7);
}
// Called through a pointer the compiler cannot see through, so it must assume
// the ordinary calling convention: every SVE register is lost in the call.
int32_t (*volatile tick_ptr)(int32_t) = tick;

__attribute__((noinline)) void blend(int32_t* restrict o, const int32_t* restrict x, const int32_t* restrict y,
                                     int n) {
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, n);
        svint32_t vx = svld1_s32(pg, x + i);
        svint32_t vy = svld1_s32(pg, y + i);
        svbool_t gt = svcmpgt_s32(pg, vx, vy);
        int32_t k = tick_ptr(i);  // vx, vy, pg and gt live across the call
        svint32_t r = svsel_s32(gt, svsub_s32_x(pg, vx, vy), svadd_n_s32_x(pg, vy, k));
        svst1_s32(pg, o + i, r);
    }
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        a[i] = (int32_t)(apps_rand() % 100000);
        b[i] = (int32_t)(apps_rand() % 100000);
    }
    blend(out, a, b, N);
    printf("calls=%d out[0]=%d out[%d]=%d\n", calls, out[0], N - 1, out[N - 1]);
    APPS_PRINT_SUM("out", out);
    return 0;
}
