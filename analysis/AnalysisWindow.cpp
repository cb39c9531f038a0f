#include "analysis/AnalysisWindow.h"

#include <cmath>
#include <numbers>

namespace sonmetra {

void HammingWindow(double* w, int n) {
    for (int i = 0; i < n; ++i) w[i] = 0.54 - 0.46 * std::cos(2.0 * std::numbers::pi * i / n);
}

void RectangularWindow(double* w, int n) {
    for (int i = 0; i < n; ++i) w[i] = 1.0;
}

void BuildWindow(double* w, int n, int kind) {
    if (kind == kHammingWindow)
        HammingWindow(w, n);
    else
        RectangularWindow(w, n);
}

void PrepareBlock(const double* samples, double* out, int n, double preEmphasis, const double* w) {
    if (preEmphasis <= 0.0) {
        for (int i = 0; i < n; ++i) out[i] = samples[i] * w[i];
    } else {
        // Increasing i reads samples[i+1] before out[i+1] can overwrite it.
        for (int i = 0; i < n; ++i) out[i] = (samples[i + 1] - preEmphasis * samples[i]) * w[i];
    }
}

}  // namespace sonmetra
