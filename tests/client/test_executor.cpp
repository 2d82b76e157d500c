// The stand-in's executor is test equipment; these check that it refuses what
// the processor would not run, so that the client tests above cannot pass on
// a sequence that would not encode.
#include "harness.h"

namespace client_test {
namespace {

class ExecutorTest : public ::testing::Test {
protected:
    void SetUp() override {
        drstub::reset();
        dc = drstub::thread_init();
        state = static_cast<uint8_t*>(dr_thread_alloc(dc, 512));
        bb = instrlist_create(dc);
    }
    void TearDown() override {
        instrlist_clear_and_destroy(dc, bb);
        drstub::reset();
    }
    // Runs `i` with X27 pointing at a 512-byte block of thread heap.
    drstub::Run run_one(instr_t* i) {
        instrlist_append(bb, i);
        drstub::Machine m{};
        m.x[27] = reinterpret_cast<uint64_t>(state);
        m.sp = reinterpret_cast<uint64_t>(state) + 256;
        m.x[26] = 0x1122334455667788ull;
        return drstub::execute(dc, bb, m);
    }
    opnd_t mem(int disp, opnd_size_t size, reg_id_t base = DR_REG_X27) {
        return opnd_create_base_disp(base, DR_REG_NULL, 0, disp, size);
    }
    void* dc = nullptr;
    uint8_t* state = nullptr;
    instrlist_t* bb = nullptr;
};

TEST_F(ExecutorTest, AcceptsTheFormsThatEncode) {
    const struct {
        const char* what;
        std::function<instr_t*(void*)> make;
    } cases[] = {
        {"str x, scaled offset",
         [&](void* d) { return instr_create_1dst_1src(d, OP_str, mem(248, OPSZ_8), opnd_create_reg(DR_REG_X26)); }},
        {"str w", [&](void* d) { return instr_create_1dst_1src(d, OP_str, mem(276, OPSZ_4), opnd_create_reg(DR_REG_W26)); }},
        {"str q", [&](void* d) { return instr_create_1dst_1src(d, OP_str, mem(288, OPSZ_16), opnd_create_reg(DR_REG_Q3)); }},
        {"stp from SP",
         [&](void* d) {
             return instr_create_1dst_2src(d, OP_stp, mem(496 - 256, OPSZ_16, DR_REG_SP), opnd_create_reg(DR_REG_X0),
                                           opnd_create_reg(DR_REG_X1));
         }},
        {"mrs nzcv",
         [&](void* d) { return instr_create_1dst_1src(d, OP_mrs, opnd_create_reg(DR_REG_X26), opnd_create_reg(DR_REG_NZCV)); }},
    };
    for (const auto& c : cases) {
        instrlist_clear_and_destroy(dc, bb);
        bb = instrlist_create(dc);
        drstub::Run r = run_one(c.make(dc));
        EXPECT_TRUE(r.ok) << c.what << ": " << r.error;
    }
}

TEST_F(ExecutorTest, RefusesWhatWouldNotEncodeOrRun) {
    const struct {
        const char* what;
        std::function<instr_t*(void*)> make;
    } cases[] = {
        {"unscaled offset",
         [&](void* d) { return instr_create_1dst_1src(d, OP_str, mem(250, OPSZ_8), opnd_create_reg(DR_REG_X26)); }},
        {"memory size not the register's",
         [&](void* d) { return instr_create_1dst_1src(d, OP_str, mem(272, OPSZ_8), opnd_create_reg(DR_REG_W26)); }},
        {"SP as the data register",
         [&](void* d) { return instr_create_1dst_1src(d, OP_str, mem(248, OPSZ_8), opnd_create_reg(DR_REG_SP)); }},
        {"pair offset out of range",
         [&](void* d) {
             return instr_create_1dst_2src(d, OP_stp, mem(512, OPSZ_16), opnd_create_reg(DR_REG_X0),
                                           opnd_create_reg(DR_REG_X1));
         }},
        {"access outside the host's memory",
         [&](void* d) {
             return instr_create_1dst_1src(d, OP_str, mem(0, OPSZ_8, DR_REG_X26), opnd_create_reg(DR_REG_X0));
         }},
        {"client instruction naming X28",
         [&](void* d) { return instr_create_1dst_1src(d, OP_str, mem(0, OPSZ_8), opnd_create_reg(DR_REG_X28)); }},
        {"mrs into SP",
         [&](void* d) { return instr_create_1dst_1src(d, OP_mrs, opnd_create_reg(DR_REG_SP), opnd_create_reg(DR_REG_NZCV)); }},
        {"msr of FPCR with reserved bits set",
         [&](void* d) { return instr_create_1dst_1src(d, OP_msr, opnd_create_reg(DR_REG_FPCR), opnd_create_reg(DR_REG_X26)); }},
        {"add of the zero register to SP",
         [&](void* d) {
             return instr_create_1dst_4src(d, OP_add, opnd_create_reg(DR_REG_X26), opnd_create_reg(DR_REG_XZR),
                                           OPND_CREATE_INT(0), OPND_CREATE_LSL(), OPND_CREATE_INT(0));
         }},
    };
    for (const auto& c : cases) {
        instrlist_clear_and_destroy(dc, bb);
        bb = instrlist_create(dc);
        drstub::Run r = run_one(c.make(dc));
        EXPECT_FALSE(r.ok) << c.what;
        EXPECT_FALSE(r.error.empty()) << c.what;
    }
}

TEST_F(ExecutorTest, AnApplicationWordOtherThanNopCannotRun) {
    static uint32_t words[] = {0xd503201f, 0x04a20020};
    instrlist_clear_and_destroy(dc, bb);
    bb = drstub::make_block(dc, words, 2);
    drstub::Machine m{};
    drstub::Run r = drstub::execute(dc, bb, m);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.executed, 1);
    EXPECT_NE(r.error.find("0x04a20020"), std::string::npos) << r.error;
}

}  // namespace
}  // namespace client_test
