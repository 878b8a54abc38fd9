#include "support/atomic_file.hpp"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wavex {

std::string systemFailure(std::string_view verb, std::string_view path, int error) {
    std::string s = "Cannot ";
    s.append(verb).append(" '").append(path).append("': ").append(std::strerror(error));
    return s;
}

std::string writeFileAtomically(const std::string& path, std::string_view bytes) {
    if (path.empty()) return "Cannot write '': the path is empty";
    size_t slash = path.rfind('/');
    std::string temp = (slash == std::string::npos ? std::string() : path.substr(0, slash + 1)) + ".wavex_XXXXXX";
    int fd = mkstemp(temp.data());
    if (fd < 0) return systemFailure("write", path, errno);

    struct stat existing;
    mode_t mode;
    if (stat(path.c_str(), &existing) == 0) {
        if (S_ISDIR(existing.st_mode)) {
            close(fd);
            unlink(temp.c_str());
            return systemFailure("write", path, EISDIR);
        }
        mode = existing.st_mode & 07777;
    } else {
        mode_t mask = umask(0);
        umask(mask);
        mode = 0666 & ~mask;
    }

    int error = 0;
    for (const char* p = bytes.data(), *end = p + bytes.size(); p < end && !error;) {
        ssize_t n = write(fd, p, static_cast<size_t>(end - p));
        if (n < 0 && errno != EINTR) error = errno;
        else if (n > 0) p += n;
    }
    if (!error && fchmod(fd, mode) != 0) error = errno;
    if (!error && fsync(fd) != 0) error = errno;
    if (close(fd) != 0 && !error) error = errno;
    if (!error && rename(temp.c_str(), path.c_str()) != 0) error = errno;
    if (error) {
        unlink(temp.c_str());
        return systemFailure("write", path, error);
    }
    return {};
}

}  // namespace wavex
