// The parts databases: line splitting, records, reading with the category filter, the table's
// order and growth, and journal semantics.
#include "support/parts_database.hpp"
#include "support/text.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace wavex {
namespace {

std::string joined(const std::vector<std::string_view>& fields) {
    std::string s;
    for (size_t i = 0; i < fields.size(); ++i) s.append(i ? "|" : "").append(fields[i]);
    return s;
}

// Every line of a table, in table order.
std::vector<std::string> lines(const PartsDatabase& db) {
    std::vector<std::string> out;
    db.forEach([&](const PartsRecord& r) { out.push_back(r.line()); });
    return out;
}

std::vector<std::string> sortedLines(const PartsDatabase& db) {
    std::vector<std::string> out = lines(db);
    std::sort(out.begin(), out.end());
    return out;
}

PartsDatabase table(std::string_view text, const NameFilter* filter = nullptr) {
    PartsDatabase db;
    db.readText(text, filter);
    return db;
}

// The quoting itself is checked in tests/support/split_test.cpp; here the separator, the marks
// and the trailing ";".
TEST(PartsLine, Splitting) {
    struct Case { const char* line; const char* fields; size_t count; };
    const Case cases[] = {
        {"a;b;c", "a|b|c", 3},
        {"a;<b;c>;d", "a|b;c|d", 3},
        {"a;b;", "a|b", 2},               // a rebuilt line reads back with its fields
        {"a;;b;;", "a||b|", 4},
        {"a;b>;c", "a|b>|c", 3},
        {"", "", 1},
    };
    std::vector<std::string_view> fields;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(splitPartsLine(c.line, fields), c.count);
        EXPECT_EQ(joined(fields), c.fields);
    }
}

TEST(PartsRecord, FieldsAndRebuiltLines) {
    PartsRecord r("<K1>;<a;b>;c");
    EXPECT_EQ(r.line(), "<K1>;<a;b>;c");  // kept as read until a field is written
    EXPECT_EQ(r.key(), "K1");
    EXPECT_EQ(r.fieldCount(), 3u);
    EXPECT_EQ(r.field(1), "a;b");
    EXPECT_EQ(r.field(3), "");
    EXPECT_EQ(r.field(-1), "");

    r.setField(2, "x");
    EXPECT_EQ(r.line(), "K1;a;b;x;");  // every field followed by ";", bare
    EXPECT_EQ(r.field(1), "a;b");      // the record keeps its fields
    r.setField(5, "y");
    EXPECT_EQ(r.line(), "K1;a;b;x;;;y;");
    EXPECT_EQ(r.fieldCount(), 6u);
    EXPECT_EQ(PartsRecord(r.line()).fieldCount(), 7u);  // read back, "a;b" is two fields
}

TEST(PartsDatabase, ReadsLinesSkippingBlankOnes) {
    PartsDatabase db = table("A;1\r\n\r\n   \n\t\nB;2\nA;3");
    EXPECT_EQ(db.size(), 3u);
    EXPECT_EQ(db.find("a")->line(), "A;3");  // the record read last, whatever the case
    EXPECT_EQ(db.find("B")->line(), "B;2");   // "\r" of the line end dropped
    EXPECT_EQ(db.find("C"), nullptr);
}

TEST(PartsDatabase, FilterOnColumnTwo) {
    const char* text =
        "m1;;D;cat\n"
        "m2;;npn;cat\n"
        "m3;;PNP;cat\n"
        "m4;;;cat\n"  // an empty type always passes
        "m5";         // so does a line without one
    NameFilter filter(" d | NPN ||");
    EXPECT_EQ(sortedLines(table(text, &filter)), (std::vector<std::string>{"m1;;D;cat", "m2;;npn;cat", "m4;;;cat", "m5"}));
    NameFilter none("| |");
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(table(text, &none).size(), 5u);  // an empty filter keeps everything
}

TEST(PartsDatabase, MissingFileLeavesTheTableEmpty) {
    PartsDatabase db;
    EXPECT_FALSE(db.read("/nonexistent/parts.txt"));
    EXPECT_FALSE(db.read(""));
    EXPECT_EQ(db.size(), 0u);
}

// Two keys of one bucket come out newest first; the table grows to 2·101 + 1 buckets once the
// records outnumber twice the buckets.
TEST(PartsDatabase, TableOrderAndGrowth) {
    std::vector<std::string> sameBucket;
    for (int i = 0; sameBucket.size() < 2; ++i) {
        std::string key = "k" + std::to_string(i);
        if (hashValue(key) % 101 == hashValue("k0") % 101) sameBucket.push_back(key);
    }
    PartsDatabase db = table(sameBucket[0] + ";first\n" + sameBucket[1] + ";second\n");
    EXPECT_EQ(lines(db), (std::vector<std::string>{sameBucket[1] + ";second", sameBucket[0] + ";first"}));

    PartsDatabase big;
    for (int i = 0; i < 203; ++i) big.insert(PartsRecord("r" + std::to_string(i)));
    EXPECT_EQ(big.bucketCount(), 101u);
    big.insert(PartsRecord("r203"));
    EXPECT_EQ(big.bucketCount(), 203u);
    EXPECT_EQ(big.find("R17")->line(), "r17");
}

// Journal semantics: database, journal, action column, and the records that result.
TEST(PartsJournal, Semantics) {
    struct Case {
        const char* what;
        const char* database;
        const char* journal;
        int64_t column;
        std::vector<std::string> result;
    };
    const std::vector<Case> cases = {
        {"edit writes the non-empty fields only", "K;a;b;c;d", "K;;B;;edit", 4, {"K;a;B;c;d;"}},
        {"edit never writes the action column", "K;a;b;c", "K;x;y;EDIT", 3, {"K;x;y;c;"}},
        {"edit stops at the shorter record", "K;a", "K;x;y;edit", 3, {"K;x;"}},
        {"edit with only empty fields keeps the line", "K;<a>;b", "K;;;edit", 3, {"K;<a>;b"}},
        {"an edited line is rebuilt bare", "K1;<a;b>;cat", "K1;;new;edit", 3, {"K1;a;b;new;"}},
        {"edit keys ignore case", "Key;a", "KEY;b;Edit", 2, {"Key;b;"}},
        {"add replaces an existing key", "K;old;1", "K;new;add", 2, {"K;new;;"}},
        {"add enters a new key", "A;1", "B;2;add;x", 2, {"A;1", "B;2;;x;"}},
        {"delete", "A;1\nB;2", "B;;delete", 2, {"A;1"}},
        {"an empty (or unknown) action deletes", "A;1\nB;2", "B;9", 2, {"A;1"}},
        {"absent keys change nothing", "A;1", "Z;x;edit\nY;;delete", 2, {"A;1"}},
        {"the journal line read last decides", "A;1", "A;x;edit\nA;;delete", 2, {}},
        {"every add line is entered", "", "A;1;add\nA;2;add", 2, {"A;1;;", "A;2;;"}},
        {"a negative column deletes and adds nothing", "A;1\nB;2", "B;x;add", -1, {"A;1"}},
        {"records the journal does not name are copied as read", "<A>;<p;q>", "", 2, {"<A>;<p;q>"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        PartsDatabase result = applyJournal(table(c.database), table(c.journal), c.column);
        std::vector<std::string> expected = c.result;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(sortedLines(result), expected);
    }
}

TEST(PartsJournal, WritesLinesInTableOrder) {
    PartsDatabase db = table("A;1\nB;2\nC;3");
    char* buffer = nullptr;
    size_t size = 0;
    std::FILE* out = open_memstream(&buffer, &size);
    ASSERT_TRUE(db.write(out));
    std::fclose(out);
    std::string written(buffer, size);
    std::free(buffer);
    std::string expected;
    for (const std::string& line : lines(db)) expected += line + "\n";
    EXPECT_EQ(written, expected);
}

}  // namespace
}  // namespace wavex
