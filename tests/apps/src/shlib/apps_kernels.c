// A shared library with SVE code of its own, used by shlib_user: the SVE
// instructions to emulate are in a library, not in the program.
#include "apps_kernels.h"

void kernels_scale_add(int* restrict out, const int* restrict x, const int* restrict y, int k, int n) {
    for (int i = 0; i < n; ++i) out[i] = x[i] * k + y[i];
}

long kernels_dot(const int* x, const int* y, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += (long)x[i] * y[i];
    return s;
}

int kernels_count_above(const short* v, short limit, int n) {
    int c = 0;
    for (int i = 0; i < n; ++i) c += v[i] > limit;
    return c;
}
