// Test control of the stand-in host. Tests include this; the client never
// does.
//
// The stand-in plays the host's part around one client library: it keeps the
// client's registrations, plays threads, blocks and process exit to it, keeps
// a main module and other modules, a per-thread heap, the per-thread spill
// slots and the application's value of the stolen register. Its executor runs
// a rewritten block on a simulated AArch64 register file, by interpreting the
// instructions that the client and the host routines put into it, so that a
// test sees what the rewritten code does.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "dr_api.h"
#include "drmgr.h"
#include "drreg.h"

namespace drstub {

// Exit status of a process that called dr_abort.
constexpr int kAbortExitCode = 86;

// Byte that fills fresh thread-heap memory, as a heap that is not cleared would.
constexpr uint8_t kHeapFill = 0xa5;

// Forget every registration, module, thread, log and injected failure; the
// stolen register goes back to X28.
void reset();

// Modules. Addresses are half-open ranges [start, end).
void set_main_module(const void* start, const void* end, const char* full_path);
void clear_main_module();
void add_module(const void* start, const void* end, const char* full_path);

void set_stolen_reg(reg_id_t reg);

// Failures to inject into the host's answers.
struct Faults {
    bool drmgr_init = false;
    bool drreg_init = false;
    bool register_bb_app2app = false;
    bool unregister_bb_app2app = false;
    bool drreg_exit = false;
};
Faults& faults();

// The host operations the client called, by name, in order (instruction and
// operand building, and block-list operations, are not recorded).
const std::vector<std::string>& calls();
void clear_calls();

struct LogLine {
    void* drcontext;
    uint mask;
    uint level;
    std::string text;
};
const std::vector<LogLine>& log();

// Misuses of the host interface that the stand-in noticed (a double free, a
// free with the wrong size, a record freed that the host never gave out...).
const std::vector<std::string>& errors();

std::string client_name();
int vector_length();                   // 0 until dr_set_vector_length
bool drreg_options_seen(drreg_options_t* out);
bool app2app_priority_was_null();
size_t app2app_callbacks();
size_t thread_init_callbacks();
size_t thread_exit_callbacks();
size_t exit_callbacks();

// Outstanding resources, to check that the client gives back what it takes:
// the thread-heap blocks (address, size) and the module records not yet freed.
std::vector<std::pair<void*, size_t>> thread_heap_blocks();
size_t module_records();

// Threads. thread_init makes a new drcontext current on the calling thread and
// plays the registered thread-init events to it; thread_exit plays the
// thread-exit events and ends the drcontext. process_exit plays the exit
// events.
void* thread_init();
void thread_exit(void* drcontext);
void process_exit();
void set_current(void* drcontext);

// The spill slots and the application value of the stolen register of a
// thread, as the executor and dr_read_saved_reg see them.
reg_t spill_slot(void* drcontext, int slot);
reg_t stolen_app_value(void* drcontext);

// Blocks. make_block gives a list of application instructions, one for each
// word, at the words' own addresses. run_app2app plays the registered
// app2app events on it with the block's first address as the tag.
instrlist_t* make_block(void* drcontext, const uint32_t* words, size_t n);
dr_emit_flags_t run_app2app(void* drcontext, instrlist_t* bb, bool for_trace = false, bool translating = false);
void destroy_block(void* drcontext, instrlist_t* bb);

// What a test reads of an instruction: for an instruction that a host routine
// made, the routine's note ("save x26 slot 1", "get stolen into x27",
// "mov x27 = 0x...", "clean call"...), shared by every instruction that one
// call made; for one the client built, its assembler text. `group` tells
// instructions of different host calls apart.
struct Item {
    std::string text;
    bool by_host;
    int group;
};
Item describe(instr_t* instr);

// The callee and constant arguments of a call instruction made by a clean-call
// routine; false for any other instruction.
bool call_target(instr_t* instr, void** callee, std::vector<uint64_t>* args);

// The application's view of the registers.
struct Machine {
    uint64_t x[31];  // X0..X30; x[28] is the application's value of X28
    uint64_t sp;
    uint64_t nzcv;
    uint32_t fpsr;
    uint32_t fpcr;
    uint8_t q[32][16];
};

// Called at each call instruction before the callee runs, with the arguments
// it is about to receive; a test may change them.
using CallHook = std::function<void(std::vector<uint64_t>& args)>;

struct Run {
    bool ok;
    std::string error;  // what stopped the run, with the offending instruction
    int executed;       // instructions executed
    int calls;          // calls made
};

// Runs the block on `drcontext` (current for the run, and owner of the spill
// slots and the stolen register) starting from `m`, and leaves the final
// registers in `m`. Only NOP may remain of the application's own words: any
// other word stops the run, as an SVE word would fault on a processor without
// SVE. A call preserves no register: when the callee returns, the general,
// SIMD and flags registers hold garbage, and the spill slot SPILL_SLOT_1
// (index 0), which the host's call sequence uses for itself, is overwritten.
Run execute(void* drcontext, instrlist_t* bb, Machine& m, const CallHook& hook = nullptr);

}  // namespace drstub
