// The per-thread cpu_state: allocated and cleared at thread start, given back
// at thread end, and an assertion when a thread ends without one.
#include "harness.h"

namespace client_test {
namespace {

class ThreadTest : public ::testing::Test {
protected:
    void SetUp() override {
        drstub::reset();
        drstub::set_main_module(main_code, main_code + 256, kExePath);
    }
};

TEST_F(ThreadTest, ThreadStartAllocatesAClearedCpuStateAndThreadEndFreesIt) {
    client_main();
    ASSERT_TRUE(drstub::thread_heap_blocks().empty());
    void* a = drstub::thread_init();
    void* b = drstub::thread_init();
    auto blocks = drstub::thread_heap_blocks();
    ASSERT_EQ(blocks.size(), 2u);
    for (const auto& blk : blocks) {
        EXPECT_EQ(blk.second, sizeof(cpu_state));
        // The host's heap comes filled with garbage; the client clears it.
        const auto* bytes = static_cast<const uint8_t*>(blk.first);
        size_t nonzero = 0;
        for (size_t k = 0; k < sizeof(cpu_state); ++k) nonzero += bytes[k] != 0;
        EXPECT_EQ(nonzero, 0u);
    }
    drstub::thread_exit(a);
    EXPECT_EQ(drstub::thread_heap_blocks().size(), 1u);
    drstub::thread_exit(b);
    EXPECT_TRUE(drstub::thread_heap_blocks().empty());
    // Freed with the allocation's size, on the thread that owned it.
    EXPECT_TRUE(drstub::errors().empty());
}

TEST_F(ThreadTest, ThreadsGetTheirOwnState) {
    client_main();
    void* a = drstub::thread_init();
    void* b = drstub::thread_init();
    auto blocks = drstub::thread_heap_blocks();
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_NE(blocks[0].first, blocks[1].first);
    drstub::thread_exit(a);
    drstub::thread_exit(b);
}

TEST_F(ThreadTest, AThreadEndingWithoutStateIsAnAssertionAtLine178) {
    ChildEnd end = run_in_child([] {
        // This thread started before the client registered its events, so
        // it never got a cpu_state.
        void* early = drstub::thread_init();
        client_main();
        drstub::thread_exit(early);
        _exit(0);
    });
    EXPECT_TRUE(end.exited);
    EXPECT_EQ(end.status, drstub::kAbortExitCode);
    EXPECT_EQ(end.err, assert_line(178, "data != __null"));
}

TEST_F(ThreadTest, AThreadEndingWithStateIsQuiet) {
    ChildEnd end = run_in_child([] {
        client_main();
        void* t = drstub::thread_init();
        drstub::thread_exit(t);
        _exit(drstub::errors().empty() ? 0 : 3);
    });
    EXPECT_TRUE(end.exited);
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.err, "");
}

}  // namespace
}  // namespace client_test
