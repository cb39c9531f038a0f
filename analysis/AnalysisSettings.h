// Document-level analysis settings with their sample-rate-derived defaults.
//
// A document carries one AnalysisSettings; the option dialogs edit it and the
// configuration record stores it (document/ConfigLayout.h gives each field
// its fixed place). Rates are in Hz, times in ms, levels in dB.
#pragma once

#include <cstdint>

namespace sonmetra {

// Print or bitmap size of an analysis window.
struct PrintSize {
    double width = 6.0;
    double height = 4.0;
    std::int32_t inches = 1;  // 1 inches, 0 cm
    std::int32_t color = 1;   // 1 colour, 0 black and white
};

struct FftLpcSettings {
    std::int32_t fftSizeIndex = 3;  // 0..7 for 32..4096 points
    std::int32_t appliedWindowMs = 23;
    std::int32_t frequencyRangeHz = 5000;
    std::int32_t averageStepMs = 10;
    std::int32_t lpcOrder = 14;
    std::int32_t drawLpc = 1;
    std::int32_t absoluteLevel = 1;  // 1 Absolute, 0 Relative
    std::int32_t absoluteLevelDb = 80;
    PrintSize print;
    std::int32_t frequencyGrid = 1;
    std::int32_t frequencyGridHz = 1000;
    std::int32_t powerGrid = 1;
    std::int32_t powerGridDb = 20;
};

enum class PitchMethod : std::int32_t { Cepstral = 0, AutoCorrelation = 1 };

struct PitchSettings {
    PitchMethod method = PitchMethod::Cepstral;
    std::int32_t windowMs = 35;
    std::int32_t stepMs = 10;
    std::int32_t deviationHz = 100;
    std::int32_t thresholdPct = 1;
    std::int32_t lowHz = 50;
    std::int32_t highHz = 500;
    std::int32_t displayLowHz = 50;
    std::int32_t displayHighHz = 500;
    std::int32_t frequencyGrid = 1;
    std::int32_t frequencyGridHz = 20;
    std::int32_t timeGrid = 1;
    std::int32_t timeGridMs = 500;
    std::int32_t drawWaveform = 1;
    std::int32_t drawIntensity = 1;
    std::int32_t drawLabels = 1;
    PrintSize print;
};

struct SpectrogramSettings {
    std::int32_t fftSizeIndex = 2;  // 128 points
    std::int32_t frequencyRangeHz = 5000;
    std::int32_t dynamicRangeDb = 35;
    double preEmphasis = 0.98;
    std::int32_t displayFormants = 0;
    std::int32_t lpcOrder = 14;
    std::int32_t drawWaveform = 0;
    std::int32_t drawLabels = 0;
    std::int32_t drawIntensity = 0;
    std::int32_t frequencyGrid = 1;
    std::int32_t frequencyGridHz = 1000;
    std::int32_t timeGrid = 1;
    std::int32_t timeGridMs = 500;
    PrintSize print;
    std::int32_t colourMap = 0;  // 0 grey (black = loudest), 1 colour
};

struct AnalysisSettings {
    FftLpcSettings fftLpc;
    PitchSettings pitch;
    SpectrogramSettings spectrogram;

    // Defaults of every rate-derived setting at the given audio rate; the
    // settings that do not depend on the rate keep their values. A rate
    // outside analysis/SampleRateRange.h changes nothing.
    void applyRateDefaults(double rateHz);
    static AnalysisSettings defaultsForRate(double rateHz) {
        AnalysisSettings s;
        s.applyRateDefaults(rateHz);
        return s;
    }
};

}  // namespace sonmetra
