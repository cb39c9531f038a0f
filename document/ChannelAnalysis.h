// The analyses that act on a document channel in place: its intensity contour
// and its smoothing. They read the channel's own settings (window, step,
// normalise, smoothing flag and length) and its reference level as the offset
// subtracted from every sample.
//
// ComputeIntensity: window = window ms · rate · 0.001 + 0.5 (fractional, not
// cut: the averaging divides by it), step = step ms · rate · 0.001; a contour of
// one value per sample in dB (IntensityContour, start 0). Returns false on
// failure (no memory, a rate outside analysis/SampleRateRange.h, or a step
// below a thousandth of a sample, which would make the frames countless);
// the channel then holds no contour.
//
// SmoothChannel: with the channel's smoothing flag on, the forward-looking
// moving average of SmoothSamples over its samples. Returns false (samples
// untouched) for a length below 1 or not a number.
#pragma once

#include <string>

#include "analysis/AnalysisTypes.h"
#include "document/CChannel.h"
#include "document/CKestruneDoc.h"

namespace sonmetra {

inline constexpr const char* kIntensityFailedText = " Intensity function failed ";
inline constexpr const char* kSmoothFailedText = " Smmoth function failed ";

bool ComputeIntensity(CChannel& channel);
bool SmoothChannel(CChannel& channel);

// The most sample positions one contour may sum: each frame sums every
// position of its window, so a long window moved by a short step over a long
// channel multiplies the work (a 100 s window every 1 ms over ten minutes of
// 22050 Hz audio is 10^12 sums, an hour of a blocked window). This bound is
// about ten seconds.
inline constexpr double kMaxIntensitySums = 2e9;
// Empty when the contour of channel `index` (0-based) with its window and
// step stays within kMaxIntensitySums; otherwise what is wrong and what to
// change. Assumes a usable rate (channelRateProblem).
std::string intensityWorkProblem(const CChannel& channel, int index);

// The "Intensity" and "Smooth" commands' loops over every channel of the
// document, in channel order; "Intensity" also sets each channel's display
// flag. The progress callback runs after every channel and may cancel before
// the next one. A failure stops the loop at that channel (Failed); channels
// already done keep their results. The caller shows kIntensityFailedText or
// kSmoothFailedText; a channel whose rate cannot be used, or whose contour
// would take too long, has first been reported with what is wrong with it
// (channelRateProblem, intensityWorkProblem).
AnalysisStatus ComputeIntensityAllChannels(CKestruneDoc& doc, const AnalysisProgress& progress = {});
AnalysisStatus SmoothAllChannels(CKestruneDoc& doc, const AnalysisProgress& progress = {});

}  // namespace sonmetra
