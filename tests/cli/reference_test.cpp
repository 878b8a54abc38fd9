// The function reference: every function has its entry, every example runs, and docs/functions.md
// is what the command makes.
#include "run_wavex.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

namespace {

TEST(Reference, ExamplesRunAndTheCheckedInFileIsCurrent) {
    wavex::test::ScratchDir dir;
    std::string made = dir.path() + "functions.md";
    wavex::test::Outcome run =
        wavex::test::runWavex({"--reference", made}, "/dev/null", dir.path() + "out", dir.path() + "err");
    // Standard error names each function whose entry is missing or whose example fails.
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(wavex::test::readFile(made), wavex::test::readFile(WAVEX_SOURCE_DIR "/docs/functions.md"))
        << "docs/functions.md is out of date: run `build/wavex --reference docs/functions.md`";
}

}  // namespace
