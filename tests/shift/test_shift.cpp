// The shift kernels take the count as the host never should: a vector count is
// the whole element of Zm, an immediate count is narrowed to the element, and
// a count of the width or above (or "negative" to a host vector shift) has a
// fixed result without reaching a host shift. Also the route every shift form
// takes.
#include "shift/test_machine.h"
#include "sve/integer/shift.h"

namespace {

typedef aarch64_decode_rc (*ZpzKernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg);
typedef aarch64_decode_rc (*ZpiKernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, unsigned);
typedef aarch64_decode_rc (*ZziKernel)(cpu_state*, aarch64_z_reg, aarch64_z_reg, unsigned);
const struct {
    const char* name;
    ZpzKernel zpz;
    ZpiKernel zpi;
    ZziKernel zzi;
} ops[] = {{"lsl", sve_lsl_zpz, sve_lsl_zpi, sve_lsl_zzi},
           {"lsr", sve_lsr_zpz, sve_lsr_zpi, sve_lsr_zzi},
           {"asr", sve_asr_zpz, sve_asr_zpi, sve_asr_zzi}};

// a shifted by count: lsl, lsr, asr. A count above the element's ones exists
// only as an immediate; one above 32 bits only as a vector element.
struct Row {
    uint32_t size;
    unsigned N;
    uint64_t a, count, want[3];
};
const Row rows[] = {
    {ES_B, 8, 0x81, 7, {0x80, 0x01, 0xFF}},
    {ES_B, 8, 0x81, 8, {0, 0, 0xFF}},
    {ES_B, 8, 0x81, 0x80, {0, 0, 0xFF}},  // a negative count to a host vector shift
    {ES_B, 8, 0x7F, 0xFF, {0, 0, 0}},
    {ES_B, 8, 0x81, 0x100, {0x81, 0x81, 0x81}},  // immediate: low byte 0
    {ES_B, 8, 0x81, 0x108, {0, 0, 0xFF}},        // immediate: low byte 8
    {ES_H, 16, 0x8001, 15, {0x8000, 1, 0xFFFF}},
    {ES_H, 16, 0x8001, 16, {0, 0, 0xFFFF}},
    {ES_H, 16, 0x8001, 0x100, {0, 0, 0xFFFF}},  // the whole element counts, not its low byte
    {ES_H, 16, 0x7FFF, 0xFFFF, {0, 0, 0}},
    {ES_H, 16, 0x8001, 0x10000, {0x8001, 0x8001, 0x8001}},  // immediate: low half 0
    {ES_S, 32, 0x80000001, 31, {0x80000000, 1, 0xFFFFFFFF}},
    {ES_S, 32, 0x80000001, 32, {0, 0, 0xFFFFFFFF}},
    {ES_S, 32, 0x80000001, 0x80000000, {0, 0, 0xFFFFFFFF}},
    {ES_S, 32, 0x7FFFFFFF, 0xFFFFFFFF, {0, 0, 0}},
    {ES_D, 64, 0x8000000000000001, 63, {0x8000000000000000, 1, ~0ull}},
    {ES_D, 64, 0x8000000000000001, 64, {0, 0, ~0ull}},
    {ES_D, 64, 0x7FFFFFFFFFFFFFFF, 0xFFFFFFFF, {0, 0, 0}},
    {ES_D, 64, 0x8000000000000001, 0x100000000, {0, 0, ~0ull}},  // vector: low word 0
    {ES_D, 64, 0x8000000000000001, 0x8000000000000000, {0, 0, ~0ull}},
    {ES_D, 64, 0x8000000000000001, ~0ull, {0, 0, ~0ull}},
};

TEST(ShiftKernels, CountsOfTheWidthAndAboveHaveFixedResults) {
    for (const Row& r : rows)
        for (int op = 0; op < 3; ++op) {
            const unsigned n = 512 / r.N;
            const uint64_t want = r.want[op];
            if (r.count <= ones_of(r.N)) {  // z2 = p0 ? z2 << z4 : z2, odd elements inactive
                Machine m;
                m.fill_z(2, r.N, r.a);
                m.fill_z(4, r.N, r.count);
                for (unsigned i = 0; i < n; ++i) m.set_active(0, i, r.N, i % 2 == 0);
                ASSERT_EQ(ops[op].zpz(m.s(), {2, 5, r.size, r.size}, {0, QUAL_MERGE, 7, 7}, {4, r.size, 5, 5}), DECODE_OK);
                for (unsigned i = 0; i < n; ++i)
                    EXPECT_EQ(m.z(2, i, r.N), i % 2 ? r.a : want) << ops[op].name << " ." << r.N << " by z " << std::hex << r.count;
            }
            if (r.count <= 0xFFFFFFFF) {
                Machine m;
                m.fill_z(2, r.N, r.a);
                m.fill_z(3, 64, 0xEEEEEEEEEEEEEEEE);
                for (unsigned i = 0; i < n; ++i) m.set_active(0, i, r.N, i % 2 == 0);
                const unsigned c = static_cast<unsigned>(r.count);
                ASSERT_EQ(ops[op].zzi(m.s(), {3, r.size, 5, 5}, {2, r.size, 5, 5}, c), DECODE_OK);
                ASSERT_EQ(ops[op].zpi(m.s(), {2, 5, r.size, r.size}, {0, QUAL_MERGE, 7, 7}, c), DECODE_OK);
                for (unsigned i = 0; i < n; ++i) {
                    EXPECT_EQ(m.z(3, i, r.N), want) << ops[op].name << " ." << r.N << " by #" << std::hex << c;
                    EXPECT_EQ(m.z(2, i, r.N), i % 2 ? r.a : want) << ops[op].name << " ." << r.N << " /m by #" << std::hex << c;
                }
            }
        }
}

// Every shift row reaches its own handler, and the handler takes its route:
// the kernel route stores the word for the diagnostics, the reference route
// goes through the frame, which normalises FFR to bit 0 of each byte.
struct Form {
    const char* name;
    sve_handler handler;
    bool kernel;
};
#define K_VVM(name, kernel, N, op) {#name, static_cast<sve_handler>(&name), true},
#define K_IM(name, kernel, N, op, immf) K_VVM(name, kernel, N, op)
#define K_IX(name, kernel, N, op, immf) K_VVM(name, kernel, N, op)
#define R_RVVM(name, N, op) {#name, static_cast<sve_handler>(&name), false},
#define R_WM(name, N, op) R_RVVM(name, N, op)
#define R_IM(name, N, op, immf) R_RVVM(name, N, op)
#define R_IX(name, N, op, immf) R_RVVM(name, N, op)
#define R_WX(name, N, op) R_RVVM(name, N, op)
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
        EXPECT_EQ(is_sve(row->bits), f.handler) << f.name;
        Machine m;
        m.s()->instruction = 0xdeadbeef;
        m.s()->ffr[0] = 0xfe;
        EXPECT_EQ(m.exec(row->bits), DECODE_OK) << f.name;
        EXPECT_EQ(m.s()->instruction, f.kernel ? row->bits : 0xdeadbeef) << f.name;
        EXPECT_EQ(m.s()->ffr[0], f.kernel ? 0xfe : 0) << f.name;
    }
}

}  // namespace
