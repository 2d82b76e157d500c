// Gather loads, first-fault gathers and scatter stores: every element has an
// address of its own, from a vector of bases plus an immediate, or from a
// scalar base plus a vector of offsets (64-bit, or 32-bit sign- or
// zero-extended, scaled by the memory size or not).
//
// Which forms run in a kernel and which in a reference operation is settled
// form by form in gather_forms.def; both routes compute addresses with the
// same function, so they agree by construction on everything but the way
// memory is reached (a direct access in a kernel, ReadMemLib/WriteMemLib in a
// reference operation).
#include <atomic>
#include <cstring>

#include "sve/core/reference.h"
#include "sve/integer/kernel_util.h"
#include "sve/memory/mem_kernels.h"
#include "sve/memory/memory.h"

namespace {

enum class Form { VI, VS, SV, XVS, XSV, YVS, YSV };

inline uint64_t sext32(uint64_t v) { return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(v))); }
inline uint64_t zext32(uint64_t v) { return v & 0xffffffffu; }

// Address of one element. `v` is the element of the vector operand as an
// unsigned value of its own width: a 32-bit element arrives zero-extended,
// which is what VI (a 32-bit base) and VS, SV (the UXTW forms of 32-bit
// elements) need; a 64-bit element is taken whole by VI, VS and SV and cut to
// its low 32 bits by the extending forms. `scalar` is the immediate for VI and
// the base register otherwise. The scale is the memory size m, never the
// element size. All arithmetic wraps at 64 bits.
template <Form F, unsigned m>
inline uint64_t element_address(uint64_t scalar, uint64_t v) {
    switch (F) {
        case Form::VI: return v + scalar * m;
        case Form::VS: return scalar + v;
        case Form::SV: return scalar + v * m;
        case Form::XVS: return scalar + sext32(v);
        case Form::XSV: return scalar + sext32(v) * m;
        case Form::YVS: return scalar + zext32(v);
        case Form::YSV: return scalar + zext32(v) * m;
    }
    return 0;
}

template <unsigned bits>
struct Elem;
template <>
struct Elem<32> {
    typedef uint32_t type;
};
template <>
struct Elem<64> {
    typedef uint64_t type;
};

template <unsigned m, bool sign>
struct Mem;
template <> struct Mem<1, false> { typedef uint8_t type; };
template <> struct Mem<2, false> { typedef uint16_t type; };
template <> struct Mem<4, false> { typedef uint32_t type; };
template <> struct Mem<8, false> { typedef uint64_t type; };
template <> struct Mem<1, true> { typedef int8_t type; };
template <> struct Mem<2, true> { typedef int16_t type; };
template <> struct Mem<4, true> { typedef int32_t type; };

// ---- Kernels ---------------------------------------------------------------

// The destination is written as the loop goes, and offset element i is read
// just before element i is written at the same position, so Zt may be the
// offset or base register. The fence keeps the elements already loaded in
// the register file if a later element's access ends the process.
template <typename E, typename M, Form F>
aarch64_decode_rc gather(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg zv, uint64_t scalar) {
    uint8_t* z = s->z[zt.num];
    const uint8_t* v = s->z[zv.num];
    const uint8_t* p = s->p[pg.num];
    for (unsigned i = 0; i < 64 / sizeof(E); ++i) {
        E r = 0;
        if (active<E>(p, i)) r = static_cast<E>(mem_load<M>(element_address<F, sizeof(M)>(scalar, elem<E>(v, i))));
        set_elem<E>(z, i, r);
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    return DECODE_OK;
}

// Ascending order, so that of two active elements with the same address the
// higher one's bytes are what memory keeps.
template <typename E, typename M, Form F>
aarch64_decode_rc scatter(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg zv, uint64_t scalar) {
    const uint8_t* z = s->z[zt.num];
    const uint8_t* v = s->z[zv.num];
    const uint8_t* p = s->p[pg.num];
    for (unsigned i = 0; i < 64 / sizeof(E); ++i)
        if (active<E>(p, i))
            mem_store<M>(element_address<F, sizeof(M)>(scalar, elem<E>(v, i)), static_cast<M>(elem<E>(z, i)));
    return DECODE_OK;
}

// ---- Reference operations --------------------------------------------------

uint64_t read_lib(unsigned m, uint64_t address, CpuContext* context) {
    switch (m) {
        case 1: return ReadMemLib1(address, 0, nullptr, context);
        case 2: return ReadMemLib2(address, 0, nullptr, context);
        case 4: return ReadMemLib4(address, 0, nullptr, context);
        default: return ReadMemLib8(address, 0, nullptr, context);
    }
}

void write_lib(unsigned m, uint64_t value, uint64_t address, CpuContext* context) {
    switch (m) {
        case 1: WriteMemLib1(static_cast<unsigned char>(value), address, context); break;
        case 2: WriteMemLib2(static_cast<unsigned short>(value), address, context); break;
        case 4: WriteMemLib4(static_cast<unsigned int>(value), address, context); break;
        default: WriteMemLib8(value, address, context); break;
    }
}

template <unsigned c>
uint64_t vector_element(const VecVal& v, unsigned e) {
    uint64_t x = 0;
    std::memcpy(&x, v.b + e * c, c);
    return x;
}

template <unsigned m, bool sign>
uint64_t extend(uint64_t x) {
    if (sign && m < 8 && (x >> (8 * m - 1) & 1)) x |= ~0ull << (8 * m);
    return x;
}

template <unsigned c, unsigned m, bool sign, Form F>
VecVal ref_gather(const PredV& pg, const VecVal& vec, uint64_t scalar, CpuContext* context) {
    VecVal result;
    unsigned n = elements(context, c * 8);
    for (unsigned e = 0; e < n; ++e) {
        uint64_t x = 0;
        if (pbit(pg, e, c * 8))
            x = extend<m, sign>(read_lib(m, element_address<F, m>(scalar, vector_element<c>(vec, e)), context));
        std::memcpy(result.b + e * c, &x, c);
    }
    return result;
}

// Addresses of inactive elements are computed too, as plain arithmetic; the
// loop never reads them.
template <unsigned c, unsigned m, bool sign, Form F>
VecVal ref_gather_ff(const PredV& pg, const VecVal& vec, uint64_t scalar, CpuContext* context) {
    uint64_t address[256];
    unsigned n = elements(context, c * 8);
    for (unsigned e = 0; e < n; ++e) address[e] = element_address<F, m>(scalar, vector_element<c>(vec, e));
    return first_fault_elements(pg, address, c, m, sign, context);
}

template <unsigned c, unsigned m, Form F>
void ref_scatter(const PredV& pg, const VecVal& vec, uint64_t scalar, const VecVal& data, CpuContext* context) {
    unsigned n = elements(context, c * 8);
    for (unsigned e = 0; e < n; ++e)
        if (pbit(pg, e, c * 8))
            write_lib(m, vector_element<c>(data, e), element_address<F, m>(scalar, vector_element<c>(vec, e)), context);
}

constexpr uint32_t es_of_bits(unsigned bits) { return bits == 64 ? ES_D : ES_S; }

}  // namespace

// ---- Instantiation from the form list ---------------------------------------

#define E_(e) Elem<e>::type
#define M_(m, sign) Mem<m, sign>::type

// Kernels, by operation and operand shape.
#define KERNEL_Load_ZPZI(k, e, m, sign, form)                                                                   \
    extern "C" aarch64_decode_rc k(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg zn, unsigned imm) { \
        return gather<E_(e), M_(m, sign), Form::form>(s, zt, pg, zn, imm);                                       \
    }
#define KERNEL_Load_ZPZR(k, e, m, sign, form)                                                                   \
    extern "C" aarch64_decode_rc k(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg zm,        \
                                   aarch64_i_rsp_reg xn) {                                                       \
        return gather<E_(e), M_(m, sign), Form::form>(s, zt, pg, zm, read_xsp(s, xn));                          \
    }
#define KERNEL_Load_ZPRZ(k, e, m, sign, form)                                                                   \
    extern "C" aarch64_decode_rc k(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn,    \
                                   aarch64_z_reg zm) {                                                           \
        return gather<E_(e), M_(m, sign), Form::form>(s, zt, pg, zm, read_xsp(s, xn));                          \
    }
#define KERNEL_Store_ZPZI(k, e, m, sign, form)                                                                  \
    extern "C" aarch64_decode_rc k(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg zn, unsigned imm) { \
        return scatter<E_(e), M_(m, false), Form::form>(s, zt, pg, zn, imm);                                     \
    }
#define KERNEL_Store_ZPZR(k, e, m, sign, form)                                                                  \
    extern "C" aarch64_decode_rc k(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg zm,        \
                                   aarch64_i_rsp_reg xn) {                                                       \
        return scatter<E_(e), M_(m, false), Form::form>(s, zt, pg, zm, read_xsp(s, xn));                        \
    }
#define KERNEL_Store_ZPRZ(k, e, m, sign, form)                                                                  \
    extern "C" aarch64_decode_rc k(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn,    \
                                   aarch64_z_reg zm) {                                                           \
        return scatter<E_(e), M_(m, false), Form::form>(s, zt, pg, zm, read_xsp(s, xn));                        \
    }

// Kernel-route handlers: Zt 4..0, Pg 12..10, Xn or Zn 9..5 (Xn 31 is SP), Zm
// or the unsigned immediate 20..16. Loads govern with /z, stores plainly.
#define QUAL_Load QUAL_ZERO
#define QUAL_Store QUAL_PLAIN
#define K_HANDLER_ZPZI(h, k, e, op)                                                                             \
    aarch64_decode_rc h(cpu_state* s, unsigned w) {                                                            \
        set_instruction(s, w);                                                                                  \
        return k(s, zreg(f_zd(w), es_of_bits(e)), preg(f_pg3(w), QUAL_##op), zreg(f_zn(w), es_of_bits(e)),     \
                 bits_of(w, 20, 16));                                                                           \
    }
#define K_HANDLER_ZPZR(h, k, e, op)                                                                             \
    aarch64_decode_rc h(cpu_state* s, unsigned w) {                                                            \
        set_instruction(s, w);                                                                                  \
        return k(s, zreg(f_zd(w), es_of_bits(e)), preg(f_pg3(w), QUAL_##op), zreg(f_zm(w), es_of_bits(e)),     \
                 rspreg(f_zn(w), ES_D));                                                                        \
    }
#define K_HANDLER_ZPRZ(h, k, e, op)                                                                             \
    aarch64_decode_rc h(cpu_state* s, unsigned w) {                                                            \
        set_instruction(s, w);                                                                                  \
        return k(s, zreg(f_zd(w), es_of_bits(e)), preg(f_pg3(w), QUAL_##op), rspreg(f_zn(w), ES_D),            \
                 zreg(f_zm(w), es_of_bits(e)));                                                                 \
    }

// Reference operations: the operands of the form in the order of the
// handler's name, VI (Zn, imm), xVS (Zm, base), xSV (base, Zm).
#define REF_PARAMS_VI VecVal vec, uint64_t scalar
#define REF_PARAMS_VS VecVal vec, uint64_t scalar
#define REF_PARAMS_XVS VecVal vec, uint64_t scalar
#define REF_PARAMS_YVS VecVal vec, uint64_t scalar
#define REF_PARAMS_SV uint64_t scalar, VecVal vec
#define REF_PARAMS_XSV uint64_t scalar, VecVal vec
#define REF_PARAMS_YSV uint64_t scalar, VecVal vec
#define REF_MARSHAL_VI(f, w) f.zv(f_zn(w)), uint64_t(bits_of(w, 20, 16))
#define REF_MARSHAL_VS(f, w) f.zv(f_zm(w)), f.xsp(f_zn(w))
#define REF_MARSHAL_XVS(f, w) f.zv(f_zm(w)), f.xsp(f_zn(w))
#define REF_MARSHAL_YVS(f, w) f.zv(f_zm(w)), f.xsp(f_zn(w))
#define REF_MARSHAL_SV(f, w) f.xsp(f_zn(w)), f.zv(f_zm(w))
#define REF_MARSHAL_XSV(f, w) f.xsp(f_zn(w)), f.zv(f_zm(w))
#define REF_MARSHAL_YSV(f, w) f.xsp(f_zn(w)), f.zv(f_zm(w))

#define REF_OP_Load(h, e, m, sign, form)                                   \
    extern "C" VecVal h(PredV pg, REF_PARAMS_##form, CpuContext* c) {      \
        return ref_gather<e / 8, m, sign, Form::form>(pg, vec, scalar, c); \
    }
#define REF_OP_LoadFF(h, e, m, sign, form)                                    \
    extern "C" VecVal h(PredV pg, REF_PARAMS_##form, CpuContext* c) {         \
        return ref_gather_ff<e / 8, m, sign, Form::form>(pg, vec, scalar, c); \
    }
#define REF_OP_Store(h, e, m, sign, form)                                      \
    extern "C" void h(PredV pg, REF_PARAMS_##form, VecVal zt, CpuContext* c) { \
        ref_scatter<e / 8, m, Form::form>(pg, vec, scalar, zt, c);             \
    }

#define REF_HANDLER_Load(h, form)                                                    \
    aarch64_decode_rc h(cpu_state* s, unsigned w) {                                  \
        RefFrame f(s);                                                               \
        f.put_z(f_zd(w), h(f.pred(f_pg3(w)), REF_MARSHAL_##form(f, w), f.c()));      \
        return static_cast<aarch64_decode_rc>(f.finish());                           \
    }
#define REF_HANDLER_LoadFF(h, form) REF_HANDLER_Load(h, form)
#define REF_HANDLER_Store(h, form)                                                   \
    aarch64_decode_rc h(cpu_state* s, unsigned w) {                                  \
        RefFrame f(s);                                                               \
        h(f.pred(f_pg3(w)), REF_MARSHAL_##form(f, w), f.zv(f_zd(w)), f.c());          \
        return static_cast<aarch64_decode_rc>(f.finish());                           \
    }

// A kernel form also has its reference operation, which no handler calls; it
// stays so that the two routes can be held to the same results.
#define SVE_GATHER_K(h, op, e, m, sign, form, kernel, shape) \
    REF_OP_##op(h, e, m, sign, form) KERNEL_##op##_##shape(kernel, e, m, sign, form) K_HANDLER_##shape(h, kernel, e, op)
#define SVE_GATHER_R(h, op, e, m, sign, form) REF_OP_##op(h, e, m, sign, form) REF_HANDLER_##op(h, form)
#include "sve/memory/gather_forms.def"
