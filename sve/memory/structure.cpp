// Structure loads and stores: LD2, LD3, LD4 and ST2, ST3, ST4, which move
// arrays of 2, 3 or 4-member structures between memory and a group of
// consecutive Z registers, de-interleaving on the way in and interleaving on
// the way out. Structures have no extension forms: memory and register
// elements are the same size.
#include <atomic>

#include "sve/integer/kernel_util.h"
#include "sve/memory/mem_kernels.h"

namespace {

// Register k of a group starting at zt. The numbers wrap, so a group of four
// from Z30 is Z30, Z31, Z0, Z1; with at most four registers they stay
// distinct, so no member overwrites another.
inline uint8_t* group_reg(cpu_state* s, aarch64_z_reg zt, unsigned k) { return s->z[(zt.num + k) & 31]; }

// Structure i lies at base + i * N * s, member k of it s bytes further on
// each: the accesses run through memory in strictly ascending order. All N
// members share the predicate bit of element i. As in the contiguous loads,
// each element is written as soon as it is read, and an inactive structure
// causes no access: a load zeroes its N elements, a store skips it.
template <typename E, int N>
aarch64_decode_rc ld_struct(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, uint64_t base) {
    const uint8_t* p = s->p[pg.num];
    for (unsigned i = 0; i < 64 / sizeof(E); ++i) {
        bool on = active<E>(p, i);
        for (unsigned k = 0; k < N; ++k) {
            E v = on ? mem_load<E>(base + (uint64_t(i) * N + k) * sizeof(E)) : E(0);
            set_elem<E>(group_reg(s, zt, k), i, v);
            std::atomic_signal_fence(std::memory_order_seq_cst);
        }
    }
    return DECODE_OK;
}

template <typename E, int N>
aarch64_decode_rc st_struct(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, uint64_t base) {
    const uint8_t* p = s->p[pg.num];
    for (unsigned i = 0; i < 64 / sizeof(E); ++i) {
        if (!active<E>(p, i)) continue;
        for (unsigned k = 0; k < N; ++k)
            mem_store<E>(base + (uint64_t(i) * N + k) * sizeof(E), elem<E>(group_reg(s, zt, k), i));
    }
    return DECODE_OK;
}

// The immediate counts whole groups: N registers of 64 bytes. The product is
// taken in 32 bits, as a signed value.
template <int N>
uint64_t group_base(const cpu_state* s, aarch64_i_rsp_reg xn, int imm) {
    return read_xsp(s, xn) + static_cast<int64_t>(static_cast<int32_t>(imm * N * 64));
}
// The index register counts elements, not structures.
template <typename E>
uint64_t index_base(const cpu_state* s, aarch64_i_rsp_reg xn, aarch64_i_reg xm) {
    return read_xsp(s, xn) + read_xr(s, xm) * sizeof(E);
}

template <typename E, int N>
aarch64_decode_rc ldb_zpri(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm) {
    return ld_struct<E, N>(s, zt, pg, group_base<N>(s, xn, imm));
}
template <typename E, int N>
aarch64_decode_rc ldb_zprr(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm) {
    return ld_struct<E, N>(s, zt, pg, index_base<E>(s, xn, xm));
}
template <typename E, int N>
aarch64_decode_rc st_zpri(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm) {
    return st_struct<E, N>(s, zt, pg, group_base<N>(s, xn, imm));
}
template <typename E, int N>
aarch64_decode_rc st_zprr(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm) {
    return st_struct<E, N>(s, zt, pg, index_base<E>(s, xn, xm));
}

constexpr uint32_t LOAD = QUAL_ZERO;
constexpr uint32_t STORE = QUAL_PLAIN;

}  // namespace

// The 16, 32 and 64-bit loads meet in one template whose offset counts
// elements of the memory type T, loaded into register elements of type U.
template <typename T, typename U, int N>
aarch64_decode_rc sve_ldN_zpri(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, long offset) {
    static_assert(sizeof(T) == sizeof(U), "structures have no extension forms");
    typedef std::make_unsigned_t<U> E;
    return ld_struct<E, N>(s, zt, pg, read_xsp(s, xn) + static_cast<uint64_t>(offset) * sizeof(T));
}

// One group of imm units is N * n elements; the product is taken in 32 bits.
template <typename T, int N>
aarch64_decode_rc ldN_imm(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm) {
    constexpr int n = 64 / sizeof(T);
    return sve_ldN_zpri<T, T, N>(s, zt, pg, xn, static_cast<long>(static_cast<int32_t>(imm * (N * n))));
}
template <typename T, int N>
aarch64_decode_rc ldN_index(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm) {
    return sve_ldN_zpri<T, T, N>(s, zt, pg, xn, static_cast<long>(read_xr(s, xm)));
}

#define ZPRI_PARAMS cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm
#define ZPRI_ARGS s, zt, pg, xn, imm
#define ZPRR_PARAMS cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm
#define ZPRR_ARGS s, zt, pg, xn, xm

extern "C" aarch64_decode_rc sve_ld2b_zpri(ZPRI_PARAMS) { return ldb_zpri<uint8_t, 2>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld2h_zpri(ZPRI_PARAMS) { return ldN_imm<short, 2>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld2w_zpri(ZPRI_PARAMS) { return ldN_imm<int, 2>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld2d_zpri(ZPRI_PARAMS) { return ldN_imm<long, 2>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld3b_zpri(ZPRI_PARAMS) { return ldb_zpri<uint8_t, 3>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld3h_zpri(ZPRI_PARAMS) { return ldN_imm<short, 3>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld3w_zpri(ZPRI_PARAMS) { return ldN_imm<int, 3>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld3d_zpri(ZPRI_PARAMS) { return ldN_imm<long, 3>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld4b_zpri(ZPRI_PARAMS) { return ldb_zpri<uint8_t, 4>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld4h_zpri(ZPRI_PARAMS) { return ldN_imm<short, 4>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld4w_zpri(ZPRI_PARAMS) { return ldN_imm<int, 4>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ld4d_zpri(ZPRI_PARAMS) { return ldN_imm<long, 4>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st2b_zpri(ZPRI_PARAMS) { return st_zpri<uint8_t, 2>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st2h_zpri(ZPRI_PARAMS) { return st_zpri<uint16_t, 2>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st2w_zpri(ZPRI_PARAMS) { return st_zpri<uint32_t, 2>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st2d_zpri(ZPRI_PARAMS) { return st_zpri<uint64_t, 2>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st3b_zpri(ZPRI_PARAMS) { return st_zpri<uint8_t, 3>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st3h_zpri(ZPRI_PARAMS) { return st_zpri<uint16_t, 3>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st3w_zpri(ZPRI_PARAMS) { return st_zpri<uint32_t, 3>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st3d_zpri(ZPRI_PARAMS) { return st_zpri<uint64_t, 3>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st4b_zpri(ZPRI_PARAMS) { return st_zpri<uint8_t, 4>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st4h_zpri(ZPRI_PARAMS) { return st_zpri<uint16_t, 4>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st4w_zpri(ZPRI_PARAMS) { return st_zpri<uint32_t, 4>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_st4d_zpri(ZPRI_PARAMS) { return st_zpri<uint64_t, 4>(ZPRI_ARGS); }

extern "C" aarch64_decode_rc sve_ld2b_scaled_zprr(ZPRR_PARAMS) { return ldb_zprr<uint8_t, 2>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld2h_scaled_zprr(ZPRR_PARAMS) { return ldN_index<short, 2>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld2w_scaled_zprr(ZPRR_PARAMS) { return ldN_index<int, 2>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld2d_scaled_zprr(ZPRR_PARAMS) { return ldN_index<long, 2>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld3b_scaled_zprr(ZPRR_PARAMS) { return ldb_zprr<uint8_t, 3>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld3h_scaled_zprr(ZPRR_PARAMS) { return ldN_index<short, 3>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld3w_scaled_zprr(ZPRR_PARAMS) { return ldN_index<int, 3>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld3d_scaled_zprr(ZPRR_PARAMS) { return ldN_index<long, 3>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld4b_scaled_zprr(ZPRR_PARAMS) { return ldb_zprr<uint8_t, 4>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld4h_scaled_zprr(ZPRR_PARAMS) { return ldN_index<short, 4>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld4w_scaled_zprr(ZPRR_PARAMS) { return ldN_index<int, 4>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ld4d_scaled_zprr(ZPRR_PARAMS) { return ldN_index<long, 4>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st2b_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint8_t, 2>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st2h_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint16_t, 2>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st2w_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint32_t, 2>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st2d_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint64_t, 2>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st3b_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint8_t, 3>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st3h_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint16_t, 3>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st3w_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint32_t, 3>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st3d_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint64_t, 3>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st4b_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint8_t, 4>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st4h_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint16_t, 4>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st4w_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint32_t, 4>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_st4d_scaled_zprr(ZPRR_PARAMS) { return st_zprr<uint64_t, 4>(ZPRR_ARGS); }

aarch64_decode_rc VecU8E2Load1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld2b_zpri, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16E2Load2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld2h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32E2Load4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld2w_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64E2Load8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld2d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8E3Load1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld3b_zpri, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16E3Load2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld3h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32E3Load4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld3w_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64E3Load8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld3d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8E4Load1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld4b_zpri, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16E4Load2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld4h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32E4Load4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld4w_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64E4Load8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ld4d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8E2Store1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st2b_zpri, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16E2Store2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st2h_zpri, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32E2Store4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st2w_zpri, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64E2Store8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st2d_zpri, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU8E3Store1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st3b_zpri, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16E3Store2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st3h_zpri, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32E3Store4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st3w_zpri, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64E3Store8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st3d_zpri, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU8E4Store1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st4b_zpri, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16E4Store2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st4h_zpri, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32E4Store4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st4w_zpri, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64E4Store8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_st4d_zpri, ES_D, STORE>(s, w); }

aarch64_decode_rc VecU8E2Load1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld2b_scaled_zprr, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16E2Load2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld2h_scaled_zprr, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32E2Load4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld2w_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64E2Load8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld2d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8E3Load1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld3b_scaled_zprr, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16E3Load2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld3h_scaled_zprr, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32E3Load4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld3w_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64E3Load8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld3d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8E4Load1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld4b_scaled_zprr, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16E4Load2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld4h_scaled_zprr, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32E4Load4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld4w_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64E4Load8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ld4d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU8E2Store1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st2b_scaled_zprr, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16E2Store2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st2h_scaled_zprr, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32E2Store4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st2w_scaled_zprr, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64E2Store8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st2d_scaled_zprr, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU8E3Store1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st3b_scaled_zprr, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16E3Store2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st3h_scaled_zprr, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32E3Store4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st3w_scaled_zprr, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64E3Store8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st3d_scaled_zprr, ES_D, STORE>(s, w); }
aarch64_decode_rc VecU8E4Store1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st4b_scaled_zprr, ES_B, STORE>(s, w); }
aarch64_decode_rc VecU16E4Store2LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st4h_scaled_zprr, ES_H, STORE>(s, w); }
aarch64_decode_rc VecU32E4Store4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st4w_scaled_zprr, ES_S, STORE>(s, w); }
aarch64_decode_rc VecU64E4Store8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_st4d_scaled_zprr, ES_D, STORE>(s, w); }
