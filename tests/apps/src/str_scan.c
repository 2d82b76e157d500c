// String scanning: character counts, case folding and a byte search over a
// generated text.
#include <string.h>

#include "apps_common.h"

#define LEN 5000
char text[LEN + 1];
char folded[LEN + 1];

__attribute__((noinline)) int count_char(const char* s, int n, char c) {
    int k = 0;
    for (int i = 0; i < n; ++i) k += s[i] == c;
    return k;
}
__attribute__((noinline)) int count_vowels(const char* s, int n) {
    int k = 0;
    for (int i = 0; i < n; ++i) {
        char c = s[i] | 0x20;
        k += c == 'a' || c == 'e' || c == 'i' || c == 'o' || c == 'u';
    }
    return k;
}
__attribute__((noinline)) void to_lower(char* restrict out, const char* restrict in, int n) {
    for (int i = 0; i < n; ++i) out[i] = (in[i] >= 'A' && in[i] <= 'Z') ? in[i] + 32 : in[i];
}
__attribute__((noinline)) int count_digits(const unsigned char* s, int n) {
    int k = 0;
    for (int i = 0; i < n; ++i) k += (unsigned char)(s[i] - '0') < 10;
    return k;
}

int main(void) {
    static const char alphabet[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 .,;";
    for (int i = 0; i < LEN; ++i) text[i] = alphabet[apps_rand() % (sizeof alphabet - 1)];
    text[LEN] = '\0';
    to_lower(folded, text, LEN);
    folded[LEN] = '\0';
    printf("spaces=%d e=%d vowels=%d digits=%d\n", count_char(text, LEN, ' '), count_char(folded, LEN, 'e'),
           count_vowels(text, LEN), count_digits((const unsigned char*)text, LEN));
    printf("first 60: %.60s\n", folded);
    printf("length=%zu\n", strlen(folded));
    APPS_PRINT_SUM("folded", folded);
    return 0;
}
