// What the client tests share: a client started on the stand-in host with a
// main executable of our own, child processes for the fatal paths, capture of
// standard error, and handlers that tests put in place of the decoder's.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "drstub.h"
#include "sve/core/decode.h"

namespace client_test {

// Full path the host reports for the main executable; its base name is what
// the totals lines show.
constexpr const char* kExePath = "/opt/korvel/bin/vector_app";

constexpr uint32_t kNop = 0xd503201f;
constexpr uint32_t kAddZ = 0x04a20020;  // ADD Z0.S, Z1.S, Z2.S

// The application's code: the main executable, a shared library, and memory
// in no module at all.
extern uint32_t main_code[256];
extern uint32_t lib_code[64];
extern uint32_t loose_code[64];

// Starts the client as the host would: argument list {library path, args...}.
void client_main(std::vector<const char*> args = {});
// The text of an assertion failure of the client at `line`.
std::string assert_line(int line, const char* condition);
// The totals lines that event_exit prints for the main executable.
std::string totals(unsigned long sve, unsigned long non_sve);

// What `body` writes to standard error; that of the exit event; the listing
// of dump_sve_stats.
std::string stderr_of(const std::function<void()>& body);
std::string exit_text();
std::string dump_text();

// How `body`, run in a child process, ended and what it wrote to standard error.
struct ChildEnd {
    bool exited;
    int status;  // exit status, or signal number
    std::string err;
};
ChildEnd run_in_child(const std::function<void()>& body);

// The handler the decoder found is replaced, at the call, by `test_handler`,
// which runs `current_handler`.
using Handler = std::function<aarch64_decode_rc(cpu_state*, unsigned)>;
extern Handler current_handler;
aarch64_decode_rc test_handler(cpu_state* s, unsigned word);
drstub::CallHook replace_handler();

// A register file with a distinct value in every register.
drstub::Machine distinct_machine(uint64_t seed);

// Fixture: a fresh host, the client started with a main executable, and one
// application thread, current.
class ClientTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Builds a block of `n` words at `words`, plays the app2app events on it.
    instrlist_t* build(const uint32_t* words, size_t n, bool for_trace = false, bool translating = false);
    // The items of a block, host calls collapsed to one item each.
    std::vector<drstub::Item> items(instrlist_t* bb);
    void* dc = nullptr;
    std::vector<instrlist_t*> blocks;
};

}  // namespace client_test
