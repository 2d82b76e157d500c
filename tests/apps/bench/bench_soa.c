// Benchmark: an array of four-field structures split into four arrays and
// joined back (structure loads and stores), repeated.
// Argument: passes (default 100).
#include <stdlib.h>

#include "../src/apps_common.h"

#define N 4096
struct particle {
    int x, y, z, mass;
};
struct particle parts[N];
int xs[N], ys[N], zs[N], ms[N];

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

int main(int argc, char** argv) {
    int passes = argc > 1 ? atoi(argv[1]) : 100;
    for (int i = 0; i < N; ++i) {
        parts[i].x = (int)apps_rand();
        parts[i].y = (int)apps_rand();
        parts[i].z = (int)apps_rand();
        parts[i].mass = i;
    }
    for (int p = 0; p < passes; ++p) {
        split(parts, N);
        join_moved(parts, N);
    }
    APPS_PRINT_SUM("parts", parts);
    return 0;
}
