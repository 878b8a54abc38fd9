// Pseudo-random numbers for the script functions.
#pragma once

#include <cstdint>

namespace wavex {

// The library's one random seed, shared by every interpreter and thread: every function that
// draws random numbers advances it, so a session gives one reproducible sequence.
// sp_ReserveRandom(n) advances it past n draws at once and gives the seed to make them from
// (with sp_Random), so that a call takes one atomic step, not one per element.
uint64_t sp_ReserveRandom(uint64_t n);
// Restarts the sequence.
void sp_SetRandomSeed(uint64_t seed);

// Advances `seed` and returns the next pseudo-random integer in [0, 2147483647] (31 bits,
// uniformly distributed; splitmix64 underneath).
int32_t sp_Random(uint64_t& seed);

}  // namespace wavex
