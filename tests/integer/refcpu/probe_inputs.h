/* Register inputs of the reference-CPU probe, shared by the probe program
 * (built for AArch64 with SVE and run under an SVE-capable CPU model) and by
 * the test that runs the same words through the handlers. Plain C. */
#ifndef PROBE_INPUTS_H
#define PROBE_INPUTS_H

#include <stdint.h>
#include <string.h>

static inline uint64_t probe_next(uint64_t* s) {
    uint64_t z = (*s += 0x9e3779b97f4a7c15ull);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    return z ^ (z >> 31);
}

/* Values where integer arithmetic breaks, often repeated across a lane. */
static inline uint64_t probe_value(uint64_t* s) {
    static const uint64_t edges[16] = {0, 1, ~0ull, 0x80, 0x7f, 0xff, 0x8000, 0x7fff, 0xffff, 0x80000000ull,
                                       0x7fffffffull, 0xffffffffull, 0x8000000000000000ull, 0x7fffffffffffffffull, 2,
                                       0xfffffffffffffffeull};
    uint64_t v = probe_next(s), r = probe_next(s);
    if (r % 3 == 0) v = edges[(r >> 8) % 16];
    if ((r >> 16) % 4 == 1) v = (v & 0xff) * 0x0101010101010101ull;
    if ((r >> 16) % 4 == 2) v = (v & 0xffff) * 0x0001000100010001ull;
    if ((r >> 16) % 8 == 3) v = (v & 0xffffffffull) * 0x0000000100000001ull;
    return v;
}

struct probe_regs {
    uint8_t z1[64], z3[64], z4[64];
    uint64_t p2, p9; /* one bit per vector byte */
};

static inline void probe_fill(struct probe_regs* r, uint32_t word) {
    uint64_t s = word;
    for (int i = 0; i < 8; ++i) {
        uint64_t a = probe_value(&s), b = probe_value(&s), c = probe_value(&s);
        memcpy(r->z1 + 8 * i, &a, 8);
        memcpy(r->z3 + 8 * i, &b, 8);
        memcpy(r->z4 + 8 * i, &c, 8);
    }
    r->p2 = probe_next(&s);
    r->p9 = probe_next(&s);
}

/* The words: every one uses Z1 as destination, P2 (P9 for SEL) as predicate,
 * Z3 and Z4 as the other sources. */
#define PROBE_WORDS(X)                                                                            \
    X(0x04940861) /* sdiv z1.s, p2/m, z1.s, z3.s */                                               \
    X(0x04d40861) /* sdiv z1.d */                                                                 \
    X(0x04960861) /* sdivr z1.s */                                                                \
    X(0x04d60861) /* sdivr z1.d */                                                                \
    X(0x04950861) /* udiv z1.s */                                                                 \
    X(0x04d70861) /* udivr z1.d */                                                                \
    X(0x04d20861) /* smulh z1.d */                                                                \
    X(0x04520861) /* smulh z1.h */                                                                \
    X(0x04130861) /* umulh z1.b */                                                                \
    X(0x040c0861) /* sabd z1.b */                                                                 \
    X(0x044d0861) /* uabd z1.h */                                                                 \
    X(0x0416a861) /* abs z1.b, p2/m, z3.b */                                                      \
    X(0x0497a861) /* neg z1.s */                                                                  \
    X(0x045ba861) /* cnot z1.h */                                                                 \
    X(0x04dea861) /* not z1.d */                                                                  \
    X(0x0450a861) /* sxtb z1.h */                                                                 \
    X(0x0491a861) /* uxtb z1.s */                                                                 \
    X(0x04d2a861) /* sxth z1.d */                                                                 \
    X(0x04d5a861) /* uxtw z1.d */                                                                 \
    X(0x0483c881) /* mad z1.s, p2/m, z3.s, z4.s */                                                \
    X(0x0443e881) /* msb z1.h, p2/m, z3.h, z4.h */                                                \
    X(0x04c44861) /* mla z1.d, p2/m, z3.d, z4.d */                                                \
    X(0x04046861) /* mls z1.b, p2/m, z3.b, z4.b */                                                \
    X(0x04500861) /* mul z1.h, p2/m, z1.h, z3.h */                                                \
    X(0x040a0861) /* smin z1.b */                                                                 \
    X(0x04c90861) /* umax z1.d */                                                                 \
    X(0x04000861) /* add z1.b, p2/m */                                                            \
    X(0x04830861) /* subr z1.s, p2/m */                                                           \
    X(0x045b0861) /* bic z1.h, p2/m */                                                            \
    X(0x04a30481) /* sub z1.s, z4.s, z3.s */                                                      \
    X(0x04233081) /* and z1.d, z4.d, z3.d */                                                      \
    X(0x2560ffe1) /* add z1.h, z1.h, #0xff, lsl #8 */                                             \
    X(0x25a1f001) /* sub z1.s, z1.s, #0x80, lsl #8 */                                             \
    X(0x2523dfe1) /* subr z1.b, z1.b, #255 */                                                     \
    X(0x25f0dfa1) /* mul z1.d, z1.d, #-3 */                                                       \
    X(0x25eadfa1) /* smin z1.d, z1.d, #-3 */                                                      \
    X(0x25a8d381) /* smax z1.s, z1.s, #-100 */                                                    \
    X(0x256bc221) /* umin z1.h, z1.h, #17 */                                                      \
    X(0x058044e1) /* and z1.h, z1.h, #0xff00 */                                                   \
    X(0x05400781) /* eor z1.b, z1.b, #0x55 */                                                     \
    X(0x04902861) /* movprfx z1.s, p2/z, z3.s */                                                  \
    X(0x04512861) /* movprfx z1.h, p2/m, z3.h */                                                  \
    X(0x05a4e461) /* sel z1.s, p9, z3.s, z4.s */                                                  \
    X(0x04319421) /* lsr z1.h, z1.h, #15 */

#endif
