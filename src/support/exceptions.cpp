#include "wavex/exceptions.hpp"

#include <cstdio>

namespace wavex {

CorvaneException::CorvaneException(int32_t status, const char* format, const char* argument)
    : status_(status) {
    std::snprintf(message_, sizeof message_, format, argument);
}

namespace {
// The detail line of a memory failure, built in static storage so that no allocation is needed.
const char* allocDetail(const char* elementType) {
    static thread_local char detail[96];
    std::snprintf(detail, sizeof detail, "Detected in YVector<%s>::allocPrim", elementType);
    return detail;
}
}  // namespace

MemoryException::MemoryException(const char* elementType)
    : CorvaneException(5, "*** Fatal error, out of memory ***\n%s", allocDetail(elementType)) {}

DynFuncException::DynFuncException(const char* entryPoint)
    : CorvaneException(9, "*** FATAL ERROR *** Unresolved dynamic function '%s' called", entryPoint) {}

}  // namespace wavex
