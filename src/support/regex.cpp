#include "support/regex.hpp"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <memory>
#include <new>

namespace wavex {
namespace {

constexpr uint32_t kMatchLimit = 10'000'000;  // backtracking steps per subject
constexpr uint32_t kHeapLimitKiB = 64 * 1024;  // backtracking memory per subject

struct CodeFree {
    void operator()(pcre2_code* p) const { pcre2_code_free(p); }
};
struct MatchDataFree {
    void operator()(pcre2_match_data* p) const { pcre2_match_data_free(p); }
};
struct MatchContextFree {
    void operator()(pcre2_match_context* p) const { pcre2_match_context_free(p); }
};

std::string errorText(int code) {
    PCRE2_UCHAR buffer[256];
    int n = pcre2_get_error_message(code, buffer, sizeof buffer);
    return n < 0 ? "error " + std::to_string(code) : std::string(reinterpret_cast<const char*>(buffer), n);
}

bool isUtf8Error(int code) { return code <= PCRE2_ERROR_UTF8_ERR1 && code >= PCRE2_ERROR_UTF8_ERR21; }

PCRE2_SPTR units(std::string_view s) { return reinterpret_cast<PCRE2_SPTR>(s.data()); }

// A compiled pattern with its match data and limits; code null and *error set when it does not
// compile.
struct Compiled {
    std::unique_ptr<pcre2_code, CodeFree> code;
    std::unique_ptr<pcre2_match_data, MatchDataFree> data;
    std::unique_ptr<pcre2_match_context, MatchContextFree> context;

    Compiled(std::string_view pattern, uint32_t options, std::string* error) {
        int status = 0;
        PCRE2_SIZE offset = 0;
        code.reset(pcre2_compile(units(pattern), pattern.size(), options | PCRE2_UTF | PCRE2_MATCH_INVALID_UTF, &status,
                                 &offset, nullptr));
        if (!code && isUtf8Error(status))  // not UTF-8: every byte is a character
            code.reset(pcre2_compile(units(pattern), pattern.size(), options, &status, &offset, nullptr));
        if (!code) {
            *error = errorText(status) + " at offset " + std::to_string(offset);
            return;
        }
        data.reset(pcre2_match_data_create_from_pattern(code.get(), nullptr));
        context.reset(pcre2_match_context_create(nullptr));
        if (!data || !context) throw std::bad_alloc();
        pcre2_set_match_limit(context.get(), kMatchLimit);
        pcre2_set_heap_limit(context.get(), kHeapLimitKiB);
    }
    int match(std::string_view subject) const {
        return pcre2_match(code.get(), units(subject), subject.size(), 0, 0, data.get(), context.get());
    }
};

}  // namespace

bool sp_RegExpMatches(std::span<const std::string_view> subjects, std::string_view pattern,
                      std::vector<std::string_view>& matches, std::string* error) {
    matches.clear();
    auto fail = [&](std::string why) {
        matches.clear();
        if (error) *error = std::move(why);
        return false;
    };
    if (error) error->clear();

    std::string why;
    Compiled re(pattern, 0, &why);
    if (!re.code) return fail(why);

    uint32_t groups = 0;
    pcre2_pattern_info(re.code.get(), PCRE2_INFO_CAPTURECOUNT, &groups);
    bool complete = true;
    for (size_t k = 0; k < subjects.size(); ++k) {
        std::string_view subject = subjects[k];
        int rc = re.match(subject);
        if (rc == PCRE2_ERROR_NOMATCH) {
            complete = false;
            continue;
        }
        if (rc < 0) return fail(errorText(rc) + " in subject " + std::to_string(k + 1));
        const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(re.data.get());
        for (uint32_t g = 0; g <= groups; ++g) {
            // Groups past the count returned, and groups that took no part, are unset.
            PCRE2_SIZE b = g < static_cast<uint32_t>(rc) ? ovector[2 * g] : PCRE2_UNSET;
            PCRE2_SIZE e = g < static_cast<uint32_t>(rc) ? ovector[2 * g + 1] : PCRE2_UNSET;
            matches.push_back(b == PCRE2_UNSET || e < b ? std::string_view() : subject.substr(b, e - b));
        }
    }
    return complete;
}

struct RegexSearch::Impl : Compiled {
    using Compiled::Compiled;
};

RegexSearch::RegexSearch(std::string_view pattern, bool ignoreCase)
    : impl_(std::make_unique<Impl>(pattern, ignoreCase ? PCRE2_CASELESS : 0, &error_)) {}
RegexSearch::~RegexSearch() = default;

bool RegexSearch::search(std::string_view subject, std::string* error) const {
    int rc = impl_->match(subject);
    if (rc >= 0) return true;
    if (rc != PCRE2_ERROR_NOMATCH) *error = errorText(rc);
    return false;
}

}  // namespace wavex
