// Helpers of the memory, memfault and gather tests: pages with holes, memory
// below 4 GiB, a process in which a fault may end things, and a register file
// that such a process leaves behind for the parent to inspect.
#pragma once

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "sve/core/cpu_state.h"

inline size_t host_page() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

// `count` pages, readable and writable, shared with a forked child so that
// what it did before dying can be seen. With `low`, below 4 GiB (base stays
// null if no place is free there).
struct Pages {
    explicit Pages(size_t count, bool low = false) : n(count) {
        const int flags = MAP_SHARED | MAP_ANONYMOUS | (low ? MAP_FIXED_NOREPLACE : 0);
        for (uint64_t at = low ? 0x20000000 : 0; at < 0xf0000000 && base == nullptr; at += 0x01000000) {
            void* p = mmap(reinterpret_cast<void*>(at), n * host_page(), PROT_READ | PROT_WRITE, flags, -1, 0);
            if (p != MAP_FAILED && (!low || p == reinterpret_cast<void*>(at)))
                base = static_cast<uint8_t*>(p);
            else if (p != MAP_FAILED)
                munmap(p, n * host_page());
        }
    }
    ~Pages() {
        if (base) munmap(base, n * host_page());
    }
    uint8_t* page(size_t k) const { return base + k * host_page(); }
    void protect(size_t k, int prot) const { mprotect(page(k), host_page(), prot); }
    uint64_t addr(size_t k, long offset = 0) const { return reinterpret_cast<uint64_t>(page(k)) + offset; }
    uint8_t* base = nullptr;
    size_t n;
};

// A register file in shared memory, filled with 0xA5, which no kernel writes
// by accident.
struct SharedState {
    SharedState() {
        s = static_cast<cpu_state*>(
            mmap(nullptr, sizeof(cpu_state), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
        std::memset(s, 0xA5, sizeof(cpu_state));
    }
    ~SharedState() { munmap(s, sizeof(cpu_state)); }
    cpu_state* s;
};
const uint64_t kUntouched = 0xA5A5A5A5A5A5A5A5ull;

inline uint64_t get(const void* p, unsigned bytes) {
    uint64_t v = 0;
    std::memcpy(&v, p, bytes);
    return v;
}
inline uint64_t get(uint64_t address, unsigned bytes) { return get(reinterpret_cast<const void*>(address), bytes); }
inline void put(void* p, unsigned bytes, uint64_t v) { std::memcpy(p, &v, bytes); }
inline void fill(uint8_t* p, size_t n, unsigned seed) {
    for (size_t k = 0; k < n; ++k) p[k] = uint8_t(k * seed + 29);
}

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
inline bool completed(const ChildResult& r) { return WIFEXITED(r.status) && WEXITSTATUS(r.status) == 0; }
// Died by SIGSEGV after the handler's message, printed once.
inline bool died_once_by_segv(const ChildResult& r) {
    return died_by(r, SIGSEGV) && count_of(r.err, kSegvMessage) == 1;
}
