// Dot products of small integers: int8 into int32 and int16 into int64, the
// inner loop of quantised inference.
#include "apps_common.h"

#define N 4099
signed char qa[N], qb[N];
short ha[N], hb[N];
unsigned char ua[N], ub[N];

__attribute__((noinline)) int dot_s8(const signed char* a, const signed char* b, int n) {
    int s = 0;
    for (int i = 0; i < n; ++i) s += a[i] * b[i];
    return s;
}
__attribute__((noinline)) unsigned dot_u8(const unsigned char* a, const unsigned char* b, int n) {
    unsigned s = 0;
    for (int i = 0; i < n; ++i) s += a[i] * b[i];
    return s;
}
__attribute__((noinline)) long dot_s16(const short* a, const short* b, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += (long)a[i] * b[i];
    return s;
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        qa[i] = (signed char)apps_rand();
        qb[i] = (signed char)apps_rand();
        ha[i] = (short)apps_rand();
        hb[i] = (short)apps_rand();
        ua[i] = (unsigned char)apps_rand();
        ub[i] = (unsigned char)apps_rand();
    }
    for (int n = 5; n <= N; n += 1023)
        printf("n=%d s8=%d u8=%u s16=%ld\n", n, dot_s8(qa, qb, n), dot_u8(ua, ub, n), dot_s16(ha, hb, n));
    return 0;
}
