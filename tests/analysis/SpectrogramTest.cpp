// The spectrogram driver and the spectrum window's computation.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "TestSignals.h"
#include "VowelSynth.h"
#include "analysis/FftSpectrum.h"
#include "analysis/Spectrogram.h"
#include "analysis/SpectrumWindow.h"

namespace sonmetra {
namespace {

SpectrogramInput inputFor(const std::vector<std::int16_t>& s, double rate) {
    SpectrogramInput in;
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.endSample = in.sampleCount;
    in.rateHz = rate;
    return in;
}

TEST(Spectrogram, ScalingSilenceGateAndFormantTracks) {
    synth::VowelRecipe vowel;  // /a/ at 11025 Hz
    vowel.seconds = 1.0;
    auto s = synth::synthesizeVowel(vowel);
    for (std::size_t i = 0; i < s.size() / 2; ++i) s[i] /= 1000;  // first half nearly silent
    const AnalysisSettings settings = AnalysisSettings::defaultsForRate(11025.0);
    SpectrogramResult r;
    ASSERT_EQ(ComputeSpectrogram(inputFor(s, 11025.0), settings.spectrogram, 100, 64, true, r), AnalysisStatus::Ok);
    ASSERT_EQ(r.levels.size(), 100u * 64u);
    const double top = *std::max_element(r.levels.begin(), r.levels.end());
    EXPECT_EQ(top, 35.0);
    EXPECT_GE(*std::min_element(r.levels.begin(), r.levels.end()), 0.0);
    // The quiet half is 60 dB down: below 30 % of the range, no formants.
    for (int c = 0; c < 45; ++c)
        for (int k = 0; k < 5; ++k) EXPECT_EQ(r.formants[c][k], 0) << c;
    EXPECT_TRUE(r.formantsFound);
    int f1Hits = 0, f2Hits = 0;
    for (int c = 55; c < 95; ++c) {
        const auto& f = r.formants[c];
        f1Hits += std::any_of(f.begin(), f.end(), [](int v) { return std::abs(v - 730) < 100; });
        f2Hits += std::any_of(f.begin(), f.end(), [](int v) { return std::abs(v - 1090) < 120; });
    }
    EXPECT_GT(f1Hits, 30);
    EXPECT_GT(f2Hits, 30);
}

TEST(Spectrogram, ColumnsAreResampledSpectraOfTheirFrames) {
    auto x = test::referenceSignal(5000);
    std::vector<std::int16_t> s(x.begin(), x.begin() + 5000);
    SpectrogramSettings settings;
    settings.fftSizeIndex = 3;  // 256
    settings.preEmphasis = 0.0;
    settings.frequencyRangeHz = 5000;
    SpectrogramResult r;
    ASSERT_EQ(ComputeSpectrogram(inputFor(s, 10000.0), settings, 10, 128, false, r), AnalysisStatus::Ok);
    // Column 3 starts at sample 1500; unscaled it is FftSpectrum of that frame.
    std::vector<double> frame(300);
    for (int i = 0; i < 266; ++i) frame[i] = s[1500 + i];
    FftSpectrum(frame.data(), 256, 0.0, 1, 1, 128, 5000, 10000.0);
    std::vector<double> all;
    for (int c = 0; c < 10; ++c) {
        std::vector<double> f(300);
        for (int i = 0; i < 266; ++i) f[i] = c * 500 + i < 5000 ? s[c * 500 + i] : 0;
        FftSpectrum(f.data(), 256, 0.0, 1, 1, 128, 5000, 10000.0);
        all.insert(all.end(), f.begin(), f.begin() + 128);
    }
    const double top = *std::max_element(all.begin(), all.end());
    for (int k = 0; k < 128; ++k) EXPECT_NEAR(r.column(3)[k], std::max(0.0, frame[k] - top + 35.0), 1e-9) << k;
}

SpectrumWindowInput windowInput(const std::vector<std::int16_t>& s, double start, double end, double rate) {
    SpectrumWindowInput in;
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.startSample = start;
    in.endSample = end;
    in.rateHz = rate;
    return in;
}

TEST(SpectrumWindow, CursorIsOneFrameAndSelectionAHalvingMean) {
    auto x = test::referenceSignal(4000);
    std::vector<std::int16_t> s(x.begin(), x.begin() + 4000);
    FftLpcSettings settings = AnalysisSettings::defaultsForRate(11025.0).fftLpc;  // 256 points, 10 ms
    const auto spectrumAt = [&](long first) {
        std::vector<double> f(300, 0.0);
        for (int i = 0; i < 256; ++i) f[i] = s[first + i];
        FftSpectrum(f.data(), 256, 0.0, 1, 0, 0, 0, 11025.0);
        return f;
    };
    SpectrumWindowState state;
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(s, 1000, 1000, 11025.0), settings, {}, state), AnalysisStatus::Ok);
    EXPECT_EQ(state.frames, 1);
    ASSERT_EQ(state.spectrum.size(), 128u);
    const auto one = spectrumAt(1000);
    for (int k = 0; k < 128; ++k) EXPECT_NEAR(state.spectrum[k], one[k], 1e-12);

    // step 110.75 samples: frames at 1000, 1110.75, 1221.5; the third reaches the end.
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(s, 1000, 1470, 11025.0), settings, {}, state), AnalysisStatus::Ok);
    EXPECT_EQ(state.frames, 3);
    const auto a = spectrumAt(1000), b = spectrumAt(1110), c = spectrumAt(1221);
    for (int k = 0; k < 128; ++k) EXPECT_NEAR(state.spectrum[k], c[k] / 2 + b[k] / 4 + a[k] / 4, 1e-9) << k;
}

TEST(SpectrumWindow, NearTheEndTheCopyBoundMixesPositionAndLength) {
    auto x = test::referenceSignal(300);
    std::vector<std::int16_t> s(x.begin(), x.begin() + 300);
    FftLpcSettings settings = AnalysisSettings::defaultsForRate(11025.0).fftLpc;  // 256 points
    SpectrumWindowState state;
    // Cursor at 100: 256 + 100 > 300, so indices 100 … while j < 300 − 100 are
    // copied: 100 samples, the rest of the fresh block is zero.
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(s, 100, 100, 11025.0), settings, {}, state), AnalysisStatus::Ok);
    std::vector<double> f(300, 0.0);
    for (int i = 0; i < 100; ++i) f[i] = s[100 + i];
    FftSpectrum(f.data(), 256, 0.0, 1, 0, 0, 0, 11025.0);
    for (int k = 0; k < 128; ++k) EXPECT_NEAR(state.spectrum[k], f[k], 1e-12) << k;
    // Cursor at 200: j < 300 − 200 = 100 copies nothing; the block is all zero.
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(s, 200, 200, 11025.0), settings, {}, state), AnalysisStatus::Ok);
    for (int k = 0; k < 128; ++k) EXPECT_EQ(state.spectrum[k], 0.0) << k;
}

TEST(SpectrumWindow, AShorterAppliedWindowIsZeroPaddedToTheFftSize) {
    auto x = test::referenceSignal(2000);
    std::vector<std::int16_t> s(x.begin(), x.begin() + 2000);
    FftLpcSettings settings = AnalysisSettings::defaultsForRate(11025.0).fftLpc;
    settings.fftSizeIndex = 5;  // 1024 points
    SpectrumWindowOptions options;
    options.appliedPoints = 253;
    SpectrumWindowState shortState;
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(s, 500, 500, 11025.0), settings, options, shortState),
              AnalysisStatus::Ok);
    // Hamming of 253 points over the stretch, zeros to 1024, no further window.
    std::vector<double> f(1100, 0.0);
    for (int i = 0; i < 253; ++i) f[i] = s[500 + i] * (0.54 - 0.46 * std::cos(2.0 * M_PI * i / 253));
    FftSpectrum(f.data(), 1024, 0.0, 0, 0, 0, 0, 11025.0);
    ASSERT_EQ(shortState.spectrum.size(), 512u);
    for (int k = 0; k < 512; ++k) EXPECT_NEAR(shortState.spectrum[k], f[k], 1e-9) << k;

    // The whole frame applied is the plain computation, bit for bit.
    SpectrumWindowState plain, whole;
    options.appliedPoints = 1024;
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(s, 500, 900, 11025.0), settings, {}, plain), AnalysisStatus::Ok);
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(s, 500, 900, 11025.0), settings, options, whole), AnalysisStatus::Ok);
    EXPECT_EQ(plain.spectrum, whole.spectrum);
}

TEST(SpectrumWindow, FormantsCarryTheHalfAndSurviveAFailedFactoring) {
    synth::VowelRecipe vowel;
    auto s = synth::synthesizeVowel(vowel);
    FftLpcSettings settings = AnalysisSettings::defaultsForRate(11025.0).fftLpc;
    SpectrumWindowState state;
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(s, 3000, 3000, 11025.0), settings, {}, state), AnalysisStatus::Ok);
    ASSERT_TRUE(state.formantsFound);
    EXPECT_NEAR(state.formantHz[0], 730.0, 80.0);
    EXPECT_NEAR(state.formantHz[1], 1090.0, 100.0);
    // Silence: non-finite coefficients; whatever the factoring answers, F1..F5
    // are either the new values or the previous ones, never a crash.
    std::vector<std::int16_t> silent(6000, 0);
    const auto before = state.formantHz;
    ASSERT_EQ(ComputeSpectrumWindow(windowInput(silent, 100, 100, 11025.0), settings, {}, state), AnalysisStatus::Ok);
    if (!state.formantsFound) {
        EXPECT_EQ(state.formantHz, before);
    }
}

}  // namespace
}  // namespace sonmetra

namespace sonmetra {
namespace {

TEST(AnalysisSettings, RateDerivedDefaults) {
    const AnalysisSettings a = AnalysisSettings::defaultsForRate(11025.0);
    EXPECT_EQ(FftSizeOfIndex(a.fftLpc.fftSizeIndex), 256);
    EXPECT_EQ(a.fftLpc.appliedWindowMs, 23);
    EXPECT_EQ(a.fftLpc.frequencyRangeHz, 5000);
    EXPECT_EQ(a.fftLpc.lpcOrder, 14);
    EXPECT_EQ(11025 / FftSizeOfIndex(a.fftLpc.fftSizeIndex), 43);
    EXPECT_EQ(FftSizeOfIndex(a.spectrogram.fftSizeIndex), 128);
    EXPECT_EQ(a.spectrogram.frequencyRangeHz, 5000);
    EXPECT_EQ(a.spectrogram.lpcOrder, 14);
    EXPECT_EQ(static_cast<int>(11025 * 0.001) * a.spectrogram.lpcOrder, 154);
    EXPECT_EQ(AnalysisSettings::defaultsForRate(44100.0).fftLpc.lpcOrder, 48);
}

}  // namespace
}  // namespace sonmetra
