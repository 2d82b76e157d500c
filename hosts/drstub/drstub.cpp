// The stand-in host: registrations, threads, modules, heap, spill slots, the
// stolen register, and the instruction-list routines.
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "drstub.h"
#include "drstub_internal.h"

file_t our_stderr = 2;

namespace drstub {
namespace {

struct ModuleRange {
    uintptr_t start, end;
    std::string path;
};

struct HeapBlock {
    size_t size;
    void* drcontext;
};

struct Host {
    std::recursive_mutex mu;
    std::vector<std::string> calls;
    std::vector<LogLine> log;
    std::vector<std::string> errors;
    std::string client_name;
    int vl = 0;
    bool drreg_options_seen = false;
    drreg_options_t drreg_options{};
    bool app2app_priority_null = true;
    std::vector<void (*)(void*)> thread_init_cbs, thread_exit_cbs;
    std::vector<void (*)(void)> exit_cbs;
    std::vector<drmgr_xform_cb_t> app2app_cbs;
    int next_tls_field = 2;  // as if two other components took the first fields
    bool has_main = false;
    ModuleRange main_module;
    std::vector<ModuleRange> modules;
    reg_id_t stolen = DR_REG_X28;
    Faults faults;
    std::map<uintptr_t, HeapBlock> heap;
    std::set<module_data_t*> module_records;
    std::set<Thread*> threads;
    int next_thread_id = 1;
    int next_group = 1;
};

Host& host() {
    static Host* h = new Host;  // never destroyed: client exit code may run late
    return *h;
}

thread_local void* current_drcontext = nullptr;

void trace(const std::string& name) {
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().calls.push_back(name);
}

module_data_t* new_record(const ModuleRange& m) {
    auto* rec = new module_data_t();
    rec->start = reinterpret_cast<app_pc>(m.start);
    rec->end = reinterpret_cast<app_pc>(m.end);
    rec->full_path = strdup(m.path.c_str());
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().module_records.insert(rec);
    return rec;
}

int new_group() {
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    return host().next_group++;
}

// Inserts a host-made instruction: meta, with the routine's note.
void host_insert(instrlist_t* ilist, instr_t* where, instr_t* instr, const std::string& note, int group) {
    instr->origin = note;
    instr->group = group;
    instrlist_meta_preinsert(ilist, where, instr);
}

std::string hex(uint64_t v) {
    char buf[32];
    snprintf(buf, sizeof buf, "0x%llx", static_cast<unsigned long long>(v));
    return buf;
}

}  // namespace

Thread* as_thread(void* drcontext) { return static_cast<Thread*>(drcontext); }

bool known_memory(uintptr_t addr, size_t size) {
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    auto it = host().heap.upper_bound(addr);
    if (it != host().heap.begin()) {
        --it;
        if (addr >= it->first && addr + size <= it->first + it->second.size) return true;
    }
    for (Thread* t : host().threads) {
        uintptr_t b = reinterpret_cast<uintptr_t>(t->tls);
        if (addr >= b && addr + size <= b + sizeof(TlsBlock)) return true;
    }
    return false;
}

std::string reg_name(reg_id_t r) {
    if (r >= DR_REG_X0 && r <= DR_REG_X30) return "x" + std::to_string(r - DR_REG_X0);
    if (r >= DR_REG_W0 && r <= DR_REG_W30) return "w" + std::to_string(r - DR_REG_W0);
    if (r >= DR_REG_Q0 && r <= DR_REG_Q31) return "q" + std::to_string(r - DR_REG_Q0);
    switch (r) {
        case DR_REG_XZR: return "xzr";
        case DR_REG_WZR: return "wzr";
        case DR_REG_SP: return "sp";
        case DR_REG_WSP: return "wsp";
        case DR_REG_NZCV: return "nzcv";
        case DR_REG_FPCR: return "fpcr";
        case DR_REG_FPSR: return "fpsr";
        case DR_REG_NULL: return "null";
        default: return "reg" + std::to_string(r);
    }
}

void note_error(const std::string& what) {
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().errors.push_back(what);
}

// ---------------------------------------------------------------- test control

void reset() {
    Host& h = host();
    std::lock_guard<std::recursive_mutex> lock(h.mu);
    for (Thread* t : h.threads) {
        free(t->tls);
        delete t;
    }
    for (auto& b : h.heap) free(reinterpret_cast<void*>(b.first));
    for (module_data_t* m : h.module_records) {
        free(m->full_path);
        delete m;
    }
    h.calls.clear();
    h.log.clear();
    h.errors.clear();
    h.client_name.clear();
    h.vl = 0;
    h.drreg_options_seen = false;
    h.drreg_options = {};
    h.app2app_priority_null = true;
    h.thread_init_cbs.clear();
    h.thread_exit_cbs.clear();
    h.exit_cbs.clear();
    h.app2app_cbs.clear();
    h.next_tls_field = 2;
    h.has_main = false;
    h.modules.clear();
    h.stolen = DR_REG_X28;
    h.faults = Faults();
    h.heap.clear();
    h.module_records.clear();
    h.threads.clear();
    current_drcontext = nullptr;
}

void set_main_module(const void* start, const void* end, const char* full_path) {
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().has_main = true;
    host().main_module = {reinterpret_cast<uintptr_t>(start), reinterpret_cast<uintptr_t>(end), full_path};
}

void clear_main_module() {
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().has_main = false;
}

void add_module(const void* start, const void* end, const char* full_path) {
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().modules.push_back({reinterpret_cast<uintptr_t>(start), reinterpret_cast<uintptr_t>(end), full_path});
}

void set_stolen_reg(reg_id_t reg) { host().stolen = reg; }
Faults& faults() { return host().faults; }
const std::vector<std::string>& calls() { return host().calls; }
void clear_calls() { host().calls.clear(); }
const std::vector<LogLine>& log() { return host().log; }
const std::vector<std::string>& errors() { return host().errors; }
std::string client_name() { return host().client_name; }
int vector_length() { return host().vl; }

bool drreg_options_seen(drreg_options_t* out) {
    if (host().drreg_options_seen && out != nullptr) *out = host().drreg_options;
    return host().drreg_options_seen;
}

bool app2app_priority_was_null() { return host().app2app_priority_null; }
size_t app2app_callbacks() { return host().app2app_cbs.size(); }
size_t thread_init_callbacks() { return host().thread_init_cbs.size(); }
size_t thread_exit_callbacks() { return host().thread_exit_cbs.size(); }
size_t exit_callbacks() { return host().exit_cbs.size(); }
std::vector<std::pair<void*, size_t>> thread_heap_blocks() {
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    std::vector<std::pair<void*, size_t>> v;
    for (auto& b : host().heap) v.emplace_back(reinterpret_cast<void*>(b.first), b.second.size);
    return v;
}
size_t module_records() { return host().module_records.size(); }

void* thread_init() {
    auto* t = new Thread();
    t->fields.assign(64, nullptr);
    t->tls = static_cast<TlsBlock*>(aligned_alloc(16, (sizeof(TlsBlock) + 15) & ~size_t(15)));
    memset(t->tls, 0, sizeof(TlsBlock));
    std::vector<void (*)(void*)> cbs;
    {
        std::lock_guard<std::recursive_mutex> lock(host().mu);
        t->id = host().next_thread_id++;
        host().threads.insert(t);
        cbs = host().thread_init_cbs;
    }
    current_drcontext = t;
    for (auto cb : cbs) cb(t);
    return t;
}

void thread_exit(void* drcontext) {
    Thread* t = as_thread(drcontext);
    std::vector<void (*)(void*)> cbs;
    {
        std::lock_guard<std::recursive_mutex> lock(host().mu);
        cbs = host().thread_exit_cbs;
    }
    void* saved = current_drcontext;
    current_drcontext = t;
    for (auto cb : cbs) cb(t);
    current_drcontext = saved == t ? nullptr : saved;
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().threads.erase(t);
    free(t->tls);
    delete t;
}

void process_exit() {
    std::vector<void (*)(void)> cbs;
    {
        std::lock_guard<std::recursive_mutex> lock(host().mu);
        cbs = host().exit_cbs;
    }
    for (auto cb : cbs) cb();
}

void set_current(void* drcontext) { current_drcontext = drcontext; }

reg_t spill_slot(void* drcontext, int slot) { return as_thread(drcontext)->tls->slot[slot]; }
reg_t stolen_app_value(void* drcontext) { return as_thread(drcontext)->tls->stolen_app_value; }

instrlist_t* make_block(void* drcontext, const uint32_t* words, size_t n) {
    instrlist_t* bb = instrlist_create(drcontext);
    for (size_t k = 0; k < n; ++k) {
        auto* i = new _instr_t();
        i->opcode = OP_UNDECODED;
        i->raw = reinterpret_cast<byte*>(const_cast<uint32_t*>(words + k));
        i->translation = i->raw;
        instrlist_append(bb, i);
    }
    return bb;
}

dr_emit_flags_t run_app2app(void* drcontext, instrlist_t* bb, bool for_trace, bool translating) {
    std::vector<drmgr_xform_cb_t> cbs;
    {
        std::lock_guard<std::recursive_mutex> lock(host().mu);
        cbs = host().app2app_cbs;
    }
    void* tag = bb->first != nullptr ? static_cast<void*>(bb->first->translation) : nullptr;
    void* saved = current_drcontext;
    current_drcontext = drcontext;
    int flags = static_cast<int>(DR_EMIT_DEFAULT);
    for (auto cb : cbs) flags |= cb(drcontext, tag, bb, for_trace, translating);
    current_drcontext = saved;
    return static_cast<dr_emit_flags_t>(flags);
}

void destroy_block(void* drcontext, instrlist_t* bb) { instrlist_clear_and_destroy(drcontext, bb); }

namespace {
std::string mem_text(const opnd_t& m, opnd_size_t expect) {
    std::string s = "[" + reg_name(m.base) + ", #" + std::to_string(m.disp) + "]";
    if (m.index != DR_REG_NULL) s += "!index=" + reg_name(m.index);
    if (m.size != expect) s += "!size=" + std::to_string(m.size);
    return s;
}

opnd_size_t reg_size(reg_id_t r) {
    if (r >= DR_REG_W0 && r <= DR_REG_WSP) return OPSZ_4;
    if (r >= DR_REG_Q0 && r <= DR_REG_Q31) return OPSZ_16;
    return OPSZ_8;
}

opnd_size_t pair_size(reg_id_t r) { return reg_size(r) == OPSZ_4 ? OPSZ_8 : OPSZ_16; }

std::string operand_text(const opnd_t& o) {
    switch (o.kind) {
        case OPND_KIND_REG: return reg_name(o.reg);
        case OPND_KIND_IMMED: return "#" + std::to_string(static_cast<long long>(o.value));
        case OPND_KIND_BASE_DISP: return mem_text(o, o.size);
        default: return "?";
    }
}
}  // namespace

Item describe(instr_t* i) {
    if (!i->origin.empty()) return {i->origin, true, i->group};
    const auto& d = i->dsts;
    const auto& s = i->srcs;
    std::string t;
    switch (i->opcode) {
        case OP_str:
            if (d.size() == 1 && s.size() == 1) t = "str " + reg_name(s[0].reg) + ", " + mem_text(d[0], reg_size(s[0].reg));
            break;
        case OP_ldr:
            if (d.size() == 1 && s.size() == 1) t = "ldr " + reg_name(d[0].reg) + ", " + mem_text(s[0], reg_size(d[0].reg));
            break;
        case OP_stp:
            if (d.size() == 1 && s.size() == 2)
                t = "stp " + reg_name(s[0].reg) + ", " + reg_name(s[1].reg) + ", " + mem_text(d[0], pair_size(s[0].reg));
            break;
        case OP_ldp:
            if (d.size() == 2 && s.size() == 1)
                t = "ldp " + reg_name(d[0].reg) + ", " + reg_name(d[1].reg) + ", " + mem_text(s[0], pair_size(d[0].reg));
            break;
        case OP_mrs:
            if (d.size() == 1 && s.size() == 1) t = "mrs " + reg_name(d[0].reg) + ", " + reg_name(s[0].reg);
            break;
        case OP_msr:
            if (d.size() == 1 && s.size() == 1) t = "msr " + reg_name(d[0].reg) + ", " + reg_name(s[0].reg);
            break;
        case OP_add:
            if (d.size() == 1 && s.size() == 4 && s[1].kind == OPND_KIND_IMMED) {
                t = "add " + reg_name(d[0].reg) + ", " + operand_text(s[0]) + ", " + operand_text(s[1]);
                bool lsl = s[2].kind == OPND_KIND_IMMED && (s[2].flags & DR_OPND_IS_SHIFT) && s[2].value == DR_SHIFT_LSL;
                if (!lsl)
                    t += ", !shift";
                else if (s[3].value != 0)
                    t += ", lsl " + operand_text(s[3]);
            }
            break;
        case OP_UNDECODED:
            if (i->raw != nullptr) {
                uint32_t w;
                memcpy(&w, i->raw, 4);
                char buf[32];
                snprintf(buf, sizeof buf, ".word 0x%08x", w);
                t = buf;
            }
            break;
        default: break;
    }
    if (t.empty()) {
        t = "op" + std::to_string(i->opcode);
        for (const auto& o : d) t += " " + operand_text(o);
        t += " <-";
        for (const auto& o : s) t += " " + operand_text(o);
    }
    return {t, false, 0};
}

bool call_target(instr_t* i, void** callee, std::vector<uint64_t>* args) {
    if (i->opcode != OP_drstub_call) return false;
    if (callee != nullptr) *callee = reinterpret_cast<void*>(i->srcs[0].value);
    if (args != nullptr) {
        args->clear();
        for (size_t k = 1; k < i->srcs.size(); ++k) args->push_back(static_cast<uint64_t>(i->srcs[k].value));
    }
    return true;
}

}  // namespace drstub

using drstub::host;
using drstub::trace;

// ================================================================ operands

opnd_t opnd_create_reg(reg_id_t r) {
    opnd_t o{};
    o.kind = OPND_KIND_REG;
    o.reg = r;
    o.size = drstub::reg_size(r);
    return o;
}

opnd_t opnd_create_base_disp(reg_id_t base_reg, reg_id_t index_reg, int scale, int disp, opnd_size_t data_size) {
    opnd_t o{};
    o.kind = OPND_KIND_BASE_DISP;
    o.base = base_reg;
    o.index = index_reg;
    o.disp = disp;
    o.size = data_size;
    (void)scale;
    return o;
}

opnd_t opnd_create_immed_int(ptr_int_t i, opnd_size_t data_size) {
    opnd_t o{};
    o.kind = OPND_KIND_IMMED;
    o.value = i;
    o.size = data_size;
    return o;
}

opnd_t opnd_add_flags(opnd_t opnd, dr_opnd_flags_t flags) {
    opnd.flags |= flags;
    return opnd;
}

dr_opnd_flags_t opnd_get_flags(opnd_t opnd) { return static_cast<dr_opnd_flags_t>(opnd.flags); }
reg_id_t opnd_get_reg(opnd_t opnd) { return opnd.kind == OPND_KIND_REG ? opnd.reg : static_cast<reg_id_t>(DR_REG_NULL); }
opnd_size_t opnd_get_size(opnd_t opnd) { return opnd.size; }
bool opnd_is_reg(opnd_t opnd) { return opnd.kind == OPND_KIND_REG; }
bool opnd_is_immed_int(opnd_t opnd) { return opnd.kind == OPND_KIND_IMMED; }
bool opnd_is_base_disp(opnd_t opnd) { return opnd.kind == OPND_KIND_BASE_DISP; }
ptr_int_t opnd_get_immed_int(opnd_t opnd) { return opnd.value; }
reg_id_t opnd_get_base(opnd_t opnd) { return opnd.base; }
reg_id_t opnd_get_index(opnd_t opnd) { return opnd.index; }
int opnd_get_disp(opnd_t opnd) { return opnd.disp; }

// ============================================================ instructions

namespace {
instr_t* make(int opcode, std::initializer_list<opnd_t> dsts, std::initializer_list<opnd_t> srcs) {
    auto* i = new _instr_t();
    i->opcode = opcode;
    i->dsts = dsts;
    i->srcs = srcs;
    return i;
}
}  // namespace

instr_t* instr_create_0dst_0src(void*, int opcode) { return make(opcode, {}, {}); }
instr_t* instr_create_1dst_1src(void*, int opcode, opnd_t dst, opnd_t src) { return make(opcode, {dst}, {src}); }
instr_t* instr_create_1dst_2src(void*, int opcode, opnd_t dst, opnd_t src1, opnd_t src2) {
    return make(opcode, {dst}, {src1, src2});
}
instr_t* instr_create_1dst_3src(void*, int opcode, opnd_t dst, opnd_t src1, opnd_t src2, opnd_t src3) {
    return make(opcode, {dst}, {src1, src2, src3});
}
instr_t* instr_create_1dst_4src(void*, int opcode, opnd_t dst, opnd_t src1, opnd_t src2, opnd_t src3,
                                opnd_t src4) {
    return make(opcode, {dst}, {src1, src2, src3, src4});
}
instr_t* instr_create_2dst_1src(void*, int opcode, opnd_t dst1, opnd_t dst2, opnd_t src) {
    return make(opcode, {dst1, dst2}, {src});
}
void instr_destroy(void*, instr_t* instr) { delete instr; }

int instr_get_opcode(instr_t* i) { return i->opcode; }
int instr_num_srcs(instr_t* i) { return static_cast<int>(i->srcs.size()); }
int instr_num_dsts(instr_t* i) { return static_cast<int>(i->dsts.size()); }
opnd_t instr_get_src(instr_t* i, uint pos) { return i->srcs.at(pos); }
opnd_t instr_get_dst(instr_t* i, uint pos) { return i->dsts.at(pos); }
bool instr_is_meta(instr_t* i) { return i->meta; }
bool instr_is_app(instr_t* i) { return !i->meta; }
instr_t* instr_set_translation(instr_t* i, app_pc addr) {
    i->translation = addr;
    return i;
}
app_pc instr_get_translation(instr_t* i) { return i->translation; }
app_pc instr_get_app_pc(instr_t* i) { return i->translation; }
byte* instr_get_raw_bits(instr_t* i) { return i->raw; }
instr_t* instr_get_next(instr_t* i) { return i->next; }
instr_t* instr_get_prev(instr_t* i) { return i->prev; }
instr_t* instr_get_next_app(instr_t* i) {
    for (instr_t* n = i->next; n != nullptr; n = n->next)
        if (!n->meta) return n;
    return nullptr;
}

instrlist_t* instrlist_create(void*) { return new _instrlist_t(); }
void instrlist_clear_and_destroy(void*, instrlist_t* ilist) {
    for (instr_t* i = ilist->first; i != nullptr;) {
        instr_t* n = i->next;
        delete i;
        i = n;
    }
    delete ilist;
}
instr_t* instrlist_first(instrlist_t* ilist) { return ilist->first; }
instr_t* instrlist_first_app(instrlist_t* ilist) {
    for (instr_t* i = ilist->first; i != nullptr; i = i->next)
        if (!i->meta) return i;
    return nullptr;
}
instr_t* instrlist_last(instrlist_t* ilist) { return ilist->last; }

void instrlist_append(instrlist_t* ilist, instr_t* instr) {
    instr->prev = ilist->last;
    instr->next = nullptr;
    if (ilist->last != nullptr)
        ilist->last->next = instr;
    else
        ilist->first = instr;
    ilist->last = instr;
}

void instrlist_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr) {
    if (where == nullptr) {
        instrlist_append(ilist, instr);
        return;
    }
    instr->next = where;
    instr->prev = where->prev;
    if (where->prev != nullptr)
        where->prev->next = instr;
    else
        ilist->first = instr;
    where->prev = instr;
}

void instrlist_meta_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr) {
    instr->meta = true;
    instrlist_preinsert(ilist, where, instr);
}

void instrlist_remove(instrlist_t* ilist, instr_t* instr) {
    if (instr->prev != nullptr)
        instr->prev->next = instr->next;
    else
        ilist->first = instr->next;
    if (instr->next != nullptr)
        instr->next->prev = instr->prev;
    else
        ilist->last = instr->prev;
    instr->prev = instr->next = nullptr;
}

// Pointer constants as the host builds them: MOVZ of the low halfword, then a
// MOVK for each non-zero halfword above it.
void instrlist_insert_mov_immed_ptrsz(void*, ptr_int_t val, opnd_t dst, instrlist_t* ilist, instr_t* where,
                                      instr_t** first, instr_t** last) {
    int group = drstub::new_group();
    std::string note = "mov " + drstub::reg_name(dst.reg) + " = " + drstub::hex(static_cast<uint64_t>(val));
    uint64_t v = static_cast<uint64_t>(val);
    instr_t* f = make(OP_movz, {dst}, {opnd_create_immed_int(static_cast<ptr_int_t>(v & 0xffff), OPSZ_2),
                                       OPND_CREATE_LSL(), OPND_CREATE_INT(0)});
    drstub::host_insert(ilist, where, f, note, group);
    instr_t* l = nullptr;
    for (int shift = 16; shift < 64; shift += 16) {
        uint64_t half = (v >> shift) & 0xffff;
        if (half == 0) continue;
        l = make(OP_movk, {dst}, {dst, opnd_create_immed_int(static_cast<ptr_int_t>(half), OPSZ_2), OPND_CREATE_LSL(),
                                  OPND_CREATE_INT(shift)});
        drstub::host_insert(ilist, where, l, note, group);
    }
    if (first != nullptr) *first = f;
    if (last != nullptr) *last = l;
}

// ================================================== spill slots and calls

namespace {
opnd_t tls_slot(int offset) { return opnd_create_base_disp(DR_REG_X28, DR_REG_NULL, 0, offset, OPSZ_8); }
}  // namespace

// The stolen register holds the thread's TLS block while code runs; a spill
// slot is a word of it.
void dr_save_reg(void*, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot) {
    instr_t* i = make(OP_str, {tls_slot(static_cast<int>(sizeof(reg_t)) * slot)}, {opnd_create_reg(reg)});
    drstub::host_insert(ilist, where, i, "save " + drstub::reg_name(reg) + " slot " + std::to_string(slot),
                        drstub::new_group());
}

void dr_restore_reg(void*, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot) {
    instr_t* i = make(OP_ldr, {opnd_create_reg(reg)}, {tls_slot(static_cast<int>(sizeof(reg_t)) * slot)});
    drstub::host_insert(ilist, where, i, "restore " + drstub::reg_name(reg) + " slot " + std::to_string(slot),
                        drstub::new_group());
}

reg_t dr_read_saved_reg(void* drcontext, dr_spill_slot_t slot) {
    return drstub::as_thread(drcontext)->tls->slot[slot];
}

void dr_write_saved_reg(void* drcontext, dr_spill_slot_t slot, reg_t value) {
    drstub::as_thread(drcontext)->tls->slot[slot] = value;
}

reg_id_t dr_get_stolen_reg(void) { return host().stolen; }

bool dr_insert_get_stolen_reg_value(void*, instrlist_t* ilist, instr_t* instr, reg_id_t reg) {
    if (reg == DR_REG_X28) return false;
    instr_t* i = make(OP_ldr, {opnd_create_reg(reg)}, {tls_slot(drstub::kStolenValueOffset)});
    drstub::host_insert(ilist, instr, i, "get stolen into " + drstub::reg_name(reg), drstub::new_group());
    return true;
}

bool dr_insert_set_stolen_reg_value(void*, instrlist_t* ilist, instr_t* instr, reg_id_t reg) {
    if (reg == DR_REG_X28) return false;
    instr_t* i = make(OP_str, {tls_slot(drstub::kStolenValueOffset)}, {opnd_create_reg(reg)});
    drstub::host_insert(ilist, instr, i, "set stolen from " + drstub::reg_name(reg), drstub::new_group());
    return true;
}

namespace {
void insert_call(instrlist_t* ilist, instr_t* where, void* callee, uint num_args, va_list ap) {
    instr_t* i = make(OP_drstub_call, {}, {opnd_create_immed_int(reinterpret_cast<ptr_int_t>(callee), OPSZ_8)});
    for (uint k = 0; k < num_args; ++k) i->srcs.push_back(va_arg(ap, opnd_t));
    drstub::host_insert(ilist, where, i, "clean call", drstub::new_group());
}
}  // namespace

void dr_insert_clean_call(void*, instrlist_t* ilist, instr_t* where, void* callee, bool, uint num_args, ...) {
    va_list ap;
    va_start(ap, num_args);
    insert_call(ilist, where, callee, num_args, ap);
    va_end(ap);
}

void dr_insert_clean_call_ex(void*, instrlist_t* ilist, instr_t* where, void* callee, dr_cleancall_save_t,
                             uint num_args, ...) {
    va_list ap;
    va_start(ap, num_args);
    insert_call(ilist, where, callee, num_args, ap);
    va_end(ap);
}

// ==================================================== events and tools

bool dr_set_client_name(const char* name, const char* report_URL) {
    trace("dr_set_client_name");
    host().client_name = name;
    (void)report_URL;
    return true;
}

bool dr_set_vector_length(int vl) {
    trace("dr_set_vector_length");
    if (vl < 128 || vl > 2048 || vl % 128 != 0) return false;
    host().vl = vl;
    return true;
}

int dr_get_vector_length(void) { return host().vl; }

void dr_register_exit_event(void (*func)(void)) {
    trace("dr_register_exit_event");
    host().exit_cbs.push_back(func);
}

bool dr_unregister_exit_event(void (*func)(void)) {
    trace("dr_unregister_exit_event");
    auto& v = host().exit_cbs;
    auto it = std::find(v.begin(), v.end(), func);
    if (it == v.end()) return false;
    v.erase(it);
    return true;
}

module_data_t* dr_get_main_module(void) {
    trace("dr_get_main_module");
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    return host().has_main ? drstub::new_record(host().main_module) : nullptr;
}

module_data_t* dr_lookup_module(byte* pc) {
    trace("dr_lookup_module");
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    uintptr_t a = reinterpret_cast<uintptr_t>(pc);
    const auto& h = host();
    if (h.has_main && a >= h.main_module.start && a < h.main_module.end) return drstub::new_record(h.main_module);
    for (const auto& m : h.modules)
        if (a >= m.start && a < m.end) return drstub::new_record(m);
    return nullptr;
}

void dr_free_module_data(module_data_t* data) {
    trace("dr_free_module_data");
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    if (host().module_records.erase(data) == 0) {
        drstub::note_error("dr_free_module_data of a record the host did not give out");
        return;
    }
    free(data->full_path);
    delete data;
}

app_pc dr_fragment_app_pc(void* tag) { return static_cast<app_pc>(tag); }

void* dr_get_current_drcontext(void) { return drstub::current_drcontext; }

void* dr_thread_alloc(void* drcontext, size_t size) {
    trace("dr_thread_alloc");
    void* p = aligned_alloc(16, (size + 15) & ~size_t(15));
    memset(p, drstub::kHeapFill, size);
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().heap[reinterpret_cast<uintptr_t>(p)] = {size, drcontext};
    return p;
}

void dr_thread_free(void* drcontext, void* mem, size_t size) {
    trace("dr_thread_free");
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    auto it = host().heap.find(reinterpret_cast<uintptr_t>(mem));
    if (it == host().heap.end()) {
        drstub::note_error("dr_thread_free of memory the host did not give out");
        return;
    }
    if (it->second.size != size) drstub::note_error("dr_thread_free with a size other than the allocation's");
    if (it->second.drcontext != drcontext) drstub::note_error("dr_thread_free on another thread's heap");
    host().heap.erase(it);
    free(mem);
}

void dr_log(void* drcontext, uint mask, uint level, const char* fmt, ...) {
    trace("dr_log");
    char buf[1024];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(buf, sizeof buf, fmt, ap);
    va_end(ap);
    std::lock_guard<std::recursive_mutex> lock(host().mu);
    host().log.push_back({drcontext, mask, level, buf});
}

ssize_t dr_fprintf(file_t f, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    int n = vdprintf(f, fmt, ap);
    va_end(ap);
    return n;
}

void dr_abort(void) {
    fflush(stdout);
    fflush(stderr);
    _exit(drstub::kAbortExitCode);
}

// ================================================================= drmgr

bool drmgr_init(void) {
    trace("drmgr_init");
    return !host().faults.drmgr_init;
}

void drmgr_exit(void) { trace("drmgr_exit"); }

bool drmgr_register_thread_init_event(void (*func)(void*)) {
    trace("drmgr_register_thread_init_event");
    if (func == nullptr) return false;
    host().thread_init_cbs.push_back(func);
    return true;
}

bool drmgr_register_thread_exit_event(void (*func)(void*)) {
    trace("drmgr_register_thread_exit_event");
    if (func == nullptr) return false;
    host().thread_exit_cbs.push_back(func);
    return true;
}

bool drmgr_unregister_thread_init_event(void (*func)(void*)) {
    trace("drmgr_unregister_thread_init_event");
    auto& v = host().thread_init_cbs;
    auto it = std::find(v.begin(), v.end(), func);
    if (it == v.end()) return false;
    v.erase(it);
    return true;
}

bool drmgr_unregister_thread_exit_event(void (*func)(void*)) {
    trace("drmgr_unregister_thread_exit_event");
    auto& v = host().thread_exit_cbs;
    auto it = std::find(v.begin(), v.end(), func);
    if (it == v.end()) return false;
    v.erase(it);
    return true;
}

bool drmgr_register_bb_app2app_event(drmgr_xform_cb_t func, drmgr_priority_t* priority) {
    trace("drmgr_register_bb_app2app_event");
    if (func == nullptr || host().faults.register_bb_app2app) return false;
    host().app2app_cbs.push_back(func);
    host().app2app_priority_null = priority == nullptr;
    return true;
}

bool drmgr_unregister_bb_app2app_event(drmgr_xform_cb_t func) {
    trace("drmgr_unregister_bb_app2app_event");
    if (host().faults.unregister_bb_app2app) return false;
    auto& v = host().app2app_cbs;
    auto it = std::find(v.begin(), v.end(), func);
    if (it == v.end()) return false;
    v.erase(it);
    return true;
}

int drmgr_register_tls_field(void) {
    trace("drmgr_register_tls_field");
    return host().next_tls_field++;
}

bool drmgr_unregister_tls_field(int) {
    trace("drmgr_unregister_tls_field");
    return true;
}

void* drmgr_get_tls_field(void* drcontext, int idx) { return drstub::as_thread(drcontext)->fields.at(idx); }

bool drmgr_set_tls_field(void* drcontext, int idx, void* value) {
    trace("drmgr_set_tls_field");
    drstub::as_thread(drcontext)->fields.at(idx) = value;
    return true;
}

// ================================================================= drreg

drreg_status_t drreg_init(drreg_options_t* ops) {
    trace("drreg_init");
    if (ops != nullptr) {
        host().drreg_options_seen = true;
        host().drreg_options = *ops;
    }
    return host().faults.drreg_init ? DRREG_ERROR : DRREG_SUCCESS;
}

drreg_status_t drreg_exit(void) {
    trace("drreg_exit");
    return host().faults.drreg_exit ? DRREG_ERROR : DRREG_SUCCESS;
}
