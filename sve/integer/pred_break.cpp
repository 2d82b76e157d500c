// The break instructions: BRKA, BRKB, BRKN, BRKPA, BRKPB and their
// flag-setting forms. All of them work at byte granularity over the 64
// predicate bytes.
#include <cstring>

#include "sve/core/handler_util.h"
#include "sve/integer/kernel_util.h"
#include "sve/integer/predicate.h"

namespace {

// BRKA stores the running condition before folding in Pn's byte (the break
// element stays true), BRKB after it (the break element is already false).
template <bool After>
aarch64_decode_rc break_ab(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn) {
    const uint8_t* g = s->p[pg.num];
    const uint8_t* a = s->p[pn.num];
    const uint8_t* old = s->p[pd.num];
    const bool zeroing = pg.qualifier == QUAL_ZERO;
    uint8_t buf[64];
    bool cond = true;
    for (unsigned k = 0; k < 64; ++k) {
        if (g[k] & 1) {
            if (!After) cond = cond && !(a[k] & 1);
            buf[k] = cond;
            if (After) cond = cond && !(a[k] & 1);
        } else {
            buf[k] = zeroing ? 0 : old[k];
        }
    }
    std::memcpy(s->p[pd.num], buf, 64);
    return DECODE_OK;
}

int last_active_byte(const uint8_t* g) {
    for (int k = 63; k >= 0; --k)
        if (g[k] & 1) return k;
    return -1;
}

// Packed forms. The running condition of BRKA/BRKB, and of BRKPA after
// LastActive has seeded it.
template <bool After>
PredV break_ab_ref(const PredV& pg, const PredV& pn, bool cond, CpuContext* c) {
    PredV r{};
    const unsigned n = elements(c, 8);
    for (unsigned e = 0; e < n; ++e) {
        if (!pbit(pg, e, 8)) continue;
        if (!After) cond = cond && !pbit(pn, e, 8);
        pset(r, e, 8, cond);
        if (After) cond = cond && !pbit(pn, e, 8);
    }
    return r;
}

// Pn's bit at the last active element of Pg, false when Pg is empty.
bool last_active(const PredV& pg, const PredV& pn, CpuContext* c) {
    int32_t last = FindLastActive(pg, 8, c);
    return last >= 0 && pbit(pn, unsigned(last), 8);
}

}  // namespace

extern "C" aarch64_decode_rc sve_brka_ppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn) {
    return break_ab<true>(s, pd, pg, pn);
}
extern "C" aarch64_decode_rc sve_brkb_ppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn) {
    return break_ab<false>(s, pd, pg, pn);
}

// BRKN changes Pdm only by clearing it: when Pg is empty or Pn's byte at the
// last active position is 0 as a whole byte. The flags are PredTest of Pdm
// against an all-true mask, taken after the change.
aarch64_decode_rc sve_brkn(cpu_state* s, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn, bool set_flags) {
    const int last = last_active_byte(s->p[pg.num]);
    uint8_t* d = s->p[pdm.num];
    if (last < 0 || s->p[pn.num][last] == 0) std::memset(d, 0, 64);
    if (set_flags) {
        uint64_t f = NZCV_Z;
        for (unsigned k = 0; k < 64; ++k)
            if (d[k] & 1) {
                f = 0;
                break;
            }
        if (d[0] & 1) f |= NZCV_N;
        if (!(d[63] & 1)) f |= NZCV_C;
        s->nzcv = (s->nzcv & ~NZCV_FLAGS) | f;
    }
    return DECODE_OK;
}
extern "C" aarch64_decode_rc sve_brkn_ppp(cpu_state* s, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn) {
    return sve_brkn(s, pdm, pg, pn, false);
}
extern "C" aarch64_decode_rc sve_brkns_ppp(cpu_state* s, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn) {
    return sve_brkn(s, pdm, pg, pn, true);
}

// BRKPB: when Pn's whole byte at Pg's last active position is non-zero, the
// active bytes are 1 up to (not including) the first active byte whose Pm
// bit is set.
aarch64_decode_rc sve_brkpb(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn, aarch64_p_reg pm,
                            bool set_flags) {
    const uint8_t* g = s->p[pg.num];
    const uint8_t* b = s->p[pm.num];
    const int last = last_active_byte(g);
    uint8_t buf[64] = {};
    if (last >= 0 && s->p[pn.num][last] != 0)
        for (unsigned k = 0; k < 64; ++k) {
            if (!(g[k] & 1)) continue;
            if (b[k] & 1) break;
            buf[k] = 1;
        }
    if (set_flags) sve_ptest<signed char>(s, g, buf);
    std::memcpy(s->p[pd.num], buf, 64);
    return DECODE_OK;
}
extern "C" aarch64_decode_rc sve_brkpb_pppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                            aarch64_p_reg pm) {
    return sve_brkpb(s, pd, pg, pn, pm, false);
}
extern "C" aarch64_decode_rc sve_brkpbs_pppp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                             aarch64_p_reg pm) {
    return sve_brkpb(s, pd, pg, pn, pm, true);
}

extern "C" PredV VecPBreakAFlgPZ(PredV pg, PredV pn, CpuContext* c) {
    PredV r = break_ab_ref<true>(pg, pn, true, c);
    PredSetNZCV(pg, r, 8, c);
    return r;
}
extern "C" PredV VecPBreakBFlgPZ(PredV pg, PredV pn, CpuContext* c) {
    PredV r = break_ab_ref<false>(pg, pn, true, c);
    PredSetNZCV(pg, r, 8, c);
    return r;
}
// BRKPA: seeded by Pn at Pg's last active element, the running condition is
// stored before Pm's bit is folded in, so the break element stays set.
extern "C" PredV VecPBreakPrevAPZ(PredV pg, PredV pn, PredV pm, CpuContext* c) {
    return break_ab_ref<true>(pg, pm, last_active(pg, pn, c), c);
}
extern "C" PredV VecPBreakPrevAFlgPZ(PredV pg, PredV pn, PredV pm, CpuContext* c) {
    PredV r = break_ab_ref<true>(pg, pm, last_active(pg, pn, c), c);
    PredSetNZCV(pg, r, 8, c);
    return r;
}

// Handlers: Pd 3..0, Pg 13..10, Pn 8..5, Pm 19..16.
#define BREAK_KERNEL_HANDLER(Handler, kernel, pg_qualifier)                                      \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                        \
        set_instruction(s, w);                                                                   \
        return kernel(s, preg(f_pd(w), ES_B), preg(f_pg4(w), pg_qualifier), preg(f_pn(w), ES_B)); \
    }
BREAK_KERNEL_HANDLER(VecPBreakAPM, sve_brka_ppp, QUAL_MERGE)
BREAK_KERNEL_HANDLER(VecPBreakAPZ, sve_brka_ppp, QUAL_ZERO)
BREAK_KERNEL_HANDLER(VecPBreakBPM, sve_brkb_ppp, QUAL_MERGE)
BREAK_KERNEL_HANDLER(VecPBreakBPZ, sve_brkb_ppp, QUAL_ZERO)
BREAK_KERNEL_HANDLER(VecPBreakNextPZ, sve_brkn_ppp, QUAL_ZERO)
BREAK_KERNEL_HANDLER(VecPBreakNextFlgPZ, sve_brkns_ppp, QUAL_ZERO)
#undef BREAK_KERNEL_HANDLER

#define BREAK_PREV_KERNEL_HANDLER(Handler, kernel)                                                        \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                                 \
        set_instruction(s, w);                                                                            \
        return kernel(s, preg(f_pd(w), ES_B), preg(f_pg4(w), QUAL_ZERO), preg(f_pn(w), ES_B), preg(f_pm(w), ES_B)); \
    }
BREAK_PREV_KERNEL_HANDLER(VecPBreakPrevBPZ, sve_brkpb_pppp)
BREAK_PREV_KERNEL_HANDLER(VecPBreakPrevBFlgPZ, sve_brkpbs_pppp)
#undef BREAK_PREV_KERNEL_HANDLER

#define BREAK_REF(Handler)                                                    \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                     \
        RefFrame f(s);                                                        \
        PredV pg = f.pred(f_pg4(w)), pn = f.pred(f_pn(w));                    \
        f.put_p(f_pd(w), Handler(pg, pn, f.c()));                             \
        return aarch64_decode_rc(f.finish());                                 \
    }
BREAK_REF(VecPBreakAFlgPZ)
BREAK_REF(VecPBreakBFlgPZ)
#undef BREAK_REF

#define BREAK_PREV_REF(Handler)                                                          \
    aarch64_decode_rc Handler(cpu_state* s, unsigned w) {                                \
        RefFrame f(s);                                                                   \
        PredV pg = f.pred(f_pg4(w)), pn = f.pred(f_pn(w)), pm = f.pred(f_pm(w));         \
        f.put_p(f_pd(w), Handler(pg, pn, pm, f.c()));                                    \
        return aarch64_decode_rc(f.finish());                                            \
    }
BREAK_PREV_REF(VecPBreakPrevAPZ)
BREAK_PREV_REF(VecPBreakPrevAFlgPZ)
#undef BREAK_PREV_REF
