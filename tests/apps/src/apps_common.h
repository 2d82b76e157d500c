// Helpers shared by the test programs: a fixed pseudo-random sequence, so
// that every run sees the same data, and a checksum that folds an array into
// one printed number.
#pragma once
#include <stdint.h>
#include <stdio.h>

static uint32_t apps_seed = 12345u;

static inline uint32_t apps_rand(void) {
    apps_seed = apps_seed * 1103515245u + 12345u;
    return apps_seed >> 8;
}

// Not vectorised: keeps the expectation independent of the code under test.
__attribute__((noinline, optimize("no-tree-vectorize"))) static uint64_t apps_fold(const void* data, size_t bytes) {
    const unsigned char* p = (const unsigned char*)data;
    uint64_t h = 1469598103934665603ull;
    for (size_t i = 0; i < bytes; ++i) h = (h ^ p[i]) * 1099511628211ull;
    return h;
}

#define APPS_PRINT_SUM(label, arr) \
    printf("%s: %016llx\n", (label), (unsigned long long)apps_fold((arr), sizeof(arr)))
