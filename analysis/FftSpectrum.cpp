#include "analysis/FftSpectrum.h"

#include <cmath>
#include <cstdio>

#include "analysis/AnalysisWindow.h"
#include "analysis/Fft.h"
#include "analysis/Spline.h"

namespace sonmetra {

namespace {

// Steps 1 to 5: the bins' levels in dB into samples[0 .. n/2 − 1].
void levelsOfBlock(double* samples, int n, double preEmphasis, int windowKind, AnalysisWorkspace& ws) {
    int m = 1;
    int p = 2;
    while (p < n) {
        p *= 2;
        ++m;
    }
    // Sizes beyond the eight of the option lists grow the work arrays once.
    double* re = ws.ensure(ws.m_re, static_cast<std::size_t>(p));
    double* im = ws.ensure(ws.m_im, static_cast<std::size_t>(p));
    const double* w = ws.window(n, windowKind);
    PrepareBlock(samples, re, n, preEmphasis, w);
    for (int i = 0; i < n; ++i) im[i] = 0.0;
    Fft(re, im, m);

    const int bins = n / 2;
    for (int k = 0; k < bins; ++k) {
        const double power = re[k] * re[k] + im[k] * im[k];
        samples[k] = power == 0.0 ? 0.0 : 10.0 * std::log10(power);
    }
}

// Step 6 with the spline table y2 already solved.
void resampleBlock(double* samples, const double* x, const double* y, const double* y2, int bins, int n, int nPoints,
                   int maxFrequencyHz, double sampleRateHz) {
    const double step = (maxFrequencyHz / (sampleRateHz * 0.5)) * (n * 0.5) / nPoints;
    if (step >= 0.0) {
        detail::SplineValuesOnUnitGrid(y, y2, bins, step, nPoints, samples);
    } else {
        // The value of a coincident interval is whatever the variable held
        // last, as the spectrum ignores SplineValue's answer.
        double value = 0.0;
        for (int j = 0; j < nPoints; ++j) {
            SplineValue(x, y, y2, bins, j * step, value);
            samples[j] = value;
        }
    }
}

}  // namespace

int FftSpectra(double* const samples[4], int n, double preEmphasis, int windowKind, int nPoints, int maxFrequencyHz,
               double sampleRateHz, AnalysisWorkspace& ws) {
    for (int l = 0; l < 4; ++l) levelsOfBlock(samples[l], n, preEmphasis, windowKind, ws);
    const int bins = n / 2;
    if (bins < 1) return 0;
    // The last block's tables are the workspace's own, as after FftSpectrum.
    const std::size_t size = static_cast<std::size_t>(bins) + 2;
    double* x = ws.ensure(ws.m_splineX, size);
    double* ys[4];
    double* y2s[4];
    ws.ensure(ws.m_spectraTables, 6 * size);
    for (int l = 0; l < 3; ++l) {
        ys[l] = ws.m_spectraTables.data() + 2 * static_cast<std::size_t>(l) * size;
        y2s[l] = ys[l] + size;
    }
    ys[3] = ws.ensure(ws.m_splineY, size);
    y2s[3] = ws.ensure(ws.m_splineY2, size);
    for (int k = 1; k <= bins; ++k) {
        x[k] = k - 1;
        for (int l = 0; l < 4; ++l) ys[l][k] = samples[l][k - 1];
    }
    const double* const yTables[4] = {ys[0], ys[1], ys[2], ys[3]};
    NaturalSplinesOnUnitGrid(yTables, bins, y2s);
    for (int l = 0; l < 4; ++l)
        resampleBlock(samples[l], x, ys[l], y2s[l], bins, n, nPoints, maxFrequencyHz, sampleRateHz);
    return 0;
}

int FftSpectrum(double* samples, int n, double preEmphasis, int windowKind, int resample, int nPoints,
                int maxFrequencyHz, double sampleRateHz, AnalysisWorkspace& ws) {
    levelsOfBlock(samples, n, preEmphasis, windowKind, ws);
    const int bins = n / 2;
    if (resample == 0 || bins < 1) return 0;

    double* x = ws.ensure(ws.m_splineX, static_cast<std::size_t>(bins) + 2);
    double* y = ws.ensure(ws.m_splineY, static_cast<std::size_t>(bins) + 2);
    double* y2 = ws.ensure(ws.m_splineY2, static_cast<std::size_t>(bins) + 2);
    for (int k = 1; k <= bins; ++k) {
        x[k] = k - 1;
        y[k] = samples[k - 1];
    }
    NaturalSplineOnUnitGrid(y, bins, y2);
    resampleBlock(samples, x, y, y2, bins, n, nPoints, maxFrequencyHz, sampleRateHz);
    return 0;
}

std::string FftSizeLabel(int index, double sampleRateHz) {
    static const char* const kSizeLabels[8] = {"(  32 pts)",  "(  64 pts)",  " ( 128 pts)", " ( 256 pts)",
                                               " ( 512 pts)", " (1024 pts)", " (2048 pts)", " (4096 pts)"};
    if (index < 0 || index > 7) return {};
    char text[64];
    std::snprintf(text, sizeof text, "  %d  Hz  ", static_cast<int>(sampleRateHz / FftSizeOfIndex(index)));
    return std::string(text) + kSizeLabels[index];
}

}  // namespace sonmetra
