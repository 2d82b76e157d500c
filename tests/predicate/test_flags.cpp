// The two flag setters (sve_ptest<> on byte-per-byte registers, PredSetNZC
// and PredSetNZCV on packed values) and FindLastActive / FindFirstActive.
// Expectations are PredTest worked by hand: N = result at the first active
// element, Z = no active element set, C = NOT result at the last active one.
#include "pred_test.h"

using namespace pt;

namespace {

// Runs sve_ptest at the element width of `size`, through the signed or the
// unsigned instantiation.
void run_ptest(cpu_state* s, unsigned size, bool is_signed, const uint8_t* mask, const uint8_t* result) {
    switch (size * 2 + (is_signed ? 1 : 0)) {
        case 0: sve_ptest<unsigned char>(s, mask, result); break;
        case 1: sve_ptest<signed char>(s, mask, result); break;
        case 2: sve_ptest<unsigned short>(s, mask, result); break;
        case 3: sve_ptest<short>(s, mask, result); break;
        case 4: sve_ptest<unsigned int>(s, mask, result); break;
        case 5: sve_ptest<int>(s, mask, result); break;
        case 6: sve_ptest<unsigned long>(s, mask, result); break;
        default: sve_ptest<long>(s, mask, result); break;
    }
}

struct PtestCase {
    const char* name;
    unsigned size;
    uint64_t mask_elems, result_elems;
    unsigned want;
};

const PtestCase kPtestCases[] = {
    {"empty mask", 0, 0, ~0ull, F(0, 1, 1)},
    {"all active, only the first result", 0, ~0ull, 1, F(1, 0, 1)},
    {"only the last byte in both", 0, 1ull << 63, 1ull << 63, F(1, 0, 0)},
    {"result only outside the mask", 0, 0x0f, 0xf0, F(0, 1, 1)},
    {".h first active 2, result at the last active 5", 1, 1u << 2 | 1u << 5, 1u << 5, F(0, 0, 0)},
    {".s all active, only element 15 set", 2, 0xffff, 1u << 15, F(0, 0, 0)},
    {".d active 1..6, result 1 and 3", 3, 0x7e, 0x0a, F(1, 0, 1)},
    {".d empty mask, junk with bit 0 in the other bytes", 3, 0, 0xff, F(0, 1, 1)},
    {".h mask element 0, result element 31", 1, 1, 1u << 31, F(0, 1, 1)},
    {".b mask 0..31, result 32..63", 0, 0xffffffffull, 0xffffffff00000000ull, F(0, 1, 1)},
};

TEST(PredFlags, PtestTable) {
    for (const PtestCase& c : kPtestCases)
        for (bool sgn : {false, true}) {
            auto s = make_state();
            uint8_t mask[64], result[64];
            set_pelems(mask, c.size, c.mask_elems);
            set_pelems(result, c.size, c.result_elems);
            s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.want);  // every flag starts wrong
            run_ptest(s.get(), c.size, sgn, mask, result);
            EXPECT_EQ(flags(s.get()), c.want) << c.name << (sgn ? " signed" : " unsigned");
            EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, kNzcvJunk) << c.name << ": other bits of nzcv";
        }
}

struct NzcCase {
    const char* name;
    int esize;
    uint64_t mask, result;
    unsigned want;  // N Z C, V as it was
};

const NzcCase kNzcCases[] = {
    {"empty mask", 8, 0, ~0ull, F(0, 1, 1)},
    {"all active, only the first result", 8, ~0ull, 1, F(1, 0, 1)},
    {"only the last bit in both", 8, 1ull << 63, 1ull << 63, F(1, 0, 0)},
    {"no overlap", 8, 0xf0, 0x0f, F(0, 1, 1)},
    // Z and C see the whole group, N only its first bit.
    {".h group's second bit only", 16, 1, 2, F(0, 0, 0)},
    {".d last bit of the last active group", 64, 1ull | 1ull << 56, 1ull << 63, F(0, 0, 0)},
    {".s element 1, result inside its group", 32, 1u << 4, 1u | 1u << 5, F(0, 0, 0)},
    {".h every second bit of every group", 16, 0x5555555555555555ull, 0xaaaaaaaaaaaaaaaaull, F(0, 0, 0)},
    {".s mask at no element position", 32, 1u << 5, ~0ull, F(0, 1, 1)},
    {".d first and last of eight", 64, 0x0101010101010101ull, 0x0100000000000001ull, F(1, 0, 0)},
    {"esize 0 has no elements", 0, ~0ull, ~0ull, F(0, 1, 1)},
};

TEST(PredFlags, PredSetNZCAndNZCVTable) {
    for (const NzcCase& c : kNzcCases)
        for (unsigned v_in : {0u, 1u}) {
            CpuContext ctx = make_ctx(F(1, 1, 1, v_in) ^ (c.want & 14));
            PredSetNZC(pv(c.mask), pv(c.result), c.esize, &ctx);
            EXPECT_EQ(flags(ctx), c.want | v_in) << c.name << ": NZC keeps V=" << v_in;
            EXPECT_EQ(ctx.nzcv & 0x0fffffffu, uint32_t(kNzcvJunk) & 0x0fffffffu) << c.name;

            ctx = make_ctx(F(1, 1, 1, v_in) ^ (c.want & 14));
            PredSetNZCV(pv(c.mask), pv(c.result), c.esize, &ctx);
            EXPECT_EQ(flags(ctx), c.want) << c.name << ": NZCV clears V";
            EXPECT_EQ(ctx.nzcv & 0x0fffffffu, uint32_t(kNzcvJunk) & 0x0fffffffu) << c.name;
        }
}

struct FindCase {
    uint64_t mask;
    int esize;
    int last, first;
};

TEST(PredFlags, FindLastAndFirstActive) {
    const FindCase cases[] = {
        {0, 8, -1, -1},
        {1ull << 63, 8, 63, 63},
        {1u << 3 | 1u << 9, 8, 9, 3},
        {1u << 2 | 1u << 9, 16, 1, 1},  // bit 9 is no .h element's position
        {1ull << 56, 64, 7, 7},
        {0xfe, 64, -1, -1},
        {~0ull, 32, 15, 0},
        {~0ull, 0, -1, -1},
    };
    for (const FindCase& c : cases) {
        CpuContext ctx = make_ctx();
        EXPECT_EQ(FindLastActive(pv(c.mask), c.esize, &ctx), c.last) << std::hex << c.mask << " esize " << c.esize;
        EXPECT_EQ(FindFirstActive(pv(c.mask), c.esize, &ctx), c.first) << std::hex << c.mask << " esize " << c.esize;
    }
    CpuContext ctx = make_ctx();
    EXPECT_EQ(uint32_t(FindLastActive(pv(0), 8, &ctx)), 0xffffffffu);
}

}  // namespace
