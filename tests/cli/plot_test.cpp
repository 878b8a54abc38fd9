// Plots drawn by the wavex command (--plot), read back as pixels: their size, the curves' colours,
// and where the curves run.
#include <gtest/gtest.h>

#include "picture.hpp"
#include "run_wavex.hpp"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

using wavex::test::Outcome;
using wavex::test::readFile;
using wavex::test::readPng;
using wavex::test::Rgb;

class PlotTest : public testing::Test {
protected:
    void SetUp() override {
        dir_ = testing::TempDir() + "wavex_plot_" + std::to_string(getpid()) + "/";
        ::mkdir(dir_.c_str(), 0700);
    }
    void TearDown() override {
        for (const std::string& f : files_) std::remove(f.c_str());
        ::rmdir(dir_.c_str());
    }

    std::string file(const std::string& name) {
        files_.push_back(dir_ + name);
        return files_.back();
    }
    std::string write(const std::string& name, const std::string& text) {
        std::string path = file(name);
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    Outcome wavex(const std::vector<std::string>& args) {
        std::string out = file("stdout"), err = file("stderr");
        return wavex::test::runWavex(args, "/dev/null", out, err);
    }
    std::string dir_;
    std::vector<std::string> files_;
};

// A number as CSV text that reads back exactly.
std::string num(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", v);
    return text;
}

// The first curves' colours.
constexpr Rgb kBlue{31, 119, 180}, kOrange{255, 127, 14}, kGreen{44, 160, 44}, kRed{214, 39, 40};

// The straight line through the pixels (least squares), and how far the farthest pixel is off it.
double worstOffLine(const std::vector<std::pair<unsigned, unsigned>>& px) {
    double n = static_cast<double>(px.size()), sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (auto [x, y] : px) sx += x, sy += y, sxx += double(x) * x, sxy += double(x) * y;
    const double slope = (n * sxy - sx * sy) / (n * sxx - sx * sx), offset = (sy - slope * sx) / n;
    double worst = 0;
    for (auto [x, y] : px) worst = std::max(worst, std::fabs(y - (slope * x + offset)) / std::sqrt(1 + slope * slope));
    return worst;
}

TEST_F(PlotTest, CurvesInTheirColours) {
    // A rising line and a falling one over time.
    std::string csv = "time,up[V],down[A]\n";
    for (int k = 0; k <= 100; ++k) csv += num(k * 1e-6) + "," + std::to_string(k) + "," + std::to_string(100 - k) + "\n";
    std::string data = write("lines.csv", csv), png = file("lines.png");
    Outcome r = wavex({"--data", data, "--plot", png, "-e", "up", "-e", "down; [4, 2]; 'text'"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "4\n2\ntext\n");  // what is not a curve still prints
    EXPECT_EQ(r.err, "");

    auto pic = readPng(png);
    ASSERT_TRUE(pic);
    EXPECT_EQ(pic->width, 1200u);
    EXPECT_EQ(pic->height, 800u);
    // The two drawn values have the first two colours; nothing has the third.
    auto up = pic->pixels(kBlue, 0, 900), down = pic->pixels(kOrange, 0, 900);
    EXPECT_GT(up.size(), 500u);
    EXPECT_GT(down.size(), 500u);
    EXPECT_EQ(pic->pixels(kGreen).size(), 0u);
    // "up" rises from left to right (rows count downwards), "down" falls, both straight.
    auto [upLeft, upRight] = std::minmax_element(up.begin(), up.end());
    EXPECT_GT(upLeft->second, upRight->second + 400);
    auto [downLeft, downRight] = std::minmax_element(down.begin(), down.end());
    EXPECT_LT(downLeft->second + 400, downRight->second);
    EXPECT_LT(worstOffLine(up), 3);
    // Most of the picture is the white background.
    EXPECT_GT(pic->pixels({255, 255, 255}).size(), 1200u * 800u * 3 / 4);
}

TEST_F(PlotTest, LogarithmicAxesForASweep) {
    // |h| = 1/f over six decades: a straight line when both axes are logarithmic, which they are
    // for magnitudes over a frequency sweep; --liny makes it a sharp bend.
    std::string csv = "frequency,h.re,h.im\n";
    for (int k = 0; k <= 60; ++k) {
        double f = std::pow(10.0, k / 10.0);
        csv += num(f) + "," + num(1 / f) + ",0\n";
    }
    std::string data = write("sweep.csv", csv);
    std::string logLog = file("loglog.png"), linY = file("liny.png");
    ASSERT_EQ(wavex({"--data", data, "--plot", logLog, "-e", "h"}).status, 0);
    ASSERT_EQ(wavex({"--data", data, "--plot", linY, "--liny", "-e", "h"}).status, 0);
    auto straight = readPng(logLog), bent = readPng(linY);
    ASSERT_TRUE(straight && bent);
    auto a = straight->pixels(kBlue), b = bent->pixels(kBlue);
    ASSERT_GT(a.size(), 500u);
    ASSERT_GT(b.size(), 500u);
    EXPECT_LT(worstOffLine(a), 3);
    EXPECT_GT(worstOffLine(b), 50);

    // A time axis is linear unless --logx says otherwise: then a value growing with the
    // logarithm of time is straight.
    std::string slow = "time,v\n";
    for (int k = 0; k <= 60; ++k) slow += num(std::pow(10.0, k / 10.0 - 6)) + "," + num(k) + "\n";
    std::string slowData = write("slow.csv", slow), linear = file("lin.png"), logX = file("logx.png");
    ASSERT_EQ(wavex({"--data", slowData, "--plot", linear, "-e", "v"}).status, 0);
    ASSERT_EQ(wavex({"--data", slowData, "--plot", logX, "--logx", "-e", "v"}).status, 0);
    auto lin = readPng(linear), lx = readPng(logX);
    ASSERT_TRUE(lin && lx);
    EXPECT_GT(worstOffLine(lin->pixels(kBlue)), 50);
    EXPECT_LT(worstOffLine(lx->pixels(kBlue)), 3);
}

TEST_F(PlotTest, DivisionsAndGaps) {
    // Three runs, each its own colour; a NaN breaks a curve.
    std::string csv = "time,v\n";
    for (int run = 0; run < 3; ++run) {
        csv += "# run: R=" + std::to_string(run + 1) + "k\n";
        for (int k = 0; k <= 40; ++k) csv += std::to_string(k) + "," + (k >= 18 && k <= 22 && run == 0 ? "nan" : std::to_string(run * 10 + k)) + "\n";
    }
    std::string data = write("runs.csv", csv), png = file("runs.png");
    Outcome r = wavex({"--data", data, "--plot", png, "-e", "v"});
    ASSERT_EQ(r.status, 0) << r.err;
    auto pic = readPng(png);
    ASSERT_TRUE(pic);
    auto first = pic->pixels(kBlue);
    EXPECT_GT(first.size(), 200u);
    EXPECT_GT(pic->pixels(kOrange).size(), 200u);
    EXPECT_GT(pic->pixels(kGreen).size(), 200u);
    EXPECT_EQ(pic->pixels(kRed).size(), 0u);
    // The gap: the first run's columns show a stretch without its colour in the middle.
    std::vector<bool> column(pic->width);
    for (auto [x, y] : first) column[x] = true;
    unsigned gap = 0, longest = 0;
    unsigned left = 1200, right = 0;
    for (auto [x, y] : first) left = std::min(left, x), right = std::max(right, x);
    for (unsigned x = left + (right - left) / 4; x < left + 3 * (right - left) / 4; ++x) {
        gap = column[x] ? 0 : gap + 1;
        longest = std::max(longest, gap);
    }
    EXPECT_GT(longest, 50u);
}

TEST_F(PlotTest, LongCurvesKeepTheirEnvelope) {
    // A million points of a fast sine: many periods per pixel column. Reduced to what each column
    // shows, the curve still fills the band between -1 and 1 everywhere.
    std::string csv = "time,v\n";
    csv.reserve(30u << 20);
    char line[64];
    for (int k = 0; k < 1000000; ++k) {
        std::snprintf(line, sizeof line, "%d,%.6f\n", k, std::sin(k * 0.7));
        csv += line;
    }
    std::string data = write("sine.csv", csv), png = file("sine.png");
    Outcome r = wavex({"--data", data, "--plot", png, "-e", "v"});
    ASSERT_EQ(r.status, 0) << r.err;
    auto pic = readPng(png);
    ASSERT_TRUE(pic);
    auto px = pic->pixels(kBlue);
    auto [top, bottom] = std::minmax_element(px.begin(), px.end(), [](auto a, auto b) { return a.second < b.second; });
    const unsigned band = bottom->second - top->second;
    EXPECT_GT(band, 500u);
    // Every column of the plot's middle reaches (nearly) both edges of the band.
    for (unsigned x = 300; x < 900; x += 37) {
        unsigned lo = ~0u, hi = 0;
        for (unsigned y = 0; y < pic->height; ++y)
            if (pic->near(x, y, kBlue)) lo = std::min(lo, y), hi = std::max(hi, y);
        EXPECT_LE(lo, top->second + 3) << x;
        EXPECT_GE(hi, bottom->second - 3) << x;
    }
}

TEST_F(PlotTest, VectorDrawings) {
    std::string data = write("v.csv", "time,v\n0,1\n1,2\n2,0\n");
    std::string svg = file("v.svg"), pdf = file("v.PDF");
    ASSERT_EQ(wavex({"--data", data, "--plot", svg, "-e", "v"}).status, 0);
    ASSERT_EQ(wavex({"--data", data, "--plot", pdf, "-e", "v"}).status, 0);
    std::string s = readFile(svg), p = readFile(pdf);
    EXPECT_EQ(s.substr(0, 5), "<?xml");
    EXPECT_NE(s.find("<svg"), std::string::npos);
    EXPECT_NE(s.find("rgb(12.156863%,46.666667%,70.588235%)"), std::string::npos);  // the first curve's colour
    EXPECT_EQ(p.substr(0, 5), "%PDF-");
}

// The ngspice examples: their measurements print as recorded, their curves go to the plot, one
// colour per run.
TEST_F(PlotTest, Examples) {
    const std::string dir = std::string(WAVEX_SOURCE_DIR) + "/examples/";
    for (const char* name : {"rlc_step", "rlc_ac"}) {
        const std::string data = dir + (name == std::string("rlc_step") ? "rlc_tran.raw" : "rlc_ac.raw");
        const std::string png = file(std::string(name) + ".png");
        Outcome r = wavex({"--data", data, "--plot", png, dir + name + ".wx"});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.err, "");
        EXPECT_EQ(r.out, readFile(dir + name + ".out")) << name;
        auto pic = readPng(png);
        ASSERT_TRUE(pic) << name;
        EXPECT_GT(pic->pixels(kBlue).size(), 500u) << name;
        EXPECT_GT(pic->pixels(kOrange).size(), 500u) << name;
        EXPECT_GT(pic->pixels(kGreen).size(), 500u) << name;
        EXPECT_EQ(pic->pixels(kRed).size(), 0u) << name;
    }
}

TEST_F(PlotTest, Refusals) {
    std::string data = write("d.csv", "time,v\n0,1\n1,2\n");
    std::string ac = write("f.csv", "frequency,h\n1,1\n2,2\n");
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string err;
    };
    const Case cases[] = {
        {{"--plot", "x.gif", "-e", "1"}, 2,
         "error: --plot: the plot file 'x.gif' must end in .png, .svg or .pdf\nRun with --help for more information.\n"},
        {{"--logx", "-e", "1"}, 2, "error: --logx needs --plot\nRun with --help for more information.\n"},
        {{"--liny", "-e", "1"}, 2, "error: --liny needs --plot\nRun with --help for more information.\n"},
        {{"--plot", dir_ + "none.png", "-e", "[1, 2]"}, 1, "error: nothing to plot: no statement gave a curve of more than one point\n"},
        {{"--plot", dir_ + "no/such/dir.png", "--data", data, "-e", "v"}, 1,
         "error: cannot write the plot '" + dir_ + "no/such/dir.png': No such file or directory\n"},
        {{"--plot", dir_ + "mixed.png", "--data", data, "--data", ac, "-e", "v", "-e", "h"}, 1,
         "error: 'v' is drawn over time but 'h' over frequency: draw them on separate plots\n"},
        {{"--plot", dir_ + "fail.png", "--data", data, "-e", "v", "-e", "nosuch"}, 1, "error: Unknown vector 'nosuch'\n"},
    };
    for (const Case& c : cases) {
        file("none.png"), file("mixed.png"), file("fail.png");
        Outcome r = wavex(c.args);
        EXPECT_EQ(r.status, c.status) << c.args[1];
        EXPECT_EQ(r.err, c.err) << c.args[1];
    }
    // A failed statement writes no plot.
    struct stat st;
    EXPECT_NE(::stat((dir_ + "fail.png").c_str(), &st), 0);
}

}  // namespace
