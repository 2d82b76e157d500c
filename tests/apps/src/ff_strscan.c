// String scanners written with the SVE intrinsics, the way a C library scans
// a string of unknown length: first-fault loads that may run past the
// terminator into a page that cannot be read, FFR telling how much really
// arrived. The strings are placed so their terminator is the last readable
// byte (or element) before an inaccessible page, or one element earlier, so
// every scan has a vector that crosses into that page. Non-fault loads take
// the same walks, falling back to a first-fault load when nothing at all
// could be read.
//
// Two situations are left out on purpose: our first-fault and non-fault
// kernels stop early or fault there by design, and both are recorded in
// tests/conformance/departures.toml.
//  - A widening first-fault load (LDFF1B into halfwords, words or
//    doublewords, LDFF1W into doublewords) with less than one register
//    element of readable bytes left before the page end. Our kernels count
//    the elements that fit by the register element size, so there they load
//    nothing and clear FFR, and a scan that retries from the same place never
//    moves (ff-kernel-stops-early). The one widening scan here, ff_strlen_sum,
//    keeps its terminator at least a whole word before the page end, and also
//    runs in the middle of the page.
//  - An unaligned 16- or 32-bit element straddling into the unreadable page.
//    Our non-fault kernels probe only the first byte of an element and then
//    read it whole, which ends the process (nf-kernel-straddling-element).
//    The wide strings here are aligned to their element size, as a uint16_t
//    or uint32_t array is anyway, and are loaded at that size (LDFF1H into
//    halfwords, LDFF1W into words, and the LDNF1 forms of both).
//
// Only what the architecture defines is printed: lengths, positions, sums
// of the loaded bytes. How many elements a first-fault or non-fault load
// delivers before it stops is the implementation's choice, so it is not.
#include <arm_sve.h>
#include <stddef.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "apps_common.h"

static uint8_t* page;  // readable; page + pagesz is not
static long pagesz;

// A first-fault load always delivers its first active element or faults.
// One that delivers nothing would make a scan loop for ever, so the scans
// give up instead and count it; the reference CPU never does.
static int stalls;
#define GIVE_UP_IF_STALLED(pg, got, result) \
    do {                                    \
        if (!svptest_first((pg), (got))) {  \
            ++stalls;                       \
            return (result);                \
        }                                   \
    } while (0)

// strlen: whole vectors under an all-true predicate, so the load runs past
// the terminator whenever the string ends before the vector does.
__attribute__((noinline)) size_t ff_strlen(const uint8_t* s) {
    svbool_t all = svptrue_b8();
    size_t i = 0;
    for (;;) {
        svsetffr();
        svuint8_t v = svldff1_u8(all, s + i);
        svbool_t got = svrdffr();
        GIVE_UP_IF_STALLED(all, got, 0);
        svbool_t nul = svcmpeq_n_u8(got, v, 0);
        if (svptest_any(got, nul)) return i + svcntp_b8(got, svbrkb_z(got, nul));
        i += svcntp_b8(all, got);
    }
}

// strchr: first c, or NULL when the terminator comes first. The character
// found is read back out of the vector with LASTB after BRKA.
__attribute__((noinline)) const uint8_t* ff_strchr(const uint8_t* s, uint8_t c, uint8_t* seen) {
    svbool_t all = svptrue_b8();
    for (size_t i = 0;;) {
        svsetffr();
        svuint8_t v = svldff1_u8(all, s + i);
        svbool_t got = svrdffr_z(all);
        GIVE_UP_IF_STALLED(all, got, NULL);
        svbool_t stop = svorr_b_z(got, svcmpeq_n_u8(got, v, c), svcmpeq_n_u8(got, v, 0));
        if (svptest_any(got, stop)) {
            svbool_t upto = svbrka_z(got, stop);
            *seen = svlastb_u8(upto, v);
            if (*seen != c) return NULL;
            return s + i + svcntp_b8(got, upto) - 1;
        }
        i += svcntp_b8(all, got);
    }
}

// memchr: a bounded scan; WHILELT keeps the load inside the n bytes, so a
// buffer ending at the page end never touches the next page. The load is a
// first-fault one for callers whose n runs past what is readable while the
// byte comes before that: memchr must stop at the byte without faulting.
__attribute__((noinline)) const uint8_t* ff_memchr(const uint8_t* s, uint8_t c, size_t n) {
    for (size_t i = 0; i < n;) {
        svbool_t pg = svwhilelt_b8_u64(i, n);
        svsetffr();
        svuint8_t v = svldff1_u8(pg, s + i);
        svbool_t got = svrdffr_z(pg);
        GIVE_UP_IF_STALLED(pg, got, NULL);
        svbool_t hit = svcmpeq_n_u8(got, v, c);
        if (svptest_any(got, hit)) return s + i + svcntp_b8(got, svbrkb_z(got, hit));
        i += svcntp_b8(pg, got);
    }
    return NULL;
}

// Length and byte sum of a string, the bytes widened to 32 bits as they are
// loaded (LDFF1B into words): sixteen bytes a vector. Callers keep at least
// four readable bytes from the terminator on (see the top of the file).
__attribute__((noinline)) size_t ff_strlen_sum(const uint8_t* s, uint32_t* sum) {
    svbool_t all = svptrue_b32();
    svuint32_t acc = svdup_n_u32(0);
    size_t i = 0;
    for (;;) {
        svsetffr();
        svuint32_t v = svldff1ub_u32(all, s + i);
        svbool_t got = svrdffr_z(all);
        GIVE_UP_IF_STALLED(all, got, 0);
        svbool_t nul = svcmpeq_n_u32(got, v, 0);
        if (svptest_any(got, nul)) {
            svbool_t before = svbrkb_z(got, nul);
            acc = svadd_u32_m(before, acc, v);
            *sum = (uint32_t)svaddv_u32(all, acc);
            return i + svcntp_b32(got, before);
        }
        acc = svadd_u32_m(got, acc, v);
        i += svcntp_b32(all, got);
    }
}

// 16- and 32-bit strings, aligned to their element size; the caller's string
// ends before the page does.
__attribute__((noinline)) size_t ff_strlen16(const uint16_t* s) {
    svbool_t all = svptrue_b16();
    size_t i = 0;
    for (;;) {
        svsetffr();
        svuint16_t v = svldff1_u16(all, s + i);
        svbool_t got = svrdffr_z(all);
        GIVE_UP_IF_STALLED(all, got, 0);
        svbool_t nul = svcmpeq_n_u16(got, v, 0);
        if (svptest_any(got, nul)) return i + svcntp_b16(got, svbrkb_z(got, nul));
        i += svcntp_b16(all, got);
    }
}

__attribute__((noinline)) size_t ff_strlen32(const uint32_t* s) {
    svbool_t all = svptrue_b32();
    size_t i = 0;
    for (;;) {
        svsetffr();
        svuint32_t v = svldff1_u32(all, s + i);
        svbool_t got = svrdffr_z(all);
        GIVE_UP_IF_STALLED(all, got, 0);
        svbool_t nul = svcmpeq_n_u32(got, v, 0);
        if (svptest_any(got, nul)) return i + svcntp_b32(got, svbrkb_z(got, nul));
        i += svcntp_b32(all, got);
    }
}

// Non-fault walks: LDNF1 never faults, so when it delivers nothing the scan
// retries that position with a first-fault load, which either reads the
// element or takes the fault the program deserves. The retries are functions
// of their own: inlined into the loop, GCC 12 keeps the FFR value read after
// the non-fault load for the one after the first-fault load, and the scan
// never advances.
__attribute__((noinline)) static svbool_t retry_u8(const uint8_t* p, svuint8_t* v) {
    svsetffr();
    *v = svldff1_u8(svptrue_b8(), p);
    return svrdffr_z(svptrue_b8());
}
__attribute__((noinline)) static svbool_t retry_u16(const uint16_t* p, svuint16_t* v) {
    svsetffr();
    *v = svldff1_u16(svptrue_b16(), p);
    return svrdffr_z(svptrue_b16());
}
__attribute__((noinline)) static svbool_t retry_u32(const uint32_t* p, svuint32_t* v) {
    svsetffr();
    *v = svldff1_u32(svptrue_b32(), p);
    return svrdffr_z(svptrue_b32());
}
__attribute__((noinline)) static svbool_t retry_s8_s64(const int8_t* p, svint64_t* v) {
    svsetffr();
    *v = svldff1sb_s64(svptrue_b64(), p);
    return svrdffr_z(svptrue_b64());
}

__attribute__((noinline)) size_t nf_strlen(const uint8_t* s) {
    svbool_t all = svptrue_b8();
    size_t i = 0;
    for (;;) {
        svsetffr();
        svuint8_t v = svldnf1_u8(all, s + i);
        svbool_t got = svrdffr_z(all);
        if (!svptest_first(all, got)) got = retry_u8(s + i, &v);
        GIVE_UP_IF_STALLED(all, got, 0);
        svbool_t nul = svcmpeq_n_u8(got, v, 0);
        if (svptest_any(got, nul)) return i + svcntp_b8(got, svbrkb_z(got, nul));
        i += svcntp_b8(all, got);
    }
}

__attribute__((noinline)) size_t nf_strlen16(const uint16_t* s) {
    svbool_t all = svptrue_b16();
    size_t i = 0;
    for (;;) {
        svsetffr();
        svuint16_t v = svldnf1_u16(all, s + i);
        svbool_t got = svrdffr_z(all);
        if (!svptest_first(all, got)) got = retry_u16(s + i, &v);
        GIVE_UP_IF_STALLED(all, got, 0);
        svbool_t nul = svcmpeq_n_u16(got, v, 0);
        if (svptest_any(got, nul)) return i + svcntp_b16(got, svbrkb_z(got, nul));
        i += svcntp_b16(all, got);
    }
}

__attribute__((noinline)) size_t nf_strlen32(const uint32_t* s) {
    svbool_t all = svptrue_b32();
    size_t i = 0;
    for (;;) {
        svsetffr();
        svuint32_t v = svldnf1_u32(all, s + i);
        svbool_t got = svrdffr_z(all);
        if (!svptest_first(all, got)) got = retry_u32(s + i, &v);
        GIVE_UP_IF_STALLED(all, got, 0);
        svbool_t nul = svcmpeq_n_u32(got, v, 0);
        if (svptest_any(got, nul)) return i + svcntp_b32(got, svbrkb_z(got, nul));
        i += svcntp_b32(all, got);
    }
}

// Sign-extending non-fault load of bytes into doublewords: a sum of signed
// bytes up to the terminator, eight bytes a vector.
__attribute__((noinline)) int64_t nf_signed_sum(const int8_t* s, size_t* len) {
    svbool_t all = svptrue_b64();
    svint64_t acc = svdup_n_s64(0);
    size_t i = 0;
    for (;;) {
        svsetffr();
        svint64_t v = svldnf1sb_s64(all, s + i);
        svbool_t got = svrdffr_z(all);
        if (!svptest_first(all, got)) got = retry_s8_s64(s + i, &v);
        GIVE_UP_IF_STALLED(all, got, 0);
        svbool_t nul = svcmpeq_n_s64(got, v, 0);
        svbool_t body = svptest_any(got, nul) ? svbrkb_z(got, nul) : got;
        acc = svadd_s64_m(body, acc, v);
        i += svcntp_b64(all, body);
        if (svptest_any(got, nul)) break;
    }
    *len = i;
    return svaddv_s64(all, acc);
}

// The set-up is kept scalar, so the only SVE code is the scanners'.
#define SCALAR __attribute__((optimize("no-tree-vectorize")))

// Junk that contains neither 0 nor the searched characters, so a scan that
// reads the wrong bytes or stops in the wrong place shows it.
static uint8_t junk(size_t k) { return (uint8_t)(0x41 + k % 23); }

// A byte string of length len whose terminator is `back` bytes before the
// end of the readable page (back 0: the terminator is the last byte).
SCALAR static uint8_t* place8(size_t len, size_t back) {
    uint8_t* s = page + pagesz - 1 - back - len;
    for (size_t k = 0; k < len; ++k) s[k] = junk(k * 7 + len);
    s[len] = 0;
    return s;
}

// A string of `len` elements of `size` bytes; its terminator ends `back`
// bytes before the page end. Callers pass a multiple of `size` for `back`,
// so the string is aligned to its element size.
SCALAR static uint8_t* place_wide(size_t len, size_t size, size_t back) {
    uint8_t* s = page + pagesz - back - size * (len + 1);
    for (size_t k = 0; k < len; ++k) {
        uint32_t v = 0x100u * (uint32_t)(k % 97 + 1) + junk(k);
        memcpy(s + k * size, &v, size);
    }
    memset(s + len * size, 0, size);
    return s;
}

SCALAR static void refill(void) {
    for (long k = 0; k < pagesz; ++k) page[k] = junk((size_t)k);
}

// Ends a line of results, saying how many of its scans gave up. The line is
// flushed, so that what was right before a crash still shows.
static void end_line(void) {
    if (stalls) printf(" [%d scans delivered nothing]", stalls);
    stalls = 0;
    printf("\n");
    fflush(stdout);
}

SCALAR int main(void) {
    pagesz = sysconf(_SC_PAGESIZE);
    uint8_t* map = mmap(NULL, 2 * pagesz, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED || mprotect(map + pagesz, pagesz, PROT_NONE) != 0) {
        perror("mmap");
        return 1;
    }
    page = map;
    refill();

    static const size_t lens[] = {0, 1, 2, 15, 31, 63, 64, 65, 100, 127, 128, 129, 200, 1000};
    const int nlens = (int)(sizeof lens / sizeof lens[0]);

    // Byte strings: terminator on the last byte, and one byte earlier.
    for (size_t back = 0; back <= 1; ++back) {
        printf("strlen back=%zu:", back);
        for (int j = 0; j < nlens; ++j) printf(" %zu", ff_strlen(place8(lens[j], back)));
        end_line();
        refill();
        printf("nf_strlen back=%zu:", back);
        for (int j = 0; j < nlens; ++j) printf(" %zu", nf_strlen(place8(lens[j], back)));
        end_line();
        refill();
    }

    // Bytes widened to words: the terminator starts the last four readable
    // bytes, or one byte before them, never closer to the page end.
    for (size_t back = 3; back <= 4; ++back) {
        printf("strlen+sum back=%zu:", back);
        for (int j = 0; j < nlens; ++j) {
            uint32_t sum = 0;
            size_t n = ff_strlen_sum(place8(lens[j], back), &sum);
            printf(" %zu/%u", n, sum);
        }
        end_line();
        refill();
    }

    // Signed bytes: characters above 0x7f count negative.
    printf("signed sums:");
    for (int j = 0; j < nlens; ++j) {
        uint8_t* s = place8(lens[j], j & 1);
        for (size_t k = 0; k < lens[j]; ++k) s[k] = (uint8_t)(k * 37 + 129);
        for (size_t k = 0; k < lens[j]; ++k)
            if (s[k] == 0) s[k] = 1;
        size_t n = 0;
        int64_t sum = nf_signed_sum((const int8_t*)s, &n);
        printf(" %zu:%lld", n, (long long)sum);
        refill();
    }
    end_line();

    // strchr: the character absent (the scan ends at the terminator on the
    // last readable byte), the terminator itself, the character on the last
    // byte before the terminator, and a third of the way in.
    for (size_t back = 0; back <= 1; ++back) {
        printf("strchr back=%zu:", back);
        for (int j = 0; j < nlens; ++j) {
            size_t len = lens[j];
            uint8_t* s = place8(len, back);
            uint8_t seen = 0xff;
            const uint8_t* r = ff_strchr(s, '#', &seen);
            printf(" %s/%u", r ? "found" : "none", seen);
            r = ff_strchr(s, 0, &seen);
            printf(",%td", r ? r - s : (ptrdiff_t)-1);
            if (len > 0) {
                s[len - 1] = '#';
                r = ff_strchr(s, '#', &seen);
                printf(",%td", r ? r - s : (ptrdiff_t)-1);
                s[len / 3] = '#';
                r = ff_strchr(s, '#', &seen);
                printf(",%td", r ? r - s : (ptrdiff_t)-1);
            }
            refill();
        }
        end_line();
    }

    // memchr of a buffer that ends with the page: absent, on the last byte,
    // in the middle; then the last byte and the middle one again with an n
    // that runs 1000 bytes past the page end.
    printf("memchr:");
    for (int j = 0; j < nlens; ++j) {
        size_t n = lens[j] + 1;
        uint8_t* s = page + pagesz - n;
        const uint8_t* r = ff_memchr(s, '@', n);
        printf(" %td", r ? r - s : (ptrdiff_t)-1);
        s[n - 1] = '@';
        r = ff_memchr(s, '@', n);
        printf(",%td", r ? r - s : (ptrdiff_t)-1);
        r = ff_memchr(s, '@', n + 1000);
        printf(",%td", r ? r - s : (ptrdiff_t)-1);
        s[n / 2] = '@';
        r = ff_memchr(s, '@', n);
        printf(",%td", r ? r - s : (ptrdiff_t)-1);
        r = ff_memchr(s, '@', n + 1000);
        printf(",%td", r ? r - s : (ptrdiff_t)-1);
        refill();
    }
    end_line();

    // 32- and 16-bit strings, first-fault and non-fault: the terminator is
    // the last element of the page, or one element earlier.
    for (size_t back = 0; back <= 4; back += 4) {
        printf("strlen32 back=%zu:", back);
        for (int j = 0; j < nlens; ++j) printf(" %zu", ff_strlen32((const uint32_t*)place_wide(lens[j], 4, back)));
        end_line();
        refill();
        printf("nf_strlen32 back=%zu:", back);
        for (int j = 0; j < nlens; ++j) printf(" %zu", nf_strlen32((const uint32_t*)place_wide(lens[j], 4, back)));
        end_line();
        refill();
    }
    for (size_t back = 0; back <= 2; back += 2) {
        printf("strlen16 back=%zu:", back);
        for (int j = 0; j < nlens; ++j) printf(" %zu", ff_strlen16((const uint16_t*)place_wide(lens[j], 2, back)));
        end_line();
        refill();
        printf("nf_strlen16 back=%zu:", back);
        for (int j = 0; j < nlens; ++j) printf(" %zu", nf_strlen16((const uint16_t*)place_wide(lens[j], 2, back)));
        end_line();
        refill();
    }

    // A longer walk in the middle of the page: strings back to back, the
    // widening scan among the others.
    {
        size_t total = 0;
        uint64_t h = 0;
        uint8_t* p = page + 3;
        for (int k = 0; k < 40; ++k) {
            size_t len = (size_t)(apps_rand() % 90);
            for (size_t q = 0; q < len; ++q) p[q] = (uint8_t)(apps_rand() % 255 + 1);
            p[len] = 0;
            size_t a = ff_strlen(p), c = nf_strlen(p);
            uint32_t sum = 0;
            size_t b = ff_strlen_sum(p, &sum);
            uint8_t seen = 0;
            const uint8_t* r = ff_strchr(p, p[len / 2], &seen);
            h = h * 1000003u + a * 7 + c + b * 3 + sum + (size_t)(r ? r - p : 999) * 131 + seen;
            total += a;
            p += len + 1;
        }
        printf("back to back: total=%zu hash=%016llx", total, (unsigned long long)h);
        end_line();
        refill();
    }
    munmap(map, 2 * pagesz);
    return 0;
}
