// Pseudo-random numbers for the script functions.
#pragma once

#include <cstdint>

namespace wavex {

// The library's one random seed: every function that draws random numbers advances it, so a
// session gives one reproducible sequence. Assign to it to restart the sequence.
uint64_t& sp_RandomSeed();

// Advances `seed` and returns the next pseudo-random integer in [0, 2147483647] (31 bits,
// uniformly distributed; splitmix64 underneath).
int32_t sp_Random(uint64_t& seed);

}  // namespace wavex
