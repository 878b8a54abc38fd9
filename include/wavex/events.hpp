// Host events: callbacks run at named points of the host's life. The host raises "PostCli" after
// each command line, and "ExitCli" then "Exit" when it leaves.
#pragma once

#include <string_view>
#include <vector>

namespace wavex {

class AutoFunc {
public:
    using Callback = void (*)(void*);
    AutoFunc(const char* event, Callback callback, const char* callbackName);
    ~AutoFunc();
    AutoFunc(const AutoFunc&) = delete;
    AutoFunc& operator=(const AutoFunc&) = delete;

    const char* event() const { return event_; }
    const char* callbackName() const { return name_; }
    void run(void* data) const { callback_(data); }

private:
    const char* event_;
    Callback callback_;
    const char* name_;
};

// Runs every callback subscribed to `event` (compared without regard to case), in subscription
// order.
void raiseEvent(std::string_view event, void* data = nullptr);
std::vector<const AutoFunc*> eventCallbacks(std::string_view event);

}  // namespace wavex
