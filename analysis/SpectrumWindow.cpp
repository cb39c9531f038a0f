#include "analysis/SpectrumWindow.h"

#include <algorithm>
#include <new>

#include "analysis/AnalysisWindow.h"
#include "analysis/FftSpectrum.h"
#include "analysis/LpcSpectrum.h"

namespace sonmetra {
namespace {

constexpr std::size_t kWorkBlockDoubles = 65536 / sizeof(double);

}  // namespace

AnalysisStatus ComputeSpectrumWindow(const SpectrumWindowInput& in, const FftLpcSettings& settings,
                                     const SpectrumWindowOptions& options, SpectrumWindowState& state,
                                     const AnalysisProgress& progress, AnalysisWorkspace& ws) {
    if (settings.fftSizeIndex < 0 || settings.fftSizeIndex > 7 || !(in.rateHz > 0.0) || settings.averageStepMs < 0)
        return AnalysisStatus::Failed;
    const int n = FftSizeOfIndex(settings.fftSizeIndex);
    const double count = in.sampleCount;
    const int outPoints = options.resample != 0 ? options.nPoints : n / 2;
    const int lpcLength = static_cast<int>(in.rateHz * 0.001 * settings.lpcOrder);

    std::vector<double> work, spectrum, average, lpcBlock;
    try {
        work.assign(kWorkBlockDoubles, 0.0);
        spectrum.assign(static_cast<std::size_t>(std::max(n + 1, outPoints)), 0.0);
        average.assign(static_cast<std::size_t>(std::max(n, outPoints)), 0.0);
        lpcBlock.assign(
            std::max<std::size_t>(kWorkBlockDoubles, static_cast<std::size_t>(std::max(lpcLength, 0)) +
                                                         static_cast<std::size_t>(std::max(outPoints, 128)) + 8),
            0.0);
    } catch (const std::bad_alloc&) {
        return AnalysisStatus::Failed;
    }

    const bool shortWindow = options.appliedPoints > 0 && options.appliedPoints < n;
    const double step = settings.averageStepMs * in.rateHz * 0.001 + 0.5;
    int frames = 0;
    for (int k = 0;; ++k) {
        const double pos = in.startSample + k * step;
        const long first = static_cast<long>(pos);
        const long stop = n + pos <= count ? static_cast<long>(n + pos) : static_cast<long>(count - pos);
        for (long j = first; j < stop; ++j) work[static_cast<std::size_t>(j - first)] = in.samples[j];
        std::copy(work.begin(), work.begin() + n + 1, spectrum.begin());
        if (shortWindow) {
            // Window the applied stretch here and hand FftSpectrum a block that
            // needs no further window or pre-emphasis.
            const int applied = options.appliedPoints;
            PrepareBlock(spectrum.data(), spectrum.data(), applied, options.preEmphasis,
                         ws.window(applied, options.windowKind));
            std::fill(spectrum.begin() + applied, spectrum.begin() + n + 1, 0.0);
            FftSpectrum(spectrum.data(), n, 0.0, kRectangularWindow, options.resample, options.nPoints,
                        options.maxFrequencyHz, in.rateHz, ws);
        } else {
            FftSpectrum(spectrum.data(), n, options.preEmphasis, options.windowKind, options.resample, options.nPoints,
                        options.maxFrequencyHz, in.rateHz, ws);
        }
        if (k == 0) {
            std::copy(spectrum.begin(), spectrum.begin() + static_cast<long>(average.size()), average.begin());
        } else {
            for (std::size_t i = 0; i < average.size(); ++i) average[i] = (spectrum[i] + average[i]) * 0.5;
        }
        ++frames;
        if (progress && !progress(frames, 0)) return AnalysisStatus::Cancelled;
        if (n + pos >= in.endSample) break;
    }
    state.spectrum.assign(average.begin(), average.begin() + outPoints);
    state.frames = frames;

    // The LPC block starts at the analysis start; past the channel's end it stays 0.
    const long first = static_cast<long>(in.startSample);
    const long stop = std::min(static_cast<long>(count), first + lpcLength + 5);
    for (long j = first; j < stop; ++j) lpcBlock[static_cast<std::size_t>(j - first)] = in.samples[j];
    const int envelopePoints = options.resample != 0 ? options.nPoints : n / 2;
    const int envelopeTop = options.resample != 0 ? options.maxFrequencyHz : static_cast<int>(in.rateHz / 2.0);
    LpcSpectrum(lpcBlock.data(), settings.lpcOrder, lpcLength, 0.0, 1, 1, envelopePoints, envelopeTop, in.rateHz, 1, 0,
                ws);
    state.envelope.assign(lpcBlock.begin(), lpcBlock.begin() + envelopePoints);
    const FormantRecord* rec = LastFormants(ws);
    state.formantsFound = rec != nullptr;
    if (rec) {
        for (int k = 0; k < 5; ++k) {
            state.formantHz[static_cast<std::size_t>(k)] = rec->frequency[k] + 0.5;
            state.bandwidthHz[static_cast<std::size_t>(k)] = rec->bandwidth[k] + 0.5;
        }
    }
    return AnalysisStatus::Ok;
}

}  // namespace sonmetra
