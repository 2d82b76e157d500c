// Shared between the stand-in's host routines and its executor.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dr_api.h"

// The call instruction that the clean-call routines insert: srcs[0] is the
// callee, the others the arguments. Not an opcode of the client's interface.
constexpr int OP_drstub_call = OP_AFTER_LAST + 1;

// Operand kinds of opnd_t::kind.
enum : byte { OPND_KIND_NULL = 0, OPND_KIND_REG, OPND_KIND_IMMED, OPND_KIND_BASE_DISP };

struct _instr_t {
    int opcode = OP_INVALID;
    std::vector<opnd_t> dsts;
    std::vector<opnd_t> srcs;
    bool meta = false;
    app_pc translation = nullptr;
    byte* raw = nullptr;  // bits of an application instruction, in the application's memory
    _instr_t* prev = nullptr;
    _instr_t* next = nullptr;
    std::string origin;  // note of the host routine that made it; empty for the client's own
    int group = 0;
};

struct _instrlist_t {
    _instr_t* first = nullptr;
    _instr_t* last = nullptr;
};

namespace drstub {

// Per-thread storage that the stolen register points at while code runs: the
// spill slots, then the application's value of the stolen register.
struct TlsBlock {
    reg_t slot[SPILL_SLOT_MAX + 1];
    reg_t stolen_app_value;
};
constexpr int kStolenValueOffset = static_cast<int>(sizeof(reg_t)) * (SPILL_SLOT_MAX + 1);

struct Thread {
    int id;
    std::vector<void*> fields;  // drmgr TLS fields
    TlsBlock* tls;
};

Thread* as_thread(void* drcontext);
// Whether [addr, addr+size) lies inside memory that the host handed out to a
// thread (heap or TLS block).
bool known_memory(uintptr_t addr, size_t size);
std::string reg_name(reg_id_t reg);
void note_error(const std::string& what);

}  // namespace drstub
