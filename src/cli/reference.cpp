#include "cli/reference.hpp"

#include "cli/session.hpp"
#include "lang/reference.hpp"
#include "support/text.hpp"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <algorithm>
#include <vector>

#include <unistd.h>

namespace wavex::cli {
namespace {

// Runs a function's example in a fresh session inside an empty directory made for it; gives what
// it printed, values and messages in the order they came. *ok is false when the example failed.
std::string runExample(const char* example, bool* ok) {
    namespace fs = std::filesystem;
    std::string dir = (fs::temp_directory_path() / "wavex_example_XXXXXX").string();
    char* buffer = nullptr;
    size_t size = 0;
    FILE* out = open_memstream(&buffer, &size);
    fs::path home = fs::current_path();
    *ok = out && mkdtemp(dir.data());
    if (*ok) {
        fs::current_path(dir);
        Session session(Session::Format::Text, out, out);
        *ok = session.runLine(example);
        session.finish();
        fs::current_path(home);
        std::error_code ignored;
        fs::remove_all(dir, ignored);
    }
    std::string text;
    if (out) {
        std::fclose(out);
        text.assign(buffer, size);
        std::free(buffer);
    }
    return text;
}

}  // namespace

bool writeReference(const std::string& path) {
    std::vector<const FuncInfo*> functions = functionTable().all();  // by name
    std::stable_sort(functions.begin(), functions.end(), [](const FuncInfo* a, const FuncInfo* b) {
        int ra = lang::familyRank(*a), rb = lang::familyRank(*b);
        return ra != rb ? ra < rb : lang::familyTitle(*a) < lang::familyTitle(*b);
    });

    std::string index, body, family;
    std::vector<std::string> problems;
    for (const FuncInfo* f : functionTable().all())
        index += "| [`" + std::string(f->name) + "`](#" + toLower(f->name) + ") | " + lang::familyTitle(*f) +
                 " | " + (f->doc.summary ? f->doc.summary : "") + " |\n";
    for (const FuncInfo* f : functions) {
        if (std::string title = lang::familyTitle(*f); title != family) {
            family = title;
            body += "\n## " + family + "\n\n";
        }
        if (!lang::hasReference(*f)) {
            problems.push_back(std::string(f->name) + ": no reference entry");
            body += lang::referenceEntry(*f) + "\n";
            continue;
        }
        bool ok = false;
        std::string printed = runExample(f->doc.example, &ok);
        if (!ok) problems.push_back(std::string(f->name) + ": the example fails: " + printed);
        body += lang::referenceEntry(*f, printed) + "\n";
    }

    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << "# wavex functions\n\n"
            "Made by `wavex --reference docs/functions.md` from the entries beside each function's\n"
            "registration; every example was run to show what it prints. Inside wavex, `help NAME`\n"
            "shows one entry and `functions PATTERN` lists names.\n\n"
            "| function | family | summary |\n|---|---|---|\n"
         << index << body;
    file.close();
    if (!file) {
        std::fprintf(stderr, "error: cannot write '%s'\n", path.c_str());
        return false;
    }
    for (const std::string& p : problems) std::fprintf(stderr, "error: %s\n", p.c_str());
    return problems.empty();
}

}  // namespace wavex::cli
