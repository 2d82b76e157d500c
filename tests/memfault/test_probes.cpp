// How often the non-fault and first-fault kernels probe. Each readability
// probe installs its own SIGSEGV handler and puts the old one back: two
// sigaction calls that install something for SIGSEGV. This test binary
// counts those calls by standing in front of the C library's sigaction.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>

#include "memory/mem_test_util.h"
#include "sve/memory/mem_kernels.h"
#include "sve/memory/memory.h"

namespace {
std::atomic<int> segv_installs{0};
}

extern "C" int sigaction(int sig, const struct sigaction* act, struct sigaction* old) noexcept {
    typedef int (*real_t)(int, const struct sigaction*, struct sigaction*);
    static const real_t real = reinterpret_cast<real_t>(dlsym(RTLD_NEXT, "sigaction"));
    if (sig == SIGSEGV && act != nullptr) ++segv_installs;
    return real(sig, act, old);
}

namespace {

// Elements [from, to) of size `size` inactive in p5, the rest active.
void set_predicate(cpu_state* s, unsigned size, int from, int to) {
    for (unsigned k = 0; k < 64; ++k) s->p[5][k] = k % size == 0 && !(int(k / size) >= from && int(k / size) < to);
}

int probes_of(cpu_state* s, sve_handler h, uint32_t word) {
    segv_installs = 0;
    h(s, word);
    int n = segv_installs;
    EXPECT_EQ(n % 2, 0) << "a probe installs and restores";
    return n / 2;
}

TEST(Probes, TheCountingStandInSeesTheProbesPair) {
    Pages pg(1);
    segv_installs = 0;
    EXPECT_TRUE(addr_is_readable(reinterpret_cast<char volatile*>(pg.page(0))));
    EXPECT_EQ(segv_installs.load(), 2);
}

// ldnf1b {z17.b}, p5/z, [x9, #1, mul vl] and ldnf1d {z17.d}, ...: the first
// probe is made before the predicate is looked at; an active element probes
// again when its page offset is at or below the offset of the last probe.
TEST(Probes, NonFaultProbesOncePerPageAndTwiceForAnActiveFirstElement) {
    SharedState st;  // before the hole, so that it cannot land there
    cpu_state* s = st.s;
    Pages pg(3);
    munmap(pg.page(1), host_page());
    struct {
        const char* what;
        uint64_t base;
        bool doubleword;
        int inactive_from, inactive_to;
        int probes;
    } cases[] = {
        {"6 before the bad page, all active", pg.addr(1) - 6, false, 0, 0, 3},
        {"6 before, elements 6 and 7 inactive", pg.addr(1) - 6, false, 6, 8, 3},
        {"6 before, element 0 inactive", pg.addr(1) - 6, false, 0, 1, 2},
        {"inside one page, all active", pg.addr(0, 1000), false, 0, 0, 2},
        {"inside one page, none active", pg.addr(0, 1000), false, 0, 64, 1},
        {"from the bad page into a good one", pg.addr(2) - 24, false, 0, 0, 3},
        {"doublewords, 16 before the bad page", pg.addr(1) - 16, true, 0, 0, 3},
    };
    for (const auto& c : cases) {
        set_predicate(s, c.doubleword ? 8 : 1, c.inactive_from, c.inactive_to);
        s->x[9] = c.base - 64;
        EXPECT_EQ(probes_of(s, c.doubleword ? VecU64CLoadNF8SIZ : VecU8CLoadNF1SIZ, c.doubleword ? 0xa5f1b531 : 0xa411b531),
                  c.probes)
            << c.what;
    }
}

// ldff1b {z17.b}, p5/z, [x9, x12]: one probe when the 64 bytes after the base
// reach the next page, none otherwise, whatever the predicate.
TEST(Probes, FirstFaultKernelsProbeOnlyAtABoundary) {
    Pages pg(2);
    SharedState st;
    cpu_state* s = st.s;
    s->x[12] = 0;
    struct {
        const char* what;
        uint64_t base;
        bool active;
        int probes;
    } cases[] = {
        {"64 before the page end", pg.addr(1) - 64, true, 1},
        {"1 before the page end", pg.addr(1) - 1, true, 1},
        {"1 before the page end, nothing active", pg.addr(1) - 1, false, 1},
        {"65 before the page end", pg.addr(1) - 65, true, 0},
        {"at a page start", pg.addr(1), true, 0},
    };
    for (const auto& c : cases) {
        set_predicate(s, 1, 0, c.active ? 0 : 64);
        s->x[9] = c.base;
        EXPECT_EQ(probes_of(s, VecU8CLoadFF1LSSZ, 0xa40c7531), c.probes) << c.what;
    }
}

}  // namespace
