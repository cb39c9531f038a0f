#include "AnalysisSettings.h"

#include <algorithm>

#include "SampleRateRange.h"

namespace sonmetra {

void AnalysisSettings::applyRateDefaults(double rateHz) {
    // Outside the range the derived whole numbers would overflow.
    if (!rateInRange(rateHz)) return;
    const auto cut = [](double v) { return static_cast<std::int32_t>(v); };
    fftLpc.appliedWindowMs = cut(256000.0 / rateHz);
    fftLpc.frequencyRangeHz = cut(rateHz / 2000.0) * 1000;
    fftLpc.lpcOrder = std::min(400, 2 * cut((rateHz / 1000.0 + 4.0) / 2.0));
    spectrogram.frequencyRangeHz = cut(rateHz / 2000.0) * 1000;
    spectrogram.lpcOrder = 2 * (2 + cut(rateHz / 2000.0));
}

}  // namespace sonmetra
