// Fuzzes the parts database's line splitter, records, filtered reading and journals. The first
// byte chooses the action column and where the input is cut into a database and a journal; the
// second, how long a filter text is taken from the journal's start. Checks: every field lies
// inside its line; a record whose fields hold no "<", ">" or ";" (a rebuilt line writes every field
// bare) reads back from its rebuilt line with the same fields; a journal never makes more records than its two tables hold.
#include "fuzz_check.hpp"
#include "support/parts_database.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace wavex;
    if (size < 2) return 0;
    const int64_t column = static_cast<int64_t>(data[0] % 12) - 1;  // -1 … 10
    std::string_view in(reinterpret_cast<const char*>(data + 2), size - 2);
    const size_t cut = in.size() * (data[0] >> 4) / 16;
    std::string_view databaseText = in.substr(0, cut), journalText = in.substr(cut);

    std::vector<std::string_view> fields;
    size_t n = splitPartsLine(in, fields);
    check(n == fields.size() && n >= 1);
    for (std::string_view f : fields) check(f.data() >= in.data() && f.data() + f.size() <= in.data() + in.size());

    PartsRecord record(in);
    check(record.fieldCount() == n);
    record.setField(static_cast<size_t>(data[1] % 16), "x");
    bool plain = true;
    for (size_t i = 0; i < record.fieldCount(); ++i)
        plain = plain && record.field(static_cast<int64_t>(i)).find_first_of("<>;") == std::string_view::npos;
    if (plain) {
        PartsRecord back(record.line());
        check(back.fieldCount() == record.fieldCount());
        for (size_t i = 0; i < record.fieldCount(); ++i)
            check(back.field(static_cast<int64_t>(i)) == record.field(static_cast<int64_t>(i)));
    }

    NameFilter filter(journalText.substr(0, data[1] % 32));
    PartsDatabase database, journal;
    database.readText(databaseText, &filter);
    journal.readText(journalText);
    PartsDatabase result = applyJournal(database, journal, column);
    check(result.size() <= database.size() + journal.size());
    return 0;
}
