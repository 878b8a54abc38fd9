// The parts selector functions as scripts use them: journals applied to files, the search rows of
// selector lines, and the selector file compiled from the bundled example databases.
#include "support/parts_database.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::strings;

// A script list of strings.
std::string list(const std::vector<std::string>& items) {
    std::string s = "[";
    for (size_t i = 0; i < items.size(); ++i) s += (i ? ", '" : "'") + items[i] + "'";
    return s + "]";
}

class PartsFiles : public testing::Test {
protected:
    std::string write(const std::string& name, const std::string& text) { return scratch_.write(name, text); }
    std::vector<std::string> readLines(const std::string& name) {
        std::ifstream in(dir_ + name);
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    static std::vector<std::string> sorted(std::vector<std::string> v) {
        std::sort(v.begin(), v.end());
        return v;
    }

    test::ScratchDir scratch_;
    const std::string dir_ = scratch_.path();
    Session wx;
};

// ---- ApplyJournal --------------------------------------------------------------------------------

TEST_F(PartsFiles, ApplyJournalWritesTheResultAndCountsIt) {
    write("models.txt", "1N4148;;D;Diodes;diodes.lib\n2N2222;;NPN;Bipolar\n\nBC547;;NPN;Bipolar\n");
    write("journal.txt",
          "1N4148;;;Diodes|Switching;;;;;;edit\n"
          "BC547;;;;;;;;;delete\n"
          "1N5819;;D;Diodes|Schottky;;;;;;add\n");
    EXPECT_EQ(reals(wx("ApplyJournal(" + list({dir_ + "out.txt", dir_ + "models.txt", dir_ + "journal.txt"}) + ", 9.7)")),
              std::vector<double>{3});
    EXPECT_EQ(sorted(readLines("out.txt")), (std::vector<std::string>{
                                                "1N4148;;D;Diodes|Switching;diodes.lib;",
                                                "1N5819;;D;Diodes|Schottky;;;;;;;",
                                                "2N2222;;NPN;Bipolar",
                                            }));
}

TEST_F(PartsFiles, ApplyJournalInPlace) {
    std::string db = write("db.txt", "A;1\nB;2\n");
    write("journal.txt", "B;;delete\n");
    EXPECT_EQ(reals(wx("ApplyJournal(" + list({db, db, dir_ + "journal.txt"}) + ", 2)")), std::vector<double>{1});
    EXPECT_EQ(readLines("db.txt"), std::vector<std::string>{"A;1"});
}

TEST_F(PartsFiles, ApplyJournalBadFiles) {
    write("journal.txt", "A;x;add\n");
    // A missing database reads as empty: only the additions are written.
    EXPECT_EQ(reals(wx("ApplyJournal(" + list({dir_ + "out.txt", dir_ + "missing.txt", dir_ + "journal.txt"}) + ", 2)")),
              std::vector<double>{1});
    EXPECT_EQ(readLines("out.txt"), std::vector<std::string>{"A;x;;"});
    // Too short a list.
    EXPECT_EQ(reals(wx("ApplyJournal(" + list({dir_ + "out.txt", dir_ + "journal.txt"}) + ", 2)")), std::vector<double>{-1});
    // An output that cannot be written: no count, no message.
    for (const std::string& out : {dir_ + "no/such/dir.txt", dir_, std::string()})
        wx.check({{("ApplyJournal(" + list({out, dir_ + "journal.txt", dir_ + "journal.txt"}) + ", 2)").c_str(), "[]"}});
}

// ---- ExtractPartsTreeNameList --------------------------------------------------------------------

TEST(ExtractPartsTreeNameList, Rows) {
    Session wx;
    const std::vector<std::string> lines = {
        "[1]Diodes|[2]Zener;<BZX84;;D;;;;;;BZX84C, BZX84-A ,>;ps_model;",
        "Diodes;<bzx84;dup>;ps_model;",                  // the same name in another case: skipped
        "Misc;<;no name>;generic;",                       // no name: skipped
        "[x;<R1;<a;b>;;;;;;;R_ALT>;PS_MODEL",             // "[" without "]" stays
        "Passives|[3;<C1>;cap;",
        "",
        "A||B;<L1>",                                      // no kind field
    };
    EXPECT_EQ(strings(wx("ExtractPartsTreeNameList(" + list(lines) + ")")), (std::vector<std::string>{
                                            "BZX84;Diodes|Zener|;0;model",
                                            "BZX84C;Diodes|Zener|;0;model",
                                            "BZX84-A;Diodes|Zener|;0;model",
                                            "R1;[x|;3;model",
                                            "R_ALT;[x|;3;model",
                                            "C1;Passives|[3|;4;generic",
                                            "L1;A||B|;6;generic",
                                        }));
    EXPECT_EQ(strings(wx("ExtractPartsTreeNameList(Parse(''))")), std::vector<std::string>{});
}

// ---- _BuildPartSelectorData ----------------------------------------------------------------------

const std::vector<std::string> kExampleFiles = {"user_models.txt",   "categories.txt", "category_journal.txt",
                                                "symbol_journal.txt", "models.txt",     "symbols.txt"};

class SelectorBuild : public PartsFiles {
protected:
    // The call on the bundled example, writing `out` in the test's folder.
    std::string build(const std::string& out, const std::string& more = "") {
        std::vector<std::string> files = {dir_ + out};
        for (const std::string& f : kExampleFiles) files.push_back(std::string(WAVEX_SOURCE_DIR) + "/examples/parts/" + f);
        return "_BuildPartSelectorData(" + list(files) + more + ")";
    }
};

// The selector file compiled from the bundled example.
const std::vector<std::string> kBundledSelector = {
    "* All User Models *;<2N2222;;NPN;* All User Models *;bjt.lib;NPN 40 V 800 mA;;;PN2222;>;ps_model;",
    "* All User Models *;<MYDIODE;*;D;* All User Models *;user.lib;Measured diode;>;ps_model;",
    "* Recently Added Models *;<MYDIODE;*;D;* Recently Added Models *;user.lib;Measured diode;>;ps_model;",
    "*** Unassigned ***|D;<BAV99;;D;;diodes.lib;Dual switching diode>;ps_model;",
    "*** Unknown ***;<MYDIODE;*;D;*** Unknown ***;user.lib;Measured diode>;ps_model;",
    "[0]Passives;<Capacitor;Capacitor;;[0]Passives;cap;;;;C,Cap>;cap;",
    "[0]Passives;<Inductor;Coupled inductor;;[0]Passives;ind;>;ind;",
    "[0]Passives;<Resistor;Resistor;;[0]Passives;res>;res;",
    "[1]Diodes;<Diode;Diode without a model;D;[1]Diodes;diode>;diode;",
    "[1]Diodes|Rectifier|General;<1N4007;;D;[1]Diodes|Rectifier|General;diodes.lib;Rectifier 1000 V 1 A;>;ps_model;",
    "[1]Diodes|Schottky;<1N5819;;D;[1]Diodes|Schottky;diodes.lib;Schottky 40 V 1 A;;;;;>;ps_model;",
    "[1]Diodes|Switching;<1N4148;;D;[1]Diodes|Switching;diodes.lib;Switching diode 100 V 200 mA;;;1N914,1N4448>;ps_model;",
    "[1]Diodes|Zener;<BZX84C5V1;;D;[1]Diodes|Zener;zener.lib;<Zener 5.1 V; 350 mW>>;ps_model;",
    "[2]Transistors|Bipolar;<2N2222;;NPN;[2]Transistors|Bipolar;bjt.lib;NPN 40 V 800 mA;;;PN2222>;ps_model;",
    "[2]Transistors|Bipolar;<BC847;;NPN;[2]Transistors|Bipolar;bjt.lib;NPN 45 V 100 mA;>;ps_model;",
    "[3]Amplifiers;<OPA_X;;OPAMP;[3]Amplifiers;opamps.lib;General purpose op-amp>;ps_model;",
    "[5]Switches;<Switch;Ideal switch;;[5]Switches;sw;>;sw;",
};

TEST_F(SelectorBuild, BundledExample) {
    EXPECT_EQ(reals(wx(build("selector.txt"))), std::vector<double>{17});
    EXPECT_EQ(readLines("selector.txt"), kBundledSelector);
}

TEST_F(SelectorBuild, CompressedAndFiltered) {
    EXPECT_EQ(reals(wx(build("selector.txt", ", 'CompressModels', 'd|NPN'"))), std::vector<double>{10});
    // Types D and NPN only, the library models of each one generic entry; the other lines as bundled.
    std::vector<std::string> want;
    for (int i : {0, 1, 2, 5, 6, 7, 8}) want.push_back(kBundledSelector[i]);
    want.push_back("[1]Diodes|Rectifier|General;<D Model;;D;[1]Diodes|Rectifier|General;;Select from Model Library...;>;ps_model_sel;");
    want.push_back("[2]Transistors|Bipolar;<NPN Model;;NPN;[2]Transistors|Bipolar;;Select from Model Library...;>;ps_model_sel;");
    want.push_back(kBundledSelector[16]);
    EXPECT_EQ(readLines("selector.txt"), want);
    // The selector's search reads the file back.
    std::vector<std::string> rows = strings(wx("ExtractPartsTreeNameList(" + list(readLines("selector.txt")) + ")"));
    EXPECT_EQ(rows.size(), 12u);  // MYDIODE once; PN2222, C and Cap as alternative names
    EXPECT_NE(std::find(rows.begin(), rows.end(), "D Model;Diodes|Rectifier|General|;7;generic"), rows.end());
}

TEST_F(SelectorBuild, NewModelLifetimeDecidesWhatIsRecent) {
    struct Reset {
        ~Reset() { setOption("NewModelLifetime", "7"); }
    } reset;
    // 2N2222 was added in 2017: recent for a lifetime of 100000 days, not for the default.
    ASSERT_EQ(setOption("NewModelLifetime", "100000"), "");
    EXPECT_EQ(reals(wx(build("selector.txt"))), std::vector<double>{18});
    EXPECT_EQ(readLines("selector.txt")[2],
              "* Recently Added Models *;<2N2222;;NPN;* Recently Added Models *;bjt.lib;NPN 40 V 800 mA;;;PN2222;>;ps_model;");
}

TEST_F(SelectorBuild, RulesOnSmallDatabases) {
    std::string now = std::to_string(time(nullptr));
    write("index.txt", "NEW;" + now + "\nNEW;" + now + "\nGONE;" + now + "\nOLD;1\n");
    write("models.txt",
          "NEW;;D;Diodes\n"
          "OLD;;D;[4]Diodes|[1]** hidden ** old\n"  // hidden below an ordering prefix, shown as a user model
          "GONE;;D;Diodes\n"
          "PLAIN;;;\n");                                // no category, no type
    write("cj.txt", "GONE;;;;;;;;;delete\n");
    write("symbols.txt", "S1;;;** HIDDEN **;sym\nS2;;;;sym2\n");
    std::vector<std::string> files = {dir_ + "out.txt",    dir_ + "index.txt",  dir_ + "missing.txt", dir_ + "cj.txt",
                                      dir_ + "none.txt",   dir_ + "models.txt", dir_ + "symbols.txt"};
    EXPECT_EQ(reals(wx("_BuildPartSelectorData(" + list(files) + ")")), std::vector<double>{6});
    EXPECT_EQ(readLines("out.txt"), (std::vector<std::string>{
                                        "* All User Models *;<NEW;;D;* All User Models *;>;ps_model;",
                                        "* All User Models *;<OLD;;D;* All User Models *;>;ps_model;",
                                        "* Recently Added Models *;<NEW;;D;* Recently Added Models *;>;ps_model;",
                                        "*** Unassigned ***;<PLAIN;;;>;ps_model;",
                                        "*** Unassigned ***;<S2;;;;sym2>;sym2;",
                                        "Diodes;<NEW;;D;Diodes>;ps_model;",
                                    }));
}

TEST_F(SelectorBuild, BadArguments) {
    EXPECT_EQ(reals(wx("_BuildPartSelectorData(['a', 'b', 'c', 'd', 'e', 'f'])")), std::vector<double>{-1});
    wx.check({{build("no/such/dir/selector.txt").c_str(), "[]"}});
    // Nothing to read: an empty file and a count of 0.
    EXPECT_EQ(reals(wx("_BuildPartSelectorData(" + list({dir_ + "out.txt", "", "", "", "", "", ""}) + ")")),
              std::vector<double>{0});
    EXPECT_EQ(readLines("out.txt"), std::vector<std::string>{});
}

}  // namespace
}  // namespace wavex
