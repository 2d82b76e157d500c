// Permutes and moves: the kernels.
//
// Kernels that rearrange registers compute into a 64-byte local buffer and
// copy it out at the end, so the destination may be any of the sources. DUP,
// CPY and INDEX store straight into the destination: each reads everything it
// needs from other registers (a scalar, or the one element it replicates)
// before its first store, so they too are safe when the registers coincide.
#include <cstring>

#include "sve/integer/kernel_util.h"
#include "sve/integer/perm_ops.h"

namespace {

inline uint8_t* u8(char* p) { return reinterpret_cast<uint8_t*>(p); }
inline const uint8_t* u8(const char* p) { return reinterpret_cast<const uint8_t*>(p); }

// Element size of a Z operand whichever field carries it: `size` for an
// operand only read or only written, `dst_size` for a destructive one.
inline uint32_t zop_size(const aarch64_z_reg& r) { return r.size < 5 ? r.size : r.dst_size; }

// All ones for an active element, 0 otherwise: the governing predicate read at
// the element's width, bit 0 of the little-endian value.
template <typename T>
inline T active_mask(const uint8_t* pred, unsigned i) {
    return T(T(0) - T(elem<T>(pred, i) & 1));
}

template <typename T>
inline void fill(uint8_t* dst, T v) {
    for (unsigned i = 0; i < 64 / sizeof(T); ++i) set_elem<T>(dst, i, v);
}

// Highest active element of a governing predicate, -1 when none is.
template <typename T>
inline int last_active(const uint8_t* pred) {
    int last = -1;
    for (unsigned i = 0; i < 64 / sizeof(T); ++i)
        if (active<T>(pred, i)) last = static_cast<int>(i);
    return last;
}

// The six two-source permutes, as one loop over the n pairs of result
// elements (zip, trn) or the two halves of the result (uzp).
enum class Pairing { Zip1, Zip2, Uzp1, Uzp2, Trn1, Trn2 };

template <Pairing K, typename T>
inline void pair_permute(uint8_t* dst, const uint8_t* a, const uint8_t* b) {
    constexpr unsigned n = 32 / sizeof(T);
    for (unsigned i = 0; i < n; ++i) {
        if constexpr (K == Pairing::Uzp1 || K == Pairing::Uzp2) {
            constexpr unsigned odd = K == Pairing::Uzp2 ? 1 : 0;
            set_elem<T>(dst, i, elem<T>(a, 2 * i + odd));
            set_elem<T>(dst, n + i, elem<T>(b, 2 * i + odd));
        } else {
            unsigned from = K == Pairing::Zip1   ? i
                            : K == Pairing::Zip2 ? n + i
                            : K == Pairing::Trn1 ? 2 * i
                                                 : 2 * i + 1;
            set_elem<T>(dst, 2 * i, elem<T>(a, from));
            set_elem<T>(dst, 2 * i + 1, elem<T>(b, from));
        }
    }
}

template <Pairing K>
inline void pair_permute_raw(char* dst, const char* a, const char* b, element_size size) {
    by_size(size, [&]<typename T>() { pair_permute<K, T>(u8(dst), u8(a), u8(b)); });
}

// The permutes without an exported raw helper of their own.
void uzp2_raw(char* dst, const char* a, const char* b, element_size size) {
    pair_permute_raw<Pairing::Uzp2>(dst, a, b, size);
}
void trn1_raw(char* dst, const char* a, const char* b, element_size size) {
    pair_permute_raw<Pairing::Trn1>(dst, a, b, size);
}
void trn2_raw(char* dst, const char* a, const char* b, element_size size) {
    pair_permute_raw<Pairing::Trn2>(dst, a, b, size);
}

typedef void (*raw_permute)(char*, const char*, const char*, element_size);

// A register permute through its raw helper: the helper writes a local buffer
// which is then copied to the destination register.
inline aarch64_decode_rc through_buffer(raw_permute f, uint8_t* dst, const uint8_t* a, const uint8_t* b,
                                        uint32_t size) {
    char buf[64];
    f(buf, reinterpret_cast<const char*>(a), reinterpret_cast<const char*>(b), static_cast<element_size>(size));
    std::memcpy(dst, buf, 64);
    return DECODE_OK;
}

template <typename T>
inline void reverse(uint8_t* dst, const uint8_t* src) {
    constexpr unsigned n = 64 / sizeof(T);
    for (unsigned i = 0; i < n; ++i) set_elem<T>(dst, i, elem<T>(src, n - 1 - i));
}

// Result element i is source element i (lo) or i + n (hi), n the number of
// result elements; S is signed for the signed unpacks, so the conversion to D
// sign-extends.
template <typename S, typename D, bool Hi>
inline aarch64_decode_rc unpack(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    constexpr unsigned n = 64 / sizeof(D);
    const uint8_t* src = s->z[zn.num] + (Hi ? 32 : 0);
    uint8_t buf[64];
    for (unsigned i = 0; i < n; ++i) set_elem<D>(buf, i, D(elem<S>(src, i)));
    std::memcpy(s->z[zd.num], buf, 64);
    return DECODE_OK;
}

// Byte i of one half of the source becomes the 16-bit group i of the result:
// bit 0 of the byte in the group's first byte, 0 in its second.
template <bool Hi>
inline aarch64_decode_rc punpk(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pn) {
    const uint8_t* src = s->p[pn.num] + (Hi ? 32 : 0);
    uint8_t buf[64];
    for (unsigned i = 0; i < 32; ++i) {
        buf[2 * i] = src[i] & 1;
        buf[2 * i + 1] = 0;
    }
    std::memcpy(s->p[pd.num], buf, 64);
    return DECODE_OK;
}

// Element i = start + i * step, modulo 2 to the element width.
inline aarch64_decode_rc index_fill(cpu_state* s, aarch64_z_reg zd, uint64_t start, uint64_t step) {
    uint8_t* d = s->z[zd.num];
    return by_size(zd.size, [&]<typename T>() {
        for (unsigned i = 0; i < 64 / sizeof(T); ++i) set_elem<T>(d, i, T(start + uint64_t(i) * step));
    });
}

// Every active element of Zd becomes v; an inactive one keeps its value, or
// becomes 0 when `zeroing`.
template <typename T>
inline void cpy_fill(uint8_t* d, const uint8_t* pred, T v, bool zeroing) {
    constexpr unsigned n = 64 / sizeof(T);
    if (zeroing)
        for (unsigned i = 0; i < n; ++i) set_elem<T>(d, i, T(v & active_mask<T>(pred, i)));
    else
        for (unsigned i = 0; i < n; ++i) {
            T m = active_mask<T>(pred, i);
            set_elem<T>(d, i, T((v & m) | (elem<T>(d, i) & T(~m))));
        }
}

}  // namespace

// ---- ZIP, UZP, TRN -------------------------------------------------------

extern "C" void sve_zip1(char* dst, const char* a, const char* b, element_size size) {
    pair_permute_raw<Pairing::Zip1>(dst, a, b, size);
}
extern "C" void sve_zip2(char* dst, const char* a, const char* b, element_size size) {
    pair_permute_raw<Pairing::Zip2>(dst, a, b, size);
}
extern "C" void sve_uzp1(char* dst, const char* a, const char* b, element_size size) {
    pair_permute_raw<Pairing::Uzp1>(dst, a, b, size);
}

// Vector forms take the size from Zd; predicate forms from Pd's qualifier, and
// move each group of bytes whole.
#define SVE_PERM_ZZZ_KERNEL(kernel, raw)                                                                      \
    extern "C" aarch64_decode_rc kernel(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) { \
        return through_buffer(raw, s->z[zd.num], s->z[zn.num], s->z[zm.num], zd.size);                        \
    }
#define SVE_PERM_PPP_KERNEL(kernel, raw)                                                                      \
    extern "C" aarch64_decode_rc kernel(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm) { \
        return through_buffer(raw, s->p[pd.num], s->p[pn.num], s->p[pm.num], pd.qualifier);                   \
    }
SVE_PERM_ZZZ_KERNEL(sve_zip1_zzz, sve_zip1)
SVE_PERM_ZZZ_KERNEL(sve_zip2_zzz, sve_zip2)
SVE_PERM_ZZZ_KERNEL(sve_uzp1_zzz, sve_uzp1)
SVE_PERM_ZZZ_KERNEL(sve_uzp2_zzz, uzp2_raw)
SVE_PERM_ZZZ_KERNEL(sve_trn1_zzz, trn1_raw)
SVE_PERM_ZZZ_KERNEL(sve_trn2_zzz, trn2_raw)
SVE_PERM_PPP_KERNEL(sve_zip1_ppp, sve_zip1)
SVE_PERM_PPP_KERNEL(sve_zip2_ppp, sve_zip2)
SVE_PERM_PPP_KERNEL(sve_uzp1_ppp, sve_uzp1)
SVE_PERM_PPP_KERNEL(sve_trn1_ppp, trn1_raw)
#undef SVE_PERM_ZZZ_KERNEL
#undef SVE_PERM_PPP_KERNEL

// ---- REV, TBL, EXT -------------------------------------------------------

extern "C" aarch64_decode_rc sve_rev_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    uint8_t buf[64];
    by_size(zd.size, [&]<typename T>() { reverse<T>(buf, s->z[zn.num]); });
    std::memcpy(s->z[zd.num], buf, 64);
    return DECODE_OK;
}

// A predicate reverses its groups, so the first byte of a group stays first.
extern "C" aarch64_decode_rc sve_rev_pp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pn) {
    uint8_t buf[64];
    by_size(pd.qualifier, [&]<typename T>() { reverse<T>(buf, s->p[pn.num]); });
    std::memcpy(s->p[pd.num], buf, 64);
    return DECODE_OK;
}

// The index is the whole element, unsigned; one past the table gives 0, and
// nothing wraps (at .H the index 0x0100 is out of range, not element 0).
extern "C" aarch64_decode_rc sve_tbl_zzz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    const uint8_t* table = s->z[zn.num];
    const uint8_t* idx = s->z[zm.num];
    uint8_t buf[64];
    by_size(zd.size, [&]<typename T>() {
        constexpr unsigned n = 64 / sizeof(T);
        for (unsigned i = 0; i < n; ++i) {
            T k = elem<T>(idx, i);
            set_elem<T>(buf, i, k < n ? elem<T>(table, static_cast<unsigned>(k)) : T(0));
        }
    });
    std::memcpy(s->z[zd.num], buf, 64);
    return DECODE_OK;
}

// Zdn then Zm as one 128-byte string, and the 64 bytes at the offset. An
// offset past the first register counts as 0, leaving Zdn as it was.
extern "C" aarch64_decode_rc sve_ext_zzi(cpu_state* s, aarch64_z_reg zdn, aarch64_z_reg zm, unsigned imm) {
    uint8_t both[128];
    std::memcpy(both, s->z[zdn.num], 64);
    std::memcpy(both + 64, s->z[zm.num], 64);
    if (imm > 63) imm = 0;
    std::memcpy(s->z[zdn.num], both + imm, 64);
    return DECODE_OK;
}

// ---- Unpacks -------------------------------------------------------------

extern "C" aarch64_decode_rc sve_sunpkhi_s2d_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack<int32_t, int64_t, true>(s, zd, zn);
}
extern "C" aarch64_decode_rc sve_sunpklo_s2d_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack<int32_t, int64_t, false>(s, zd, zn);
}
extern "C" aarch64_decode_rc sve_uunpkhi_b2h_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack<uint8_t, uint16_t, true>(s, zd, zn);
}
extern "C" aarch64_decode_rc sve_uunpkhi_h2s_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack<uint16_t, uint32_t, true>(s, zd, zn);
}
extern "C" aarch64_decode_rc sve_uunpkhi_s2d_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack<uint32_t, uint64_t, true>(s, zd, zn);
}
extern "C" aarch64_decode_rc sve_uunpklo_b2h_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack<uint8_t, uint16_t, false>(s, zd, zn);
}
extern "C" aarch64_decode_rc sve_uunpklo_h2s_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack<uint16_t, uint32_t, false>(s, zd, zn);
}
extern "C" aarch64_decode_rc sve_uunpklo_s2d_zz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack<uint32_t, uint64_t, false>(s, zd, zn);
}
extern "C" aarch64_decode_rc sve_punpkhi_pp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pn) {
    return punpk<true>(s, pd, pn);
}
extern "C" aarch64_decode_rc sve_punpklo_pp(cpu_state* s, aarch64_p_reg pd, aarch64_p_reg pn) {
    return punpk<false>(s, pd, pn);
}

// ---- CLASTB, LASTB -------------------------------------------------------

// With no active element the old register value, cut to the element and
// zero-extended; otherwise the last active element. Rdn 31 reads 0 and the
// result is dropped.
extern "C" aarch64_decode_rc sve_clastb_rpz(cpu_state* s, aarch64_i_reg rdn, aarch64_p_reg pg, aarch64_z_reg zn) {
    uint64_t old = read_xr(s, rdn), r = 0;
    by_size(zn.size, [&]<typename T>() {
        int last = last_active<T>(s->p[pg.num]);
        r = last < 0 ? T(old) : elem<T>(s->z[zn.num], static_cast<unsigned>(last));
    });
    write_xr(s, rdn, r);
    return DECODE_OK;
}

namespace {
// The last active element, or with none active the last element.
inline uint64_t lastb_value(cpu_state* s, aarch64_p_reg pg, aarch64_z_reg zn, unsigned* bytes) {
    uint64_t r = 0;
    by_size(zn.size, [&]<typename T>() {
        int last = last_active<T>(s->p[pg.num]);
        unsigned e = last < 0 ? 64 / sizeof(T) - 1 : static_cast<unsigned>(last);
        r = elem<T>(s->z[zn.num], e);
        *bytes = sizeof(T);
    });
    return r;
}
}  // namespace

extern "C" aarch64_decode_rc sve_lastb_rpz(cpu_state* s, aarch64_i_reg rd, aarch64_p_reg pg, aarch64_z_reg zn) {
    unsigned bytes = 8;
    write_xr(s, rd, lastb_value(s, pg, zn, &bytes));
    return DECODE_OK;
}

// The element goes to the low bytes of Vd and the rest of the 64 bytes are
// cleared; it is read first, since Vd may be Zn.
extern "C" aarch64_decode_rc sve_lastb_vpz(cpu_state* s, unsigned vd, aarch64_p_reg pg, aarch64_z_reg zn) {
    unsigned bytes = 8;
    uint64_t v = lastb_value(s, pg, zn, &bytes);
    std::memset(s->z[vd], 0, 64);
    std::memcpy(s->z[vd], &v, bytes);
    return DECODE_OK;
}

// ---- DUP, DUPM, CPY, INDEX: written in place -----------------------------

// The immediate narrowed to the element; at .D the int is sign-extended.
extern "C" aarch64_decode_rc sve_dup_zi(cpu_state* s, aarch64_z_reg zd, int imm) {
    return by_size(zd.size, [&]<typename T>() { fill<T>(s->z[zd.num], T(imm)); });
}

// Number 31 is SP.
extern "C" aarch64_decode_rc sve_dup_zr(cpu_state* s, aarch64_z_reg zd, aarch64_i_rsp_reg rn) {
    uint64_t v = read_xsp(s, rn);
    return by_size(zd.size, [&]<typename T>() { fill<T>(s->z[zd.num], T(v)); });
}

// The element is copied out before Zd is written, so Zd may be Zn. At .Q the
// element is the 16 bytes at 16 * index. An index past the register gives 0;
// the handlers' index fields cannot reach that at this vector length.
extern "C" aarch64_decode_rc sve_dup_zzi(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn, unsigned index) {
    const uint8_t* src = s->z[zn.num];
    uint8_t* d = s->z[zd.num];
    if (zd.size == ES_Q) {
        uint8_t q[16] = {};
        if (index < 4) std::memcpy(q, src + 16 * index, 16);
        for (unsigned k = 0; k < 4; ++k) std::memcpy(d + 16 * k, q, 16);
        return DECODE_OK;
    }
    return by_size(zd.size, [&]<typename T>() {
        T v = index < 64 / sizeof(T) ? elem<T>(src, index) : T(0);
        fill<T>(d, v);
    });
}

extern "C" aarch64_decode_rc sve_dupm_zi(cpu_state* s, aarch64_z_reg zd, aarch64_sve_logical64_imm imm) {
    fill<uint64_t>(s->z[zd.num], imm.value);
    return DECODE_OK;
}

// Zeroing for the /z qualifier (5), merging otherwise.
extern "C" aarch64_decode_rc sve_cpy_zpi(cpu_state* s, aarch64_z_reg zd, aarch64_p_reg pg, int imm) {
    bool zeroing = pg.qualifier == QUAL_ZERO;
    return by_size(zop_size(zd), [&]<typename T>() { cpy_fill<T>(s->z[zd.num], s->p[pg.num], T(imm), zeroing); });
}

// Merging only; number 31 is SP.
extern "C" aarch64_decode_rc sve_cpy_zpr(cpu_state* s, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_i_rsp_reg rn) {
    uint64_t v = read_xsp(s, rn);
    return by_size(zop_size(zd), [&]<typename T>() { cpy_fill<T>(s->z[zd.num], s->p[pg.num], T(v), false); });
}

// Merging only; the scalar is the low 64 bits of z[vn], read before any store
// since vn may be Zd.
extern "C" aarch64_decode_rc sve_cpy_zpv(cpu_state* s, aarch64_z_reg zd, aarch64_p_reg pg, unsigned vn) {
    uint64_t v = elem<uint64_t>(s->z[vn], 0);
    return by_size(zop_size(zd), [&]<typename T>() { cpy_fill<T>(s->z[zd.num], s->p[pg.num], T(v), false); });
}

// Immediates are sign-extended; registers read 0 for number 31 and are used at
// the element width (all 64 bits at .D).
extern "C" aarch64_decode_rc sve_index_zii(cpu_state* s, aarch64_z_reg zd, int start, int step) {
    return index_fill(s, zd, uint64_t(int64_t(start)), uint64_t(int64_t(step)));
}
extern "C" aarch64_decode_rc sve_index_zir(cpu_state* s, aarch64_z_reg zd, int start, aarch64_i_reg rm) {
    return index_fill(s, zd, uint64_t(int64_t(start)), read_xr(s, rm));
}
extern "C" aarch64_decode_rc sve_index_zri(cpu_state* s, aarch64_z_reg zd, aarch64_i_reg rn, int step) {
    return index_fill(s, zd, read_xr(s, rn), uint64_t(int64_t(step)));
}
extern "C" aarch64_decode_rc sve_index_zrr(cpu_state* s, aarch64_z_reg zd, aarch64_i_reg rn, aarch64_i_reg rm) {
    return index_fill(s, zd, read_xr(s, rn), read_xr(s, rm));
}
