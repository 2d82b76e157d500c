// Vector-length-agnostic code that reverses, shifts and interleaves arrays.
#include "apps_common.h"

#define N 1337
int src[N], rev[N], inter[2 * N];
short s16[N], r16[N];
long shifted[N];

__attribute__((noinline)) void reverse(int* restrict o, const int* restrict in, int n) {
    for (int i = 0; i < n; ++i) o[i] = in[n - 1 - i];
}
__attribute__((noinline)) void reverse16(short* restrict o, const short* restrict in, int n) {
    for (int i = 0; i < n; ++i) o[i] = in[n - 1 - i];
}
__attribute__((noinline)) void interleave(int* restrict o, const int* restrict a, const int* restrict b, int n) {
    for (int i = 0; i < n; ++i) {
        o[2 * i] = a[i];
        o[2 * i + 1] = b[i];
    }
}
__attribute__((noinline)) void diff_prev(long* restrict o, const int* restrict in, int n) {
    for (int i = 1; i < n; ++i) o[i] = (long)in[i] - in[i - 1];
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        src[i] = (int)apps_rand();
        s16[i] = (short)apps_rand();
    }
    reverse(rev, src, N);
    reverse16(r16, s16, N);
    interleave(inter, src, rev, N);
    diff_prev(shifted, src, N);
    printf("rev[0]=%d rev[%d]=%d r16[1]=%d inter[3]=%d shifted[1]=%ld\n", rev[0], N - 1, rev[N - 1], r16[1], inter[3],
           shifted[1]);
    APPS_PRINT_SUM("rev", rev);
    APPS_PRINT_SUM("r16", r16);
    APPS_PRINT_SUM("inter", inter);
    APPS_PRINT_SUM("shifted", shifted);
    return 0;
}
