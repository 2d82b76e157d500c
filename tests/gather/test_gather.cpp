// Gathers, first-fault gathers and scatters, every form through its handler
// with a word from the assembler, against the architecture's per-element
// addressing worked out here (gather_test_util.h: offset_for).
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "gather/gather_test_util.h"
#include "sve/core/decode.h"

namespace gather_test {
namespace {

bool negative_offsets(const GForm& f) {
    return f.form == Form::VI || f.form == Form::XVS || f.form == Form::XSV ||
           (f.c == 8 && (f.form == Form::VS || f.form == Form::SV));
}

// Points x9 into the middle page (at an odd address, as nothing is aligned)
// and fills the vector operand so that active element i reaches
// x9 +/- m * (13i + 3), below x9 for odd i where the form has signed offsets,
// and inactive element i reaches the trap page. Targets go to `target`.
void place(const GForm& f, cpu_state* s, const LowPages& lp, uint64_t* target) {
    const uint64_t xn = lp.addr(1, 1001);
    s->x[XN] = xn;
    const uint64_t to_trap = (lp.trap() - xn + f.m - 1) / f.m * f.m;
    for (unsigned i = 0; i < elements_of(f); ++i) {
        uint64_t t;
        if (is_active(i)) {
            uint64_t d = f.m * (13 * i + 3);
            t = (i & 1) && negative_offsets(f) ? xn - d : xn + d;
        } else {
            t = xn + to_trap + 8 * i;
        }
        uint64_t v = 0;
        ASSERT_TRUE(offset_for(f, xn, t, 0xDEAD0000u + i, &v)) << f.name << " element " << i;
        put(s->z[ZV] + i * f.c, f.c, v);
        target[i] = t;
    }
}

void fill(uint8_t* p, size_t n, unsigned seed) {
    for (size_t k = 0; k < n; ++k) p[k] = uint8_t(k * seed + 29);
}

// FFR bytes whose bit 0 is 0 for every fifth byte and 1 otherwise, with the
// upper bits set so that normalisation shows.
void set_ffr(cpu_state* s) {
    for (unsigned k = 0; k < 64; ++k) s->ffr[k] = k % 5 == 0 ? 0xFE : 0x03;
}

const uint64_t kUntouched = 0xA5A5A5A5A5A5A5A5ull;

const GForm& form(const std::string& name) {
    for (const GForm& f : kForms)
        if (name == f.name) return f;
    ADD_FAILURE() << "no form " << name;
    return kForms[0];
}
uint32_t word_of(const std::string& name) { return form(name).word; }

bool completed(const ChildResult& r) { return WIFEXITED(r.status) && WEXITSTATUS(r.status) == 0; }

TEST(GatherForms, CountsAndRoutesAreThoseOfTheRouteTables) {
    unsigned count[3] = {}, kernels[3] = {};
    for (const GForm& f : kForms) {
        ++count[static_cast<int>(f.op)];
        kernels[static_cast<int>(f.op)] += f.kernel;
    }
    EXPECT_EQ(count[0], 64u);
    EXPECT_EQ(kernels[0], 37u);
    EXPECT_EQ(count[1], 64u);
    EXPECT_EQ(kernels[1], 0u);
    EXPECT_EQ(count[2], 38u);
    EXPECT_EQ(kernels[2], 22u);
}

TEST(GatherForms, TheDecoderFindsEachFormsHandlerWhateverTheOperandFields) {
    for (const GForm& f : kForms) {
        EXPECT_EQ(is_sve(f.word), f.h) << f.name;
        // Zt, Pg, Xn/Zn and Zm/imm are operand fields.
        EXPECT_EQ(is_sve(f.word ^ 0x001f1fffu), f.h) << f.name;
    }
}

// Every load and first-fault load, all elements readable: active elements
// read m bytes at their own address and extend them, inactive ones are 0 and
// their addresses (on a no-access page) are never touched. The handler goes
// the route of its table cell: a kernel stores the word and leaves FFR as it
// was, a reference operation leaves the word and returns FFR as 0 or 1.
// Second pass: Zt is the offset register itself.
TEST(Gathers, EveryLoadReadsEachActiveElementAtItsOwnAddress) {
    LowPages lp(4);
    ASSERT_NE(lp.base, nullptr);
    fill(lp.base, 3 * host_page(), 151);
    for (const GForm& f : kForms) {
        if (f.op == Op::Store) continue;
        for (unsigned zt : {ZT, ZV}) {
            SharedState st;
            cpu_state* s = st.s;
            set_predicate(s, f.c);
            set_ffr(s);
            uint64_t target[16];
            place(f, s, lp, target);
            const uint32_t word = with_zt(f.word, zt);
            const sve_handler h = is_sve(word);
            ASSERT_EQ(h, f.h) << f.name;
            ChildResult r = run_in_child([&] { h(s, word); });
            ASSERT_TRUE(completed(r)) << f.name << " zt " << zt << ": " << r.err;
            for (unsigned i = 0; i < elements_of(f); ++i) {
                uint64_t want = 0;
                if (is_active(i))
                    want = truncate(extend(get(reinterpret_cast<uint8_t*>(target[i]), f.m), f.m, f.sign), f.c);
                EXPECT_EQ(get(s->z[zt] + i * f.c, f.c), want) << f.name << " zt " << zt << " element " << i;
            }
            EXPECT_EQ(s->instruction, f.kernel ? word : kUntouched) << f.name;
            for (unsigned k = 0; k < 64; ++k)
                ASSERT_EQ(s->ffr[k], f.kernel ? (k % 5 == 0 ? 0xFE : 0x03) : (k % 5 == 0 ? 0 : 1)) << f.name << k;
            for (unsigned z : {16u, 18u, 19u, 21u}) EXPECT_EQ(get(s->z[z], 8), kUntouched) << f.name;
        }
    }
}

// Every scatter: active elements store their low m bytes at their own
// address, nothing else in memory changes, inactive addresses are not touched.
// FFR is left alone by a kernel and normalised by a reference operation.
TEST(Scatters, EveryStoreWritesEachActiveElementAtItsOwnAddressAndNothingElse) {
    LowPages lp(4);
    ASSERT_NE(lp.base, nullptr);
    for (const GForm& f : kForms) {
        if (f.op != Op::Store) continue;
        std::memset(lp.base, 0x5A, 3 * host_page());
        SharedState st;
        cpu_state* s = st.s;
        set_predicate(s, f.c);
        fill(s->z[ZT], 64, 73);
        uint64_t target[16];
        place(f, s, lp, target);
        set_ffr(s);
        const sve_handler h = is_sve(f.word);
        ASSERT_EQ(h, f.h) << f.name;
        ChildResult r = run_in_child([&] { h(s, f.word); });
        ASSERT_TRUE(completed(r)) << f.name << ": " << r.err;
        std::string want(3 * host_page(), '\x5A');
        for (unsigned i = 0; i < elements_of(f); ++i)
            if (is_active(i))
                std::memcpy(&want[target[i] - lp.addr(0)], s->z[ZT] + i * f.c, f.m);
        for (size_t k = 0; k < want.size(); ++k)
            ASSERT_EQ(lp.base[k], uint8_t(want[k])) << f.name << " byte " << k - (lp.addr(1, 1001) - lp.addr(0));
        EXPECT_EQ(s->instruction, f.kernel ? f.word : kUntouched) << f.name;
        for (unsigned k = 0; k < 64; ++k)
            ASSERT_EQ(s->ffr[k], f.kernel ? (k % 5 == 0 ? 0xFE : 0x03) : (k % 5 == 0 ? 0 : 1)) << f.name << k;
    }
}

TEST(Gathers, AllFalsePredicateZeroesAndTouchesNothingWhateverTheOffsets) {
    LowPages lp(2);
    ASSERT_NE(lp.base, nullptr);
    for (const GForm& f : kForms) {
        SharedState st;
        cpu_state* s = st.s;
        std::memset(s->p[PG], 0xFE, 64);
        s->x[XN] = lp.trap();
        for (unsigned i = 0; i < elements_of(f); ++i) put(s->z[ZV] + i * f.c, f.c, f.form == Form::VI ? lp.trap() : 8 * i);
        set_ffr(s);
        ChildResult r = run_in_child([&] { f.h(s, f.word); });
        ASSERT_TRUE(completed(r)) << f.name << ": " << r.err;
        EXPECT_EQ(get(s->z[ZT], 8), f.op == Op::Store ? kUntouched : 0) << f.name;
        EXPECT_EQ(get(s->z[ZT] + 56, 8), f.op == Op::Store ? kUntouched : 0) << f.name;
        // A first-fault gather with nothing active clears nothing.
        if (f.op == Op::LoadFF) {
            EXPECT_EQ(s->ffr[1], 1) << f.name;
        }
    }
}

// The address cases worked out by hand, called through the kernels by name.
TEST(GatherKernels, HandWorkedAddresses) {
    alignas(8) uint8_t buf[1024];
    for (unsigned k = 0; k < sizeof buf; ++k) buf[k] = uint8_t(k * 7 + 1);
    const uint64_t mid = reinterpret_cast<uint64_t>(buf) + 512;
    SharedState st;
    cpu_state* s = st.s;
    std::memset(s->p[PG], 1, 64);
    const aarch64_z_reg zt = {ZT, ES_D, 5, 5}, zv = {ZV, ES_D, 5, 5};
    const aarch64_p_reg pg = {PG, QUAL_ZERO, 7, 7};
    const aarch64_i_rsp_reg xn = {XN, ES_D};
    s->x[XN] = mid;

    // ld1b {z17.d}, p5/z, [x9, z20.d, sxtw] with 0xFFFFFFFF in the low half
    // and anything in the high half reads at x9 - 1.
    for (unsigned i = 0; i < 8; ++i) put(s->z[ZV] + 8 * i, 8, uint64_t(0x12345678u + i) << 32 | 0xFFFFFFFFu);
    sve_ld1b_d_sxtw_zpzr(s, zt, pg, zv, xn);
    EXPECT_EQ(get(s->z[ZT], 8), buf[511]);
    EXPECT_EQ(get(s->z[ZT] + 56, 8), buf[511]);

    // ld1h {z17.d}, p5/z, [x9, z20.d, lsl #1] with offset 3 reads x9 + 6;
    // the unscaled form reads x9 + 3.
    for (unsigned i = 0; i < 8; ++i) put(s->z[ZV] + 8 * i, 8, 3);
    sve_ld1h_d_scaled_zprz(s, zt, pg, xn, zv);
    EXPECT_EQ(get(s->z[ZT], 8), get(buf + 518, 2));
    sve_ld1h_d_zpzr(s, zt, pg, zv, xn);
    EXPECT_EQ(get(s->z[ZT], 8), get(buf + 515, 2));

    // ld1d {z17.d}, p5/z, [z20.d, #248] reads at each base + 248.
    for (unsigned i = 0; i < 8; ++i) put(s->z[ZV] + 8 * i, 8, mid - 248 + 16 * i);
    sve_ld1d_zpzi(s, zt, pg, zv, 31);
    for (unsigned i = 0; i < 8; ++i) EXPECT_EQ(get(s->z[ZT] + 8 * i, 8), get(buf + 512 + 16 * i, 8)) << i;

    // Zt = Zn: every element is loaded from the address it held.
    sve_ld1d_zpzi(s, zv, pg, zv, 31);
    for (unsigned i = 0; i < 8; ++i) EXPECT_EQ(get(s->z[ZV] + 8 * i, 8), get(buf + 512 + 16 * i, 8)) << i;

    // ld1sw {z17.d}, p5/z, [x9, z20.d, sxtw #2] with offset -2 reads x9 - 8,
    // sign-extended.
    put(buf + 504, 4, 0x80000001u);
    for (unsigned i = 0; i < 8; ++i) put(s->z[ZV] + 8 * i, 8, 0x00000001FFFFFFFEull);
    sve_ld1sw_d_sxtw_scaled_zprz(s, zt, pg, xn, zv);
    EXPECT_EQ(get(s->z[ZT], 8), 0xFFFFFFFF80000001ull);

    // ld1d {z17.d}, p5/z, [x9, z20.d, uxtw #3] with 0xFFFFFFFF reads at
    // x9 + 8 * 0xFFFFFFFF, which wraps back to the buffer from a base
    // 8 * 0xFFFFFFFF below it.
    s->x[XN] = mid - 8 * 0xFFFFFFFFull;
    for (unsigned i = 0; i < 8; ++i) put(s->z[ZV] + 8 * i, 8, 0xABCD0000FFFFFFFFull);
    sve_ld1d_uxtw_scaled_zprz(s, zt, pg, xn, zv);
    EXPECT_EQ(get(s->z[ZT], 8), get(buf + 512, 8));
    s->x[XN] = mid;

    // st1d {z17.d}, p5, [x9, z20.d] with all offsets equal leaves the highest
    // active element; with element 7 inactive, element 6.
    for (unsigned i = 0; i < 8; ++i) {
        put(s->z[ZV] + 8 * i, 8, 40);
        put(s->z[ZT] + 8 * i, 8, 0x1111111111111111ull * (i + 1));
    }
    const aarch64_p_reg plain = {PG, QUAL_PLAIN, 7, 7};
    sve_st1d_zpzr(s, zt, plain, zv, xn);
    EXPECT_EQ(get(buf + 552, 8), 0x8888888888888888ull);
    s->p[PG][56] = 0;
    sve_st1d_zpzr(s, zt, plain, zv, xn);
    EXPECT_EQ(get(buf + 552, 8), 0x7777777777777777ull);
}

// The same hand-worked cases on forms that go the reference route.
TEST(GatherReference, HandWorkedAddresses) {
    alignas(8) uint8_t buf[1024];
    for (unsigned k = 0; k < sizeof buf; ++k) buf[k] = uint8_t(k * 7 + 1);
    const uint64_t mid = reinterpret_cast<uint64_t>(buf) + 512;
    SharedState st;
    cpu_state* s = st.s;
    std::memset(s->p[PG], 1, 64);
    s->x[XN] = mid;

    // ld1b {z17.d}, p5/z, [x9, z20.d, uxtw] with element 0xFFFFFFFF reads at
    // x9 + 0xFFFFFFFF: here a base 0xFFFFFFFF below the buffer's middle.
    s->x[XN] = mid - 0xFFFFFFFFull;
    for (unsigned i = 0; i < 8; ++i) put(s->z[ZV] + 8 * i, 8, 0x77777777FFFFFFFFull);
    ASSERT_EQ(VecU64Load1YVSZ(s, word_of("VecU64Load1YVSZ")), DECODE_OK);
    EXPECT_EQ(get(s->z[ZT], 8), buf[512]);
    s->x[XN] = mid;

    // st1h {z17.d}, p5, [x9, z20.d, uxtw #1] with offsets equal: the highest
    // active element wins on this route too.
    for (unsigned i = 0; i < 8; ++i) {
        put(s->z[ZV] + 8 * i, 8, 0xFFFFFFFF00000004ull);
        put(s->z[ZT] + 8 * i, 8, 0x0101010101010101ull * (i + 1));
    }
    ASSERT_EQ(VecU64Store2YSVZ(s, word_of("VecU64Store2YSVZ")), DECODE_OK);
    EXPECT_EQ(get(buf + 520, 2), 0x0808u);
    EXPECT_EQ(buf[522], uint8_t(522 * 7 + 1));
}

// ld1w {z17.s}, p5/z, [z20.s, #20] with base element 0xFFFFFFFC reads at
// 0x100000010: the 32-bit base is widened before the addition, nothing wraps
// at 32 bits.
TEST(GatherReference, VectorPlusImmediateWith32BitBasesCrosses4GiB) {
    const uint64_t four_g = 0x100000000ull;
    void* p = mmap(reinterpret_cast<void*>(four_g - host_page()), 2 * host_page(), PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (p != reinterpret_cast<void*>(four_g - host_page())) {
        if (p != MAP_FAILED) munmap(p, 2 * host_page());
        GTEST_SKIP() << "no mapping possible at 4 GiB";
    }
    put(reinterpret_cast<uint8_t*>(four_g + 16), 4, 0xC0FFEE11u);
    put(reinterpret_cast<uint8_t*>(four_g + 12), 4, 0x0BADF00Du);  // element 1: 0xFFFFFFF8 + 20
    SharedState st;
    cpu_state* s = st.s;
    std::memset(s->p[PG], 0, 64);
    s->p[PG][0] = s->p[PG][4] = 1;
    put(s->z[ZV], 4, 0xFFFFFFFCu);
    put(s->z[ZV] + 4, 4, 0xFFFFFFF8u);
    ChildResult r = run_in_child([&] { VecU32Load4VIZ(s, word_of("VecU32Load4VIZ")); });
    EXPECT_TRUE(completed(r)) << r.err;
    EXPECT_EQ(get(s->z[ZT], 4), 0xC0FFEE11u);
    EXPECT_EQ(get(s->z[ZT] + 4, 4), 0x0BADF00Du);
    munmap(p, 2 * host_page());
}

// A plain gather or scatter with element 5 on a no-access page ends the
// process with the handler's message. A kernel has loaded elements 0 to 4
// into the register; a reference operation hands its result over only at the
// end, so the register is untouched. Stores below element 5 are done on both
// routes.
TEST(GatherFaults, AnActiveElementOnABadPageEndsTheProcessAfterTheElementsBelow) {
    const char* const names[] = {"VecU64Load8VSZ",  "VecU64Load8XVSZ",  "VecU32Load4XSVZ", "VecU32Load4SVZ",
                                 "VecS64Load1YVSZ", "VecU64Load1YVSZ",  "VecU64Store8VSZ", "VecU64Store8XVSZ",
                                 "VecU32Store4XSVZ", "VecU32Store4VIZ", "VecU64Store2VIZ"};
    LowPages lp(4);
    ASSERT_NE(lp.base, nullptr);
    for (const char* name : names) {
        const GForm& f = form(name);
        fill(lp.base, 3 * host_page(), 17);
        SharedState st;
        cpu_state* s = st.s;
        std::memset(s->p[PG], 1, 64);
        fill(s->z[ZT], 64, 91);
        uint8_t data[64];
        std::memcpy(data, s->z[ZT], 64);
        const uint64_t xn = lp.addr(1, 64);
        s->x[XN] = xn;
        uint64_t target[16];
        for (unsigned i = 0; i < elements_of(f); ++i) {
            target[i] = i == 5 ? lp.trap() + 8 : xn + 16 * i;
            uint64_t v;
            ASSERT_TRUE(offset_for(f, xn, target[i], 0x5151, &v)) << name << i;
            put(s->z[ZV] + i * f.c, f.c, v);
        }
        uint8_t before[64];
        std::memcpy(before, s->z[ZT], 64);
        ChildResult r = run_in_child([&] { f.h(s, f.word); });
        EXPECT_TRUE(died_by(r, SIGSEGV)) << name << " " << r.status;
        EXPECT_EQ(count_of(r.err, kSegvMessage), 1) << name << ": " << r.err;
        for (unsigned i = 0; i < elements_of(f); ++i) {
            if (f.op == Op::Store) {
                if (i == 5) continue;
                // Below 5 stored; above it memory still holds the fill pattern.
                uint8_t pattern[8];
                for (unsigned b = 0; b < 8; ++b) pattern[b] = uint8_t((target[i] - lp.addr(0) + b) * 17 + 29);
                uint64_t want = i < 5 ? get(data + i * f.c, f.m) : get(pattern, f.m);
                EXPECT_EQ(get(reinterpret_cast<uint8_t*>(target[i]), f.m), want) << name << " element " << i;
            } else {
                uint64_t want = get(before + i * f.c, f.c);
                if (f.kernel && i < 5)
                    want = truncate(extend(get(reinterpret_cast<uint8_t*>(target[i]), f.m), f.m, f.sign), f.c);
                EXPECT_EQ(get(s->z[ZT] + i * f.c, f.c), want) << name << " element " << i;
            }
        }
    }
}

// First-fault gathers with the element at `bad` on a no-access page (or
// straddling into it): no fault, elements below it loaded (inactive ones 0),
// it and all above it 0, FFR cleared from its first byte to the end, and
// below that FFR is its old bit 0, active and inactive elements alike.
TEST(FirstFaultGathers, AFaultAnywhereIsSwallowedAndClearsFFRFromThere) {
    LowPages lp(4);
    ASSERT_NE(lp.base, nullptr);
    fill(lp.base, 3 * host_page(), 151);
    struct {
        const char* what;
        unsigned bad;
        long into_trap;  // where the bad element's first byte lies, from the trap page
    } cases[] = {
        {"element 2 on the bad page", 2, 16},
        {"first active element on the bad page", 0, 0},
        {"element 3 straddling into the bad page", 3, -1},
    };
    for (const GForm& f : kForms) {
        if (f.op != Op::LoadFF) continue;
        for (const auto& c : cases) {
            SharedState st;
            cpu_state* s = st.s;
            set_predicate(s, f.c);
            set_ffr(s);
            const uint64_t xn = lp.addr(1, 1001);
            s->x[XN] = xn;
            uint64_t target[16];
            const uint64_t to_trap = (lp.trap() - xn + c.into_trap + f.m) / f.m * f.m - f.m;
            for (unsigned i = 0; i < elements_of(f); ++i) {
                target[i] = i == c.bad ? xn + to_trap : xn + f.m * (5 * i + 1);
                uint64_t v;
                ASSERT_TRUE(offset_for(f, xn, target[i], 0x7E57, &v)) << f.name << i;
                put(s->z[ZV] + i * f.c, f.c, v);
            }
            // A one-byte element that starts before the bad page is readable.
            const bool faults = target[c.bad] + f.m > lp.trap();
            const unsigned first_zero = faults ? c.bad : elements_of(f);
            ChildResult r = run_in_child([&] { f.h(s, f.word); });
            ASSERT_TRUE(completed(r)) << f.name << " " << c.what << ": " << r.err;
            for (unsigned i = 0; i < elements_of(f); ++i) {
                uint64_t want = 0;
                if (is_active(i) && i < first_zero)
                    want = truncate(extend(get(reinterpret_cast<uint8_t*>(target[i]), f.m), f.m, f.sign), f.c);
                EXPECT_EQ(get(s->z[ZT] + i * f.c, f.c), want) << f.name << " " << c.what << " element " << i;
            }
            for (unsigned k = 0; k < 64; ++k) {
                uint8_t want = k >= first_zero * f.c ? 0 : (k % 5 == 0 ? 0 : 1);
                ASSERT_EQ(s->ffr[k], want) << f.name << " " << c.what << " FFR byte " << k;
            }
        }
    }
}

// VecU64LoadFF8VIZ with element 2 unmapped and elements 0 to 1 mapped: 0 and
// 1 loaded, 2 to 7 zero, FFR bytes 16 to 63 cleared; FFR bytes of 0xFF come
// back as 1.
TEST(FirstFaultGathers, HandWorkedUnmappedThirdElement) {
    SharedState st;  // before the hole, so that it cannot land there
    cpu_state* s = st.s;
    Pages pg(2);
    munmap(pg.page(1), host_page());
    fill(pg.base, host_page(), 3);
    std::memset(s->p[PG], 1, 64);
    std::memset(s->ffr, 0xFF, 64);
    for (unsigned i = 0; i < 8; ++i) put(s->z[ZV] + 8 * i, 8, i < 2 ? pg.addr(0, 8 * i) : pg.addr(1, 8 * i));
    // ldff1d {z17.d}, p5/z, [z20.d, #40]
    for (unsigned i = 0; i < 8; ++i) put(s->z[ZV] + 8 * i, 8, get(s->z[ZV] + 8 * i, 8) - 40);
    ChildResult r = run_in_child([&] { VecU64LoadFF8VIZ(s, word_of("VecU64LoadFF8VIZ")); });
    ASSERT_TRUE(completed(r)) << r.err;
    EXPECT_EQ(get(s->z[ZT], 8), get(pg.base, 8));
    EXPECT_EQ(get(s->z[ZT] + 8, 8), get(pg.base + 8, 8));
    for (unsigned i = 2; i < 8; ++i) EXPECT_EQ(get(s->z[ZT] + 8 * i, 8), 0u) << i;
    for (unsigned k = 0; k < 64; ++k) EXPECT_EQ(s->ffr[k], k < 16 ? 1 : 0) << k;
}

}  // namespace
}  // namespace gather_test
