// Test stand-in for the host's main interface header.
//
// Declares the subset of the host interface that the SVE client uses, with the
// host's published names and signatures, so that sve/client/sve_client.cpp
// compiles unchanged against this stand-in or against the real host. Values of
// enumerators (register numbers, opcodes, operand sizes) are our own: the
// client only ever uses them by name.
//
// What the stand-in does behind these calls, and how tests drive it, is in
// drstub.h, which the client never includes.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#define DR_EXPORT __attribute__((visibility("default")))
#define LINK_ONCE __attribute__((weak))
#define DR_API
#define OUT

extern "C" {

typedef unsigned char byte;
typedef unsigned int uint;
typedef unsigned short ushort;
typedef uint64_t uint64;
typedef byte* app_pc;
typedef intptr_t ptr_int_t;
typedef uintptr_t ptr_uint_t;
typedef ptr_uint_t reg_t;
typedef ushort reg_id_t;
typedef byte opnd_size_t;
typedef uint client_id_t;
typedef int file_t;

/** Standard error of the host, usable after the application closed its own. */
extern file_t our_stderr;
#define STDERR our_stderr

/* ---------------------------------------------------------------- registers */

enum {
    DR_REG_NULL = 0,
    DR_REG_X0, DR_REG_X1, DR_REG_X2, DR_REG_X3, DR_REG_X4, DR_REG_X5, DR_REG_X6, DR_REG_X7,
    DR_REG_X8, DR_REG_X9, DR_REG_X10, DR_REG_X11, DR_REG_X12, DR_REG_X13, DR_REG_X14, DR_REG_X15,
    DR_REG_X16, DR_REG_X17, DR_REG_X18, DR_REG_X19, DR_REG_X20, DR_REG_X21, DR_REG_X22, DR_REG_X23,
    DR_REG_X24, DR_REG_X25, DR_REG_X26, DR_REG_X27, DR_REG_X28, DR_REG_X29, DR_REG_X30,
    DR_REG_XZR,
    DR_REG_SP,
    DR_REG_W0, DR_REG_W1, DR_REG_W2, DR_REG_W3, DR_REG_W4, DR_REG_W5, DR_REG_W6, DR_REG_W7,
    DR_REG_W8, DR_REG_W9, DR_REG_W10, DR_REG_W11, DR_REG_W12, DR_REG_W13, DR_REG_W14, DR_REG_W15,
    DR_REG_W16, DR_REG_W17, DR_REG_W18, DR_REG_W19, DR_REG_W20, DR_REG_W21, DR_REG_W22, DR_REG_W23,
    DR_REG_W24, DR_REG_W25, DR_REG_W26, DR_REG_W27, DR_REG_W28, DR_REG_W29, DR_REG_W30,
    DR_REG_WZR,
    DR_REG_WSP,
    DR_REG_Q0, DR_REG_Q1, DR_REG_Q2, DR_REG_Q3, DR_REG_Q4, DR_REG_Q5, DR_REG_Q6, DR_REG_Q7,
    DR_REG_Q8, DR_REG_Q9, DR_REG_Q10, DR_REG_Q11, DR_REG_Q12, DR_REG_Q13, DR_REG_Q14, DR_REG_Q15,
    DR_REG_Q16, DR_REG_Q17, DR_REG_Q18, DR_REG_Q19, DR_REG_Q20, DR_REG_Q21, DR_REG_Q22, DR_REG_Q23,
    DR_REG_Q24, DR_REG_Q25, DR_REG_Q26, DR_REG_Q27, DR_REG_Q28, DR_REG_Q29, DR_REG_Q30, DR_REG_Q31,
    DR_REG_NZCV,
    DR_REG_FPCR,
    DR_REG_FPSR,
    DR_REG_XSP = DR_REG_SP,
};

/* ----------------------------------------------------------------- operands */

enum {
    OPSZ_NA = 0,
    OPSZ_0,
    OPSZ_1,
    OPSZ_2,
    OPSZ_4,
    OPSZ_8,
    OPSZ_16,
};
#define OPSZ_PTR OPSZ_8

typedef enum {
    DR_OPND_NEGATED = 0x01,
    DR_OPND_SHIFTED = 0x02,
    DR_OPND_MULTI_PART = 0x04,
    DR_OPND_IS_SHIFT = 0x08,
    DR_OPND_IN_LIST = 0x10,
    DR_OPND_EXTENDED = 0x20,
    DR_OPND_IS_EXTEND = 0x40,
    DR_OPND_IS_CONDITION = 0x80,
} dr_opnd_flags_t;

typedef enum {
    DR_SHIFT_LSL,
    DR_SHIFT_LSR,
    DR_SHIFT_ASR,
    DR_SHIFT_ROR,
    DR_SHIFT_MUL,
    DR_SHIFT_NONE,
} dr_shift_type_t;

/** An operand, passed by value; its fields are private to the host. */
typedef struct {
    byte kind;
    opnd_size_t size;
    reg_id_t reg;
    reg_id_t base;
    reg_id_t index;
    uint flags;
    int disp;
    ptr_int_t value;
} opnd_t;

opnd_t opnd_create_reg(reg_id_t r);
opnd_t opnd_create_base_disp(reg_id_t base_reg, reg_id_t index_reg, int scale, int disp,
                             opnd_size_t data_size);
opnd_t opnd_create_immed_int(ptr_int_t i, opnd_size_t data_size);
opnd_t opnd_add_flags(opnd_t opnd, dr_opnd_flags_t flags);
dr_opnd_flags_t opnd_get_flags(opnd_t opnd);
reg_id_t opnd_get_reg(opnd_t opnd);
opnd_size_t opnd_get_size(opnd_t opnd);
bool opnd_is_reg(opnd_t opnd);
bool opnd_is_immed_int(opnd_t opnd);
bool opnd_is_base_disp(opnd_t opnd);
ptr_int_t opnd_get_immed_int(opnd_t opnd);
reg_id_t opnd_get_base(opnd_t opnd);
reg_id_t opnd_get_index(opnd_t opnd);
int opnd_get_disp(opnd_t opnd);

#define OPND_CREATE_INT32(val) opnd_create_immed_int((ptr_int_t)(val), OPSZ_4)
#define OPND_CREATE_INT64(val) opnd_create_immed_int((ptr_int_t)(val), OPSZ_8)
#define OPND_CREATE_INTPTR OPND_CREATE_INT64
#define OPND_CREATE_INT(val) OPND_CREATE_INTPTR(val)
#define OPND_CREATE_LSL() opnd_add_flags(OPND_CREATE_INT(DR_SHIFT_LSL), DR_OPND_IS_SHIFT)

/* ------------------------------------------------------------- instructions */

enum {
    OP_INVALID,
    OP_UNDECODED,
    OP_LABEL,
    OP_add,
    OP_ldp,
    OP_ldr,
    OP_movk,
    OP_movz,
    OP_mrs,
    OP_msr,
    OP_nop,
    OP_stp,
    OP_str,
    OP_AFTER_LAST,
};

typedef struct _instr_t instr_t;
typedef struct _instrlist_t instrlist_t;

instr_t* instr_create_0dst_0src(void* drcontext, int opcode);
instr_t* instr_create_1dst_1src(void* drcontext, int opcode, opnd_t dst, opnd_t src);
instr_t* instr_create_1dst_2src(void* drcontext, int opcode, opnd_t dst, opnd_t src1, opnd_t src2);
instr_t* instr_create_1dst_3src(void* drcontext, int opcode, opnd_t dst, opnd_t src1, opnd_t src2,
                                opnd_t src3);
instr_t* instr_create_1dst_4src(void* drcontext, int opcode, opnd_t dst, opnd_t src1, opnd_t src2,
                                opnd_t src3, opnd_t src4);
instr_t* instr_create_2dst_1src(void* drcontext, int opcode, opnd_t dst1, opnd_t dst2, opnd_t src);
void instr_destroy(void* drcontext, instr_t* instr);

int instr_get_opcode(instr_t* instr);
int instr_num_srcs(instr_t* instr);
int instr_num_dsts(instr_t* instr);
opnd_t instr_get_src(instr_t* instr, uint pos);
opnd_t instr_get_dst(instr_t* instr, uint pos);
bool instr_is_meta(instr_t* instr);
bool instr_is_app(instr_t* instr);
instr_t* instr_set_translation(instr_t* instr, app_pc addr);
app_pc instr_get_translation(instr_t* instr);
app_pc instr_get_app_pc(instr_t* instr);
byte* instr_get_raw_bits(instr_t* instr);
instr_t* instr_get_next(instr_t* instr);
instr_t* instr_get_prev(instr_t* instr);
instr_t* instr_get_next_app(instr_t* instr);

instrlist_t* instrlist_create(void* drcontext);
void instrlist_clear_and_destroy(void* drcontext, instrlist_t* ilist);
instr_t* instrlist_first(instrlist_t* ilist);
instr_t* instrlist_first_app(instrlist_t* ilist);
instr_t* instrlist_last(instrlist_t* ilist);
void instrlist_append(instrlist_t* ilist, instr_t* instr);
void instrlist_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr);
void instrlist_meta_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr);
void instrlist_remove(instrlist_t* ilist, instr_t* instr);
void instrlist_insert_mov_immed_ptrsz(void* drcontext, ptr_int_t val, opnd_t dst, instrlist_t* ilist,
                                      instr_t* where, instr_t** first OUT, instr_t** last OUT);

/* -------------------------------------------------- spill slots and calls */

typedef enum {
    SPILL_SLOT_1 = 0,
    SPILL_SLOT_2 = 1,
    SPILL_SLOT_3 = 2,
    SPILL_SLOT_4 = 3,
    SPILL_SLOT_5 = 4,
    SPILL_SLOT_6 = 5,
    SPILL_SLOT_7 = 6,
    SPILL_SLOT_8 = 7,
    SPILL_SLOT_9 = 8,
    SPILL_SLOT_10 = 9,
    SPILL_SLOT_11 = 10,
    SPILL_SLOT_12 = 11,
    SPILL_SLOT_13 = 12,
    SPILL_SLOT_14 = 13,
    SPILL_SLOT_15 = 14,
    SPILL_SLOT_16 = 15,
    SPILL_SLOT_17 = 16,
    SPILL_SLOT_MAX = SPILL_SLOT_17,
} dr_spill_slot_t;

void dr_save_reg(void* drcontext, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot);
void dr_restore_reg(void* drcontext, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot);
reg_t dr_read_saved_reg(void* drcontext, dr_spill_slot_t slot);
void dr_write_saved_reg(void* drcontext, dr_spill_slot_t slot, reg_t value);

reg_id_t dr_get_stolen_reg(void);
bool dr_insert_get_stolen_reg_value(void* drcontext, instrlist_t* ilist, instr_t* instr, reg_id_t reg);
bool dr_insert_set_stolen_reg_value(void* drcontext, instrlist_t* ilist, instr_t* instr, reg_id_t reg);

typedef enum {
    DR_CLEANCALL_SAVE_FLOAT = 0x0001,
    DR_CLEANCALL_NOSAVE_FLAGS = 0x0002,
    DR_CLEANCALL_NOSAVE_XMM = 0x0004,
    DR_CLEANCALL_NOSAVE_XMM_NONPARAM = 0x0008,
    DR_CLEANCALL_NOSAVE_XMM_NONRET = 0x0010,
    DR_CLEANCALL_INDIRECT = 0x0020,
    DR_CLEANCALL_ALWAYS_OUT_OF_LINE = 0x0080,
} dr_cleancall_save_t;

void dr_insert_clean_call(void* drcontext, instrlist_t* ilist, instr_t* where, void* callee, bool save_fpstate,
                          uint num_args, ...);
void dr_insert_clean_call_ex(void* drcontext, instrlist_t* ilist, instr_t* where, void* callee,
                             dr_cleancall_save_t save_flags, uint num_args, ...);

/* ------------------------------------------------------- events and tools */

typedef enum {
    DR_EMIT_DEFAULT = 0,
    DR_EMIT_STORE_TRANSLATIONS = 0x01,
    DR_EMIT_PERSISTABLE = 0x02,
    DR_EMIT_MUST_END_TRACE = 0x04,
    DR_EMIT_GO_NATIVE = 0x08,
} dr_emit_flags_t;

typedef struct _module_names_t {
    const char* module_name;
    const char* file_name;
    const char* exe_name;
    const char* rsrc_name;
} module_names_t;

typedef void* module_handle_t;

typedef struct _module_data_t {
    union {
        app_pc start;
        module_handle_t handle;
    };
    app_pc end;
    app_pc entry_point;
    uint flags;
    module_names_t names;
    char* full_path;
} module_data_t;

bool dr_set_client_name(const char* name, const char* report_URL);
bool dr_set_vector_length(int vl);
int dr_get_vector_length(void);
void dr_register_exit_event(void (*func)(void));
bool dr_unregister_exit_event(void (*func)(void));

module_data_t* dr_get_main_module(void);
module_data_t* dr_lookup_module(byte* pc);
void dr_free_module_data(module_data_t* data);
app_pc dr_fragment_app_pc(void* tag);

void* dr_get_current_drcontext(void);
void* dr_thread_alloc(void* drcontext, size_t size);
void dr_thread_free(void* drcontext, void* mem, size_t size);

void dr_log(void* drcontext, uint mask, uint level, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));
ssize_t dr_fprintf(file_t f, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
void dr_abort(void);

/** The client's entry point, called by the host once the library is loaded. */
DR_EXPORT void dr_client_main(client_id_t id, int argc, const char* argv[]);

/* The interface version the client is built against, checked by the host. */
DR_EXPORT LINK_ONCE int _USES_DR_VERSION_ = 602;

}  // extern "C"
