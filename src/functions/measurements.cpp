// The measurements engineers make on simulated waveforms: state levels, transitions and timing,
// distortion and noise of a sampled sine, and the margins of a loop's frequency response.
//
// Every function works on one run (division) at a time and gives one value, or one curve, per
// run. All need x-values ("Argument 1 in function '%s' has no reference (xvalues)" otherwise).
// Where a run has nothing to measure (no transition, no crossing, no two levels) its result is
// NaN (a curve: one point, NaN, at the run's first x-value), so that the runs stay aligned, and
// "Function '%s' found no %s" names what is missing and the run; the call still succeeds, so the
// host shows the message as a warning.
//
// Crossings are linear (support/transitions.hpp); reference levels are percentages of high − low
// above low, with [low, high] from the histogram method (StateLevels) unless given. Scalar
// arguments are the first value of their vector; `[]` means the default.
#include "support/fft.hpp"
#include "support/least_squares.hpp"
#include "support/transitions.hpp"
#include "wavex/array.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace wavex {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kDefaultBins = 100;
constexpr int kDefaultHarmonics = 10;
constexpr int kMaxHarmonics = 1000;

// ---- Shared pieces -----------------------------------------------------------------------------

// The run a per-run call works on, for messages: " in run 'R=300'", " in run 2" without a label,
// nothing for a value of one run.
std::string runName(const FuncArgs& args, int i) {
    const FuncArgs::View& w = args.view(i);
    if (w.vec->numDivisions() < 2) return "";
    const std::optional<std::string> label = w.vec->label(w.firstDivision);
    return label ? " in run '" + *label + "'" : " in run " + std::to_string(w.firstDivision + 1);
}

void warnNone(const FuncArgs& args, const FuncInfo* info, MessageHandler& messages, const char* what) {
    messages.error("Function '%s' found no %s%s", info->name, what, runName(args, 0));
}

// A curve per run: values over the x where each measured event starts, the x unit argument 0's.
void writeCurve(const FuncArgs& args, FuncResult* result, PhysType unit, const std::vector<double>& values,
                const std::vector<double>& at) {
    const auto n = static_cast<int64_t>(values.size());
    result->setType(VD_REAL, VD_REAL);
    result->setPhysType(unit, args.refPhysType(0));
    std::copy(values.begin(), values.end(), result->makeReal(n, RESULT_RESHAPED, -1));
    std::copy(at.begin(), at.end(), result->makeRealRef(n, RESULT_RESHAPED, -1));
    result->setRefName(args.refName(0));
}

// The curve of a run with nothing to measure: one NaN at its first x-value, and the warning.
FUNC_ERROR noCurve(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                   PhysType unit, const double* x, const char* what) {
    warnNone(args, info, messages, what);
    writeCurve(args, result, unit, {kNaN}, {args.length(0) ? x[0] : kNaN});
    return FUNC_OK;
}

FUNC_ERROR writeValue(FuncResult* result, PhysType unit, double value) {
    result->setPhysType(unit, units::NoRef);
    result->makeRealNoRef(1)[0] = value;
    return FUNC_OK;
}

FUNC_ERROR noValue(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                   PhysType unit, const char* what) {
    warnNone(args, info, messages, what);
    return writeValue(result, unit, kNaN);
}

// Argument i as [first, second] (two finite values, first below second) into a and b; left as
// they are when the argument is absent or []. False after a message.
bool readPair(const FuncArgs& args, int i, const FuncInfo* info, MessageHandler& messages, double& a, double& b) {
    if (args.count() <= i || args.length(i) == 0) return true;
    const double* v = args.data(i);
    if (args.length(i) != 2 || !std::isfinite(v[0]) || !std::isfinite(v[1]) || !(v[0] < v[1])) {
        messages.error("Argument %d of function '%s' must be two finite values, the lower first", i + 1, info->name);
        return false;
    }
    a = v[0];
    b = v[1];
    return true;
}

// An optional edge argument: +1 rising, -1 falling, 0 both.
bool readEdge(const FuncArgs& args, int i, const FuncInfo* info, MessageHandler& messages, int& edge) {
    if (args.count() <= i || args.length(i) == 0) return true;
    const double e = args.scalar(i);
    if (e != 1 && e != -1 && e != 0) {
        messages.error("Argument %d of function '%s' must be 1 (rising), -1 (falling) or 0 (both)", i + 1, info->name);
        return false;
    }
    edge = static_cast<int>(e);
    return true;
}

// The low and high state levels of a run, and the reference level `percent` % of the way up.
struct Levels {
    double low = kNaN, high = kNaN;
    double at(double percent) const { return low + percent / 100 * (high - low); }
};

// ---- StateLevels -------------------------------------------------------------------------------
//
// StateLevels(v [, bins]): [low, high] by the histogram method of support_StateLevels, bins
// (default 100) truncated toward zero, at least 2 ("Invalid number of bins in function '%s'").
// A run with fewer than two distinct finite values gives [NaN, NaN] and the warning.

FUNC_ERROR stateLevels(WAVEX_HANDLER_PARAMS) {
    const double bins = args.count() > 1 && args.length(1) ? std::trunc(args.scalar(1)) : kDefaultBins;
    if (!(bins >= 2 && bins <= 1e8)) {
        messages->error("Invalid number of bins in function '%s'", info->name);
        return FUNC_FAILED;
    }
    Levels l;
    if (!support_StateLevels(args.data(0), args.length(0), static_cast<int>(bins), &l.low, &l.high))
        warnNone(args, info, *messages, "two state levels");
    result->setPhysType(args.physType(0), units::NoRef);
    double* out = result->makeRealNoRef(2);
    out[0] = l.low;
    out[1] = l.high;
    return FUNC_OK;
}

// ---- RiseTime, FallTime, SlewRate, Overshoot, SettlingTime -------------------------------------
//
// Each transition between the low and high reference levels (support_Transitions; percents
// [lowPct, highPct], default [10, 90]) gives one value, over the x where it starts:
//   RiseTime      end − start of each rising transition              x unit
//   FallTime      the same for each falling transition                x unit
//   SlewRate      (high ref − low ref) / (end − start), negative      y unit / x unit
//                 for falling transitions, every transition
//   Overshoot     the largest excursion beyond the level a transition goes to, from its end to the
//                 start of the next transition (or the end of the data), in % of high − low; 0
//                 when it never passes the level                     %
//   SettlingTime  from the transition's 50 % crossing until v last enters the band (the final
//                 level ± tolerance % of high − low) before the next transition starts or the
//                 data end; NaN and a warning when v is outside the band when the data end or
//                 never enters it                                    x unit
// Arguments: RiseTime(v [, percents [, levels]]), likewise FallTime and SlewRate;
// Overshoot(v [, levels]); SettlingTime(v, tolerancePct [, levels]).

enum class Pulse { Rise, Fall, Slew, Overshoot, Settling, Count };

struct PulseOp {
    Pulse op;
    int percentsArg;  // -1: always 10 and 90 %
    int levelsArg;
    int edges;        // transitions measured: +1 rising, -1 falling, 0 both
    const char* none; // what a run without any lacks
};

constexpr PulseOp kPulses[] = {
    {Pulse::Rise, 1, 2, 1, "rising transition"},
    {Pulse::Fall, 1, 2, -1, "falling transition"},
    {Pulse::Slew, 1, 2, 0, "transition"},
    {Pulse::Overshoot, -1, 1, 0, "transition"},
    {Pulse::Settling, -1, 2, 0, "transition"},
};

static_assert(rowsInOrder(kPulses, &PulseOp::op), "row i holds measurement i");

// The largest excursion beyond the level the transition goes to, points first .. last.
double overshoot(const double* y, int64_t first, int64_t last, const Transition& t, const Levels& l) {
    double beyond = 0;
    for (int64_t i = first; i <= last; ++i) beyond = std::max(beyond, t.edge > 0 ? y[i] - l.high : l.low - y[i]);
    return beyond / (l.high - l.low) * 100;
}

// When v last enters the band around the final level of transition t after its 50 % crossing
// `mid`, looking at points up to `last` (the end of the data when `atEnd`, where v must be in the
// band); NaN when it does not.
double settledAt(const double* x, const double* y, const Crossing& mid, int64_t last, bool atEnd, double final,
                 double halfBand) {
    auto inside = [&](int64_t i) { return std::fabs(y[i] - final) <= halfBand; };
    int64_t e = last;
    if (!atEnd)
        while (e > mid.index && !inside(e)) --e;
    if (e <= mid.index || !inside(e)) return kNaN;
    int64_t s = e;
    while (s - 1 > mid.index && inside(s - 1)) --s;
    const int64_t a = s - 1;  // outside the band, or the point before the 50 % crossing
    if (inside(a)) return mid.x;
    const double edge = y[a] > final ? final + halfBand : final - halfBand;
    return std::max(mid.x, x[a] + (edge - y[a]) / (y[s] - y[a]) * (x[s] - x[a]));
}

FUNC_ERROR pulse(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                 Pulse op) {
    const PulseOp& o = kPulses[static_cast<size_t>(op)];
    std::vector<double> scratch;
    const double* x = args.neededRefData(0, scratch, *info, messages);
    if (!x) return FUNC_FAILED;
    const double* y = args.data(0);
    const int64_t n = args.length(0);
    double lowPct = 10, highPct = 90, tolerance = 0;
    Levels l;
    if ((o.percentsArg > 0 && !readPair(args, o.percentsArg, info, messages, lowPct, highPct)) ||
        !readPair(args, o.levelsArg, info, messages, l.low, l.high))
        return FUNC_FAILED;
    if (op == Pulse::Settling) {
        tolerance = args.scalar(1);
        if (!(tolerance > 0 && tolerance < 100)) {
            messages.error("The tolerance of function '%s' must be a percentage above 0 and below 100", info->name);
            return FUNC_FAILED;
        }
    }
    const PhysType xUnit = args.refPhysType(0);
    const PhysType unit = op == Pulse::Slew ? units::div(args.physType(0), xUnit)
                          : op == Pulse::Overshoot ? units::Number
                                                   : xUnit;
    if (std::isnan(l.low) && !support_StateLevels(y, n, kDefaultBins, &l.low, &l.high))
        return noCurve(args, result, info, messages, unit, x, "two state levels");
    const double lowRef = l.at(lowPct), highRef = l.at(highPct);
    const std::vector<Transition> found = support_Transitions(x, y, n, lowRef, highRef, o.edges);
    if (found.empty()) return noCurve(args, result, info, messages, unit, x, o.none);

    std::vector<Crossing> midRise, midFall;
    if (op == Pulse::Settling) {
        midRise = support_Crossings(x, y, n, l.at(50), 1);
        midFall = support_Crossings(x, y, n, l.at(50), -1);
    }
    std::vector<double> values(found.size()), at(found.size());
    bool unsettled = false;
    for (size_t k = 0; k < found.size(); ++k) {
        const Transition& t = found[k];
        const bool last = k + 1 == found.size();
        const int64_t until = last ? n - 1 : found[k + 1].start.index;
        at[k] = t.start.x;
        const double duration = t.end.x - t.start.x;
        switch (op) {
            case Pulse::Rise:
            case Pulse::Fall: values[k] = duration; break;
            case Pulse::Slew: values[k] = t.edge * (highRef - lowRef) / duration; break;
            case Pulse::Overshoot: values[k] = overshoot(y, t.end.index + 1, until, t, l); break;
            case Pulse::Settling: {
                const Crossing* mid = support_FirstFrom(t.edge > 0 ? midRise : midFall, t.start);
                const Crossing from = mid ? *mid : t.start;
                const double final = t.edge > 0 ? l.high : l.low;
                values[k] = settledAt(x, y, from, until, last, final, tolerance / 100 * (l.high - l.low)) - from.x;
                unsettled |= std::isnan(values[k]);
                break;
            }
            case Pulse::Count: break;
        }
    }
    if (unsettled) warnNone(args, info, messages, "settling into the band after a transition");
    writeCurve(args, result, unit, values, at);
    return FUNC_OK;
}

template <Pulse op>
FUNC_ERROR pulseHandler(WAVEX_HANDLER_PARAMS) {
    return pulse(args, result, info, *messages, op);
}

// ---- Delay -------------------------------------------------------------------------------------
//
// Delay(trigger, target, trigLevel, targLevel [, trigEdge [, targEdge]]): for each crossing of
// trigger through trigLevel (edge +1 rising, −1 falling, 0 both; default +1), the time to the first
// crossing of target through targLevel at or after it (targEdge defaults to trigEdge); a curve over
// the trigger crossings in the x unit. Both signals are taken a run at a time, together. A trigger
// crossing with no target crossing after it gives NaN and the warning.

FUNC_ERROR delay(WAVEX_HANDLER_PARAMS) {
    std::vector<double> scratchTrigger, scratchTarget;
    const double* xt = args.neededRefData(0, scratchTrigger, *info, *messages);
    if (!xt) return FUNC_FAILED;
    const double* xg = args.neededRefData(1, scratchTarget, *info, *messages);
    if (!xg) return FUNC_FAILED;
    int trigEdge = 1;
    if (!readEdge(args, 4, info, *messages, trigEdge)) return FUNC_FAILED;
    int targEdge = trigEdge;
    if (!readEdge(args, 5, info, *messages, targEdge)) return FUNC_FAILED;
    const PhysType unit = args.refPhysType(0);
    const auto triggers = support_Crossings(xt, args.data(0), args.length(0), args.scalar(2), trigEdge);
    if (triggers.empty()) return noCurve(args, result, info, *messages, unit, xt, "crossing of the trigger level");
    const auto targets = support_Crossings(xg, args.data(1), args.length(1), args.scalar(3), targEdge);

    std::vector<double> values(triggers.size()), at(triggers.size());
    size_t j = 0;
    for (size_t k = 0; k < triggers.size(); ++k) {
        while (j < targets.size() && targets[j].x < triggers[k].x) ++j;
        at[k] = triggers[k].x;
        values[k] = j < targets.size() ? targets[j].x - triggers[k].x : kNaN;
    }
    if (j == targets.size()) warnNone(args, info, *messages, "crossing of the target level after a trigger");
    writeCurve(args, result, unit, values, at);
    return FUNC_OK;
}

// ---- PulseWidth, DutyCycle, Frequency ----------------------------------------------------------
//
// Crossings of one level (default: the 50 % reference of StateLevels; NaN or [] too):
//   PulseWidth(v [, level])                  each rising crossing to the next falling one, x unit
//   DutyCycle(v [, level])                   pulse width / cycle time of each whole cycle (from a
//                                            rising crossing to the next), a ratio 0 … 1
//   Frequency(v [, level [, hysteresis]])    1 / the time between rising crossings, Hz for a
//                                            curve over seconds; with a hysteresis, a rising
//                                            crossing counts only after v has been below level −
//                                            hysteresis since the last one counted
// Each over the x of the rising crossing that starts the pulse or cycle.

enum class Cycle { Width, Duty, Frequency, Count };

struct CycleOp {
    Cycle op;
    const char* none;
};

constexpr CycleOp kCycles[] = {
    {Cycle::Width, "whole pulse"},
    {Cycle::Duty, "whole cycle"},
    {Cycle::Frequency, "whole cycle"},
};

static_assert(rowsInOrder(kCycles, &CycleOp::op), "row i holds measurement i");

FUNC_ERROR cycle(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                 Cycle op) {
    std::vector<double> scratch;
    const double* x = args.neededRefData(0, scratch, *info, messages);
    if (!x) return FUNC_FAILED;
    const double* y = args.data(0);
    const int64_t n = args.length(0);
    const PhysType xUnit = args.refPhysType(0);
    const PhysType unit = op == Cycle::Width ? xUnit : op == Cycle::Duty ? units::Number : units::div(units::Number, xUnit);
    double level = args.count() > 1 ? args.scalar(1) : kNaN;
    if (std::isnan(level)) {
        Levels l;
        if (!support_StateLevels(y, n, kDefaultBins, &l.low, &l.high))
            return noCurve(args, result, info, messages, unit, x, "two state levels");
        level = l.at(50);
    }
    std::vector<Crossing> rising = support_Crossings(x, y, n, level, 1);
    const double hysteresis = args.count() > 2 ? args.scalar(2) : 0;
    if (hysteresis > 0) support_KeepAfterDip(y, n, level - hysteresis, rising);
    const std::vector<Crossing> falling = op == Cycle::Frequency ? std::vector<Crossing>{}
                                                                 : support_Crossings(x, y, n, level, -1);

    std::vector<double> values, at;
    for (size_t k = 0; k < rising.size(); ++k) {
        const Crossing& r = rising[k];
        const Crossing* f = support_FirstFrom(falling, r);
        if (op == Cycle::Width) {
            if (!f) break;
            values.push_back(f->x - r.x);
        } else {
            if (k + 1 == rising.size()) break;
            const double period = rising[k + 1].x - r.x;
            values.push_back(op == Cycle::Frequency ? 1 / period
                             : f && f->x <= rising[k + 1].x ? (f->x - r.x) / period
                                                            : kNaN);
        }
        at.push_back(r.x);
    }
    if (values.empty()) return noCurve(args, result, info, messages, unit, x, kCycles[static_cast<size_t>(op)].none);
    writeCurve(args, result, unit, values, at);
    return FUNC_OK;
}

template <Cycle op>
FUNC_ERROR cycleHandler(WAVEX_HANDLER_PARAMS) {
    return cycle(args, result, info, *messages, op);
}

// ---- THD, SINAD, SNR, ENOB, SFDR ---------------------------------------------------------------
//
// v is a sine of fundamental f0 (Hz for a curve over seconds) sampled over time; results are
// plain numbers, one per run:
//   THD(v, f0 [, harmonics])   √(Σ_{k=2..H} |c_k|²) / |c_1| in %, the harmonics of support_Harmonics
//                              over the last whole period (as Fourier gives them), H default 10
//   SINAD(v, f0)               10·log10(fundamental power / mean squared residual) in dB, from the
//                              least-squares fit of DC + cos + sin at f0 over the whole record
//   SNR(v, f0 [, harmonics])   the same with harmonics 2 … H (default 10) fitted out too
//   ENOB(v, f0)                (SINAD − 1.76) / 6.02 bits
//   SFDR(v, f0)                dB from the fundamental's peak in fft's spectrum (default window)
//                              to the largest other peak, DC and ±3 bins around the fundamental
//                              left out
// f0 not above 0 fails ("The fundamental frequency of function '%s' must be above 0"); a run
// shorter than one period, or sampled too slowly for f0 (f0 above half the mean sample rate),
// gives NaN and a warning.

enum class Sine { Sinad, Snr, Enob, Count };

struct SineOp {
    Sine op;
    bool harmonics;  // fit harmonics 2 … H as well
    bool bits;       // give the effective number of bits
};

constexpr SineOp kSines[] = {
    {Sine::Sinad, false, false},
    {Sine::Snr, true, false},
    {Sine::Enob, false, true},
};

static_assert(rowsInOrder(kSines, &SineOp::op), "row i holds measurement i");

// The checks every distortion measurement makes. False after a message: `failed` tells whether
// the call fails (bad arguments) or the run gives NaN (a warning).
struct Record {
    const double* x = nullptr;
    const double* y = nullptr;
    int64_t n = 0;
    double f0 = 0;
    int harmonics = kDefaultHarmonics;
};

bool readRecord(const FuncArgs& args, const FuncInfo* info, MessageHandler& messages, int harmonicsArg,
                std::vector<double>& scratch, Record& r, bool& failed) {
    failed = true;
    r.x = args.neededRefData(0, scratch, *info, messages);
    if (!r.x) return false;
    r.y = args.data(0);
    r.n = args.length(0);
    r.f0 = args.scalar(1);
    if (!(r.f0 > 0) || std::isinf(r.f0)) {
        messages.error("The fundamental frequency of function '%s' must be above 0", info->name);
        return false;
    }
    if (harmonicsArg > 0 && args.count() > harmonicsArg && args.length(harmonicsArg)) {
        const double h = std::trunc(args.scalar(harmonicsArg));
        if (!(h >= 2 && h <= kMaxHarmonics)) {
            messages.error("The number of harmonics of function '%s' must be from 2 to %d", info->name, kMaxHarmonics);
            return false;
        }
        r.harmonics = static_cast<int>(h);
    }
    failed = false;
    const double span = r.n > 1 ? r.x[r.n - 1] - r.x[0] : 0;
    if (!(span >= (1 - 1e-9) / r.f0) || r.n < 3) {
        messages.error("Function '%s' needs a whole period of the fundamental (%g) and has %g%s", info->name,
                       1 / r.f0, span, runName(args, 0));
        return false;
    }
    const double nyquist = static_cast<double>(r.n - 1) / span / 2;
    if (r.f0 > nyquist) {
        messages.error("The fundamental %g of function '%s' is above half the sample rate (%g)%s", r.f0, info->name,
                       nyquist, runName(args, 0));
        return false;
    }
    return true;
}

FUNC_ERROR thd(WAVEX_HANDLER_PARAMS) {
    std::vector<double> scratch;
    Record r;
    bool failed;
    if (!readRecord(args, info, *messages, 2, scratch, r, failed))
        return failed ? FUNC_FAILED : writeValue(result, units::Number, kNaN);
    const int64_t count = r.harmonics + 1;
    std::vector<Complex> c(static_cast<size_t>(count));
    const double period = 1 / r.f0, start = r.x[r.n - 1] - period;
    // Only the last period and the points its interpolation reaches back to: found by bisection,
    // so the work does not grow with the record.
    const int64_t from = std::max<int64_t>(std::upper_bound(r.x, r.x + r.n, start) - r.x - 3, 0);
    support_Harmonics(r.y + from, r.x + from, r.n - from, r.f0, start, 2,
                      support_HarmonicPoints(std::max<int64_t>(sp_GetIntOption("InterpPts", 1024), 2 * count)),
                      c.data(), count);
    double power = 0;
    for (size_t k = 2; k < c.size(); ++k) power += std::norm(c[k]);
    if (!(std::abs(c[1]) > 0)) return noValue(args, result, info, *messages, units::Number, "fundamental");
    return writeValue(result, units::Number, std::sqrt(power) / std::abs(c[1]) * 100);
}

// The step of evenly spaced x-values (each within 1e-8 of a step of its place on the grid, so the
// phases a rotation gives stay within 1e-7 radians at f0 up to half the sample rate), else 0.
double evenStep(const double* x, int64_t n) {
    const double step = (x[n - 1] - x[0]) / static_cast<double>(n - 1);
    bool even = step > 0;
    for (int64_t i = 0; i < n && even; i += 1024) {
        const int64_t end = std::min(i + 1024, n);
        double worst = 0;
        for (int64_t j = i; j < end; ++j) worst = std::max(worst, std::fabs(x[j] - x[0] - static_cast<double>(j) * step));
        even = worst <= 1e-8 * step;
    }
    return even ? step : 0;
}

FUNC_ERROR sineFit(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                   Sine op) {
    const SineOp& o = kSines[static_cast<size_t>(op)];
    std::vector<double> scratch;
    Record r;
    bool failed;
    if (!readRecord(args, info, messages, o.harmonics ? 2 : -1, scratch, r, failed))
        return failed ? FUNC_FAILED : writeValue(result, units::Number, kNaN);
    const int harmonics = o.harmonics ? r.harmonics : 1;
    const int terms = 1 + 2 * harmonics;
    LeastSquares fit(terms);
    int64_t used = 0;
    const double step = evenStep(r.x, r.n);
    Complex turn, rotation = support_Cycles(r.f0 * step);
    for (int64_t i = 0; i < r.n; ++i) {
        // e^(2πi·f0·(x − x0)): on evenly spaced points by rotation, exact again every 1024 points.
        turn = step > 0 && i % 1024 != 0 ? turn * rotation
                                         : support_Cycles(r.f0 * (step > 0 ? static_cast<double>(i) * step : r.x[i] - r.x[0]));
        if (!std::isfinite(r.y[i]) || !std::isfinite(r.x[i])) continue;
        double* row = fit.row();
        row[0] = 1;
        Complex z = turn;
        for (int k = 1; k <= harmonics; ++k, z *= turn) {
            row[2 * k - 1] = z.real();
            row[2 * k] = z.imag();
        }
        row[terms] = r.y[i];
        fit.add();
        ++used;
    }
    if (used <= terms) return noValue(args, result, info, messages, units::Number, "samples enough for the fit");
    double residual = 0;
    const std::vector<double> a = fit.solve(&residual);
    const double signal = (a[1] * a[1] + a[2] * a[2]) / 2;
    const double sinad = 10 * std::log10(signal / (residual / static_cast<double>(used)));
    return writeValue(result, units::Number, o.bits ? (sinad - 1.76) / 6.02 : sinad);
}

template <Sine op>
FUNC_ERROR sineHandler(WAVEX_HANDLER_PARAMS) {
    return sineFit(args, result, info, *messages, op);
}

FUNC_ERROR sfdr(WAVEX_HANDLER_PARAMS) {
    std::vector<double> scratch;
    Record r;
    bool failed;
    if (!readRecord(args, info, *messages, -1, scratch, r, failed))
        return failed ? FUNC_FAILED : writeValue(result, units::Number, kNaN);
    const size_t N = fftSize(static_cast<size_t>(r.n)), half = N / 2;
    Array<Complex> spectrum(half);
    realSpectrum(r.y, static_cast<size_t>(r.n), N, {1, 1}, 2.0 / static_cast<double>(N), spectrum.data());
    const double df = 1 / ((r.x[1] - r.x[0]) * static_cast<double>(N));
    const auto bin = static_cast<int64_t>(std::llround(r.f0 / df));
    // Squared magnitudes, compared as they are: the roots are taken of the two peaks alone.
    auto power = [&](int64_t k) { return std::norm(spectrum[static_cast<size_t>(k)]); };
    double fundamental = 0, spur = 0;
    const auto last = static_cast<int64_t>(half) - 1;
    for (int64_t k = std::max<int64_t>(bin - 3, 1); k <= std::min(bin + 3, last); ++k)
        fundamental = std::max(fundamental, power(k));
    double before = power(0), here = last > 0 ? power(1) : 0;
    for (int64_t k = 1; k < last; ++k) {
        const double after = power(k + 1);
        if (here > spur && here > before && here >= after && std::abs(k - bin) > 3) spur = here;
        before = here;
        here = after;
    }
    if (!(spur > 0) || !(fundamental > 0)) return noValue(args, result, info, *messages, units::Number, "spur");
    return writeValue(result, units::Number, 10 * std::log10(fundamental / spur));
}

// ---- Bandwidth, UnityGainFrequency, PhaseMargin, GainMargin ------------------------------------
//
// h is a complex frequency response over frequency; its gain in dB (20·log10|h|) and its phase in
// degrees (unwrapped from the first point's, in (−180, 180]) are interpolated linearly over
// log10 f (over f where a frequency is not above 0). "Falls through" a level: at or above it at
// one point and below it at the next.
//   Bandwidth(h [, dropDb])   the first frequency where the gain falls through its first value −
//                             dropDb (default 3)
//   UnityGainFrequency(h)     the first frequency where the gain falls through 0 dB
//   PhaseMargin(h)            180 + the phase at the unity-gain frequency, degrees
//   GainMargin(h)             − the gain where the phase first falls through −180 degrees, dB
// Real data fail ("Function '%s' needs a complex frequency response"); a response that never
// falls through the level gives NaN and the warning.

enum class Response { Bandwidth, Unity, PhaseMargin, GainMargin, Count };

struct ResponseOp {
    Response op;
    bool byPhase;      // the phase falls through the level, not the gain
    const char* none;
};

constexpr ResponseOp kResponses[] = {
    {Response::Bandwidth, false, "fall of the gain by the drop"},
    {Response::Unity, false, "fall of the gain through 0 dB"},
    {Response::PhaseMargin, false, "fall of the gain through 0 dB"},
    {Response::GainMargin, true, "fall of the phase through -180 degrees"},
};

static_assert(rowsInOrder(kResponses, &ResponseOp::op), "row i holds measurement i");

struct ResponsePoint {
    double f = kNaN, gain = kNaN, phase = kNaN;
};

constexpr double kDegrees = 180 / std::numbers::pi;

double gainDb(Complex h) { return 10 * std::log10(std::norm(h)); }

// The phase of h[i] in degrees unwrapped from the first point's, arg(h[i]) + 360·turns, walked
// point by point without an arctangent: `turns` changes where h passes the negative real axis
// between two points, down by one as the phase falls through an odd multiple of 180 degrees (the
// chord from h[i] to h[i + 1] meets the real axis left of 0, clockwise), up by one as it rises.
// This is the unwrapping that takes the shorter way round between neighbouring points.
struct PhaseWalk {
    const Complex* h;
    int64_t i = 0;
    int turns = 0;

    static bool upper(Complex z) { return z.imag() > 0 || (z.imag() == 0 && z.real() < 0); }  // arg in (0, 180]
    void step() {
        const Complex a = h[i], b = h[++i];
        if (upper(a) == upper(b)) return;
        const double cross = a.real() * b.imag() - a.imag() * b.real();
        if (cross / (b.imag() - a.imag()) < 0) turns += cross < 0 ? -1 : 1;
    }
    double phase() const { return std::arg(h[i]) * kDegrees + 360.0 * turns; }
    // The phase is below −180 degrees.
    bool belowHalfTurn() const { return turns < -1 || (turns == -1 && !(h[i].imag() == 0 && h[i].real() < 0)); }
};

// The point a fraction s of the way from point i to i + 1, over log10 f (over f where a
// frequency is not above 0); the phase only when asked for.
ResponsePoint between(const double* f, const Complex* h, int64_t i, double s, bool withPhase) {
    const bool logScale = f[i] > 0 && f[i + 1] > 0;
    const double u0 = logScale ? std::log10(f[i]) : f[i], u1 = logScale ? std::log10(f[i + 1]) : f[i + 1];
    const double u = u0 + s * (u1 - u0);
    const double g0 = gainDb(h[i]), g1 = gainDb(h[i + 1]);
    ResponsePoint p{logScale ? std::pow(10, u) : u, g0 + s * (g1 - g0), kNaN};
    if (withPhase) {
        PhaseWalk w{h};
        while (w.i < i) w.step();
        const double p0 = w.phase();
        w.step();
        p.phase = p0 + s * (w.phase() - p0);
    }
    return p;
}

// The first place where the gain falls through `level` dB (NaN: the first point's gain less
// `drop`), with the gain and (when `withPhase`) the phase interpolated there; NaN f when there is
// none. The gain is searched on |h|² against the level's power, so only the points of the
// crossing take a logarithm.
ResponsePoint gainFall(const Complex* h, const double* f, int64_t n, double level, double drop, bool withPhase) {
    if (n < 2) return {};
    if (std::isnan(level)) level = gainDb(h[0]) - drop;
    const double power = std::pow(10, level / 10);
    int64_t i = 0;
    while (i + 1 < n && !(std::norm(h[i]) >= power && std::norm(h[i + 1]) < power)) ++i;
    if (i + 1 >= n) return {};
    const double g0 = gainDb(h[i]), g1 = gainDb(h[i + 1]);
    return between(f, h, i, std::clamp((level - g0) / (g1 - g0), 0.0, 1.0), withPhase);
}

// The first place where the phase falls through −180 degrees, with the gain interpolated there.
ResponsePoint halfTurnFall(const Complex* h, const double* f, int64_t n) {
    PhaseWalk w{h};
    for (bool below = w.belowHalfTurn(); w.i + 1 < n;) {
        const int turnsBefore = w.turns;
        w.step();
        const bool wasBelow = below;
        below = w.belowHalfTurn();
        if (wasBelow || !below) continue;
        const int64_t i = w.i - 1;
        const double p0 = std::arg(h[i]) * kDegrees + 360.0 * turnsBefore, p1 = w.phase();
        return between(f, h, i, std::clamp((-180 - p0) / (p1 - p0), 0.0, 1.0), false);
    }
    return {};
}

FUNC_ERROR response(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                    Response op) {
    const ResponseOp& o = kResponses[static_cast<size_t>(op)];
    std::vector<double> scratch;
    const double* f = args.neededRefData(0, scratch, *info, messages);
    if (!f) return FUNC_FAILED;
    const Complex* h = args.complexData(0);
    if (!h) {
        messages.error("Function '%s' needs a complex frequency response", info->name);
        return FUNC_FAILED;
    }
    double drop = 3;
    if (op == Response::Bandwidth && args.count() > 1 && args.length(1)) {
        drop = args.scalar(1);
        if (!(drop > 0) || std::isinf(drop)) {
            messages.error("The drop of function '%s' must be above 0 dB", info->name);
            return FUNC_FAILED;
        }
    }
    const PhysType unit = op == Response::Bandwidth || op == Response::Unity ? args.refPhysType(0) : units::Number;
    const int64_t n = args.length(0);
    const ResponsePoint p = o.byPhase ? halfTurnFall(h, f, n)
                                      : gainFall(h, f, n, op == Response::Bandwidth ? kNaN : 0, drop,
                                                 op == Response::PhaseMargin);
    if (std::isnan(p.f)) return noValue(args, result, info, messages, unit, o.none);
    switch (op) {
        case Response::PhaseMargin: return writeValue(result, unit, 180 + p.phase);
        case Response::GainMargin: return writeValue(result, unit, -p.gain);
        default: return writeValue(result, unit, p.f);
    }
}

template <Response op>
FUNC_ERROR responseHandler(WAVEX_HANDLER_PARAMS) {
    return response(args, result, info, *messages, op);
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"Bandwidth", {arg::Curve.each(), arg::Real}, 1, responseHandler<Response::Bandwidth>,
     {.signature = "Bandwidth(h [, dropDb])",
      .summary = "The first frequency where the gain falls dropDb below its value at the first "
                 "point.",
      .returns = "a number per run, in h's x unit (Hz)",
      .notes = "dropDb defaults to 3. h is a complex response over frequency; gain in dB "
               "interpolated linearly over log10 f. Real data fail; a gain that never falls that "
               "far is NaN with a warning naming the run.",
      .example = "f = 10^(vector(401)/100); f = XY(f, f); Bandwidth(1/(1 + (0, 1)*f/1k))"}},
    {"Delay", {arg::Real.each(), arg::Real.each(), arg::Real, arg::Real, arg::Real, arg::Real}, 4, delay,
     {.signature = "Delay(trigger, target, trigLevel, targLevel [, trigEdge [, targEdge]])",
      .summary = "For each crossing of the trigger level, the time to the next crossing of the "
                 "target level.",
      .returns = "a curve per run over the trigger crossings, in the x unit",
      .notes = "Edges: 1 rising (trigEdge's default), -1 falling, 0 both; targEdge defaults to "
               "trigEdge. Crossings are linear; the target crossing may be at the trigger time. "
               "Both signals step through their runs together. A trigger without a target "
               "crossing after it gives NaN with a warning.",
      .example = "Delay(XY([0, 1, 1, 0, 0, 1], [0, 1, 2, 3, 4, 5]), XY([0, 0, 1, 1, 0, 0, 1], "
                 "[0, 1, 2, 3, 4, 5, 6]), 0.5, 0.5)"}},
    {"DutyCycle", {arg::Real.each(), arg::Real}, 1, cycleHandler<Cycle::Duty>,
     {.signature = "DutyCycle(v [, level])",
      .summary = "Pulse width over cycle time for each whole cycle, from one rising crossing of "
                 "the level to the next.",
      .returns = "a curve per run of ratios 0 to 1, over the start of each cycle",
      .notes = "level defaults to the 50 % reference of StateLevels. Crossings are linear. A run "
               "without a whole cycle is NaN with a warning naming the run.",
      .example = "DutyCycle(XY([0, 1, 1, 0, 0, 1, 1, 0], [0, 1, 2, 3, 5, 6, 7, 8]))"}},
    {"ENOB", {arg::Real.each(), arg::Real}, 2, sineHandler<Sine::Enob>,
     {.signature = "ENOB(v, f0)",
      .summary = "Effective number of bits of a sampled sine: (SINAD - 1.76) / 6.02.",
      .returns = "a number per run (bits)",
      .notes = "See SINAD. f0 must be above 0; a run shorter than one period, or f0 above half "
               "the sample rate, is NaN with a warning.",
      .example = "t = XY(vector(1001)*1u, vector(1001)*1u); ENOB(sin(2*pi*2k*t) + "
                 "0.01*sin(2*pi*4k*t), 2k)"}},
    {"FallTime", {arg::Real.each(), arg::Real, arg::Real}, 1, pulseHandler<Pulse::Fall>,
     {.signature = "FallTime(v [, [lowPct, highPct] [, [low, high]]])",
      .summary = "The duration of each falling transition between the reference levels.",
      .returns = "a curve per run in the x unit, over where each transition leaves the high "
                 "reference",
      .notes = "Percents default to [10, 90] of high - low above low; [low, high] defaults to "
               "StateLevels. A transition runs from the last falling crossing of the high "
               "reference to the next falling crossing of the low one. Crossings are linear. No "
               "transition: NaN with a warning naming the run.",
      .example = "FallTime(XY([1, 1, 0, 0], [0, 1, 3, 4]), [10, 90], [0, 1])"}},
    {"Frequency", {arg::Real.each(), arg::Real, arg::Real}, 1, cycleHandler<Cycle::Frequency>,
     {.signature = "Frequency(v [, level [, hysteresis]])",
      .summary = "1 / the period of each cycle between rising crossings of the level.",
      .returns = "a curve per run in 1 / the x unit (Hz), over the start of each cycle",
      .notes = "level defaults to the 50 % reference of StateLevels. With a hysteresis above 0 a "
               "crossing counts only after v has been below level - hysteresis since the last "
               "one. Crossings are linear.",
      .example = "Frequency(XY([0, 1, 1, 0, 0, 1, 1, 0], [0, 1, 2, 3, 5, 6, 7, 8]))"}},
    {"GainMargin", {arg::Curve.each()}, 1, responseHandler<Response::GainMargin>,
     {.signature = "GainMargin(h)",
      .summary = "Minus the gain in dB where the phase of a loop gain first falls through -180 "
                 "degrees.",
      .returns = "a number per run (dB)",
      .notes = "h is a complex response over frequency; phase unwrapped from the first point's, "
               "gain and phase interpolated linearly over log10 f. A phase that never falls "
               "through -180 degrees is NaN with a warning.",
      .example = "f = 10^(vector(601)/100); f = XY(f, f); GainMargin(2/(1 + (0, 1)*f/1k)^3)"}},
    {"Overshoot", {arg::Real.each(), arg::Real}, 1, pulseHandler<Pulse::Overshoot>,
     {.signature = "Overshoot(v [, [low, high]])",
      .summary = "The largest excursion beyond the level each transition goes to, in % of high - "
                 "low.",
      .returns = "a curve per run (%), over where each transition starts",
      .notes = "Measured from the transition's end (90 % or 10 %) to the start of the next "
               "transition or the end of the data; 0 when v never passes the level. [low, high] "
               "defaults to StateLevels.",
      .example = "Overshoot(XY([0, 0, 1.2, 0.9, 1, 1], [0, 1, 2, 3, 4, 5]), [0, 1])"}},
    {"PhaseMargin", {arg::Curve.each()}, 1, responseHandler<Response::PhaseMargin>,
     {.signature = "PhaseMargin(h)",
      .summary = "180 + the phase in degrees of a loop gain where its gain first falls through 0 "
                 "dB.",
      .returns = "a number per run (degrees)",
      .notes = "h is a complex response over frequency; phase unwrapped from the first point's, "
               "interpolated linearly over log10 f. No unity-gain crossing: NaN with a warning.",
      .example = "f = 10^(vector(601)/100); f = XY(f, f); PhaseMargin(1e4/((1 + (0, 1)*f/10)*(1 "
                 "+ (0, 1)*f/10k)))"}},
    {"PulseWidth", {arg::Real.each(), arg::Real}, 1, cycleHandler<Cycle::Width>,
     {.signature = "PulseWidth(v [, level])",
      .summary = "The time from each rising crossing of the level to the next falling one.",
      .returns = "a curve per run in the x unit, over the rising crossings",
      .notes = "level defaults to the 50 % reference of StateLevels. Crossings are linear. No "
               "whole pulse: NaN with a warning naming the run.",
      .example = "PulseWidth(XY([0, 1, 1, 0, 0, 1, 1, 0], [0, 1, 2, 3, 5, 6, 7, 8]))"}},
    {"RiseTime", {arg::Real.each(), arg::Real, arg::Real}, 1, pulseHandler<Pulse::Rise>,
     {.signature = "RiseTime(v [, [lowPct, highPct] [, [low, high]]])",
      .summary = "The duration of each rising transition between the reference levels.",
      .returns = "a curve per run in the x unit, over where each transition leaves the low "
                 "reference",
      .notes = "Percents default to [10, 90] of high - low above low; [low, high] defaults to "
               "StateLevels. A transition runs from the last rising crossing of the low reference "
               "to the first rising crossing of the high one after it; ringing back through the "
               "high reference is no new transition. Crossings are linear. No transition: NaN "
               "with a warning naming the run.",
      .example = "RiseTime(XY([0, 0, 1, 1], [0, 1, 2, 3]), [10, 90], [0, 1])"}},
    {"SFDR", {arg::Real.each(), arg::Real}, 2, sfdr,
     {.signature = "SFDR(v, f0)",
      .summary = "dB from the fundamental's peak in fft's spectrum to the largest other peak.",
      .returns = "a number per run (dB)",
      .notes = "fft's default window; DC and 3 bins on either side of the fundamental are left "
               "out. f0 must be above 0; a run shorter than one period, or f0 above half the "
               "sample rate, is NaN with a warning.",
      .example = "t = XY(vector(1024)/1024, vector(1024)/1024); SFDR(sin(2*pi*64*t) + "
                 "0.01*sin(2*pi*192*t), 64)"}},
    {"SINAD", {arg::Real.each(), arg::Real}, 2, sineHandler<Sine::Sinad>,
     {.signature = "SINAD(v, f0)",
      .summary = "Signal to noise and distortion of a sampled sine, in dB.",
      .returns = "a number per run (dB)",
      .notes = "DC + cos + sin at f0 fitted by least squares over the whole record; 10 "
               "log10(fundamental power / mean squared residual). Points with NaN are left out. "
               "f0 must be above 0.",
      .example = "t = XY(vector(1001)*1u, vector(1001)*1u); SINAD(sin(2*pi*2k*t) + "
                 "0.01*sin(2*pi*4k*t), 2k)"}},
    {"SNR", {arg::Real.each(), arg::Real, arg::Real}, 2, sineHandler<Sine::Snr>,
     {.signature = "SNR(v, f0 [, harmonics])",
      .summary = "Signal to noise of a sampled sine in dB, harmonics 2 to H fitted out.",
      .returns = "a number per run (dB)",
      .notes = "As SINAD with harmonics 2 to H (default 10, at most 1000) in the fit.",
      .example = "t = XY(vector(1001)*1u, vector(1001)*1u); SNR(sin(2*pi*2k*t) + "
                 "0.01*sin(2*pi*4k*t) + 0.001*sin(2*pi*37.3k*t), 2k)"}},
    {"SettlingTime", {arg::Real.each(), arg::Real, arg::Real}, 2, pulseHandler<Pulse::Settling>,
     {.signature = "SettlingTime(v, tolerancePct [, [low, high]])",
      .summary = "For each transition, the time from its 50 % crossing until v last enters the "
                 "band about its final level.",
      .returns = "a curve per run in the x unit, over where each transition starts",
      .notes = "The band is the final level +- tolerancePct % of high - low; v must stay in it "
               "until the next transition starts or the data end, else NaN with a warning. [low, "
               "high] defaults to StateLevels.",
      .example = "SettlingTime(XY([0, 0, 1.2, 0.9, 1, 1], [0, 1, 2, 3, 4, 5]), 5, [0, 1])"}},
    {"SlewRate", {arg::Real.each(), arg::Real, arg::Real}, 1, pulseHandler<Pulse::Slew>,
     {.signature = "SlewRate(v [, [lowPct, highPct] [, [low, high]]])",
      .summary = "(high reference - low reference) / duration of every transition, in time order.",
      .returns = "a curve per run in y unit / x unit (V/s), negative for falling transitions",
      .notes = "Transitions as for RiseTime and FallTime.",
      .example = "SlewRate(XY([0, 0, 1, 1, 0], [0, 1, 2, 3, 5]), [10, 90], [0, 1])"}},
    {"StateLevels", {arg::Real.each(), arg::Real}, 1, stateLevels,
     {.signature = "StateLevels(v [, bins])",
      .summary = "The low and high levels of a two-level signal by the histogram method.",
      .returns = "[low, high] per run, in v's unit",
      .notes = "bins (default 100, at least 2) equal bins over the finite range; low is the "
               "centre of the fullest bin of the lower half, high of the upper half; ties go to "
               "the outer bin. Fewer than two distinct values: NaN with a warning.",
      .example = "StateLevels(XY([0, 0.1, 0, 4.9, 5, 5, 0], [0, 1, 2, 3, 4, 5, 6]))"}},
    {"THD", {arg::Real.each(), arg::Real, arg::Real}, 2, thd,
     {.signature = "THD(v, f0 [, harmonics])",
      .summary = "Total harmonic distortion in %, from the harmonics of the last whole period.",
      .returns = "a number per run (%)",
      .notes = "sqrt(sum of |c_k|^2, k = 2 to H) / |c_1| with the harmonics Fourier computes over "
               "the last period; H defaults to 10. f0 must be above 0; a run shorter than one "
               "period, or f0 above half the sample rate, is NaN with a warning.",
      .example = "t = XY(vector(1001)*1u, vector(1001)*1u); THD(sin(2*pi*2k*t) + "
                 "0.1*sin(2*pi*4k*t), 2k)"}},
    {"UnityGainFrequency", {arg::Curve.each()}, 1, responseHandler<Response::Unity>,
     {.signature = "UnityGainFrequency(h)",
      .summary = "The first frequency where the gain of h falls through 0 dB.",
      .returns = "a number per run, in h's x unit (Hz)",
      .notes = "h is a complex response over frequency; gain interpolated linearly over log10 f. "
               "No crossing: NaN with a warning naming the run.",
      .example = "f = 10^(vector(401)/100); f = XY(f, f); UnityGainFrequency(100/(1 + (0, "
                 "1)*f/100))"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex
