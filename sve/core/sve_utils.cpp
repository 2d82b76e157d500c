// Decode maps, the static initialiser, the recogniser and the statistics.
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>
#include <utility>

#include "sve/core/decode.h"

// Every handler named by a row is declared weak: a row whose handler is not
// built yet resolves to null and is left out of the maps.
#define SVE_ROW(h, mask, bits, text) extern aarch64_decode_rc h(cpu_state*, unsigned) __attribute__((weak));
#include "sve/core/sve_rows.def"
#undef SVE_ROW

const sve_row sve_rows[] = {
#define SVE_ROW(h, mask, bits, text) {#h, mask, bits, text, static_cast<sve_handler>(&h)},
#include "sve/core/sve_rows.def"
#undef SVE_ROW
};
const size_t sve_row_count = sizeof(sve_rows) / sizeof(sve_rows[0]);

namespace {
constexpr uint32_t range_mask(int hi, int lo) {
    return (hi - lo == 31) ? 0xffffffffu : (((1u << (hi - lo + 1)) - 1) << lo);
}
}  // namespace

const sve_map_info sve_maps[] = {
#define R(hi, lo) | range_mask(hi, lo)
#define SVE_MAP(name, place, rows, ranges) {#name, place, rows, 0u ranges},
#include "sve/core/decode_maps.def"
#undef SVE_MAP
#undef R
};
static_assert(sizeof(sve_maps) / sizeof(sve_maps[0]) == SVE_MAP_COUNT, "44 maps");

uint32_t sve_map_key(uint32_t mask, uint32_t word) {
    // Walk the mask from bit 31 down; each set bit appends one key bit.
    uint32_t key = 0;
    for (int b = 31; b >= 0; --b)
        if (mask >> b & 1) key = key << 1 | (word >> b & 1);
    return key;
}

namespace {
typedef std::map<int, aarch64_decode_rc (*)(cpu_state*, unsigned)> decode_map;

// Per-address statistics. Built first by the static initialiser.
struct icount_entry {
    unsigned word;
    std::atomic<uint64_t> count;
};
std::map<unsigned*, icount_entry>* icounts;
std::mutex icounts_mutex;
std::atomic<uint64_t> sve_instr_count{0};

#define SVE_MAP(name, place, rows, ranges) decode_map name;
#include "sve/core/decode_maps.def"
#undef SVE_MAP

decode_map* const maps_exec_order[] = {
#define SVE_MAP(name, place, rows, ranges) &name,
#include "sve/core/decode_maps.def"
#undef SVE_MAP
};

decode_map* maps_is_sve_order[SVE_MAP_COUNT];
uint32_t masks_is_sve_order[SVE_MAP_COUNT];

void build_map(size_t index) {
    decode_map& m = *maps_exec_order[index];
    for (size_t r = 0; r < sve_row_count; ++r) {
        const sve_row& row = sve_rows[r];
        if (row.mask != sve_maps[index].mask || row.handler == nullptr) continue;
        m.emplace(static_cast<int>(sve_map_key(row.mask, row.bits)), row.handler);
    }
}

struct sve_utils_init {
    sve_utils_init() {
        icounts = new std::map<unsigned*, icount_entry>();
        page_size = static_cast<uint32_t>(sysconf(_SC_PAGESIZE));
        for (size_t i = 0; i < SVE_MAP_COUNT; ++i) {
            build_map(i);
            maps_is_sve_order[sve_maps[i].is_sve_place - 1] = maps_exec_order[i];
            masks_is_sve_order[sve_maps[i].is_sve_place - 1] = sve_maps[i].mask;
        }
        SVEInitialize();
    }
    ~sve_utils_init() {
        delete icounts;
        icounts = nullptr;
    }
} the_init;

sve_handler walk(decode_map* const* maps, const uint32_t* masks, uint32_t word) {
    for (size_t i = 0; i < SVE_MAP_COUNT; ++i) {
        const decode_map& m = *maps[i];
        if (m.empty()) continue;
        auto it = m.find(static_cast<int>(sve_map_key(masks[i], word)));
        if (it != m.end()) return it->second;
    }
    return nullptr;
}

uint32_t masks_exec_order(size_t i) { return sve_maps[i].mask; }
}  // namespace

uint32_t page_size;

extern "C" sve_handler is_sve(unsigned word) { return walk(maps_is_sve_order, masks_is_sve_order, word); }

extern "C" aarch64_decode_rc execute_sve_instruction(cpu_state* state) {
    static uint32_t exec_masks[SVE_MAP_COUNT];
    static bool ready = [] {
        for (size_t i = 0; i < SVE_MAP_COUNT; ++i) exec_masks[i] = masks_exec_order(i);
        return true;
    }();
    (void)ready;
    unsigned* pc = reinterpret_cast<unsigned*>(state->pc);
    unsigned word = *pc;
    sve_handler h = walk(maps_exec_order, exec_masks, word);
    if (h == nullptr) return DECODE_UNKNOWN;
    aarch64_decode_rc rc = h(state, word);
    if (rc == DECODE_OK) {
        update_sve_stats(pc, word);
        state->pc = reinterpret_cast<uint32_t*>(state->pc) + 1;
    }
    return rc;
}

extern "C" void update_sve_stats(unsigned* pc, unsigned word) {
    std::lock_guard<std::mutex> lock(icounts_mutex);
    sve_instr_count.fetch_add(1);
    auto it = icounts->find(pc);
    if (it == icounts->end()) {
        it = icounts->emplace(std::piecewise_construct, std::forward_as_tuple(pc), std::forward_as_tuple()).first;
        it->second.count.store(0);
        it->second.word = word;
    }
    it->second.count.fetch_add(1);
}

extern "C" void dump_sve_stats() {
    if (icounts == nullptr || icounts->empty()) return;
    for (auto& e : *icounts)
        fprintf(stderr, "%p: 0x%08x %ld\n", static_cast<void*>(e.first), e.second.word,
                static_cast<long>(e.second.count.load()));
}

uint64_t sve_instr_count_read() { return sve_instr_count.load(); }

void sve_stats_reset() {
    std::lock_guard<std::mutex> lock(icounts_mutex);
    icounts->clear();
    sve_instr_count.store(0);
}
