// The gather and scatter names in the stub list are exactly the kernel names
// of the forms that take the reference route.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "gather/gather_test_util.h"
#include "sve/core/stub_kernels.h"

namespace gather_test {
namespace {

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
    for (size_t i = 0; i < sve_stub_kernel_count; ++i) stubs.insert(sve_stub_kernels[i].name);
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

}  // namespace
}  // namespace gather_test
