#include "io/printers.hpp"

#include "support/numbers.hpp"

#include <charconv>
#include <cmath>

namespace wavex::io {

// ---- JSON ----------------------------------------------------------------------------------------

namespace {

void appendJsonNumber(std::string& out, double x) {
    if (std::isnan(x)) {
        out += "\"NaN\"";
    } else if (std::isinf(x)) {
        out += x > 0 ? "\"Infinity\"" : "\"-Infinity\"";
    } else {
        char buf[32];
        auto [end, ec] = std::to_chars(buf, buf + sizeof buf, x);  // shortest text that reads back
        out.append(buf, end);
    }
}

void appendJsonComplex(std::string& out, Complex z) {
    out += '[';
    appendJsonNumber(out, z.real());
    out += ',';
    appendJsonNumber(out, z.imag());
    out += ']';
}

template <class T, class Append>
void appendJsonArray(std::string& out, const T* values, size_t n, Append append) {
    out += '[';
    for (size_t i = 0; i < n; ++i) {
        if (i) out += ',';
        append(out, values[i]);
    }
    out += ']';
}

// Length of the valid UTF-8 sequence at the start of `s` (which is not empty and does not start
// with an ASCII byte), or 0 when it is not one: overlong forms, surrogates and code points past
// U+10FFFF are not valid.
size_t utf8Sequence(std::string_view s) {
    auto byte = [&](size_t i) { return static_cast<unsigned char>(s[i]); };
    auto cont = [&](size_t i) { return i < s.size() && (byte(i) & 0xC0) == 0x80; };
    unsigned char b = byte(0);
    if (b >= 0xC2 && b <= 0xDF) return cont(1) ? 2 : 0;
    if (b >= 0xE0 && b <= 0xEF) {
        if (!cont(1) || !cont(2)) return 0;
        if (b == 0xE0 && byte(1) < 0xA0) return 0;   // overlong
        if (b == 0xED && byte(1) >= 0xA0) return 0;  // surrogate
        return 3;
    }
    if (b >= 0xF0 && b <= 0xF4) {
        if (!cont(1) || !cont(2) || !cont(3)) return 0;
        if (b == 0xF0 && byte(1) < 0x90) return 0;   // overlong
        if (b == 0xF4 && byte(1) >= 0x90) return 0;  // past U+10FFFF
        return 4;
    }
    return 0;
}

const char* dataType(VDType t) { return t == VD_COMPLEX ? "complex" : t == VD_STRING ? "string" : "real"; }

}  // namespace

void appendJsonString(std::string& out, std::string_view text) {
    static const char kHex[] = "0123456789abcdef";
    auto escapeByte = [&](unsigned char c) {
        out += "\\u00";
        out += kHex[c >> 4];
        out += kHex[c & 15];
    };
    out += '"';
    for (size_t i = 0; i < text.size();) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            size_t n = utf8Sequence(text.substr(i));
            if (n) out.append(text.data() + i, n);
            else escapeByte(c);
            i += n ? n : 1;
            continue;
        }
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            case '\b': out += "\\b"; break;
            case '\f': out += "\\f"; break;
            default:
                if (c < 0x20) escapeByte(c);
                else out += static_cast<char>(c);
        }
        ++i;
    }
    out += '"';
}

void appendJson(std::string& out, const VectorPtr& value, std::string_view expr, size_t stmt) {
    static const Vector kEmpty;
    const Vector& v = value ? *value : kEmpty;

    out += "{\"type\":\"";
    out += dataType(v.type);
    out += "\",\"phys\":";
    out += std::to_string(v.phys);
    out += ",\"unit\":";
    appendJsonString(out, units::symbol(v.phys));
    out += ",\"name\":";
    appendJsonString(out, v.name);

    out += ",\"y\":";
    switch (v.type) {
        case VD_COMPLEX: appendJsonArray(out, v.cplx.data(), v.cplx.size(), appendJsonComplex); break;
        case VD_STRING:
            appendJsonArray(out, v.str.data(), v.str.size(), [](std::string& o, const StrElem& s) {
                if (s) appendJsonString(o, *s);
                else o += "null";
            });
            break;
        default: appendJsonArray(out, v.real.data(), v.real.size(), appendJsonNumber); break;
    }

    out += ",\"x\":";
    const Reference& ref = v.ref;
    if (!ref.present()) {
        out += "null";
    } else {
        out += "{\"type\":\"";
        out += dataType(ref.type);
        out += "\",\"phys\":";
        out += std::to_string(ref.phys);
        out += ",\"unit\":";
        appendJsonString(out, units::symbol(ref.phys));
        out += ",\"name\":";
        appendJsonString(out, ref.name);
        out += ",\"values\":";
        if (ref.type == VD_COMPLEX) appendJsonArray(out, ref.cplx(), ref.size(), appendJsonComplex);
        else appendJsonArray(out, ref.real(), ref.size(), appendJsonNumber);
        out += '}';
    }

    out += ",\"divisions\":";
    if (v.numDivisions() == 1 && !v.label(0)) {
        out += "null";
    } else {
        out += '[';
        for (size_t k = 0; k < v.numDivisions(); ++k) {
            if (k) out += ',';
            out += "{\"length\":";
            out += std::to_string(v.divisionLength(k));
            out += ",\"label\":";
            if (auto label = v.label(k)) appendJsonString(out, *label);
            else out += "null";
            out += '}';
        }
        out += ']';
    }
    if (stmt) {
        out += ",\"expr\":";
        appendJsonString(out, expr);
        out += ",\"stmt\":";
        out += std::to_string(stmt);
    }
    out += "}\n";
}

// ---- Text ----------------------------------------------------------------------------------------

namespace {

std::string engineering(double x) { return formatEngineering(x); }

// "3 + j4", "1.5m - j2m".
std::string engineering(Complex z) {
    std::string s = engineering(z.real());
    s += std::signbit(z.imag()) && !std::isnan(z.imag()) ? " - j" : " + j";
    s += engineering(std::fabs(z.imag()));
    return s;
}

// The width of UTF-8 text on a terminal, one column per code point.
size_t displayWidth(std::string_view s) {
    size_t n = 0;
    for (char c : s) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return n;
}

// "out [V]", or just "out" for a plain number.
std::string columnTitle(std::string_view name, PhysType phys) {
    std::string title(name);
    std::string_view unit = units::symbol(phys);
    if (!unit.empty()) {
        title += " [";
        title += unit;
        title += ']';
    }
    return title;
}

std::string yText(const Vector& v, size_t i) {
    switch (v.type) {
        case VD_COMPLEX: return engineering(v.cplx[i]);
        case VD_STRING: return v.str[i].value_or("");
        default: {
            // Plain whole numbers (counts, indices, handles) are shown exactly, not as 4.29497G.
            double x = v.real[i];
            bool plain = v.phys == units::Number || v.phys == units::NoRef || v.phys == units::Unknown;
            if (plain && x == std::trunc(x) && std::fabs(x) < 1e15) return formatRoundTrip(x == 0 ? 0.0 : x);
            return engineering(x);
        }
    }
}

std::string xText(const Reference& ref, size_t i) {
    return ref.type == VD_COMPLEX ? engineering(ref.cplx()[i]) : engineering(ref.real()[i]);
}

void appendPadded(std::string& out, std::string_view text, size_t width) {
    out += text;
    for (size_t w = displayWidth(text); w < width; ++w) out += ' ';
}

}  // namespace

namespace {
bool isCurve(const Vector& v) { return v.ref.present() && v.ref.size() == v.size(); }
bool hasBlocks(const Vector& v) { return v.numDivisions() > 1 || v.label(0); }

// A number per run (or none): printed on one labelled line per run rather than in blocks.
bool isNumberPerRun(const Vector& v) {
    if (v.type == VD_STRING || isCurve(v)) return false;
    for (size_t k = 0; k < v.numDivisions(); ++k)
        if (v.divisionLength(k) > 1) return false;
    return true;
}

std::string runName(const Vector& v, size_t k) {
    if (auto name = v.label(k)) return *name;
    return "division " + std::to_string(k + 1);
}

// "mean(out) = 984.359m V   # R=100", "Truncate(v, 5, 6): empty".
void appendLabelled(std::string& out, const Vector& v, std::string_view label) {
    const bool blocks = hasBlocks(v) && v.size() > 0;
    std::string_view unit = units::symbol(v.phys);
    for (size_t k = 0; k < (blocks ? v.numDivisions() : 1); ++k) {
        out += label;
        if (v.divisionLength(k) == 0 || v.size() == 0) {
            out += ": empty";
        } else {
            out += " = ";
            out += yText(v, v.divisionStart(k));
            if (!unit.empty()) {
                out += ' ';
                out += unit;
            }
        }
        if (blocks) {
            out += "   # ";
            out += runName(v, k);
        }
        out += '\n';
    }
}
}  // namespace

bool textHasHeadings(const VectorPtr& value) {
    return value && value->size() && (isCurve(*value) || hasBlocks(*value)) && !isNumberPerRun(*value);
}

void appendText(std::string& out, const VectorPtr& value, std::string_view label) {
    static const Vector kEmpty;
    const Vector& v = value ? *value : kEmpty;
    if (!label.empty() && (v.size() == 0 || isNumberPerRun(v))) return appendLabelled(out, v, label);
    if (v.size() == 0) return;
    const bool curve = isCurve(v);
    const bool blocks = hasBlocks(v);
    std::string_view unit = v.type == VD_STRING ? std::string_view() : units::symbol(v.phys);

    std::string xTitle, yTitle;
    if (curve) {
        xTitle = columnTitle(v.ref.name.empty() ? "x" : v.ref.name, v.ref.phys);
        yTitle = columnTitle(!v.name.empty() ? std::string_view(v.name) : !label.empty() ? label : "y",
                             v.type == VD_STRING ? units::Number : v.phys);
    }
    std::vector<std::string> xs;
    for (size_t k = 0; k < v.numDivisions(); ++k) {
        const size_t start = v.divisionStart(k), length = v.divisionLength(k);
        if (blocks) {
            if (k) out += '\n';
            out += "# " + runName(v, k) + '\n';
            if (length == 0 && !label.empty()) {
                out += label;
                out += ": empty\n";
                continue;
            }
        }
        if (!curve) {
            for (size_t i = start; i < start + length; ++i) {
                out += yText(v, i);
                if (!unit.empty()) {
                    out += ' ';
                    out += unit;
                }
                out += '\n';
            }
            continue;
        }
        // Two columns: the x column as wide as its widest entry.
        xs.clear();
        size_t width = displayWidth(xTitle);
        for (size_t i = start; i < start + length; ++i) {
            xs.push_back(xText(v.ref, i));
            width = std::max(width, displayWidth(xs.back()));
        }
        width += 2;
        appendPadded(out, xTitle, width);
        out += yTitle;
        out += '\n';
        for (size_t i = 0; i < length; ++i) {
            appendPadded(out, xs[i], width);
            out += yText(v, start + i);
            out += '\n';
        }
    }
}

}  // namespace wavex::io
