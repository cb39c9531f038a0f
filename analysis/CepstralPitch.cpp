#include "analysis/CepstralPitch.h"

#include <algorithm>
#include <cmath>

#include "analysis/Fft.h"
#include "analysis/Spline.h"

namespace sonmetra {
namespace {

// The first index of the largest value above 0.0 in fine[lo10 … hi10 − 1], or
// hi10 when none is above 0.0: the largest value first (four independent
// running maxima), then its first position. A NaN never compares greater, in
// either form.
int peakOfFineArray(const double* fine, int lo10, int hi10) {
    double best = 0.0;
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
            if (fine[idx] == best) return idx;
    }
    return hi10;
}

// Largest possible value of the spline in interval klo (not the last one,
// which extrapolates): there a and b lie in [0, 1] with a + b = 1, so
// a·ylo + b·yhi is at most the larger of ylo and yhi, and |a³ − a| and
// |b³ − b| are at most 2/(3√3) = 0.3849…, a sixth of which is below 0.0642.
// The last term covers the rounding of the evaluation many times over.
double intervalBound(const double* y, const double* y2, int klo) {
    const double ylo = y[klo], yhi = y[klo + 1], dlo = std::fabs(y2[klo]), dhi = std::fabs(y2[klo + 1]);
    return (ylo > yhi ? ylo : yhi) + 0.0642 * (dlo + dhi) + 1e-12 * (std::fabs(ylo) + std::fabs(yhi) + dlo + dhi);
}

// peakOfFineArray over the fine cepstrum as the spline would write it into
// fine[lo10 …] (entries beyond the spline's points read as they stand),
// without writing it and without evaluating the intervals whose bound lies
// below the largest value already found: the largest value over all points
// first, starting with the interval of the highest bound, then its first
// position. The values evaluated are the very numbers the array would hold.
int peakWithoutFineArray(const double* y, const double* y2, int n, double step, int lo10, int hi10, const double* fine,
                         AnalysisWorkspace& ws) {
    const int points = std::min(10 * n, std::max(hi10 - lo10, 0));
    const detail::UnitGridIntervals g{y, y2, n, step, points};
    // The points of interval group k are [groups[k], groups[k + 1]).
    if (ws.m_fineGroupsPoints != points || ws.m_fineGroupsStep != step) {
        ws.m_fineGroups.clear();
        for (int i = 0; i < points; i = g.groupEnd(i, g.interval(i))) ws.m_fineGroups.push_back(i);
        ws.m_fineGroups.push_back(points);
        ws.m_fineGroupsPoints = points;
        ws.m_fineGroupsStep = step;
    }
    const int* groups = ws.m_fineGroups.data();
    const int groupCount = static_cast<int>(ws.m_fineGroups.size()) - 1;
    double* bounds = ws.ensure(ws.m_fineBounds, static_cast<std::size_t>(groupCount) + 1);

    double best = 0.0;
    for (int idx = lo10 + 10 * n; idx < hi10; ++idx)
        if (fine[idx] > best) best = fine[idx];
    int seed = 0;
    for (int k = 0; k < groupCount; ++k) {
        const int klo = g.interval(groups[k]);
        bounds[k] = klo >= n - 1 ? HUGE_VAL : intervalBound(y, y2, klo);
        if (bounds[k] > bounds[seed]) seed = k;
    }
    const auto largestIn = [&](int k) {
        const int klo = g.interval(groups[k]);
        for (int j = groups[k]; j < groups[k + 1]; ++j) {
            const double v = g.value(j, klo);
            if (v > best) best = v;
        }
    };
    if (groupCount > 0) largestIn(seed);
    for (int k = 0; k < groupCount; ++k)
        if (k != seed && !(bounds[k] < best)) largestIn(k);
    if (!(best > 0.0)) return hi10;
    for (int k = 0; k < groupCount; ++k) {
        if (bounds[k] < best) continue;
        const int klo = g.interval(groups[k]);
        for (int j = groups[k]; j < groups[k + 1]; ++j)
            if (g.value(j, klo) == best) return lo10 + j;
    }
    for (int idx = lo10 + 10 * n; idx < hi10; ++idx)
        if (fine[idx] == best) return idx;
    return hi10;
}

}  // namespace

double CepstralPitch(const std::int16_t* samples, double position, double rangeLength, double sampleRateHz,
                     double lowF0Hz, double highF0Hz, int fftSize, int windowLength, AnalysisWorkspace& ws) {
    return CepstralPitch(samples, position, rangeLength, sampleRateHz, lowF0Hz, highF0Hz, fftSize, windowLength, ws,
                         CepstralState::Complete);
}

double CepstralPitch(const std::int16_t* samples, double position, double rangeLength, double sampleRateHz,
                     double lowF0Hz, double highF0Hz, int fftSize, int windowLength, AnalysisWorkspace& ws,
                     CepstralState state) {
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

    const int lo = static_cast<int>(sampleRateHz / highF0Hz);
    const int hi = static_cast<int>(sampleRateHz / lowF0Hz);
    const int half = n / 2;
    double* c = ws.ensure(ws.m_cepstrum, static_cast<std::size_t>(hi > half ? hi : half) + 1);
    // Only the quefrencies [lo, hi) survive the limits below.
    const int used = hi < half ? hi : half;
    if (state == CepstralState::ForNextFrame && lo >= 0 && lo < used) {
        FftFirstHalf(re, im, m, lo, used);
        for (int k = 0; k < half; ++k) c[k] = k >= lo && k < used ? re[k] * re[k] + im[k] * im[k] : 0.0;
    } else {
        Fft(re, im, m);
        for (int k = 0; k < half; ++k) c[k] = re[k] * re[k] + im[k] * im[k];
    }
    for (int k = 0; k < lo && k < half; ++k) c[k] = 0.0;
    for (int k = hi; k < half; ++k) c[k] = 0.0;

    const int count = hi - lo;
    const int lo10 = static_cast<int>(10.0 * sampleRateHz / highF0Hz);
    const int hi10 = static_cast<int>(10.0 * sampleRateHz / lowF0Hz);
    const std::size_t fineSize = static_cast<std::size_t>(hi10 > lo10 + 10 * count ? hi10 : lo10 + 10 * count) + 1;
    double* fine = ws.ensure(ws.m_fine, fineSize);
    int bestIndex = hi10;
    bool searched = false;
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
        if (state == CepstralState::ForNextFrame && count >= 3) {
            bestIndex = peakWithoutFineArray(ty, ty2, count, tenth, lo10, hi10, fine, ws);
            searched = true;
        } else {
            detail::SplineValuesOnUnitGrid(ty, ty2, count, tenth, 10 * count, fine + lo10);
        }
    }
    if (!searched) bestIndex = peakOfFineArray(fine, lo10, hi10);
    if (bestIndex == 0) bestIndex = 1;
    const double f0 = sampleRateHz / (bestIndex / 10.0);
    if (f0 > highF0Hz || f0 < lowF0Hz) return 0.0;
    return f0;
}

}  // namespace sonmetra
