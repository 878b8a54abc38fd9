#include "io/load.hpp"

#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace wavex::io {
namespace {

using test::complexes;
using test::reals;
using test::xs;

std::string utf16(std::string_view text) {
    std::string out;
    for (char c : text) out += c, out += '\0';
    return out;
}

TEST(DataLoader, PicksTheReader) {
    struct Case {
        std::string head;
        const char* path;
        DataFormat format;
    };
    const Case cases[] = {
        {"Title: rc\nDate: x\n", "sim.out", DataFormat::Raw},
        {"\xEF\xBB\xBFtitle: rc\n", "sim", DataFormat::Raw},
        {utf16("Title: x\n"), "x.bin", DataFormat::Raw},
        {"\xFF\xFE" + utf16("Title: x\n"), "x", DataFormat::Raw},
        {"time,v\n0,1\n", "broken.RAW", DataFormat::Raw},  // the raw reader says what is wrong
        {"# GHz S MA R 50\n1 0.5 0\n", "amp.s2p", DataFormat::Touchstone},
        {"# GHz S MA R 50\n", "big.S12P", DataFormat::Touchstone},
        {"[Version] 2.0\n", "amp.ts", DataFormat::Touchstone},
        {"\n  ! a comment\n# GHz S MA R 50\n", "amp.txt", DataFormat::Touchstone},
        {"[version] 2.1\n", "amp", DataFormat::Touchstone},
        {"# run: a\ntime,v\n", "data", DataFormat::Csv},
        {"time,v\n", "v.s0p", DataFormat::Csv},
        {"", "empty", DataFormat::Csv},
    };
    for (const Case& c : cases) EXPECT_EQ(detectFormat(c.head, c.path), c.format) << c.path;
}

// CSV files load through here in ReportsProgress, raw files here and in tests/cli/ngspice_test.cpp.
TEST(DataLoader, LoadsEachKind) {
    test::ScratchDir dir;
    std::string error;

    // A stepped file of the UTF-16 format takes its labels from the log beside it.
    std::string stepped = utf16("Title: x\nPlotname: Transient Analysis\nFlags: real forward stepped\nNo. Variables: 2\n"
                                "No. Points: 4\nVariables:\n\t0\ttime\ttime\n\t1\tV(a)\tvoltage\nBinary:\n");
    for (double t : {0.0, 1.0, 0.0, 1.0}) {
        stepped.append(reinterpret_cast<const char*>(&t), 8);
        float v = static_cast<float>(t * 2);
        stepped.append(reinterpret_cast<const char*>(&v), 4);
    }
    std::string path = dir.write("sweep.raw", stepped);
    dir.write("sweep.log", "\xFF\xFE" + utf16("Circuit: x\n.step rload=10\n.step rload=20\n"));
    auto runs = loadData(path, &error);
    ASSERT_TRUE(runs) << error;
    EXPECT_EQ((*runs)[1].value->labels, (DivisionLabelArray{"rload=10", "rload=20"}));
    EXPECT_EQ(reals((*runs)[1].value), (std::vector<double>{0, 2, 0, 2}));

    EXPECT_FALSE(loadData(dir.path() + "missing.csv", &error));
    EXPECT_EQ(error, "cannot read '" + dir.path() + "missing.csv': No such file or directory");
    EXPECT_FALSE(loadData(dir.write("bad.raw", "time,v\n0,1\n"), &error));
    EXPECT_EQ(error, dir.path() + "bad.raw: not a raw file: it does not begin with 'Title:'");
}

TEST(DataLoader, TouchstoneAsVectors) {
    test::ScratchDir dir;
    std::string error;
    // Version 1 two-port data come in the order 11, 21, 12, 22.
    auto s2p = loadData(dir.write("amp.s2p", "! amplifier\n# MHz S RI R 50\n"
                                              "1 0.1 0 2 0 0.01 0 0.2 0\n"
                                              "10 0.1 0.1 2 -1 0.01 0 0.2 -0.2\n"), &error);
    ASSERT_TRUE(s2p) << error;
    std::vector<std::string> names;
    for (const NamedVector& v : *s2p) names.push_back(v.name);
    EXPECT_EQ(names, (std::vector<std::string>{"frequency", "S11", "S12", "S21", "S22"}));
    const Vector& s21 = *(*s2p)[3].value;
    EXPECT_EQ(s21.type, VD_COMPLEX);
    EXPECT_EQ(s21.phys, units::Number);
    EXPECT_EQ(complexes((*s2p)[3].value), (std::vector<Complex>{{2, 0}, {2, -1}}));
    EXPECT_EQ(complexes((*s2p)[2].value), (std::vector<Complex>{{0.01, 0}, {0.01, 0}}));
    EXPECT_EQ(xs((*s2p)[3].value), (std::vector<double>{1e6, 1e7}));
    EXPECT_EQ(s21.ref.phys, units::Frequency);
    EXPECT_EQ(s21.ref.real(), (*s2p)[0].value->real.data());

    // Version 2 Z parameters are in ohm; the port count comes from [Number of Ports].
    auto z = loadData(dir.write("line.ts", "[Version] 2.0\n# Hz Z RI R 50\n[Number of Ports] 1\n"
                                           "[Number of Frequencies] 2\n[Network Data]\n1 50 0\n2 51 -1\n[End]\n"), &error);
    ASSERT_TRUE(z) << error;
    EXPECT_EQ((*z)[1].name, "Z11");
    EXPECT_EQ((*z)[1].value->phys, 6);
    EXPECT_EQ(complexes((*z)[1].value), (std::vector<Complex>{{50, 0}, {51, -1}}));

    // Noise parameters follow the network data in version 1, over their own frequencies (their
    // values: tests/support/touchstone_test.cpp).
    auto noisy = loadData(dir.write("lna.s2p", "# GHz S MA R 50\n1 0.5 0 2 90 0 0 0.5 0\n2 0.5 0 2 90 0 0 0.5 0\n"
                                               "1.5 0.8 0.3 45 0.2\n"), &error);
    ASSERT_TRUE(noisy) << error;
    ASSERT_EQ(noisy->size(), 8u);
    EXPECT_EQ((*noisy)[5].name, "NFmin");
    EXPECT_EQ(reals((*noisy)[5].value), (std::vector<double>{0.8}));
    EXPECT_EQ(xs((*noisy)[5].value), (std::vector<double>{1.5e9}));
    EXPECT_EQ((*noisy)[6].name, "GammaOpt");
    EXPECT_EQ((*noisy)[7].name, "Rn");

    // Twelve ports: the indices are separated.
    std::string big = "# Hz S RI R 50\n1";
    for (int k = 0; k < 144; ++k) big += " " + std::to_string(k) + " 0";
    auto s12 = loadData(dir.write("x.s12p", big + "\n"), &error);
    ASSERT_TRUE(s12) << error;
    EXPECT_EQ((*s12)[2].name, "S1_2");
    EXPECT_EQ((*s12)[144].name, "S12_12");
    EXPECT_EQ(complexes((*s12)[144].value), (std::vector<Complex>{{143, 0}}));

    struct Case {
        const char* name;
        const char* text;
        const char* message;
    };
    const Case bad[] = {
        {"a.s2p", "# GHz S MA R 50\n1 0.5 0 2\n", ":2: expected 9 values for a frequency point, found 4"},
        {"a.txt", "! no port count\n1 2 3\n", ": the number of ports is not known: name the file NAME.sNp or give [Number of Ports]"},
        {"b.s1p", "! nothing\n", ": The file has no frequency points"},
    };
    for (const Case& c : bad) {
        std::string file = dir.write(c.name, c.text);
        EXPECT_FALSE(loadData(file, &error)) << c.name;
        EXPECT_EQ(error, file + c.message);
    }
}

TEST(DataLoader, ReportsProgress) {
    test::ScratchDir dir;
    std::string csv = "time,v\n";
    for (int k = 0; k < 2000000; ++k) csv += std::to_string(k) + ",1.5\n";
    std::string path = dir.write("big.csv", csv);
    std::vector<std::pair<uint64_t, uint64_t>> reports;
    std::string error;
    auto vs = loadData(path, &error, [&](uint64_t done, uint64_t total) { reports.emplace_back(done, total); });
    ASSERT_TRUE(vs) << error;
    EXPECT_EQ((*vs)[1].value->size(), 2000000u);
    ASSERT_GE(reports.size(), 2u);
    for (size_t i = 1; i < reports.size(); ++i) {
        EXPECT_GT(reports[i].first, reports[i - 1].first);
        EXPECT_EQ(reports[i].second, csv.size());
    }
    EXPECT_LT(reports.back().first, csv.size());
}

}  // namespace
}  // namespace wavex::io
