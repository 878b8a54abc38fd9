// The binary operators at 10^7 points, called as the host calls them (callFunction, which
// allocates the result), beside plain copy loops of the same size: the memory-bandwidth bound.
// An operator moves more bytes than a copy (a + b reads two vectors and writes one), so its bound
// is the copy loop's time per byte times the bytes it moves; bench/peers_operators.py gives numpy
// the same work on data of the same size and distribution.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <map>
#include <random>
#include <string>

namespace wavex {
namespace {

using bench::callFunctionLoop;
using bench::sink;

constexpr int64_t kPoints = 10'000'000;

// Uniform in [-100, 100] (complex: both parts), one fixed seed per operand.
VectorPtr uniformReal(int64_t n, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(-100, 100);
    std::vector<double> y(static_cast<size_t>(n));
    for (double& x : y) x = u(gen);
    return makeRealVector(std::move(y));
}

VectorPtr uniformComplex(int64_t n, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(-100, 100);
    std::vector<Complex> z(static_cast<size_t>(n));
    for (Complex& c : z) c = Complex(u(gen), u(gen));
    return makeComplexVector(std::move(z));
}

// The operands of one size, made once.
struct Operands {
    VectorPtr a, b, z, w;
};
const Operands& operands(int64_t n) {
    static std::map<int64_t, Operands> made;
    auto it = made.find(n);
    if (it == made.end())
        it = made.emplace(n, Operands{uniformReal(n, 1), uniformReal(n, 2), uniformComplex(n, 3), uniformComplex(n, 4)})
                 .first;
    return it->second;
}

// Calls `name` on two arguments; `bytesPerElement` is what one element reads and writes.
void callBinary(benchmark::State& state, const char* name, const VectorPtr& left, const VectorPtr& right,
                int64_t bytesPerElement) {
    callFunctionLoop(state, name, {left, right}, 0);
    int64_t n = std::max<int64_t>(static_cast<int64_t>(left->size()), static_cast<int64_t>(right->size()));
    state.SetItemsProcessed(state.iterations() * n);
    state.SetBytesProcessed(state.iterations() * n * bytesPerElement);
}

constexpr int64_t kReal = sizeof(double), kComplex = sizeof(Complex);

void BM_Plus_Real(benchmark::State& state) {
    const Operands& o = operands(state.range(0));
    callBinary(state, "_Plus", o.a, o.b, 3 * kReal);
}
void BM_Times_RealScalar(benchmark::State& state) {
    callBinary(state, "_Times", operands(state.range(0)).a, makeScalar(2), 2 * kReal);
}
void BM_Divide_Real(benchmark::State& state) {
    const Operands& o = operands(state.range(0));
    callBinary(state, "_Divide", o.a, o.b, 3 * kReal);
}
void BM_Gt_Real(benchmark::State& state) {
    const Operands& o = operands(state.range(0));
    callBinary(state, "_Gt", o.a, o.b, 3 * kReal);
}
void BM_Plus_Complex(benchmark::State& state) {
    const Operands& o = operands(state.range(0));
    callBinary(state, "_Plus", o.z, o.w, 3 * kComplex);
}
void BM_Times_ComplexScalar(benchmark::State& state) {
    callBinary(state, "_Times", operands(state.range(0)).z, makeScalar(2), 2 * kComplex);
}
void BM_Times_Complex(benchmark::State& state) {
    const Operands& o = operands(state.range(0));
    callBinary(state, "_Times", o.z, o.w, 3 * kComplex);
}
void BM_Divide_Complex(benchmark::State& state) {
    const Operands& o = operands(state.range(0));
    callBinary(state, "_Divide", o.z, o.w, 3 * kComplex);
}

// The evaluator on v*2+1: two operator calls, each making a full-size result.
void BM_Evaluate_TimesPlus(benchmark::State& state) {
    Interpreter wx(sink());
    wx.setVector("v", operands(state.range(0)).a);
    for (auto _ : state) {
        VectorPtr r = wx.evaluate("v*2+1");
        if (!r) {
            state.SkipWithError("v*2+1 failed");
            return;
        }
        benchmark::DoNotOptimize(r->size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0) * 4 * kReal);
}

void BM_OperatorsCopyLoop_Real(benchmark::State& state) { bench::copyLoop(state, operands(state.range(0)).a->real); }
void BM_OperatorsCopyLoop_Complex(benchmark::State& state) { bench::copyLoop(state, operands(state.range(0)).z->cplx); }

#define WAVEX_OPERATOR_BENCHMARK(f) BENCHMARK(f)->Arg(kPoints)->Unit(benchmark::kMillisecond)
WAVEX_OPERATOR_BENCHMARK(BM_OperatorsCopyLoop_Real);
WAVEX_OPERATOR_BENCHMARK(BM_OperatorsCopyLoop_Complex);
WAVEX_OPERATOR_BENCHMARK(BM_Plus_Real);
WAVEX_OPERATOR_BENCHMARK(BM_Times_RealScalar);
WAVEX_OPERATOR_BENCHMARK(BM_Divide_Real);
WAVEX_OPERATOR_BENCHMARK(BM_Gt_Real);
WAVEX_OPERATOR_BENCHMARK(BM_Plus_Complex);
WAVEX_OPERATOR_BENCHMARK(BM_Times_ComplexScalar);
WAVEX_OPERATOR_BENCHMARK(BM_Times_Complex);
WAVEX_OPERATOR_BENCHMARK(BM_Divide_Complex);
WAVEX_OPERATOR_BENCHMARK(BM_Evaluate_TimesPlus);

}  // namespace
}  // namespace wavex
