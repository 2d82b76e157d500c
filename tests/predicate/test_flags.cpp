// The flag helpers on junk-filled storage (sve_ptest<> on byte-per-byte
// registers, PredSetNZC/PredSetNZCV and FindLast/FirstActive on packed
// values with bits between element positions), and flags taken from the old
// governing predicate when the destination is that register.
#include "pred_test.h"

aarch64_decode_rc VecS8CmpFlgEQVIZ(cpu_state*, unsigned);
aarch64_decode_rc VecS8CmpFlgEQVWZ(cpu_state*, unsigned);

using namespace pt;

namespace {

CpuContext make_ctx(unsigned flags_in = 0) {
    CpuContext c{};
    c.nzcv = uint32_t(nzcv_with(flags_in));
    c.vl = 8;
    return c;
}
PredV pv(uint64_t w0) { return PredV{{w0}}; }

// Mask and result hold junk with bit 0 set in every non-first byte. The
// signed instantiations share the unsigned ones' code (only sizeof(T) counts).
TEST(PredFlags, PtestIgnoresNonFirstBytes) {
    void (*const ptest[4])(cpu_state*, const uint8_t*, const uint8_t*) = {
        sve_ptest<uint8_t>, sve_ptest<uint16_t>, sve_ptest<uint32_t>, sve_ptest<uint64_t>};
    const struct {
        unsigned size;
        uint64_t mask, result;
        unsigned want;
    } cases[] = {
        {0, 1ull << 63, 1ull << 63, F(1, 0, 0)},
        {1, 1u << 2 | 1u << 5, 1u << 5, F(0, 0, 0)},
        {2, 0xffff, 1u << 15, F(0, 0, 0)},
        {3, 0x7e, 0x0a, F(1, 0, 1)},
        {3, 0, 0xff, F(0, 1, 1)},
    };
    for (auto& c : cases) {
        auto s = make_state();
        uint8_t mask[64], result[64];
        set_pelems(mask, c.size, c.mask);
        set_pelems(result, c.size, c.result);
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.want);
        ptest[c.size](s.get(), mask, result);
        EXPECT_EQ(flags(s.get()), c.want) << c.size << std::hex << " " << c.mask;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk) << c.size << ": other bits of nzcv";
    }
}

// Z and C see the whole group of bits, N only the group's first bit.
TEST(PredFlags, PredSetNZCAndNZCVOnGroups) {
    const struct {
        const char* name;
        int esize;
        uint64_t mask, result;
        unsigned want;  // N Z C
    } cases[] = {
        {".h group's second bit only", 16, 1, 2, F(0, 0, 0)},
        {".d last bit of the last active group", 64, 1ull | 1ull << 56, 1ull << 63, F(0, 0, 0)},
        {".s element 1, result inside its group", 32, 1u << 4, 1u | 1u << 5, F(0, 0, 0)},
        {".s mask at no element position", 32, 1u << 5, ~0ull, F(0, 1, 1)},
        {"esize 0 has no elements", 0, ~0ull, ~0ull, F(0, 1, 1)},
    };
    for (auto& c : cases)
        for (unsigned v_in : {0u, 1u}) {
            CpuContext ctx = make_ctx(F(1, 1, 1, v_in) ^ c.want);
            PredSetNZC(pv(c.mask), pv(c.result), c.esize, &ctx);
            EXPECT_EQ(flags(ctx), c.want | v_in) << c.name << ": NZC keeps V=" << v_in;
            EXPECT_EQ(ctx.nzcv & 0x0fffffffu, uint32_t(kNzcvJunk) & 0x0fffffffu) << c.name;

            ctx = make_ctx(F(1, 1, 1, v_in) ^ c.want);
            PredSetNZCV(pv(c.mask), pv(c.result), c.esize, &ctx);
            EXPECT_EQ(flags(ctx), c.want) << c.name << ": NZCV clears V";
            EXPECT_EQ(ctx.nzcv & 0x0fffffffu, uint32_t(kNzcvJunk) & 0x0fffffffu) << c.name;
        }
}

TEST(PredFlags, FindLastAndFirstActiveSkipNonElementBits) {
    const struct {
        uint64_t mask;
        int esize, last, first;
    } cases[] = {
        {1u << 2 | 1u << 9, 16, 1, 1},  // bit 9 is no .h element's position
        {0xfe, 64, -1, -1},
        {1ull << 56, 64, 7, 7},
        {~0ull, 0, -1, -1},
    };
    for (auto& c : cases) {
        CpuContext ctx = make_ctx();
        EXPECT_EQ(FindLastActive(pv(c.mask), c.esize, &ctx), c.last) << std::hex << c.mask << " esize " << c.esize;
        EXPECT_EQ(FindFirstActive(pv(c.mask), c.esize, &ctx), c.first) << std::hex << c.mask << " esize " << c.esize;
    }
}

// Pd is Pg (p2); every row's old Pg has its last active element false in
// the result (C=1), while the new Pg alone would end on a true one (C=0).
// z3 is 0 but for byte 9, which holds 1; z4 is 0.
TEST(PredFlags, FlagsUseOldPgWhenPdIsPg) {
    const struct {
        const char* name;
        Handler handler;
        unsigned word;
        uint64_t pg, pn, pm, want;
    } cases[] = {
        {"ands p2.b, p2/z, p3.b, p4.b", VecPAndFlgPPZ, 0x25444862, 1u << 3 | 1u << 9, 1u << 3 | 1u << 4,
         1u << 3 | 1u << 9, 1u << 3},
        {"cmpeq p2.b, p2/z, z3.b, #0", VecS8CmpFlgEQVIZ, 0x25008862, 1u << 5 | 1u << 9, 0, 0, 1u << 5},
        {"cmpeq p2.b, p2/z, z3.b, z4.d", VecS8CmpFlgEQVWZ, 0x24042862, 1u << 5 | 1u << 9, 0, 0, 1u << 5},
        {"brkpbs p2.b, p2/z, p3.b, p4.b", VecPBreakPrevBFlgPZ, 0x2544c872, 0x56, 1u << 6, 1u << 3 | 1u << 4, 0x06},
    };
    for (auto& c : cases) {
        auto s = make_state();
        std::memset(s->z[3], 0, 64);
        std::memset(s->z[4], 0, 64);
        s->z[3][9] = 1;
        set_pelems(s->p[2], 0, c.pg);
        set_pelems(s->p[3], 0, c.pn);
        set_pelems(s->p[4], 0, c.pm);
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        expect_clean_elems(s->p[2], 0, c.want, c.name);
        EXPECT_EQ(flags(s.get()), F(1, 0, 1)) << c.name;
    }
}

}  // namespace
