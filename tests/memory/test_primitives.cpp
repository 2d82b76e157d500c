// Process signals, the readability probe, the guarded reads, and the death of
// the process on a fault of its own.
#include <gtest/gtest.h>

#include <fcntl.h>

#include <csignal>

#include "mem_test_util.h"
#include "sve/core/decode.h"
#include "sve/core/reference.h"
#include "sve/memory/memory.h"

namespace {

struct sigaction current(int sig) {
    struct sigaction sa;
    sigaction(sig, nullptr, &sa);
    return sa;
}

constexpr int kOurFlags = SA_SIGINFO | SA_RESTART | SA_NODEFER;

TEST(Signals, LoadTimeInstallsTheHandlerForBothSignalsAndASecondCallChangesNothing) {
    for (int sig : {SIGSEGV, SIGBUS}) {
        struct sigaction sa = current(sig);
        EXPECT_EQ(sa.sa_sigaction, &SVESigHandler) << sig;
        EXPECT_EQ(sa.sa_flags & (kOurFlags | SA_RESETHAND | SA_ONSTACK), kOurFlags) << sig;
    }
    EXPECT_EQ(ctxt, &cpu_ctxt);
    EXPECT_EQ(cpu_ctxt.vl, 2u);
    struct sigaction before = current(SIGSEGV);
    EXPECT_EQ(SVEInitialize(), 1);
    EXPECT_EQ(SVEInitialize(), 1);
    struct sigaction after = current(SIGSEGV);
    EXPECT_EQ(after.sa_sigaction, before.sa_sigaction);
    EXPECT_EQ(after.sa_flags, before.sa_flags);
}

// Outside a guarded read the handler gives both signals back to their
// default action, whichever of them arrived, and says which it was.
TEST(Signals, AnApplicationFaultRestoresBothDefaultsAndNamesTheSignal) {
    ChildResult r = run_in_child([] {
        SVESigHandler(SIGBUS, nullptr, nullptr);
        if (current(SIGSEGV).sa_handler != SIG_DFL || current(SIGBUS).sa_handler != SIG_DFL) _exit(1);
    });
    EXPECT_TRUE(completed(r)) << r.status;
    EXPECT_EQ(r.err, kBusMessage);
}

TEST(Probe, AnswersByWhetherAOneByteReadFaults) {
    Pages pg(3);
    pg.protect(1, PROT_NONE);
    munmap(pg.page(2), host_page());
    struct {
        const char* what;
        uint64_t address;
        bool readable;
    } cases[] = {
        {"first byte of a mapped page", pg.addr(0), true},
        {"last byte of a mapped page", pg.addr(1, -1), true},
        {"no-access page", pg.addr(1), false},
        {"last byte of a no-access page", pg.addr(2, -1), false},
        {"unmapped page", pg.addr(2), false},
        {"mapped again after a miss", pg.addr(0, 17), true},
    };
    struct sigaction before = current(SIGSEGV);
    for (const auto& c : cases) {
        EXPECT_EQ(addr_is_readable(reinterpret_cast<char volatile*>(c.address)), c.readable) << c.what;
        struct sigaction after = current(SIGSEGV);
        EXPECT_EQ(after.sa_sigaction, before.sa_sigaction) << c.what;
        EXPECT_EQ(after.sa_flags, before.sa_flags) << c.what;
    }
}

// A write-only mapping is readable on hosts whose page tables cannot express
// write-only, so the probe is held to what a real read does here.
TEST(Probe, WriteOnlyPageAgreesWithARealRead) {
    Pages pg(1);
    pg.protect(0, PROT_WRITE);
    volatile char* p = reinterpret_cast<volatile char*>(pg.page(0));
    ChildResult real = run_in_child([&] { (void)*p; });
    bool faults = !WIFEXITED(real.status);
    EXPECT_EQ(addr_is_readable(p), !faults);
}

void quiet_handler(int, siginfo_t*, void*) {}

TEST(Probe, RestoresWhateverWasInstalledAndLeavesSIGBUSAlone) {
    struct sigaction mine = {}, saved;
    mine.sa_sigaction = quiet_handler;
    mine.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &mine, &saved);
    Pages pg(1);
    pg.protect(0, PROT_NONE);
    EXPECT_FALSE(addr_is_readable(reinterpret_cast<char volatile*>(pg.page(0))));
    EXPECT_EQ(current(SIGSEGV).sa_sigaction, &quiet_handler);
    EXPECT_EQ(current(SIGBUS).sa_sigaction, &SVESigHandler);
    sigaction(SIGSEGV, &saved, nullptr);
}

TEST(Faults, AFaultAfterAProbeStillEndsTheProcessWithOneMessage) {
    Pages pg(1);
    pg.protect(0, PROT_NONE);
    uint64_t bad = pg.addr(0, 8);
    ChildResult r = run_in_child([&] {
        if (addr_is_readable(reinterpret_cast<char volatile*>(bad))) return;
        ReadMemLib8(bad, 0, nullptr, nullptr);
    });
    EXPECT_TRUE(died_once_by_segv(r)) << r.status << r.err;
}

TEST(GuardedRead, StraddlingElementFaultsWhereTheOneByteProbeDoesNot) {
    Pages pg(2);
    pg.protect(1, PROT_NONE);
    uint64_t end = pg.addr(1);
    std::memcpy(pg.page(0) + host_page() - 8, "\x11\x22\x33\x44\x55\x66\x77\x88", 8);
    // Reads that end exactly at the page end succeed; one byte later they
    // straddle and fault. N = 1 cannot straddle, so its miss is on the page.
    struct {
        uint64_t (*read)(unsigned long, int, bool*, CpuContext*);
        uint64_t address;
        bool faults;
        uint64_t value;
    } cases[] = {
        {ReadMemLib1, end - 1, false, 0x88},
        {ReadMemLib2, end - 2, false, 0x8877},
        {ReadMemLib4, end - 4, false, 0x88776655},
        {ReadMemLib8, end - 8, false, 0x8877665544332211},
        {ReadMemLib1, end, true, 0},
        {ReadMemLib2, end - 1, true, 0},
        {ReadMemLib4, end - 2, true, 0},
        {ReadMemLib8, end - 7, true, 0},
        {ReadMemLib8, end - 1, true, 0},
    };
    // The second pass also says "non-fault", which changes nothing.
    for (const auto& c : cases) {
        for (bool prior : {false, true}) {
            bool fault = prior;
            SVEFaultRegion = 0;
            EXPECT_EQ(c.read(c.address, prior, &fault, nullptr), c.value) << std::hex << end - c.address;
            EXPECT_EQ(fault, prior || c.faults) << std::hex << end - c.address;
            EXPECT_EQ(SVEFaultRegion, 0);
        }
    }
    EXPECT_TRUE(addr_is_readable(reinterpret_cast<char volatile*>(end - 2)));
}

// A file mapped beyond its end raises SIGBUS, not SIGSEGV.
struct PastEndOfFile {
    PastEndOfFile() {
        char name[] = "/tmp/memtestXXXXXX";
        fd = mkstemp(name);
        unlink(name);
        (void)!ftruncate(fd, 16);
        map = static_cast<uint8_t*>(mmap(nullptr, 2 * host_page(), PROT_READ, MAP_SHARED, fd, 0));
    }
    ~PastEndOfFile() {
        munmap(map, 2 * host_page());
        close(fd);
    }
    uint64_t beyond() const { return reinterpret_cast<uint64_t>(map) + host_page(); }
    int fd;
    uint8_t* map;
};

TEST(GuardedRead, SIGBUSTakesTheSamePathAsSIGSEGV) {
    PastEndOfFile f;
    bool fault = false;
    EXPECT_EQ(ReadMemLib2(f.beyond(), 0, &fault, nullptr), 0u);
    EXPECT_TRUE(fault);
    EXPECT_EQ(SVEFaultRegion, 0);
}

TEST(Faults, PlainReadsEndTheProcessByTheirOwnSignal) {
    Pages pg(1);
    pg.protect(0, PROT_NONE);
    PastEndOfFile f;
    uint64_t segv = pg.addr(0), bus = f.beyond();
    ChildResult r = run_in_child([&] { ReadMemLib8(segv, 0, nullptr, nullptr); });
    EXPECT_TRUE(died_once_by_segv(r)) << r.status << r.err;
    r = run_in_child([&] { ReadMemLib1(bus, 0, nullptr, nullptr); });
    EXPECT_TRUE(died_by(r, SIGBUS)) << r.status;
    EXPECT_EQ(count_of(r.err, kBusMessage), 1) << r.err;
    EXPECT_EQ(count_of(r.err, "SIGSEGV"), 0) << r.err;
}

TEST(SimulationEntries, TouchNothingAndReportNoFault) {
    Pages pg(1);
    pg.protect(0, PROT_NONE);
    bool fault = true;
    EXPECT_EQ(ReadMem(pg.addr(0), 8, 0, &fault, nullptr), 0u);
    EXPECT_FALSE(fault);
    fault = true;
    EXPECT_EQ(ReadMemSim(pg.addr(0), 4, 1, &fault, true, nullptr), 0u);
    EXPECT_FALSE(fault);
    WriteMem(1, pg.addr(0), 8, nullptr);
    WriteMemSim(1, pg.addr(0), 8, true, nullptr);
}

}  // namespace
