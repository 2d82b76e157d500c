// libFuzzer target over instruction words and register states.
//
// Input layout (shorter inputs are completed from a generator keyed by the
// input itself, so every input means exactly one run):
//   byte 0        flags, see kRawWord and the others below
//   bytes 1..4    the word (raw mode) or its operand bits (row mode), LE
//   bytes 5..6    row selector (row mode): index among the rows with a handler
//   bytes 7..8    base displacement for memory forms
//   then          x[0..31], nzcv, fpsr, fpcr, z[0..31], p[0..15], ffr
//
// Each run sends the word through is_sve, cross-checks the answer against a
// plain scan of the decode table, and, where a handler exists, runs it twice
// on the same state (memory forms with their addresses pointed into a mapped
// test area fenced by inaccessible pages). After the run it checks:
//   - the handler returned 0 or 2;
//   - nothing was written outside cpu_state (poisoned canaries on both sides);
//   - cpu_state.instruction is either untouched or exactly the word;
//   - a word refused with 2 changed nothing in cpu_state or memory;
//   - a prefetch changed nothing; a form that does not store left memory alone;
//   - a memory form wrote only its own registers (Zt and the next ones, or Pt;
//     FFR for first-fault and non-fault loads), never X, NZCV, FPSR or FPCR;
//   - no access faulted outside a guarded read (the area keeps every address
//     of a form mapped; only first-fault and non-fault loads run into the
//     guard page, and only after their first active element);
//   - both runs ended in the same state (no read of uninitialised data, no
//     hidden state carried from one call to the next); the second goes through
//     execute_sve_instruction, which must also step pc and count a success.
// Any failure prints what it saw and aborts, which libFuzzer records as a
// crash with the input that caused it.
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cinttypes>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "sve/core/decode.h"
#include "sve/memory/memory.h"
#include "tests/fuzz/fuzz_forms.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#define FUZZ_ASAN 1
#endif
#endif
#ifndef FUZZ_ASAN
#define ASAN_POISON_MEMORY_REGION(a, n) ((void)(a), (void)(n))
#define ASAN_UNPOISON_MEMORY_REGION(a, n) ((void)(a), (void)(n))
static void __sanitizer_print_stack_trace() {}
#endif

namespace {

constexpr uint8_t kRawWord = 1;        // take bytes 1..4 as the word itself
constexpr uint8_t kEdge = 2;           // first-fault/non-fault forms: addresses run into the guard page
constexpr uint8_t kCanonicalPred = 4;  // predicate and FFR bytes reduced to 0 or 1

// 9 header bytes and 3408 of register file: scripts/fuzz.sh's -max_len covers them.
static_assert(9 + 32 * 8 + 8 + 4 + 4 + 32 * 64 + 16 * 64 + 64 <= 3600, "input longer than -max_len");

// The test area: memory forms reach at most a spill's 256 vector lengths
// either side of the base, plus the base's own displacement.
constexpr size_t kAreaSize = 64 * 1024;
constexpr uint64_t kMaxDisp = 512;

// ---------------------------------------------------------------------------
// Rows, decode cross-check

struct Row {
    const sve_row* row;
    MemForm form;
};
std::vector<Row> g_rows;         // rows with a handler, in table order
std::vector<int> g_row_of_table;  // table index -> index in g_rows, or -1

void init_rows() {
    for (size_t i = 0; i < sve_row_count; ++i) {
        g_row_of_table.push_back(sve_rows[i].handler ? static_cast<int>(g_rows.size()) : -1);
        if (sve_rows[i].handler != nullptr) g_rows.push_back({&sve_rows[i], classify(sve_rows[i].name)});
    }
}

const cpu_state* g_start;  // the state the handler starts from, for reports

void dump_state(const cpu_state& s) {
    for (int i = 0; i < 32; ++i)
        fprintf(stderr, "  x[%d] = 0x%016" PRIx64 "%s", i, s.x[i], i % 2 ? "\n" : "");
    fprintf(stderr, "  nzcv = 0x%016" PRIx64 "  fpsr = 0x%08x  fpcr = 0x%08x\n", s.nzcv, s.fpsr, s.fpcr);
    auto line = [](const char* what, int n, const uint8_t* b) {
        fprintf(stderr, "  %s[%d] =", what, n);
        for (int i = 63; i >= 0; --i) fprintf(stderr, "%s%02x", i % 8 == 7 ? " " : "", b[i]);
        fprintf(stderr, "\n");
    };
    for (int i = 0; i < 32; ++i) line("z", i, s.z[i]);
    for (int i = 0; i < 16; ++i) line("p", i, s.p[i]);
    line("ffr", 0, s.ffr);
}

[[noreturn]] void fail(const char* what, uint32_t word, const char* name) {
    fprintf(stderr, "FUZZ FAILURE: %s\n  word 0x%08x  row %s\n", what, word, name ? name : "(none)");
    // Vectors are printed most significant byte first, 8 bytes a group.
    if (g_start != nullptr && getenv("FUZZ_DUMP") != nullptr) {
        fprintf(stderr, "state before the run:\n");
        dump_state(*g_start);
    }
    fflush(stderr);
    abort();
}

// The unique row that accepts the word, from a plain scan of the table.
const Row* scan_row(uint32_t word, const sve_row** any_row) {
    size_t first = sve_row_count;
    for (size_t i = 0; i < sve_row_count; ++i) {
        const sve_row& r = sve_rows[i];
        if ((word & r.mask) != r.bits) continue;
        if (first != sve_row_count) {
            fprintf(stderr, "rows %s and %s both accept the word\n", sve_rows[first].name, r.name);
            fail("two rows accept one word", word, r.name);
        }
        first = i;
    }
    *any_row = first == sve_row_count ? nullptr : &sve_rows[first];
    if (first == sve_row_count || g_row_of_table[first] < 0) return nullptr;
    return &g_rows[static_cast<size_t>(g_row_of_table[first])];
}

// ---------------------------------------------------------------------------
// Memory: [guard][area][guard], below 4 GiB so that 32-bit vector bases reach it.

uint8_t* g_area;
size_t g_page;
std::vector<uint8_t> g_area_image, g_area_after;

void init_area() {
    g_page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    size_t total = kAreaSize + 2 * g_page;
    void* p = MAP_FAILED;
    for (uintptr_t hint = 0x30000000; hint < 0x80000000 && p == MAP_FAILED; hint += 0x01000000)
        p = mmap(reinterpret_cast<void*>(hint), total, PROT_READ | PROT_WRITE,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (p == MAP_FAILED) {
        perror("fuzz: mmap of the test area below 4 GiB");
        abort();
    }
    uint8_t* base = static_cast<uint8_t*>(p);
    mprotect(base, g_page, PROT_NONE);
    mprotect(base + g_page + kAreaSize, g_page, PROT_NONE);
    g_area = base + g_page;
    g_area_image.resize(kAreaSize);
    g_area_after.resize(kAreaSize);
}

uint64_t area_lo() { return reinterpret_cast<uint64_t>(g_area); }
uint64_t area_hi() { return reinterpret_cast<uint64_t>(g_area) + kAreaSize; }
uint64_t area_mid() { return area_lo() + kAreaSize / 2; }

// A fault outside a guarded read is a wild access of the emulator (the test
// area keeps every legitimate address mapped): report it and abort, so that
// libFuzzer keeps the input. A fault inside a guarded read belongs to the
// first-fault machinery and goes to SVESigHandler, which jumps back.
uint32_t g_current_word;
const char* g_current_name;

// Counts for FUZZ_STATS=1, printed at exit: what the runs reached.
struct Counts {
    uint64_t inputs, decoded, refused, memory, stores, edge, guarded_faults;
} g_counts;
std::vector<uint8_t> g_row_seen;  // by index in g_rows

void print_counts() {
    size_t seen = 0;
    for (uint8_t b : g_row_seen) seen += b;
    fprintf(stderr, "fuzz counts: %zu of %zu rows with a handler were run\n", seen, g_rows.size());
    fprintf(stderr,
            "fuzz counts: %" PRIu64 " inputs, %" PRIu64 " with a handler, %" PRIu64 " refused (2), %" PRIu64
            " memory forms (%" PRIu64 " stores, %" PRIu64 " at the area's end), %" PRIu64
            " faults caught by guarded reads\n",
            g_counts.inputs, g_counts.decoded, g_counts.refused, g_counts.memory, g_counts.stores, g_counts.edge,
            g_counts.guarded_faults);
}

void fault_handler(int sig, siginfo_t* info, void* context) {
    if (SVEFaultRegion) {
        ++g_counts.guarded_faults;
        SVESigHandler(sig, info, context);
        return;
    }
    char msg[256];
    int n = snprintf(msg, sizeof msg,
                     "FUZZ FAILURE: %s at address %p outside a guarded read\n  word 0x%08x  row %s\n"
                     "  (test area %p..%p)\n",
                     sig == SIGSEGV ? "SIGSEGV" : "SIGBUS", info->si_addr, g_current_word,
                     g_current_name ? g_current_name : "(none)", static_cast<void*>(g_area),
                     static_cast<void*>(g_area + kAreaSize));
    if (n > 0) (void)!write(2, msg, static_cast<size_t>(n));
    // Dying anyway: stdio in a signal handler is acceptable here.
    if (g_start != nullptr && getenv("FUZZ_DUMP") != nullptr) dump_state(*g_start);
    __sanitizer_print_stack_trace();
    abort();
}

void install_fault_handler() {
    struct sigaction sa = {};
    sa.sa_sigaction = fault_handler;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_SIGINFO | SA_NODEFER;
    sigaction(SIGSEGV, &sa, nullptr);
    sigaction(SIGBUS, &sa, nullptr);
}

// ---------------------------------------------------------------------------
// The register file with canaries either side.

constexpr size_t kCanary = 256;
struct alignas(64) Arena {
    uint8_t before[kCanary];
    cpu_state s;
    uint8_t after[kCanary];
};
static_assert(offsetof(Arena, s) % 8 == 0 && offsetof(Arena, after) % 8 == 0, "poisoning needs 8-byte granules");
constexpr uint8_t kCanaryByte = 0xa5;

Arena* g_arena;
// The instruction field before the run: no word of 32 bits can equal it.
constexpr uint64_t kNoInstruction = 0x5eed5eed00000000ull;
uint32_t g_word_at_pc;

void poison() {
    ASAN_POISON_MEMORY_REGION(g_arena->before, kCanary);
    ASAN_POISON_MEMORY_REGION(g_arena->after, kCanary);
}

void check_canaries(uint32_t word, const char* name) {
    ASAN_UNPOISON_MEMORY_REGION(g_arena->before, kCanary);
    ASAN_UNPOISON_MEMORY_REGION(g_arena->after, kCanary);
    for (size_t i = 0; i < kCanary; ++i)
        if (g_arena->before[i] != kCanaryByte || g_arena->after[i] != kCanaryByte)
            fail("a write landed next to cpu_state", word, name);
    poison();
}

const char* field_of(size_t off, char* buf, size_t len) {
    if (off < offsetof(cpu_state, pc)) snprintf(buf, len, "x[%zu]", off / 8);
    else if (off < offsetof(cpu_state, nzcv)) snprintf(buf, len, "pc");
    else if (off < offsetof(cpu_state, fpsr)) snprintf(buf, len, "nzcv");
    else if (off < offsetof(cpu_state, fpcr)) snprintf(buf, len, "fpsr");
    else if (off < offsetof(cpu_state, fpcr_extra)) snprintf(buf, len, "fpcr");
    else if (off < offsetof(cpu_state, z)) snprintf(buf, len, "fpcr_extra/padding");
    else if (off < offsetof(cpu_state, p)) {
        size_t o = off - offsetof(cpu_state, z);
        snprintf(buf, len, "z[%zu] byte %zu", o / 64, o % 64);
    } else if (off < offsetof(cpu_state, ffr)) {
        size_t o = off - offsetof(cpu_state, p);
        snprintf(buf, len, "p[%zu] byte %zu", o / 64, o % 64);
    } else if (off < offsetof(cpu_state, instruction)) snprintf(buf, len, "ffr byte %zu", off - offsetof(cpu_state, ffr));
    else snprintf(buf, len, "instruction");
    return buf;
}

// Byte-wise comparison of two states, leaving out `instruction`.
bool same_registers(const cpu_state& a, const cpu_state& b, size_t* where) {
    const uint8_t* pa = reinterpret_cast<const uint8_t*>(&a);
    const uint8_t* pb = reinterpret_cast<const uint8_t*>(&b);
    for (size_t i = 0; i < offsetof(cpu_state, instruction); ++i)
        if (pa[i] != pb[i]) {
            *where = i;
            return false;
        }
    return true;
}

[[noreturn]] void fail_state(const char* what, size_t where, uint32_t word, const char* name) {
    char f[64], msg[160];
    snprintf(msg, sizeof msg, "%s (first difference: %s)", what, field_of(where, f, sizeof f));
    fail(msg, word, name);
}

// ---------------------------------------------------------------------------
// Input reading.

struct Reader {
    const uint8_t* data;
    size_t size, pos = 0;
    uint64_t rng;
    uint8_t byte() {
        if (pos < size) return data[pos++];
        // splitmix64: cheap, and the same input always completes the same way.
        rng += 0x9e3779b97f4a7c15ull;
        uint64_t z = rng;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return static_cast<uint8_t>(z ^ (z >> 31));
    }
    void bytes(void* out, size_t n) {
        uint8_t* o = static_cast<uint8_t*>(out);
        for (size_t i = 0; i < n; ++i) o[i] = byte();
    }
    uint16_t u16() { return static_cast<uint16_t>(byte() | byte() << 8); }
    uint32_t u32() { return static_cast<uint32_t>(u16()) | static_cast<uint32_t>(u16()) << 16; }
};

uint64_t seed_of(const uint8_t* data, size_t size) {
    uint64_t h = 0xcbf29ce484222325ull;  // FNV-1a
    for (size_t i = 0; i < size && i < 64; ++i) h = (h ^ data[i]) * 0x100000001b3ull;
    return h ^ size;
}

// A value in [-range, range) or [0, range) from a fuzzed 64-bit value.
int64_t small(uint64_t v, int64_t range, bool is_signed) {
    if (!is_signed) return static_cast<int64_t>(v % static_cast<uint64_t>(range));
    return static_cast<int64_t>(v % static_cast<uint64_t>(2 * range)) - range;
}

uint64_t get_elem(const uint8_t* z, unsigned bits, unsigned e) {
    uint64_t v = 0;
    std::memcpy(&v, z + e * bits / 8, bits / 8);
    return v;
}
void put_elem(uint8_t* z, unsigned bits, unsigned e, uint64_t v) { std::memcpy(z + e * bits / 8, &v, bits / 8); }

// Points the address operands of a memory form into the test area. May change
// the word's Xm field so that it names another register than Xn.
uint32_t place_addresses(cpu_state& s, const MemForm& f, uint32_t word, int64_t disp, bool edge) {
    unsigned rn = word >> 5 & 31, rm = word >> 16 & 31;
    bool fault_tolerant = f.first_fault || f.non_fault;
    edge = edge && fault_tolerant;
    uint64_t base = area_mid() + static_cast<uint64_t>(disp);
    switch (f.addr) {
        case AddrKind::None:
            return word;
        case AddrKind::Scalar:
            if (edge) {
                // Non-fault loads probe every element: the run may go past the end.
                base = area_hi() - static_cast<uint64_t>(disp < 0 ? -disp : disp) % 192;
                base &= ~uint64_t(f.msize - 1);
            }
            s.x[rn] = base;  // 31 is SP, also a base
            return word;
        case AddrKind::ScalarIndex: {
            if (rm == rn && rn != 31) {
                // The same register as base and index cannot be pointed anywhere
                // useful; name the next one as the index.
                rm = (rn + 1) & 31;
                word = (word & ~(31u << 16)) | rm << 16;
            }
            int64_t index = small(s.x[rm], 256, true);
            if (edge) {
                // The first element must be readable, the later ones may run
                // into the guard page: first active element is element 0.
                index = small(s.x[rm], 4, false);
                base = area_hi() - (static_cast<uint64_t>(index) + 1) * f.msize -
                       (static_cast<uint64_t>(disp < 0 ? -disp : disp) % 64) * f.msize;
                s.p[word >> 10 & 7][0] |= 1;
            }
            if (rm != 31) s.x[rm] = static_cast<uint64_t>(index);
            s.x[rn] = base;
            return word;
        }
        case AddrKind::VectorBase: {
            unsigned n = f.vec_bits == 32 ? 16 : 8;
            for (unsigned e = 0; e < n; ++e) {
                uint64_t a = area_mid() + static_cast<uint64_t>(small(get_elem(s.z[rn], f.vec_bits, e), 1024, true));
                if (edge && e > 0) a = area_hi() - 64 + get_elem(s.z[rn], f.vec_bits, e) % 256;
                if (edge) a &= ~uint64_t(f.msize - 1);
                put_elem(s.z[rn], f.vec_bits, e, a);
            }
            if (edge) s.p[word >> 10 & 7][0] |= 1;
            return word;
        }
        case AddrKind::VectorIndex: {
            unsigned n = f.vec_bits == 32 ? 16 : 8;
            if (edge) {
                base = area_hi() - 128;
                s.p[word >> 10 & 7][0] |= 1;
            }
            for (unsigned e = 0; e < n; ++e) {
                uint64_t v = get_elem(s.z[rm], f.vec_bits, e);
                int64_t off = small(v, 1024, f.offsets_signed);
                if (edge) {
                    off = e == 0 ? small(v, 8, false) : small(v, 128, false);
                    // Whole elements only: one that straddles the end of the
                    // area is a case of its own (see the report in tests/fuzz).
                    off &= ~int64_t(f.msize - 1);
                }
                uint64_t o = static_cast<uint64_t>(off);
                if (f.offsets_32 && f.vec_bits == 64)
                    // Only the low half is an offset: keep the fuzzed upper half,
                    // which the form must ignore.
                    o = (v & 0xffffffff00000000ull) | (o & 0xffffffffull);
                put_elem(s.z[rm], f.vec_bits, e, o);
            }
            s.x[rn] = base;
            return word;
        }
    }
    return word;
}

// Self-test: FUZZ_SELFTEST=<fault> puts a faulty handler in place of the
// real one, so that each check is seen to fire (tests/fuzz/CMakeLists.txt
// runs every fault and expects its own failure message).
enum class Fault { None, Result, Canary, Instruction, Refused, Nondeterministic, Wild, Hang, LoadWrites };
Fault g_fault = Fault::None;
sve_handler g_real;

Fault fault_named(const char* name) {
    struct {
        const char* name;
        Fault fault;
    } const table[] = {{"result", Fault::Result},       {"canary", Fault::Canary},
                       {"instruction", Fault::Instruction}, {"refused", Fault::Refused},
                       {"nondeterministic", Fault::Nondeterministic}, {"wild", Fault::Wild},
                       {"hang", Fault::Hang},           {"load-writes", Fault::LoadWrites}};
    for (const auto& t : table)
        if (std::strcmp(name, t.name) == 0) return t.fault;
    fprintf(stderr, "FUZZ_SELFTEST: no fault named %s\n", name);
    abort();
}

aarch64_decode_rc faulty_handler(cpu_state* s, unsigned w) {
    static uint64_t calls;
    aarch64_decode_rc rc = g_real(s, w);
    // Faults go into successful runs only, so that the check they aim at is
    // the first to see them.
    if (rc != DECODE_OK) return rc;
    switch (g_fault) {
        case Fault::None: break;
        case Fault::Result: return static_cast<aarch64_decode_rc>(1);
        case Fault::Canary: reinterpret_cast<volatile uint8_t*>(s + 1)[5] = 0; break;
        case Fault::Instruction: s->instruction = w ^ 0x20u; break;
        case Fault::Refused: s->x[7] ^= 1; return DECODE_UNKNOWN;
        case Fault::Nondeterministic: s->z[3][9] = static_cast<uint8_t>(++calls); break;
        case Fault::Wild: (void)*reinterpret_cast<volatile uint8_t*>(area_hi() + 100); break;
        case Fault::Hang: for (volatile int forever = 1; forever;) {} break;
        case Fault::LoadWrites: g_area[kAreaSize / 2 + 3] ^= 0x40; break;
    }
    return rc;
}

// What a memory form may change in the register file. None of them writes a
// general register (SVE has no base write-back), the flags or the FP control
// and status; a store changes nothing; a load writes its Zt registers (Zt to
// Zt+N-1, numbers taken modulo 32) or, for LDR of a predicate, its Pt; only
// first-fault and non-fault loads write FFR. FFR and predicates are compared
// by their bit 0, which is all they mean (the reference route rewrites their
// other bits).
void check_memory_effects(const MemForm& f, uint32_t word, const cpu_state& a, const cpu_state& b,
                          const char* name) {
    if (std::memcmp(a.x, b.x, sizeof a.x) != 0) fail("a memory form changed a general register", word, name);
    if (a.nzcv != b.nzcv || a.fpsr != b.fpsr || a.fpcr != b.fpcr)
        fail("a memory form changed NZCV, FPSR or FPCR", word, name);
    bool z_allowed[32] = {};
    bool p_allowed[16] = {};
    if (!f.store && !f.prefetch) {
        if (f.writes_p)
            p_allowed[word & 15] = true;
        else
            for (unsigned k = 0; k < f.nregs; ++k) z_allowed[(word + k) & 31] = true;
    }
    for (unsigned r = 0; r < 32; ++r)
        if (!z_allowed[r] && std::memcmp(a.z[r], b.z[r], 64) != 0) {
            char msg[96];
            snprintf(msg, sizeof msg, "a memory form changed z[%u], which it does not write", r);
            fail(msg, word, name);
        }
    for (unsigned r = 0; r < 16; ++r)
        for (unsigned i = 0; i < 64; ++i)
            if (!p_allowed[r] && ((a.p[r][i] ^ b.p[r][i]) & 1)) {
                char msg[96];
                snprintf(msg, sizeof msg, "a memory form changed p[%u], which it does not write", r);
                fail(msg, word, name);
            }
    if (!f.first_fault && !f.non_fault)
        for (unsigned i = 0; i < 64; ++i)
            if ((a.ffr[i] ^ b.ffr[i]) & 1) fail("a memory form that does not fault-check changed FFR", word, name);
}

void run_once(sve_handler h, uint32_t word, const cpu_state& start, bool memory, aarch64_decode_rc* rc) {
    g_arena->s = start;
    if (memory) std::memcpy(g_area, g_area_image.data(), kAreaSize);
    *rc = h(&g_arena->s, word);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    init_rows();
    g_row_seen.assign(g_rows.size(), 0);
    init_area();
    if (const char* f = getenv("FUZZ_SELFTEST")) g_fault = fault_named(f);
    if (getenv("FUZZ_STATS") != nullptr) atexit(print_counts);
    g_arena = static_cast<Arena*>(aligned_alloc(alignof(Arena), sizeof(Arena)));
    std::memset(g_arena, kCanaryByte, sizeof(Arena));
    poison();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // libFuzzer installs its own signal handlers after initialisation; ours
    // goes on top at the first run.
    static bool handler_installed = false;
    if (!handler_installed) {
        install_fault_handler();
        handler_installed = true;
    }
    g_start = nullptr;
    ++g_counts.inputs;
    if (size < 1) return 0;
    Reader in{data, size, 0, seed_of(data, size)};
    uint8_t flags = in.byte();
    uint32_t operand = in.u32();
    uint16_t selector = in.u16();
    int64_t disp = static_cast<int64_t>(static_cast<int16_t>(in.u16())) % static_cast<int64_t>(kMaxDisp);

    uint32_t word;
    if (flags & kRawWord) {
        word = operand;
    } else {
        const sve_row& r = *g_rows[selector % g_rows.size()].row;
        word = r.bits | (operand & ~r.mask);
    }

    // The decoder against a plain scan of the table.
    const sve_row* any = nullptr;
    const Row* row = scan_row(word, &any);
    sve_handler h = is_sve(word);
    sve_handler expect = any ? any->handler : nullptr;
    if (h != expect) fail("is_sve disagrees with the decode table", word, any ? any->name : nullptr);
    if (h == nullptr) return 0;

    static cpu_state start;
    std::memset(&start, 0, sizeof start);
    in.bytes(start.x, sizeof start.x);
    in.bytes(&start.nzcv, sizeof start.nzcv);
    // As the register reads: only N, Z, C and V can be set.
    start.nzcv &= 0xf0000000u;
    in.bytes(&start.fpsr, sizeof start.fpsr);
    in.bytes(&start.fpcr, sizeof start.fpcr);
    in.bytes(start.z, sizeof start.z);
    in.bytes(start.p, sizeof start.p);
    in.bytes(start.ffr, sizeof start.ffr);
    if (flags & kCanonicalPred) {
        for (auto& p : start.p)
            for (auto& b : p) b &= 1;
        for (auto& b : start.ffr) b &= 1;
    }
    start.fpcr_extra = 0;
    start.instruction = kNoInstruction;

    const MemForm& form = row->form;
    word = place_addresses(start, form, word, disp, (flags & kEdge) != 0);
    if (is_sve(word) != h) fail("placing the addresses changed the row", word, row->row->name);
    if (g_fault != Fault::None) {
        // The load fault needs a load, the others any row.
        if (g_fault == Fault::LoadWrites && (form.addr == AddrKind::None || form.store)) return 0;
        g_real = h;
        h = faulty_handler;
    }
    g_word_at_pc = word;
    start.pc = &g_word_at_pc;
    g_start = &start;
    g_current_word = word;
    g_current_name = row->row->name;

    // The area's content is keyed by the input as well. Forms that touch no
    // memory leave it alone: their reach is the register file, and a wild
    // write of theirs is the canaries' and the sanitizer's to see.
    bool memory = form.addr != AddrKind::None;
    if (memory) {
        uint64_t fill = seed_of(data, size) | 1;
        for (size_t i = 0; i < kAreaSize; i += 8) {
            fill ^= fill << 13;
            fill ^= fill >> 7;
            fill ^= fill << 17;
            std::memcpy(&g_area_image[i], &fill, 8);
        }
    }

    ++g_counts.decoded;
    g_row_seen[static_cast<size_t>(row - g_rows.data())] = 1;
    if (memory) {
        ++g_counts.memory;
        g_counts.stores += form.store;
        g_counts.edge += (flags & kEdge) && (form.first_fault || form.non_fault);
    }
    aarch64_decode_rc rc1, rc2;
    run_once(h, word, start, memory, &rc1);
    check_canaries(word, row->row->name);
    static cpu_state first;
    first = g_arena->s;
    if (memory) std::memcpy(g_area_after.data(), g_area, kAreaSize);

    if (rc1 != DECODE_OK && rc1 != DECODE_UNKNOWN) fail("handler returned neither 0 nor 2", word, row->row->name);
    if (first.instruction != kNoInstruction && first.instruction != word)
        fail("cpu_state.instruction holds neither the word nor what it held before", word, row->row->name);

    size_t where = 0;
    bool area_same = !memory || std::memcmp(g_area_after.data(), g_area_image.data(), kAreaSize) == 0;
    if (rc1 == DECODE_UNKNOWN) {
        ++g_counts.refused;
        if (!same_registers(first, start, &where)) fail_state("a refused word changed cpu_state", where, word, row->row->name);
        if (!area_same) fail("a refused word changed memory", word, row->row->name);
    }
    if (form.prefetch) {
        if (!same_registers(first, start, &where) || first.instruction != start.instruction)
            fail_state("a prefetch changed cpu_state", where, word, row->row->name);
    }
    if (!form.store && !area_same) fail("a form that does not store changed memory", word, row->row->name);
    if (memory && rc1 == DECODE_OK) check_memory_effects(form, word, start, first, row->row->name);

    // The same state again must give the same result.
    // The second run goes through the direct entry, which walks the maps in
    // its own order, counts a success and steps pc; a faulty handler of the
    // self-test is not in the maps, so there both runs call it.
    bool direct = g_fault == Fault::None;
    uint64_t count_before = sve_instr_count_read();
    if (direct) {
        g_arena->s = start;
        if (memory) std::memcpy(g_area, g_area_image.data(), kAreaSize);
        rc2 = execute_sve_instruction(&g_arena->s);
    } else {
        run_once(h, word, start, memory, &rc2);
    }
    check_canaries(word, row->row->name);
    if (rc2 != rc1) fail("two runs on one state returned differently", word, row->row->name);
    if (direct) {
        bool ok = rc2 == DECODE_OK;
        if (g_arena->s.pc != (ok ? &g_word_at_pc + 1 : &g_word_at_pc))
            fail(ok ? "the direct entry did not step pc by one word" : "the direct entry moved pc on a failure", word,
                 row->row->name);
        if (sve_instr_count_read() != count_before + (ok ? 1 : 0))
            fail("the direct entry counted wrongly", word, row->row->name);
        g_arena->s.pc = start.pc;
    }
    if (!same_registers(g_arena->s, first, &where) || g_arena->s.instruction != first.instruction)
        fail_state("two runs on one state ended differently", where, word, row->row->name);
    if (memory && std::memcmp(g_area, g_area_after.data(), kAreaSize) != 0)
        fail("two runs on one state left memory differently", word, row->row->name);
    g_current_name = nullptr;
    return 0;
}
