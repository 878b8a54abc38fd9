// Late-bound host entry points.
//
// The functions reach a few services of their host (the default message sink, the script
// interpreter, program identification) through function-pointer slots that the host fills at
// run time by name. Each translation unit that uses a slot registers it; the host accepts any
// number of registrations of one name and resolves them all. Until then a slot holds a stub that
// throws DynFuncException.
#pragma once

#include <vector>

namespace wavex {

int provideEntryPoint(const char* name, void* entry);

class RegisterDynFuncCall {
public:
    template <class Fn>
    RegisterDynFuncCall(Fn** slot, const char* name, bool flag, bool required, const char* header, int line)
        : RegisterDynFuncCall(reinterpret_cast<void**>(slot), name, flag, required, header, line) {}
    RegisterDynFuncCall(void** slot, const char* name, bool flag, bool required, const char* header, int line);
    ~RegisterDynFuncCall();
    RegisterDynFuncCall(const RegisterDynFuncCall&) = delete;
    RegisterDynFuncCall& operator=(const RegisterDynFuncCall&) = delete;

    const char* name() const { return name_; }
    const char* header() const { return header_; }
    int line() const { return line_; }
    bool required() const { return required_; }

private:
    friend int provideEntryPoint(const char* name, void* entry);
    void** slot_;
    void* stub_;
    const char* name_;
    const char* header_;
    int line_;
    bool required_;
};

// Host side: binds every slot registered under `name` (now and later) to `entry`; a null entry
// restores the throwing stubs. Returns the number of slots bound now.
int provideEntryPoint(const char* name, void* entry);
template <class Fn>
int dyn_ProvideEntryPoint(const char* name, Fn* entry) {
    return provideEntryPoint(name, reinterpret_cast<void*>(entry));
}

// Names of the entry points registered so far (each once), for diagnostics.
std::vector<const char*> registeredEntryPoints();
// Whether the host has bound the entry point `name`.
bool entryPointBound(const char* name);

}  // namespace wavex
