#include "wavex/units.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

PhysType code(const char* symbol) { return *units::fromSymbol(symbol); }

TEST(Units, AlgebraFollowsDimensions) {
    using namespace units;
    EXPECT_EQ(mult(code("V^2/Hz"), Frequency), code("V^2"));
    EXPECT_EQ(units::sqrt(code("V^2")), Voltage);
    EXPECT_EQ(units::sqrt(code("V^2/Hz")), code("V/rtHz"));
    EXPECT_EQ(div(Voltage, Current), code("ohm"));
    EXPECT_EQ(mult(Voltage, Current), code("W"));
    EXPECT_EQ(div(Number, Time), Frequency);
    EXPECT_EQ(div(Number, Frequency), Time);
    EXPECT_EQ(mult(Voltage, Number), Voltage);
    EXPECT_EQ(div(Voltage, Voltage), Number);
    EXPECT_EQ(add(Voltage, Voltage), Voltage);  // sums keep the quantity
    EXPECT_EQ(add(Voltage, Number), Voltage);
    EXPECT_EQ(add(Number, Current), Current);
}

TEST(Units, UnnamedOrMixedResultsAreUnknown) {
    using namespace units;
    EXPECT_EQ(mult(Voltage, code("V^2")), Unknown);  // V³ has no name
    EXPECT_EQ(units::sqrt(Voltage), Unknown);         // would need quarter powers
    EXPECT_EQ(add(Voltage, Current), Unknown);
    EXPECT_EQ(mult(Unknown, Number), Unknown);
}

TEST(Units, Names) {
    using namespace units;
    EXPECT_EQ(symbol(Voltage), "V");
    EXPECT_EQ(symbol(code("V^2/Hz")), "V²/Hz");
    EXPECT_EQ(sp_GetPhysTypeName(NoRef), "none");
    EXPECT_FALSE(fromSymbol("furlong").has_value());
}

}  // namespace
}  // namespace wavex
