#include "support/ini.hpp"

#include "support/text.hpp"

#include <unordered_map>

namespace wavex {
namespace {

std::string at(size_t index) { return "line " + std::to_string(index + 1) + ": "; }

bool isComment(std::string_view trimmed) { return !trimmed.empty() && (trimmed[0] == ';' || trimmed[0] == '#'); }

}  // namespace

std::optional<IniFile> IniFile::parse(std::string_view text, std::string* error) {
    IniFile ini;
    if (text.find("\r\n") != std::string_view::npos) ini.newline_ = "\r\n";
    ini.finalNewline_ = text.empty() || text.back() == '\n';
    std::unordered_map<std::string, size_t, CaseInsensitiveHash, CaseInsensitiveEqual> sectionLines, keyLines;
    std::string section;
    while (!text.empty()) {
        size_t end = text.find('\n');
        std::string_view raw = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!raw.empty() && raw.back() == '\r') raw.remove_suffix(1);

        Line line{std::string(raw)};
        size_t index = ini.lines_.size();
        std::string_view trimmed = trim(raw);
        if (trimmed.empty() || isComment(trimmed)) {
        } else if (trimmed.front() == '[') {
            if (trimmed.back() != ']') {
                *error = at(index) + "a section header needs its closing ']'";
                return std::nullopt;
            }
            section = trim(trimmed.substr(1, trimmed.size() - 2));
            if (section.empty()) {
                *error = at(index) + "a section needs a name";
                return std::nullopt;
            }
            if (auto [it, fresh] = sectionLines.emplace(section, index); !fresh) {
                *error = at(index) + "section [" + section + "] appears twice (first on line " +
                         std::to_string(it->second + 1) + ")";
                return std::nullopt;
            }
            keyLines.clear();
            line.kind = Kind::Section;
            line.name = section;
        } else {
            size_t eq = raw.find('=');
            if (eq == std::string_view::npos) {
                *error = at(index) + "'" + std::string(trimmed) + "' is not key = value, a [section] or a comment";
                return std::nullopt;
            }
            std::string key(trim(raw.substr(0, eq)));
            if (key.empty()) {
                *error = at(index) + "an entry needs a key before '='";
                return std::nullopt;
            }
            if (auto [it, fresh] = keyLines.emplace(key, index); !fresh) {
                *error = at(index) + "key '" + key + "' appears twice in section [" + section + "] (first on line " +
                         std::to_string(it->second + 1) + ")";
                return std::nullopt;
            }
            std::string_view value = trim(raw.substr(eq + 1));
            line.kind = Kind::Entry;
            line.name = std::move(key);
            line.valueBegin = value.empty() ? raw.size() : static_cast<size_t>(value.data() - raw.data());
            line.valueEnd = line.valueBegin + value.size();
        }
        ini.lines_.push_back(std::move(line));
    }
    return ini;
}

std::optional<long> IniFile::findSection(std::string_view section) const {
    if (section.empty()) return -1;
    for (size_t i = 0; i < lines_.size(); ++i)
        if (lines_[i].kind == Kind::Section && iequals(lines_[i].name, section)) return static_cast<long>(i);
    return std::nullopt;
}

size_t IniFile::sectionEnd(long header) const {
    size_t end = static_cast<size_t>(header + 1);
    for (size_t i = end; i < lines_.size() && lines_[i].kind != Kind::Section; ++i)
        if (lines_[i].kind == Kind::Entry) end = i + 1;
    return end;
}

long IniFile::findEntry(std::string_view section, std::string_view key) const {
    std::optional<long> header = findSection(section);
    if (!header) return -1;
    for (size_t i = static_cast<size_t>(*header + 1); i < lines_.size() && lines_[i].kind != Kind::Section; ++i)
        if (lines_[i].kind == Kind::Entry && iequals(lines_[i].name, key)) return static_cast<long>(i);
    return -1;
}

std::vector<std::string> IniFile::sections() const {
    std::vector<std::string> names;
    for (const Line& line : lines_) {
        if (line.kind == Kind::Section) names.push_back(line.name);
        else if (line.kind == Kind::Entry && names.empty()) names.emplace_back();
    }
    return names;
}

std::optional<std::vector<std::string>> IniFile::keys(std::string_view section) const {
    std::optional<long> header = findSection(section);
    if (!header) return std::nullopt;
    std::vector<std::string> names;
    for (size_t i = static_cast<size_t>(*header + 1); i < lines_.size() && lines_[i].kind != Kind::Section; ++i)
        if (lines_[i].kind == Kind::Entry) names.push_back(lines_[i].name);
    return names;
}

std::optional<std::string> IniFile::value(std::string_view section, std::string_view key) const {
    long i = findEntry(section, key);
    if (i < 0) return std::nullopt;
    const Line& line = lines_[static_cast<size_t>(i)];
    return line.text.substr(line.valueBegin, line.valueEnd - line.valueBegin);
}

std::string IniFile::checkEntry(std::string_view section, std::string_view key, std::string_view value) {
    auto hasLineEnd = [](std::string_view s) { return s.find_first_of("\r\n") != std::string_view::npos; };
    if (hasLineEnd(section) || hasLineEnd(key) || hasLineEnd(value)) return "an ini entry cannot span lines";
    if (section != trim(section) || section.find(']') != std::string_view::npos)
        return "section '" + std::string(section) + "' cannot be written as [" + std::string(section) + "]";
    std::string_view k = trim(key);
    if (k.empty() || k != key || key.find('=') != std::string_view::npos || key[0] == '[' || isComment(k))
        return "key '" + std::string(key) + "' cannot be written before '='";
    if (value != trim(value)) return "a value cannot begin or end with blanks";
    return {};
}

void IniFile::set(std::string_view section, std::string_view key, std::string_view value) {
    if (long i = findEntry(section, key); i >= 0) {
        Line& line = lines_[static_cast<size_t>(i)];
        size_t begin = line.valueBegin, end = line.valueEnd;
        if (begin == end && !value.empty() && line.text.ends_with('=')) {
            line.text += ' ';
            begin = end = line.text.size();
        }
        line.text.replace(begin, end - begin, value);
        line.valueBegin = begin;
        line.valueEnd = begin + value.size();
        return;
    }
    Line entry{std::string(key) + " = " + std::string(value), Kind::Entry, std::string(key)};
    entry.valueBegin = key.size() + 3;
    entry.valueEnd = entry.valueBegin + value.size();
    std::optional<long> header = findSection(section);
    if (!header) {
        if (!lines_.empty() && !trim(lines_.back().text).empty()) lines_.push_back(Line{});
        lines_.push_back(Line{"[" + std::string(section) + "]", Kind::Section, std::string(section)});
        lines_.push_back(std::move(entry));
        return;
    }
    size_t end = sectionEnd(*header);
    // The unnamed section with no entry yet: before the first header's leading comments.
    if (*header < 0 && end == 0)
        while (end < lines_.size() && lines_[end].kind == Kind::Other && !trim(lines_[end].text).empty()) ++end;
    lines_.insert(lines_.begin() + static_cast<long>(end), std::move(entry));
}

bool IniFile::remove(std::string_view section, std::string_view key) {
    long i = findEntry(section, key);
    if (i < 0) return false;
    lines_.erase(lines_.begin() + i);
    return true;
}

std::string IniFile::text() const {
    std::string out;
    for (size_t i = 0; i < lines_.size(); ++i) {
        out += lines_[i].text;
        if (i + 1 < lines_.size() || finalNewline_) out += newline_;
    }
    return out;
}

}  // namespace wavex
