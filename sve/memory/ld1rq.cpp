// LD1RQ: load one 16-byte segment under the predicate and replicate it over
// the whole vector. Reference operations only.
#include <cstring>

#include "sve/core/reference.h"
#include "sve/memory/mem_kernels.h"
#include "sve/memory/memory.h"

namespace {

uint64_t read_lib(unsigned m, uint64_t address, CpuContext* context) {
    switch (m) {
        case 1: return ReadMemLib1(address, 0, nullptr, context);
        case 2: return ReadMemLib2(address, 0, nullptr, context);
        case 4: return ReadMemLib4(address, 0, nullptr, context);
        default: return ReadMemLib8(address, 0, nullptr, context);
    }
}

// Only the predicate of the first segment is looked at: its bits decide which
// elements are read, and every copy of the segment is the same, so an element
// active in the first segment is loaded in all of them and an inactive one is
// zero in all of them, whatever the predicate says further up.
template <unsigned m>
VecVal ld1rq(const PredV& pg, uint64_t address, CpuContext* context) {
    uint8_t segment[16];
    for (unsigned e = 0; e < 16 / m; ++e) {
        uint64_t x = pg.w[0] >> (e * m) & 1 ? read_lib(m, address + uint64_t(e) * m, context) : 0;
        std::memcpy(segment + e * m, &x, m);
    }
    VecVal result;
    for (unsigned k = 0; k < (context->vl & 0x3ffffff) / 2; ++k) std::memcpy(result.b + 16 * k, segment, 16);
    return result;
}

// The immediate counts 16-byte segments whatever the element size; the
// register index counts elements.
template <unsigned m>
VecVal ld1rq_imm(PredV pg, uint64_t base, int64_t imm, CpuContext* c) {
    return ld1rq<m>(pg, base + static_cast<uint64_t>(imm * 16), c);
}
template <unsigned m>
VecVal ld1rq_index(PredV pg, uint64_t base, int64_t index, CpuContext* c) {
    return ld1rq<m>(pg, base + static_cast<uint64_t>(index) * m, c);
}

// Zt 4..0, Pg 12..10, Xn 9..5 (31 is SP); the signed 4-bit immediate at
// 19..16, or Xm at 20..16 (31 reads 0).
template <VecVal (*op)(PredV, uint64_t, int64_t, CpuContext*)>
aarch64_decode_rc imm_handler(cpu_state* s, unsigned w) {
    RefFrame f(s);
    f.put_z(f_zd(w), op(f.pred(f_pg3(w)), f.xsp(f_zn(w)), sbits_of(w, 19, 16), f.c()));
    return static_cast<aarch64_decode_rc>(f.finish());
}
template <VecVal (*op)(PredV, uint64_t, int64_t, CpuContext*)>
aarch64_decode_rc index_handler(cpu_state* s, unsigned w) {
    RefFrame f(s);
    f.put_z(f_zd(w), op(f.pred(f_pg3(w)), f.xsp(f_zn(w)), static_cast<int64_t>(f.xr(f_zm(w))), f.c()));
    return static_cast<aarch64_decode_rc>(f.finish());
}

}  // namespace

#define LD1RQ_PARAMS PredV pg, uint64_t base, int64_t offset, CpuContext* c
extern "C" VecVal VecU8LoadDup1QSIZ(LD1RQ_PARAMS) { return ld1rq_imm<1>(pg, base, offset, c); }
extern "C" VecVal VecU16LoadDup2QSIZ(LD1RQ_PARAMS) { return ld1rq_imm<2>(pg, base, offset, c); }
extern "C" VecVal VecU32LoadDup4QSIZ(LD1RQ_PARAMS) { return ld1rq_imm<4>(pg, base, offset, c); }
extern "C" VecVal VecU64LoadDup8QSIZ(LD1RQ_PARAMS) { return ld1rq_imm<8>(pg, base, offset, c); }
extern "C" VecVal VecU8LoadDup1QSSZ(LD1RQ_PARAMS) { return ld1rq_index<1>(pg, base, offset, c); }
extern "C" VecVal VecU16LoadDup2QSSZ(LD1RQ_PARAMS) { return ld1rq_index<2>(pg, base, offset, c); }
extern "C" VecVal VecU32LoadDup4QSSZ(LD1RQ_PARAMS) { return ld1rq_index<4>(pg, base, offset, c); }
extern "C" VecVal VecU64LoadDup8QSSZ(LD1RQ_PARAMS) { return ld1rq_index<8>(pg, base, offset, c); }

aarch64_decode_rc VecU8LoadDup1QSIZ(cpu_state* s, unsigned w) { return imm_handler<VecU8LoadDup1QSIZ>(s, w); }
aarch64_decode_rc VecU16LoadDup2QSIZ(cpu_state* s, unsigned w) { return imm_handler<VecU16LoadDup2QSIZ>(s, w); }
aarch64_decode_rc VecU32LoadDup4QSIZ(cpu_state* s, unsigned w) { return imm_handler<VecU32LoadDup4QSIZ>(s, w); }
aarch64_decode_rc VecU64LoadDup8QSIZ(cpu_state* s, unsigned w) { return imm_handler<VecU64LoadDup8QSIZ>(s, w); }
aarch64_decode_rc VecU8LoadDup1QSSZ(cpu_state* s, unsigned w) { return index_handler<VecU8LoadDup1QSSZ>(s, w); }
aarch64_decode_rc VecU16LoadDup2QSSZ(cpu_state* s, unsigned w) { return index_handler<VecU16LoadDup2QSSZ>(s, w); }
aarch64_decode_rc VecU32LoadDup4QSSZ(cpu_state* s, unsigned w) { return index_handler<VecU32LoadDup4QSSZ>(s, w); }
aarch64_decode_rc VecU64LoadDup8QSSZ(cpu_state* s, unsigned w) { return index_handler<VecU64LoadDup8QSSZ>(s, w); }
