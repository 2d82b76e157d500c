// Every form of the family, through the decoder and against its reference
// operation. The decoder's row gives the fixed bits; the operand bits are
// random. The expected destination is the reference operation applied to the
// register values as this test cuts them from the word, so a kernel and its
// reference operation must agree on every form, at every element size, with
// junk predicate bytes, edge values and aliased registers.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "int_test_util.h"
#include "sve/core/decode.h"
#include "sve/integer/arith.h"

namespace {
using namespace inttest;

// The immediates, cut here from the word independently of the handlers.
uint64_t t_imm_arith_u(uint32_t w) { return ((w >> 5) & 0xff) << ((w >> 13 & 1) * 8); }
uint64_t t_imm_s8(uint32_t w) { return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int8_t>(w >> 5))); }
uint64_t t_imm_u8(uint32_t w) { return (w >> 5) & 0xff; }

// The architecture's DecodeBitMasks for a 64-bit datasize; false when reserved.
bool t_bitmask(uint32_t w, uint64_t* out) {
    unsigned n = w >> 17 & 1, immr = w >> 11 & 63, imms = w >> 5 & 63;
    unsigned combined = n << 6 | (~imms & 63);
    int len = -1;
    for (int b = 6; b >= 0; --b)
        if (combined >> b & 1) {
            len = b;
            break;
        }
    if (len < 1) return false;
    unsigned esize = 1u << len, levels = esize - 1, S = imms & levels, R = immr & levels;
    if (S == levels) return false;
    uint64_t welem = (S + 1 == 64) ? ~0ull : ((1ull << (S + 1)) - 1);
    uint64_t emask = esize == 64 ? ~0ull : (1ull << esize) - 1;
    for (unsigned i = 0; i < R; ++i) welem = ((welem >> 1) | ((welem & 1) << (esize - 1))) & emask;
    uint64_t v = 0;
    for (unsigned k = 0; k < 64; k += esize) v |= welem << k;
    *out = v;
    return true;
}

struct Frame {
    const cpu_state& s;
    mutable CpuContext ctx;
    explicit Frame(const cpu_state& st) : s(st), ctx{} { ctx.vl = 8; }
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
unsigned F_pg4(uint32_t w) { return w >> 10 & 15; }

// Expected destination, or false when the word must be refused.
typedef std::function<bool(const Frame&, uint32_t, VecVal*)> Expect;

struct Form {
    const char* name;
    sve_handler handler;
    Expect expect;
};

#define FORM(name, call) {#name, name, [](const Frame& f, uint32_t w, VecVal* r) { *r = call; return true; }},
#define K_ZPZ(name, kernel, N, op) FORM(name, name(f.z(F_d(w)), f.p(F_pg3(w)), f.z(F_5(w)), f.c()))
#define R_ZPZ(name, N, op) K_ZPZ(name, -, N, op)
#define K_ZZZ(name, kernel, N, op) FORM(name, name(f.z(F_5(w)), f.z(F_16(w)), f.c()))
#define K_ZI(name, kernel, N, op, immf) FORM(name, name(f.z(F_d(w)), t_##immf(w), f.c()))
#define R_ZI(name, N, op, immf) K_ZI(name, -, N, op, immf)
#define K_ZLI(name, kernel, op)                                                          \
    {#name, name, [](const Frame& f, uint32_t w, VecVal* r) {                            \
         uint64_t mask;                                                                  \
         if (!t_bitmask(w, &mask)) return false;                                         \
         *r = name(f.z(F_d(w)), mask, f.c());                                            \
         return true;                                                                    \
     }},
#define K_UN(name, kernel, N, op) FORM(name, name(f.z(F_d(w)), f.p(F_pg3(w)), f.z(F_5(w)), f.c()))
#define R_UN(name, N, op) K_UN(name, -, N, op)
#define K_MAD(name, kernel, N, op) FORM(name, name(f.z(F_d(w)), f.p(F_pg3(w)), f.z(F_16(w)), f.z(F_5(w)), f.c()))
#define K_MLA(name, kernel, N, op) FORM(name, name(f.z(F_d(w)), f.p(F_pg3(w)), f.z(F_5(w)), f.z(F_16(w)), f.c()))
#define K_PRFXM(name, kernel, N) K_UN(name, kernel, N, -)
#define K_PRFXZ(name, kernel, N) FORM(name, name(f.p(F_pg3(w)), f.z(F_5(w)), f.c()))
#define K_MOV(name, kernel) FORM(name, name(f.z(F_5(w)), f.c()))
#define K_SEL(name, kernel, N) FORM(name, name(f.p(F_pg4(w)), f.z(F_5(w)), f.z(F_16(w)), f.c()))

const std::vector<Form>& forms() {
    static const std::vector<Form> all = {
#include "sve/integer/arith_forms.h"
        FORM(VecU16ShrVIX, VecU16ShrVIX(f.z(F_5(w)), 16 - (w >> 16 & 15), f.c()))
    };
    return all;
}

const sve_row* row_of(const char* name) {
    for (size_t i = 0; i < sve_row_count; ++i)
        if (std::strcmp(sve_rows[i].name, name) == 0) return &sve_rows[i];
    return nullptr;
}

// Element values: mostly random, often one of the values where arithmetic
// breaks (0, 1, all ones, the signed limits at every width).
void fill(cpu_state& s, std::mt19937_64& rng) {
    static const uint64_t edges[] = {0, 1, ~0ull, 0x80, 0x7f, 0xff, 0x8000, 0x7fff, 0xffff, 0x80000000, 0x7fffffff,
                                     0xffffffff, 0x8000000000000000ull, 0x7fffffffffffffffull, 2, 0xfffffffffffffffeull};
    for (unsigned z = 0; z < 32; ++z)
        for (unsigned i = 0; i < 8; ++i) {
            uint64_t v = rng();
            if (rng() % 3 == 0) v = edges[rng() % 16];
            unsigned lane = rng() % 4;  // an edge value at some lane width
            if (lane == 1) v = (v & 0xff) * 0x0101010101010101ull;
            if (lane == 2) v = (v & 0xffff) * 0x0001000100010001ull;
            std::memcpy(s.z[z] + 8 * i, &v, 8);
        }
    // Predicate bytes 0..3 and an occasional all-ones register.
    for (unsigned p = 0; p < 16; ++p)
        for (unsigned i = 0; i < 64; ++i) s.p[p][i] = static_cast<uint8_t>(rng() % 4);
    std::memset(s.p[rng() % 16], 1, 64);
}

TEST(Routes, EveryFormHasItsRowAndTheDecoderFindsIt) {
    std::mt19937_64 rng(7);
    for (const Form& f : forms()) {
        const sve_row* r = row_of(f.name);
        ASSERT_NE(r, nullptr) << f.name << " has no row";
        EXPECT_EQ(r->handler, f.handler) << f.name;
        for (int k = 0; k < 16; ++k) {
            uint32_t w = r->bits | (static_cast<uint32_t>(rng()) & ~r->mask);
            EXPECT_EQ(is_sve(w), f.handler) << f.name << " " << std::hex << w;
        }
    }
}

TEST(Routes, KernelsAndReferenceOperationsAgreeOnEveryForm) {
    std::mt19937_64 rng(2024);
    for (const Form& f : forms()) {
        const sve_row* r = row_of(f.name);
        ASSERT_NE(r, nullptr) << f.name;
        int failures = 0;
        for (int iter = 0; iter < 300 && failures < 3; ++iter) {
            uint32_t w = r->bits | (static_cast<uint32_t>(rng()) & ~r->mask);
            // Aliasing is common in real code: often make all registers one.
            if (iter % 5 == 0) {
                unsigned reg = rng() % 32;
                uint32_t regs = reg | reg << 5 | reg << 16;
                w = (w & ~(0x1fu | 0x1fu << 5 | 0x1fu << 16)) | regs;
                w = r->bits | (w & ~r->mask);
            }
            auto s = noisy_state(static_cast<uint32_t>(rng()));
            fill(*s, rng);
            cpu_state before = *s;
            VecVal want;
            bool ok = f.expect(Frame(before), w, &want);
            aarch64_decode_rc rc = f.handler(s.get(), w);
            std::string where = std::string(f.name) + " word " + std::to_string(w);
            if (!ok) {
                EXPECT_EQ(rc, DECODE_UNKNOWN) << where;
                continue;
            }
            EXPECT_EQ(rc, DECODE_OK) << where;
            unsigned zd = w & 31;
            if (std::memcmp(s->z[zd], want.b, 64) != 0) {
                ++failures;
                ADD_FAILURE() << where << ": destination differs from the reference operation";
            }
            for (unsigned z = 0; z < 32; ++z)
                if (z != zd) {
                    EXPECT_EQ(std::memcmp(s->z[z], before.z[z], 64), 0) << where << " wrote z" << z;
                }
            EXPECT_EQ(std::memcmp(s->p, before.p, sizeof before.p), 0) << where;
        }
    }
}

}  // namespace
