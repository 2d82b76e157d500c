// The memory family's stub kernels: the list's size and content, and what
// each stub does when called.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "gather/gather_test_util.h"
#include "sve/memory/stubs.h"

#define SVE_STUB(name, shape) SVE_STUB_DECLARE(name, SVE_STUB_SHAPE_##shape)
#include "sve/memory/stubs.def"
#undef SVE_STUB

namespace gather_test {
namespace {

#define ARGS_ZPRI aarch64_z_reg{}, aarch64_p_reg{}, aarch64_i_rsp_reg{}, 0
#define ARGS_ZPRR aarch64_z_reg{}, aarch64_p_reg{}, aarch64_i_rsp_reg{}, aarch64_i_reg{}
#define ARGS_ZPZI aarch64_z_reg{}, aarch64_p_reg{}, aarch64_z_reg{}, 0u
#define ARGS_ZPZR aarch64_z_reg{}, aarch64_p_reg{}, aarch64_z_reg{}, aarch64_i_rsp_reg{}
#define ARGS_ZPRZ aarch64_z_reg{}, aarch64_p_reg{}, aarch64_i_rsp_reg{}, aarch64_z_reg{}
#define ARGS_IPRI 0u, aarch64_p_reg{}, aarch64_i_rsp_reg{}, 0
#define ARGS_IPRR 0u, aarch64_p_reg{}, aarch64_i_rsp_reg{}, aarch64_i_reg{}
#define ARGS_IPZI 0u, aarch64_p_reg{}, aarch64_z_reg{}, 0u
#define ARGS_IPRZ 0u, aarch64_p_reg{}, aarch64_i_rsp_reg{}, aarch64_z_reg{}

struct Stub {
    std::string name;
    aarch64_decode_rc (*call)(cpu_state*);
};
const Stub kStubs[] = {
#define SVE_STUB(name, shape) {#name, [](cpu_state* s) { return name(s, ARGS_##shape); }},
#include "sve/memory/stubs.def"
#undef SVE_STUB
};

bool starts(const std::string& s, const char* p) { return s.rfind(p, 0) == 0; }

TEST(Stubs, TheMemoryListHas148NamesInItsFiveGroups) {
    std::set<std::string> names;
    unsigned ldff1 = 0, ld1 = 0, st1 = 0, ld1rq = 0, prf = 0;
    for (const Stub& s : kStubs) {
        names.insert(s.name);
        if (starts(s.name, "sve_ldff1")) ++ldff1;
        else if (starts(s.name, "sve_ld1rq")) ++ld1rq;
        else if (starts(s.name, "sve_ld1")) ++ld1;
        else if (starts(s.name, "sve_st1")) ++st1;
        else if (starts(s.name, "sve_prf")) ++prf;
    }
    EXPECT_EQ(names.size(), 148u);
    EXPECT_EQ(ldff1, 73u);
    EXPECT_EQ(ld1, 27u);
    EXPECT_EQ(st1, 16u);
    EXPECT_EQ(ld1rq, 8u);
    EXPECT_EQ(prf, 24u);
}

// The kernel name of a gather or scatter form: sve_, ld1, ldff1 or st1, s
// for sign extension, the memory size letter, _s or _d when the element is
// wider than memory, and the suffix of the addressing form.
std::string kernel_name(const GForm& f) {
    std::string n = f.op == Op::Load ? "sve_ld1" : f.op == Op::LoadFF ? "sve_ldff1" : "sve_st1";
    if (f.sign) n += "s";
    n += "?bh?w???d"[f.m];
    if (f.c != f.m) n += f.c == 8 ? "_d" : "_s";
    const bool wide = f.c == 8;
    switch (f.form) {
        case Form::VI: return n + "_zpzi";
        case Form::VS: return n + (wide ? "_zpzr" : "_uxtw_zpzr");
        case Form::SV: return n + (wide ? "_scaled_zprz" : "_uxtw_scaled_zprz");
        case Form::XVS: return n + "_sxtw_zpzr";
        case Form::XSV: return n + "_sxtw_scaled_zprz";
        case Form::YVS: return n + "_uxtw_zpzr";
        case Form::YSV: return n + "_uxtw_scaled_zprz";
    }
    return n;
}

// Exactly the kernel names of the forms that take the reference route are
// stubs: none of a form with a working kernel.
TEST(Stubs, GatherStubsAreTheKernelNamesOfTheReferenceRouteForms) {
    std::set<std::string> stubs;
    for (const Stub& s : kStubs) stubs.insert(s.name);
    std::set<std::string> reference_forms;
    for (const GForm& f : kForms) {
        const std::string k = kernel_name(f);
        EXPECT_EQ(stubs.count(k), f.kernel ? 0u : 1u) << f.name << " " << k;
        if (!f.kernel) reference_forms.insert(k);
    }
    EXPECT_EQ(reference_forms.size(), 27u + 64u + 16u);
    EXPECT_TRUE(stubs.count("sve_ldff1b_d_zpzi"));
    EXPECT_TRUE(stubs.count("sve_ld1sh_d_uxtw_zpzr"));   // VecS64Load2YVSZ
    EXPECT_FALSE(stubs.count("sve_ld1sh_d_uxtw_scaled_zprz"));  // VecS64Load2YSVZ has its kernel
    EXPECT_FALSE(stubs.count("sve_st1w_sxtw_zpzr"));  // VecU32Store4XVSZ has its kernel
    // The contiguous first-fault kernels are real; the other nine are stubs.
    for (const char* real : {"sve_ldff1b_scaled_zprr", "sve_ldff1b_h_scaled_zprr", "sve_ldff1b_s_scaled_zprr",
                             "sve_ldff1b_d_scaled_zprr", "sve_ldff1w_scaled_zprr", "sve_ldff1w_d_scaled_zprr",
                             "sve_ldff1d_scaled_zprr"})
        EXPECT_FALSE(stubs.count(real)) << real;
    for (const char* stub : {"sve_ldff1h_scaled_zprr", "sve_ldff1h_s_scaled_zprr", "sve_ldff1h_d_scaled_zprr",
                             "sve_ldff1sb_h_scaled_zprr", "sve_ldff1sb_s_scaled_zprr", "sve_ldff1sb_d_scaled_zprr",
                             "sve_ldff1sh_s_scaled_zprr", "sve_ldff1sh_d_scaled_zprr", "sve_ldff1sw_d_scaled_zprr"})
        EXPECT_TRUE(stubs.count(stub)) << stub;
}

TEST(Stubs, HandWorkedMessage) {
    SharedState st;
    cpu_state* s = st.s;
    s->pc = reinterpret_cast<uint32_t*>(uintptr_t(0x4a3b0));
    s->instruction = 0xc420e691;
    testing::internal::CaptureStderr();
    EXPECT_EQ(sve_ldff1b_d_zpzi(s, aarch64_z_reg{17, 3, 5, 5}, aarch64_p_reg{5, 5, 7, 7}, aarch64_z_reg{20, 3, 5, 5}, 0),
              DECODE_UNKNOWN);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unimplemented instruction: [  4a3b0:\t c420e691\t sve_ldff1b_d_zpzi  ]\n");
}

// Every stub prints one line with the pc, the word and its own name, returns
// 2, and changes nothing in the register file.
TEST(Stubs, EveryStubReportsItselfAndRefuses) {
    SharedState st;
    cpu_state* s = st.s;
    s->pc = reinterpret_cast<uint32_t*>(uintptr_t(0x7f0012345678));
    s->instruction = 0x0badc0de;
    cpu_state before = *s;
    for (const Stub& stub : kStubs) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(stub.call(s), DECODE_UNKNOWN) << stub.name;
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "Unimplemented instruction: [  7f0012345678:\t 0badc0de\t " + stub.name + "  ]\n");
        ASSERT_EQ(std::memcmp(s, &before, sizeof before), 0) << stub.name;
    }
}

}  // namespace
}  // namespace gather_test
