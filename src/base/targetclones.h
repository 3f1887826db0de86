#pragma once

/// ZRT_TARGET_CLONES before a function compiles it once per listed instruction set; the
/// program picks the best one the processor has when it starts. Without contraction every
/// clone gives the same results, so the macro may expand to nothing where the compiler or
/// the platform lacks clones. The sanitizers cannot run the resolvers, which the loader
/// calls before their own start.
#if defined(__x86_64__) && defined(__linux__) && defined(__GNUC__) && !defined(__clang__) &&       \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZRT_TARGET_CLONES __attribute__((target_clones("default", "avx2", "avx512f")))
#else
#define ZRT_TARGET_CLONES
#endif
