// Predicate flags, predicate logic, PTRUE/PFALSE/PFIRST/PNEXT/PTEST and the
// FFR instructions: kernels, reference operations and their handlers.
#include "sve/integer/predicate.h"

#include <cstring>

#include "sve/core/handler_util.h"
#include "sve/integer/intlib.h"
#include "sve/integer/kernel_util.h"

// ---------------------------------------------------------------------------
// Flag setters of the reference world. Z and C test an element's whole bit
// group where N and sve_ptest<> test its first bit; every predicate this
// system writes has the rest of each group clear, so the two agree on all
// values that arise.

void PredSetNZC(PredV mask, PredV result, int esize, CpuContext* c) {
    unsigned n = esize > 0 ? elements(c, static_cast<unsigned>(esize)) : 0;
    uint32_t flags = uint32_t(NZCV_Z | NZCV_C);
    // The whole group of an element: 1, 3, 15 or 255 for esize 8..64.
    const uint64_t group = ((1u << (esize / 8)) - 1) & 0xff;
    auto group_of = [&](unsigned e) {
        unsigned pos = e * esize / 8;
        return result.w[pos >> 6] >> (pos & 63) & group;
    };
    int first = -1, last = -1;
    bool any = false;
    for (unsigned e = 0; e < n; ++e) {
        if (!pbit(mask, e, esize)) continue;
        if (first < 0) first = int(e);
        last = int(e);
        any |= group_of(e) != 0;
    }
    if (any) {
        flags = 0;
        if (pbit(result, unsigned(first), esize)) flags |= uint32_t(NZCV_N);
        if (group_of(unsigned(last)) == 0) flags |= uint32_t(NZCV_C);
    }
    c->nzcv = (c->nzcv & ~uint32_t(NZCV_N | NZCV_Z | NZCV_C)) | flags;
}

void PredSetNZCV(PredV mask, PredV result, int esize, CpuContext* c) {
    PredSetNZC(mask, result, esize, c);
    c->nzcv &= ~uint32_t(NZCV_V);
}

int32_t FindLastActive(PredV mask, int esize, CpuContext* c) {
    if (esize <= 0) return -1;
    for (unsigned e = elements(c, unsigned(esize)); e-- > 0;)
        if (pbit(mask, e, esize)) return int32_t(e);
    return -1;
}

int32_t FindFirstActive(PredV mask, int esize, CpuContext* c) {
    if (esize <= 0) return -1;
    unsigned n = elements(c, unsigned(esize));
    for (unsigned e = 0; e < n; ++e)
        if (pbit(mask, e, esize)) return int32_t(e);
    return -1;
}

namespace {
// The element count of a predicate-constraint pattern among n elements: the
// kernel's own copy of the rules of VecTrueILength, at 64 >> size elements.
unsigned pattern_count(unsigned pattern, unsigned n) {
    if (pattern >= 1 && pattern <= 8) return pattern <= n ? pattern : 0;
    if (pattern >= 9 && pattern <= 13) return (1u << (pattern - 5)) <= n ? 1u << (pattern - 5) : 0;
    switch (pattern) {
        case 0: {  // POW2
            unsigned p = 1;
            while (p * 2 <= n) p *= 2;
            return p;
        }
        case 29: return n & ~3u;     // MUL4
        case 30: return n / 3 * 3;   // MUL3
        case 31: return n & ~1u;     // ALL: n itself at every count of this build
        default: return 0;
    }
}
}  // namespace

// ---------------------------------------------------------------------------
// Predicate logic. Kernels work byte by byte on whole bytes: a byte of Pg with
// bit 0 set lets the operation combine the two source bytes as they are.

namespace {

template <typename Op>
aarch64_decode_rc pred_logic(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm,
                             Op op) {
    const uint8_t* g = s->p[pg.num];
    const uint8_t* a = s->p[pn.num];
    const uint8_t* b = s->p[pm.num];
    const uint8_t* old = s->p[pd.num];
    const bool zeroing = pg.qualifier == QUAL_ZERO;
    uint8_t buf[64];
    for (unsigned k = 0; k < 64; ++k) buf[k] = (g[k] & 1) ? op(a[k], b[k]) : (zeroing ? 0 : old[k]);
    std::memcpy(s->p[pd.num], buf, 64);
    return DECODE_OK;
}

// Reference form: bit k of the result is the operation's bit where Pg's bit
// is set, otherwise 0.
template <typename Op>
PredV pred_logic_ref(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* c, Op op) {
    PredV r{};
    unsigned n = elements(c, 8);
    for (unsigned e = 0; e < n; ++e) pset(r, e, 8, pbit(pg, e, 8) && op(pbit(pn, e, 8), pbit(pm, e, 8)));
    return r;
}

}  // namespace

extern "C" aarch64_decode_rc sve_and_pppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                          aarch64_p_reg pm) {
    return pred_logic(s, pd, pg, pn, pm, [](uint8_t a, uint8_t b) { return uint8_t(a & b); });
}
extern "C" aarch64_decode_rc sve_bic_pppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                          aarch64_p_reg pm) {
    return pred_logic(s, pd, pg, pn, pm, [](uint8_t a, uint8_t b) { return uint8_t(a & ~b); });
}
extern "C" aarch64_decode_rc sve_eor_pppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                          aarch64_p_reg pm) {
    return pred_logic(s, pd, pg, pn, pm, [](uint8_t a, uint8_t b) { return uint8_t(a ^ b); });
}
extern "C" aarch64_decode_rc sve_orr_pppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                          aarch64_p_reg pm) {
    return pred_logic(s, pd, pg, pn, pm, [](uint8_t a, uint8_t b) { return uint8_t(a | b); });
}
// NOR of whole bytes cannot be a bitwise NOT (that would set the seven upper
// bits), so each source byte is taken as a truth value.
extern "C" aarch64_decode_rc sve_nor_pppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                          aarch64_p_reg pm) {
    return pred_logic(s, pd, pg, pn, pm, [](uint8_t a, uint8_t b) { return uint8_t(a == 0 && b == 0); });
}
// SEL has no zeroing: an inactive byte takes Pm's byte.
extern "C" aarch64_decode_rc sve_sel_pppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                          aarch64_p_reg pm) {
    const uint8_t* g = s->p[pg.num];
    const uint8_t* a = s->p[pn.num];
    const uint8_t* b = s->p[pm.num];
    uint8_t buf[64];
    for (unsigned k = 0; k < 64; ++k) buf[k] = (g[k] & 1) ? a[k] : b[k];
    std::memcpy(s->p[pd.num], buf, 64);
    return DECODE_OK;
}

// Predicate logic always zeroes in the architecture, so every handler passes
// qualifier 5; the kernels' merging branch is not reached from here.
#define PRED_LOGIC_KERNEL_HANDLER(Handler, kernel, pg_qualifier)                                              \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                                     \
        set_instruction(s, w);                                                                                \
        return kernel(s, preg(f_pd(w), ES_B), preg(f_pg4(w), pg_qualifier), preg(f_pn(w), ES_B), preg(f_pm(w), ES_B)); \
    }
PRED_LOGIC_KERNEL_HANDLER(VecPAndPPZ, sve_and_pppp, QUAL_ZERO)
PRED_LOGIC_KERNEL_HANDLER(VecPBicPPZ, sve_bic_pppp, QUAL_ZERO)
PRED_LOGIC_KERNEL_HANDLER(VecPXorPPZ, sve_eor_pppp, QUAL_ZERO)
PRED_LOGIC_KERNEL_HANDLER(VecPNorPPZ, sve_nor_pppp, QUAL_ZERO)
PRED_LOGIC_KERNEL_HANDLER(VecPOrPPZ, sve_orr_pppp, QUAL_ZERO)
PRED_LOGIC_KERNEL_HANDLER(VecPSelPP, sve_sel_pppp, QUAL_PLAIN)
#undef PRED_LOGIC_KERNEL_HANDLER

// Reference route: the operation and its handler. `flags` adds PredTest of
// the result against Pg at byte granularity.
#define PRED_LOGIC_REF(Handler, expr, flags)                                                      \
    extern "C" PredV Handler(PredV pg, PredV pn, PredV pm, CpuContext* c) {                       \
        PredV r = pred_logic_ref(pg, pn, pm, c, [](bool a, bool b) { return expr; });             \
        if (flags) PredSetNZCV(pg, r, 8, c);                                                      \
        return r;                                                                                 \
    }                                                                                             \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                         \
        RefFrame f(s);                                                                            \
        PredV pg = f.pred(f_pg4(w)), pn = f.pred(f_pn(w)), pm = f.pred(f_pm(w));                  \
        f.put_p(f_pd(w), Handler(pg, pn, pm, f.c()));                                             \
        return aarch64_decode_rc(f.finish());                                                     \
    }
PRED_LOGIC_REF(VecPAndFlgPPZ, a && b, true)
PRED_LOGIC_REF(VecPBicFlgPPZ, a && !b, true)
PRED_LOGIC_REF(VecPXorFlgPPZ, a != b, true)
PRED_LOGIC_REF(VecPNandPPZ, !(a && b), false)
PRED_LOGIC_REF(VecPNandFlgPPZ, !(a && b), true)
PRED_LOGIC_REF(VecPNorFlgPPZ, !(a || b), true)
PRED_LOGIC_REF(VecPOrNPPZ, a || !b, false)
PRED_LOGIC_REF(VecPOrNFlgPPZ, a || !b, true)
PRED_LOGIC_REF(VecPOrFlgPPZ, a || b, true)
#undef PRED_LOGIC_REF

// ---------------------------------------------------------------------------
// PTRUE, PTRUES, PFALSE.

// Writes in place, every byte: the element's first byte gets 0 or 1 and the
// rest of its group 0, which is what a store at element width does.
extern "C" aarch64_decode_rc sve_ptrue_pi(cpu_state* s, aarch64_p_reg pd, unsigned pattern) {
    const unsigned size = pd.qualifier & 3;
    const unsigned count = pattern_count(pattern, 64 >> size);
    uint8_t* d = s->p[pd.num];
    std::memset(d, 0, 64);
    for (unsigned i = 0; i < count; ++i) d[i << size] = 1;
    return DECODE_OK;
}

extern "C" aarch64_decode_rc sve_pfalse_p(cpu_state* s, aarch64_p_reg pd) {
    std::memset(s->p[pd.num], 0, 64);
    return DECODE_OK;
}

namespace {
template <unsigned ESIZE>
PredV ptrues(unsigned pattern, CpuContext* c) {
    unsigned n = elements(c, ESIZE);
    unsigned count = VecTrueILength(pattern, n);
    PredV r{};
    for (unsigned e = 0; e < n; ++e) pset(r, e, ESIZE, e < count);
    PredSetNZCV(r, r, ESIZE, c);
    return r;
}
}  // namespace

#define PTRUE_HANDLERS(True, TrueFlg, size, esize)                                  \
    aarch64_decode_rc True(cpu_state* s, unsigned w) {                              \
        set_instruction(s, w);                                                      \
        return sve_ptrue_pi(s, preg(f_pd(w), size), bits_of(w, 9, 5));              \
    }                                                                               \
    extern "C" PredV TrueFlg(unsigned pattern, CpuContext* c) { return ptrues<esize>(pattern, c); } \
    aarch64_decode_rc TrueFlg(cpu_state* s, unsigned w) {                           \
        RefFrame f(s);                                                              \
        f.put_p(f_pd(w), TrueFlg(bits_of(w, 9, 5), f.c()));                         \
        return aarch64_decode_rc(f.finish());                                       \
    }
PTRUE_HANDLERS(VecP8TrueI, VecP8TrueFlgI, ES_B, 8)
PTRUE_HANDLERS(VecP16TrueI, VecP16TrueFlgI, ES_H, 16)
PTRUE_HANDLERS(VecP32TrueI, VecP32TrueFlgI, ES_S, 32)
PTRUE_HANDLERS(VecP64TrueI, VecP64TrueFlgI, ES_D, 64)
#undef PTRUE_HANDLERS

aarch64_decode_rc VecPFalse(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_pfalse_p(s, preg(f_pd(w), ES_B));
}

// ---------------------------------------------------------------------------
// PFIRST, PNEXT, PTEST.

extern "C" PredV VecPSetFirstActiveP(PredV pg, PredV pdn, CpuContext* c) {
    PredV r = pdn;
    int32_t first = FindFirstActive(pg, 8, c);
    if (first >= 0) pset(r, unsigned(first), 8, true);
    PredSetNZCV(pg, r, 8, c);
    return r;
}
aarch64_decode_rc VecPSetFirstActiveP(cpu_state* s, unsigned w) {
    RefFrame f(s);
    PredV pg = f.pred(f_pn(w)), pdn = f.pred(f_pd(w));
    f.put_p(f_pd(w), VecPSetFirstActiveP(pg, pdn, f.c()));
    return aarch64_decode_rc(f.finish());
}

extern "C" aarch64_decode_rc sve_pnext_pp(cpu_state* s, aarch64_p_reg pdn, aarch64_p_reg pv) {
    const uint8_t* d = s->p[pdn.num];
    const uint8_t* v = s->p[pv.num];
    return by_size(pdn.qualifier, [&]<typename T>() {
        constexpr unsigned n = 64 / sizeof(T);
        unsigned next = 0;
        for (unsigned i = n; i-- > 0;)
            if (active<T>(d, i)) {
                next = i + 1;
                break;
            }
        while (next < n && !active<T>(v, next)) ++next;
        uint8_t buf[64] = {};
        if (next < n) set_elem<T>(buf, next, T(1));
        sve_ptest<T>(s, v, buf);
        std::memcpy(s->p[pdn.num], buf, 64);
    });
}

#define PNEXT_HANDLER(Handler, size)                                            \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                       \
        set_instruction(s, w);                                                  \
        return sve_pnext_pp(s, preg(f_pd(w), size), preg(f_pn(w), QUAL_PLAIN)); \
    }
PNEXT_HANDLER(VecP8GenNextP, ES_B)
PNEXT_HANDLER(VecP16GenNextP, ES_H)
PNEXT_HANDLER(VecP32GenNextP, ES_S)
PNEXT_HANDLER(VecP64GenNextP, ES_D)
#undef PNEXT_HANDLER

extern "C" aarch64_decode_rc sve_ptest_pp(cpu_state* s, aarch64_p_reg pg, aarch64_p_reg pn) {
    sve_ptest<signed char>(s, s->p[pg.num], s->p[pn.num]);
    return DECODE_OK;
}
aarch64_decode_rc VecPTestPZ(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_ptest_pp(s, preg(f_pg4(w), QUAL_PLAIN), preg(f_pn(w), ES_B));
}

// ---------------------------------------------------------------------------
// FFR. The kernels move whole bytes; only the reference route (through its
// packing and unpacking) cleans FFR to 0 and 1.

extern "C" aarch64_decode_rc sve_rdffr_pp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg) {
    const uint8_t* g = s->p[pg.num];
    uint8_t buf[64];
    for (unsigned k = 0; k < 64; ++k) buf[k] = s->ffr[k] & g[k];
    std::memcpy(s->p[pd.num], buf, 64);
    return DECODE_OK;
}
extern "C" aarch64_decode_rc sve_rdffr_p(cpu_state* s, aarch64_p_reg pd) {
    std::memcpy(s->p[pd.num], s->ffr, 64);
    return DECODE_OK;
}
extern "C" aarch64_decode_rc sve_wrffr_p(cpu_state* s, aarch64_p_reg pn) {
    std::memcpy(s->ffr, s->p[pn.num], 64);
    return DECODE_OK;
}
extern "C" aarch64_decode_rc sve_setffr(cpu_state* s) {
    std::memset(s->ffr, 1, 64);
    return DECODE_OK;
}

extern "C" PredV VecPActualFlgP(PredV pg, CpuContext* c) {
    PredV r{};
    unsigned n = elements(c, 8);
    for (unsigned e = 0; e < n; ++e) pset(r, e, 8, pbit(pg, e, 8) && pbit(c->ffr, e, 8));
    PredSetNZCV(pg, r, 8, c);
    return r;
}

aarch64_decode_rc VecPActualP(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_rdffr_pp(s, preg(f_pd(w), ES_B), preg(f_pn(w), QUAL_ZERO));
}
aarch64_decode_rc VecPActualFlgP(cpu_state* s, unsigned w) {
    RefFrame f(s);
    PredV pg = f.pred(f_pn(w));
    f.put_p(f_pd(w), VecPActualFlgP(pg, f.c()));
    return aarch64_decode_rc(f.finish());
}
aarch64_decode_rc VecPReadFFSRP(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_rdffr_p(s, preg(f_pd(w), ES_B));
}
aarch64_decode_rc VecPWriteFFSRP(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_wrffr_p(s, preg(f_pn(w), ES_B));
}
aarch64_decode_rc VecPClearFFSR(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_setffr(s);
}
