// Our runner: executes each case's instruction through our core and writes
// the resulting state in the same form as the reference runner, so that the
// two outputs can be compared record by record.
//
//   ours_runner            cases on stdin, results on stdout
//   ours_runner --rows     the decode table: name mask bits implemented
//
// It does what the block rewriting and the emulation call do around a
// handler, and no more: fill cpu_state from the architectural state, call
// is_sve(word)'s handler, read cpu_state back. Built natively and for
// AArch64; on AArch64 the host FPCR and FPSR hold the case's values while the
// handler runs, as they would after the rewriting sequence.
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "sve/core/decode.h"
#include "sve/memory/memory.h"
#include "conf_format.h"

namespace {

// Marks cpu_state.instruction before the call; a handler that takes the
// kernel route overwrites it with the word.
constexpr uint64_t kInstructionSentinel = 0xc0ffee00c0ffee00ull;

sigjmp_buf case_jb;
volatile sig_atomic_t caught_signal;
// The few memory images the cases ask for, each built once.
struct Image {
    uint64_t seed;
    bool valid;
    uint8_t bytes[CONF_DATA_SIZE];
} images[8];
const uint8_t* image_for(uint64_t seed) {
    Image& im = images[seed % 8];
    if (!im.valid || im.seed != seed) {
        conf_fill_memory(im.bytes, CONF_DATA_SIZE, seed);
        im.seed = seed;
        im.valid = true;
    }
    return im.bytes;
}
alignas(64) cpu_state state;
uint32_t word_in_memory;  // what cpu_state.pc points at

[[noreturn]] void die(const char* what) {
    fprintf(stderr, "ours_runner: %s: %s\n", what, strerror(errno));
    exit(2);
}

void on_signal(int sig, siginfo_t* info, void* uc) {
    // A guarded read of the core is under way: the fault is its to handle.
    // (addr_is_readable swaps SIGSEGV to its own probe handler for the length
    // of a probe and puts this one back; that path never reaches here.)
    if ((sig == SIGSEGV || sig == SIGBUS) && SVEFaultRegion) {
        SVESigHandler(sig, info, uc);
        return;
    }
    caught_signal = sig;
    siglongjmp(case_jb, 1);
}

void install_handlers() {
    static uint8_t altstack[1 << 16];
    stack_t ss = {};
    ss.ss_sp = altstack;
    ss.ss_size = sizeof altstack;
    if (sigaltstack(&ss, nullptr) != 0) die("sigaltstack");
    // Installed after the core's static initialiser, replacing SVESigHandler,
    // which would end the process on an ordinary fault; the hardware would
    // have delivered that fault as a signal, and that is what we report.
    for (int sig : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGTRAP, SIGALRM, SIGABRT, SIGSYS}) {
        struct sigaction sa = {};
        sa.sa_sigaction = on_signal;
        sa.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
        sigemptyset(&sa.sa_mask);
        if (sigaction(sig, &sa, nullptr) != 0) die("sigaction");
    }
}

void map_area() {
    void* want = reinterpret_cast<void*>(CONF_RESERVE_BASE);
    void* got = mmap(want, CONF_RESERVE_SIZE, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (got != want) die("mapping the data area at its fixed address");
    auto at = [](uint64_t a) { return reinterpret_cast<void*>(a); };
    if (mprotect(at(CONF_RO_BASE), CONF_RO_SIZE, PROT_READ | PROT_WRITE) != 0) die("mprotect");
    conf_fill_memory(static_cast<uint8_t*>(at(CONF_RO_BASE)), CONF_RO_SIZE, CONF_RO_SEED);
    if (mprotect(at(CONF_RO_BASE), CONF_RO_SIZE, PROT_READ) != 0) die("mprotect");
    if (mprotect(at(CONF_DATA_BASE), CONF_DATA_SIZE, PROT_READ | PROT_WRITE) != 0) die("mprotect");
}

void write_all(const void* buf, size_t n) {
    auto p = static_cast<const uint8_t*>(buf);
    while (n > 0) {
        ssize_t k = write(1, p, n);
        if (k < 0 && errno == EINTR) continue;
        if (k <= 0) die("write");
        p += k;
        n -= static_cast<size_t>(k);
    }
}

// Predicate bits -> one byte per vector byte. Only bit 0 is the predicate;
// the other seven get random junk, which every reader must ignore.
// Junk comes from a generator seeded by the case, so the comparator can
// work out which byte held what (scripts/conformance_compare.py, pred_junk).
enum class Junk { None, Some, Every };
void unpack_pred(uint8_t* dst, const uint8_t* bits, uint64_t& junk, Junk mode) {
    for (unsigned k = 0; k < 64; ++k) {
        uint64_t r = conf_splitmix64(&junk);
        uint8_t j = mode == Junk::None ? 0 : static_cast<uint8_t>(r) & 0xfe;
        if (mode == Junk::Every) j |= 0x80;
        dst[k] = static_cast<uint8_t>((bits[k / 8] >> (k % 8) & 1) | j);
    }
}

void pack_pred(uint8_t* bits, const uint8_t* src) {
    for (unsigned b = 0; b < 8; ++b) {
        uint8_t v = 0;
        for (unsigned i = 0; i < 8; ++i) v |= static_cast<uint8_t>((src[8 * b + i] & 1) << i);
        bits[b] = v;
    }
}

void load_state(const conf_case& c) {
    std::memset(&state, 0, sizeof state);
    for (int i = 0; i < 31; ++i) state.x[i] = c.st.x[i];
    state.x[31] = c.st.sp;
    word_in_memory = c.word;
    state.pc = &word_in_memory;
    // MRS of NZCV, FPSR and FPCR gives what the case holds; the rewriting
    // stores FPSR and FPCR as 32-bit words.
    state.nzcv = c.st.nzcv;
    state.fpsr = static_cast<uint32_t>(c.st.fpsr);
    state.fpcr = static_cast<uint32_t>(c.st.fpcr);
    state.fpcr_extra = 0;
    std::memcpy(state.z, c.st.z, sizeof state.z);
    uint64_t junk = c.seed ^ 0x6a09e667f3bcc908ull;
    Junk pj = (c.flags & CONF_FLAG_PRED_JUNK) ? Junk::Some : Junk::None;
    for (int i = 0; i < 16; ++i) unpack_pred(state.p[i], c.st.p[i], junk, pj);
    // Junk in every FFR byte: a handler that rewrites all of them as 0 or 1
    // has gone through the reference frame, which is how the route shows.
    unpack_pred(state.ffr, c.st.ffr, junk, Junk::Every);
    state.instruction = kInstructionSentinel;
}

void store_state(conf_state& st) {
    for (int i = 0; i < 31; ++i) st.x[i] = state.x[i];
    st.sp = state.x[31];
    // MSR NZCV keeps only N, Z, C, V; MSR FPSR and FPCR take 32-bit words.
    st.nzcv = state.nzcv & 0xf0000000u;
    st.fpsr = state.fpsr;
    st.fpcr = state.fpcr;
    std::memcpy(st.z, state.z, sizeof st.z);
    for (int i = 0; i < 16; ++i) pack_pred(st.p[i], state.p[i]);
    pack_pred(st.ffr, state.ffr);
}

#if defined(__aarch64__)
struct HostFp {
    uint64_t fpcr, fpsr;
};
HostFp enter_case_fp(const conf_case& c) {
    HostFp saved;
    __asm__ volatile("mrs %0, fpcr\n\tmrs %1, fpsr" : "=r"(saved.fpcr), "=r"(saved.fpsr));
    __asm__ volatile("msr fpcr, %0\n\tmsr fpsr, %1" ::"r"(c.st.fpcr), "r"(c.st.fpsr));
    return saved;
}
void leave_case_fp(const HostFp& saved) {
    __asm__ volatile("msr fpcr, %0\n\tmsr fpsr, %1" ::"r"(saved.fpcr), "r"(saved.fpsr));
}
#else
struct HostFp {};
HostFp enter_case_fp(const conf_case&) { return {}; }
void leave_case_fp(const HostFp&) {}
#endif

int row_of(sve_handler h) {
    for (size_t i = 0; i < sve_row_count; ++i)
        if (sve_rows[i].handler == h) return static_cast<int>(i);
    return -1;
}

int list_rows() {
    for (size_t i = 0; i < sve_row_count; ++i) {
        const sve_row& r = sve_rows[i];
        printf("%s %08x %08x %d\n", r.name, r.mask, r.bits, r.handler != nullptr);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--rows") == 0) return list_rows();
    if (argc != 1) {
        fprintf(stderr, "usage: ours_runner [--rows] < cases > results\n");
        return 2;
    }
    if (sysconf(_SC_PAGESIZE) != static_cast<long>(CONF_PAGE)) {
        fprintf(stderr, "ours_runner: page size %ld, the data area is laid out for %u\n", sysconf(_SC_PAGESIZE),
                CONF_PAGE);
        return 2;
    }
    map_area();
    install_handlers();

    auto* data = reinterpret_cast<uint8_t*>(CONF_DATA_BASE);
    uint64_t current_seed = 0;
    bool data_valid = false;
    static conf_case c;
    static struct {
        conf_result r;
        uint32_t mem[CONF_DATA_SIZE];
    } out;

    for (;;) {
        size_t got = fread(&c, 1, sizeof c, stdin);
        if (got == 0) break;
        if (got != sizeof c || c.magic != CONF_CASE_MAGIC) {
            fprintf(stderr, "ours_runner: malformed case record\n");
            return 2;
        }
        const uint8_t* pristine = image_for(c.mem_seed);
        if (!data_valid || c.mem_seed != current_seed) {
            std::memcpy(data, pristine, CONF_DATA_SIZE);
            current_seed = c.mem_seed;
            data_valid = true;
        }

        std::memset(&out.r, 0, sizeof out.r);
        out.r.magic = CONF_RESULT_MAGIC;
        out.r.seed = c.seed;
        load_state(c);
        uint8_t ffr_in[64];
        std::memcpy(ffr_in, state.ffr, sizeof ffr_in);

        sve_handler h = is_sve(c.word);
        out.r.row = h ? static_cast<uint32_t>(row_of(h)) : CONF_NO_ROW;
        caught_signal = 0;
        if (h == nullptr) {
            out.r.rc = CONF_RC_NO_HANDLER;
            out.r.st = c.st;
        } else if (sigsetjmp(case_jb, 1) == 0) {
            HostFp fp = enter_case_fp(c);
            alarm(5);
            aarch64_decode_rc rc = h(&state, c.word);
            alarm(0);
            leave_case_fp(fp);
            out.r.rc = rc;
            store_state(out.r.st);
            if (state.instruction == c.word) out.r.info |= CONF_INFO_WROTE_INSTRUCTION;
            bool normalised = true;
            for (int k = 0; k < 64; ++k) normalised &= state.ffr[k] <= 1;
            if (normalised && std::memcmp(ffr_in, state.ffr, 64) != 0) out.r.info |= CONF_INFO_NORMALISED_FFR;
        } else {
            alarm(0);
#if defined(__aarch64__)
            __asm__ volatile("msr fpcr, xzr\n\tmsr fpsr, xzr");
#endif
            out.r.signal = static_cast<uint32_t>(caught_signal);
            out.r.st = c.st;
        }

        uint32_t n = 0;
        if (std::memcmp(data, pristine, CONF_DATA_SIZE) != 0) {
            for (uint32_t i = 0; i < CONF_DATA_SIZE; ++i)
                if (data[i] != pristine[i]) out.mem[n++] = i | static_cast<uint32_t>(data[i]) << 24;
            std::memcpy(data, pristine, CONF_DATA_SIZE);
        }
        out.r.nmem = n;
        write_all(&out, sizeof out.r + n * sizeof(uint32_t));
        // An abort inside the core may have left the C library's locks held;
        // end here and let the driver start a fresh runner for the rest.
        if (caught_signal == SIGABRT) return 3;
    }
    return 0;
}
