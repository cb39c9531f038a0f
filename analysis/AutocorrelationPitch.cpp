#include "analysis/AutocorrelationPitch.h"

#include <cmath>
#include <numbers>

#include "analysis/Fft.h"

namespace sonmetra {
namespace {

constexpr double kOctaveBonus = 0.01;
constexpr double kSubharmonicShare = 0.85;
constexpr int kMaxCandidates = 64;

// Hann window of n points and its normalised autocorrelation, for one length.
void prepareWindow(AnalysisWorkspace& ws, int n, int m) {
    if (ws.m_acWindowLength == n && ws.m_acFftExponent == m) return;
    const std::size_t size = std::size_t{1} << m;
    double* w = ws.ensure(ws.m_acWindow, static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) w[i] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * (i + 0.5) / n);
    double* re = ws.ensure(ws.m_acRe, size);
    double* im = ws.ensure(ws.m_acIm, size);
    for (std::size_t i = 0; i < size; ++i) {
        re[i] = i < static_cast<std::size_t>(n) ? w[i] : 0.0;
        im[i] = 0.0;
    }
    Fft(re, im, m);
    for (std::size_t i = 0; i < size; ++i) {
        re[i] = re[i] * re[i] + im[i] * im[i];
        im[i] = 0.0;
    }
    Fft(re, im, m);
    double* rw = ws.ensure(ws.m_acWindowCorrelation, static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) rw[i] = re[i] / re[0];
    ws.m_acWindowLength = n;
    ws.m_acFftExponent = m;
}

}  // namespace

double AutocorrelationPitch(const std::int16_t* samples, double rangeStart, double rangeEnd, double position,
                            int windowLength, double sampleRateHz, double lowF0Hz, double highF0Hz,
                            AnalysisWorkspace& ws) {
    if (!(lowF0Hz > 0.0) || !(highF0Hz > lowF0Hz) || !(sampleRateHz > 0.0)) return 0.0;
    const long first = static_cast<long>(rangeStart);
    const long limit = static_cast<long>(rangeEnd);
    int n = static_cast<int>(std::ceil(3.0 * sampleRateHz / lowF0Hz));
    if (n < windowLength) n = windowLength;
    if (n > limit - first) n = static_cast<int>(limit - first);
    const int minLag = static_cast<int>(std::floor(sampleRateHz / highF0Hz));
    int maxLag = static_cast<int>(std::ceil(sampleRateHz / lowF0Hz));
    if (maxLag > n - 2) maxLag = n - 2;
    if (minLag < 2 || maxLag <= minLag) return 0.0;

    long begin = static_cast<long>(std::floor(position + windowLength / 2.0 - n / 2.0));
    if (begin + n > limit) begin = limit - n;
    if (begin < first) begin = first;

    // Circular correlation equals the linear one for every lag up to
    // maxLag + 1 once the transform holds n + maxLag + 1 points.
    int m = 1;
    while ((1 << m) < n + maxLag + 2) ++m;
    if (m > kMaxFftExponent) return 0.0;
    prepareWindow(ws, n, m);
    const std::size_t size = std::size_t{1} << m;
    double* re = ws.m_acRe.data();
    double* im = ws.m_acIm.data();
    const double* w = ws.m_acWindow.data();
    const double* rw = ws.m_acWindowCorrelation.data();

    double mean = 0.0;
    for (int i = 0; i < n; ++i) mean += samples[begin + i];
    mean /= n;
    for (int i = 0; i < n; ++i) {
        re[i] = (samples[begin + i] - mean) * w[i];
        im[i] = 0.0;
    }
    for (std::size_t i = static_cast<std::size_t>(n); i < size; ++i) re[i] = im[i] = 0.0;
    Fft(re, im, m);
    for (std::size_t i = 0; i < size; ++i) {
        re[i] = re[i] * re[i] + im[i] * im[i];
        im[i] = 0.0;
    }
    Fft(re, im, m);
    const double r0 = re[0];
    if (!(r0 > 0.0)) return 0.0;

    const auto normalised = [&](int lag) { return (re[lag] / r0) / rw[lag]; };
    // Candidates: the local maxima above 0, each refined by a parabola.
    struct Peak {
        double lag, height;
    };
    Peak peaks[kMaxCandidates];
    int count = 0;
    int best = -1;
    double bestStrength = -1e300;
    double prev = normalised(minLag - 1), here = normalised(minLag);
    for (int lag = minLag; lag <= maxLag; ++lag) {
        const double next = normalised(lag + 1);
        if (here > 0.0 && here >= prev && here > next && count < kMaxCandidates) {
            // Parabola through the three values: vertex offset and height.
            const double denom = prev - 2.0 * here + next;
            double offset = denom < 0.0 ? 0.5 * (prev - next) / denom : 0.0;
            if (offset > 0.5) offset = 0.5;
            if (offset < -0.5) offset = -0.5;
            const Peak p{lag + offset, here - 0.25 * (prev - next) * offset};
            const double strength = p.height + kOctaveBonus * std::log2(sampleRateHz / p.lag / lowF0Hz);
            if (strength > bestStrength) {
                bestStrength = strength;
                best = count;
            }
            peaks[count++] = p;
        }
        prev = here;
        here = next;
    }
    if (best < 0) return 0.0;
    // Octave check: a peak near a half or a third of the winning lag that is
    // nearly as strong is the true period, the winner one of its multiples.
    for (bool moved = true; moved;) {
        moved = false;
        for (const int divisor : {2, 3}) {
            const double target = peaks[best].lag / divisor;
            for (int c = 0; c < count; ++c) {
                if (std::fabs(peaks[c].lag - target) <= 0.06 * target + 1.0 &&
                    peaks[c].height >= kSubharmonicShare * peaks[best].height) {
                    best = c;
                    moved = true;
                    break;
                }
            }
            if (moved) break;
        }
    }
    const double bestHeight = peaks[best].height, bestLag = peaks[best].lag;
    if (bestHeight < kAutocorrelationVoicingThreshold) return 0.0;
    const double f0 = sampleRateHz / bestLag;
    if (f0 > highF0Hz || f0 < lowF0Hz) return 0.0;
    return f0;
}

}  // namespace sonmetra
