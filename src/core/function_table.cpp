// The host's function table. It lives behind a function-local static so that registrations made
// by static objects of any translation unit, in any order, find it constructed.
#include "wavex/function.hpp"

#include "support/text.hpp"

#include <algorithm>
#include <unordered_map>

namespace wavex {

struct FunctionTable::Impl {
    std::unordered_map<std::string, const FuncInfo*, CaseInsensitiveHash, CaseInsensitiveEqual> byName;
    std::unordered_map<std::string, std::string, CaseInsensitiveHash, CaseInsensitiveEqual> aliases;
};

FunctionTable::Impl& FunctionTable::impl() const {
    static Impl instance;
    return instance;
}

FunctionTable& functionTable() {
    static FunctionTable table;
    return table;
}

void FunctionTable::add(const FuncInfo* info) { impl().byName[info->name] = info; }

void FunctionTable::remove(const FuncInfo* info) {
    auto it = impl().byName.find(info->name);
    if (it != impl().byName.end() && it->second == info) impl().byName.erase(it);
}

void FunctionTable::addAlias(const char* existing, const char* alias) { impl().aliases[alias] = existing; }

void FunctionTable::removeAlias(const char* alias) { impl().aliases.erase(alias); }

const FuncInfo* FunctionTable::find(std::string_view name) const {
    const Impl& t = impl();
    auto it = t.byName.find(name);
    if (it != t.byName.end()) return it->second;
    auto alias = t.aliases.find(name);
    if (alias == t.aliases.end()) return nullptr;
    it = t.byName.find(alias->second);
    return it == t.byName.end() ? nullptr : it->second;
}

std::vector<const FuncInfo*> FunctionTable::all() const {
    std::vector<const FuncInfo*> r;
    for (auto& [name, info] : impl().byName) r.push_back(info);
    std::sort(r.begin(), r.end(), [](const FuncInfo* a, const FuncInfo* b) { return stricmp(a->name, b->name) < 0; });
    return r;
}

std::vector<std::pair<std::string, std::string>> FunctionTable::aliases() const {
    std::vector<std::pair<std::string, std::string>> r(impl().aliases.begin(), impl().aliases.end());
    std::sort(r.begin(), r.end());
    return r;
}

std::vector<FuncLoc> FunctionTable::locations() const {
    std::vector<FuncLoc> r;
    for (const FuncInfo* f : all()) r.push_back({f->name, f->file, f->line, f->handler});
    return r;
}

FuncDef::FuncDef(const FuncInfo& info) : info_(&info) { functionTable().add(info_); }
FuncDef::~FuncDef() { functionTable().remove(info_); }

FuncFamily::FuncFamily(std::span<const FuncInfo> table) : table_(table) {
    for (const FuncInfo& f : table_) functionTable().add(&f);
}
FuncFamily::~FuncFamily() {
    for (const FuncInfo& f : table_) functionTable().remove(&f);
}

FuncAlias::FuncAlias(const char* existing, const char* alias) : alias_(alias) {
    functionTable().addAlias(existing, alias);
}
FuncAlias::~FuncAlias() { functionTable().removeAlias(alias_); }

}  // namespace wavex
