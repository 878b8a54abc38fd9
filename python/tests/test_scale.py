import os
import sys

import pytest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "examples", "scale"))
import dask_measure  # noqa: E402
import make_runs  # noqa: E402


def test_dask_on_two_local_workers_equals_a_serial_loop(tmp_path):
    distributed = pytest.importorskip("dask.distributed")
    paths = make_runs.write_runs(str(tmp_path), 20, points=500)
    serial = [dask_measure.measure(p) for p in paths]
    assert all(0.6e-3 < delay < 0.8e-3 for delay, _ in serial)  # ln 2 · RC, RC within ±21 % of 1 ms
    cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None,
                                       processes=True)
    with cluster, distributed.Client(cluster) as client:
        assert dask_measure.measure_all(paths, client, batch=5) == serial
