// What a rewritten block does when it runs: every register reaches cpu_state
// before the handler and comes back from it afterwards, X26-X28 and SP through
// their own paths; SVE-only state stays in cpu_state between
// instructions; a failing handler is reported and counts nothing; the
// statistics add up and are listed by dump_sve_stats.
#include <atomic>
#include <cstring>
#include <thread>
#include <tuple>

#include "harness.h"

namespace client_test {
namespace {

class ExecuteTest : public ClientTest {
protected:
    drstub::Run run(instrlist_t* bb, drstub::Machine& m, const drstub::CallHook& hook = replace_handler()) {
        drstub::Run r = drstub::execute(dc, bb, m, hook);
        EXPECT_TRUE(r.ok) << r.error;
        return r;
    }
};

drstub::Machine machine_of(const cpu_state& s) {
    drstub::Machine m{};
    std::copy(s.x, s.x + 31, m.x);
    m.sp = s.x[31];
    m.nzcv = s.nzcv, m.fpsr = s.fpsr, m.fpcr = s.fpcr;
    for (int n = 0; n < 32; ++n) memcpy(m.q[n], s.z[n], 16);
    return m;
}

void write_machine(cpu_state* s, const drstub::Machine& m) {
    std::copy(m.x, m.x + 31, s->x);
    s->x[31] = m.sp;
    s->nzcv = m.nzcv, s->fpsr = m.fpsr, s->fpcr = m.fpcr;
    for (int n = 0; n < 32; ++n) memcpy(s->z[n], m.q[n], 16);
}

void expect_machine_equal(const drstub::Machine& got, const drstub::Machine& want, const std::string& where) {
    for (int i = 0; i < 31; ++i) EXPECT_EQ(got.x[i], want.x[i]) << where << ": x" << i;
    EXPECT_EQ(got.sp, want.sp) << where << ": sp";
    EXPECT_EQ(std::tie(got.nzcv, got.fpsr, got.fpcr), std::tie(want.nzcv, want.fpsr, want.fpcr)) << where;
    for (int n = 0; n < 32; ++n) EXPECT_EQ(memcmp(got.q[n], want.q[n], 16), 0) << where << ": q" << n;
}

std::string dump_line(const void* pc, unsigned word, long count) {
    char buf[128];
    snprintf(buf, sizeof buf, "%p: 0x%08x %ld\n", pc, word, count);
    return buf;
}

TEST_F(ExecuteTest, EveryRegisterGoesIntoCpuStateAndComesBackFromIt) {
    main_code[1] = kAddZ;
    instrlist_t* bb = build(main_code, 3);
    // Every register and every flag and status bit changes in the handler to
    // a value of its own, so one that survived the call instead of being
    // reloaded, or came back from another's place, would show. X26 and X27
    // are the sequence's scratch registers, X28 the host's, and SP only moves
    // through a general register.
    const drstub::Machine before = distinct_machine(1);
    drstub::Machine after = distinct_machine(0x5eed);
    after.nzcv = 0x90000000;  // N and V, where before has Z and C
    after.fpsr = 0x0000008e;  // IDC, UFC, OFC, DZC, where before has QC, IXC, IOC
    after.fpcr = 0x06400000;  // AHP, DN, round towards plus infinity
    cpu_state seen{};
    unsigned word = 0;
    cpu_state* where = nullptr;
    current_handler = [&](cpu_state* s, unsigned w) {
        seen = *s;
        word = w;
        where = s;
        write_machine(s, after);
        return DECODE_OK;
    };
    drstub::Machine m = before;
    EXPECT_EQ(run(bb, m).calls, 1);
    EXPECT_EQ(word, kAddZ);
    EXPECT_EQ(seen.pc, &main_code[1]);
    expect_machine_equal(machine_of(seen), before, "into cpu_state");
    expect_machine_equal(m, after, "back from it");
    EXPECT_EQ(drstub::stolen_app_value(dc), after.x[28]) << "the host holds the application's X28";
    EXPECT_EQ(static_cast<void*>(where), drstub::thread_heap_blocks().at(0).first) << "the running thread's state";
    EXPECT_TRUE(drstub::errors().empty());
}

TEST_F(ExecuteTest, UpperZBytesPredicatesAndFfrPersistAndNeonWritesReachTheLowBytesOnly) {
    // 0: a test handler fills Z1, Z2, the upper bytes of Z7, P3 and FFR;
    // 2: the real ADD Z0.S = Z1.S + Z2.S over all 64 bytes; 3: a test handler.
    main_code[0] = main_code[2] = main_code[3] = kAddZ;
    instrlist_t* bb = build(main_code, 4);
    uint32_t a[16], b[16];
    uint8_t upper[48];
    for (uint32_t i = 0; i < 16; ++i) a[i] = 0x01010101u * i + 0x10000, b[i] = 0xfffffff0u + 3 * i;
    for (int k = 0; k < 48; ++k) upper[k] = static_cast<uint8_t>(0x40 + k);
    bool filled = false;
    cpu_state seen[4] = {};
    current_handler = [&](cpu_state* s, unsigned) {
        seen[static_cast<const uint32_t*>(s->pc) - main_code] = *s;
        if (!filled) {
            memcpy(s->z[1], a, 64);
            memcpy(s->z[2], b, 64);
            memcpy(s->z[7] + 16, upper, 48);
            memset(s->p[3], 1, 64);
            memset(s->ffr, 1, 64);
            filled = true;
        }
        return DECODE_OK;
    };
    drstub::CallHook hook = [](std::vector<uint64_t>& args) {
        if (args[1] != reinterpret_cast<uint64_t>(&main_code[2])) args[2] = reinterpret_cast<uint64_t>(&test_handler);
    };
    drstub::Machine m = distinct_machine(5);
    EXPECT_EQ(run(bb, m, hook).calls, 3);
    uint32_t sum[16];
    memcpy(sum, seen[3].z[0], 64);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(sum[i], a[i] + b[i]) << "element " << i;
    EXPECT_EQ(std::count(seen[3].p[3], seen[3].p[3] + 64, 1), 64);
    EXPECT_EQ(std::count(seen[3].ffr, seen[3].ffr + 64, 1), 64);
    EXPECT_EQ(memcmp(m.q[0], sum, 16), 0) << "the application sees the low 128 bits in V0";
    // Between runs the application writes V7 itself.
    for (int k = 0; k < 16; ++k) m.q[7][k] = static_cast<uint8_t>(0xc0 + k);
    run(bb, m, hook);
    EXPECT_EQ(memcmp(seen[0].z[7], m.q[7], 16), 0);
    EXPECT_EQ(memcmp(seen[0].z[7] + 16, upper, 48), 0);
}

TEST_F(ExecuteTest, AFailingHandlerIsReportedWithTheWordInMemoryAndCountsNothing) {
    main_code[1] = kAddZ;
    instrlist_t* bb = build(main_code, 2);
    const uint32_t rewritten = 0x04a30041;
    int calls = 0;
    current_handler = [&](cpu_state* s, unsigned w) {
        EXPECT_EQ(w, kAddZ);
        if (++calls == 2) main_code[1] = rewritten;  // the application changed its code meanwhile
        s->x[3] = 0x3333;  // what a handler did before failing goes back as it stands
        s->x[27] = 0x2727;
        return DECODE_UNKNOWN;
    };
    drstub::Machine m = distinct_machine(8);
    const std::string err = stderr_of([&] {
        run(bb, m);
        run(bb, m);
    });
    auto line = [](uint32_t w) {
        char buf[128];
        snprintf(buf, sizeof buf, "Error: failed to emulate SVE instruction 0x%08x at PC %p\n", w,
                 static_cast<void*>(&main_code[1]));
        return std::string(buf);
    };
    EXPECT_EQ(err, line(kAddZ) + line(rewritten));
    EXPECT_EQ(m.x[3], 0x3333u);
    EXPECT_EQ(m.x[27], 0x2727u);
    EXPECT_EQ(sve_instr_count_read(), 0u);
    EXPECT_EQ(dump_text(), "") << "an empty table lists nothing";
}

TEST_F(ExecuteTest, TheListingIsInAddressOrderWithTheFirstWordCountedAtEach) {
    unsigned* pcs[] = {reinterpret_cast<unsigned*>(&main_code[10]), reinterpret_cast<unsigned*>(&main_code[3]),
                       reinterpret_cast<unsigned*>(&main_code[7])};
    const unsigned words[] = {0x04a20020, 0x84404000, 0xe5404000};
    const int times[] = {2, 1, 3};
    for (int k = 0; k < 3; ++k)
        for (int n = 0; n < times[k]; ++n) update_sve_stats(pcs[k], words[k] + static_cast<unsigned>(n));
    EXPECT_EQ(dump_text(),
              dump_line(pcs[1], words[1], 1) + dump_line(pcs[2], words[2], 3) + dump_line(pcs[0], words[0], 2));
    EXPECT_EQ(sve_instr_count_read(), 6u);
}

TEST_F(ExecuteTest, EveryRunCountsAndTwoThreadsAtOneAddressAddUp) {
    // Each thread builds its own block (private code caches) and runs it on
    // its own cpu_state, with the decoder's own handler; then both count at
    // the same address as fast as they can.
    main_code[0] = kAddZ;
    constexpr int kRuns = 200, kEach = 100000;
    bool ok[2] = {true, true};
    std::atomic<int> started{0};
    auto work = [&](int k) {
        void* t = drstub::thread_init();
        instrlist_t* bb = drstub::make_block(t, main_code, 1);
        drstub::run_app2app(t, bb);
        drstub::Machine m = distinct_machine(static_cast<uint64_t>(k) + 3);
        for (int n = 0; n < kRuns; ++n) ok[k] = ok[k] && drstub::execute(t, bb, m).ok;
        for (++started; started < 2;) {
        }
        for (int n = 0; n < kEach; ++n) update_sve_stats(reinterpret_cast<unsigned*>(&main_code[0]), kAddZ);
        drstub::destroy_block(t, bb);
        drstub::thread_exit(t);
    };
    std::thread a(work, 0), b(work, 1);
    a.join();
    b.join();
    EXPECT_TRUE(ok[0] && ok[1]);
    EXPECT_EQ(sve_instr_count_read(), 2u * (kRuns + kEach));
    EXPECT_EQ(dump_text(), dump_line(&main_code[0], kAddZ, 2 * (kRuns + kEach)));
    EXPECT_EQ(exit_text(), totals(2 * (kRuns + kEach), 0));
}

}  // namespace
}  // namespace client_test
