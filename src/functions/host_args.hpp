// What the file, settings and system families share: reading a path or a flag from an argument,
// and the small results they give (one number, one text, a list of texts).
#pragma once

#include "wavex/function.hpp"

#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace wavex::host {

// The first element of argument i as a path the system can take: nullopt (reported) when it is
// empty or holds a NUL byte. Other bytes, invalid UTF-8 included, pass as the file system takes
// them.
inline std::optional<std::string> pathArg(const FuncArgs& args, int i, const FuncInfo* info, MessageHandler& messages) {
    std::string path(args.string(i));
    if (path.empty()) {
        messages.error("Function '%s' needs a path, not an empty text", info->name);
        return std::nullopt;
    }
    if (path.find('\0') != std::string::npos) {
        messages.error("Function '%s': a path cannot hold a NUL character", info->name);
        return std::nullopt;
    }
    return path;
}

// An optional numeric argument read as a yes/no flag (non-zero is yes).
inline bool flagArg(const FuncArgs& args, int i, bool fallback) {
    std::optional<double> v = args.optionalScalar(i);
    return v && !std::isnan(*v) ? *v != 0 : fallback;
}

// An optional text argument.
inline std::string textArg(const FuncArgs& args, int i, std::string_view fallback = "") {
    return std::string(args.count() > i ? args.string(i) : fallback);
}

inline FUNC_ERROR putReal(FuncResult* result, double value, PhysType phys = units::Number) {
    double* out = result->makeRealNoRef(1);
    if (!out) return FUNC_FAILED;
    out[0] = value;
    result->setPhysType(phys, units::NoRef);
    return FUNC_OK;
}

inline FUNC_ERROR putText(FuncResult* result, std::string value) {
    return result->makeString(std::move(value)) ? FUNC_OK : FUNC_FAILED;
}

inline FUNC_ERROR putTexts(FuncResult* result, std::vector<std::string>& values) {
    if (!result->makeStrings(static_cast<int64_t>(values.size()))) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (std::string& v : values) (out++)->emplace(std::move(v));
    return FUNC_OK;
}

// Reports a message that is already complete and fails the call.
inline FUNC_ERROR fail(MessageHandler& messages, const std::string& message) {
    messages.error("%s", message);
    return FUNC_FAILED;
}

}  // namespace wavex::host
