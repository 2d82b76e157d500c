// Intrinsics, written without knowing the vector length: counting matches with
// predicate counts, and a conditional select between two arrays.
#include <arm_sve.h>

#include "apps_common.h"

#define N 3001
uint16_t a[N], b[N], sel[N];

__attribute__((noinline)) uint64_t count_greater(const uint16_t* p, uint16_t limit, int n) {
    uint64_t c = 0;
    for (int i = 0; i < n; i += (int)svcnth()) {
        svbool_t pg = svwhilelt_b16(i, n);
        svbool_t hit = svcmpgt_n_u16(pg, svld1_u16(pg, p + i), limit);
        c += svcntp_b16(pg, hit);
    }
    return c;
}

__attribute__((noinline)) void pick(uint16_t* restrict o, const uint16_t* restrict x, const uint16_t* restrict y,
                                    int n) {
    for (int i = 0; i < n; i += (int)svcnth()) {
        svbool_t pg = svwhilelt_b16(i, n);
        svuint16_t vx = svld1_u16(pg, x + i), vy = svld1_u16(pg, y + i);
        svbool_t lt = svcmplt_u16(pg, vx, vy);
        svst1_u16(pg, o + i, svsel_u16(lt, vx, svsub_u16_x(pg, vx, vy)));
    }
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        a[i] = (uint16_t)apps_rand();
        b[i] = (uint16_t)apps_rand();
    }
    pick(sel, a, b, N);
    printf("greater than 40000: %llu of %d\n", (unsigned long long)count_greater(a, 40000, N), N);
    printf("sel[0]=%u sel[%d]=%u\n", sel[0], N - 1, sel[N - 1]);
    APPS_PRINT_SUM("sel", sel);
    return 0;
}
