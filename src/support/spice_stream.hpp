// Reading a netlist-style text file as logical lines.
//
// A physical line whose first non-blank character is "+" continues the logical line before it:
// the "+" is dropped and the rest joined on with one space. Lines whose first non-blank character
// is "*" are comments and blank lines are empty; both are skipped, and neither ends a logical
// line, so a continuation may follow a comment. A "+" line with nothing before it starts a
// logical line of its own. Line ends may be "\n" or "\r\n"; any byte values pass through.
#pragma once

#include <string>
#include <string_view>

namespace wavex {

class NewSpiceStream {
public:
    // Reads the file; isOpen() tells whether that worked.
    explicit NewSpiceStream(const std::string& fileName);
    // Reads text in memory.
    static NewSpiceStream fromText(std::string_view text);

    bool isOpen() const { return open_; }
    // Why the file could not be read: "Cannot open file 'NAME'" or "Cannot read file 'NAME'";
    // empty when it was.
    const std::string& failure() const { return failure_; }

    // The next logical line into *line and the 1-based number of its first physical line into
    // *lineNumber (when not null); false at the end of the file.
    bool gets(std::string* line, int* lineNumber);

    // The next physical line without its line end ("\n", or "\r\n"); false at the end. A final
    // line end does not start another line: "a\nb\n" is two lines, like "a\nb". The view lies in
    // the stream's own copy of the file: good until the stream is moved or destroyed.
    bool getLine(std::string_view* line) { return physical(*line); }

private:
    NewSpiceStream() = default;
    bool physical(std::string_view& line);

    bool open_ = false;
    std::string failure_;
    std::string text_;  // the whole file
    size_t pos_ = 0;
    int physicalNumber_ = 0;
    // A physical line read ahead (the line after a logical line), with its number.
    size_t pendingBegin_ = 0, pendingSize_ = 0;  // where it lies in text_
    int pendingNumber_ = 0;
    bool hasPending_ = false;
};

}  // namespace wavex
