#include "wavex/vector.hpp"

#include "support/numbers.hpp"

namespace wavex {

Reference Reference::window(size_t start, size_t count) const {
    Reference r = *this;
    r.offset = offset + start;
    r.length = count;
    return r;
}

Reference Reference::fromReal(Array<double> values, PhysType phys, std::string name) {
    Reference r;
    r.type = VD_REAL;
    r.length = values.size();
    r.realValues = std::make_shared<const Array<double>>(std::move(values));
    r.phys = phys;
    r.name = std::move(name);
    return r;
}

Reference Reference::fromComplex(Array<Complex> values, PhysType phys, std::string name) {
    Reference r;
    r.type = VD_COMPLEX;
    r.length = values.size();
    r.complexValues = std::make_shared<const Array<Complex>>(std::move(values));
    r.phys = phys;
    r.name = std::move(name);
    return r;
}

void Vector::setDivisionLengths(const std::vector<size_t>& lengths) {
    divisionStarts.clear();
    if (lengths.size() <= 1) return;
    size_t start = 0;
    for (size_t len : lengths) {
        divisionStarts.push_back(start);
        start += len;
    }
}

std::string elementText(const Vector& v, size_t i) {
    switch (v.type) {
        case VD_REAL: return formatRoundTrip(v.real[i]);
        case VD_COMPLEX:
            return "(" + formatRoundTrip(v.cplx[i].real()) + "," + formatRoundTrip(v.cplx[i].imag()) + ")";
        default: return v.str[i].value_or("");
    }
}

VectorPtr makeRealVector(std::vector<double> y, PhysType phys) {
    auto v = std::make_shared<Vector>();
    v->real.append(y.data(), y.size());
    v->phys = phys;
    return v;
}

VectorPtr makeComplexVector(std::vector<Complex> y, PhysType phys) {
    auto v = std::make_shared<Vector>();
    v->type = VD_COMPLEX;
    v->cplx.append(y.data(), y.size());
    v->phys = phys;
    return v;
}

VectorPtr makeStringVector(std::vector<StrElem> y) {
    auto v = std::make_shared<Vector>();
    v->type = VD_STRING;
    v->str = std::move(y);
    return v;
}

VectorPtr makeScalar(double value) { return makeRealVector({value}); }

VectorPtr makeEmptyVector() { return std::make_shared<Vector>(); }

VectorPtr makeCurve(std::vector<double> x, std::vector<double> y, PhysType yPhys, PhysType xPhys) {
    auto v = std::make_shared<Vector>();
    v->real.append(y.data(), y.size());
    v->phys = yPhys;
    v->ref = Reference::fromReal(Array<double>(x.data(), x.size()), xPhys);
    return v;
}

}  // namespace wavex
