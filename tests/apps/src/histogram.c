// A histogram of byte values, then the vector part: scaling the counts,
// finding the fullest bin and a running total.
#include "apps_common.h"

#define N 6000
#define BINS 256
unsigned char data[N];
int hist[BINS], scaled[BINS];
int bucket16[16];

__attribute__((noinline)) void count(int* restrict h, const unsigned char* restrict d, int n) {
    for (int i = 0; i < n; ++i) h[d[i]]++;
}
__attribute__((noinline)) void scale(int* restrict out, const int* restrict h, int mul, int div_shift) {
    for (int i = 0; i < BINS; ++i) out[i] = (h[i] * mul) >> div_shift;
}
__attribute__((noinline)) int fullest(const int* h) {
    int m = 0;
    for (int i = 0; i < BINS; ++i) m = h[i] > m ? h[i] : m;
    return m;
}
__attribute__((noinline)) void coarse(int* restrict out, const int* restrict h) {
    for (int b = 0; b < 16; ++b) {
        int s = 0;
        for (int i = 0; i < 16; ++i) s += h[b * 16 + i];
        out[b] = s;
    }
}

int main(void) {
    for (int i = 0; i < N; ++i) data[i] = (unsigned char)((apps_rand() % 256 + apps_rand() % 256) / 2);
    count(hist, data, N);
    scale(scaled, hist, 1000, 6);
    coarse(bucket16, hist);
    printf("hist[0]=%d hist[128]=%d hist[255]=%d fullest=%d\n", hist[0], hist[128], hist[255], fullest(hist));
    for (int b = 0; b < 16; ++b) printf("%d%c", bucket16[b], b == 15 ? '\n' : ' ');
    APPS_PRINT_SUM("hist", hist);
    APPS_PRINT_SUM("scaled", scaled);
    return 0;
}
