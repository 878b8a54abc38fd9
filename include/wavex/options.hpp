// Host options: named settings with defaults, read by functions at call time and set by the user
// (`wavex --option NAME=VALUE`, Interpreter::setOption).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

enum OptionCacheStatus : int { OPTION_CACHE_NONE = 0 };

enum class OptionKind { Text, Integer, Real };

// Declares an option with its default at load time. The three forms differ by the type of the
// default: text, 32-bit integer, or string (which takes two further flags). The object holds the
// option's current value, shared by every interpreter and thread (read and set under one lock).
class MakeOption {
public:
    MakeOption(const char* file, int line, const std::string& name, const char* defaultText,
               OptionCacheStatus status, bool flag);
    MakeOption(const char* file, int line, const std::string& name, int32_t defaultValue,
               OptionCacheStatus status, bool flag);
    MakeOption(const char* file, int line, const std::string& name, const std::string& defaultValue,
               OptionCacheStatus status, bool flag, bool flag2, bool flag3);
    // A real-valued option of the host's own (not one of the library's three forms).
    MakeOption(const char* file, int line, const std::string& name, double defaultValue);
    ~MakeOption();
    MakeOption(const MakeOption&) = delete;
    MakeOption& operator=(const MakeOption&) = delete;

    const std::string& name() const { return name_; }
    OptionKind kind() const { return kind_; }
    std::string value() const;
    const std::string& defaultValue() const { return default_; }
    const char* file() const { return file_; }
    int line() const { return line_; }

    // Sets the value from text; false (value unchanged) when it does not suit the option's kind.
    bool set(std::string_view text);
    void reset();

private:
    void enroll();

    std::string name_;
    OptionKind kind_;
    std::string default_;
    std::string value_;
    const char* file_;
    int line_;
};

// Looks an option up by name, ignoring case; null when no such option is declared.
MakeOption* findOption(std::string_view name);
std::vector<const MakeOption*> allOptions();

// Sets an option; returns "" or a message saying why it could not be set.
std::string setOption(std::string_view name, std::string_view value);

// Readers used by functions. An option that is undeclared or unreadable gives `fallback`.
double sp_GetDoubleOption(std::string_view name, double fallback = 0);
int32_t sp_GetIntOption(std::string_view name, int32_t fallback = 0);
std::string sp_GetStringOption(std::string_view name, std::string_view fallback = "");

}  // namespace wavex
