# The difference of the two transients of the RC step (rc_20u.csv, rc_7u.csv: one circuit
# simulated by ngspice at 20 us and 7 us steps) on the union of their times, by numpy's linear
# interpolation; written to diff_expected.csv.
import numpy as np

a = np.loadtxt("rc_20u.csv", delimiter=",", skiprows=1)
b = np.loadtxt("rc_7u.csv", delimiter=",", skiprows=1)
lo, hi = max(a[0, 0], b[0, 0]), min(a[-1, 0], b[-1, 0])
t = np.union1d(a[:, 0], b[:, 0])
t = t[(t >= lo) & (t <= hi)]
d = np.interp(t, a[:, 0], a[:, 1]) - np.interp(t, b[:, 0], b[:, 1])
np.savetxt("diff_expected.csv", np.column_stack([t, d]), delimiter=",", header="time,diff", comments="", fmt="%.17g")
