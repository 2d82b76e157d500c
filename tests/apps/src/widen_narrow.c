// Mixed widths: bytes summed into ints, int products kept in longs, and longs
// narrowed back to shorts and bytes.
#include "apps_common.h"

#define N 1111
signed char sb[N];
unsigned char ub[N];
short sh[N];
int si[N], wi[N];
long sl[N], prod[N];
short narrowed[N];
unsigned char bytes[N];

__attribute__((noinline)) void widen_bytes(int* restrict out, const signed char* restrict a,
                                           const unsigned char* restrict b, int n) {
    for (int i = 0; i < n; ++i) out[i] = a[i] * 100 + b[i];
}
__attribute__((noinline)) void long_products(long* restrict out, const int* restrict a, const short* restrict b,
                                             int n) {
    for (int i = 0; i < n; ++i) out[i] = (long)a[i] * b[i];
}
__attribute__((noinline)) void narrow(short* restrict s, unsigned char* restrict c, const long* restrict l, int n) {
    for (int i = 0; i < n; ++i) {
        s[i] = (short)(l[i] >> 8);
        c[i] = (unsigned char)l[i];
    }
}
__attribute__((noinline)) long sum_bytes(const signed char* a, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += a[i];
    return s;
}
__attribute__((noinline)) int sum_short_products(const short* a, const signed char* b, int n) {
    int s = 0;
    for (int i = 0; i < n; ++i) s += a[i] * b[i];
    return s;
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        sb[i] = (signed char)apps_rand();
        ub[i] = (unsigned char)apps_rand();
        sh[i] = (short)apps_rand();
        si[i] = (int)apps_rand() - (1 << 23);
    }
    widen_bytes(wi, sb, ub, N);
    long_products(prod, si, sh, N);
    narrow(narrowed, bytes, prod, N);
    printf("wi[0]=%d wi[%d]=%d prod[2]=%ld narrowed[2]=%d bytes[2]=%u\n", wi[0], N - 1, wi[N - 1], prod[2],
           narrowed[2], bytes[2]);
    printf("sum_bytes=%ld sum_short_products=%d\n", sum_bytes(sb, N), sum_short_products(sh, sb, N));
    APPS_PRINT_SUM("wi", wi);
    APPS_PRINT_SUM("prod", prod);
    APPS_PRINT_SUM("narrowed", narrowed);
    APPS_PRINT_SUM("bytes", bytes);
    return 0;
}
