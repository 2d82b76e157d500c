// Load-and-replicate (LD1R and its signed forms) and the unpredicated spill
// and fill of Z and P registers (STR, LDR).
#include <atomic>

#include "sve/integer/kernel_util.h"
#include "sve/memory/mem_kernels.h"

namespace {

// The element is read once for each active element, not once for the whole
// instruction, so that an all-false predicate reads nothing and a fault
// happens exactly where the architecture's per-element access would.
template <typename E, typename M>
aarch64_decode_rc ld1r(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, unsigned imm) {
    uint64_t address = read_xsp(s, xn) + uint64_t(imm) * sizeof(M);
    uint8_t* z = s->z[zt.num];
    const uint8_t* p = s->p[pg.num];
    for (unsigned i = 0; i < 64 / sizeof(E); ++i) {
        set_elem<E>(z, i, active<E>(p, i) ? static_cast<E>(mem_load<M>(address)) : E(0));
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    return DECODE_OK;
}

// LD1R: Zt 4..0, Xn 9..5 (31 is SP), Pg 12..10, an unsigned 6-bit immediate
// at 21..16 counting memory elements.
template <sve_ld1r_kernel K, uint32_t ES>
aarch64_decode_rc ld1r_handler(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return K(s, zreg(f_zd(w), ES), preg(f_pg3(w), QUAL_ZERO), rspreg(f_zn(w), ES_D), bits_of(w, 21, 16));
}

// LDR and STR: a signed 9-bit immediate, high six bits at 21..16 and low
// three at 12..10, counting whole registers as they lie in memory: 64 bytes
// for Z and 8 for P at this vector length. The product is taken in 32 bits.
inline int spill_imm(unsigned w) { return sbits_of(w, 21, 16) * 8 + static_cast<int>(bits_of(w, 12, 10)); }
inline uint64_t spill_address(const cpu_state* s, aarch64_i_rsp_reg xn, int imm, int32_t unit) {
    return read_xsp(s, xn) + static_cast<int64_t>(static_cast<int32_t>(imm * unit));
}

}  // namespace

#define LD1R_PARAMS cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, unsigned imm
#define LD1R_ARGS s, zt, pg, xn, imm

extern "C" aarch64_decode_rc sve_ld1rb_zpri(LD1R_PARAMS) { return ld1r<uint8_t, uint8_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rb_h_zpri(LD1R_PARAMS) { return ld1r<uint16_t, uint8_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rb_s_zpri(LD1R_PARAMS) { return ld1r<uint32_t, uint8_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rb_d_zpri(LD1R_PARAMS) { return ld1r<uint64_t, uint8_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rh_zpri(LD1R_PARAMS) { return ld1r<uint16_t, uint16_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rh_s_zpri(LD1R_PARAMS) { return ld1r<uint32_t, uint16_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rh_d_zpri(LD1R_PARAMS) { return ld1r<uint64_t, uint16_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rw_zpri(LD1R_PARAMS) { return ld1r<uint32_t, uint32_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rw_d_zpri(LD1R_PARAMS) { return ld1r<uint64_t, uint32_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rd_zpri(LD1R_PARAMS) { return ld1r<uint64_t, uint64_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rsb_h_zpri(LD1R_PARAMS) { return ld1r<uint16_t, int8_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rsb_s_zpri(LD1R_PARAMS) { return ld1r<uint32_t, int8_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rsb_d_zpri(LD1R_PARAMS) { return ld1r<uint64_t, int8_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rsh_s_zpri(LD1R_PARAMS) { return ld1r<uint32_t, int16_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rsh_d_zpri(LD1R_PARAMS) { return ld1r<uint64_t, int16_t>(LD1R_ARGS); }
extern "C" aarch64_decode_rc sve_ld1rsw_d_zpri(LD1R_PARAMS) { return ld1r<uint64_t, int32_t>(LD1R_ARGS); }

aarch64_decode_rc VecU8LoadDup1SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rb_zpri, ES_B>(s, w); }
aarch64_decode_rc VecU16LoadDup1SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rb_h_zpri, ES_H>(s, w); }
aarch64_decode_rc VecU32LoadDup1SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rb_s_zpri, ES_S>(s, w); }
aarch64_decode_rc VecU64LoadDup1SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rb_d_zpri, ES_D>(s, w); }
aarch64_decode_rc VecU16LoadDup2SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rh_zpri, ES_H>(s, w); }
aarch64_decode_rc VecU32LoadDup2SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rh_s_zpri, ES_S>(s, w); }
aarch64_decode_rc VecU64LoadDup2SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rh_d_zpri, ES_D>(s, w); }
aarch64_decode_rc VecU32LoadDup4SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rw_zpri, ES_S>(s, w); }
aarch64_decode_rc VecU64LoadDup4SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rw_d_zpri, ES_D>(s, w); }
aarch64_decode_rc VecU64LoadDup8SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rd_zpri, ES_D>(s, w); }
aarch64_decode_rc VecS16LoadDup1SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rsb_h_zpri, ES_H>(s, w); }
aarch64_decode_rc VecS32LoadDup1SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rsb_s_zpri, ES_S>(s, w); }
aarch64_decode_rc VecS64LoadDup1SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rsb_d_zpri, ES_D>(s, w); }
aarch64_decode_rc VecS32LoadDup2SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rsh_s_zpri, ES_S>(s, w); }
aarch64_decode_rc VecS64LoadDup2SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rsh_d_zpri, ES_D>(s, w); }
aarch64_decode_rc VecS64LoadDup4SIZ(cpu_state* s, unsigned w) { return ld1r_handler<sve_ld1rsw_d_zpri, ES_D>(s, w); }

// A Z register in memory is its 64 bytes in order, whatever the element size,
// moved in pieces of 8 from low to high: a fault in a later piece leaves the
// earlier ones done.
extern "C" aarch64_decode_rc sve_ldr_zri(cpu_state* s, aarch64_z_reg zt, aarch64_i_rsp_reg xn, int imm) {
    uint64_t address = spill_address(s, xn, imm, 64);
    for (unsigned k = 0; k < 8; ++k) {
        set_elem<uint64_t>(s->z[zt.num], k, mem_load<uint64_t>(address + 8 * k));
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    return DECODE_OK;
}

extern "C" aarch64_decode_rc sve_str_zri(cpu_state* s, aarch64_z_reg zt, aarch64_i_rsp_reg xn, int imm) {
    uint64_t address = spill_address(s, xn, imm, 64);
    for (unsigned k = 0; k < 8; ++k) mem_store<uint64_t>(address + 8 * k, elem<uint64_t>(s->z[zt.num], k));
    return DECODE_OK;
}

// A P register in memory is the architecture's image, one bit per vector
// byte, so that what the application spills is what hardware of this vector
// length would write and can be moved around as data: bit k of the 64-bit
// little-endian value is bit 0 of p[pt][k]. The upper bits of each byte are
// dropped on a spill; a fill writes every byte 0 or 1, group bytes included.
extern "C" aarch64_decode_rc sve_str_pri(cpu_state* s, aarch64_p_reg pt, aarch64_i_rsp_reg xn, int imm) {
    uint64_t bits = 0;
    for (unsigned k = 0; k < 64; ++k) bits |= uint64_t(s->p[pt.num][k] & 1) << k;
    mem_store<uint64_t>(spill_address(s, xn, imm, 8), bits);
    return DECODE_OK;
}

extern "C" aarch64_decode_rc sve_ldr_pri(cpu_state* s, aarch64_p_reg pt, aarch64_i_rsp_reg xn, int imm) {
    uint64_t bits = mem_load<uint64_t>(spill_address(s, xn, imm, 8));
    for (unsigned k = 0; k < 64; ++k) s->p[pt.num][k] = bits >> k & 1;
    return DECODE_OK;
}

aarch64_decode_rc VecU64FillSI(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_ldr_zri(s, zreg(f_zd(w), ES_D), rspreg(f_zn(w), ES_D), spill_imm(w));
}
aarch64_decode_rc VecU64SpillSI(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_str_zri(s, zreg(f_zd(w), ES_D), rspreg(f_zn(w), ES_D), spill_imm(w));
}
aarch64_decode_rc VecPFillSI(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_ldr_pri(s, preg(f_pd(w), QUAL_PLAIN), rspreg(f_zn(w), ES_D), spill_imm(w));
}
aarch64_decode_rc VecPSpillSI(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_str_pri(s, preg(f_pd(w), QUAL_PLAIN), rspreg(f_zn(w), ES_D), spill_imm(w));
}
