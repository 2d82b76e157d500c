// The gather, scatter and contiguous first-fault names in the stub list are
// exactly the kernel names of the rows that take the reference route. The
// route is seen, not listed: a kernel stores the instruction word in the
// register file, a reference operation does not.
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <vector>

#include "memory/mem_test_util.h"
#include "sve/core/decode.h"
#include "sve/core/stub_kernels.h"

namespace {

// Vec, U or S, element bits, the operation, memory bytes, the addressing form.
const std::regex kGather("Vec([US])(32|64)(Load|LoadFF|Store)([1248])(VI|VS|SV|XVS|XSV|YVS|YSV)Z");
const std::regex kContiguousFF("Vec([US])(8|16|32|64)CLoadFF([1248])LSSZ");

// sve_, ld1, ldff1 or st1, s for sign extension, the memory size letter, the
// element size letter when it differs, and the addressing form's suffix.
std::string kernel_name(const std::string& row) {
    std::smatch m;
    const bool gather = std::regex_match(row, m, kGather);
    if (!gather && !std::regex_match(row, m, kContiguousFF)) return "";
    const std::string op = gather ? m[3].str() : "LoadFF";
    const unsigned c = std::stoi(m[2]) / 8, mem = std::stoi(gather ? m[4] : m[3]);
    std::string n = op == "Load" ? "sve_ld1" : op == "LoadFF" ? "sve_ldff1" : "sve_st1";
    if (m[1] == "S") n += "s";
    n += "?bh?w???d"[mem];
    if (c != mem) n += std::string("_") + "?bh?s???d"[c];
    if (!gather) return n + "_scaled_zprr";
    const std::string form = m[5];
    const std::string wide = c == 8 ? "" : "_uxtw";
    if (form == "VI") return n + "_zpzi";
    if (form == "VS") return n + wide + "_zpzr";
    if (form == "SV") return n + wide + "_scaled_zprz";
    if (form == "XVS") return n + "_sxtw_zpzr";
    if (form == "XSV") return n + "_sxtw_scaled_zprz";
    if (form == "YVS") return n + "_uxtw_zpzr";
    return n + "_uxtw_scaled_zprz";
}

TEST(Stubs, TheMemoryStubsAreTheKernelNamesOfTheReferenceRouteRows) {
    std::set<std::string> stubs;
    for (size_t i = 0; i < sve_stub_kernel_count; ++i) {
        const std::string n = sve_stub_kernels[i].name;
        if ((n.rfind("sve_ld1", 0) == 0 && n.rfind("sve_ld1rq", 0) != 0) || n.rfind("sve_ldff1", 0) == 0 ||
            n.rfind("sve_st1", 0) == 0)
            stubs.insert(n);
    }
    std::set<std::string> reference, kernels;
    std::vector<uint8_t> buffer(4096);
    for (size_t r = 0; r < sve_row_count; ++r) {
        const sve_row& row = sve_rows[r];
        const std::string name = kernel_name(row.name);
        if (!row.handler || name.empty()) continue;
        cpu_state s{};  // every predicate all false: nothing is read or written
        for (uint64_t& x : s.x) x = reinterpret_cast<uint64_t>(buffer.data() + 2048);
        s.instruction = 0;
        ASSERT_EQ(row.handler(&s, row.bits), DECODE_OK) << row.name;
        (s.instruction == row.bits ? kernels : reference).insert(name);
    }
    EXPECT_EQ(reference, stubs);
    for (const std::string& k : kernels) EXPECT_EQ(stubs.count(k), 0u) << k;
    EXPECT_EQ(kernels.size() + reference.size(), 64u + 64u + 38u + 16u);
    EXPECT_TRUE(kernels.count("sve_ld1sh_d_uxtw_scaled_zprz"));
    EXPECT_TRUE(reference.count("sve_ld1sh_d_uxtw_zpzr"));
}

}  // namespace
