// Runs one instruction word on the real (or reference) CPU with a complete
// architectural state taken from conf_in, and stores the complete state that
// follows into conf_out.
//
// The instruction sits at conf_slot, reached from the last register load by
// a direct branch and left by another, so nothing but the instruction runs
// with the case's registers and no register is needed to get there and back.
// The slot has a page of its own, made writable and executable at start-up:
// the C side patches it before each call, and a CPU (or an emulator) that
// watches for code being rewritten then throws away only that page's
// translation, not the long load and store sequences.
//
// Once the instruction has run, every general register belongs to the case.
// TPIDR_EL0 holds X0 while X0 is turned into the base of conf_out; the C
// library's thread pointer is put back before returning, and the signal
// handler restores it too before it touches anything thread-local.

#include "conf_offsets.h"

    .arch armv8.2-a+sve
    .text
    .p2align 4
    .globl conf_run_one
    .type conf_run_one, %function
conf_run_one:
    adrp x9, conf_saved
    add x9, x9, :lo12:conf_saved
    stp x19, x20, [x9, #0]
    stp x21, x22, [x9, #16]
    stp x23, x24, [x9, #32]
    stp x25, x26, [x9, #48]
    stp x27, x28, [x9, #64]
    stp x29, x30, [x9, #80]
    stp d8, d9, [x9, #96]
    stp d10, d11, [x9, #112]
    stp d12, d13, [x9, #128]
    stp d14, d15, [x9, #144]
    mov x10, sp
    str x10, [x9, #SAVED_SP]
    mrs x10, tpidr_el0
    str x10, [x9, #SAVED_TPIDR]
    mrs x10, fpcr
    str x10, [x9, #SAVED_FPCR]
    mrs x10, fpsr
    str x10, [x9, #SAVED_FPSR]

    adrp x0, conf_in
    add x0, x0, :lo12:conf_in
    // FFR can only be written from a predicate: go through P0 before P0 is loaded.
    add x1, x0, #ST_FFR
    ldr p0, [x1]
    wrffr p0.b
    add x1, x0, #ST_P
    ldr p0, [x1, #0, mul vl]
    ldr p1, [x1, #1, mul vl]
    ldr p2, [x1, #2, mul vl]
    ldr p3, [x1, #3, mul vl]
    ldr p4, [x1, #4, mul vl]
    ldr p5, [x1, #5, mul vl]
    ldr p6, [x1, #6, mul vl]
    ldr p7, [x1, #7, mul vl]
    ldr p8, [x1, #8, mul vl]
    ldr p9, [x1, #9, mul vl]
    ldr p10, [x1, #10, mul vl]
    ldr p11, [x1, #11, mul vl]
    ldr p12, [x1, #12, mul vl]
    ldr p13, [x1, #13, mul vl]
    ldr p14, [x1, #14, mul vl]
    ldr p15, [x1, #15, mul vl]
    add x1, x0, #ST_Z
    ldr z0, [x1, #0, mul vl]
    ldr z1, [x1, #1, mul vl]
    ldr z2, [x1, #2, mul vl]
    ldr z3, [x1, #3, mul vl]
    ldr z4, [x1, #4, mul vl]
    ldr z5, [x1, #5, mul vl]
    ldr z6, [x1, #6, mul vl]
    ldr z7, [x1, #7, mul vl]
    ldr z8, [x1, #8, mul vl]
    ldr z9, [x1, #9, mul vl]
    ldr z10, [x1, #10, mul vl]
    ldr z11, [x1, #11, mul vl]
    ldr z12, [x1, #12, mul vl]
    ldr z13, [x1, #13, mul vl]
    ldr z14, [x1, #14, mul vl]
    ldr z15, [x1, #15, mul vl]
    ldr z16, [x1, #16, mul vl]
    ldr z17, [x1, #17, mul vl]
    ldr z18, [x1, #18, mul vl]
    ldr z19, [x1, #19, mul vl]
    ldr z20, [x1, #20, mul vl]
    ldr z21, [x1, #21, mul vl]
    ldr z22, [x1, #22, mul vl]
    ldr z23, [x1, #23, mul vl]
    ldr z24, [x1, #24, mul vl]
    ldr z25, [x1, #25, mul vl]
    ldr z26, [x1, #26, mul vl]
    ldr z27, [x1, #27, mul vl]
    ldr z28, [x1, #28, mul vl]
    ldr z29, [x1, #29, mul vl]
    ldr z30, [x1, #30, mul vl]
    ldr z31, [x1, #31, mul vl]
    ldr x1, [x0, #ST_NZCV]
    msr nzcv, x1
    ldr x1, [x0, #ST_FPCR]
    msr fpcr, x1
    ldr x1, [x0, #ST_FPSR]
    msr fpsr, x1
    ldr x1, [x0, #ST_SP]
    mov sp, x1
    ldp x1, x2, [x0, #8]
    ldp x3, x4, [x0, #24]
    ldp x5, x6, [x0, #40]
    ldp x7, x8, [x0, #56]
    ldp x9, x10, [x0, #72]
    ldp x11, x12, [x0, #88]
    ldp x13, x14, [x0, #104]
    ldp x15, x16, [x0, #120]
    ldp x17, x18, [x0, #136]
    ldp x19, x20, [x0, #152]
    ldp x21, x22, [x0, #168]
    ldp x23, x24, [x0, #184]
    ldp x25, x26, [x0, #200]
    ldp x27, x28, [x0, #216]
    ldp x29, x30, [x0, #232]
    ldr x0, [x0]
    b conf_slot
conf_slot_return:
    msr tpidr_el0, x0
    adrp x0, conf_out
    add x0, x0, :lo12:conf_out
    stp x1, x2, [x0, #8]
    stp x3, x4, [x0, #24]
    stp x5, x6, [x0, #40]
    stp x7, x8, [x0, #56]
    stp x9, x10, [x0, #72]
    stp x11, x12, [x0, #88]
    stp x13, x14, [x0, #104]
    stp x15, x16, [x0, #120]
    stp x17, x18, [x0, #136]
    stp x19, x20, [x0, #152]
    stp x21, x22, [x0, #168]
    stp x23, x24, [x0, #184]
    stp x25, x26, [x0, #200]
    stp x27, x28, [x0, #216]
    stp x29, x30, [x0, #232]
    // NZCV first: nothing above sets flags, and nothing below may run before it is read.
    mrs x1, nzcv
    str x1, [x0, #ST_NZCV]
    mrs x1, tpidr_el0
    str x1, [x0]
    mov x1, sp
    str x1, [x0, #ST_SP]
    mrs x1, fpcr
    str x1, [x0, #ST_FPCR]
    mrs x1, fpsr
    str x1, [x0, #ST_FPSR]
    add x1, x0, #ST_Z
    str z0, [x1, #0, mul vl]
    str z1, [x1, #1, mul vl]
    str z2, [x1, #2, mul vl]
    str z3, [x1, #3, mul vl]
    str z4, [x1, #4, mul vl]
    str z5, [x1, #5, mul vl]
    str z6, [x1, #6, mul vl]
    str z7, [x1, #7, mul vl]
    str z8, [x1, #8, mul vl]
    str z9, [x1, #9, mul vl]
    str z10, [x1, #10, mul vl]
    str z11, [x1, #11, mul vl]
    str z12, [x1, #12, mul vl]
    str z13, [x1, #13, mul vl]
    str z14, [x1, #14, mul vl]
    str z15, [x1, #15, mul vl]
    str z16, [x1, #16, mul vl]
    str z17, [x1, #17, mul vl]
    str z18, [x1, #18, mul vl]
    str z19, [x1, #19, mul vl]
    str z20, [x1, #20, mul vl]
    str z21, [x1, #21, mul vl]
    str z22, [x1, #22, mul vl]
    str z23, [x1, #23, mul vl]
    str z24, [x1, #24, mul vl]
    str z25, [x1, #25, mul vl]
    str z26, [x1, #26, mul vl]
    str z27, [x1, #27, mul vl]
    str z28, [x1, #28, mul vl]
    str z29, [x1, #29, mul vl]
    str z30, [x1, #30, mul vl]
    str z31, [x1, #31, mul vl]
    add x1, x0, #ST_P
    str p0, [x1, #0, mul vl]
    str p1, [x1, #1, mul vl]
    str p2, [x1, #2, mul vl]
    str p3, [x1, #3, mul vl]
    str p4, [x1, #4, mul vl]
    str p5, [x1, #5, mul vl]
    str p6, [x1, #6, mul vl]
    str p7, [x1, #7, mul vl]
    str p8, [x1, #8, mul vl]
    str p9, [x1, #9, mul vl]
    str p10, [x1, #10, mul vl]
    str p11, [x1, #11, mul vl]
    str p12, [x1, #12, mul vl]
    str p13, [x1, #13, mul vl]
    str p14, [x1, #14, mul vl]
    str p15, [x1, #15, mul vl]
    rdffr p0.b
    add x1, x0, #ST_FFR
    str p0, [x1]

    adrp x9, conf_saved
    add x9, x9, :lo12:conf_saved
    ldr x10, [x9, #SAVED_TPIDR]
    msr tpidr_el0, x10
    ldr x10, [x9, #SAVED_FPCR]
    msr fpcr, x10
    ldr x10, [x9, #SAVED_FPSR]
    msr fpsr, x10
    ldr x10, [x9, #SAVED_SP]
    mov sp, x10
    ldp x19, x20, [x9, #0]
    ldp x21, x22, [x9, #16]
    ldp x23, x24, [x9, #32]
    ldp x25, x26, [x9, #48]
    ldp x27, x28, [x9, #64]
    ldp x29, x30, [x9, #80]
    ldp d8, d9, [x9, #96]
    ldp d10, d11, [x9, #112]
    ldp d12, d13, [x9, #128]
    ldp d14, d15, [x9, #144]
    ret
    .size conf_run_one, . - conf_run_one

    .section .text.conf_slot, "ax", %progbits
    .p2align 12
    .globl conf_slot
conf_slot:
    nop
    b conf_slot_return
    .p2align 12
