// The integral of a sampled curve, or of its square, over a stretch of x: the routine behind
// Mean1, RMS1, RootSumOfSquares and SumNoise, and the averages and areas built on them.
//
// The curve is n points (x[i], y[i]) with x ascending. The stretch runs from `start` to `end`
// when they are given, else from the first to the last point. An end at or beyond the last x is
// taken as no end; a start before the first x as the first x. The y values at a given start and
// end are found by quadratic interpolation (support_FindYFromX, order 2), so the stretch need not
// begin or end on a point.
//
// Each piece between neighbouring points (xa, ya), (xb, yb) of the stretch adds
//   Mean mode:    (ya + yb) / 2 * (xb - xa)              the trapezoid;
//   Square mode:  (ya² + ya yb + yb²) / 3 * (xb - xa)    the exact integral of the square of the
//                                                        straight line between the points.
// The span is the x distance from the start of the stretch to its end.
//
// Outcomes, and the message and status (0 done; 1 reported, no value; 2 failed) callers give them
// (each message takes the calling function's name for its %s):
//   Done           no message, status 0;
//   StartAfterEnd  "Start is after end in '%s' function", status 2;
//   SameStartEnd   "Start and end are identical in '%s' function", status 2;
//   OutOfRange     "The x value specified for the '%s' function is out of range", status 1: the start
//                  or the end is not on the curve (beyond its x values, or NaN);
//   NonMonotonic   "Argument to '%s' function is non-monotonic", status 2: the x values reach the
//                  start more than once.
// An end reached more than once is not an error: the stretch then ends at the end x with the
// last point's y value.
#pragma once

#include <cstdint>
#include <optional>

namespace wavex {

enum class IntegralMode { Mean, Square };

enum class RangeOutcome { Done, StartAfterEnd, SameStartEnd, OutOfRange, NonMonotonic, Count };

struct RangeIntegral {
    RangeOutcome outcome = RangeOutcome::Done;
    double integral = 0;  // over the stretch; 0 for an empty or one-point curve
    double span = 0;      // end x - start x
};

// x must not be null. Linear in n.
RangeIntegral support_RangeIntegral(const double* y, const double* x, int64_t n, std::optional<double> start,
                                    std::optional<double> end, IntegralMode mode);

// The running average from the first point to each point, of the same pieces:
//   out[0] = y[0],  out[i] = I(0..i) / (x[i] - x[0])          Mean mode: the running mean;
//   out[0] = |y[0]|, out[i] = √(I(0..i) / (x[i] - x[0]))      Square mode: the running RMS;
// where I(0..i) adds the pieces between points 0 and i in the order given. x null: the x values
// are the indices 0, 1, .... Where x[i] equals x[0] (a vertical edge at the start) the average
// over no stretch is the value there, y[i] (|y[i]|). The x values are not checked for order: where
// they run back the pieces count negative, as in a signed integral, and a running mean square
// that turns negative has a NaN root. A NaN makes its point and every later one NaN. n may be 0.
// Linear in n; out must hold n values and may not overlap y or x.
void support_RunningAverage(const double* y, const double* x, int64_t n, IntegralMode mode, double* out);

// The message of an outcome (null for Done) and the status of the call it ends (0, 1 or 2).
const char* rangeOutcomeMessage(RangeOutcome outcome);
int rangeOutcomeStatus(RangeOutcome outcome);

}  // namespace wavex
