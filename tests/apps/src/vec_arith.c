// Element-wise integer arithmetic on arrays of int, short and long.
#include "apps_common.h"

#define N 1003
int a[N], b[N], c[N];
short hs[N], ht[N], hr[N];
long la[N], lb[N], lr[N];

__attribute__((noinline)) void mix32(int* restrict out, const int* restrict x, const int* restrict y, int n) {
    for (int i = 0; i < n; ++i) out[i] = x[i] * 3 + y[i] - (x[i] >> 2);
}

__attribute__((noinline)) void mix16(short* restrict out, const short* restrict x, const short* restrict y, int n) {
    for (int i = 0; i < n; ++i) out[i] = (short)(x[i] - y[i] * 5);
}

__attribute__((noinline)) void mix64(long* restrict out, const long* restrict x, const long* restrict y, int n) {
    for (int i = 0; i < n; ++i) out[i] = (x[i] ^ y[i]) + (x[i] & 0xffff) * 7 - (y[i] | 3);
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        a[i] = (int)apps_rand() - (1 << 22);
        b[i] = (int)(apps_rand() % 100000);
        hs[i] = (short)apps_rand();
        ht[i] = (short)apps_rand();
        la[i] = (long)apps_rand() * 977 - 123456789L;
        lb[i] = (long)apps_rand() << 20;
    }
    mix32(c, a, b, N);
    mix16(hr, hs, ht, N);
    mix64(lr, la, lb, N);
    printf("c[0]=%d c[500]=%d c[%d]=%d\n", c[0], c[500], N - 1, c[N - 1]);
    printf("hr[1]=%d hr[%d]=%d\n", hr[1], N - 2, hr[N - 2]);
    printf("lr[7]=%ld lr[%d]=%ld\n", lr[7], N - 1, lr[N - 1]);
    APPS_PRINT_SUM("int", c);
    APPS_PRINT_SUM("short", hr);
    APPS_PRINT_SUM("long", lr);
    return 0;
}
