// Records, status and progress types shared by the analysis library.
//
// The LPC record and the formant record are the library's results that a
// caller reads after an analysis; both live in an AnalysisWorkspace and are
// overwritten by the next analysis on that workspace.
#pragma once

#include <cstdint>
#include <functional>

namespace sonmetra {

inline constexpr int kMaxLpcOrder = 400;
inline constexpr int kMaxQuadratics = 200;

// Linear prediction of one block (autocorrelation method).
struct LpcRecord {
    std::int32_t order = 0;                    // order used, at most 400
    double reflection[kMaxLpcOrder + 1] = {};  // k[1..order]
    double predictor[kMaxLpcOrder + 1] = {};   // a[0..order], a[0] = 1
    double energy = 0.0;                       // residual energy, not normalised
};

// Quadratic factors of a predictor polynomial and the formants taken from them.
struct FormantRecord {
    std::int32_t quadraticCount = 0;
    double p1[kMaxQuadratics] = {};  // factor z² + P1·z + P2, in the order found
    double p2[kMaxQuadratics] = {};
    double rootReal[kMaxQuadratics] = {};
    double rootImag[kMaxQuadratics] = {};
    std::int32_t formantCount = 0;
    double frequency[kMaxQuadratics] = {};  // Hz, ascending
    double bandwidth[kMaxQuadratics] = {};  // Hz
};

enum class AnalysisStatus { Ok, Cancelled, Failed };

// Called after every frame or column with (done, total); returning false
// cancels the computation between frames.
using AnalysisProgress = std::function<bool(int done, int total)>;

}  // namespace sonmetra
