#include "io/printers.hpp"

#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace wavex::io {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::string json(const VectorPtr& v) {
    std::string out;
    appendJson(out, v);
    return out;
}

std::string text(const VectorPtr& v, std::string_view label = "") {
    std::string out;
    appendText(out, v, label);
    return out;
}

std::string jsonString(std::string_view s) {
    std::string out;
    appendJsonString(out, s);
    return out;
}

// Three divisions of a curve over time, the middle one unlabelled.
VectorPtr steppedCurve() {
    auto v = std::make_shared<Vector>();
    v->real = {1, 2, 3, 4, 5};
    v->phys = units::Voltage;
    v->name = "out";
    v->ref = Reference::fromReal({0, 1e-3, 0, 0, 2e-3}, units::Time, "time");
    v->setDivisionLengths({2, 1, 2});
    v->labels = {"R=1k", std::nullopt, "R=\"3k\""};
    return v;
}

TEST(JsonPrinter, Fields) {
    EXPECT_EQ(json(nullptr), R"({"type":"real","phys":1,"unit":"","name":"","y":[],"x":null,"divisions":null})" "\n");
    EXPECT_EQ(json(makeScalar(0.1)),
              R"({"type":"real","phys":1,"unit":"","name":"","y":[0.1],"x":null,"divisions":null})" "\n");
    EXPECT_EQ(json(steppedCurve()),
              R"({"type":"real","phys":2,"unit":"V","name":"out","y":[1,2,3,4,5],)"
              R"("x":{"type":"real","phys":4,"unit":"s","name":"time","values":[0,0.001,0,0,0.002]},)"
              R"("divisions":[{"length":2,"label":"R=1k"},{"length":1,"label":null},{"length":2,"label":"R=\"3k\""}]})"
              "\n");

    auto c = std::make_shared<Vector>();
    c->type = VD_COMPLEX;
    c->cplx = {Complex(1, -2), Complex(kNaN, kInf)};
    c->phys = 15;
    c->ref = Reference::fromComplex({Complex(0, 1), Complex(-0.0, 2.5)}, units::Frequency, "f");
    EXPECT_EQ(json(c), R"({"type":"complex","phys":15,"unit":"V²/Hz","name":"","y":[[1,-2],["NaN","Infinity"]],)"
                       R"("x":{"type":"complex","phys":5,"unit":"Hz","name":"f","values":[[0,1],[-0,2.5]]},)"
                       R"("divisions":null})" "\n");

    // One division that has a label keeps it.
    auto one = std::make_shared<Vector>(*makeRealVector({7}));
    one->labels = {"only"};
    EXPECT_EQ(json(one), R"({"type":"real","phys":1,"unit":"","name":"","y":[7],"x":null,)"
                         R"("divisions":[{"length":1,"label":"only"}]})" "\n");

    EXPECT_EQ(json(makeStringVector({"a", std::nullopt, ""})),
              R"({"type":"string","phys":1,"unit":"","name":"","y":["a",null,""],"x":null,"divisions":null})" "\n");
}

TEST(JsonPrinter, NumbersReadBackExactly) {
    const double values[] = {0.1, 1.0 / 3, -2.5e-300, 1e300, 5e-324, 123456789012345678.0,
                             std::numeric_limits<double>::max(), -std::numeric_limits<double>::min()};
    for (double x : values) {
        std::string line = json(makeScalar(x));
        size_t at = line.find("\"y\":[") + 5;
        EXPECT_EQ(std::strtod(line.c_str() + at, nullptr), x) << line;
    }
    EXPECT_NE(json(makeRealVector({kNaN, kInf, -kInf, -0.0})).find(R"("y":["NaN","Infinity","-Infinity",-0])"),
              std::string::npos);
}

TEST(JsonPrinter, StringEscapes) {
    struct Case {
        std::string in;
        const char* out;
    };
    const Case cases[] = {
        {"plain", R"("plain")"},
        {"q\"b\\s/", R"("q\"b\\s/")"},
        {"\n\r\t\b\f", R"("\n\r\t\b\f")"},
        {std::string("\x01\x1f\x7f", 3), "\"\\u0001\\u001f\x7f\""},
        {std::string("a\0b", 3), R"("a\u0000b")"},
        {"é, Ω, 😀", "\"é, Ω, 😀\""},                      // valid UTF-8 passes through
        {"caf\xE9", R"("caf\u00e9")"},                     // a Latin-1 byte
        {"\xC3", R"("\u00c3")"},                           // a sequence cut short
        {"\xC3(", R"("\u00c3(")"},
        {"\xC0\x80", R"("\u00c0\u0080")"},                 // overlong
        {"\xE0\x80\xAF", R"("\u00e0\u0080\u00af")"},       // overlong
        {"\xED\xA0\x80", R"("\u00ed\u00a0\u0080")"},       // surrogate
        {"\xF4\x90\x80\x80", R"("\u00f4\u0090\u0080\u0080")"},  // past U+10FFFF
        {"\xF0\x9F\x98", R"("\u00f0\u009f\u0098")"},       // four-byte sequence cut short
        {"\xFF\xFE", R"("\u00ff\u00fe")"},
    };
    for (const Case& c : cases) EXPECT_EQ(jsonString(c.in), c.out) << c.in;
}

TEST(TextPrinter, Values) {
    EXPECT_EQ(text(makeRealVector({0, 20, 60})), "0\n20\n60\n");
    EXPECT_EQ(text(makeRealVector({1.5e-3, -2.2e6, kNaN}, units::Voltage)), "1.5m V\n-2.2Meg V\nNaN V\n");
    EXPECT_EQ(text(makeComplexVector({Complex(3, 4), Complex(1, -2e-3), Complex(0, -0.0)})),
              "3 + j4\n1 - j2m\n0 - j0\n");
    EXPECT_EQ(text(makeComplexVector({Complex(1, 1)}, units::Current)), "1 + j1 A\n");
    EXPECT_EQ(text(makeStringVector({"a b", std::nullopt, "c"})), "a b\n\nc\n");
    EXPECT_EQ(text(nullptr), "");
    EXPECT_EQ(text(makeEmptyVector()), "");
}

TEST(TextPrinter, NumberPerRunIsLabelled) {
    EXPECT_EQ(text(makeRealVector({1.5e-3}, units::Voltage), "m"), "m = 1.5m V\n");
    EXPECT_EQ(text(makeEmptyVector(), "e"), "e: empty\n");
    EXPECT_EQ(text(nullptr, "e"), "e: empty\n");
    auto runs = std::make_shared<Vector>(*makeComplexVector({Complex(1, 2), Complex(3, 0)}));
    runs->setDivisionLengths({1, 0, 1});
    runs->labels = {"R=1", std::nullopt, "R=3"};
    EXPECT_EQ(text(runs, "h"), "h = 1 + j2   # R=1\nh: empty   # division 2\nh = 3 + j0   # R=3\n");
}

TEST(TextPrinter, Curves) {
    EXPECT_EQ(text(makeCurve({0, 1e-3, 12.5e-3}, {1, -2, 3e3}, units::Voltage, units::Time), "v"),
              "x [s]  v [V]\n"
              "0      1\n"
              "1m     -2\n"
              "12.5m  3k\n");
    // The y column is named by the vector, else by the statement, else "y".
    auto named = std::make_shared<Vector>(*makeCurve({1}, {2}));
    named->name = "gain";
    named->ref.name = "frequency";
    EXPECT_EQ(text(named, "db(h)"), "frequency  gain\n1          2\n");
    EXPECT_EQ(text(makeCurve({1}, {2}), ""), "x  y\n1  2\n");

    EXPECT_EQ(text(steppedCurve()),
              "# R=1k\n"
              "time [s]  out [V]\n"
              "0         1\n"
              "1m        2\n"
              "\n"
              "# division 2\n"
              "time [s]  out [V]\n"
              "0         3\n"
              "\n"
              "# R=\"3k\"\n"
              "time [s]  out [V]\n"
              "0         4\n"
              "2m        5\n");

    // Units of several bytes still line up.
    auto psd = std::make_shared<Vector>(*makeCurve({1, 1000}, {1e-18, 2e-18}, 15, units::Frequency));
    psd->ref.phys = 6;
    EXPECT_EQ(text(psd, "p"), "x [Ω]  p [V²/Hz]\n1      1e-18\n1k     2e-18\n");
}

TEST(TextPrinter, DivisionsWithoutReference) {
    auto v = std::make_shared<Vector>(*makeStringVector({"a", "b", "c"}));
    v->setDivisionLengths({1, 2});
    EXPECT_EQ(text(v), "# division 1\na\n\n# division 2\nb\nc\n");
}

}  // namespace
}  // namespace wavex::io
