// First-fault and non-fault contiguous loads.
//
// The emulator has no page tables of its own, so what can be read is found
// out by experiment, in three ways that give three different answers and are
// kept apart on purpose:
//
// - LDNF1 (kernels): addr_is_readable on the first byte of an element, once
//   per page. An element on an unreadable page clears its own FFR bytes and
//   keeps its old register value; the loop goes on, so a readable page after
//   an unreadable one still loads.
// - LDFF1 of the unsigned byte, word and doubleword forms (kernels): one probe
//   of the page after the base, and only when the 64 bytes after the base
//   cross a page boundary. If that page is unreadable, only the elements that
//   fit before the boundary by the register's element size are loaded and FFR
//   is cleared from there to the end.
// - The other LDFF1 forms and every first-fault gather (reference operations):
//   the guarded read of each element, which catches a fault on its first or
//   last byte. The first fault gives 0, clears FFR from that element on and
//   stops all reads; the first active element is no exception.
#include <atomic>
#include <cstring>

#include "sve/core/decode.h"
#include "sve/core/reference.h"
#include "sve/integer/kernel_util.h"
#include "sve/memory/mem_kernels.h"
#include "sve/memory/memory.h"

namespace {

inline bool readable_at(uint64_t address) { return addr_is_readable(reinterpret_cast<char volatile*>(address)); }

// Offset of an address in its page, compared as a signed 32-bit value as the
// probing rule below asks (the values never reach the sign bit).
inline int32_t page_offset(uint64_t address) { return static_cast<int32_t>((page_size - 1) & address); }

// LDNF1. The first probe is made before looking at the predicate; after that
// a probe is repeated only when the page offset comes back to or below the
// offset of the last probe, that is when a page boundary has been passed, or
// when this is the very address probed (so an active element 0 is probed
// twice). Only the first byte of an element is probed: an element that runs
// into an unreadable page passes, and its read then ends the process.
template <typename E, typename M>
aarch64_decode_rc ldnf1(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm) {
    constexpr unsigned n = 64 / sizeof(E);
    constexpr int64_t footprint = n * sizeof(M);
    uint8_t* z = s->z[zt.num];
    const uint8_t* p = s->p[pg.num];
    uint64_t address = read_xsp(s, xn) + static_cast<uint64_t>(imm * footprint);
    bool readable = readable_at(address);
    int32_t last = page_offset(address);
    for (unsigned i = 0; i < n; ++i, address += sizeof(M)) {
        if (!active<E>(p, i)) {
            set_elem<E>(z, i, E(0));
            continue;
        }
        int32_t offset = page_offset(address);
        if (offset <= last) {
            readable = readable_at(address);
            last = offset;
        }
        if (readable)
            set_elem<E>(z, i, static_cast<E>(mem_load<M>(address)));
        else
            std::memset(s->ffr + i * sizeof(E), 0, sizeof(E));
        // Elements already loaded stay loaded if the next read ends the process.
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    return DECODE_OK;
}

// LDFF1, kernel forms. The boundary test adds 64, the register's size, for
// every form: not the form's footprint in memory, so a widening form tests
// further than it reads. The count of loadable elements divides by the
// element size, not the memory size, so a widening form stops earlier than
// its footprint would need. Both are the behaviour this build keeps. When the
// base's own page is unreadable and no boundary is in reach, no probe is made
// and the first active element's read ends the process.
template <typename E, typename M>
aarch64_decode_rc ldff1(cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm) {
    constexpr unsigned n = 64 / sizeof(E);
    uint8_t* z = s->z[zt.num];
    const uint8_t* p = s->p[pg.num];
    uint64_t base = read_xsp(s, xn) + read_xr(s, xm) * sizeof(M);
    unsigned count = n;
    if (page_offset(base) > page_offset(base + 64) && !readable_at(base + page_size)) {
        uint32_t bytes = page_size - static_cast<uint32_t>(page_offset(base));
        if (bytes > 64) bytes = 64;
        count = bytes / sizeof(E);
    }
    for (unsigned i = 0; i < count; ++i) {
        E v = 0;
        if (active<E>(p, i)) v = static_cast<E>(mem_load<M>(base + uint64_t(i) * sizeof(M)));
        set_elem<E>(z, i, v);
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    // The elements from count on keep their register values, inactive ones
    // too; only FFR says they were not loaded.
    if (count < n) std::memset(s->ffr + count * sizeof(E), 0, 64 - count * sizeof(E));
    return DECODE_OK;
}

uint64_t read_lib(unsigned m, uint64_t address, int nonfault, bool* fault, CpuContext* context) {
    switch (m) {
        case 1: return ReadMemLib1(address, nonfault, fault, context);
        case 2: return ReadMemLib2(address, nonfault, fault, context);
        case 4: return ReadMemLib4(address, nonfault, fault, context);
        default: return ReadMemLib8(address, nonfault, fault, context);
    }
}

void clear_ffr_element(PredV& ffr, unsigned e, unsigned c) {
    for (unsigned b = e * c; b < (e + 1) * c; ++b) ffr.w[b >> 6] &= ~(1ull << (b & 63));
}

void put_element(VecVal& v, unsigned e, unsigned c, uint64_t x) { std::memcpy(v.b + e * c, &x, c); }

// The contiguous first-fault reference operations: element e at
// base + index * m + e * m.
template <unsigned c, unsigned m, bool sign>
VecVal ldff1_reference(PredV pg, uint64_t base, uint64_t index, CpuContext* context) {
    uint64_t address[256];
    unsigned n = elements(context, c * 8);
    for (unsigned e = 0; e < n; ++e) address[e] = base + index * m + uint64_t(e) * m;
    return first_fault_elements(pg, address, c, m, sign, context);
}

template <VecVal (*op)(PredV, uint64_t, uint64_t, CpuContext*)>
aarch64_decode_rc ldff1_reference_handler(cpu_state* s, unsigned w) {
    RefFrame f(s);
    f.put_z(f_zd(w), op(f.pred(f_pg3(w)), f.xsp(f_zn(w)), f.xr(f_zm(w)), f.c()));
    return static_cast<aarch64_decode_rc>(f.finish());
}

constexpr uint32_t LOAD = QUAL_ZERO;

}  // namespace

// The architecture's first-fault element loop, with one difference: the
// `nonfault` argument that tells the first active element from the others is
// passed but the read ignores it, so the first active element's fault is
// swallowed like any other. `seen` is the fault of an earlier element: from
// there on nothing is read, every element is 0 and its FFR bits are cleared,
// active or not.
VecVal first_fault_elements(const PredV& pg, const uint64_t* address, unsigned c, unsigned m, bool sign,
                            CpuContext* context) {
    VecVal result;
    unsigned n = elements(context, c * 8);
    bool fault = false, first = true, seen = false;
    for (unsigned e = 0; e < n; ++e) {
        uint64_t value = 0;
        if (pbit(pg, e, c * 8)) {
            if (!seen) {
                uint64_t data = read_lib(m, address[e], first ^ 1, &fault, context);
                first = fault;
                if (!fault) {
                    value = data;
                    if (sign && m < 8 && (data >> (8 * m - 1) & 1)) value |= ~0ull << (8 * m);
                }
            }
            if (seen || fault) {
                value = 0;
                first = false;
                clear_ffr_element(context->ffr, e, c);
            }
        } else if (seen) {
            clear_ffr_element(context->ffr, e, c);
        }
        put_element(result, e, c, value);
        seen = fault;
    }
    return result;
}

#define ZPRI_PARAMS cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, int imm
#define ZPRI_ARGS s, zt, pg, xn, imm
#define ZPRR_PARAMS cpu_state* s, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg xn, aarch64_i_reg xm
#define ZPRR_ARGS s, zt, pg, xn, xm

extern "C" aarch64_decode_rc sve_ldnf1b_zpri(ZPRI_PARAMS) { return ldnf1<uint8_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1b_h_zpri(ZPRI_PARAMS) { return ldnf1<uint16_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1b_s_zpri(ZPRI_PARAMS) { return ldnf1<uint32_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1b_d_zpri(ZPRI_PARAMS) { return ldnf1<uint64_t, uint8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1h_zpri(ZPRI_PARAMS) { return ldnf1<uint16_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1h_s_zpri(ZPRI_PARAMS) { return ldnf1<uint32_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1h_d_zpri(ZPRI_PARAMS) { return ldnf1<uint64_t, uint16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1w_zpri(ZPRI_PARAMS) { return ldnf1<uint32_t, uint32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1w_d_zpri(ZPRI_PARAMS) { return ldnf1<uint64_t, uint32_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1d_zpri(ZPRI_PARAMS) { return ldnf1<uint64_t, uint64_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1sb_h_zpri(ZPRI_PARAMS) { return ldnf1<uint16_t, int8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1sb_s_zpri(ZPRI_PARAMS) { return ldnf1<uint32_t, int8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1sb_d_zpri(ZPRI_PARAMS) { return ldnf1<uint64_t, int8_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1sh_s_zpri(ZPRI_PARAMS) { return ldnf1<uint32_t, int16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1sh_d_zpri(ZPRI_PARAMS) { return ldnf1<uint64_t, int16_t>(ZPRI_ARGS); }
extern "C" aarch64_decode_rc sve_ldnf1sw_d_zpri(ZPRI_PARAMS) { return ldnf1<uint64_t, int32_t>(ZPRI_ARGS); }

extern "C" aarch64_decode_rc sve_ldff1b_scaled_zprr(ZPRR_PARAMS) { return ldff1<uint8_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldff1b_h_scaled_zprr(ZPRR_PARAMS) { return ldff1<uint16_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldff1b_s_scaled_zprr(ZPRR_PARAMS) { return ldff1<uint32_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldff1b_d_scaled_zprr(ZPRR_PARAMS) { return ldff1<uint64_t, uint8_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldff1w_scaled_zprr(ZPRR_PARAMS) { return ldff1<uint32_t, uint32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldff1w_d_scaled_zprr(ZPRR_PARAMS) { return ldff1<uint64_t, uint32_t>(ZPRR_ARGS); }
extern "C" aarch64_decode_rc sve_ldff1d_scaled_zprr(ZPRR_PARAMS) { return ldff1<uint64_t, uint64_t>(ZPRR_ARGS); }

extern "C" VecVal VecU16CLoadFF2LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<2, 2, false>(pg, base, index, c);
}
extern "C" VecVal VecU32CLoadFF2LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<4, 2, false>(pg, base, index, c);
}
extern "C" VecVal VecU64CLoadFF2LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<8, 2, false>(pg, base, index, c);
}
extern "C" VecVal VecS16CLoadFF1LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<2, 1, true>(pg, base, index, c);
}
extern "C" VecVal VecS32CLoadFF1LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<4, 1, true>(pg, base, index, c);
}
extern "C" VecVal VecS64CLoadFF1LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<8, 1, true>(pg, base, index, c);
}
extern "C" VecVal VecS32CLoadFF2LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<4, 2, true>(pg, base, index, c);
}
extern "C" VecVal VecS64CLoadFF2LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<8, 2, true>(pg, base, index, c);
}
extern "C" VecVal VecS64CLoadFF4LSSZ(PredV pg, uint64_t base, uint64_t index, CpuContext* c) {
    return ldff1_reference<8, 4, true>(pg, base, index, c);
}

aarch64_decode_rc VecU8CLoadNF1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1b_zpri, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoadNF1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1b_h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoadNF1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1b_s_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadNF1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1b_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoadNF2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoadNF2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1h_s_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadNF2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1h_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoadNF4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1w_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadNF4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1w_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadNF8SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS16CLoadNF1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1sb_h_zpri, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecS32CLoadNF1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1sb_s_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoadNF1SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1sb_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS32CLoadNF2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1sh_s_zpri, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoadNF2SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1sh_d_zpri, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecS64CLoadNF4SIZ(cpu_state* s, unsigned w) { return zpri_handler<sve_ldnf1sw_d_zpri, ES_D, LOAD>(s, w); }

aarch64_decode_rc VecU8CLoadFF1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldff1b_scaled_zprr, ES_B, LOAD>(s, w); }
aarch64_decode_rc VecU16CLoadFF1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldff1b_h_scaled_zprr, ES_H, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoadFF1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldff1b_s_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadFF1LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldff1b_d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU32CLoadFF4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldff1w_scaled_zprr, ES_S, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadFF4LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldff1w_d_scaled_zprr, ES_D, LOAD>(s, w); }
aarch64_decode_rc VecU64CLoadFF8LSSZ(cpu_state* s, unsigned w) { return zprr_handler<sve_ldff1d_scaled_zprr, ES_D, LOAD>(s, w); }

aarch64_decode_rc VecU16CLoadFF2LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecU16CLoadFF2LSSZ>(s, w); }
aarch64_decode_rc VecU32CLoadFF2LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecU32CLoadFF2LSSZ>(s, w); }
aarch64_decode_rc VecU64CLoadFF2LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecU64CLoadFF2LSSZ>(s, w); }
aarch64_decode_rc VecS16CLoadFF1LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecS16CLoadFF1LSSZ>(s, w); }
aarch64_decode_rc VecS32CLoadFF1LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecS32CLoadFF1LSSZ>(s, w); }
aarch64_decode_rc VecS64CLoadFF1LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecS64CLoadFF1LSSZ>(s, w); }
aarch64_decode_rc VecS32CLoadFF2LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecS32CLoadFF2LSSZ>(s, w); }
aarch64_decode_rc VecS64CLoadFF2LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecS64CLoadFF2LSSZ>(s, w); }
aarch64_decode_rc VecS64CLoadFF4LSSZ(cpu_state* s, unsigned w) { return ldff1_reference_handler<VecS64CLoadFF4LSSZ>(s, w); }
