// Crossing lists and the transitions between two reference levels: the searches behind the pulse
// and timing measurements (RiseTime, Delay, PulseWidth, ...) and CyclePeriod.
//
// A crossing is found by support_FindYFromX, with its rules for points on the level and for NaN
// (a NaN breaks the curve). The lists here are in the order of the curve.
#pragma once

#include <cstdint>
#include <vector>

namespace wavex {

struct Crossing {
    double x;       // where the curve reaches the level
    int64_t index;  // the point at or before it: i for a crossing between points i and i + 1
};

// The crossings of `level` by the curve (x[i], y[i]), i < n, in its order: rising ones (direction
// +1), falling ones (-1) or both (0), x found by the interpolation of `order` (1: linear, as the
// measurements take them).
std::vector<Crossing> support_Crossings(const double* x, const double* y, int64_t n, double level, int direction,
                                        int order = 1);

// Keeps the rising crossings that come after y has been below `below` since the last crossing
// kept (since the start of the data for the first): noise about the level makes no extra crossings.
void support_KeepAfterDip(const double* y, int64_t n, double below, std::vector<Crossing>& rising);

// The first crossing of `list` at or after `from`, or null.
const Crossing* support_FirstFrom(const std::vector<Crossing>& list, const Crossing& from);

// A transition between the reference levels low < high. A rising one runs from the last rising
// crossing of low to the first rising crossing of high after it; a new one needs a new rising
// crossing of low, so ringing back through high makes none. A falling one mirrors it: from the last
// falling crossing of high to the next falling crossing of low.
struct Transition {
    Crossing start, end;
    int edge;  // +1 rising, -1 falling
};

// The transitions of the curve in the order they start, rising (edges +1), falling (-1) or both (0).
std::vector<Transition> support_Transitions(const double* x, const double* y, int64_t n, double low, double high,
                                            int edges);

// [low, high] of a two-level signal by the histogram method: `bins` equal bins over the smallest
// to the largest finite value; low is the centre of the fullest bin of the lower half, high of the
// fullest of the upper half (a tie goes to the outer bin). False when there are fewer than two
// distinct finite values.
bool support_StateLevels(const double* y, int64_t n, int bins, double* low, double* high);

}  // namespace wavex
