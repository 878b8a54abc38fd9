"""The same measurement over every raw file of a directory with Dask distributed: each worker loads
its files with the wavex module. Runs on a LocalCluster of N worker processes, or unchanged on a
cluster given by its scheduler address (the workers must see the files and import wavex).

    /usr/bin/python3 dask_measure.py DIR [--workers N | --scheduler tcp://HOST:8786]
"""
import argparse
import glob
import os
import time

import wavex


def measure(path):
    """(delay to half the final value, value at 3 ms) of one run."""
    wx = wavex.Interpreter()
    wx.load(path)
    return (float(wx.eval("XFromY(V(out), 0.5)").y[0]), float(wx.eval("YFromX(V(out), 3m)").y[0]))


def measure_batch(paths):
    return [measure(p) for p in paths]


def measure_all(paths, client, batch=25):
    """measure() of every path, in order. Files go to the workers in batches: a task costs the
    scheduler a few milliseconds, more than a small file takes to measure."""
    batches = [paths[i:i + batch] for i in range(0, len(paths), batch)]
    return [r for results in client.gather(client.map(measure_batch, batches)) for r in results]


def main():
    from dask.distributed import Client, LocalCluster

    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("dir")
    parser.add_argument("--workers", type=int, default=2)
    parser.add_argument("--scheduler", help="address of a running scheduler")
    parser.add_argument("--batch", type=int, default=25, help="files per task")
    args = parser.parse_args()
    paths = sorted(glob.glob(os.path.join(args.dir, "*.raw")))
    if args.scheduler:
        client = Client(args.scheduler)
    else:
        client = Client(LocalCluster(n_workers=args.workers, threads_per_worker=1, dashboard_address=None))
    client.wait_for_workers(args.workers if not args.scheduler else 1)
    start = time.perf_counter()
    results = measure_all(paths, client, args.batch)
    seconds = time.perf_counter() - start
    for path, (delay, v3) in zip(paths, results):
        print(f"{path} {delay:.6g} {v3:.6g}")
    print(f"# {len(paths)} files in {seconds:.2f} s: {len(paths) / seconds:.1f} files/s", flush=True)
    client.close()


if __name__ == "__main__":
    main()
