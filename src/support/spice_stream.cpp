#include "support/spice_stream.hpp"

#include "support/text.hpp"

namespace wavex {
namespace {

// The first character that is not a blank, or -1 for a blank line.
int lead(std::string_view line) {
    size_t i = line.find_first_not_of(" \t\r\f\v");
    return i == std::string_view::npos ? -1 : static_cast<unsigned char>(line[i]);
}

}  // namespace

NewSpiceStream::NewSpiceStream(const std::string& fileName) {
    failure_ = readWholeFile(fileName, text_);
    open_ = failure_.empty();
}

NewSpiceStream NewSpiceStream::fromText(std::string_view text) {
    NewSpiceStream s;
    s.open_ = true;
    s.text_.assign(text);
    return s;
}

bool NewSpiceStream::physical(std::string_view& line) {
    if (pos_ >= text_.size()) return false;
    size_t end = text_.find('\n', pos_);
    if (end == std::string::npos) end = text_.size();
    line = std::string_view(text_).substr(pos_, end - pos_);
    pos_ = end + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    ++physicalNumber_;
    return true;
}

bool NewSpiceStream::gets(std::string* line, int* lineNumber) {
    line->clear();
    bool started = false;
    int first = 0;
    for (;;) {
        std::string_view next;
        int number;
        if (hasPending_) {
            next = std::string_view(text_).substr(pendingBegin_, pendingSize_);
            number = pendingNumber_;
            hasPending_ = false;
        } else if (physical(next)) {
            number = physicalNumber_;
        } else {
            break;
        }
        int c = lead(next);
        if (c == -1 || c == '*') continue;
        if (c == '+') {
            std::string_view rest = next;
            rest.remove_prefix(rest.find('+') + 1);
            if (started) {
                *line += ' ';
            } else {
                started = true;
                first = number;
            }
            *line += rest;
            continue;
        }
        if (started) {  // the start of the next logical line: keep it for the next call
            pendingBegin_ = static_cast<size_t>(next.data() - text_.data());
            pendingSize_ = next.size();
            pendingNumber_ = number;
            hasPending_ = true;
            break;
        }
        started = true;
        first = number;
        line->assign(next);
    }
    if (started && lineNumber) *lineNumber = first;
    return started;
}

}  // namespace wavex
