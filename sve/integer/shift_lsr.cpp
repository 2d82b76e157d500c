// LSR by an immediate, halfword elements: the reference route's worked
// example, on the pseudocode's integers through the marshalling frame.
#include "sve/core/handler_util.h"
#include "sve/integer/arith.h"
#include "sve/integer/intlib.h"

extern "C" VecVal VecU16ShrVIX(VecVal zn, uint64_t shift, CpuContext* c) {
    VecVal r;
    for (unsigned e = 0, n = elements(c, 16); e < n; ++e)
        vset<uint16_t>(r, e, static_cast<uint16_t>(bits(ShiftRightInt(UInt(vget<uint16_t>(zn, e), 16), shift))));
    return r;
}

aarch64_decode_rc VecU16ShrVIX(cpu_state* s, unsigned w) {
    RefFrame f(s);
    f.put_z(f_zd(w), VecU16ShrVIX(f.zv(f_zn(w)), imm_shr_x(w, ES_H), f.c()));
    return static_cast<aarch64_decode_rc>(f.finish());
}
