#include "support/transitions.hpp"

#include "support/interpolation.hpp"

#include <cmath>

namespace wavex {

namespace {

bool before(const Crossing& a, const Crossing& b) { return a.index < b.index || (a.index == b.index && a.x < b.x); }

// For each crossing of `ends` (in order), the transition from the last crossing of `starts` at or
// before it, when that crossing has not started a transition yet.
void pair(const std::vector<Crossing>& starts, const std::vector<Crossing>& ends, int edge,
          std::vector<Transition>& out) {
    size_t next = 0;            // the first start not at or before the current end
    size_t used = 0;            // starts below this one have made their transition
    for (const Crossing& end : ends) {
        while (next < starts.size() && !before(end, starts[next])) ++next;
        if (next > used) {
            out.push_back({starts[next - 1], end, edge});
            used = next;
        }
    }
}

}  // namespace

std::vector<Crossing> support_Crossings(const double* x, const double* y, int64_t n, double level, int direction,
                                        int order) {
    InterpOpts opts{};
    opts.levelSearch = 1;
    opts.direction = direction;
    opts.order = order;
    YList<double> at;
    YList<long long> indices;
    support_FindYFromX(at, indices, x, y, n, level, opts);
    std::vector<Crossing> out(at.size());
    const double* t = at.oldestFirst();
    const long long* k = indices.oldestFirst();
    for (size_t i = 0; i < out.size(); ++i) out[i] = {t[i], static_cast<int64_t>(k[i])};
    return out;
}

void support_KeepAfterDip(const double* y, int64_t n, double below, std::vector<Crossing>& rising) {
    size_t kept = 0;
    int64_t p = 0;
    bool dipped = false;
    for (const Crossing& c : rising) {
        for (; p <= c.index && p < n; ++p) dipped |= y[p] < below;
        if (!dipped) continue;
        rising[kept++] = c;
        dipped = false;
    }
    rising.resize(kept);
}

const Crossing* support_FirstFrom(const std::vector<Crossing>& list, const Crossing& from) {
    for (const Crossing& c : list)
        if (!before(c, from)) return &c;
    return nullptr;
}

std::vector<Transition> support_Transitions(const double* x, const double* y, int64_t n, double low, double high,
                                            int edges) {
    std::vector<Transition> rising, falling;
    if (edges >= 0) pair(support_Crossings(x, y, n, low, 1), support_Crossings(x, y, n, high, 1), 1, rising);
    if (edges <= 0) pair(support_Crossings(x, y, n, high, -1), support_Crossings(x, y, n, low, -1), -1, falling);
    if (edges != 0) return edges > 0 ? rising : falling;
    std::vector<Transition> all;
    all.reserve(rising.size() + falling.size());
    size_t r = 0, f = 0;
    while (r < rising.size() || f < falling.size()) {
        const bool takeRising = f == falling.size() || (r < rising.size() && before(rising[r].start, falling[f].start));
        all.push_back(takeRising ? rising[r++] : falling[f++]);
    }
    return all;
}

bool support_StateLevels(const double* y, int64_t n, int bins, double* low, double* high) {
    double lo = INFINITY, hi = -INFINITY;
    for (int64_t i = 0; i < n; ++i) {
        if (!std::isfinite(y[i])) continue;
        lo = std::min(lo, y[i]);
        hi = std::max(hi, y[i]);
    }
    if (!(lo < hi) || bins < 2) return false;
    std::vector<int64_t> count(static_cast<size_t>(bins), 0);
    const double scale = bins / (hi - lo);
    for (int64_t i = 0; i < n; ++i) {
        if (!std::isfinite(y[i])) continue;
        const auto b = static_cast<int64_t>((y[i] - lo) * scale);
        ++count[static_cast<size_t>(std::min<int64_t>(b, bins - 1))];
    }
    const int half = bins / 2;
    int lowBin = 0, highBin = bins - 1;
    for (int b = 1; b < half; ++b)
        if (count[static_cast<size_t>(b)] > count[static_cast<size_t>(lowBin)]) lowBin = b;
    for (int b = bins - 2; b >= bins - half; --b)
        if (count[static_cast<size_t>(b)] > count[static_cast<size_t>(highBin)]) highBin = b;
    const double width = (hi - lo) / bins;
    *low = lo + (lowBin + 0.5) * width;
    *high = lo + (highBin + 0.5) * width;
    return true;
}

}  // namespace wavex
