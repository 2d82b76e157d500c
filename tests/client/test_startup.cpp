// Start-up, argument scan, registrations, the fatal paths, shutdown, exports.
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

TEST_F(StartupTest, AcceptedArgumentListsStartTheClient) {
    const std::vector<std::vector<const char*>> accepted = {
        {},
        {"--"},
        {"--", "-foo"},
        {"--", "--", "anything", "-x"},
    };
    for (const auto& args : accepted) {
        drstub::reset();
        drstub::set_main_module(main_code, main_code + 256, kExePath);
        ChildEnd end = run_in_child([&] {
            client_main(args);
            // Reaching here means no abort; report that registration happened.
            if (drstub::app2app_callbacks() != 1) _exit(3);
        });
        std::string shown = args.empty() ? "(none)" : args[0];
        EXPECT_TRUE(end.exited) << shown;
        EXPECT_EQ(end.status, 0) << shown;
        EXPECT_EQ(end.err, "") << shown;
    }
}

TEST_F(StartupTest, AnyOtherArgumentIsAUsageErrorThatAborts) {
    const struct {
        std::vector<const char*> args;
        const char* message;
    } cases[] = {
        {{"-foo"}, "Usage error: Unknown option: -foo\n"},
        {{"foo", "--"}, "Usage error: Unknown option: foo\n"},
        {{"-x", "-y"}, "Usage error: Unknown option: -x\n"},
        {{"---"}, "Usage error: Unknown option: ---\n"},
    };
    for (const auto& c : cases) {
        ChildEnd end = run_in_child([&] {
            client_main(c.args);
            _exit(0);
        });
        EXPECT_TRUE(end.exited) << c.message;
        EXPECT_EQ(end.status, drstub::kAbortExitCode) << c.message;
        EXPECT_EQ(end.err, c.message);
    }
}

TEST_F(StartupTest, RegistersWithTheHostInOrder) {
    client_main();
    const std::vector<std::string> expected = {
        "dr_set_client_name",
        "dr_set_vector_length",
        "drmgr_init",
        "drreg_init",
        "dr_get_main_module",
        "drmgr_register_thread_init_event",
        "drmgr_register_thread_exit_event",
        "dr_register_exit_event",
        "drmgr_register_bb_app2app_event",
        "drmgr_register_tls_field",
        "dr_log",
    };
    EXPECT_EQ(drstub::calls(), expected);
    EXPECT_EQ(drstub::client_name(), "Korvel SVE emulation client");
    EXPECT_EQ(drstub::vector_length(), 512);
    EXPECT_TRUE(drstub::app2app_priority_was_null());
    EXPECT_EQ(drstub::thread_init_callbacks(), 1u);
    EXPECT_EQ(drstub::thread_exit_callbacks(), 1u);
    EXPECT_EQ(drstub::exit_callbacks(), 1u);
    EXPECT_EQ(drstub::app2app_callbacks(), 1u);
    ASSERT_EQ(drstub::log().size(), 1u);
    EXPECT_EQ(drstub::log()[0].drcontext, nullptr);
    EXPECT_EQ(drstub::log()[0].mask, 0xffffffu);
    EXPECT_EQ(drstub::log()[0].level, 1u);
    EXPECT_EQ(drstub::log()[0].text, "SVE client initializing\n");
    // The main module's record is kept for the run.
    EXPECT_EQ(drstub::module_records(), 1u);
    EXPECT_TRUE(drstub::errors().empty());
}

TEST_F(StartupTest, AsksForNoSpillSlotsOfTheRegisterManager) {
    client_main();
    drreg_options_t ops;
    ASSERT_TRUE(drstub::drreg_options_seen(&ops));
    EXPECT_EQ(ops.struct_size, sizeof(drreg_options_t));
    EXPECT_EQ(ops.num_spill_slots, 0u);
    EXPECT_FALSE(ops.conservative);
    EXPECT_EQ(ops.error_callback, nullptr);
    EXPECT_FALSE(ops.do_not_sum_slots);
}

TEST_F(StartupTest, FailuresAtStartAreAssertionsWithFixedLines) {
    const struct {
        const char* what;
        bool drstub::Faults::*fault;
        int line;
    } cases[] = {
        {"drmgr_init", &drstub::Faults::drmgr_init, 131},
        {"drreg_init", &drstub::Faults::drreg_init, 131},
        {"bb registration", &drstub::Faults::register_bb_app2app, 148},
    };
    for (const auto& c : cases) {
        ChildEnd end = run_in_child([&] {
            drstub::faults().*c.fault = true;
            client_main();
            _exit(0);
        });
        EXPECT_TRUE(end.exited) << c.what;
        EXPECT_EQ(end.status, drstub::kAbortExitCode) << c.what;
        EXPECT_EQ(end.err, assert_line(c.line, "false")) << c.what;
    }
}

TEST_F(StartupTest, ExitPrintsTheTotalsAndShutsDownInOrder) {
    client_main();
    drstub::clear_calls();
    StderrCapture cap;
    drstub::process_exit();
    EXPECT_EQ(cap.text(), totals(0, 0));
    const std::vector<std::string> expected = {
        "dr_log", "dr_free_module_data", "drmgr_unregister_bb_app2app_event", "drreg_exit", "drmgr_exit",
    };
    EXPECT_EQ(drstub::calls(), expected);
    ASSERT_EQ(drstub::log().size(), 2u);
    EXPECT_EQ(drstub::log()[1].drcontext, nullptr);
    EXPECT_EQ(drstub::log()[1].mask, 0xffffffu);
    EXPECT_EQ(drstub::log()[1].level, 1u);
    EXPECT_EQ(drstub::log()[1].text, "SVE client exiting\n");
    EXPECT_EQ(drstub::module_records(), 0u);
    EXPECT_EQ(drstub::app2app_callbacks(), 0u);
    EXPECT_TRUE(drstub::errors().empty());
}

TEST_F(StartupTest, TotalsUseTheBaseNameOfTheMainModulePath) {
    const struct {
        const char* path;
        const char* name;
    } cases[] = {
        {"/usr/local/bin/stream", "stream"},
        {"relative/dir/a.out", "a.out"},
        {"plain", "plain"},
    };
    for (const auto& c : cases) {
        drstub::reset();
        drstub::set_main_module(main_code, main_code + 256, c.path);
        client_main();
        StderrCapture cap;
        drstub::process_exit();
        EXPECT_EQ(cap.text(), std::string(c.name) + ": 0 SVE instructions executed\n" + c.name +
                                  ": 0 Non-SVE AArch64 instructions executed\n");
    }
}

TEST_F(StartupTest, FailuresAtExitAreAssertionsAtLine204) {
    const struct {
        const char* what;
        bool drstub::Faults::*fault;
    } cases[] = {
        {"unregistration", &drstub::Faults::unregister_bb_app2app},
        {"drreg_exit", &drstub::Faults::drreg_exit},
    };
    for (const auto& c : cases) {
        ChildEnd end = run_in_child([&] {
            client_main();
            drstub::faults().*c.fault = true;
            drstub::process_exit();
            _exit(0);
        });
        EXPECT_TRUE(end.exited) << c.what;
        EXPECT_EQ(end.status, drstub::kAbortExitCode) << c.what;
        EXPECT_EQ(end.err, totals(0, 0) + assert_line(204, "false")) << c.what;
    }
}

TEST(Exports, TheLibraryExportsWhatTheHostAndDriversLookUp) {
    void* lib = dlopen(SVE_CLIENT_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(lib, nullptr) << dlerror();
    for (const char* name :
         {"dr_client_main", "_USES_DR_VERSION_", "is_sve", "execute_sve_instruction", "update_sve_stats",
          "dump_sve_stats", "SVEInitialize"})
        EXPECT_NE(dlsym(lib, name), nullptr) << name;
    const int* version = static_cast<const int*>(dlsym(lib, "_USES_DR_VERSION_"));
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(*version, 602);
    // The exported decoder is the one the core tests know.
    auto lib_is_sve = reinterpret_cast<sve_handler (*)(unsigned)>(dlsym(lib, "is_sve"));
    ASSERT_NE(lib_is_sve, nullptr);
    EXPECT_NE(lib_is_sve(kAddZ), nullptr);
    EXPECT_EQ(lib_is_sve(0x252c9001), nullptr);
    dlclose(lib);
}

}  // namespace
}  // namespace client_test
