// Google Benchmark's context line "Library was built as DEBUG" speaks of the
// distribution's benchmark library, not of the code measured. This adds how
// Sonmetra's own code was built to the context every analysis benchmark prints.
#pragma once

#include <benchmark/benchmark.h>

namespace sonmetra::bench {

inline void AddBuildContext() {
    benchmark::AddCustomContext("sonmetra_build", SONMETRA_BUILD_DESCRIPTION);
#if defined(NDEBUG)
    benchmark::AddCustomContext("sonmetra_ndebug", "defined");
#else
    benchmark::AddCustomContext("sonmetra_ndebug", "not defined: assertions are on, figures are not representative");
#endif
}

}  // namespace sonmetra::bench
