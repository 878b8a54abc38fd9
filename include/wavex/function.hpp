// The function contract: how a script function is registered, the signature of its handler,
// the argument view it reads (FuncArgs) and the result it fills (FuncResult).
#pragma once

#include "wavex/messages.hpp"
#include "wavex/vector.hpp"

#include <array>
#include <cstdint>
#include <initializer_list>
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
    // Safe mode, for scripts from elsewhere: the host refuses every row marked outsideSafeMode().
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

// One argument position of a registration row: the kind it accepts (its argType), what the host
// does with a value of several runs there (its MultiDef), and kinds the function reads there beyond
// what the code says. `Real.upTo(32)` stands for positions up to the 32nd, all alike.
struct Arg {
    ArgType kind = ARG_ANY;
    MultiDef multi = MULTI_NONE;
    uint8_t extraKinds = 0;  // bits 1 << VDType
    uint8_t repeat = 1;

    constexpr Arg each() const { return with(MULTI_EACH); }
    constexpr Arg all() const { return with(MULTI_ALL); }
    constexpr Arg joined() const { return with(MULTI_JOINED); }
    template <class... Kinds>
    constexpr Arg orKinds(Kinds... kinds) const {
        Arg a = *this;
        a.extraKinds = static_cast<uint8_t>(a.extraKinds | (0u | ... | (1u << kinds)));
        return a;
    }
    constexpr Arg upTo(int positions) const {
        Arg a = *this;
        a.repeat = static_cast<uint8_t>(positions);
        return a;
    }

private:
    constexpr Arg with(MultiDef m) const {
        Arg a = *this;
        a.multi = m;
        return a;
    }
};

namespace arg {
inline constexpr Arg Numeric{ARG_NUMERIC};   // real or complex
inline constexpr Arg String{ARG_STRING};     // text
inline constexpr Arg Curve{ARG_NUMERIC_REF}; // real or complex, read with its x-values
inline constexpr Arg Any{ARG_ANY};           // real, complex or text
inline constexpr Arg Real{ARG_REAL};         // real only
}  // namespace arg

// What a user reads of a function: `help NAME` and the function reference show it. The example is
// one command line that runs in a fresh interpreter; the reference shows what it prints.
struct FuncDoc {
    const char* signature = nullptr;  // with argument names: "XFromY(data, level [, order [, direction]])"
    const char* summary = nullptr;    // one line
    const char* returns = nullptr;    // kind, unit, x-values, one value or curve per run
    const char* notes = nullptr;      // defaults and choices a user must know
    const char* example = nullptr;
};

// The most argument positions a function has.
inline constexpr int kMaxArgs = 32;

// Registration record of one script function, never changed after it is built. Tables of them are
// declared constexpr, so that a row whose minimum count does not fit its positions fails to compile.
// (GCC 12 gives a row written as a bare braced list the line where its table ends; a row written
// `FuncInfo(...)` gets its own.) The source location of the record
// (file relative to the project, line) is kept for the host's diagnostics.
struct FuncInfo {
    const char* name;
    std::array<Arg, kMaxArgs> args{};  // one per position up to maxArgs
    int32_t minArgs;
    int32_t maxArgs = 0;
    FuncHandler handler;
    FunctionOption option;
    FuncDoc doc;
    bool refusedInSafeMode = false;  // writes files, changes the environment or runs commands
    const char* file;
    int32_t line;

    // `positions`: one Arg per argument position; their number is the maximum count, `min` the
    // minimum.
    constexpr FuncInfo(const char* name_, std::initializer_list<Arg> positions, int32_t min, FuncHandler handler_,
                       FuncDoc doc_ = {}, const char* file_ = __builtin_FILE(), int32_t line_ = __builtin_LINE())
        : FuncInfo(name_, positions, min, handler_, kNoOption, doc_, file_, line_) {}
    constexpr FuncInfo(const char* name_, std::initializer_list<Arg> positions, int32_t min, FuncHandler handler_,
                       FunctionOption option_, FuncDoc doc_ = {}, const char* file_ = __builtin_FILE(),
                       int32_t line_ = __builtin_LINE())
        : name(name_), minArgs(min), handler(handler_), option(option_), doc(doc_), file(file_), line(line_) {
        for (const Arg& a : positions)
            for (int k = 0; k < a.repeat; ++k) {
                if (maxArgs == kMaxArgs) throw "more argument positions than kMaxArgs";
                args[static_cast<size_t>(maxArgs++)] = a;
            }
        if (min < 0 || min > maxArgs) throw "minimum argument count outside 0 .. the number of positions";
    }
    // The same row, refused when the interpreter runs in safe mode.
    constexpr FuncInfo outsideSafeMode() const {
        FuncInfo f = *this;
        f.refusedInSafeMode = true;
        return f;
    }

    int argType(int i) const { return args[static_cast<size_t>(i)].kind; }
    int multiDefOf(int i) const { return args[static_cast<size_t>(i)].multi; }
    // Kinds (bits 1 << VDType) read at position i beyond what its argType says.
    unsigned extraKinds(int i) const { return args[static_cast<size_t>(i)].extraKinds; }

private:
};

// True when a family's table has one row per operation, row i holding operation i, and every row
// passes `complete` (its kernel is set, say): `static_assert(rowsInOrder(kOperations, &Operation::op))`
// for operation codes 0 .. Code::Count - 1.
template <class Row, size_t N, class Code, class Complete>
consteval bool rowsInOrder(const Row (&table)[N], Code Row::*code, Complete complete) {
    if (N != static_cast<size_t>(Code::Count)) return false;
    for (size_t i = 0; i < N; ++i)
        if (static_cast<size_t>(table[i].*code) != i || !complete(table[i])) return false;
    return true;
}
template <class Row, size_t N, class Code>
consteval bool rowsInOrder(const Row (&table)[N], Code Row::*code) {
    return rowsInOrder(table, code, [](const Row&) { return true; });
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
    // Whether the call has argument i (an optional argument was given).
    bool has(int i) const { return i < count(); }
    // Element k of a string argument ("" for a null or missing element, or an absent argument).
    std::string_view string(int i, size_t k = 0) const;
    // The first value of a numeric argument (real part of a complex one); NaN when empty.
    double scalar(int i) const;
    // The same for an optional argument: nothing when the call has no argument i.
    std::optional<double> optionalScalar(int i) const;
    // The first value of argument i as an integer, by the one rule of wholeNumber (truncated toward
    // zero, saturated to the 64-bit range); nothing when the argument is absent, empty or NaN, so
    // that the caller says what a missing integer means: `args.integer(2).value_or(0)`.
    std::optional<int64_t> integer(int i) const;
    // The x-values of argument i as reals: its real reference itself, or the real parts of a
    // complex one (frequencies kept as complex numbers) copied into `scratch`; null when it has no
    // reference.
    const double* realRefData(int i, std::vector<double>& scratch) const;
    // What a function that needs x-values says of argument %d (from 1) of function '%s' without.
    static constexpr const char* kNoReferenceMessage = "Argument %d in function '%s' has no reference (xvalues)";
    // realRefData for a function that needs x-values: without them, reports kNoReferenceMessage
    // and gives null.
    const double* neededRefData(int i, std::vector<double>& scratch, const FuncInfo& info,
                                MessageHandler& messages) const;

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
