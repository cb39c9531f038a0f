#include "analysis/LpcSpectrum.h"

#include <cmath>

#include "analysis/AnalysisWindow.h"
#include "analysis/FactorPolynomial.h"
#include "analysis/Fft.h"
#include "analysis/LpcAnalysis.h"
#include "analysis/Spline.h"

namespace sonmetra {

void LpcSpectrum(double* samples, int p, int n, double preEmphasis, int windowKind, int resample, int nPoints,
                 int maxFrequencyHz, double sampleRateHz, int findFormants, int skipSpectrum, AnalysisWorkspace& ws) {
    PrepareBlock(samples, samples, n, preEmphasis, ws.window(n, windowKind));
    const LpcRecord& rec = LpcAnalysis(samples, n, p, ws);
    const int order = rec.order;

    if (findFormants != 0) {
        double* copy = ws.m_coefficients.data();
        for (int i = 0; i <= kMaxLpcOrder; ++i) copy[i] = i <= order ? rec.predictor[i] : 0.0;
        ws.m_lastFormants = FactorPolynomial(order, kFormantBandwidthLimitHz, copy, sampleRateHz, ws);
    }
    if (skipSpectrum != 0) return;

    double* re = ws.m_re.data();
    double* im = ws.m_im.data();
    for (int i = 0; i <= order; ++i) re[i] = rec.predictor[i];
    for (int i = order + 1; i < kEnvelopePoints; ++i) re[i] = 0.0;
    for (int i = 0; i < kEnvelopePoints; ++i) im[i] = 0.0;
    Fft(re, im, 8);

    constexpr int kBins = kEnvelopePoints / 2;
    double* x = ws.ensure(ws.m_splineX, kBins + 2);
    double* y = ws.ensure(ws.m_splineY, kBins + 2);
    double* y2 = ws.ensure(ws.m_splineY2, kBins + 2);
    for (int k = 0; k < kBins; ++k) {
        const double q = re[k] * re[k] + im[k] * im[k];
        y[k + 1] = q == 0.0 ? 0.0 : 10.0 * std::log10(q);
        x[k + 1] = k;
    }
    if (resample == 0) {
        for (int k = 0; k < kBins; ++k) samples[k] = y[k + 1];
        return;
    }
    NaturalSplineOnUnitGrid(y, kBins, y2);
    const double step = kBins * (maxFrequencyHz / (sampleRateHz * 0.5)) / nPoints;
    if (step >= 0.0) {
        detail::SplineValuesOnUnitGrid(y, y2, kBins, step, nPoints, samples);
        return;
    }
    double value = 0.0;
    for (int j = 0; j < nPoints; ++j) {
        SplineValue(x, y, y2, kBins, j * step, value);
        samples[j] = value;
    }
}

}  // namespace sonmetra
