// The host client: start-up and shutdown, block rewriting, and the call that
// emulates one SVE instruction.
//
// Every SVE instruction of the main executable is replaced, when its block is
// built, by a sequence that stores the real registers into the thread's
// cpu_state, calls emulate_instruction with the handler that the decoder found
// at that moment, and loads the registers back. The processor never sees an
// SVE instruction; the SVE-only state (upper Z bytes, P, FFR) lives only in
// cpu_state.
//
// Only the host's published interface is used here, so the file builds
// unchanged against the real host or against the stand-in of hosts/drstub.
#include <libgen.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "dr_api.h"
#include "drmgr.h"
#include "drreg.h"
#include "droption.h"
#include "sve/core/decode.h"

namespace {

// The line numbers in assertion messages are part of the text a user sees and
// of what scripts match, so they are fixed rather than taken from __LINE__.
constexpr int kLineInit = 131;
constexpr int kLineRegister = 148;
constexpr int kLineThreadExit = 178;
constexpr int kLineExit = 204;
constexpr int kLineStolenReg = 270;

int tls_idx;
module_data_t* exe;
app_pc exe_start;
// Non-SVE instructions seen when blocks are built (not executions); a plain
// counter, so concurrent block builders may lose increments.
uint64_t aarch64_instr_count;

void assert_failure(int line, const char* condition) {
    dr_fprintf(STDERR, "ASSERT FAILURE: %s:%d: %s (%s)\n", __FILE__, line, condition, "");
    dr_abort();
}

// cpu_state fields, addressed from X27 by the inserted loads and stores.
constexpr int off_x(int n) { return static_cast<int>(offsetof(cpu_state, x) + 8 * n); }
constexpr int off_z(int n) { return static_cast<int>(offsetof(cpu_state, z) + 64 * n); }
constexpr int kOffNzcv = static_cast<int>(offsetof(cpu_state, nzcv));
constexpr int kOffFpsr = static_cast<int>(offsetof(cpu_state, fpsr));
constexpr int kOffFpcr = static_cast<int>(offsetof(cpu_state, fpcr));

// Spill slots of the application's X26, X27 and X28 while the sequence runs;
// emulate_instruction reads and writes them by the same numbers. Index 0 is
// left alone: the host's clean call uses it for itself.
const dr_spill_slot_t kSlotX26 = static_cast<dr_spill_slot_t>(1);
const dr_spill_slot_t kSlotX27 = static_cast<dr_spill_slot_t>(2);
const dr_spill_slot_t kSlotX28 = static_cast<dr_spill_slot_t>(3);

// Called from the inserted sequence, on the application's thread, with the
// registers already in that thread's cpu_state.
void emulate_instruction(unsigned word, unsigned char* pc, aarch64_decode_rc (*handler)(cpu_state*, unsigned)) {
    void* drcontext = dr_get_current_drcontext();
    cpu_state* state = static_cast<cpu_state*>(drmgr_get_tls_field(drcontext, tls_idx));
    state->pc = reinterpret_cast<uint32_t*>(pc);
    state->x[26] = dr_read_saved_reg(drcontext, kSlotX26);
    state->x[27] = dr_read_saved_reg(drcontext, kSlotX27);
    state->x[28] = dr_read_saved_reg(drcontext, kSlotX28);
    aarch64_decode_rc rc = handler(state, word);
    if (rc != DECODE_OK) {
        // The word is read again so that the message shows what memory holds now.
        fprintf(stderr, "Error: failed to emulate SVE instruction 0x%08x at PC %p\n",
                *reinterpret_cast<unsigned*>(pc), static_cast<void*>(pc));
    } else {
        update_sve_stats(reinterpret_cast<unsigned*>(pc), word);
    }
    dr_write_saved_reg(drcontext, kSlotX26, state->x[26]);
    dr_write_saved_reg(drcontext, kSlotX27, state->x[27]);
    dr_write_saved_reg(drcontext, kSlotX28, state->x[28]);
}

// The host's published interface has no routine that inserts a call carrying
// an application translation, so it is built here from the clean call: the
// call gets the constant arguments, keeps the spill slots that the sequence
// wrote before it readable and writable through dr_read_saved_reg and
// dr_write_saved_reg, and every instruction it inserts maps back to
// `translation`.
void dr_insert_call_tarn(void* drcontext, instrlist_t* bb, instr_t* where, app_pc translation, void* callee,
                         unsigned argument_count, opnd_t a0, opnd_t a1, opnd_t a2) {
    instr_t* before = instr_get_prev(where);
    const dr_cleancall_save_t save = static_cast<dr_cleancall_save_t>(0);
    switch (argument_count) {
        case 0: dr_insert_clean_call_ex(drcontext, bb, where, callee, save, 0); break;
        case 1: dr_insert_clean_call_ex(drcontext, bb, where, callee, save, 1, a0); break;
        case 2: dr_insert_clean_call_ex(drcontext, bb, where, callee, save, 2, a0, a1); break;
        default: dr_insert_clean_call_ex(drcontext, bb, where, callee, save, 3, a0, a1, a2); break;
    }
    for (instr_t* i = before == nullptr ? instrlist_first(bb) : instr_get_next(before); i != where;
         i = instr_get_next(i))
        instr_set_translation(i, translation);
}

// A hand-built instruction of the sequence: it maps back to the application's
// instruction, so that a fault or a state translation inside the sequence
// lands on the SVE instruction being emulated.
void insert(instrlist_t* bb, instr_t* where, app_pc pc, instr_t* i) {
    instr_set_translation(i, pc);
    instrlist_preinsert(bb, where, i);
}

opnd_t reg(reg_id_t r) { return opnd_create_reg(r); }

// A field of cpu_state as seen from X27, the size of the register moved.
opnd_t field(int offset, opnd_t moved) {
    return opnd_create_base_disp(DR_REG_X27, DR_REG_NULL, 0, offset, opnd_get_size(moved));
}

// Two X registers at once.
opnd_t field_pair(int offset) { return opnd_create_base_disp(DR_REG_X27, DR_REG_NULL, 0, offset, OPSZ_16); }

// ADD Xd|SP, Xn|SP, #0: the only way to move SP to or from a general register.
instr_t* add_zero(void* drcontext, reg_id_t dst, reg_id_t src) {
    return instr_create_1dst_4src(drcontext, OP_add, reg(dst), reg(src), opnd_create_immed_int(0, OPSZ_PTR),
                                  opnd_add_flags(opnd_create_immed_int(DR_SHIFT_LSL, OPSZ_PTR), DR_OPND_IS_SHIFT),
                                  opnd_create_immed_int(0, OPSZ_PTR));
}

reg_id_t xreg(int n) { return static_cast<reg_id_t>(DR_REG_X0 + n); }
reg_id_t qreg(int n) { return static_cast<reg_id_t>(DR_REG_Q0 + n); }

// Replaces one SVE instruction by the save, call and restore sequence. X26
// and X27 are the scratch registers, X27 holding the cpu_state pointer; X28
// is the host's, so its application value goes through the host's routines.
void rewrite(void* drcontext, instrlist_t* bb, instr_t* instr, sve_handler handler) {
    app_pc pc = instr_get_app_pc(instr);
    unsigned insn = *reinterpret_cast<unsigned*>(pc);
    if (dr_get_stolen_reg() != DR_REG_X28) assert_failure(kLineStolenReg, "dr_get_stolen_reg() == DR_REG_X28");

    // 1-5: free X26 and X27, keep the application's X26, X27, X28 in the
    // slots, and point X27 at this thread's cpu_state.
    dr_save_reg(drcontext, bb, instr, DR_REG_X26, kSlotX26);
    dr_save_reg(drcontext, bb, instr, DR_REG_X27, kSlotX27);
    dr_insert_get_stolen_reg_value(drcontext, bb, instr, DR_REG_X27);
    dr_save_reg(drcontext, bb, instr, DR_REG_X27, kSlotX28);
    // The pointer of the building thread is baked in: the host must run with
    // code caches private to each thread.
    ptr_int_t state = reinterpret_cast<ptr_int_t>(drmgr_get_tls_field(drcontext, tls_idx));
    instr_t *first, *last;
    instrlist_insert_mov_immed_ptrsz(drcontext, state, reg(DR_REG_X27), bb, instr, &first, &last);

    // 6-13: SP, X0-X25, X29-X30, Q0-Q31, NZCV, FPSR, FPCR into cpu_state.
    insert(bb, instr, pc, add_zero(drcontext, DR_REG_X26, DR_REG_XSP));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_str, field(off_x(31), reg(DR_REG_X26)), reg(DR_REG_X26)));
    for (int n = 0; n < 26; n += 2)
        insert(bb, instr, pc,
               instr_create_1dst_2src(drcontext, OP_stp, field_pair(off_x(n)), reg(xreg(n)), reg(xreg(n + 1))));
    insert(bb, instr, pc,
           instr_create_1dst_2src(drcontext, OP_stp, field_pair(off_x(29)), reg(DR_REG_X29), reg(DR_REG_X30)));
    for (int n = 0; n < 32; ++n)
        insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_str, field(off_z(n), reg(qreg(n))), reg(qreg(n))));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_mrs, reg(DR_REG_X26), reg(DR_REG_NZCV)));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_str, field(kOffNzcv, reg(DR_REG_X26)), reg(DR_REG_X26)));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_mrs, reg(DR_REG_X26), reg(DR_REG_FPSR)));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_str, field(kOffFpsr, reg(DR_REG_W26)), reg(DR_REG_W26)));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_mrs, reg(DR_REG_X26), reg(DR_REG_FPCR)));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_str, field(kOffFpcr, reg(DR_REG_W26)), reg(DR_REG_W26)));

    // 14: the call, with the word, its address and its handler as constants.
    dr_insert_call_tarn(drcontext, bb, instr, pc, reinterpret_cast<void*>(emulate_instruction), 3,
                        opnd_create_immed_int(static_cast<ptr_int_t>(insn), OPSZ_4),
                        opnd_create_immed_int(reinterpret_cast<ptr_int_t>(pc), OPSZ_8),
                        opnd_create_immed_int(reinterpret_cast<ptr_int_t>(handler), OPSZ_8));

    // 15-23: the call kept nothing, so X27 first, then everything back.
    instrlist_insert_mov_immed_ptrsz(drcontext, state, reg(DR_REG_X27), bb, instr, &first, &last);
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_ldr, reg(DR_REG_W26), field(kOffFpcr, reg(DR_REG_W26))));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_msr, reg(DR_REG_FPCR), reg(DR_REG_X26)));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_ldr, reg(DR_REG_W26), field(kOffFpsr, reg(DR_REG_W26))));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_msr, reg(DR_REG_FPSR), reg(DR_REG_X26)));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_ldr, reg(DR_REG_X26), field(kOffNzcv, reg(DR_REG_X26))));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_msr, reg(DR_REG_NZCV), reg(DR_REG_X26)));
    for (int n = 0; n < 32; ++n)
        insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_ldr, reg(qreg(n)), field(off_z(n), reg(qreg(n)))));
    for (int n = 0; n < 26; n += 2)
        insert(bb, instr, pc,
               instr_create_2dst_1src(drcontext, OP_ldp, reg(xreg(n)), reg(xreg(n + 1)), field_pair(off_x(n))));
    insert(bb, instr, pc,
           instr_create_2dst_1src(drcontext, OP_ldp, reg(DR_REG_X29), reg(DR_REG_X30), field_pair(off_x(29))));
    insert(bb, instr, pc, instr_create_1dst_1src(drcontext, OP_ldr, reg(DR_REG_X26), field(off_x(31), reg(DR_REG_X26))));
    insert(bb, instr, pc, add_zero(drcontext, DR_REG_XSP, DR_REG_X26));

    // 24-27: X26, X27, X28 from the slots, where emulate_instruction left the
    // values the emulated instruction gave them.
    dr_restore_reg(drcontext, bb, instr, DR_REG_X27, kSlotX28);
    dr_insert_set_stolen_reg_value(drcontext, bb, instr, DR_REG_X27);
    dr_restore_reg(drcontext, bb, instr, DR_REG_X27, kSlotX27);
    dr_restore_reg(drcontext, bb, instr, DR_REG_X26, kSlotX26);

    instrlist_remove(bb, instr);
    instr_destroy(drcontext, instr);
}

dr_emit_flags_t event_instruction_change(void* drcontext, void* tag, instrlist_t* bb, bool for_trace,
                                         bool translating) {
    (void)for_trace;
    (void)translating;
    app_pc pc = dr_fragment_app_pc(tag);
    module_data_t* module = dr_lookup_module(pc);
    if (module != nullptr) {
        app_pc start = module->start;
        dr_free_module_data(module);
        // Only the main executable is rewritten; code in no known module
        // counts as the main executable's.
        if (start != exe_start) return DR_EMIT_DEFAULT;
    }
    instr_t* instr = instrlist_first_app(bb);
    if (instr == nullptr) return DR_EMIT_DEFAULT;
    while (instr != nullptr) {
        instr_t* next = instr_get_next_app(instr);
        unsigned word = *reinterpret_cast<unsigned*>(instr_get_raw_bits(instr));
        sve_handler handler = is_sve(word);
        if (handler == nullptr)
            ++aarch64_instr_count;
        else
            rewrite(drcontext, bb, instr, handler);
        instr = next;
    }
    return DR_EMIT_DEFAULT;
}

void event_thread_init(void* drcontext) {
    void* data = dr_thread_alloc(drcontext, sizeof(cpu_state));
    // Cleared so that SVE-only state starts the same on every run (and
    // fpcr_extra is zero, as the reference operations' control word needs).
    memset(data, 0, sizeof(cpu_state));
    drmgr_set_tls_field(drcontext, tls_idx, data);
}

void event_thread_exit(void* drcontext) {
    void* data = drmgr_get_tls_field(drcontext, tls_idx);
    if (data == nullptr) assert_failure(kLineThreadExit, "data != __null");
    dr_thread_free(drcontext, data, sizeof(cpu_state));
}

void event_exit() {
    dr_log(nullptr, 0xffffff, 1, "SVE client exiting\n");
    const char* name = basename(exe->full_path);
    fprintf(stderr, "%s: %lu SVE instructions executed\n", name, static_cast<unsigned long>(sve_instr_count_read()));
    fprintf(stderr, "%s: %lu Non-SVE AArch64 instructions executed\n", name,
            static_cast<unsigned long>(aarch64_instr_count));
    dr_free_module_data(exe);
    if (!drmgr_unregister_bb_app2app_event(event_instruction_change) || drreg_exit() != DRREG_SUCCESS)
        assert_failure(kLineExit, "false");
    drmgr_exit();
}

}  // namespace

DR_EXPORT void dr_client_main(client_id_t id, int argc, const char* argv[]) {
    (void)id;
    dr_set_client_name("Korvel SVE emulation client", "the Korvel SVE team's issue tracker");
    // Without SVE hardware the host's decoder would assume another vector
    // length; everything here is built for 512 bits. (On SVE hardware the host
    // keeps the hardware's length; the client reads raw words either way.)
    dr_set_vector_length(512);

    // No option is defined: "--" ends the list and anything else is an error.
    std::string error;
    int last_index = 0;
    if (!droption_parser_t::parse_argv(DROPTION_SCOPE_CLIENT, argc, argv, &error, &last_index)) {
        dr_fprintf(STDERR, "Usage error: %s\n", error.c_str());
        dr_abort();
    }

    drreg_options_t ops = {};
    ops.struct_size = sizeof(ops);
    if (!drmgr_init() || drreg_init(&ops) != DRREG_SUCCESS) assert_failure(kLineInit, "false");

    exe = dr_get_main_module();
    exe_start = exe != nullptr ? exe->start : nullptr;

    drmgr_register_thread_init_event(event_thread_init);
    drmgr_register_thread_exit_event(event_thread_exit);
    dr_register_exit_event(event_exit);
    if (!drmgr_register_bb_app2app_event(event_instruction_change, nullptr)) assert_failure(kLineRegister, "false");

    tls_idx = drmgr_register_tls_field();

    sve_stats_reset();
    aarch64_instr_count = 0;

    dr_log(nullptr, 0xffffff, 1, "SVE client initializing\n");
}
