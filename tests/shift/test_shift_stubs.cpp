// Kernel names whose instructions take the reference route, in the shift and
// the count families, exist as stubs: they print the unimplemented-kernel line
// with the pc and the stored word, return 2, and change nothing.
#include "shift/test_machine.h"
#include "sve/memory/stubs.h"

SVE_STUB_DECLARE(sve_lslr_zpz, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg)
SVE_STUB_DECLARE(sve_asrd_zpi, aarch64_z_reg, aarch64_p_reg, unsigned)
SVE_STUB_DECLARE(sve_lsr_wide_zzz, aarch64_z_reg, aarch64_z_reg, aarch64_z_reg)
SVE_STUB_DECLARE(sve_decp_rp, aarch64_i_reg, aarch64_p_reg)
SVE_STUB_DECLARE(sve_sqadd_zi, aarch64_z_reg, unsigned)
SVE_STUB_DECLARE(sve_sqincw_rii, aarch64_i_reg, unsigned, unsigned)
SVE_STUB_DECLARE(sve_uqdecd_zii, aarch64_z_reg, unsigned, unsigned)

namespace {

TEST(ShiftAndCountStubs, ReportTheWordAndChangeNothing) {
    const aarch64_z_reg z1{1, 5, 2, 2}, z3{3, 3, 5, 5};
    const aarch64_p_reg p2{2, 4, 7, 7};
    const aarch64_i_reg x3{3, 4, 3, 3};
    struct Case {
        const char* name;
        aarch64_decode_rc rc;
    };
    Machine m;
    for (unsigned i = 0; i < 64; ++i) m.s()->z[1][i] = m.s()->p[2][i] = uint8_t(i * 7);
    m.s()->x[3] = 1000;
    m.s()->pc = reinterpret_cast<uint32_t*>(0x4a5b60);
    m.s()->instruction = 0x04d78861;
    const cpu_state before = *m.s();
    for (int k = 0; k < 7; ++k) {
        testing::internal::CaptureStderr();
        Case c = k == 0   ? Case{"sve_lslr_zpz", sve_lslr_zpz(m.s(), z1, p2, z3)}
                 : k == 1 ? Case{"sve_asrd_zpi", sve_asrd_zpi(m.s(), z1, p2, 3)}
                 : k == 2 ? Case{"sve_lsr_wide_zzz", sve_lsr_wide_zzz(m.s(), z1, z1, z3)}
                 : k == 3 ? Case{"sve_decp_rp", sve_decp_rp(m.s(), x3, p2)}
                 : k == 4 ? Case{"sve_sqadd_zi", sve_sqadd_zi(m.s(), z1, 200)}
                 : k == 5 ? Case{"sve_sqincw_rii", sve_sqincw_rii(m.s(), x3, 31, 1)}
                          : Case{"sve_uqdecd_zii", sve_uqdecd_zii(m.s(), z1, 31, 16)};
        EXPECT_EQ(c.rc, DECODE_UNKNOWN) << c.name;
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  std::string("Unimplemented instruction: [  4a5b60:\t 04d78861\t ") + c.name + "  ]\n");
        EXPECT_EQ(std::memcmp(before.x, m.s()->x, sizeof before.x), 0) << c.name;
        EXPECT_EQ(std::memcmp(before.z, m.s()->z, sizeof before.z), 0) << c.name;
        EXPECT_EQ(std::memcmp(before.p, m.s()->p, sizeof before.p), 0) << c.name;
    }
}

}  // namespace
