// Shared helpers for the test suites.
#pragma once

#include "wavex/wavex.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace wavex::test {

// An interpreter with a collecting message sink: evaluate expressions, read their messages.
struct Session {
    std::shared_ptr<CollectingMessageHandler> sink = std::make_shared<CollectingMessageHandler>();
    Interpreter wx{sink};

    // The value of `expression`, or null when it failed.
    VectorPtr operator()(std::string_view expression) {
        sink->clear();
        return wx.evaluate(expression);
    }
    // The messages of the last evaluation, joined with newlines.
    std::string messages() const {
        std::string all;
        for (const std::string& m : sink->messages()) all += (all.empty() ? "" : "\n") + m;
        return all;
    }
};

inline std::vector<double> reals(const VectorPtr& v) { return {v->real.begin(), v->real.end()}; }
inline std::vector<Complex> complexes(const VectorPtr& v) { return {v->cplx.begin(), v->cplx.end()}; }
inline std::vector<double> xs(const VectorPtr& v) {
    const double* x = v->ref.real();
    return x ? std::vector<double>(x, x + v->ref.size()) : std::vector<double>{};
}
inline std::vector<std::string> strings(const VectorPtr& v) {
    std::vector<std::string> r;
    for (const StrElem& s : v->str) r.push_back(s.value_or("<null>"));
    return r;
}

}  // namespace wavex::test
