// Vector work before fork, in the child, and in the parent after the child
// has finished: each process keeps its own emulated register state.
#include <sys/wait.h>
#include <unistd.h>

#include "apps_common.h"

#define N 900
int v[N], w[N];

__attribute__((noinline)) void scale(int* restrict o, const int* restrict in, int k, int n) {
    for (int i = 0; i < n; ++i) o[i] = in[i] * k + (in[i] >> 4);
}
__attribute__((noinline)) long total(const int* in, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += in[i];
    return s;
}

int main(void) {
    for (int i = 0; i < N; ++i) v[i] = (int)(apps_rand() % 100000) - 50000;
    scale(w, v, 3, N);
    printf("before fork: %ld\n", total(w, N));
    fflush(stdout);
    pid_t child = fork();
    if (child == 0) {
        scale(w, w, 5, N);
        printf("child: %ld\n", total(w, N));
        fflush(stdout);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    scale(w, w, 7, N);
    printf("parent: %ld (child status %d)\n", total(w, N), WEXITSTATUS(status));
    return 0;
}
