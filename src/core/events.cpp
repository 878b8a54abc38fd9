#include "wavex/events.hpp"

#include "support/text.hpp"

#include <algorithm>

namespace wavex {
namespace {
std::vector<const AutoFunc*>& subscriptions() {
    static std::vector<const AutoFunc*> list;
    return list;
}
}  // namespace

AutoFunc::AutoFunc(const char* event, Callback callback, const char* callbackName)
    : event_(event), callback_(callback), name_(callbackName) {
    subscriptions().push_back(this);
}

AutoFunc::~AutoFunc() {
    auto& list = subscriptions();
    list.erase(std::remove(list.begin(), list.end(), this), list.end());
}

std::vector<const AutoFunc*> eventCallbacks(std::string_view event) {
    std::vector<const AutoFunc*> r;
    for (const AutoFunc* f : subscriptions())
        if (iequals(f->event(), event)) r.push_back(f);
    return r;
}

void raiseEvent(std::string_view event, void* data) {
    for (const AutoFunc* f : eventCallbacks(event)) f->run(data);
}

}  // namespace wavex
