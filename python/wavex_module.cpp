// The Python module: wavex's interpreter over numpy arrays.
//
// A wavex.Vector holds a shared, immutable wavex vector. Its .y and .x are read-only numpy arrays
// over the vector's own memory whose base is the wavex.Vector, so they stay valid after the
// interpreter is gone. A vector made from numpy arrays reads float64 or complex128 contiguous data
// in place (holding a reference to the array); any other array is converted once.
//
// A call that fails raises wavex.Error with wavex's messages; a call that succeeds with messages
// issues them as wavex.Warning through Python's warnings.
#include "io/load.hpp"
#include "wavex/wavex.hpp"

#include <pybind11/complex.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cctype>
#include <numeric>

namespace py = pybind11;
using namespace wavex;

namespace {

struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

PyObject* gWarning = nullptr;  // wavex.Warning

struct PyVector {
    VectorPtr v;
};

// ---- numpy to wavex --------------------------------------------------------------------------

// The data of a one-dimensional array, read in place. The array stays referenced until wavex lets
// go of the data, which may happen on any thread, hence the GIL.
template <class T>
Array<T> adoptArray(const py::handle& source) {
    auto array = py::array_t<T, py::array::c_style | py::array::forcecast>::ensure(source);
    if (!array) throw py::error_already_set();
    if (array.ndim() != 1) throw py::value_error("wavex vectors are one-dimensional");
    T* data = const_cast<T*>(array.data());
    size_t n = array.size();
    auto release = [](void* owner) {
        py::gil_scoped_acquire gil;
        Py_DECREF(static_cast<PyObject*>(owner));
    };
    return Array<T>::adopt(data, n, {release, array.release().ptr()});
}

PhysType unitCode(const std::string& unit, PhysType plain) {
    if (unit.empty()) return plain;
    if (auto code = units::fromSymbol(unit)) return *code;
    throw py::value_error("Unknown unit '" + unit + "'");
}

bool isText(const py::handle& o) { return py::isinstance<py::str>(o) || o.is_none(); }

// y as real, complex or string data: numpy arrays and sequences of numbers by their dtype,
// sequences of str (None for a null element) as strings.
void setY(Vector& v, const py::handle& y) {
    if (py::isinstance<py::str>(y)) throw py::type_error("y is a str: give a list of strings");
    if (py::isinstance<py::list>(y) || py::isinstance<py::tuple>(y)) {
        auto seq = py::reinterpret_borrow<py::sequence>(y);
        if (seq.size() > 0 && isText(seq[0])) {
            v.type = VD_STRING;
            for (auto e : seq) {
                if (!isText(e)) throw py::type_error("a list of strings holds only str or None");
                v.str.push_back(e.is_none() ? StrElem() : StrElem(e.cast<std::string>()));
            }
            return;
        }
    }
    py::array a = py::array::ensure(y);
    if (!a) throw py::error_already_set();
    if (a.ndim() == 0) a = a.attr("reshape")(1);
    char kind = a.dtype().kind();
    if (kind == 'c') {
        v.type = VD_COMPLEX;
        v.cplx = adoptArray<Complex>(a);
    } else if (kind == 'f' || kind == 'i' || kind == 'u' || kind == 'b') {
        v.type = VD_REAL;
        v.real = adoptArray<double>(a);
    } else if (kind == 'U' || kind == 'O') {
        setY(v, a.attr("tolist")());
    } else {
        throw py::type_error("y must hold numbers or strings, not dtype " + py::str(a.dtype()).cast<std::string>());
    }
}

PyVector makeVector(const py::object& y, const py::object& x, const std::string& unit, const std::string& xUnit,
                    const py::object& runs, const std::string& name) {
    auto v = std::make_shared<Vector>();
    setY(*v, y);
    v->phys = unitCode(unit, units::Number);
    v->name = name;
    if (!x.is_none()) {
        py::array a = py::array::ensure(x);
        if (!a) throw py::error_already_set();
        PhysType phys = unitCode(xUnit, units::Number);
        v->ref = a.dtype().kind() == 'c' ? Reference::fromComplex(adoptArray<Complex>(a), phys)
                                         : Reference::fromReal(adoptArray<double>(a), phys);
        if (v->ref.size() != v->size())
            throw py::value_error("x and y have different lengths (" + std::to_string(v->ref.size()) + " and " +
                                  std::to_string(v->size()) + ")");
    }
    if (!runs.is_none()) {
        // A list of lengths, or of (label, length) pairs.
        std::vector<size_t> lengths;
        for (auto run : runs) {
            if (py::isinstance<py::tuple>(run)) {
                auto pair = run.cast<std::pair<std::optional<std::string>, size_t>>();
                v->labels.push_back(pair.first);
                lengths.push_back(pair.second);
            } else {
                lengths.push_back(run.cast<size_t>());
            }
        }
        if (std::accumulate(lengths.begin(), lengths.end(), size_t{0}) != v->size())
            throw py::value_error("the runs' lengths do not add up to the length of y");
        if (!v->labels.empty() && v->labels.size() != lengths.size())
            throw py::value_error("give every run a label or none");
        if (lengths.size() > 1) v->setDivisionLengths(lengths);
    }
    return {v};
}

// A Python value as a wavex argument: a wavex.Vector as it is, anything else as wavex.Vector(value).
VectorPtr toVector(const py::handle& o) {
    if (py::isinstance<PyVector>(o)) return o.cast<const PyVector&>().v;
    if (py::isinstance<py::str>(o)) return makeStringVector({o.cast<std::string>()});
    return makeVector(py::reinterpret_borrow<py::object>(o), py::none(), "", "", py::none(), "").v;
}

// ---- wavex to numpy --------------------------------------------------------------------------

// A read-only array over `n` elements at `data`, kept alive by `owner` (the wavex.Vector).
template <class T>
py::object view(const T* data, size_t n, const py::object& owner) {
    py::array_t<T> a({n}, {sizeof(T)}, data, owner);
    py::detail::array_proxy(a.ptr())->flags &= ~py::detail::npy_api::NPY_ARRAY_WRITEABLE_;
    return a;
}

py::object yOf(const py::object& self) {
    const Vector& v = *self.cast<const PyVector&>().v;
    if (v.type == VD_REAL) return view(nonNullData(v.real), v.size(), self);
    if (v.type == VD_COMPLEX) return view(nonNullData(v.cplx), v.size(), self);
    py::list out;
    for (const StrElem& s : v.str) out.append(s ? py::object(py::str(*s)) : py::object(py::none()));
    return out;
}

py::object xOf(const py::object& self) {
    const Reference& r = self.cast<const PyVector&>().v->ref;
    if (r.type == VD_REAL) return view(r.real(), r.size(), self);
    if (r.type == VD_COMPLEX) return view(r.cplx(), r.size(), self);
    return py::none();
}

py::list runsOf(const PyVector& p) {
    py::list out;
    const Vector& v = *p.v;
    for (size_t k = 0; k < v.numDivisions(); ++k) {
        size_t start = v.divisionStart(k);
        out.append(py::make_tuple(v.label(k), py::slice(start, start + v.divisionLength(k), 1)));
    }
    return out;
}

// ---- The interpreter -------------------------------------------------------------------------

class PyInterpreter {
public:
    PyInterpreter() : sink_(std::make_shared<CollectingMessageHandler>()), wx_(sink_) {}

    void load(const std::string& path) {
        std::string error;
        auto vectors = io::loadData(path, &error);
        if (!vectors) throw Error(error);
        for (io::NamedVector& v : *vectors) wx_.setVector(v.name, std::move(v.value));
    }

    void set(const std::string& name, const py::object& value) {
        // A name as the language reads it: a letter or '_', then letters, digits, '_' or '.'.
        auto start = [](char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; };
        auto inside = [&](char c) { return start(c) || std::isdigit(static_cast<unsigned char>(c)) || c == '.'; };
        bool identifier = !name.empty() && start(name[0]) && std::all_of(name.begin(), name.end(), inside);
        if (!identifier) throw py::value_error("'" + name + "' is not a name a vector can have");
        wx_.setVector(name, toVector(value));
    }

    PyVector get(const std::string& name) const {
        VectorPtr v = wx_.findVector(name);
        if (!v) throw py::key_error(name);
        return {v};
    }

    PyVector eval(const std::string& expression) {
        sink_->clear();
        return finish(wx_.evaluate(expression));
    }

    PyVector call(const std::string& name, const py::args& args) {
        const FuncInfo* info = functionTable().find(name);
        if (!info) throw Error("Unknown function '" + name + "'");
        std::vector<VectorPtr> values;
        for (auto a : args) values.push_back(toVector(a));
        sink_->clear();
        VectorPtr out;
        callFunction(*info, values, sink_, ScpParseContext{&wx_}, &out);
        return finish(out);
    }

    bool hasFunction(const std::string& name) const { return functionTable().find(name) != nullptr; }

    std::vector<std::string> names() const { return wx_.vectorNames(); }

private:
    // The result, or wavex.Error with the messages; messages of a call that succeeded are warnings.
    PyVector finish(VectorPtr result) {
        const auto& messages = sink_->messages();
        if (!result) {
            std::string text;
            for (const std::string& m : messages) text += (text.empty() ? "" : "\n") + m;
            throw Error(text.empty() ? "evaluation failed" : text);
        }
        for (const std::string& m : messages)
            if (PyErr_WarnEx(gWarning, m.c_str(), 1) < 0) throw py::error_already_set();
        return {result};
    }

    std::shared_ptr<CollectingMessageHandler> sink_;
    Interpreter wx_;
};

}  // namespace

PYBIND11_MODULE(wavex, m) {
    m.doc() = "Waveform expressions over numpy arrays.";
    m.attr("__version__") = WAVEX_VERSION;
    py::register_exception<Error>(m, "Error");
    gWarning = PyErr_NewException("wavex.Warning", PyExc_UserWarning, nullptr);
    m.attr("Warning") = py::handle(gWarning);

    py::class_<PyVector>(m, "Vector")
        .def(py::init(&makeVector), py::arg("y"), py::arg("x") = py::none(), py::arg("unit") = "",
             py::arg("x_unit") = "", py::arg("runs") = py::none(), py::arg("name") = "")
        .def_property_readonly("y", &yOf)
        .def_property_readonly("x", &xOf)
        .def_property_readonly("unit", [](const PyVector& p) { return std::string(units::symbol(p.v->phys)); })
        .def_property_readonly("x_unit", [](const PyVector& p) -> py::object {
            if (!p.v->ref.present()) return py::none();
            return py::str(std::string(units::symbol(p.v->ref.phys)));
        })
        .def_property_readonly("runs", &runsOf)
        .def_property_readonly("name", [](const PyVector& p) { return p.v->name; })
        .def("__len__", [](const PyVector& p) { return p.v->size(); })
        .def("__repr__", [](const PyVector& p) {
            const char* kind = p.v->type == VD_COMPLEX ? "complex" : p.v->type == VD_STRING ? "string" : "real";
            return "<wavex.Vector " + std::string(kind) + "[" + std::to_string(p.v->size()) + "] '" + p.v->name + "'>";
        });

    py::class_<PyInterpreter>(m, "Interpreter")
        .def(py::init<>())
        .def("load", &PyInterpreter::load, py::arg("path"), "Loads a CSV, raw or Touchstone file.")
        .def("eval", &PyInterpreter::eval, py::arg("expression"))
        .def("call", &PyInterpreter::call, py::arg("name"))
        .def("names", &PyInterpreter::names)
        .def("__setitem__", &PyInterpreter::set)
        .def("__getitem__", &PyInterpreter::get)
        .def("__getattr__", [](py::object self, const std::string& name) -> py::object {
            if (!self.cast<const PyInterpreter&>().hasFunction(name)) throw py::attribute_error(name);
            return py::cpp_function([self, name](const py::args& args) {
                return self.cast<PyInterpreter&>().call(name, args);
            });
        });
}
