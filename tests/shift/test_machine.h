// A register file for handler tests: element access at any width, predicate
// groups written with noise in the bytes that must not count, and execution of
// a word through the decoder, the way the client runs it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>

#include "sve/core/cpu_state.h"
#include "sve/core/decode.h"

struct Machine {
    std::unique_ptr<cpu_state> st{new cpu_state()};
    cpu_state* s() { return st.get(); }

    uint64_t z(unsigned r, unsigned i, unsigned N) const {
        uint64_t v = 0;
        std::memcpy(&v, st->z[r] + i * (N / 8), N / 8);
        return v;
    }
    void set_z(unsigned r, unsigned i, unsigned N, uint64_t v) { std::memcpy(st->z[r] + i * (N / 8), &v, N / 8); }
    void fill_z(unsigned r, unsigned N, uint64_t v) {
        for (unsigned i = 0; i < 512 / N; ++i) set_z(r, i, N, v);
    }
    // An element's predicate group: only bit 0 of its first byte decides. An
    // active group is 0x03 followed by 0xFE, an inactive one 0x02 followed by
    // 0xFF, so a kernel that reads another byte or bit goes wrong.
    void set_active(unsigned p, unsigned i, unsigned N, bool on) {
        unsigned b = N / 8;
        st->p[p][i * b] = on ? 0x03 : 0x02;
        for (unsigned k = 1; k < b; ++k) st->p[p][i * b + k] = on ? 0xFE : 0xFF;
    }
    // Runs the word through is_sve and the handler it names.
    aarch64_decode_rc exec(uint32_t word) {
        sve_handler h = is_sve(word);
        if (!h) {
            ADD_FAILURE() << "no handler for " << std::hex << word;
            return DECODE_UNKNOWN;
        }
        return h(s(), word);
    }
};

// All ones in an N-bit element.
constexpr uint64_t ones_of(unsigned N) { return N == 64 ? ~0ull : (1ull << N) - 1; }
