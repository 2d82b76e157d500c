// Loops whose result leaves the loop as one element: the index or value of
// the last element that passes a test, and the value the last iteration
// computed. Then arithmetic that mixes char, short, int and long in one
// expression, and byte and halfword permutations (reversal, interleaving).
#include "apps_common.h"

#define N 1999
int32_t keys[N], vals[N];
int64_t big[N];
uint8_t bytes[N];
int8_t sbytes[N];
int16_t halves[N];
uint32_t scaled[N];

// The index of the last key equal to k, or -1.
__attribute__((noinline)) int last_index_of(const int32_t* a, int32_t k, int n) {
    int last = -1;
    for (int i = 0; i < n; ++i)
        if (a[i] == k) last = i;
    return last;
}
// The value paired with the last key above a threshold, or a default.
__attribute__((noinline)) int32_t last_value_above(const int32_t* a, const int32_t* v, int32_t t, int n) {
    int32_t r = -12345;
    for (int i = 0; i < n; ++i)
        if (a[i] > t) r = v[i];
    return r;
}
// The same on 64-bit and 8-bit data.
__attribute__((noinline)) int64_t last_big_below(const int64_t* a, int64_t t, int n) {
    int64_t r = 0;
    for (int i = 0; i < n; ++i)
        if (a[i] < t) r = a[i];
    return r;
}
__attribute__((noinline)) uint8_t last_letter(const uint8_t* s, int n) {
    uint8_t r = '?';
    for (int i = 0; i < n; ++i)
        if (s[i] >= 'a' && s[i] <= 'z') r = s[i];
    return r;
}
// The value of the last iteration, used after the loop.
__attribute__((noinline)) uint32_t scale_all(uint32_t* restrict o, const int32_t* restrict a, int n) {
    uint32_t x = 0;
    for (int i = 0; i < n; ++i) {
        x = (uint32_t)a[i] * 2654435761u;
        o[i] = x >> 7;
    }
    return x;
}

// Mixed widths: a signed byte times an int plus a short, summed in a long;
// and a byte offset added to a long.
__attribute__((noinline)) int64_t mixed_dot(const int8_t* c, const int32_t* w, const int16_t* h, int n) {
    int64_t s = 0;
    for (int i = 0; i < n; ++i) s += (int64_t)(c[i] * w[i] + h[i]);
    return s;
}
__attribute__((noinline)) void offset_longs(int64_t* restrict o, const int8_t* restrict c, const int16_t* restrict h,
                                            int n) {
    for (int i = 0; i < n; ++i) o[i] += (int64_t)c[i] * 1000 - h[i];
}
__attribute__((noinline)) void narrow_mix(int8_t* restrict o, const int64_t* restrict a, const int32_t* restrict b,
                                          int n) {
    for (int i = 0; i < n; ++i) o[i] = (int8_t)(a[i] >> 3) + (int8_t)b[i];
}

// Permutations of bytes and halfwords.
uint8_t rev8[N], inter8[2 * N];
int16_t rev16[N];
__attribute__((noinline)) void reverse_bytes(uint8_t* restrict o, const uint8_t* restrict s, int n) {
    for (int i = 0; i < n; ++i) o[i] = s[n - 1 - i];
}
__attribute__((noinline)) void reverse_halves_add(int16_t* restrict o, const int16_t* restrict s, int n) {
    for (int i = 0; i < n; ++i) o[i] = (int16_t)(s[n - 1 - i] + s[i]);
}
__attribute__((noinline)) void interleave_bytes(uint8_t* restrict o, const uint8_t* restrict a,
                                                const uint8_t* restrict b, int n) {
    for (int i = 0; i < n; ++i) {
        o[2 * i] = a[i];
        o[2 * i + 1] = (uint8_t)(b[i] + 1);
    }
}

int main(void) {
    for (int i = 0; i < N; ++i) {
        keys[i] = (int32_t)(apps_rand() % 500);
        vals[i] = (int32_t)apps_rand() - (1 << 23);
        big[i] = ((int64_t)apps_rand() << 24) - ((int64_t)1 << 46);
        bytes[i] = (uint8_t)(apps_rand() % 96 + 32);
        sbytes[i] = (int8_t)apps_rand();
        halves[i] = (int16_t)apps_rand();
    }
    printf("last index of 7=%d of 499=%d of 1000=%d\n", last_index_of(keys, 7, N), last_index_of(keys, 499, N),
           last_index_of(keys, 1000, N));
    printf("last index of keys[0] in a prefix of 1, 17, 63: %d %d %d\n", last_index_of(keys, keys[0], 1),
           last_index_of(keys, keys[16], 17), last_index_of(keys, keys[5], 63));
    printf("last value above 490=%d above 499=%d\n", last_value_above(keys, vals, 490, N),
           last_value_above(keys, vals, 499, N));
    printf("last big below -2^46+2^40: %lld, below min: %lld\n",
           (long long)last_big_below(big, -((int64_t)1 << 46) + ((int64_t)1 << 40), N),
           (long long)last_big_below(big, INT64_MIN, N));
    printf("last letter: %c in 1001: %c in 3: %c\n", last_letter(bytes, N), last_letter(bytes, 1001),
           last_letter(bytes, 3));
    uint32_t x = scale_all(scaled, vals, N);
    uint32_t x5 = scale_all(scaled, vals, 5);
    printf("last scaled: %u, of 5: %u\n", x, x5);
    scale_all(scaled, vals, N);
    printf("mixed dot: %lld, of 77: %lld\n", (long long)mixed_dot(sbytes, vals, halves, N),
           (long long)mixed_dot(sbytes, vals, halves, 77));
    offset_longs(big, sbytes, halves, N);
    int8_t narrowed[N];
    narrow_mix(narrowed, big, vals, N);
    reverse_bytes(rev8, bytes, N);
    reverse_halves_add(rev16, halves, N);
    interleave_bytes(inter8, bytes, rev8, N);
    printf("big[3]=%lld narrowed[4]=%d rev8[0]=%u rev16[1]=%d inter8[5]=%u\n", (long long)big[3], narrowed[4], rev8[0],
           rev16[1], inter8[5]);
    APPS_PRINT_SUM("scaled", scaled);
    APPS_PRINT_SUM("big", big);
    APPS_PRINT_SUM("narrowed", narrowed);
    APPS_PRINT_SUM("rev8", rev8);
    APPS_PRINT_SUM("rev16", rev16);
    APPS_PRINT_SUM("inter8", inter8);
    return 0;
}
