// Integer arithmetic kernels and their handlers.
#include "sve/core/handler_util.h"
#include "sve/integer/kernel_util.h"

extern "C" aarch64_decode_rc sve_add_zzz(cpu_state* s, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    const uint8_t* a = s->z[zn.num];
    const uint8_t* b = s->z[zm.num];
    return by_size(zd.size, [&]<typename T>() {
        uint8_t buf[64];
        for (unsigned i = 0; i < 64 / sizeof(T); ++i) set_elem<T>(buf, i, T(elem<T>(a, i) + elem<T>(b, i)));
        std::memcpy(s->z[zd.num], buf, 64);
    });
}

aarch64_decode_rc VecU32AddVVX(cpu_state* s, unsigned w) {
    set_instruction(s, w);
    return sve_add_zzz(s, zreg(f_zd(w), ES_S), zreg(f_zn(w), ES_S), zreg(f_zm(w), ES_S));
}
