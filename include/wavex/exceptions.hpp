// Exceptions that pass through handlers to the host. Handlers report ordinary failures through
// their message sink and return a status; only exhausted memory and calls of unresolved
// late-bound entry points throw.
#pragma once

#include <cstdint>
#include <exception>

namespace wavex {

// Base of the library's exceptions: a status code, a flag and a message formatted into a buffer
// inside the object, so that throwing never allocates.
class CorvaneException : public std::exception {
public:
    CorvaneException(int32_t status, const char* format, const char* argument);
    const char* what() const noexcept override { return message_; }
    int32_t status() const noexcept { return status_; }
    bool flag() const noexcept { return flag_; }

private:
    int32_t status_;
    bool flag_ = false;
    char message_[256];
};

// Allocation failure in one of the library's own arrays (status 5).
class MemoryException : public CorvaneException {
public:
    // `elementType` names the array's element type ("double", "complex" ...).
    explicit MemoryException(const char* elementType);
};

// A late-bound host entry point called before the host resolved it (status 9).
class DynFuncException : public CorvaneException {
public:
    explicit DynFuncException(const char* entryPoint);
};

}  // namespace wavex
