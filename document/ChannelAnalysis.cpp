#include "document/ChannelAnalysis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include "analysis/IntensityContour.h"
#include "analysis/SampleRateRange.h"
#include "analysis/SmoothSamples.h"
#include "document/ChannelRate.h"
#include "document/MessageService.h"

namespace sonmetra {
namespace {

// Shortest step of the contour, in samples: a shorter one would make the
// number of frames, each a whole window long, too large to ever finish.
constexpr double kMinIntensityStepSamples = 1e-3;

// The samples the channel really holds, whatever its count field says.
double usableCount(const CChannel& ch) { return std::min(ch.m_sampleCount, static_cast<double>(ch.m_samples.size())); }

}  // namespace

std::string intensityWorkProblem(const CChannel& ch, int index) {
    const double window = ch.m_intensityWindowMs * ch.m_rateHz * 0.001 + 0.5;
    const double step = ch.m_intensityStepMs * ch.m_rateHz * 0.001;
    const double count = usableCount(ch);
    if (!(step > 0.0) || !(window > 0.0) || !(count > window)) return {};  // refused elsewhere, or no frame at all
    const double sums = std::ceil((count - window) / step) * window;
    if (sums <= kMaxIntensitySums) return {};
    std::string name = "channel " + std::to_string(index + 1);
    if (!ch.m_name.empty()) name += " (" + ch.m_name + ")";
    char text[256];
    std::snprintf(text, sizeof text,
                  "The intensity contour of %s would sum %.2g samples (a window of %g ms every %g ms), too many "
                  "to compute. Make the window shorter or the step longer.",
                  name.c_str(), sums, ch.m_intensityWindowMs, ch.m_intensityStepMs);
    return text;
}

bool ComputeIntensity(CChannel& ch) {
    ch.m_intensity.clear();
    ch.m_intensity.shrink_to_fit();
    ch.m_intensityValid = 0;
    ch.m_intensityMin = 0.0;
    ch.m_intensityMax = 0.0;
    if (!rateInRange(ch.m_rateHz)) return false;
    const double window = ch.m_intensityWindowMs * ch.m_rateHz * 0.001 + 0.5;
    const double step = ch.m_intensityStepMs * ch.m_rateHz * 0.001;
    if (!(step >= kMinIntensityStepSamples)) return false;
    const double count = usableCount(ch);
    std::vector<double> contour;
    try {
        contour.assign(static_cast<std::size_t>(count > 0.0 ? count : 0.0), 0.0);
    } catch (const std::bad_alloc&) {
        return false;
    }
    double minimum = 0.0, maximum = 0.0;
    if (!IntensityContour(ch.m_samples.data(), contour.data(), minimum, maximum, ch.m_reference, 0.0, window, step,
                          count, ch.m_normalise, 0))
        return false;
    ch.m_intensity = std::move(contour);
    ch.m_intensityMin = minimum;
    ch.m_intensityMax = maximum;
    ch.m_intensityValid = 1;
    return true;
}

bool SmoothChannel(CChannel& ch) {
    if (ch.m_smoothingOn == 0) return true;
    // An average over less than one sample is no average: nothing is changed.
    if (!(ch.m_smoothingLength >= 1.0) || !std::isfinite(ch.m_smoothingLength)) return false;
    SmoothSamples(ch.m_samples.data(), usableCount(ch), ch.m_smoothingLength);
    return true;
}

AnalysisStatus ComputeIntensityAllChannels(CKestruneDoc& doc, const AnalysisProgress& progress) {
    const int count = doc.channelCount();
    for (int i = 0; i < count; ++i) {
        CChannel& ch = doc.channel(i);
        std::string problem = channelRateProblem(ch, i);
        if (problem.empty()) problem = intensityWorkProblem(ch, i);
        if (!problem.empty()) {
            showMessage(problem);
            return AnalysisStatus::Failed;
        }
        ch.m_intensityShown = 1;
        if (!ComputeIntensity(ch)) return AnalysisStatus::Failed;
        if (progress && !progress(i + 1, count)) return AnalysisStatus::Cancelled;
    }
    return AnalysisStatus::Ok;
}

AnalysisStatus SmoothAllChannels(CKestruneDoc& doc, const AnalysisProgress& progress) {
    const int count = doc.channelCount();
    for (int i = 0; i < count; ++i) {
        if (!SmoothChannel(doc.channel(i))) return AnalysisStatus::Failed;
        if (progress && !progress(i + 1, count)) return AnalysisStatus::Cancelled;
    }
    return AnalysisStatus::Ok;
}

}  // namespace sonmetra
