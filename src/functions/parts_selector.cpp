// The parts selector's database functions: ApplyJournal, ExtractPartsTreeNameList and
// _BuildPartSelectorData. They work on the semicolon-separated databases of
// support/parts_database.hpp (fields enclosed in "<" ">" may hold ";"; field 0 is the key) and
// keep nothing between calls.
//
// ApplyJournal([output, database, journal], column) applies the journal to the database with the
// action word ("edit", "add", "delete"; any other word deletes) in `column` (truncated), writes the
// resulting records to the output file, one line each in table order, and gives their number.
// Inputs are read before the output is opened, so the output may replace the database.
//
// ExtractPartsTreeNameList(lines) turns selector lines into the rows of the selector's search,
// "name;path;line number;kind": the name is item 0 of the record in field 1, the path is field 0
// with every level's "[...]" ordering prefix dropped and each level followed by "|", the line
// number counts the input from 0, the kind is "model" for the symbol kind "ps_model" and
// "generic" otherwise. Item 8 of the record lists alternative names (comma-separated), each
// given a row of its own. A line whose name is empty, or was seen before (ignoring case), gives
// no row.
//
// _BuildPartSelectorData(files, option, filter) compiles the selector file. The seven files:
//   0  the selector file written
//   1  user-model index:     name; time added (seconds since 1970)
//   2  category assignments: name; ; ; category
//   3  category journal:     model lines, action word in column 9
//   4  symbol journal:       symbol lines, action word in column 2
//   5  model database:       name; status; type; category; file; description; maker; ; alternatives
//   6  symbol database:      name; description; type; category; symbol; ; ; ; alternatives
// Files 5 and 6 are read through the filter ("|"-separated types, matched against column 2;
// lines with an empty column 2 always pass; an empty filter passes everything). A category is a
// path of levels separated by "|", each level optionally led by an ordering prefix "[n]".
// Steps:
//   1. An assignment whose category is not empty replaces the category of the model of its name.
//   2. The category journal is applied to the models, the symbol journal to the symbols.
//   3. Every model becomes the line  category;<record>;ps_model;  and every symbol the line
//      category;<record>;symbol;  with `symbol` from its column 4. A record with no category goes
//      under "*** Unassigned ***|type" ("*** Unassigned ***" when it has no type either); one
//      with a level beginning with "** HIDDEN **" (any case, after its ordering prefix) is left
//      out.
//   4. Each model named in the user-model index (once, however often it is named) is entered
//      again with its category set to "* All User Models *", and a third time with the category
//      "* Recently Added Models *" when its time added is later than now − NewModelLifetime days,
//      its category is "*** Unknown ***" or its status (column 1) is "*". These entries show even
//      when the model's own category is hidden. They come from the models as the journal left
//      them, so a model the journal deleted is no user model either.
//   5. With the option "compressmodels" (any case) the library models of each type are replaced
//      by one generic entry  category;<TYPE Model;;TYPE;category;;Select from Model Library...;>;ps_model_sel;
//      placed in the category that holds most of that type's models (on a tie the one whose lines
//      come first; "*** Unassigned ***|…" and "*** Unknown ***" only when the type is nowhere
//      else). User-model entries and models without a type stay as they are.
//   6. The lines are sorted by path, then by name (both ignoring case; entries that tie keep
//      models before symbols), and written one per line.
// The result is the number of lines written.
//
// Bad input gets no message. Missing input files read as empty databases; a file list shorter
// than 3 (ApplyJournal) or 7 (_BuildPartSelectorData) gives −1; an output file that cannot be
// written gives no result.
#include "support/numbers.hpp"
#include "support/parts_database.hpp"
#include "support/split.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace wavex {
namespace {

constexpr std::string_view kAllUserModels = "* All User Models *";
constexpr std::string_view kRecentModels = "* Recently Added Models *";
constexpr std::string_view kUnknown = "*** Unknown ***";
constexpr std::string_view kUnassigned = "*** Unassigned ***";
constexpr std::string_view kHidden = "** HIDDEN **";

// Columns of the model and symbol records.
enum Column : size_t {
    kName = 0,
    kStatus = 1,
    kTimeAdded = 1,
    kType = 2,
    kCategory = 3,
    kSymbol = 4,
    kAlternatives = 8,
    kModelAction = 9,
    kSymbolAction = 2,
};

FUNC_ERROR oneReal(FuncResult* result, double x) {
    double* out = result->makeRealNoRef(1);
    if (!out) return FUNC_FAILED;
    out[0] = x;
    return FUNC_OK;
}

std::string fileName(const FuncArgs& args, size_t k) { return std::string(args.string(0, k)); }

// Writes lines to a new file; false when it cannot be opened or written.
template <class F>
bool writeFile(const std::string& path, F writeAll) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(path.empty() ? nullptr : std::fopen(path.c_str(), "w"),
                                                        &std::fclose);
    if (!out) return false;
    bool ok = writeAll(out.get());
    return std::fclose(out.release()) == 0 && ok;
}

// ---- ApplyJournal --------------------------------------------------------------------------------

FUNC_ERROR applyJournalFn(WAVEX_HANDLER_PARAMS) {
    if (args.length(0) < 3) return oneReal(result, -1);
    PartsDatabase database, journal;
    database.read(fileName(args, 1));
    journal.read(fileName(args, 2));
    PartsDatabase out = applyJournal(database, journal, truncateToInt64(args.scalar(1)));
    if (!writeFile(fileName(args, 0), [&](std::FILE* f) { return out.write(f); })) return FUNC_OK;
    return oneReal(result, static_cast<double>(out.size()));
}

// ---- ExtractPartsTreeNameList --------------------------------------------------------------------

// A level of a category path without its ordering prefix "[...]".
std::string_view withoutOrderingPrefix(std::string_view level) {
    if (!level.empty() && level.front() == '[')
        if (size_t close = level.find(']'); close != std::string_view::npos) level.remove_prefix(close + 1);
    return level;
}

// A category path as the search shows it: ordering prefixes dropped, every level followed by "|".
void appendSearchPath(std::string_view category, std::string& out, std::vector<std::string_view>& levels) {
    if (category.empty()) return;
    sp_SplitLine(category, '|', levels);
    for (std::string_view level : levels) out.append(withoutOrderingPrefix(level)).push_back('|');
}

FUNC_ERROR extractPartsTreeNameList(WAVEX_HANDLER_PARAMS) {
    const int64_t n = args.length(0);
    std::vector<std::string> rows;
    ChainedHashTable<bool, std::string_view> seen(101, 2);
    std::vector<std::string_view> fields, items, levels, alternatives;
    std::string tail;  // ";path;line;kind" shared by a line's rows
    for (int64_t i = 0; i < n; ++i) {
        std::string_view line = args.string(0, static_cast<size_t>(i));
        splitPartsLine(line, fields);
        splitPartsLine(fields.size() > 1 ? fields[1] : std::string_view(), items);
        std::string_view name = items[0];
        if (name.empty() || seen.find(name)) continue;
        seen.insert(name, true);
        tail.assign(1, ';');
        appendSearchPath(fields[0], tail, levels);
        tail.append(";").append(std::to_string(i));
        tail.append(fields.size() > 2 && iequals(fields[2], "ps_model") ? ";model" : ";generic");
        rows.push_back(std::string(name) + tail);
        if (items.size() > kAlternatives && !items[kAlternatives].empty()) {
            sp_SplitLine(items[kAlternatives], ',', alternatives);
            for (std::string_view a : alternatives)
                if (!(a = trim(a)).empty()) rows.push_back(std::string(a) + tail);
        }
    }
    result->setType(VD_STRING, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    if (!result->allocate(static_cast<int64_t>(rows.size()), RESULT_OWN, -1)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (size_t i = 0; i < rows.size(); ++i) out[i] = std::move(rows[i]);
    return FUNC_OK;
}

// ---- _BuildPartSelectorData ----------------------------------------------------------------------

bool isHidden(std::string_view category, std::vector<std::string_view>& levels) {
    sp_SplitLine(category, '|', levels);
    for (std::string_view level : levels)
        if (iequals(withoutOrderingPrefix(level).substr(0, kHidden.size()), kHidden)) return true;
    return false;
}

struct SelectorLine {
    std::string path;
    std::string name;  // for the order
    std::string record;
    std::string kind;
    std::string text() const { return path + ";<" + record + ">;" + kind + ";"; }
};

class SelectorBuild {
public:
    SelectorBuild(bool compress, int64_t recentSince) : compress_(compress), recentSince_(recentSince) {}

    // Places a model or symbol record: under its category, or unassigned, or nowhere if hidden.
    void place(const PartsRecord& r, std::string kind, bool isLibraryModel) {
        std::string_view category = r.field(kCategory);
        if (isHidden(category, levels_)) return;
        std::string path(category);
        if (path.empty()) {
            path = kUnassigned;
            if (!r.field(kType).empty()) path.append("|").append(r.field(kType));
        }
        if (compress_ && isLibraryModel && !r.field(kType).empty()) {
            types_[toLower(r.field(kType))].push_back({path, std::string(r.field(kType))});
            return;
        }
        lines_.push_back({std::move(path), std::string(r.key()), r.line(), std::move(kind)});
    }

    // Enters a user model under "* All User Models *" and, when it is recent, under
    // "* Recently Added Models *".
    void addUserModel(const PartsRecord& model, const PartsRecord& index) {
        bool recent = atoiValue(index.field(kTimeAdded)) > recentSince_ || iequals(model.field(kCategory), kUnknown) ||
                      model.field(kStatus) == "*";
        for (std::string_view category : {kAllUserModels, kRecentModels}) {
            if (category == kRecentModels && !recent) break;
            PartsRecord entry = model;
            entry.setField(kCategory, category);
            lines_.push_back({std::string(category), std::string(model.key()), entry.line(), "ps_model"});
        }
    }

    // The lines in their final order: generic entries for the compressed types, then all sorted.
    std::vector<SelectorLine> finish() {
        for (auto& [key, models] : types_) lines_.push_back(genericEntry(models));
        std::stable_sort(lines_.begin(), lines_.end(), [](const SelectorLine& a, const SelectorLine& b) {
            int byPath = stricmp(a.path, b.path);
            return byPath != 0 ? byPath < 0 : stricmp(a.name, b.name) < 0;
        });
        return std::move(lines_);
    }

private:
    struct TypedModel {
        std::string path;
        std::string type;
    };

    // One entry for all models of a type, in the category holding most of them: a special one
    // ("*** Unassigned ***|…", "*** Unknown ***") only when no other holds any, and on a tie the
    // one whose lines come first.
    static SelectorLine genericEntry(const std::vector<TypedModel>& models) {
        std::map<std::string_view, size_t> counts;
        for (const TypedModel& m : models) ++counts[m.path];
        auto rank = [](const auto& entry) { return std::make_tuple(entry.first.starts_with('*'), -static_cast<int64_t>(entry.second)); };
        const std::string_view* best = nullptr;
        std::tuple<bool, int64_t> bestRank;
        for (const auto& entry : counts) {
            auto r = rank(entry);
            if (!best || r < bestRank || (r == bestRank && stricmp(entry.first, *best) < 0)) {
                best = &entry.first;
                bestRank = r;
            }
        }
        const std::string& type = models.front().type;
        const std::string path(*best);
        PartsRecord generic;
        generic.editFields([&](std::vector<std::string>& f) {
            f = {type + " Model", "", type, path, "", "Select from Model Library..."};
            return true;
        });
        return {path, std::string(generic.key()), generic.line(), "ps_model_sel"};
    }

    bool compress_;
    int64_t recentSince_;
    std::vector<SelectorLine> lines_;
    std::map<std::string, std::vector<TypedModel>> types_;  // by lower-case type
    std::vector<std::string_view> levels_;
};

FUNC_ERROR buildPartSelectorData(WAVEX_HANDLER_PARAMS) {
    if (args.length(0) < 7) return oneReal(result, -1);
    const bool compress = args.count() > 1 && iequals(args.string(1), "compressmodels");
    const NameFilter filter(args.count() > 2 ? args.string(2) : std::string_view());

    PartsDatabase userIndex, assignments, categoryJournal, symbolJournal, libraryModels, librarySymbols;
    userIndex.read(fileName(args, 1));
    assignments.read(fileName(args, 2));
    categoryJournal.read(fileName(args, 3));
    symbolJournal.read(fileName(args, 4));
    libraryModels.read(fileName(args, 5), &filter);
    librarySymbols.read(fileName(args, 6), &filter);

    PartsDatabase assigned;
    libraryModels.forEach([&](const PartsRecord& m) {
        PartsRecord r = m;
        if (const PartsRecord* a = assignments.find(m.key()); a && !a->field(kCategory).empty())
            r.setField(kCategory, a->field(kCategory));
        assigned.insert(std::move(r));
    });
    const PartsDatabase models = applyJournal(assigned, categoryJournal, kModelAction);
    const PartsDatabase symbols = applyJournal(librarySymbols, symbolJournal, kSymbolAction);

    const int64_t lifetimeDays = sp_GetIntOption("NewModelLifetime", 7);
    SelectorBuild build(compress, static_cast<int64_t>(std::time(nullptr)) - lifetimeDays * 86400);
    models.forEach([&](const PartsRecord& m) { build.place(m, "ps_model", true); });
    ChainedHashTable<bool, std::string_view> entered(101, 2);
    userIndex.forEach([&](const PartsRecord& u) {
        const PartsRecord* m = models.find(u.key());
        if (!m || entered.find(u.key())) return;
        entered.insert(u.key(), true);
        build.addUserModel(*m, u);
    });
    symbols.forEach([&](const PartsRecord& s) { build.place(s, std::string(s.field(kSymbol)), false); });

    const std::vector<SelectorLine> lines = build.finish();
    bool written = writeFile(fileName(args, 0), [&](std::FILE* f) {
        for (const SelectorLine& l : lines) {
            std::string text = l.text();
            text += '\n';
            if (std::fwrite(text.data(), 1, text.size(), f) != text.size()) return false;
        }
        return true;
    });
    return written ? oneReal(result, static_cast<double>(lines.size())) : FUNC_OK;
}

// ---- Registration --------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    FuncInfo("ApplyJournal", {arg::String, arg::Real}, 2, applyJournalFn,
             {.signature = "ApplyJournal([output, database, journal], column)",
              .summary = "Applies a journal of edits to a parts database and writes the result to a file.",
              .returns = "one real: the number of records written; -1 when fewer than three files are named; "
                         "empty when the output cannot be written",
              .notes = "Databases are semicolon-separated records keyed by field 0 (fields in \"<\" \">\" may "
                       "hold \";\"). The journal's action word sits in field column: 'edit', 'add' or 'delete' "
                       "(any other word deletes). A missing input file reads as an empty database; the output "
                       "may replace the database.",
              .example = "ApplyJournal(['out.db', 'models.db', 'journal.db'], 9); length(ReadFile('out.db')); "
                         "ApplyJournal(['out.db'], 9)"}).outsideSafeMode(),
    {"ExtractPartsTreeNameList", {arg::String}, 1, extractPartsTreeNameList,
     {.signature = "ExtractPartsTreeNameList(lines)",
      .summary = "The search rows \"name;path;line;kind\" of parts-selector lines.",
      .returns = "a string vector, one row per part name and per alternative name",
      .notes = "A line is category;<record>;kind;. The name is the record's first item; the path is the "
               "category without the \"[n]\" ordering prefixes, each level followed by \"|\"; line counts "
               "from 0; the kind is 'model' for ps_model lines, else 'generic'. The record's ninth item "
               "lists alternative names (comma-separated), each given a row. A name seen before "
               "(ignoring case) gives no row.",
      .example = "ExtractPartsTreeNameList(['[1]Passive|[2]Resistors;<RC07;;res;;;;;;RC07A,RC07B>;ps_model;', "
                 "'Sources;<VSIN;;vsrc>;vsin;'])"}},
    FuncInfo("_BuildPartSelectorData", {arg::String, arg::String, arg::String}, 1, buildPartSelectorData,
             {.signature = "_BuildPartSelectorData(files [, option [, filter]])",
              .summary = "Compiles the parts selector's file from its databases and journals.",
              .returns = "one real: the number of lines written; -1 when fewer than seven files are named",
              .notes = "files: the output, then the user-model index, category assignments, category journal, "
                       "symbol journal, model database and symbol database; missing inputs read as empty. "
                       "Models and symbols are filed under their categories, user models also under \"* All User "
                       "Models *\" (and \"* Recently Added Models *\" within NewModelLifetime days, default 7). "
                       "option 'compressmodels' folds library models of a type into one entry; filter lists "
                       "\"|\"-separated types to keep. Lines are sorted by path, then name.",
              .example = "_BuildPartSelectorData(['sel.txt', 'u', 'c', 'cj', 'sj', 'm', 's']); "
                         "_BuildPartSelectorData(['sel.txt'])"}).outsideSafeMode(),
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex
