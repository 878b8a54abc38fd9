// Real simulations: ngspice runs an RC filter (a transient, an AC sweep and three runs of a control
// loop) and a distorting source, writes raw files in binary and text form and prints the same
// vectors with wrdata, and measures crossings, timing and distortion itself; what the raw reader
// loads, and XFromY and the measurements find in it, must agree.
#include "io/load.hpp"

#include "test_util.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace wavex {
namespace {

// The measurements are .meas lines, which ngspice evaluates after each run of the transient and
// prints with NGSPICE_MEAS_PRECISION digits.
constexpr const char* kNetlist = R"(RC low-pass
V1 in 0 PULSE(0 1 10u 1u 1u 200u 500u) AC 1
R1 in out 1k
C1 out 0 100n
V2 s 0 SIN(0 1 10k)
B1 d 0 V=v(s)+0.1*v(s)*v(s)+0.05*v(s)*v(s)*v(s)
R2 d 0 1k
.tran 1u 600u
.meas tran rise when v(out)=0.5 rise=1
.meas tran fall when v(out)=0.5 fall=1
.meas tran trise trig v(out) val=0.1 rise=1 targ v(out) val=0.5 rise=1
.meas tran tdelay trig v(in) val=0.5 rise=1 targ v(out) val=0.5 rise=1
.four 10k v(d)
.control
set numdgt=17
set wr_singlescale
run
write DIR/tran.raw v(in) v(out) i(v1)
write DIR/four.raw v(d)
wrdata DIR/tran.txt v(in) v(out) i(v1)
set filetype=ascii
write DIR/tran_ascii.raw v(in) v(out) i(v1)
ac dec 10 10 1meg
write DIR/ac_ascii.raw v(out) i(v1)
set filetype=binary
write DIR/ac.raw v(out) i(v1)
wrdata DIR/ac.txt v(out) i(v1)
set appendwrite
foreach r 1k 500 2k
  alter r1 $r
  run
  write DIR/runs.raw v(out)
  wrdata DIR/runs.txt v(out)
end
.endc
.end
)";

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// The rows of a wrdata file: the scale, then each vector's value (real and imaginary part when
// complex).
std::vector<std::vector<double>> readColumns(const std::string& path) {
    std::vector<std::vector<double>> rows;
    std::istringstream in(readFile(path));
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::vector<double> row;
        double v;
        while (fields >> v) row.push_back(v);
        if (!row.empty()) rows.push_back(row);
    }
    return rows;
}

class Ngspice : public testing::Test {
protected:
    static void SetUpTestSuite() {
        dir_ = new std::string(testing::TempDir() + "wavex_ngspice_" + std::to_string(getpid()));
        ::mkdir(dir_->c_str(), 0700);
        std::string netlist = kNetlist;
        for (size_t at; (at = netlist.find("DIR")) != std::string::npos;) netlist.replace(at, 3, *dir_);
        std::ofstream(*dir_ + "/rc.cir") << netlist;

        std::string out = *dir_ + "/stdout.txt", cir = *dir_ + "/rc.cir";
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        const char* argv[] = {"ngspice", "-b", cir.c_str(), nullptr};
        std::vector<char*> env{const_cast<char*>("NGSPICE_MEAS_PRECISION=17")};
        for (char** e = environ; *e; ++e) env.push_back(*e);
        env.push_back(nullptr);
        pid_t pid;
        int rc = posix_spawnp(&pid, "ngspice", &actions, nullptr, const_cast<char**>(argv), env.data());
        posix_spawn_file_actions_destroy(&actions);
        int status = 0;
        if (rc == 0) waitpid(pid, &status, 0);
        ran_ = rc == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;

        // The measurements, "rise                =   7.98158240927082386e-05", one per run, and
        // the distortion of the first run, "  No. Harmonics: 10, THD: 4.96452 %, ...".
        measures_ = new std::map<std::string, std::vector<double>>;
        std::istringstream lines(readFile(out));
        std::string line;
        while (std::getline(lines, line)) {
            std::istringstream fields(line);
            std::string name, eq;
            double value;
            if (fields >> name >> eq >> value && eq == "=") (*measures_)[name].push_back(value);
            const size_t thd = line.find("THD:");
            if (thd != std::string::npos) (*measures_)["thd"].push_back(std::stod(line.substr(thd + 4)));
        }
    }
    static void TearDownTestSuite() {
        for (const char* f : {"rc.cir", "stdout.txt", "tran.raw", "tran.txt", "tran_ascii.raw", "ac.raw", "ac_ascii.raw",
                              "ac.txt", "runs.raw", "runs.txt", "four.raw"})
            std::remove((*dir_ + "/" + f).c_str());
        ::rmdir(dir_->c_str());
        delete dir_;
        delete measures_;
    }
    void SetUp() override {
        ASSERT_TRUE(ran_) << "ngspice did not run the test circuit (scripts/setup.sh installs it)";
    }

    static std::vector<io::NamedVector> load(const std::string& file) {
        std::string error;
        auto vs = io::loadData(*dir_ + "/" + file, &error);
        EXPECT_TRUE(vs) << error;
        return vs ? std::move(*vs) : std::vector<io::NamedVector>{};
    }
    static double measure(const std::string& name, size_t k = 0) {
        auto it = measures_->find(name);
        if (it == measures_->end() || k >= it->second.size()) {
            ADD_FAILURE() << "ngspice printed no " << name;
            return NAN;
        }
        return it->second[k];
    }
    static std::string path(const std::string& file) { return *dir_ + "/" + file; }

    static std::string* dir_;
    static std::map<std::string, std::vector<double>>* measures_;
    static bool ran_;
};

std::string* Ngspice::dir_;
std::map<std::string, std::vector<double>>* Ngspice::measures_;
bool Ngspice::ran_;

// Each point as wrdata prints it: the scale, then every vector's value (real and imaginary part
// when complex). Binary data are the doubles themselves; text data have 16 significant digits.
TEST_F(Ngspice, ValuesAreWhatNgspicePrints) {
    struct Case { const char* file; const char* printed; size_t vectors; PhysType scale; };
    for (const Case& c : {Case{"tran.raw", "tran.txt", 4, units::Time}, Case{"tran_ascii.raw", "tran.txt", 4, units::Time},
                          Case{"ac.raw", "ac.txt", 3, units::Frequency}, Case{"ac_ascii.raw", "ac.txt", 3, units::Frequency}}) {
        SCOPED_TRACE(c.file);
        const auto rows = readColumns(path(c.printed));
        auto vs = load(c.file);
        ASSERT_EQ(vs.size(), c.vectors);
        EXPECT_EQ(vs[0].value->phys, c.scale);
        EXPECT_EQ(vs.back().value->phys, units::Current);
        EXPECT_EQ(vs.back().value->ref.phys, c.scale);
        EXPECT_EQ(vs.back().value->ref.type, VD_REAL);  // an AC sweep's frequencies too
        EXPECT_EQ(vs[c.vectors - 2].name, "v(out)");
        EXPECT_EQ(vs[c.vectors - 2].value->phys, units::Voltage);
        ASSERT_EQ(vs[0].value->size(), rows.size());
        const double tolerance = std::string(c.file).find("ascii") == std::string::npos ? 0 : 1e-15;
        for (size_t i = 0; i < rows.size(); ++i) {
            std::vector<double> got{vs[0].value->real[i]};
            for (size_t k = 1; k < vs.size(); ++k) {
                const Vector& v = *vs[k].value;
                if (v.type == VD_COMPLEX) got.insert(got.end(), {v.cplx[i].real(), v.cplx[i].imag()});
                else got.push_back(v.real[i]);
            }
            ASSERT_EQ(got.size(), rows[i].size()) << i;
            for (size_t k = 0; k < got.size(); ++k) ASSERT_NEAR(got[k], rows[i][k], tolerance * std::fabs(rows[i][k])) << i;
        }
    }
    EXPECT_EQ(load("ac.raw")[1].value->type, VD_COMPLEX);
}

// The names stay as ngspice wrote them, and the language's probe forms reach them.
TEST_F(Ngspice, ProbesReachTheVectors) {
    test::Session wx;
    auto vs = load("tran.raw");
    for (const io::NamedVector& v : vs) wx.wx.setVector(v.name, v.value);
    for (const char* expression : {"I(V1)", "i(v1)", "Vec('i(v1)')"}) {
        VectorPtr r = wx(expression);
        ASSERT_TRUE(r) << expression << ": " << wx.messages();
        EXPECT_EQ(test::reals(r), test::reals(vs[3].value)) << expression;
    }
    VectorPtr r = wx("V(in, out)");
    ASSERT_TRUE(r) << wx.messages();
    EXPECT_EQ(r->real[300], vs[1].value->real[300] - vs[2].value->real[300]);
    EXPECT_EQ(r->phys, units::Voltage);
}

TEST_F(Ngspice, ControlLoopRunsAreDivisions) {
    auto vs = load("runs.raw");
    ASSERT_EQ(vs.size(), 2u);
    const Vector& out = *vs[1].value;
    ASSERT_EQ(out.numDivisions(), 3u);
    for (size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(out.ref.real()[out.divisionStart(k)], 0) << "run " << k << " starts at time 0";
        EXPECT_GT(out.divisionLength(k), 100u);
    }
    // wrdata appended the runs one after another.
    const auto rows = readColumns(path("runs.txt"));
    ASSERT_EQ(out.size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        ASSERT_EQ(out.ref.real()[i], rows[i][0]) << i;
        ASSERT_EQ(out.real[i], rows[i][1]) << i;
    }
}

// XFromY with linear interpolation finds the crossings ngspice's meas finds, on every run.
TEST_F(Ngspice, CrossingsAgreeWithMeas) {
    if (!functionTable().find("XFromY")) GTEST_SKIP() << "XFromY is not registered yet";
    test::Session wx;
    for (const io::NamedVector& v : load("tran.raw")) wx.wx.setVector(v.name, v.value);
    struct Case {
        const char* expression;
        const char* measure;
    };
    for (const Case& c : {Case{"XFromY(v(out), 0.5, 1, 1)", "rise"}, Case{"XFromY(V(out), 0.5, 1, -1)", "fall"}}) {
        VectorPtr r = wx(c.expression);
        ASSERT_TRUE(r) << wx.messages();
        ASSERT_GE(r->size(), 1u) << c.expression;
        const double first = *std::min_element(r->real.begin(), r->real.end());
        EXPECT_NEAR(first, measure(c.measure), 1e-9 * measure(c.measure)) << c.expression;
    }

    // The runs: ngspice measured each after the first transient.
    for (const io::NamedVector& v : load("runs.raw")) wx.wx.setVector(v.name, v.value);
    VectorPtr r = wx("XFromY(v(out), 0.5, 1, 1)");
    ASSERT_TRUE(r) << wx.messages();
    ASSERT_EQ(r->numDivisions(), 3u);
    for (size_t k = 0; k < 3; ++k) {
        ASSERT_GE(r->divisionLength(k), 1u);
        const double* crossings = r->real.data() + r->divisionStart(k);
        const double first = *std::min_element(crossings, crossings + r->divisionLength(k));
        EXPECT_NEAR(first, measure("rise", k + 1), 1e-9 * measure("rise", k + 1)) << "run " << k;
    }
}

// The timing and distortion measurements agree with ngspice's own: a rise time and a delay by
// TRIG/TARG (linear crossings both; ngspice prints them to 7 digits), and THD by its fourier
// analysis, which interpolates the last period linearly on 200 points where THD takes 1024
// quadratic ones: agreement to 0.3 %.
TEST_F(Ngspice, MeasurementsAgreeWithMeas) {
    test::Session wx;
    for (const char* file : {"tran.raw", "four.raw"})
        for (const io::NamedVector& v : load(file)) wx.wx.setVector(v.name, v.value);
    struct Case {
        const char* expression;
        const char* measure;
        double tolerance;
    };
    for (const Case& c : {Case{"RiseTime(v(out), [10, 50], [0, 1])", "trise", 1e-6},
                          Case{"Delay(v(in), v(out), 0.5, 0.5)", "tdelay", 1e-6}, Case{"THD(v(d), 10k)", "thd", 3e-3}}) {
        VectorPtr r = wx(c.expression);
        ASSERT_TRUE(r && r->size() >= 1) << c.expression << ": " << wx.messages();
        EXPECT_NEAR(r->real[0], measure(c.measure), c.tolerance * measure(c.measure)) << c.expression;
    }
}

}  // namespace
}  // namespace wavex
