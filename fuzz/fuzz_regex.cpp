// Fuzzes the regular-expression wrapper: the input up to the first newline is the pattern, each
// further line a subject. Checks that nothing escapes, that a failure says why and leaves no
// matches, and that every match lies inside a subject, each matching subject adding as many.
#include "fuzz_check.hpp"
#include "support/regex.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 4096) return 0;  // long subjects only make the backtracking limits slower to reach
    std::string_view in(reinterpret_cast<const char*>(data), size);
    size_t newline = in.find('\n');
    std::string_view pattern = in.substr(0, newline);
    std::vector<std::string_view> subjects;
    if (newline != std::string_view::npos) {
        std::string_view rest = in.substr(newline + 1);
        for (size_t at; (at = rest.find('\n')) != std::string_view::npos; rest.remove_prefix(at + 1))
            subjects.push_back(rest.substr(0, at));
        subjects.push_back(rest);
    }
    std::vector<std::string_view> matches;
    std::string error;
    bool complete = wavex::sp_RegExpMatches(subjects, pattern, matches, &error);
    if (!error.empty()) {
        check(!complete && matches.empty());
        return 0;
    }
    for (std::string_view m : matches) {
        if (m.data() == nullptr) continue;  // a group that took no part
        bool found = false;
        for (std::string_view s : subjects)
            found = found || (m.data() >= s.data() && m.data() + m.size() <= s.data() + s.size());
        check(found);
    }
    // Every subject matched and added the whole match and the same groups.
    check(!complete || matches.size() % (subjects.empty() ? 1 : subjects.size()) == 0);
    return 0;
}
