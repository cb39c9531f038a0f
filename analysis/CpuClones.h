#pragma once

// Marks a hot loop to be compiled twice, once for AVX2 and once for the
// baseline, with the loader picking the one the processor runs. The two
// clones compute the same sums in the same order; only the instructions
// differ.
//
// ThreadSanitizer instruments the loader's resolver, which runs before the
// sanitizer's runtime is up and so crashes every program at start; that build
// gets the baseline code alone.
#if defined(__SANITIZE_THREAD__)
#define SONMETRA_AVX2_CLONES
#else
#define SONMETRA_AVX2_CLONES __attribute__((target_clones("avx2", "default")))
#endif
