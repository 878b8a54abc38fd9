#include "lang/parser.hpp"
#include "support/numbers.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

namespace wavex::lang {
namespace {

// The tree as text: calls as name(args), constants as values, probes as V{a,b}.
std::string show(const Node& n) {
    std::string s;
    auto children = [&]() {
        for (size_t i = 0; i < n.children.size(); ++i) {
            if (i) s += ',';
            s += show(*n.children[i]);
        }
    };
    switch (n.kind) {
        case Node::Kind::Constant:
            if (n.value->type == VD_STRING) return "'" + *n.value->str[0] + "'";
            return formatRoundTrip(n.value->real[0]);
        case Node::Kind::Name: return n.text;
        case Node::Kind::List: s = "["; children(); return s + "]";
        case Node::Kind::Call: s = n.text + "("; children(); return s + ")";
        case Node::Kind::Probe:
            s = n.text + "{";
            for (size_t i = 0; i < n.nodes.size(); ++i) {
                if (i) s += ',';
                s += n.nodes[i];
            }
            return s + "}";
    }
    return "?";
}

std::string parsed(std::string_view line) {
    std::string error;
    auto statements = parseLine(line, &error);
    if (!statements) return "error: " + error;
    std::string s;
    for (const Statement& st : *statements) {
        if (!s.empty()) s += " ; ";
        if (st.target) s += *st.target + " = ";
        s += show(*st.expression);
    }
    return s;
}

TEST(Parser, OperatorsBecomeCallsWithTheirPrecedence) {
    struct Case { const char* text; const char* tree; };
    const Case cases[] = {
        {"a + b * c", "_Plus(a,_Times(b,c))"},
        {"a - b - c", "_Minus(_Minus(a,b),c)"},
        {"a ^ b ^ c", "_Power(a,_Power(b,c))"},
        {"-a ^ 2", "_Power(_UMinus(a),2)"},
        {"2 ^ -1", "_Power(2,-1)"},
        {"-2", "-2"},
        {"!a && b || c", "_Or(_And(_Not(a),b),c)"},
        {"a == b != c", "_Ne(_Eq(a,b),c)"},
        {"a < b <= c > d >= e", "_Ge(_Gt(_Le(_Lt(a,b),c),d),e)"},
        {"a + 1 > b & 'x'", "_Gt(_Plus(a,1),_Concat(b,'x'))"},
        {"a % b / c", "_Divide(_Mod(a,b),c)"},
        {"v[2][k + 1]", "_Index(_Index(v,2),_Plus(k,1))"},
        {"(1, 2)", "_Comma(1,2)"},
        {"((a))", "a"},
        {"f()", "f()"},
        {"Mean1(v, 1m, 2m)", "Mean1(v,0.001,0.002)"},
        {"[1, 'two', [3]]", "[1,'two',[3]]"},
        {"[]", "[]"},
        {"x = 2.2u; y = 10meg", "x = 2.2e-06 ; y = 1e+07"},
        {"\"it's\" & 'say \"hi\"'", "_Concat('it's','say \"hi\"')"},
        {"1kHz + .5 + 1.5E-3k", "_Plus(_Plus(1000,0.5),1.5)"},  // suffixes end at the operator
        {"V(out) - V(in+, in-) + I(R1)", "_Plus(_Minus(V{out},V{in+,in-}),I{R1})"},
        {"v(net 1)", "v{net 1}"},
        {"1 # a comment", "1"},
        {"; ;a;", "a"},
        {"Vec('x y')", "Vec('x y')"},
    };
    for (const Case& c : cases) EXPECT_EQ(parsed(c.text), c.tree) << c.text;
}

TEST(Parser, StatementTextIsTheExpressionAsWritten) {
    std::string error;
    auto s = parseLine("  y = db(h)  ; mean( v ) # the average", &error);
    ASSERT_TRUE(s);
    EXPECT_EQ((*s)[0].text, "db(h)");
    EXPECT_EQ((*s)[1].text, "mean( v )");
}

TEST(Parser, SyntaxErrorsShowWhereTheTextWentWrong) {
    struct Case { const char* text; const char* message; };
    const Case cases[] = {
        {"sin(1 2", "syntax error: expected ',' or ')'\n  sin(1 2\n        ^"},
        {"1 +", "syntax error: expected a value at the end of the line\n  1 +\n     ^"},
        {"a = = 2", "syntax error: expected a value, not '='\n  a = = 2\n      ^"},
        {"'open", "syntax error: unterminated string\n  'open\n  ^"},
        {"[1, 2", "syntax error: expected ',' or ']'\n  [1, 2\n       ^"},
        {"a | b", "syntax error: unexpected character '|'\n  a | b\n    ^"},
        {"v[1", "syntax error: expected ']'\n  v[1\n     ^"},
        {"V(a", "syntax error: expected ')' to close the probe\n  V(a\n     ^"},
        {"V(a,,b)", "syntax error: expected a node name\n  V(a,,b)\n      ^"},
        {"1 2", "syntax error: expected ';' or the end of the line\n  1 2\n    ^"},
        {"(1, 2, 3)", "syntax error: expected ')'\n  (1, 2, 3)\n       ^"},
    };
    for (const Case& c : cases) EXPECT_EQ(parsed(c.text), std::string("error: ") + c.message) << c.text;
}

TEST(Parser, DeepNestingIsRefusedNotOverflowed) {
    std::string deep(100000, '(');
    EXPECT_NE(parsed(deep).find("nested too deeply"), std::string::npos);
    std::string minus(100000, '-');
    EXPECT_NE(parsed(minus + "1").find("nested too deeply"), std::string::npos);
    std::string power;
    for (int i = 0; i < 100000; ++i) power += "2^";
    EXPECT_NE(parsed(power + "2").find("nested too deeply"), std::string::npos);
}

using test::reals;
using test::Session;
using test::strings;

TEST(Evaluator, NamesConstantsListsAndProbes) {
    Session wx;
    wx.wx.setVector("Out", makeRealVector({1, 2}));
    wx.wx.setVector("v(n1)", makeRealVector({5}));
    wx.wx.setVector("R1#p", makeRealVector({0.5}));
    wx.wx.setVector("odd name", makeRealVector({42}));

    EXPECT_EQ(reals(wx("out")), (std::vector<double>{1, 2}));  // names ignore case
    EXPECT_EQ(reals(wx("V(out)")), (std::vector<double>{1, 2}));
    EXPECT_EQ(reals(wx("v(N1)")), std::vector<double>{5});
    EXPECT_EQ(reals(wx("I(R1)")), std::vector<double>{0.5});
    EXPECT_EQ(reals(wx("Vec('odd name')")), std::vector<double>{42});
    EXPECT_DOUBLE_EQ(wx("pi")->real[0], 3.141592653589793);
    EXPECT_TRUE(std::isnan(wx("NaN")->real[0]));
    EXPECT_EQ(wx("inf")->real[0], HUGE_VAL);

    EXPECT_EQ(reals(wx("[1, out, [], 3]")), (std::vector<double>{1, 1, 2, 3}));
    EXPECT_EQ(strings(wx("['a', \"b\"]")), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(wx("[]")->size(), 0u);
}

TEST(Evaluator, ClearMessagesForWhatCannotBeEvaluated) {
    Session wx;
    struct Case { const char* text; const char* message; };
    const Case cases[] = {
        {"nothing", "Unknown vector 'nothing'"},
        {"nosuch(1)", "Unknown function 'nosuch'"},
        {"V(gone)", "Unknown vector 'v(gone)' (no vector 'gone' either)"},
        {"I(Q1)", "Unknown vector 'i(Q1)' (no vector 'Q1#p' either)"},
        {"Vec('gone')", "Unknown vector 'gone'"},
        {"Vec(1)", "Vec takes one argument, the name of a vector"},
        {"I(Q1, 2)", "I(...) takes one device name"},
        {"V(a, b, c)", "V(...) takes one or two node names"},
        {"[1, 'a']", "A vector literal cannot mix strings and numbers"},
        {"[1, nosuch(2)]", "Unknown function 'nosuch'"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(wx(c.text), nullptr) << c.text;
        EXPECT_EQ(wx.messages(), c.message) << c.text;
    }
}

TEST(Evaluator, RunLineBindsPrintsAndStopsAtTheFirstFailure) {
    Session wx;
    std::vector<std::string> printed;
    auto print = [&](const VectorPtr& v, std::string_view label) {
        printed.push_back(std::string(label) + "=" + formatRoundTrip(v->real[0]));
    };
    EXPECT_TRUE(wx.wx.runLine("a = 2; a; b = [3]; b # done", print));
    EXPECT_EQ(printed, (std::vector<std::string>{"a=2", "b=3"}));
    printed.clear();
    EXPECT_FALSE(wx.wx.runLine("a; nothing; b", print));
    EXPECT_EQ(printed, (std::vector<std::string>{"a=2"}));
    EXPECT_EQ(wx.messages(), "Unknown vector 'nothing'");
    printed.clear();
    EXPECT_FALSE(wx.wx.runLine("a; (", print));  // parsed whole first: nothing runs
    EXPECT_TRUE(printed.empty());
    EXPECT_EQ(wx.wx.vectorNames(), (std::vector<std::string>{"a", "b"}));
}

}  // namespace
}  // namespace wavex::lang
