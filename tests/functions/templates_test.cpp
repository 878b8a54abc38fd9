#include "test_util.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

using test::Session;
using test::strings;

TEST(Templates, ProbeExpressionsAreRewrittenAndListed) {
    Session wx;
    struct Case { const char* expression; std::vector<std::string> result; };
    const Case cases[] = {
        {"V(out) - V(a,b) + I(R1)", {"(out) - (a-b) + R1#p", "3", "1", "out", "a", "b", "R1"}},
        {"v(A) + V(a)", {"(A) + (a)", "1", "0", "A"}},
        {"I(Q1,2) * i(q1)", {"I(Q1, 2) * q1#p", "0", "1", "q1"}},
        {"V(a, b, c) / max(x,y)", {"V(a, b, c) / max(x, y)", "0", "0"}},
        {"2*(x+1)", {"2 * (x + 1)", "0", "0"}},
        {"f()", {"f()", "0", "0"}},
        {"db(V(out)/V(in))[2]", {"db((out) / (in))[2]", "2", "0", "out", "in"}},
    };
    for (const Case& c : cases) {
        VectorPtr r = wx("ParseProbeExpression('" + std::string(c.expression) + "')");
        ASSERT_NE(r, nullptr) << wx.messages();
        EXPECT_EQ(strings(r), c.result) << c.expression;
    }
    // Malformed text comes back as written, with the language's message.
    EXPECT_EQ(strings(wx("ParseProbeExpression('V(out')")), (std::vector<std::string>{"V(out", "0", "0"}));
    EXPECT_EQ(wx.messages(), "syntax error: expected ')' to close the probe\n  V(out\n       ^");
}

// SubstProbeExpression replaces names only; ResolveTemplate and its failure text.
TEST(Templates, SubstitutionAndResolution) {
    Session wx;
    wx.set("gain", makeScalar(20));
    wx.check({
        {"SubstProbeExpression('a*b + f(a)', ['a', 'b'], ['x', 'y'])", "['x * y + f(x)']"},
        {"SubstProbeExpression('a + A', ['a', 'A'], ['first', 'second'])", "['second + second']"},
        {"SubstProbeExpression('f(a) + a', ['f', 'a', 'unused'], ['g', 'z'])", "['f(z) + z']"},
        {"SubstProbeExpression('V(n1) + n1', ['n1'], ['n2'])", "['V(n1) + n2']"},
        {"SubstProbeExpression('a', [], [])", "['a']"},
        {"ResolveTemplate('R=%R% C=%c%', ['r', 'C', 'x'], ['1k', '1n'])", "['R=1k C=1n']"},
        {"rt('%A% %a%', ['a', 'A'], ['old', 'new'])", "['new new']"},
        {"ResolveTemplate('%missing% 100%%', [], [])", "['%missing% 100%']"},
        {"ResolveTemplate('%missing%', [], [], 'failed')", "['failed']"},
        {"ResolveTemplate('gain {gain} dB', ['a'], ['b'], 'failed')", "['gain 20 dB']"},
        {"ResolveTemplate('{nosuch(1)}', [], [], 'failed')", "['failed']"},
        {"ResolveTemplate('{open', [], [])", "['{open']"},
    });
}

}  // namespace
}  // namespace wavex
