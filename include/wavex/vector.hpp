// The value of the expression language: a vector of real, complex or string data with an optional
// reference (x-values), physical units, names, and divisions (one curve per run of a stepped or
// Monte Carlo analysis, stored one after another).
//
// Vectors are immutable once made and shared through VectorPtr: passing a vector to a function
// never copies its data.
#pragma once

#include "wavex/array.hpp"
#include "wavex/units.hpp"

#include <complex>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wavex {

using Complex = std::complex<double>;

// Kinds of y-data and reference data.
enum VDType : int { VD_REAL = 1, VD_COMPLEX = 2, VD_STRING = 3, VD_NONE = 5 };

// A string element; a null element (nullopt) reads as "" but is distinct from it.
using StrElem = std::optional<std::string>;
using DivisionLabelArray = std::vector<std::optional<std::string>>;

template <class T>
const T* nonNullData(const Array<T>& a) {
    static const T none{};
    return a.data() ? a.data() : &none;
}

// The x-values of a vector: as long as its y-data, real or complex, or absent (VD_NONE).
// The values live in a shared array of which this reference sees a window, so that a result over
// the same x-values as its argument (every element-wise function) shares them instead of copying.
struct Reference {
    VDType type = VD_NONE;
    std::shared_ptr<const Array<double>> realValues;
    std::shared_ptr<const Array<Complex>> complexValues;
    size_t offset = 0;
    size_t length = 0;
    PhysType phys = units::NoRef;
    std::string name;

    bool present() const { return type == VD_REAL || type == VD_COMPLEX; }
    size_t size() const { return present() ? length : 0; }
    // The values (never null for a reference of that kind, even an empty one).
    const double* real() const { return type == VD_REAL ? nonNullData(*realValues) + offset : nullptr; }
    const Complex* cplx() const { return type == VD_COMPLEX ? nonNullData(*complexValues) + offset : nullptr; }
    // The part of this reference from `start`, `count` values long (sharing the values).
    Reference window(size_t start, size_t count) const;
    // Real x-values owned by a new array.
    static Reference fromReal(Array<double> values, PhysType phys, std::string name = "");
    static Reference fromComplex(Array<Complex> values, PhysType phys, std::string name = "");
};

struct Vector {
    VDType type = VD_REAL;
    Array<double> real;
    Array<Complex> cplx;
    std::vector<StrElem> str;
    PhysType phys = units::Number;
    std::string name;
    Reference ref;
    // Start of each division when there are several; empty for a vector of one division.
    std::vector<size_t> divisionStarts;
    // One label per division (or empty); a label may be absent.
    DivisionLabelArray labels;

    size_t size() const {
        return type == VD_REAL ? real.size() : type == VD_COMPLEX ? cplx.size() : str.size();
    }
    size_t numDivisions() const { return divisionStarts.empty() ? 1 : divisionStarts.size(); }
    size_t divisionStart(size_t k) const { return divisionStarts.empty() ? 0 : divisionStarts[k]; }
    size_t divisionLength(size_t k) const {
        size_t end = k + 1 < numDivisions() ? divisionStarts[k + 1] : size();
        return end - divisionStart(k);
    }
    std::optional<std::string> label(size_t k) const {
        return k < labels.size() ? labels[k] : std::nullopt;
    }
    // Sets the divisions from their lengths (which must add up to size()).
    void setDivisionLengths(const std::vector<size_t>& lengths);
};

using VectorPtr = std::shared_ptr<const Vector>;

// Element i as text: a string as it is ("" for null), a number in its shortest round-trip form
// ("0.1", "1e+300", "nan", "inf"), a complex number as "(re,im)". This is how a number becomes
// text where text is wanted (template values, string arguments given numbers).
std::string elementText(const Vector& v, size_t i);

// Builders for the host and for tests.
VectorPtr makeRealVector(std::vector<double> y, PhysType phys = units::Number);
VectorPtr makeComplexVector(std::vector<Complex> y, PhysType phys = units::Number);
VectorPtr makeStringVector(std::vector<StrElem> y);
VectorPtr makeScalar(double value);
VectorPtr makeEmptyVector();
// A real curve y over real x-values.
VectorPtr makeCurve(std::vector<double> x, std::vector<double> y, PhysType yPhys = units::Number,
                    PhysType xPhys = units::NoRef);

}  // namespace wavex
