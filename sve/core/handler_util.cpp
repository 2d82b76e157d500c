#include "sve/core/handler_util.h"


uint64_t decode_logical_imm(uint32_t field, bool* ok) {
    uint32_t n = field >> 12 & 1, immr = field >> 6 & 63, imms = field & 63;
    uint32_t combined = n << 6 | (~imms & 63);
    int len = -1;
    for (int b = 6; b >= 0; --b)
        if (combined >> b & 1) {
            len = b;
            break;
        }
    // len < 1: N 0 with imms 11111x, no element size exists.
    if (len < 1) {
        *ok = false;
        return 0;
    }
    uint32_t esize = 1u << len, levels = esize - 1;
    uint32_t s = imms & levels, r = immr & levels;
    // S all ones within the element would make the element all ones: reserved.
    if (s == levels) {
        *ok = false;
        return 0;
    }
    uint64_t emask = esize == 64 ? ~0ull : ((1ull << esize) - 1);
    uint64_t value = (1ull << (s + 1)) - 1;  // s + 1 <= 63 here
    if (r) value = ((value >> r) | (value << (esize - r))) & emask;
    for (uint32_t e = esize; e < 64; e *= 2) value |= value << e;
    *ok = true;
    return value;
}

aarch64_sve_fp_dup_imm expand_fp_dup_imm(uint32_t imm8) {
    uint32_t a = imm8 >> 7 & 1, b = imm8 >> 6 & 1, cd = imm8 >> 4 & 3, efgh = imm8 & 15;
    aarch64_sve_fp_dup_imm r{};
    r.half = static_cast<uint16_t>(a << 15 | (b ^ 1) << 14 | (b ? 0x3000 : 0) | cd << 10 | efgh << 6);
    r.single = a << 31 | (b ^ 1) << 30 | (b ? 0x3e000000u : 0) | cd << 23 | efgh << 19;
    r.dbl = uint64_t(a) << 63 | uint64_t(b ^ 1) << 62 | (b ? 0xffull << 54 : 0) | uint64_t(cd) << 52 |
            uint64_t(efgh) << 48;
    return r;
}
