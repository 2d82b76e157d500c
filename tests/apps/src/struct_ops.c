// Arrays of small structures processed member by member: complex products
// in integers (two members), RGB to grey and a colour tint (three members),
// and four-channel samples split into planes and joined back (four members).
// The counts are not multiples of the vector length, so the last vector of
// each loop holds a partial set of whole structures under its predicate.
#include "apps_common.h"

// Two members: LD2/ST2.
struct c16 {
    int16_t re, im;
};
struct c32 {
    int32_t re, im;
};
struct c64 {
    int64_t re, im;
};
#define NC 517
struct c16 a16[NC], b16[NC], p16[NC];
struct c32 a32[NC], b32[NC], p32[NC];
struct c64 a64[NC], p64[NC];

// Q15 fixed point, as a signal-processing program keeps its samples.
__attribute__((noinline)) void cmul_q15(struct c16* restrict o, const struct c16* restrict a,
                                        const struct c16* restrict b, int n) {
    for (int i = 0; i < n; ++i) {
        int32_t re = (int32_t)a[i].re * b[i].re - (int32_t)a[i].im * b[i].im;
        int32_t im = (int32_t)a[i].re * b[i].im + (int32_t)a[i].im * b[i].re;
        o[i].re = (int16_t)(re >> 15);
        o[i].im = (int16_t)(im >> 15);
    }
}
__attribute__((noinline)) void cmul32(struct c32* restrict o, const struct c32* restrict a,
                                      const struct c32* restrict b, int n) {
    for (int i = 0; i < n; ++i) {
        o[i].re = a[i].re * b[i].re - a[i].im * b[i].im;
        o[i].im = a[i].re * b[i].im + a[i].im * b[i].re;
    }
}
// Conjugate and scale, 64-bit members.
__attribute__((noinline)) void conj_scale64(struct c64* restrict o, const struct c64* restrict a, int64_t k, int n) {
    for (int i = 0; i < n; ++i) {
        o[i].re = a[i].re * k;
        o[i].im = -a[i].im * k;
    }
}
// |z|^2 summed: a reduction over a two-member structure.
__attribute__((noinline)) int64_t power32(const struct c32* a, int n) {
    int64_t s = 0;
    for (int i = 0; i < n; ++i) s += (int64_t)a[i].re * a[i].re + (int64_t)a[i].im * a[i].im;
    return s;
}

// Three members: LD3/ST3.
struct rgb {
    uint8_t r, g, b;
};
struct rgb16 {
    uint16_t r, g, b;
};
#define NP 1001
struct rgb img[NP], tinted[NP];
struct rgb16 deep[NP], deep_out[NP];
uint8_t grey[NP];

// The usual weights in 8-bit fixed point: 77 + 150 + 29 = 256.
__attribute__((noinline)) void to_grey(uint8_t* restrict o, const struct rgb* restrict p, int n) {
    for (int i = 0; i < n; ++i) o[i] = (uint8_t)((77 * p[i].r + 150 * p[i].g + 29 * p[i].b) >> 8);
}
__attribute__((noinline)) void tint(struct rgb* restrict o, const struct rgb* restrict p, int n) {
    for (int i = 0; i < n; ++i) {
        o[i].r = p[i].r;
        o[i].g = (uint8_t)(p[i].g >> 1);
        o[i].b = (uint8_t)(p[i].b | 0x80);
    }
}
// 16-bit channels: swap red and blue and brighten green, saturating.
__attribute__((noinline)) void swap_rb16(struct rgb16* restrict o, const struct rgb16* restrict p, int n) {
    for (int i = 0; i < n; ++i) {
        unsigned g = p[i].g + 1000u;
        o[i].r = p[i].b;
        o[i].g = (uint16_t)(g > 65535u ? 65535u : g);
        o[i].b = p[i].r;
    }
}

// Four members: LD4/ST4.
struct rgba {
    uint8_t r, g, b, a;
};
struct quad16 {
    int16_t w, x, y, z;
};
#define NQ 333
struct rgba px[NQ], joined[NQ];
uint8_t plane_r[NQ], plane_g[NQ], plane_b[NQ], plane_a[NQ];
struct quad16 q[NQ], q_out[NQ];

__attribute__((noinline)) void split_planes(const struct rgba* restrict p, int n) {
    for (int i = 0; i < n; ++i) {
        plane_r[i] = p[i].r;
        plane_g[i] = p[i].g;
        plane_b[i] = p[i].b;
        plane_a[i] = p[i].a;
    }
}
// Joined back with premultiplied alpha and the channels rotated.
__attribute__((noinline)) void join_premultiplied(struct rgba* restrict o, int n) {
    for (int i = 0; i < n; ++i) {
        o[i].r = (uint8_t)(plane_g[i] * plane_a[i] / 255);
        o[i].g = (uint8_t)(plane_b[i] * plane_a[i] / 255);
        o[i].b = (uint8_t)(plane_r[i] * plane_a[i] / 255);
        o[i].a = plane_a[i];
    }
}
// Squared norms of 16-bit quaternions, and quaternions built from four
// planes of 16-bit values.
int32_t norms[NQ];
int16_t qw[NQ], qx[NQ], qy[NQ], qz[NQ];
__attribute__((noinline)) void quad_norms(int32_t* restrict o, const struct quad16* restrict p, int n) {
    for (int i = 0; i < n; ++i) o[i] = p[i].w * p[i].w + p[i].x * p[i].x + p[i].y * p[i].y - p[i].z * p[i].z;
}
__attribute__((noinline)) void quad_build(struct quad16* restrict o, int n) {
    for (int i = 0; i < n; ++i) {
        o[i].w = (int16_t)(qx[i] - qy[i]);
        o[i].x = qw[i];
        o[i].y = (int16_t)(qz[i] >> 2);
        o[i].z = (int16_t)(qw[i] ^ qy[i]);
    }
}

int main(void) {
    for (int i = 0; i < NC; ++i) {
        a16[i].re = (int16_t)apps_rand();
        a16[i].im = (int16_t)apps_rand();
        b16[i].re = (int16_t)apps_rand();
        b16[i].im = (int16_t)apps_rand();
        a32[i].re = (int32_t)(apps_rand() % 100001) - 50000;
        a32[i].im = (int32_t)(apps_rand() % 100001) - 50000;
        b32[i].re = (int32_t)(apps_rand() % 40001) - 20000;  // products stay inside int32
        b32[i].im = (int32_t)(apps_rand() % 40001) - 20000;
        a64[i].re = (int64_t)apps_rand() << 20 ^ (int64_t)apps_rand();
        a64[i].im = -((int64_t)apps_rand() << 12) + (int64_t)apps_rand();
    }
    for (int i = 0; i < NP; ++i) {
        img[i].r = (uint8_t)apps_rand();
        img[i].g = (uint8_t)apps_rand();
        img[i].b = (uint8_t)apps_rand();
        deep[i].r = (uint16_t)apps_rand();
        deep[i].g = (uint16_t)apps_rand();
        deep[i].b = (uint16_t)apps_rand();
    }
    for (int i = 0; i < NQ; ++i) {
        px[i].r = (uint8_t)apps_rand();
        px[i].g = (uint8_t)apps_rand();
        px[i].b = (uint8_t)apps_rand();
        px[i].a = (uint8_t)apps_rand();
        q[i].w = (int16_t)(apps_rand() % 32768) - 16384;  // the norms fit int32
        q[i].x = (int16_t)(apps_rand() % 32768) - 16384;
        q[i].y = (int16_t)(apps_rand() % 32768) - 16384;
        q[i].z = (int16_t)(apps_rand() % 32768) - 16384;
        qw[i] = (int16_t)apps_rand();
        qx[i] = (int16_t)apps_rand();
        qy[i] = (int16_t)apps_rand();
        qz[i] = (int16_t)apps_rand();
    }
    // Sentinels after the last structure used: a store that writes a
    // structure the predicate excludes overwrites them.
    p16[NC - 1].re = p16[NC - 1].im = 0x7777;
    tinted[NP - 1].r = tinted[NP - 1].g = tinted[NP - 1].b = 0x55;
    grey[NP - 1] = 0x55;
    joined[NQ - 1].r = joined[NQ - 1].a = 0x55;
    q_out[NQ - 1].w = q_out[NQ - 1].z = 0x5555;
    norms[NQ - 1] = 0x55555555;

    const int nc = NC - 1, np = NP - 1, nq = NQ - 1;  // odd counts, one structure spare
    cmul_q15(p16, a16, b16, nc);
    cmul32(p32, a32, b32, nc);
    conj_scale64(p64, a64, -7, nc);
    int64_t pw = power32(a32, nc);
    to_grey(grey, img, np);
    tint(tinted, img, np);
    swap_rb16(deep_out, deep, np);
    split_planes(px, nq);
    join_premultiplied(joined, nq);
    quad_norms(norms, q, nq);
    quad_build(q_out, nq);

    printf("p16[0]=(%d,%d) p16[%d]=(%d,%d) spare=(%d,%d)\n", p16[0].re, p16[0].im, nc - 1, p16[nc - 1].re,
           p16[nc - 1].im, p16[nc].re, p16[nc].im);
    printf("p32[1]=(%d,%d) p64[2]=(%lld,%lld) power=%lld\n", p32[1].re, p32[1].im, (long long)p64[2].re,
           (long long)p64[2].im, (long long)pw);
    printf("grey[0..3]=%u %u %u %u spare=%u tinted[%d]=(%u,%u,%u) spare=(%u,%u,%u)\n", grey[0], grey[1], grey[2],
           grey[3], grey[np], np - 1, tinted[np - 1].r, tinted[np - 1].g, tinted[np - 1].b, tinted[np].r, tinted[np].g,
           tinted[np].b);
    printf(
        "deep_out[5]=(%u,%u,%u) joined[%d]=(%u,%u,%u,%u) spare=(%u,%u) q_out[7]=(%d,%d,%d,%d) spare=(%d,%d) "
        "norms[0]=%d\n",
        deep_out[5].r, deep_out[5].g, deep_out[5].b, nq - 1, joined[nq - 1].r, joined[nq - 1].g, joined[nq - 1].b,
        joined[nq - 1].a, joined[nq].r, joined[nq].a, q_out[7].w, q_out[7].x, q_out[7].y, q_out[7].z, q_out[nq].w,
        q_out[nq].z, norms[0]);
    APPS_PRINT_SUM("p16", p16);
    APPS_PRINT_SUM("p32", p32);
    APPS_PRINT_SUM("p64", p64);
    APPS_PRINT_SUM("grey", grey);
    APPS_PRINT_SUM("tinted", tinted);
    APPS_PRINT_SUM("deep_out", deep_out);
    APPS_PRINT_SUM("plane_r", plane_r);
    APPS_PRINT_SUM("plane_g", plane_g);
    APPS_PRINT_SUM("plane_b", plane_b);
    APPS_PRINT_SUM("plane_a", plane_a);
    APPS_PRINT_SUM("joined", joined);
    APPS_PRINT_SUM("norms", norms);
    APPS_PRINT_SUM("q_out", q_out);
    return 0;
}
