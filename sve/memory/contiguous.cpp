// Contiguous predicated loads and stores: LD1, ST1 of every element and
// extension form, and the non-temporal LDNT1, STNT1, each with scalar plus
// immediate and scalar plus scalar addressing.
//
// Every kernel is one instantiation of ld1 or st1 below, on E, the register
// element as an unsigned integer of c bytes, and M, the memory element of m
// bytes. M is signed for the sign-extending loads, so that the conversion to
// E extends as the instruction asks; the non-temporal forms have no hint on
// this host and are the plain loops.
#include <atomic>

#include "sve/integer/kernel_util.h"
#include "sve/memory/mem_kernels.h"

namespace {

// The loops go in ascending element order with one access of m bytes per
// active element. A load writes each element into z[zt] as soon as it has it,
// so that a fault on element i leaves elements below i loaded; the signal
// fence keeps the compiler from sinking those writes past the next access,
// which the fault's handler would otherwise overtake. Inactive elements cause
// no access at all: a load writes them 0, a store skips them.
template <typename E, typename M>
aarch64_decode_rc ld1(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, uint64_t base) {
    uint8_t* z = s->z[zt.num];
    const uint8_t* p = s->p[pg.num];
    for (unsigned i = 0; i < 64 / sizeof(E); ++i) {
        E v = 0;
        if (active<E>(p, i)) v = static_cast<E>(mem_load<M>(base + uint64_t(i) * sizeof(M)));
        set_elem<E>(z, i, v);
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    return DECODE_OK;
}

template <typename E, typename M>
aarch64_decode_rc st1(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, uint64_t base) {
    const uint8_t* z = s->z[zt.num];
    const uint8_t* p = s->p[pg.num];
    for (unsigned i = 0; i < 64 / sizeof(E); ++i)
        if (active<E>(p, i)) mem_store<M>(base + uint64_t(i) * sizeof(M), static_cast<M>(elem<E>(z, i)));
    return DECODE_OK;
}

// Scalar plus immediate: the immediate counts whole registers as they lie in
// memory, n * m bytes, which is less than 64 for the widening forms. The
// product is signed and the sum wraps at 64 bits.
template <typename E, typename M>
uint64_t zpri_base(const cpu_state* s, aarch64_i_rsp_reg xn, int imm) {
    constexpr int64_t footprint = (64 / sizeof(E)) * sizeof(M);
    return read_xsp(s, xn) + static_cast<uint64_t>(imm * footprint);
}
// Scalar plus scalar: the index counts memory elements, of every size,
// bytes included.
template <typename M>
uint64_t zprr_base(const cpu_state* s, aarch64_i_rsp_reg xn, aarch64_i_reg xm) {
    return read_xsp(s, xn) + read_xr(s, xm) * sizeof(M);
}

template <typename E, typename M>
aarch64_decode_rc ld1_zpri(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm) {
    return ld1<E, M>(s, zt, pg, zpri_base<E, M>(s, xn, imm));
}
template <typename E, typename M>
aarch64_decode_rc ld1_zprr(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm) {
    return ld1<E, M>(s, zt, pg, zprr_base<M>(s, xn, xm));
}
template <typename E, typename M>
aarch64_decode_rc st1_zpri(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm) {
    return st1<E, M>(s, zt, pg, zpri_base<E, M>(s, xn, imm));
}
template <typename E, typename M>
aarch64_decode_rc st1_zprr(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm) {
    return st1<E, M>(s, zt, pg, zprr_base<M>(s, xn, xm));
}

constexpr uint32_t LOAD = QUAL_ZERO;
constexpr uint32_t STORE = QUAL_PLAIN;

}  // namespace

#define ZPRI_PARAMS cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm
#define ZPRI_ARGS s, zt, pg, xn, imm
#define ZPRR_PARAMS cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm
#define ZPRR_ARGS s, zt, pg, xn, xm

extern "C" aarch64_decode_rc sve_ld1b_zpri(ZPRI_PARAMS) { return ld1_zpri<uint8_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1b_h_zpri(ZPRI_PARAMS) { return ld1_zpri<uint16_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1b_s_zpri(ZPRI_PARAMS) { return ld1_zpri<uint32_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1b_d_zpri(ZPRI_PARAMS) { return ld1_zpri<uint64_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1h_zpri(ZPRI_PARAMS) { return ld1_zpri<uint16_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1h_s_zpri(ZPRI_PARAMS) { return ld1_zpri<uint32_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1h_d_zpri(ZPRI_PARAMS) { return ld1_zpri<uint64_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1w_zpri(ZPRI_PARAMS) { return ld1_zpri<uint32_t, uint32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1w_d_zpri(ZPRI_PARAMS) { return ld1_zpri<uint64_t, uint32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1d_zpri(ZPRI_PARAMS) { return ld1_zpri<uint64_t, uint64_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sb_h_zpri(ZPRI_PARAMS) { return ld1_zpri<uint16_t, int8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sb_s_zpri(ZPRI_PARAMS) { return ld1_zpri<uint32_t, int8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sb_d_zpri(ZPRI_PARAMS) { return ld1_zpri<uint64_t, int8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sh_s_zpri(ZPRI_PARAMS) { return ld1_zpri<uint32_t, int16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sh_d_zpri(ZPRI_PARAMS) { return ld1_zpri<uint64_t, int16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sw_d_zpri(ZPRI_PARAMS) { return ld1_zpri<uint64_t, int32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1b_zpri(ZPRI_PARAMS) { return st1_zpri<uint8_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1b_h_zpri(ZPRI_PARAMS) { return st1_zpri<uint16_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1b_s_zpri(ZPRI_PARAMS) { return st1_zpri<uint32_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1b_d_zpri(ZPRI_PARAMS) { return st1_zpri<uint64_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1h_zpri(ZPRI_PARAMS) { return st1_zpri<uint16_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1h_s_zpri(ZPRI_PARAMS) { return st1_zpri<uint32_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1h_d_zpri(ZPRI_PARAMS) { return st1_zpri<uint64_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1w_zpri(ZPRI_PARAMS) { return st1_zpri<uint32_t, uint32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1w_d_zpri(ZPRI_PARAMS) { return st1_zpri<uint64_t, uint32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st1d_zpri(ZPRI_PARAMS) { return st1_zpri<uint64_t, uint64_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnt1b_zpri(ZPRI_PARAMS) { return ld1_zpri<uint8_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnt1h_zpri(ZPRI_PARAMS) { return ld1_zpri<uint16_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnt1w_zpri(ZPRI_PARAMS) { return ld1_zpri<uint32_t, uint32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnt1d_zpri(ZPRI_PARAMS) { return ld1_zpri<uint64_t, uint64_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_stnt1b_zpri(ZPRI_PARAMS) { return st1_zpri<uint8_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_stnt1h_zpri(ZPRI_PARAMS) { return st1_zpri<uint16_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_stnt1w_zpri(ZPRI_PARAMS) { return st1_zpri<uint32_t, uint32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_stnt1d_zpri(ZPRI_PARAMS) { return st1_zpri<uint64_t, uint64_t>(ZPRI_ARGS); }

extern "C" aarch64_decode_rc sve_ld1b_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint8_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1b_h_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint16_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1b_s_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint32_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1b_d_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint64_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1h_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint16_t, uint16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1h_s_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint32_t, uint16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1h_d_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint64_t, uint16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1w_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint32_t, uint32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1w_d_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint64_t, uint32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1d_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint64_t, uint64_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sb_h_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint16_t, int8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sb_s_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint32_t, int8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sb_d_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint64_t, int8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sh_s_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint32_t, int16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sh_d_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint64_t, int16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld1sw_d_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint64_t, int32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1b_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint8_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1b_h_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint16_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1b_s_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint32_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1b_d_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint64_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1h_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint16_t, uint16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1h_s_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint32_t, uint16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1h_d_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint64_t, uint16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1w_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint32_t, uint32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1w_d_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint64_t, uint32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st1d_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint64_t, uint64_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldnt1b_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint8_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldnt1h_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint16_t, uint16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldnt1w_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint32_t, uint32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldnt1d_scaled_zprr(ZPRR_PARAMS) { return ld1_zprr<uint64_t, uint64_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_stnt1b_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint8_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_stnt1h_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint16_t, uint16_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_stnt1w_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint32_t, uint32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_stnt1d_scaled_zprr(ZPRR_PARAMS) { return st1_zprr<uint64_t, uint64_t>(ZPRR_ARGS); }

aarch64_decode_rc VecU8CLoad1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1b_zpri, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoad1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1b_h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoad1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1b_s_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoad1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1b_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoad2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoad2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1h_s_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoad2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1h_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoad4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1w_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoad4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1w_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoad8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS16CLoad1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1sb_h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecS32CLoad1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1sb_s_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoad1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1sb_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS32CLoad2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1sh_s_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoad2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1sh_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoad4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld1sw_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8CStore1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1b_zpri, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16CStore1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1b_h_zpri, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32CStore1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1b_s_zpri, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64CStore1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1b_d_zpri, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU16CStore2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1h_zpri, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32CStore2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1h_s_zpri, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64CStore2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1h_d_zpri, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU32CStore4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1w_zpri, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64CStore4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1w_d_zpri, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU64CStore8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st1d_zpri, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU8CLoadNT1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnt1b_zpri, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoadNT2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnt1h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoadNT4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnt1w_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadNT8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnt1d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8CStoreNT1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_stnt1b_zpri, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16CStoreNT2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_stnt1h_zpri, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32CStoreNT4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_stnt1w_zpri, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64CStoreNT8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_stnt1d_zpri, ES_D, STORE>(s, w); }

aarch64_decode_rc VecU8CLoad1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1b_scaled_zprr, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoad1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1b_h_scaled_zprr, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoad1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1b_s_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoad1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1b_d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoad2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1h_scaled_zprr, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoad2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1h_s_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoad2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1h_d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoad4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1w_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoad4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1w_d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoad8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS16CLoad1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1sb_h_scaled_zprr, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecS32CLoad1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1sb_s_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoad1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1sb_d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS32CLoad2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1sh_s_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoad2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1sh_d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoad4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld1sw_d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8CStore1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1b_scaled_zprr, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16CStore1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1b_h_scaled_zprr, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32CStore1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1b_s_scaled_zprr, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64CStore1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1b_d_scaled_zprr, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU16CStore2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1h_scaled_zprr, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32CStore2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1h_s_scaled_zprr, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64CStore2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1h_d_scaled_zprr, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU32CStore4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1w_scaled_zprr, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64CStore4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1w_d_scaled_zprr, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU64CStore8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st1d_scaled_zprr, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU8CLoadNT1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldnt1b_scaled_zprr, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoadNT2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldnt1h_scaled_zprr, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoadNT4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldnt1w_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadNT8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldnt1d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8CStoreNT1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_stnt1b_scaled_zprr, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16CStoreNT2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_stnt1h_scaled_zprr, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32CStoreNT4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_stnt1w_scaled_zprr, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64CStoreNT8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_stnt1d_scaled_zprr, ES_D, STORE>(s, w); }
