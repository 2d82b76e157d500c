// LDFF1, scalar plus scalar, every form through its handler, at the edges of
// a page that cannot be read. The seven kernel forms and the nine reference
// forms follow different rules on purpose; each is written out here.
#include <gtest/gtest.h>

#include <string>

#include "memfault/memfault_forms.h"
#include "sve/core/decode.h"

namespace memfault_test {
namespace {

// Pages 0 and 2 readable, page 1 unreadable (no access or unmapped), or all
// three readable.
enum class Page1 { NoAccess, Unmapped, Readable };

struct Layout {
    explicit Layout(Page1 how) : pg(3) {
        fill(pg.base, 3 * host_page(), 151);
        if (how == Page1::NoAccess) pg.protect(1, PROT_NONE);
        if (how == Page1::Unmapped) munmap(pg.page(1), host_page());
    }
    // A fresh register file, filled with 0xA5 bytes. It is made before the
    // hole, so that no later mapping can land in it.
    cpu_state* state() const {
        std::memset(st.s, 0xA5, sizeof(cpu_state));
        return st.s;
    }
    SharedState st;
    Pages pg;
};

// The first-fault kernel rule. If the 64 bytes from the base cross into the
// next page and that page cannot be read, only the elements that fit before
// the boundary by the element size c are loaded (active ones read, inactive
// ones 0); the rest keep their register values and their FFR bytes become 0.
// Otherwise every element is loaded and FFR is untouched.
unsigned kernel_count(const FFForm& f, uint64_t base, bool next_readable) {
    const uint64_t ps = host_page();
    const uint64_t in_page = base & (ps - 1);
    const bool boundary = in_page > ((base + 64) & (ps - 1));
    if (!boundary || next_readable) return 64 / f.c;
    uint64_t bytes = ps - in_page;
    if (bytes > 64) bytes = 64;
    return unsigned(bytes / f.c);
}

template <typename Active>
void check_kernel(const FFForm& f, const Layout& L, Page1 how, uint64_t base, bool via_xzr, Active active,
                  const std::string& what) {
    cpu_state* s = L.state();
    const unsigned n = 64 / f.c;
    set_predicate(s, f.c, active);
    set_ffr(s);
    s->x[XM] = 5;
    s->x[XN] = via_xzr ? base : base - 5 * f.m;
    const uint32_t word = via_xzr ? f.word_xzr : f.word_xm;
    const uint64_t next = base + host_page();
    const bool next_readable = how == Page1::Readable || next < L.pg.addr(1) || next >= L.pg.addr(2);
    const unsigned count = kernel_count(f, base, next_readable);
    const sve_handler h = is_sve(word);
    ASSERT_EQ(h, f.h) << f.name;
    ChildResult r = run_in_child([&] { h(s, word); });
    ASSERT_TRUE(completed(r)) << f.name << " " << what << ": " << r.err;
    EXPECT_EQ(s->instruction, word) << f.name;
    for (unsigned i = 0; i < n; ++i) {
        uint64_t want = i >= count ? truncate(kUntouched, f.c) : active(i) ? loaded(base + i * f.m, f.m, f.c, f.sign) : 0;
        EXPECT_EQ(get(s->z[ZT] + i * f.c, f.c), want) << f.name << " " << what << " element " << i;
    }
    for (unsigned k = 0; k < 64; ++k)
        ASSERT_EQ(s->ffr[k], k >= count * f.c ? 0 : ffr_input(k)) << f.name << " " << what << " FFR byte " << k;
}

// The reference rule: elements in order; the first active element whose
// first or last byte cannot be read, and everything after it, is 0, and FFR
// is 0 from its first byte on (inactive elements after it included); below it
// FFR is its old bit 0. Nothing faults, the first active element included.
template <typename Active>
void check_reference(const FFForm& f, const Layout& L, Page1 how, uint64_t base, bool via_xzr, Active active,
                     const std::string& what) {
    cpu_state* s = L.state();
    const unsigned n = 64 / f.c;
    set_predicate(s, f.c, active);
    set_ffr(s);
    s->x[XM] = uint64_t(-3);
    s->x[XN] = via_xzr ? base : base + 3 * f.m;
    const uint32_t word = via_xzr ? f.word_xzr : f.word_xm;
    auto bad = [&](uint64_t a) { return how != Page1::Readable && a >= L.pg.addr(1) && a < L.pg.addr(2); };
    unsigned first = n;
    for (unsigned i = 0; i < n && first == n; ++i)
        if (active(i) && (bad(base + i * f.m) || bad(base + i * f.m + f.m - 1))) first = i;
    const sve_handler h = is_sve(word);
    ASSERT_EQ(h, f.h) << f.name;
    ChildResult r = run_in_child([&] { h(s, word); });
    ASSERT_TRUE(completed(r)) << f.name << " " << what << ": " << r.err;
    EXPECT_EQ(s->instruction, kUntouched) << f.name;
    for (unsigned i = 0; i < n; ++i) {
        uint64_t want = i < first && active(i) ? loaded(base + i * f.m, f.m, f.c, f.sign) : 0;
        EXPECT_EQ(get(s->z[ZT] + i * f.c, f.c), want) << f.name << " " << what << " element " << i;
    }
    for (unsigned k = 0; k < 64; ++k)
        ASSERT_EQ(s->ffr[k], k >= first * f.c ? 0 : ffr_input(k) & 1) << f.name << " " << what << " FFR byte " << k;
}

TEST(FirstFault, TheDecoderFindsEachFormsHandler) {
    for (const FFForm& f : kFF) {
        EXPECT_EQ(is_sve(f.word_xm), f.h) << f.name;
        EXPECT_EQ(is_sve(f.word_xzr), f.h) << f.name;
    }
}

TEST(FirstFault, EveryFormAtThePageEdges) {
    for (Page1 how : {Page1::NoAccess, Page1::Unmapped, Page1::Readable}) {
        Layout L(how);
        const uint64_t end = L.pg.addr(1);  // the end of the good page 0
        for (const FFForm& f : kFF) {
            const unsigned n = 64 / f.c;
            const uint64_t footprint = n * f.m;
            struct {
                std::string what;
                uint64_t base;
            } cases[] = {
                {"ending exactly at the page end", end - footprint},
                {"last element past the page end", end - footprint + f.m},
                {"last element straddling the page end", end - footprint + 1},
                {"64 before the page end", end - 64},
                {"65 before the page end", end - 65},
                {"63 before the page end", end - 63},
                {"12 before the page end", end - 12},
                {"one element before the page end", end - f.m},
                {"one byte before the page end", end - 1},
                {"well inside the good page", L.pg.addr(0, 1000)},
            };
            auto all = [](unsigned) { return true; };
            auto sparse = [](unsigned i) { return i % 3 != 1; };
            auto first_off = [](unsigned i) { return i != 0; };
            for (const auto& c : cases) {
                std::string what = c.what + (how == Page1::NoAccess ? " (no access)" : how == Page1::Unmapped ? " (unmapped)" : " (readable)");
                if (f.kernel) {
                    check_kernel(f, L, how, c.base, false, all, what + " all active");
                    check_kernel(f, L, how, c.base, true, all, what + " all active, xzr");
                    check_kernel(f, L, how, c.base, false, sparse, what + " sparse");
                } else {
                    check_reference(f, L, how, c.base, false, all, what + " all active");
                    check_reference(f, L, how, c.base, true, all, what + " all active, xzr");
                    check_reference(f, L, how, c.base, false, sparse, what + " sparse");
                    check_reference(f, L, how, c.base, false, first_off, what + " element 0 inactive");
                }
            }
            if (how == Page1::Readable || f.kernel) continue;
            // The reference forms starting on the bad page: the first active
            // element's fault is swallowed too.
            check_reference(f, L, how, end, false, all, "first element on the bad page");
            check_reference(f, L, how, end - f.m, false, first_off,
                            "element 0 inactive before the bad page, element 1 on it");
        }
    }
}

// A kernel form whose own page is unreadable, with no boundary in reach: an
// active element ends the process with the handler's message; with nothing
// active the load gives zeros and touches nothing. With a boundary in reach
// and a readable next page every element counts as loadable, and the read of
// element 0 ends the process as well.
TEST(FirstFault, AKernelFormWhoseFirstPageIsUnreadableEndsTheProcess) {
    Layout L(Page1::NoAccess);
    for (const FFForm& f : kFF) {
        if (!f.kernel) continue;
        for (uint64_t base : {L.pg.addr(1, 100), L.pg.addr(2) - 10}) {
            cpu_state* s = L.state();
            set_predicate(s, f.c, [](unsigned) { return true; });
            set_ffr(s);
            s->x[XN] = base;
            ChildResult r = run_in_child([&] { f.h(s, f.word_xzr); });
            EXPECT_TRUE(died_by(r, SIGSEGV)) << f.name << " " << r.status;
            EXPECT_EQ(count_of(r.err, kSegvMessage), 1) << f.name << ": " << r.err;

            set_predicate(s, f.c, [](unsigned) { return false; });
            r = run_in_child([&] { f.h(s, f.word_xzr); });
            EXPECT_TRUE(completed(r)) << f.name << ": " << r.err;
            for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->z[ZT][k], 0) << f.name << k;
            for (unsigned k = 0; k < 64; ++k) ASSERT_EQ(s->ffr[k], ffr_input(k)) << f.name << k;
        }
    }
}

// The worked cases with a page size P and the next page unmapped.
TEST(FirstFault, HandWorkedKernelCases) {
    Layout L(Page1::Unmapped);
    const uint64_t end = L.pg.addr(1);
    struct {
        const char* what;
        sve_handler h;
        uint32_t word;  // with xzr
        uint64_t base;
        unsigned c;
        unsigned loaded;  // elements loaded, the rest untouched
    } cases[] = {
        {"ldff1b .b at P-6", VecU8CLoadFF1LSSZ, 0xa41f7531, end - 6, 1, 6},
        {"ldff1d at P-12", VecU64CLoadFF8LSSZ, 0xa5ff7531, end - 12, 8, 1},
        {"ldff1d at P-4", VecU64CLoadFF8LSSZ, 0xa5ff7531, end - 4, 8, 0},
        {"ldff1b .h at P-10", VecU16CLoadFF1LSSZ, 0xa43f7531, end - 10, 2, 5},
        {"ldff1b .d at P-36", VecU64CLoadFF1LSSZ, 0xa47f7531, end - 36, 8, 4},
        {"ldff1b .b at P-64", VecU8CLoadFF1LSSZ, 0xa41f7531, end - 64, 1, 64},
    };
    for (const auto& c : cases) {
        cpu_state* s = L.state();
        std::memset(s->p[PG], 1, 64);
        std::memset(s->ffr, 1, 64);
        s->x[XN] = c.base;
        ChildResult r = run_in_child([&] { c.h(s, c.word); });
        ASSERT_TRUE(completed(r)) << c.what << ": " << r.err;
        for (unsigned k = 0; k < 64; ++k) {
            EXPECT_EQ(s->ffr[k], k < c.loaded * c.c ? 1 : 0) << c.what << " FFR byte " << k;
            if (k >= c.loaded * c.c) {
                EXPECT_EQ(s->z[ZT][k], 0xA5) << c.what << " z byte " << k;
            }
        }
        // Loaded elements are the bytes at base + i, zero-extended.
        for (unsigned i = 0; i < c.loaded; ++i) {
            const unsigned m = c.h == VecU64CLoadFF8LSSZ ? 8 : 1;
            EXPECT_EQ(get(s->z[ZT] + i * c.c, c.c), get(reinterpret_cast<uint8_t*>(c.base + i * m), m)) << c.what << i;
        }
    }
}

// ldff1sh {z17.s}, p5/z, [x9, x12, lsl #1] with its first active element
// unmapped: no fault; it and everything after it 0; FFR cleared from it on,
// inactive elements after it included; the inactive element before it keeps
// its FFR bit. FFR bytes of 0xFF come back as 1.
TEST(FirstFault, HandWorkedReferenceFirstActiveElementUnmapped) {
    Layout L(Page1::Unmapped);
    cpu_state* s = L.state();
    std::memset(s->p[PG], 0, 64);
    for (unsigned i = 1; i < 16; i += 2) s->p[PG][4 * i] = 1;  // odd elements active
    std::memset(s->ffr, 0xFF, 64);
    s->x[XN] = L.pg.addr(1) - 2;  // element 0 is the last readable one, element 1 the first unmapped
    s->x[XM] = 0;
    ChildResult r = run_in_child([&] { VecS32CLoadFF2LSSZ(s, 0xa52c7531); });
    ASSERT_TRUE(completed(r)) << r.err;
    for (unsigned k = 0; k < 64; ++k) {
        EXPECT_EQ(s->z[ZT][k], 0) << k;
        EXPECT_EQ(s->ffr[k], k < 4 ? 1 : 0) << k;
    }
}

}  // namespace
}  // namespace memfault_test
