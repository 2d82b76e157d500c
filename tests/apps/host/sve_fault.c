// An SVE load from a page that cannot be read: the program must die of
// SIGSEGV, emulated or not.
#include <stdio.h>
#include <sys/mman.h>

__attribute__((noinline)) long sum(const int* p, int n) {
    long s = 0;
    for (int i = 0; i < n; ++i) s += p[i];
    return s;
}

int main(void) {
    static int ok[64];
    for (int i = 0; i < 64; ++i) ok[i] = i;
    printf("sum=%ld\n", sum(ok, 64));
    fflush(stdout);
    int* bad = mmap(NULL, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    printf("sum=%ld\n", sum(bad, 64));
    return 0;
}
