// Operands loaded once and replicated, and data reached through indices:
// - loop-invariant operands read through pointers (the compiler broadcasts
//   them straight from memory, LD1R), in every element size;
// - 16-byte tables replicated over the vector with the intrinsics: weight
//   sets for an int8 dot product by lane, a hex-digit table for TBL, and a
//   table shorter than 16 bytes loaded under a partial predicate;
// - gathers with 32-bit offsets and indices, signed and unsigned, scaled and
//   not (a sparse matrix times a vector, byte and halfword look-up tables, a
//   field of an array of structures), gathers through a vector of pointers
//   and with 64-bit indices, and a scatter that inverts a permutation.
#include <arm_sve.h>
#include <stddef.h>

#include "apps_common.h"

// ---- Loop-invariant operands read through pointers.
#define N 1111
int32_t a32[N], o32[N];
int16_t a16[N], o16[N];
uint8_t a8[N], o8[N];
int64_t a64[N], o64[N];

__attribute__((noinline)) void affine32(int32_t* restrict o, const int32_t* restrict a, const int32_t* restrict k,
                                        const int32_t* restrict b, int n) {
    for (int i = 0; i < n; ++i) o[i] = a[i] * *k + *b;
}
__attribute__((noinline)) void bias16(int16_t* restrict o, const int16_t* restrict a, const int16_t* restrict b,
                                      int n) {
    for (int i = 0; i < n; ++i) o[i] = (int16_t)(a[i] - *b);
}
__attribute__((noinline)) void mask8(uint8_t* restrict o, const uint8_t* restrict a, const uint8_t* restrict m, int n) {
    for (int i = 0; i < n; ++i) o[i] = (uint8_t)((a[i] & *m) ^ m[1]);
}
__attribute__((noinline)) void offset64(int64_t* restrict o, const int64_t* restrict a, const int64_t* restrict k,
                                        int n) {
    for (int i = 0; i < n; ++i) o[i] = a[i] + *k;
}
// Narrower signed scalars widened to the element size: the compiler reads
// these with a scalar load and duplicates the register (DUP), a second way
// a loop-invariant operand reaches every element.
__attribute__((noinline)) void scale_dup(int64_t* restrict o, const int32_t* restrict a, const int8_t* restrict sb,
                                         const int16_t* restrict sh, int n) {
    for (int i = 0; i < n; i += (int)svcntd()) {
        svbool_t pg = svwhilelt_b64(i, n);
        svint64_t x = svld1sw_s64(pg, a + i);
        x = svmul_s64_x(pg, x, svdup_n_s64(*sb));
        x = svadd_s64_x(pg, x, svdup_n_s64(*sh));
        svst1_s64(pg, o + i, x);
    }
}

// ---- 16-byte tables replicated over the vector.
#define S 515
int8_t feat[4 * S];  // four int8 features a sample
int8_t weights[16];  // four weight sets of four
int32_t score[4][S];
uint8_t feat_u[4 * S], weights_u[16];
uint32_t score_u[S];

// score[j][i] = dot(features of sample i, weight set j): the replicated
// quadword holds all four sets, the lane number picks one.
__attribute__((noinline)) void score_samples(const int8_t* restrict x, const int8_t* restrict w, int n) {
    svint8_t wq = svld1rq_s8(svptrue_b8(), w);
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pw = svwhilelt_b32(i, n);
        svbool_t pb = svwhilelt_b8(4 * i, 4 * n);
        svint8_t xs = svld1_s8(pb, x + 4 * i);
        svint32_t zero = svdup_n_s32(0);
        svst1_s32(pw, score[0] + i, svdot_lane_s32(zero, xs, wq, 0));
        svst1_s32(pw, score[1] + i, svdot_lane_s32(zero, xs, wq, 1));
        svst1_s32(pw, score[2] + i, svdot_lane_s32(zero, xs, wq, 2));
        svst1_s32(pw, score[3] + i, svdot_lane_s32(zero, xs, wq, 3));
    }
}
// Unsigned, with the replicated weights taken from the middle of a buffer
// (a register offset) and the best of the four sets kept.
__attribute__((noinline)) void best_unsigned(const uint8_t* restrict x, const uint8_t* restrict wbuf, int64_t at,
                                             int n) {
    svuint8_t wq = svld1rq_u8(svptrue_b8(), wbuf + at);
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pw = svwhilelt_b32(i, n);
        svuint8_t xs = svld1_u8(svwhilelt_b8(4 * i, 4 * n), x + 4 * i);
        svuint32_t zero = svdup_n_u32(0);
        svuint32_t best = svmax_u32_x(pw, svdot_lane_u32(zero, xs, wq, 0), svdot_lane_u32(zero, xs, wq, 1));
        best = svmax_u32_x(pw, best, svdot_lane_u32(zero, xs, wq, 2));
        best = svmax_u32_x(pw, best, svdot_lane_u32(zero, xs, wq, 3));
        svst1_u32(pw, score_u + i, best);
    }
}

#define H 301
uint8_t raw[H];
char hex[2 * H + 1];
// Bytes to hex digits: each nibble looks up the replicated digit table.
__attribute__((noinline)) void to_hex(char* restrict o, const uint8_t* restrict s, int n) {
    static const char digits[16] = "0123456789abcdef";
    svuint8_t tab = svld1rq_u8(svptrue_b8(), (const uint8_t*)digits);
    for (int i = 0; i < n; i += (int)svcntb()) {
        svbool_t pg = svwhilelt_b8(i, n);
        svuint8_t v = svld1_u8(pg, s + i);
        svuint8_t hi = svtbl_u8(tab, svlsr_n_u8_x(pg, v, 4));
        svuint8_t lo = svtbl_u8(tab, svand_n_u8_x(pg, v, 15));
        svst2_u8(pg, (uint8_t*)o + 2 * i, svcreate2_u8(hi, lo));
    }
}

// A 5-entry halfword table padded to 8 by the predicate: indices 5 to 7
// read zeros, which is what the program relies on.
uint16_t codes[N], coded[N];
__attribute__((noinline)) void encode5(uint16_t* restrict o, const uint16_t* restrict c, const uint16_t* restrict tab5,
                                       int n) {
    svuint16_t tab = svld1rq_u16(svwhilelt_b16(0, 5), tab5);
    for (int i = 0; i < n; i += (int)svcnth()) {
        svbool_t pg = svwhilelt_b16(i, n);
        svuint16_t idx = svand_n_u16_x(pg, svld1_u16(pg, c + i), 7);
        svst1_u16(pg, o + i, svtbl_u16(tab, idx));
    }
}
// Quadword-replicated 32-bit coefficients, reloaded every iteration from an
// array of coefficient sets chosen by the iteration (a register offset).
int32_t coef_sets[8][4];
int32_t mixed[N];
__attribute__((noinline)) void mix_sets(int32_t* restrict o, const int32_t* restrict a, int n) {
    for (int i = 0, set = 0; i < n; i += (int)svcntw(), set = (set + 3) & 7) {
        svbool_t pg = svwhilelt_b32(i, n);
        svint32_t c = svld1rq_s32(svptrue_b32(), &coef_sets[0][0] + 4 * set);
        svst1_s32(pg, o + i, svmul_s32_x(pg, svld1_s32(pg, a + i), c));
    }
}

// ---- Gathers and a scatter.
#define ROWS 97
#define COLS 300
#define NNZ 1500
int32_t row_start[ROWS + 1], col[NNZ], val[NNZ], xvec[COLS];
int64_t yvec[ROWS];

// Sparse matrix (compressed rows) times a vector: x read at the column
// indices, a signed 32-bit index scaled by 4.
__attribute__((noinline)) void spmv(int64_t* restrict y, const int32_t* restrict x) {
    for (int r = 0; r < ROWS; ++r) {
        svint64_t acc = svdup_n_s64(0);
        int32_t end = row_start[r + 1];
        for (int32_t j = row_start[r]; j < end; j += (int32_t)svcntw()) {
            svbool_t pg = svwhilelt_b32(j, end);
            svint32_t xv = svld1_gather_s32index_s32(pg, x, svld1_s32(pg, col + j));
            svint32_t prod = svmul_s32_x(pg, xv, svld1_s32(pg, val + j));
            acc = svadd_s64_x(svptrue_b64(), acc, svunpklo_s64(svsel_s32(pg, prod, svdup_n_s32(0))));
            acc = svadd_s64_x(svptrue_b64(), acc, svunpkhi_s64(svsel_s32(pg, prod, svdup_n_s32(0))));
        }
        y[r] = svaddv_s64(svptrue_b64(), acc);
    }
}

// Byte look-up table with unsigned byte offsets, and a halfword table
// indexed around its middle with signed indices.
uint8_t lut8[256];
int16_t lut16[513];
uint32_t bidx[N];
int32_t sidx[N];
uint32_t looked8[N];
int32_t looked16[N];
__attribute__((noinline)) void lookups(int n) {
    const int16_t* mid = lut16 + 256;
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, n);
        svuint32_t b = svld1ub_gather_u32offset_u32(pg, lut8, svld1_u32(pg, bidx + i));
        svst1_u32(pg, looked8 + i, b);
        svint32_t h = svld1sh_gather_s32index_s32(pg, mid, svld1_s32(pg, sidx + i));
        svst1_s32(pg, looked16 + i, h);
    }
}

// One field of an array of 12-byte records, read at byte offsets that the
// program computes (unsigned, unscaled).
struct rec {
    int32_t id, score, weight;
};
struct rec recs[N];
uint32_t order[N];
int32_t picked[N];
__attribute__((noinline)) void pick_scores(int n) {
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, n);
        svuint32_t off = svmla_n_u32_x(pg, svdup_n_u32(offsetof(struct rec, score)), svld1_u32(pg, order + i),
                                       (uint32_t)sizeof(struct rec));
        svint32_t s = svld1_gather_u32offset_s32(pg, (const int32_t*)recs, off);
        svint32_t w =
            svld1_gather_u32offset_s32(pg, (const int32_t*)((const char*)recs + 8), svsub_n_u32_x(pg, off, 4));
        svst1_s32(pg, picked + i, svsub_s32_x(pg, s, w));
    }
}

// Through a vector of pointers: the weight of each record a list points to;
// and 64-bit values at 64-bit indices.
const struct rec* ptrs[N];
int64_t via_ptr[N];
int64_t wide[N];
int64_t widx[N];
int64_t via_index[N];
__attribute__((noinline)) void through_pointers(int n) {
    for (int i = 0; i < n; i += (int)svcntd()) {
        svbool_t pg = svwhilelt_b64(i, n);
        svuint64_t p = svld1_u64(pg, (const uint64_t*)ptrs + i);
        svint64_t w = svld1sw_gather_u64base_offset_s64(pg, p, offsetof(struct rec, weight));
        svst1_s64(pg, via_ptr + i, w);
        svint64_t v = svld1_gather_s64index_s64(pg, wide, svld1_s64(pg, widx + i));
        svst1_s64(pg, via_index + i, svadd_s64_x(pg, v, w));
    }
}

// The inverse of a permutation: inv[perm[i]] = i, a scatter.
uint32_t perm[N];
int32_t inv[N];
__attribute__((noinline)) void invert(int n) {
    for (int i = 0; i < n; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, n);
        svint32_t ix = svindex_s32(i, 1);
        svst1_scatter_u32index_s32(pg, inv, svld1_u32(pg, perm + i), ix);
    }
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        a32[i] = (int32_t)(apps_rand() % 100000) - 50000;
        a16[i] = (int16_t)apps_rand();
        a8[i] = (uint8_t)apps_rand();
        a64[i] = (int64_t)apps_rand() << 30;
        codes[i] = (uint16_t)apps_rand();
    }
    static const int32_t k32 = -37, b32 = 1000;
    static const int16_t b16 = 12345;
    static const uint8_t m8[2] = {0x3c, 0x81};
    static const int64_t k64 = -((int64_t)1 << 50);
    static const int8_t sb = -3;
    static const int16_t sh = -30000;
    affine32(o32, a32, &k32, &b32, N);
    bias16(o16, a16, &b16, N);
    mask8(o8, a8, m8, N);
    offset64(o64, a64, &k64, N);
    printf("affine32[0]=%d bias16[1]=%d mask8[2]=%u offset64[3]=%lld\n", o32[0], o16[1], o8[2], (long long)o64[3]);
    APPS_PRINT_SUM("affine32", o32);
    APPS_PRINT_SUM("bias16", o16);
    APPS_PRINT_SUM("mask8", o8);
    APPS_PRINT_SUM("offset64", o64);
    scale_dup(o64, a32, &sb, &sh, N - 2);
    printf("scale_dup[0]=%lld [%d]=%lld\n", (long long)o64[0], N - 3, (long long)o64[N - 3]);
    APPS_PRINT_SUM("scale_dup", o64);

    for (int i = 0; i < 4 * S; ++i) {
        feat[i] = (int8_t)apps_rand();
        feat_u[i] = (uint8_t)apps_rand();
    }
    for (int i = 0; i < 16; ++i) weights[i] = (int8_t)(i * 19 - 128);
    uint8_t wbuf[64];
    for (int i = 0; i < 64; ++i) wbuf[i] = (uint8_t)(i * 29 + 7);
    score_samples(feat, weights, S - 2);
    best_unsigned(feat_u, wbuf, 23, S - 1);
    printf("score[0..3][0]=%d %d %d %d score[3][%d]=%d best[%d]=%u\n", score[0][0], score[1][0], score[2][0],
           score[3][0], S - 3, score[3][S - 3], S - 2, score_u[S - 2]);
    APPS_PRINT_SUM("score", score);
    APPS_PRINT_SUM("best", score_u);

    for (int i = 0; i < H; ++i) raw[i] = (uint8_t)apps_rand();
    to_hex(hex, raw, H);
    hex[2 * H] = '\0';
    printf("hex: %.64s...%s\n", hex, hex + 2 * H - 8);
    APPS_PRINT_SUM("hex", hex);
    static const uint16_t tab5[8] = {11, 22, 33, 44, 55, 0xdead, 0xbeef, 0xf00d};  // only 5 are the table
    encode5(coded, codes, tab5, N);
    printf("coded[0..7]=%u %u %u %u %u %u %u %u\n", coded[0], coded[1], coded[2], coded[3], coded[4], coded[5],
           coded[6], coded[7]);
    APPS_PRINT_SUM("coded", coded);
    for (int s = 0; s < 8; ++s)
        for (int k = 0; k < 4; ++k) coef_sets[s][k] = s * 10 + k - 7;
    mix_sets(mixed, a32, N);
    printf("mixed[0]=%d mixed[17]=%d mixed[%d]=%d\n", mixed[0], mixed[17], N - 1, mixed[N - 1]);
    APPS_PRINT_SUM("mixed", mixed);

    // A sparse matrix with uneven rows, some empty.
    row_start[0] = 0;
    for (int r = 0; r < ROWS; ++r) {
        int len = (r % 7 == 3) ? 0 : (int)(apps_rand() % 31);
        if (row_start[r] + len > NNZ) len = NNZ - row_start[r];
        row_start[r + 1] = row_start[r] + len;
    }
    for (int j = 0; j < NNZ; ++j) {
        col[j] = (int32_t)(apps_rand() % COLS);
        val[j] = (int32_t)(apps_rand() % 2001) - 1000;
    }
    for (int c = 0; c < COLS; ++c) xvec[c] = (int32_t)(apps_rand() % 200001) - 100000;
    spmv(yvec, xvec);
    printf("spmv nnz=%d y[0]=%lld y[3]=%lld y[%d]=%lld\n", row_start[ROWS], (long long)yvec[0], (long long)yvec[3],
           ROWS - 1, (long long)yvec[ROWS - 1]);
    APPS_PRINT_SUM("spmv", yvec);

    for (int i = 0; i < 256; ++i) lut8[i] = (uint8_t)(255 - i * 7);
    for (int i = 0; i < 513; ++i) lut16[i] = (int16_t)((i - 256) * 127);
    for (int i = 0; i < N; ++i) {
        bidx[i] = apps_rand() % 256;
        sidx[i] = (int32_t)(apps_rand() % 513) - 256;
    }
    lookups(N);
    printf("looked8[0]=%u looked16[0]=%d looked16[%d]=%d\n", looked8[0], looked16[0], N - 1, looked16[N - 1]);
    APPS_PRINT_SUM("looked8", looked8);
    APPS_PRINT_SUM("looked16", looked16);

    for (int i = 0; i < N; ++i) {
        recs[i].id = i;
        recs[i].score = (int32_t)(apps_rand() % 1000);
        recs[i].weight = (int32_t)(apps_rand() % 1000) - 500;
        perm[i] = (uint32_t)i;
    }
    for (int i = N - 1; i > 0; --i) {  // a fixed shuffle
        int j = (int)(apps_rand() % (unsigned)(i + 1));
        uint32_t t = perm[i];
        perm[i] = perm[j];
        perm[j] = t;
    }
    for (int i = 0; i < N; ++i) {
        order[i] = perm[(i * 7) % N];
        ptrs[i] = &recs[perm[N - 1 - i]];
        wide[i] = ((int64_t)apps_rand() << 28) - i;
        widx[i] = (int64_t)(apps_rand() % N);
    }
    pick_scores(N);
    through_pointers(N);
    invert(N);
    printf("picked[0]=%d via_ptr[1]=%lld via_index[2]=%lld inv[0]=%d inv[%d]=%d\n", picked[0], (long long)via_ptr[1],
           (long long)via_index[2], inv[0], N - 1, inv[N - 1]);
    APPS_PRINT_SUM("picked", picked);
    APPS_PRINT_SUM("via_ptr", via_ptr);
    APPS_PRINT_SUM("via_index", via_index);
    APPS_PRINT_SUM("inv", inv);
    return 0;
}
