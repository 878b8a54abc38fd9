// Block allocation for Array<T>.
//
// Small blocks come from malloc. Large blocks (>= 1 MiB) are mapped with transparent huge pages
// and, when released, kept in a small pool for reuse: a freshly mapped 80 MB block costs ~20000
// page faults on first touch, more than the arithmetic done on it, and an expression such as
// `v*2+1` makes and drops such blocks in sequence.
#include "wavex/array.hpp"
#include "wavex/exceptions.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <vector>

namespace wavex {
namespace {

constexpr size_t kLargeBlock = size_t{1} << 20;
constexpr size_t kHugePage = size_t{2} << 20;
constexpr size_t kPoolBytes = size_t{1} << 30;  // at most this much kept mapped while unused
constexpr size_t kPoolBlocks = 8;

struct Pool {
    std::mutex lock;
    std::vector<std::pair<void*, size_t>> blocks;  // (address, mapped size)
    size_t bytes = 0;
};

Pool& pool() {
    static Pool* instance = new Pool;  // never destroyed: arrays may be released during exit
    return *instance;
}

void* mapLarge(size_t bytes) {
    void* p = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) return nullptr;
    madvise(p, bytes, MADV_HUGEPAGE);
    return p;
}

std::atomic<size_t>& limit() {
    static std::atomic<size_t> bytes = [] {
        long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGESIZE);
        return pages > 0 && size > 0 ? static_cast<size_t>(pages) * static_cast<size_t>(size) / 2 : SIZE_MAX / 4;
    }();
    return bytes;
}

}  // namespace

void setAllocationLimit(size_t bytes) { limit() = bytes; }
size_t allocationLimit() { return limit(); }

void* allocateBlock(size_t bytes, size_t* granted, const char* elementType) {
    if (bytes > limit()) throw MemoryException(elementType);
    if (bytes < kLargeBlock) {
        void* p = std::malloc(bytes ? bytes : 1);
        if (!p) throw MemoryException(elementType);
        *granted = bytes;
        return p;
    }
    size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
    {
        Pool& pl = pool();
        std::lock_guard<std::mutex> guard(pl.lock);
        // Best fit among blocks no more than twice the size asked for.
        size_t best = pl.blocks.size();
        for (size_t i = 0; i < pl.blocks.size(); ++i) {
            size_t size = pl.blocks[i].second;
            if (size >= rounded && size <= 2 * rounded &&
                (best == pl.blocks.size() || size < pl.blocks[best].second))
                best = i;
        }
        if (best != pl.blocks.size()) {
            auto [p, size] = pl.blocks[best];
            pl.blocks.erase(pl.blocks.begin() + static_cast<std::ptrdiff_t>(best));
            pl.bytes -= size;
            *granted = size;
            return p;
        }
    }
    void* p = mapLarge(rounded);
    if (!p) throw MemoryException(elementType);
    *granted = rounded;
    return p;
}

void releaseBlock(void* block, size_t granted) noexcept {
    if (!block) return;
    if (granted < kLargeBlock) {
        std::free(block);
        return;
    }
    Pool& pl = pool();
    {
        std::lock_guard<std::mutex> guard(pl.lock);
        if (pl.blocks.size() < kPoolBlocks && pl.bytes + granted <= kPoolBytes) {
            pl.blocks.emplace_back(block, granted);
            pl.bytes += granted;
            return;
        }
    }
    munmap(block, granted);
}

}  // namespace wavex
