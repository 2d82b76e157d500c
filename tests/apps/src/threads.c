// Several threads doing vector work at once, in three waves of threads, so
// that each thread has SVE state of its own and threads come and go.
#include <pthread.h>

#include "apps_common.h"

#define THREADS 4
#define WAVES 3
#define N 2000
int data[THREADS][N];
long sums[WAVES][THREADS];
int maxima[WAVES][THREADS];

struct job {
    int wave, t;
};

__attribute__((noinline)) void step(int* v, int t, int n) {
    for (int i = 0; i < n; ++i) v[i] = v[i] * 3 + t - (v[i] >> 3);
}
__attribute__((noinline)) long sum(const int* v, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += v[i];
    return s;
}
__attribute__((noinline)) int maximum(const int* v, int n) {
    int m = v[0];
    for (int i = 0; i < n; ++i) m = v[i] > m ? v[i] : m;
    return m;
}

static void* work(void* arg) {
    struct job* j = (struct job*)arg;
    for (int round = 0; round < 5; ++round) step(data[j->t], j->t, N - j->t);
    sums[j->wave][j->t] = sum(data[j->t], N);
    maxima[j->wave][j->t] = maximum(data[j->t], N);
    return NULL;
}

int main(void) {
    for (int t = 0; t < THREADS; ++t)
        for (int i = 0; i < N; ++i) data[t][i] = (int)(apps_rand() % 1000) - 500;
    for (int w = 0; w < WAVES; ++w) {
        pthread_t th[THREADS];
        struct job jobs[THREADS];
        for (int t = 0; t < THREADS; ++t) {
            jobs[t].wave = w;
            jobs[t].t = t;
            pthread_create(&th[t], NULL, work, &jobs[t]);
        }
        for (int t = 0; t < THREADS; ++t) pthread_join(th[t], NULL);
    }
    for (int w = 0; w < WAVES; ++w)
        for (int t = 0; t < THREADS; ++t) printf("wave %d thread %d: sum=%ld max=%d\n", w, t, sums[w][t], maxima[w][t]);
    APPS_PRINT_SUM("data", data);
    return 0;
}
