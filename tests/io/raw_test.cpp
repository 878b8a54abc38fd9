#include "io/raw.hpp"

#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>

#include <unistd.h>

namespace wavex::io {
namespace {

using test::complexes;
using test::reals;
using test::xs;

std::vector<NamedVector> load(std::string_view bytes, const std::vector<std::string>& labels = {}) {
    std::string error;
    auto v = parseRaw(bytes, "t.raw", &error, labels);
    EXPECT_TRUE(v.has_value()) << error;
    return v ? std::move(*v) : std::vector<NamedVector>{};
}

std::string failure(std::string_view bytes) {
    std::string error;
    auto v = parseRaw(bytes, "t.raw", &error);
    EXPECT_FALSE(v.has_value());
    return error;
}

const Vector& find(const std::vector<NamedVector>& vs, std::string_view name) {
    for (const NamedVector& v : vs)
        if (v.name == name) return *v.value;
    ADD_FAILURE() << "no vector " << name;
    static const Vector none;
    return none;
}

std::vector<std::string> names(const std::vector<NamedVector>& vs) {
    std::vector<std::string> r;
    for (const NamedVector& v : vs) r.push_back(v.name);
    return r;
}

template <class T>
void put(std::string* s, T value) {
    s->append(reinterpret_cast<const char*>(&value), sizeof value);
}

// The header of a SPICE3 plot: "Variables" lists "NAME TYPE" pairs.
std::string header(std::string_view plot, std::string_view flags, size_t points,
                   const std::vector<std::pair<std::string, std::string>>& vars, std::string_view data = "Binary:",
                   std::string_view title = "test circuit") {
    std::string h = "Title: " + std::string(title) + "\nDate: Thu Jan  1 00:00:00  2026\nPlotname: " + std::string(plot) +
                    "\nFlags: " + std::string(flags) + "\nNo. Variables: " + std::to_string(vars.size()) +
                    "\nNo. Points: " + std::to_string(points) + "\nVariables:\n";
    for (size_t i = 0; i < vars.size(); ++i) h += "\t" + std::to_string(i) + "\t" + vars[i].first + "\t" + vars[i].second + "\n";
    return h + std::string(data) + "\n";
}

const std::vector<std::pair<std::string, std::string>> kTran = {{"time", "time"}, {"v(out)", "voltage"}, {"i(v1)", "current"}};

// A binary real plot of `points` points: time k·1e-6, v(out) k/2, i(v1) -k.
std::string binaryTran(size_t points, std::string_view title = "test circuit") {
    std::string s = header("Transient Analysis", "real", points, kTran, "Binary:", title);
    for (size_t k = 0; k < points; ++k) {
        put(&s, k * 1e-6);
        put(&s, k / 2.0);
        put(&s, -double(k));
    }
    return s;
}

// The same header as the UTF-16 format writes it: UTF-16LE text.
std::string utf16(std::string_view text) {
    std::string out;
    for (char c : text) {
        out += c;
        out += '\0';
    }
    return out;
}

TEST(RawReader, TextPlot) {
    auto vs = load(header("Transient Analysis", "real", 3, kTran, "Values:") +
                   " 0\t0.000000000000000e+00\n\t1.5e+00\n\t-2e-3\n\n"
                   " 1\t1.0e-06\n\t2.5\n\t-4e-3\n\n"
                   " 2\t2.0e-06\n\tnan\n\t1e308\n");
    ASSERT_EQ(names(vs), (std::vector<std::string>{"time", "v(out)", "i(v1)"}));
    const Vector& out = find(vs, "v(out)");
    EXPECT_EQ(out.type, VD_REAL);
    EXPECT_EQ(out.phys, units::Voltage);
    EXPECT_EQ(out.real[0], 1.5);
    EXPECT_EQ(out.real[1], 2.5);
    EXPECT_TRUE(std::isnan(out.real[2]));
    EXPECT_EQ(out.ref.phys, units::Time);
    EXPECT_EQ(out.ref.name, "time");
    EXPECT_EQ(reals(vs[2].value), (std::vector<double>{-2e-3, -4e-3, 1e308}));
    EXPECT_EQ(vs[2].value->phys, units::Current);
    EXPECT_EQ(xs(vs[2].value), (std::vector<double>{0, 1e-6, 2e-6}));
    // The reference is a vector of its own, and the others' x-values are its very values.
    const Vector& time = find(vs, "time");
    EXPECT_EQ(time.phys, units::Time);
    EXPECT_FALSE(time.ref.present());
    EXPECT_EQ(out.ref.real(), time.real.data());
    EXPECT_EQ(out.numDivisions(), 1u);
    EXPECT_TRUE(out.labels.empty());
}

TEST(RawReader, BinaryPlots) {
    auto vs = load(binaryTran(4));
    EXPECT_EQ(reals(vs[1].value), (std::vector<double>{0, 0.5, 1, 1.5}));
    EXPECT_EQ(reals(vs[2].value), (std::vector<double>{0, -1, -2, -3}));
    EXPECT_EQ(xs(vs[2].value), (std::vector<double>{0, 1e-6, 2e-6, 3e-6}));

    // Complex: the frequency, all of whose imaginary parts are zero, is a real reference.
    std::string ac = header("AC Analysis", "complex", 2, {{"frequency", "frequency grid=3"}, {"v(out)", "voltage"}});
    for (double f : {10.0, 100.0}) {
        put(&ac, f), put(&ac, 0.0);
        put(&ac, 1 / f), put(&ac, -f);
    }
    vs = load(ac);
    const Vector& out = find(vs, "v(out)");
    EXPECT_EQ(out.type, VD_COMPLEX);
    EXPECT_EQ(complexes(vs[1].value), (std::vector<Complex>{{0.1, -10}, {0.01, -100}}));
    EXPECT_EQ(out.ref.type, VD_REAL);
    EXPECT_EQ(out.ref.phys, units::Frequency);
    EXPECT_EQ(xs(vs[1].value), (std::vector<double>{10, 100}));
    EXPECT_EQ(find(vs, "frequency").type, VD_REAL);

    // A reference with an imaginary part stays complex.
    std::string pz = header("AC Analysis", "complex", 1, {{"s", "notype"}, {"h", "notype"}});
    put(&pz, 1.0), put(&pz, 2.0), put(&pz, 3.0), put(&pz, 4.0);
    vs = load(pz);
    EXPECT_EQ(vs[1].value->ref.type, VD_COMPLEX);
    EXPECT_EQ(vs[1].value->ref.cplx()[0], Complex(1, 2));
    EXPECT_EQ(vs[1].value->phys, units::Number);
}

// The unit of each type name is a table of the reader's; these rows take its paths: an alias, a
// type of its own number, case, and a name not in the table.
TEST(RawReader, UnitsOfVariableTypes) {
    struct Case {
        const char* type;
        PhysType phys;
    };
    const Case cases[] = {
        {"device_current", units::Current}, {"voltage-density", 17},      {"VOLTAGE", units::Voltage},
        {"notype", units::Number},          {"no-such-type", units::Number},
    };
    for (const Case& c : cases) {
        auto vs = load(header("DC transfer characteristic", "real", 0, {{"x", "notype"}, {"y", c.type}}));
        ASSERT_EQ(vs.size(), 2u) << c.type;
        EXPECT_EQ(vs[1].value->phys, c.phys) << c.type;
        EXPECT_EQ(vs[1].value->size(), 0u);
    }
}

TEST(RawReader, RunsAndSweeps) {
    // A reference that goes back to its first value starts a new run (a nested DC sweep).
    std::string dc = header("DC transfer characteristic", "real", 6, {{"v(v-sweep)", "voltage"}, {"v(out)", "voltage"}});
    for (double v : {0.0, 1.0, 2.0, 0.0, 1.0, 2.0}) put(&dc, v), put(&dc, v * 10);
    auto vs = load(dc);
    const Vector& out = find(vs, "v(out)");
    ASSERT_EQ(out.numDivisions(), 2u);
    EXPECT_EQ(out.divisionLength(0), 3u);
    EXPECT_TRUE(out.labels.empty());
    EXPECT_EQ(find(vs, "v(v-sweep)").numDivisions(), 2u);

    // Plots of the same analysis right after the first are runs of it: one division each,
    // labelled with their titles when those differ. Other plots are named as ngspice names them.
    std::string file = binaryTran(2, "R=1k") + binaryTran(3, "R=2k") + binaryTran(1, "R=3k");
    std::string op = header("Operating Point", "real", 1, {{"v(out)", "voltage"}});
    put(&op, 7.0);
    file += op + binaryTran(2);
    vs = load(file);
    EXPECT_EQ(names(vs), (std::vector<std::string>{"time", "v(out)", "i(v1)", "op1.v(out)", "tran4.time", "tran4.v(out)",
                                                   "tran4.i(v1)"}));
    const Vector& runs = find(vs, "v(out)");
    EXPECT_EQ(reals(vs[1].value), (std::vector<double>{0, 0.5, 0, 0.5, 1, 0}));
    ASSERT_EQ(runs.numDivisions(), 3u);
    EXPECT_EQ(runs.divisionLength(1), 3u);
    EXPECT_EQ(runs.labels, (DivisionLabelArray{"R=1k", "R=2k", "R=3k"}));
    EXPECT_EQ(reals(vs[3].value), (std::vector<double>{7}));
    EXPECT_EQ(vs[5].value->name, "tran4.v(out)");
    EXPECT_EQ(vs[5].value->ref.name, "time");
    EXPECT_EQ(vs[5].value->ref.real(), vs[4].value->real.data());

    // Runs of one title carry no labels.
    vs = load(binaryTran(2) + binaryTran(2));
    EXPECT_EQ(vs[1].value->numDivisions(), 2u);
    EXPECT_TRUE(vs[1].value->labels.empty());
}

TEST(RawReader, Utf16Format) {
    // Real: time as a double, the rest as float32; the sign bit of a time marks a point.
    std::string real = utf16("Title: * test.net\nDate: Thu Jan 01 00:00:00 2026\nPlotname: Transient Analysis\n"
                             "Flags: real forward\nNo. Variables: 3\nNo. Points:           2\nOffset:   0.0000000000000000e+000\n"
                             "Command: a simulator\nVariables:\n\t0\ttime\ttime\n\t1\tV(out)\tvoltage\n\t2\tI(R1)\tdevice_current\nBinary:\n");
    put(&real, 0.0), put(&real, 1.5f), put(&real, -0.25f);
    put(&real, -1e-6), put(&real, 2.5f), put(&real, 0.125f);
    auto vs = load(real);
    ASSERT_EQ(names(vs), (std::vector<std::string>{"time", "V(out)", "I(R1)"}));
    EXPECT_EQ(reals(vs[1].value), (std::vector<double>{1.5, 2.5}));
    EXPECT_EQ(reals(vs[2].value), (std::vector<double>{-0.25, 0.125}));
    EXPECT_EQ(vs[2].value->phys, units::Current);
    EXPECT_EQ(xs(vs[1].value), (std::vector<double>{0, 1e-6}));

    // A byte-order mark, "double" and "fastaccess": every value a double, variable after variable.
    std::string fast = "\xFF\xFE" + utf16("Title: x\nPlotname: Transient Analysis\nFlags: real forward double fastaccess\n"
                                          "No. Variables: 2\nNo. Points: 3\nVariables:\n\t0\ttime\ttime\n\t1\tV(a)\tvoltage\nBinary:\n");
    for (double t : {0.0, 1.0, 2.0}) put(&fast, t);
    for (double v : {5.0, 6.0, 7.0}) put(&fast, v);
    vs = load(fast);
    EXPECT_EQ(reals(vs[1].value), (std::vector<double>{5, 6, 7}));
    EXPECT_EQ(xs(vs[1].value), (std::vector<double>{0, 1, 2}));

    // Complex: every value two doubles.
    std::string ac = utf16("Title: x\nPlotname: AC Analysis\nFlags: complex forward log\nNo. Variables: 2\nNo. Points: 1\n"
                           "Variables:\n\t0\tfrequency\tfrequency\n\t1\tV(a)\tvoltage\nBinary:\n");
    put(&ac, 1e3), put(&ac, 0.0), put(&ac, 0.5), put(&ac, -0.5);
    vs = load(ac);
    EXPECT_EQ(complexes(vs[1].value), (std::vector<Complex>{{0.5, -0.5}}));
    EXPECT_EQ(xs(vs[1].value), (std::vector<double>{1e3}));

    // An operating point has no sweep: all its values are float32.
    std::string op = utf16("Title: x\nPlotname: Operating Point\nFlags: real\nNo. Variables: 2\nNo. Points: 1\n"
                           "Variables:\n\t0\tV(a)\tvoltage\n\t1\tI(R1)\tdevice_current\nBinary:\n");
    put(&op, 3.0f), put(&op, 0.5f);
    vs = load(op);
    EXPECT_EQ(reals(vs[0].value), (std::vector<double>{3}));
    EXPECT_EQ(reals(vs[1].value), (std::vector<double>{0.5}));

    // Stepped runs: one division each, labelled from the log when the counts agree.
    std::string stepped = utf16("Title: x\nPlotname: Transient Analysis\nFlags: real forward stepped\nNo. Variables: 2\n"
                                "No. Points: 5\nVariables:\n\t0\ttime\ttime\n\t1\tV(a)\tvoltage\nBinary:\n");
    for (double t : {0.0, 1.0, 2.0, 0.0, 2.0}) put(&stepped, t), put(&stepped, static_cast<float>(t + 1));
    vs = load(stepped, {"r=1k", "r=2k"});
    ASSERT_EQ(vs[1].value->numDivisions(), 2u);
    EXPECT_EQ(vs[1].value->divisionLength(0), 3u);
    EXPECT_EQ(vs[1].value->labels, (DivisionLabelArray{"r=1k", "r=2k"}));
    EXPECT_TRUE(load(stepped, {"r=1k"})[1].value->labels.empty());

    // Text data in a UTF-16 file.
    vs = load(utf16("Title: x\nPlotname: Transient Analysis\nFlags: real\nNo. Variables: 2\nNo. Points: 2\n"
                    "Variables:\n\t0\ttime\ttime\n\t1\tV(a)\tvoltage\nValues:\n0\t0.0\n\t1.5\n1\t1e-3\n\t2.5\n"));
    EXPECT_EQ(reals(vs[1].value), (std::vector<double>{1.5, 2.5}));
}

TEST(RawReader, StepLabelsFromLog) {
    const std::string log = "Circuit: * test.net\n.step r=1k c=10n\n.STEP r=2k c=10n\r\nMeasurement: x\n  .step\tr=3k\n";
    const std::vector<std::string> expected{"r=1k c=10n", "r=2k c=10n", "r=3k"};
    EXPECT_EQ(readStepLabels(log), expected);
    EXPECT_EQ(readStepLabels("\xFF\xFE" + utf16(log)), expected);
    EXPECT_EQ(readStepLabels(utf16(log)), expected);
    EXPECT_TRUE(readStepLabels("").empty());
    EXPECT_TRUE(readStepLabels(".stepper\n.step\n").empty());
}

TEST(RawReader, BadInput) {
    const std::string tran = binaryTran(3);
    std::string badName = header("Transient Analysis", "real", 0, {{"time", "time"}, {"v(\xff)", "voltage"}});
    std::string lone = utf16("Title: x\nFlags: real\n");
    lone.replace(lone.size() - 4, 2, "\x00\xD8", 2);  // a high surrogate where the 'l' of real was
    std::string hugePoints = header("Transient Analysis", "real", 0, kTran);
    hugePoints.replace(hugePoints.find("No. Points: 0"), 13, "No. Points: 1000000000000000000");

    struct Case {
        std::string bytes;
        const char* message;
    };
    const Case cases[] = {
        {"", "t.raw: the file is empty"},
        {"time,v\n0,1\n", "t.raw: not a raw file: it does not begin with 'Title:'"},
        {std::string("\x89PNG\r\n\x1a\n\0\0", 10), "t.raw: not a raw file: it does not begin with 'Title:'"},
        {"Title: x\nPlotname: y\n", "t.raw: the header of the plot 'y' ends before its data (no 'Binary:' or 'Values:' line)"},
        {"Title: x\nthis is not a header\n", "t.raw:2: 'this is not a header' is not a header line ('Name: value')"},
        {"Title: x\nFlags: real wibble\n",
         "t.raw:2: unknown flag 'wibble' (known: real, complex, double, fastaccess, stepped, forward, log, padded)"},
        {"Title: x\nFlags: complex real\n", "t.raw:2: the flags real and complex exclude each other"},
        {"Title: x\nNo. Points: -1\n", "t.raw:2: 'No. Points' must be a whole number, not '-1'"},
        {"Title: x\nVariables:\n", "t.raw:2: 'No. Variables' must come before 'Variables:'"},
        {"Title: x\nNo. Variables: 0\nVariables:\n", "t.raw:3: the plot has no variables"},
        {"Title: x\nNo. Variables: 3\nVariables:\n 0 time time\n 1 v(a) voltage\nBinary:\n",
         "t.raw:6: the header announces 3 variables but lists 2"},
        {"Title: x\nNo. Variables: 2\nVariables:\n 0 time time\n 2 v(a) voltage\n", "t.raw:5: variable 1 has the index 2"},
        {"Title: x\nNo. Variables: 2\nVariables:\n 0 time time\n 1 v(a)\n",
         "t.raw:5: variable 1: '1 v(a)' is not a line 'INDEX NAME TYPE'"},
        {"Title: x\nNo. Variables: 2\nVariables:\n 0 V(OUT) voltage\n 1 v(out) voltage\n",
         "t.raw:5: two variables are called 'v(out)'"},
        {badName, "t.raw:9: the name of variable 1 is not valid UTF-8: 'v(\\xff)'"},
        {"Title: x\nNo. Variables: 1\nVariables:\n 0 a\x01z notype\n",
         "t.raw:4: the name of variable 0 holds a control character: 'a\\x01z'"},
        {"Title: x\nNo. Variables: 2\nVariables:\n 0 a notype\n", "t.raw: the file ends in the list of variables"},
        {"Title: x\nNo. Variables: 1\nVariables:\n 0 a notype\nBinary:\n", "t.raw: the header of the plot has no 'No. Points'"},
        {"Title: x\nNo. Points: 1\nBinary:\n", "t.raw: the header of the plot has no 'No. Variables'"},
        {tran.substr(0, tran.size() - 1),
         "t.raw: the data of the plot 'Transient Analysis' ends after 2 of the 3 points that its header announces"},
        {hugePoints, "t.raw: the data of the plot 'Transient Analysis' ends after 0 of the 1000000000000000000 points that its header announces"},
        {tran + std::string(24, '\0'), "t.raw: the header of the plot 'Transient Analysis' announces 3 points, but its data holds 4"},
        {tran + "abcde",
         "t.raw: the data of the plot 'Transient Analysis' is followed by 5 bytes that do not begin a plot (is the header's number of points wrong?)"},
        {header("Transient Analysis", "real", 2, kTran, "Values:") + "0 0 1 2\n1 1e-6 x 4\n",
         "t.raw:13: 'x' is not a number (variable 'v(out)')"},
        {header("Transient Analysis", "real", 2, kTran, "Values:") + "0 0 1 2\n",
         "t.raw: the data of the plot 'Transient Analysis' ends after 1 of the 2 points that its header announces"},
        {header("Transient Analysis", "real", 1, kTran, "Values:") + "0 0 1 2\n1 1e-6 3 4\n",
         "t.raw:13: the data of the plot 'Transient Analysis' holds more than the 1 point that its header announces"},
        {header("Transient Analysis", "real", 1, kTran, "Values:") + "0 0 1 2\n\n\nthe end\n",
         "t.raw:15: 'the' after the data of the plot 'Transient Analysis' does not begin a plot"},
        {header("Transient Analysis", "real", 1, kTran, "Values:") + "\n3 0 1 2\n",
         "t.raw:13: point 0 begins with '3', not its index"},
        {header("AC Analysis", "complex", 1, kTran, "Values:") + "0 1,0 2 3,4\n",
         "t.raw:12: '2' is not a complex value 're,im' (variable 'v(out)')"},
        {header("Transient Analysis", "real", 2, kTran, "Values:") + "0 0 1 2\n1 nan 3 4\n",
         "t.raw: the reference 'time' of the plot 'Transient Analysis' is not a finite number at point 1"},
        {lone, "t.raw:2: the header is not valid UTF-16 text"},
        // After binary data the lines of a file cannot be counted: the message names no line.
        {tran + "Title: y\nFlags: imaginary\n",
         "t.raw: unknown flag 'imaginary' (known: real, complex, double, fastaccess, stepped, forward, log, padded)"},
    };
    for (const Case& c : cases) EXPECT_EQ(failure(c.bytes), c.message) << c.bytes;
}

// Reading from a file goes through a buffer refilled a megabyte at a time: values that straddle
// its edges, text tokens among them, must come out as from memory.
TEST(RawReader, FilesReadInPieces) {
    const std::string dir = testing::TempDir();
    auto write = [&](const std::string& name, const std::string& bytes) {
        std::string path = dir + "wavex_raw_" + std::to_string(getpid()) + "_" + name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    };
    auto check = [&](const std::string& name, const std::string& bytes) {
        std::string path = write(name, bytes), error;
        std::vector<std::pair<uint64_t, uint64_t>> reports;
        auto fromFile = loadRaw(path, &error, [&](uint64_t done, uint64_t total) { reports.emplace_back(done, total); });
        std::remove(path.c_str());
        ASSERT_TRUE(fromFile) << error;
        auto fromMemory = load(bytes);
        ASSERT_EQ(fromFile->size(), fromMemory.size());
        for (size_t i = 0; i < fromMemory.size(); ++i) {
            EXPECT_EQ((*fromFile)[i].name, fromMemory[i].name);
            EXPECT_EQ(reals((*fromFile)[i].value), reals(fromMemory[i].value)) << name << " " << fromMemory[i].name;
            EXPECT_EQ(complexes((*fromFile)[i].value), complexes(fromMemory[i].value)) << name << " " << fromMemory[i].name;
        }
        ASSERT_FALSE(reports.empty());
        EXPECT_EQ(reports.back(), std::make_pair(uint64_t(bytes.size()), uint64_t(bytes.size())));
        for (size_t i = 1; i < reports.size(); ++i) EXPECT_GE(reports[i].first, reports[i - 1].first);
    };
    check("binary.raw", binaryTran(100000) + binaryTran(30001));

    std::string text = header("Transient Analysis", "real", 60000, kTran, "Values:");
    for (size_t k = 0; k < 60000; ++k)
        text += " " + std::to_string(k) + "\t" + std::to_string(k * 1e-6) + "\n\t" + std::to_string(k * 0.37) + "\n\t-1.25e-3\n\n";
    check("text.raw", text);

    std::string fast = utf16("Title: x\nPlotname: Transient Analysis\nFlags: real fastaccess\nNo. Variables: 3\n"
                             "No. Points: 300001\nVariables:\n\t0\ttime\ttime\n\t1\tV(a)\tvoltage\n\t2\tV(b)\tvoltage\nBinary:\n");
    for (int k = 0; k <= 300000; ++k) put(&fast, k * 1e-9);
    for (int v = 0; v < 2; ++v)
        for (int k = 0; k <= 300000; ++k) put(&fast, static_cast<float>(v ? -k : k));
    check("fast.raw", fast);

    std::string error;
    EXPECT_FALSE(loadRaw(dir + "no-such-file.raw", &error));
    EXPECT_EQ(error, "cannot read '" + dir + "no-such-file.raw': No such file or directory");
}

}  // namespace
}  // namespace wavex::io
