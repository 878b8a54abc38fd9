// The Touchstone reader on the real files of tests/data/touchstone (see SOURCES.md there) and on
// malformed text.
#include "support/touchstone.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

namespace wavex {
namespace {

using Cplx = std::complex<double>;

std::string fixture(const std::string& name) { return std::string(WAVEX_SOURCE_DIR) + "/tests/data/touchstone/" + name; }

Cplx polar(double magnitude, double degrees) { return std::polar(magnitude, degrees * std::numbers::pi / 180); }

void expectClose(Cplx got, Cplx want, const std::string& where) {
    double tolerance = 1e-12 * std::max(1.0, std::abs(want));
    EXPECT_NEAR(got.real(), want.real(), tolerance) << where;
    EXPECT_NEAR(got.imag(), want.imag(), tolerance) << where;
}

struct Built {
    AcTableData table;
    std::vector<std::string> errors;
    bool ok;
};

Built readFixture(const std::string& name, int ports) {
    Built b{AcTableData(fixture(name), ports), {}, false};
    b.ok = b.table.build(&b.errors);
    return b;
}

Built readText(std::string_view text, int ports) {
    Built b{AcTableData("", ports), {}, false};
    b.ok = b.table.buildFromText(text, &b.errors);
    return b;
}

std::string joined(const std::vector<std::string>& messages) {
    std::string all;
    for (const std::string& m : messages) all += (all.empty() ? "" : "\n") + m;
    return all;
}

TEST(TouchstoneFiles, PointCountsAndFrequencyRanges) {
    struct Case { const char* file; int ports; size_t points; double first, last; size_t noise; };
    const Case cases[] = {
        {"Agilent_E5071B.s4p", 4, 205, 0.5e9, 4.5e9, 0},
        {"Clarity_example.S2P", 2, 40, 50e6, 2e9, 0},
        {"hfss_oneport.s1p", 1, 401, 500e9, 750e9, 0},
        {"ads_1port_ma_mhz.s1p", 1, 30, 50e6, 1.5e9, 0},
        {"ads_asymmetric_3port_db.s3p", 3, 10, 1e9, 10e9, 0},
        {"ads_asymmetric_4port_ri.s4p", 4, 10, 1e9, 10e9, 0},
        {"qucs_unilateral_2port_ri_with_noise.s2p", 2, 10, 1e9, 10e9, 10},
        {"ansys.ts", 3, 1, 0, 0, 0},
        {"ex_17.ts", 2, 2, 2e9, 22e9, 2},
        {"ex_6.ts", 4, 2, 5e9, 6e9, 0},
    };
    for (const Case& c : cases) {
        Built b = readFixture(c.file, c.ports);
        ASSERT_TRUE(b.ok) << c.file << ": " << joined(b.errors);
        EXPECT_TRUE(b.errors.empty()) << c.file;
        ASSERT_EQ(b.table.numPoints(), c.points) << c.file;
        EXPECT_EQ(b.table.frequencies().front(), c.first) << c.file;
        EXPECT_EQ(b.table.frequencies().back(), c.last) << c.file;
        EXPECT_EQ(b.table.noise().size(), c.noise) << c.file;
        EXPECT_EQ(b.table.get(0).values.size(), static_cast<size_t>(c.ports * c.ports)) << c.file;
    }
}

// Expected values from the files' own numbers: point, flat index n·row + column, frequency (Hz),
// value. The asymmetric files catch a transposed read; the 2-port files the 11, 21, 12, 22 order.
TEST(TouchstoneFiles, ValuesInRowMajorOrder) {
    struct Case { const char* file; int ports; size_t point, k; double f; Cplx value; };
    const Case cases[] = {
        {"Agilent_E5071B.s4p", 4, 0, 1, 500000000.0, {-0.0016523538965977544, -0.0016723969585188674}},
        {"Agilent_E5071B.s4p", 4, 0, 4, 500000000.0, {-0.0016742180885003222, -0.0016690598376536694}},
        {"Agilent_E5071B.s4p", 4, 204, 15, 4500000000.0, {-0.48907450713541817, 0.6967275427224875}},
        {"ads_asymmetric_3port_db.s3p", 3, 0, 1, 1000000000.0, {-0.17097255822978685, 0.028428270508429027}},
        {"ads_asymmetric_3port_db.s3p", 3, 0, 3, 1000000000.0, {-0.09995702857553805, -0.01204568927803341}},
        {"ads_asymmetric_3port_db.s3p", 3, 9, 8, 10000000000.0, {-0.5527275693668348, -0.4800914869288367}},
        {"ads_asymmetric_4port_ri.s4p", 4, 0, 3, 1000000000.0, {0.0073463711, 0.0483004276}},
        {"ads_asymmetric_4port_ri.s4p", 4, 0, 12, 1000000000.0, {0.00380342348, -0.0139156333}},
        {"ads_asymmetric_4port_ri.s4p", 4, 9, 15, 10000000000.0, {-0.999817567, 0.00720285454}},
        {"qucs_unilateral_2port_ri_with_noise.s2p", 2, 0, 1, 1000000000.0, {0.0, 0.0}},
        {"qucs_unilateral_2port_ri_with_noise.s2p", 2, 0, 2, 1000000000.0, {-4.666666666666666, 4.683102863833885e-16}},
        {"qucs_unilateral_2port_ri_with_noise.s2p", 2, 9, 3, 10000000000.0, {-0.3333333333333332, 0.0}},
        {"hfss_oneport.s1p", 1, 0, 0, 500000000000.0, {0.05084342521063144, -0.1914569737557439}},
        {"hfss_oneport.s1p", 1, 400, 0, 750000000000.0, {-0.003868316396395355, -0.17156979866236752}},
        {"ads_1port_ma_mhz.s1p", 1, 0, 0, 50000000.0, {0.9730777242531037, -0.14426239464192703}},
        {"ads_1port_ma_mhz.s1p", 1, 29, 0, 1500000000.0, {0.7925041036876471, 0.3675095965580069}},
        {"Clarity_example.S2P", 2, 20, 2, 1050000000.0, {-0.695214919234847, -0.676293995795591}},
        {"Clarity_example.S2P", 2, 39, 3, 2000000000.0, {0.0759700190015521, 0.0238584286542158}},
        // Version 2: 21_12 order, Lower matrix mirrored, one point at 0 Hz.
        {"ex_17.ts", 2, 0, 1, 2e9, polar(0.04, 76)},
        {"ex_17.ts", 2, 1, 2, 22e9, polar(1.30, 40)},
        {"ex_6.ts", 4, 0, 1, 5e9, polar(0.40, -42.2)},
        {"ex_6.ts", 4, 1, 7, 6e9, polar(0.42, -66.58)},
        {"ansys.ts", 3, 0, 4, 0, {-0.9945831782414963, 0}},  // 180° is exact
    };
    for (const Case& c : cases) {
        Built b = readFixture(c.file, c.ports);
        ASSERT_TRUE(b.ok) << c.file;
        AcTableFrequencyPoint p = b.table.get(c.point);
        std::string where = std::string(c.file) + " point " + std::to_string(c.point) + " k " + std::to_string(c.k);
        EXPECT_EQ(p.frequency, c.f) << where;
        expectClose(p.value(c.k), c.value, where);
    }
}

TEST(TouchstoneFiles, TriangularMatricesAreMirrored) {
    Built b = readFixture("ex_6.ts", 4);
    ASSERT_TRUE(b.ok);
    for (size_t i = 0; i < b.table.numPoints(); ++i)
        for (size_t r = 0; r < 4; ++r)
            for (size_t c = 0; c < 4; ++c) EXPECT_EQ(b.table.get(i).value(4 * r + c), b.table.get(i).value(4 * c + r));
    // Past the matrix: complex zero.
    EXPECT_EQ(b.table.get(0).value(16), Cplx());
}

TEST(TouchstoneFiles, OptionsReferencesAndNoise) {
    Built agilent = readFixture("Agilent_E5071B.s4p", 4);
    EXPECT_EQ(agilent.table.info().references, std::vector<double>(4, 75));
    EXPECT_EQ(agilent.table.info().format, TouchstoneInfo::Format::DB);
    EXPECT_EQ(readFixture("hfss_oneport.s1p", 1).table.info().references, std::vector<double>{50});
    Built ansys = readFixture("ansys.ts", 3);
    EXPECT_EQ(ansys.table.info().version, 2);
    EXPECT_EQ(ansys.table.info().references, (std::vector<double>{1, 50, 50}));  // [Reference] over R 1
    EXPECT_EQ(readFixture("ex_6.ts", 4).table.info().references, (std::vector<double>{50, 75, 0.01, 0.01}));

    // Version 1: Rn normalised to the reference (50 Ω); version 2: in ohms.
    Built qucs = readFixture("qucs_unilateral_2port_ri_with_noise.s2p", 2);
    const TouchstoneNoisePoint& n0 = qucs.table.noise()[0];
    EXPECT_EQ(n0.frequency, 1e9);
    EXPECT_EQ(n0.minNoiseFigure, 0.948610382704216381633);
    EXPECT_EQ(n0.gammaOpt, Cplx(-0.684967198379499819794, 0));
    EXPECT_DOUBLE_EQ(n0.noiseResistance, 0.0182617874736100103961 * 50);
    Built ex17 = readFixture("ex_17.ts", 2);
    EXPECT_EQ(ex17.table.info().references, (std::vector<double>{50, 25}));
    const TouchstoneNoisePoint& n1 = ex17.table.noise()[1];
    EXPECT_EQ(n1.frequency, 18e9);
    EXPECT_EQ(n1.minNoiseFigure, 2.7);
    expectClose(n1.gammaOpt, polar(0.46, -33), "ex_17 noise");
    EXPECT_EQ(n1.noiseResistance, 20);
}

TEST(TouchstoneText, LayoutVariants) {
    // Version 2 with 12_21 order, Upper matrix, an information block, BOM, CRLF and '+' signs.
    Built upper = readText("\xEF\xBB\xBF[Version] 2.0\r\n# MHz Z RI R 75\r\n[Number of Ports] 2\r\n"
                           "[Two-Port Data Order] 12_21\r\n[Number of Frequencies] 1\r\n[Matrix Format] Upper\r\n"
                           "[Mixed-Mode Order] D2,1 C2,1\r\n[Begin Information]\r\n[Foo] anything\r\n"
                           "[End Information]\r\n[Network Data]\r\n+1.5 1 2 +3 4\r\n5 6\r\n[End]\r\ngarbage after the end\r\n",
                           2);
    ASSERT_TRUE(upper.ok) << joined(upper.errors);
    EXPECT_EQ(upper.table.frequencies()[0], 1.5e6);
    EXPECT_EQ(upper.table.info().parameter, 'Z');
    EXPECT_EQ(upper.table.info().mixedModeOrder, "D2,1 C2,1");
    auto v = upper.table.get(0).values;
    EXPECT_EQ(std::vector<Cplx>(v.begin(), v.end()), (std::vector<Cplx>{{1, 2}, {3, 4}, {3, 4}, {5, 6}}));

    Built full = readText("[Version] 2.1\n#\n[Number of Ports] 2\n[Two-Port Data Order] 12_21\n"
                          "[Number of Frequencies] 1\n[Network Data]\n1 1 0 2 0 3 0 4 0\n", 2);
    ASSERT_TRUE(full.ok) << joined(full.errors);
    EXPECT_EQ(full.table.frequencies()[0], 1e9);  // GHz by default
    EXPECT_EQ(full.table.get(0).value(1), polar(2, 0));

    // Version 1 without an option line: GHz, S, MA. A second option line is ignored.
    Built bare = readText("1 2 90\n", 1);
    ASSERT_TRUE(bare.ok) << joined(bare.errors);
    EXPECT_EQ(bare.table.frequencies()[0], 1e9);
    EXPECT_EQ(bare.table.get(0).value(0), Cplx(0, 2));
    Built twice = readText("# Hz S MA\n1 2 90\n# GHz RI\n2 3 180\n", 1);
    ASSERT_TRUE(twice.ok) << joined(twice.errors);
    EXPECT_EQ(twice.table.frequencies()[1], 2);
    EXPECT_EQ(twice.table.get(1).value(0), Cplx(-3, 0));
    Built db = readText("# Hz S DB\n1 20 -90\n", 1);
    EXPECT_EQ(db.table.get(0).value(0), Cplx(0, -10));
}

// One message per problem, with its line number.
TEST(TouchstoneText, Problems) {
    struct Case { const char* text; int ports; const char* messages; };
    const Case cases[] = {
        {"", 1, "The file has no frequency points"},
        {"! only a comment\n# Hz S RI\n", 1, "The file has no frequency points"},
        {"# Hz S RI\n1 0.5 abc\n", 1, "Line 2: 'abc' is not a number"},
        {"# Hz S RI\n1 1 0 0 0 0 0 1\n2 1 0 0 0 0 0 1 0\n", 2, "Line 2: expected 9 values for a frequency point, found 8"},
        {"# Hz S RI\n1 1 0 0 0 0 0 1 0 7\n", 2, "Line 2: expected 9 values for a frequency point, found 10"},
        {"# Hz S RI\n1 1 0 0 0 0 0 1 0\n2 1 0 0 0 0 0 1 0\n", 4,
         "Line 2: expected 33 values for a frequency point, found 18"},
        {"# Hz S RI\n2 1 0\n1 1 0\n", 1, "Line 3: frequency 1 is below the previous one, 2"},
        {"# Hz S RI\n-1 1 0\n", 1, "Line 2: frequency -1 is not valid"},
        {"# Hz S XY RI\n1 1 0\n", 1, "Line 1: unknown option 'XY'"},
        {"# Hz S RI R\n1 1 0\n", 1, "Line 1: 'R' must be followed by a positive resistance"},
        {"# Hz H RI\n1 1 0\n", 1, "Line 1: H parameters are for 2-port files only"},
        {"1 1 0\n# Hz S RI\n", 1, "Line 2: the option line must come before the data"},
        {"# Hz S RI\n[Number of Ports] 1\n1 1 0\n", 1, "Line 2: keyword [Number of Ports] before [Version]"},
        {"# Hz S RI\n2 1 0 0 0 0 0 1 0\n1 1 2 3 4\n1.5 1 2\n", 2, "Line 4: expected 5 values for a noise point, found 3"},
        {"# Hz S RI\n2 1 0 0 0 0 0 1 0\n1 1 0 0 0 0 0 1 0\n", 2, "Line 3: frequency 1 is below the previous one, 2"},
        {"[Version] 3.0\n1 1 0\n", 1, "Line 1: unsupported version '3.0'"},
        {"# Hz\n[Version] 2.0\n[Number of Ports] 1\n[Number of Frequencies] 1\n[Network Data]\n1 1 0\n", 1,
         "Line 2: [Version] must come first"},
        {"[Version] 2.0\n# Hz S RI\n[Number of Ports] 4\n[Network Data]\n1 1 0\n", 2, "Line 3: the file has 4 ports, not 2"},
        {"[Version] 2.0\n# Hz S RI\n[Number of Ports] 1\n[Number of Frequencies] 1\n[Foo] 3\n[Network Data]\n1 1 0\n",
         1, "Line 5: unknown keyword '[Foo]'"},
        {"[Version] 2.0\n# Hz S RI\n[Number of Ports] 1\n[Number of Frequencies] 2\n[Network Data]\n1 1 0\n[End]\n", 1,
         "Line 4: [Number of Frequencies] is 2, but the file has 1"},
        {"[Version] 2.0\n# Hz S RI\n[Number of Ports] 2\n[Number of Frequencies] 1\n[Network Data]\n1 1 0 0 0 0 0 1 0\n",
         2, "Line 5: a 2-port file needs [Two-Port Data Order] before [Network Data]"},
        {"[Version] 2.0\n# Hz S RI\n[Number of Ports] 1\n1 1 0\n", 1,
         "Line 4: values outside [Network Data]\n[Network Data] is missing"},
        {"[Version] 2.0\n# Hz S RI\n[Number of Ports] 2\n[Two-Port Data Order] 12_21\n[Number of Frequencies] 1\n"
         "[Reference] 50\n[Network Data]\n1 1 0 0 0 0 0 1 0\n",
         2, "Line 6: [Reference] needs 2 values, found 1"},
        {"[Version] 2.0\n# Hz S RI\n[Number of Ports] 1\n[Number of Frequencies] 1\n[Matrix Format] Diagonal\n"
         "[Network Data]\n1 1 0\n",
         1, "Line 5: unknown matrix format 'Diagonal'"},
        {"[Version] 2.0\n# Hz S RI\n[Number of Ports] 1\n[Number of Frequencies] 1\n[Network Data]\n1 1 0\n"
         "[Noise Data]\n1 1 1 0 1\n",
         1, "Line 7: noise data are for 2-port files only\nLine 7: [Noise Data] before [Number of Noise Frequencies]"},
        {"# Hz S RI\n1 1 0\n", 0, "Number of ports must be from 1 to 10000, not 0"},
        {"# Hz S RI\n1 1 0\n", 10001, "Number of ports must be from 1 to 10000, not 10001"},
        {"# Hz S RI\n1 1 0\n2 1 0\n", 1000, "Line 2: expected 2000001 values for a frequency point, found 6"},
    };
    for (const Case& c : cases) {
        Built b = readText(c.text, c.ports);
        EXPECT_FALSE(b.ok) << c.text;
        EXPECT_EQ(joined(b.errors), c.messages) << c.text;
        EXPECT_EQ(b.table.numPoints(), 0u) << c.text;  // a failed build keeps nothing
    }
}

TEST(TouchstoneText, MessagesStopAfterAHundred) {
    std::string text = "# Hz S RI\n";
    for (int i = 0; i < 1000; ++i) text += "x 0 0\n";
    Built b = readText(text, 1);
    ASSERT_EQ(b.errors.size(), 101u);
    EXPECT_EQ(b.errors[99], "Line 101: 'x' is not a number");
    EXPECT_EQ(b.errors[100], "Too many problems; reading stopped at line 102");
}

TEST(TouchstoneFiles, FileProblems) {
    std::vector<std::string> errors;
    EXPECT_FALSE(AcTableData(fixture("Clarity_example.S2P"), 4).build(&errors));
    EXPECT_EQ(joined(errors), "File '" + fixture("Clarity_example.S2P") + "' is named for 2 ports, not 4");
    errors.clear();
    EXPECT_FALSE(AcTableData("/nonexistent/amp.s1p", 1).build(&errors));
    EXPECT_EQ(joined(errors), "Cannot open file '/nonexistent/amp.s1p'");
    // A version 2 file read with the wrong count stops at [Number of Ports].
    Built ansys = readFixture("ansys.ts", 2);
    EXPECT_EQ(joined(ansys.errors), "Line 14: the file has 3 ports, not 2");
}

TEST(TouchstoneInterpolation, MethodsAndDcExtraction) {
    const char* text = "# Hz S RI\n10 1 0\n20 0 1\n";
    auto at = [&](DcExtractionMethod dc, AcTableInterpMethod interp, double f) {
        AcTableData t("", 1, dc, interp);
        EXPECT_TRUE(t.buildFromText(text, nullptr));
        Cplx out;
        t.valuesAt(f, std::span(&out, 1));
        return out;
    };
    using Dc = DcExtractionMethod;
    using In = AcTableInterpMethod;
    EXPECT_EQ(at(Dc::Hold, In::Linear, 15), Cplx(0.5, 0.5));
    EXPECT_EQ(at(Dc::Hold, In::Step, 19), Cplx(1, 0));
    expectClose(at(Dc::Hold, In::Polar, 15), polar(1, 45), "polar");
    EXPECT_EQ(at(Dc::Hold, In::Linear, 0), Cplx(1, 0));
    EXPECT_EQ(at(Dc::Linear, In::Linear, 0), Cplx(2, -1));
    EXPECT_EQ(at(Dc::Hold, In::Linear, 25), Cplx(0, 1));  // above the table: the last point
}

}  // namespace
}  // namespace wavex
