// Strided access: every second and every third element, and a column of a
// row-major table.
#include "apps_common.h"

#define N 999
int pairs[2 * N], triples[3 * N];
int even[N], odd[N], sum3[N];
int table[64][40], column[64];
short wide[5 * N], picked[N];

__attribute__((noinline)) void split_pairs(int* restrict e, int* restrict o, const int* restrict p, int n) {
    for (int i = 0; i < n; ++i) {
        e[i] = p[2 * i];
        o[i] = p[2 * i + 1];
    }
}
__attribute__((noinline)) void add_triples(int* restrict out, const int* restrict t, int n) {
    for (int i = 0; i < n; ++i) out[i] = t[3 * i] + 2 * t[3 * i + 1] - t[3 * i + 2];
}
__attribute__((noinline)) void get_column(int* restrict out, int (*restrict t)[40], int col, int rows) {
    for (int r = 0; r < rows; ++r) out[r] = t[r][col] * 3;
}
__attribute__((noinline)) void pick_every_fifth(short* restrict out, const short* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = in[5 * i];
}

int main(void) {
    for (int i = 0; i < 2 * N; ++i) pairs[i] = (int)apps_rand();
    for (int i = 0; i < 3 * N; ++i) triples[i] = (int)(apps_rand() % 1000);
    for (int r = 0; r < 64; ++r)
        for (int c = 0; c < 40; ++c) table[r][c] = r * 100 + c;
    for (int i = 0; i < 5 * N; ++i) wide[i] = (short)apps_rand();
    split_pairs(even, odd, pairs, N);
    add_triples(sum3, triples, N);
    get_column(column, table, 17, 64);
    pick_every_fifth(picked, wide, N);
    printf("even[5]=%d odd[5]=%d sum3[0]=%d sum3[%d]=%d column[63]=%d picked[9]=%d\n", even[5], odd[5], sum3[0],
           N - 1, sum3[N - 1], column[63], picked[9]);
    APPS_PRINT_SUM("even", even);
    APPS_PRINT_SUM("odd", odd);
    APPS_PRINT_SUM("sum3", sum3);
    APPS_PRINT_SUM("column", column);
    APPS_PRINT_SUM("picked", picked);
    return 0;
}
