// The executor: runs a rewritten block by interpreting its instructions on a
// simulated AArch64 register file, with memory accesses going to the real
// addresses (which must be memory the host handed out).
//
// Only the forms that block rewriting produces are known, and each is checked
// for what the processor's encoding allows (operand sizes, offset ranges and
// scaling, where SP and the zero register may stand), so that a sequence that
// would not encode is refused here rather than passing.
#include <cstring>

#include "drstub.h"
#include "drstub_internal.h"

namespace drstub {
namespace {

constexpr uint32_t kNop = 0xd503201f;
constexpr uint64_t kPoisonX = 0x5a5a5a5a00000000ull;
constexpr uint8_t kPoisonQ = 0xe7;

struct Regs {
    uint64_t x[31];
    uint64_t sp;
    uint64_t nzcv;
    uint64_t fpsr;
    uint64_t fpcr;
    uint8_t q[32][16];
};

enum class Kind { X, W, XZR, WZR, SP, WSP, Q, NZCV, FPCR, FPSR, Bad };

Kind kind_of(reg_id_t r) {
    if (r >= DR_REG_X0 && r <= DR_REG_X30) return Kind::X;
    if (r >= DR_REG_W0 && r <= DR_REG_W30) return Kind::W;
    if (r >= DR_REG_Q0 && r <= DR_REG_Q31) return Kind::Q;
    switch (r) {
        case DR_REG_XZR: return Kind::XZR;
        case DR_REG_WZR: return Kind::WZR;
        case DR_REG_SP: return Kind::SP;
        case DR_REG_WSP: return Kind::WSP;
        case DR_REG_NZCV: return Kind::NZCV;
        case DR_REG_FPCR: return Kind::FPCR;
        case DR_REG_FPSR: return Kind::FPSR;
        default: return Kind::Bad;
    }
}

// Bytes moved by a load or store of the register.
size_t access_size(reg_id_t r) {
    switch (kind_of(r)) {
        case Kind::X:
        case Kind::XZR: return 8;
        case Kind::W:
        case Kind::WZR: return 4;
        case Kind::Q: return 16;
        default: return 0;
    }
}

opnd_size_t size_code(size_t bytes) {
    switch (bytes) {
        case 4: return OPSZ_4;
        case 8: return OPSZ_8;
        case 16: return OPSZ_16;
        default: return OPSZ_NA;
    }
}

bool is_reg(const opnd_t& o) { return o.kind == OPND_KIND_REG; }
bool is_imm(const opnd_t& o) { return o.kind == OPND_KIND_IMMED; }
bool is_mem(const opnd_t& o) { return o.kind == OPND_KIND_BASE_DISP; }

bool names_x28(const opnd_t& o) {
    if (is_reg(o)) return o.reg == DR_REG_X28 || o.reg == DR_REG_W28;
    if (is_mem(o)) return o.base == DR_REG_X28 || o.index == DR_REG_X28;
    return false;
}

class Executor {
public:
    Executor(Thread* t, const CallHook& hook) : t_(t), hook_(hook) {}

    Run run(instrlist_t* bb, Machine& m) {
        for (int i = 0; i < 31; ++i) r_.x[i] = m.x[i];
        r_.x[28] = tls_base();
        t_->tls->stolen_app_value = m.x[28];
        r_.sp = m.sp;
        r_.nzcv = m.nzcv & 0xf0000000u;
        r_.fpsr = m.fpsr;
        r_.fpcr = m.fpcr;
        memcpy(r_.q, m.q, sizeof r_.q);

        Run res{true, "", 0, 0};
        for (instr_t* i = instrlist_first(bb); i != nullptr; i = instr_get_next(i)) {
            cur_ = i;
            if (!step(i)) {
                res.ok = false;
                break;
            }
            ++res.executed;
        }
        if (res.ok && r_.x[28] != tls_base()) {
            cur_ = nullptr;
            fail("the block left the stolen register changed");
            res.ok = false;
        }
        res.error = error_;
        res.calls = calls_;

        for (int i = 0; i < 31; ++i) m.x[i] = r_.x[i];
        m.x[28] = t_->tls->stolen_app_value;
        m.sp = r_.sp;
        m.nzcv = r_.nzcv;
        m.fpsr = static_cast<uint32_t>(r_.fpsr);
        m.fpcr = static_cast<uint32_t>(r_.fpcr);
        memcpy(m.q, r_.q, sizeof r_.q);
        return res;
    }

private:
    uint64_t tls_base() const { return reinterpret_cast<uint64_t>(t_->tls); }

    bool fail(const std::string& what) {
        if (error_.empty()) {
            error_ = what;
            if (cur_ != nullptr) error_ += " (at: " + describe(cur_).text + ")";
        }
        return false;
    }

    // A general register as a source. The zero register reads 0; SP only where
    // the encoding puts SP in that position.
    bool read_gpr(reg_id_t reg, bool sp_position, uint64_t* v) {
        switch (kind_of(reg)) {
            case Kind::X: *v = r_.x[reg - DR_REG_X0]; return true;
            case Kind::W: *v = r_.x[reg - DR_REG_W0] & 0xffffffffu; return true;
            case Kind::XZR:
            case Kind::WZR:
                if (sp_position) return fail("zero register where the encoding means SP");
                *v = 0;
                return true;
            case Kind::SP:
                if (!sp_position) return fail("SP where the encoding means the zero register");
                *v = r_.sp;
                return true;
            default: return fail("not a general register: " + reg_name(reg));
        }
    }

    bool write_gpr(reg_id_t reg, bool sp_position, uint64_t v) {
        switch (kind_of(reg)) {
            case Kind::X: r_.x[reg - DR_REG_X0] = v; return true;
            case Kind::W: r_.x[reg - DR_REG_W0] = v & 0xffffffffu; return true;
            case Kind::XZR:
            case Kind::WZR:
                if (sp_position) return fail("zero register where the encoding means SP");
                return true;
            case Kind::SP:
                if (!sp_position) return fail("SP where the encoding means the zero register");
                r_.sp = v;
                return true;
            default: return fail("not a general register: " + reg_name(reg));
        }
    }

    // Address of a base+offset operand, checked against the encoding of the
    // form: `scaled` offsets are multiples of `unit` in [lo, hi] units.
    bool address(const opnd_t& m, size_t bytes, size_t unit, long lo, long hi, uint64_t* addr) {
        if (!is_mem(m)) return fail("memory operand expected");
        if (m.index != DR_REG_NULL) return fail("indexed addressing is not a form used here");
        if (m.size != size_code(bytes)) return fail("memory operand size does not match the registers");
        if (m.disp % static_cast<long>(unit) != 0) return fail("offset is not a multiple of the access size");
        long scaled = m.disp / static_cast<long>(unit);
        if (scaled < lo || scaled > hi) return fail("offset out of the encoding's range");
        Kind k = kind_of(m.base);
        uint64_t base;
        if (k == Kind::X)
            base = r_.x[m.base - DR_REG_X0];
        else if (k == Kind::SP)
            base = r_.sp;
        else
            return fail("base register must be an X register or SP");
        *addr = base + static_cast<uint64_t>(static_cast<int64_t>(m.disp));
        if (!known_memory(*addr, bytes)) return fail("access outside memory the host handed out");
        return true;
    }

    bool store_reg(reg_id_t reg, uint64_t addr) {
        Kind k = kind_of(reg);
        if (k == Kind::Q) {
            memcpy(reinterpret_cast<void*>(addr), r_.q[reg - DR_REG_Q0], 16);
            return true;
        }
        uint64_t v;
        if (!read_gpr(reg, false, &v)) return false;
        memcpy(reinterpret_cast<void*>(addr), &v, access_size(reg));
        return true;
    }

    bool load_reg(reg_id_t reg, uint64_t addr) {
        Kind k = kind_of(reg);
        if (k == Kind::Q) {
            memcpy(r_.q[reg - DR_REG_Q0], reinterpret_cast<void*>(addr), 16);
            return true;
        }
        uint64_t v = 0;
        memcpy(&v, reinterpret_cast<void*>(addr), access_size(reg));
        return write_gpr(reg, false, v);
    }

    bool data_reg_ok(reg_id_t reg) {
        if (access_size(reg) == 0) return fail("register cannot be loaded or stored: " + reg_name(reg));
        return true;
    }

    bool step(instr_t* i) {
        const auto& d = i->dsts;
        const auto& s = i->srcs;
        if (!i->meta) {
            // The stand-in does not rewrite the client's instructions around
            // the stolen register, so none of them may name it.
            for (const auto& o : d)
                if (names_x28(o)) return fail("client instruction names the stolen register");
            for (const auto& o : s)
                if (names_x28(o)) return fail("client instruction names the stolen register");
        }
        switch (i->opcode) {
            case OP_LABEL:
            case OP_nop: return true;
            case OP_UNDECODED: {
                uint32_t w = 0;
                if (i->raw != nullptr) memcpy(&w, i->raw, 4);
                if (w == kNop) return true;
                char buf[80];
                snprintf(buf, sizeof buf, "application word 0x%08x cannot run here", w);
                return fail(buf);
            }
            case OP_str:
            case OP_ldr: {
                bool st = i->opcode == OP_str;
                if (d.size() != 1 || s.size() != 1) return fail("wrong operand count");
                const opnd_t& reg = st ? s[0] : d[0];
                const opnd_t& mem = st ? d[0] : s[0];
                if (!is_reg(reg) || !data_reg_ok(reg.reg)) return false;
                size_t n = access_size(reg.reg);
                uint64_t a;
                if (!address(mem, n, n, 0, 4095, &a)) return false;
                return st ? store_reg(reg.reg, a) : load_reg(reg.reg, a);
            }
            case OP_stp:
            case OP_ldp: {
                bool st = i->opcode == OP_stp;
                if (st ? (d.size() != 1 || s.size() != 2) : (d.size() != 2 || s.size() != 1))
                    return fail("wrong operand count");
                const opnd_t& r1 = st ? s[0] : d[0];
                const opnd_t& r2 = st ? s[1] : d[1];
                const opnd_t& mem = st ? d[0] : s[0];
                if (!is_reg(r1) || !is_reg(r2) || !data_reg_ok(r1.reg) || !data_reg_ok(r2.reg)) return false;
                size_t n = access_size(r1.reg);
                if (access_size(r2.reg) != n || (kind_of(r1.reg) == Kind::Q) != (kind_of(r2.reg) == Kind::Q))
                    return fail("pair of registers of different kinds");
                if (!st && r1.reg == r2.reg) return fail("load pair into one register twice");
                uint64_t a;
                if (!address(mem, 2 * n, n, -64, 63, &a)) return false;
                if (st) return store_reg(r1.reg, a) && store_reg(r2.reg, a + n);
                return load_reg(r1.reg, a) && load_reg(r2.reg, a + n);
            }
            case OP_mrs: {
                if (d.size() != 1 || s.size() != 1 || !is_reg(d[0]) || !is_reg(s[0])) return fail("bad mrs");
                uint64_t v;
                switch (kind_of(s[0].reg)) {
                    case Kind::NZCV: v = r_.nzcv; break;
                    case Kind::FPSR: v = r_.fpsr; break;
                    case Kind::FPCR: v = r_.fpcr; break;
                    default: return fail("mrs of an unknown system register");
                }
                if (kind_of(d[0].reg) != Kind::X) return fail("mrs needs an X register");
                return write_gpr(d[0].reg, false, v);
            }
            case OP_msr: {
                if (d.size() != 1 || s.size() != 1 || !is_reg(d[0]) || !is_reg(s[0])) return fail("bad msr");
                Kind src = kind_of(s[0].reg);
                if (src != Kind::X && src != Kind::XZR) return fail("msr needs an X register");
                uint64_t v;
                if (!read_gpr(s[0].reg, false, &v)) return false;
                switch (kind_of(d[0].reg)) {
                    case Kind::NZCV: r_.nzcv = v & 0xf0000000u; return true;
                    case Kind::FPSR:
                    case Kind::FPCR:
                        // Bits 63..32 are reserved as zero: a value with any of
                        // them set did not come from this register.
                        if (v >> 32) return fail("msr of a value with reserved upper bits set");
                        (kind_of(d[0].reg) == Kind::FPSR ? r_.fpsr : r_.fpcr) = v;
                        return true;
                    default: return fail("msr of an unknown system register");
                }
            }
            case OP_add: {
                // Immediate form: Rd|SP = Rn|SP + imm12, optionally shifted by 12.
                if (d.size() != 1 || s.size() != 4) return fail("wrong operand count");
                if (!is_reg(d[0]) || !is_reg(s[0]) || !is_imm(s[1])) return fail("only the immediate form of add is known");
                if (!is_imm(s[2]) || !(s[2].flags & DR_OPND_IS_SHIFT) || s[2].value != DR_SHIFT_LSL || !is_imm(s[3]))
                    return fail("add immediate needs an LSL shift operand");
                if (s[1].value < 0 || s[1].value > 4095) return fail("add immediate out of range");
                if (s[3].value != 0 && s[3].value != 12) return fail("add immediate shift must be 0 or 12");
                Kind kd = kind_of(d[0].reg), kn = kind_of(s[0].reg);
                if ((kd != Kind::X && kd != Kind::SP) || (kn != Kind::X && kn != Kind::SP))
                    return fail("add immediate takes X registers or SP");
                uint64_t v;
                if (!read_gpr(s[0].reg, true, &v)) return false;
                return write_gpr(d[0].reg, true, v + (static_cast<uint64_t>(s[1].value) << s[3].value));
            }
            case OP_movz:
            case OP_movk: {
                bool k = i->opcode == OP_movk;
                size_t base = k ? 1 : 0;
                if (d.size() != 1 || s.size() != base + 3) return fail("wrong operand count");
                if (kind_of(d[0].reg) != Kind::X) return fail("mov wide needs an X register");
                if (k && (!is_reg(s[0]) || s[0].reg != d[0].reg)) return fail("movk source must be its destination");
                const opnd_t &imm = s[base], &sh = s[base + 1], &amt = s[base + 2];
                if (!is_imm(imm) || imm.value < 0 || imm.value > 0xffff) return fail("mov wide immediate out of range");
                if (!is_imm(sh) || !(sh.flags & DR_OPND_IS_SHIFT) || sh.value != DR_SHIFT_LSL || !is_imm(amt) ||
                    amt.value % 16 != 0 || amt.value < 0 || amt.value > 48)
                    return fail("mov wide shift must be LSL 0, 16, 32 or 48");
                uint64_t old = r_.x[d[0].reg - DR_REG_X0];
                uint64_t field = static_cast<uint64_t>(imm.value) << amt.value;
                uint64_t mask = 0xffffull << amt.value;
                r_.x[d[0].reg - DR_REG_X0] = k ? ((old & ~mask) | field) : field;
                return true;
            }
            case OP_drstub_call: return call(i);
            default: return fail("instruction form unknown to the executor");
        }
    }

    bool call(instr_t* i) {
        if (i->srcs.empty() || !is_imm(i->srcs[0])) return fail("call without a constant target");
        std::vector<uint64_t> args;
        for (size_t k = 1; k < i->srcs.size(); ++k) {
            const opnd_t& a = i->srcs[k];
            if (!is_imm(a)) return fail("only constant call arguments are known");
            // A 32-bit constant is widened by sign, as the host's call sequence does.
            uint64_t v = a.size == OPSZ_4 ? static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(a.value)))
                                          : static_cast<uint64_t>(a.value);
            args.push_back(v);
        }
        if (args.size() > 6) return fail("more than six call arguments");
        if (hook_) hook_(args);
        args.resize(6, 0);
        using Fn = void (*)(uint64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t);
        Fn fn = reinterpret_cast<Fn>(i->srcs[0].value);
        void* saved = dr_get_current_drcontext();
        set_current(t_);
        fn(args[0], args[1], args[2], args[3], args[4], args[5]);
        set_current(saved);
        ++calls_;

        // Nothing survives the call but SP and the stolen register; the host's
        // call sequence uses spill slot index 0 for itself.
        for (int k = 0; k < 31; ++k)
            if (k != 28) r_.x[k] = kPoisonX | static_cast<uint64_t>(k);
        memset(r_.q, kPoisonQ, sizeof r_.q);
        r_.nzcv = 0x50000000u;
        r_.fpsr = 0x9f;
        r_.fpcr = 0x03c00000u;
        t_->tls->slot[SPILL_SLOT_1] = kPoisonX | 0xdead;
        return true;
    }

    Thread* t_;
    const CallHook& hook_;
    Regs r_{};
    instr_t* cur_ = nullptr;
    std::string error_;
    int calls_ = 0;
};

}  // namespace

Run execute(void* drcontext, instrlist_t* bb, Machine& m, const CallHook& hook) {
    Executor e(as_thread(drcontext), hook);
    return e.run(bb, m);
}

}  // namespace drstub
