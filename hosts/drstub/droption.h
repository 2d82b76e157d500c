// Test stand-in for the host's option-parser header, reduced to what a client
// with no options of its own meets: the scan of the argument list.
//
// Options cannot be declared with the stand-in, so the list of known options is
// always empty, and a scan either ends at "--" (success, the rest is ignored)
// or stops at the first other argument with "Unknown option: <argument>".
#pragma once

#include <cstring>
#include <string>

enum droption_scope_t {
    DROPTION_SCOPE_CLIENT = 0x0001,
    DROPTION_SCOPE_FRONTEND = 0x0002,
    DROPTION_SCOPE_ALL = DROPTION_SCOPE_CLIENT | DROPTION_SCOPE_FRONTEND,
};

class droption_parser_t {
public:
    // Scans argv[1] onwards. Returns false with *error_msg set at the first
    // argument that no declared option accepts. *last_index gets the index of
    // the first argument not consumed.
    static bool parse_argv(droption_scope_t scope, int argc, const char* argv[], std::string* error_msg,
                           int* last_index) {
        (void)scope;
        int i = 1;
        for (; i < argc; ++i) {
            if (std::strcmp(argv[i], "--") == 0) {
                ++i;
                break;
            }
            if (error_msg != nullptr) *error_msg = std::string("Unknown option: ") + argv[i];
            if (last_index != nullptr) *last_index = i;
            return false;
        }
        if (last_index != nullptr) *last_index = i;
        return true;
    }
};
