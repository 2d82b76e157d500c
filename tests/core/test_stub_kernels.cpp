// The stub kernels: the one list (its size by family, its names, no real
// kernel among them), what every stub does when called, and that no handler
// of the decode table reaches one. A name listed twice needs no test: its two
// bodies and C declarations clash, and stub_kernels.cpp does not compile.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "sve/core/decode.h"
#include "sve/core/stub_kernels.h"

namespace {

// Operands of every shape. Each record carries values a kernel would read, so
// that a stub which used them could show it; a stub must not.
constexpr aarch64_z_reg Z(uint32_t n) { return {n, 2, 5, 5}; }
constexpr aarch64_p_reg P(uint32_t n) { return {n, 4, 7, 7}; }
constexpr aarch64_i_reg R(uint32_t n) { return {n, 3, 4, 4}; }
constexpr aarch64_i_rsp_reg SP(uint32_t n) { return {n, 3}; }
#define ARGS_ZZ Z(1), Z(2)
#define ARGS_ZZZ Z(1), Z(2), Z(3)
#define ARGS_ZZI Z(1), Z(2), 7u
#define ARGS_ZZZI Z(1), Z(2), Z(3), 1u
#define ARGS_ZZZII Z(1), Z(2), Z(3), 1u, 3u
#define ARGS_ZPZ Z(1), P(2), Z(3)
#define ARGS_ZPI Z(1), P(2), 3u
#define ARGS_ZPI_FP Z(1), P(2), aarch64_sve_fp_arith_imm{1}
#define ARGS_ZPI_FPDUP Z(1), P(2), aarch64_sve_fp_dup_imm{0x3c00, 0x3f800000, 0x3ff0000000000000}
#define ARGS_ZPZZI Z(1), P(2), Z(3), Z(4), 2u
#define ARGS_ZI Z(1), 200u
#define ARGS_ZI_INT Z(1), -100
#define ARGS_ZII Z(1), 31u, 16u
#define ARGS_ZP Z(1), P(2)
#define ARGS_ZR Z(1), R(3)
#define ARGS_ZV Z(1), 4u
#define ARGS_RII R(3), 31u, 1u
#define ARGS_RP R(3), P(2)
#define ARGS_RPZ R(3), P(2), Z(1)
#define ARGS_RR R(3), R(4)
#define ARGS_VPZ 5u, P(2), Z(1)
#define ARGS_PI P(1), 31u
#define ARGS_PP P(1), P(2)
#define ARGS_PPP P(1), P(2), P(3)
#define ARGS_PPPP P(1), P(2), P(3), P(4)
#define ARGS_PPZ P(1), P(2), Z(3)
#define ARGS_PPZI P(1), P(2), Z(3), 100u
#define ARGS_PPZI_INT P(1), P(2), Z(3), -16
#define ARGS_PPZZ P(1), P(2), Z(3), Z(4)
#define ARGS_PRR P(1), R(3), R(4)
#define ARGS_ZPRI Z(1), P(2), SP(9), -8
#define ARGS_ZPRR Z(1), P(2), SP(9), R(10)
#define ARGS_ZPZI Z(1), P(2), Z(3), 5u
#define ARGS_ZPZR Z(1), P(2), Z(3), SP(9)
#define ARGS_ZPRZ Z(1), P(2), SP(9), Z(3)
#define ARGS_IPRI 3u, P(2), SP(9), -8
#define ARGS_IPRR 3u, P(2), SP(9), R(10)
#define ARGS_IPZI 3u, P(2), Z(3), 5u
#define ARGS_IPRZ 3u, P(2), SP(9), Z(3)

// Every stub called through its exported name, in the list's order.
struct Call {
    const char* name;
    aarch64_decode_rc (*call)(cpu_state*);
};
const Call kCalls[] = {
#define SVE_STUB(family, name, shape) {#name, [](cpu_state* s) { return name(s, ARGS_##shape); }},
#include "sve/core/stub_kernels.def"
#undef SVE_STUB
};

bool starts(const std::string& s, const char* p) { return s.rfind(p, 0) == 0; }

std::string hex(uint64_t v, unsigned min_digits = 1) {
    std::string out;
    for (; v || out.size() < min_digits; v >>= 4) out.insert(out.begin(), "0123456789abcdef"[v & 15]);
    return out;
}

TEST(StubKernels, TheListHas339NamesInItsFamilies) {
    ASSERT_EQ(sve_stub_kernel_count, 339u);
    ASSERT_EQ(sizeof kCalls / sizeof kCalls[0], sve_stub_kernel_count);
    std::map<std::string, unsigned> family;
    std::map<std::string, unsigned> memory;
    for (size_t i = 0; i < sve_stub_kernel_count; ++i) {
        const sve_stub_kernel& k = sve_stub_kernels[i];
        ++family[k.family];
        if (std::string(k.family) != "MEMORY") continue;
        const std::string n = k.name;
        ++memory[starts(n, "sve_ldff1")   ? "ldff1"
                 : starts(n, "sve_ld1rq") ? "ld1rq"
                 : starts(n, "sve_ld1")   ? "ld1"
                 : starts(n, "sve_st1")   ? "st1"
                 : starts(n, "sve_prf")   ? "prf"
                                          : n];
    }
    const std::map<std::string, unsigned> want_family = {
        {"MEMORY", 148}, {"ARITH", 14},   {"PREDICATE", 12}, {"SHIFT", 16}, {"COMPARE", 20},
        {"SATCOUNT", 44}, {"PERMUTE", 17}, {"REDUCE", 16},    {"FP", 52},
    };
    EXPECT_EQ(family, want_family);
    const std::map<std::string, unsigned> want_memory = {
        {"ldff1", 73}, {"ld1", 27}, {"st1", 16}, {"ld1rq", 8}, {"prf", 24}};
    EXPECT_EQ(memory, want_memory);
}

// sve_, the mnemonic, optional parts (_d, _sxtw, _scaled, _wide, _b2s, ...),
// then one letter for each operand, which the shape's name repeats.
TEST(StubKernels, NamesFollowTheKernelGrammarAndMatchTheirShape) {
    const std::regex grammar("sve_[a-z0-9]+(_[a-z0-9]+)*_([zprvi]+)");
    for (size_t i = 0; i < sve_stub_kernel_count; ++i) {
        const sve_stub_kernel& k = sve_stub_kernels[i];
        std::cmatch m;
        ASSERT_TRUE(std::regex_match(k.name, m, grammar)) << k.name;
        std::string letters = k.shape;
        letters = letters.substr(0, letters.find('_'));
        for (char& c : letters) c = static_cast<char>(c - 'A' + 'a');
        EXPECT_EQ(m[2].str(), letters) << k.name << " has shape " << k.shape;
    }
}

// A stub is weak: a real kernel of the same name wins the link. Its name must
// then leave the list, or the list no longer says which kernels are missing.
TEST(StubKernels, NoListedNameIsARealKernel) {
    for (size_t i = 0; i < sve_stub_kernel_count; ++i) {
        const sve_stub_kernel& k = sve_stub_kernels[i];
        EXPECT_EQ(k.symbol, k.body) << k.name << " is a real kernel: take it out of stub_kernels.def";
    }
}

TEST(StubKernels, HandWorkedLines) {
    cpu_state s{};
    s.pc = reinterpret_cast<uint32_t*>(uintptr_t(0x4a3b0));
    s.instruction = 0xc420e691;
    testing::internal::CaptureStderr();
    EXPECT_EQ(sve_ldff1b_d_zpzi(&s, Z(17), P(5), Z(20), 0), DECODE_UNKNOWN);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unimplemented instruction: [  4a3b0:\t c420e691\t sve_ldff1b_d_zpzi  ]\n");
    // A word with leading zero digits keeps all eight.
    s.pc = reinterpret_cast<uint32_t*>(uintptr_t(0xffff80001000));
    s.instruction = 0x05243800;
    testing::internal::CaptureStderr();
    EXPECT_EQ(sve_insr_zr(&s, Z(0), R(1)), DECODE_UNKNOWN);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unimplemented instruction: [  ffff80001000:\t 05243800\t sve_insr_zr  ]\n");
}

// Each stub prints one line with the pc, the stored word and its own name,
// returns 2, and leaves every byte of the register file as it was.
TEST(StubKernels, EveryStubReportsItselfAndChangesNothing) {
    std::mt19937_64 rng(7);
    for (size_t i = 0; i < sve_stub_kernel_count; ++i) {
        const sve_stub_kernel& k = sve_stub_kernels[i];
        ASSERT_STREQ(kCalls[i].name, k.name);
        if (k.symbol != k.body) continue;  // a real kernel; NoListedNameIsARealKernel names it
        cpu_state s;
        for (uint8_t* b = reinterpret_cast<uint8_t*>(&s); b < reinterpret_cast<uint8_t*>(&s + 1); ++b)
            *b = static_cast<uint8_t>(rng());
        const uint64_t pc = 0x400000 + 4 * (rng() % 0x100000) + (i % 3 ? 0 : 0x7f0000000000);
        s.pc = reinterpret_cast<uint32_t*>(uintptr_t(pc));
        s.instruction = i % 4 ? uint32_t(rng()) : uint32_t(rng()) >> 12;  // some words with leading zeros
        cpu_state before;
        std::memcpy(&before, &s, sizeof s);
        testing::internal::CaptureStderr();
        const aarch64_decode_rc rc = kCalls[i].call(&s);
        const std::string line = testing::internal::GetCapturedStderr();
        EXPECT_EQ(rc, DECODE_UNKNOWN) << k.name;
        EXPECT_EQ(line, "Unimplemented instruction: [  " + hex(pc) + ":\t " + hex(s.instruction, 8) + "\t " +
                            k.name + "  ]\n");
        EXPECT_EQ(std::memcmp(&s, &before, sizeof s), 0) << k.name << " changed the register file";
    }
}

// The reserved encodings of the logical immediate (N 0 with imms 11111x, or
// an element of all ones) have no mask: their handlers refuse the word with 2.
// Nothing else in the table may return anything but 0.
bool reserved_logical_immediate(const char* handler, uint32_t w) {
    static const std::set<std::string> logical = {"VecU64AndVIX", "VecU64OrVIX", "VecU64XorVIX", "VecS64DupMaskI"};
    if (!logical.count(handler)) return false;
    const unsigned n = w >> 17 & 1, imms = w >> 5 & 63;
    unsigned esize = n ? 64 : 0;
    for (unsigned e = 32; !esize && e >= 2; e /= 2)
        if (!(imms & e)) esize = e;
    return esize == 0 || (imms & (esize - 1)) == esize - 1;
}

// Every implemented row, on words with its fixed bits and operand bits all
// clear, all set, and random. Predicates and FFR are all inactive, so the
// memory forms touch nothing; every base register points into a buffer that
// the unpredicated LDR and STR reach at any offset. A handler that called a
// stub would return 2 and print the stub's line.
TEST(StubKernels, NoHandlerReachesAStub) {
    std::vector<uint8_t> memory(1 << 17);
    const uint64_t middle = reinterpret_cast<uint64_t>(memory.data() + memory.size() / 2);
    cpu_state start{};
    for (uint64_t& x : start.x) x = middle;
    for (auto& z : start.z)
        for (unsigned lane = 0; lane < 8; ++lane) std::memcpy(z + 8 * lane, &middle, 8);
    start.pc = reinterpret_cast<uint32_t*>(uintptr_t(0x410000));

    std::mt19937 rng(1483);
    unsigned rows = 0, reserved = 0;
    testing::internal::CaptureStderr();
    for (size_t r = 0; r < sve_row_count; ++r) {
        const sve_row& row = sve_rows[r];
        if (!row.handler) continue;
        ++rows;
        std::vector<uint32_t> words = {row.bits, row.bits | ~row.mask};
        for (int k = 0; k < 16; ++k) words.push_back(row.bits | (rng() & ~row.mask));
        for (uint32_t w : words) {
            cpu_state s = start;
            const bool refused = reserved_logical_immediate(row.name, w);
            reserved += refused;
            EXPECT_EQ(row.handler(&s, w), refused ? DECODE_UNKNOWN : DECODE_OK) << row.name << " " << std::hex << w;
        }
    }
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err.find("Unimplemented instruction"), std::string::npos) << err.substr(0, 2000);
    EXPECT_GT(rows, 1000u);
    EXPECT_GE(reserved, 4u);  // at least the all-ones word of each logical-immediate row
}

}  // namespace
