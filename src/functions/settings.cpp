// Settings that outlive a run: ini files, the per-user settings file, and the host options.
//
// Ini files (support/ini.hpp) are read whole and written back whole through a temporary file, so
// a rewrite keeps every comment and line it does not change and never leaves half a file. A file
// that does not parse (a section named twice, a line without '=') is reported with its line and
// left alone.
//
// The per-user settings live in $XDG_CONFIG_HOME/wavex/settings.ini ($HOME/.config when the
// variable is not set). A setting's key is "group/name" (or "group\name"): the group is the ini
// section, the name its key; a key without a group is kept before the first section.
//
// The host options are those `--option NAME=VALUE` sets: GetOption reads the same store.
#include "functions/host_args.hpp"
#include "support/atomic_file.hpp"
#include "support/ini.hpp"
#include "support/text.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <sys/stat.h>

namespace wavex {
namespace {

using host::fail;
using host::pathArg;
using host::putReal;
using host::putText;
using host::putTexts;

// The ini file at `path`: an empty one when it does not exist yet; nullopt (reported) when it
// cannot be read or does not parse.
std::optional<IniFile> loadIni(const std::string& path, MessageHandler& messages) {
    std::string text, error;
    struct stat st;
    if (stat(path.c_str(), &st) == 0 || errno != ENOENT) {
        if (std::string why = readWholeFile(path, text); !why.empty()) {
            messages.error("%s", why);
            return std::nullopt;
        }
    }
    std::optional<IniFile> ini = IniFile::parse(text, &error);
    if (!ini) messages.error("'%s' %s", path, error);
    return ini;
}

// Sets (or, with no value, removes) one entry of the ini file at `path` and writes it back.
FUNC_ERROR changeIni(const std::string& path, std::string_view section, std::string_view key,
                     const std::optional<std::string>& value, FuncResult* result, MessageHandler& messages) {
    if (std::string why = IniFile::checkEntry(section, key, value.value_or("")); !why.empty())
        return fail(messages, "Cannot write to '" + path + "': " + why);
    std::optional<IniFile> ini = loadIni(path, messages);
    if (!ini) return FUNC_FAILED;
    bool changed = true;
    if (value) ini->set(section, key, *value);
    else changed = ini->remove(section, key);
    if (changed)
        if (std::string why = writeFileAtomically(path, ini->text()); !why.empty()) return fail(messages, why);
    return putReal(result, changed ? 1 : 0);
}

// ---- Ini files ---------------------------------------------------------------------------------

// IniRead(file, section, key [, default]): the value, or default ("" when not given) when the
// file, the section or the key is missing.
FUNC_ERROR iniRead(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    std::optional<IniFile> ini = loadIni(*path, *messages);
    if (!ini) return FUNC_FAILED;
    return putText(result, ini->value(args.string(1), args.string(2)).value_or(host::textArg(args, 3)));
}

// IniWrite(file, section, key [, value]): sets the value, making the file and section when
// needed; without a value removes the key. 1 when the file changed, else 0.
FUNC_ERROR iniWrite(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    std::optional<std::string> value;
    if (args.count() > 3) value = std::string(args.string(3));
    return changeIni(*path, args.string(1), args.string(2), value, result, *messages);
}

// IniSections(file) and IniKeys(file, section): names in file order; none for a missing file or
// section.
FUNC_ERROR iniSections(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    std::optional<IniFile> ini = loadIni(*path, *messages);
    if (!ini) return FUNC_FAILED;
    std::vector<std::string> names = ini->sections();
    return putTexts(result, names);
}

FUNC_ERROR iniKeys(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    std::optional<IniFile> ini = loadIni(*path, *messages);
    if (!ini) return FUNC_FAILED;
    std::vector<std::string> names = ini->keys(args.string(1)).value_or(std::vector<std::string>{});
    return putTexts(result, names);
}

// ---- Per-user settings -------------------------------------------------------------------------

// The settings file's path, or "" (reported) when neither XDG_CONFIG_HOME nor HOME is set.
std::string settingsPath(MessageHandler& messages) {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    if (config && *config == '/') return std::string(config) + "/wavex/settings.ini";
    if (home && *home) return std::string(home) + "/.config/wavex/settings.ini";
    messages.error("%s", "No place for settings: neither XDG_CONFIG_HOME nor HOME is set");
    return {};
}

struct SettingKey {
    std::string_view group, name;
};

std::optional<SettingKey> settingKey(std::string_view key, const FuncInfo* info, MessageHandler& messages) {
    size_t split = key.find_last_of("/\\");
    SettingKey k{split == std::string_view::npos ? std::string_view() : key.substr(0, split),
                 split == std::string_view::npos ? key : key.substr(split + 1)};
    if (k.name.empty()) {
        messages.error("Function '%s' needs a setting name, not '%s'", info->name, key);
        return std::nullopt;
    }
    return k;
}

// GetSetting(key [, default]): the setting, or default ("" when not given) when it is not set.
FUNC_ERROR getSetting(WAVEX_HANDLER_PARAMS) {
    auto key = settingKey(args.string(0), info, *messages);
    std::string path = settingsPath(*messages);
    if (!key || path.empty()) return FUNC_FAILED;
    std::optional<IniFile> ini = loadIni(path, *messages);
    if (!ini) return FUNC_FAILED;
    return putText(result, ini->value(key->group, key->name).value_or(host::textArg(args, 1)));
}

// SetSetting(key, value) and DeleteSetting(key): 1 when the settings file changed, else 0.
FUNC_ERROR changeSetting(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                         const std::optional<std::string>& value) {
    auto key = settingKey(args.string(0), info, messages);
    std::string path = settingsPath(messages);
    if (!key || path.empty()) return FUNC_FAILED;
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    if (ec) return fail(messages, systemFailure("make directory", path.substr(0, path.rfind('/')), ec.value()));
    return changeIni(path, key->group, key->name, value, result, messages);
}

FUNC_ERROR setSetting(WAVEX_HANDLER_PARAMS) {
    return changeSetting(args, result, info, *messages, std::string(args.string(1)));
}

FUNC_ERROR deleteSetting(WAVEX_HANDLER_PARAMS) { return changeSetting(args, result, info, *messages, std::nullopt); }

// ---- Host options ------------------------------------------------------------------------------

// GetOption(name): the option's value as text.
FUNC_ERROR getOption(WAVEX_HANDLER_PARAMS) {
    const MakeOption* option = findOption(args.string(0));
    if (!option) return fail(*messages, "Unknown option '" + std::string(args.string(0)) + "'");
    return putText(result, option->value());
}

// SetOption(name, value): sets it as --option does; gives the value it had.
FUNC_ERROR setOptionFn(WAVEX_HANDLER_PARAMS) {
    const MakeOption* option = findOption(args.string(0));
    std::string before = option ? option->value() : "";
    if (std::string why = setOption(args.string(0), args.string(1)); !why.empty()) {
        why[0] = asciiUpper(why[0]);
        return fail(*messages, why);
    }
    return putText(result, before);
}

// ListOptions(): "NAME=VALUE" for every option, sorted by name.
FUNC_ERROR listOptions(WAVEX_HANDLER_PARAMS) {
    std::vector<const MakeOption*> all = allOptions();
    std::sort(all.begin(), all.end(), [](auto* a, auto* b) { return stricmp(a->name(), b->name()) < 0; });
    std::vector<std::string> lines;
    for (const MakeOption* o : all) lines.push_back(o->name() + "=" + o->value());
    return putTexts(result, lines);
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    FuncInfo("DeleteSetting", {arg::String}, 1, deleteSetting,
             {.signature = "DeleteSetting(key)",
              .summary = "Removes a per-user setting.",
              .returns = "1 when it was set, else 0",
              .notes = "See GetSetting for where settings live.",
              .example = "SetEnv('XDG_CONFIG_HOME', CurrentDirectory()); SetSetting('Plot/colour', 'blue'); "
                         "DeleteSetting('Plot/colour'); GetSetting('Plot/colour', 'gone')"}).outsideSafeMode(),
    {"GetOption", {arg::String}, 1, getOption,
     {.signature = "GetOption(name)",
      .summary = "A host option's value, as --option sets it.",
      .returns = "its text, a string",
      .notes = "Names ignore case; an unknown name fails (\"Unknown option 'x'\").",
      .example = "GetOption('InterpPts')"}},
    {"GetSetting", {arg::String, arg::String}, 1, getSetting,
     {.signature = "GetSetting(key [, default])",
      .summary = "A per-user setting.",
      .returns = "the text stored, or default (\"\" when not given)",
      .notes = "Settings live in $XDG_CONFIG_HOME/wavex/settings.ini ($HOME/.config/wavex when the "
               "variable is not set); a key \"group/name\" (or \"group\\name\") is entry name of section "
               "[group].",
      .example = "SetEnv('XDG_CONFIG_HOME', CurrentDirectory()); SetSetting('Plot/colour', 'blue'); "
                 "[GetSetting('Plot/colour'), GetSetting('Plot/grid', 'none')]"}},
    {"IniKeys", {arg::String, arg::String}, 2, iniKeys,
     {.signature = "IniKeys(file, section)",
      .summary = "The keys of an ini file's section.",
      .returns = "strings in file order; none for a missing file or section",
      .notes = "Section names ignore case; \"\" is the part before the first section.",
      .example = "IniWrite('run.ini', 'Sim', 'steps', 10); IniWrite('run.ini', 'Sim', 'stop', 1m); "
                 "IniKeys('run.ini', 'sim')"}},
    {"IniRead", {arg::String, arg::String, arg::String, arg::String}, 3, iniRead,
     {.signature = "IniRead(file, section, key [, default])",
      .summary = "A value of an ini file.",
      .returns = "a string: the value with the blanks around it trimmed, or default (\"\") when the file, "
                 "section or key is missing",
      .notes = "Lines are \"[section]\", \"key = value\" and comments starting with ';' or '#'; names ignore "
               "case. A file with a section or key named twice, or a line without '=', fails with its "
               "line number.",
      .example = "IniWrite('run.ini', 'Sim', 'steps', 100); [IniRead('run.ini', 'Sim', 'steps'), "
                 "IniRead('run.ini', 'Sim', 'stop', 'none')]"}},
    {"IniSections", {arg::String}, 1, iniSections,
     {.signature = "IniSections(file)",
      .summary = "The sections of an ini file.",
      .returns = "strings in file order (\"\" first when entries come before the first section)",
      .example = "IniWrite('run.ini', 'Plot', 'colour', 'red'); IniWrite('run.ini', 'Sim', 'steps', 10); "
                 "IniSections('run.ini')"}},
    FuncInfo("IniWrite", {arg::String, arg::String, arg::String, arg::String}, 3, iniWrite,
             {.signature = "IniWrite(file, section, key [, value])",
              .summary = "Sets or, without a value, removes an entry of an ini file.",
              .returns = "1 when the file changed, else 0",
              .notes = "The file and section are made when missing. Comments, blank lines, spacing and line ends "
                       "of the rest stay as they were; the file is rewritten through a temporary file. Names "
                       "holding '=', ']' or line ends are refused.",
              .example = "IniWrite('run.ini', 'Sim', 'steps', 100); IniWrite('run.ini', 'Sim', 'steps', 200); "
                         "ReadFile('run.ini')"}).outsideSafeMode(),
    {"ListOptions", {}, 0, listOptions,
     {.signature = "ListOptions()",
      .summary = "Every host option with its value.",
      .returns = "strings \"NAME=VALUE\", sorted by name",
      .example = "length(ListOptions()) > 0; ListOptions()[0]"}},
    FuncInfo("SetOption", {arg::String, arg::String}, 2, setOptionFn,
             {.signature = "SetOption(name, value)",
              .summary = "Sets a host option, as --option does.",
              .returns = "the value it had, a string",
              .notes = "A value that does not suit the option fails (\"Option 'InterpPts' needs an integer, not "
                       "'1.5'\").",
              .example = "SetOption('InterpPts', 4096); SetOption('InterpPts', 1024)"}).outsideSafeMode(),
    FuncInfo("SetSetting", {arg::String, arg::String}, 2, setSetting,
             {.signature = "SetSetting(key, value)",
              .summary = "Stores a per-user setting.",
              .returns = "1 when the settings file changed, else 0",
              .notes = "See GetSetting.",
              .example = "SetEnv('XDG_CONFIG_HOME', CurrentDirectory()); SetSetting('Plot/colour', 'blue'); "
                         "ReadFile('wavex/settings.ini')"}).outsideSafeMode(),
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex
