// What every opcode handler is made of: fields cut at fixed bit positions,
// immediates computed from them, and operand records built from constants of
// the handler and those fields.
#pragma once

#include <cstdint>

#include "sve/core/cpu_state.h"

// Bits hi..lo of w, unsigned.
constexpr uint32_t bits_of(uint32_t w, int hi, int lo) { return (w >> lo) & ((hi - lo == 31) ? ~0u : ((1u << (hi - lo + 1)) - 1)); }
// Bits hi..lo of w, sign-extended from the top of the field.
constexpr int32_t sbits_of(uint32_t w, int hi, int lo) {
    return static_cast<int32_t>(bits_of(w, hi, lo) << (31 - (hi - lo))) >> (31 - (hi - lo));
}

// Standard operand positions.
inline uint32_t f_zd(uint32_t w) { return bits_of(w, 4, 0); }
inline uint32_t f_zn(uint32_t w) { return bits_of(w, 9, 5); }
inline uint32_t f_zm(uint32_t w) { return bits_of(w, 20, 16); }
inline uint32_t f_pg3(uint32_t w) { return bits_of(w, 12, 10); }
inline uint32_t f_pg4(uint32_t w) { return bits_of(w, 13, 10); }
inline uint32_t f_pd(uint32_t w) { return bits_of(w, 3, 0); }
inline uint32_t f_pn(uint32_t w) { return bits_of(w, 8, 5); }
inline uint32_t f_pm(uint32_t w) { return bits_of(w, 19, 16); }

// Operand records. "Read" operands carry their size in `size`; destructive
// ones in `dst_size`/`src_size`.
inline aarch64_z_reg zreg(uint32_t num, uint32_t size) { return {num, size, 5, 5}; }
inline aarch64_z_reg zreg_dst(uint32_t num, uint32_t size) { return {num, 5, size, size}; }
inline aarch64_p_reg preg(uint32_t num, uint32_t qualifier) { return {num, qualifier, 7, 7}; }
inline aarch64_p_reg preg_dst(uint32_t num, uint32_t size) { return {num, 7, size, size}; }
inline aarch64_i_reg ireg(uint32_t num, uint32_t size) { return {num, size, 4, 4}; }
inline aarch64_i_reg ireg_dst(uint32_t num, uint32_t size) { return {num, 4, size, size}; }
inline aarch64_i_rsp_reg rspreg(uint32_t num, uint32_t size) { return {num, size}; }

// Immediates of the handler table.

// ADD/SUB/SUBR/SQADD... immediate: imm8 at 12..5, shifted left by 8 when bit 13 is set.
inline uint32_t imm_arith_u(uint32_t w) {
    uint32_t v = bits_of(w, 12, 5);
    return bits_of(w, 13, 13) ? v << 8 : v;
}
// DUP/CPY immediate: imm8 sign-extended, then shifted left by 8 when bit 13 is set.
inline int32_t imm_dup_s(uint32_t w) {
    int32_t v = sbits_of(w, 12, 5);
    return bits_of(w, 13, 13) ? static_cast<int32_t>(static_cast<uint32_t>(v) << 8) : v;
}

// Left-shift immediate: the free part of tsz:imm3. `esize_log` is 0..3.
// Unpredicated layout: imm3 at 18..16, tsz at 23..22:20..19.
inline uint32_t imm_shl_x(uint32_t w, int esize_log) {
    switch (esize_log) {
        case 0: return bits_of(w, 18, 16);
        case 1: return bits_of(w, 19, 16);
        case 2: return bits_of(w, 20, 16);
        default: return bits_of(w, 22, 22) << 5 | bits_of(w, 20, 16);
    }
}
// Predicated layout: imm3 at 7..5, tsz at 23..22:9..8.
inline uint32_t imm_shl_m(uint32_t w, int esize_log) {
    switch (esize_log) {
        case 0: return bits_of(w, 7, 5);
        case 1: return bits_of(w, 8, 5);
        case 2: return bits_of(w, 9, 5);
        default: return bits_of(w, 22, 22) << 5 | bits_of(w, 9, 5);
    }
}
inline uint32_t imm_shr_x(uint32_t w, int esize_log) { return (8u << esize_log) - imm_shl_x(w, esize_log); }
inline uint32_t imm_shr_m(uint32_t w, int esize_log) { return (8u << esize_log) - imm_shl_m(w, esize_log); }

// DUP (indexed) element index from imm2:tsz, esize_log 0..4.
inline uint32_t imm_dup_index(uint32_t w, int esize_log) {
    uint32_t hi = bits_of(w, 23, 22);
    switch (esize_log) {
        case 0: return hi << 4 | bits_of(w, 20, 17);
        case 1: return hi << 3 | bits_of(w, 20, 18);
        case 2: return hi << 2 | bits_of(w, 20, 19);
        case 3: return hi << 1 | bits_of(w, 20, 20);
        default: return hi;
    }
}

// Logical immediate N:immr:imms at 17..5 expanded to a 64-bit mask.
// `ok` is false for the reserved encodings (N 0 with imms all ones, or an
// all-ones element), for which the architecture defines no mask.
uint64_t decode_logical_imm(uint32_t n_immr_imms, bool* ok);

// FDUP/FCPY 8-bit immediate expanded at all three widths.
aarch64_sve_fp_dup_imm expand_fp_dup_imm(uint32_t imm8);

// Writes the word where the kernels' diagnostics and ADR expect it.
inline void set_instruction(cpu_state* s, uint32_t w) { s->instruction = w; }
