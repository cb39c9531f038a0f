#include "analysis/PitchTrack.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include "analysis/AutocorrelationPitch.h"
#include "analysis/CepstralPitch.h"
#include "analysis/FrameIntensity.h"
#include "analysis/ParallelFrames.h"

namespace sonmetra {
namespace {

constexpr int kFramesPerPiece = 32;

// How the frames of a cepstral track copy into the frame array x. Each frame
// copies into a prefix x[1 … count]. The whole frames (all before the first
// short one) reach L or L + 1 (L + 1 from a position with a fraction); the
// short ones reach less the later they lie, and from some frame on nothing.
struct FrameCopies {
    const PitchTrackInput& in;
    double step;
    double rangeLength;
    int L;
    int firstEmpty;       // from this frame on no frame copies anything
    bool wholePositions;  // every position a whole number: no whole frame reaches L + 1

    CepstralFrameCopy at(int i) const { return CepstralFrameExtent(i * step + in.startSample, rangeLength, L); }

    FrameCopies(const PitchTrackInput& input, double stepSamples, double length, int windowLength, int frames)
        : in(input), step(stepSamples), rangeLength(length), L(windowLength), firstEmpty(frames) {
        while (firstEmpty > 0) {
            const CepstralFrameCopy c = at(firstEmpty - 1);
            if (c.whole || c.stop > c.first) break;
            --firstEmpty;
        }
        wholePositions = step == std::floor(step) && in.startSample == std::floor(in.startSample);
    }

    // Brings x to the state frames 0 … a−1 leave it in: x[t] holds the sample
    // of the latest frame whose prefix reaches t. Walking back from frame a−1,
    // every frame adds the part of its prefix beyond those of the later frames,
    // until among the whole frames nothing further can come.
    void restore(int a, double* x) const {
        long covered = 0;
        for (int i = std::min(a, firstEmpty) - 1; i >= 0; --i) {
            const CepstralFrameCopy copy = at(i);
            const long count = copy.stop - copy.first;
            for (long t = covered; t < count; ++t) x[t + 1] = in.samples[copy.first + t];
            if (count > covered) covered = count;
            if (copy.whole && (covered >= L + 1 || (covered >= L && wholePositions))) break;
        }
    }
};

// The largest of a and b, b only when strictly larger: the rule of the power
// gate's running maximum, which gives the same value (the same bits) whether
// the frames are taken one by one or piece by piece.
double larger(double a, double b) { return b > a ? b : a; }

// The jump test of frame i (0 for the first and the last frame).
double jumpTested(const double* raw, int i, int frames, int deviationHz) {
    if (i < 1 || i > frames - 2) return 0.0;
    if (static_cast<long>(std::fabs(raw[i - 1] - raw[i])) >= deviationHz) return 0.0;
    if (static_cast<long>(std::fabs(raw[i + 1] - raw[i])) >= deviationHz) return 0.0;
    return raw[i];
}

// Steps 4 to 6 in one forward pass: power[] holds the gate's frame powers on
// entry and the track on return (the same array: frame k's power is read
// before its value is written). The same numbers as CleanPitchTrack followed
// by the gate, without a third array.
void cleanAndGate(const double* raw, double* power, int frames, int deviationHz, double threshold) {
    for (int k = 0; k < frames; ++k) {
        double v = jumpTested(raw, k, frames, deviationHz);
        if (k < frames - 3) {
            const double next = jumpTested(raw, k + 1, frames, deviationHz);
            const double after = jumpTested(raw, k + 2, frames, deviationHz);
            if (v != 0.0 && next != 0.0 && after != 0.0) v = (v + next + after) / 3.0;
        }
        if (power[k] <= threshold) v = 0.0;
        power[k] = v;
    }
}

}  // namespace

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

    // The track array holds each frame's power until the gate turns it into
    // the track: the result's two arrays are all the memory a track needs.
    std::vector<double> raw, track;
    const int threads = FrameThreads(in.threads, frames, kFramesPerPiece);
    std::vector<std::unique_ptr<AnalysisWorkspace>> workers;
    try {
        track.assign(static_cast<std::size_t>(frames) + 10, 0.0);
        raw.assign(static_cast<std::size_t>(frames) + 10, 0.0);
        for (int t = 1; t < threads; ++t) {
            workers.push_back(std::make_unique<AnalysisWorkspace>());
            workers.back()->seedFrom(ws);
        }
    } catch (const std::bad_alloc&) {
        return AnalysisStatus::Failed;
    }

    const bool cepstral = settings.method == PitchMethod::Cepstral;
    const int cepstralL = L < fftSize ? L : fftSize;
    const FrameCopies copies(in, step, rangeLength, cepstralL, cepstral ? frames : 0);
    FramePlan plan;
    plan.count = frames;
    plan.chunkFrames = kFramesPerPiece;
    plan.sequentialFrom = frames > kFramesPerPiece ? frames - kFramesPerPiece : 0;
    plan.threads = threads;
    // The gate's maximum of each piece, combined in frame order at the end.
    std::vector<double> pieceMaximum(static_cast<std::size_t>(plan.pieceCount()), -1e8);
    // The frame each slot runs next when it goes on where it stopped.
    std::vector<int> nextFrame(static_cast<std::size_t>(threads), 0);

    const auto piece = [&](int slot, int index, int begin, int end, FrameCounter& counter) {
        AnalysisWorkspace& w = slot == 0 ? ws : *workers[static_cast<std::size_t>(slot - 1)];
        int& next = nextFrame[static_cast<std::size_t>(slot)];
        if (cepstral && begin != next)
            copies.restore(begin, w.ensure(w.m_pitchFrame, static_cast<std::size_t>(cepstralL) + 16));
        double maximum = -1e8;
        for (int i = begin; i < end; ++i) {
            const double position = i * step + in.startSample;
            double f0;
            if (cepstral) {
                // Only the track's last frame leaves the workspace complete: every
                // other frame's buffers are overwritten by a later frame.
                f0 = CepstralPitch(in.samples, position, rangeLength, in.rateHz, settings.lowHz, settings.highHz,
                                   fftSize, L, w,
                                   i + 1 == frames ? CepstralState::Complete : CepstralState::ForNextFrame);
                if (f0 == -1.0) return false;
            } else {
                f0 = AutocorrelationPitch(in.samples, in.startSample, in.endSample, position, L, in.rateHz,
                                          settings.lowHz, settings.highHz, w);
            }
            raw[static_cast<std::size_t>(i)] = f0;
            const double power = PowerLevel(FramePowerSum(in.samples, in.offset, position, step) / step, 1);
            track[static_cast<std::size_t>(i)] = power;
            maximum = larger(maximum, power);
            next = i + 1;
            if (!counter.frameDone()) break;
        }
        pieceMaximum[static_cast<std::size_t>(index)] = maximum;
        return true;
    };
    const AnalysisStatus status = RunFrames(plan, piece, progress);
    if (status != AnalysisStatus::Ok) return status;

    if (frames > 0) {
        double maximum = -1e8;
        for (const double m : pieceMaximum) maximum = larger(maximum, m);
        const double threshold = maximum * settings.thresholdPct * 0.01;
        cleanAndGate(raw.data(), track.data(), frames, settings.deviationHz, threshold);
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
