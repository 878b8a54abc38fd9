// The gamma family and the error functions: accuracy against an arbitrary-precision reference,
// domains, statuses and messages, units, references and divisions.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::xs;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// One case of special_reference.txt: function(a) or function(a, b) is re + i·im.
struct ReferenceCase {
    std::string function;
    double a, b, re, im;
};

std::vector<ReferenceCase> loadReference() {
    std::ifstream in(WAVEX_SOURCE_DIR "/tests/functions/special_reference.txt");
    std::vector<ReferenceCase> cases;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        ReferenceCase r;
        std::string a, b, re, im;
        fields >> r.function >> a >> b >> re >> im;
        r.a = std::stod(a);
        r.b = b == "-" ? kNaN : std::stod(b);
        r.re = std::stod(re);
        r.im = std::stod(im);
        cases.push_back(r);
    }
    return cases;
}

double relativeError(double got, double want) {
    if (got == want) return 0;
    return std::fabs(got - want) / std::fabs(want);
}

// Every reference case of every function, evaluated as one vector per function, to 1e-13.
TEST(SpecialFunctions, MatchTheReferenceTable) {
    const std::vector<ReferenceCase> cases = loadReference();
    ASSERT_GT(cases.size(), 500u);
    std::map<std::string, std::vector<const ReferenceCase*>> byFunction;
    for (const ReferenceCase& r : cases) byFunction[r.function].push_back(&r);
    ASSERT_EQ(byFunction.size(), 7u);

    Session wx;
    for (const auto& [function, rows] : byFunction) {
        std::vector<double> a, b;
        for (const ReferenceCase* r : rows) {
            a.push_back(r->a);
            b.push_back(r->b);
        }
        wx.wx.setVector("a", makeRealVector(a));
        wx.wx.setVector("b", makeRealVector(b));
        const bool pair = !std::isnan(rows[0]->b);
        VectorPtr v = wx(function + (pair ? "(a, b)" : "(a)"));
        ASSERT_NE(v, nullptr) << function << ": " << wx.messages();
        ASSERT_EQ(v->size(), rows.size());
        double worst = 0;
        for (size_t i = 0; i < rows.size(); ++i) {
            const ReferenceCase& r = *rows[i];
            const Complex got = v->type == VD_COMPLEX ? v->cplx[i] : Complex(v->real[i], 0);
            const double error = std::max(relativeError(got.real(), r.re), relativeError(got.imag(), r.im));
            EXPECT_LE(error, 1e-13) << function << "(" << r.a << (pair ? ", " + std::to_string(r.b) : "")
                                    << ") = " << got << ", want (" << r.re << ", " << r.im << ")";
            worst = std::max(worst, error);
        }
        std::ostringstream text;
        text << worst;
        RecordProperty(function + "_worst_relative_error", text.str());
    }
}

TEST(SpecialFunctions, DomainsAndMessages) {
    struct Case { const char* expression; const char* message; };
    const Case cases[] = {
        {"gamma(0)", "Argument out of range for function 'gamma'"},
        {"gamma([1, 2, -3, 4])", "Argument out of range for function 'gamma'"},
        {"gamma(3e305)", "Argument out of range for function 'gamma'"},
        {"gamma(171.7)", "Overflow in function 'gamma'"},
        {"gamma(1e-310)", "Overflow in function 'gamma'"},  // Γ(x) ≈ 1/x
        {"gamma([200, 0])", "Overflow in function 'gamma'"},     // the first bad element decides
        {"lgamma(-7)", "Argument out of range for function 'lgamma'"},
        {"lgamma(2.6e305)", "Argument out of range for function 'lgamma'"},
        {"erf(3e305)", "Argument out of range for function 'erf'"},
        {"gammp(0, 1)", "Argument out of range for function 'gammp'"},
        {"gammp(1, -1)", "Argument out of range for function 'gammp'"},
        {"gammq(-0.5, 1)", "Argument out of range for function 'gammq'"},
        {"chisquare(-1, 2)", "Argument out of range for function 'chisquare'"},
        {"chisquare(1, 0.9)", "Argument out of range for function 'chisquare'"},  // ⌊0.9⌋/2 = 0
        // A series that cannot converge in 10000 terms fails without a message of its own.
        {"gammp(1e9, 1e9)", "Function 'gammp' failed"},
    };
    Session wx;
    for (const Case& c : cases) {
        EXPECT_EQ(wx(c.expression), nullptr) << c.expression;
        EXPECT_EQ(wx.messages(), c.message) << c.expression;
    }
    wx.wx.setVector("z", makeComplexVector({{1, 2}}));
    for (const char* f : {"gamma", "lgamma", "erf", "erfc"}) {
        EXPECT_EQ(wx(std::string(f) + "(z)"), nullptr);
        EXPECT_EQ(wx.messages(), "The function '" + std::string(f) + "' requires a real argument");
    }
    EXPECT_EQ(wx("gammq(1, z)"), nullptr);
    EXPECT_EQ(wx.messages(), "The function 'gammq' requires a real argument");
    EXPECT_EQ(wx("chisquare(z, 1)"), nullptr);
    EXPECT_EQ(wx.messages(), "The function 'chisquare' requires a real argument");
}

TEST(SpecialFunctions, ValuesAtTheEdges) {
    Session wx;
    auto value = [&](const char* expression) {
        VectorPtr v = wx(expression);
        EXPECT_NE(v, nullptr) << expression << ": " << wx.messages();
        return v && v->size() == 1 && v->type == VD_REAL ? v->real[0] : kNaN;
    };
    EXPECT_EQ(value("gamma(5)"), 24);  // exact, where the reference table allows 1e-13
    EXPECT_NEAR(value("gamma(171)") / 7.257415615307999e306, 1, 1e-15);  // 170!, the largest factorial
    EXPECT_EQ(value("erf(40)"), 1);
    EXPECT_EQ(value("erfc(40)"), 0);
    EXPECT_EQ(value("erfc(-40)"), 2);
    EXPECT_EQ(value("erfc(1e300)"), 0);
    EXPECT_EQ(value("gammp(1, 0)"), 0);
    EXPECT_EQ(value("gammq(1, 0)"), 1);
    EXPECT_EQ(value("gammp(3, 1e300)"), 1);
    EXPECT_EQ(value("gammq(3, 1e300)"), 0);
    EXPECT_EQ(value("gammp(3, Inf)"), 1);
    EXPECT_EQ(value("gammp(Inf, 3)"), 0);
    EXPECT_EQ(value("chisquare(3.84, 1.9)"), value("chisquare(3.84, 1)"));  // ν truncated
    // NaN passes through without a message.
    for (const char* f : {"gamma(NaN)", "erf(NaN)", "erfc(NaN)", "gammp(NaN, 1)", "gammq(1, NaN)",
                          "chisquare(NaN, 3)"})
        EXPECT_TRUE(std::isnan(value(f))) << f;
    VectorPtr l = wx("lgamma(NaN)");
    ASSERT_NE(l, nullptr);
    EXPECT_TRUE(std::isnan(l->cplx[0].real()));

}

// Units unknown; the result lies over the first argument's x-values (or the longer argument's),
// one division per division, a single value repeated, and unequal lengths give nothing.
TEST(SpecialFunctions, UnitsReferencesAndDivisions) {
    Session wx;
    wx.wx.setVector("v", makeCurve({0, 1, 2}, {0.5, 1, 1.5}, units::Voltage, units::Time));
    VectorPtr g = wx("gamma(v)");
    ASSERT_NE(g, nullptr) << wx.messages();
    EXPECT_EQ(g->phys, units::Unknown);
    EXPECT_EQ(xs(g), (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(g->ref.phys, units::Time);
    VectorPtr l = wx("lgamma(v)");
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(l->type, VD_COMPLEX);
    EXPECT_EQ(xs(l), (std::vector<double>{0, 1, 2}));

    // A single value is repeated; the x-values come from the longer argument.
    VectorPtr p = wx("gammp(v, 1)");
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(xs(p), (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(reals(p)[1], reals(wx("gammp(1, 1)"))[0]);
    VectorPtr q = wx("gammq(2, v)");
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(xs(q), (std::vector<double>{0, 1, 2}));

    VectorPtr none = wx("gammp([1, 2, 3], [1, 2])");
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none->size(), 0u);
    EXPECT_EQ(wx.messages(), "");

    // Two runs of a and of x, stepped together; then a one-division a repeated for each run.
    auto runs = std::make_shared<Vector>();
    runs->real = {1, 2, 3, 4, 5};
    runs->ref = Reference::fromReal({0, 1, 0, 1, 2}, units::Time);
    runs->setDivisionLengths({2, 3});
    wx.wx.setVector("runs", runs);
    VectorPtr d = wx("gammq(runs, runs)");
    ASSERT_NE(d, nullptr) << wx.messages();
    EXPECT_EQ(d->numDivisions(), 2u);
    EXPECT_EQ(d->divisionLength(1), 3u);
    EXPECT_EQ(xs(d), (std::vector<double>{0, 1, 0, 1, 2}));
    VectorPtr e = wx("gammq(2.5, runs)");
    ASSERT_NE(e, nullptr) << wx.messages();
    EXPECT_EQ(e->numDivisions(), 2u);
    EXPECT_EQ(reals(e)[4], reals(wx("gammq(2.5, 5)"))[0]);
}

}  // namespace
}  // namespace wavex
