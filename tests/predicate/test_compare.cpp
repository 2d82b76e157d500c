// Integer compares, through their handlers. Registers of every word: Pd p1,
// Pg p2, Zn z3, Zm z4 (unless the row says otherwise). Expectations are the
// architecture's element compares and PredTest(Pg, result), worked by hand.
#include <vector>

#include "pred_test.h"

#define CMP_HANDLERS(X)                                                                                       \
    X(VecS8CmpFlgEQVIZ) X(VecS64CmpFlgEQVIZ) X(VecU8CmpFlgGTVIZ) X(VecU16CmpFlgGTVIZ) X(VecS32CmpFlgLTVIZ)  \
    X(VecU64CmpFlgLTVIZ) X(VecU8CmpFlgLTVIZ) X(VecS64CmpFlgGTVIZ) X(VecS16CmpFlgLEVIZ) X(VecS32CmpFlgNEVIZ) \
    X(VecS8CmpFlgEQVVZ) X(VecS8CmpFlgNEVVZ) X(VecS8CmpFlgGTVVZ) X(VecS8CmpFlgGEVVZ) X(VecU8CmpFlgGTVVZ)    \
    X(VecU8CmpFlgGEVVZ) X(VecS32CmpFlgGTVVZ) X(VecU32CmpFlgGTVVZ) X(VecS64CmpFlgGEVVZ) X(VecU64CmpFlgGEVVZ) \
    X(VecS8CmpFlgGEVIZ) X(VecS64CmpFlgGEVIZ) X(VecU8CmpFlgGEVIZ) X(VecU16CmpFlgGEVIZ) X(VecU32CmpFlgLEVIZ) \
    X(VecU64CmpFlgLEVIZ) X(VecS8CmpFlgEQVWZ) X(VecU8CmpFlgGTVWZ) X(VecS32CmpFlgLTVWZ) X(VecU16CmpFlgLTVWZ) \
    X(VecS8CmpFlgGEVWZ) X(VecS16CmpFlgNEVWZ) X(VecS32CmpFlgGTVWZ) X(VecS8CmpFlgLEVWZ) X(VecU32CmpFlgGEVWZ) \
    X(VecU16CmpFlgLEVWZ)
CMP_HANDLERS(PT_DECLARE)

using namespace pt;

namespace {

// Writes elements of 1 << size bytes, truncating each value to the element.
void fill_z_size(cpu_state* s, unsigned z, unsigned size, const std::vector<uint64_t>& head, uint64_t rest) {
    const unsigned w = 1u << size;
    for (unsigned i = 0; i < 64 / w; ++i) {
        uint64_t v = i < head.size() ? head[i] : rest;
        std::memcpy(s->z[z] + i * w, &v, w);  // little-endian: the low bytes
    }
}

constexpr int64_t kI64Min = INT64_MIN, kI64Max = INT64_MAX;

struct CmpCase {
    const char* name;
    Handler handler;
    unsigned word;
    char route;  // K kernel, R reference, W wide (reference, Zm read as 64-bit lanes)
    unsigned size;
    std::vector<uint64_t> zn;
    uint64_t zn_rest;
    std::vector<uint64_t> zm;  // elements, or 64-bit lanes for the wide forms
    uint64_t zm_rest;
    uint64_t pg;  // elements
    uint64_t want;
    unsigned flags;
};

constexpr uint64_t ALL = ~0ull;
constexpr char K = 'K', R = 'R', W = 'W';

const CmpCase kCases[] = {
    // Immediate forms, kernel route.
    {"cmpeq .b #-16", VecS8CmpFlgEQVIZ, 0x25108861, K, 0, {0xf0, 0x10, 0xf0, 0}, 5, {}, 0, ALL, 0x5, F(1, 0, 1)},
    {"cmpeq .b empty Pg", VecS8CmpFlgEQVIZ, 0x25108861, K, 0, {}, 0xf0, {}, 0, 0, 0, F(0, 1, 1)},
    {"cmphi .b #127: 0xff is 255", VecU8CmpFlgGTVIZ, 0x243fc871, K, 0, {0xff, 0x7f, 0x80, 0}, 0, {}, 0, ALL, 0x5,
     F(1, 0, 1)},
    {"cmphi .h #127", VecU16CmpFlgGTVIZ, 0x247fc871, K, 1, {0xffff, 0x7f, 0x80, 0x8000}, 0x7f, {}, 0, ALL, 0xd,
     F(1, 0, 1)},
    {"cmphi .h #127, Pg 0 and 2", VecU16CmpFlgGTVIZ, 0x247fc871, K, 1, {0xffff, 0xffff, 0xffff, 0xffff}, 0, {}, 0, 0x5,
     0x5, F(1, 0, 0)},
    {"cmplt .s #0", VecS32CmpFlgLTVIZ, 0x25802861, K, 2, {0xffffffff, 0, 0x80000000, 0x7fffffff}, 1, {}, 0, ALL, 0x5,
     F(1, 0, 1)},
    {"cmplo .d #1", VecU64CmpFlgLTVIZ, 0x24e06861, K, 3, {0, 1, ALL, 0}, 0, {}, 0, ALL, 0xf9, F(1, 0, 0)},
    {"cmplo .b #0 never holds", VecU8CmpFlgLTVIZ, 0x24202861, K, 0, {0, 0xff}, 0, {}, 0, ALL, 0, F(0, 1, 1)},
    {"cmpgt .d #-1", VecS64CmpFlgGTVIZ, 0x25df0871, K, 3, {0, ALL, uint64_t(kI64Min), uint64_t(kI64Max)}, uint64_t(-2),
     {}, 0, ALL, 0x9, F(1, 0, 1)},
    {"cmple .h #15", VecS16CmpFlgLEVIZ, 0x254f2871, K, 1, {15, 16, 0x8000, 0x7fff}, 16, {}, 0, ALL, 0x5, F(1, 0, 1)},
    {"cmpne .s #-1", VecS32CmpFlgNEVIZ, 0x259f8871, K, 2, {0xffffffff, 0xffff, 0}, 0xffffffff, {}, 0, ALL, 0x6,
     F(0, 0, 1)},
    {"cmpeq .d #0 writes group bytes 0", VecS64CmpFlgEQVIZ, 0x25c08861, K, 3, {}, 0, {}, 0, ALL, 0xff, F(1, 0, 0)},

    // Register forms, kernel route: 0x80 and 0x7f tell signed from unsigned.
    {"cmpeq .b", VecS8CmpFlgEQVVZ, 0x2404a861, K, 0, {0x80, 0x7f, 5, 5}, 0, {0x7f, 0x80, 5, 6}, 0, ALL, ~0xbull,
     F(0, 0, 0)},
    {"cmpne .b", VecS8CmpFlgNEVVZ, 0x2404a871, K, 0, {0x80, 0x7f, 5, 5}, 0, {0x7f, 0x80, 5, 6}, 0, ALL, 0xb,
     F(1, 0, 1)},
    {"cmpgt .b", VecS8CmpFlgGTVVZ, 0x24048871, K, 0, {0x80, 0x7f, 5, 5}, 0, {0x7f, 0x80, 5, 6}, 0, ALL, 0x2,
     F(0, 0, 1)},
    {"cmpge .b", VecS8CmpFlgGEVVZ, 0x24048861, K, 0, {0x80, 0x7f, 5, 5}, 0, {0x7f, 0x80, 5, 6}, 0, ALL, ~0x9ull,
     F(0, 0, 0)},
    {"cmphi .b", VecU8CmpFlgGTVVZ, 0x24040871, K, 0, {0x80, 0x7f, 5, 5}, 0, {0x7f, 0x80, 5, 6}, 0, ALL, 0x1,
     F(1, 0, 1)},
    {"cmphs .b", VecU8CmpFlgGEVVZ, 0x24040861, K, 0, {0x80, 0x7f, 5, 5}, 0, {0x7f, 0x80, 5, 6}, 0, ALL, ~0xaull,
     F(1, 0, 0)},
    {"cmpgt .s", VecS32CmpFlgGTVVZ, 0x24848871, K, 2, {0x80000000, 0x7fffffff}, 0, {0x7fffffff, 0x80000000}, 0, ALL,
     0x2, F(0, 0, 1)},
    {"cmphi .s", VecU32CmpFlgGTVVZ, 0x24840871, K, 2, {0x80000000, 0x7fffffff}, 0, {0x7fffffff, 0x80000000}, 0, ALL,
     0x1, F(1, 0, 1)},
    {"cmpge .d", VecS64CmpFlgGEVVZ, 0x24c48861, K, 3, {uint64_t(kI64Min), 5, 5}, 0, {uint64_t(kI64Max), 5, 6}, 0, ALL,
     0xfa, F(0, 0, 0)},
    {"cmphs .d", VecU64CmpFlgGEVVZ, 0x24c40861, K, 3, {uint64_t(kI64Min), 5, 5}, 0, {uint64_t(kI64Max), 5, 6}, 0, ALL,
     0xfb, F(1, 0, 0)},

    // Immediate forms, reference route.
    {"cmpge .b #-16", VecS8CmpFlgGEVIZ, 0x25100861, R, 0, {0xf0, 0xef, 0x7f, 0x80}, 0, {}, 0, ALL, ~0xaull, F(1, 0, 0)},
    {"cmpge .b empty Pg", VecS8CmpFlgGEVIZ, 0x25100861, R, 0, {}, 0, {}, 0, 0, 0, F(0, 1, 1)},
    {"cmpge .d #-16", VecS64CmpFlgGEVIZ, 0x25d00861, R, 3,
     {uint64_t(-16), uint64_t(-17), uint64_t(kI64Max), uint64_t(kI64Min)}, uint64_t(-100), {}, 0, ALL, 0x5, F(1, 0, 1)},
    {"cmphs .b #0, Pg 0..31", VecU8CmpFlgGEVIZ, 0x24200861, R, 0, {}, 0x80, {}, 0, 0xffffffff, 0xffffffff, F(1, 0, 0)},
    {"cmphs .h #127", VecU16CmpFlgGEVIZ, 0x247fc861, R, 1, {0x7f, 0x7e, 0xffff, 0x80}, 0, {}, 0, ALL, 0xd, F(1, 0, 1)},
    {"cmpls .s #5", VecU32CmpFlgLEVIZ, 0x24a16871, R, 2, {5, 6, 0, 0xffffffff}, 7, {}, 0, ALL, 0x5, F(1, 0, 1)},
    {"cmpls .d #0", VecU64CmpFlgLEVIZ, 0x24e02871, R, 3, {0, 1}, 0, {}, 0, ALL, 0xfd, F(1, 0, 0)},

    // Wide forms: element i of esize bits against 64-bit lane i * esize / 64.
    {"cmpeq .b wide: lane 1 is -1, lane 0 is 255", VecS8CmpFlgEQVWZ, 0x24042861, W, 0,
     {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0}, 0xff,
     {0xff, ALL}, 0, ALL, 0x1ff00, F(0, 0, 1)},
    {"cmphi .b wide against 2^63", VecU8CmpFlgGTVWZ, 0x2404c871, W, 0, {}, 0xff, {}, 1ull << 63, ALL, 0, F(0, 1, 1)},
    {"cmplt .s wide", VecS32CmpFlgLTVWZ, 0x24846861, W, 2, {0xffffffff, 5, 0x80000000, 7}, 0, {0, 6}, 0, ALL, 0x5,
     F(1, 0, 1)},
    {"cmplo .h wide", VecU16CmpFlgLTVWZ, 0x2444e861, W, 1, {0xffff, 0xffff, 0, 0x1234, 0xffff, 0xfffe, 0xffff, 0xffff},
     0, {0x10000, 0xffff}, 0, ALL, 0x2f, F(1, 0, 1)},
    {"cmpge .b wide", VecS8CmpFlgGEVWZ, 0x24044861, W, 0, {0x80, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x7f}, 0,
     {uint64_t(-128), 127}, 0, ALL, 0xffffffffffff02ffull, F(1, 0, 0)},
    {"cmpne .h wide: lane 0x10001 is no 16-bit 1", VecS16CmpFlgNEVWZ, 0x24442871, W, 1, {}, 1, {1, 0x10001}, 1, ALL,
     0xf0, F(0, 0, 1)},
    {"cmpgt .s wide", VecS32CmpFlgGTVWZ, 0x24844871, W, 2, {0x7fffffff}, 0, {0x7ffffffe}, 0, ALL, 0x1, F(1, 0, 1)},
    {"cmple .b wide", VecS8CmpFlgLEVWZ, 0x24046871, W, 0, {}, 0x80, {uint64_t(kI64Min)}, uint64_t(-128), ALL, ~0xffull,
     F(0, 0, 0)},
    {"cmphs .s wide", VecU32CmpFlgGEVWZ, 0x2484c861, W, 2, {0xffffffff, 0}, 0xffffffff, {0xffffffff, 0x100000000ull}, 0,
     ALL, 0xfff1, F(1, 0, 0)},
    {"cmpls .h wide", VecU16CmpFlgLEVWZ, 0x2444e871, W, 1, {}, 0x8000, {0x7fff, 0x8000}, ALL, ALL, 0xfffffff0,
     F(0, 0, 0)},


};

TEST(PredCompare, Table) {
    for (const CmpCase& c : kCases) {
        auto s = make_state();
        fill_z_size(s.get(), 3, c.size, c.zn, c.zn_rest);
        fill_z_size(s.get(), 4, c.route == 'W' ? 3 : c.size, c.zm, c.zm_rest);
        set_pelems(s->p[2], c.size, c.pg);
        std::memset(s->p[1], 0xff, 64);  // every byte must be written
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ c.flags);
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        expect_clean_elems(s->p[1], c.size, c.want & (c.size ? (1ull << (64 >> c.size)) - 1 : ALL), c.name);
        EXPECT_EQ(flags(s.get()), c.flags) << c.name;
        // Kernels keep all other bits; the reference route loses 63..32.
        const uint64_t others = c.route == 'K' ? kNzcvJunk : kNzcvJunk & 0x0fffffffu;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, others) << c.name;
    }
}

// cmpeq p2.b, p2/z, z3.b, #0 and its wide twin: Pd is Pg. Pg = {5, 9},
// element 5 holds, 9 does not: with the old Pg the last active element is
// false (C=1); the result alone would give C=0.
TEST(PredCompare, FlagsUseOldPgWhenPdIsPg) {
    struct {
        Handler h;
        unsigned word;
    } forms[] = {{VecS8CmpFlgEQVIZ, 0x25008862}, {VecS8CmpFlgEQVWZ, 0x24042862}};
    for (auto& f : forms) {
        auto s = make_state();
        fill_z_size(s.get(), 3, 0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 0);
        fill_z_size(s.get(), 4, 3, {}, 0);
        set_pelems(s->p[2], 0, 1u << 5 | 1u << 9);
        f.h(s.get(), f.word);
        expect_clean_elems(s->p[2], 0, 1u << 5, "cmpeq into Pg");
        EXPECT_EQ(flags(s.get()), F(1, 0, 1)) << std::hex << f.word;
    }
}

}  // namespace
