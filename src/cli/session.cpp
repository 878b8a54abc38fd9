#include "cli/session.hpp"

#include "io/load.hpp"
#include "io/printers.hpp"
#include "support/text.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

#include <unistd.h>

namespace wavex::cli {
namespace {

// Shows how far a slow load has come, "loading FILE: 42%" rewritten in place on standard error:
// only when that is a terminal, only once the load has taken a second, and gone when it ends.
class LoadProgress {
public:
    explicit LoadProgress(std::string path)
        : path_(std::move(path)), terminal_(isatty(STDERR_FILENO) == 1), next_(Clock::now() + std::chrono::seconds(1)) {}
    ~LoadProgress() {
        if (shown_) std::fprintf(stderr, "\r\033[K");
    }

    void operator()(uint64_t done, uint64_t total) {
        if (!terminal_ || total == 0) return;
        Clock::time_point now = Clock::now();
        if (now < next_) return;
        next_ = now + std::chrono::milliseconds(100);
        std::fprintf(stderr, "\rloading %s: %d%%", path_.c_str(), static_cast<int>(100 * std::min(done, total) / total));
        std::fflush(stderr);
        shown_ = true;
    }

private:
    using Clock = std::chrono::steady_clock;
    std::string path_;
    bool terminal_;
    bool shown_ = false;
    Clock::time_point next_;
};

}  // namespace

void StderrMessages::report(const std::string& message) {
    std::fflush(out_);
    std::fprintf(err_, "error: %s%s\n", where.c_str(), message.c_str());
}

Session::Session(Format format, FILE* out, FILE* err)
    : format_(format), out_(out), messages_(std::make_shared<StderrMessages>(out, err)), wx_(messages_),
      printer_([this](const VectorPtr& value, std::string_view label) { print(value, label); }) {}

void Session::print(const VectorPtr& value, std::string_view label) {
    if (plot_ && plottable(value)) {
        plot_->add(value, std::string(label));
        return;
    }
    buffer_.clear();
    if (format_ == Format::Json) {
        io::appendJson(buffer_, value);
    } else {
        // A blank line between a value printed under headings and its neighbours.
        if (!value || value->size() == 0) return;  // prints nothing
        bool headed = io::textHasHeadings(value);
        if (printedText_ && (headed || lastHeaded_)) buffer_ += '\n';
        io::appendText(buffer_, value, label);
        printedText_ = true;
        lastHeaded_ = headed;
    }
    std::fwrite(buffer_.data(), 1, buffer_.size(), out_);
}

bool Session::loadData(const std::string& path) {
    std::string error;
    std::optional<std::vector<io::NamedVector>> vectors;
    {
        LoadProgress progress(path);
        vectors = io::loadData(path, &error, std::ref(progress));
    }
    if (!vectors) {
        messages_->error("%s", error);
        return false;
    }
    for (io::NamedVector& v : *vectors) wx_.setVector(v.name, std::move(v.value));
    return true;
}

void Session::plotTo(std::string path, PlotOptions options) {
    plot_.emplace();
    plotPath_ = std::move(path);
    plotOptions_ = options;
}

bool Session::writePlot() {
    if (!plot_) return true;
    std::string why = plot_->write(plotPath_, plotOptions_);
    if (why.empty()) return true;
    messages_->error("%s", why);
    return false;
}

bool Session::runLine(std::string_view line) {
    size_t before = messages_->errorCount();
    bool ok = wx_.runLine(line, printer_);
    if (!ok && messages_->errorCount() == before) messages_->error("%s", "the statement failed");
    return ok;
}

bool Session::runScript(const std::string& path) {
    const bool useStdin = path == "-";
    FILE* file = useStdin ? stdin : std::fopen(path.c_str(), "r");
    if (!file) {
        messages_->error("cannot read script '%s': %s", path, std::strerror(errno));
        return false;
    }
    const std::string name = useStdin ? "stdin" : path;
    char* raw = nullptr;
    size_t capacity = 0;
    ssize_t n;
    size_t lineNo = 0;
    bool ok = true;
    while (ok && (n = getline(&raw, &capacity, file)) >= 0) {
        ++lineNo;
        std::string_view line(raw, static_cast<size_t>(n));
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
        std::string_view content = trim(line);
        if (content.empty() || content.front() == '#') continue;
        messages_->where = name + ":" + std::to_string(lineNo) + ": ";
        ok = runLine(line);
        messages_->where.clear();
        if (useStdin) std::fflush(out_);  // a program at the other end may wait for the answer
    }
    if (ok && std::ferror(file)) {
        messages_->error("cannot read script '%s': %s", name, std::strerror(errno));
        ok = false;
    }
    std::free(raw);
    if (!useStdin) std::fclose(file);
    return ok;
}

void Session::finish() {
    wx_.finish();
    std::fflush(out_);
}

}  // namespace wavex::cli
