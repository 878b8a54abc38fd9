// The host's side of a call: argument checks, per-division calls and assembly of their results.
#include "wavex/function.hpp"

#include <algorithm>

namespace wavex {
namespace {

const char* kindWord(VDType t) {
    switch (t) {
        case VD_REAL: return "real";
        case VD_COMPLEX: return "complex";
        case VD_STRING: return "a string";
        default: return "empty";
    }
}

// Kinds an argType code accepts, as a mask of 1 << VDType.
unsigned acceptedKinds(int argType) {
    constexpr unsigned real = 1u << VD_REAL, cplx = 1u << VD_COMPLEX, str = 1u << VD_STRING;
    switch (argType) {
        case ARG_NUMERIC:
        case ARG_NUMERIC_REF: return real | cplx;
        case ARG_STRING: return str;
        case ARG_REAL: return real;
        default: return real | cplx | str;
    }
}

const char* wantWord(int argType) {
    switch (argType) {
        case ARG_NUMERIC:
        case ARG_NUMERIC_REF: return "a number";
        case ARG_STRING: return "a string";
        case ARG_REAL: return "real";
        default: return "a vector";
    }
}

// Checks the count and kinds of the arguments. An empty vector has no elements to be of the wrong
// kind: where its kind is not accepted (`[]` is an empty real vector) it is passed as an empty
// vector of the kind the position takes; a number where text is wanted is passed as its text
// (elementText). Replaced arguments are collected in *adjusted.
bool checkArguments(const FuncInfo& info, std::span<const VectorPtr> args, MessageHandler& messages,
                    std::vector<VectorPtr>* adjusted) {
    int n = static_cast<int>(args.size());
    if (n < info.minArgs || n > info.maxArgs) {
        if (info.minArgs == info.maxArgs)
            messages.error("Function '%s' takes %d argument%s, not %d", info.name, info.minArgs,
                           info.minArgs == 1 ? "" : "s", n);
        else
            messages.error("Function '%s' takes %d to %d arguments, not %d", info.name, info.minArgs,
                           info.maxArgs, n);
        return false;
    }
    for (int i = 0; i < n; ++i) {
        int code = info.argType(i);
        unsigned accepted = acceptedKinds(code) | info.extraKinds(i);
        VDType kind = args[i]->type;
        if (accepted & (1u << kind)) continue;
        if (args[i]->size() == 0) {
            static const VectorPtr emptyReal = makeEmptyVector();
            static const VectorPtr emptyStrings = makeStringVector({});
            if (adjusted->empty()) adjusted->assign(args.begin(), args.end());
            (*adjusted)[i] = (accepted & (1u << VD_REAL)) ? emptyReal : emptyStrings;
            continue;
        }
        if (code == ARG_STRING) {  // a number given where text is wanted arrives as its text
            std::vector<StrElem> text;
            text.reserve(args[i]->size());
            for (size_t k = 0; k < args[i]->size(); ++k) text.emplace_back(elementText(*args[i], k));
            if (adjusted->empty()) adjusted->assign(args.begin(), args.end());
            (*adjusted)[i] = makeStringVector(std::move(text));
            continue;
        }
        messages.error("Argument %d of function '%s' must be %s, not %s", i + 1, info.name,
                       wantWord(code), kindWord(kind));
        return false;
    }
    return true;
}

// Joins per-division results into one vector whose divisions are the calls' results.
VectorPtr assemble(std::vector<FuncResult>& parts, const Vector& driver, MessageHandler& messages,
                   const FuncInfo& info, bool* ok) {
    std::vector<VectorPtr> pieces;
    pieces.reserve(parts.size());
    for (FuncResult& p : parts) pieces.push_back(p.release());

    VDType type = pieces.front()->type;
    for (const VectorPtr& p : pieces) {
        if (p->type == type) continue;
        if ((p->type == VD_COMPLEX && type == VD_REAL) || (p->type == VD_REAL && type == VD_COMPLEX)) {
            type = VD_COMPLEX;
            continue;
        }
        messages.error("Function '%s' gave results of different kinds for different divisions", info.name);
        *ok = false;
        return nullptr;
    }

    auto out = std::make_shared<Vector>();
    const Vector& first = *pieces.front();
    out->type = type;
    out->phys = first.phys;
    out->name = first.name;
    size_t total = 0;
    std::vector<size_t> lengths;
    for (const VectorPtr& p : pieces) {
        lengths.push_back(p->size());
        total += p->size();
    }
    switch (type) {
        case VD_REAL:
            out->real.reserve(total);
            for (const VectorPtr& p : pieces) out->real.append(p->real.data(), p->real.size());
            break;
        case VD_COMPLEX:
            out->cplx.reserve(total);
            for (const VectorPtr& p : pieces) {
                if (p->type == VD_COMPLEX) out->cplx.append(p->cplx.data(), p->cplx.size());
                else for (double x : p->real) out->cplx.push_back(Complex(x, 0));
            }
            break;
        default:
            out->str.reserve(total);
            for (const VectorPtr& p : pieces) out->str.insert(out->str.end(), p->str.begin(), p->str.end());
            break;
    }
    out->setDivisionLengths(lengths);
    if (lengths.size() == 1) out->divisionStarts.clear();

    // The reference: shared when the pieces are consecutive windows of one array (each call took
    // its division of the same argument's x-values), otherwise joined.
    const Reference& r0 = first.ref;
    bool allHaveRef = std::all_of(pieces.begin(), pieces.end(), [&](const VectorPtr& p) {
        return p->ref.present() && p->ref.type == r0.type && p->ref.size() == p->size();
    });
    if (allHaveRef) {
        bool contiguous = true;
        size_t next = r0.offset;
        for (const VectorPtr& p : pieces) {
            const Reference& r = p->ref;
            if (r.realValues != r0.realValues || r.complexValues != r0.complexValues || r.offset != next) {
                contiguous = false;
                break;
            }
            next += r.length;
        }
        if (contiguous) {
            out->ref = r0.window(0, total);
        } else if (r0.type == VD_REAL) {
            Array<double> x;
            x.reserve(total);
            for (const VectorPtr& p : pieces) x.append(p->ref.real(), p->ref.size());
            out->ref = Reference::fromReal(std::move(x), r0.phys, r0.name);
        } else {
            Array<Complex> x;
            x.reserve(total);
            for (const VectorPtr& p : pieces) x.append(p->ref.cplx(), p->ref.size());
            out->ref = Reference::fromComplex(std::move(x), r0.phys, r0.name);
        }
    } else {
        out->ref.phys = r0.present() ? units::NoRef : r0.phys;
    }

    DivisionLabelArray labels;
    for (size_t d = 0; d < pieces.size(); ++d) labels.push_back(driver.label(d));
    if (std::any_of(labels.begin(), labels.end(), [](const auto& l) { return l.has_value(); }))
        out->labels = std::move(labels);
    return out;
}

}  // namespace

FUNC_ERROR callFunction(const FuncInfo& info, std::span<const VectorPtr> args,
                        const YRef<MessageHandler>& messages, const ScpParseContext& context, VectorPtr* out) {
    // A call made in safe mode keeps every call made on its behalf (templates, expressions
    // evaluated through whichever interpreter) in safe mode too.
    thread_local bool inSafeCall = false;
    bool safe = context.safe || inSafeCall;
    if (safe && info.refusedInSafeMode) {
        messages->error("Function '%s' is not allowed in safe mode", info.name);
        return FUNC_FAILED;
    }
    struct SafeScope {
        bool saved = inSafeCall;
        explicit SafeScope(bool on) { inSafeCall = on; }
        ~SafeScope() { inSafeCall = saved; }
    } safeScope(safe);
    std::vector<VectorPtr> adjusted;
    if (!checkArguments(info, args, *messages, &adjusted)) return FUNC_FAILED;
    if (!adjusted.empty()) args = adjusted;
    static const FunctionRunTime runtime;
    size_t errorsBefore = messages->errorCount();
    auto failed = [&](FUNC_ERROR status) {
        if (messages->errorCount() == errorsBefore) messages->error("Function '%s' failed", info.name);
        return status;
    };
    // What a call that succeeds reported are warnings, unless the sink takes them as failures.
    auto succeeded = [&] {
        if (messages->errorCount() > errorsBefore && !messages->markWarnings(errorsBefore)) return FUNC_FAILED;
        return FUNC_OK;
    };

    // Divisions to step through: those of the arguments flagged MULTI_EACH that have several.
    int n = static_cast<int>(args.size());
    size_t divisions = 1;
    int driver = -1;
    for (int i = 0; i < n; ++i) {
        if (info.multiDefOf(i) != MULTI_EACH || args[i]->numDivisions() == 1) continue;
        if (driver < 0) {
            divisions = args[i]->numDivisions();
            driver = i;
        } else if (args[i]->numDivisions() != divisions) {
            messages->error("The arguments of function '%s' have different numbers of divisions (%d and %d)",
                            info.name, static_cast<long long>(divisions),
                            static_cast<long long>(args[i]->numDivisions()));
            return FUNC_FAILED;
        }
    }

    FuncArgs view(args);
    for (int i = 0; i < n; ++i)
        if (info.multiDefOf(i) == MULTI_JOINED) view.setView(i, FuncArgs::joined(args[i]));

    if (driver < 0) {
        FuncResult result;
        FUNC_ERROR status = info.handler(view, &result, &info, messages, context, runtime);
        if (status != FUNC_OK) return failed(status);
        *out = result.release();
        return succeeded();
    }

    std::vector<FuncResult> parts(divisions);
    for (size_t d = 0; d < divisions; ++d) {
        for (int i = 0; i < n; ++i)
            if (info.multiDefOf(i) == MULTI_EACH && args[i]->numDivisions() > 1)
                view.setView(i, FuncArgs::division(args[i], d));
        FUNC_ERROR status = info.handler(view, &parts[d], &info, messages, context, runtime);
        if (status != FUNC_OK) return failed(status);
    }
    bool ok = true;
    VectorPtr joined = assemble(parts, *args[driver], *messages, info, &ok);
    if (!ok) return FUNC_FAILED;
    *out = std::move(joined);
    return succeeded();
}

}  // namespace wavex
