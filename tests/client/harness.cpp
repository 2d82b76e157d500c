#include "harness.h"

namespace client_test {

alignas(16) uint32_t main_code[256];
alignas(16) uint32_t lib_code[64];
alignas(16) uint32_t loose_code[64];

void client_main(std::vector<const char*> args) {
    args.insert(args.begin(), SVE_CLIENT_LIBRARY);
    dr_client_main(7, static_cast<int>(args.size()), args.data());
}

std::string stderr_of(const std::function<void()>& body) {
    fflush(stderr);
    FILE* file = tmpfile();
    int saved = dup(2);
    dup2(fileno(file), 2);
    body();
    fflush(stderr);
    dup2(saved, 2);
    close(saved);
    std::string text;
    rewind(file);
    for (int ch; (ch = fgetc(file)) != EOF;) text += static_cast<char>(ch);
    fclose(file);
    return text;
}

std::string exit_text() { return stderr_of(drstub::process_exit); }
std::string dump_text() { return stderr_of(dump_sve_stats); }

ChildEnd run_in_child(const std::function<void()>& body) {
    int fds[2];
    if (pipe(fds) != 0) return {false, -1, "pipe failed"};
    fflush(stdout);
    fflush(stderr);
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        dup2(fds[1], 2);
        body();
        fflush(stderr);
        _exit(0);
    }
    close(fds[1]);
    std::string err;
    char buf[4096];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;) err.append(buf, static_cast<size_t>(n));
    close(fds[0]);
    int st = 0;
    waitpid(pid, &st, 0);
    return {WIFEXITED(st), WIFEXITED(st) ? WEXITSTATUS(st) : WTERMSIG(st), err};
}

std::string assert_line(int line, const char* condition) {
    return std::string("ASSERT FAILURE: ") + SVE_CLIENT_SOURCE + ":" + std::to_string(line) + ": " + condition +
           " ()\n";
}

std::string totals(unsigned long sve, unsigned long non_sve) {
    const std::string name = "vector_app";
    return name + ": " + std::to_string(sve) + " SVE instructions executed\n" + name + ": " +
           std::to_string(non_sve) + " Non-SVE AArch64 instructions executed\n";
}

Handler current_handler;

aarch64_decode_rc test_handler(cpu_state* s, unsigned word) { return current_handler(s, word); }

drstub::CallHook replace_handler() {
    return [](std::vector<uint64_t>& args) {
        if (args.size() == 3) args[2] = reinterpret_cast<uint64_t>(&test_handler);
    };
}

drstub::Machine distinct_machine(uint64_t seed) {
    drstub::Machine m{};
    for (int i = 0; i < 31; ++i) m.x[i] = (seed << 40) ^ (0x0101010101010101ull * static_cast<uint64_t>(i + 1)) ^ 0x8000;
    m.sp = 0x00007ffff0000000ull + (seed << 12);
    m.nzcv = 0x60000000;     // Z and C
    m.fpsr = 0x08000011;     // QC, IXC, IOC
    m.fpcr = 0x01c00000;     // FZ, round towards zero
    for (int n = 0; n < 32; ++n)
        for (int b = 0; b < 16; ++b) m.q[n][b] = static_cast<uint8_t>(seed * 37 + n * 16 + b);
    return m;
}

void ClientTest::SetUp() {
    drstub::reset();
    sve_stats_reset();
    drstub::set_main_module(main_code, main_code + 256, kExePath);
    client_main();
    dc = drstub::thread_init();
    std::fill(std::begin(main_code), std::end(main_code), kNop);
    for (uint32_t* code : {lib_code, loose_code}) std::fill(code, code + 64, kNop);
}

void ClientTest::TearDown() {
    for (instrlist_t* bb : blocks) drstub::destroy_block(dc, bb);
    blocks.clear();
    drstub::set_current(nullptr);
    current_handler = nullptr;
}

instrlist_t* ClientTest::build(const uint32_t* words, size_t n, bool for_trace, bool translating) {
    instrlist_t* bb = drstub::make_block(dc, words, n);
    blocks.push_back(bb);
    EXPECT_EQ(drstub::run_app2app(dc, bb, for_trace, translating), DR_EMIT_DEFAULT);
    return bb;
}

std::vector<drstub::Item> ClientTest::items(instrlist_t* bb) {
    std::vector<drstub::Item> out;
    for (instr_t* i = instrlist_first(bb); i != nullptr; i = instr_get_next(i)) {
        drstub::Item it = drstub::describe(i);
        if (it.by_host && !out.empty() && out.back().by_host && out.back().group == it.group) continue;
        out.push_back(it);
    }
    return out;
}

}  // namespace client_test
