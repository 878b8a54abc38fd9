// The function contract: how a script function is registered, the signature of its handler,
// the argument view it reads (FuncArgs) and the result it fills (FuncResult).
#pragma once

#include "wavex/messages.hpp"
#include "wavex/vector.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

// Status returned by a handler.
enum FUNC_ERROR : int {
    FUNC_OK = 0,            // the result is complete
    FUNC_FAILED_RANGE = 1,  // failure of a range-integrating reduction, message already reported
    FUNC_FAILED = 2,        // failure, message already reported
};

// argType: the kind of data an argument position accepts.
enum ArgType : int {
    ARG_NUMERIC = 0,      // real or complex; the handler tests which
    ARG_STRING = 1,       // a string vector
    ARG_NUMERIC_REF = 2,  // real or complex, read together with its reference
    ARG_ANY = 3,          // real, complex or string
    ARG_REAL = 4,         // real only
};

// MultiDef: what the host does with an argument that holds several divisions.
enum MultiDef : int {
    MULTI_NONE = 0,      // passed whole to every call
    MULTI_EACH = 1,      // one call per division; flagged arguments step together
    MULTI_ALL = 2,       // one call that sees every division
    MULTI_JOINED = 3,    // one call with all divisions taken as one vector
};

// How a result is laid out when the call is one of several per-division calls.
enum ResultAllocType : int {
    RESULT_LIKE_ARGS = 0,  // divisions like the arguments'; total = the argument's totalLength
    RESULT_OWN = 1,        // one value (or a vector of its own length) per call; total -1 or 0
    RESULT_RESHAPED = 2,   // divisions whose lengths differ from the arguments'; total -1
};

// Three one-byte flags passed by value with each registration.
struct FunctionOption {
    bool firstFlag = false;
    bool wholeArgument = false;
    bool pointwise = false;  // result element i depends only on the argument elements i
};
inline constexpr FunctionOption kNoOption{};
inline constexpr FunctionOption kPointwise{false, false, true};
inline constexpr FunctionOption kWholeArgument{false, true, false};
inline constexpr FunctionOption kFirstFlag{true, false, false};

class ScpInterface;
// The host's parse and run-time contexts, passed through to host services.
struct ScpParseContext {
    ScpInterface* interpreter = nullptr;
    // Safe mode, for scripts from elsewhere: the host refuses every function marked unsafe.
    bool safe = false;
};
struct FunctionRunTime {};

class FuncArgs;
class FuncResult;
struct FuncInfo;

using FuncHandler = FUNC_ERROR (*)(const FuncArgs& args, FuncResult* result, const FuncInfo* info,
                                   YRef<MessageHandler> messages, const ScpParseContext& context,
                                   const FunctionRunTime& runtime);

// The parameter list of a handler, for definitions: `FUNC_ERROR name(WAVEX_HANDLER_PARAMS)`.
#define WAVEX_HANDLER_PARAMS                                                                           \
    [[maybe_unused]] const ::wavex::FuncArgs &args, [[maybe_unused]] ::wavex::FuncResult *result,     \
        [[maybe_unused]] const ::wavex::FuncInfo *info,                                               \
        [[maybe_unused]] ::wavex::YRef<::wavex::MessageHandler> messages,                             \
        [[maybe_unused]] const ::wavex::ScpParseContext &context,                                     \
        [[maybe_unused]] const ::wavex::FunctionRunTime &runtime

// Registration record of one script function. Built once, never changed. The source location
// of the record (file relative to the project, line) is kept for the host's diagnostics.
struct FuncInfo {
    const char* name;
    const int* argTypes;  // one ArgType per position up to maxArgs
    int32_t minArgs;
    int32_t maxArgs;
    FuncHandler handler;
    const int* multiDef;  // one MultiDef per position, or null
    FunctionOption option;
    const char* file;
    int32_t line;
    // Writes, deletes or moves files, changes the environment or runs commands: refused in safe
    // mode. Set by wrapping the record in unsafe().
    bool unsafe = false;

    constexpr FuncInfo(const char* name_, const int* argTypes_, int32_t min, int32_t max, FuncHandler handler_,
                       FunctionOption option_ = {}, const char* file_ = __builtin_FILE(),
                       int32_t line_ = __builtin_LINE())
        : name(name_), argTypes(argTypes_), minArgs(min), maxArgs(max), handler(handler_), multiDef(nullptr),
          option(option_), file(file_), line(line_) {}
    constexpr FuncInfo(const char* name_, const int* argTypes_, int32_t min, int32_t max, FuncHandler handler_,
                       const int* multiDef_, FunctionOption option_ = {}, const char* file_ = __builtin_FILE(),
                       int32_t line_ = __builtin_LINE())
        : name(name_), argTypes(argTypes_), minArgs(min), maxArgs(max), handler(handler_), multiDef(multiDef_),
          option(option_), file(file_), line(line_) {}

    int argType(int i) const { return argTypes ? argTypes[i] : ARG_ANY; }
    int multiDefOf(int i) const { return multiDef ? multiDef[i] : MULTI_NONE; }
};

// A registration record marked as refused in safe mode: `unsafe({"DeleteFile", ...})`.
constexpr FuncInfo unsafe(FuncInfo info) {
    info.unsafe = true;
    return info;
}

// Where a function is defined: for the host's diagnostics.
struct FuncLoc {
    const char* name;
    const char* file;
    int32_t line;
    FuncHandler handler;
};

// Enters one FuncInfo into the host's function table for the lifetime of the object.
class FuncDef {
public:
    explicit FuncDef(const FuncInfo& info);
    ~FuncDef();
    FuncDef(const FuncDef&) = delete;
    FuncDef& operator=(const FuncDef&) = delete;

private:
    const FuncInfo* info_;
};

// A family's registrations: one FuncDef per record of its static table.
class FuncFamily {
public:
    explicit FuncFamily(std::span<const FuncInfo> table);
    ~FuncFamily();
    FuncFamily(const FuncFamily&) = delete;
    FuncFamily& operator=(const FuncFamily&) = delete;

private:
    std::span<const FuncInfo> table_;
};

// A second script name for an existing function.
class FuncAlias {
public:
    FuncAlias(const char* existing, const char* alias);
    ~FuncAlias();
    FuncAlias(const FuncAlias&) = delete;
    FuncAlias& operator=(const FuncAlias&) = delete;

private:
    const char* alias_;
};

// The most elements a function makes from a count in its arguments (`MakeString(1e12)`, `MapArray`
// with a huge position): more is refused with "Function '%s' cannot make %d elements: the limit is
// %d" rather than left to exhaust memory. A string element costs some 40 bytes before any text, so
// the limit stands at about 2 GB.
inline constexpr int64_t kMaxMadeElements = 50'000'000;
bool withinMadeElementLimit(int64_t n, const FuncInfo* info, MessageHandler& messages);

// Read-only view of a call's arguments. Under a per-division call, the data, length and reference
// of an argument flagged MULTI_EACH are those of the current division; `totalLength` stays that of
// the whole argument.
class FuncArgs {
public:
    FuncArgs() = default;
    // Every argument seen whole.
    explicit FuncArgs(std::span<const VectorPtr> args);

    int count() const { return static_cast<int>(views_.size()); }

    VDType type(int i) const { return views_[i].vec->type; }
    const StrElem* stringData(int i) const;
    const double* data(int i) const;
    const double* data(int i, int division) const;
    const Complex* complexData(int i) const;
    const Complex* complexData(int i, int division) const;
    int64_t length(int i) const { return static_cast<int64_t>(views_[i].length); }
    PhysType physType(int i) const { return views_[i].vec->phys; }

    VDType refType(int i) const { return views_[i].vec->ref.present() ? views_[i].vec->ref.type : VD_NONE; }
    const double* refData(int i) const;
    const double* refData(int i, int division) const;
    const Complex* complexRefData(int i) const;
    const Complex* complexRefData(int i, int division) const;
    int64_t refLength(int i) const { return refType(i) == VD_NONE ? 0 : length(i); }
    PhysType refPhysType(int i) const { return views_[i].vec->ref.present() ? views_[i].vec->ref.phys : units::NoRef; }
    const std::string& refName(int i) const { return views_[i].vec->ref.name; }
    const std::string& yName(int i) const { return views_[i].vec->name; }

    int64_t totalLength(int i) const { return static_cast<int64_t>(views_[i].vec->size()); }
    int numYDivisions(int i) const { return views_[i].divisions; }
    int numXDivisions(int i) const { return refType(i) == VD_NONE ? 0 : views_[i].divisions; }
    // Length of one division of the argument as this call sees it.
    int64_t divisionLength(int i, int division) const;
    void getYDivisionLabelArray(int i, DivisionLabelArray& out) const;

    // Conveniences for handlers.
    const VectorPtr& vector(int i) const { return *views_[i].owner; }
    // Element k of a string argument ("" for a null or missing element).
    std::string_view string(int i, size_t k = 0) const;
    // The first value of a numeric argument (real part of a complex one); NaN when empty.
    double scalar(int i) const;
    // The same for an optional argument: nothing when the call has no argument i.
    std::optional<double> optionalScalar(int i) const;
    // The x-values of argument i as reals: its real reference itself, or the real parts of a
    // complex one (frequencies kept as complex numbers) copied into `scratch`; null when it has no
    // reference.
    const double* realRefData(int i, std::vector<double>& scratch) const;
    // What a function that needs x-values says of argument %d (from 1) of function '%s' without.
    static constexpr const char* kNoReferenceMessage = "Argument %d in function '%s' has no reference (xvalues)";

    // Host side: how the argument is seen by this call.
    struct View {
        const VectorPtr* owner;
        const Vector* vec;
        size_t begin;         // first element seen
        size_t length;        // elements seen
        size_t firstDivision; // division of `vec` where the view starts
        int divisions;        // divisions seen
    };
    void setView(int i, const View& v) { views_[i] = v; }
    static View whole(const VectorPtr& v);
    static View joined(const VectorPtr& v);
    static View division(const VectorPtr& v, size_t k);
    const View& view(int i) const { return views_[i]; }

private:
    size_t divisionOffset(int i, int division) const;
    std::vector<View> views_;
};

// The result a handler fills. The host creates it empty, real, unitless.
class FuncResult {
public:
    FuncResult();

    void setType(VDType y, VDType ref);
    void setPhysType(PhysType y, PhysType ref);
    bool allocate(int64_t length, ResultAllocType allocType, int64_t total);
    double* makeReal(int64_t length, ResultAllocType allocType, int64_t total);
    Complex* makeComplex(int64_t length, ResultAllocType allocType, int64_t total);
    double* makeRealRef(int64_t length, ResultAllocType allocType, int64_t total);
    Complex* makeComplexRef(int64_t length, ResultAllocType allocType, int64_t total);
    bool allocateRef(int64_t length, ResultAllocType allocType, int64_t total);
    // A real vector of `length` values without a reference (scalar queries).
    double* makeRealNoRef(int64_t length);
    // A unitless string vector of `length` null elements, or of the one string `value`, without a
    // reference (text results).
    bool makeStrings(int64_t length);
    bool makeString(std::string value);

    // Writable data of the current division (or of division `division`).
    double* data();
    double* data(int division);
    Complex* complexData();
    Complex* complexData(int division);
    double* refData();
    Complex* complexRefData();
    StrElem* stringData();

    // Gives the result argument i's reference as the call sees it (values shared, not copied),
    // with its type, unit and name. An argument seen whole with several divisions also gives its
    // divisions and labels when the result is as long as it.
    bool copyRefFromArgs(const FuncArgs& args, ResultAllocType allocType, int64_t total, int i);
    void setRefName(std::string name);
    void setName(std::string name);
    void setDivisionLabelArray(const DivisionLabelArray& labels);
    // Makes the result the vector y (shared, not copied), optionally with the reference of `ref`.
    void copyVector(const VectorPtr& y);
    void copyVector(const VectorPtr& y, const VectorPtr& ref);
    void emptyVectors();
    int64_t length() const;
    // Builds a multi-division result: allocations after setCurrentDivision(k), k > 0, append
    // division k after the data so far.
    void setCurrentDivision(int division);

    // Host side.
    ResultAllocType allocType() const { return allocType_; }
    int64_t allocTotal() const { return total_; }
    VDType type() const { return v_->type; }
    // The finished vector. The result is spent afterwards: the host takes it once.
    VectorPtr release();

private:
    void materialize();
    size_t divisionBegin(int division) const;
    bool grow(size_t length);

    std::shared_ptr<Vector> v_;
    VectorPtr shared_;           // set by copyVector until the result is changed
    VDType refType_ = VD_NONE;   // reference type announced by setType
    std::shared_ptr<Array<double>> realRef_;
    std::shared_ptr<Array<Complex>> complexRef_;
    std::vector<size_t> starts_; // start of each division built so far
    int current_ = 0;
    ResultAllocType allocType_ = RESULT_LIKE_ARGS;
    int64_t total_ = 0;
};

// The host's table of functions. Lookup ignores case and follows aliases.
class FunctionTable {
public:
    void add(const FuncInfo* info);
    void remove(const FuncInfo* info);
    void addAlias(const char* existing, const char* alias);
    void removeAlias(const char* alias);
    const FuncInfo* find(std::string_view name) const;
    // Every registered function, sorted by name, and every alias (alias, target).
    std::vector<const FuncInfo*> all() const;
    std::vector<std::pair<std::string, std::string>> aliases() const;
    std::vector<FuncLoc> locations() const;

    // Kinds (bit 1 << VDType) a function reads at an argument position beyond what its
    // registered argType says; the host lets them through.
    void acceptKinds(const char* name, int arg, unsigned kindMask);
    unsigned extraKinds(const FuncInfo& info, int arg) const;

private:
    struct Impl;
    Impl& impl() const;
};

FunctionTable& functionTable();

// Calls a function as the host does: checks the argument count and kinds against the
// registration (reporting a message of its own when they do not fit), calls the handler once per
// division where the registration asks for it, and assembles the results with their divisions and
// labels. On success *out receives the result. When a handler fails without reporting anything,
// the host reports "Function '%s' failed".
FUNC_ERROR callFunction(const FuncInfo& info, std::span<const VectorPtr> args,
                        const YRef<MessageHandler>& messages, const ScpParseContext& context,
                        VectorPtr* out);

}  // namespace wavex
