#include "wavex/messages.hpp"

#include "wavex/dynexport.hpp"

namespace wavex {

void MessageHandler::error(std::string_view format, const PrintfArg& a, const PrintfArg& b,
                           const PrintfArg& c, const PrintfArg& d) {
    const PrintfArg args[] = {a, b, c, d};
    auto text = formatPrintf(format, args);
    ++errors_;
    report(text ? *text : std::string(format));
}

void internal_error(std::string_view format, const PrintfArg& a, const PrintfArg& b, const PrintfArg& c) {
    dyn_GetDefaultMessageHandler()->error(format, a, b, c);
}

}  // namespace wavex
