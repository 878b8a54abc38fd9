#include "wavex/units.hpp"

#include <array>
#include <cstddef>

namespace wavex::units {
namespace {

// SI base dimensions, exponents in halves: kg, m, s, A, K.
struct Dims {
    int8_t e[5];
    bool operator==(const Dims&) const = default;
};

constexpr Dims operator+(Dims a, Dims b) {
    Dims r{};
    for (int i = 0; i < 5; ++i) r.e[i] = static_cast<int8_t>(a.e[i] + b.e[i]);
    return r;
}
constexpr Dims operator-(Dims a, Dims b) {
    Dims r{};
    for (int i = 0; i < 5; ++i) r.e[i] = static_cast<int8_t>(a.e[i] - b.e[i]);
    return r;
}

struct Unit {
    PhysType code;
    std::string_view symbol;
    std::string_view description;
    Dims dims;
    bool algebraic;  // takes part in dimension lookup
};

//                         kg  m   s   A   K   (halves)
constexpr Dims kNumber{{0, 0, 0, 0, 0}};
constexpr Dims kVolt{{2, 4, -6, -2, 0}};
constexpr Dims kAmp{{0, 0, 0, 2, 0}};
constexpr Dims kSecond{{0, 0, 2, 0, 0}};
constexpr Dims kHertz{{0, 0, -2, 0, 0}};
constexpr Dims kRootHertz{{0, 0, -1, 0, 0}};
constexpr Dims kKelvin{{0, 0, 0, 0, 2}};
constexpr Dims kMetre{{0, 2, 0, 0, 0}};

// The one table of named units. Codes 0-5, 23 and 24 are fixed; the rest are this host's.
constexpr std::array kUnits = {
    Unit{Unknown, "", "unknown", kNumber, false},
    Unit{Number, "", "number", kNumber, true},
    Unit{Voltage, "V", "voltage", kVolt, true},
    Unit{Current, "A", "current", kAmp, true},
    Unit{Time, "s", "time", kSecond, true},
    Unit{Frequency, "Hz", "frequency", kHertz, true},
    Unit{6, "Ω", "resistance", kVolt - kAmp, true},
    Unit{7, "S", "conductance", kAmp - kVolt, true},
    Unit{8, "W", "power", kVolt + kAmp, true},
    Unit{9, "J", "energy", kVolt + kAmp + kSecond, true},
    Unit{10, "F", "capacitance", kAmp + kSecond - kVolt, true},
    Unit{11, "H", "inductance", kVolt + kSecond - kAmp, true},
    Unit{12, "C", "charge", kAmp + kSecond, true},
    Unit{13, "V²", "voltage squared", kVolt + kVolt, true},
    Unit{14, "A²", "current squared", kAmp + kAmp, true},
    Unit{15, "V²/Hz", "voltage noise power density", kVolt + kVolt - kHertz, true},
    Unit{16, "A²/Hz", "current noise power density", kAmp + kAmp - kHertz, true},
    Unit{17, "V/√Hz", "voltage noise density", kVolt - kRootHertz, true},
    Unit{18, "A/√Hz", "current noise density", kAmp - kRootHertz, true},
    Unit{19, "V·s", "voltage-time", kVolt + kSecond, true},
    Unit{20, "V/s", "slew rate", kVolt - kSecond, true},
    Unit{21, "A/s", "current slew rate", kAmp - kSecond, true},
    Unit{22, "Hz/V", "tuning gain", kHertz - kVolt, true},
    Unit{Digital, "", "digital", kNumber, false},
    Unit{NoRef, "", "none", kNumber, false},
    Unit{25, "K", "temperature", kKelvin, true},
    Unit{26, "m", "length", kMetre, true},
    Unit{27, "s²", "time squared", kSecond + kSecond, true},
    Unit{28, "Ω²", "resistance squared", kVolt + kVolt - kAmp - kAmp, true},
    Unit{29, "√Hz", "root frequency", kRootHertz, true},
    Unit{30, "1/√Hz", "inverse root frequency", kNumber - kRootHertz, true},
};

constexpr bool codesAreUnique() {
    for (size_t i = 0; i < kUnits.size(); ++i)
        for (size_t j = i + 1; j < kUnits.size(); ++j)
            if (kUnits[i].code == kUnits[j].code ||
                (kUnits[i].algebraic && kUnits[j].algebraic && kUnits[i].dims == kUnits[j].dims))
                return false;
    return true;
}
static_assert(codesAreUnique(), "each code and each dimension set appears once");

const Unit* find(PhysType p) {
    for (const Unit& u : kUnits)
        if (u.code == p) return &u;
    return nullptr;
}

// Dimensions of a code, or nothing when the code has none we can compute with.
std::optional<Dims> dimsOf(PhysType p) {
    if (p == Digital || p == NoRef) return kNumber;  // dimensionless for products and roots
    const Unit* u = find(p);
    if (!u || !u->algebraic) return std::nullopt;
    return u->dims;
}

PhysType fromDims(const std::optional<Dims>& d) {
    if (!d) return Unknown;
    for (const Unit& u : kUnits)
        if (u.algebraic && u.dims == *d) return u.code;
    return Unknown;
}

bool isPlain(PhysType p) { return p == Number || p == NoRef; }

}  // namespace

PhysType same(PhysType p) { return p; }
PhysType none(PhysType) { return Number; }
PhysType none2(PhysType, PhysType) { return Number; }
PhysType unknown(PhysType) { return Unknown; }
PhysType unknown2(PhysType, PhysType) { return Unknown; }

// A sum keeps the unit its operands share; a plain number added to a quantity (v + 1) keeps the
// quantity's unit; quantities of different dimensions give "unknown".
PhysType add(PhysType p, PhysType q) {
    if (p == q) return p;
    if (isPlain(q)) return p;
    if (isPlain(p)) return q;
    auto a = dimsOf(p), b = dimsOf(q);
    if (a && b && *a == *b) return fromDims(a);
    return Unknown;
}

PhysType mult(PhysType p, PhysType q) {
    auto a = dimsOf(p), b = dimsOf(q);
    if (!a || !b) return Unknown;
    return fromDims(*a + *b);
}

PhysType div(PhysType p, PhysType q) {
    auto a = dimsOf(p), b = dimsOf(q);
    if (!a || !b) return Unknown;
    return fromDims(*a - *b);
}

PhysType db(PhysType) { return Number; }

PhysType sqrt(PhysType p) {
    auto a = dimsOf(p);
    if (!a) return Unknown;
    Dims half{};
    for (int i = 0; i < 5; ++i) {
        if (a->e[i] % 2 != 0) return Unknown;  // would need quarter powers
        half.e[i] = static_cast<int8_t>(a->e[i] / 2);
    }
    return fromDims(half);
}

std::string_view symbol(PhysType p) {
    const Unit* u = find(p);
    return u ? u->symbol : "";
}

std::string_view description(PhysType p) {
    const Unit* u = find(p);
    return u ? u->description : "unknown";
}

std::optional<PhysType> fromSymbol(std::string_view s) {
    struct Alias { std::string_view text; PhysType code; };
    static constexpr Alias kAliases[] = {
        {"ohm", 6}, {"Ohm", 6}, {"V^2", 13}, {"A^2", 14}, {"V^2/Hz", 15}, {"A^2/Hz", 16},
        {"V/rtHz", 17}, {"A/rtHz", 18}, {"V/sqrt(Hz)", 17}, {"A/sqrt(Hz)", 18}, {"Vs", 19},
        {"V*s", 19}, {"s^2", 27}, {"ohm^2", 28}, {"", Number}, {"1", Number}};
    for (const Alias& a : kAliases)
        if (a.text == s) return a.code;
    for (const Unit& u : kUnits)
        if (u.algebraic && !u.symbol.empty() && u.symbol == s) return u.code;
    return std::nullopt;
}

}  // namespace wavex::units

namespace wavex {
std::string_view sp_GetPhysTypeName(PhysType p) {
    std::string_view s = units::symbol(p);
    return s.empty() ? units::description(p) : s;
}
}  // namespace wavex
