// Cost of one emulated instruction through its opcode handler, for kernel-route
// and reference-route forms of the integer family. Each iteration restores the
// destination first, so that repeated runs see the same operands (division
// time on the host depends on them); BM_RestoreOnly measures that copy alone.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <random>

#include "sve/core/handler_util.h"
#include "sve/core/reference.h"
#include "sve/integer/arith.h"

namespace {

std::unique_ptr<cpu_state> make_state() {
    auto s = std::make_unique<cpu_state>();
    std::mt19937_64 rng(42);
    for (auto& z : s->z)
        for (unsigned i = 0; i < 64; i += 8) {
            uint64_t v = rng() | 1;  // odd: never a zero divisor at any width
            std::memcpy(z + i, &v, 8);
        }
    for (auto& p : s->p)
        for (auto& b : p) b = static_cast<uint8_t>(rng() & 1);
    std::memset(s->p[2], 1, 64);
    std::memset(s->ffr, 1, 64);
    return s;
}

void run(benchmark::State& st, sve_handler h, uint32_t word) {
    auto s = make_state();
    uint8_t saved[64];
    unsigned zd = word & 31;
    std::memcpy(saved, s->z[zd], 64);
    benchmark::DoNotOptimize(h);
    for (auto _ : st) {
        std::memcpy(s->z[zd], saved, 64);
        benchmark::DoNotOptimize(h(s.get(), word));
        benchmark::ClobberMemory();
    }
}

aarch64_decode_rc restore_only(cpu_state*, unsigned) { return DECODE_OK; }

// ADD Z1.S, P2/M, Z1.S, Z3.S taken through the reference frame and its
// reference operation, for comparison with the kernel route of the same word.
aarch64_decode_rc add_via_reference(cpu_state* s, unsigned w) {
    RefFrame f(s);
    f.put_z(f_zd(w), VecU32AddVVM(f.zv(f_zd(w)), f.pred(f_pg3(w)), f.zv(f_zn(w)), f.c()));
    return static_cast<aarch64_decode_rc>(f.finish());
}

#define BENCH(label, handler, word) \
    BENCHMARK_CAPTURE(run, label, static_cast<sve_handler>(handler), word)

// Kernel route.
BENCH(kernel/add_zpz_s, VecU32AddVVM, 0x04800861);       // add z1.s, p2/m, z1.s, z3.s
BENCH(kernel/add_zzz_s, VecU32AddVVX, 0x04a30081);       // add z1.s, z4.s, z3.s
BENCH(kernel/add_zi_h, VecU16AddVIX, 0x2560ffe1);        // add z1.h, z1.h, #0xff00
BENCH(kernel/mul_zpz_s, VecS32MulVVM, 0x04900861);       // mul z1.s, p2/m, z1.s, z3.s
BENCH(kernel/mul_zpz_d, VecS64MulVVM, 0x04d00861);       // mul z1.d
BENCH(kernel/mla_zpzz_h, VecS16MLAVVVM, 0x04444861);     // mla z1.h, p2/m, z3.h, z4.h
BENCH(kernel/sdiv_zpz_s, VecS32DivVVM, 0x04940861);      // sdiv z1.s
BENCH(kernel/sdiv_zpz_d, VecS64DivVVM, 0x04d40861);      // sdiv z1.d
BENCH(kernel/udiv_zpz_s, VecU32DivVVM, 0x04950861);      // udiv z1.s
BENCH(kernel/smax_zpz_b, VecS8MaxVVM, 0x04080861);       // smax z1.b
BENCH(kernel/and_zpz_b, VecU8AndVVM, 0x041a0861);        // and z1.b, p2/m
BENCH(kernel/and_zzz, VecU64AndVVX, 0x04233081);         // and z1.d, z4.d, z3.d
BENCH(kernel/and_zi, VecU64AndVIX, 0x058000e1);          // and z1.s, z1.s, #0xff
BENCH(kernel/sxth_zpz_d, VecS64Extnd28VM, 0x04d2a861);   // sxth z1.d
BENCH(kernel/sel_zpzz_s, VecU32SelVV, 0x05a4e461);       // sel z1.s, p9, z3.s, z4.s
BENCH(kernel/movprfx_zpz_z, VecU32MovePrefix1VZ, 0x04902861);  // movprfx z1.s, p2/z, z3.s
BENCH(kernel/movprfx_zz, VecU32SpecialMoveV, 0x0420bc61);      // movprfx z1, z3
// Reference route.
BENCH(reference/lsr_h_imm, VecU16ShrVIX, 0x04319421);    // lsr z1.h, z1.h, #15
BENCH(reference/subr_zpz_s, VecU32SubRVVM, 0x04830861);  // subr z1.s, p2/m
BENCH(reference/subr_zi_b, VecU8SubRVIX, 0x2523dfe1);    // subr z1.b, z1.b, #255
BENCH(reference/smulh_zpz_s, VecS32MulHVVM, 0x04920861); // smulh z1.s
BENCH(reference/smulh_zpz_d, VecS64MulHVVM, 0x04d20861); // smulh z1.d
BENCH(reference/sabd_zpz_b, VecS8AbdVVM, 0x040c0861);    // sabd z1.b
BENCH(reference/uxtb_zpz_s, VecU32Extnd14VM, 0x0491a861);  // uxtb z1.s
BENCH(reference/add_zpz_s_via_frame, add_via_reference, 0x04800861);
BENCH(baseline/restore_only, restore_only, 0x04800861);

}  // namespace

BENCHMARK_MAIN();
