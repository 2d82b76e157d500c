// Permutes and moves: the reference operations, written from the
// architecture's pseudocode on whole values. Each loops over the element count
// that the context's vector length gives, and touches no element past it.
#include "sve/integer/perm_ops.h"
#include "sve/integer/predicate.h"

namespace {

// ---- Predicate UZP2, TRN1, TRN2 -------------------------------------------
// One bit per element: the first bit of each group is moved and every other
// bit of the result stays 0, so content in the higher bits of a group is
// dropped.

template <unsigned esize>
PredV uzp_pred(const PredV& a, const PredV& b, unsigned part, CpuContext* c) {
    unsigned n = elements(c, esize), half = n / 2;
    PredV r{};
    for (unsigned e = 0; e < half; ++e) {
        pset(r, e, esize, pbit(a, 2 * e + part, esize));
        pset(r, half + e, esize, pbit(b, 2 * e + part, esize));
    }
    return r;
}

template <unsigned esize>
PredV trn_pred(const PredV& a, const PredV& b, unsigned part, CpuContext* c) {
    unsigned pairs = elements(c, esize) / 2;
    PredV r{};
    for (unsigned p = 0; p < pairs; ++p) {
        pset(r, 2 * p, esize, pbit(a, 2 * p + part, esize));
        pset(r, 2 * p + 1, esize, pbit(b, 2 * p + part, esize));
    }
    return r;
}

// ---- Vector operations -------------------------------------------------------

template <typename T>
VecVal trn_vec(const VecVal& a, const VecVal& b, unsigned part, CpuContext* c) {
    unsigned pairs = elements(c, 8 * sizeof(T)) / 2;
    VecVal r{};
    for (unsigned p = 0; p < pairs; ++p) {
        vset<T>(r, 2 * p, vget<T>(a, 2 * p + part));
        vset<T>(r, 2 * p + 1, vget<T>(b, 2 * p + part));
    }
    return r;
}

// From the first active element up to the last one, every element of Zdn,
// active or not; then Zm from its element 0 until the result is full.
template <typename T>
VecVal splice(const PredV& pg, const VecVal& zdn, const VecVal& zm, CpuContext* c) {
    constexpr unsigned esize = 8 * sizeof(T);
    unsigned n = elements(c, esize), x = 0;
    VecVal r{};
    int last = FindLastActive(pg, esize, c);
    bool active = false;
    for (int e = 0; e <= last; ++e) {
        active = active || pbit(pg, static_cast<unsigned>(e), esize);
        if (active) vset<T>(r, x++, vget<T>(zdn, static_cast<unsigned>(e)));
    }
    for (unsigned e = 0; x < n; ++e) vset<T>(r, x++, vget<T>(zm, e));
    return r;
}

// Active elements of Zn packed at the low end, zeros above.
template <typename T>
VecVal compact(const PredV& pg, const VecVal& zn, CpuContext* c) {
    constexpr unsigned esize = 8 * sizeof(T);
    unsigned n = elements(c, esize), x = 0;
    VecVal r{};
    for (unsigned e = 0; e < n; ++e)
        if (pbit(pg, e, esize)) vset<T>(r, x++, vget<T>(zn, e));
    for (; x < n; ++x) vset<T>(r, x, T(0));
    return r;
}

// S is the signed source element, D the signed result element: the
// conversion sign-extends. Hi reads the upper half of the source.
template <typename S, typename D>
VecVal sunpk(const VecVal& zn, bool hi, CpuContext* c) {
    unsigned n = elements(c, 8 * sizeof(D));
    VecVal r{};
    for (unsigned e = 0; e < n; ++e) vset<D>(r, e, D(vget<S>(zn, hi ? n + e : e)));
    return r;
}

// The element that CLASTA/CLASTB and LASTA/LASTB pick, or -1 for CLAST with
// no active element. `after` selects the A forms: the element after the last
// active one, wrapping to 0. With no active element LASTB takes the last
// element and LASTA (last = -1, plus one) element 0.
int chosen_element(const PredV& pg, unsigned esize, bool after, bool conditional, CpuContext* c) {
    int n = static_cast<int>(elements(c, esize));
    int last = FindLastActive(pg, esize, c);
    if (conditional && last < 0) return -1;
    if (after) {
        last = last + 1;
        if (last >= n) last = 0;
    } else if (last < 0) {
        last = n - 1;
    }
    return last;
}

template <typename T>
uint64_t clast_scalar(const PredV& pg, uint64_t old, const VecVal& zm, bool after, CpuContext* c) {
    int e = chosen_element(pg, 8 * sizeof(T), after, true, c);
    return e < 0 ? uint64_t(T(old)) : uint64_t(vget<T>(zm, static_cast<unsigned>(e)));
}

template <typename T>
VecVal clast_vector(const PredV& pg, const VecVal& zdn, const VecVal& zm, bool after, CpuContext* c) {
    int e = chosen_element(pg, 8 * sizeof(T), after, true, c);
    if (e < 0) return zdn;
    T v = vget<T>(zm, static_cast<unsigned>(e));
    VecVal r{};
    unsigned n = elements(c, 8 * sizeof(T));
    for (unsigned i = 0; i < n; ++i) vset<T>(r, i, v);
    return r;
}

template <typename T>
uint64_t lasta(const PredV& pg, const VecVal& zn, CpuContext* c) {
    int e = chosen_element(pg, 8 * sizeof(T), true, false, c);
    return vget<T>(zn, static_cast<unsigned>(e));
}

// Shift up by one element; the scalar enters at element 0 and the highest
// element is lost.
template <typename T>
VecVal insr(const VecVal& zdn, uint64_t value, CpuContext* c) {
    unsigned n = elements(c, 8 * sizeof(T));
    VecVal r{};
    vset<T>(r, 0, T(value));
    for (unsigned e = 1; e < n; ++e) vset<T>(r, e, vget<T>(zdn, e - 1));
    return r;
}

}  // namespace

// The exported operations, one line each: name, element type and the
// constant that picks the variant.
#define SVE_REF_UZP_P(name, esize, part) \
    PredV name(PredV pn, PredV pm, CpuContext* c) { return uzp_pred<esize>(pn, pm, part, c); }
#define SVE_REF_TRN_P(name, esize, part) \
    PredV name(PredV pn, PredV pm, CpuContext* c) { return trn_pred<esize>(pn, pm, part, c); }
#define SVE_REF_TRN_V(name, T, part) \
    VecVal name(VecVal zn, VecVal zm, CpuContext* c) { return trn_vec<T>(zn, zm, part, c); }
#define SVE_REF_SPLICE(name, T) \
    VecVal name(PredV pg, VecVal zdn, VecVal zm, CpuContext* c) { return splice<T>(pg, zdn, zm, c); }
#define SVE_REF_COMPACT(name, T) \
    VecVal name(PredV pg, VecVal zn, CpuContext* c) { return compact<T>(pg, zn, c); }
#define SVE_REF_SUNPK(name, S, D, hi) \
    VecVal name(VecVal zn, CpuContext* c) { return sunpk<S, D>(zn, hi, c); }
#define SVE_REF_CLAST_S(name, T, after) \
    uint64_t name(PredV pg, uint64_t old, VecVal zm, CpuContext* c) { return clast_scalar<T>(pg, old, zm, after, c); }
#define SVE_REF_CLAST_V(name, T, after) \
    VecVal name(PredV pg, VecVal zdn, VecVal zm, CpuContext* c) { return clast_vector<T>(pg, zdn, zm, after, c); }
#define SVE_REF_LASTA(name, T) \
    uint64_t name(PredV pg, VecVal zn, CpuContext* c) { return lasta<T>(pg, zn, c); }
#define SVE_REF_INSR(name, T) \
    VecVal name(VecVal zdn, uint64_t value, CpuContext* c) { return insr<T>(zdn, value, c); }

extern "C" {
SVE_REF_UZP_P(VecP8Uzp2PP, 8, 1)
SVE_REF_UZP_P(VecP16Uzp2PP, 16, 1)
SVE_REF_UZP_P(VecP32Uzp2PP, 32, 1)
SVE_REF_UZP_P(VecP64Uzp2PP, 64, 1)
SVE_REF_TRN_P(VecP8Trn1PP, 8, 0)
SVE_REF_TRN_P(VecP16Trn1PP, 16, 0)
SVE_REF_TRN_P(VecP32Trn1PP, 32, 0)
SVE_REF_TRN_P(VecP64Trn1PP, 64, 0)
SVE_REF_TRN_P(VecP8Trn2PP, 8, 1)
SVE_REF_TRN_P(VecP16Trn2PP, 16, 1)
SVE_REF_TRN_P(VecP32Trn2PP, 32, 1)
SVE_REF_TRN_P(VecP64Trn2PP, 64, 1)

SVE_REF_TRN_V(VecU8Trn1VV, uint8_t, 0)
SVE_REF_TRN_V(VecU16Trn1VV, uint16_t, 0)
SVE_REF_TRN_V(VecU32Trn1VV, uint32_t, 0)
SVE_REF_TRN_V(VecU64Trn1VV, uint64_t, 0)

SVE_REF_SPLICE(VecU8SpliceVV, uint8_t)
SVE_REF_SPLICE(VecU16SpliceVV, uint16_t)
SVE_REF_SPLICE(VecU32SpliceVV, uint32_t)
SVE_REF_SPLICE(VecU64SpliceVV, uint64_t)
SVE_REF_COMPACT(VecU32CompressVV, uint32_t)
SVE_REF_COMPACT(VecU64CompressVV, uint64_t)

SVE_REF_SUNPK(VecS16UnpackHiV, int8_t, int16_t, true)
SVE_REF_SUNPK(VecS16UnpackLoV, int8_t, int16_t, false)
SVE_REF_SUNPK(VecS32UnpackHiV, int16_t, int32_t, true)
SVE_REF_SUNPK(VecS32UnpackLoV, int16_t, int32_t, false)

SVE_REF_CLAST_S(VecU8CondXASV, uint8_t, true)
SVE_REF_CLAST_S(VecU16CondXASV, uint16_t, true)
SVE_REF_CLAST_S(VecU32CondXASV, uint32_t, true)
SVE_REF_CLAST_S(VecU64CondXASV, uint64_t, true)
SVE_REF_CLAST_S(VecB8CondXASV, uint8_t, true)
SVE_REF_CLAST_S(VecH16CondXASV, uint16_t, true)
SVE_REF_CLAST_S(VecF32CondXASV, uint32_t, true)
SVE_REF_CLAST_S(VecD64CondXASV, uint64_t, true)
SVE_REF_CLAST_S(VecB8CondXBSV, uint8_t, false)
SVE_REF_CLAST_S(VecH16CondXBSV, uint16_t, false)
SVE_REF_CLAST_S(VecF32CondXBSV, uint32_t, false)
SVE_REF_CLAST_S(VecD64CondXBSV, uint64_t, false)
SVE_REF_CLAST_V(VecU8VCondXAVV, uint8_t, true)
SVE_REF_CLAST_V(VecU16VCondXAVV, uint16_t, true)
SVE_REF_CLAST_V(VecU32VCondXAVV, uint32_t, true)
SVE_REF_CLAST_V(VecU64VCondXAVV, uint64_t, true)
SVE_REF_CLAST_V(VecU8VCondXBVV, uint8_t, false)
SVE_REF_CLAST_V(VecU16VCondXBVV, uint16_t, false)
SVE_REF_CLAST_V(VecU32VCondXBVV, uint32_t, false)
SVE_REF_CLAST_V(VecU64VCondXBVV, uint64_t, false)

SVE_REF_LASTA(VecU8LastAV, uint8_t)
SVE_REF_LASTA(VecU16LastAV, uint16_t)
SVE_REF_LASTA(VecU32LastAV, uint32_t)
SVE_REF_LASTA(VecU64LastAV, uint64_t)
SVE_REF_LASTA(VecB8LastAV, uint8_t)
SVE_REF_LASTA(VecH16LastAV, uint16_t)
SVE_REF_LASTA(VecF32LastAV, uint32_t)
SVE_REF_LASTA(VecD64LastAV, uint64_t)

SVE_REF_INSR(VecU8InsertS, uint8_t)
SVE_REF_INSR(VecU16InsertS, uint16_t)
SVE_REF_INSR(VecU32InsertS, uint32_t)
SVE_REF_INSR(VecU64InsertS, uint64_t)
SVE_REF_INSR(VecB8InsertS, uint8_t)
SVE_REF_INSR(VecH16InsertS, uint16_t)
SVE_REF_INSR(VecF32InsertS, uint32_t)
SVE_REF_INSR(VecD64InsertS, uint64_t)
}  // extern "C"
