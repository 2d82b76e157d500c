// The kernel-route shift forms also have their reference operation, which no
// handler calls. The two are written independently (host shifts guarded by
// the width, against 128-bit pseudocode integers) and must agree on every
// count, including those no handler produces.
#include <random>

#include "shift/test_machine.h"
#include "sve/core/handler_util.h"
#include "sve/integer/shift.h"

namespace {

VecVal zval(const Machine& m, unsigned r) {
    VecVal v{};
    std::memcpy(v.b, m.st->z[r], 64);
    return v;
}
PredV pval(const Machine& m, unsigned r) {
    PredV p{};
    for (unsigned i = 0; i < 64; ++i) p.w[0] |= uint64_t(m.st->p[r][i] & 1) << i;
    return p;
}
constexpr uint32_t es(unsigned N) { return N == 8 ? ES_B : N == 16 ? ES_H : N == 32 ? ES_S : ES_D; }

// Counts at and around every edge of an N-bit element, then random ones.
uint64_t edge_count(std::mt19937_64& rng, unsigned N, unsigned k) {
    const uint64_t edges[] = {0, 1, N - 1u, N, N + 1u, 2 * N - 1u, 0x80, 0xFF, 0x100, 0x100 + N - 1u,
                              0x7FFFFFFF, 0x80000000, 0x100000000, 0x8000000000000000, ~0ull};
    uint64_t c = k < std::size(edges) ? edges[k] : rng() >> (rng() % 64);
    return c & ones_of(N);
}

struct Agree {
    std::mt19937_64 rng{12345};
    CpuContext ctx{0, 0, 0, 8, {}};

    template <unsigned N>
    void vvm(const char* name, aarch64_decode_rc (*kernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg),
             VecVal (*ref)(VecVal, PredV, VecVal, CpuContext*)) {
        for (unsigned k = 0; k < 40; ++k) {
            Machine m;
            for (unsigned i = 0; i < 512 / N; ++i) {
                m.set_z(1, i, N, rng());
                m.set_z(3, i, N, edge_count(rng, N, (k + i) % 40));
            }
            for (unsigned i = 0; i < 64; ++i) m.st->p[2][i] = uint8_t(rng());
            VecVal want = ref(zval(m, 1), pval(m, 2), zval(m, 3), &ctx);
            ASSERT_EQ(kernel(m.s(), zreg_dst(1, es(N)), preg(2, QUAL_MERGE), zreg(3, es(N))), DECODE_OK);
            ASSERT_EQ(std::memcmp(m.st->z[1], want.b, 64), 0) << name << " case " << k;
        }
    }
    // Immediate forms: every count the handlers give and a few beyond.
    template <unsigned N>
    void im(const char* name, aarch64_decode_rc (*kernel)(cpu_state*, aarch64_z_reg, aarch64_p_reg, unsigned),
            VecVal (*ref)(VecVal, PredV, uint64_t, CpuContext*)) {
        for (unsigned c = 0; c <= N + 2; ++c) {
            Machine m;
            for (unsigned i = 0; i < 512 / N; ++i) m.set_z(1, i, N, rng());
            for (unsigned i = 0; i < 64; ++i) m.st->p[2][i] = uint8_t(rng());
            VecVal want = ref(zval(m, 1), pval(m, 2), c, &ctx);
            ASSERT_EQ(kernel(m.s(), zreg_dst(1, es(N)), preg(2, QUAL_MERGE), c), DECODE_OK);
            ASSERT_EQ(std::memcmp(m.st->z[1], want.b, 64), 0) << name << " count " << c;
        }
    }
    template <unsigned N>
    void ix(const char* name, aarch64_decode_rc (*kernel)(cpu_state*, aarch64_z_reg, aarch64_z_reg, unsigned),
            VecVal (*ref)(VecVal, uint64_t, CpuContext*)) {
        for (unsigned c = 0; c <= N + 2; ++c) {
            Machine m;
            for (unsigned i = 0; i < 512 / N; ++i) m.set_z(5, i, N, rng());
            VecVal want = ref(zval(m, 5), c, &ctx);
            ASSERT_EQ(kernel(m.s(), zreg(4, es(N)), zreg(5, es(N)), c), DECODE_OK);
            ASSERT_EQ(std::memcmp(m.st->z[4], want.b, 64), 0) << name << " count " << c;
        }
    }
};

TEST(ShiftRoutesAgree, KernelsAndTheirReferenceOperations) {
    Agree a;
#define K_VVM(name, kernel, N, op) a.vvm<N>(#name, kernel, name);
#define R_RVVM(name, N, op)
#define R_WM(name, N, op)
#define K_IM(name, kernel, N, op, immf) a.im<N>(#name, kernel, name);
#define R_IM(name, N, op, immf)
#define K_IX(name, kernel, N, op, immf) a.ix<N>(#name, kernel, name);
#define R_IX(name, N, op, immf)
#define R_WX(name, N, op)
#include "sve/integer/shift_forms.h"
    // The lsr immediate kernels have no handler; the reference route's
    // operations carry the same meaning.
    a.im<8>("sve_lsr_zpi", sve_lsr_zpi, VecU8ShrVIM);
    a.im<16>("sve_lsr_zpi", sve_lsr_zpi, VecU16ShrVIM);
    a.im<32>("sve_lsr_zpi", sve_lsr_zpi, VecU32ShrVIM);
    a.im<64>("sve_lsr_zpi", sve_lsr_zpi, VecU64ShrVIM);
    a.ix<8>("sve_lsr_zzi", sve_lsr_zzi, VecU8ShrVIX);
    a.ix<16>("sve_lsr_zzi", sve_lsr_zzi, VecU16ShrVIX);
    a.ix<32>("sve_lsr_zzi", sve_lsr_zzi, VecU32ShrVIX);
    a.ix<64>("sve_lsr_zzi", sve_lsr_zzi, VecU64ShrVIX);
}

}  // namespace
