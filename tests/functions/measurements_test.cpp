// The measurements against closed forms: step responses, distortion of known sums of harmonics,
// loop margins of poles, and runs kept apart with their warnings.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>

namespace wavex {
namespace {

using test::reals;
using test::xs;

// f sampled from t0 to t1 in steps of h, in volts over seconds.
VectorPtr sampled(double t0, double t1, double h, const std::function<double(double)>& f) {
    std::vector<double> x, y;
    for (double t = t0; t <= t1 + h / 2; t += h) {
        x.push_back(t);
        y.push_back(f(t));
    }
    return test::curve(x, y);
}

// H(f) over a logarithmic sweep from 1 Hz to 100 MHz, 200 points a decade.
VectorPtr response(const std::function<Complex(double)>& h) {
    auto v = std::make_shared<Vector>();
    v->type = VD_COMPLEX;
    v->phys = units::Voltage;
    std::vector<double> f;
    for (int i = 0; i <= 1600; ++i) {
        f.push_back(std::pow(10, i / 200.0));
        v->cplx.push_back(h(f.back()));
    }
    v->ref = Reference::fromReal(Array<double>(f.data(), f.size()), units::Frequency, "frequency");
    return v;
}

class Measurements : public ::testing::Test {
protected:
    test::Session wx;
    // The one value of a scalar expression, checked to have come without messages.
    double value(const char* expression) {
        VectorPtr r = wx(expression);
        EXPECT_TRUE(r && r->size() == 1) << expression << ": " << wx.messages();
        EXPECT_EQ(wx.messages(), "") << expression;
        return r && r->size() ? r->real[0] : NAN;
    }
    // The values of a curve-valued expression, each within `tolerance`, without messages.
    void expectValues(const char* expression, const std::vector<double>& want, double tolerance = 1e-12) {
        VectorPtr r = wx(expression);
        ASSERT_TRUE(r && r->size() == want.size()) << expression << ": " << wx.messages() << test::show(r);
        for (size_t i = 0; i < want.size(); ++i) EXPECT_NEAR(r->real[i], want[i], tolerance) << expression << " " << i;
        EXPECT_EQ(wx.messages(), "") << expression;
    }
};

TEST_F(Measurements, StepResponsesMatchClosedForms) {
    const double tau = 1e-6, zeta = 0.3;
    wx.set("v", sampled(-tau, 15 * tau, tau / 2000, [&](double t) { return t < 0 ? 0 : 1 - std::exp(-t / tau); }));
    const double wd = std::sqrt(1 - zeta * zeta);  // a second-order step, ωn = 1
    wx.set("w", sampled(-1, 40, 1e-3, [&](double t) {
               return t < 0 ? 0 : 1 - std::exp(-zeta * t) * (std::cos(wd * t) + zeta / wd * std::sin(wd * t));
           }));
    struct Case {
        const char* expression;
        double want;
    };
    for (const Case& c : {Case{"RiseTime(v, [10, 90], [0, 1])", tau * std::log(9)},
                          Case{"Ref(RiseTime(v, [10, 90], [0, 1]))", tau * std::log(1 / 0.9)},
                          Case{"FallTime(1 - v, [10, 90], [0, 1])", tau * std::log(9)},
                          Case{"RiseTime(v, [20, 80], [0, 1])", tau * std::log(4)},
                          Case{"SlewRate(v, [10, 90], [0, 1])", 0.8 / (tau * std::log(9))},
                          Case{"SlewRate(1 - v, [10, 90], [0, 1])", -0.8 / (tau * std::log(9))},
                          Case{"SettlingTime(v, 2, [0, 1])", tau * std::log(25)},
                          Case{"Overshoot(v, [0, 1])", 0},
                          Case{"Overshoot(w, [0, 1])", 100 * std::exp(-std::numbers::pi * zeta / wd)}}) {
        EXPECT_NEAR(value(c.expression), c.want, 1e-6 * std::max(std::fabs(c.want), 1e-6)) << c.expression;
    }
    EXPECT_EQ(wx("RiseTime(v)")->phys, units::Time);
    EXPECT_EQ(wx("SlewRate(v)")->phys, units::div(units::Voltage, units::Time));
    EXPECT_EQ(wx("Overshoot(v)")->phys, units::Number);
}

TEST_F(Measurements, LevelsAndCycles) {
    // A square wave between 0 and 5 with edges of 0.1, period 2, high a quarter of each cycle, and a
    // glitch through 2.5 at 5.5 that only the hysteresis ignores.
    wx.set("q", test::curve({0, 1, 1.1, 1.5, 1.6, 3, 3.1, 3.5, 3.6, 5, 5.1, 5.5, 5.55, 5.6, 5.7, 6},
                            {0, 0, 5, 5, 0, 0, 5, 5, 0, 0, 5, 5, 2, 3, 5, 5}));
    // The glitch falls through 2.5 at 5.5 + 0.05·5/6 and rises through it again at 5.575.
    const double glitch = 5.5 + 0.05 * 2.5 / 3;
    expectValues("StateLevels(q)", {0.025, 4.975});
    expectValues("StateLevels(q, 2)", {1.25, 3.75});
    expectValues("PulseWidth(q)", {0.5, 0.5, glitch - 5.05});
    expectValues("DutyCycle(q)", {0.25, 0.25, (glitch - 5.05) / (5.575 - 5.05)});
    expectValues("Frequency(q, 2.5)", {0.5, 0.5, 1 / (5.575 - 5.05)});
    expectValues("Frequency(q, 2.5, 1)", {0.5, 0.5});
    expectValues("CyclePeriod(q, 2.5, 1)", {2, 2}, 1e-3);  // quadratic crossings of straight edges
    EXPECT_EQ(xs(wx("PulseWidth(q)")), (std::vector<double>{1.05, 3.05, 5.05}));
    EXPECT_EQ(wx("Frequency(q)")->phys, units::Frequency);
}

// Two runs of a clock and its copy, a quarter and a half late: each run its own delays, labels
// kept; a run with nothing to measure is NaN with a warning that names it.
TEST_F(Measurements, RunsStayApart) {
    const std::vector<double> x{0, 1, 1.2, 2, 2.2, 3, 3.2, 4}, y{0, 0, 1, 1, 0, 0, 1, 1};
    auto shifted = [&](double by) {
        std::vector<double> s = x;
        for (double& t : s) t += by;
        return test::curve(s, y);
    };
    wx.set("clk", test::runs({test::curve(x, y), test::curve(x, y)}, {"a", "b"}));
    wx.set("late", test::runs({shifted(0.25), shifted(0.5)}, {"a", "b"}));
    VectorPtr r = wx("Delay(clk, late, 0.5, 0.5)");
    ASSERT_TRUE(r) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{0.25, 0.25, 0.5, 0.5}));
    EXPECT_EQ(xs(r), (std::vector<double>{1.1, 3.1, 1.1, 3.1}));
    EXPECT_EQ(r->numDivisions(), 2u);
    EXPECT_EQ(r->label(1), "b");
    EXPECT_NEAR(wx("Delay(clk, late, 0.5, 0.5, -1)")->real[0], 0.25, 1e-12);

    wx.set("flat", test::runs({test::curve(x, y), test::curve(x, std::vector<double>(8, 1))}, {"a", "b"}));
    r = wx("RiseTime(flat, [10, 90], [0, 1])");
    ASSERT_TRUE(r && r->size() == 3);
    EXPECT_NEAR(r->real[1], 0.16, 1e-12);
    EXPECT_TRUE(std::isnan(r->real[2]));
    EXPECT_EQ(xs(r)[2], 0);
    EXPECT_EQ(wx.messages(), "Function 'RiseTime' found no rising transition in run 'b'");
    wx("FallTime(clk)");
    EXPECT_EQ(wx.messages(), "");
    wx("FallTime(Truncate(clk, 0, 1.5))");
    EXPECT_EQ(wx.messages(), "Function 'FallTime' found no falling transition in run 'a'\n"
                             "Function 'FallTime' found no falling transition in run 'b'");
    wx("Delay(clk, late, 0.5, 2)");
    EXPECT_EQ(wx.messages(), "Function 'Delay' found no crossing of the target level after a trigger in run 'a'\n"
                             "Function 'Delay' found no crossing of the target level after a trigger in run 'b'");
}

TEST_F(Measurements, DistortionOfKnownSines) {
    const double f = 1e3, w = 2 * std::numbers::pi * f;
    wx.set("v", sampled(0, 10e-3, 1e-6, [&](double t) { return std::sin(w * t) + 0.1 * std::sin(2 * w * t) + 0.05 * std::cos(3 * w * t); }));
    EXPECT_NEAR(value("THD(v, 1k)"), 100 * std::sqrt(0.0125), 1e-5);
    EXPECT_NEAR(value("THD(v, 1k, 2)"), 10, 1e-5);

    // Noise from a fixed generator, uniform in ±1 mV, and a second harmonic of 10 mV.
    uint64_t state = 12345;
    std::vector<double> noise;
    double noisePower = 0;
    wx.set("n", sampled(0, 0.1, 1e-6, [&](double t) {
               state = state * 6364136223846793005ULL + 1442695040888963407ULL;
               noise.push_back((static_cast<double>(state >> 11) / 9007199254740992.0 * 2 - 1) * 1e-3);
               noisePower += noise.back() * noise.back();
               return std::sin(w * t + 0.3) + 0.01 * std::sin(2 * w * t) + noise.back();
           }));
    noisePower /= static_cast<double>(noise.size());
    const double sinad = 10 * std::log10(0.5 / (noisePower + 0.5e-4));
    EXPECT_NEAR(value("SINAD(n, 1k)"), sinad, 0.05);
    EXPECT_NEAR(value("SNR(n, 1k)"), 10 * std::log10(0.5 / noisePower), 0.05);
    EXPECT_NEAR(value("ENOB(n, 1k)"), (sinad - 1.76) / 6.02, 0.01);

    // On whole bins of a 4096-point record the window reads both amplitudes exactly.
    wx.set("s", sampled(0, 4095 / 4096.0, 1 / 4096.0, [](double t) {
               return std::sin(2 * std::numbers::pi * 64 * t) + 1e-3 * std::sin(2 * std::numbers::pi * 192 * t);
           }));
    EXPECT_NEAR(value("SFDR(s, 64)"), 60, 1e-9);
}

TEST_F(Measurements, LoopMargins) {
    const double K = 100, f1 = 1e3, f2 = 1e5;
    wx.set("L", response([&](double f) { return K / (Complex(1, f / f1) * Complex(1, f / f2)); }));
    // |L| = 1 where (1 + (f/f1)²)(1 + (f/f2)²) = K²: a quadratic in f².
    const double b = f1 * f1 + f2 * f2, fc = std::sqrt((-b + std::sqrt(b * b + 4 * (K * K - 1) * f1 * f1 * f2 * f2)) / 2);
    EXPECT_NEAR(value("UnityGainFrequency(L)"), fc, 1e-4 * fc);
    EXPECT_NEAR(value("PhaseMargin(L)"), 180 - (std::atan(fc / f1) + std::atan(fc / f2)) * 180 / std::numbers::pi, 0.01);
    wx.set("p", response([&](double f) { return 1.0 / Complex(1, f / f1); }));
    EXPECT_NEAR(value("Bandwidth(p, 10 * log10(2))"), f1, 1e-4 * f1);
    wx.set("L3", response([&](double f) { return 2.0 / std::pow(Complex(1, f / f1), 3); }));
    EXPECT_NEAR(value("GainMargin(L3)"), 20 * std::log10(4), 1e-3);

    EXPECT_EQ(test::show(wx("GainMargin(L)")), "[nan]");
    EXPECT_EQ(wx.messages(), "Function 'GainMargin' found no fall of the phase through -180 degrees");
}

TEST_F(Measurements, BadInput) {
    wx.set("v", sampled(0, 1e-3, 1e-6, [](double t) { return std::sin(2 * std::numbers::pi * 1e4 * t); }));
    wx.set("c", test::curve({0, 1, 2}, {1, 1, 1}));
    struct Case {
        const char* expression;
        const char* shown;
        const char* message;
    };
    const Case cases[] = {
        {"Overshoot(c)", "[nan]", "Function 'Overshoot' found no two state levels"},
        {"StateLevels([1, NaN, 1])", "[nan, nan]", "Function 'StateLevels' found no two state levels"},
        {"RiseTime(c, [], [0, 2])", "[nan]", "Function 'RiseTime' found no rising transition"},
        {"SettlingTime(XY([0, 1, 0.5], [0, 1, 2]), 2, [0, 1])", "[nan]",
         "Function 'SettlingTime' found no settling into the band after a transition"},
        {"THD(v, 500)", "[nan]", "Function 'THD' needs a whole period of the fundamental (0.002) and has 0.001"},
        {"SINAD(v, 600k)", "[nan]", "The fundamental 600000 of function 'SINAD' is above half the sample rate (500000)"},
        {"PulseWidth(XY([0, 1, 1, NaN], [0, 1, 2, 3]))", "[nan]", "Function 'PulseWidth' found no whole pulse"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(test::show(wx(c.expression)), c.shown) << c.expression;
        EXPECT_EQ(wx.messages(), c.message) << c.expression;
    }
    wx.expectFails("RiseTime([0, 1, 0])", "Argument 1 in function 'RiseTime' has no reference (xvalues)");
    wx.expectFails("RiseTime(v, [90, 10])", "Argument 2 of function 'RiseTime' must be two finite values, the lower first");
    wx.expectFails("SettlingTime(v, 0)", "The tolerance of function 'SettlingTime' must be a percentage above 0 and below 100");
    wx.expectFails("Delay(v, v, 0, 0, 2)", "Argument 5 of function 'Delay' must be 1 (rising), -1 (falling) or 0 (both)");
    wx.expectFails("StateLevels(v, 1)", "Invalid number of bins in function 'StateLevels'");
    wx.expectFails("THD(v, 0)", "The fundamental frequency of function 'THD' must be above 0");
    wx.expectFails("SNR(v, 10k, 1)", "The number of harmonics of function 'SNR' must be from 2 to 1000");
    wx.expectFails("PhaseMargin(v)", "Function 'PhaseMargin' needs a complex frequency response");
    wx.expectFails("Bandwidth(fft(v), 0)", "The drop of function 'Bandwidth' must be above 0 dB");
}

}  // namespace
}  // namespace wavex
