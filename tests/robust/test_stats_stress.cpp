// Two threads emulating at once. Statistics are the one thing the threads
// share on the emulation path; with a fixed number of iterations the totals
// and every per-address count must come out exact, the entries' words must be
// those of their first count, and each thread's registers must hold exactly
// its own results.
#include <gtest/gtest.h>

#include <atomic>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "sve/core/decode.h"

namespace {

struct Entry {
    unsigned word;
    long count;
};

// dump_sve_stats prints "%p: 0x%08x %ld" lines on stderr in address order.
std::map<const void*, Entry> listed() {
    ::testing::internal::CaptureStderr();
    dump_sve_stats();
    std::string text = ::testing::internal::GetCapturedStderr();
    std::map<const void*, Entry> out;
    std::istringstream in(text);
    std::string line;
    const void* last = nullptr;
    while (std::getline(in, line)) {
        void* pc = nullptr;
        unsigned word = 0;
        long count = 0;
        if (sscanf(line.c_str(), "%p: 0x%x %ld", &pc, &word, &count) != 3) {
            ADD_FAILURE() << "unexpected line: " << line;
            continue;
        }
        EXPECT_LT(last, pc) << "not in ascending address order";
        last = pc;
        out[pc] = {word, count};
    }
    return out;
}

// Both threads start together, so that they really overlap.
class StartLine {
public:
    explicit StartLine(int n) : waiting_(n) {}
    void arrive() {
        waiting_.fetch_sub(1);
        while (waiting_.load() > 0) std::this_thread::yield();
    }

private:
    std::atomic<int> waiting_;
};

constexpr int kShared = 16;    // addresses both threads count at
constexpr int kPrivate = 512;  // addresses only one thread counts at, made during the run
constexpr int kFresh = 50000;  // addresses both threads count at for the first time together

TEST(StatsStress, TwoThreadsCountSharedAndNewAddressesExactly) {
    sve_stats_reset();
    constexpr int kIterations = 200000;
    static unsigned shared[kShared];
    static unsigned priv[2][kPrivate];
    // One count before the threads: the entry's word must stay this one.
    update_sve_stats(&shared[0], 0x11111111u);
    // Both threads walk these in the same order, so that they often make the
    // same new entry at the same moment: neither count may be lost.
    static unsigned fresh[kFresh];
    StartLine start(2);
    auto work = [&](int t) {
        start.arrive();
        for (int i = 0; i < kFresh; ++i) update_sve_stats(&fresh[i], 0x25000000u);
        for (int i = 0; i < kIterations; ++i) {
            update_sve_stats(&shared[i % kShared], 0x04a00000u + static_cast<unsigned>(i % kShared));
            update_sve_stats(&priv[t][i % kPrivate], 0x05000000u + static_cast<unsigned>(t));
        }
    };
    std::thread a(work, 0), b(work, 1);
    a.join();
    b.join();

    EXPECT_EQ(sve_instr_count_read(), 1u + 4u * kIterations + 2u * kFresh);
    std::map<const void*, Entry> l = listed();
    ASSERT_EQ(l.size(), static_cast<size_t>(kShared + 2 * kPrivate + kFresh));
    int lost = 0;
    for (int k = 0; k < kFresh; ++k) lost += l[&fresh[k]].count != 2;
    EXPECT_EQ(lost, 0) << "entries made by both threads at once that lost a count";
    long sum = 0;
    for (int k = 0; k < kShared; ++k) {
        const Entry& e = l[&shared[k]];
        EXPECT_EQ(e.count, 2L * kIterations / kShared + (k == 0)) << "shared address " << k;
        EXPECT_EQ(e.word, k == 0 ? 0x11111111u : 0x04a00000u + static_cast<unsigned>(k)) << k;
    }
    for (int t = 0; t < 2; ++t)
        for (int k = 0; k < kPrivate; ++k) {
            const Entry& e = l[&priv[t][k]];
            long expect = kIterations / kPrivate + (k < kIterations % kPrivate);
            EXPECT_EQ(e.count, expect) << "thread " << t << " address " << k;
            EXPECT_EQ(e.word, 0x05000000u + static_cast<unsigned>(t));
        }
    for (auto& [pc, e] : l) sum += e.count;
    EXPECT_EQ(sum, 1L + 4L * kIterations + 2L * kFresh);
}

// ADD Z0.D, Z0.D, Z1.D and SUB Z2.D, Z2.D, Z1.D, unpredicated.
constexpr uint32_t kAdd = 0x04e10000u;
constexpr uint32_t kSub = 0x04e10442u;

void seed_registers(cpu_state* s, uint64_t step) {
    std::memset(s, 0, sizeof *s);
    for (unsigned e = 0; e < 8; ++e) {
        uint64_t v = step * (e + 1);
        std::memcpy(s->z[1] + 8 * e, &v, 8);
    }
}

void expect_results(const cpu_state& s, uint64_t step, int n, const char* who) {
    for (unsigned e = 0; e < 8; ++e) {
        uint64_t add, sub;
        std::memcpy(&add, s.z[0] + 8 * e, 8);
        std::memcpy(&sub, s.z[2] + 8 * e, 8);
        EXPECT_EQ(add, step * (e + 1) * static_cast<uint64_t>(n)) << who << " element " << e;
        EXPECT_EQ(sub, 0 - step * (e + 1) * static_cast<uint64_t>(n)) << who << " element " << e;
    }
}

// The direct entry: decode, handler, statistics, pc advance, on two threads
// stepping through the same two-instruction program with their own states.
TEST(StatsStress, TwoThreadsStepTheSameProgramThroughTheDirectEntry) {
    ASSERT_NE(is_sve(kAdd), nullptr);
    ASSERT_NE(is_sve(kSub), nullptr);
    sve_stats_reset();
    constexpr int kIterations = 20000;
    static uint32_t program[2] = {kAdd, kSub};
    static cpu_state states[2];
    const uint64_t steps[2] = {3, 0x100000001ull};
    std::atomic<int> failures{0};
    StartLine start(2);
    auto work = [&](int t) {
        cpu_state* s = &states[t];
        seed_registers(s, steps[t]);
        start.arrive();
        for (int i = 0; i < kIterations; ++i) {
            s->pc = &program[0];
            if (execute_sve_instruction(s) != DECODE_OK || s->pc != &program[1]) failures.fetch_add(1);
            if (execute_sve_instruction(s) != DECODE_OK || s->pc != &program[2]) failures.fetch_add(1);
        }
    };
    std::thread a(work, 0), b(work, 1);
    a.join();
    b.join();

    EXPECT_EQ(failures.load(), 0);
    expect_results(states[0], steps[0], kIterations, "thread 0");
    expect_results(states[1], steps[1], kIterations, "thread 1");
    EXPECT_EQ(sve_instr_count_read(), 4u * kIterations);
    std::map<const void*, Entry> l = listed();
    ASSERT_EQ(l.size(), 2u);
    EXPECT_EQ(l[&program[0]].count, 2L * kIterations);
    EXPECT_EQ(l[&program[0]].word, kAdd);
    EXPECT_EQ(l[&program[1]].count, 2L * kIterations);
    EXPECT_EQ(l[&program[1]].word, kSub);
}

// What the inserted call does: the handler found once at block building, then
// the handler and update_sve_stats on every execution.
TEST(StatsStress, TwoThreadsRunTheHandlerThenCount) {
    sve_handler add = is_sve(kAdd), sub = is_sve(kSub);
    ASSERT_NE(add, nullptr);
    ASSERT_NE(sub, nullptr);
    sve_stats_reset();
    constexpr int kIterations = 20000;
    static unsigned code[2][2];  // each thread's own copy of the program
    static cpu_state states[2];
    const uint64_t steps[2] = {7, 0xfffffffffffffff1ull};
    std::atomic<int> failures{0};
    StartLine start(2);
    auto work = [&](int t) {
        cpu_state* s = &states[t];
        seed_registers(s, steps[t]);
        code[t][0] = kAdd;
        code[t][1] = kSub;
        start.arrive();
        for (int i = 0; i < kIterations; ++i) {
            s->pc = &code[t][0];
            if (add(s, kAdd) == DECODE_OK) update_sve_stats(&code[t][0], kAdd); else failures.fetch_add(1);
            s->pc = &code[t][1];
            if (sub(s, kSub) == DECODE_OK) update_sve_stats(&code[t][1], kSub); else failures.fetch_add(1);
        }
    };
    std::thread a(work, 0), b(work, 1);
    a.join();
    b.join();

    EXPECT_EQ(failures.load(), 0);
    expect_results(states[0], steps[0], kIterations, "thread 0");
    expect_results(states[1], steps[1], kIterations, "thread 1");
    EXPECT_EQ(sve_instr_count_read(), 4u * kIterations);
    std::map<const void*, Entry> l = listed();
    ASSERT_EQ(l.size(), 4u);
    for (int t = 0; t < 2; ++t) {
        EXPECT_EQ(l[&code[t][0]].count, kIterations);
        EXPECT_EQ(l[&code[t][1]].count, kIterations);
        EXPECT_EQ(l[&code[t][0]].word, kAdd);
        EXPECT_EQ(l[&code[t][1]].word, kSub);
    }
}

}  // namespace
