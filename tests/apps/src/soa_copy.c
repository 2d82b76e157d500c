// Struct-of-arrays copies: an array of particles split into one array per
// field, and joined back with a change.
#include "apps_common.h"

#define N 777
struct particle {
    int x, y, z, mass;
};
struct particle parts[N], back[N];
int xs[N], ys[N], zs[N], ms[N];

struct rgb {
    unsigned char r, g, b;
};
struct rgb pixels[N];
unsigned char reds[N], greens[N], blues[N];

__attribute__((noinline)) void split(const struct particle* restrict p, int n) {
    for (int i = 0; i < n; ++i) {
        xs[i] = p[i].x;
        ys[i] = p[i].y;
        zs[i] = p[i].z;
        ms[i] = p[i].mass;
    }
}
__attribute__((noinline)) void join_moved(struct particle* restrict p, int n) {
    for (int i = 0; i < n; ++i) {
        p[i].x = xs[i] + 1;
        p[i].y = ys[i] - 2;
        p[i].z = zs[i] * 2;
        p[i].mass = ms[i];
    }
}
__attribute__((noinline)) void split_rgb(const struct rgb* restrict p, int n) {
    for (int i = 0; i < n; ++i) {
        reds[i] = p[i].r;
        greens[i] = p[i].g;
        blues[i] = p[i].b;
    }
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        parts[i].x = (int)apps_rand();
        parts[i].y = (int)(apps_rand() % 1000);
        parts[i].z = -(int)(apps_rand() % 5000);
        parts[i].mass = i;
        pixels[i].r = (unsigned char)apps_rand();
        pixels[i].g = (unsigned char)apps_rand();
        pixels[i].b = (unsigned char)apps_rand();
    }
    split(parts, N);
    join_moved(back, N);
    split_rgb(pixels, N);
    printf("xs[1]=%d ys[2]=%d zs[3]=%d ms[%d]=%d back[5]={%d,%d,%d,%d}\n", xs[1], ys[2], zs[3], N - 1, ms[N - 1],
           back[5].x, back[5].y, back[5].z, back[5].mass);
    printf("pixel 100: %u %u %u\n", reds[100], greens[100], blues[100]);
    APPS_PRINT_SUM("xs", xs);
    APPS_PRINT_SUM("zs", zs);
    APPS_PRINT_SUM("back", back);
    APPS_PRINT_SUM("greens", greens);
    return 0;
}
