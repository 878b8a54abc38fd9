// Summary statistics of a sample (one measurement over the runs of a Monte Carlo analysis).
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace wavex {

struct Summary {
    size_t count = 0;  // finite values; NaN values (failed measurements) are left out
    double mean = 0, stddev = 0, minimum = 0, maximum = 0;
    double p1 = 0, p5 = 0, p50 = 0, p95 = 0, p99 = 0;
};

// stddev is the sample standard deviation (divisor count − 1; 0 for one value); percentiles
// interpolate linearly between the sorted values at rank p/100 · (count − 1). An empty sample
// gives NaN everywhere but count.
Summary summarize(const double* values, size_t n);

// Yield: the share of the n values inside [low, high] (a NaN limit is no limit; a NaN value
// fails). Cpk: min(high − mean, mean − low) / (3 · stddev) over the limits given; NaN without
// limits or spread.
double yieldWithin(const double* values, size_t n, double low, double high);
double processCapability(const Summary& s, double low, double high);

// Counts of the values in `bins` equal bins over [low, high] (the last bin closed); values
// outside are not counted.
std::vector<size_t> histogram(const double* values, size_t n, double low, double high, size_t bins);

}  // namespace wavex
