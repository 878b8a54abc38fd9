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
    EXPECT_EQ(mult(Voltage, Time), code("V*s"));
    EXPECT_EQ(div(Voltage, Time), code("V/s"));
    EXPECT_EQ(div(Number, Time), Frequency);
    EXPECT_EQ(div(Number, Frequency), Time);
    EXPECT_EQ(mult(Voltage, Number), Voltage);
    EXPECT_EQ(div(Voltage, Voltage), Number);
}

TEST(Units, UnnamedOrMixedResultsAreUnknown) {
    using namespace units;
    EXPECT_EQ(mult(Voltage, code("V^2")), Unknown);  // V³ has no name
    EXPECT_EQ(units::sqrt(Voltage), Unknown);         // would need quarter powers
    EXPECT_EQ(add(Voltage, Current), Unknown);
    EXPECT_EQ(mult(Unknown, Number), Unknown);
}

TEST(Units, SumsKeepTheQuantity) {
    using namespace units;
    EXPECT_EQ(add(Voltage, Voltage), Voltage);
    EXPECT_EQ(add(Voltage, Number), Voltage);
    EXPECT_EQ(add(Number, Current), Current);
    EXPECT_EQ(add(Digital, Digital), Digital);
}

TEST(Units, FixedRulesAndNames) {
    using namespace units;
    EXPECT_EQ(same(Voltage), Voltage);
    EXPECT_EQ(none(Voltage), Number);
    EXPECT_EQ(unknown(Voltage), Unknown);
    EXPECT_EQ(db(Voltage), Number);
    EXPECT_EQ(symbol(Voltage), "V");
    EXPECT_EQ(symbol(Frequency), "Hz");
    EXPECT_EQ(symbol(code("V^2/Hz")), "V²/Hz");
    EXPECT_EQ(sp_GetPhysTypeName(NoRef), "none");
    EXPECT_FALSE(fromSymbol("furlong").has_value());
}

}  // namespace
}  // namespace wavex
