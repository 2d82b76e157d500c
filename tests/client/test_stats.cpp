// Statistics: the total and per-address counts, their listing, and the
// totals at exit, through the core's functions and through running blocks.
#include <cinttypes>
#include <thread>

#include "harness.h"

namespace client_test {
namespace {

std::string dump_line(const void* pc, unsigned word, long count) {
    char buf[128];
    snprintf(buf, sizeof buf, "%p: 0x%08x %ld\n", pc, word, count);
    return buf;
}

std::string dump() {
    StderrCapture cap;
    dump_sve_stats();
    return cap.text();
}

class StatsTest : public ClientTest {};

TEST_F(StatsTest, AnEmptyTableListsNothing) {
    EXPECT_EQ(dump(), "");
}

TEST_F(StatsTest, EntriesAreListedInAscendingAddressOrder) {
    unsigned* pcs[] = {reinterpret_cast<unsigned*>(&main_code[10]), reinterpret_cast<unsigned*>(&main_code[3]),
                       reinterpret_cast<unsigned*>(&main_code[7])};
    const unsigned words[] = {0x04a20020, 0x84404000, 0xe5404000};
    const int times[] = {2, 1, 3};
    for (int k = 0; k < 3; ++k)
        for (int n = 0; n < times[k]; ++n) update_sve_stats(pcs[k], words[k]);
    EXPECT_EQ(dump(), dump_line(pcs[1], words[1], 1) + dump_line(pcs[2], words[2], 3) + dump_line(pcs[0], words[0], 2));
    EXPECT_EQ(sve_instr_count_read(), 6u);
}

TEST_F(StatsTest, TheWordOfAnEntryIsThatOfItsFirstCount) {
    unsigned* pc = reinterpret_cast<unsigned*>(&main_code[0]);
    update_sve_stats(pc, 0x04a20020);
    update_sve_stats(pc, 0x04a20041);
    EXPECT_EQ(dump(), dump_line(pc, 0x04a20020, 2));
}

TEST_F(StatsTest, TwoThreadsAtOneAddressAddUp) {
    unsigned* pc = reinterpret_cast<unsigned*>(&main_code[0]);
    constexpr int kEach = 5000;
    auto work = [&] {
        for (int n = 0; n < kEach; ++n) update_sve_stats(pc, kAddZ);
    };
    std::thread a(work), b(work);
    a.join();
    b.join();
    EXPECT_EQ(sve_instr_count_read(), 2u * kEach);
    EXPECT_EQ(dump(), dump_line(pc, kAddZ, 2 * kEach));
}

TEST_F(StatsTest, EveryRunOfARewrittenBlockCounts) {
    main_code[0] = kAddZ;
    main_code[1] = kNop;
    instrlist_t* bb = build(main_code, 2);
    drstub::Machine m = distinct_machine(1);
    for (int n = 0; n < 5; ++n) {
        drstub::Run r = drstub::execute(dc, bb, m);
        ASSERT_TRUE(r.ok) << r.error;
    }
    EXPECT_EQ(sve_instr_count_read(), 5u);
    EXPECT_EQ(dump(), dump_line(&main_code[0], kAddZ, 5));
    StderrCapture cap;
    drstub::process_exit();
    // Five executions of the SVE word, one build of the NOP.
    EXPECT_EQ(cap.text(), totals(5, 1));
}

TEST_F(StatsTest, ARebuiltBlockKeepsTheFirstWordOfItsAddress) {
    main_code[0] = kAddZ;
    drstub::Machine m = distinct_machine(2);
    ASSERT_TRUE(drstub::execute(dc, build(main_code, 1), m).ok);
    main_code[0] = 0x04a20041;  // the application rewrites its code; the block is built again
    ASSERT_TRUE(drstub::execute(dc, build(main_code, 1), m).ok);
    EXPECT_EQ(dump(), dump_line(&main_code[0], kAddZ, 2));
}

TEST_F(StatsTest, ThreadsRunningTheirOwnBlocksOfOneAddressAddUp) {
    // Each thread builds its own copy of the block, as with thread-private
    // code caches, and runs it on its own cpu_state.
    main_code[0] = kAddZ;
    constexpr int kRuns = 200;
    bool ok[2] = {true, true};
    auto work = [&](int k) {
        void* t = drstub::thread_init();
        instrlist_t* bb = drstub::make_block(t, main_code, 1);
        drstub::run_app2app(t, bb);
        drstub::Machine m = distinct_machine(static_cast<uint64_t>(k) + 3);
        for (int n = 0; n < kRuns; ++n) ok[k] = ok[k] && drstub::execute(t, bb, m).ok;
        drstub::destroy_block(t, bb);
        drstub::thread_exit(t);
    };
    std::thread a(work, 0), b(work, 1);
    a.join();
    b.join();
    EXPECT_TRUE(ok[0]);
    EXPECT_TRUE(ok[1]);
    EXPECT_EQ(sve_instr_count_read(), 2u * kRuns);
    EXPECT_EQ(dump(), dump_line(&main_code[0], kAddZ, 2 * kRuns));
}

TEST_F(StatsTest, ExecuteSveInstructionStepsAStateDirectly) {
    static cpu_state s;
    memset(&s, 0, sizeof s);
    main_code[0] = kAddZ;
    main_code[1] = 0x252c9001;  // known to no row
    s.pc = &main_code[0];
    EXPECT_EQ(execute_sve_instruction(&s), DECODE_OK);
    EXPECT_EQ(s.pc, &main_code[1]);
    EXPECT_EQ(execute_sve_instruction(&s), DECODE_UNKNOWN);
    EXPECT_EQ(s.pc, &main_code[1]);
    EXPECT_EQ(sve_instr_count_read(), 1u);
    EXPECT_EQ(dump(), dump_line(&main_code[0], kAddZ, 1));
}

}  // namespace
}  // namespace client_test
