// The host the script runs on: environment, identity, resources, time, commands, the dialogs of a
// program without a window system, and a few diagnostics.
//
// Dialogs: at a terminal (standard input and standard error both terminals, and the option
// DialogsAtTerminal not 0) MessageBox prints its text to standard error and InputBox prompts there
// and reads a line from standard input; otherwise both return at once with their default
// (MessageBox 1, InputBox its default text).
#include "functions/host_args.hpp"
#include "support/numbers.hpp"
#include "support/text.hpp"
#include "wavex/dynfunc.hpp"
#include "wavex/exceptions.hpp"
#include "wavex/options.hpp"
#include "wavex/version.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <ifaddrs.h>
#include <net/if.h>
#include <netpacket/packet.h>
#include <pthread.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace wavex {
namespace {

using host::fail;
using host::putReal;
using host::putText;
using host::putTexts;

// ---- Environment -------------------------------------------------------------------------------

// An environment variable's name as setenv takes it: not empty, without '=' or NUL.
bool validName(std::string_view name, const FuncInfo* info, MessageHandler& messages) {
    if (!name.empty() && name.find_first_of(std::string_view("=\0", 2)) == std::string_view::npos) return true;
    messages.error("Function '%s': '%s' is not an environment variable name (empty, or holding '=')", info->name,
                   name);
    return false;
}

// GetEnv(name [, default]): the variable's value, or default ("") when it is not set.
FUNC_ERROR getEnv(WAVEX_HANDLER_PARAMS) {
    std::string name(args.string(0));
    if (!validName(name, info, *messages)) return FUNC_FAILED;
    const char* value = std::getenv(name.c_str());
    return putText(result, value ? std::string(value) : host::textArg(args, 1));
}

// SetEnv(name [, value]): sets the variable for this process and the commands it runs; without a
// value removes it. 1.
FUNC_ERROR setEnv(WAVEX_HANDLER_PARAMS) {
    std::string name(args.string(0));
    if (!validName(name, info, *messages)) return FUNC_FAILED;
    std::string value = host::textArg(args, 1);
    if (value.find('\0') != std::string::npos) return fail(*messages, "An environment value cannot hold a NUL character");
    int rc = args.count() > 1 ? setenv(name.c_str(), value.c_str(), 1) : unsetenv(name.c_str());
    if (rc != 0) return fail(*messages, "Cannot set '" + name + "': " + std::strerror(errno));
    return putReal(result, 1);
}

// _GetEnvironment(): every variable as NAME=VALUE, sorted.
FUNC_ERROR getEnvironment(WAVEX_HANDLER_PARAMS) {
    std::vector<std::string> all;
    for (char** e = environ; e && *e; ++e) all.emplace_back(*e);
    std::sort(all.begin(), all.end());
    return putTexts(result, all);
}

// ---- Identity and resources --------------------------------------------------------------------

FUNC_ERROR hostName(WAVEX_HANDLER_PARAMS) {
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0) return fail(*messages, std::string("Cannot read the host name: ") + std::strerror(errno));
    return putText(result, name);
}

// UserName(): the name of the effective user, else $USER, else the user id.
FUNC_ERROR userName(WAVEX_HANDLER_PARAMS) {
    passwd entry, *found = nullptr;
    char buffer[4096];
    if (getpwuid_r(geteuid(), &entry, buffer, sizeof buffer, &found) == 0 && found) return putText(result, found->pw_name);
    const char* user = std::getenv("USER");
    return putText(result, user && *user ? std::string(user) : std::to_string(geteuid()));
}

FUNC_ERROR processId(WAVEX_HANDLER_PARAMS) { return putReal(result, static_cast<double>(getpid())); }

FUNC_ERROR numberOfProcessors(WAVEX_HANDLER_PARAMS) {
    return putReal(result, static_cast<double>(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN))));
}

// PhysicalMemory(): bytes of memory installed.
FUNC_ERROR physicalMemory(WAVEX_HANDLER_PARAMS) {
    return putReal(result, static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE)));
}

// GetEthernetAddresses([firstFlag]): the hardware addresses of the network interfaces
// ("02:42:ac:11:00:02"), in the system's interface order, each once; loopback and all-zero
// addresses left out. With a non-zero firstFlag only the first.
FUNC_ERROR getEthernetAddresses(WAVEX_HANDLER_PARAMS) {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) return fail(*messages, std::string("Cannot list the network interfaces: ") + std::strerror(errno));
    std::vector<std::string> addresses;
    for (ifaddrs* a = list; a; a = a->ifa_next) {
        if (!a->ifa_addr || a->ifa_addr->sa_family != AF_PACKET || (a->ifa_flags & IFF_LOOPBACK)) continue;
        auto* link = reinterpret_cast<const sockaddr_ll*>(a->ifa_addr);
        if (link->sll_halen != 6) continue;
        const unsigned char* b = link->sll_addr;
        if (std::all_of(b, b + 6, [](unsigned char c) { return c == 0; })) continue;
        char text[18];
        std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", b[0], b[1], b[2], b[3], b[4], b[5]);
        if (std::find(addresses.begin(), addresses.end(), text) == addresses.end()) addresses.emplace_back(text);
    }
    freeifaddrs(list);
    if (host::flagArg(args, 0, false) && addresses.size() > 1) addresses.resize(1);
    return putTexts(result, addresses);
}

// Version(): the program's name and version, "wavex 0.1.0".
FUNC_ERROR version(WAVEX_HANDLER_PARAMS) { return putText(result, kVersionText); }

// ---- Time --------------------------------------------------------------------------------------

// Now(): seconds since 1970-01-01 UTC, with their fraction (the date functions' time value).
FUNC_ERROR now(WAVEX_HANDLER_PARAMS) {
    auto since = std::chrono::system_clock::now().time_since_epoch();
    return putReal(result, std::chrono::duration<double>(since).count(), units::Time);
}

constexpr double kLongestSleep = 86400;

// Sleep(seconds): waits; gives the seconds waited.
FUNC_ERROR sleepFn(WAVEX_HANDLER_PARAMS) {
    double seconds = args.scalar(0);
    if (!(seconds >= 0 && seconds <= kLongestSleep)) {
        messages->error("Function '%s' waits 0 to %d seconds, not %s", info->name, static_cast<int>(kLongestSleep),
                        formatRoundTrip(seconds));
        return FUNC_FAILED;
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    return putReal(result, seconds, units::Time);
}

// ---- Commands ----------------------------------------------------------------------------------

// Shell(command): runs the command with /bin/sh, its standard input empty and its standard error
// passed through. Gives [status, line 1, line 2, ...]: the exit status as text (128 + the signal
// for a command that was killed), then the lines it wrote to standard output.
FUNC_ERROR shell(WAVEX_HANDLER_PARAMS) {
    std::string command(args.string(0));
    if (command.find('\0') != std::string::npos) return fail(*messages, "A command cannot hold a NUL character");
    std::fflush(nullptr);
    std::FILE* pipe = popen(("exec </dev/null; " + command).c_str(), "r");
    if (!pipe) return fail(*messages, "Cannot run '" + command + "': " + std::strerror(errno));
    std::vector<std::string> lines{""};
    std::string line;
    char chunk[4096];
    while (size_t n = std::fread(chunk, 1, sizeof chunk, pipe)) {
        for (size_t i = 0; i < n; ++i) {
            if (chunk[i] != '\n') line.push_back(chunk[i]);
            else lines.push_back(std::exchange(line, {}));
        }
    }
    if (!line.empty()) lines.push_back(line);
    int status = pclose(pipe);
    if (status == -1) return fail(*messages, "Cannot run '" + command + "': " + std::strerror(errno));
    lines[0] = std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    return putTexts(result, lines);
}

// ---- Dialogs -----------------------------------------------------------------------------------

bool atTerminal() {
    return sp_GetIntOption("DialogsAtTerminal", 1) != 0 && isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
}

// MessageBox(text [, title]): 1.
FUNC_ERROR messageBox(WAVEX_HANDLER_PARAMS) {
    if (atTerminal()) {
        std::string title = host::textArg(args, 1);
        std::fprintf(stderr, "%s%s%s\n", title.c_str(), title.empty() ? "" : ": ", std::string(args.string(0)).c_str());
    }
    return putReal(result, 1);
}

// InputBox(prompt [, default]): the line typed (without its end), or default ("") for an empty
// line, at the end of input or without a terminal.
FUNC_ERROR inputBox(WAVEX_HANDLER_PARAMS) {
    std::string fallback = host::textArg(args, 1);
    if (!atTerminal()) return putText(result, fallback);
    std::fprintf(stderr, "%s%s%s%s ", std::string(args.string(0)).c_str(), fallback.empty() ? "" : " [",
                 fallback.c_str(), fallback.empty() ? "" : "]");
    std::fflush(stderr);
    char* buffer = nullptr;
    size_t size = 0;
    ssize_t n = getline(&buffer, &size, stdin);
    std::string answer = n > 0 ? std::string(buffer, static_cast<size_t>(n)) : "";
    std::free(buffer);
    while (!answer.empty() && (answer.back() == '\n' || answer.back() == '\r')) answer.pop_back();
    return putText(result, answer.empty() ? fallback : answer);
}

// ---- Diagnostics -------------------------------------------------------------------------------

// _ListDynamicFunctions(): "NAME bound" or "NAME unbound" for each late-bound entry point.
FUNC_ERROR listDynamicFunctions(WAVEX_HANDLER_PARAMS) {
    std::vector<std::string> lines;
    for (const char* name : registeredEntryPoints())
        lines.push_back(std::string(name) + (entryPointBound(name) ? " bound" : " unbound"));
    return putTexts(result, lines);
}

// _GetAvailableStack(): bytes of stack left below the caller on this thread.
FUNC_ERROR getAvailableStack(WAVEX_HANDLER_PARAMS) {
    pthread_attr_t attr;
    void* base = nullptr;
    size_t size = 0;
    if (pthread_getattr_np(pthread_self(), &attr) != 0) return fail(*messages, "Cannot read the stack's bounds");
    pthread_attr_getstack(&attr, &base, &size);
    pthread_attr_destroy(&attr);
    char here;
    auto left = reinterpret_cast<uintptr_t>(&here) - reinterpret_cast<uintptr_t>(base);
    return putReal(result, static_cast<double>(left));
}

// _TestAccessViolation(): raises the exception the host reports for a memory access fault, to
// check that the host reports it and carries on.
constexpr int32_t kAccessViolationStatus = 11;

FUNC_ERROR testAccessViolation(WAVEX_HANDLER_PARAMS) {
    throw CorvaneException(kAccessViolationStatus, "*** FATAL ERROR *** Access violation in function '%s'", info->name);
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"GetEnv", {arg::String, arg::String}, 1, getEnv,
     {.signature = "GetEnv(name [, default])",
      .summary = "An environment variable.",
      .returns = "its value, or default (\"\") when it is not set",
      .notes = "A name that is empty or holds '=' fails.",
      .example = "GetEnv('WAVEX_UNSET_VARIABLE', 'default')"}},
    {"GetEthernetAddresses", {arg::Real}, 0, getEthernetAddresses, kFirstFlag,
     {.signature = "GetEthernetAddresses([firstFlag])",
      .summary = "The hardware addresses of the network interfaces.",
      .returns = "strings such as \"02:42:ac:11:00:02\" in the system's interface order, each once",
      .notes = "Loopback and all-zero addresses are left out; a non-zero firstFlag gives only the first.",
      .example = "length(GetEthernetAddresses(1)) <= 1"}},
    {"HostName", {}, 0, hostName,
     {.signature = "HostName()",
      .summary = "The name of the machine.",
      .returns = "a string",
      .example = "length(HostName()) > 0"}},
    {"InputBox", {arg::String, arg::String}, 1, inputBox,
     {.signature = "InputBox(prompt [, default])",
      .summary = "Asks for a line of text.",
      .returns = "the line typed, or default (\"\") for an empty line",
      .notes = "At a terminal the prompt goes to standard error and the line is read from standard "
               "input; without a terminal, at the end of input, or with the option DialogsAtTerminal 0, "
               "the default comes back at once.",
      .example = "SetOption('DialogsAtTerminal', 0); InputBox('Corner?', 'tt'); "
                 "SetOption('DialogsAtTerminal', 1)"}},
    {"MessageBox", {arg::String, arg::String}, 1, messageBox,
     {.signature = "MessageBox(text [, title])",
      .summary = "Shows a message.",
      .returns = "1",
      .notes = "At a terminal \"title: text\" goes to standard error; otherwise (or with the option "
               "DialogsAtTerminal 0) nothing is shown.",
      .example = "MessageBox('Run finished', 'wavex')"}},
    {"Now", {}, 0, now,
     {.signature = "Now()",
      .summary = "The current time.",
      .returns = "seconds since 1970-01-01 UTC with their fraction, in s",
      .example = "Now() > ConvertIsoTimeToUnix('2020-01-01')"}},
    {"NumberOfProcessors", {}, 0, numberOfProcessors,
     {.signature = "NumberOfProcessors()",
      .summary = "Processors online.",
      .returns = "a number",
      .example = "NumberOfProcessors() >= 1"}},
    {"PhysicalMemory", {}, 0, physicalMemory,
     {.signature = "PhysicalMemory()",
      .summary = "Memory installed.",
      .returns = "bytes, a number",
      .example = "PhysicalMemory() > 1meg"}},
    {"ProcessId", {}, 0, processId,
     {.signature = "ProcessId()",
      .summary = "This process's id.",
      .returns = "a number",
      .example = "ProcessId() > 0"}},
    FuncInfo("SetEnv", {arg::String, arg::String}, 1, setEnv,
             {.signature = "SetEnv(name [, value])",
              .summary = "Sets or, without a value, removes an environment variable.",
              .returns = "1",
              .notes = "The change holds for this process and the commands it runs. A name that is empty or "
                       "holds '=' fails.",
              .example = "SetEnv('RUN_NAME', 'corner1'); GetEnv('RUN_NAME'); SetEnv('RUN_NAME')"}).outsideSafeMode(),
    FuncInfo("Shell", {arg::String}, 1, shell,
             {.signature = "Shell(command)",
              .summary = "Runs a command with /bin/sh.",
              .returns = "strings: the exit status (128 + the signal for a killed command), then the lines the "
                         "command wrote",
              .notes = "Standard input is empty; standard error passes through.",
              .example = "Shell('echo one; echo two; exit 3')"}).outsideSafeMode(),
    {"Sleep", {arg::Real}, 1, sleepFn,
     {.signature = "Sleep(seconds)",
      .summary = "Waits.",
      .returns = "the seconds waited, in s",
      .notes = "0 to 86400 seconds.",
      .example = "Sleep(0.01)"}},
    {"UserName", {}, 0, userName,
     {.signature = "UserName()",
      .summary = "The name of the user running wavex.",
      .returns = "a string",
      .example = "length(UserName()) > 0"}},
    {"Version", {}, 0, version,
     {.signature = "Version()",
      .summary = "wavex's name and version.",
      .returns = "a string",
      .example = "Version()"}},
    {"_GetAvailableStack", {}, 0, getAvailableStack,
     {.signature = "_GetAvailableStack()",
      .summary = "Stack left to the caller, for diagnostics.",
      .returns = "bytes, a number",
      .example = "_GetAvailableStack() > 4096"}},
    {"_GetEnvironment", {}, 0, getEnvironment,
     {.signature = "_GetEnvironment()",
      .summary = "Every environment variable, for diagnostics.",
      .returns = "strings NAME=VALUE, sorted",
      .example = "length(_GetEnvironment()) > 0"}},
    {"_ListDynamicFunctions", {}, 0, listDynamicFunctions,
     {.signature = "_ListDynamicFunctions()",
      .summary = "The late-bound host entry points, for diagnostics.",
      .returns = "strings \"NAME bound\" or \"NAME unbound\", sorted by name",
      .example = "_ListDynamicFunctions()"}},
    {"_TestAccessViolation", {}, 0, testAccessViolation,
     {.signature = "_TestAccessViolation()",
      .summary = "Raises the host's access-violation exception, to test how it is reported.",
      .returns = "nothing: the call fails with \"*** FATAL ERROR *** Access violation in function "
                 "'_TestAccessViolation'\" and the program carries on",
      .example = "ResolveTemplate('{_TestAccessViolation()}', [''], [''], 'reported')"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex
