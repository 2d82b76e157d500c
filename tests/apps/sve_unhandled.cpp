// Reads a program's disassembly (objdump -d) on standard input and tells which
// of its SVE instruction words this build cannot emulate yet: words in the SVE
// encoding group for which is_sve finds no handler. For each it names the
// decode-table rows that know the word but have no handler yet, or says that
// no row knows it.
//
// Output, one line per distinct mnemonic and row, most frequent first:
//   unhandled <mnemonic> <words> <row names or "no-row"> e.g. <word> <text>
// and a closing line
//   sve-words <n> unhandled <m>
// Exit status 0 either way; 2 on unreadable input.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "sve/core/decode.h"

namespace {

struct group {
    int words = 0;
    uint32_t example = 0;
    std::string text;
};

std::string rows_knowing(uint32_t word) {
    std::string names;
    for (size_t i = 0; i < sve_row_count; ++i) {
        const sve_row& r = sve_rows[i];
        if ((word & r.mask) != r.bits) continue;
        if (!names.empty()) names += ",";
        names += r.name;
    }
    return names.empty() ? "no-row" : names;
}

}  // namespace

int main() {
    // "  6a8:\t04a20000 \tadd\tz0.s, z0.s, z2.s"
    const std::regex line_re(R"(^\s*[0-9a-f]+:\s+([0-9a-f]{8})\s+(\S+)\s*(.*)$)");
    std::map<std::pair<std::string, std::string>, group> missing;
    int sve_words = 0, unhandled = 0;
    std::string line;
    std::smatch m;
    while (std::getline(std::cin, line)) {
        if (!std::regex_match(line, m, line_re)) continue;
        uint32_t word = static_cast<uint32_t>(std::stoul(m[1].str(), nullptr, 16));
        // The SVE encoding group: bits 28..25 = 0010.
        if ((word >> 25 & 0xf) != 0x2) continue;
        ++sve_words;
        if (is_sve(word) != nullptr) continue;
        ++unhandled;
        std::string mnemonic = m[2].str();
        group& g = missing[{mnemonic, rows_knowing(word)}];
        if (g.words++ == 0) {
            g.example = word;
            g.text = mnemonic + " " + m[3].str();
        }
    }
    std::vector<std::pair<std::pair<std::string, std::string>, group>> sorted(missing.begin(), missing.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.second.words > b.second.words; });
    for (const auto& [key, g] : sorted)
        printf("unhandled %s %d %s e.g. %08x %s\n", key.first.c_str(), g.words, key.second.c_str(), g.example,
               g.text.c_str());
    printf("sve-words %d unhandled %d\n", sve_words, unhandled);
    return 0;
}
