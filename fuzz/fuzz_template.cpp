// Fuzzes the text rewriters: the template resolver (keywords and embedded expressions) and the
// expression rewriter, through the functions that use them.
#include "wavex/wavex.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static auto sink = std::make_shared<wavex::CollectingMessageHandler>();
    static wavex::Interpreter wx(sink);
    static bool ready = [] {
        wavex::setAllocationLimit(size_t{64} << 20);
        wx.setVector("names", wavex::makeStringVector({"a", "R1", "out"}));
        wx.setVector("values", wavex::makeStringVector({"1k", "x", "V(n)"}));
        return true;
    }();
    (void)ready;
    sink->clear();
    wx.setVector("text", wavex::makeStringVector({std::string(reinterpret_cast<const char*>(data), size)}));
    for (const char* call : {"ResolveTemplate(text, names, values, 'failed')", "ParseProbeExpression(text)",
                             "SubstProbeExpression(text, names, values)", "ee(text, 'failed')"})
        (void)wx.evaluate(call);
    return 0;
}
