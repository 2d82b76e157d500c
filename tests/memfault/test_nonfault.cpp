// LDNF1: every form through its handler, at the edges of a page that cannot
// be read. The rule: an active element whose first byte is on a readable page
// is loaded; one whose first byte is on an unreadable page keeps its register
// value and clears its own FFR bytes, and nothing else; an inactive element is
// 0 and keeps its FFR bytes. Nothing ever faults, except an element whose
// first byte can be read and whose tail cannot.
#include <gtest/gtest.h>

#include <string>

#include "memfault/memfault_forms.h"
#include "sve/core/decode.h"

namespace memfault_test {
namespace {

enum class Bad { NoAccess, Unmapped };

// Three pages: 0 and 2 readable, 1 unreadable.
struct Layout {
    explicit Layout(Bad how) : pg(3) {
        fill(pg.base, 3 * host_page(), 151);
        if (how == Bad::NoAccess)
            pg.protect(1, PROT_NONE);
        else
            munmap(pg.page(1), host_page());
    }
    bool readable(uint64_t a) const { return a < pg.addr(1) || a >= pg.addr(2); }
    // A fresh register file, filled with 0xA5 bytes. It is made before the
    // hole, so that no later mapping can land in it.
    cpu_state* state() const {
        std::memset(st.s, 0xA5, sizeof(cpu_state));
        return st.s;
    }
    SharedState st;
    Pages pg;
};

struct Case {
    std::string what;
    uint64_t base;
};

std::string str(const char* a, const std::string& b) { return std::string(a) + " " + b; }

// Runs the form at `base` through one of its two words and checks every
// element and FFR byte by the rule above.
template <typename Active>
void check_nf(const NFForm& f, const Layout& L, uint64_t base, bool minus8, Active active, const std::string& what) {
    cpu_state* s = L.state();
    const unsigned n = 64 / f.c;
    const uint64_t footprint = n * f.m;
    set_predicate(s, f.c, active);
    set_ffr(s);
    s->x[XN] = minus8 ? base + 8 * footprint : base - footprint;
    const uint32_t word = minus8 ? f.word_minus8 : f.word_plus1;
    const sve_handler h = is_sve(word);
    ASSERT_EQ(h, f.h) << f.name;
    ChildResult r = run_in_child([&] { h(s, word); });
    ASSERT_TRUE(completed(r)) << str(f.name, what) << ": " << r.err;
    EXPECT_EQ(s->instruction, word) << f.name;
    for (unsigned i = 0; i < n; ++i) {
        const uint64_t at = base + i * f.m;
        uint64_t want = 0;
        bool keep_ffr = true;
        if (active(i)) {
            if (L.readable(at)) {
                want = loaded(at, f.m, f.c, f.sign);
            } else {
                want = truncate(kUntouched, f.c);
                keep_ffr = false;
            }
        }
        EXPECT_EQ(get(s->z[ZT] + i * f.c, f.c), want) << str(f.name, what) << " element " << i;
        for (unsigned b = 0; b < f.c; ++b)
            ASSERT_EQ(s->ffr[i * f.c + b], keep_ffr ? ffr_input(i * f.c + b) : 0)
                << str(f.name, what) << " FFR byte " << i * f.c + b;
    }
}

TEST(NonFault, TheDecoderFindsEachFormsHandler) {
    for (const NFForm& f : kNF) {
        EXPECT_EQ(is_sve(f.word_plus1), f.h) << f.name;
        EXPECT_EQ(is_sve(f.word_minus8), f.h) << f.name;
    }
}

TEST(NonFault, EveryFormAtThePageEdgesNeverFaults) {
    for (Bad how : {Bad::NoAccess, Bad::Unmapped}) {
        Layout L(how);
        for (const NFForm& f : kNF) {
            const uint64_t footprint = (64 / f.c) * f.m;
            const Case cases[] = {
                {"ending exactly at the bad page", L.pg.addr(1) - footprint},
                {"last element on the bad page", L.pg.addr(1) - footprint + f.m},
                {"all on the bad page", L.pg.addr(1)},
                {"from the bad page into a good one", L.pg.addr(2) - 24},
                {"bad page's last byte, then a good page", L.pg.addr(2) - 1},
                {"well inside a good page", L.pg.addr(0, 1000)},
            };
            auto all = [](unsigned) { return true; };
            auto sparse = [](unsigned i) { return i % 3 != 1; };
            auto none = [](unsigned) { return false; };
            auto first_off = [](unsigned i) { return i != 0; };
            for (const Case& c : cases) {
                for (bool minus8 : {false, true}) {
                    std::string what = c.what + (minus8 ? " (#-8)" : " (#1)") + (how == Bad::NoAccess ? " no-access" : " unmapped");
                    check_nf(f, L, c.base, minus8, all, what + " all active");
                    if (minus8) continue;  // the immediate changes nothing about the predicate
                    check_nf(f, L, c.base, minus8, sparse, what + " sparse");
                    check_nf(f, L, c.base, minus8, none, what + " none active");
                    check_nf(f, L, c.base, minus8, first_off, what + " element 0 inactive");
                }
            }
        }
    }
}

// An element whose first byte is the last readable one and whose tail lies on
// the bad page passes the one-byte probe; its read ends the process, with the
// elements below it loaded. Inactive, it is skipped and the load completes.
TEST(NonFault, AStraddlingActiveElementEndsTheProcess) {
    Layout L(Bad::NoAccess);
    for (const NFForm& f : kNF) {
        if (f.m == 1) continue;
        const unsigned n = 64 / f.c;
        const uint64_t base = L.pg.addr(1) - (n - 1) * f.m - 1;  // element n-1 starts one byte before the bad page
        cpu_state* s = L.state();
        set_predicate(s, f.c, [](unsigned) { return true; });
        set_ffr(s);
        s->x[XN] = base - n * f.m;
        ChildResult r = run_in_child([&] { f.h(s, f.word_plus1); });
        EXPECT_TRUE(died_by(r, SIGSEGV)) << f.name << " " << r.status;
        EXPECT_EQ(count_of(r.err, kSegvMessage), 1) << f.name << ": " << r.err;
        for (unsigned i = 0; i + 1 < n; ++i)
            EXPECT_EQ(get(s->z[ZT] + i * f.c, f.c), loaded(base + i * f.m, f.m, f.c, f.sign)) << f.name << " " << i;
        EXPECT_EQ(get(s->z[ZT] + (n - 1) * f.c, f.c), truncate(kUntouched, f.c)) << f.name;
        for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->ffr[k], ffr_input(k)) << f.name << k;

        set_predicate(s, f.c, [n](unsigned i) { return i != n - 1; });
        r = run_in_child([&] { f.h(s, f.word_plus1); });
        EXPECT_TRUE(completed(r)) << f.name << ": " << r.err;
        EXPECT_EQ(get(s->z[ZT] + (n - 1) * f.c, f.c), 0u) << f.name;
    }
}

// The worked cases: ldnf1b at 6 bytes before an unmapped page, all active:
// elements 0 to 5 loaded, 6 to 63 keep their z byte and clear their own FFR
// byte. With elements 6 and 7 inactive those two are zeroed and keep FFR.
TEST(NonFault, HandWorkedByteLoadAtSixBeforeTheBoundary) {
    Layout L(Bad::Unmapped);
    cpu_state* s = L.state();
    const uint64_t base = L.pg.addr(1) - 6;
    for (bool six_seven_off : {false, true}) {
        std::memset(s->p[PG], 1, 64);
        if (six_seven_off) s->p[PG][6] = s->p[PG][7] = 0;
        std::memset(s->ffr, 1, 64);
        std::memset(s->z[ZT], 0xA5, 64);
        s->x[XN] = base - 64;
        ASSERT_EQ(VecU8CLoadNF1SIZ(s, 0xa411b531), DECODE_OK);
        for (unsigned i = 0; i < 64; ++i) {
            const bool off = six_seven_off && (i == 6 || i == 7);
            EXPECT_EQ(s->z[ZT][i], i < 6 ? L.pg.page(0)[host_page() - 6 + i] : off ? 0 : 0xA5) << i;
            EXPECT_EQ(s->ffr[i], i < 6 || off ? 1 : 0) << i;
        }
    }
}

}  // namespace
}  // namespace memfault_test
