// Statistical data files and reports: the numbers against numpy, the files against the shipped
// schema, and every page rendered by a headless browser.
#include "picture.hpp"
#include "run_wavex.hpp"
#include "support/statistics.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <filesystem>

namespace wavex {
namespace {

using test::show;

TEST(Statistics, SummaryMatchesNumpy) {
    const double x[] = {3.2, 1.5, 4.8, 2.2, 9.1, 0.4, 5.5, 6.3, 2.9, 7.7, 3.3, NAN};
    Summary s = summarize(x, std::size(x));
    // numpy: mean, std(ddof=1), percentile(.., [1, 5, 50, 95, 99]) of the finite values
    const double want[] = {4.263636363636364, 2.6815192437395363, 0.51, 0.95, 3.3, 8.4, 8.96};
    const double got[] = {s.mean, s.stddev, s.p1, s.p5, s.p50, s.p95, s.p99};
    for (size_t i = 0; i < std::size(want); ++i) EXPECT_NEAR(got[i], want[i], 1e-12) << i;
    EXPECT_EQ(s.count, 11u);
    EXPECT_DOUBLE_EQ(yieldWithin(x, std::size(x), 1, 8), 9.0 / 12);  // NaN fails
    EXPECT_NEAR(processCapability(s, 1, 8), (s.mean - 1) / (3 * s.stddev), 1e-15);  // the nearer limit
    EXPECT_EQ(histogram(x, std::size(x), 0, 10, 5), (std::vector<size_t>{2, 4, 2, 2, 1}));
}

class Reports : public ::testing::Test {
protected:
    test::Session wx;
    test::ScratchDir scratch;
    const std::string dir = scratch.path();
    const std::string schema = std::string(WAVEX_SOURCE_DIR) + "/share/schema/statdata.xsd";

    std::string q(const std::string& name) { return "'" + dir + name + "'"; }
    void appendTwo() {
        ASSERT_EQ(show(wx("AppendSensitivityData(" + q("s.xml") + ", 'R1', 1000, 1010, ['gain', 'bw'], [20, 1e6], [20.2, 0.99e6])")), "[1]")
            << wx.messages();
        ASSERT_EQ(show(wx("AppendSensitivityData(" + q("s.xml") + ", 'C<1>', 1e-9, 1.1e-9, 'bw', 1e6, 0.8e6)")), "[2]")
            << wx.messages();
    }
    // Renders a page with the browser: no console errors, and the colour of the bars drawn.
    void rendersWithBars(const std::string& page) {
        const char* browser = "/usr/bin/chromium";
        if (access(browser, X_OK) != 0) GTEST_SKIP() << "chromium is not installed: pages not rendered";
        xmlDoc* doc = xmlReadFile(page.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
        EXPECT_TRUE(doc) << page << " is not well-formed XML";
        xmlFreeDoc(doc);
        const std::string png = page + ".png", profile = dir + "profile-" + std::filesystem::path(page).filename().string();
        test::Outcome run = test::runProgram(
            browser,
            {"--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--user-data-dir=" + profile, "--enable-logging=stderr", "--window-size=1000,1200", "--screenshot=" + png,
             "file://" + page},
            "/dev/null", dir + "out.txt", dir + "err.txt");
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err.find("CONSOLE"), std::string::npos) << run.err;
        auto picture = test::readPng(png);
        ASSERT_TRUE(picture) << "no screenshot of " << page;
        EXPECT_GT(picture->pixels({111, 152, 201}).size(), 500u) << "no bars drawn in " << page;
    }
};

TEST_F(Reports, DataFilesValidateAndGiveTheirHeader) {
    appendTwo();
    wx.check({{("MSWReadHeader(" + q("s.xml") + ")").c_str(),
               "['analysis=sensitivity parameters=\"R1 C<1>\" measurements=\"gain bw\" runs=2']"},
              {("XmlValidate(" + q("s.xml") + ", '" + schema + "')").c_str(), "[]"}});
    scratch.write("bad.xml", "<?xml version=\"1.0\"?>\n<statdata analysis=\"guess\">\n  <parameters/>\n"
                             "  <run label=\"1\"><value measurement=\"g\" value=\"x\"/></run>\n</statdata>\n");
    VectorPtr problems = wx("XmlValidate(" + q("bad.xml") + ", '" + schema + "')");
    ASSERT_TRUE(problems) << wx.messages();
    ASSERT_EQ(problems->size(), 2u) << show(problems);
    EXPECT_EQ(problems->str[0]->rfind("line 2: Element 'statdata', attribute 'analysis'", 0), 0u) << *problems->str[0];
    EXPECT_EQ(problems->str[1]->rfind("line 4: Element 'run'", 0), 0u) << *problems->str[1];

    scratch.write("broken.xml", "<statdata analysis='sensitivity'>\n<parameters>\n</statdata>\n");
    scratch.write("notxsd.xml", "<root/>");
    const std::pair<std::string, std::string> failures[] = {
        {"MSWReadHeader(" + q("none.xml") + ")", "Cannot open file '" + dir + "none.xml'"},
        {"MSWReadHeader(" + q("broken.xml") + ")",
         "File '" + dir + "broken.xml' is not a statistical data file: line 3: Opening and ending tag mismatch: "
         "parameters line 2 and statdata"},
        {"XmlValidate(" + q("s.xml") + ", " + q("notxsd.xml") + ")",
         "File '" + dir + "notxsd.xml' is not an XML schema: The XML document '" + dir +
             "notxsd.xml' is not a schema document."},
        {"AppendSensitivityData(" + q("s.xml") + ", 'R1', 1, 2, ['a', 'b'], 1, [1, 2])",
         "Function 'AppendSensitivityData' has 2 measurement names but 1 nominal and 2 perturbed values"},
    };
    for (const auto& [expression, message] : failures) wx.expectFails(expression.c_str(), message);
}

TEST_F(Reports, SensitivityTables) {
    appendTwo();
    wx.check({{("BuildSensitivityCsv(" + q("s.csv") + ", " + q("s.xml") + ")").c_str(), "[4]"},
              {("BuildSensitivityPerturbCsv(" + q("p.csv") + ", " + q("s.xml") + ")").c_str(), "[4]"}});
    // By measurement, the larger normalised magnitude first; C<1> did not measure gain.
    const std::string csv = "ReadFile(" + q("s.csv") + ")";
    wx.check({{("QueryData(" + csv + ", 'parameter')").c_str(), "['R1', 'C<1>', 'C<1>', 'R1']"},
              {("QueryData(" + csv + ", 'measurement')").c_str(), "['gain', 'gain', 'bw', 'bw']"}});
    const double absolute[] = {0.02, NAN, -2e15, -1000}, normalised[] = {1, NAN, -2, -1};
    VectorPtr a = wx("QueryData(" + csv + ", 'absolute')"), n = wx("QueryData(" + csv + ", 'normalised')");
    ASSERT_TRUE(a && n && a->size() == 4 && n->size() == 4) << wx.messages();
    for (size_t i = 0; i < 4; ++i) {
        if (std::isnan(absolute[i])) {
            EXPECT_TRUE(std::isnan(a->real[i]) && std::isnan(n->real[i])) << i;
            continue;
        }
        EXPECT_NEAR(a->real[i] / absolute[i], 1, 1e-12) << i;
        EXPECT_NEAR(n->real[i] / normalised[i], 1, 1e-12) << i;
    }
    EXPECT_EQ(test::readFile(dir + "p.csv").rfind("parameter,nominal,perturbed,measurement,nominal value,perturbed value\n"
                                                   "R1,1000,1010,gain,20,20.2\nR1,1000,1010,bw,1e+06,990000\n", 0), 0u);
}

TEST_F(Reports, PagesRenderWithTheirCharts) {
    appendTwo();
    scratch.write("wc.xml", "<statdata analysis='worstcase'><parameters><parameter name='R1'/></parameters>"
                            "<measurements><measurement name='gain'/></measurements>"
                            "<run label='lo'><value measurement='gain' value='19'/><setting parameter='R1' value='990'/></run>"
                            "<run label='hi'><value measurement='gain' value='21'/><setting parameter='R1' value='1010'/></run>"
                            "</statdata>");
    wx.set("g", wx("XY(sin(0.37 * vector(200)) + 20, vector(200))"));
    wx.set("b", wx("cos(vector(200)) * 1e6"));
    const std::string mclog = dir + "mc.html", sens = dir + "sens.html", worst = dir + "wc.html";
    wx.check({{("BuildMclogHTML('" + mclog + "', ['gain', 'bw & co'], g, b, [19.5, 21, NaN, 9e5])").c_str(), "[2]"},
              {("BuildSensitivityHTML('" + sens + "', " + q("s.xml") + ")").c_str(), "[4]"},
              {("BuildWorstCaseHTML('" + worst + "', " + q("wc.xml") + ")").c_str(), "[1]"}});
    const std::string page = test::readFile(mclog);
    EXPECT_NE(page.find("<h2>bw &amp; co</h2>"), std::string::npos);
    EXPECT_NE(page.find("<line class=\"limit\""), std::string::npos);
    EXPECT_NE(page.find("<tr class=\"fail\"><td>"), std::string::npos);
    EXPECT_NE(test::readFile(worst).find("<td class=\"name\">minimum</td><td>19</td><td class=\"name\">lo</td><td>990</td>"),
              std::string::npos);
    rendersWithBars(mclog);
    rendersWithBars(sens);
}

TEST_F(Reports, BadInputLeavesNoReport) {
    wx.set("g", makeRealVector({1, 2, 3}));
    const std::pair<std::string, std::string> cases[] = {
        {"BuildMclogHTML(" + q("r.html") + ", ['a', 'b'], g, [1, 2])",
         "Measurements 'a' and 'b' of function 'BuildMclogHTML' have different run counts (3 and 2)"},
        {"BuildMclogHTML(" + q("r.html") + ", ['a', 'b'], g)",
         "Function 'BuildMclogHTML' has 2 measurement names but 1 measurement vectors"},
        {"BuildMclogHTML(" + q("r.html") + ", 'a', ['x'])", "Measurement 'a' of function 'BuildMclogHTML' must be real"},
        {"BuildMclogHTML('/nonexistent/r.html', 'a', g)", "Cannot write file '/nonexistent/r.html'"},
        {"BuildWorstCaseHTML(" + q("r.html") + ", " + q("missing.xml") + ")", "Cannot open file '" + dir + "missing.xml'"},
    };
    for (const auto& [expression, message] : cases) wx.expectFails(expression.c_str(), message);
    wx.wx.setOption("MonteCarloCss", dir + "none.css");
    wx.expectFails(("BuildMclogHTML(" + q("r.html") + ", 'a', g)").c_str(),
                   "Cannot open file '" + dir + "none.css' (the style sheet of option MonteCarloCss)");
    wx.wx.setOption("MonteCarloCss", "%SHAREPATH%/html/css/msw.css");
    EXPECT_TRUE(std::filesystem::is_empty(dir));  // nothing half-written left
}

}  // namespace
}  // namespace wavex
