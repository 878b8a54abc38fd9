// fft, FourierWindow, Fourier and SpectrumUniv: values, units, references, divisions and
// messages. The transform itself is checked against the direct sum in tests/support/fft_test.cpp.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace wavex {
namespace {

using test::curve;
using test::complexes;
using test::reals;
using test::runs;

constexpr double kPi = 3.141592653589793;

// The real parts of a complex reference.
std::vector<double> frequencies(const VectorPtr& v) {
    std::vector<double> f;
    for (size_t i = 0; i < v->ref.size(); ++i) {
        EXPECT_EQ(v->ref.cplx()[i].imag(), 0);
        f.push_back(v->ref.cplx()[i].real());
    }
    return f;
}

void expectNear(const std::vector<Complex>& got, const std::vector<Complex>& want, double tolerance,
                const char* what) {
    ASSERT_EQ(got.size(), want.size()) << what;
    for (size_t k = 0; k < got.size(); ++k)
        EXPECT_LT(std::abs(got[k] - want[k]), tolerance) << what << " value " << k << ": " << got[k] << " not " << want[k];
}

// t from 0 to `end`, with steps varying at random between 0.5 and 1.5 times `step`.
std::vector<double> unevenTimes(double end, double step, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(0.5, 1.5);
    std::vector<double> t{0};
    while (t.back() < end) t.push_back(std::min(end, t.back() + step * u(gen)));
    return t;
}

class Fourier : public ::testing::Test {
protected:
    test::Session wx;
    void TearDown() override { wx.wx.setOption("InterpPts", "1024"); }
};

// ---- fft -------------------------------------------------------------------------------------

TEST_F(Fourier, FftPadsWindowsAndScales) {
    // 3 points pad to N = 4; the doubled Hann weights 0, 1, 2, 1 make 0, 2, 6, 0; X = 8 and
    // 0 + 2i − 6; scaled by 2/N, the DC term halved. Δf = 1/(1 ms · 4) in Hz, over the y unit.
    wx.set("v", curve({0, 1e-3, 2e-3}, {1, 2, 3}, units::Current));
    VectorPtr r = wx("fft(v)");
    ASSERT_NE(r, nullptr) << wx.messages();
    expectNear(complexes(r), {{2, 0}, {-3, 1}}, 1e-15, "3 points");
    ASSERT_EQ(r->ref.type, VD_COMPLEX);
    EXPECT_EQ(frequencies(r)[0], 0);
    EXPECT_NEAR(frequencies(r)[1], 250, 1e-12);
    EXPECT_EQ(r->phys, units::Current);
    EXPECT_EQ(r->ref.phys, units::Frequency);
    EXPECT_EQ(r->ref.name, "Hz");

    struct Case { const char* window; std::vector<Complex> want; };
    const Case cases[] = {
        {"'none'", {{2.5, 0}, {-1, -1}}},           // 1, 2, 3, 4: X = 10, −2 − 2i
        {"'NONE'", {{2.5, 0}, {-1, -1}}},
        {"'Hamming'", {{3.16, 0}, {-2.92, -1.08}}},  // weights 0.16, 1.08, 2, 1.08
        {"'triangle'", {{3, 0}, {-3, -1}}},         // any other name: the Hann window
    };
    wx.set("w", curve({0, 1, 2, 3}, {1, 2, 3, 4}));
    for (const Case& c : cases) {
        VectorPtr s = wx(std::string("fft(w, ") + c.window + ")");
        ASSERT_NE(s, nullptr) << c.window << wx.messages();
        expectNear(complexes(s), c.want, 1e-14, c.window);
    }
    // The frequency step comes from the first interval: N = 8, Δf = 1/(0.5·8).
    wx.set("u", curve({0, 0.5, 2, 3, 3.5}, {1, 0, 1, 0, 1}));
    EXPECT_EQ(frequencies(wx("fft(u)")), (std::vector<double>{0, 0.25, 0.5, 0.75}));
}

TEST_F(Fourier, FftBadInput) {
    wx.set("one", curve({0}, {1}));
    wx.set("none", curve({}, {}));
    wx.set("z", makeComplexVector({{1, 1}, {2, 2}, {3, 3}}));
    wx.set("bare", makeRealVector({1, 2, 3, 4}));
    wx.expectFails("fft(z)", "FFT function for complex data not yet implemented.");
    wx.expectFails("fft(one)", "Need at least two points for FFT");
    wx.expectFails("fft(none)", "Need at least two points for FFT");
    wx.expectFails("fft(bare)", "Argument 1 in function 'fft' has no reference (xvalues)");

    // Equal first x values make the frequency step infinite.
    wx.set("flat", curve({0, 0, 1, 2}, {1, 2, 3, 4}));
    VectorPtr r = wx("fft(flat)");
    ASSERT_NE(r, nullptr);
    EXPECT_TRUE(std::isinf(frequencies(r)[1]));
}

TEST_F(Fourier, FftOneSpectrumPerRun) {
    wx.set("r", runs({curve({0, 1, 2}, {1, 2, 3}), curve({0, 2}, {4, 4}), curve({0, 1, 2, 3, 4}, {1, 1, 1, 1, 1})},
                  {"a", std::nullopt, "c"}));
    VectorPtr r = wx("fft(r, 'none')");
    ASSERT_NE(r, nullptr) << wx.messages();
    ASSERT_EQ(r->numDivisions(), 3u);
    EXPECT_EQ(r->divisionLength(0), 2u);
    EXPECT_EQ(r->divisionLength(1), 1u);
    EXPECT_EQ(r->divisionLength(2), 4u);
    EXPECT_EQ(r->label(0), "a");
    EXPECT_EQ(r->label(2), "c");
    // Each run has its own frequency step: 1/(1·4), 1/(2·2), 1/(1·8).
    EXPECT_EQ(frequencies(r), (std::vector<double>{0, 0.25, 0, 0, 0.125, 0.25, 0.375}));
    std::vector<Complex> v = complexes(r);
    EXPECT_EQ(v[0], Complex(1.5, 0));  // (1 + 2 + 3)·2/4, halved
    EXPECT_EQ(v[2], Complex(4, 0));
    EXPECT_EQ(v[3], Complex(0.625, 0));  // five ones padded to 8
}

// ---- FourierWindow ---------------------------------------------------------------------------

TEST_F(Fourier, WindowsOverTheCurvesOwnX) {
    wx.set("v", curve({1, 2, 3, 4}, {2, 2, 4, 4}));
    auto expect = [&](const char* expression, const std::vector<double>& want) {
        VectorPtr r = wx(expression);
        ASSERT_NE(r, nullptr) << expression << ": " << wx.messages();
        ASSERT_EQ(r->size(), want.size()) << expression;
        for (size_t i = 0; i < want.size(); ++i) EXPECT_NEAR(r->real[i], want[i], 1e-15) << expression << " " << i;
    };
    const double c1 = std::cos(2 * kPi / 3), c2 = std::cos(4 * kPi / 3);  // at u = 1/3, 2/3
    expect("FourierWindow(v)", {0, (1 - c1) * 2, (1 - c2) * 4, 0});
    expect("FourierWindow(v, 'HANNING')", {0, (1 - c1) * 2, (1 - c2) * 4, 0});
    const double a = 1.1904761904761905, b = 0.1904761904761905;
    expect("FourierWindow(v, 'blackman')",
           {(1 - a + b) * 2, (1 - a * c1 + b * c2) * 2, (1 - a * c2 + b * c1) * 4, (1 - a + b) * 4});
    // Hamming's phase takes the first y (2) where the others take the first x (1).
    const double h = 0.8518518518518519;
    expect("FourierWindow(v, 'hamming')",
           {(1 - h * std::cos(-2 * kPi / 3)) * 2, (1 - h) * 2, (1 - h * c1) * 4, (1 - h * c2) * 4});
    expect("FourierWindow(v, 'rectangular')", {1, 1, 1, 1});
    // A period of 6: u = (x − 1)/6.
    expect("FourierWindow(v, 'hanning', 6)",
           {0, (1 - std::cos(kPi / 3)) * 2, (1 - std::cos(2 * kPi / 3)) * 4, (1 - std::cos(kPi)) * 4});

    VectorPtr unknown = wx("FourierWindow(v, 'kaiser')");
    ASSERT_NE(unknown, nullptr);
    ASSERT_EQ(unknown->size(), 4u);
    for (double y : reals(unknown)) EXPECT_TRUE(std::isnan(y));
}

TEST_F(Fourier, WindowKeepsUnitsAndSharesTheReference) {
    wx.set("i", curve({0, 1, 2}, {1, 1, 1}, units::Current));
    VectorPtr r = wx("FourierWindow(i)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(r->phys, units::Current);
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->ref.name, "time");
    EXPECT_EQ(r->ref.realValues, wx("i")->ref.realValues);  // shared, not copied

    // Without usable input: nothing, silently.
    wx.set("bare", makeRealVector({1, 2, 3}));
    wx.set("one", curve({5}, {1}));
    wx.set("none", curve({}, {}));
    wx.set("badx", curve({0, 1, NAN}, {1, 2, 3}));
    wx.check({{"FourierWindow(i, 'hanning', 0)", "[]"}, {"FourierWindow(i, 'hanning', NaN)", "[]"},
              {"FourierWindow(bare)", "[]"}, {"FourierWindow(one)", "[]"}, {"FourierWindow(none)", "[]"},
              {"FourierWindow(badx)", "[]"}});
}

TEST_F(Fourier, WindowPerRunOverItsOwnSpan) {
    wx.set("r", runs({curve({0, 1, 2}, {1, 1, 1}), curve({10, 12, 14, 16, 18}, {1, 1, 1, 1, 1})}, {}));
    VectorPtr r = wx("FourierWindow(r)");
    ASSERT_NE(r, nullptr) << wx.messages();
    ASSERT_EQ(r->numDivisions(), 2u);
    std::vector<double> want = {0, 2, 0, 0, 1, 2, 1, 0};
    for (size_t i = 0; i < want.size(); ++i) EXPECT_NEAR(r->real[i], want[i], 1e-15) << i;
}

// ---- Fourier -----------------------------------------------------------------------------------

// 0.5 + cos(ωt + 0.3) + 0.25·sin(3ωt − 1.1) at 1 kHz, over 3.3 periods, unevenly sampled: the
// last whole period starts at 2.3 ms, and the phases still refer to t = 0.
TEST_F(Fourier, HarmonicsOfASumOfSines) {
    const double f0 = 1000, w = 2 * kPi * f0;
    for (auto [mode, step] : {std::pair{"", 2e-7}, std::pair{", [0, 1]", 2e-7}, std::pair{", [1]", 5e-8}}) {
        std::vector<double> t = unevenTimes(3.3e-3, step, 5), y;
        for (double s : t) y.push_back(0.5 + std::cos(w * s + 0.3) + 0.25 * std::sin(3 * w * s - 1.1));
        wx.set("v", curve(t, y));
        VectorPtr r = wx(std::string("Fourier(v, 1k, 5") + mode + ")");
        ASSERT_NE(r, nullptr) << wx.messages();
        expectNear(complexes(r), {0.5, std::polar(1.0, -0.3), 0, std::polar(0.25, 1.1 + kPi / 2), 0}, 1e-6, mode);
        EXPECT_EQ(frequencies(r), (std::vector<double>{0, 1000, 2000, 3000, 4000}));
        EXPECT_EQ(r->phys, units::Voltage);
        EXPECT_EQ(r->ref.phys, units::Frequency);
        EXPECT_EQ(r->ref.name, "Hz");
    }
}

// y = t² sampled at t = 0, 0.5, 1 and analysed at f0 = 1: the DC term is the mean of the period
// as each mode sees the curve.
TEST_F(Fourier, ModeAndOrderChooseHowTheCurveIsRead) {
    wx.set("v", curve({0, 0.5, 1}, {0, 0.25, 1}));
    auto dc = [&](const char* expression) {
        VectorPtr r = wx(expression);
        EXPECT_NE(r, nullptr) << expression << ": " << wx.messages();
        return r ? complexes(r).at(0) : Complex(NAN);
    };
    auto resampledMean = [](int P, int order) {  // the mean of P samples j/P of the curve
        double sum = 0;
        for (int j = 0; j < P; ++j) {
            double t = double(j) / P;
            sum += order == 2 ? t * t : t <= 0.5 ? 0.5 * t : 0.25 + 1.5 * (t - 0.5);
        }
        return sum / P;
    };
    EXPECT_NEAR(std::abs(dc("Fourier(v, 1, 1)") - resampledMean(1024, 2)), 0, 1e-14);
    EXPECT_NEAR(std::abs(dc("Fourier(v, 1, 1, [0, 5])") - resampledMean(1024, 2)), 0, 1e-14);
    EXPECT_NEAR(std::abs(dc("Fourier(v, 1, 1, [0, 1])") - resampledMean(1024, 1)), 0, 1e-14);
    EXPECT_NEAR(std::abs(dc("Fourier(v, 1, 1, [0, -3])") - resampledMean(1024, 1)), 0, 1e-14);
    EXPECT_NEAR(std::abs(dc("Fourier(v, 1, 1, [1])") - 0.375), 0, 1e-15);  // ∫ of the straight pieces
    EXPECT_EQ(wx.wx.setOption("InterpPts", "12"), "");  // rounded up to 16
    EXPECT_NEAR(std::abs(dc("Fourier(v, 1, 1)") - resampledMean(16, 2)), 0, 1e-14);
    // At least 2n points, whatever the option says: 40 harmonics take 128.
    VectorPtr r = wx("Fourier(v, 1, 40)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->size(), 40u);
    EXPECT_NEAR(std::abs(complexes(r)[0] - resampledMean(128, 2)), 0, 1e-14);
}

TEST_F(Fourier, HarmonicsWithoutUsableInputGiveNothing) {
    wx.set("v", curve({0, 0.25, 0.5, 0.75, 1}, {0, 1, 0, -1, 0}));
    wx.set("two", curve({0, 1}, {1, 2}));
    wx.set("bare", makeRealVector({0, 1, 0, -1, 0}));
    std::vector<double> t(201), y(201);
    for (int i = 0; i < 201; ++i) t[i] = i / 200.0;
    wx.set("dense", curve(t, y));
    wx.check({{"Fourier(dense, 1, 1e8, [1])", "[]"},  // 2·10^10 terms of integration
              {"Fourier(two, 1, 3)", "[]"}, {"Fourier(bare, 1, 3)", "[]"}, {"Fourier(v, 0, 3)", "[]"},
              {"Fourier(v, NaN, 3)", "[]"}, {"Fourier(v, 1, 0.9)", "[]"}, {"Fourier(v, 1, NaN)", "[]"},
              {"Fourier(v, 0.9, 3)", "[]"}, {"Fourier(v, 1, 1e300)", "[]"}});
    VectorPtr r = wx("Fourier(v, 1, 2.9)");  // n is floored, and one whole period is enough
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->size(), 2u);
}

TEST_F(Fourier, HarmonicsPerRun) {
    std::vector<double> t = unevenTimes(2e-3, 2e-7, 9), y1, y2;
    for (double s : t) {
        y1.push_back(std::sin(2 * kPi * 1000 * s));
        y2.push_back(3 * std::sin(2 * kPi * 1000 * s));
    }
    wx.set("r", runs({curve(t, y1), curve(t, y2)}, {"1", "3"}));
    VectorPtr r = wx("Fourier(r, 1k, 2)");
    ASSERT_NE(r, nullptr) << wx.messages();
    ASSERT_EQ(r->numDivisions(), 2u);
    expectNear(complexes(r), {0, Complex(0, 1), 0, Complex(0, 3)}, 1e-6, "runs");
    EXPECT_EQ(r->label(1), "3");
}

// ---- SpectrumUniv ------------------------------------------------------------------------------

TEST_F(Fourier, SpectrumOfAnEvenCurveIsItsFft) {
    wx.set("v", curve({0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7}, {1, 3, -2, 5, 0, 1, 4, -1}));
    VectorPtr s = wx("SpectrumUniv(v, 8)");
    VectorPtr f = wx("fft(v)");
    ASSERT_NE(s, nullptr) << wx.messages();
    ASSERT_NE(f, nullptr);
    expectNear(complexes(s), complexes(f), 1e-14, "values");
    ASSERT_EQ(frequencies(s).size(), 4u);
    for (size_t k = 0; k < 4; ++k) EXPECT_NEAR(frequencies(s)[k], frequencies(f)[k], 1e-12);
    VectorPtr rounded = wx("SpectrumUniv(v, 5)");  // the grid takes the transform's size
    ASSERT_NE(rounded, nullptr);
    expectNear(complexes(rounded), complexes(f), 1e-14, "5 points");
}

TEST_F(Fourier, SpectrumOfAnUnevenlySampledTone) {
    // Bin 5 of a grid of N = 256 points over [0, 1 ms]: Δf = (N − 1)/(N · 1 ms).
    const double df = 255.0 / 256 / 1e-3;
    std::vector<double> t = unevenTimes(1e-3, 2e-7, 3), y;
    for (double s : t) y.push_back(1.5 * std::cos(2 * kPi * 5 * df * s));
    wx.set("v", curve(t, y, units::Current));
    VectorPtr r = wx("SpectrumUniv(v, 200)");
    ASSERT_NE(r, nullptr) << wx.messages();
    std::vector<Complex> v = complexes(r);
    ASSERT_EQ(v.size(), 128u);
    EXPECT_LT(std::abs(v[5] - 1.5), 1e-6);  // the scaled Hann window reads the amplitude
    EXPECT_LT(std::abs(v[4] + 0.75), 1e-6);
    EXPECT_LT(std::abs(v[6] + 0.75), 1e-6);
    EXPECT_LT(std::abs(v[20]), 1e-6);
    EXPECT_NEAR(frequencies(r)[5], 5 * df, 1e-9);
    EXPECT_EQ(r->phys, units::Current);
    EXPECT_EQ(r->ref.phys, units::Frequency);
    EXPECT_EQ(r->ref.name, "Hz");
}

TEST_F(Fourier, SpectrumBadInput) {
    wx.set("v", curve({0, 1, 2}, {1, 2, 3}));
    wx.set("one", curve({0}, {1}));
    wx.set("bare", makeRealVector({1, 2, 3}));
    wx.set("flat", curve({1, 2, 1}, {1, 2, 3}));
    wx.expectFails("SpectrumUniv(one, 8)", "Need at least two points for FFT");
    wx.expectFails("SpectrumUniv(bare, 8)", "Argument 1 in function 'SpectrumUniv' has no reference (xvalues)");
    wx.expectFails("SpectrumUniv(flat, 8)", "Invalid data for 'SpectrumUniv'. Data has no reference or interval<=0");
    wx.expectFails("SpectrumUniv(v, 1)", "Need at least 2 points for interpolation in function 'SpectrumUniv'");
    wx.expectFails("SpectrumUniv(v, 1e18)", "Too many points (1e+18) for interpolation in function 'SpectrumUniv'");
}

}  // namespace
}  // namespace wavex
