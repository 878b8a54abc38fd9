// Parameter strings: reading, writing and deleting with unlabelled values, quoting and delimiter
// options, in both readings (every token searched, or entries by name), and building new ones.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <string>

namespace wavex {
namespace {

using test::show;

class ParameterStrings : public testing::Test {
protected:
    ParameterStrings() {
        wx.set("p", makeStringVector({"a b c=1 d=2"}));
        wx.set("q", makeStringVector({"w=1u l=\"0.5 u\" m='2'"}));
    }
    test::Session wx;
};

TEST_F(ParameterStrings, ReadSearchesEveryToken) {
    wx.check({
        {"ParseParameterString(p, ['c', '$unlabelled$2', '$unlabelled$3', 'x', '1', '$UNLABELLED$1'], ['read', '2'])",
         "['1', 'b', '', '', 'd', 'a']"},
        {"ParseParameterString(p, ['C', '$unlabelled$1'], ['READ'])", "['1', '']"},  // U is 0 by default
        {"ParseParameterString(p, ['$unlabelled$02', '$unlabelled$0', '$unlabelled$'], ['read', '2'])", "['b', '', '']"},
        {"ParseParameterString('a b', ['$unlabelled$2'], ['read', '99'])", "['b']"},  // U clamped to the tokens
        {"ParseParameterString('a b', ['$unlabelled$1'], ['read', '-3'])", "['']"},
        {"ParseParameterString('a b', ['$unlabelled$1'], ['read', ' 1x'])", "['a']"},  // atoi
        {"ParseParameterString('c=1 c=2', ['c'], ['read'])", "['2']"},                // the nearest the end wins
        {"ParseParameterString('a=1 b a', ['a'], ['read'])", "['']"},                 // ... even without a value
        {"ParseParameterString(p, Parse(''), ['read'])", "[]"},
        {"ParseParameterString(_NullString(1), ['a', ''], ['read'])", "['', '']"},
        {"ParseParameterString('\xe9=\xff', ['\xc9'], ['read'])", "['']"},  // case is ASCII only
        {"ParseParameterString('\xe9=\xff', ['\xe9'], ['read'])", "['\xff']"},
    });
}

TEST_F(ParameterStrings, QuotesAndDelimiters) {
    wx.check({
        {"ParseParameterString(q, ['l', 'm', 'w'], ['read'], [], ['allowquoted'])", "['0.5 u', '2', '1u']"},
        {"ParseParameterString(q, ['l', 'u\"'], ['read'])", "['\"0.5', 'm']"},  // quoting is off by default
        {"ParseParameterString(q, ['l'], ['read'], [], ['ALLOWQUOTED', ' =', '\"'])", "['0.5 u']"},
        {"ParseParameterString('x=<1 2> y=3', ['x'], ['read'], [], ['allowquoted', ' =', '<', '>'])", "['1 2']"},
        {"ParseParameterString('a:1;b:2', ['b'], ['read'], [], ['', ':;'])", "['2']"},
        {"ParseParameterString('a=1,b=2', ['b'], ['read'], [], ['', ' '])", "['']"},  // one token 'a=1,b=2'
        {"ParseParameterString('x=\"1', ['x'], ['read'], [], ['allowquoted'])", "['\"1']"},  // never closed
        // Rebuilding keeps the quote marks, so untouched values are written back as they were.
        {"ParseParameterString(q, ['w'], ['write'], ['2'], ['allowquoted'])", "['w=2 l=\"0.5 u\" m='2'']"},
        {"ParseParameterString(q, ['m'], ['delete'], [], ['allowquoted'])", "['w=1u l=\"0.5 u\"']"},
    });
}

TEST_F(ParameterStrings, WriteReplacesInPlaceAndAppendsTheRest) {
    wx.check({
        {"ParseParameterString(p, ['c', 'e'], ['write', '2'], ['5', '7'])", "['a b c=5 d=2 e=7']"},
        {"ParseParameterString(p, ['C'], ['Write', '2'], ['9'])", "['a b C=9 d=2']"},  // the caller's spelling
        {"ParseParameterString(p, ['c', 'd', ' ', 'e'], ['write', '2'], [' ', '\t', '1', ''])", "['a b c=1 d=2']"},
        {"ParseParameterString(p, ['$unlabelled$1', 'c'], ['write', '2'], ['z'])", "['z b c=1 d=2']"},
        {"ParseParameterString(p, ['$unlabelled$3'], ['write', '2'], ['z'])", "['a b c=1 d=2 $unlabelled$3=z']"},
        {"ParseParameterString(p, ['c', 'c'], ['write', '2'], ['5', '6'])", "['a b c=6 d=2']"},  // the last given wins
        {"ParseParameterString('p=1 q', ['p'], ['write'], ['2'])", "['p=2']"},  // a last name without value goes
        {"ParseParameterString('c=1 c=2', ['c'], ['write'], ['5'])", "['c=5 c=2']"},
        {"ParseParameterString('', ['x', 'y', 'z', 'w', 'l', 'm', 'n'], ['write'], ['1', '2', '3', '4', '5', '6', '7'])",
         "['y=2 x=1 z=3 m=6 l=5 n=7 w=4']"},  // appended in the order of the table's buckets
        {"ParseParameterString(p, ['c'], ['write'])", "[]"},
        {"ParseParameterString(p, ['c'], ['write'], Parse(''))", "[]"},
        {"ParseParameterString('a,b;c=1', ['c'], ['write', '1'], ['2'])", "['a b;c=1 c=2']"},  // ';' is no delimiter
    });
}

TEST_F(ParameterStrings, DeleteAndUnknownModes) {
    wx.check({
        {"ParseParameterString(p, ['d'], ['delete', '2'])", "['a b c=1']"},
        {"ParseParameterString(p, ['$unlabelled$1'], ['delete', '2'])", "['b c=1 d=2']"},
        {"ParseParameterString(p, ['D', 'c', 'x'], ['DELETE'])", "['a=b']"},  // U = 0: pairs a=b, c=1, d=2
        {"ParseParameterString('p=1 q', Parse(''), ['delete'])", "['p=1']"},
        {"ParseParameterString('', ['a'], ['delete'])", "['']"},
        {"ParseParameterString(p, ['c'], ['remove'])", "[]"},
    });
}

TEST_F(ParameterStrings, SecondReadingLooksUpEntriesByName) {
    wx.check({
        {"ParseParameterString2(p, ['c', '1', '$unlabelled$2', '$Unlabelled$02', 'x'], ['read', '2'])",
         "['1', '', 'b', 'b', '']"},
        {"ParseParameterString2('p=1 q', ['q', 'p'], ['read'])", "['', '1']"},
        {"ParseParameterString2('c=1 c=2', ['c'], ['read'])", "['2']"},
        {"ParseParameterString2(q, ['l'], ['read'], [], ['allowquoted'])", "['0.5 u']"},
        // A last name without a value is kept, and stays last so the string reads back the same.
        {"ParseParameterString2('p=1 q', Parse(''), ['delete'])", "['p=1 q']"},
        {"ParseParameterString2('p=1 q', ['r'], ['write'], ['2'])", "['p=1 r=2 q']"},
        {"ParseParameterString2('p=1 q', ['q'], ['write'], ['3'])", "['p=1 q=3']"},
        {"ParseParameterString2('p=1 q', ['Q'], ['delete'])", "['p=1']"},
        // A written value reaches every entry of its name.
        {"ParseParameterString2('c=1 c=2', ['c'], ['write'], ['5'])", "['c=5 c=5']"},
        {"ParseParameterString2(p, ['$unlabelled$01', 'c'], ['write', '2'], ['z', '3'])", "['z b c=3 d=2']"},
        {"ParseParameterString2(p, ['$UNLABELLED$2'], ['delete', '2'])", "['a c=1 d=2']"},
        {"ParseParameterString2(p, ['c'], ['peek'])", "[]"},
    });
}

TEST_F(ParameterStrings, BuildParameterString) {
    wx.set("tabbed", makeStringVector({"a\tb"}));
    wx.check({
        {"BuildParameterString(['w', 'l'], ['1u', ''])", "['w=1u']"},
        {"BuildParameterString(['a'], ['a b'])", "['a=\"a b\"']"},
        {"BuildParameterString(['t'], tabbed)", "['t=\"a\tb\"']"},
        {"BuildParameterString(['a', 'b', 'c'], ['x', 'y z'])", "['a=x b=\"y z\"']"},  // the shorter list decides
        {"BuildParameterString(['a', 'b'], ['x', 'y z'], 'x')", "['a=\"x\" b=y z']"},
        {"BuildParameterString(['a'], ['y z'], '')", "['a=y z']"},
        {"BuildParameterString(['a'], _NullString(1))", "['']"},
        {"BuildParameterString(Parse(''), ['x'])", "[]"},
    });
}

}  // namespace
}  // namespace wavex
