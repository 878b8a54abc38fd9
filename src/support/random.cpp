#include "support/random.hpp"

#include <atomic>

namespace wavex {
namespace {

constexpr uint64_t kGamma = 0x9E3779B97F4A7C15ULL;  // the Weyl sequence's step

std::atomic<uint64_t>& seed() {
    static std::atomic<uint64_t> s{0x2545F4914F6CDD1DULL};
    return s;
}

}  // namespace

// A draw only adds kGamma to the seed, so n draws are one addition of n·kGamma.
uint64_t sp_ReserveRandom(uint64_t n) { return seed().fetch_add(n * kGamma, std::memory_order_relaxed); }

void sp_SetRandomSeed(uint64_t value) { seed().store(value, std::memory_order_relaxed); }

// splitmix64: a Weyl sequence through a 64-bit mixer. Every seed is valid, the period is 2^64,
// and the top 31 bits of the mix are uniform.
int32_t sp_Random(uint64_t& seed) {
    seed += kGamma;
    uint64_t z = seed;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    z ^= z >> 31;
    return static_cast<int32_t>(z >> 33);
}

}  // namespace wavex
