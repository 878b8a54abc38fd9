#include "support/laplace.hpp"

#include "support/numbers.hpp"
#include "support/text.hpp"

#include <dirent.h>
#include <dlfcn.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace wavex {
namespace {

using Poly = std::vector<double>;  // coefficients in ascending powers of s, at least one

struct Rational {
    Poly num{1.0};
    Poly den{1.0};
};

Rational constant(double v) { return {Poly{v}, Poly{1.0}}; }

int order(const Poly& p) { return static_cast<int>(p.size()) - 1; }
bool isZero(const Poly& p) { return std::all_of(p.begin(), p.end(), [](double c) { return c == 0; }); }
bool allFinite(const Poly& p) { return std::all_of(p.begin(), p.end(), [](double c) { return std::isfinite(c); }); }
void trim(Poly& p) {
    while (p.size() > 1 && p.back() == 0) p.pop_back();
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isNameChar(char c) { return isLetter(c) || isDigit(c) || c == '_'; }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }

// The letters a number may end with: one engineering suffix.
bool isSuffix(std::string_view letters) {
    if (letters.empty() || iequals(letters, "meg")) return true;
    return letters.size() == 1 && std::string_view("fpnumkgt").find(asciiLower(letters[0])) != std::string_view::npos;
}

// Recursive descent over the grammar in the header. Every step returns false once an error code
// is set; the first error found is the one reported.
class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    LaplaceParse run() {
        LaplaceParse out;
        Rational r;
        if (atEnd()) out.code = kLaplaceEmpty;
        else if (!expression(r)) out.code = code_;
        else if (!atEnd()) out.code = text_[pos_] == ')' ? kLaplaceUnbalanced : afterExpression();
        if (out.code != kLaplaceOk) return out;
        // Cancel a common factor s^k: exact, and what s/s or (s^2+s)/s mean.
        size_t k = 0;
        while (k + 1 < r.num.size() && k + 1 < r.den.size() && r.num[k] == 0 && r.den[k] == 0) ++k;
        r.num.erase(r.num.begin(), r.num.begin() + static_cast<ptrdiff_t>(k));
        r.den.erase(r.den.begin(), r.den.begin() + static_cast<ptrdiff_t>(k));
        out.value = {std::move(r.num), std::move(r.den)};
        return out;
    }

private:
    // ---- Tokens ----

    bool atEnd() {
        while (pos_ < text_.size() && isBlank(text_[pos_])) ++pos_;
        return pos_ == text_.size();
    }
    bool accept(char c) {
        if (atEnd() || text_[pos_] != c) return false;
        ++pos_;
        return true;
    }
    bool fail(int32_t code) {
        if (code_ == kLaplaceOk) code_ = code;
        return false;
    }
    // What is wrong with text that follows a complete expression (not a ")").
    int32_t afterExpression() const {
        char c = text_[pos_];
        return isNameChar(c) || c == '.' || c == '(' ? kLaplaceTrailingText : kLaplaceInvalidCharacter;
    }

    struct Level {
        explicit Level(Parser& p) : parser(p) { ++parser.depth_; }
        ~Level() { --parser.depth_; }
        bool ok() const { return parser.depth_ <= kLaplaceMaxDepth || parser.fail(kLaplaceTooDeep); }
        Parser& parser;
    };

    // ---- Polynomial arithmetic, checked ----

    bool checked(Poly& p) {
        trim(p);
        return allFinite(p) || fail(kLaplaceOutOfRange);
    }
    bool multiply(const Poly& a, const Poly& b, Poly& out) {
        if (order(a) + order(b) > kLaplaceMaxOrder) return fail(kLaplaceOrderTooHigh);
        Poly p(a.size() + b.size() - 1, 0.0);
        const Poly& shorter = a.size() < b.size() ? a : b;
        const Poly& longer = a.size() < b.size() ? b : a;
        for (size_t i = 0; i < shorter.size(); ++i) {  // the inner loop runs over the longer one
            const double f = shorter[i];
            if (f == 0) continue;
            double* row = p.data() + i;
            for (size_t j = 0; j < longer.size(); ++j) row[j] += f * longer[j];
        }
        out = std::move(p);
        return checked(out);
    }
    // a + sign·b, in place.
    bool addTo(Poly& a, const Poly& b, double sign) {
        if (a.size() < b.size()) a.resize(b.size(), 0.0);
        for (size_t i = 0; i < b.size(); ++i) a[i] += sign * b[i];
        return checked(a);
    }

    // ---- Rational arithmetic ----

    bool add(Rational& a, const Rational& b, double sign) {
        if (a.den == b.den) return addTo(a.num, b.num, sign);
        Poly left, right, den;
        if (!multiply(a.num, b.den, left) || !multiply(b.num, a.den, right) || !multiply(a.den, b.den, den)) return false;
        if (!addTo(left, right, sign)) return false;
        a.num = std::move(left);
        a.den = std::move(den);
        return true;
    }
    bool times(Rational& a, const Rational& b) {
        return multiply(a.num, b.num, a.num) && multiply(a.den, b.den, a.den) && nonZeroDenominator(a);
    }
    bool divide(Rational& a, const Rational& b) {
        if (isZero(b.num)) return fail(kLaplaceDivisionByZero);
        Poly num, den;
        if (!multiply(a.num, b.den, num) || !multiply(a.den, b.num, den)) return false;
        a.num = std::move(num);
        a.den = std::move(den);
        if (!nonZeroDenominator(a)) return false;
        if (order(a.den) > 0 || a.den[0] == 1) return true;
        // Constants live in the numerator: s/1k is [0, 1e-3] / [1], not [0, 1] / [1000].
        for (double& c : a.num) c /= a.den[0];
        a.den = {1.0};
        return checked(a.num);
    }
    // A product of non-zero coefficients can still underflow to zero.
    bool nonZeroDenominator(const Rational& a) { return !isZero(a.den) || fail(kLaplaceDivisionByZero); }

    bool raise(Rational& base, const Rational& exponent) {
        if (order(exponent.num) > 0 || order(exponent.den) > 0) return fail(kLaplacePowerNotConstant);
        double n = exponent.num[0] / exponent.den[0];
        if (n < 0) return fail(kLaplacePowerNegative);
        if (!(n == std::floor(n))) return fail(kLaplacePowerNotInteger);  // NaN too
        int baseOrder = std::max(order(base.num), order(base.den));
        if (baseOrder == 0) {  // a constant: any power, computed directly
            base.num[0] = std::pow(base.num[0], n);
            base.den[0] = std::pow(base.den[0], n);
            return checked(base.num) && checked(base.den) && nonZeroDenominator(base);
        }
        if (n > static_cast<double>(kLaplaceMaxOrder / baseOrder)) return fail(kLaplaceOrderTooHigh);
        Rational result;
        for (auto k = static_cast<unsigned>(n);;) {  // square and multiply
            if (k & 1u && !times(result, base)) return false;
            if ((k >>= 1) == 0) break;
            if (!times(base, base)) return false;
        }
        base = std::move(result);
        return true;
    }

    // ---- Grammar ----

    bool expression(Rational& r) {
        if (!term(r)) return false;
        for (;;) {
            double sign = accept('+') ? 1.0 : accept('-') ? -1.0 : 0.0;
            if (sign == 0) return true;
            Rational t;
            if (!term(t) || !add(r, t, sign)) return false;
        }
    }

    bool term(Rational& r) {
        if (!unary(r)) return false;
        for (;;) {
            bool multiplying = accept('*');
            if (!multiplying && !accept('/')) return true;
            Rational f;
            if (!unary(f) || !(multiplying ? times(r, f) : divide(r, f))) return false;
        }
    }

    bool unary(Rational& r) {
        bool minus = accept('-');
        if (minus || accept('+')) {
            Level level(*this);
            if (!level.ok() || !unary(r)) return false;
            if (minus)
                for (double& c : r.num) c = -c;
            return true;
        }
        return power(r);
    }

    bool power(Rational& r) {
        if (!primary(r)) return false;
        if (!accept('^')) return true;
        Level level(*this);
        Rational exponent;
        return level.ok() && unary(exponent) && raise(r, exponent);
    }

    bool primary(Rational& r) {
        if (atEnd()) return fail(kLaplaceOperandMissing);
        char c = text_[pos_];
        if (c == '(') {
            ++pos_;
            Level level(*this);
            if (!level.ok() || !expression(r)) return false;
            if (accept(')')) return true;
            return fail(atEnd() ? kLaplaceUnbalanced : afterExpression());
        }
        if (isDigit(c) || c == '.') return number(r);
        if (isLetter(c) || c == '_') {
            size_t start = pos_;
            while (pos_ < text_.size() && isNameChar(text_[pos_])) ++pos_;
            std::string_view name = text_.substr(start, pos_ - start);
            if (iequals(name, "s")) r = {Poly{0.0, 1.0}, Poly{1.0}};
            else if (iequals(name, "pi")) r = constant(std::numbers::pi);
            else return fail(kLaplaceUnknownName);
            return true;
        }
        if (c == ')' || c == '*' || c == '/' || c == '^' || c == '+' || c == '-') return fail(kLaplaceOperandMissing);
        return fail(kLaplaceInvalidCharacter);
    }

    bool number(Rational& r) {
        double v = 0;
        size_t n = scanEngineeringNumber(text_.substr(pos_), &v);
        if (n == 0) return fail(kLaplaceInvalidNumber);  // "." alone
        std::string_view token = text_.substr(pos_, n);
        size_t digitsEnd = token.size();
        while (digitsEnd > 0 && isLetter(token[digitsEnd - 1])) --digitsEnd;
        if (!isSuffix(token.substr(digitsEnd))) return fail(kLaplaceInvalidNumber);
        pos_ += n;
        if (!std::isfinite(v)) return fail(kLaplaceOutOfRange);
        r = constant(v);
        return true;
    }

    std::string_view text_;
    size_t pos_ = 0;
    int depth_ = 0;
    int32_t code_ = kLaplaceOk;
};

constexpr std::array<const char*, kLaplaceLastError + 1> kMessages = {
    nullptr,
    "The Laplace expression is empty",
    "Invalid character in the Laplace expression",
    "Unknown name in the Laplace expression: only s and pi are known",
    "Unbalanced parentheses in the Laplace expression",
    "Operand expected: a number, s, pi or '(' is missing",
    "Invalid number: a number may end with one engineering suffix (f p n u m k meg g t) and nothing "
    "else (write 2*s, not 2s)",
    "The power must be a constant",
    "The power must be an integer",
    "The power must not be negative",
    "Division by a zero polynomial",
    "Operator expected: text follows a complete expression",
    "A polynomial order exceeds 1000",
    "A coefficient is out of range",
    "The Laplace expression is nested more than 256 levels deep",
};
static_assert(kLaplaceMaxOrder == 1000 && kLaplaceMaxDepth == 256, "update the texts that quote the limits");

}  // namespace

LaplaceParse parseLaplace(std::string_view text) { return Parser(text).run(); }

int sp_ParseLaplaceExpression(XSpiceParseLaplaceArgs* args) {
    if (!args) return 0;
    LaplaceParse parsed = parseLaplace(args->expression ? std::string_view(args->expression) : std::string_view());
    args->errorCode = parsed.code;
    if (parsed.code != kLaplaceOk) return 0;
    auto deliver = [](const std::vector<double>& coefficients, double* out, int32_t& size) {
        if (out && size > 0) std::copy_n(coefficients.begin(), std::min<size_t>(coefficients.size(), size), out);
        size = static_cast<int32_t>(coefficients.size()) - 1;
    };
    deliver(parsed.value.numerator, args->numerator, args->numeratorSize);
    deliver(parsed.value.denominator, args->denominator, args->denominatorSize);
    return 1;
}

bool sp_GetLaplaceErrMessage(int code, const char** text) {
    *text = code > 0 && code <= kLaplaceLastError ? kMessages[code] : nullptr;
    return *text != nullptr;
}

// ---- The validation plug-in ----------------------------------------------------------------------

std::string laplacePluginFolder() {
    if (const char* folder = std::getenv("WAVEX_DEVICES"); folder && *folder) return folder;
    std::string program(4096, '\0');
    ssize_t n = readlink("/proc/self/exe", program.data(), program.size());
    if (n > 0 && static_cast<size_t>(n) < program.size()) {
        program.resize(static_cast<size_t>(n));
        size_t slash = program.rfind('/');
        if (slash != std::string::npos) return program.substr(0, slash + 1) + "devices";
    }
    return "devices";
}

std::vector<std::string> sp_SearchDLLs(const std::string& folder, const std::string& pattern) {
    std::vector<std::string> found;
    DIR* dir = opendir(folder.c_str());
    if (!dir) return found;
    while (const dirent* entry = readdir(dir)) {
        if (fnmatch(pattern.c_str(), entry->d_name, 0) != 0) continue;
        std::string path = folder + "/" + entry->d_name;
        struct stat info;
        if (stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode)) found.push_back(std::move(path));
    }
    closedir(dir);
    std::sort(found.begin(), found.end());
    return found;
}

std::optional<int> checkWithLaplacePlugin(const std::string& expression, bool* found) {
    std::vector<std::string> plugins = sp_SearchDLLs(laplacePluginFolder(), "Laplace_2.*");
    *found = !plugins.empty();
    if (plugins.empty()) return std::nullopt;
    void* library = dlopen(plugins.front().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) return std::nullopt;
    std::optional<int> verdict;
    if (void* entry = dlsym(library, "laplace_CheckLaplaceExpression"))
        verdict = reinterpret_cast<int (*)(const char*)>(entry)(expression.c_str());
    dlclose(library);
    return verdict;
}

}  // namespace wavex
