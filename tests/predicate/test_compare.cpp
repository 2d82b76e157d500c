// Integer compares: a Pg (elements 0 and 2) with junk in every non-first
// byte (bit 0 set), a result written clean over 0xff bytes at every element
// size, and nzcv bits 63..32 kept by the kernels but lost by the reference
// route. One row per route and size; compare results themselves are the
// sweep's. Registers: Pd p1, Pg p2, Zn z3, Zm z4 (64-bit lanes of zm).
#include "pred_test.h"

#define CMP_HANDLERS(X)                                                                                       \
    X(VecS8CmpFlgEQVIZ) X(VecS64CmpFlgEQVIZ) X(VecU16CmpFlgGTVIZ) X(VecS8CmpFlgGEVIZ) X(VecS64CmpFlgGEVIZ) \
    X(VecU16CmpFlgLTVWZ)
CMP_HANDLERS(PT_DECLARE)

using namespace pt;

namespace {

TEST(PredCompare, JunkPgCleanResultRouteNzcv) {
    const struct {
        const char* name;
        Handler handler;
        unsigned word;
        bool kernel;
        unsigned size;
        uint64_t zn, zm;  // every element of Zn, every 64-bit lane of Zm
        bool holds;
    } cases[] = {
        {"cmpeq .b #-16", VecS8CmpFlgEQVIZ, 0x25108861, true, 0, 0xf0, 0, true},
        {"cmphi .h #127", VecU16CmpFlgGTVIZ, 0x247fc871, true, 1, 0xffff, 0, true},
        {"cmpeq .d #0", VecS64CmpFlgEQVIZ, 0x25c08861, true, 3, 0, 0, true},
        {"cmpge .b #-16", VecS8CmpFlgGEVIZ, 0x25100861, false, 0, 0x80, 0, false},
        {"cmpge .d #-16", VecS64CmpFlgGEVIZ, 0x25d00861, false, 3, uint64_t(-16), 0, true},
        {"cmplo .h, z4.d", VecU16CmpFlgLTVWZ, 0x2444e861, false, 1, 0xffff, 0x10000, true},
    };
    for (auto& c : cases) {
        auto s = make_state();
        const unsigned w = 1u << c.size;
        for (unsigned i = 0; i < 64; i += w) std::memcpy(s->z[3] + i, &c.zn, w);
        for (unsigned i = 0; i < 64; i += 8) std::memcpy(s->z[4] + i, &c.zm, 8);
        set_pelems(s->p[2], c.size, 0x5);
        std::memset(s->p[1], 0xff, 64);
        const unsigned want = c.holds ? F(1, 0, 0) : F(0, 1, 1);
        s->nzcv = nzcv_with(F(1, 1, 1, 1) ^ want);
        ASSERT_EQ(c.handler(s.get(), c.word), DECODE_OK) << c.name;
        expect_clean_elems(s->p[1], c.size, c.holds ? 0x5 : 0, c.name);
        EXPECT_EQ(flags(s.get()), want) << c.name;
        EXPECT_EQ(s->nzcv & ~NZCV_FLAGS, c.kernel ? kNzcvJunk : kNzcvJunk & 0x0fffffffu) << c.name;
    }
}

}  // namespace
