/* Conformance instrument: the records that the case generator, the two
 * runners and the comparator exchange, and the data area they all map.
 *
 * Plain C so that the AArch64 reference runner (built with the cross C
 * compiler, no C++ runtime) and the C++ tools share one definition. All
 * records are little-endian, fixed-size, with no padding the compilers could
 * disagree on (checked by the static asserts below). scripts/conformance_compare.py
 * reads the same layout with struct; keep the two in step.
 */
#ifndef CONF_FORMAT_H
#define CONF_FORMAT_H

#include <stdint.h>

/* ---- The data area -------------------------------------------------------
 * One fixed address range, identical in every runner, so that addresses held
 * in registers mean the same memory on both sides. It lies below 4 GiB so
 * that gathers with 32-bit vector bases can reach it.
 *
 *   RESERVE .............................................. PROT_NONE
 *     DATA   (4 pages)   read-write, content from the case's memory seed
 *     GUARD  (1 page)    PROT_NONE
 *     RO     (1 page)    read-only, fixed content (loads work, stores fault)
 *   everything else in RESERVE stays PROT_NONE, so reaching below DATA or
 *   above RO faults too.
 */
#define CONF_PAGE 4096u
#define CONF_RESERVE_BASE 0x40000000ull
#define CONF_RESERVE_SIZE 0x20000ull
#define CONF_DATA_BASE (CONF_RESERVE_BASE + 0x8000ull)
#define CONF_DATA_SIZE 0x4000u
#define CONF_GUARD_BASE (CONF_DATA_BASE + CONF_DATA_SIZE)
#define CONF_RO_BASE (CONF_GUARD_BASE + CONF_PAGE)
#define CONF_RO_SIZE CONF_PAGE
/* Seed of the read-only page: fixed, since the page never changes. */
#define CONF_RO_SEED 0x5eed0f0f0f0f0f0full

/* ---- Records ------------------------------------------------------------- */
#define CONF_CASE_MAGIC 0x45534143u   /* "CASE" */
#define CONF_RESULT_MAGIC 0x544c5352u /* "RSLT" */

/* The complete architectural state at a 512-bit vector length, in the
 * architecture's own form: predicates and FFR one bit per vector byte. */
struct conf_state {
    uint64_t x[31];
    uint64_t sp;
    uint64_t nzcv; /* N bit 31, Z 30, C 29, V 28 */
    uint64_t fpcr;
    uint64_t fpsr;
    uint8_t z[32][64];
    uint8_t p[16][8];
    uint8_t ffr[8];
};

struct conf_case {
    uint32_t magic;
    uint32_t word;     /* the instruction */
    uint64_t seed;     /* the case's own seed: its name in reports and replays */
    uint64_t mem_seed; /* content of DATA before the instruction */
    uint32_t row;      /* index in sve_rows[] of the row the word was drawn from */
    uint32_t flags;    /* CONF_FLAG_* */
    struct conf_state st;
};

/* Case flags. Our runner represents each predicate bit as a byte; with
 * this flag set it puts random junk in bits 7..1 of every predicate byte,
 * which a handler must ignore. FFR bytes always get junk. */
#define CONF_FLAG_PRED_JUNK 1u

/* rc values of a result. The reference always writes CONF_RC_OK. */
#define CONF_RC_OK 0u
#define CONF_RC_NO_HANDLER 0xffffffffu /* our decoder does not know the word */
#define CONF_NO_ROW 0xffffffffu

/* info bits of our runner's result: what the handler did besides the state,
 * from which the report tells the route. */
#define CONF_INFO_WROTE_INSTRUCTION 1u /* cpu_state.instruction = word: kernel route */
#define CONF_INFO_NORMALISED_FFR 2u    /* FFR bytes rewritten as 0/1: reference route */

struct conf_result {
    uint32_t magic;
    uint32_t signal; /* 0, or the signal that stopped the instruction */
    uint64_t seed;   /* copied from the case */
    uint32_t rc;     /* handler result (ours); CONF_RC_OK on the reference */
    uint32_t info;   /* CONF_INFO_* (ours); 0 on the reference */
    uint32_t nmem;   /* changed DATA bytes that follow the record */
    uint32_t row;    /* ours: index in sve_rows[] of the handler that ran; CONF_NO_ROW otherwise */
    struct conf_state st; /* after the instruction; the input state after a signal */
    /* followed by nmem uint32_t: offset in DATA | new byte value << 24 */
};

#ifdef __cplusplus
static_assert(sizeof(conf_state) == 2464, "state layout");
static_assert(sizeof(conf_case) == 32 + 2464, "case layout");
static_assert(sizeof(conf_result) == 32 + 2464, "result layout");
#else
_Static_assert(sizeof(struct conf_state) == 2464, "state layout");
_Static_assert(sizeof(struct conf_case) == 32 + 2464, "case layout");
_Static_assert(sizeof(struct conf_result) == 32 + 2464, "result layout");
#endif

/* ---- Memory content ------------------------------------------------------
 * Both runners fill DATA from the case's memory seed with this generator, so
 * a case carries 8 bytes instead of 16 KiB. */
static inline uint64_t conf_splitmix64(uint64_t* s) {
    uint64_t z = (*s += 0x9e3779b97f4a7c15ull);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    return z ^ (z >> 31);
}

/* Fills `size` bytes (a multiple of 8) with values leaning towards the edges
 * of the integer and floating-point ranges, since loads are as much tests of
 * extension as of addressing. */
static inline void conf_fill_memory(uint8_t* dst, uint32_t size, uint64_t seed) {
    uint64_t s = seed;
    for (uint32_t i = 0; i < size; i += 8) {
        uint64_t r = conf_splitmix64(&s);
        uint64_t v;
        switch (r >> 60) {
            case 0: v = 0; break;
            case 1: v = ~0ull; break;
            case 2: v = 0x8080808080808080ull; break;
            case 3: v = 0x7f7f7f7f7f7f7f7full; break;
            case 4: v = 0x80007fff8000ffffull; break;
            case 5: v = 0x7fffffff80000000ull; break;
            case 6: v = 0x7ff0000000000001ull; break; /* a signalling NaN */
            case 7: v = r & 0x0101010101010101ull; break;
            default: v = r; break;
        }
        for (int b = 0; b < 8; ++b) dst[i + b] = (uint8_t)(v >> (8 * b));
    }
}

#endif
