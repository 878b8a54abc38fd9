"""numpy doing the work of bench/elementwise_bench.cpp, on data of the same size and distribution
(uniform in [-100, 100]), with the speed-ups the element-wise family aims for."""
import numpy as np

N = 10_000_000


def peers():
    rng = np.random.default_rng(1)
    x = rng.uniform(-100, 100, N)
    z = rng.uniform(-100, 100, N) + 1j * rng.uniform(-100, 100, N)
    return [
        ("Elementwise_DbComplex", N, lambda: 20 * np.log10(np.abs(z)), 3.0),
        ("Elementwise_SinReal", N, lambda: np.sin(x), 1.0),
        ("Elementwise_PhaseComplex", N, lambda: np.unwrap(np.angle(z)), 5.0),
        ("Elementwise_MeanReal", N, lambda: np.mean(x), 1.0),
        ("Elementwise_TimesPlusEvaluate", N, lambda: x * 2 + 1, 1.0),
        ("Elementwise_CopyLoop", N, lambda: x.copy()),
    ]
