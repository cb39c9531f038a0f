#include "analysis/PitchTrack.h"

#include <cmath>
#include <new>

#include "analysis/AutocorrelationPitch.h"
#include "analysis/CepstralPitch.h"
#include "analysis/FrameIntensity.h"

namespace sonmetra {

void PitchWindowSize(PitchSettings& settings, double rateHz, int& windowSamples, int& fftSize) {
    int L = static_cast<int>(rateHz * 0.001 * settings.windowMs);
    fftSize = L < 1024 ? 1024 : (L < 2048 ? 2048 : 4096);
    if (L >= 4096) {
        settings.windowMs = static_cast<std::int32_t>(1000.0 / rateHz * 4096.0);
        L = static_cast<int>(settings.windowMs * rateHz * 0.001);
    }
    windowSamples = L;
}

void CleanPitchTrack(const double* raw, double* track, int frames, int deviationHz) {
    for (int i = 0; i < frames; ++i) track[i] = 0.0;
    for (int i = 1; i <= frames - 2; ++i) {
        if (static_cast<long>(std::fabs(raw[i - 1] - raw[i])) >= deviationHz)
            track[i] = 0.0;
        else if (static_cast<long>(std::fabs(raw[i + 1] - raw[i])) >= deviationHz)
            track[i] = 0.0;
        else
            track[i] = raw[i];
    }
    for (int k = 0; k < frames - 3; ++k) {
        if (track[k] != 0.0 && track[k + 1] != 0.0 && track[k + 2] != 0.0)
            track[k] = (track[k] + track[k + 1] + track[k + 2]) / 3.0;
    }
}

AnalysisStatus ComputePitchTrack(const PitchTrackInput& in, PitchSettings& settings, PitchTrackResult& result,
                                 const AnalysisProgress& progress, AnalysisWorkspace& ws) {
    result = PitchTrackResult{};
    const double rangeLength = in.endSample - in.startSample;
    if (!(in.rateHz > 0.0) || settings.lowHz <= 0 || settings.highHz <= 0 || !(rangeLength >= 0.0) ||
        in.startSample < 0.0 || in.endSample > in.sampleCount)
        return AnalysisStatus::Failed;
    int L = 0, fftSize = 0;
    PitchWindowSize(settings, in.rateHz, L, fftSize);
    const double step = in.rateHz * 0.001 * settings.stepMs;
    if (!(step > 0.0) || L < 1) return AnalysisStatus::Failed;
    const int frames = static_cast<int>(rangeLength / step);

    std::vector<double> raw, track, power;
    try {
        track.assign(static_cast<std::size_t>(frames) + 10, 0.0);
        raw.assign(static_cast<std::size_t>(frames) + 10, 0.0);
        power.assign(static_cast<std::size_t>(frames) + 10, 0.0);
    } catch (const std::bad_alloc&) {
        return AnalysisStatus::Failed;
    }

    const bool cepstral = settings.method == PitchMethod::Cepstral;
    for (int i = 0; i < frames; ++i) {
        const double position = i * step + in.startSample;
        double f0;
        if (cepstral) {
            f0 = CepstralPitch(in.samples, position, rangeLength, in.rateHz, settings.lowHz, settings.highHz, fftSize,
                               L, ws);
            if (f0 == -1.0) return AnalysisStatus::Failed;
        } else {
            f0 = AutocorrelationPitch(in.samples, in.startSample, in.endSample, position, L, in.rateHz, settings.lowHz,
                                      settings.highHz, ws);
        }
        raw[static_cast<std::size_t>(i)] = f0;
        if (progress && !progress(i + 1, frames)) return AnalysisStatus::Cancelled;
    }

    CleanPitchTrack(raw.data(), track.data(), frames, settings.deviationHz);

    if (frames > 0) {
        double minimum = 0.0, maximum = 0.0;
        FrameIntensity(in.samples, power.data(), minimum, maximum, in.offset, in.startSample, step, step, frames, 0, 1);
        const double threshold = maximum * settings.thresholdPct * 0.01;
        for (int i = 0; i < frames; ++i)
            if (power[static_cast<std::size_t>(i)] <= threshold) track[static_cast<std::size_t>(i)] = 0.0;
    }

    raw.resize(static_cast<std::size_t>(frames));
    track.resize(static_cast<std::size_t>(frames));
    result.track = std::move(track);
    result.raw = std::move(raw);
    result.frameCount = frames;
    result.stepSamples = step;
    result.windowSamples = L;
    result.fftSize = fftSize;
    return AnalysisStatus::Ok;
}

}  // namespace sonmetra
