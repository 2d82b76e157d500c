// The emulated register file and the by-value operand records that handlers
// pass to kernels. The layout of cpu_state is a contract with the block
// rewriting code, which stores and loads the fields by offset: every offset is
// pinned below.
#pragma once

#include <cstddef>
#include <cstdint>

// Vector length of this build: 512 bits. Nothing adapts to another length.
constexpr unsigned SVE_VL_BYTES = 64;
constexpr unsigned SVE_NUM_Z = 32;
constexpr unsigned SVE_NUM_P = 16;

struct cpu_state {
    uint64_t x[32];             // X0..X30, x[31] is SP
    uint32_t* pc;               // address of the instruction being emulated
    uint64_t nzcv;              // NZCV system register layout, other bits kept
    uint32_t fpsr;
    uint32_t fpcr;
    uint32_t fpcr_extra;        // ORed into the control word of reference ops
    alignas(16) uint8_t z[32][64];
    uint8_t p[16][64];          // one byte per vector byte, bit 0 meaningful
    uint8_t ffr[64];            // same form as p
    uint64_t instruction;       // word being executed (kernel route only)
};

static_assert(offsetof(cpu_state, x) == 0, "x");
static_assert(offsetof(cpu_state, pc) == 256, "pc");
static_assert(offsetof(cpu_state, nzcv) == 264, "nzcv");
static_assert(offsetof(cpu_state, fpsr) == 272, "fpsr");
static_assert(offsetof(cpu_state, fpcr) == 276, "fpcr");
static_assert(offsetof(cpu_state, fpcr_extra) == 280, "fpcr_extra");
static_assert(offsetof(cpu_state, z) == 288, "z");
static_assert(offsetof(cpu_state, p) == 288 + 32 * 64, "p");
static_assert(offsetof(cpu_state, ffr) == 288 + 48 * 64, "ffr");
static_assert(offsetof(cpu_state, instruction) == 288 + 49 * 64, "instruction");
static_assert(sizeof(cpu_state) == 288 + 49 * 64 + 16, "size");
// Load/store-pair and immediate-offset forms used by the rewriting code need
// these fields within reach of a 12-bit scaled offset from the base.
static_assert(offsetof(cpu_state, ffr) < 4096 * 8, "reach");

// 0 = .b, 1 = .h, 2 = .s, 3 = .d, 4 = .q (aarch64_z_reg only)
enum element_size : uint32_t { ES_B = 0, ES_H = 1, ES_S = 2, ES_D = 3, ES_Q = 4 };

// Result of handlers and kernels.
enum aarch64_decode_rc : uint32_t {
    DECODE_OK = 0,
    DECODE_UNKNOWN = 2,  // no row knows the word, or the kernel is a stub
};
static_assert(sizeof(aarch64_decode_rc) == 4, "32-bit enumeration");

struct aarch64_z_reg {
    uint32_t num;
    uint32_t size;      // element size of a read-only or write-only operand, 5 otherwise
    uint32_t dst_size;  // element size of a destructive operand, 5 otherwise
    uint32_t src_size;  // always equal to dst_size
    static const char* const zname[32];
    static const char* const zname_b[32];
    static const char* const zname_h[32];
    static const char* const zname_s[32];
    static const char* const zname_d[32];
};

struct aarch64_p_reg {
    uint32_t num;
    uint32_t qualifier;  // 0..3 element size, 4 /m, 5 /z, 6 plain, 7 none
    uint32_t dst_size;
    uint32_t src_size;
    static const char* const pname[16];
    static const char* const pname_m[16];
    static const char* const pname_z[16];
    static const char* const pname_b[16];
    static const char* const pname_h[16];
    static const char* const pname_s[16];
    static const char* const pname_d[16];
};

// General register where number 31 is the zero register.
struct aarch64_i_reg {
    uint32_t num;
    uint32_t size;      // 2 W form, 3 X form, 0/1 byte/half element, 4 destructive
    uint32_t dst_size;
    uint32_t src_size;
    static const char* const wname[32];
    static const char* const xname[32];
};

// General register where number 31 is SP.
struct aarch64_i_rsp_reg {
    uint32_t num;
    uint32_t size;
    static const char* const wname[32];
    static const char* const xname[32];
};

// One-bit FP immediate of the arithmetic forms.
struct aarch64_sve_fp_arith_imm {
    uint32_t bit;
};

// Eight-bit FP immediate of FDUP/FCPY held at all three widths.
struct aarch64_sve_fp_dup_imm {
    uint16_t half;
    uint32_t single;
    uint64_t dbl;
};

// 64-bit mask of AND/ORR/EOR/DUPM with an immediate.
struct aarch64_sve_logical64_imm {
    uint64_t value;
};

constexpr uint32_t QUAL_MERGE = 4;
constexpr uint32_t QUAL_ZERO = 5;
constexpr uint32_t QUAL_PLAIN = 6;
constexpr uint32_t QUAL_NONE = 7;

typedef aarch64_decode_rc (*sve_handler)(cpu_state*, unsigned);

// Register-file accessors that keep the zero-register rule in one place.
inline uint64_t read_xr(const cpu_state* s, aarch64_i_reg r) { return r.num == 31 ? 0 : s->x[r.num]; }
inline void write_xr(cpu_state* s, aarch64_i_reg r, uint64_t v) {
    if (r.num != 31) s->x[r.num] = v;
}
inline uint64_t read_xsp(const cpu_state* s, aarch64_i_rsp_reg r) { return s->x[r.num]; }
inline void write_xsp(cpu_state* s, aarch64_i_rsp_reg r, uint64_t v) { s->x[r.num] = v; }
