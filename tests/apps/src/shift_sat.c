// Shifts and saturating arithmetic the way programs reach them: loops the
// compiler vectorises (variable and constant shifts, signed division by a
// power of 2), and intrinsics for the forms a compiler rarely picks (wide
// counts, reversed shifts, asrd, saturating adds and the saturating
// increments by element counts and predicate counts).
#include <arm_sve.h>

#include "apps_common.h"

#define N 1003
uint8_t b8[N], c8[N], o8[N];
int16_t h16[N], o16[N];
uint32_t w32[N], o32[N];
int32_t s32[N], q32[N];
uint64_t d64[N], e64[N], o64[N];
int8_t sa[N], sb[N], qs8[N];
uint16_t ua[N], ub[N], qu16[N];
uint8_t wide8[N];
int32_t asrd32[N];

__attribute__((noinline)) void loops(void) {
    for (int i = 0; i < N; ++i) o8[i] = (uint8_t)(b8[i] << (c8[i] & 7));
    for (int i = 0; i < N; ++i) o16[i] = (int16_t)(h16[i] >> 3);
    for (int i = 0; i < N; ++i) o32[i] = w32[i] >> 29;
    for (int i = 0; i < N; ++i) q32[i] = s32[i] / 16;  // asrd
    for (int i = 0; i < N; ++i) o64[i] = d64[i] >> (e64[i] & 63);
}

__attribute__((noinline)) void intrinsics(void) {
    for (int i = 0; i < N; i += (int)svcntb()) {
        svbool_t pg = svwhilelt_b8(i, N);
        svint8_t x = svld1_s8(pg, sa + i), y = svld1_s8(pg, sb + i);
        svst1_s8(pg, qs8 + i, svqsub_s8(svqadd_s8(x, y), svqadd_n_s8(y, 100)));
        // Wide counts: each 64-bit lane of the counts serves eight bytes.
        svuint8_t v = svld1_u8(pg, b8 + i);
        svuint64_t cnt = svreinterpret_u64_u8(svld1_u8(pg, c8 + i));
        svst1_u8(pg, wide8 + i, svlsl_wide_u8_m(pg, v, svand_n_u64_x(svptrue_b64(), cnt, 15)));
    }
    for (int i = 0; i < N; i += (int)svcnth()) {
        svbool_t pg = svwhilelt_b16(i, N);
        svuint16_t x = svld1_u16(pg, ua + i), y = svld1_u16(pg, ub + i);
        svuint16_t r = svqsub_u16(svqadd_u16(x, y), svqadd_n_u16(y, 300));
        r = svqdech_pat_u16(r, SV_VL7, 3);
        svst1_u16(pg, qu16 + i, svlsr_u16_m(pg, r, svand_n_u16_x(pg, y, 31)));
    }
    for (int i = 0; i < N; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, N);
        svint32_t x = svld1_s32(pg, s32 + i);
        svst1_s32(pg, asrd32 + i, svasrd_n_s32_m(pg, x, 7));
    }
}

__attribute__((noinline)) uint64_t counts(void) {
    uint64_t total = 0;
    int32_t w = 0x7ffffff0;
    for (int i = 0; i < N; i += (int)svcntw()) {
        svbool_t pg = svwhilelt_b32(i, N);
        svbool_t big = svcmpgt_n_u32(pg, svld1_u32(pg, w32 + i), 0x80000000u);
        total += svcntp_b32(pg, big);
        w = svqincp_n_s32_b32(w, big);
        total = svqdecd_pat_n_u64(total, SV_MUL3, 2);
        total += svcntb_pat(SV_VL16) + svcntd();
    }
    return total ^ (uint64_t)(uint32_t)w;
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        b8[i] = (uint8_t)apps_rand();
        c8[i] = (uint8_t)apps_rand();
        h16[i] = (int16_t)apps_rand();
        w32[i] = apps_rand() * 2654435761u;
        s32[i] = (int32_t)(apps_rand() * 2246822519u);
        d64[i] = (uint64_t)apps_rand() << 40 ^ apps_rand();
        e64[i] = apps_rand();
        sa[i] = (int8_t)apps_rand();
        sb[i] = (int8_t)apps_rand();
        ua[i] = (uint16_t)apps_rand();
        ub[i] = (uint16_t)apps_rand();
    }
    s32[0] = INT32_MIN;
    s32[1] = -15;
    s32[2] = -16;
    loops();
    intrinsics();
    printf("q32[0..2] = %d %d %d, asrd32[0] = %d\n", q32[0], q32[1], q32[2], asrd32[0]);
    APPS_PRINT_SUM("lsl8", o8);
    APPS_PRINT_SUM("asr16", o16);
    APPS_PRINT_SUM("lsr32", o32);
    APPS_PRINT_SUM("asrd32", q32);
    APPS_PRINT_SUM("lsr64", o64);
    APPS_PRINT_SUM("sat8", qs8);
    APPS_PRINT_SUM("sat16", qu16);
    APPS_PRINT_SUM("wide8", wide8);
    APPS_PRINT_SUM("asrd_acle", asrd32);
    printf("counts: %016llx\n", (unsigned long long)counts());
    return 0;
}
