// A program built against an installed wavex: prints db([10]).
#include <wavex/wavex.hpp>

#include <cstdio>

int main() {
    auto sink = std::make_shared<wavex::CollectingMessageHandler>();
    wavex::Interpreter wx(sink);
    wavex::VectorPtr r = wx.evaluate("db([10])");
    if (!r || r->size() != 1) return 1;
    std::printf("%s %g\n", WAVEX_VERSION, r->real[0]);
}
