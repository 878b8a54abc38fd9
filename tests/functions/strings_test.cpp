// The string toolkit as scripts use it: values, edge behaviour and the deliberate oddities.
#include "support/numbers.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace wavex {
namespace {

using test::show;

using test::Session;

class Strings : public testing::Test {
protected:
    Strings() {
        wx.wx.setVector("tab", makeStringVector({"a\tb c"}));
        wx.wx.setVector("latin", makeStringVector({"\xe9t\xe9"}));
        wx.wx.setVector("z", makeComplexVector({{1.5, -2}, {0, 1}}));
    }
    void check(std::initializer_list<test::Shown> cases) { wx.check(cases); }
    Session wx;
};

TEST_F(Strings, Conversion) {
    check({
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
    wx.wx.setVector("v", v);
    VectorPtr same = wx("Val(v)");
    EXPECT_EQ(same->real.data(), v->real.data());  // the numbers are not copied
    VectorPtr text = wx("Str(v)");
    EXPECT_EQ(show(text), "['3', '4']");
    EXPECT_EQ(test::xs(text), (std::vector<double>{0, 1}));
    EXPECT_EQ(text->ref.phys, units::Time);
}

TEST_F(Strings, Characters) {
    check({
        {"Ascii('A')", "[65]"},
        {"Ascii('')", "[0]"},
        {"Ascii(latin)", "[-23]"},  // signed, on purpose
        {"Chr(65.9)", "['A']"},
        {"Chr(0)", "['']"},
        {"Chr(-0.5)", "['']"},
        {"Chr(300)", "['\xff']"},
        {"Chr(NaN)", "['']"},
        {"Char('abc', -1)", "['c']"},
        {"Char('abc', 0)", "['a']"},
        {"Char('abc', 1.9)", "['b']"},
        {"Char('abc', 3)", "['']"},
        {"Char('abc', -4)", "['']"},
        {"Char('', 0)", "['']"},
        {"Mid('abcdef', 2)", "['cdef']"},
        {"Mid('abcdef', -3, 5)", "['ab']"},
        {"Mid('abc', 5)", "['']"},
        {"Mid('abcdef', 1, 2.5)", "['bc']"},  // end = trunc(1 + 2.5)
        {"Mid('abcdef', 2, -1)", "['']"},
        {"Mid('abcdef', 1e30, 2)", "['']"},
        {"Mid('abcdef', 4, 1e30)", "['ef']"},
        {"StringLength('')", "[0]"},
        {"StringLength(latin)", "[3]"},
        {"ToLower('AbC1\xc3\x89')", "['abc1\xc3\x89']"},  // ASCII letters only
        {"ToUpper('aBc-z')", "['ABC-Z']"},
        {"ToUpper(['x', 'y'])", "['X']"},
    });
}

TEST_F(Strings, SearchCountAndSubstitution) {
    check({
        {"StrStr('Hello', 'LL')", "[2]"},
        {"StrStr('abcabc', 'c', 3)", "[2]"},  // counted from the start position, on purpose
        {"StrStr('abcabc', 'c', 99)", "[-1]"},
        {"StrStr('abcabc', 'A', -5)", "[0]"},
        {"StrStr('abc', '', 1)", "[0]"},
        {"StrStr('abc', 'x')", "[-1]"},
        {"CountChars('banana', 'anx')", "[3, 2, 0]"},
        {"CountChars('aA', 'aa')", "[1, 1]"},
        {"CountChars('abc', '')", "[]"},
        {"StringStartsWith('Hello', 'He')", "['1']"},
        {"StringStartsWith('Hello', 'he')", "['0']"},
        {"StringStartsWith('', '')", "['1']"},
        {"SubstChar('a-b_c', '-_', '.')", "['a.b.c']"},
        {"SubstChar('a-b_c', '_-', '')", "['a']"},  // a NUL byte ends the string
        {"SubstChar('abc', '', 'x')", "['abc']"},
        {"SubstString('aaa', 'a', 'b')", "['baa']"},
        {"SubstString('aaa', 'a', 'b', 'ALL')", "['bbb']"},
        {"SubstString('aaa', 'a', 'b', '2')", "['bba']"},
        {"SubstString('aaa', 'a', 'b', ' +2x')", "['bba']"},
        {"SubstString('aaa', 'a', 'b', '0')", "['aaa']"},
        {"SubstString('aaa', 'a', 'b', '-1')", "['aaa']"},
        {"SubstString('aaa', 'a', 'b', 'many')", "['aaa']"},
        {"SubstString('aaa', 'a', 'b', '')", "['baa']"},
        {"SubstString('aaa', 'A', 'b', 'all')", "['aaa']"},
        {"SubstString('aaa', '', 'b', 'all')", "['aaa']"},
        {"SubstString('abab', 'ab', 'abab', 'all')", "['abababab']"},  // inserted text is not searched again
        {"SubstString('aaaa', 'aa', 'a', 'all')", "['aa']"},
    });
}

TEST_F(Strings, SplittingJoiningAndMaking) {
    check({
        {"Scan('a', ';', 3)", "['a', '', '']"},
        {"Scan('a;;b;')", "['a', '', 'b', '']"},
        {"Scan('')", "['']"},
        {"Scan('a,b;c', ',')", "['a', 'b;c']"},
        {"Scan('<a,b>,c,x<y,z>', ',<>')", "['a,b', 'c', 'x<y,z>']"},
        {"Scan('\"a,b\",c', ',\"\"')", "['\"a', 'b\"', 'c']"},  // equal marks: no quoting
        {"Scan('a;b', ';<')", "['a', 'b']"},
        {"Scan('a;b', '')", "['a;b']"},
        {"Scan('a;b', ';', -4)", "['a', 'b']"},
        {"Parse('a  b,,c')", "['a', 'b', 'c']"},
        {"Parse('a b', ',')", "['a b']"},
        {"Parse(tab, ' ')", "['a', 'b', 'c']"},  // a space brings a tab with it
        {"Parse(tab, ',')", "['a\tb c']"},
        {"Parse(',, ,')", "[]"},
        {"Parse('a b', '')", "['a b']"},
        {"Parse('x \"a b\" y', ' ')", "['x', '\"a', 'b\"', 'y']"},
        {"Parse('x \"a b\",y', ' ,', 'quoted')", "['x', '\"a b\"', 'y']"},
        {"Parse(\"'' z\", ' ', 'QUOTED')", "['''', 'z']"},
        {"MakeString(0)", "[]"},
        {"MakeString(-1)", "[]"},
        {"MakeString(2.9)", "['', '']"},
        {"MakeString(3, ['x'])", "['x', '', '']"},
        {"MakeString(2, ['p', 'q', 'r'])", "['p', 'q']"},
        {"MakeString(2, _NullString(1))", "[<null>, '']"},
        {"_NullString(2)", "[<null>, <null>]"},
        {"_NullString(0)", "[]"},
        {"JoinStringArray(['a', 'b'], ['c'])", "['a', 'b', 'c']"},
        {"JoinStringArray(_NullString(1), Parse(''))", "[<null>]"},
        {"JoinVectors([1, 2], [3])", "[1, 2, 3]"},
        {"JoinVectors(['a'], ['b'])", "['a', 'b']"},
        {"JoinVectors(z, z)", "[1.5,-2, 0,1, 1.5,-2, 0,1]"},
        {"JoinVectors([1], ['a'])", "[]"},  // different kinds, both non-empty: nothing, silently
        {"JoinVectors(Parse(''), [4])", "[4]"},
        {"JoinVectors(['a'], [])", "['a']"},
        {"MkVec('out1')", "['out1']"},
        {"MkVec('1out')", "['Vec('1out')']"},
        {"MkVec('a b')", "['Vec('a b')']"},
        {"MkVec('v(n1)')", "['Vec('v(n1)')']"},
        {"MkVec('a\"b')", "['Vec('a\"b')']"},
        {"MkVec('_x.y$z')", "['_x.y$z']"},
        {"MkVec('')", "['']"},
    });
}

TEST_F(Strings, JoinsSeeWholeVectorsAndDropUnits) {
    auto runs = std::make_shared<Vector>(*makeCurve({0, 1, 0, 1}, {1, 2, 3, 4}, units::Voltage, units::Time));
    runs->setDivisionLengths({2, 2});
    wx.wx.setVector("runs", runs);
    VectorPtr r = wx("JoinVectors(runs, [5])");
    EXPECT_EQ(show(r), "[1, 2, 3, 4, 5]");
    EXPECT_EQ(r->phys, units::Number);
    EXPECT_FALSE(r->ref.present());
    EXPECT_EQ(r->numDivisions(), 1u);
}

TEST_F(Strings, EscapingMatchingHashing) {
    check({
        {"EscapeString('a b\"c')", R"(['a b\"c'])"},
        {"EscapeString('a b', 'REPLACESPACES')", R"(['a\x20b'])"},
        {"EscapeString('a b', 'other')", "['a b']"},
        {"EscapeString(tab)", R"(['a\tb c'])"},
        {"EscapeString(latin)", R"(['\xe9t\xe9'])"},
        {"EscapeStringEncode('a b&c')", "['a%20b%26c']"},
        {"EscapeStringEncode('a b&c', 'replaceSpaces')", "['a+b%26c']"},
        {"RegExp(['R1=10k'], '(\\w+)=(\\w+)')", "['CompleteMatch', 'R1=10k', 'R1', '10k']"},
        {"RegExp(['a', 'b', 'ca'], 'a')", "['IncompleteMatch', 'a', 'a']"},
        {"RegExp(Parse(''), '(')", "[]"},  // no subjects: nothing, whatever the pattern
        {"Hash('abc')", "['440920331']"},
        {"Hash('ABC')", "['440920331']"},
        {"Hash('')", "['2166136261']"},
        {"GetMD5String('abc')", "['900150983cd24fb0d6963f7d28e17f72']"},
        {"GetMD5String('')", "['d41d8cd98f00b204e9800998ecf8427e']"},
        {"GetMD5('/nonexistent/file')", "[]"},
        {"GetMD5('')", "[]"},
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
    EXPECT_EQ(a.size(), 2 + 36 + 2u);
    EXPECT_NE(a, b);
    EXPECT_EQ(show(wx("RegExp(CvUUID(), '^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$')"))
                  .substr(0, 16), "['CompleteMatch'");
}

TEST_F(Strings, RefusesWhatCannotBeDone) {
    const std::pair<const char*, const char*> cases[] = {
        {"MakeString(1e12)", "Function 'MakeString' cannot make 1000000000000 elements: the limit is 50000000"},
        {"_NullString(Inf)", "Function '_NullString' cannot make 9223372036854775807 elements: the limit is 50000000"},
        {"Scan('a', ';', 50000001)", "Function 'Scan' cannot make 50000001 elements: the limit is 50000000"},
        {"RegExp(['x'], 'a(')", "Regular expression 'a(' in function 'RegExp': missing closing parenthesis at offset 2"},
        {"RegExp(['x', 'aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa'], '(a+)+[^a]')",
         "Regular expression '(a+)+[^a]' in function 'RegExp': match limit exceeded in subject 2"},
    };
    for (const auto& [expression, message] : cases) {
        EXPECT_EQ(wx(expression), nullptr) << expression;
        EXPECT_EQ(wx.messages(), message);
    }
}

}  // namespace
}  // namespace wavex
