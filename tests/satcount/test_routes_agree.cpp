// The kernel-route forms of the count family also have their reference
// operation, which no handler calls. The kernels hold the 512-bit pattern
// counts as constants, the operations derive them from the context's vector
// length: the two must agree for every pattern, multiplier and register.
#include <random>

#include "shift/test_machine.h"
#include "sve/core/handler_util.h"
#include "sve/integer/satcount.h"

namespace {

constexpr uint32_t es(unsigned N) { return N == 8 ? ES_B : N == 16 ? ES_H : N == 32 ? ES_S : ES_D; }

struct Agree {
    std::mt19937_64 rng{777};
    CpuContext ctx{0, 0, 0, 8, {}};

    template <unsigned N>
    void rii(const char* name, aarch64_decode_rc (*kernel)(cpu_state*, aarch64_i_reg, unsigned, unsigned),
             uint64_t (*ref)(uint64_t, unsigned, unsigned, CpuContext*), unsigned reg_size = ES_D) {
        for (unsigned pattern = 0; pattern < 32; ++pattern)
            for (unsigned field = 0; field < 16; ++field) {
                Machine m;
                const uint64_t x = rng() >> (rng() % 64);
                m.s()->x[3] = x;
                uint64_t in = reg_size == ES_S ? uint32_t(x) : x;
                ASSERT_EQ(kernel(m.s(), ireg_dst(3, reg_size), pattern, field + 1), DECODE_OK);
                ASSERT_EQ(m.s()->x[3], ref(in, pattern, field, &ctx)) << name << " pattern " << pattern << " field " << field;
            }
    }
    template <unsigned N>
    void zii(const char* name, aarch64_decode_rc (*kernel)(cpu_state*, aarch64_z_reg, unsigned, unsigned),
             VecVal (*ref)(VecVal, unsigned, unsigned, CpuContext*)) {
        for (unsigned pattern = 0; pattern < 32; ++pattern)
            for (unsigned field = 0; field < 16; field += 5) {
                Machine m;
                for (unsigned i = 0; i < 512 / N; ++i) m.set_z(3, i, N, rng());
                VecVal v;
                std::memcpy(v.b, m.st->z[3], 64);
                VecVal want = ref(v, pattern, field, &ctx);
                ASSERT_EQ(kernel(m.s(), zreg_dst(3, es(N)), pattern, field + 1), DECODE_OK);
                ASSERT_EQ(std::memcmp(m.st->z[3], want.b, 64), 0) << name << " pattern " << pattern;
            }
    }
    PredV random_pred(Machine& m, unsigned r) {
        PredV p{};
        for (unsigned i = 0; i < 64; ++i) {
            m.st->p[r][i] = uint8_t(rng());
            p.w[0] |= uint64_t(m.st->p[r][i] & 1) << i;
        }
        return p;
    }
    template <unsigned N>
    void sp(const char* name, aarch64_decode_rc (*kernel)(cpu_state*, aarch64_i_reg, aarch64_p_reg),
            uint64_t (*ref)(uint64_t, PredV, CpuContext*)) {
        for (unsigned k = 0; k < 50; ++k) {
            Machine m;
            PredV p = random_pred(m, 4);
            m.s()->x[3] = rng();
            uint64_t want = ref(m.s()->x[3], p, &ctx);
            ASSERT_EQ(kernel(m.s(), ireg_dst(3, ES_D), preg(4, es(N))), DECODE_OK);
            ASSERT_EQ(m.s()->x[3], want) << name;
        }
    }
    template <unsigned N>
    void cntp(const char* name, aarch64_decode_rc (*kernel)(cpu_state*, aarch64_i_reg, aarch64_p_reg, aarch64_p_reg),
              uint64_t (*ref)(PredV, PredV, CpuContext*)) {
        for (unsigned k = 0; k < 50; ++k) {
            Machine m;
            PredV g = random_pred(m, 5), p = random_pred(m, 4);
            ASSERT_EQ(kernel(m.s(), ireg(3, ES_D), preg(5, QUAL_PLAIN), preg(4, es(N))), DECODE_OK);
            ASSERT_EQ(m.s()->x[3], ref(g, p, &ctx)) << name;
        }
    }
    void vlx(aarch64_decode_rc (*kernel)(cpu_state*, aarch64_i_reg, int), uint64_t (*ref)(int64_t, CpuContext*)) {
        for (int imm = -32; imm < 32; ++imm) {
            Machine m;
            ASSERT_EQ(kernel(m.s(), ireg(3, ES_D), imm), DECODE_OK);
            ASSERT_EQ(m.s()->x[3], ref(imm, &ctx)) << "rdvl " << imm;
        }
    }
    void addvl(const char* name, aarch64_decode_rc (*kernel)(cpu_state*, aarch64_i_rsp_reg, aarch64_i_rsp_reg, int),
               uint64_t (*ref)(uint64_t, int64_t, CpuContext*)) {
        for (int imm = -32; imm < 32; ++imm) {
            Machine m;
            m.s()->x[31] = rng();
            ASSERT_EQ(kernel(m.s(), rspreg(3, ES_D), rspreg(31, ES_D), imm), DECODE_OK);
            ASSERT_EQ(m.s()->x[3], ref(m.s()->x[31], imm, &ctx)) << name << " " << imm;
        }
    }
};

TEST(SatCountRoutesAgree, KernelsAndTheirReferenceOperations) {
    Agree a;
#define R_CNT(name, N)
#define K_RII(name, kernel, N, op) a.rii<N>(#name, kernel, name);
#define R_QSI(name, N, R, op)
#define K_QSI(name, kernel, N, R, op) a.rii<N>(#name, kernel, name, R == 32 ? ES_S : ES_D);
#define K_ZII(name, kernel, N, op) a.zii<N>(#name, kernel, name);
#define R_QVI(name, N, op)
#define K_SP(name, kernel, N, op) a.sp<N>(#name, kernel, name);
#define R_SP(name, N, op)
#define R_QSP(name, N, R, op)
#define R_PV(name, N, op)
#define K_CNTP(name, kernel, N) a.cntp<N>(#name, kernel, name);
#define R_QVIX(name, N, op)
#define R_QVVX(name, N, op)
#define K_VLX(name, kernel) a.vlx(kernel, name);
#define K_ADDVL(name, kernel, scale) a.addvl(#name, kernel, name);
#include "sve/integer/satcount_forms.h"
    // uqdecw and uqdecd have no handler; the reference route's operations of
    // the same instructions carry their meaning.
    a.rii<32>("sve_uqdecw_rii", sve_uqdecw_rii, VecU32QDecrVL4SI, ES_S);
    a.rii<32>("sve_uqdecw_rii", sve_uqdecw_rii, VecU32QDecrVL8SI, ES_D);
    a.rii<64>("sve_uqdecd_rii", sve_uqdecd_rii, VecU64QDecrVL4SI, ES_S);
    a.rii<64>("sve_uqdecd_rii", sve_uqdecd_rii, VecU64QDecrVL8SI, ES_D);
}

}  // namespace
