// Runs (divisions) of a value: picking some, and the difference of two simulations.
//
// CopyDivisionData(v, runs): a new value of the chosen runs of v, in the order asked (a run may be
// chosen twice), each with its x-values and label. Runs are 0-based indices or, given as strings,
// labels (case ignored). An index that is not a whole number in range, or a label no run has,
// fails the call.
//
// DiffMergeVecs(a, b [, order]): a − b for two real curves sampled at different x-values (two runs
// of one circuit with different time steps): each is interpolated with polynomials of the given
// order (default 1, capped as Interp caps it) at the sorted union of both x-values that lie inside
// the stretch both cover, and the difference taken there. In a's units, over those x-values; run
// by run when the arguments have runs. Curves whose stretches do not meet give an empty curve; x
// without a reference fails. x-values are expected ascending, as a simulator writes them.
#include "support/interpolation.hpp"
#include "support/numbers.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"

#include <algorithm>
#include <cmath>

namespace wavex {
namespace {

// The division indices argument 1 chooses from v; nullopt (reported) when one does not exist.
std::optional<std::vector<size_t>> chosenRuns(const FuncArgs& args, const Vector& v, MessageHandler& messages) {
    const size_t runs = v.numDivisions();
    std::vector<size_t> chosen;
    for (int64_t k = 0; k < args.totalLength(1); ++k) {
        if (args.type(1) == VD_STRING) {
            std::string_view label = args.string(1, static_cast<size_t>(k));
            size_t d = 0;
            while (d < runs && !(v.label(d) && iequals(*v.label(d), label))) ++d;
            if (d == runs) {
                messages.error("No run of argument 1 of function 'CopyDivisionData' is labelled '%s'", std::string(label));
                return std::nullopt;
            }
            chosen.push_back(d);
            continue;
        }
        double index = args.type(1) == VD_REAL ? args.data(1)[k] : args.complexData(1)[k].real();
        if (!(index >= 0 && index < static_cast<double>(runs) && index == std::floor(index))) {
            messages.error("Run %s is out of range in function 'CopyDivisionData': argument 1 has %d runs (0 to %d)",
                           formatRoundTrip(index), static_cast<int64_t>(runs), static_cast<int64_t>(runs) - 1);
            return std::nullopt;
        }
        chosen.push_back(static_cast<size_t>(index));
    }
    return chosen;
}

FUNC_ERROR copyDivisionData(WAVEX_HANDLER_PARAMS) {
    const Vector& v = *args.vector(0);
    auto chosen = chosenRuns(args, v, *messages);
    if (!chosen) return FUNC_FAILED;
    auto out = std::make_shared<Vector>();
    out->type = v.type;
    out->phys = v.phys;
    out->name = v.name;
    Array<double> realX;
    Array<Complex> complexX;
    std::vector<size_t> lengths;
    for (size_t d : *chosen) {
        const size_t start = v.divisionStart(d), n = v.divisionLength(d);
        if (v.type == VD_REAL) out->real.append(v.real.data() + start, n);
        else if (v.type == VD_COMPLEX) out->cplx.append(v.cplx.data() + start, n);
        else out->str.insert(out->str.end(), v.str.begin() + start, v.str.begin() + start + n);
        if (v.ref.type == VD_REAL) realX.append(v.ref.real() + start, n);
        else if (v.ref.type == VD_COMPLEX) complexX.append(v.ref.cplx() + start, n);
        lengths.push_back(n);
        out->labels.push_back(v.label(d));
    }
    if (v.ref.type == VD_REAL) out->ref = Reference::fromReal(std::move(realX), v.ref.phys, v.ref.name);
    else if (v.ref.type == VD_COMPLEX) out->ref = Reference::fromComplex(std::move(complexX), v.ref.phys, v.ref.name);
    if (lengths.size() > 1) out->setDivisionLengths(lengths);
    else if (std::none_of(out->labels.begin(), out->labels.end(), [](auto& l) { return l.has_value(); })) out->labels.clear();
    result->copyVector(out);
    return FUNC_OK;
}

// y of the curve (x, y) of n points at the ascending places t, by the stencil rule of
// support/interpolation.hpp, walking one cursor forward.
void interpolateAt(const double* x, const double* y, size_t n, const std::vector<double>& t, int order, double* out) {
    InterpOpts opts{};
    opts.order = std::clamp(order, 0, std::min(kMaxInterpOrder, static_cast<int>(n) - 1));
    size_t k = 0;
    for (size_t i = 0; i < t.size(); ++i) {
        while (k + 1 < n && x[k] < t[i]) ++k;
        size_t first = k >= static_cast<size_t>(opts.order) ? k - opts.order : 0;
        first = std::min(first, n - 1 - opts.order);
        out[i] = support_Interp(y + first, x + first, t[i], opts);
    }
}

FUNC_ERROR diffMergeVecs(WAVEX_HANDLER_PARAMS) {
    for (int i = 0; i < 2; ++i) {
        if (args.type(i) != VD_REAL) {
            messages->error("Argument %d of function '%s' must be real", i + 1, info->name);
            return FUNC_FAILED;
        }
        if (args.refType(i) != VD_REAL) {
            messages->error(FuncArgs::kNoReferenceMessage, i + 1, info->name);
            return FUNC_FAILED;
        }
    }
    double order = args.optionalScalar(2).value_or(1);
    if (!(order >= 1 && order <= kMaxInterpOrder)) {
        messages->error("The order of function '%s' must be from 1 to %d, not %s", info->name, kMaxInterpOrder,
                        formatRoundTrip(order));
        return FUNC_FAILED;
    }
    const double *xa = args.refData(0), *xb = args.refData(1);
    const size_t na = static_cast<size_t>(args.length(0)), nb = static_cast<size_t>(args.length(1));
    std::vector<double> t;
    if (na > 0 && nb > 0) {
        const double lo = std::max(xa[0], xb[0]), hi = std::min(xa[na - 1], xb[nb - 1]);
        t.reserve(na + nb);
        std::merge(xa, xa + na, xb, xb + nb, std::back_inserter(t));
        auto inside = [&](double x) { return !(x >= lo && x <= hi); };
        t.erase(std::remove_if(t.begin(), t.end(), inside), t.end());
        t.erase(std::unique(t.begin(), t.end()), t.end());
    }
    const int m = static_cast<int>(order);
    std::vector<double> yb(t.size());
    result->setType(VD_REAL, VD_REAL);
    result->setPhysType(args.physType(0), args.refPhysType(0));
    double* out = result->makeReal(static_cast<int64_t>(t.size()), RESULT_RESHAPED, -1);
    double* x = result->makeRealRef(static_cast<int64_t>(t.size()), RESULT_RESHAPED, -1);
    if (t.empty()) return FUNC_OK;
    interpolateAt(xa, args.data(0), na, t, m, out);
    interpolateAt(xb, args.data(1), nb, t, m, yb.data());
    for (size_t i = 0; i < t.size(); ++i) out[i] -= yb[i], x[i] = t[i];
    result->setRefName(args.refName(0));
    return FUNC_OK;
}


constexpr FuncInfo kFunctions[] = {
    {"CopyDivisionData", {arg::Any.all(), arg::Any.all()}, 2, copyDivisionData,
     {.signature = "CopyDivisionData(v, runs)",
      .summary = "A new value of the chosen runs of v, in the order asked.",
      .returns = "v's kind and units, one run per index or label asked, each with its x-values and label",
      .notes = "runs are 0-based indices or, as strings, run labels (case ignored); a run may be chosen "
               "twice. An index that is not a whole number in range, or a label no run has, fails.",
      .example = "length(CopyDivisionData(makevec([2, 3, 4]), [2, 0]))"}},
    {"DiffMergeVecs", {arg::Curve.each(), arg::Curve.each(), arg::Real}, 2, diffMergeVecs,
     {.signature = "DiffMergeVecs(a, b [, order])",
      .summary = "a - b for two curves sampled at different x-values.",
      .returns = "a real curve per run in a's units, over the sorted union of both x-values inside the "
                 "stretch both cover; empty when they do not overlap",
      .notes = "order (default 1, at most 16) is the interpolation order, with the stencils of Interp. "
               "Run by run when both have runs. Real curves with x-values only.",
      .example = "DiffMergeVecs(XY([0, 1, 2, 3], [0, 1, 2, 3]), XY([0, 1.5, 3], [0, 2, 4]))"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex
