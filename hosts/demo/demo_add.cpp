// Emulates ADD Z0.S, Z1.S, Z2.S (word 0x04a20020) on a fresh register file and
// shows Z0 before and after.
#include <cstdio>
#include <cstring>

#include "sve/core/decode.h"

static void show(const char* what, const cpu_state& s, int reg) {
    printf("%s z%d.s:", what, reg);
    for (int i = 15; i >= 0; --i) {
        uint32_t v;
        memcpy(&v, s.z[reg] + 4 * i, 4);
        printf(" %08x", v);
    }
    printf("\n");
}

int main() {
    static cpu_state s;
    memset(&s, 0, sizeof s);
    for (uint32_t i = 0; i < 16; ++i) {
        uint32_t a = 0x01010101u * i, b = 0xfffffff0u + i;
        memcpy(s.z[1] + 4 * i, &a, 4);
        memcpy(s.z[2] + 4 * i, &b, 4);
        uint32_t junk = 0xdeadbeef;
        memcpy(s.z[0] + 4 * i, &junk, 4);
    }
    const unsigned word = 0x04a20020;
    sve_handler h = is_sve(word);
    if (!h) {
        printf("0x%08x is not known\n", word);
        return 1;
    }
    printf("ADD Z0.S, Z1.S, Z2.S (0x%08x), element 15 first\n", word);
    show("z1 ", s, 1);
    show("z2 ", s, 2);
    show("before", s, 0);
    aarch64_decode_rc rc = h(&s, word);
    show("after ", s, 0);
    printf("handler returned %u\n", rc);
    return rc == DECODE_OK ? 0 : 1;
}
