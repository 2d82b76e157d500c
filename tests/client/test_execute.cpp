// What a rewritten block does when it runs: every register reaches cpu_state
// before the handler and comes back from it afterwards; X26-X28 and SP go
// through their special paths; SVE-only state stays in cpu_state between
// instructions; a failing handler is reported and changes no statistic.
#include <cstring>
#include <thread>

#include "harness.h"

namespace client_test {
namespace {

class ExecuteTest : public ClientTest {
protected:
    drstub::Run run(instrlist_t* bb, drstub::Machine& m, const drstub::CallHook& hook = nullptr) {
        drstub::Run r = drstub::execute(dc, bb, m, hook);
        EXPECT_TRUE(r.ok) << r.error;
        return r;
    }
};

// What the handler saw, and what it leaves for the application.
struct Seen {
    cpu_state state;
    unsigned word;
    cpu_state* where;
};

drstub::Machine changed_machine() { return distinct_machine(0x5eed); }

void write_machine(cpu_state* s, const drstub::Machine& m) {
    for (int i = 0; i < 31; ++i) s->x[i] = m.x[i];
    s->x[31] = m.sp;
    s->nzcv = m.nzcv;
    s->fpsr = m.fpsr;
    s->fpcr = m.fpcr;
    for (int n = 0; n < 32; ++n) memcpy(s->z[n], m.q[n], 16);
}

void expect_state_holds(const cpu_state& s, const drstub::Machine& m) {
    for (int i = 0; i < 31; ++i) EXPECT_EQ(s.x[i], m.x[i]) << "x" << i;
    EXPECT_EQ(s.x[31], m.sp) << "sp";
    EXPECT_EQ(s.nzcv, m.nzcv);
    EXPECT_EQ(s.fpsr, m.fpsr);
    EXPECT_EQ(s.fpcr, m.fpcr);
    for (int n = 0; n < 32; ++n) EXPECT_EQ(memcmp(s.z[n], m.q[n], 16), 0) << "z" << n;
}

void expect_machine_equal(const drstub::Machine& got, const drstub::Machine& want) {
    for (int i = 0; i < 31; ++i) EXPECT_EQ(got.x[i], want.x[i]) << "x" << i;
    EXPECT_EQ(got.sp, want.sp) << "sp";
    EXPECT_EQ(got.nzcv, want.nzcv);
    EXPECT_EQ(got.fpsr, want.fpsr);
    EXPECT_EQ(got.fpcr, want.fpcr);
    for (int n = 0; n < 32; ++n) EXPECT_EQ(memcmp(got.q[n], want.q[n], 16), 0) << "q" << n;
}

TEST_F(ExecuteTest, EveryRegisterGoesIntoCpuStateAndComesBackFromIt) {
    main_code[0] = kNop;
    main_code[1] = kAddZ;
    main_code[2] = kNop;
    instrlist_t* bb = build(main_code, 3);
    const drstub::Machine before = distinct_machine(1);
    const drstub::Machine after = changed_machine();
    Seen seen{};
    current_handler = [&](cpu_state* s, unsigned w) {
        seen.state = *s;
        seen.word = w;
        seen.where = s;
        write_machine(s, after);
        return DECODE_OK;
    };
    drstub::Machine m = before;
    drstub::Run r = run(bb, m, replace_handler());
    EXPECT_EQ(r.calls, 1);
    EXPECT_EQ(seen.word, kAddZ);
    EXPECT_EQ(seen.state.pc, &main_code[1]);
    expect_state_holds(seen.state, before);
    expect_machine_equal(m, after);
    // The spill slots were read from the running thread, and the state was that thread's.
    EXPECT_EQ(static_cast<void*>(seen.where), drstub::thread_heap_blocks()[0].first);
    EXPECT_TRUE(drstub::errors().empty());
}

TEST_F(ExecuteTest, AChangeToOneSpecialRegisterIsSeenAfterwardsAndNothingElseMoves) {
    main_code[0] = kAddZ;
    instrlist_t* bb = build(main_code, 1);
    // X26 and X27 are the sequence's scratch registers, X28 the host's, and
    // SP only moves through a general register: each has its own path.
    for (int reg : {26, 27, 28, 31, 0, 25, 29, 30}) {
        const drstub::Machine before = distinct_machine(static_cast<uint64_t>(reg) + 2);
        const uint64_t value = 0x0123456789abcde0ull ^ static_cast<uint64_t>(reg);
        current_handler = [&](cpu_state* s, unsigned) {
            s->x[reg] = value;
            return DECODE_OK;
        };
        drstub::Machine m = before;
        run(bb, m, replace_handler());
        drstub::Machine want = before;
        if (reg == 31)
            want.sp = value;
        else
            want.x[reg] = value;
        expect_machine_equal(m, want);
        if (reg == 28) {
            EXPECT_EQ(drstub::stolen_app_value(dc), value);
        }
    }
}

TEST_F(ExecuteTest, FlagsAndFpStatusAndControlRoundTrip) {
    main_code[0] = kAddZ;
    instrlist_t* bb = build(main_code, 1);
    const struct {
        uint64_t nzcv_in, nzcv_out;
        uint32_t fpsr_in, fpsr_out, fpcr_in, fpcr_out;
    } cases[] = {
        {0x00000000, 0xf0000000, 0x00000000, 0x0800009f, 0x00000000, 0x03c00000},
        {0x80000000, 0x10000000, 0x00000001, 0x00000000, 0x00400000, 0x00000000},
        {0x40000000, 0x20000000, 0x08000000, 0x00000010, 0x01000000, 0x02800000},
    };
    for (const auto& c : cases) {
        drstub::Machine m = distinct_machine(3);
        m.nzcv = c.nzcv_in;
        m.fpsr = c.fpsr_in;
        m.fpcr = c.fpcr_in;
        uint64_t seen_nzcv = ~0ull;
        uint32_t seen_fpsr = ~0u, seen_fpcr = ~0u;
        current_handler = [&](cpu_state* s, unsigned) {
            seen_nzcv = s->nzcv;
            seen_fpsr = s->fpsr;
            seen_fpcr = s->fpcr;
            s->nzcv = c.nzcv_out;
            s->fpsr = c.fpsr_out;
            s->fpcr = c.fpcr_out;
            return DECODE_OK;
        };
        run(bb, m, replace_handler());
        EXPECT_EQ(seen_nzcv, c.nzcv_in);
        EXPECT_EQ(seen_fpsr, c.fpsr_in);
        EXPECT_EQ(seen_fpcr, c.fpcr_in);
        EXPECT_EQ(m.nzcv, c.nzcv_out);
        EXPECT_EQ(m.fpsr, c.fpsr_out);
        EXPECT_EQ(m.fpcr, c.fpcr_out);
    }
}

TEST_F(ExecuteTest, ANewThreadStartsFromACleanState) {
    main_code[0] = kAddZ;
    instrlist_t* bb = build(main_code, 1);
    size_t dirty = 0;
    uint32_t extra = ~0u;
    current_handler = [&](cpu_state* s, unsigned) {
        for (int n = 0; n < 32; ++n)
            for (int b = 16; b < 64; ++b) dirty += s->z[n][b] != 0;
        for (int n = 0; n < 16; ++n)
            for (int b = 0; b < 64; ++b) dirty += s->p[n][b] != 0;
        for (int b = 0; b < 64; ++b) dirty += s->ffr[b] != 0;
        extra = s->fpcr_extra;
        return DECODE_OK;
    };
    drstub::Machine m = distinct_machine(4);
    run(bb, m, replace_handler());
    EXPECT_EQ(dirty, 0u);
    EXPECT_EQ(extra, 0u);
}

TEST_F(ExecuteTest, UpperZBytesPredicatesAndFfrPersistAcrossInstructions) {
    // First instruction (a test handler) sets Z1, Z2 in full, P3 and FFR;
    // the second is the real ADD Z0.S = Z1.S + Z2.S over all 64 bytes; the
    // third (a test handler) reads what the ADD left.
    main_code[0] = kAddZ;
    main_code[1] = kNop;
    main_code[2] = kAddZ;
    main_code[3] = kAddZ;
    instrlist_t* bb = build(main_code, 4);
    uint32_t a[16], b[16];
    for (uint32_t i = 0; i < 16; ++i) {
        a[i] = 0x01010101u * i + 0x10000;
        b[i] = 0xfffffff0u + 3 * i;
    }
    cpu_state seen{};
    current_handler = [&](cpu_state* s, unsigned) {
        if (s->pc == &main_code[0]) {
            memcpy(s->z[1], a, 64);
            memcpy(s->z[2], b, 64);
            memset(s->p[3], 1, 64);
            memset(s->ffr, 1, 64);
        } else {
            seen = *s;
        }
        return DECODE_OK;
    };
    drstub::CallHook hook = [](std::vector<uint64_t>& args) {
        if (args[1] != reinterpret_cast<uint64_t>(&main_code[2])) args[2] = reinterpret_cast<uint64_t>(&test_handler);
    };
    drstub::Machine m = distinct_machine(5);
    drstub::Run r = run(bb, m, hook);
    EXPECT_EQ(r.calls, 3);
    uint32_t sum[16];
    memcpy(sum, seen.z[0], 64);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(sum[i], a[i] + b[i]) << "element " << i;
    for (int k = 0; k < 64; ++k) {
        EXPECT_EQ(seen.p[3][k], 1) << k;
        EXPECT_EQ(seen.ffr[k], 1) << k;
    }
    // The application sees the low 128 bits of the result in V0.
    EXPECT_EQ(memcmp(m.q[0], sum, 16), 0);
}

TEST_F(ExecuteTest, NeonChangesBetweenSveInstructionsReachTheLowBytesOnly) {
    main_code[0] = kAddZ;
    instrlist_t* bb = build(main_code, 1);
    uint8_t upper[48];
    for (int k = 0; k < 48; ++k) upper[k] = static_cast<uint8_t>(0x40 + k);
    current_handler = [&](cpu_state* s, unsigned) {
        memcpy(s->z[7] + 16, upper, 48);
        return DECODE_OK;
    };
    drstub::Machine m = distinct_machine(6);
    run(bb, m, replace_handler());
    // Between the two runs the application writes V7 itself.
    for (int k = 0; k < 16; ++k) m.q[7][k] = static_cast<uint8_t>(0xc0 + k);
    uint8_t z7[64] = {};
    current_handler = [&](cpu_state* s, unsigned) {
        memcpy(z7, s->z[7], 64);
        return DECODE_OK;
    };
    run(bb, m, replace_handler());
    for (int k = 0; k < 16; ++k) EXPECT_EQ(z7[k], 0xc0 + k) << k;
    EXPECT_EQ(memcmp(z7 + 16, upper, 48), 0);
}

TEST_F(ExecuteTest, TheRealAddRunsThroughTheBlockAndIsCounted) {
    main_code[0] = kAddZ;
    instrlist_t* bb = build(main_code, 1);
    drstub::Machine m = distinct_machine(7);
    uint32_t x[4], y[4];
    memcpy(x, m.q[1], 16);
    memcpy(y, m.q[2], 16);
    const drstub::Machine before = m;
    run(bb, m);
    uint32_t got[4];
    memcpy(got, m.q[0], 16);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(got[i], x[i] + y[i]) << i;
    drstub::Machine want = before;
    memcpy(want.q[0], got, 16);
    expect_machine_equal(m, want);
    EXPECT_EQ(sve_instr_count_read(), 1u);
}

TEST_F(ExecuteTest, AFailingHandlerIsReportedAndCountsNothing) {
    main_code[0] = kNop;
    main_code[1] = kAddZ;
    instrlist_t* bb = build(main_code, 2);
    current_handler = [&](cpu_state* s, unsigned) {
        s->x[3] = 0x3333;  // what a handler did before failing goes back as it stands
        s->x[27] = 0x2727;
        return DECODE_UNKNOWN;
    };
    drstub::Machine m = distinct_machine(8);
    StderrCapture cap;
    run(bb, m, replace_handler());
    run(bb, m, replace_handler());
    char line[128];
    snprintf(line, sizeof line, "Error: failed to emulate SVE instruction 0x%08x at PC %p\n", kAddZ,
             static_cast<void*>(&main_code[1]));
    EXPECT_EQ(cap.text(), std::string(line) + line);
    EXPECT_EQ(m.x[3], 0x3333u);
    EXPECT_EQ(m.x[27], 0x2727u);
    EXPECT_EQ(sve_instr_count_read(), 0u);
    StderrCapture dump;
    dump_sve_stats();
    EXPECT_EQ(dump.text(), "");
}

TEST_F(ExecuteTest, TheFailureMessageReadsTheWordAgain) {
    main_code[0] = kAddZ;
    instrlist_t* bb = build(main_code, 1);
    const uint32_t rewritten = 0x04a30041;
    unsigned passed = 0;
    current_handler = [&](cpu_state*, unsigned w) {
        passed = w;
        main_code[0] = rewritten;  // the application changed its code meanwhile
        return DECODE_UNKNOWN;
    };
    drstub::Machine m = distinct_machine(9);
    StderrCapture cap;
    run(bb, m, replace_handler());
    char line[128];
    snprintf(line, sizeof line, "Error: failed to emulate SVE instruction 0x%08x at PC %p\n", rewritten,
             static_cast<void*>(&main_code[0]));
    EXPECT_EQ(cap.text(), line);
    EXPECT_EQ(passed, kAddZ);
}

TEST_F(ExecuteTest, TheCallLeavesNoRegisterToChance) {
    // The host's call keeps nothing; a test that any register reached the
    // application by surviving the call instead of by the reload would
    // see the stand-in's garbage here.
    main_code[0] = kAddZ;
    instrlist_t* bb = build(main_code, 1);
    current_handler = [](cpu_state*, unsigned) { return DECODE_OK; };
    const drstub::Machine before = distinct_machine(10);
    drstub::Machine m = before;
    run(bb, m, replace_handler());
    expect_machine_equal(m, before);
}

}  // namespace
}  // namespace client_test
