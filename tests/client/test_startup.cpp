// Start-up and shutdown as the user sees them: the argument scan, the
// assertion lines, the totals at exit, the per-thread cpu_state, the exports.
#include <dlfcn.h>

#include "harness.h"

namespace client_test {
namespace {

class StartupTest : public ::testing::Test {
protected:
    void SetUp() override {
        drstub::reset();
        sve_stats_reset();
        drstub::set_main_module(main_code, main_code + 256, kExePath);
    }
};

TEST_F(StartupTest, TheArgumentScanAcceptsOnlyWhatEndsAtTheFirstDoubleDash) {
    const struct {
        std::vector<const char*> args;
        const char* err;  // nullptr: accepted
    } cases[] = {
        {{}, nullptr},
        {{"--"}, nullptr},
        {{"--", "-foo"}, nullptr},
        {{"--", "--", "anything", "-x"}, nullptr},
        {{"-foo"}, "Usage error: Unknown option: -foo\n"},
        {{"foo", "--"}, "Usage error: Unknown option: foo\n"},
        {{"-x", "-y"}, "Usage error: Unknown option: -x\n"},
        {{"---"}, "Usage error: Unknown option: ---\n"},
    };
    for (const auto& c : cases) {
        const std::string shown = c.args.empty() ? "(none)" : c.args[0];
        ChildEnd end = run_in_child([&] {
            client_main(c.args);
            // Started: the block event is in place, for 512-bit vectors.
            _exit(drstub::app2app_callbacks() == 1 && drstub::vector_length() == 512 ? 0 : 3);
        });
        EXPECT_TRUE(end.exited) << shown;
        EXPECT_EQ(end.status, c.err ? drstub::kAbortExitCode : 0) << shown;
        EXPECT_EQ(end.err, c.err ? c.err : "") << shown;
    }
}

TEST_F(StartupTest, EachFailureIsAnAssertionAtItsOwnLine) {
    using drstub::faults;
    const struct {
        const char* what;
        int line;
        const char* condition;
        bool totals_first;  // failures at exit come after the totals
        void (*body)();
    } cases[] = {
        {"drmgr_init", 131, "false", false, [] { faults().drmgr_init = true, client_main(); }},
        {"drreg_init", 131, "false", false, [] { faults().drreg_init = true, client_main(); }},
        {"bb registration", 148, "false", false, [] { faults().register_bb_app2app = true, client_main(); }},
        {"thread ending without state", 178, "data != __null", false,
         [] {
             void* early = drstub::thread_init();  // started before the client registered its events
             client_main();
             drstub::thread_exit(early);
         }},
        {"unregistration", 204, "false", true,
         [] { client_main(), faults().unregister_bb_app2app = true, drstub::process_exit(); }},
        {"drreg_exit", 204, "false", true, [] { client_main(), faults().drreg_exit = true, drstub::process_exit(); }},
        {"stolen register not X28", 270, "dr_get_stolen_reg() == DR_REG_X28", false,
         [] {
             client_main();
             void* t = drstub::thread_init();
             drstub::set_stolen_reg(DR_REG_X27);
             main_code[0] = kAddZ;
             drstub::run_app2app(t, drstub::make_block(t, main_code, 1));
         }},
    };
    for (const auto& c : cases) {
        ChildEnd end = run_in_child([&] { c.body(), _exit(0); });
        EXPECT_TRUE(end.exited) << c.what;
        EXPECT_EQ(end.status, drstub::kAbortExitCode) << c.what;
        EXPECT_EQ(end.err, (c.totals_first ? totals(0, 0) : "") + assert_line(c.line, c.condition)) << c.what;
    }
}

TEST_F(StartupTest, TotalsAtExitNameTheMainModuleByItsBaseName) {
    for (const char* path : {kExePath, "relative/dir/a.out", "plain"}) {
        drstub::reset();
        drstub::set_main_module(main_code, main_code + 256, path);
        client_main();
        const std::string name = strrchr(path, '/') ? strrchr(path, '/') + 1 : path;
        EXPECT_EQ(exit_text(), name + ": 0 SVE instructions executed\n" + name +
                                  ": 0 Non-SVE AArch64 instructions executed\n");
        EXPECT_EQ(drstub::module_records(), 0u) << "the main module's record is given back";
        EXPECT_TRUE(drstub::errors().empty());
    }
}

TEST_F(StartupTest, EachThreadGetsItsOwnClearedCpuStateFreedAtItsEnd) {
    client_main();
    void* a = drstub::thread_init();
    void* b = drstub::thread_init();
    auto blocks = drstub::thread_heap_blocks();
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_NE(blocks[0].first, blocks[1].first);
    for (const auto& blk : blocks) {
        EXPECT_EQ(blk.second, sizeof(cpu_state));
        // The host's heap comes filled with garbage; the client clears it.
        const auto* bytes = static_cast<const uint8_t*>(blk.first);
        EXPECT_EQ(std::count(bytes, bytes + sizeof(cpu_state), 0), static_cast<long>(sizeof(cpu_state)));
    }
    drstub::thread_exit(a);
    EXPECT_EQ(drstub::thread_heap_blocks().size(), 1u);
    drstub::thread_exit(b);
    EXPECT_TRUE(drstub::thread_heap_blocks().empty());
    EXPECT_TRUE(drstub::errors().empty()) << "freed with its size, on its own thread";
}

TEST(Exports, TheLibraryExportsWhatTheHostAndDriversLookUp) {
    void* lib = dlopen(SVE_CLIENT_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(lib, nullptr) << dlerror();
    for (const char* name : {"dr_client_main", "is_sve", "execute_sve_instruction", "update_sve_stats",
                             "dump_sve_stats", "SVEInitialize"})
        EXPECT_NE(dlsym(lib, name), nullptr) << name;
    const int* version = static_cast<const int*>(dlsym(lib, "_USES_DR_VERSION_"));
    EXPECT_TRUE(version != nullptr && *version == 602);
    dlclose(lib);
}

}  // namespace
}  // namespace client_test
