// The Laplace parser: expansions into ascending coefficients, every error code, the limits that
// refuse hostile sizes, and the record interface with its capacities.
#include "support/laplace.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <vector>

namespace wavex {
namespace {

using Coefficients = std::vector<double>;

TEST(Laplace, Expansions) {
    struct Case { const char* text; Coefficients num, den; };
    const Case cases[] = {
        {"1/(1+s*1u)", {1}, {1, 1e-6}},
        {" ( 1 + S ) ", {1, 1}, {1}},
        {"10meg*s + 1e-3", {1e-3, 1e7}, {1}},
        {"(1+s)^3", {1, 3, 3, 1}, {1}},
        {"(s+1)*(s-1)", {-1, 0, 1}, {1}},
        {"s^2^2", {0, 0, 0, 0, 1}, {1}},          // right-associative
        {"-s^2", {0, 0, -1}, {1}},                // -(s^2)
        {"+s", {0, 1}, {1}},
        {"s^(1+1)", {0, 0, 1}, {1}},
        {"2^10", {1024}, {1}},
        {"0^0", {1}, {1}},
        {"1/(1+s) + s/2", {1, 0.5, 0.5}, {1, 1}},  // brought to the product of the denominators
        {"1/(1+s) + 2/(1+s)", {3}, {1, 1}},       // a shared denominator stays
        {"s - s", {0}, {1}},                      // zero leading coefficients dropped
        {"(s^2+s)/(s^3)", {1, 1}, {0, 0, 1}},    // a common factor s^k cancelled
        {"(1+s)/(2+s)/(3+s)", {1, 1}, {6, 5, 1}},
        {"1/s", {1}, {0, 1}},
        {"1/(1 + s/(2*PI*1k))", {1}, {1, 0.00015915494309189535}},
        {"(1+s/1k)/(1+s/10k)^2", {1, 1e-3}, {1, 2e-4, 1e-8}},  // constants divided into the numerator
        {"1/(2/(1+s))", {0.5, 0.5}, {1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        LaplaceParse p = parseLaplace(c.text);
        ASSERT_EQ(p.code, kLaplaceOk);
        EXPECT_EQ(p.value.numerator, c.num);
        EXPECT_EQ(p.value.denominator, c.den);
    }
}

TEST(Laplace, ErrorCodes) {
    const std::string deepParentheses = std::string(257, '(') + "s" + std::string(257, ')');
    const std::string deepSigns = std::string(300, '-') + "1";
    struct Case { std::string text; int32_t code; };
    const Case cases[] = {
        {"", kLaplaceEmpty},
        {"#", kLaplaceInvalidCharacter},
        {"1,2", kLaplaceInvalidCharacter},
        {"x", kLaplaceUnknownName},
        {"sin(s)", kLaplaceUnknownName},
        {"(1+s", kLaplaceUnbalanced},
        {"1+s)", kLaplaceUnbalanced},
        {"1+", kLaplaceOperandMissing},
        {"()", kLaplaceOperandMissing},
        {"s^", kLaplaceOperandMissing},
        {"2s", kLaplaceInvalidNumber},
        {"1e", kLaplaceInvalidNumber},
        {".", kLaplaceInvalidNumber},
        {"s^s", kLaplacePowerNotConstant},
        {"2^(1/s)", kLaplacePowerNotConstant},
        {"s^0.5", kLaplacePowerNotInteger},
        {"s^-1", kLaplacePowerNegative},
        {"s^(1-2)", kLaplacePowerNegative},
        {"1/0", kLaplaceDivisionByZero},
        {"1/(s-s)", kLaplaceDivisionByZero},
        {"1/(1e-200*1e-200)", kLaplaceDivisionByZero},  // a divisor that underflows to zero
        {"1 2", kLaplaceTrailingText},
        {"(1+s)(1-s)", kLaplaceTrailingText},
        {"s^1001", kLaplaceOrderTooHigh},
        {"(1+s)^1e9", kLaplaceOrderTooHigh},            // refused before expanding
        {"(1+s^2)^501", kLaplaceOrderTooHigh},
        {"1/s^600 + 1/(1+s)^401", kLaplaceOrderTooHigh},
        {"1e400", kLaplaceOutOfRange},
        {"1e200*1e200", kLaplaceOutOfRange},
        {"2^1e9", kLaplaceOutOfRange},
        {"(1e200*s+1)^2", kLaplaceOutOfRange},
        {deepParentheses, kLaplaceTooDeep},
        {deepSigns, kLaplaceTooDeep},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 40));
        EXPECT_EQ(parseLaplace(c.text).code, c.code);
    }
}

TEST(Laplace, LimitsAreReachable) {
    LaplaceParse p = parseLaplace(std::string(256, '(') + "s" + std::string(256, ')') + "^1000");
    ASSERT_EQ(p.code, kLaplaceOk);
    EXPECT_EQ(p.value.numerator.size(), 1001u);

    p = parseLaplace("(1+s)^1000");
    ASSERT_EQ(p.code, kLaplaceOk);
    const Coefficients& c = p.value.numerator;
    ASSERT_EQ(c.size(), 1001u);
    EXPECT_EQ(c[0], 1);
    EXPECT_EQ(c[1], 1000);
    EXPECT_EQ(c[2], 499500);
    EXPECT_NEAR(c[500] / 2.7028824094543655e299, 1, 1e-12);  // C(1000, 500)
    EXPECT_EQ(c[999], 1000);
}

TEST(Laplace, ErrorTexts) {
    const char* text = nullptr;
    std::set<std::string> distinct;
    for (int code = 1; code <= kLaplaceLastError; ++code) {
        ASSERT_TRUE(sp_GetLaplaceErrMessage(code, &text)) << code;
        distinct.insert(text);
    }
    EXPECT_EQ(distinct.size(), static_cast<size_t>(kLaplaceLastError));
    ASSERT_TRUE(sp_GetLaplaceErrMessage(kLaplaceDivisionByZero, &text));
    EXPECT_STREQ(text, "Division by a zero polynomial");
    ASSERT_TRUE(sp_GetLaplaceErrMessage(kLaplaceOrderTooHigh, &text));
    EXPECT_STREQ(text, "A polynomial order exceeds 1000");
    for (int none : {0, -1, kLaplaceLastError + 1}) {
        EXPECT_FALSE(sp_GetLaplaceErrMessage(none, &text));
        EXPECT_EQ(text, nullptr);
    }
}

// The record: coefficients written up to the capacities, the orders always, nothing past the end.
TEST(Laplace, RecordInterface) {
    double num[4] = {-7, -7, -7, -7}, den[4] = {-7, -7, -7, -7};
    XSpiceParseLaplaceArgs call{"(1+s)^3/(2+s)", num, 2, den, 3, -1, 0};
    EXPECT_NE(sp_ParseLaplaceExpression(&call), 0);
    EXPECT_EQ(call.errorCode, 0);
    EXPECT_EQ(call.numeratorSize, 3);
    EXPECT_EQ(call.denominatorSize, 1);
    EXPECT_EQ((Coefficients{num, num + 4}), (Coefficients{1, 3, -7, -7}));
    EXPECT_EQ((Coefficients{den, den + 4}), (Coefficients{2, 1, -7, -7}));

    XSpiceParseLaplaceArgs check{"1/(1+s", nullptr, 0, nullptr, 0, -1, 0};
    EXPECT_EQ(sp_ParseLaplaceExpression(&check), 0);
    EXPECT_EQ(check.errorCode, kLaplaceUnbalanced);
    EXPECT_EQ(check.numeratorSize, 0);  // untouched

    XSpiceParseLaplaceArgs empty{nullptr, nullptr, 0, nullptr, 0, -1, 0};
    EXPECT_EQ(sp_ParseLaplaceExpression(&empty), 0);
    EXPECT_EQ(empty.errorCode, kLaplaceEmpty);
    EXPECT_EQ(sp_ParseLaplaceExpression(nullptr), 0);
}

}  // namespace
}  // namespace wavex
