// LoadTouchstone, ReadTouchstone, ParseTouchstone, GetTouchstoneErrors, DeleteTouchstone: the
// handle store, the result layout and the lenient flat index, on the real files of
// tests/data/touchstone.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::strings;

std::string fixture(const std::string& name) { return std::string(WAVEX_SOURCE_DIR) + "/tests/data/touchstone/" + name; }
const std::string kQucs = fixture("qucs_unilateral_2port_ri_with_noise.s2p");

struct TouchstoneFunctions : ::testing::Test {
    Session wx;

    VectorPtr call(const std::string& expression) {
        VectorPtr r = wx(expression);
        EXPECT_NE(r, nullptr) << expression << ": " << wx.messages();
        EXPECT_EQ(wx.messages(), "") << expression;
        return r ? r : makeEmptyVector();
    }
    std::vector<double> load(const std::string& file, int ports) {
        return reals(call("LoadTouchstone('" + file + "', " + std::to_string(ports) + ")"));
    }
    std::vector<double> read(double handle, const std::string& rowColumn) {
        return reals(call("ReadTouchstone(" + std::to_string(handle) + ", " + rowColumn + ")"));
    }
};

TEST_F(TouchstoneFunctions, HandlesCountUpAndAreNeverReused) {
    call("DeleteTouchstone(0)");
    std::vector<double> first = load(kQucs, 2);
    ASSERT_EQ(first.size(), 2u);
    EXPECT_EQ(first[1], 1);
    // A file that does not build is kept, with its messages, under the next handle.
    EXPECT_EQ(load("/nonexistent/amp.s1p", 1), (std::vector<double>{first[0] + 1, 0}));
    EXPECT_EQ(reals(call("DeleteTouchstone(-5)")), std::vector<double>{2});
    EXPECT_EQ(reals(call("DeleteTouchstone(0)")), std::vector<double>{0});
    double third = load(kQucs, 2)[0];
    EXPECT_EQ(third, first[0] + 2);  // not reused after the store was emptied
    load(kQucs, 2);
    EXPECT_EQ(reals(call("DeleteTouchstone(" + std::to_string(third) + ")")), std::vector<double>{1});
    EXPECT_EQ(reals(call("DeleteTouchstone(" + std::to_string(third) + ")")), std::vector<double>{0});
    EXPECT_TRUE(read(third, "0, 0").empty());
    EXPECT_EQ(reals(call("DeleteTouchstone(NaN)")), std::vector<double>{0});  // no handle: nothing removed
    EXPECT_EQ(reals(call("DeleteTouchstone(0.5)")), std::vector<double>{1});  // truncated to 0: all
}

TEST_F(TouchstoneFunctions, TriplesAndLenientFlatIndex) {
    double h = load(kQucs, 2)[0];
    VectorPtr r = call("ReadTouchstone(" + std::to_string(h) + ", 1, 0)");
    ASSERT_EQ(r->size(), 30u);
    EXPECT_EQ(r->type, VD_REAL);
    EXPECT_FALSE(r->ref.present());
    EXPECT_EQ(r->phys, units::Number);
    // S21 of the first and last points: frequency, real part, imaginary part.
    std::vector<double> v = reals(r);
    EXPECT_EQ(std::vector<double>(v.begin(), v.begin() + 3), (std::vector<double>{1e9, -4.666666666666666, 4.683102863833885e-16}));
    EXPECT_EQ(std::vector<double>(v.end() - 3, v.end()), (std::vector<double>{1e10, -4.333333333333333, 4.1591574271746577e-16}));

    std::string handle = std::to_string(h);
    EXPECT_EQ(read(h, "0, 2"), v);          // flat index 2: row 1, column 0
    EXPECT_EQ(read(h, "-1, 4"), v);         // -2 + 4
    EXPECT_EQ(read(h, "1.9, 0.7"), v);      // truncated toward zero
    EXPECT_EQ(read(h + 0.9, "1, 0"), v);    // so is the handle
    EXPECT_EQ(read(h, "0, 3"), read(h, "1, 1"));
    EXPECT_NE(read(h, "0, 1"), v);
    EXPECT_TRUE(read(h, "2, 0").empty());   // flat index 4 is outside the 2×2 matrix
    EXPECT_TRUE(read(h, "0, -1").empty());
    EXPECT_TRUE(read(h + 1000, "0, 0").empty());
}

TEST_F(TouchstoneFunctions, ParseTouchstoneInOneShot) {
    double h = load(kQucs, 2)[0];
    std::string file = "'" + kQucs + "'";
    EXPECT_EQ(reals(call("ParseTouchstone(" + file + ", 2, 2)")), read(h, "1, 0"));
    EXPECT_TRUE(reals(call("ParseTouchstone(" + file + ", 2, 4)")).empty());
    EXPECT_TRUE(reals(call("ParseTouchstone(" + file + ", 2, -1)")).empty());
    EXPECT_TRUE(reals(call("ParseTouchstone(" + file + ", 4, 0)")).empty());  // does not build
    // Nothing was kept: the next handle follows the last one.
    EXPECT_EQ(load(kQucs, 2)[0], h + 1);
}

TEST_F(TouchstoneFunctions, ErrorsOfALoadedFile) {
    double clean = load(fixture("ex_6.ts"), 4)[0];
    VectorPtr none = call("GetTouchstoneErrors(" + std::to_string(clean) + ")");
    EXPECT_EQ(none->type, VD_STRING);
    EXPECT_EQ(none->size(), 0u);

    test::ScratchDir dir;
    std::string bad = dir.write("bad.s1p", "# MHz S RI\n1 0.5 0.25\n2 0 oops\n3 0 0\n2.5 0 0\n4 0 0 7\n");
    std::vector<double> loaded = load(bad, 1);
    EXPECT_EQ(loaded[1], 0);
    EXPECT_EQ(strings(call("GetTouchstoneErrors(" + std::to_string(loaded[0]) + ")")),
              (std::vector<std::string>{"Line 3: 'oops' is not a number", "Line 5: frequency 2.5 is below the previous one, 3",
                                        "Line 6: expected 3 values for a frequency point, found 4"}));
    EXPECT_TRUE(read(loaded[0], "0, 0").empty());  // a failed build has no points
    EXPECT_TRUE(reals(call("GetTouchstoneErrors(" + std::to_string(loaded[0] + 1000) + ")")).empty());
}

}  // namespace
}  // namespace wavex
