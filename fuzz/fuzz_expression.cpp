// Fuzzes the expression language: parsing, then evaluation of whatever parses, in a workspace
// with a few vectors of each kind.
#include "lang/parser.hpp"
#include "wavex/wavex.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

struct Fixture {
    std::shared_ptr<wavex::CollectingMessageHandler> sink = std::make_shared<wavex::CollectingMessageHandler>();
    wavex::Interpreter wx{sink};
    Fixture() {
        wx.setVector("v", wavex::makeCurve({0, 1, 2, 3}, {1, -2, 3, 0.5}, wavex::units::Voltage, wavex::units::Time));
        wx.setVector("z", wavex::makeComplexVector({{1, 1}, {0, -1}, {2, 0}}));
        wx.setVector("s", wavex::makeStringVector({"a", std::nullopt, "Bc"}));
        wx.setVector("e", wavex::makeEmptyVector());
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool limited = (wavex::setAllocationLimit(size_t{64} << 20), true);  // vector(1e9) fails fast
    (void)limited;
    Fixture fixture;  // fresh for every input, so that runs do not depend on one another
    std::string line(reinterpret_cast<const char*>(data), size);
    std::string error;
    (void)wavex::lang::parseLine(line, &error);
    fixture.wx.runLine(line, [](const wavex::VectorPtr&, std::string_view) {});
    return 0;
}
