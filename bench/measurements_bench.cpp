// The measurements as the host calls them (callFunction), each on 10^7 points in one run and on
// 1000 runs of 10^4 points: the difference is the cost of a run. bench/peers_measurements.py does
// the same work with numpy.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <map>
#include <numbers>
#include <random>
#include <string>

namespace wavex {
namespace {

constexpr int64_t kPoints = 10'000'000;
constexpr int64_t kRuns = 1000;
constexpr double kStep = 1e-6;  // 1 µs a sample: 10^4 points are 10 ms, ten cycles at 1 kHz
constexpr double kTwoPi = 2 * std::numbers::pi;

enum class Signal { Pulse, Sine, Response };

// A pulse train at 1 kHz with smooth edges between 0 and 1.
double pulse(double t) { return 0.5 + 0.5 * std::tanh(8 * std::sin(kTwoPi * 1e3 * t)); }
// The same 50 µs later: Delay's target.
double latePulse(double t) { return pulse(t - 50e-6); }

// `runs` runs of kPoints / runs points each, x from 0 in steps of kStep in every run, y = f(x)
// (plus uniform noise of ±1 mV and a 1 % second harmonic for the sine).
const VectorPtr& sampled(Signal s, double (*f)(double), int64_t runs) {
    static std::map<std::tuple<Signal, double (*)(double), int64_t>, VectorPtr> made;
    VectorPtr& v = made[{s, f, runs}];
    if (v) return v;
    const int64_t each = kPoints / runs;
    std::vector<double> x(kPoints), y(kPoints);
    std::mt19937_64 gen(5);
    std::uniform_real_distribution<double> noise(-1e-3, 1e-3);
    for (int64_t i = 0; i < kPoints; ++i) {
        const double t = static_cast<double>(i % each) * kStep;
        x[static_cast<size_t>(i)] = t;
        y[static_cast<size_t>(i)] = s == Signal::Sine ? std::sin(kTwoPi * 1e3 * t) + 0.01 * std::sin(kTwoPi * 2e3 * t) + noise(gen)
                                                      : f(t);
    }
    auto c = std::const_pointer_cast<Vector>(makeCurve(std::move(x), std::move(y), units::Voltage, units::Time));
    c->setDivisionLengths(std::vector<size_t>(static_cast<size_t>(runs), static_cast<size_t>(each)));
    return v = c;
}

// The loop gain 100 / ((1 + jf/1k)(1 + jf/100k)) over 1 Hz … 100 MHz, logarithmically, per run.
const VectorPtr& loopGain(int64_t runs) {
    static std::map<int64_t, VectorPtr> made;
    VectorPtr& v = made[runs];
    if (v) return v;
    const int64_t each = kPoints / runs;
    auto c = std::make_shared<Vector>();
    c->type = VD_COMPLEX;
    c->phys = units::Voltage;
    c->cplx.resize(kPoints);
    Array<double> f(kPoints);
    for (int64_t i = 0; i < kPoints; ++i) {
        const double fi = std::pow(10, 8.0 * static_cast<double>(i % each) / static_cast<double>(each - 1));
        f[static_cast<size_t>(i)] = fi;
        c->cplx[static_cast<size_t>(i)] = 100.0 / (Complex(1, fi / 1e3) * Complex(1, fi / 1e5));
    }
    c->ref = Reference::fromReal(std::move(f), units::Frequency, "frequency");
    c->setDivisionLengths(std::vector<size_t>(static_cast<size_t>(runs), static_cast<size_t>(each)));
    return v = c;
}

struct Measure {
    const char* name;
    Signal signal;
    std::vector<double> scalars;  // the arguments after the signal(s)
};

const Measure kMeasures[] = {
    {"StateLevels", Signal::Pulse, {}},     {"RiseTime", Signal::Pulse, {}},
    {"FallTime", Signal::Pulse, {}},        {"SlewRate", Signal::Pulse, {}},
    {"Overshoot", Signal::Pulse, {}},       {"SettlingTime", Signal::Pulse, {2}},
    {"Delay", Signal::Pulse, {0.5, 0.5}},   {"PulseWidth", Signal::Pulse, {}},
    {"DutyCycle", Signal::Pulse, {}},       {"Frequency", Signal::Pulse, {0.5, 0.1}},
    {"THD", Signal::Sine, {1e3}},           {"SINAD", Signal::Sine, {1e3}},
    {"SNR", Signal::Sine, {1e3}},           {"ENOB", Signal::Sine, {1e3}},
    {"SFDR", Signal::Sine, {1e3}},          {"Bandwidth", Signal::Response, {}},
    {"UnityGainFrequency", Signal::Response, {}}, {"PhaseMargin", Signal::Response, {}},
    {"GainMargin", Signal::Response, {}},
};

void measure(benchmark::State& state, const Measure& m, int64_t runs) {
    std::vector<VectorPtr> args;
    if (m.signal == Signal::Response) args.push_back(loopGain(runs));
    else args.push_back(sampled(m.signal, pulse, runs));
    if (std::string_view(m.name) == "Delay") args.push_back(sampled(Signal::Pulse, latePulse, runs));
    for (double s : m.scalars) args.push_back(makeScalar(s));
    bench::callFunctionLoop(state, m.name, args, kPoints);
}

// BM_NAME/10000000 on one run, BM_NAME_runs/1000 on 1000 runs of the same total.
const bool registered = [] {
    for (const Measure& m : kMeasures) {
        const std::string name = std::string("BM_") + m.name;
        benchmark::RegisterBenchmark(name.c_str(), [&m](benchmark::State& s) { measure(s, m, 1); })
            ->Arg(kPoints)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "_runs").c_str(), [&m](benchmark::State& s) { measure(s, m, kRuns); })
            ->Arg(kRuns)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace
}  // namespace wavex
