// WHILELT, WHILELO, WHILELS, WHILELE and CTERMEQ, CTERMNE: the loop-control
// instructions that turn two scalars into a predicate or into flags.
#include <cstring>
#include <limits>
#include <type_traits>

#include "sve/core/handler_util.h"
#include "sve/integer/kernel_util.h"
#include "sve/integer/predicate.h"

namespace {

// The run of true elements starts at element 0 and ends at the first element
// where op1 + i fails against op2; op1 + i wraps at the width of W, as the
// architecture's bit-vector increment does. The flags are PredTest with an
// all-true mask, so they follow from the length of the run alone: N is
// element 0, Z says the run is empty, C says it did not reach the last
// element.
template <typename W, bool OrEqual>
void while_into(cpu_state* s, aarch64_p_reg pd, W op1, W op2) {
    using UW = std::make_unsigned_t<W>;
    by_size(pd.qualifier, [&]<typename T>() {
        constexpr unsigned n = 64 / sizeof(T);
        uint8_t buf[64] = {};
        unsigned run = 0;
        for (; run < n; ++run) {
            const W x = W(UW(op1) + UW(run));
            if (!(OrEqual ? x <= op2 : x < op2)) break;
            set_elem<T>(buf, run, T(1));
        }
        uint64_t f = 0;
        if (run > 0) f |= NZCV_N;
        if (run == 0) f |= NZCV_Z;
        if (run < n) f |= NZCV_C;
        s->nzcv = (s->nzcv & ~NZCV_FLAGS) | f;
        std::memcpy(s->p[pd.num], buf, 64);
    });
}

// Rn's size tells the width: 3 for X registers, any other value for W, whose
// compare sees only the low 32 bits.
template <bool Signed, bool OrEqual>
aarch64_decode_rc while_kernel(cpu_state* s, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm) {
    const uint64_t a = read_xr(s, rn), b = read_xr(s, rm);
    using W64 = std::conditional_t<Signed, int64_t, uint64_t>;
    using W32 = std::conditional_t<Signed, int32_t, uint32_t>;
    if (rn.size == 3)
        while_into<W64, OrEqual>(s, pd, W64(a), W64(b));
    else
        while_into<W32, OrEqual>(s, pd, W32(uint32_t(a)), W32(uint32_t(b)));
    return DECODE_OK;
}

// WHILELE in the reference world. With op2 at the top of the signed range
// every element passes (op1 + i would wrap to the bottom and stay below);
// otherwise the run ends before any wrap, so the sum is formed in 128 bits.
template <unsigned ESIZE, typename W>
PredV whilele(W op1, W op2, CpuContext* c) {
    const unsigned n = elements(c, ESIZE);
    PredV mask{}, r{};
    for (unsigned e = 0; e < n; ++e) pset(mask, e, ESIZE, true);
    if (op2 == std::numeric_limits<W>::max()) {
        r = mask;
    } else {
        bool last = true;
        for (unsigned e = 0; e < n; ++e) {
            last = last && (__int128(op1) + e <= __int128(op2));
            pset(r, e, ESIZE, last);
        }
    }
    PredSetNZCV(mask, r, ESIZE, c);
    return r;
}

}  // namespace

extern "C" aarch64_decode_rc sve_whilelt_prr(cpu_state* s, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm) {
    return while_kernel<true, false>(s, pd, rn, rm);
}
extern "C" aarch64_decode_rc sve_whilelo_prr(cpu_state* s, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm) {
    return while_kernel<false, false>(s, pd, rn, rm);
}
extern "C" aarch64_decode_rc sve_whilels_prr(cpu_state* s, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm) {
    return while_kernel<false, true>(s, pd, rn, rm);
}

// Rn at 9..5, Rm at 20..16, Pd at 3..0; the 4 or 8 of the name is the
// scalar width, which the records carry as size 2 or 3.
#define WHILE_KERNEL_HANDLER(Handler, kernel, size, rsize)                                                  \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                                   \
        set_instruction(s, w);                                                                              \
        return kernel(s, preg(f_pd(w), size), ireg(bits_of(w, 9, 5), rsize), ireg(bits_of(w, 20, 16), rsize)); \
    }
WHILE_KERNEL_HANDLER(VecS8While4LTSS, sve_whilelt_prr, ES_B, ES_S)
WHILE_KERNEL_HANDLER(VecS16While4LTSS, sve_whilelt_prr, ES_H, ES_S)
WHILE_KERNEL_HANDLER(VecS32While4LTSS, sve_whilelt_prr, ES_S, ES_S)
WHILE_KERNEL_HANDLER(VecS64While4LTSS, sve_whilelt_prr, ES_D, ES_S)
WHILE_KERNEL_HANDLER(VecS8While8LTSS, sve_whilelt_prr, ES_B, ES_D)
WHILE_KERNEL_HANDLER(VecS16While8LTSS, sve_whilelt_prr, ES_H, ES_D)
WHILE_KERNEL_HANDLER(VecS32While8LTSS, sve_whilelt_prr, ES_S, ES_D)
WHILE_KERNEL_HANDLER(VecS64While8LTSS, sve_whilelt_prr, ES_D, ES_D)
WHILE_KERNEL_HANDLER(VecU8While4LTSS, sve_whilelo_prr, ES_B, ES_S)
WHILE_KERNEL_HANDLER(VecU16While4LTSS, sve_whilelo_prr, ES_H, ES_S)
WHILE_KERNEL_HANDLER(VecU32While4LTSS, sve_whilelo_prr, ES_S, ES_S)
WHILE_KERNEL_HANDLER(VecU64While4LTSS, sve_whilelo_prr, ES_D, ES_S)
WHILE_KERNEL_HANDLER(VecU8While8LTSS, sve_whilelo_prr, ES_B, ES_D)
WHILE_KERNEL_HANDLER(VecU16While8LTSS, sve_whilelo_prr, ES_H, ES_D)
WHILE_KERNEL_HANDLER(VecU32While8LTSS, sve_whilelo_prr, ES_S, ES_D)
WHILE_KERNEL_HANDLER(VecU64While8LTSS, sve_whilelo_prr, ES_D, ES_D)
WHILE_KERNEL_HANDLER(VecU8While4LESS, sve_whilels_prr, ES_B, ES_S)
WHILE_KERNEL_HANDLER(VecU16While4LESS, sve_whilels_prr, ES_H, ES_S)
WHILE_KERNEL_HANDLER(VecU32While4LESS, sve_whilels_prr, ES_S, ES_S)
WHILE_KERNEL_HANDLER(VecU64While4LESS, sve_whilels_prr, ES_D, ES_S)
WHILE_KERNEL_HANDLER(VecU8While8LESS, sve_whilels_prr, ES_B, ES_D)
WHILE_KERNEL_HANDLER(VecU16While8LESS, sve_whilels_prr, ES_H, ES_D)
WHILE_KERNEL_HANDLER(VecU32While8LESS, sve_whilels_prr, ES_S, ES_D)
WHILE_KERNEL_HANDLER(VecU64While8LESS, sve_whilels_prr, ES_D, ES_D)
#undef WHILE_KERNEL_HANDLER

// WHILELE: the W forms hand the operation the low 32 bits of each register.
#define WHILELE_REF(Handler, esize, W)                                                        \
    extern "C" PredV Handler(W op1, W op2, CpuContext* c) { return whilele<esize, W>(op1, op2, c); } \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                     \
        RefFrame f(s);                                                                        \
        W op1 = W(f.xr(bits_of(w, 9, 5))), op2 = W(f.xr(bits_of(w, 20, 16)));                \
        f.put_p(f_pd(w), Handler(op1, op2, f.c()));                                           \
        return aarch64_decode_rc(f.finish());                                                 \
    }
WHILELE_REF(VecS8While4LESS, 8, int32_t)
WHILELE_REF(VecS16While4LESS, 16, int32_t)
WHILELE_REF(VecS32While4LESS, 32, int32_t)
WHILELE_REF(VecS64While4LESS, 64, int32_t)
WHILELE_REF(VecS8While8LESS, 8, int64_t)
WHILELE_REF(VecS16While8LESS, 16, int64_t)
WHILELE_REF(VecS32While8LESS, 32, int64_t)
WHILELE_REF(VecS64While8LESS, 64, int64_t)
#undef WHILELE_REF

// ---------------------------------------------------------------------------
// CTERM: on termination N=1, V=0; otherwise N=0 and V = NOT C. Z and C stay,
// so a following branch can combine the loop's own condition with this one.

namespace {
void cterm(bool term, CpuContext* c) {
    uint32_t f = c->nzcv & ~uint32_t(NZCV_N | NZCV_V);
    if (term)
        f |= uint32_t(NZCV_N);
    else if (!(c->nzcv & NZCV_C))
        f |= uint32_t(NZCV_V);
    c->nzcv = f;
}
}  // namespace

#define CTERM_REF(Handler, W, term)                                                      \
    extern "C" void Handler(W op1, W op2, CpuContext* c) { cterm(term, c); }             \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                \
        RefFrame f(s);                                                                   \
        Handler(W(f.xr(bits_of(w, 9, 5))), W(f.xr(bits_of(w, 20, 16))), f.c());         \
        return aarch64_decode_rc(f.finish());                                            \
    }
CTERM_REF(VecU32CTermEQ, uint32_t, op1 == op2)
CTERM_REF(VecU32CTermNE, uint32_t, op1 != op2)
CTERM_REF(VecU64CTermEQ, uint64_t, op1 == op2)
CTERM_REF(VecU64CTermNE, uint64_t, op1 != op2)
#undef CTERM_REF
