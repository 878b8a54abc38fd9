import gc
import os
import warnings

import numpy as np
import pytest

import wavex

EXAMPLES = os.path.join(os.path.dirname(__file__), "..", "..", "examples")


@pytest.fixture
def wx():
    return wavex.Interpreter()


@pytest.mark.parametrize("y, expect", [
    (np.array([1.0, 10.0, 100.0]), [0, 20, 40]),
    (np.array([3 + 4j, 10j]), [20 * np.log10(5), 20]),
    ([1, 10], [0, 20]),                                   # a list, converted once
    (np.arange(6, dtype=np.int32)[2:6:3] * 10, [26.02, 33.98]),  # strided ints [20, 50]
])
def test_db_of_numpy_data(wx, y, expect):
    wx["v"] = wavex.Vector(y)
    np.testing.assert_allclose(wx.eval("db(v)").y, expect, atol=0.01)


def test_curve_with_units_and_runs_round_trips(wx):
    y = np.array([1.0, 2.0, 3.0, 4.0, 5.0])
    x = np.array([0.0, 1e-3, 2e-3, 0.0, 1e-3])
    wx["v"] = wavex.Vector(y, x=x, unit="V", x_unit="s", runs=[("R=1", 3), ("R=2", 2)])
    r = wx.eval("v * 2")
    assert (r.unit, r.x_unit) == ("V", "s")
    assert r.runs == [("R=1", slice(0, 3, 1)), ("R=2", slice(3, 5, 1))]
    np.testing.assert_array_equal(r.y, y * 2)
    np.testing.assert_array_equal(r.x, x)
    assert wx.eval("NumDivisions(v)").y[0] == 2
    assert wavex.Vector([1.0, 2.0], runs=[1, 1]).runs == [(None, slice(0, 1, 1)), (None, slice(1, 2, 1))]


def test_strings_and_complex_come_back(wx):
    wx["s"] = wavex.Vector(["a", None, "c"])
    assert wx.eval("s & 'x'").y == ["ax", "x", "cx"]
    z = wx.eval("(1, 2) * [1, 2]").y
    assert z.dtype == np.complex128
    np.testing.assert_array_equal(z, [1 + 2j, 2 + 4j])


def test_results_view_wavex_memory(wx):
    wx["v"] = wavex.Vector(np.linspace(0, 1, 1000), x=np.linspace(0, 1e-3, 1000))
    r = wx.eval("v + 1")
    y = r.y
    assert y.base is r and r.x.base is r
    assert not y.flags.writeable
    assert r.x.__array_interface__["data"][0] == wx["v"].x.__array_interface__["data"][0]  # x shared
    del r, wx
    gc.collect()
    assert y[999] == 2.0  # the view outlives its vector and the interpreter


def test_input_is_read_in_place(wx):
    y = np.arange(4.0)
    v = wavex.Vector(y)
    assert v.y.__array_interface__["data"][0] == y.__array_interface__["data"][0]
    del y
    gc.collect()
    wx["v"] = v
    np.testing.assert_array_equal(wx.eval("v").y, [0, 1, 2, 3])


def test_calls_by_name_and_attribute(wx):
    v = wavex.Vector([0.0, 1.0, 2.0], x=[0.0, 1.0, 2.0])
    assert wx.call("XFromY", v, 0.5).y[0] == pytest.approx(0.5)
    assert wx.XFromY(v, 1.5).y[0] == pytest.approx(1.5)
    assert wx.ToUpper("ab").y == ["AB"]
    with pytest.raises(AttributeError):
        wx.NoSuchFunction


def test_load_a_raw_file(wx):
    wx.load(os.path.join(EXAMPLES, "rlc_ac.raw"))
    out = wx.eval("V(out)")
    assert out.x_unit == "Hz" and out.y.dtype == np.complex128 and len(out) > 10


@pytest.mark.parametrize("action, error, message", [
    (lambda wx: wx.eval("sin(1, 2)"), wavex.Error, "takes 1 argument, not 2"),
    (lambda wx: wx.eval("nosuch + 1"), wavex.Error, "nosuch"),
    (lambda wx: wx.call("NoSuch", 1), wavex.Error, "Unknown function 'NoSuch'"),
    (lambda wx: wx.load("/nonexistent/data.csv"), wavex.Error, "data.csv"),
    (lambda wx: wavex.Vector([1.0, 2.0], x=[1.0]), ValueError, "different lengths (1 and 2)"),
    (lambda wx: wavex.Vector([1.0], unit="furlong"), ValueError, "Unknown unit 'furlong'"),
    (lambda wx: wavex.Vector([1.0, 2.0], runs=[1, 2]), ValueError, "do not add up"),
    (lambda wx: wavex.Vector(np.zeros((2, 2))), ValueError, "one-dimensional"),
    (lambda wx: wx.__setitem__("v(out)", wavex.Vector([1.0])), ValueError, "not a name"),
    (lambda wx: wx["missing"], KeyError, "missing"),
])
def test_bad_input_raises_with_the_message(wx, action, error, message):
    with pytest.raises(error, match=message.replace("(", r"\(").replace(")", r"\)")):
        action(wx)


def test_messages_of_a_call_that_succeeds_are_warnings(wx):
    with pytest.warns(wavex.Warning, match="Cannot open file 'none.txt'"):
        r = wx.eval("ReadFile('none.txt')")
    assert len(r) == 0
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with pytest.raises(wavex.Warning):
            wx.eval("ReadFile('none.txt')")
