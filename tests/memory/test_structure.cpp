// Structure loads and stores, through their handlers with words from the
// assembler, against a model of LD2..LD4 and ST2..ST4 written here.
#include <gtest/gtest.h>

#include "mem_test_util.h"
#include "sve/core/decode.h"
#include "sve/memory/mem_kernels.h"

namespace {

struct Form {
    const char* name;
    sve_handler si;  // {z30.T, ...}, p3, [x7, #-2 * N, mul vl]
    sve_handler ss;  // {z30.T, ...}, p3, [x7, x11, lsl #log2(s)]
    uint32_t si_word, ss_word;
    unsigned N, s;
    bool store;
};

const Form kForms[] = {
    {"ld2b", VecU8E2Load1SIZ, VecU8E2Load1LSSZ, 0xa42eecfe, 0xa42bccfe, 2, 1, false},
    {"st2b", VecU8E2Store1SIZ, VecU8E2Store1LSSZ, 0xe43eecfe, 0xe42b6cfe, 2, 1, true},
    {"ld2h", VecU16E2Load2SIZ, VecU16E2Load2LSSZ, 0xa4aeecfe, 0xa4abccfe, 2, 2, false},
    {"st2h", VecU16E2Store2SIZ, VecU16E2Store2LSSZ, 0xe4beecfe, 0xe4ab6cfe, 2, 2, true},
    {"ld2w", VecU32E2Load4SIZ, VecU32E2Load4LSSZ, 0xa52eecfe, 0xa52bccfe, 2, 4, false},
    {"st2w", VecU32E2Store4SIZ, VecU32E2Store4LSSZ, 0xe53eecfe, 0xe52b6cfe, 2, 4, true},
    {"ld2d", VecU64E2Load8SIZ, VecU64E2Load8LSSZ, 0xa5aeecfe, 0xa5abccfe, 2, 8, false},
    {"st2d", VecU64E2Store8SIZ, VecU64E2Store8LSSZ, 0xe5beecfe, 0xe5ab6cfe, 2, 8, true},
    {"ld3b", VecU8E3Load1SIZ, VecU8E3Load1LSSZ, 0xa44eecfe, 0xa44bccfe, 3, 1, false},
    {"st3b", VecU8E3Store1SIZ, VecU8E3Store1LSSZ, 0xe45eecfe, 0xe44b6cfe, 3, 1, true},
    {"ld3h", VecU16E3Load2SIZ, VecU16E3Load2LSSZ, 0xa4ceecfe, 0xa4cbccfe, 3, 2, false},
    {"st3h", VecU16E3Store2SIZ, VecU16E3Store2LSSZ, 0xe4deecfe, 0xe4cb6cfe, 3, 2, true},
    {"ld3w", VecU32E3Load4SIZ, VecU32E3Load4LSSZ, 0xa54eecfe, 0xa54bccfe, 3, 4, false},
    {"st3w", VecU32E3Store4SIZ, VecU32E3Store4LSSZ, 0xe55eecfe, 0xe54b6cfe, 3, 4, true},
    {"ld3d", VecU64E3Load8SIZ, VecU64E3Load8LSSZ, 0xa5ceecfe, 0xa5cbccfe, 3, 8, false},
    {"st3d", VecU64E3Store8SIZ, VecU64E3Store8LSSZ, 0xe5deecfe, 0xe5cb6cfe, 3, 8, true},
    {"ld4b", VecU8E4Load1SIZ, VecU8E4Load1LSSZ, 0xa46eecfe, 0xa46bccfe, 4, 1, false},
    {"st4b", VecU8E4Store1SIZ, VecU8E4Store1LSSZ, 0xe47eecfe, 0xe46b6cfe, 4, 1, true},
    {"ld4h", VecU16E4Load2SIZ, VecU16E4Load2LSSZ, 0xa4eeecfe, 0xa4ebccfe, 4, 2, false},
    {"st4h", VecU16E4Store2SIZ, VecU16E4Store2LSSZ, 0xe4feecfe, 0xe4eb6cfe, 4, 2, true},
    {"ld4w", VecU32E4Load4SIZ, VecU32E4Load4LSSZ, 0xa56eecfe, 0xa56bccfe, 4, 4, false},
    {"st4w", VecU32E4Store4SIZ, VecU32E4Store4LSSZ, 0xe57eecfe, 0xe56b6cfe, 4, 4, true},
    {"ld4d", VecU64E4Load8SIZ, VecU64E4Load8LSSZ, 0xa5eeecfe, 0xa5ebccfe, 4, 8, false},
    {"st4d", VecU64E4Store8SIZ, VecU64E4Store8LSSZ, 0xe5feecfe, 0xe5eb6cfe, 4, 8, true},
};

constexpr unsigned ZT = 30, PG = 3, XN = 7, XM = 11;

unsigned zk(unsigned zt, unsigned k) { return (zt + k) & 31; }
uint64_t get(const uint8_t* p, unsigned bytes) {
    uint64_t v = 0;
    std::memcpy(&v, p, bytes);
    return v;
}
bool is_active(unsigned i) { return i % 3 != 1; }
void set_predicate(cpu_state* s, unsigned pg, unsigned size) {
    for (unsigned k = 0; k < 64; ++k) s->p[pg][k] = k % size ? 1 : is_active(k / size) ? 0xFF : 0xFE;
}
void fill(uint8_t* p, size_t n, unsigned seed) {
    for (size_t k = 0; k < n; ++k) p[k] = uint8_t(k * seed + 29 + k / 256);
}

// Member k of structure i is the element at base + (i * N + k) * s.
void expect_loaded(const cpu_state* s, unsigned zt, unsigned N, unsigned size, uint64_t base, bool all,
                   const char* what) {
    for (unsigned k = 0; k < N; ++k)
        for (unsigned i = 0; i < 64 / size; ++i) {
            const uint8_t* at = reinterpret_cast<const uint8_t*>(base) + (i * N + k) * size;
            uint64_t want = all || is_active(i) ? get(at, size) : 0;
            ASSERT_EQ(get(s->z[zk(zt, k)] + i * size, size), want) << what << " z" << zk(zt, k) << " element " << i;
        }
}

uint64_t place(const Form& f, bool ss, cpu_state* s, const Pages& pg) {
    if (!ss) {
        s->x[XN] = pg.addr(1, 24 + 2 * f.N * 64);
        return pg.addr(1, 24);
    }
    s->x[XN] = pg.addr(1, 8);
    s->x[XM] = 37;
    return pg.addr(1, 8 + 37 * f.s);
}

TEST(Structure, TheDecoderFindsEachFormsHandler) {
    for (const Form& f : kForms) {
        EXPECT_EQ(is_sve(f.si_word), f.si) << f.name;
        EXPECT_EQ(is_sve(f.ss_word), f.ss) << f.name;
    }
}

TEST(Structure, EveryLoadDeinterleavesIntoAWrappingGroup) {
    for (const Form& f : kForms) {
        if (f.store) continue;
        for (bool ss : {false, true}) {
            SharedState st;
            Pages pg(4);
            fill(pg.base, 4 * host_page(), 151);
            set_predicate(st.s, PG, f.s);
            uint64_t base = place(f, ss, st.s, pg);
            ASSERT_EQ((ss ? f.ss : f.si)(st.s, ss ? f.ss_word : f.si_word), DECODE_OK);
            expect_loaded(st.s, ZT, f.N, f.s, base, false, f.name);
            EXPECT_EQ(st.s->z[zk(ZT, f.N)][0], 0xA5) << f.name << " wrote past its group";
            EXPECT_EQ(st.s->z[ZT - 1][63], 0xA5) << f.name;
        }
    }
}

TEST(Structure, EveryStoreInterleavesActiveStructuresOnly) {
    for (const Form& f : kForms) {
        if (!f.store) continue;
        for (bool ss : {false, true}) {
            SharedState st;
            Pages pg(4);
            std::memset(pg.base, 0x5A, 4 * host_page());
            for (unsigned k = 0; k < f.N; ++k) fill(st.s->z[zk(ZT, k)], 64, 37 + 2 * k);
            set_predicate(st.s, PG, f.s);
            uint64_t base = place(f, ss, st.s, pg);
            ASSERT_EQ((ss ? f.ss : f.si)(st.s, ss ? f.ss_word : f.si_word), DECODE_OK);
            for (size_t b = 0; b < 4 * host_page(); ++b) {
                uint64_t a = pg.addr(0, b), o = a - base;
                uint8_t want = 0x5A;
                if (a >= base && o < f.N * 64) {
                    unsigned i = o / (f.N * f.s), k = o / f.s % f.N;
                    if (is_active(i)) want = st.s->z[zk(ZT, k)][i * f.s + o % f.s];
                }
                ASSERT_EQ(pg.base[b], want) << f.name << (ss ? " ss" : " si") << " byte " << b;
            }
        }
    }
}

TEST(Structure, AllFalsePredicateTouchesNoMemory) {
    Pages pg(1);
    pg.protect(0, PROT_NONE);
    for (const Form& f : kForms)
        for (bool ss : {false, true}) {
            SharedState st;
            std::memset(st.s->p[PG], 0xFE, 64);
            st.s->x[XN] = pg.addr(0, 2 * f.N * 64);
            st.s->x[XM] = 0;
            ASSERT_EQ((ss ? f.ss : f.si)(st.s, ss ? f.ss_word : f.si_word), DECODE_OK);
            for (unsigned k = 0; k < f.N; ++k) EXPECT_EQ(get(st.s->z[zk(ZT, k)], 8), f.store ? 0xA5A5A5A5A5A5A5A5 : 0);
        }
}

TEST(Structure, HandWorkedGroupsAndAddresses) {
    struct {
        const char* what;
        sve_handler h;
        uint32_t word;
        unsigned zt, N, size;
        uint64_t x4;  // the index register of the scalar-plus-scalar words
        long start;   // from x[xn]
    } cases[] = {
        {"ld3b {z31.b, z0.b, z1.b}, p0/z, [x1]", VecU8E3Load1SIZ, 0xa440e03f, 31, 3, 1, 0, 0},
        {"ld2b {z0.b, z1.b}, p0/z, [x3, #-2, mul vl]", VecU8E2Load1SIZ, 0xa42fe060, 0, 2, 1, 0, -128},
        {"ld3w {z0.s-z2.s}, p0/z, [x3, #3, mul vl]", VecU32E3Load4SIZ, 0xa541e060, 0, 3, 4, 0, 192},
        {"ld4d {z0.d-z3.d}, p0/z, [x3, #28, mul vl]", VecU64E4Load8SIZ, 0xa5e7e060, 0, 4, 8, 0, 1792},
        {"ld4h {z0.h-z3.h}, p0/z, [x3, x4, lsl #1], x4 = 5", VecU16E4Load2LSSZ, 0xa4e4c060, 0, 4, 2, 5, 10},
        {"ld3w {z0.s-z2.s}, p0/z, [x3, xzr, lsl #2]", VecU32E3Load4LSSZ, 0xa55fc060, 0, 3, 4, 5, 0},
    };
    Pages pg(3);
    fill(pg.base, 3 * host_page(), 151);
    for (const auto& c : cases) {
        SharedState st;
        std::memset(st.s->p[0], 1, 64);
        st.s->x[1] = st.s->x[3] = pg.addr(1);
        st.s->x[4] = c.x4;
        ASSERT_EQ(c.h(st.s, c.word), DECODE_OK) << c.what;
        expect_loaded(st.s, c.zt, c.N, c.size, pg.addr(1, c.start), true, c.what);
        EXPECT_EQ(st.s->z[zk(c.zt, c.N)][0], 0xA5) << c.what;
    }
}

}  // namespace
