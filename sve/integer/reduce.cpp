// Horizontal reductions of the active elements of a vector to one scalar:
// uaddv, smaxv, sminv, umaxv, uminv, andv, orv and eorv as kernels, saddv on
// the reference route.
#include <algorithm>
#include <type_traits>

#include "sve/core/handler_util.h"
#include "sve/integer/intlib.h"
#include "sve/integer/kernel_util.h"
#include "sve/integer/reduce.h"

// ---------------------------------------------------------------------------
// Kernels

namespace {
template <typename T>
using S = std::make_signed_t<T>;

// The scalar at the low end of the destination, the other bytes 0. Zn has
// been read in full by then, so vd may be Zn's number.
template <typename A>
inline void put_scalar(uint8_t* vd, A v) {
    uint8_t buf[64] = {};
    std::memcpy(buf, &v, sizeof v);
    std::memcpy(vd, buf, 64);
}
}  // namespace

// An inactive element enters the accumulation as the identity, so the loop
// has no branch and vectorises. Acc is the accumulator's type for element
// type T: its width is the width of the stored result.
#define KERNEL_RED(kname, Acc, identity, combine)                                                      \
    extern "C" aarch64_decode_rc kname(cpu_state* s, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn) { \
        const uint8_t* p = s->p[pg.num];                                                                \
        const uint8_t* n = s->z[zn.num];                                                                \
        return by_size(zsize(zn), [&]<typename T>() {                                                   \
            using A = Acc;                                                                              \
            const T id = identity;                                                                      \
            A acc = A(id);                                                                              \
            for (unsigned i = 0; i < 64 / sizeof(T); ++i) {                                             \
                T m = lane_mask<T>(p, i);                                                               \
                A x = A(T((elem<T>(n, i) & m) | (id & T(~m))));                                         \
                acc = combine;                                                                          \
            }                                                                                           \
            put_scalar(s->z[vd], acc);                                                                  \
        });                                                                                             \
    }
// The sum is taken in 64 bits on zero-extended elements: it does not wrap at
// the element width, only at 64 bits.
KERNEL_RED(sve_uaddv_vpz, uint64_t, T(0), acc + x)
KERNEL_RED(sve_smaxv_vpz, S<T>, T(T(1) << (8 * sizeof(T) - 1)), std::max(acc, x))
KERNEL_RED(sve_sminv_vpz, S<T>, T(T(~T(0)) >> 1), std::min(acc, x))
KERNEL_RED(sve_umaxv_vpz, T, T(0), std::max(acc, x))
KERNEL_RED(sve_uminv_vpz, T, T(~T(0)), std::min(acc, x))
KERNEL_RED(sve_andv_vpz, T, T(~T(0)), A(acc & x))
KERNEL_RED(sve_orv_vpz, T, T(0), A(acc | x))
KERNEL_RED(sve_eorv_vpz, T, T(0), A(acc ^ x))

// ---------------------------------------------------------------------------
// Reference operations: the pseudocode's accumulator, started at the
// identity and combined with each active element. A sum is the whole 64-bit
// scalar; the other results are cut to the element width.

namespace {
struct red_sadd {
    static uint64_t id(unsigned) { return 0; }
    static uint64_t op(uint64_t a, uint64_t x, unsigned N) { return bits(AddInt(Int(a, 64, 0), SInt(x, N))); }
    static constexpr bool wide = true;
};
struct red_uadd {
    static uint64_t id(unsigned) { return 0; }
    static uint64_t op(uint64_t a, uint64_t x, unsigned N) { return bits(AddInt(UInt(a, 64), UInt(x, N))); }
    static constexpr bool wide = true;
};
struct red_smax {
    static uint64_t id(unsigned N) { return 1ull << (N - 1); }
    static uint64_t op(uint64_t a, uint64_t x, unsigned N) { return Max(a, x, N, 0); }
    static constexpr bool wide = false;
};
struct red_smin {
    static uint64_t id(unsigned N) { return ones(N) >> 1; }
    static uint64_t op(uint64_t a, uint64_t x, unsigned N) { return Min(a, x, N, 0); }
    static constexpr bool wide = false;
};
struct red_umax {
    static uint64_t id(unsigned) { return 0; }
    static uint64_t op(uint64_t a, uint64_t x, unsigned N) { return Max(a, x, N, 1); }
    static constexpr bool wide = false;
};
struct red_umin {
    static uint64_t id(unsigned N) { return ones(N); }
    static uint64_t op(uint64_t a, uint64_t x, unsigned N) { return Min(a, x, N, 1); }
    static constexpr bool wide = false;
};
struct red_andv {
    static uint64_t id(unsigned N) { return ones(N); }
    static uint64_t op(uint64_t a, uint64_t x, unsigned) { return a & x; }
    static constexpr bool wide = false;
};
struct red_orv {
    static uint64_t id(unsigned) { return 0; }
    static uint64_t op(uint64_t a, uint64_t x, unsigned) { return a | x; }
    static constexpr bool wide = false;
};
struct red_eorv {
    static uint64_t id(unsigned) { return 0; }
    static uint64_t op(uint64_t a, uint64_t x, unsigned) { return a ^ x; }
    static constexpr bool wide = false;
};

template <unsigned N, typename Op>
uint64_t ref_reduce(const PredV& pg, const VecVal& zn, const CpuContext* c) {
    uint64_t acc = Op::id(N);
    for (unsigned e = 0; e < elements(c, N); ++e)
        if (pbit(pg, e, N)) acc = Op::op(acc, red::get(zn, e, N), N);
    return Op::wide ? acc : acc & ones(N);
}
}  // namespace

// ---------------------------------------------------------------------------
// Handlers

#define RED_K(name, kernel, N, op)                                                                \
    extern "C" uint64_t name(PredV pg, VecVal zn, CpuContext* c) { return ref_reduce<N, red_##op>(pg, zn, c); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                            \
        set_instruction(s, w);                                                                    \
        return kernel(s, f_zd(w), preg(f_pg3(w), QUAL_PLAIN), zreg(f_zn(w), red::es_of(N)));      \
    }
// The 64-bit sum goes to the SIMD destination as a D scalar.
#define RED_R(name, N, op)                                                                        \
    extern "C" uint64_t name(PredV pg, VecVal zn, CpuContext* c) { return ref_reduce<N, red_##op>(pg, zn, c); } \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                            \
        RefFrame f(s);                                                                            \
        f.put_v(f_zd(w), name(f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c()), 8);                       \
        return red::done(f);                                                                      \
    }
#include "sve/integer/reduce_forms.h"
