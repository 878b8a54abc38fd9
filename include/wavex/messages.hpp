// The message sink through which handlers report errors.
#pragma once

#include "wavex/printf.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

// A counted reference. Handlers receive their own reference to the sink and release it on every
// exit path; std::shared_ptr passed by value does exactly that.
template <class T>
using YRef = std::shared_ptr<T>;

class MessageHandler {
public:
    virtual ~MessageHandler() = default;

    // Formats a printf-style message (see formatPrintf) and reports it as an error of the current
    // evaluation. A format that does not match its values is reported as written.
    void error(std::string_view format, const PrintfArg& a = {}, const PrintfArg& b = {},
               const PrintfArg& c = {}, const PrintfArg& d = {});

    // Number of messages reported so far.
    size_t errorCount() const { return errors_; }

    // Called by the host when a call that began at errorCount() == `since` succeeded all the
    // same: the messages reported since are warnings. A sink that tells them apart overrides it;
    // one that returns false takes them as errors, and the call fails.
    virtual bool markWarnings(size_t since) {
        (void)since;
        return true;
    }

protected:
    virtual void report(const std::string& message) = 0;

private:
    size_t errors_ = 0;
};

// A sink that keeps the messages it receives (for tests and for embedding).
class CollectingMessageHandler : public MessageHandler {
public:
    const std::vector<std::string>& messages() const { return messages_; }
    void clear() { messages_.clear(); }

protected:
    void report(const std::string& message) override { messages_.push_back(message); }

private:
    std::vector<std::string> messages_;
};

// Reports a broken internal invariant through the host's default sink. The library uses it as
// internal_error("Error found in module %s, line %d", WAVEX_MODULE, __LINE__).
void internal_error(std::string_view format, const PrintfArg& a, const PrintfArg& b,
                    const PrintfArg& c = {});

}  // namespace wavex

// The source file of the code that uses it, relative to the project root (the build strips the
// absolute prefix from __FILE__).
#define WAVEX_MODULE __FILE__
