// Physical units of y-data and references.
//
// A PhysType is a code with a name. The algebra (sum, product, quotient, square root ...) works on
// SI dimension exponents kept in halves, so V²/Hz × Hz is V², √(V²) is V and √(V²/Hz) is V/√Hz.
// A result whose dimensions match no named unit is "unknown" (code 0).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace wavex {

using PhysType = int32_t;

namespace units {

// Fixed codes.
inline constexpr PhysType Unknown = 0;
inline constexpr PhysType Number = 1;     // a plain number: counts, indices, ratios
inline constexpr PhysType Voltage = 2;    // V
inline constexpr PhysType Current = 3;    // A
inline constexpr PhysType Time = 4;       // s
inline constexpr PhysType Frequency = 5;  // Hz
inline constexpr PhysType Digital = 23;   // a logic signal
inline constexpr PhysType NoRef = 24;     // the reference unit of a result without reference

// The algebra. Each takes and returns PhysType, so families can keep them in tables.
PhysType same(PhysType p);
PhysType none(PhysType p);
PhysType none2(PhysType p, PhysType q);
PhysType unknown(PhysType p);
PhysType unknown2(PhysType p, PhysType q);
PhysType add(PhysType p, PhysType q);   // sum or difference
PhysType mult(PhysType p, PhysType q);  // product
PhysType div(PhysType p, PhysType q);   // quotient
PhysType db(PhysType p);                // decibels and transcendental functions
PhysType sqrt(PhysType p);              // square root

using Rule1 = PhysType (*)(PhysType);
using Rule2 = PhysType (*)(PhysType, PhysType);

// The symbol shown with values ("V", "V²/Hz"); "" for plain numbers and unknown units.
std::string_view symbol(PhysType p);
// A word for the unit ("voltage", "unknown") for messages and listings.
std::string_view description(PhysType p);
// The code for a unit symbol as written in data files ("V", "Hz", "ohm", "V^2/Hz"); case matters
// only where it must (m vs M is not used: units carry no prefixes).
std::optional<PhysType> fromSymbol(std::string_view symbol);

}  // namespace units

// The host's name for a PhysType (its symbol, or a description when it has none).
std::string_view sp_GetPhysTypeName(PhysType p);

}  // namespace wavex
