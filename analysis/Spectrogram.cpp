#include "analysis/Spectrogram.h"

#include <algorithm>
#include <new>

#include "analysis/FftSpectrum.h"
#include "analysis/LpcSpectrum.h"

namespace sonmetra {
namespace {

// The largest of v[0..n−1] and `start`, replaced only on strictly larger
// values (a NaN never is). Four running maxima, so that the loop does not wait
// on one comparison after another; for a maximum the order does not matter.
double largestAbove(const double* v, int n, double start) {
    double m[4] = {start, start, start, start};
    int k = 0;
    for (; k + 3 < n; k += 4)
        for (int j = 0; j < 4; ++j) m[j] = v[k + j] > m[j] ? v[k + j] : m[j];
    for (; k < n; ++k) m[0] = v[k] > m[0] ? v[k] : m[0];
    for (int j = 1; j < 4; ++j) m[0] = m[j] > m[0] ? m[j] : m[0];
    return m[0];
}

}  // namespace

AnalysisStatus ComputeSpectrogram(const SpectrogramInput& in, const SpectrogramSettings& settings, int columns,
                                  int points, bool trackFormants, SpectrogramResult& result,
                                  const AnalysisProgress& progress, AnalysisWorkspace& ws) {
    result = SpectrogramResult{};
    if (columns < 1 || points < 1 || settings.fftSizeIndex < 0 || settings.fftSizeIndex > 7 || !(in.rateHz > 0.0))
        return AnalysisStatus::Failed;
    const int n = FftSizeOfIndex(settings.fftSizeIndex);
    const double total = in.sampleCount;
    const double step = (in.endSample - in.startSample) / columns;
    const int order = settings.lpcOrder;
    const int lpcLength = static_cast<int>(in.rateHz * 0.001) * order;
    const std::size_t columnSize = static_cast<std::size_t>(std::max(points, n + 16));

    std::vector<double> column, lpcBlock;
    try {
        result.levels.assign(static_cast<std::size_t>(columns) * static_cast<std::size_t>(points), 0.0);
        column.assign(columnSize, 0.0);
        if (trackFormants) {
            lpcBlock.assign(static_cast<std::size_t>(std::max(lpcLength, 0)) + 20, 0.0);
            result.formants.assign(static_cast<std::size_t>(columns), {0, 0, 0, 0, 0});
        }
    } catch (const std::bad_alloc&) {
        result = SpectrogramResult{};
        return AnalysisStatus::Failed;
    }
    result.columns = columns;
    result.points = points;
    const std::int16_t* s = in.samples;
    double top = -1e7;  // the largest level, kept while the columns are made

    for (int i = 0; i < columns; ++i) {
        const double pos = i * step + in.startSample;
        const long first = static_cast<long>(pos);
        const bool whole = n + pos + 10 <= total;
        const long stop = whole ? static_cast<long>(n + pos + 10) : static_cast<long>(total - pos);
        // A short copy leaves the rest of the block as a fresh, zeroed column
        // block would hold it. A whole copy covers every value the transform reads.
        if (!whole) std::fill(column.begin(), column.end(), 0.0);
        for (long j = first; j < stop; ++j) column[static_cast<std::size_t>(j - first)] = s[j];
        if (FftSpectrum(column.data(), n, settings.preEmphasis, 1, 1, points, settings.frequencyRangeHz, in.rateHz,
                        ws) != 0) {
            result = SpectrogramResult{};
            return AnalysisStatus::Failed;
        }
        std::copy(column.begin(), column.begin() + points, result.levels.begin() + static_cast<long>(i) * points);
        top = largestAbove(column.data(), points, top);

        if (trackFormants) {
            // Past the channel's end nothing is read; the block keeps what it held.
            long lpcStop =
                lpcLength + pos <= total ? static_cast<long>(lpcLength + pos + 5) : static_cast<long>(total - pos);
            lpcStop = std::min(lpcStop, static_cast<long>(total));
            for (long j = first; j < lpcStop; ++j) lpcBlock[static_cast<std::size_t>(j - first)] = s[j];
            LpcSpectrum(lpcBlock.data(), order, lpcLength, settings.preEmphasis, 1, 0, columns,
                        settings.frequencyRangeHz, in.rateHz, 1, 1, ws);
            const FormantRecord* rec = LastFormants(ws);
            auto& frame = result.formants[static_cast<std::size_t>(i)];
            for (int k = 0; k < 5; ++k) {
                const double f = rec ? rec->frequency[k] : 0.0;
                const double b = rec ? rec->bandwidth[k] : 0.0;
                if ((f + 0.5) / (b + 0.5) > 1.0) {
                    frame[static_cast<std::size_t>(k)] = static_cast<std::int16_t>(f);
                    result.formantsFound = true;
                } else {
                    frame[static_cast<std::size_t>(k)] = 0;
                }
            }
        }
        if (progress && !progress(i + 1, columns)) {
            result = SpectrogramResult{};
            return AnalysisStatus::Cancelled;
        }
    }

    const double range = settings.dynamicRangeDb;
    for (double& v : result.levels) {
        v = v - top + range;
        if (!(v >= 0.0)) v = 0.0;
    }

    if (trackFormants) {
        const double threshold = range * 0.3;
        const int frames = columns;
        for (int j = 0; j < frames; ++j) {
            const int c = static_cast<int>(static_cast<long>(j) * columns / frames);
            double m = -100000.0;
            const double* col = result.column(c);
            for (int k = 0; k < points; ++k)
                if (col[k] > m) m = col[k];
            if (m < threshold) result.formants[static_cast<std::size_t>(j)] = {0, 0, 0, 0, 0};
        }
    }
    return AnalysisStatus::Ok;
}

}  // namespace sonmetra
