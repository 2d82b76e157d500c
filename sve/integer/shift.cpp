// Shifts on Z registers: the kernels, the reference operations, and the
// opcode handlers of every form listed in shift_forms.h.
//
// The one rule that runs through all of it: the architecture defines every
// shift count, the host does not. A C++ shift by the operand's width or more
// is undefined, and the host's own instructions disagree about it (the scalar
// ones take the count modulo the width, the vector ones read a signed low
// byte and shift the other way for a "negative" count). So every count is
// compared with the element width before anything shifts, and only counts
// below the width ever reach a host shift.
#include "sve/integer/shift.h"

#include <type_traits>

#include "sve/core/handler_util.h"
#include "sve/integer/intlib.h"
#include "sve/integer/kernel_util.h"

namespace {
template <typename T>
using S = std::make_signed_t<T>;
// 8- and 16-bit elements shift as unsigned int, never as the signed int that
// promotion would give them.
template <typename T>
using W = std::conditional_t<(sizeof(T) < sizeof(unsigned)), unsigned, T>;
template <typename T>
constexpr T kWidth = T(8 * sizeof(T));

// The count has the element's type: for the vector forms it is the whole
// element of Zm, for the immediate forms the immediate narrowed to the
// element, so that an 8-bit kernel judges only the low 8 bits of it. The
// clipped count k is what the host sees; the select afterwards gives the
// architecture's result for counts of the width and above.
template <typename T>
inline T shl(T a, T c) {
    T k = c < kWidth<T> ? c : T(0);
    T r = T(W<T>(a) << k);
    return c < kWidth<T> ? r : T(0);
}
template <typename T>
inline T lsr(T a, T c) {
    T k = c < kWidth<T> ? c : T(0);
    T r = T(W<T>(a) >> k);
    return c < kWidth<T> ? r : T(0);
}
// An arithmetic shift by the width or more leaves the sign in every bit,
// which is the shift by width - 1.
template <typename T>
inline T asr(T a, T c) {
    T k = c < kWidth<T> ? c : T(kWidth<T> - 1);
    return T(S<T>(a) >> k);
}
}  // namespace

// ---------------------------------------------------------------------------
// Kernels

#define SHIFT_KERNEL_ZPZ(kname, fn)                                                                   \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) { \
        uint8_t* d = s->z[zdn.num];                                                                   \
        const uint8_t* p = s->p[pg.num];                                                              \
        const uint8_t* m = s->z[zm.num];                                                              \
        return by_size(zsize(zdn), [&]<typename T>() {                                                \
            merge_loop<T>(d, p, [&](unsigned i) { return fn<T>(elem<T>(d, i), elem<T>(m, i)); });     \
        });                                                                                           \
    }
SHIFT_KERNEL_ZPZ(sve_lsl_zpz, shl)
SHIFT_KERNEL_ZPZ(sve_lsr_zpz, lsr)
SHIFT_KERNEL_ZPZ(sve_asr_zpz, asr)

#define SHIFT_KERNEL_ZPI(kname, fn)                                                               \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned count) { \
        uint8_t* d = s->z[zdn.num];                                                               \
        const uint8_t* p = s->p[pg.num];                                                          \
        return by_size(zsize(zdn), [&]<typename T>() {                                            \
            const T c = T(count);                                                                 \
            merge_loop<T>(d, p, [&](unsigned i) { return fn<T>(elem<T>(d, i), c); });             \
        });                                                                                       \
    }
SHIFT_KERNEL_ZPI(sve_lsl_zpi, shl)
SHIFT_KERNEL_ZPI(sve_lsr_zpi, lsr)
SHIFT_KERNEL_ZPI(sve_asr_zpi, asr)

#define SHIFT_KERNEL_ZZI(kname, fn)                                                               \
    extern "C" aarch64_decode_rc kname(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn, unsigned count) { \
        const uint8_t* n = s->z[zn.num];                                                          \
        return by_size(zsize(zd), [&]<typename T>() {                                             \
            const T c = T(count);                                                                 \
            map_loop<T>(s->z[zd.num], [&](unsigned i) { return fn<T>(elem<T>(n, i), c); });       \
        });                                                                                       \
    }
SHIFT_KERNEL_ZZI(sve_lsl_zzi, shl)
SHIFT_KERNEL_ZZI(sve_lsr_zzi, lsr)
SHIFT_KERNEL_ZZI(sve_asr_zzi, asr)

// ---------------------------------------------------------------------------
// Reference operations: the pseudocode's shifts on 128-bit integers. Counts
// are taken unsigned at their full width, so a count of 2^63 in a wide lane is
// a large positive count; ShiftLeftInt and ShiftRightInt clip it to 64 and 65,
// which still empties (or sign-fills) any element of up to 64 bits.

namespace {
uint64_t op_lsl(uint64_t v, uint64_t count, unsigned N) { return bits(ShiftLeftInt(UInt(v, N), UInt(count, 64))); }
uint64_t op_lsr(uint64_t v, uint64_t count, unsigned N) { return bits(ShiftRightInt(UInt(v, N), UInt(count, 64))); }
uint64_t op_asr(uint64_t v, uint64_t count, unsigned N) { return bits(ShiftRightInt(SInt(v, N), UInt(count, 64))); }
// Division by 2^count rounding toward zero: a negative value is biased by
// 2^count - 1 before the arithmetic shift. In 128 bits the bias cannot wrap,
// so a count of the full width gives 0 for every value, the minimum included.
uint64_t op_asrd(uint64_t v, uint64_t count, unsigned N) {
    Integer x = SInt(v, N), c = UInt(count, 64);
    if (x < 0) x = x + ShiftLeftInt(1, c) - 1;
    return bits(ShiftRightInt(x, c));
}

template <unsigned N>
using elem_t = std::conditional_t<N == 8, uint8_t,
                                  std::conditional_t<N == 16, uint16_t, std::conditional_t<N == 32, uint32_t, uint64_t>>>;
constexpr uint32_t es_of(unsigned N) { return N == 8 ? ES_B : N == 16 ? ES_H : N == 32 ? ES_S : ES_D; }

// Sources of a value or a count for element e.
template <unsigned N>
auto lanes(const VecVal& v) {
    return [&v](unsigned e) { return uint64_t(vget<elem_t<N>>(v, e)); };
}
// The 64-bit lane of Zm that overlaps element e: the wide forms' count.
template <unsigned N>
auto wide_lanes(const VecVal& v) {
    return [&v](unsigned e) { return vget<uint64_t>(v, e * N / 64); };
}
inline auto fixed(uint64_t count) {
    return [count](unsigned) { return count; };
}

template <unsigned N, typename Val, typename Cnt, typename Op>
VecVal ref_merge(const VecVal& old, const PredV& g, const CpuContext* c, Val val, Cnt cnt, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e)
        vset<T>(r, e, pbit(g, e, N) ? T(op(val(e), cnt(e), N)) : vget<T>(old, e));
    return r;
}
template <unsigned N, typename Val, typename Cnt, typename Op>
VecVal ref_all(const CpuContext* c, Val val, Cnt cnt, Op op) {
    using T = elem_t<N>;
    VecVal r;
    for (unsigned e = 0, n = elements(c, N); e < n; ++e) vset<T>(r, e, T(op(val(e), cnt(e), N)));
    return r;
}

inline aarch64_decode_rc done(RefFrame& f) { return static_cast<aarch64_decode_rc>(f.finish()); }
}  // namespace

// ---------------------------------------------------------------------------
// Handlers and reference operations of every form. A kernel-route handler
// stores the word and calls the kernel; a reference-route handler marshals
// through RefFrame.

#define K_VVM(name, kernel, N, op)                                                                          \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, CpuContext* c) {                                \
        return ref_merge<N>(zdn, pg, c, lanes<N>(zdn), lanes<N>(zm), op);                                   \
    }                                                                                                       \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                                      \
        set_instruction(s, w);                                                                              \
        return kernel(s, zreg_dst(f_zd(w), es_of(N)), preg(f_pg3(w), QUAL_MERGE), zreg(f_zn(w), es_of(N))); \
    }
// Reversed: the value comes from Zm, the count from the old Zdn.
#define R_RVVM(name, N, op)                                                                   \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, CpuContext* c) {                  \
        return ref_merge<N>(zdn, pg, c, lanes<N>(zm), lanes<N>(zdn), op);                     \
    }                                                                                         \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                        \
        RefFrame f(s);                                                                        \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c()));        \
        return done(f);                                                                       \
    }
#define R_WM(name, N, op)                                                                     \
    extern "C" VecVal name(VecVal zdn, PredV pg, VecVal zm, CpuContext* c) {                  \
        return ref_merge<N>(zdn, pg, c, lanes<N>(zdn), wide_lanes<N>(zm), op);                \
    }                                                                                         \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                        \
        RefFrame f(s);                                                                        \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c()));        \
        return done(f);                                                                       \
    }
#define K_IM(name, kernel, N, op, immf)                                                             \
    extern "C" VecVal name(VecVal zdn, PredV pg, uint64_t shift, CpuContext* c) {                   \
        return ref_merge<N>(zdn, pg, c, lanes<N>(zdn), fixed(shift), op);                           \
    }                                                                                               \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                              \
        set_instruction(s, w);                                                                      \
        return kernel(s, zreg_dst(f_zd(w), es_of(N)), preg(f_pg3(w), QUAL_MERGE), immf(w, es_of(N))); \
    }
#define R_IM(name, N, op, immf)                                                                 \
    extern "C" VecVal name(VecVal zdn, PredV pg, uint64_t shift, CpuContext* c) {               \
        return ref_merge<N>(zdn, pg, c, lanes<N>(zdn), fixed(shift), op);                       \
    }                                                                                           \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                          \
        RefFrame f(s);                                                                          \
        f.put_z(f_zd(w), name(f.zv(f_zd(w)), f.pred(f_pg3(w)), immf(w, es_of(N)), f.c()));      \
        return done(f);                                                                         \
    }
#define K_IX(name, kernel, N, op, immf)                                                          \
    extern "C" VecVal name(VecVal zn, uint64_t shift, CpuContext* c) {                           \
        return ref_all<N>(c, lanes<N>(zn), fixed(shift), op);                                   \
    }                                                                                            \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                                           \
        set_instruction(s, w);                                                                   \
        return kernel(s, zreg(f_zd(w), es_of(N)), zreg(f_zn(w), es_of(N)), immf(w, es_of(N)));  \
    }
#define R_IX(name, N, op, immf)                                                 \
    extern "C" VecVal name(VecVal zn, uint64_t shift, CpuContext* c) {          \
        return ref_all<N>(c, lanes<N>(zn), fixed(shift), op);                  \
    }                                                                           \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                          \
        RefFrame f(s);                                                          \
        f.put_z(f_zd(w), name(f.zv(f_zn(w)), immf(w, es_of(N)), f.c()));        \
        return done(f);                                                         \
    }
#define R_WX(name, N, op)                                                       \
    extern "C" VecVal name(VecVal zn, VecVal zm, CpuContext* c) {               \
        return ref_all<N>(c, lanes<N>(zn), wide_lanes<N>(zm), op);              \
    }                                                                           \
    aarch64_decode_rc name(cpu_state* s, unsigned w) {                          \
        RefFrame f(s);                                                          \
        f.put_z(f_zd(w), name(f.zv(f_zn(w)), f.zv(f_zm(w)), f.c()));            \
        return done(f);                                                         \
    }
#include "sve/integer/shift_forms.h"
