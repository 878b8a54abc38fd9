#include "wavex/function.hpp"
#include "support/interpolation.hpp"
#include "support/numbers.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavex {

// ---- FuncArgs ----

namespace {
// Data of the right kind is never null, even when empty: handlers tell kinds apart by null.
template <class T>
const T* nonNull(const T* p) {
    static const T none{};
    return p ? p : &none;
}
}  // namespace

FuncArgs::FuncArgs(std::span<const VectorPtr> args) {
    views_.reserve(args.size());
    for (const VectorPtr& v : args) views_.push_back(whole(v));
}

FuncArgs::View FuncArgs::whole(const VectorPtr& v) {
    return {&v, v.get(), 0, v->size(), 0, static_cast<int>(v->numDivisions())};
}

FuncArgs::View FuncArgs::joined(const VectorPtr& v) { return {&v, v.get(), 0, v->size(), 0, 1}; }

FuncArgs::View FuncArgs::division(const VectorPtr& v, size_t k) {
    return {&v, v.get(), v->divisionStart(k), v->divisionLength(k), k, 1};
}

size_t FuncArgs::divisionOffset(int i, int division) const {
    const View& w = views_[i];
    return w.divisions > 1 ? w.vec->divisionStart(w.firstDivision + static_cast<size_t>(division)) : w.begin;
}

int64_t FuncArgs::divisionLength(int i, int division) const {
    const View& w = views_[i];
    if (division < 0 || division >= w.divisions) return 0;
    return static_cast<int64_t>(w.divisions > 1 ? w.vec->divisionLength(w.firstDivision + static_cast<size_t>(division))
                                                : w.length);
}

const StrElem* FuncArgs::stringData(int i) const {
    const View& w = views_[i];
    return w.vec->type == VD_STRING ? nonNull(w.vec->str.data()) + w.begin : nullptr;
}

const double* FuncArgs::data(int i) const {
    const View& w = views_[i];
    return w.vec->type == VD_REAL ? nonNull(w.vec->real.data()) + w.begin : nullptr;
}

const double* FuncArgs::data(int i, int division) const {
    const View& w = views_[i];
    if (w.vec->type != VD_REAL || division < 0 || division >= w.divisions) return nullptr;
    return nonNull(w.vec->real.data()) + divisionOffset(i, division);
}

const Complex* FuncArgs::complexData(int i) const {
    const View& w = views_[i];
    return w.vec->type == VD_COMPLEX ? nonNull(w.vec->cplx.data()) + w.begin : nullptr;
}

const Complex* FuncArgs::complexData(int i, int division) const {
    const View& w = views_[i];
    if (w.vec->type != VD_COMPLEX || division < 0 || division >= w.divisions) return nullptr;
    return nonNull(w.vec->cplx.data()) + divisionOffset(i, division);
}

const double* FuncArgs::refData(int i) const {
    const double* x = views_[i].vec->ref.real();
    return x ? x + views_[i].begin : nullptr;
}

const double* FuncArgs::refData(int i, int division) const {
    const double* x = views_[i].vec->ref.real();
    if (!x || division < 0 || division >= views_[i].divisions) return nullptr;
    return x + divisionOffset(i, division);
}

const Complex* FuncArgs::complexRefData(int i) const {
    const Complex* x = views_[i].vec->ref.cplx();
    return x ? x + views_[i].begin : nullptr;
}

const Complex* FuncArgs::complexRefData(int i, int division) const {
    const Complex* x = views_[i].vec->ref.cplx();
    if (!x || division < 0 || division >= views_[i].divisions) return nullptr;
    return x + divisionOffset(i, division);
}

void FuncArgs::getYDivisionLabelArray(int i, DivisionLabelArray& out) const {
    const View& w = views_[i];
    out.clear();
    for (int d = 0; d < w.divisions; ++d) out.push_back(w.vec->label(w.firstDivision + static_cast<size_t>(d)));
}

std::string_view FuncArgs::string(int i, size_t k) const {
    if (!has(i)) return {};
    const StrElem* s = stringData(i);
    if (!s || k >= views_[i].length || !s[k]) return {};
    return *s[k];
}

double FuncArgs::scalar(int i) const {
    if (length(i) == 0) return std::numeric_limits<double>::quiet_NaN();
    if (const double* d = data(i)) return d[0];
    if (const Complex* z = complexData(i)) return z[0].real();
    return std::numeric_limits<double>::quiet_NaN();
}

std::optional<double> FuncArgs::optionalScalar(int i) const {
    return count() > i ? std::optional<double>(scalar(i)) : std::nullopt;
}

const double* FuncArgs::realRefData(int i, std::vector<double>& scratch) const {
    return support_RealAbscissa(refType(i) != VD_NONE, refData(i), complexRefData(i), length(i), scratch);
}

const double* FuncArgs::neededRefData(int i, std::vector<double>& scratch, const FuncInfo& info,
                                      MessageHandler& messages) const {
    const double* x = realRefData(i, scratch);
    if (!x) messages.error(kNoReferenceMessage, i + 1, info.name);
    return x;
}

std::optional<int64_t> FuncArgs::integer(int i) const { return has(i) ? wholeNumber(scalar(i)) : std::nullopt; }

// ---- FuncResult ----

FuncResult::FuncResult() : v_(std::make_shared<Vector>()) {}

void FuncResult::materialize() {
    if (!shared_) return;
    *v_ = *shared_;
    shared_.reset();
}

void FuncResult::setType(VDType y, VDType ref) {
    materialize();
    v_->type = y;
    refType_ = ref;
}

void FuncResult::setPhysType(PhysType y, PhysType ref) {
    materialize();
    v_->phys = y;
    v_->ref.phys = ref;
}

size_t FuncResult::divisionBegin(int division) const {
    return division >= 0 && static_cast<size_t>(division) < starts_.size() ? starts_[division] : 0;
}

// Sizes the y-data for the current division: the first division replaces what was there, a later
// one is appended.
bool FuncResult::grow(size_t length) {
    size_t begin = 0;
    if (current_ > 0) {
        if (starts_.size() <= static_cast<size_t>(current_)) starts_.resize(current_ + 1, v_->size());
        begin = starts_[current_];
    } else {
        starts_.assign(1, 0);
    }
    size_t size = begin + length;
    size_t capacity = current_ > 0 ? std::max(size, static_cast<size_t>(std::max<int64_t>(total_, 0))) : size;
    switch (v_->type) {
        case VD_REAL: v_->real.reserve(capacity); v_->real.resize(size); break;
        case VD_COMPLEX: v_->cplx.reserve(capacity); v_->cplx.resize(size); break;
        case VD_STRING: v_->str.resize(size); break;
        default: return false;
    }
    return true;
}

bool FuncResult::allocate(int64_t length, ResultAllocType allocType, int64_t total) {
    materialize();
    if (length < 0) return false;
    allocType_ = allocType;
    total_ = total;
    return grow(static_cast<size_t>(length));
}

double* FuncResult::makeReal(int64_t length, ResultAllocType allocType, int64_t total) {
    setType(VD_REAL, refType_);
    return allocate(length, allocType, total) ? data() : nullptr;
}

Complex* FuncResult::makeComplex(int64_t length, ResultAllocType allocType, int64_t total) {
    setType(VD_COMPLEX, refType_);
    return allocate(length, allocType, total) ? complexData() : nullptr;
}

double* FuncResult::makeRealNoRef(int64_t length) {
    setType(VD_REAL, VD_NONE);
    v_->ref.phys = units::NoRef;
    return allocate(length, RESULT_OWN, 0) ? data() : nullptr;
}

bool FuncResult::makeStrings(int64_t length) {
    setType(VD_STRING, VD_NONE);
    setPhysType(units::Number, units::NoRef);
    return allocate(length, RESULT_OWN, -1);
}

bool FuncResult::makeString(std::string value) {
    if (!makeStrings(1)) return false;
    stringData()[0] = std::move(value);
    return true;
}

bool withinMadeElementLimit(int64_t n, const FuncInfo* info, MessageHandler& messages) {
    if (n <= kMaxMadeElements) return true;
    messages.error("Function '%s' cannot make %d elements: the limit is %d", info->name, n, kMaxMadeElements);
    return false;
}

bool FuncResult::allocateRef(int64_t length, ResultAllocType, int64_t) {
    materialize();
    if (length < 0) return false;
    size_t begin = divisionBegin(current_);
    size_t size = (current_ > 0 ? begin : 0) + static_cast<size_t>(length);
    v_->ref.realValues.reset();
    v_->ref.complexValues.reset();
    if (refType_ == VD_COMPLEX) {
        if (!complexRef_) complexRef_ = std::make_shared<Array<Complex>>();
        complexRef_->resize(size);
        realRef_.reset();
    } else {
        refType_ = VD_REAL;
        if (!realRef_) realRef_ = std::make_shared<Array<double>>();
        realRef_->resize(size);
        complexRef_.reset();
    }
    return true;
}

double* FuncResult::makeRealRef(int64_t length, ResultAllocType allocType, int64_t total) {
    refType_ = VD_REAL;
    return allocateRef(length, allocType, total) ? refData() : nullptr;
}

Complex* FuncResult::makeComplexRef(int64_t length, ResultAllocType allocType, int64_t total) {
    refType_ = VD_COMPLEX;
    return allocateRef(length, allocType, total) ? complexRefData() : nullptr;
}

double* FuncResult::data() { return data(current_); }
double* FuncResult::data(int division) {
    materialize();
    return v_->type == VD_REAL ? v_->real.data() + divisionBegin(division) : nullptr;
}
Complex* FuncResult::complexData() { return complexData(current_); }
Complex* FuncResult::complexData(int division) {
    materialize();
    return v_->type == VD_COMPLEX ? v_->cplx.data() + divisionBegin(division) : nullptr;
}
double* FuncResult::refData() {
    return realRef_ ? realRef_->data() + (current_ > 0 ? divisionBegin(current_) : 0) : nullptr;
}
Complex* FuncResult::complexRefData() {
    return complexRef_ ? complexRef_->data() + (current_ > 0 ? divisionBegin(current_) : 0) : nullptr;
}
StrElem* FuncResult::stringData() {
    materialize();
    return v_->type == VD_STRING ? v_->str.data() + divisionBegin(current_) : nullptr;
}

bool FuncResult::copyRefFromArgs(const FuncArgs& args, ResultAllocType allocType, int64_t total, int i) {
    materialize();
    allocType_ = allocType;
    total_ = total;
    const FuncArgs::View& w = args.view(i);
    const Reference& ref = w.vec->ref;
    realRef_.reset();
    complexRef_.reset();
    if (ref.present()) {
        v_->ref = ref.window(w.begin, w.length);
        refType_ = ref.type;
    } else {
        PhysType phys = v_->ref.phys;
        v_->ref = Reference{};
        v_->ref.phys = phys;
        refType_ = VD_NONE;
    }
    // An argument seen whole passes on its divisions to a result as long as it.
    if (w.divisions > 1 && v_->size() == w.length) {
        starts_.clear();
        for (int d = 0; d < w.divisions; ++d) starts_.push_back(w.vec->divisionStart(w.firstDivision + d) - w.begin);
        DivisionLabelArray labels;
        args.getYDivisionLabelArray(i, labels);
        v_->labels = std::move(labels);
    }
    return true;
}

void FuncResult::setRefName(std::string name) {
    materialize();
    v_->ref.name = std::move(name);
}

void FuncResult::setName(std::string name) {
    materialize();
    v_->name = std::move(name);
}

void FuncResult::setDivisionLabelArray(const DivisionLabelArray& labels) {
    materialize();
    v_->labels = labels;
}

void FuncResult::copyVector(const VectorPtr& y) {
    v_ = std::make_shared<Vector>();
    realRef_.reset();
    complexRef_.reset();
    starts_.clear();
    current_ = 0;
    shared_ = y;
    refType_ = y->ref.present() ? y->ref.type : VD_NONE;
}

void FuncResult::copyVector(const VectorPtr& y, const VectorPtr& ref) {
    copyVector(y);
    materialize();
    Reference r;
    if (ref->type == VD_REAL) r = Reference::fromReal(ref->real, ref->phys, ref->name);
    else if (ref->type == VD_COMPLEX) r = Reference::fromComplex(ref->cplx, ref->phys, ref->name);
    v_->ref = std::move(r);
    refType_ = v_->ref.type;
}

void FuncResult::emptyVectors() {
    shared_.reset();
    v_ = std::make_shared<Vector>();
    realRef_.reset();
    complexRef_.reset();
    starts_.clear();
    current_ = 0;
    refType_ = VD_NONE;
}

int64_t FuncResult::length() const { return static_cast<int64_t>(shared_ ? shared_->size() : v_->size()); }

void FuncResult::setCurrentDivision(int division) { current_ = std::max(division, 0); }

// The result is spent afterwards: the host takes it once.
VectorPtr FuncResult::release() {
    if (shared_) return std::move(shared_);
    Vector& v = *v_;
    if (realRef_) v.ref = Reference::fromReal(std::move(*realRef_), v.ref.phys, v.ref.name);
    else if (complexRef_) v.ref = Reference::fromComplex(std::move(*complexRef_), v.ref.phys, v.ref.name);
    if (v.ref.present() && v.ref.size() != v.size()) {
        PhysType phys = v.ref.phys;
        v.ref = Reference{};  // a reference must be as long as the data it goes with
        v.ref.phys = phys;
    }
    if (starts_.size() > 1) v.divisionStarts = starts_;
    if (v.labels.size() != v.numDivisions() && !v.labels.empty()) v.labels.resize(v.numDivisions());
    return std::move(v_);
}

}  // namespace wavex
