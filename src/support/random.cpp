#include "support/random.hpp"

namespace wavex {

uint64_t& sp_RandomSeed() {
    static uint64_t seed = 0x2545F4914F6CDD1DULL;
    return seed;
}

// splitmix64: a Weyl sequence through a 64-bit mixer. Every seed is valid, the period is 2^64,
// and the top 31 bits of the mix are uniform.
int32_t sp_Random(uint64_t& seed) {
    seed += 0x9E3779B97F4A7C15ULL;
    uint64_t z = seed;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    z ^= z >> 31;
    return static_cast<int32_t>(z >> 33);
}

}  // namespace wavex
