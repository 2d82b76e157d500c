// Prints every row of the decode table, one per line:
//   name mask bits implemented "expectation"
#include <cstdio>

#include "sve/core/decode.h"

int main() {
    for (size_t i = 0; i < sve_row_count; ++i) {
        const sve_row& r = sve_rows[i];
        printf("%s %08x %08x %d %s\n", r.name, r.mask, r.bits, r.handler != nullptr, r.asm_expect);
    }
    return 0;
}
