// Block rewriting at build time: which blocks are touched, what is counted,
// and the frame of the sequence that replaces an SVE word. That the sequence
// moves every register both ways is shown by running it (test_execute.cpp).
#include "harness.h"

namespace client_test {
namespace {

constexpr uint32_t kMov = 0xaa0103e0;  // MOV X0, X1

std::string word_item(uint32_t w) {
    char buf[32];
    snprintf(buf, sizeof buf, ".word 0x%08x", w);
    return buf;
}

class RewriteTest : public ClientTest {
protected:
    std::vector<std::string> texts(instrlist_t* bb) {
        std::vector<std::string> t;
        for (const drstub::Item& it : items(bb)) t.push_back(it.text);
        return t;
    }
};

TEST_F(RewriteTest, TheHostStepsFrameTheSequenceInOrderAndItMapsBackToTheSveWord) {
    main_code[0] = kNop;
    main_code[1] = kAddZ;
    main_code[2] = kMov;
    instrlist_t* bb = build(main_code, 3);
    char mov[64];
    snprintf(mov, sizeof mov, "mov x27 = 0x%llx",
             static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(drstub::thread_heap_blocks().at(0).first)));
    // The application's X26, X27 and X28 (through the host) go to slots 1-3
    // before X27 points at the state; the call keeps nothing, so X27 points
    // at it again before the reloads; X28 gets slot 3 back through the host.
    const std::vector<std::string> want_host = {
        "save x26 slot 1",    "save x27 slot 2",     "get stolen into x27", "save x27 slot 3",
        mov,                  "clean call",          mov,                   "restore x27 slot 3",
        "set stolen from x27", "restore x27 slot 2", "restore x26 slot 1",
    };
    std::vector<std::string> host, words;
    for (const drstub::Item& it : items(bb)) {
        if (it.by_host)
            host.push_back(it.text);
        else if (it.text.rfind(".word", 0) == 0)
            words.push_back(it.text);
        else  // the client's own moves: stores after the first pointer, reloads after the second
            EXPECT_TRUE(host.size() == 5 || host.size() == 7) << it.text << " after " << host.size() << " host steps";
    }
    EXPECT_EQ(host, want_host);
    EXPECT_EQ(words, (std::vector<std::string>{word_item(kNop), word_item(kMov)}));
    // A fault or state translation inside the sequence lands on the SVE word.
    for (instr_t* i = instrlist_first(bb); i != nullptr; i = instr_get_next(i)) {
        drstub::Item it = drstub::describe(i);
        if (it.text.rfind(".word", 0) == 0 || (it.by_host && it.text != "clean call")) continue;
        EXPECT_EQ(instr_get_translation(i), reinterpret_cast<app_pc>(&main_code[1])) << it.text;
        EXPECT_FALSE(!it.by_host && instr_is_meta(i)) << it.text;
    }
    // Traces and state translation get the same rewriting.
    for (bool for_trace : {false, true})
        for (bool translating : {false, true})
            EXPECT_EQ(texts(build(main_code, 3, for_trace, translating)), texts(bb)) << for_trace << translating;
}

TEST_F(RewriteTest, OnlyTheMainExecutableAndCodeInNoModuleAreRewrittenAndCounted) {
    drstub::add_module(lib_code, lib_code + 64, "/usr/lib/libvec.so");
    // Each place has its own number of non-SVE words, so the total shows which were counted.
    const struct {
        const char* what;
        uint32_t* code;
        size_t non_sve;
        bool rewritten;
    } cases[] = {{"main executable", main_code, 1, true}, {"no module", loose_code, 2, true},
                 {"shared library", lib_code, 4, false}};
    for (const auto& c : cases) {
        c.code[0] = kAddZ;
        std::vector<std::string> want = {word_item(kAddZ)};
        for (size_t k = 1; k <= c.non_sve; ++k) want.push_back(word_item(c.code[k] = kMov));
        std::vector<std::string> got = texts(build(c.code, 1 + c.non_sve));
        if (c.rewritten)
            EXPECT_EQ(std::count(got.begin(), got.end(), word_item(kAddZ)), 0) << c.what;
        else
            EXPECT_EQ(got, want) << c.what;
    }
    EXPECT_EQ(drstub::module_records(), 1u) << "the lookups' records are given back";
    EXPECT_EQ(exit_text(), totals(0, 1 + 2));
}

TEST_F(RewriteTest, NonSveWordsAreCountedEachTimeABlockIsBuiltNotWhenItRuns) {
    const uint32_t words[] = {kNop, kMov, kAddZ, 0x252c9001 /* known to no row: not SVE */};
    std::copy(std::begin(words), std::end(words), main_code);
    instrlist_t* bb = build(main_code, 4);
    build(main_code, 4);  // built again, as after a flush
    main_code[1] = kNop;  // the executor runs NOPs only
    main_code[3] = kNop;
    drstub::Machine m = distinct_machine(1);
    drstub::Run run = drstub::execute(dc, bb, m);
    EXPECT_TRUE(run.ok) << run.error;
    EXPECT_EQ(exit_text(), totals(1, 6));
}

}  // namespace
}  // namespace client_test
