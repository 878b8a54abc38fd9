// Shared helpers for the test suites.
#pragma once

#include "support/numbers.hpp"
#include "wavex/wavex.hpp"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace wavex::test {

// A vector as one line: strings quoted, null elements as <null>, numbers in their shortest
// round-trip form, complex values as re,im; "failed" for a failed call.
inline std::string show(const VectorPtr& v) {
    if (!v) return "failed";
    std::string s = "[";
    for (size_t i = 0; i < v->size(); ++i) {
        if (i) s += ", ";
        switch (v->type) {
            case VD_REAL: s += formatRoundTrip(v->real[i]); break;
            case VD_COMPLEX: s += formatRoundTrip(v->cplx[i].real()) + "," + formatRoundTrip(v->cplx[i].imag()); break;
            default: s += v->str[i] ? "'" + *v->str[i] + "'" : "<null>"; break;
        }
    }
    return s + "]";
}

// A fresh directory under the test's temporary directory, removed with all it holds when the
// object goes.
class ScratchDir {
public:
    ScratchDir() {
        std::string pattern = ::testing::TempDir() + "wavex_XXXXXX";
        if (!mkdtemp(pattern.data())) ADD_FAILURE() << "cannot make a directory like " << pattern;
        path_ = pattern + "/";
    }
    ~ScratchDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    // The directory, ending in "/".
    const std::string& path() const { return path_; }
    // Writes `bytes` to the file `name` in it; gives the file's path.
    std::string write(const std::string& name, std::string_view bytes) const {
        std::ofstream(path_ + name, std::ios::binary) << bytes;
        return path_ + name;
    }

private:
    std::string path_;
};

// An expression and how its value shows.
struct Shown {
    const char* expression;
    std::string value;
};

// An interpreter with a collecting message sink: evaluate expressions, read their messages.
struct Session {
    std::shared_ptr<CollectingMessageHandler> sink = std::make_shared<CollectingMessageHandler>();
    Interpreter wx{sink};

    // The value of `expression`, or null when it failed.
    VectorPtr operator()(std::string_view expression) {
        sink->clear();
        return wx.evaluate(expression);
    }
    void set(const char* name, VectorPtr v) { wx.setVector(name, std::move(v)); }

    // Each expression evaluates, without messages, to a value that shows as given.
    void check(std::initializer_list<Shown> cases) {
        for (const Shown& c : cases) {
            SCOPED_TRACE(c.expression);
            EXPECT_EQ(show((*this)(c.expression)), c.value);
            EXPECT_EQ(messages(), "");
        }
    }
    // The expression fails with exactly these messages.
    void expectFails(const char* expression, const std::string& message) {
        EXPECT_EQ((*this)(expression), nullptr) << expression;
        EXPECT_EQ(messages(), message) << expression;
    }

    // The messages of the last evaluation, joined with newlines.
    std::string messages() const {
        std::string all;
        for (const std::string& m : sink->messages()) all += (all.empty() ? "" : "\n") + m;
        return all;
    }
};

// A curve of y over x, in volts over time unless told otherwise.
inline VectorPtr curve(std::vector<double> x, std::vector<double> y, PhysType yPhys = units::Voltage,
                PhysType xPhys = units::Time, std::string xName = "time") {
    auto v = std::make_shared<Vector>();
    v->real = Array<double>(y.data(), y.size());
    v->phys = yPhys;
    v->ref = Reference::fromReal(Array<double>(x.data(), x.size()), xPhys, std::move(xName));
    return v;
}

// Curves joined as the divisions of one vector (runs of a stepped analysis), labelled.
inline VectorPtr runs(const std::vector<VectorPtr>& parts, DivisionLabelArray labels) {
    auto v = std::make_shared<Vector>(*parts[0]);
    Array<double> x(parts[0]->ref.real(), parts[0]->ref.size());
    std::vector<size_t> lengths{parts[0]->size()};
    for (size_t i = 1; i < parts.size(); ++i) {
        v->real.append(parts[i]->real.data(), parts[i]->size());
        x.append(parts[i]->ref.real(), parts[i]->ref.size());
        lengths.push_back(parts[i]->size());
    }
    v->ref = Reference::fromReal(std::move(x), parts[0]->ref.phys, parts[0]->ref.name);
    v->setDivisionLengths(lengths);
    v->labels = std::move(labels);
    return v;
}

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
