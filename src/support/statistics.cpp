#include "support/statistics.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavex {

namespace {
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

Summary summarize(const double* values, size_t n) {
    std::vector<double> finite;
    finite.reserve(n);
    for (size_t i = 0; i < n; ++i)
        if (std::isfinite(values[i])) finite.push_back(values[i]);
    Summary s;
    s.count = finite.size();
    if (finite.empty()) {
        s.mean = s.stddev = s.minimum = s.maximum = s.p1 = s.p5 = s.p50 = s.p95 = s.p99 = kNaN;
        return s;
    }
    double sum = 0;
    for (double v : finite) sum += v;
    s.mean = sum / static_cast<double>(s.count);
    double squares = 0;
    for (double v : finite) squares += (v - s.mean) * (v - s.mean);
    s.stddev = s.count > 1 ? std::sqrt(squares / static_cast<double>(s.count - 1)) : 0;
    s.minimum = *std::min_element(finite.begin(), finite.end());
    s.maximum = *std::max_element(finite.begin(), finite.end());
    // Ascending percentiles by selection: each narrows the part left to order.
    auto from = finite.begin();
    double* out[] = {&s.p1, &s.p5, &s.p50, &s.p95, &s.p99};
    const double ps[] = {1, 5, 50, 95, 99};
    for (size_t k = 0; k < 5; ++k) {
        double rank = ps[k] / 100 * static_cast<double>(s.count - 1);
        auto below = finite.begin() + static_cast<std::ptrdiff_t>(rank);
        std::nth_element(from, below, finite.end());
        double low = *below, high = below + 1 < finite.end() ? *std::min_element(below + 1, finite.end()) : low;
        *out[k] = low + (rank - std::floor(rank)) * (high - low);
        from = below;
    }
    return s;
}

double yieldWithin(const double* values, size_t n, double low, double high) {
    if (n == 0) return kNaN;
    size_t inside = 0;
    for (size_t i = 0; i < n; ++i)
        inside += !std::isnan(values[i]) && !(values[i] < low) && !(values[i] > high);
    return static_cast<double>(inside) / static_cast<double>(n);
}

double processCapability(const Summary& s, double low, double high) {
    if (!(s.stddev > 0) || (std::isnan(low) && std::isnan(high))) return kNaN;
    double margin = std::numeric_limits<double>::infinity();
    if (!std::isnan(high)) margin = std::min(margin, high - s.mean);
    if (!std::isnan(low)) margin = std::min(margin, s.mean - low);
    return margin / (3 * s.stddev);
}

std::vector<size_t> histogram(const double* values, size_t n, double low, double high, size_t bins) {
    std::vector<size_t> counts(bins, 0);
    if (bins == 0 || !(high >= low)) return counts;
    const double scale = high > low ? static_cast<double>(bins) / (high - low) : 0;
    for (size_t i = 0; i < n; ++i) {
        double v = values[i];
        if (!(v >= low && v <= high)) continue;
        size_t b = static_cast<size_t>((v - low) * scale);
        ++counts[std::min(b, bins - 1)];
    }
    return counts;
}

}  // namespace wavex
