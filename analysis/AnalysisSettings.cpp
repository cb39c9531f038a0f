#include "AnalysisSettings.h"

#include <algorithm>

namespace sonmetra {

void AnalysisSettings::applyRateDefaults(double rateHz) {
    if (!(rateHz > 0.0)) return;
    const auto cut = [](double v) { return static_cast<std::int32_t>(v); };
    fftLpc.appliedWindowMs = cut(256000.0 / rateHz);
    fftLpc.frequencyRangeHz = cut(rateHz / 2000.0) * 1000;
    fftLpc.lpcOrder = std::min(400, 2 * cut((rateHz / 1000.0 + 4.0) / 2.0));
    spectrogram.frequencyRangeHz = cut(rateHz / 2000.0) * 1000;
    spectrogram.lpcOrder = 2 * (2 + cut(rateHz / 2000.0));
}

}  // namespace sonmetra
