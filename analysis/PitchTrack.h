// The pitch track of a range of one channel: one F0 value (Hz) per frame,
// 0.0 for no pitch.
//
//   1. L = cut(rate·0.001·window ms); transform size 1024 below 1024 points,
//      2048 below 2048, else 4096. L ≥ 4096 lowers the window setting itself to
//      cut(1000 / rate × 4096) ms, which stays in force (the dialog shows the
//      value used), and L follows it;
//   2. step = rate·0.001·step ms (not cut); F = cut(range length / step) frames;
//   3. raw[i] from the chosen estimator at position i·step + start
//      (CepstralPitch, or AutocorrelationPitch); a cepstral −1.0 is a failure;
//   4. jump test into the track: frames 1 … F−2 are 0 when cut(|raw[i±1] − raw[i]|)
//      reaches the deviation, otherwise raw[i]; the first and last frames are 0;
//   5. three-point average looking forward, in place, for k < F − 3, only where
//      none of the three values is 0 (track[k+1], track[k+2] are not yet averaged);
//   6. power gate: FrameIntensity (linear, offset subtracted) over the same
//      frames of `step` samples; a frame at or below max × threshold % is 0.
// The frames are shared among threads (input.threads), each with its own
// workspace seeded from `ws`; the result, and the state `ws` is left in, are
// those of one thread taking the frames in order. The progress callback runs
// on the calling thread only, after each of its frames and while it waits,
// with the number of frames done by all; it may cancel.
#pragma once

#include <cstdint>
#include <vector>

#include "analysis/AnalysisSettings.h"
#include "analysis/AnalysisWorkspace.h"

namespace sonmetra {

struct PitchTrackInput {
    const std::int16_t* samples = nullptr;  // the channel's whole block
    double sampleCount = 0.0;
    double startSample = 0.0;  // analysed range [start, end)
    double endSample = 0.0;
    double rateHz = 0.0;
    double offset = 0.0;  // subtracted from samples by the power gate
    int threads = 0;      // threads to share the frames: 0 one per processor core, 1 the calling thread only
};

struct PitchTrackResult {
    std::vector<double> track;  // final values, one per frame
    std::vector<double> raw;    // the estimator's values
    int frameCount = 0;
    double stepSamples = 0.0;
    int windowSamples = 0;
    int fftSize = 0;
};

AnalysisStatus ComputePitchTrack(const PitchTrackInput& input, PitchSettings& settings, PitchTrackResult& result,
                                 const AnalysisProgress& progress = {}, AnalysisWorkspace& ws = defaultWorkspace());

// Window length L and transform size of step 1 (with the lowering).
void PitchWindowSize(PitchSettings& settings, double rateHz, int& windowSamples, int& fftSize);

// Steps 4 and 5 on raw values: the jump test and the forward three-point average.
void CleanPitchTrack(const double* raw, double* track, int frames, int deviationHz);

}  // namespace sonmetra
