// Ini files held as their lines, so that a rewrite keeps comments, blank lines, spacing and line
// ends as the user wrote them and changes only the lines it must.
//
// The format: "[section]" headers; "key = value" lines, the value taken to the end of the line
// with the blanks around it trimmed; lines whose first non-blank character is ';' or '#' are
// comments. Keys before the first header belong to the unnamed section "". Section and key names
// ignore ASCII case. A section named twice, a key given twice in one section, and a line that is
// none of these are errors, reported with their line numbers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

class IniFile {
public:
    // Parses `text`; nullopt with *error set ("line 4: ...") when it is not a valid ini file.
    static std::optional<IniFile> parse(std::string_view text, std::string* error);

    // Section names in file order ("" first when keys come before the first header).
    std::vector<std::string> sections() const;
    // Keys of a section in file order; nullopt when there is no such section.
    std::optional<std::vector<std::string>> keys(std::string_view section) const;
    std::optional<std::string> value(std::string_view section, std::string_view key) const;

    // Why a name or value cannot be written (it would not read back as the same entry), or "".
    static std::string checkEntry(std::string_view section, std::string_view key, std::string_view value);
    // Sets a value (checked with checkEntry first): an existing line is rewritten in place with its
    // spacing; a new key goes after the last entry of its section; a new section goes at the end.
    void set(std::string_view section, std::string_view key, std::string_view value);
    // Removes a key's line; false when there was none.
    bool remove(std::string_view section, std::string_view key);

    std::string text() const;

private:
    enum class Kind { Other, Section, Entry };
    struct Line {
        std::string text;
        Kind kind = Kind::Other;
        std::string name;     // section name or key
        size_t valueBegin = 0, valueEnd = 0;  // the value within `text`
    };
    // Index of the header line of `section` (-1 for the unnamed one), or nullopt.
    std::optional<long> findSection(std::string_view section) const;
    // Index of the entry line of `key`, or -1.
    long findEntry(std::string_view section, std::string_view key) const;
    // One past the last entry line of the section whose header is at `header`.
    size_t sectionEnd(long header) const;

    std::vector<Line> lines_;
    std::string newline_ = "\n";
    bool finalNewline_ = true;
};

}  // namespace wavex
