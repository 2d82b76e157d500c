// The reference operations of the kernel-route forms run on no path the
// reference-CPU sweep takes (they serve callers at other vector lengths), so
// here each is held to its kernel: random words of the form's row, edge-biased
// registers with junk predicate bytes, often all operands one register. Also
// what the reference route's marshalling frame does to the register file, and
// the length the operations take from the context.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "arith_case.h"
#include "sve/core/decode.h"
#include "sve/integer/arith.h"

namespace {
using namespace inttest;

struct Frame {
    const cpu_state& s;
    mutable CpuContext ctx{};
    explicit Frame(const cpu_state& st) : s(st) { ctx.vl = 8; }
    CpuContext* c() const { return &ctx; }
    VecVal z(unsigned n) const {
        VecVal v{};
        std::memcpy(v.b, s.z[n], 64);
        return v;
    }
    PredV p(unsigned n) const {
        PredV v{};
        for (unsigned i = 0; i < 64; ++i) v.w[0] |= uint64_t(s.p[n][i] & 1) << i;
        return v;
    }
};
unsigned F_d(uint32_t w) { return w & 31; }
unsigned F_5(uint32_t w) { return w >> 5 & 31; }
unsigned F_16(uint32_t w) { return w >> 16 & 31; }
unsigned F_pg3(uint32_t w) { return w >> 10 & 7; }
uint64_t t_imm_arith_u(uint32_t w) { return ((w >> 5) & 0xff) << ((w >> 13 & 1) * 8); }
uint64_t t_imm_s8(uint32_t w) { return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int8_t>(w >> 5))); }

struct Form {
    const char* name;
    sve_handler handler;
    VecVal (*expect)(const Frame&, uint32_t);
};
// Only the kernel-route forms; the reference-route ones are the sweep's. The
// logical immediates (ZLI) are left out: their mask decoding is the sweep's too.
#define FORM(name, call) {#name, name, [](const Frame& f, uint32_t w) { return call; }},
#define K_ZPZ(name, kernel, N, op) FORM(name, name(f.z(F_d(w)), f.p(F_pg3(w)), f.z(F_5(w)), f.c()))
#define K_ZZZ(name, kernel, N, op) FORM(name, name(f.z(F_5(w)), f.z(F_16(w)), f.c()))
#define K_ZI(name, kernel, N, op, immf) FORM(name, name(f.z(F_d(w)), t_##immf(w), f.c()))
#define K_UN(name, kernel, N, op) FORM(name, name(f.z(F_d(w)), f.p(F_pg3(w)), f.z(F_5(w)), f.c()))
#define K_MAD(name, kernel, N, op) FORM(name, name(f.z(F_d(w)), f.p(F_pg3(w)), f.z(F_16(w)), f.z(F_5(w)), f.c()))
#define K_MLA(name, kernel, N, op) FORM(name, name(f.z(F_d(w)), f.p(F_pg3(w)), f.z(F_5(w)), f.z(F_16(w)), f.c()))
#define K_PRFXM(name, kernel, N) K_UN(name, kernel, N, -)
#define K_PRFXZ(name, kernel, N) FORM(name, name(f.p(F_pg3(w)), f.z(F_5(w)), f.c()))
#define K_MOV(name, kernel) FORM(name, name(f.z(F_5(w)), f.c()))
#define K_SEL(name, kernel, N) FORM(name, name(f.p(w >> 10 & 15), f.z(F_5(w)), f.z(F_16(w)), f.c()))
#define K_ZLI(name, kernel, op)
#define R_ZPZ(name, N, op)
#define R_ZI(name, N, op, immf)
#define R_UN(name, N, op)
const std::vector<Form> forms = {
#include "sve/integer/arith_forms.h"
};

const sve_row* row_of(const char* name) {
    for (size_t i = 0; i < sve_row_count; ++i)
        if (std::strcmp(sve_rows[i].name, name) == 0) return &sve_rows[i];
    return nullptr;
}

void fill(cpu_state& s, std::mt19937_64& rng) {
    static const uint64_t edges[] = {0, 1, ~0ull, 0x80, 0x7f, 0x8000, 0x7fff, 0x80000000, 0x7fffffff,
                                     0xffffffff, 0x8000000000000000ull, 0x7fffffffffffffffull};
    for (unsigned z = 0; z < 32; ++z)
        for (unsigned i = 0; i < 8; ++i) {
            uint64_t v = rng() % 3 ? rng() : edges[rng() % 12];
            std::memcpy(s.z[z] + 8 * i, &v, 8);
        }
    for (unsigned p = 0; p < 16; ++p)
        for (unsigned i = 0; i < 64; ++i) s.p[p][i] = static_cast<uint8_t>(rng() % 4);
}

TEST(Routes, ReferenceOperationsAgreeWithTheKernels) {
    ASSERT_GT(forms.size(), 100u);
    std::mt19937_64 rng(2024);
    for (const Form& f : forms) {
        const sve_row* r = row_of(f.name);
        ASSERT_NE(r, nullptr) << f.name;
        for (int iter = 0; iter < 100; ++iter) {
            uint32_t w = r->bits | (static_cast<uint32_t>(rng()) & ~r->mask);
            if (iter % 4 == 0) {  // all registers one
                unsigned reg = rng() % 32;
                w = r->bits | (((w & ~0x1f03ffu) | reg | reg << 5 | reg << 16) & ~r->mask);
            }
            auto s = noisy_state(static_cast<uint32_t>(rng()));
            fill(*s, rng);
            const cpu_state before = *s;
            const VecVal want = f.expect(Frame(before), w);
            ASSERT_EQ(f.handler(s.get(), w), DECODE_OK) << f.name;
            ASSERT_EQ(std::memcmp(s->z[w & 31], want.b, 64), 0) << f.name << " word " << std::hex << w;
        }
    }
}

// lsr z1.h, z1.h, #15 is a reference-route form: the frame writes back nzcv
// zero-extended, fpcr with fpcr_extra, FFR as bit 0 of each byte, and leaves
// `instruction` alone.
TEST(ReferenceFrame, WhatTheFrameWritesBack) {
    auto s = noisy_state(9);
    s->nzcv = 0xabcdef01f0000000ull;
    s->fpcr_extra = 0x00000400;
    s->fpcr = 0x03000000;
    for (unsigned i = 0; i < 64; ++i) s->ffr[i] = static_cast<uint8_t>(i % 4 == 0 ? 0xfe : i % 4 == 1 ? 0x03 : i);
    s->instruction = 0x1234;
    const cpu_state before = *s;
    EXPECT_EQ(VecU16ShrVIX(s.get(), 0x04319421), DECODE_OK);
    EXPECT_EQ(s->nzcv, 0xf0000000u);
    EXPECT_EQ(s->fpcr, 0x03000400u);
    EXPECT_EQ(s->instruction, 0x1234u);
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(s->ffr[i], i % 4 == 0 ? 0 : i % 4 == 1 ? 1 : i & 1) << i;
    for (unsigned z = 0; z < 32; ++z)
        if (z != 1) {
            EXPECT_EQ(std::memcmp(before.z[z], s->z[z], 64), 0) << "z" << z;
        }
    EXPECT_EQ(std::memcmp(before.p, s->p, sizeof before.p), 0);
    EXPECT_EQ(std::memcmp(before.x, s->x, sizeof before.x), 0);
}

// At 1024 bits: 64 halfwords, not the 32 of this build's 512.
TEST(ReferenceFrame, OperationsTakeTheLengthFromTheContext) {
    VecVal zn;
    for (unsigned i = 0; i < 128; ++i) vset<uint16_t>(zn, i, static_cast<uint16_t>(0x8000 | i));
    CpuContext c{};
    c.vl = 16;
    VecVal r = VecU16ShrVIX(zn, 15, &c);
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(vget<uint16_t>(r, i), 1u) << i;
}

}  // namespace
