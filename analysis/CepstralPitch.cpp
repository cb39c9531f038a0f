#include "analysis/CepstralPitch.h"

#include <cmath>

#include "analysis/Fft.h"
#include "analysis/Spline.h"

namespace sonmetra {

double CepstralPitch(const std::int16_t* samples, double position, double rangeLength, double sampleRateHz,
                     double lowF0Hz, double highF0Hz, int fftSize, int windowLength, AnalysisWorkspace& ws) {
    int m = 0;
    switch (fftSize) {
        case 128:
            m = 7;
            break;
        case 256:
            m = 8;
            break;
        case 512:
            m = 9;
            break;
        case 1024:
            m = 10;
            break;
        case 2048:
            m = 11;
            break;
        case 4096:
            m = 12;
            break;
        default:
            return -1.0;
    }
    const int n = fftSize;
    const int L = windowLength < n ? windowLength : n;

    double* x = ws.ensure(ws.m_pitchFrame, static_cast<std::size_t>(L) + 16);
    const CepstralFrameCopy copy = CepstralFrameExtent(position, rangeLength, L);
    for (long j = copy.first; j < copy.stop; ++j) x[j - copy.first + 1] = samples[j];

    double* re = ws.m_re.data();
    double* im = ws.m_im.data();
    const double* w = ws.window(L, 1);
    for (int i = 0; i < L; ++i) {
        re[i] = w[i] * x[i + 1];
        im[i] = 0.0;
    }
    for (int i = L; i < n; ++i) re[i] = im[i] = 0.0;
    Fft(re, im, m);
    for (int k = 0; k < n; ++k) {
        const double p = re[k] * re[k] + im[k] * im[k];
        re[k] = p == 0.0 ? 0.0 : 10.0 * std::log10(p);
        im[k] = 0.0;
    }
    Fft(re, im, m);

    const int lo = static_cast<int>(sampleRateHz / highF0Hz);
    const int hi = static_cast<int>(sampleRateHz / lowF0Hz);
    const int half = n / 2;
    double* c = ws.ensure(ws.m_cepstrum, static_cast<std::size_t>(hi > half ? hi : half) + 1);
    for (int k = 0; k < half; ++k) c[k] = re[k] * re[k] + im[k] * im[k];
    for (int k = 0; k < lo && k < half; ++k) c[k] = 0.0;
    for (int k = hi; k < half; ++k) c[k] = 0.0;

    const int count = hi - lo;
    const int lo10 = static_cast<int>(10.0 * sampleRateHz / highF0Hz);
    const int hi10 = static_cast<int>(10.0 * sampleRateHz / lowF0Hz);
    const std::size_t fineSize = static_cast<std::size_t>(hi10 > lo10 + 10 * count ? hi10 : lo10 + 10 * count) + 1;
    double* fine = ws.ensure(ws.m_fine, fineSize);
    if (count > 0 && lo >= 0) {
        double* tx = ws.ensure(ws.m_pitchX, static_cast<std::size_t>(count) + 2);
        double* ty = ws.ensure(ws.m_pitchY, static_cast<std::size_t>(count) + 2);
        double* ty2 = ws.ensure(ws.m_pitchY2, static_cast<std::size_t>(count) + 2);
        for (int t = 0; t < count; ++t) {
            tx[t + 1] = t;
            ty[t + 1] = c[lo + t];
        }
        NaturalSplineOnUnitGrid(ty, count, ty2);
        const double tenth = static_cast<double>(count) / static_cast<double>(10 * count);
        detail::SplineValuesOnUnitGrid(ty, ty2, count, tenth, 10 * count, fine + lo10);
    }

    // The first strict maximum above 0.0: the largest value first (four
    // independent running maxima), then its first position. A NaN never
    // compares greater, in either form.
    double best = 0.0;
    int bestIndex = hi10;
    {
        double m[4] = {0.0, 0.0, 0.0, 0.0};
        int idx = lo10;
        for (; idx + 3 < hi10; idx += 4)
            for (int j = 0; j < 4; ++j)
                if (fine[idx + j] > m[j]) m[j] = fine[idx + j];
        for (; idx < hi10; ++idx)
            if (fine[idx] > m[0]) m[0] = fine[idx];
        for (int j = 0; j < 4; ++j)
            if (m[j] > best) best = m[j];
        if (best > 0.0) {
            for (idx = lo10; idx < hi10; ++idx)
                if (fine[idx] == best) {
                    bestIndex = idx;
                    break;
                }
        }
    }
    if (bestIndex == 0) bestIndex = 1;
    const double f0 = sampleRateHz / (bestIndex / 10.0);
    if (f0 > highF0Hz || f0 < lowF0Hz) return 0.0;
    return f0;
}

}  // namespace sonmetra
