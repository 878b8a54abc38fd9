#include "test_util.hpp"
#include "wavex/interpreter_scope.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

// Records what it is asked and answers by a fixed rule: names get a "$" prefix, calls become
// F<args joined by '|'>.
struct Recorder : VecSubstExpressionObject {
    bool names = true, whole = true, probeNames = false;
    std::vector<std::string> visits;
    std::string substituteName(const std::string& name) override {
        visits.push_back("name " + name);
        return "$" + name;
    }
    std::string substituteCall(const std::string& f, const std::vector<std::string>& args) override {
        std::string joined;
        for (size_t i = 0; i < args.size(); ++i) joined += (i ? "|" : "") + args[i];
        visits.push_back("call " + f + "(" + joined + ")");
        return whole ? f + "<" + joined + ">" : "F_" + f;
    }
    bool substitutesNames() const override { return names; }
    bool replacesWholeCall() const override { return whole; }
    bool probeNodesAreNames() const override { return probeNames; }
};

struct Rewrite : ::testing::Test {
    test::Session wx;
    InterpreterScope scope{&wx.wx};  // the rewriter is the interpreter's
    std::string run(const std::string& text, Recorder& r) { return vec_SubstituteExpression(text, &r); }
};

TEST_F(Rewrite, PrintsInCanonicalForm) {
    Recorder r;
    struct Case { const char* in; const char* out; };
    const Case cases[] = {
        {"V(out) - V(a,b) + I(R1)", "V<out> - V<a|b> + I<R1>"},
        {"  2*(a +1e3)  ", "2 * ($a + 1e3)"},
        {"f(x, g(y))[k] ^ -z", "f<$x|g<$y>>[$k] ^ -$z"},
        {"[a, 'b c',(re,im)]", "[$a, 'b c', ($re, $im)]"},
        {"y = a;b", "y = $a; $b"},
        {"a-(b-c) - (d-e)", "$a - ($b - $c) - ($d - $e)"},
        {"(a^b)^c ^ d", "($a ^ $b) ^ $c ^ $d"},
        {"-(a+b) * !(c) + (-d)[1]", "-($a + $b) * !$c + (-$d)[1]"},
        {"a || b && (c || d)", "$a || $b && ($c || $d)"},
        {"- 2.5k ^ 2 == \"x\" & 'y'", "-2.5k ^ 2 == \"x\" & 'y'"},
    };
    for (const Case& c : cases) EXPECT_EQ(run(c.in, r), c.out) << c.in;
    // Left to right, arguments before their call.
    r.visits.clear();
    run("f(a, g(b)) + V(c)", r);
    EXPECT_EQ(r.visits, (std::vector<std::string>{"name a", "name b", "call g($b)", "call f($a|g<$b>)", "call V(c)"}));
}

TEST_F(Rewrite, QueriesSteerTheRewrite) {
    Recorder keep;
    keep.names = false;
    keep.whole = false;
    EXPECT_EQ(run("max(a,V(n1,n2)) + b", keep), "F_max(a, F_V(n1, n2)) + b");
    Recorder nodes;
    nodes.probeNames = true;
    EXPECT_EQ(run("V(n1) + I(Q1, 2)", nodes), "V<$n1> + I<$Q1|$2>");
}

TEST_F(Rewrite, MalformedTextIsReturnedAsWrittenAndReported) {
    Recorder r;
    EXPECT_EQ(run("f(a", r), "f(a");
    EXPECT_EQ(wx.sink->messages().back(), "syntax error: expected ',' or ')'\n  f(a\n     ^");
}

struct Keywords : TemplateObject {
    std::string lookup(std::string_view key, bool* found) override {
        *found = key == "NAME" || key == "R1.VALUE" || key == "EMPTY";
        return key == "NAME" ? "R1" : key == "R1.VALUE" ? "1k" : "";
    }
};

TEST(Template, KeywordsExpressionsAndLiterals) {
    test::Session wx;
    InterpreterScope scope(&wx.wx);
    wx.wx.setVector("gain", makeRealVector({2.5}));
    wx.wx.setVector("names", makeStringVector({"a", "b"}));
    wx.wx.setVector("z", makeComplexVector({{1, -2}}));
    Keywords k;
    struct Case { const char* text; const char* context; const char* out; bool failed; };
    const Case cases[] = {
        {"%NAME% = %VALUE%", "R1", "R1 = 1k", false},
        {"%NAME% = %VALUE%", "", "R1 = %VALUE%", true},
        {"100%% of {gain}", "", "100% of 2.5", false},
        {"{names} {[1, 2]} {z}", "", "a, b 1, 2 (1,-2)", false},
        {"{'}'} and {nosuch(1)}", "", "} and {nosuch(1)}", true},
        {"50% off, %EMPTY%.", "", "50% off, .", false},
        {"open {gain", "", "open {gain", true},
        {"", "", "", false},
    };
    for (const Case& c : cases) {
        bool failed = false;
        EXPECT_EQ(k.resolveTemplate(c.text, c.context, &failed), c.out) << c.text;
        EXPECT_EQ(failed, c.failed) << c.text;
    }
    EXPECT_TRUE(wx.sink->messages().empty());  // a failed expression is the template's failure only
    TemplateObject plain;
    bool failed = false;
    EXPECT_EQ(plain.resolveTemplate("%NAME%", "", &failed), "%NAME%");
    EXPECT_TRUE(failed);
}

}  // namespace
}  // namespace wavex
