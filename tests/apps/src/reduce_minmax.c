// Reductions: sums, minima and maxima over int, long and unsigned char arrays.
#include "apps_common.h"

#define N 2011
int vi[N];
long vl[N];
unsigned char vb[N];

__attribute__((noinline)) long sum_int(const int* x, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += x[i];
    return s;
}
__attribute__((noinline)) int min_int(const int* x, int n) {
    int m = x[0];
    for (int i = 0; i < n; ++i) m = x[i] < m ? x[i] : m;
    return m;
}
__attribute__((noinline)) int max_int(const int* x, int n) {
    int m = x[0];
    for (int i = 0; i < n; ++i) m = x[i] > m ? x[i] : m;
    return m;
}
__attribute__((noinline)) long sum_long(const long* x, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += x[i];
    return s;
}
__attribute__((noinline)) long max_long(const long* x, int n) {
    long m = x[0];
    for (int i = 0; i < n; ++i) m = x[i] > m ? x[i] : m;
    return m;
}
__attribute__((noinline)) unsigned min_byte(const unsigned char* x, int n) {
    unsigned char m = 255;
    for (int i = 0; i < n; ++i) m = x[i] < m ? x[i] : m;
    return m;
}
__attribute__((noinline)) unsigned xor_byte(const unsigned char* x, int n) {
    unsigned char m = 0;
    for (int i = 0; i < n; ++i) m ^= x[i];
    return m;
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        vi[i] = (int)(apps_rand() % 2000001) - 1000000;
        vl[i] = ((long)apps_rand() << 24) - ((long)apps_rand() << 20);
        vb[i] = (unsigned char)(apps_rand() % 250 + 3);
    }
    for (int n = 1; n <= N; n += 670) {
        printf("n=%d sum=%ld min=%d max=%d\n", n, sum_int(vi, n), min_int(vi, n), max_int(vi, n));
        printf("n=%d lsum=%ld lmax=%ld bmin=%u bxor=%u\n", n, sum_long(vl, n), max_long(vl, n), min_byte(vb, n),
               xor_byte(vb, n));
    }
    return 0;
}
