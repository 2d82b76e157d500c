// The stand-in's executor is test equipment; these check that it refuses what
// the processor would not run, so that the client tests cannot pass on a
// sequence that would not encode or on a block that still holds an SVE word.
// (That it accepts the forms that encode, every other client test shows.)
#include "harness.h"

namespace client_test {
namespace {

TEST(Executor, RefusesWhatWouldNotEncodeOrRun) {
    drstub::reset();
    void* dc = drstub::thread_init();
    auto* state = static_cast<uint8_t*>(dr_thread_alloc(dc, 512));
    auto mem = [&](int disp, opnd_size_t size, reg_id_t base = DR_REG_X27) {
        return opnd_create_base_disp(base, DR_REG_NULL, 0, disp, size);
    };
    auto str = [&](int disp, opnd_size_t size, reg_id_t data, reg_id_t base = DR_REG_X27) {
        return instr_create_1dst_1src(dc, OP_str, mem(disp, size, base), opnd_create_reg(data));
    };
    auto sysreg = [&](int op, reg_id_t dst, reg_id_t src) {
        return instr_create_1dst_1src(dc, op, opnd_create_reg(dst), opnd_create_reg(src));
    };
    const struct {
        const char* what;
        std::function<instr_t*()> make;
    } cases[] = {
        {"unscaled offset", [&] { return str(250, OPSZ_8, DR_REG_X26); }},
        {"memory size not the register's", [&] { return str(272, OPSZ_8, DR_REG_W26); }},
        {"SP as the data register", [&] { return str(248, OPSZ_8, DR_REG_SP); }},
        {"access outside the host's memory", [&] { return str(0, OPSZ_8, DR_REG_X0, DR_REG_X26); }},
        {"client instruction naming X28", [&] { return str(0, OPSZ_8, DR_REG_X28); }},
        {"pair offset out of range",
         [&] {
             return instr_create_1dst_2src(dc, OP_stp, mem(512, OPSZ_16), opnd_create_reg(DR_REG_X0),
                                           opnd_create_reg(DR_REG_X1));
         }},
        {"mrs into SP", [&] { return sysreg(OP_mrs, DR_REG_SP, DR_REG_NZCV); }},
        {"msr of FPCR with reserved bits set", [&] { return sysreg(OP_msr, DR_REG_FPCR, DR_REG_X26); }},
        {"add of the zero register to SP",
         [&] {
             return instr_create_1dst_4src(dc, OP_add, opnd_create_reg(DR_REG_X26), opnd_create_reg(DR_REG_XZR),
                                           OPND_CREATE_INT(0), OPND_CREATE_LSL(), OPND_CREATE_INT(0));
         }},
    };
    for (const auto& c : cases) {
        instrlist_t* bb = instrlist_create(dc);
        instrlist_append(bb, c.make());
        drstub::Machine m{};
        m.x[27] = reinterpret_cast<uint64_t>(state);  // a 512-byte block of thread heap
        m.sp = reinterpret_cast<uint64_t>(state) + 256;
        m.x[26] = 0x1122334455667788ull;
        drstub::Run r = drstub::execute(dc, bb, m);
        EXPECT_FALSE(r.ok) << c.what;
        EXPECT_FALSE(r.error.empty()) << c.what;
        instrlist_clear_and_destroy(dc, bb);
    }
    // An application word other than NOP: the SVE word left in a block stops it.
    const uint32_t words[] = {kNop, kAddZ};
    instrlist_t* bb = drstub::make_block(dc, words, 2);
    drstub::Machine m{};
    drstub::Run r = drstub::execute(dc, bb, m);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.executed, 1);
    EXPECT_NE(r.error.find("0x04a20020"), std::string::npos) << r.error;
    drstub::destroy_block(dc, bb);
    drstub::reset();
}

}  // namespace
}  // namespace client_test
