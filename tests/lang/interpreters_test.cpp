// Several interpreters in one process: each call sees the interpreter running it, on its own
// thread, whichever interpreters are alive. The threaded cases also run under ThreadSanitizer
// (scripts/test.sh).
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <thread>

namespace wavex {
namespace {

using test::Session;
using test::show;

// Two interpreters binding the same names: templates evaluate in their caller's workspace,
// whichever of the two is destroyed first.
TEST(Interpreters, EachCallSeesItsOwnWorkspace) {
    for (bool olderFirst : {true, false}) {
        SCOPED_TRACE(olderFirst ? "older destroyed first" : "newer destroyed first");
        auto older = std::make_unique<Session>(), newer = std::make_unique<Session>();
        older->set("v", makeScalar(1));
        newer->set("v", makeScalar(2));
        EXPECT_EQ(show((*older)("ee('v')")), "['1']");
        EXPECT_EQ(show((*newer)("ResolveTemplate('{v}', [], [])")), "['2']");
        std::unique_ptr<Session>& survivor = olderFirst ? newer : older;
        (olderFirst ? older : newer).reset();
        EXPECT_EQ(show((*survivor)("ee('v * 10')")), olderFirst ? "['20']" : "['10']");
        EXPECT_EQ(survivor->messages(), "");
    }
}

// Two threads evaluate templates and use the process-wide hash tables at once.
TEST(InterpreterThreads, TemplatesAndHashTablesRunConcurrently) {
    constexpr int kRounds = 200;
    Session sessions[2];
    std::string failures[2];
    auto work = [&](int t) {
        Session& s = sessions[t];
        s.set("v", makeScalar(t + 1));
        for (int round = 0; round < kRounds && failures[t].empty(); ++round) {
            std::string expected = "['" + std::to_string((t + 1) * round) + "']";
            std::string got = show(s("ResolveTemplate('{v * " + std::to_string(round) + "}', [], [])"));
            VectorPtr h = s("HashCreate()");
            if (!h) break;
            s.set("h", h);
            s("HashAdd(h, ['k'], [ee('v')])");
            std::string found = show(s("HashSearch(h, ['k'])"));
            s("HashDelete(h)");
            if (got != expected || found != "['" + std::to_string(t + 1) + "']")
                failures[t] = got + " / " + found + " in round " + std::to_string(round);
        }
    };
    std::thread first(work, 0), second(work, 1);
    first.join();
    second.join();
    EXPECT_EQ(failures[0], "");
    EXPECT_EQ(failures[1], "");
}

}  // namespace
}  // namespace wavex
