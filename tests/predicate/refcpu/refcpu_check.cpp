// Runs every decode row of the predicate, compare, WHILE, break and CTERM
// families on a CPU with SVE at 512 bits and on our emulator, from the same
// random register contents, and compares the predicates, FFR and NZCV.
//
// Build and run with tests/predicate/refcpu/run.sh (under qemu-aarch64 with
// 512-bit SVE). Exits 0 when every trial agrees, 1 otherwise; 77 when the CPU
// has no SVE at 512 bits.
#include <sys/auxv.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "sve/core/cpu_state.h"
#include "sve/core/decode.h"

#ifndef HWCAP_SVE
#define HWCAP_SVE (1 << 22)
#endif

namespace {

// What the real CPU sees: Z as 64 bytes each, P and FFR in their packed
// memory form (8 bytes each), X0..X18 and NZCV.
struct RealState {
    uint8_t z[32][64];   // offset 0
    uint8_t p[17][8];    // offset 2048: P0..P15, then FFR
    uint8_t pad[8];
    uint64_t x[19];      // offset 2192
    uint64_t nzcv;       // offset 2344
};
static_assert(offsetof(RealState, p) == 2048, "p");
static_assert(offsetof(RealState, x) == 2192, "x");
static_assert(offsetof(RealState, nzcv) == 2344, "nzcv");

}  // namespace

// run_real(state, stub): loads everything, calls the two-word stub (the
// instruction and RET), stores P0..P15, FFR and NZCV back.
extern "C" void run_real(RealState* st, void* stub);
asm(R"(
    .text
    .arch armv8.2-a+sve
    .global run_real
    .type run_real, %function
run_real:
    stp x29, x30, [sp, #-64]!
    stp x19, x20, [sp, #16]
    stp x21, x22, [sp, #32]
    mov x19, x0
    mov x20, x1
    add x21, x0, #2048
)"
#define Z(n) "    ldr z" #n ", [x19, #" #n ", mul vl]\n"
    Z(0) Z(1) Z(2) Z(3) Z(4) Z(5) Z(6) Z(7) Z(8) Z(9) Z(10) Z(11) Z(12) Z(13) Z(14) Z(15)
    Z(16) Z(17) Z(18) Z(19) Z(20) Z(21) Z(22) Z(23) Z(24) Z(25) Z(26) Z(27) Z(28) Z(29) Z(30) Z(31)
#undef Z
R"(
    ldr p0, [x21, #16, mul vl]
    wrffr p0.b
)"
#define P(n) "    ldr p" #n ", [x21, #" #n ", mul vl]\n"
    P(0) P(1) P(2) P(3) P(4) P(5) P(6) P(7) P(8) P(9) P(10) P(11) P(12) P(13) P(14) P(15)
#undef P
R"(
    ldr x9, [x19, #2344]
    msr nzcv, x9
    add x9, x19, #2192
    ldp x0, x1, [x9, #0]
    ldp x2, x3, [x9, #16]
    ldp x4, x5, [x9, #32]
    ldp x6, x7, [x9, #48]
    ldr x8, [x9, #64]
    ldp x10, x11, [x9, #80]
    ldp x12, x13, [x9, #96]
    ldp x14, x15, [x9, #112]
    ldp x16, x17, [x9, #128]
    ldr x18, [x9, #144]
    ldr x9, [x9, #72]
    blr x20
    mrs x9, nzcv
    str x9, [x19, #2344]
)"
#define P(n) "    str p" #n ", [x21, #" #n ", mul vl]\n"
    P(0) P(1) P(2) P(3) P(4) P(5) P(6) P(7) P(8) P(9) P(10) P(11) P(12) P(13) P(14) P(15)
#undef P
R"(
    rdffr p0.b
    str p0, [x21, #16, mul vl]
    ldp x21, x22, [sp, #32]
    ldp x19, x20, [sp, #16]
    ldp x29, x30, [sp], #64
    ret
    .size run_real, .-run_real
    .text
)");

namespace {

bool in_family(const char* name) {
    static const char* const parts[] = {"PPZ",     "VecPSelPP", "TrueI",      "TrueFlgI", "VecPFalse",
                                        "GenNextP", "SetFirstActiveP", "TestPZ", "FFSR",   "VecPActual",
                                        "Break",    "CmpFlg",   "While",      "CTerm"};
    for (const char* w : parts)
        if (std::strstr(name, w)) return true;
    return false;
}

uint64_t interesting(std::mt19937_64& rng) {
    static const uint64_t v[] = {0, 1, 2, 3, 5, 15, 16, 63, 64, 0x7f, 0x80, 0xff, 0x7fff, 0x8000, 0xffff,
                                 0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff, 0x100000000ull,
                                 0x7fffffffffffffffull, 0x8000000000000000ull, ~0ull, ~0ull - 1};
    uint64_t r = rng();
    switch (r % 4) {
        case 0: return v[(r >> 8) % (sizeof(v) / sizeof(v[0]))];
        case 1: return v[(r >> 8) % (sizeof(v) / sizeof(v[0]))] + ((r >> 40) % 7) - 3;
        case 2: return (r >> 8) % 80;
        default: return rng();
    }
}

uint64_t random_pred(std::mt19937_64& rng) {
    switch (rng() % 6) {
        case 0: return 0;
        case 1: return ~0ull;
        case 2: return rng() & rng();
        case 3: return 1ull << (rng() % 64);
        default: return rng();
    }
}

void fill_random(RealState& r, std::mt19937_64& rng) {
    for (auto& z : r.z) {
        const unsigned mode = rng() % 3;
        for (unsigned i = 0; i < 64; i += 8) {
            uint64_t v = mode == 0 ? rng() : mode == 1 ? interesting(rng) : rng() % 4 * 0x0101010101010101ull;
            std::memcpy(z + i, &v, 8);
        }
    }
    for (unsigned n = 0; n < 16; ++n) {
        uint64_t v = random_pred(rng);
        std::memcpy(r.p[n], &v, 8);
    }
    // FFR only ever holds a monotonic value: a run of ones from element 0.
    const unsigned ffr_len = rng() % 65;
    const uint64_t ffr = ffr_len == 64 ? ~0ull : (1ull << ffr_len) - 1;
    std::memcpy(r.p[16], &ffr, 8);
    for (unsigned i = 0; i < 19; ++i) r.x[i] = interesting(rng);
    if (rng() % 2) r.x[3] = r.x[2] + rng() % 80;  // runs that end inside the vector
    r.nzcv = (rng() % 16) << 28;
}

// WHILE and CTERM read general registers: keep them to X0..X18 and XZR,
// which the harness controls.
uint32_t fix_scalar_fields(const char* name, uint32_t word, std::mt19937_64& rng) {
    if (!std::strstr(name, "While") && !std::strstr(name, "CTerm")) return word;
    auto pick = [&] { uint32_t r = rng() % 20; return r == 19 ? 31u : r; };
    word &= ~(31u << 5 | 31u << 16);
    return word | pick() << 5 | pick() << 16;
}

}  // namespace

int main(int argc, char** argv) {
    if (!(getauxval(AT_HWCAP) & HWCAP_SVE)) {
        std::printf("no SVE on this CPU: skipped\n");
        return 77;
    }
    uint64_t vl;
    asm volatile(".arch armv8.2-a+sve\n rdvl %0, #1" : "=r"(vl));
    if (vl != 64) {
        std::printf("vector length %lu bytes, not 64: skipped\n", static_cast<unsigned long>(vl));
        return 77;
    }
    const unsigned trials = argc > 1 ? unsigned(std::stoul(argv[1])) : 200;
    auto* stub = static_cast<uint32_t*>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (stub == MAP_FAILED) return 2;

    std::mt19937_64 rng(12345);
    unsigned rows = 0, runs = 0, failures = 0;
    for (size_t ri = 0; ri < sve_row_count; ++ri) {
        const sve_row& row = sve_rows[ri];
        if (!row.handler || !in_family(row.name)) continue;
        ++rows;
        for (unsigned t = 0; t < trials; ++t) {
            uint32_t word = row.bits | (uint32_t(rng()) & ~row.mask);
            word = fix_scalar_fields(row.name, word, rng);
            sve_handler h = is_sve(word);
            if (h != row.handler) {
                std::printf("%s: word %08x decodes to another handler\n", row.name, word);
                ++failures;
                continue;
            }
            static RealState real;
            fill_random(real, rng);
            // The emulator's state, from the same values.
            static cpu_state emu;
            std::memset(&emu, 0, sizeof emu);
            std::memcpy(emu.z, real.z, sizeof real.z);
            for (unsigned n = 0; n < 16; ++n)
                for (unsigned k = 0; k < 64; ++k) emu.p[n][k] = real.p[n][k / 8] >> (k % 8) & 1;
            for (unsigned k = 0; k < 64; ++k) emu.ffr[k] = real.p[16][k / 8] >> (k % 8) & 1;
            for (unsigned i = 0; i < 19; ++i) emu.x[i] = real.x[i];
            emu.nzcv = real.nzcv;

            stub[0] = word;
            stub[1] = 0xd65f03c0;  // ret
            __builtin___clear_cache(reinterpret_cast<char*>(stub), reinterpret_cast<char*>(stub + 2));
            RealState before = real;
            run_real(&real, stub);
            h(&emu, word);
            ++runs;

            bool ok = (emu.nzcv & 0xf0000000u) == (real.nzcv & 0xf0000000u);
            for (unsigned n = 0; n <= 16; ++n) {
                const uint8_t* e = n < 16 ? emu.p[n] : emu.ffr;
                for (unsigned k = 0; k < 64; ++k) ok &= e[k] == (real.p[n][k / 8] >> (k % 8) & 1);
            }
            if (!ok) {
                if (++failures <= 20) {
                    std::printf("%s %08x: nzcv in %08lx real %08lx emu %08lx\n", row.name, word,
                                static_cast<unsigned long>(before.nzcv), static_cast<unsigned long>(real.nzcv),
                                static_cast<unsigned long>(emu.nzcv & 0xf0000000u));
                    for (unsigned n = 0; n <= 16; ++n) {
                        uint64_t rv, bv, ev = 0;
                        std::memcpy(&rv, real.p[n], 8);
                        std::memcpy(&bv, before.p[n], 8);
                        const uint8_t* e = n < 16 ? emu.p[n] : emu.ffr;
                        for (unsigned k = 0; k < 64; ++k) ev |= uint64_t(e[k] & 1) << k;
                        if (rv != ev || rv != bv)
                            std::printf("  %s%u before %016lx real %016lx emu %016lx\n", n < 16 ? "p" : "ffr",
                                        n < 16 ? n : 0, static_cast<unsigned long>(bv),
                                        static_cast<unsigned long>(rv), static_cast<unsigned long>(ev));
                    }
                }
            }
        }
    }
    std::printf("%u rows, %u runs, %u disagreements\n", rows, runs, failures);
    return failures == 0 && rows > 0 ? 0 : 1;
}
