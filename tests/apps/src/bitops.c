// Bit manipulation: population counts, shifts, rotations, leading zeros and
// masks, on 32- and 64-bit words.
#include "apps_common.h"

#define N 1029
unsigned w[N], shifted[N], rot[N];
unsigned long d[N];
int pop[N], lz[N];
unsigned long masked[N];

__attribute__((noinline)) void popcounts(int* restrict out, const unsigned* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = __builtin_popcount(in[i]);
}
__attribute__((noinline)) void leading_zeros(int* restrict out, const unsigned* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = in[i] ? __builtin_clz(in[i]) : 32;
}
__attribute__((noinline)) void shifts(unsigned* restrict out, const unsigned* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (in[i] << 3) ^ (in[i] >> 7) ^ ((int)in[i] >> 5);
}
__attribute__((noinline)) void rotate(unsigned* restrict out, const unsigned* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (in[i] << 11) | (in[i] >> 21);
}
__attribute__((noinline)) void mask64(unsigned long* restrict out, const unsigned long* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (in[i] & 0x00ff00ff00ff00fful) | ~(in[i] | 0xfffffffffffff000ul);
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        w[i] = apps_rand() ^ (apps_rand() << 16);
        d[i] = ((unsigned long)apps_rand() << 40) ^ apps_rand();
    }
    w[3] = 0;
    popcounts(pop, w, N);
    leading_zeros(lz, w, N);
    shifts(shifted, w, N);
    rotate(rot, w, N);
    mask64(masked, d, N);
    printf("pop[0]=%d lz[0]=%d lz[3]=%d shifted[1]=%08x rot[1]=%08x masked[1]=%016lx\n", pop[0], lz[0], lz[3],
           shifted[1], rot[1], masked[1]);
    APPS_PRINT_SUM("pop", pop);
    APPS_PRINT_SUM("lz", lz);
    APPS_PRINT_SUM("shifted", shifted);
    APPS_PRINT_SUM("rot", rot);
    APPS_PRINT_SUM("masked", masked);
    return 0;
}
