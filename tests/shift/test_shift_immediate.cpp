// Shifts by an immediate: the count cut from tsz:imm3 in both layouts at every
// element size, asrd's rounding toward zero, the kernels' treatment of counts
// that no handler produces, and the route every shift form takes.
#include "shift/test_machine.h"
#include "sve/integer/shift.h"

namespace {

// One instruction, the value in every element, and the result it must give.
// The words come from the GNU assembler (shown beside each).
struct ImmCase {
    uint32_t word;
    unsigned N;
    uint64_t a, want;
};

// z4 = shift(z5, #imm): imm3 at 18..16, tsz at 23..22:20..19.
const ImmCase unpredicated[] = {
    {0x04289ca4, 8, 0xA5, 0xA5},                                   // lsl z4.b, z5.b, #0
    {0x042f9ca4, 8, 0x03, 0x80},                                   // lsl z4.b, z5.b, #7
    {0x04309ca4, 16, 0xA5A5, 0xA5A5},                              // lsl z4.h, z5.h, #0
    {0x04399ca4, 16, 0x0003, 0x0600},                              // lsl z4.h, z5.h, #9
    {0x043f9ca4, 16, 0x0003, 0x8000},                              // lsl z4.h, z5.h, #15
    {0x04609ca4, 32, 0x89ABCDEF, 0x89ABCDEF},                      // lsl z4.s, z5.s, #0
    {0x04719ca4, 32, 0x3, 0x60000},                                // lsl z4.s, z5.s, #17
    {0x047f9ca4, 32, 0x3, 0x80000000},                             // lsl z4.s, z5.s, #31
    {0x04a09ca4, 64, 0x0123456789ABCDEF, 0x0123456789ABCDEF},      // lsl z4.d, z5.d, #0
    {0x04e19ca4, 64, 0x3, 0x0000000600000000},                     // lsl z4.d, z5.d, #33
    {0x04ff9ca4, 64, 0x3, 0x8000000000000000},                     // lsl z4.d, z5.d, #63
    {0x042f90a4, 8, 0x80, 0xC0},                                   // asr z4.b, z5.b, #1
    {0x042890a4, 8, 0x80, 0xFF},                                   // asr z4.b, z5.b, #8
    {0x043f90a4, 16, 0x8000, 0xC000},                              // asr z4.h, z5.h, #1
    {0x043d90a4, 16, 0x8000, 0xF000},                              // asr z4.h, z5.h, #3
    {0x043090a4, 16, 0x8000, 0xFFFF},                              // asr z4.h, z5.h, #16
    {0x047f90a4, 32, 0x80000000, 0xC0000000},                      // asr z4.s, z5.s, #1
    {0x046090a4, 32, 0x80000000, 0xFFFFFFFF},                      // asr z4.s, z5.s, #32
    {0x04ff90a4, 64, 0x8000000000000000, 0xC000000000000000},      // asr z4.d, z5.d, #1
    {0x04e190a4, 64, 0x8000000000000000, 0xFFFFFFFF00000000},      // asr z4.d, z5.d, #31
    {0x04a090a4, 64, 0x8000000000000000, 0xFFFFFFFFFFFFFFFF},      // asr z4.d, z5.d, #64
    {0x042f94a4, 8, 0x80, 0x40},                                   // lsr z4.b, z5.b, #1
    {0x042894a4, 8, 0xFF, 0},                                      // lsr z4.b, z5.b, #8
    {0x047f94a4, 32, 0x80000000, 0x40000000},                      // lsr z4.s, z5.s, #1
    {0x046c94a4, 32, 0x80000000, 0x800},                           // lsr z4.s, z5.s, #20
    {0x046094a4, 32, 0xFFFFFFFF, 0},                               // lsr z4.s, z5.s, #32
    {0x04fb94a4, 64, 0x8000000000000000, 0x0400000000000000},      // lsr z4.d, z5.d, #5
    {0x04a094a4, 64, 0xFFFFFFFFFFFFFFFF, 0},                       // lsr z4.d, z5.d, #64
};

// z6 = p1 ? shift(z6, #imm) : z6: imm3 at 7..5, tsz at 23..22:9..8.
const ImmCase predicated[] = {
    {0x040385c6, 8, 0x03, 0xC0},                                   // lsl z6.b, p1/m, z6.b, #6
    {0x040385e6, 8, 0x03, 0x80},                                   // lsl z6.b, p1/m, z6.b, #7
    {0x04038766, 16, 0x3, 0x1800},                                 // lsl z6.h, p1/m, z6.h, #11
    {0x040387e6, 16, 0x3, 0x8000},                                 // lsl z6.h, p1/m, z6.h, #15
    {0x044387c6, 32, 0x3, 0xC0000000},                             // lsl z6.s, p1/m, z6.s, #30
    {0x044387e6, 32, 0x3, 0x80000000},                             // lsl z6.s, p1/m, z6.s, #31
    {0x04c38506, 64, 0x3, 0x0000030000000000},                     // lsl z6.d, p1/m, z6.d, #40
    {0x04c387e6, 64, 0x3, 0x8000000000000000},                     // lsl z6.d, p1/m, z6.d, #63
    {0x040085e6, 8, 0x80, 0xC0},                                   // asr z6.b, p1/m, z6.b, #1
    {0x040085c6, 8, 0x80, 0xE0},                                   // asr z6.b, p1/m, z6.b, #2
    {0x04008506, 8, 0x80, 0xFF},                                   // asr z6.b, p1/m, z6.b, #8
    {0x04408726, 32, 0x80000000, 0xFF000000},                      // asr z6.s, p1/m, z6.s, #7
    {0x04408406, 32, 0x80000000, 0xFFFFFFFF},                      // asr z6.s, p1/m, z6.s, #32
    {0x04c087e6, 64, 0x8000000000000000, 0xC000000000000000},      // asr z6.d, p1/m, z6.d, #1
    {0x048087a6, 64, 0x8000000000000000, 0xFFFFFFFFF0000000},      // asr z6.d, p1/m, z6.d, #35
    {0x04808406, 64, 0x8000000000000000, 0xFFFFFFFFFFFFFFFF},      // asr z6.d, p1/m, z6.d, #64
    {0x040185e6, 8, 0x80, 0x40},                                   // lsr z6.b, p1/m, z6.b, #1
    {0x04018506, 8, 0xFF, 0},                                      // lsr z6.b, p1/m, z6.b, #8
    {0x04018786, 16, 0x8000, 0x0800},                              // lsr z6.h, p1/m, z6.h, #4
    {0x04018606, 16, 0xFFFF, 0},                                   // lsr z6.h, p1/m, z6.h, #16
    {0x044187e6, 32, 0x80000000, 0x40000000},                      // lsr z6.s, p1/m, z6.s, #1
    {0x04418406, 32, 0xFFFFFFFF, 0},                               // lsr z6.s, p1/m, z6.s, #32
    {0x04c187e6, 64, 0x8000000000000000, 0x4000000000000000},      // lsr z6.d, p1/m, z6.d, #1
    {0x04818406, 64, 0xFFFFFFFFFFFFFFFF, 0},                       // lsr z6.d, p1/m, z6.d, #64
    // asrd: division by 2^imm rounded toward zero
    {0x040485e6, 8, 0xFF, 0},                                      // asrd z6.b, p1/m, z6.b, #1: -1 -> 0
    {0x040485e6, 8, 0xFD, 0xFF},                                   // asrd z6.b, #1: -3 -> -1
    {0x040485e6, 8, 0x80, 0xC0},                                   // asrd z6.b, #1: -128 -> -64
    {0x040485c6, 8, 0xFB, 0xFF},                                   // asrd z6.b, #2: -5 -> -1
    {0x040485c6, 8, 0x05, 0x01},                                   // asrd z6.b, #2: 5 -> 1
    {0x04048526, 8, 0x80, 0xFF},                                   // asrd z6.b, #7: -128 -> -1
    {0x04048526, 8, 0x81, 0x00},                                   // asrd z6.b, #7: -127 -> 0
    {0x04048506, 8, 0x80, 0},                                      // asrd z6.b, #8: -128 -> 0
    {0x04048506, 8, 0x7F, 0},                                      // asrd z6.b, #8: 127 -> 0
    {0x040487e6, 16, 0xFFFD, 0xFFFF},                              // asrd z6.h, #1: -3 -> -1
    {0x040487c6, 16, 0xFFF9, 0xFFFF},                              // asrd z6.h, #2: -7 -> -1
    {0x040487c6, 16, 0x0007, 0x0001},                              // asrd z6.h, #2: 7 -> 1
    {0x04048626, 16, 0x8000, 0xFFFF},                              // asrd z6.h, #15: min -> -1
    {0x04048626, 16, 0x8001, 0},                                   // asrd z6.h, #15
    {0x04048606, 16, 0x8000, 0},                                   // asrd z6.h, #16: min -> 0
    {0x04048606, 16, 0x7FFF, 0},                                   // asrd z6.h, #16
    {0x044487e6, 32, 0x80000000, 0xC0000000},                      // asrd z6.s, #1
    {0x044487a6, 32, 0xFFFFFFF9, 0},                               // asrd z6.s, #3: -7 -> 0
    {0x044487a6, 32, 0xFFFFFFF7, 0xFFFFFFFF},                      // asrd z6.s, #3: -9 -> -1
    {0x04448426, 32, 0x80000000, 0xFFFFFFFF},                      // asrd z6.s, #31
    {0x04448406, 32, 0x80000000, 0},                               // asrd z6.s, #32
    {0x04448406, 32, 0x7FFFFFFF, 0},                               // asrd z6.s, #32
    {0x04c487e6, 64, 0xFFFFFFFFFFFFFFFF, 0},                       // asrd z6.d, #1: -1 -> 0
    {0x04c487e6, 64, 0xFFFFFFFFFFFFFFFD, 0xFFFFFFFFFFFFFFFF},      // asrd z6.d, #1: -3 -> -1
    {0x04c487a6, 64, 0xFFFFFFFFFFFFFFF7, 0xFFFFFFFFFFFFFFFF},      // asrd z6.d, #3: -9 -> -1
    {0x04c487a6, 64, 9, 1},                                        // asrd z6.d, #3
    {0x04848426, 64, 0x8000000000000000, 0xFFFFFFFFFFFFFFFF},      // asrd z6.d, #63
    {0x04848406, 64, 0x8000000000000000, 0},                       // asrd z6.d, #64: min -> 0
    {0x04848406, 64, 0x7FFFFFFFFFFFFFFF, 0},                       // asrd z6.d, #64
};

TEST(ShiftImmediate, UnpredicatedCountsFromTheWord) {
    for (const ImmCase& c : unpredicated) {
        Machine m;
        m.fill_z(5, c.N, c.a);
        m.fill_z(4, 64, 0xEEEEEEEEEEEEEEEE);
        ASSERT_EQ(m.exec(c.word), DECODE_OK);
        for (unsigned i = 0; i < 512 / c.N; ++i) {
            ASSERT_EQ(m.z(4, i, c.N), c.want) << std::hex << c.word << " element " << std::dec << i;
            ASSERT_EQ(m.z(5, i, c.N), c.a) << "Zn changed";
        }
    }
}

TEST(ShiftImmediate, PredicatedCountsFromTheWordAndMerge) {
    for (const ImmCase& c : predicated) {
        Machine m;
        m.fill_z(6, c.N, c.a);
        for (unsigned i = 0; i < 512 / c.N; ++i) m.set_active(1, i, c.N, i % 3 != 1);
        ASSERT_EQ(m.exec(c.word), DECODE_OK);
        for (unsigned i = 0; i < 512 / c.N; ++i)
            ASSERT_EQ(m.z(6, i, c.N), i % 3 != 1 ? c.want : c.a) << std::hex << c.word << " element " << std::dec << i;
    }
}

// The kernels judge an immediate count by the low 8 or 16 bits at those
// element sizes and by all 32 bits above; at and above the width a left or
// logical shift empties the element, an arithmetic one fills it with the sign.
// No handler gives these counts (left 0..esize-1, right 1..esize).
TEST(ShiftImmediate, KernelsDefineCountsNoHandlerGives) {
    struct Case {
        aarch64_decode_rc (*pred)(cpu_state*, aarch64_z_reg, aarch64_p_reg, unsigned);
        aarch64_decode_rc (*unpred)(cpu_state*, aarch64_z_reg, aarch64_z_reg, unsigned);
        unsigned size, N;
        uint64_t a;
        unsigned count;
        uint64_t want;
    } cases[] = {
        {sve_lsl_zpi, sve_lsl_zzi, ES_B, 8, 0x81, 8, 0},
        {sve_lsl_zpi, sve_lsl_zzi, ES_B, 8, 0x81, 0x108, 0},    // low byte 8
        {sve_lsl_zpi, sve_lsl_zzi, ES_B, 8, 0x81, 0x100, 0x81}, // low byte 0
        {sve_lsl_zpi, sve_lsl_zzi, ES_H, 16, 0x8001, 16, 0},
        {sve_lsl_zpi, sve_lsl_zzi, ES_H, 16, 0x8001, 0x10000, 0x8001},
        {sve_lsl_zpi, sve_lsl_zzi, ES_S, 32, 0x80000001, 32, 0},
        {sve_lsl_zpi, sve_lsl_zzi, ES_S, 32, 0x80000001, 0x80000000, 0},
        {sve_lsl_zpi, sve_lsl_zzi, ES_D, 64, 0x8000000000000001, 64, 0},
        {sve_lsl_zpi, sve_lsl_zzi, ES_D, 64, 0x8000000000000001, 0xFFFFFFFF, 0},
        {sve_lsr_zpi, sve_lsr_zzi, ES_B, 8, 0x81, 8, 0},
        {sve_lsr_zpi, sve_lsr_zzi, ES_B, 8, 0x81, 7, 1},
        {sve_lsr_zpi, sve_lsr_zzi, ES_H, 16, 0x8001, 16, 0},
        {sve_lsr_zpi, sve_lsr_zzi, ES_S, 32, 0x80000001, 31, 1},
        {sve_lsr_zpi, sve_lsr_zzi, ES_S, 32, 0x80000001, 32, 0},
        {sve_lsr_zpi, sve_lsr_zzi, ES_D, 64, 0x8000000000000001, 64, 0},
        {sve_lsr_zpi, sve_lsr_zzi, ES_D, 64, 0x8000000000000001, 63, 1},
        {sve_asr_zpi, sve_asr_zzi, ES_S, 32, 0x80000001, 40, 0xFFFFFFFF},
        {sve_asr_zpi, sve_asr_zzi, ES_S, 32, 0x40000000, 40, 0},
        {sve_asr_zpi, sve_asr_zzi, ES_D, 64, 0x8000000000000001, 0xFFFFFFFF, ~0ull},
        {sve_asr_zpi, sve_asr_zzi, ES_D, 64, 0x8000000000000001, 63, ~0ull},
    };
    for (const Case& c : cases) {
        Machine m;
        m.fill_z(2, c.N, c.a);
        m.fill_z(3, 64, 0xEEEEEEEEEEEEEEEE);
        for (unsigned i = 0; i < 512 / c.N; ++i) m.set_active(0, i, c.N, i % 2 == 0);
        ASSERT_EQ(c.unpred(m.s(), {3, c.size, 5, 5}, {2, c.size, 5, 5}, c.count), DECODE_OK);
        ASSERT_EQ(c.pred(m.s(), {2, 5, c.size, c.size}, {0, QUAL_MERGE, 7, 7}, c.count), DECODE_OK);
        for (unsigned i = 0; i < 512 / c.N; ++i) {
            ASSERT_EQ(m.z(3, i, c.N), c.want) << "unpredicated ." << c.N << " count " << c.count;
            ASSERT_EQ(m.z(2, i, c.N), i % 2 == 0 ? c.want : c.a) << "predicated ." << c.N << " count " << c.count;
        }
    }
}

// Every shift row reaches its own handler, and the handler takes the route it
// must: the kernel route stores the word for the diagnostics, the reference
// route goes through the frame, which normalises FFR to bit 0 of each byte.
struct Form {
    const char* name;
    sve_handler handler;
    bool kernel;
};
#define K_VVM(name, kernel, N, op) {#name, static_cast<sve_handler>(&name), true},
#define R_RVVM(name, N, op) {#name, static_cast<sve_handler>(&name), false},
#define R_WM(name, N, op) {#name, static_cast<sve_handler>(&name), false},
#define K_IM(name, kernel, N, op, immf) {#name, static_cast<sve_handler>(&name), true},
#define R_IM(name, N, op, immf) {#name, static_cast<sve_handler>(&name), false},
#define K_IX(name, kernel, N, op, immf) {#name, static_cast<sve_handler>(&name), true},
#define R_IX(name, N, op, immf) {#name, static_cast<sve_handler>(&name), false},
#define R_WX(name, N, op) {#name, static_cast<sve_handler>(&name), false},
const Form forms[] = {
#include "sve/integer/shift_forms.h"
};

TEST(ShiftRoutes, EveryFormHasItsRowAndRoute) {
    EXPECT_EQ(sizeof forms / sizeof forms[0], 69u);
    for (const Form& f : forms) {
        const sve_row* row = nullptr;
        for (size_t i = 0; i < sve_row_count; ++i)
            if (std::strcmp(sve_rows[i].name, f.name) == 0) row = &sve_rows[i];
        ASSERT_NE(row, nullptr) << f.name;
        EXPECT_EQ(row->handler, f.handler) << f.name;
        EXPECT_EQ(is_sve(row->bits | 0x1f), f.handler) << f.name;
        Machine m;
        m.s()->instruction = 0xdeadbeef;
        m.s()->ffr[0] = 0xfe;
        EXPECT_EQ(m.exec(row->bits), DECODE_OK) << f.name;
        EXPECT_EQ(m.s()->instruction, f.kernel ? row->bits : 0xdeadbeef) << f.name;
        EXPECT_EQ(m.s()->ffr[0], f.kernel ? 0xfe : 0) << f.name;
    }
}

}  // namespace
