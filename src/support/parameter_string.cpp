#include "support/parameter_string.hpp"

#include "support/hash_table.hpp"
#include "support/numbers.hpp"
#include "support/split.hpp"
#include "support/text.hpp"

#include <algorithm>

namespace wavex {
namespace {

constexpr std::string_view kUnlabelled = "$unlabelled$";

std::string unlabelledName(int64_t k) { return std::string(kUnlabelled) + std::to_string(k); }

bool isUnlabelledName(std::string_view name) {
    return name.size() >= kUnlabelled.size() && iequals(name.substr(0, kUnlabelled.size()), kUnlabelled);
}

bool blank(std::string_view s) { return s.find_first_not_of(" \t") == std::string_view::npos; }

void appendText(std::string& out, std::string_view text) {
    if (!out.empty()) out += ' ';
    out += text;
}

void appendPair(std::string& out, std::string_view name, std::string_view value) {
    appendText(out, name);
    out += '=';
    out += value;
}

}  // namespace

ParameterString::ParameterString(std::string_view text, const ParameterSyntax& syntax, ParameterReading reading,
                                 int64_t unlabelled, Purpose purpose)
    : reading_(reading) {
    if (syntax.quoted)
        sp_ScanLine(text, syntax.delimiters, syntax.openQuotes, syntax.closeQuotes, tokens_, kMaxParameterTokens,
                    purpose == Rebuild ? unsigned(kSplitKeepQuotes) : 0u);
    else
        sp_ScanLine(text, syntax.delimiters, tokens_, kMaxParameterTokens);
    size_t n = tokens_.size();
    unlabelled_ = static_cast<size_t>(std::clamp<int64_t>(unlabelled, 0, static_cast<int64_t>(n)));
    items_.reserve(unlabelled_ + (n - unlabelled_ + 1) / 2);
    for (size_t k = 0; k < unlabelled_; ++k) items_.push_back({{}, tokens_[k], k + 1, false});
    size_t i = unlabelled_;
    for (; i + 1 < n; i += 2) items_.push_back({tokens_[i], tokens_[i + 1], 0, false});
    if (i < n && reading_ == ParameterReading::Entries) items_.push_back({tokens_[i], {}, 0, true});
}

std::string ParameterString::key(std::string_view name) const {
    if (reading_ == ParameterReading::Entries && isUnlabelledName(name))
        return unlabelledName(atoiValue(name.substr(kUnlabelled.size())));
    return std::string(name);
}

std::string ParameterString::key(const Item& item) const {
    return item.unlabelled ? unlabelledName(static_cast<int64_t>(item.unlabelled)) : key(item.name);
}

std::string_view ParameterString::read(std::string_view name) const {
    if (reading_ == ParameterReading::Entries) {
        std::string wanted = key(name);
        for (size_t i = items_.size(); i-- > 0;)
            if (iequals(key(items_[i]), wanted)) return items_[i].value;
        return {};
    }
    for (size_t i = tokens_.size(); i-- > 0;) {
        if (!iequals(tokens_[i], name)) continue;
        if (i + 1 < tokens_.size()) return tokens_[i + 1];
        break;
    }
    if (isUnlabelledName(name)) {
        int64_t k = atoiValue(name.substr(kUnlabelled.size()));
        if (k >= 1 && k <= static_cast<int64_t>(unlabelled_)) return tokens_[static_cast<size_t>(k - 1)];
    }
    return {};
}

std::string ParameterString::remove(std::span<const std::string_view> names) const {
    ChainedHashTable<bool> doomed(101, 2);
    for (std::string_view name : names) doomed.insert(key(name), true);
    std::string out;
    for (const Item& item : items_) {
        if (doomed.find(key(item))) continue;
        if (item.unlabelled) appendText(out, item.value);
        else if (item.valueless) appendText(out, item.name);
        else appendPair(out, item.name, item.value);
    }
    return out;
}

std::string ParameterString::write(std::span<const std::string_view> names,
                                   std::span<const std::string_view> values) const {
    struct Setting {
        std::string_view name, value;
    };
    ChainedHashTable<Setting> settings(101, 2);
    for (size_t i = 0; i < std::min(names.size(), values.size()); ++i)
        if (!blank(names[i]) && !blank(values[i])) settings.insert(key(names[i]), {names[i], values[i]});
    ChainedHashTable<Setting> applied(101, 2);  // Entries: written settings, for later entries of the name

    std::string out;
    const Item* valueless = nullptr;
    for (const Item& item : items_) {
        std::string k = key(item);
        const Setting* s = settings.find(k);
        Setting chosen;
        if (s) {
            chosen = *s;
            settings.removeAll(k);
            if (reading_ == ParameterReading::Entries) applied.insert(k, chosen);
            s = &chosen;
        } else if (reading_ == ParameterReading::Entries) {
            s = applied.find(k);
        }
        if (s && item.unlabelled) appendText(out, s->value);
        else if (s) appendPair(out, s->name, s->value);
        else if (item.unlabelled) appendText(out, item.value);
        else if (item.valueless) valueless = &item;
        else appendPair(out, item.name, item.value);
    }
    settings.forEach([&](const auto& e) { appendPair(out, e.value.name, e.value.value); });
    if (valueless) appendText(out, valueless->name);
    return out;
}

std::string buildParameterString(std::span<const std::string_view> names, std::span<const std::string_view> values,
                                 std::string_view quoteIf) {
    std::string out;
    for (size_t i = 0; i < std::min(names.size(), values.size()); ++i) {
        std::string_view value = values[i];
        if (value.empty()) continue;
        appendPair(out, names[i], "");
        bool quote = value.find_first_of(quoteIf) != std::string_view::npos;
        if (quote) out += '"';
        out += value;
        if (quote) out += '"';
    }
    return out;
}

}  // namespace wavex
