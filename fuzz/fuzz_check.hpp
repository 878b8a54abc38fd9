// What a fuzz target calls to say that an invariant holds: a broken one stops the run as a crash,
// which the fuzzer records with its input.
#pragma once

inline void check(bool ok) {
    if (!ok) __builtin_trap();
}
