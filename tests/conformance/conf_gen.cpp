// Case generator of the conformance instrument.
//
//   conf_gen --seed S --count N (--rows A,B,... | --rows-file F | --implemented | --all)
//   conf_gen --case NAME:SEED [--case NAME:SEED ...]
//   conf_gen --layout        the data-area constants, for the driver to check
//   conf_gen --describe NAME how the generator reads a row's name
//
// Writes conf_case records on stdout. Every case is a pure function of its
// row and its own 64-bit seed, and the sweep derives each case seed from
// (S, row name, index), so one printed seed replays one case anywhere.
//
// What a case holds: a word drawn from the row (its fixed bits, the other bits
// random, with register fields pushed towards 31, 0 and aliasing), and a
// complete state whose values lean towards the edges. Memory rows get their
// base, index and offset registers aimed at chosen places of the data area:
// the middle, its ends, page crossings, the read-only page and the guard page.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "sve/core/decode.h"
#include "conf_format.h"

namespace {

struct Rng {
    uint64_t s;
    uint64_t next() { return conf_splitmix64(&s); }
    uint64_t below(uint64_t n) { return n ? next() % n : 0; }
    bool chance(unsigned pct) { return below(100) < pct; }
    int64_t range(int64_t lo, int64_t hi) { return lo + static_cast<int64_t>(below(static_cast<uint64_t>(hi - lo + 1))); }
};

uint64_t fnv1a(const char* s) {
    uint64_t h = 0xcbf29ce484222325ull;
    for (; *s; ++s) h = (h ^ static_cast<uint8_t>(*s)) * 0x100000001b3ull;
    return h;
}

uint64_t case_seed(uint64_t sweep_seed, const char* row, uint64_t index) {
    uint64_t s = sweep_seed * 0x9e3779b97f4a7c15ull ^ fnv1a(row) ^ (index + 1) * 0xd1b54a32d192ed03ull;
    return conf_splitmix64(&s);
}

uint64_t mask_bytes(uint64_t v, int bytes) { return bytes >= 8 ? v : v & ((1ull << (8 * bytes)) - 1); }

// ---- How a row's name is read -------------------------------------------

enum class Mem {
    None,
    Contig,     // C(Load|Store)[NF|NT|FF]m (SIZ | LSSZ)
    Struct,     // E{2,3,4}(Load|Store)m (SIZ | LSSZ)
    Dup,        // LoadDup m SIZ
    DupQ,       // LoadDup m Q (SIZ | SSZ)
    FillSpill,  // (Fill|Spill)SI, Z or P
    Prefetch,   // Prefetch m (SI | LSS | VI | SV | XSV | YSV)
    Gather,     // (Load|LoadFF|Store) m (VI|VS|SV|XVS|YVS|XSV|YSV) Z
    Other,      // a memory row whose name is not one of the above
};

struct Shape {
    std::string name;
    int elem = 0;  // element bytes from the type prefix, 0 when none
    bool memory = false;
    Mem kind = Mem::None;
    int msize = 1;        // memory element bytes
    int nregs = 1;        // structure registers
    bool scalar_index = false;  // base + X[Rm] * msize
    bool store = false, ff = false, nf = false;
    std::string addr;     // gather/prefetch addressing form: VI VS SV XVS YVS XSV YSV SI LSS
    bool pred_fill = false;
};

Shape read_shape(const sve_row& row) {
    Shape s;
    s.name = row.name;
    std::smatch m;
    std::string n = row.name;
    static const std::regex type_re("^Vec([USFDHBP])(\\d*)(?:_(\\d+))?(.*)$");
    std::string rest;
    if (std::regex_match(n, m, type_re)) {
        if (!m[2].str().empty()) s.elem = std::atoi(m[2].str().c_str()) / 8;
        rest = m[4].str();
        if (m[1].str() == "P" && m[2].str().empty()) s.elem = 0;
    }
    // Every SVE memory encoding has bit 31 set, and nothing else does.
    s.memory = (row.bits >> 31) & 1;
    if (!s.memory) return s;
    s.kind = Mem::Other;
    static const std::regex contig_re("^C(Load|Store)(NF|NT|FF)?([1248])(SIZ|LSSZ)$");
    static const std::regex struct_re("^E([234])(Load|Store)([1248])(SIZ|LSSZ)$");
    static const std::regex dup_re("^LoadDup([1248])(Q?)(SIZ|SSZ)$");
    static const std::regex fill_re("^(Fill|Spill)SI$");
    static const std::regex prf_re("^Prefetch([1248])(SI|LSS|VI|SV|XSV|YSV)$");
    static const std::regex gather_re("^(Load|LoadFF|Store)([1248])(VI|VS|SV|XVS|YVS|XSV|YSV)Z$");
    if (std::regex_match(rest, m, contig_re)) {
        s.kind = Mem::Contig;
        s.store = m[1] == "Store";
        s.ff = m[2] == "FF";
        s.nf = m[2] == "NF";
        s.msize = std::atoi(m[3].str().c_str());
        s.scalar_index = m[4] == "LSSZ";
    } else if (std::regex_match(rest, m, struct_re)) {
        s.kind = Mem::Struct;
        s.nregs = std::atoi(m[1].str().c_str());
        s.store = m[2] == "Store";
        s.msize = std::atoi(m[3].str().c_str());
        s.scalar_index = m[4] == "LSSZ";
    } else if (std::regex_match(rest, m, dup_re)) {
        s.msize = std::atoi(m[1].str().c_str());
        s.kind = m[2] == "Q" ? Mem::DupQ : Mem::Dup;
        s.scalar_index = m[3] == "SSZ";
    } else if (std::regex_match(rest, m, fill_re)) {
        s.kind = Mem::FillSpill;
        s.store = m[1] == "Spill";
        s.pred_fill = n.rfind("VecP", 0) == 0;
        s.msize = s.pred_fill ? 8 : 64;
    } else if (std::regex_match(rest, m, prf_re)) {
        s.kind = Mem::Prefetch;
        s.msize = std::atoi(m[1].str().c_str());
        s.addr = m[2].str();
        s.scalar_index = s.addr == "LSS";
    } else if (std::regex_match(rest, m, gather_re)) {
        s.kind = Mem::Gather;
        s.store = m[1] == "Store";
        s.ff = m[1] == "LoadFF";
        s.msize = std::atoi(m[2].str().c_str());
        s.addr = m[3].str();
    }
    if (s.elem == 0) s.elem = s.msize <= 8 ? s.msize : 8;
    return s;
}

// ---- Values ---------------------------------------------------------------

const uint64_t kIntEdges[] = {
    0, 1, 2, 3, 0x7f, 0x80, 0x81, 0xff, 0x100, 0x7fff, 0x8000, 0x8001, 0xffff, 0x10000,
    0x7fffffff, 0x80000000, 0x80000001, 0xffffffff, 0x100000000ull, 0x7fffffffffffffffull,
    0x8000000000000000ull, 0x8000000000000001ull, ~0ull, ~1ull, 0x5555555555555555ull, 0xaaaaaaaaaaaaaaaaull,
};
// Floating-point specials at each width, for the rows to come: zeros,
// subnormals, the normal boundaries, infinities, quiet and signalling NaNs.
const uint64_t kF16Edges[] = {0x0000, 0x8000, 0x0001, 0x03ff, 0x0400, 0x3c00, 0xbc00, 0x7bff, 0xfbff,
                              0x7c00, 0xfc00, 0x7e00, 0xfe00, 0x7c01, 0x7d55, 0x3800, 0x4000, 0x3555};
const uint64_t kF32Edges[] = {0x00000000, 0x80000000, 0x00000001, 0x007fffff, 0x00800000, 0x3f800000,
                              0xbf800000, 0x7f7fffff, 0xff7fffff, 0x7f800000, 0xff800000, 0x7fc00000,
                              0xffc00000, 0x7f800001, 0x7fa00000, 0x3f000000, 0x4b000000, 0x4f000000};
const uint64_t kF64Edges[] = {0x0000000000000000ull, 0x8000000000000000ull, 0x0000000000000001ull,
                              0x000fffffffffffffull, 0x0010000000000000ull, 0x3ff0000000000000ull,
                              0xbff0000000000000ull, 0x7fefffffffffffffull, 0x7ff0000000000000ull,
                              0xfff0000000000000ull, 0x7ff8000000000000ull, 0xfff8000000000000ull,
                              0x7ff0000000000001ull, 0x7ff4000000000000ull, 0x4330000000000000ull,
                              0x43e0000000000000ull, 0x3fe0000000000000ull};

template <size_t N>
uint64_t pick(Rng& r, const uint64_t (&a)[N]) {
    return a[r.below(N)];
}

uint64_t edge_value(Rng& r, int bytes) {
    unsigned k = static_cast<unsigned>(r.below(100));
    uint64_t v;
    int bits = 8 * bytes;
    if (k < 22) {
        v = r.next();
    } else if (k < 50) {
        v = pick(r, kIntEdges);
    } else if (k < 62) {
        // The sign boundaries of exactly this width, and their neighbours.
        uint64_t top = bits >= 64 ? 0x8000000000000000ull : 1ull << (bits - 1);
        const uint64_t c[] = {top - 1, top, top + 1, top - 2, ~0ull, ~0ull - 1, 2 * top - 2};
        v = c[r.below(7)];
    } else if (k < 78) {
        v = static_cast<uint64_t>(r.range(-16, 16));
    } else {
        if (bytes == 2)
            v = pick(r, kF16Edges);
        else if (bytes == 4)
            v = pick(r, kF32Edges);
        else if (bytes == 8)
            v = pick(r, kF64Edges);
        else
            v = pick(r, kIntEdges);
    }
    return mask_bytes(v, bytes);
}

void fill_vector(Rng& r, uint8_t* z, int elem_hint) {
    static const int sizes[] = {1, 2, 4, 8};
    int e = (elem_hint && r.chance(70)) ? elem_hint : sizes[r.below(4)];
    unsigned mode = static_cast<unsigned>(r.below(100));
    uint64_t same = edge_value(r, e);
    for (int i = 0; i < 64 / e; ++i) {
        uint64_t v;
        if (mode < 60)
            v = edge_value(r, e);
        else if (mode < 70)
            v = same;
        else if (mode < 80)
            v = r.next();
        else if (mode < 90)
            v = static_cast<uint64_t>(i) * (same & 7);
        else
            v = (mode & 1) ? ~0ull : 0;
        for (int b = 0; b < e; ++b) z[i * e + b] = static_cast<uint8_t>(v >> (8 * b));
    }
}

uint64_t x_value(Rng& r) {
    static const int sizes[] = {1, 2, 4, 8, 8, 8};
    int b = sizes[r.below(6)];
    uint64_t v = edge_value(r, b);
    if (b < 8) {
        unsigned k = static_cast<unsigned>(r.below(3));
        if (k == 1 && (v >> (8 * b - 1) & 1)) v |= ~0ull << (8 * b);  // sign-extended
        if (k == 2) v |= r.next() << (8 * b);                          // junk above a narrow value
    }
    return v;
}

void set_pred_bit(uint8_t* p, unsigned k, bool on) {
    if (on)
        p[k / 8] |= static_cast<uint8_t>(1u << (k % 8));
    else
        p[k / 8] &= static_cast<uint8_t>(~(1u << (k % 8)));
}

void fill_pred(Rng& r, uint8_t* p, int elem_hint) {
    static const int sizes[] = {1, 2, 4, 8};
    int e = (elem_hint && r.chance(70)) ? elem_hint : sizes[r.below(4)];
    int n = 64 / e;
    std::memset(p, 0, 8);
    unsigned mode = static_cast<unsigned>(r.below(100));
    if (mode >= 85) {  // raw bits, including the non-first bits of each element
        uint64_t v = r.next();
        std::memcpy(p, &v, 8);
        return;
    }
    int first = static_cast<int>(r.below(static_cast<uint64_t>(n)));
    unsigned density = mode < 60 ? static_cast<unsigned>(r.below(3)) : 0;
    for (int i = 0; i < n; ++i) {
        bool on;
        if (mode < 25)
            on = true;
        else if (mode < 35)
            on = false;
        else if (mode < 60)
            on = r.chance(density == 0 ? 10 : density == 1 ? 50 : 90);
        else if (mode < 70)
            on = i == first;
        else if (mode < 80)
            on = i < first;
        else
            on = i >= first;
        set_pred_bit(p, static_cast<unsigned>(i * e), on);
    }
}

// ---- Words ----------------------------------------------------------------

bool field_free(uint32_t mask, int hi, int lo) {
    uint32_t f = ((hi - lo == 31) ? ~0u : ((1u << (hi - lo + 1)) - 1)) << lo;
    return (mask & f) == 0;
}
uint32_t get_field(uint32_t w, int hi, int lo) { return (w >> lo) & ((1u << (hi - lo + 1)) - 1); }
uint32_t set_field(uint32_t w, int hi, int lo, uint32_t v) {
    uint32_t f = ((1u << (hi - lo + 1)) - 1) << lo;
    return (w & ~f) | ((v << lo) & f);
}

uint32_t draw_word(Rng& r, const sve_row& row) {
    uint32_t w = row.bits | (static_cast<uint32_t>(r.next()) & ~row.mask);
    const uint32_t m = row.mask;
    // Operand aliasing and the special register numbers matter more than any
    // particular register: push the standard 5-bit fields towards them.
    if (field_free(m, 4, 0) && field_free(m, 9, 5) && r.chance(15)) w = set_field(w, 4, 0, get_field(w, 9, 5));
    if (field_free(m, 4, 0) && field_free(m, 20, 16) && r.chance(10)) w = set_field(w, 4, 0, get_field(w, 20, 16));
    if (field_free(m, 9, 5) && field_free(m, 20, 16) && r.chance(8)) w = set_field(w, 20, 16, get_field(w, 9, 5));
    static const int lows[] = {0, 5, 16};
    for (int lo : lows)
        if (field_free(m, lo + 4, lo) && r.chance(8)) w = set_field(w, lo + 4, lo, r.chance(70) ? 31 : 0);
    return w;
}

// ---- Memory addressing --------------------------------------------------

// A place in the data area for the first byte an instruction touches.
uint64_t pick_target(Rng& r, uint32_t span, uint32_t align) {
    uint64_t t;
    unsigned k = static_cast<unsigned>(r.below(100));
    const uint64_t data_end = CONF_DATA_BASE + CONF_DATA_SIZE;
    if (span > CONF_DATA_SIZE / 2) span = CONF_DATA_SIZE / 2;
    if (k < 45) {
        t = CONF_DATA_BASE + 64 + r.below(CONF_DATA_SIZE - span - 128);  // well inside
    } else if (k < 55) {
        t = CONF_DATA_BASE + static_cast<uint64_t>(r.range(-48, 64));  // at the low end, maybe under it
    } else if (k < 70) {
        t = data_end - span + static_cast<uint64_t>(r.range(-24, span));  // running into the guard page
    } else if (k < 80) {
        uint64_t page = CONF_DATA_BASE + CONF_PAGE * (1 + r.below(3));   // across a readable page boundary
        t = page - r.below(span + 1);
    } else if (k < 92) {
        if (r.chance(50))
            t = CONF_RO_BASE + r.below(CONF_RO_SIZE - span);  // read-only: loads work, stores fault
        else
            t = CONF_RO_BASE + CONF_RO_SIZE - span + static_cast<uint64_t>(r.range(-16, span));
    } else {
        t = CONF_GUARD_BASE + r.below(CONF_PAGE);  // nothing readable
    }
    if (align > 1 && r.chance(80)) t &= ~static_cast<uint64_t>(align - 1);
    return t;
}

int64_t sext(uint64_t v, int bits) { return static_cast<int64_t>(v << (64 - bits)) >> (64 - bits); }

struct CaseBuilder {
    Rng& r;
    conf_case& c;
    const Shape& sh;

    uint64_t& xreg(uint32_t n) { return n == 31 ? c.st.sp : c.st.x[n]; }

    // Base register (bits 9..5, 31 = SP) set so that base + offset = target.
    void aim_base(uint64_t target, int64_t offset) {
        uint32_t rn = get_field(c.word, 9, 5);
        uint64_t base = target - static_cast<uint64_t>(offset);
        if (rn == 31) base &= ~15ull;  // SP stays 16-byte aligned: Linux checks it on SP-based accesses
        xreg(rn) = base;
    }

    // Index register (bits 20..16): a small element count, 31 meaning none.
    int64_t aim_index() {
        uint32_t rn = get_field(c.word, 9, 5), rm = get_field(c.word, 20, 16);
        if (rm == rn && rm != 31) {
            // The same register cannot be both a base near the area and a
            // small index; move the index elsewhere.
            rm = (rm + 1 + static_cast<uint32_t>(r.below(29))) % 31;
            if (rm == rn) rm = (rm + 1) % 31;
            c.word = set_field(c.word, 20, 16, rm);
        }
        if (rm == 31) return 0;
        int64_t k = r.chance(80) ? r.range(0, 40) : r.range(-40, 200);
        c.st.x[rm] = static_cast<uint64_t>(k);
        return k;
    }

    void vector_offsets(uint64_t target) {
        const std::string& a = sh.addr;
        int c_bytes = sh.elem == 4 ? 4 : 8;
        int n = 64 / c_bytes;
        uint32_t m = static_cast<uint32_t>(sh.msize);
        uint8_t* zv;
        unsigned pattern = static_cast<unsigned>(r.below(4));
        int64_t same = r.range(0, 8);
        auto step = [&](int i) -> int64_t {
            switch (pattern) {
                case 0: return i;                 // contiguous
                case 1: return n - 1 - i;         // descending
                case 2: return same;              // all one address
                default: return r.range(0, 2 * n);  // scattered
            }
        };
        if (a == "VI") {
            uint32_t imm = get_field(c.word, 20, 16);
            zv = c.st.z[get_field(c.word, 9, 5)];
            for (int i = 0; i < n; ++i) {
                uint64_t addr = target + static_cast<uint64_t>(step(i)) * m;
                if (r.chance(3)) addr = CONF_GUARD_BASE + r.below(CONF_PAGE);
                uint64_t v = addr - static_cast<uint64_t>(imm) * m;
                for (int b = 0; b < c_bytes; ++b) zv[i * c_bytes + b] = static_cast<uint8_t>(v >> (8 * b));
            }
            return;
        }
        // Scalar base plus vector offsets.
        bool scaled = a == "SV" || a == "XSV" || a == "YSV";
        bool sign32 = a == "XVS" || a == "XSV";
        bool zero32 = a == "YVS" || a == "YSV" || (c_bytes == 4 && (a == "VS" || a == "SV"));
        int64_t bias = sign32 && r.chance(50) ? r.range(1, 8) : 0;  // some negative offsets
        aim_base(target + static_cast<uint64_t>(bias * 4) * (scaled ? m : 1), 0);
        zv = c.st.z[get_field(c.word, 20, 16)];
        for (int i = 0; i < n; ++i) {
            int64_t units = step(i) - bias * 4;
            if (!scaled) units = units * m + (r.chance(20) ? r.range(-3, 3) : 0);
            if (r.chance(3)) units = r.range(-100000, 100000);  // far away: a fault, or wrap-around
            uint64_t v = static_cast<uint64_t>(units);
            if (zero32 || sign32) {
                v &= 0xffffffffull;
                if (c_bytes == 8 && r.chance(50)) v |= r.next() << 32;  // high half is ignored
            }
            for (int b = 0; b < c_bytes; ++b) zv[i * c_bytes + b] = static_cast<uint8_t>(v >> (8 * b));
        }
    }

    void setup_memory() {
        const uint32_t w = c.word;
        const uint32_t m = static_cast<uint32_t>(sh.msize);
        const int c_bytes = sh.elem ? sh.elem : 1;
        uint32_t span = 64;
        switch (sh.kind) {
            case Mem::Contig: span = static_cast<uint32_t>(64 / c_bytes) * m; break;
            case Mem::Struct: span = static_cast<uint32_t>(sh.nregs) * 64; break;
            case Mem::Dup: span = m; break;
            case Mem::DupQ: span = 16; break;
            case Mem::FillSpill: span = m; break;
            default: span = 128; break;
        }
        uint64_t t = pick_target(r, span, m > 8 ? 8 : m);
        switch (sh.kind) {
            case Mem::Contig:
            case Mem::Struct:
                if (sh.scalar_index) {
                    aim_base(t, aim_index() * m);
                } else {
                    int64_t imm = sext(get_field(w, 19, 16), 4);
                    int64_t unit = sh.kind == Mem::Struct ? sh.nregs * 64 : (64 / c_bytes) * m;
                    aim_base(t, imm * unit);
                }
                break;
            case Mem::Dup: aim_base(t, static_cast<int64_t>(get_field(w, 21, 16)) * m); break;
            case Mem::DupQ:
                if (sh.scalar_index)
                    aim_base(t, aim_index() * m);
                else
                    aim_base(t, sext(get_field(w, 19, 16), 4) * 16);
                break;
            case Mem::FillSpill: {
                int64_t imm9 = sext(get_field(w, 21, 16) << 3 | get_field(w, 12, 10), 9);
                aim_base(t, imm9 * m);
                break;
            }
            case Mem::Prefetch:
                if (sh.addr == "SI")
                    aim_base(t, sext(get_field(w, 21, 16), 6) * 64);
                else if (sh.addr == "LSS")
                    aim_base(t, aim_index() * m);
                else
                    vector_offsets(t);
                break;
            case Mem::Gather: vector_offsets(t); break;
            default:
                // Unknown shape: the usual base and index positions.
                aim_base(t, 0);
                break;
        }
        uint32_t pg = get_field(w, 12, 10);
        if (r.chance(40)) {  // all active at the element size: the common case of real code
            std::memset(c.st.p[pg], 0, 8);
            for (int k = 0; k < 64; k += c_bytes) set_pred_bit(c.st.p[pg], static_cast<unsigned>(k), true);
        }
        if ((sh.ff || sh.nf) && r.chance(70)) std::memset(c.st.ffr, 0xff, 8);  // after SETFFR
    }
};

// Reading a name takes a few regular expressions; do it once per row.
const Shape& shape_of(uint32_t row_index) {
    static std::vector<Shape> cache(sve_row_count);
    static std::vector<bool> done(sve_row_count);
    if (!done[row_index]) {
        cache[row_index] = read_shape(sve_rows[row_index]);
        done[row_index] = true;
    }
    return cache[row_index];
}

conf_case make_case(const sve_row& row, uint32_t row_index, uint64_t seed) {
    Rng r{seed};
    const Shape& sh = shape_of(row_index);
    conf_case c;
    std::memset(&c, 0, sizeof c);
    c.magic = CONF_CASE_MAGIC;
    c.seed = seed;
    c.row = row_index;
    c.word = draw_word(r, row);
    c.mem_seed = 1 + r.below(8);  // a few images, so runners rarely rebuild the area
    if (r.chance(50)) c.flags |= CONF_FLAG_PRED_JUNK;
    for (int i = 0; i < 31; ++i) c.st.x[i] = x_value(r);
    c.st.sp = r.chance(50) ? (CONF_DATA_BASE + r.below(CONF_DATA_SIZE)) & ~15ull : r.next() & ~15ull;
    c.st.nzcv = r.below(16) << 28;
    // Only the FPCR fields the reference keeps: AHP, DN, FZ, RMode, FZ16.
    const uint64_t fpcr_fields[] = {1u << 26, 1u << 25, 1u << 24, 3u << 22, 1u << 19};
    for (uint64_t f : fpcr_fields)
        if (r.chance(30)) c.st.fpcr |= f & r.next();
    // Cumulative flags IOC DZC OFC UFC IXC IDC, and QC.
    c.st.fpsr = r.chance(50) ? 0 : r.next() & 0x0800009full;
    for (auto& z : c.st.z) fill_vector(r, z, sh.elem);
    for (auto& p : c.st.p) fill_pred(r, p, sh.elem);
    if (r.chance(50))
        std::memset(c.st.ffr, 0xff, 8);
    else
        fill_pred(r, c.st.ffr, sh.elem);
    if (sh.memory) {
        CaseBuilder b{r, c, sh};
        b.setup_memory();
    }
    return c;
}

// ---- Command line -----------------------------------------------------------

int find_row(const std::string& name) {
    for (size_t i = 0; i < sve_row_count; ++i)
        if (name == sve_rows[i].name) return static_cast<int>(i);
    return -1;
}

void emit(const conf_case& c) {
    if (fwrite(&c, sizeof c, 1, stdout) != 1) {
        perror("conf_gen: write");
        exit(2);
    }
}

void split_into(const std::string& s, std::vector<std::string>& out) {
    size_t pos = 0;
    while (pos <= s.size()) {
        size_t comma = s.find(',', pos);
        if (comma == std::string::npos) comma = s.size();
        if (comma > pos) out.push_back(s.substr(pos, comma - pos));
        pos = comma + 1;
    }
}

int usage() {
    fprintf(stderr,
            "usage: conf_gen --seed S --count N (--rows A,B | --rows-file F | --implemented | --all)\n"
            "       conf_gen --case NAME:SEED ...\n"
            "       conf_gen --layout | --describe NAME\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    uint64_t seed = 1, count = 0;
    std::vector<std::string> rows, cases;
    bool implemented = false, all = false;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc) exit(usage());
            return argv[++i];
        };
        if (a == "--seed") {
            seed = std::strtoull(value().c_str(), nullptr, 0);
        } else if (a == "--count") {
            count = std::strtoull(value().c_str(), nullptr, 0);
        } else if (a == "--rows") {
            split_into(value(), rows);
        } else if (a == "--rows-file") {
            std::ifstream f(value());
            std::string line;
            while (std::getline(f, line))
                if (!line.empty()) rows.push_back(line);
        } else if (a == "--implemented") {
            implemented = true;
        } else if (a == "--all") {
            all = true;
        } else if (a == "--case") {
            cases.push_back(value());
        } else if (a == "--layout") {
            printf("{\"page\": %u, \"reserve_base\": %llu, \"reserve_size\": %llu, \"data_base\": %llu, "
                   "\"data_size\": %u, \"guard_base\": %llu, \"ro_base\": %llu, \"ro_size\": %u, "
                   "\"case_size\": %zu, \"result_size\": %zu}\n",
                   CONF_PAGE, CONF_RESERVE_BASE, CONF_RESERVE_SIZE, CONF_DATA_BASE, CONF_DATA_SIZE,
                   static_cast<unsigned long long>(CONF_GUARD_BASE), static_cast<unsigned long long>(CONF_RO_BASE),
                   CONF_RO_SIZE, sizeof(conf_case), sizeof(conf_result));
            return 0;
        } else if (a == "--describe") {
            int r = find_row(value());
            if (r < 0) return usage();
            Shape s = read_shape(sve_rows[r]);
            printf("%s elem=%d memory=%d kind=%d msize=%d nregs=%d index=%d store=%d ff=%d nf=%d addr=%s\n",
                   s.name.c_str(), s.elem, s.memory, static_cast<int>(s.kind), s.msize, s.nregs, s.scalar_index,
                   s.store, s.ff, s.nf, s.addr.c_str());
            return 0;
        } else {
            return usage();
        }
    }
    if (!cases.empty()) {
        for (const std::string& item : cases) {
            size_t colon = item.rfind(':');
            if (colon == std::string::npos) return usage();
            int r = find_row(item.substr(0, colon));
            if (r < 0) {
                fprintf(stderr, "conf_gen: no row %s\n", item.substr(0, colon).c_str());
                return 2;
            }
            emit(make_case(sve_rows[r], static_cast<uint32_t>(r), std::strtoull(item.c_str() + colon + 1, nullptr, 0)));
        }
        return 0;
    }
    if (implemented || all)
        for (size_t i = 0; i < sve_row_count; ++i)
            if (all || sve_rows[i].handler) rows.push_back(sve_rows[i].name);
    for (const std::string& name : rows) {
        int r = find_row(name);
        if (r < 0) {
            fprintf(stderr, "conf_gen: no row %s\n", name.c_str());
            return 2;
        }
        for (uint64_t k = 0; k < count; ++k)
            emit(make_case(sve_rows[r], static_cast<uint32_t>(r), case_seed(seed, sve_rows[r].name, k)));
    }
    return 0;
}
