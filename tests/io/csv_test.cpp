#include "io/csv.hpp"

#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <limits>

#include <unistd.h>

namespace wavex::io {
namespace {

using test::complexes;
using test::reals;
using test::xs;

std::vector<NamedVector> load(std::string_view text) {
    std::string error;
    auto v = parseCsv(text, "t.csv", &error);
    EXPECT_TRUE(v.has_value()) << error;
    return v ? std::move(*v) : std::vector<NamedVector>{};
}

std::string failure(std::string_view text) {
    std::string error;
    auto v = parseCsv(text, "t.csv", &error);
    EXPECT_FALSE(v.has_value()) << text;
    return error;
}

std::vector<std::string> names(const std::vector<NamedVector>& vs) {
    std::vector<std::string> r;
    for (const NamedVector& v : vs) r.push_back(v.name);
    return r;
}

TEST(CsvLoader, ColumnsBecomeVectorsOverTheFirstColumn) {
    auto vs = load("time,out[V],h.re,h.im,gain\n0,1,1,2,10\n1e-6,-2.5,3,-4,20\n2e-6,4e-3,5,6,30\n");
    ASSERT_EQ(names(vs), (std::vector<std::string>{"time", "out", "h", "gain"}));

    const Vector& out = *vs[1].value;
    EXPECT_EQ(out.type, VD_REAL);
    EXPECT_EQ(out.name, "out");
    EXPECT_EQ(out.phys, units::Voltage);
    EXPECT_EQ(reals(vs[1].value), (std::vector<double>{1, -2.5, 4e-3}));
    EXPECT_EQ(xs(vs[1].value), (std::vector<double>{0, 1e-6, 2e-6}));
    EXPECT_EQ(out.ref.phys, units::Time);
    EXPECT_EQ(out.ref.name, "time");
    EXPECT_EQ(out.numDivisions(), 1u);
    EXPECT_TRUE(out.labels.empty());

    const Vector& h = *vs[2].value;
    EXPECT_EQ(h.type, VD_COMPLEX);
    EXPECT_EQ(h.phys, units::Number);
    EXPECT_EQ(complexes(vs[2].value), (std::vector<Complex>{{1, 2}, {3, -4}, {5, 6}}));

    EXPECT_EQ(reals(vs[3].value), (std::vector<double>{10, 20, 30}));
    EXPECT_EQ(vs[3].value->phys, units::Number);

    // The reference column is a vector too (the x-axis itself, without a reference of its own),
    // and every other vector shares one copy of the x-values.
    EXPECT_EQ(reals(vs[0].value), (std::vector<double>{0, 1e-6, 2e-6}));
    EXPECT_EQ(vs[0].value->phys, units::Time);
    EXPECT_FALSE(vs[0].value->ref.present());
    for (size_t i = 1; i < vs.size(); ++i) EXPECT_EQ(vs[i].value->ref.realValues, out.ref.realValues) << vs[i].name;
}

TEST(CsvLoader, Units) {
    struct Case {
        const char* header;
        PhysType x, y;
    };
    const Case cases[] = {
        {"time,y", units::Time, units::Number},
        {"Time,y[A]", units::Time, units::Current},
        {"frequency,y[V^2/Hz]", units::Frequency, 15},
        {"FREQ,y[Hz]", units::Frequency, units::Frequency},
        {"f,y[ohm]", units::Number, 6},
        {"time[Hz],y[ ]", units::Frequency, units::Number},
        {"vin[V],y[Ω]", units::Voltage, 6},
        {"x , y [V] ", units::Number, units::Voltage},
    };
    for (const Case& c : cases) {
        auto vs = load(std::string(c.header) + "\n1,2\n");
        ASSERT_EQ(vs.size(), 2u) << c.header;
        EXPECT_EQ(vs[1].value->ref.phys, c.x) << c.header;
        EXPECT_EQ(vs[1].value->phys, c.y) << c.header;
        EXPECT_EQ(vs[1].name, "y") << c.header;
    }
    // The unit of a complex pair may sit on either part.
    EXPECT_EQ(load("f,h.re,h.im[V]\n1,2,3\n")[1].value->phys, units::Voltage);
    EXPECT_EQ(load("f,H.Re[A],H.Im[A]\n1,2,3\n")[1].value->phys, units::Current);
}

TEST(CsvLoader, DivisionsAndLabels) {
    auto vs = load(
        "# simulated by hand\n"
        "time,out\n"
        "# run: R=1k\n"
        "0,1\n"
        "1,2\n"
        "\n"
        "\n"
        "# run: R=2k\n"
        "# a comment between the label and its rows\n"
        "0,3\n"
        "# run: R=3k\n"  // a label after rows starts a new division without a blank line
        "0,5\n"
        "1,6\n"
        "2,7\n"
        "\n\n");
    const Vector& out = *vs[1].value;
    EXPECT_EQ(reals(vs[1].value), (std::vector<double>{1, 2, 3, 5, 6, 7}));
    EXPECT_EQ(xs(vs[1].value), (std::vector<double>{0, 1, 0, 0, 1, 2}));
    ASSERT_EQ(out.numDivisions(), 3u);
    EXPECT_EQ(out.divisionLength(0), 2u);
    EXPECT_EQ(out.divisionLength(1), 1u);
    EXPECT_EQ(out.divisionLength(2), 3u);
    EXPECT_EQ(out.labels, (DivisionLabelArray{"R=1k", "R=2k", "R=3k"}));
    EXPECT_EQ(vs[0].value->labels, out.labels);
    EXPECT_EQ(vs[0].value->divisionStarts, out.divisionStarts);

    // Unlabelled divisions keep no label; a mix keeps the labels it has.
    auto plain = load("x,y\n1,2\n\n1,3\n");
    EXPECT_EQ(plain[1].value->numDivisions(), 2u);
    EXPECT_TRUE(plain[1].value->labels.empty());
    auto mixed = load("x,y\n1,2\n\n# run: second\n1,3\n");
    EXPECT_EQ(mixed[1].value->labels, (DivisionLabelArray{std::nullopt, "second"}));
    // One labelled run is one division with its label.
    auto one = load("# run: only\nx,y\n1,2\n");
    EXPECT_EQ(one[1].value->numDivisions(), 1u);
    EXPECT_EQ(one[1].value->labels, (DivisionLabelArray{"only"}));
}

TEST(CsvLoader, Layout) {
    // Byte-order mark, CRLF, quoted names with commas and quotes, blank lines before the header,
    // spaces around cells, quoted numbers, signs and special values.
    auto vs = load("\xEF\xBB\xBF\r\n\"time\",\"v(a,b)[V]\",\"say \"\"hi\"\"\"\r\n 0 , \"+1.5\" ,-inf\r\n1,nan,1e308\r\n");
    ASSERT_EQ(names(vs), (std::vector<std::string>{"time", "v(a,b)", "say \"hi\""}));
    EXPECT_EQ(vs[1].value->phys, units::Voltage);
    EXPECT_EQ(vs[1].value->real[0], 1.5);
    EXPECT_TRUE(std::isnan(vs[1].value->real[1]));
    EXPECT_EQ(reals(vs[2].value), (std::vector<double>{-std::numeric_limits<double>::infinity(), 1e308}));
    // A file of one column loads its reference alone; no final newline is needed.
    auto single = load("time\n0\n1");
    ASSERT_EQ(single.size(), 1u);
    EXPECT_EQ(reals(single[0].value), (std::vector<double>{0, 1}));
    // Numbers read back exactly.
    EXPECT_EQ(load("x,y\n0,0.1\n")[1].value->real[0], 0.1);
    EXPECT_EQ(load("x,y\n0,4.9406564584124654e-324\n")[1].value->real[0], 4.9406564584124654e-324);
}

TEST(CsvLoader, Messages) {
    struct Case {
        const char* text;
        const char* message;
    };
    const Case cases[] = {
        {"", "t.csv: the file is empty"},
        {"\n  \n# only comments\n", "t.csv: no header line naming the columns"},
        {"time,out\n", "t.csv:1: no rows after the header"},
        {"time,out", "t.csv:1: no rows after the header"},
        {"0,1\n1,2\n", "t.csv:1: the first line must name the columns, but it holds only numbers"},
        {"x,y\n1,2\n3\n", "t.csv:3: 1 value, but the header names 2 columns"},
        {"x,y\n1,2,3\n", "t.csv:2: 3 values, but the header names 2 columns"},
        {"x,y\n1,\n", "t.csv:2: no value in column 'y'"},
        {"x,y[V]\n1,2\n1,abc\n", "t.csv:3: 'abc' in column 'y[V]' is not a number"},
        {"x,y\n1,1k\n", "t.csv:2: '1k' in column 'y' is not a number"},
        {"x,y\n1,1e999\n", "t.csv:2: '1e999' in column 'y' is beyond the range of a double"},
        {"x,y\n1,\"2\n", "t.csv:2: '\"2' in column 'y' is not a number"},
        {"x,y[furlong]\n1,2\n", "t.csv:1: unknown unit 'furlong' in column 'y[furlong]'"},
        {"x,y[V]z\n1,2\n", "t.csv:1: column 'y[V]z': the unit in brackets must end the name, as in out[V]"},
        {"x,,z\n1,2,3\n", "t.csv:1: column 2 has no name"},
        {"x,[V]\n1,2\n", "t.csv:1: column 2 has no name"},
        {"x,\"y\n1,2\n", "t.csv:1: a quote is not closed in \"y"},
        {"x,\"y\"z\n1,2\n", "t.csv:1: text after the closing quote in \"y\"z"},
        {"x,y\"z\n1,2\n", "t.csv:1: a quote inside the name y\"z (quote the whole name)"},
        {"x,y,Y\n1,2,3\n", "t.csv:1: two columns are called 'Y'"},
        {"x,h,h.re,h.im\n1,2,3,4\n", "t.csv:1: two columns are called 'h'"},
        {"x,h.re,h.re,h.im\n1,2,3,4\n", "t.csv:1: two columns are called 'h.re'"},
        {"x,h.re\n1,2\n", "t.csv:1: column 'h.re' has no matching 'h.im'"},
        {"x,h.im[V]\n1,2\n", "t.csv:1: column 'h.im[V]' has no matching 'h.re'"},
        {"x,h.re[V],h.im[A]\n1,2,3\n", "t.csv:1: columns 'h.re[V]' and 'h.im[A]' have different units"},
        {"x.re,x.im,y\n1,2,3\n",
         "t.csv:1: the first column 'x.re' is the reference of the others and must be real, not part of a complex pair"},
        {"time,y\n0,1\nnan,2\n", "t.csv:3: the reference 'time' must be a finite number, not 'nan'"},
        {"x,y\n# run: A\n\n# run: B\n1,2\n", "t.csv:2: run 'A' has no rows"},
        {"x,y\n1,2\n# run: last\n", "t.csv:3: run 'last' has no rows"},
        {"x,y\n1,2\n1,0123456789012345678901234567890123456789xyz\n",
         "t.csv:3: '0123456789012345678901234567890123456789...' in column 'y' is not a number"},
    };
    for (const Case& c : cases) EXPECT_EQ(failure(c.text), c.message) << c.text;
}

TEST(CsvLoader, Files) {
    std::string error;
    EXPECT_FALSE(loadCsv("/nonexistent/x.csv", &error));
    EXPECT_EQ(error, "cannot read '/nonexistent/x.csv': No such file or directory");
    EXPECT_FALSE(loadCsv("/", &error));
    EXPECT_EQ(error, "cannot read '/': Is a directory");

    std::string path = testing::TempDir() + "wavex_csv_test_" + std::to_string(getpid()) + ".csv";
    std::ofstream(path) << "freq,g[V]\n1,2\n10,x\n";
    EXPECT_FALSE(loadCsv(path, &error));
    EXPECT_EQ(error, path + ":3: 'x' in column 'g[V]' is not a number");
    std::remove(path.c_str());
}

}  // namespace
}  // namespace wavex::io
