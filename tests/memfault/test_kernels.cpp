// The non-fault and contiguous first-fault loads at the edge of a page that
// cannot be read, by the rules this system chose on purpose and the reference
// CPU does not share: LDNF1 clears FFR only for the elements on an unreadable
// page (holes), LDFF1 kernels load what fits before an unreadable next page
// counted by the register element size, and the reference route swallows even
// the first active element's fault.
#include <gtest/gtest.h>

#include <string>

#include "memory/mem_test_util.h"
#include "sve/memory/mem_kernels.h"

namespace {

struct Form {
    const char* name;
    sve_handler h;
    uint32_t word;  // Zt = z17, Pg = p5, Xn = x9; LDNF1 with #1, mul vl; LDFF1 with xzr
    unsigned m, c;  // memory and register element sizes in bytes
    bool sign, nf, reference;
};

const Form nf_b_b = {"ldnf1b .b", VecU8CLoadNF1SIZ, 0xa411b531, 1, 1, false, true, false};
const Form nf_h_h = {"ldnf1h .h", VecU16CLoadNF2SIZ, 0xa4b1b531, 2, 2, false, true, false};
const Form nf_h_s = {"ldnf1h .s", VecU32CLoadNF2SIZ, 0xa4d1b531, 2, 4, false, true, false};
const Form nf_w_s = {"ldnf1w .s", VecU32CLoadNF4SIZ, 0xa551b531, 4, 4, false, true, false};
const Form nf_d = {"ldnf1d", VecU64CLoadNF8SIZ, 0xa5f1b531, 8, 8, false, true, false};
const Form nf_sb_d = {"ldnf1sb .d", VecS64CLoadNF1SIZ, 0xa591b531, 1, 8, true, true, false};
const Form ff_b_b = {"ldff1b .b", VecU8CLoadFF1LSSZ, 0xa41f7531, 1, 1, false, false, false};
const Form ff_b_h = {"ldff1b .h", VecU16CLoadFF1LSSZ, 0xa43f7531, 1, 2, false, false, false};
const Form ff_b_d = {"ldff1b .d", VecU64CLoadFF1LSSZ, 0xa47f7531, 1, 8, false, false, false};
const Form ff_w_s = {"ldff1w .s", VecU32CLoadFF4LSSZ, 0xa55f7531, 4, 4, false, false, false};
const Form ff_w_d = {"ldff1w .d", VecU64CLoadFF4LSSZ, 0xa57f7531, 4, 8, false, false, false};
const Form ff_d = {"ldff1d", VecU64CLoadFF8LSSZ, 0xa5ff7531, 8, 8, false, false, false};
const Form ff_sh_s = {"ldff1sh .s (reference route)", VecS32CLoadFF2LSSZ, 0xa53f7531, 2, 4, true, false, true};

// Strings by element, their last character repeated to the end.
//   pred:   1 active, 0 inactive
//   expect: L loaded, FFR kept       0  zero, FFR kept
//           K register kept, FFR 0   Z  zero, FFR 0
//           U register kept, FFR kept (nothing done)
// Kept FFR bytes are their input bytes on a kernel, bit 0 of them on the
// reference route. Bases are page + offset; page 1 cannot be read, 0, 2 and 3
// can.
struct Case {
    const Form& f;
    unsigned page;
    long offset;
    const char* pred;
    const char* expect;
    bool dies = false;
};
const Case kCases[] = {
    {nf_b_b, 1, -6, "1", "LLLLLLK"},
    {nf_b_b, 1, -6, "111111001", "LLLLLL00K"},
    {nf_b_b, 1, -6, "01", "0LLLLLK"},
    {nf_b_b, 1, -6, "0", "0"},
    {nf_d, 1, -16, "1", "LLK"},
    {nf_h_s, 2, -24, "1", "KKKKKKKKKKKKL"},  // the hole: loaded again after the bad page
    {nf_h_s, 2, -24, "10", "K0"},
    {nf_sb_d, 2, -1, "1", "KL"},
    {nf_w_s, 1, 0, "1", "K"},
    // Element 1 starts on the last readable byte: it passes the one-byte
    // probe and its read ends the process, element 0 loaded.
    {nf_h_h, 1, -3, "1", "LU", true},
    {nf_h_h, 1, -3, "101", "L0K"},
    {ff_b_b, 1, -6, "1", "LLLLLLK"},
    {ff_b_b, 1, -6, "1101", "LL0LLLK"},
    {ff_b_b, 1, -6, "0", "000000K"},
    {ff_d, 1, -12, "1", "LK"},
    {ff_d, 1, -4, "1", "K"},
    {ff_b_h, 1, -10, "1", "LLLLLK"},
    {ff_b_d, 1, -36, "1", "LLLLK"},  // counted by the element size, not the memory size
    {ff_w_d, 1, -20, "1", "LLK"},
    {ff_w_s, 1, -64, "1", "L"},
    {ff_b_b, 3, -6, "1", "L"},   // the next page can be read
    {ff_b_b, 1, -65, "1", "L"},  // the 64 bytes end before the bad page
    {ff_b_b, 1, 100, "1", "U", true},  // the first page cannot be read
    {ff_b_b, 1, 100, "0", "0"},
    {ff_w_s, 2, -10, "1", "U", true},  // next page readable: element 0 is read
    {ff_sh_s, 1, -2, "01", "0Z"},  // the first active element's fault is swallowed
    {ff_sh_s, 1, 0, "1", "Z"},
};

char at(const char* s, unsigned i) {
    const size_t n = std::strlen(s);
    return s[i < n ? i : n - 1];
}

TEST(NonFaultFirstFault, HandWorkedCasesAtAnUnreadablePage) {
    for (bool unmapped : {false, true}) {
        SharedState st;  // before the hole, so that it cannot land there
        Pages pg(4);
        fill(pg.base, 4 * host_page(), 151);
        if (unmapped)
            munmap(pg.page(1), host_page());
        else
            pg.protect(1, PROT_NONE);
        for (const Case& c : kCases) {
            const Form& f = c.f;
            const std::string what = std::string(f.name) + " at page " + std::to_string(c.page) + " " +
                                     std::to_string(c.offset) + " pred " + c.pred + (unmapped ? " unmapped" : "");
            cpu_state* s = st.s;
            std::memset(s, 0xA5, sizeof *s);
            const unsigned n = 64 / f.c;
            for (unsigned k = 0; k < 64; ++k) {
                const unsigned i = k / f.c;
                s->p[5][k] = k % f.c ? 1 : at(c.pred, i) == '1' ? (i & 1 ? 0x01 : 0xFF) : (i & 1 ? 0xFE : 0x00);
                s->ffr[k] = k % 5 == 0 ? 0xFE : 0x03;
            }
            const uint64_t base = pg.addr(c.page, c.offset);
            s->x[9] = f.nf ? base - n * f.m : base;
            ChildResult r = run_in_child([&] { f.h(s, f.word); });
            if (c.dies)
                EXPECT_TRUE(died_once_by_segv(r)) << what << ": " << r.status << " " << r.err;
            else
                ASSERT_TRUE(completed(r)) << what << ": " << r.err;
            for (unsigned i = 0; i < n; ++i) {
                const char e = at(c.expect, i);
                uint64_t want = 0;
                if (e == 'L') {
                    want = get(base + i * f.m, f.m);
                    if (f.sign && f.m < 8 && (want >> (8 * f.m - 1) & 1)) want |= ~0ull << 8 * f.m;
                } else if (e == 'K' || e == 'U') {
                    want = kUntouched;
                }
                if (f.c < 8) want &= (1ull << 8 * f.c) - 1;
                EXPECT_EQ(get(s->z[17] + i * f.c, f.c), want) << what << " element " << i;
                for (unsigned k = i * f.c; k < (i + 1) * f.c; ++k) {
                    const uint8_t in = k % 5 == 0 ? 0xFE : 0x03;
                    const uint8_t kept = f.reference ? in & 1 : in;
                    ASSERT_EQ(s->ffr[k], e == 'K' || e == 'Z' ? 0 : kept) << what << " FFR byte " << k;
                }
            }
        }
    }
}

}  // namespace
