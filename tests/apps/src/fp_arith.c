// Floating-point array arithmetic in float and double: saxpy, a polynomial,
// division, square roots and an ordered sum. Printed as exact hex floats, so
// any difference in rounding shows.
#include <math.h>

#include "apps_common.h"

#define N 1021
float xf[N], yf[N], pf[N], qf[N];
double xd[N], yd[N], rd[N];

__attribute__((noinline)) void saxpy(float* restrict y, const float* restrict x, float a, int n) {
    for (int i = 0; i < n; ++i) y[i] = a * x[i] + y[i];
}
__attribute__((noinline)) void poly(float* restrict out, const float* restrict x, int n) {
    for (int i = 0; i < n; ++i) out[i] = ((0.25f * x[i] - 1.5f) * x[i] + 3.0f) * x[i] - 0.125f;
}
__attribute__((noinline, optimize("no-math-errno"))) void roots(float* restrict out, const float* restrict x,
                                                                 int n) {
    for (int i = 0; i < n; ++i) out[i] = sqrtf(fabsf(x[i])) / (x[i] + 7.0f);
}
__attribute__((noinline)) void ratio(double* restrict out, const double* restrict x, const double* restrict y,
                                     int n) {
    for (int i = 0; i < n; ++i) out[i] = (x[i] - y[i]) / (x[i] * y[i] + 1.0);
}
__attribute__((noinline)) float sum_in_order(const float* x, int n) {
    float s = 0.0f;
    for (int i = 0; i < n; ++i) s += x[i];
    return s;
}
__attribute__((noinline)) double sum_in_order_d(const double* x, int n) {
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += x[i];
    return s;
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        xf[i] = (float)((int)(apps_rand() % 20001) - 10000) / 1024.0f;
        yf[i] = (float)(apps_rand() % 1000) / 3.0f;
        xd[i] = (double)((int)(apps_rand() % 2000001) - 1000000) / 4096.0;
        yd[i] = (double)(apps_rand() % 100000) / 7.0 + 0.5;
    }
    saxpy(yf, xf, 2.5f, N);
    poly(pf, xf, N);
    roots(qf, xf, N);
    ratio(rd, xd, yd, N);
    printf("yf[0]=%a yf[%d]=%a pf[7]=%a qf[9]=%a rd[3]=%a\n", yf[0], N - 1, yf[N - 1], pf[7], qf[9], rd[3]);
    printf("sum yf=%a sum pf=%a sum rd=%a\n", sum_in_order(yf, N), sum_in_order(pf, N), sum_in_order_d(rd, N));
    APPS_PRINT_SUM("yf", yf);
    APPS_PRINT_SUM("pf", pf);
    APPS_PRINT_SUM("qf", qf);
    APPS_PRINT_SUM("rd", rd);
    return 0;
}
