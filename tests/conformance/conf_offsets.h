/* Byte offsets inside struct conf_state and the save area of the reference
 * runner, for the assembly that cannot use offsetof. ref_runner.c checks each
 * against the C layout at compile time. */
#ifndef CONF_OFFSETS_H
#define CONF_OFFSETS_H

#define ST_X 0
#define ST_SP 248
#define ST_NZCV 256
#define ST_FPCR 264
#define ST_FPSR 272
#define ST_Z 280
#define ST_P 2328
#define ST_FFR 2456

/* conf_saved: x19..x30 at 0..88, d8..d15 at 96..152, then these. */
#define SAVED_SP 160
#define SAVED_TPIDR 168
#define SAVED_FPCR 176
#define SAVED_FPSR 184
#define SAVED_WORDS 24

#endif
