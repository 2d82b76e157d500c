// Block rewriting at build time: which blocks are touched, what is counted,
// and the exact sequence that replaces an SVE word.
#include <cstddef>

#include "harness.h"

namespace client_test {
namespace {

std::string hex(uint64_t v) {
    char buf[32];
    snprintf(buf, sizeof buf, "0x%llx", static_cast<unsigned long long>(v));
    return buf;
}

std::string word_item(uint32_t w) {
    char buf[32];
    snprintf(buf, sizeof buf, ".word 0x%08x", w);
    return buf;
}

struct Expect {
    std::string text;
    bool by_host;
};

std::string at(size_t offset) { return "[x27, #" + std::to_string(offset) + "]"; }
size_t off_x(int n) { return offsetof(cpu_state, x) + 8 * static_cast<size_t>(n); }
size_t off_z(int n) { return offsetof(cpu_state, z) + 64 * static_cast<size_t>(n); }

// The replacement of one SVE word, step by step:
// save X26, X27 and the application's X28 in slots 1-3, point X27 at the
// thread's cpu_state, store everything, call, reload everything, restore.
std::vector<Expect> expansion(const void* state) {
    std::vector<Expect> e;
    auto host = [&](const std::string& t) { e.push_back({t, true}); };
    auto own = [&](const std::string& t) { e.push_back({t, false}); };
    const std::string mov_state = "mov x27 = " + hex(reinterpret_cast<uintptr_t>(state));
    host("save x26 slot 1");
    host("save x27 slot 2");
    host("get stolen into x27");
    host("save x27 slot 3");
    host(mov_state);
    own("add x26, sp, #0");
    own("str x26, " + at(off_x(31)));
    for (int n = 0; n < 26; n += 2)
        own("stp x" + std::to_string(n) + ", x" + std::to_string(n + 1) + ", " + at(off_x(n)));
    own("stp x29, x30, " + at(off_x(29)));
    for (int n = 0; n < 32; ++n) own("str q" + std::to_string(n) + ", " + at(off_z(n)));
    own("mrs x26, nzcv");
    own("str x26, " + at(offsetof(cpu_state, nzcv)));
    own("mrs x26, fpsr");
    own("str w26, " + at(offsetof(cpu_state, fpsr)));
    own("mrs x26, fpcr");
    own("str w26, " + at(offsetof(cpu_state, fpcr)));
    host("clean call");
    host(mov_state);
    own("ldr w26, " + at(offsetof(cpu_state, fpcr)));
    own("msr fpcr, x26");
    own("ldr w26, " + at(offsetof(cpu_state, fpsr)));
    own("msr fpsr, x26");
    own("ldr x26, " + at(offsetof(cpu_state, nzcv)));
    own("msr nzcv, x26");
    for (int n = 0; n < 32; ++n) own("ldr q" + std::to_string(n) + ", " + at(off_z(n)));
    for (int n = 0; n < 26; n += 2)
        own("ldp x" + std::to_string(n) + ", x" + std::to_string(n + 1) + ", " + at(off_x(n)));
    own("ldp x29, x30, " + at(off_x(29)));
    own("ldr x26, " + at(off_x(31)));
    own("add sp, x26, #0");
    host("restore x27 slot 3");
    host("set stolen from x27");
    host("restore x27 slot 2");
    host("restore x26 slot 1");
    return e;
}

class RewriteTest : public ClientTest {
protected:
    // The cpu_state of the fixture's thread, as the host handed it out.
    void* state() {
        auto blocks = drstub::thread_heap_blocks();
        EXPECT_EQ(blocks.size(), 1u);
        return blocks.empty() ? nullptr : blocks[0].first;
    }

    void expect_items(instrlist_t* bb, const std::vector<Expect>& want) {
        auto got = items(bb);
        ASSERT_EQ(got.size(), want.size());
        for (size_t k = 0; k < want.size(); ++k) {
            EXPECT_EQ(got[k].text, want[k].text) << "item " << k;
            EXPECT_EQ(got[k].by_host, want[k].by_host) << "item " << k << ": " << want[k].text;
        }
    }

    std::string exit_totals() {
        StderrCapture cap;
        drstub::process_exit();
        return cap.text();
    }
};

TEST_F(RewriteTest, AnSveWordIsReplacedByTheWholeSequenceInOrder) {
    main_code[1] = kAddZ;
    instrlist_t* bb = build(main_code, 3);
    std::vector<Expect> want = {{word_item(kNop), false}};
    for (const Expect& e : expansion(state())) want.push_back(e);
    want.push_back({word_item(kNop), false});
    expect_items(bb, want);
}

TEST_F(RewriteTest, NeighbouringSveWordsEachGetTheirOwnSequence) {
    main_code[0] = kAddZ;
    main_code[1] = 0x04a20041;  // ADD Z1.S, Z2.S, Z2.S
    instrlist_t* bb = build(main_code, 2);
    std::vector<Expect> want = expansion(state());
    std::vector<Expect> second = expansion(state());
    want.insert(want.end(), second.begin(), second.end());
    expect_items(bb, want);

    // Each call carries its own word, address and handler.
    std::vector<std::vector<uint64_t>> calls;
    for (instr_t* i = instrlist_first(bb); i != nullptr; i = instr_get_next(i)) {
        void* callee = nullptr;
        std::vector<uint64_t> args;
        if (drstub::call_target(i, &callee, &args)) {
            EXPECT_NE(callee, nullptr);
            calls.push_back(args);
        }
    }
    ASSERT_EQ(calls.size(), 2u);
    for (int k = 0; k < 2; ++k) {
        ASSERT_EQ(calls[k].size(), 3u);
        EXPECT_EQ(calls[k][0], main_code[k]);
        EXPECT_EQ(calls[k][1], reinterpret_cast<uint64_t>(&main_code[k]));
        EXPECT_EQ(calls[k][2], reinterpret_cast<uint64_t>(is_sve(main_code[k])));
    }
}

TEST_F(RewriteTest, HandBuiltInstructionsAndTheCallMapBackToTheSveInstruction) {
    main_code[5] = kAddZ;
    instrlist_t* bb = build(main_code + 4, 3);
    const app_pc pc = reinterpret_cast<app_pc>(&main_code[5]);
    int own = 0, call = 0, other_host = 0;
    for (instr_t* i = instrlist_first(bb); i != nullptr; i = instr_get_next(i)) {
        drstub::Item it = drstub::describe(i);
        if (it.text.rfind(".word", 0) == 0) continue;  // the application's NOPs
        if (!it.by_host) {
            ++own;
            EXPECT_EQ(instr_get_translation(i), pc) << it.text;
            EXPECT_FALSE(instr_is_meta(i)) << it.text;
        } else if (it.text == "clean call") {
            ++call;
            EXPECT_EQ(instr_get_translation(i), pc);
        } else {
            ++other_host;
            EXPECT_EQ(instr_get_translation(i), nullptr) << it.text;
        }
    }
    // 6-13 and 16-23 of the sequence: 2 + 13 + 1 + 32 + 6, twice.
    EXPECT_EQ(own, 2 * (2 + 13 + 1 + 32 + 6));
    EXPECT_EQ(call, 1);
    EXPECT_GT(other_host, 0);
}

TEST_F(RewriteTest, TheSveWordIsGoneAndTheNeighboursStay) {
    main_code[0] = kNop;
    main_code[1] = kAddZ;
    main_code[2] = 0xaa0103e0;  // MOV X0, X1
    instrlist_t* bb = build(main_code, 3);
    std::vector<std::string> words;
    for (instr_t* i = instrlist_first(bb); i != nullptr; i = instr_get_next(i)) {
        std::string t = drstub::describe(i).text;
        if (t.rfind(".word", 0) == 0) words.push_back(t);
    }
    EXPECT_EQ(words, (std::vector<std::string>{word_item(kNop), word_item(0xaa0103e0)}));
}

TEST_F(RewriteTest, ForTraceAndTranslatingAreRewrittenTheSameWay) {
    main_code[0] = kAddZ;
    main_code[1] = kNop;
    auto texts = [&](bool for_trace, bool translating) {
        std::vector<std::string> t;
        for (const auto& it : items(build(main_code, 2, for_trace, translating))) t.push_back(it.text);
        return t;
    };
    auto plain = texts(false, false);
    EXPECT_EQ(texts(true, false), plain);
    EXPECT_EQ(texts(false, true), plain);
    EXPECT_EQ(texts(true, true), plain);
}

TEST_F(RewriteTest, BlocksOfOtherModulesAreLeftAloneAndNotCounted) {
    drstub::add_module(lib_code, lib_code + 64, "/usr/lib/libvec.so");
    lib_code[0] = kAddZ;
    lib_code[1] = kNop;
    lib_code[2] = kNop;
    instrlist_t* bb = build(lib_code, 3);
    expect_items(bb, {{word_item(kAddZ), false}, {word_item(kNop), false}, {word_item(kNop), false}});
    // The lookup's record is given back.
    EXPECT_EQ(drstub::module_records(), 1u);
    EXPECT_EQ(exit_totals(), totals(0, 0));
}

TEST_F(RewriteTest, BlocksInNoModuleCountAsTheMainExecutables) {
    loose_code[0] = kNop;
    loose_code[1] = kAddZ;
    instrlist_t* bb = build(loose_code, 2);
    std::vector<Expect> want = {{word_item(kNop), false}};
    for (const Expect& e : expansion(state())) want.push_back(e);
    expect_items(bb, want);
    EXPECT_EQ(exit_totals(), totals(0, 1));
}

TEST_F(RewriteTest, NonSveInstructionsAreCountedEachTimeABlockIsBuilt) {
    main_code[0] = kNop;
    main_code[1] = 0xaa0103e0;  // MOV X0, X1
    main_code[2] = kAddZ;
    main_code[3] = 0x252c9001;  // no row has it: not SVE as far as we know
    instrlist_t* bb = build(main_code, 4);
    build(main_code, 4);  // built again, as after a flush
    // Running a block adds nothing to this count.
    main_code[1] = kNop;
    main_code[3] = kNop;
    drstub::Machine m = distinct_machine(1);
    drstub::Run run = drstub::execute(dc, bb, m);
    EXPECT_TRUE(run.ok) << run.error;
    EXPECT_EQ(exit_totals(), totals(1, 6));
}

TEST_F(RewriteTest, ABlockWithoutSveIsUnchanged) {
    const uint32_t words[] = {kNop, 0xaa0103e0, 0x8b020020, 0xd65f03c0};
    std::copy(std::begin(words), std::end(words), main_code);
    instrlist_t* bb = build(main_code, 4);
    std::vector<Expect> want;
    for (uint32_t w : words) want.push_back({word_item(w), false});
    expect_items(bb, want);
    EXPECT_EQ(exit_totals(), totals(0, 4));
}

TEST(RewriteAssert, AStolenRegisterOtherThanX28IsAnAssertionAtLine270) {
    ChildEnd end = run_in_child([] {
        drstub::reset();
        drstub::set_main_module(main_code, main_code + 256, kExePath);
        client_main();
        void* t = drstub::thread_init();
        drstub::set_stolen_reg(DR_REG_X27);
        main_code[0] = kNop;
        main_code[1] = kAddZ;
        drstub::run_app2app(t, drstub::make_block(t, main_code, 2));
        _exit(0);
    });
    EXPECT_TRUE(end.exited);
    EXPECT_EQ(end.status, drstub::kAbortExitCode);
    EXPECT_EQ(end.err, assert_line(270, "dr_get_stolen_reg() == DR_REG_X28"));
}

TEST(RewriteAssert, TheStolenRegisterIsOnlyCheckedWhenRewriting) {
    ChildEnd end = run_in_child([] {
        drstub::reset();
        drstub::set_main_module(main_code, main_code + 256, kExePath);
        client_main();
        void* t = drstub::thread_init();
        drstub::set_stolen_reg(DR_REG_X27);
        main_code[0] = kNop;
        main_code[1] = kNop;
        drstub::run_app2app(t, drstub::make_block(t, main_code, 2));
        _exit(0);
    });
    EXPECT_TRUE(end.exited);
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.err, "");
}

}  // namespace
}  // namespace client_test
