// 8-bit image operations: saturating brightness, averaging two images,
// thresholding and an absolute difference.
#include "apps_common.h"

#define W 97
#define H 31
unsigned char img[H * W], img2[H * W], bright[H * W], avg[H * W], thr[H * W], diff[H * W];

__attribute__((noinline)) void brighten(unsigned char* restrict o, const unsigned char* restrict in, int add, int n) {
    for (int i = 0; i < n; ++i) {
        int v = in[i] + add;
        o[i] = v > 255 ? 255 : v;
    }
}
__attribute__((noinline)) void average(unsigned char* restrict o, const unsigned char* restrict a,
                                       const unsigned char* restrict b, int n) {
    for (int i = 0; i < n; ++i) o[i] = (unsigned char)((a[i] + b[i] + 1) >> 1);
}
__attribute__((noinline)) void threshold(unsigned char* restrict o, const unsigned char* restrict a, int t, int n) {
    for (int i = 0; i < n; ++i) o[i] = a[i] > t ? 255 : 0;
}
__attribute__((noinline)) void absdiff(unsigned char* restrict o, const unsigned char* restrict a,
                                       const unsigned char* restrict b, int n) {
    for (int i = 0; i < n; ++i) o[i] = a[i] > b[i] ? a[i] - b[i] : b[i] - a[i];
}
__attribute__((noinline)) unsigned sum_abs_diff(const unsigned char* a, const unsigned char* b, int n) {
    unsigned s = 0;
    for (int i = 0; i < n; ++i) s += a[i] > b[i] ? a[i] - b[i] : b[i] - a[i];
    return s;
}

int main(void) {
    for (int i = 0; i < H * W; ++i) {
        img[i] = (unsigned char)apps_rand();
        img2[i] = (unsigned char)(i * 7 + (apps_rand() & 15));
    }
    brighten(bright, img, 40, H * W);
    average(avg, img, img2, H * W);
    threshold(thr, img2, 100, H * W);
    absdiff(diff, img, img2, H * W);
    printf("bright[5]=%u avg[5]=%u thr[5]=%u diff[5]=%u sad=%u\n", bright[5], avg[5], thr[5], diff[5],
           sum_abs_diff(img, img2, H * W));
    APPS_PRINT_SUM("bright", bright);
    APPS_PRINT_SUM("avg", avg);
    APPS_PRINT_SUM("thr", thr);
    APPS_PRINT_SUM("diff", diff);
    return 0;
}
