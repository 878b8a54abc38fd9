// Least-squares polynomial fits of a curve: CurveFit, CurveFitLogX, CurveFitLogY, CurveFitLog and
// CurveFitPlot.
//
// With u = x or ln x and w = y or ln y, a fit of order m finds c_0 … c_m minimising
// Σ (w_i − Σ c_k u_i^k)² over the curve's points:
//   CurveFit      u = x,    w = y          CurveFitLogY  u = x,    w = ln y
//   CurveFitLogX  u = ln x, w = y          CurveFitLog   u = ln x, w = ln y
// The four give c_0 … c_m, lowest power first, as plain numbers (each power has a unit of its
// own) without reference. CurveFitPlot(v, order [, kind]) gives the fitted curve at v's own
// x-values, in y's unit and over v's reference: Σ c_k u^k, or its exponential for the fits of
// ln y; the kind is the word "poly" (the default), "logx", "logy" or "log", in any case.
//
// How: u is centred and scaled onto [−1, 1], t = (u − centre) / scale, so high orders stay well
// conditioned; the rows [1, t, …, t^m | w] are folded block by block into a triangular system by
// Householder QR (nothing as large as the data is made), which a complete orthogonal decomposition
// then solves. Data that cannot tell all m + 1 coefficients apart (repeated x-values) gets the
// least-squares solution of least norm in t. The coefficients are then carried back to powers of
// u; CurveFitPlot evaluates the polynomial in t, which stays accurate where the powers of u lose
// digits to cancellation.
//
// Per division: each division of v is fitted on its own (one set of coefficients, or one curve,
// per division). The order is truncated toward zero. A complex reference counts by its real parts.
// Points whose u or w is not finite (NaN, infinite) are left out of the fit; the plot still has
// a value at every x-value.
// Failures, each a message and status 2:
//   "Argument out of range for function '%s'"        an x ≤ 0 where ln x is taken, a y ≤ 0
//                                                     where ln y is;
//   "Order must be from 0 to 50 in function '%s'"     a negative (or NaN) or larger order;
//   "Too few points for order %d in function '%s': %d usable, %d needed";
//   "Argument %d in function '%s' has no reference (xvalues)";
//   "Unknown fit kind '%s' in function '%s'"          CurveFitPlot's third argument.
#include "support/interpolation.hpp"
#include "support/numbers.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"

// GCC 12 warns falsely inside its own AVX-512 intrinsics as Eigen uses them.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <Eigen/Dense>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace wavex {
namespace {

constexpr int kMaxOrder = 50;

enum class Fit { Poly, LogX, LogY, Log, Count };

struct FitOp {
    Fit op;
    const char* kind;  // CurveFitPlot's word for it
    bool logX, logY;
};

constexpr FitOp kFits[] = {
    {Fit::Poly, "poly", false, false},
    {Fit::LogX, "logx", true, false},
    {Fit::LogY, "logy", false, true},
    {Fit::Log, "log", true, true},
};

static_assert(rowsInOrder(kFits, &FitOp::op, [](const FitOp& c) { return c.kind != nullptr; }),
              "row i holds fit i");

// Σ a_k t^k with t = (u − centre) / scale.
struct Polynomial {
    Eigen::VectorXd a;
    double centre = 0, scale = 1;

    double operator()(double u) const {
        const double t = (u - centre) / scale;
        double p = 0;
        for (Eigen::Index k = a.size(); k-- > 0;) p = p * t + a[k];
        return p;
    }

    // The coefficients of the same polynomial in powers of u: Horner's scheme run on polynomials,
    // q ← q·(u − centre)/scale + a_k.
    std::vector<double> powersOfU() const {
        const auto m = static_cast<size_t>(a.size() - 1);
        std::vector<double> c(m + 1, 0.0);
        c[0] = a[static_cast<Eigen::Index>(m)];
        for (size_t k = m, degree = 0; k-- > 0; ++degree) {
            for (size_t j = degree + 1; j > 0; --j) c[j] = (c[j - 1] - centre * c[j]) / scale;
            c[0] = a[static_cast<Eigen::Index>(k)] - centre * c[0] / scale;
        }
        return c;
    }
};

enum class FitOutcome { Done, OutOfRange, TooFewPoints };

struct Fitted {
    FitOutcome outcome = FitOutcome::Done;
    int64_t usable = 0;
    Polynomial p;
};

// Fits order m to the n points (x[i], y[i]).
Fitted fitPolynomial(const FitOp& o, const double* x, const double* y, int64_t n, int m) {
    Fitted f;
    // Pass 1: domain, usable points, and the span of u (ln is monotonic: take it of the ends).
    double lo = INFINITY, hi = -INFINITY;
    for (int64_t i = 0; i < n; ++i) {
        if ((o.logX && x[i] <= 0) || (o.logY && y[i] <= 0)) {
            f.outcome = FitOutcome::OutOfRange;
            return f;
        }
        if (std::isfinite(x[i]) && std::isfinite(y[i])) {
            ++f.usable;
            lo = std::min(lo, x[i]);
            hi = std::max(hi, x[i]);
        }
    }
    if (f.usable < m + 1) {
        f.outcome = FitOutcome::TooFewPoints;
        return f;
    }
    auto u = [&](double v) { return o.logX ? std::log(v) : v; };
    auto w = [&](double v) { return o.logY ? std::log(v) : v; };
    f.p.centre = 0.5 * u(lo) + 0.5 * u(hi);
    f.p.scale = hi > lo ? 0.5 * u(hi) - 0.5 * u(lo) : 1.0;
    if (!(f.p.scale > 0)) f.p.scale = 1.0;  // x-values so close that their logarithms coincide
    const double inverseScale = 1 / f.p.scale;

    // Pass 2: the top m + 1 rows of `rows` hold R and Qᵀw of the points so far; each block of
    // points is put under them and the whole triangularised again.
    constexpr Eigen::Index kBlock = 1024;
    const Eigen::Index terms = m + 1;
    Eigen::MatrixXd rows = Eigen::MatrixXd::Zero(terms + kBlock, terms + 1);
    Eigen::HouseholderQR<Eigen::MatrixXd> qr(rows.rows(), rows.cols());
    Eigen::Index filled = terms;
    auto fold = [&] {
        qr.compute(rows.topRows(filled));
        rows.topRows(terms) = qr.matrixQR().topRows(terms).triangularView<Eigen::Upper>();
        filled = terms;
    };
    for (int64_t i = 0; i < n; ++i) {
        if (!std::isfinite(x[i]) || !std::isfinite(y[i])) continue;
        const double t = (u(x[i]) - f.p.centre) * inverseScale;
        double power = 1;
        for (Eigen::Index k = 0; k < terms; ++k, power *= t) rows(filled, k) = power;
        rows(filled, terms) = w(y[i]);
        if (++filled == rows.rows()) fold();
    }
    if (filled > terms) fold();
    Eigen::CompleteOrthogonalDecomposition<Eigen::MatrixXd> solver(rows.topLeftCorner(terms, terms));
    f.p.a = solver.solve(rows.col(terms).head(terms));
    return f;
}

// The order argument, or nothing (reported) when it is outside 0 … kMaxOrder.
std::optional<int> orderArgument(const FuncArgs& args, const FuncInfo* info, MessageHandler& messages) {
    const int32_t order = truncateToInt32(args.scalar(1));
    if (order < 0 || order > kMaxOrder) {
        messages.error("Order must be from 0 to %d in function '%s'", kMaxOrder, info->name);
        return std::nullopt;
    }
    return order;
}

// The fit of argument 0's curve, or nothing when it failed (reported).
std::optional<Polynomial> fitArgument(const FuncArgs& args, const FuncInfo* info, MessageHandler& messages,
                                      const FitOp& o) {
    std::optional<int> order = orderArgument(args, info, messages);
    if (!order) return std::nullopt;
    const int64_t n = args.length(0);
    std::vector<double> scratch;
    const double* x = args.neededRefData(0, scratch, *info, messages);
    if (!x) return std::nullopt;
    Fitted f = fitPolynomial(o, x, args.data(0), n, *order);
    switch (f.outcome) {
        case FitOutcome::Done: return std::move(f.p);
        case FitOutcome::OutOfRange: messages.error("Argument out of range for function '%s'", info->name); break;
        case FitOutcome::TooFewPoints:
            messages.error("Too few points for order %d in function '%s': %d usable, %d needed", *order, info->name,
                           static_cast<long long>(f.usable), *order + 1);
            break;
    }
    return std::nullopt;
}

FUNC_ERROR coefficients(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                        Fit op) {
    std::optional<Polynomial> p = fitArgument(args, info, messages, kFits[static_cast<size_t>(op)]);
    if (!p) return FUNC_FAILED;
    std::vector<double> c = p->powersOfU();
    result->setType(VD_REAL, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    double* out = result->makeReal(static_cast<int64_t>(c.size()), RESULT_OWN, -1);
    if (!out) return FUNC_FAILED;
    std::copy(c.begin(), c.end(), out);
    return FUNC_OK;
}

template <Fit op>
FUNC_ERROR coefficientsHandler(WAVEX_HANDLER_PARAMS) {
    return coefficients(args, result, info, *messages, op);
}

FUNC_ERROR curveFitPlot(WAVEX_HANDLER_PARAMS) {
    const FitOp* o = &kFits[0];
    if (args.count() > 2) {
        const std::string_view word = args.string(2);
        auto found = std::find_if(std::begin(kFits), std::end(kFits), [&](const FitOp& f) { return iequals(word, f.kind); });
        if (found == std::end(kFits)) {
            messages->error("Unknown fit kind '%s' in function '%s'", word, info->name);
            return FUNC_FAILED;
        }
        o = found;
    }
    std::optional<Polynomial> p = fitArgument(args, info, *messages, *o);
    if (!p) return FUNC_FAILED;
    const int64_t n = args.length(0), total = args.totalLength(0);
    std::vector<double> scratch;
    const double* x = args.realRefData(0, scratch);
    result->setType(VD_REAL, args.refType(0));
    result->setPhysType(args.physType(0), args.refPhysType(0));
    double* out = result->makeReal(n, RESULT_LIKE_ARGS, total);
    if (n && !out) return FUNC_FAILED;
    for (int64_t i = 0; i < n; ++i) {
        const double v = (*p)(o->logX ? std::log(x[i]) : x[i]);
        out[i] = o->logY ? std::exp(v) : v;
    }
    return result->copyRefFromArgs(args, RESULT_LIKE_ARGS, total, 0) ? FUNC_OK : FUNC_FAILED;
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"CurveFit", {arg::Real.each(), arg::Real}, 2, coefficientsHandler<Fit::Poly>,
     {.signature = "CurveFit(v, order)",
      .summary = "The coefficients of the least-squares polynomial of y on x.",
      .returns = "order + 1 real values per run, c0 ... c_order (lowest power first), plain numbers "
                 "without x-values",
      .notes = "The order is truncated toward zero and must lie in 0 ... 50. Points whose x or y is NaN or "
               "infinite are left out; too few usable points fail. Data that cannot fix every "
               "coefficient (repeated x-values) gets the least-squares solution of least norm. v needs "
               "x-values.",
      .example = "CurveFit(XY([1, 3, 11, 31], [0, 1, 2, 3]), 3)"}},
    {"CurveFitLog", {arg::Real.each(), arg::Real}, 2, coefficientsHandler<Fit::Log>,
     {.signature = "CurveFitLog(v, order)",
      .summary = "The coefficients of the least-squares polynomial of ln y on ln x.",
      .returns = "order + 1 real values per run, lowest power first, plain numbers without x-values",
      .notes = "For a power law y = a·x^b order 1 gives [ln a, b]. Every x and y must be above 0 "
               "(else \"Argument out of range\"); otherwise as CurveFit.",
      .example = "CurveFitLog(XY([3, 12, 27], [1, 2, 3]), 1)"}},
    {"CurveFitLogX", {arg::Real.each(), arg::Real}, 2, coefficientsHandler<Fit::LogX>,
     {.signature = "CurveFitLogX(v, order)",
      .summary = "The coefficients of the least-squares polynomial of y on ln x.",
      .returns = "order + 1 real values per run, lowest power first, plain numbers without x-values",
      .notes = "Every x must be above 0 (else \"Argument out of range\"); otherwise as CurveFit.",
      .example = "CurveFitLogX(XY([2, 4.0794, 5.2958], [1, 2, 3]), 1)"}},
    {"CurveFitLogY", {arg::Real.each(), arg::Real}, 2, coefficientsHandler<Fit::LogY>,
     {.signature = "CurveFitLogY(v, order)",
      .summary = "The coefficients of the least-squares polynomial of ln y on x.",
      .returns = "order + 1 real values per run, lowest power first, plain numbers without x-values",
      .notes = "For y = a·e^(b·x) order 1 gives [ln a, b]. Every y must be above 0 (else \"Argument out "
               "of range\"); otherwise as CurveFit.",
      .example = "CurveFitLogY(XY([5, 8.2436, 13.5914], [0, 1, 2]), 1)"}},
    {"CurveFitPlot", {arg::Real.each(), arg::Real, arg::String}, 2, curveFitPlot,
     {.signature = "CurveFitPlot(v, order [, kind])",
      .summary = "The least-squares fit of v evaluated at v's own x-values.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .notes = "kind is 'poly' (default), 'logx', 'logy' or 'log' (any case), the fits of CurveFit, "
               "CurveFitLogX, CurveFitLogY and CurveFitLog; the ln y kinds give the exponential of the "
               "fitted polynomial. Points left out of the fit (NaN, infinite) still get a value.",
      .example = "CurveFitPlot(XY([0, 1, 1, 3], [0, 1, 2, 3]), 1)"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex
