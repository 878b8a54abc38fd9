// Fuzzes the Laplace parser from memory and checks what its header promises: on success both
// polynomials have 1 to kLaplaceMaxOrder + 1 finite coefficients, no zero leading coefficient
// (but for the zero polynomial), a denominator that is not zero; on failure a known code. The
// record interface is driven with the capacities the first byte gives and arrays of exactly that
// size, so a write past them is caught.
#include "fuzz_check.hpp"
#include "support/laplace.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

void checkPolynomial(const std::vector<double>& p) {
    check(!p.empty() && p.size() <= wavex::kLaplaceMaxOrder + 1);
    for (double c : p) check(std::isfinite(c));
    check(p.size() == 1 || p.back() != 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace wavex;
    if (size < 1) return 0;
    const int32_t capacity = data[0] % 8;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);

    LaplaceParse p = parseLaplace(text);
    check(p.code >= 0 && p.code <= kLaplaceLastError);
    if (p.code == kLaplaceOk) {
        checkPolynomial(p.value.numerator);
        checkPolynomial(p.value.denominator);
        bool zero = true;
        for (double c : p.value.denominator) zero = zero && c == 0;
        check(!zero);
    } else {
        const char* message = nullptr;
        check(sp_GetLaplaceErrMessage(p.code, &message) && message && *message);
    }

    // The record reads the text as a C string: up to its first NUL.
    std::vector<double> num(capacity), den(capacity);
    XSpiceParseLaplaceArgs call{text.c_str(), num.data(), capacity, den.data(), capacity, -1, 0};
    LaplaceParse cut = parseLaplace(text.c_str());
    int ok = sp_ParseLaplaceExpression(&call);
    check((ok != 0) == (cut.code == kLaplaceOk) && call.errorCode == cut.code);
    if (ok) {
        check(call.numeratorSize + 1 == static_cast<int32_t>(cut.value.numerator.size()));
        check(call.denominatorSize + 1 == static_cast<int32_t>(cut.value.denominator.size()));
        for (int32_t i = 0; i < capacity && i <= call.numeratorSize; ++i) check(num[i] == cut.value.numerator[i]);
    }
    return 0;
}
