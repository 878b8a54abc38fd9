// The string toolkit as scripts use it: values, edge behaviour and the deliberate oddities.
#include "support/numbers.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace wavex {
namespace {

using test::show;

class Strings : public testing::Test {
protected:
    Strings() {
        wx.set("tab", makeStringVector({"a\tb c"}));
        wx.set("latin", makeStringVector({"\xe9t\xe9"}));
        wx.set("z", makeComplexVector({{1.5, -2}, {0, 1}}));
    }
    test::Session wx;
};

TEST_F(Strings, Conversion) {
    wx.check({
        {"Str(['a', 'b'])", "['a', 'b']"},
        {"Str([1.5, 0.1, 1e300, -2])", "['1.5', '0.1', '1e+300', '-2']"},
        {"Str(z)", "['1.5-2j', '0+1j']"},
        {"Val('2.2k')", "[2200]"},
        {"Val(['1e-3', ' 5 ', '10mV', 'abc', ''])", "[0.001, 5, 0.01, nan, nan]"},
        {"Val(z)", "[1.5,-2, 0,1]"},
        {"Val(Parse(''))", "[]"},
    });
}

TEST_F(Strings, ConversionKeepsReferencesAndSharesNumbers) {
    VectorPtr v = makeCurve({0, 1}, {3, 4}, units::Voltage, units::Time);
    wx.set("v", v);
    VectorPtr same = wx("Val(v)");
    EXPECT_EQ(same->real.data(), v->real.data());  // the numbers are not copied
    VectorPtr text = wx("Str(v)");
    EXPECT_EQ(show(text), "['3', '4']");
    EXPECT_EQ(test::xs(text), (std::vector<double>{0, 1}));
    EXPECT_EQ(text->ref.phys, units::Time);
}

TEST_F(Strings, Characters) {
    wx.check({
        {"Ascii('A')", "[65]"},
        {"Ascii('')", "[0]"},
        {"Ascii(latin)", "[-23]"},  // signed, on purpose
        {"Chr(65.9)", "['A']"},
        {"Chr(0)", "['']"},
        {"Chr(300)", "['\xff']"},
        {"Chr(NaN)", "['']"},
        {"Char('abc', -1)", "['c']"},
        {"Char('abc', 0)", "['a']"},
        {"Char('abc', 1.9)", "['b']"},
        {"Char('abc', 3)", "['']"},
        {"Char('abc', -4)", "['']"},
        {"Mid('abcdef', 2)", "['cdef']"},
        {"Mid('abcdef', -3, 5)", "['ab']"},
        {"Mid('abcdef', 1, 2.5)", "['bc']"},  // end = trunc(1 + 2.5)
        {"Mid('abcdef', 2, -1)", "['']"},
        {"Mid('abcdef', 1e30, 2)", "['']"},
        {"Mid('abcdef', 4, 1e30)", "['ef']"},
        {"StringLength('')", "[0]"},
        {"StringLength(latin)", "[3]"},
        {"ToLower('AbC1\xc3\x89')", "['abc1\xc3\x89']"},  // ASCII letters only
        {"ToUpper(['x', 'y'])", "['X']"},
    });
}

TEST_F(Strings, SearchCountAndSubstitution) {
    wx.check({
        {"StrStr('Hello', 'LL')", "[2]"},
        {"StrStr('abcabc', 'c', 3)", "[2]"},  // counted from the start position, on purpose
        {"StrStr('abcabc', 'c', 99)", "[-1]"},
        {"StrStr('abcabc', 'A', -5)", "[0]"},
        {"StrStr('abc', '', 1)", "[0]"},
        {"CountChars('banana', 'anx')", "[3, 2, 0]"},
        {"CountChars('aA', 'aa')", "[1, 1]"},
        {"CountChars('abc', '')", "[]"},
        {"StringStartsWith('Hello', 'he')", "['0']"},
        {"StringStartsWith('', '')", "['1']"},
        {"SubstChar('a-b_c', '-_', '.')", "['a.b.c']"},
        {"SubstChar('a-b_c', '_-', '')", "['a']"},  // a NUL byte ends the string
        {"SubstChar('abc', '', 'x')", "['abc']"},
        {"SubstString('aaa', 'a', 'b')", "['baa']"},
        {"SubstString('aaa', 'a', 'b', 'ALL')", "['bbb']"},
        {"SubstString('aaa', 'a', 'b', ' +2x')", "['bba']"},
        {"SubstString('aaa', 'a', 'b', '0')", "['aaa']"},
        {"SubstString('aaa', 'a', 'b', 'many')", "['aaa']"},
        {"SubstString('aaa', 'a', 'b', '')", "['baa']"},
        {"SubstString('aaa', 'A', 'b', 'all')", "['aaa']"},
        {"SubstString('aaa', '', 'b', 'all')", "['aaa']"},
        {"SubstString('abab', 'ab', 'abab', 'all')", "['abababab']"},  // inserted text is not searched again
        {"SubstString('aaaa', 'aa', 'a', 'all')", "['aa']"},
    });
}

TEST_F(Strings, SplittingJoiningAndMaking) {
    wx.check({
        {"Scan('a', ';', 3)", "['a', '', '']"},
        {"Scan('a;;b;')", "['a', '', 'b', '']"},
        {"Scan('<a,b>,c,x<y,z>', ',<>')", "['a,b', 'c', 'x<y,z>']"},
        {"Scan('\"a,b\",c', ',\"\"')", "['\"a', 'b\"', 'c']"},  // equal marks: no quoting
        {"Scan('a;b', ';<')", "['a', 'b']"},
        {"Scan('a;b', '')", "['a;b']"},
        {"Scan('a;b', ';', -4)", "['a', 'b']"},
        {"Parse('a  b,,c')", "['a', 'b', 'c']"},
        {"Parse(tab, ' ')", "['a', 'b', 'c']"},  // a space brings a tab with it
        {"Parse(tab, ',')", "['a\tb c']"},
        {"Parse('x \"a b\" y', ' ')", "['x', '\"a', 'b\"', 'y']"},
        {"Parse('x \"a b\",y', ' ,', 'quoted')", "['x', '\"a b\"', 'y']"},
        {"Parse(\"'' z\", ' ', 'QUOTED')", "['''', 'z']"},
        {"MakeString(0)", "[]"},
        {"MakeString(2.9)", "['', '']"},
        {"MakeString(3, ['x'])", "['x', '', '']"},
        {"MakeString(2, ['p', 'q', 'r'])", "['p', 'q']"},
        {"MakeString(2, _NullString(1))", "[<null>, '']"},
        {"_NullString(2)", "[<null>, <null>]"},
        {"_NullString(0)", "[]"},
        {"JoinStringArray(['a', 'b'], ['c'])", "['a', 'b', 'c']"},
        {"JoinStringArray(_NullString(1), Parse(''))", "[<null>]"},
        {"JoinVectors([1, 2], [3])", "[1, 2, 3]"},
        {"JoinVectors(z, z)", "[1.5,-2, 0,1, 1.5,-2, 0,1]"},
        {"JoinVectors([1], ['a'])", "[]"},  // different kinds, both non-empty: nothing, silently
        {"JoinVectors(Parse(''), [4])", "[4]"},
        {"JoinVectors(['a'], [])", "['a']"},
        {"MkVec('out1')", "['out1']"},
        {"MkVec('1out')", "['Vec('1out')']"},
        {"MkVec('a\"b')", "['Vec('a\"b')']"},
        {"MkVec('_x.y$z')", "['_x.y$z']"},
        {"MkVec('')", "['']"},
    });
}

TEST_F(Strings, JoinsSeeWholeVectorsAndDropUnits) {
    wx.set("runs", test::runs({makeCurve({0, 1}, {1, 2}, units::Voltage, units::Time),
                               makeCurve({0, 1}, {3, 4}, units::Voltage, units::Time)}, {}));
    VectorPtr r = wx("JoinVectors(runs, [5])");
    EXPECT_EQ(show(r), "[1, 2, 3, 4, 5]");
    EXPECT_EQ(r->phys, units::Number);
    EXPECT_FALSE(r->ref.present());
    EXPECT_EQ(r->numDivisions(), 1u);
}

// The schemes themselves are checked in tests/support; here the option words and the results' shape.
TEST_F(Strings, EscapingMatchingHashing) {
    wx.check({
        {"EscapeString('a b', 'REPLACESPACES')", R"(['a\x20b'])"},
        {"EscapeString('a b', 'other')", "['a b']"},
        {"EscapeStringEncode('a b&c')", "['a%20b%26c']"},
        {"EscapeStringEncode('a b&c', 'replaceSpaces')", "['a+b%26c']"},
        {"RegExp(['R1=10k'], '(\\w+)=(\\w+)')", "['CompleteMatch', 'R1=10k', 'R1', '10k']"},
        {"RegExp(['a', 'b', 'ca'], 'a')", "['IncompleteMatch', 'a', 'a']"},
        {"RegExp(Parse(''), '(')", "[]"},  // no subjects: nothing, whatever the pattern
        {"Hash('ABC')", "['440920331']"},  // the hash of 'abc': case is ignored
        {"GetMD5String('abc')", "['900150983cd24fb0d6963f7d28e17f72']"},
        {"GetMD5('/nonexistent/file')", "[]"},
        {"GetMD5('/')", "[]"},  // a directory cannot be read
    });
}

TEST_F(Strings, DigestOfAFileAndNewIdentifiers) {
    std::string path = testing::TempDir() + "strings_test_md5.txt";
    std::FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fputs("message digest", f);
    std::fclose(f);
    EXPECT_EQ(show(wx("GetMD5('" + path + "')")), "['f96b697d7cb7938d525a2f31aaf161d0']");
    std::remove(path.c_str());

    std::string a = show(wx("GetGUID()")), b = show(wx("CvUUID()"));
    EXPECT_EQ(a.size(), 2 + 36 + 2u);  // the form is checked in tests/support/digest_test.cpp
    EXPECT_EQ(b.size(), 2 + 36 + 2u);
    EXPECT_NE(a, b);
}

TEST_F(Strings, RefusesWhatCannotBeDone) {
    const std::pair<const char*, const char*> cases[] = {
        {"MakeString(1e12)", "Function 'MakeString' cannot make 1000000000000 elements: the limit is 50000000"},
        {"_NullString(Inf)", "Function '_NullString' cannot make 9223372036854775807 elements: the limit is 50000000"},
        {"Scan('a', ';', 50000001)", "Function 'Scan' cannot make 50000001 elements: the limit is 50000000"},
        {"RegExp(['x'], 'a(')", "Regular expression 'a(' in function 'RegExp': missing closing parenthesis at offset 2"},
    };
    for (const auto& [expression, message] : cases) wx.expectFails(expression, message);
}

}  // namespace
}  // namespace wavex
