// Decoding: instruction word -> opcode handler, through 44 exact-match maps
// derived from one table of rows (handler, fixed-bit mask, fixed bits).
#pragma once

#include <cstddef>
#include <cstdint>

#include "sve/core/cpu_state.h"

// One row of the decode table. `handler` is null while the instruction's
// handler is not built yet: such a row is known (for reports and checks) but
// takes no part in decoding.
struct sve_row {
    const char* name;
    uint32_t mask;
    uint32_t bits;
    const char* asm_expect;  // what the disassembler must print, see scripts/asm_check.py
    sve_handler handler;
};

// One decode map: its name, walk place in is_sve (1-based), expected number of
// rows, and its key mask.
struct sve_map_info {
    const char* name;
    int is_sve_place;
    int expected_rows;
    uint32_t mask;
};

extern const sve_row sve_rows[];
extern const size_t sve_row_count;
extern const sve_map_info sve_maps[];
constexpr size_t SVE_MAP_COUNT = 44;

// Squeeze the bits of `word` selected by `mask` into a key, highest range
// most significant, as the map keys are composed.
uint32_t sve_map_key(uint32_t mask, uint32_t word);

// Handler of `word`, or null when no map knows it.
extern "C" sve_handler is_sve(unsigned word);

// Statistics and the direct entry (shared by every host).
extern "C" aarch64_decode_rc execute_sve_instruction(cpu_state* state);
extern "C" void update_sve_stats(unsigned* pc, unsigned word);
extern "C" void dump_sve_stats();
uint64_t sve_instr_count_read();
// Forgets all statistics: the client starts its run with it (the per-address
// table is empty then, so it only zeroes the total), and tests use it between cases.
void sve_stats_reset();

// Page size of the host, set by the static initialiser before the maps.
extern uint32_t page_size;

extern "C" int SVEInitialize();
