// Helpers of the memory tests: page layouts with holes, a process in which a
// fault may end things, and a register file that such a process can leave
// behind for the parent to inspect.
#pragma once

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "sve/core/cpu_state.h"

inline size_t host_page() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

// `count` pages, readable and writable, shared with a forked child so that
// what it did before dying can be seen.
struct Pages {
    explicit Pages(size_t count) : n(count) {
        base = static_cast<uint8_t*>(
            mmap(nullptr, n * host_page(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    }
    ~Pages() { munmap(base, n * host_page()); }
    uint8_t* page(size_t k) const { return base + k * host_page(); }
    void protect(size_t k, int prot) const { mprotect(page(k), host_page(), prot); }
    uint64_t addr(size_t k, long offset = 0) const { return reinterpret_cast<uint64_t>(page(k)) + offset; }
    uint8_t* base;
    size_t n;
};

// A register file in shared memory, filled with a pattern that no kernel
// writes by accident.
struct SharedState {
    SharedState() {
        s = static_cast<cpu_state*>(
            mmap(nullptr, sizeof(cpu_state), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
        std::memset(s, 0xA5, sizeof(cpu_state));
    }
    ~SharedState() { munmap(s, sizeof(cpu_state)); }
    cpu_state* s;
};

struct ChildResult {
    int status;
    std::string err;  // everything the child wrote on standard error
};

inline int count_of(const std::string& text, const std::string& what) {
    int n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

// Runs f in a forked child with standard error captured and no core dump.
// A child that comes back from f exits with status 0.
template <typename F>
ChildResult run_in_child(F f) {
    int fds[2];
    if (pipe(fds) != 0) return {-1, ""};
    fflush(stdout);
    fflush(stderr);
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        dup2(fds[1], 2);
        rlimit none = {0, 0};
        setrlimit(RLIMIT_CORE, &none);
        f();
        fflush(stderr);
        _exit(0);
    }
    close(fds[1]);
    std::string err;
    char buf[256];
    for (ssize_t got; (got = read(fds[0], buf, sizeof buf)) > 0;) err.append(buf, got);
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return {status, err};
}

inline const char* const kSegvMessage =
    "tarn's SVESigHandler caught signal SIGSEGV from the process being emulated, passing it to the default "
    "signal handler.\n";
inline const char* const kBusMessage =
    "tarn's SVESigHandler caught signal SIGBUS from the process being emulated, passing it to the default "
    "signal handler.\n";

inline bool died_by(const ChildResult& r, int sig) { return WIFSIGNALED(r.status) && WTERMSIG(r.status) == sig; }
