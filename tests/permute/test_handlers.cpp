// The opcode handlers, on words from the assembler (aarch64-linux-gnu-as
// -march=armv8.2-a+sve): register 31, SIMD and FP scalar destinations in a
// 64-byte register, reserved DUPM immediates and the route each row takes.
#include <regex>
#include <string>

#include "perm_test_util.h"

namespace {
using namespace permtest;

aarch64_decode_rc run(cpu_state* s, uint32_t word) {
    sve_handler h = is_sve(word);
    return h ? h(s, word) : DECODE_UNKNOWN;
}

// Register 31 is SP for DUP and CPY of a general register and reads 0 for
// INDEX and INSR; a result for it is dropped. SP and x20 hold noise.
TEST(Handlers, Register31) {
    struct {
        uint32_t word;
        const char* text;
        void (*check)(cpu_state&);
    } const cases[] = {
        {0x05e03bfa, "mov z26.d, sp", [](cpu_state& s) { EXPECT_EQ(el(s.z[26], 8, 7), s.x[31]); }},
        {0x05a03be3, "mov z3.s, wsp", [](cpu_state& s) { EXPECT_EQ(el(s.z[3], 4, 0), uint32_t(s.x[31])); }},
        {0x05e8bbe5, "mov z5.d, p6/m, sp", [](cpu_state& s) { EXPECT_EQ(el(s.z[5], 8, 3), s.x[31]); }},
        {0x04ff4e93, "index z19.d, x20, xzr", [](cpu_state& s) { EXPECT_EQ(el(s.z[19], 8, 7), s.x[20]); }},
        {0x04aa4fe9, "index z9.s, wzr, w10",
         [](cpu_state& s) { EXPECT_EQ(el(s.z[9], 4, 3), uint32_t(3 * s.x[10])); }},
        {0x05e43bf5, "insr z21.d, xzr", [](cpu_state& s) { EXPECT_EQ(el(s.z[21], 8, 0), 0u); }},
        {0x05e1a69f, "lastb xzr, p1, z20.d", nullptr},
        {0x0571ad1f, "clastb wzr, p3, wzr, z8.h", nullptr},
        {0x05f0a8df, "clasta xzr, p2, xzr, z6.d", nullptr},
        {0x05a0a25f, "lasta wzr, p0, z18.s", nullptr},
    };
    for (const auto& c : cases) {
        auto s = noisy_state();
        pset(s->p[6], 8, {3});
        const cpu_state before = *s;
        ASSERT_EQ(run(s.get(), c.word), DECODE_OK) << c.text;
        EXPECT_EQ(0, std::memcmp(s->x, before.x, sizeof s->x)) << c.text;
        if (c.check) c.check(*s);
    }
}

// The element goes to the low end of the register and the rest of its 64
// bytes are cleared, on either route.
TEST(Handlers, SimdScalarDestinationsClearTheRestOfTheRegister) {
    struct {
        uint32_t word;
        const char* text;
        unsigned bytes;
    } const cases[] = {
        {0x05238f17, "lastb b23, p3, z24.b", 1}, {0x05e28ad5, "lasta d21, p2, z22.d", 8},
        {0x05aa9149, "clasta s9, p4, s9, z10.s", 4}, {0x056b8dac, "clastb h12, p3, h12, z13.h", 2},
    };
    for (const auto& c : cases)
        for (uint32_t seed = 1; seed <= 2; ++seed) {  // some active element, and none
            auto s = noisy_state(seed);
            if (seed == 2) std::memset(s->p, 0, sizeof s->p);
            ASSERT_EQ(run(s.get(), c.word), DECODE_OK) << c.text;
            EXPECT_EQ(bytes(s->z[c.word & 31], c.bytes, 64 - c.bytes), std::vector<uint8_t>(64 - c.bytes, 0)) << c.text;
        }
}

// N 0 with imms all ones, and an all-ones element: no mask, the word refused
// and no register written.
TEST(Handlers, ReservedDupmImmediatesAreRefused) {
    for (uint32_t word : {0x05c007e0u, 0x05c207e0u}) {
        auto s = noisy_state();
        const cpu_state before = *s;
        EXPECT_EQ(run(s.get(), word), DECODE_UNKNOWN) << std::hex << word;
        EXPECT_EQ(0, std::memcmp(s->z, before.z, sizeof s->z));
    }
}

// Every row of the family takes the route the design gives it: a kernel-route
// handler stores its word in cpu_state.instruction, a reference-route one
// leaves it.
TEST(Handlers, EachRowTakesItsRoute) {
    const std::regex family(
        "Vec(U8|U16|U32|U64|U128|S8|S16|S32|S64|P|P8|P16|P32|P64|B8|H16|F32|D64)"
        "((Zip1|Zip2|Uzp1|Uzp2|Trn1|Trn2)(VV|PP)|ReverseV|ReverseP|TblVV|SlideVI|SpliceVV|CompressVV|UnpackHiV|"
        "UnpackLoV|UnpackHiP|UnpackLoP|CondXASV|CondXBSV|VCondXAVV|VCondXBVV|LastAV|LastBV|InsertS|DupS|DupSM|"
        "ExtDupVI|DupMaskI|IndexII|IndexIS|IndexSI|IndexSS)|Vec(S8|S16|S32|S64)(DupI|DupIM|DupIZ)");
    const std::regex reference(
        "Vec(P\\d+(Uzp2|Trn1|Trn2)PP|U\\d+Trn1VV|\\w+(Splice|Compress|VCondXA|VCondXB)VV|S(16|32)Unpack(Hi|Lo)V|"
        "\\w+CondXASV|(B8|H16|F32|D64)CondXBSV|\\w+LastAV|\\w+InsertS)");
    unsigned rows = 0, references = 0;
    for (size_t i = 0; i < sve_row_count; ++i) {
        const sve_row& r = sve_rows[i];
        if (!std::regex_match(r.name, family)) continue;
        const bool ref = std::regex_match(r.name, reference);
        ASSERT_NE(r.handler, nullptr) << r.name;
        auto s = noisy_state();
        s->instruction = 0xc0ffee;
        ASSERT_EQ(r.handler(s.get(), r.bits), DECODE_OK) << r.name;
        EXPECT_EQ(s->instruction, ref ? 0xc0ffeeu : r.bits) << r.name;
        ++rows;
        references += ref;
    }
    EXPECT_EQ(rows, 175u);
    EXPECT_EQ(references, 62u);
}

}  // namespace
