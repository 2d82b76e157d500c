// Helpers of the gather tests: memory below 4 GiB (the 32-bit vector-plus-
// immediate forms take their bases from 32-bit elements), and the offsets that
// make each addressing form reach a chosen address.
#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <cstring>

#include "gather/gather_forms.h"
#include "memory/mem_test_util.h"

namespace gather_test {

// `count` pages below 4 GiB, shared with forked children. Page `count - 1`
// has no access: the trap page, where inactive elements point.
struct LowPages {
    explicit LowPages(size_t count) : n(count) {
        for (uint64_t at = 0x20000000; at < 0xf0000000 && base == nullptr; at += 0x01000000) {
            void* p = mmap(reinterpret_cast<void*>(at), n * host_page(), PROT_READ | PROT_WRITE,
                           MAP_SHARED | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
            if (p == reinterpret_cast<void*>(at))
                base = static_cast<uint8_t*>(p);
            else if (p != MAP_FAILED)
                munmap(p, n * host_page());
        }
        if (base) mprotect(page(n - 1), host_page(), PROT_NONE);
    }
    ~LowPages() {
        if (base) munmap(base, n * host_page());
    }
    uint8_t* page(size_t k) const { return base + k * host_page(); }
    uint64_t addr(size_t k, long offset = 0) const { return reinterpret_cast<uint64_t>(page(k)) + offset; }
    uint64_t trap() const { return addr(n - 1); }
    uint8_t* base = nullptr;
    size_t n;
};

inline uint64_t get(const uint8_t* p, unsigned bytes) {
    uint64_t v = 0;
    std::memcpy(&v, p, bytes);
    return v;
}
inline void put(uint8_t* p, unsigned bytes, uint64_t v) { std::memcpy(p, &v, bytes); }
inline uint64_t truncate(uint64_t v, unsigned bytes) { return bytes == 8 ? v : v & ((1ull << 8 * bytes) - 1); }
inline uint64_t extend(uint64_t v, unsigned from, bool sign) {
    if (!sign || from == 8 || !(v >> (8 * from - 1) & 1)) return v;
    return v | ~0ull << 8 * from;
}

// Elements 1, 4, 7, ... are inactive; active and inactive first bytes come in
// both spellings (0x01/0xFF, 0x00/0xFE) and the other bytes of a group are 1,
// which must not matter.
inline bool is_active(unsigned i) { return i % 3 != 1; }
inline void set_predicate(cpu_state* s, unsigned c) {
    for (unsigned k = 0; k < 64; ++k) {
        unsigned i = k / c;
        s->p[PG][k] = k % c ? 0x01 : is_active(i) ? (i & 1 ? 0x01 : 0xFF) : (i & 1 ? 0xFE : 0x00);
    }
}

// The value of the vector operand's element i that makes form `f`, with
// x9 = `xn`, address `target`; `junk` goes into the upper half of a 64-bit
// element whose form reads only the lower half. Returns false when the form
// cannot reach `target` from `xn` (out of the offset's range, or not a
// multiple of the scale).
inline bool offset_for(const GForm& f, uint64_t xn, uint64_t target, uint32_t junk, uint64_t* v) {
    const int64_t delta = static_cast<int64_t>(target - xn);
    const bool scaled = f.form == Form::SV || f.form == Form::XSV || f.form == Form::YSV;
    if (scaled && delta % static_cast<int64_t>(f.m) != 0) return false;
    const int64_t k = scaled ? delta / static_cast<int64_t>(f.m) : delta;
    const uint64_t hi = f.c == 8 ? uint64_t(junk) << 32 : 0;
    switch (f.form) {
        case Form::VI: {
            uint64_t b = target - IMM * f.m;
            if (f.c == 4 && b >> 32) return false;
            *v = b;
            return true;
        }
        case Form::VS:
        case Form::SV:
            // 64-bit elements: the whole element, wrapping; 32-bit: UXTW.
            if (f.c == 8) {
                *v = static_cast<uint64_t>(k);
                return true;
            }
            if (k < 0 || k > 0xffffffffll) return false;
            *v = static_cast<uint64_t>(k);
            return true;
        case Form::XVS:
        case Form::XSV:
            if (k < INT32_MIN || k > INT32_MAX) return false;
            *v = hi | static_cast<uint32_t>(k);
            return true;
        case Form::YVS:
        case Form::YSV:
            if (k < 0 || k > 0xffffffffll) return false;
            *v = hi | static_cast<uint32_t>(k);
            return true;
    }
    return false;
}

inline unsigned elements_of(const GForm& f) { return 64 / f.c; }

inline uint32_t with_zt(uint32_t word, unsigned zt) { return (word & ~31u) | zt; }

}  // namespace gather_test
