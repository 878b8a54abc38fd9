#include "wavex/options.hpp"

#include "support/numbers.hpp"
#include "support/text.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <mutex>

namespace wavex {
namespace {

struct ByName {
    bool operator()(const std::string& a, const std::string& b) const { return stricmp(a, b) < 0; }
};

// The options are shared by every interpreter and thread: the store and every value are read and
// written under this lock.
std::mutex& optionLock() {
    static std::mutex lock;
    return lock;
}

std::map<std::string, MakeOption*, ByName>& store() {
    static std::map<std::string, MakeOption*, ByName> options;
    return options;
}

std::optional<int32_t> asInteger(std::string_view text) {
    auto v = parseEngineeringNumber(trim(text));
    if (!v || !std::isfinite(*v) || *v != std::trunc(*v) || *v < std::numeric_limits<int32_t>::min() ||
        *v > std::numeric_limits<int32_t>::max())
        return std::nullopt;
    return static_cast<int32_t>(*v);
}

}  // namespace

MakeOption::MakeOption(const char* file, int line, const std::string& name, const char* defaultText,
                       OptionCacheStatus, bool)
    : name_(name), kind_(OptionKind::Text), default_(defaultText), value_(default_), file_(file), line_(line) {
    enroll();
}

MakeOption::MakeOption(const char* file, int line, const std::string& name, int32_t defaultValue,
                       OptionCacheStatus, bool)
    : name_(name), kind_(OptionKind::Integer), default_(std::to_string(defaultValue)), value_(default_),
      file_(file), line_(line) {
    enroll();
}

MakeOption::MakeOption(const char* file, int line, const std::string& name, const std::string& defaultValue,
                       OptionCacheStatus, bool, bool, bool)
    : name_(name), kind_(OptionKind::Text), default_(defaultValue), value_(default_), file_(file), line_(line) {
    enroll();
}

MakeOption::MakeOption(const char* file, int line, const std::string& name, double defaultValue)
    : name_(name), kind_(OptionKind::Real), default_(formatRoundTrip(defaultValue)), value_(default_),
      file_(file), line_(line) {
    enroll();
}

void MakeOption::enroll() {
    std::lock_guard guard(optionLock());
    store()[name_] = this;
}

MakeOption::~MakeOption() {
    std::lock_guard guard(optionLock());
    auto it = store().find(name_);
    if (it != store().end() && it->second == this) store().erase(it);
}

bool MakeOption::set(std::string_view text) {
    std::string value;
    switch (kind_) {
        case OptionKind::Text: value = text; break;
        case OptionKind::Integer: {
            auto v = asInteger(text);
            if (!v) return false;
            value = std::to_string(*v);
            break;
        }
        case OptionKind::Real: {
            auto v = parseEngineeringNumber(trim(text));
            if (!v) return false;
            value = formatRoundTrip(*v);
            break;
        }
    }
    std::lock_guard guard(optionLock());
    value_ = std::move(value);
    return true;
}

void MakeOption::reset() {
    std::lock_guard guard(optionLock());
    value_ = default_;
}

std::string MakeOption::value() const {
    std::lock_guard guard(optionLock());
    return value_;
}

MakeOption* findOption(std::string_view name) {
    std::lock_guard guard(optionLock());
    auto it = store().find(std::string(name));
    return it == store().end() ? nullptr : it->second;
}

std::vector<const MakeOption*> allOptions() {
    std::vector<const MakeOption*> r;
    std::lock_guard guard(optionLock());
    for (auto& [name, opt] : store()) r.push_back(opt);
    return r;
}

std::string setOption(std::string_view name, std::string_view value) {
    MakeOption* opt = findOption(name);
    if (!opt) return "unknown option '" + std::string(name) + "'";
    if (!opt->set(value)) {
        const char* want = opt->kind() == OptionKind::Integer ? "an integer" : "a number";
        return "option '" + opt->name() + "' needs " + want + ", not '" + std::string(value) + "'";
    }
    return "";
}

double sp_GetDoubleOption(std::string_view name, double fallback) {
    const MakeOption* opt = findOption(name);
    if (!opt) return fallback;
    auto v = parseEngineeringNumber(trim(opt->value()));
    return v ? *v : fallback;
}

int32_t sp_GetIntOption(std::string_view name, int32_t fallback) {
    const MakeOption* opt = findOption(name);
    if (!opt) return fallback;
    auto v = asInteger(opt->value());
    return v ? *v : fallback;
}

std::string sp_GetStringOption(std::string_view name, std::string_view fallback) {
    const MakeOption* opt = findOption(name);
    return opt ? opt->value() : std::string(fallback);
}

}  // namespace wavex
