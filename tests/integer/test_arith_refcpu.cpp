// A handful of words of the family checked against the reference CPU: the
// expected Z1 of each was recorded by running refcpu/probe.c on an
// SVE-capable CPU model at 512 bits (see that file), from the same inputs
// that refcpu/probe_inputs.h gives here.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "int_test_util.h"
#include "refcpu/probe_inputs.h"
#include "sve/core/decode.h"

namespace {
using namespace inttest;

struct Recorded {
    uint32_t word;
    const char* z1;
};
const Recorded recorded[] = {
#include "refcpu_expect.inc"
};

std::string hex64(const uint8_t* b) {
    std::string s;
    char t[3];
    for (int i = 0; i < 64; ++i) {
        std::snprintf(t, sizeof t, "%02x", b[i]);
        s += t;
    }
    return s;
}

TEST(ReferenceCpu, RecordedResultsOfTheProbeWords) {
    for (const Recorded& r : recorded) {
        probe_regs in;
        probe_fill(&in, r.word);
        auto s = noisy_state(r.word);
        std::memcpy(s->z[1], in.z1, 64);
        std::memcpy(s->z[3], in.z3, 64);
        std::memcpy(s->z[4], in.z4, 64);
        for (unsigned i = 0; i < 64; ++i) {
            s->p[2][i] = in.p2 >> i & 1;
            s->p[9][i] = in.p9 >> i & 1;
        }
        sve_handler h = is_sve(r.word);
        ASSERT_NE(h, nullptr) << std::hex << r.word;
        EXPECT_EQ(h(s.get(), r.word), DECODE_OK) << std::hex << r.word;
        EXPECT_EQ(hex64(s->z[1]), r.z1) << "word " << std::hex << r.word;
    }
}

}  // namespace
