// What the fuzzer needs to know about a row before it runs the handler: does
// the form touch memory, and which operand fields hold its addresses. Told
// from the handler's name, whose shape letters are regular for every memory
// form (VecU64Load8XSVZ: 64-bit elements, scalar base plus sign-extended
// 32-bit vector offsets, scaled by the memory size 8).
#pragma once

#include <cstring>
#include <string>

enum class AddrKind {
    None,        // touches no memory
    Scalar,      // base Xn (9..5) and an immediate: ..SIZ, ..QSIZ, Fill, Spill, Prefetch..SI
    ScalarIndex, // base Xn (9..5) plus index Xm (20..16): ..LSSZ, ..QSSZ, Prefetch..LSS
    VectorBase,  // base vector Zn (9..5) plus an immediate: ..VIZ, Prefetch..VI
    VectorIndex, // base Xn (9..5) plus offset vector Zm (20..16): VS, SV, XVS, XSV, YVS, YSV
};

struct MemForm {
    AddrKind addr = AddrKind::None;
    bool prefetch = false;    // a hint: must change nothing at all
    bool store = false;       // may write memory
    bool first_fault = false; // LDFF1: elements after the first active one may fault
    bool non_fault = false;   // LDNF1: every element may fault
    unsigned vec_bits = 64;   // element size of a base or offset vector
    bool offsets_signed = false;  // offsets are signed (SXTW, or whole 64-bit offsets)
    bool offsets_32 = false;      // only the low 32 bits of each offset element count
    unsigned msize = 1;       // memory element size in bytes
    unsigned nregs = 1;       // Z registers a load writes: Zt and the next ones, modulo 32
    bool writes_p = false;    // LDR of a predicate: writes Pt, no Z register
};

inline bool name_has(const char* name, const char* part) { return std::strstr(name, part) != nullptr; }

inline MemForm classify(const char* name) {
    MemForm f;
    f.prefetch = name_has(name, "Prefetch");
    bool fill_spill = name_has(name, "Fill") || name_has(name, "Spill");
    bool memory = f.prefetch || fill_spill || name_has(name, "Load") || name_has(name, "Store");
    if (!memory) return f;
    f.store = name_has(name, "Store") || name_has(name, "Spill");
    f.first_fault = name_has(name, "LoadFF");
    f.non_fault = name_has(name, "LoadNF");
    if (name_has(name, "E2")) f.nregs = 2;
    if (name_has(name, "E3")) f.nregs = 3;
    if (name_has(name, "E4")) f.nregs = 4;
    f.writes_p = std::strncmp(name, "VecPFill", 8) == 0;
    // "VecU32..." and "VecS32..." work on 32-bit vectors; the rest of the
    // vector forms on 64-bit ones.
    f.vec_bits = (std::strncmp(name, "VecU32", 6) == 0 || std::strncmp(name, "VecS32", 6) == 0) ? 32 : 64;
    if (fill_spill) {
        f.addr = AddrKind::Scalar;
        return f;
    }
    // The shape is what follows the last digit of the name ("8XSVZ" -> "XSV");
    // that digit is the memory element size.
    std::string n(name), shape;
    size_t d = n.find_last_of("0123456789");
    if (d == std::string::npos) {
        f.addr = AddrKind::Scalar;
        return f;
    }
    shape = n.substr(d + 1);
    f.msize = static_cast<unsigned>(n[d] - '0');
    if (f.msize != 1 && f.msize != 2 && f.msize != 4 && f.msize != 8) f.msize = 1;
    if (!shape.empty() && shape.back() == 'Z') shape.pop_back();
    if (shape == "VI") {
        f.addr = AddrKind::VectorBase;
    } else if (shape == "VS" || shape == "SV" || shape == "XVS" || shape == "XSV" || shape == "YVS" ||
               shape == "YSV") {
        f.addr = AddrKind::VectorIndex;
        bool sxtw = shape[0] == 'X', uxtw = shape[0] == 'Y';
        // A 32-bit element offset is always extended (plain VS and SV at .s
        // are the UXTW forms); at .d the plain forms take whole 64-bit offsets.
        f.offsets_32 = sxtw || uxtw || f.vec_bits == 32;
        f.offsets_signed = sxtw || (!uxtw && f.vec_bits == 64);
    } else if (shape.find("SS") != std::string::npos) {
        f.addr = AddrKind::ScalarIndex;
    } else {
        f.addr = AddrKind::Scalar;
    }
    return f;
}
