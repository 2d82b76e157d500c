// The opcode handlers: words from the assembler (aarch64-linux-gnu-as
// -march=armv8.2-a+sve, read back with objdump), cut into the operands the
// assembly text names. Each handler must do exactly what a direct call of its
// kernel or reference operation with those operands does, on a register file
// full of noise, and is_sve must find it.
#include <functional>
#include <regex>
#include <set>

#include "perm_test_util.h"
#include "sve/core/decode.h"
#include "sve/core/handler_util.h"

namespace {
using namespace permtest;

typedef std::function<void(cpu_state*)> Call;

struct HandlerCase {
    uint32_t word;
    const char* text;
    sve_handler handler;
    bool kernel_route;  // kernel-route handlers store the word first
    Call expect;
};

#define H(name) static_cast<sve_handler>(&name)
#define REF(body)                 \
    [](cpu_state* s) {            \
        RefFrame f(s);            \
        body;                     \
        f.finish();               \
    }
#define KER(body) [](cpu_state* s) { body; }

uint64_t low64(RefFrame& f, unsigned n) { return el(f.zv(n).b, 8, 0); }

const HandlerCase kCases[] = {
    {0x05e36041, "zip1 z1.d, z2.d, z3.d", H(VecU64Zip1VV), true, KER(sve_zip1_zzz(s, zreg(1, 3), zreg(2, 3), zreg(3, 3)))},
    {0x053e641f, "zip2 z31.b, z0.b, z30.b", H(VecU8Zip2VV), true, KER(sve_zip2_zzz(s, zreg(31, 0), zreg(0, 0), zreg(30, 0)))},
    {0x056668a4, "uzp1 z4.h, z5.h, z6.h", H(VecU16Uzp1VV), true, KER(sve_uzp1_zzz(s, zreg(4, 1), zreg(5, 1), zreg(6, 1)))},
    {0x05a96d07, "uzp2 z7.s, z8.s, z9.s", H(VecU32Uzp2VV), true, KER(sve_uzp2_zzz(s, zreg(7, 2), zreg(8, 2), zreg(9, 2)))},
    {0x052c716a, "trn1 z10.b, z11.b, z12.b", H(VecU8Trn1VV), false, REF(f.put_z(10, VecU8Trn1VV(f.zv(11), f.zv(12), f.c())))},
    {0x05ef75cd, "trn2 z13.d, z14.d, z15.d", H(VecU64Trn2VV), true, KER(sve_trn2_zzz(s, zreg(13, 3), zreg(14, 3), zreg(15, 3)))},
    {0x05634041, "zip1 p1.h, p2.h, p3.h", H(VecP16Zip1PP), true, KER(sve_zip1_ppp(s, preg(1, 1), preg(2, 1), preg(3, 1)))},
    {0x05ad45cf, "zip2 p15.s, p14.s, p13.s", H(VecP32Zip2PP), true, KER(sve_zip2_ppp(s, preg(15, 2), preg(14, 2), preg(13, 2)))},
    {0x052648a4, "uzp1 p4.b, p5.b, p6.b", H(VecP8Uzp1PP), true, KER(sve_uzp1_ppp(s, preg(4, 0), preg(5, 0), preg(6, 0)))},
    {0x05694d07, "uzp2 p7.h, p8.h, p9.h", H(VecP16Uzp2PP), false, REF(f.put_p(7, VecP16Uzp2PP(f.pred(8), f.pred(9), f.c())))},
    {0x05ac516a, "trn1 p10.s, p11.s, p12.s", H(VecP32Trn1PP), false, REF(f.put_p(10, VecP32Trn1PP(f.pred(11), f.pred(12), f.c())))},
    {0x05e25420, "trn2 p0.d, p1.d, p2.d", H(VecP64Trn2PP), false, REF(f.put_p(0, VecP64Trn2PP(f.pred(1), f.pred(2), f.c())))},
    {0x05783a30, "rev z16.h, z17.h", H(VecU16ReverseV), true, KER(sve_rev_zz(s, zreg(16, 1), zreg(17, 1)))},
    {0x05b44083, "rev p3.s, p4.s", H(VecP32ReverseP), true, KER(sve_rev_pp(s, preg(3, 2), preg(4, 2)))},
    {0x05b43272, "tbl z18.s, {z19.s}, z20.s", H(VecU32TblVV), true, KER(sve_tbl_zzz(s, zreg(18, 2), zreg(19, 2), zreg(20, 2)))},
    {0x053902d5, "ext z21.b, z21.b, z22.b, #200", H(VecU8SlideVI), true, KER(sve_ext_zzi(s, zreg_dst(21, 0), zreg(22, 0), 200))},
    {0x052416d5, "ext z21.b, z21.b, z22.b, #37", H(VecU8SlideVI), true, KER(sve_ext_zzi(s, zreg_dst(21, 0), zreg(22, 0), 37))},
    {0x056c9b17, "splice z23.h, p6, z23.h, z24.h", H(VecU16SpliceVV), false, REF(f.put_z(23, VecU16SpliceVV(f.pred(6), f.zv(23), f.zv(24), f.c())))},
    {0x05e19f59, "compact z25.d, p7, z26.d", H(VecU64CompressVV), false, REF(f.put_z(25, VecU64CompressVV(f.pred(7), f.zv(26), f.c())))},
    {0x05713b9b, "sunpkhi z27.h, z28.b", H(VecS16UnpackHiV), false, REF(f.put_z(27, VecS16UnpackHiV(f.zv(28), f.c())))},
    {0x05f03bdd, "sunpklo z29.d, z30.s", H(VecS64UnpackLoV), true, KER(sve_sunpklo_s2d_zz(s, zreg(29, 3), zreg(30, 2)))},
    {0x05b33841, "uunpkhi z1.s, z2.h", H(VecU32UnpackHiV), true, KER(sve_uunpkhi_h2s_zz(s, zreg(1, 2), zreg(2, 1)))},
    {0x05723883, "uunpklo z3.h, z4.b", H(VecU16UnpackLoV), true, KER(sve_uunpklo_b2h_zz(s, zreg(3, 1), zreg(4, 0)))},
    {0x053040c5, "punpklo p5.h, p6.b", H(VecPUnpackLoP), true, KER(sve_punpklo_pp(s, preg(5, 1), preg(6, 0)))},
    {0x05f0a8c5, "clasta x5, p2, x5, z6.d", H(VecU64CondXASV), false, REF(f.put_x(5, VecU64CondXASV(f.pred(2), f.xr(5), f.zv(6), f.c())))},
    {0x0571ad07, "clastb w7, p3, w7, z8.h", H(VecU16CondXBSV), true, KER(sve_clastb_rpz(s, ireg_dst(7, 1), preg(3, QUAL_PLAIN), zreg(8, 1)))},
    {0x05aa9149, "clasta s9, p4, s9, z10.s", H(VecF32CondXASV), false, REF(f.put_v(9, VecF32CondXASV(f.pred(4), low64(f, 9), f.zv(10), f.c()), 4))},
    {0x052b958b, "clastb b11, p5, b11, z12.b", H(VecB8CondXBSV), false, REF(f.put_v(11, VecB8CondXBSV(f.pred(5), low64(f, 11), f.zv(12), f.c()), 1))},
    {0x052899cd, "clasta z13.b, p6, z13.b, z14.b", H(VecU8VCondXAVV), false, REF(f.put_z(13, VecU8VCondXAVV(f.pred(6), f.zv(13), f.zv(14), f.c())))},
    {0x05e99e0f, "clastb z15.d, p7, z15.d, z16.d", H(VecU64VCondXBVV), false, REF(f.put_z(15, VecU64VCondXBVV(f.pred(7), f.zv(15), f.zv(16), f.c())))},
    {0x05a0a251, "lasta w17, p0, z18.s", H(VecU32LastAV), false, REF(f.put_x(17, VecU32LastAV(f.pred(0), f.zv(18), f.c())))},
    {0x05e1a693, "lastb x19, p1, z20.d", H(VecU64LastBV), true, KER(sve_lastb_rpz(s, ireg(19, 3), preg(1, QUAL_PLAIN), zreg(20, 3)))},
    {0x05e28ad5, "lasta d21, p2, z22.d", H(VecD64LastAV), false, REF(f.put_v(21, VecD64LastAV(f.pred(2), f.zv(22), f.c()), 8))},
    {0x05238f17, "lastb b23, p3, z24.b", H(VecB8LastBV), true, KER(sve_lastb_vpz(s, 23, preg(3, QUAL_PLAIN), zreg(24, 0)))},
    {0x05643b59, "insr z25.h, w26", H(VecU16InsertS), false, REF(f.put_z(25, VecU16InsertS(f.zv(25), f.xr(26), f.c())))},
    {0x05243bf5, "insr z21.b, wzr", H(VecU8InsertS), false, REF(f.put_z(21, VecU8InsertS(f.zv(21), 0, f.c())))},
    {0x05b43b9b, "insr z27.s, s28", H(VecF32InsertS), false, REF(f.put_z(27, VecF32InsertS(f.zv(27), low64(f, 28), f.c())))},
    {0x2538d01d, "mov z29.b, #-128", H(VecS8DupI), true, KER(sve_dup_zi(s, zreg(29, 0), -128))},
    {0x25f8ffde, "mov z30.d, #-512", H(VecS64DupI), true, KER(sve_dup_zi(s, zreg(30, 3), -512))},
    {0x051f4fe1, "mov z1.b, p15/m, #127", H(VecS8DupIM), true, KER(sve_cpy_zpi(s, zreg(1, 0), preg(15, QUAL_MERGE), 127))},
    {0x05933fe2, "mov z2.s, p3/z, #-256", H(VecS32DupIZ), true, KER(sve_cpy_zpi(s, zreg(2, 2), preg(3, QUAL_ZERO), -256))},
    {0x05557fe4, "mov z4.h, p5/m, #-256", H(VecS16DupIM), true, KER(sve_cpy_zpi(s, zreg(4, 1), preg(5, QUAL_MERGE), -256))},
    {0x05d70fe6, "mov z6.d, p7/z, #127", H(VecS64DupIZ), true, KER(sve_cpy_zpi(s, zreg(6, 3), preg(7, QUAL_ZERO), 127))},
    {0x05a08528, "mov z8.s, p1/m, s9", H(VecF32DupSM), true, KER(sve_cpy_zpv(s, zreg(8, 2), preg(1, QUAL_MERGE), 9))},
    {0x0563896a, "lastb h10, p2, z11.h", H(VecH16LastBV), true, KER(sve_lastb_vpz(s, 10, preg(2, QUAL_PLAIN), zreg(11, 1)))},
    {0x05eb8dac, "clastb d12, p3, d12, z13.d", H(VecD64CondXBSV), false, REF(f.put_v(12, VecD64CondXBSV(f.pred(3), low64(f, 12), f.zv(13), f.c()), 8))},
    {0x05603883, "mov z3.h, w4", H(VecU16DupS), true, KER(sve_dup_zr(s, zreg(3, 1), rspreg(4, 1)))},
    {0x05e03bfa, "mov z26.d, sp", H(VecU64DupS), true, KER(sve_dup_zr(s, zreg(26, 3), rspreg(31, 3)))},
    {0x05e8bbe5, "mov z5.d, p6/m, sp", H(VecU64DupSM), true, KER(sve_cpy_zpr(s, zreg(5, 3), preg(6, QUAL_MERGE), rspreg(31, 3)))},
    {0x05208107, "mov z7.b, p0/m, b8", H(VecB8DupSM), true, KER(sve_cpy_zpv(s, zreg(7, 0), preg(0, QUAL_MERGE), 8))},
    {0x05fc2149, "mov z9.s, z10.s[15]", H(VecU32ExtDupVI), true, KER(sve_dup_zzi(s, zreg(9, 2), zreg(10, 2), 15))},
    {0x05b0218b, "mov z11.q, z12.q[2]", H(VecU128ExtDupVI), true, KER(sve_dup_zzi(s, zreg(11, 4), zreg(12, 4), 2))},
    {0x05ff2020, "mov z0.b, z1.b[63]", H(VecU8ExtDupVI), true, KER(sve_dup_zzi(s, zreg(0, 0), zreg(1, 0), 63))},
    {0x05c3ffcd, "dupm z13.d, #0xfffffffffffffffe", H(VecS64DupMaskI), true,
     KER(sve_dupm_zi(s, zreg(13, 3), aarch64_sve_logical64_imm{0xfffffffffffffffeull}))},
    {0x05c004e2, "dupm z2.h, #0xff", H(VecS64DupMaskI), true, KER(sve_dupm_zi(s, zreg(2, 3), aarch64_sve_logical64_imm{0x00ff00ff00ff00ffull}))},
    {0x0421400e, "index z14.b, #0, #1", H(VecS8IndexII), true, KER(sve_index_zii(s, zreg(14, 0), 0, 1))},
    {0x042f4203, "index z3.b, #-16, #15", H(VecS8IndexII), true, KER(sve_index_zii(s, zreg(3, 0), -16, 15))},
    {0x04704a0f, "index z15.h, #-16, w16", H(VecS16IndexIS), true, KER(sve_index_zir(s, zreg(15, 1), -16, ireg(16, 1)))},
    {0x04af4651, "index z17.s, w18, #15", H(VecS32IndexSI), true, KER(sve_index_zri(s, zreg(17, 2), ireg(18, 2), 15))},
    {0x04ff4e93, "index z19.d, x20, xzr", H(VecS64IndexSS), true, KER(sve_index_zrr(s, zreg(19, 3), ireg(20, 3), ireg(31, 3)))},
    {0x04aa4fe9, "index z9.s, wzr, w10", H(VecS32IndexSS), true, KER(sve_index_zrr(s, zreg(9, 2), ireg(31, 2), ireg(10, 2)))},
};

TEST(Handlers, AgreeWithDirectCallsOfTheirOperandsAndAreFoundByIsSve) {
    for (const HandlerCase& c : kCases) {
        EXPECT_EQ(is_sve(c.word), c.handler) << c.text;
        for (uint32_t seed = 1; seed <= 3; ++seed) {
            auto got = noisy_state(seed), want = noisy_state(seed);
            ASSERT_EQ(c.handler(got.get(), c.word), DECODE_OK) << c.text;
            if (c.kernel_route) want->instruction = c.word;
            c.expect(want.get());
            EXPECT_EQ(0, std::memcmp(got.get(), want.get(), sizeof(cpu_state))) << c.text;
            // Through the decoder, as the emulation call goes.
            auto via = noisy_state(seed);
            ASSERT_EQ(is_sve(c.word)(via.get(), c.word), DECODE_OK) << c.text;
            EXPECT_EQ(0, std::memcmp(via.get(), want.get(), sizeof(cpu_state))) << c.text;
        }
    }
}

TEST(Handlers, ReservedDupmImmediatesAreRefused) {
    for (uint32_t word : {0x05c007e0u, 0x05c207e0u}) {  // N 0 with imms all ones; an all-ones element
        auto s = noisy_state();
        cpu_state before = *s;
        EXPECT_EQ(is_sve(word), H(VecS64DupMaskI));
        EXPECT_EQ(VecS64DupMaskI(s.get(), word), DECODE_UNKNOWN) << std::hex << word;
        EXPECT_EQ(0, std::memcmp(s->z, before.z, sizeof s->z));
    }
}

// Every row of the family has its handler linked, and each runs on words with
// random operand fields without refusing them.
TEST(Handlers, EveryRowOfTheFamilyIsImplemented) {
    std::regex family(
        "Vec(U8|U16|U32|U64|U128|S8|S16|S32|S64|P|P8|P16|P32|P64|B8|H16|F32|D64)"
        "(Zip1|Zip2|Uzp1|Uzp2|Trn1|Trn2)(VV|PP)|"
        "Vec\\w+(ReverseV|ReverseP|TblVV|SlideVI|SpliceVV|CompressVV|UnpackHiV|UnpackLoV|UnpackHiP|UnpackLoP|"
        "CondXASV|CondXBSV|VCondXAVV|VCondXBVV|LastAV|LastBV|InsertS|DupS|DupSM|ExtDupVI|DupMaskI|"
        "IndexII|IndexIS|IndexSI|IndexSS)|"
        "Vec(S8|S16|S32|S64)(DupI|DupIM|DupIZ)");
    std::mt19937 rng(11);
    std::set<std::string> seen;
    for (size_t i = 0; i < sve_row_count; ++i) {
        const sve_row& r = sve_rows[i];
        if (!std::regex_match(r.name, family)) continue;
        seen.insert(r.name);
        ASSERT_NE(r.handler, nullptr) << r.name;
        for (int k = 0; k < 16; ++k) {
            uint32_t w = r.bits | (rng() & ~r.mask);
            auto s = noisy_state(k);
            aarch64_decode_rc rc = r.handler(s.get(), w);
            if (std::string(r.name) != "VecS64DupMaskI") {
                EXPECT_EQ(rc, DECODE_OK) << r.name << " " << std::hex << w;
            }
        }
    }
    EXPECT_EQ(seen.size(), 175u);
}

}  // namespace
