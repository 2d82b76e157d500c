// The frame in which reference operations run: values, not registers.
#pragma once

#include <cstdint>
#include <cstring>

// Packed predicate: bit k of the 256-bit value governs vector byte k. At this
// build's vector length only word 0 carries anything.
struct PredV {
    uint64_t w[4];
};

// A vector value of up to 2048 bits; only the first 64 bytes are defined here.
struct VecVal {
    uint8_t b[256];
};

struct CpuContext {
    uint32_t nzcv;  // N bit 31, Z 30, C 29, V 28
    uint32_t fpsr;
    uint32_t fpcr;
    uint32_t vl;    // vector length in 64-bit units, low 26 bits
    PredV ffr;
};

// Written once at load time by SVEInitialize; no operation reads them.
extern CpuContext cpu_ctxt;
extern CpuContext* ctxt;
