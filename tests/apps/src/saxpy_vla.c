// The same integer kernels compiled without a fixed vector length: the code
// asks for the length at run time (CNTW, WHILELO and the like).
#include "apps_common.h"

#define N 2500
int x[N], y[N];
long acc[N];
unsigned short u[N];

__attribute__((noinline)) void saxpy(int* restrict yy, const int* restrict xx, int a, int n) {
    for (int i = 0; i < n; ++i) yy[i] += a * xx[i];
}
__attribute__((noinline)) void accumulate(long* restrict s, const int* restrict v, int n) {
    for (int i = 0; i < n; ++i) s[i] += (long)v[i] * v[i];
}
__attribute__((noinline)) unsigned max_u16(const unsigned short* v, int n) {
    unsigned short m = 0;
    for (int i = 0; i < n; ++i) m = v[i] > m ? v[i] : m;
    return m;
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        x[i] = (int)(apps_rand() % 1000) - 500;
        y[i] = (int)(apps_rand() % 100000);
        acc[i] = i;
        u[i] = (unsigned short)apps_rand();
    }
    saxpy(y, x, 3, N);
    saxpy(y, x, -11, N - 7);
    accumulate(acc, y, N);
    printf("y[0]=%d y[%d]=%d acc[17]=%ld max_u16=%u\n", y[0], N - 1, y[N - 1], acc[17], max_u16(u, N));
    APPS_PRINT_SUM("y", y);
    APPS_PRINT_SUM("acc", acc);
    return 0;
}
