#include "wavex/dynfunc.hpp"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <unordered_map>

namespace wavex {
namespace {

struct EntryPoint {
    void* entry = nullptr;
    std::vector<RegisterDynFuncCall*> registrations;
};

// Registrations and bindings may come from several threads (modules loaded, interpreters made);
// calls through a slot read only the slot.
std::mutex& entryPointLock() {
    static std::mutex lock;
    return lock;
}

std::unordered_map<std::string, EntryPoint>& entryPoints() {
    static std::unordered_map<std::string, EntryPoint> table;
    return table;
}

}  // namespace

RegisterDynFuncCall::RegisterDynFuncCall(void** slot, const char* name, bool, bool required,
                                         const char* header, int line)
    : slot_(slot), stub_(*slot), name_(name), header_(header), line_(line), required_(required) {
    std::lock_guard guard(entryPointLock());
    EntryPoint& ep = entryPoints()[name];
    ep.registrations.push_back(this);
    if (ep.entry) *slot_ = ep.entry;
}

RegisterDynFuncCall::~RegisterDynFuncCall() {
    std::lock_guard guard(entryPointLock());
    auto& regs = entryPoints()[name_].registrations;
    regs.erase(std::remove(regs.begin(), regs.end(), this), regs.end());
    *slot_ = stub_;
}

int provideEntryPoint(const char* name, void* entry) {
    std::lock_guard guard(entryPointLock());
    EntryPoint& ep = entryPoints()[name];
    ep.entry = entry;
    for (RegisterDynFuncCall* r : ep.registrations) *r->slot_ = entry ? entry : r->stub_;
    return static_cast<int>(ep.registrations.size());
}

std::vector<const char*> registeredEntryPoints() {
    std::vector<const char*> names;
    std::lock_guard guard(entryPointLock());
    for (auto& [name, ep] : entryPoints())
        if (!ep.registrations.empty()) names.push_back(ep.registrations.front()->name());
    std::sort(names.begin(), names.end(), [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
    return names;
}

bool entryPointBound(const char* name) {
    auto it = entryPoints().find(name);
    return it != entryPoints().end() && it->second.entry;
}

}  // namespace wavex
