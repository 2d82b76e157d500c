// Integer matrix multiply, C = A * B, and the transpose product A^T * v.
#include "apps_common.h"

#define M 37
#define K 29
#define P 45
int A[M][K], B[K][P], C[M][P];
int v[M], atv[K];

__attribute__((noinline)) void matmul(int (*restrict c)[P], int (*restrict a)[K], int (*restrict b)[P]) {
    for (int i = 0; i < M; ++i) {
        for (int j = 0; j < P; ++j) c[i][j] = 0;
        for (int k = 0; k < K; ++k) {
            int aik = a[i][k];
            for (int j = 0; j < P; ++j) c[i][j] += aik * b[k][j];
        }
    }
}
__attribute__((noinline)) void transpose_times(int* restrict out, int (*restrict a)[K], const int* restrict x) {
    for (int k = 0; k < K; ++k) out[k] = 0;
    for (int i = 0; i < M; ++i)
        for (int k = 0; k < K; ++k) out[k] += a[i][k] * x[i];
}

int main(void) {
    for (int i = 0; i < M; ++i)
        for (int k = 0; k < K; ++k) A[i][k] = (int)(apps_rand() % 201) - 100;
    for (int k = 0; k < K; ++k)
        for (int j = 0; j < P; ++j) B[k][j] = (int)(apps_rand() % 61) - 30;
    for (int i = 0; i < M; ++i) v[i] = (int)(apps_rand() % 11) - 5;
    matmul(C, A, B);
    transpose_times(atv, A, v);
    long trace = 0;
    for (int i = 0; i < M && i < P; ++i) trace += C[i][i];
    printf("C[0][0]=%d C[%d][%d]=%d trace=%ld atv[0]=%d atv[%d]=%d\n", C[0][0], M - 1, P - 1, C[M - 1][P - 1], trace,
           atv[0], K - 1, atv[K - 1]);
    APPS_PRINT_SUM("C", C);
    APPS_PRINT_SUM("atv", atv);
    return 0;
}
