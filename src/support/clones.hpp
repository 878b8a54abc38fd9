// Hot loops built once per instruction set, the best one chosen when the program starts, so that
// one build runs on any x86-64 processor and still uses AVX2 or AVX-512 where it finds them. Only
// GCC's release builds: clang and the sanitizer builds take the plain function (a chooser runs
// before the sanitizer's runtime is ready, and the thread sanitizer instruments it).
#pragma once

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define WAVEX_CLONES __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define WAVEX_CLONES
#endif
