"""numpy doing the work of bench/operators_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable) for each
operator benchmark: the same expression written with numpy arrays, uniform in [-100, 100] (complex:
both parts). A comparison gives numpy's own boolean array, as a numpy user would write it; the
operator gives doubles (one byte against eight per element written).
"""
import numpy as np

N = 10_000_000


def peers():
    rng = np.random.default_rng(1)
    a = rng.uniform(-100, 100, N)
    b = rng.uniform(-100, 100, N)
    z = rng.uniform(-100, 100, N) + 1j * rng.uniform(-100, 100, N)
    w = rng.uniform(-100, 100, N) + 1j * rng.uniform(-100, 100, N)
    return [
        (f"BM_Plus_Real/{N}", N, lambda: a + b),
        (f"BM_Times_RealScalar/{N}", N, lambda: a * 2),
        (f"BM_Divide_Real/{N}", N, lambda: a / b),
        (f"BM_Gt_Real/{N}", N, lambda: a > b),
        (f"BM_Plus_Complex/{N}", N, lambda: z + w),
        (f"BM_Times_ComplexScalar/{N}", N, lambda: z * 2),
        (f"BM_Times_Complex/{N}", N, lambda: z * w),
        (f"BM_Divide_Complex/{N}", N, lambda: z / w),
        (f"BM_Evaluate_TimesPlus/{N}", N, lambda: a * 2 + 1),
        (f"BM_OperatorsCopyLoop_Real/{N}", N, lambda: a.copy()),
        (f"BM_OperatorsCopyLoop_Complex/{N}", N, lambda: z.copy()),
    ]
