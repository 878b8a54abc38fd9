#include "support/text.hpp"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wavex {

int stricmp(std::string_view a, std::string_view b) {
    size_t n = a.size() < b.size() ? a.size() : b.size();
    for (size_t i = 0; i < n; ++i) {
        int ca = static_cast<unsigned char>(asciiLower(a[i]));
        int cb = static_cast<unsigned char>(asciiLower(b[i]));
        if (ca != cb) return ca - cb;
    }
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -static_cast<unsigned char>(asciiLower(b[n]))
                               : static_cast<unsigned char>(asciiLower(a[n]));
}

std::string toLower(std::string_view s) {
    std::string r(s);
    for (char& c : r) c = asciiLower(c);
    return r;
}

bool beginsWith(std::string_view s, std::string_view prefix) {
    return s.size() >= prefix.size() && s.substr(0, prefix.size()) == prefix;
}

std::string_view trim(std::string_view s) {
    const char* ws = " \t\r\n\f\v";
    size_t b = s.find_first_not_of(ws);
    if (b == std::string_view::npos) return {};
    size_t e = s.find_last_not_of(ws);
    return s.substr(b, e - b + 1);
}

uint32_t hashValue(std::string_view s) {
    uint32_t h = 2166136261u;
    for (char c : s) {
        h ^= static_cast<unsigned char>(asciiLower(c));
        h *= 16777619u;
    }
    return h;
}

size_t CaseInsensitiveHash::operator()(std::string_view s) const {
    size_t h = 14695981039346656037ull;  // FNV-1a over lower-cased bytes
    for (char c : s) {
        h ^= static_cast<unsigned char>(asciiLower(c));
        h *= 1099511628211ull;
    }
    return h;
}

std::string readWholeFile(const std::string& path, std::string& text, size_t maxStreamBytes) {
    text.clear();
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) return "Cannot open file '" + path + "'";
    auto fail = [&](const char* start, const char* end) {
        text.clear();
        return start + path + end;
    };
    struct stat st {};
    if (fstat(fileno(file.get()), &st) == 0 && S_ISREG(st.st_mode)) {
        text.resize(static_cast<size_t>(st.st_size));
        if (std::fread(text.data(), 1, text.size(), file.get()) != text.size()) return fail("Cannot read file '", "'");
        return {};
    }
    char buffer[1 << 16];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) {
        if (text.size() + n > maxStreamBytes) return fail("File '", "' is too large to read");
        text.append(buffer, n);
    }
    return std::ferror(file.get()) ? fail("Cannot read file '", "'") : std::string();
}

std::string writeWholeFile(const std::string& path, std::string_view text) {
    std::string temporary = path + ".XXXXXX";
    int fd = mkstemp(temporary.data());
    if (fd < 0) return "Cannot write file '" + path + "'";
    bool written = true;
    for (size_t done = 0; written && done < text.size();) {
        ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        written = n > 0;
        done += written ? static_cast<size_t>(n) : 0;
    }
    written = ::close(fd) == 0 && written;
    if (written) fchmodat(AT_FDCWD, temporary.c_str(), 0644, 0);
    if (!written || std::rename(temporary.c_str(), path.c_str()) != 0) {
        std::remove(temporary.c_str());
        return "Cannot write file '" + path + "'";
    }
    return {};
}

}  // namespace wavex
