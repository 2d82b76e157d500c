#include "sve/core/reference.h"

#include "sve/memory/memory.h"

CpuContext cpu_ctxt;
CpuContext* ctxt;

// The vl of 2 (128 bits) is what the load-time context has always held;
// every reference call builds its own context with the real length.
void sve_reference_context_init() {
    cpu_ctxt.vl = 2;
    ctxt = &cpu_ctxt;
}

#include "sve/core/cpu_state.h"

PredV pack_pred(const uint8_t* bytes) {
    PredV p{};
    for (unsigned i = 0; i < 64; ++i) p.w[0] |= uint64_t(bytes[i] & 1) << i;
    return p;
}

void unpack_pred(uint8_t* bytes, const PredV& p) {
    for (unsigned i = 0; i < 64; ++i) bytes[i] = p.w[0] >> i & 1;
}

RefFrame::RefFrame(cpu_state* s) : s_(s) {
    ctx.nzcv = static_cast<uint32_t>(s->nzcv);
    ctx.fpsr = s->fpsr;
    ctx.fpcr = s->fpcr | s->fpcr_extra;
    ctx.vl = 8;
    ctx.ffr = pack_pred(s->ffr);
}

PredV RefFrame::pred(unsigned n) const { return pack_pred(s_->p[n]); }

VecVal RefFrame::zv(unsigned n) const {
    VecVal v;
    std::memcpy(v.b, s_->z[n], 64);
    return v;
}

uint64_t RefFrame::xr(unsigned n) const { return n == 31 ? 0 : s_->x[n]; }
uint64_t RefFrame::xsp(unsigned n) const { return s_->x[n]; }

void RefFrame::put_z(unsigned d, const VecVal& v) { std::memcpy(s_->z[d], v.b, 64); }
void RefFrame::put_p(unsigned d, const PredV& p) { unpack_pred(s_->p[d], p); }
void RefFrame::put_x(unsigned d, uint64_t v) {
    if (d != 31) s_->x[d] = v;
}
void RefFrame::put_v(unsigned d, uint64_t v, unsigned bytes) {
    std::memset(s_->z[d], 0, 64);
    std::memcpy(s_->z[d], &v, bytes);
}

unsigned RefFrame::finish() {
    s_->nzcv = ctx.nzcv;  // zero-extended: bits 63..32 are cleared
    s_->fpsr = ctx.fpsr;
    s_->fpcr = ctx.fpcr;
    unpack_pred(s_->ffr, ctx.ffr);
    return 0;
}
