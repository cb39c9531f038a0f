// The pitch estimators and the track driver: window sizing, the cleaning
// rules on hand-made tracks, the power gate, and accuracy on synthetic vowels
// whose F0 is known at every instant.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "VowelSynth.h"
#include "analysis/AutocorrelationPitch.h"
#include "analysis/CepstralPitch.h"
#include "analysis/Fft.h"
#include "analysis/PitchTrack.h"
#include "analysis/Spline.h"

namespace sonmetra {
namespace {

PitchTrackInput inputFor(const std::vector<std::int16_t>& s, double rate) {
    PitchTrackInput in;
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.startSample = 0.0;
    in.endSample = in.sampleCount;
    in.rateHz = rate;
    return in;
}

// Share of voiced frames (true F0 known) more than 20 % off, and the share of
// frames the track left at 0. The frame's centre is position + L/2.
struct Accuracy {
    double grossErrorRate = 0.0;
    double unvoicedRate = 0.0;
};
Accuracy accuracy(const synth::VowelRecipe& vowel, const PitchTrackResult& r) {
    int errors = 0, judged = 0, zeros = 0, frames = 0;
    for (int i = 1; i + 1 < r.frameCount; ++i) {
        const double centre = (i * r.stepSamples + r.windowSamples / 2.0) / vowel.rateHz;
        if (centre > vowel.seconds - 0.05) break;
        ++frames;
        const double f = r.track[static_cast<std::size_t>(i)];
        if (f == 0.0) {
            ++zeros;
            continue;
        }
        ++judged;
        if (std::fabs(f - synth::f0At(vowel, centre)) > 0.2 * synth::f0At(vowel, centre)) ++errors;
    }
    return {judged ? static_cast<double>(errors) / judged : 1.0, frames ? static_cast<double>(zeros) / frames : 1.0};
}

TEST(PitchTrack, WindowLengthAndTransformSize) {
    PitchSettings s;
    int L = 0, n = 0;
    PitchWindowSize(s, 11025.0, L, n);
    EXPECT_EQ(L, 385);
    EXPECT_EQ(n, 1024);
    PitchWindowSize(s, 44100.0, L, n);
    EXPECT_EQ(L, 1543);
    EXPECT_EQ(n, 2048);
    s.windowMs = 400;  // 4410 points: lowered, and the lowered value stays
    PitchWindowSize(s, 11025.0, L, n);
    EXPECT_EQ(s.windowMs, 371);
    EXPECT_EQ(L, 4090);
    EXPECT_EQ(n, 4096);
}

TEST(PitchTrack, JumpTestAndForwardAverage) {
    // 223 is 100 or more away from both neighbours: it and the frames beside it go.
    const double raw[] = {120, 121, 122, 223, 123, 124, 125, 129, 127};
    std::vector<double> t(9);
    CleanPitchTrack(raw, t.data(), 9, 100);
    const double expected[] = {0, 121, 0, 0, 0, (124.0 + 125.0 + 129.0) / 3.0, 125, 129, 0};
    for (int i = 0; i < 9; ++i) EXPECT_DOUBLE_EQ(t[i], expected[i]) << i;

    // A difference of 99.9 Hz is cut to 99 and passes; the average of frame 1
    // uses the not yet averaged frames 2 and 3.
    const double near[] = {100, 100, 199.9, 199.9, 199.9};
    CleanPitchTrack(near, t.data(), 5, 100);
    EXPECT_DOUBLE_EQ(t[1], (100.0 + 199.9 + 199.9) / 3.0);
    EXPECT_EQ(t[2], 199.9);
    EXPECT_EQ(t[4], 0.0);
}

// The estimator's steps as they read, with bisection in SplineValue and a
// plain scan for the peak, on full frames (position + L + 5 within the range).
double literalCepstralPitch(const std::int16_t* samples, double position, double rate, double lowF0, double highF0,
                            int n, int L, std::vector<double>& fine) {
    int m = 0;
    while ((1 << m) < n) ++m;
    std::vector<double> x(L + 2), re(n), im(n);
    for (long j = static_cast<long>(position); j < position + L; ++j)
        x[j - static_cast<long>(position) + 1] = samples[j];
    for (int i = 0; i < n; ++i) {
        re[i] = i < L ? (0.54 - 0.46 * std::cos(2.0 * std::numbers::pi * i / L)) * x[i + 1] : 0.0;
        im[i] = 0.0;
    }
    Fft(re.data(), im.data(), m);
    for (int k = 0; k < n; ++k) {
        const double p = re[k] * re[k] + im[k] * im[k];
        re[k] = p == 0.0 ? 0.0 : 10.0 * std::log10(p);
        im[k] = 0.0;
    }
    Fft(re.data(), im.data(), m);
    std::vector<double> c(n / 2);
    for (int k = 0; k < n / 2; ++k) c[k] = re[k] * re[k] + im[k] * im[k];
    const int lo = static_cast<int>(rate / highF0), hi = static_cast<int>(rate / lowF0);
    for (int k = 0; k < lo; ++k) c[k] = 0.0;
    for (int k = hi; k < n / 2; ++k) c[k] = 0.0;
    const int cnt = hi - lo;
    std::vector<double> tx(cnt + 1), ty(cnt + 1), ty2(cnt + 1);
    for (int t = 0; t < cnt; ++t) {
        tx[t + 1] = t;
        ty[t + 1] = c[lo + t];
    }
    Spline(tx.data(), ty.data(), cnt, 1e30, 1e30, ty2.data());
    const int lo10 = static_cast<int>(10.0 * rate / highF0), hi10 = static_cast<int>(10.0 * rate / lowF0);
    if (static_cast<int>(fine.size()) < hi10 + 10) fine.resize(hi10 + 10, 0.0);
    double value = 0.0;
    for (int i = 0; i < 10 * cnt; ++i) {
        SplineValue(tx.data(), ty.data(), ty2.data(), cnt, i * (static_cast<double>(cnt) / (10 * cnt)), value);
        fine[lo10 + i] = value;
    }
    double best = 0.0;
    int bestIndex = hi10;
    for (int idx = lo10; idx < hi10; ++idx)
        if (fine[idx] > best) {
            best = fine[idx];
            bestIndex = idx;
        }
    if (bestIndex == 0) bestIndex = 1;
    const double f0 = rate / (bestIndex / 10.0);
    return f0 > highF0 || f0 < lowF0 ? 0.0 : f0;
}

TEST(CepstralPitch, GivesExactlyTheNumbersOfItsSteps) {
    for (const double rate : {11025.0, 44100.0}) {
        synth::VowelRecipe vowel;
        vowel.rateHz = rate;
        vowel.seconds = 0.6;
        vowel.f0 = {{0.0, 90.0}, {0.6, 260.0}};
        vowel.noiseLevel = 0.01;
        const auto s = synth::synthesizeVowel(vowel);
        PitchSettings settings;
        int L = 0, n = 0;
        PitchWindowSize(settings, rate, L, n);
        std::vector<double> fine;
        AnalysisWorkspace ws;
        for (double pos = 0; pos + L + 5 <= static_cast<double>(s.size()); pos += rate * 0.0137) {
            const double want = literalCepstralPitch(s.data(), pos, rate, 50, 500, n, L, fine);
            ASSERT_EQ(CepstralPitch(s.data(), pos, static_cast<double>(s.size()), rate, 50, 500, n, L, ws), want)
                << rate << " " << pos;
        }
    }
}

TEST(CepstralPitch, RejectsUnsupportedSizesAndReadsSilenceAsTheLowestF0) {
    std::vector<std::int16_t> silent(20000, 0);
    EXPECT_EQ(CepstralPitch(silent.data(), 0, 20000, 11025, 50, 500, 64, 385), -1.0);
    EXPECT_EQ(CepstralPitch(silent.data(), 0, 20000, 11025, 50, 500, 1000, 385), -1.0);
    // No fine value above 0.0: the index stays hi10 = 2205, F0 = 11025 / 220.5 = 50.
    EXPECT_DOUBLE_EQ(CepstralPitch(silent.data(), 0, 20000, 11025, 50, 500, 1024, 385), 50.0);
}

TEST(PitchTrack, PowerGateZeroesSilentFrames) {
    synth::VowelRecipe vowel;
    vowel.seconds = 1.0;
    auto s = synth::synthesizeVowel(vowel);
    for (std::size_t i = 0; i < s.size() / 2; ++i) s[i] = 0;
    PitchSettings settings;
    PitchTrackResult r;
    auto in = inputFor(s, vowel.rateHz);
    ASSERT_EQ(ComputePitchTrack(in, settings, r), AnalysisStatus::Ok);
    ASSERT_EQ(r.frameCount, 100);
    for (int i = 0; i < 45; ++i) EXPECT_EQ(r.track[i], 0.0) << i;
    // The estimator alone reads silence as 50 Hz; the gate removed it.
    EXPECT_DOUBLE_EQ(r.raw[10], 50.0);
    int voiced = 0;
    for (int i = 55; i < 95; ++i) voiced += r.track[i] > 0.0;
    EXPECT_GT(voiced, 35);
}

TEST(PitchTrack, CancelStopsBetweenFrames) {
    synth::VowelRecipe vowel;
    auto s = synth::synthesizeVowel(vowel);
    PitchSettings settings;
    PitchTrackResult r;
    int calls = 0;
    PitchTrackInput in = inputFor(s, vowel.rateHz);
    in.threads = 1;  // one thread: a call after every frame, in order
    const auto status = ComputePitchTrack(in, settings, r, [&](int done, int total) {
        ++calls;
        EXPECT_EQ(total, 100);
        return done < 10;
    });
    EXPECT_EQ(status, AnalysisStatus::Cancelled);
    EXPECT_EQ(calls, 10);
    EXPECT_TRUE(r.track.empty());
}

class PitchAccuracy : public testing::TestWithParam<double> {};

TEST_P(PitchAccuracy, BothMethodsFollowAGlidingVowel) {
    const double rate = GetParam();
    for (const auto& standard : synth::standardVowels()) {
        synth::VowelRecipe vowel;
        vowel.rateHz = rate;
        vowel.seconds = 1.5;
        vowel.formantHz = standard.formantHz;
        vowel.f0 = {{0.0, 100.0}, {0.75, 180.0}, {1.5, 120.0}};
        vowel.noiseLevel = 0.005;
        const auto s = synth::synthesizeVowel(vowel);
        for (PitchMethod method : {PitchMethod::Cepstral, PitchMethod::AutoCorrelation}) {
            PitchSettings settings;
            settings.method = method;
            PitchTrackResult r;
            ASSERT_EQ(ComputePitchTrack(inputFor(s, rate), settings, r), AnalysisStatus::Ok);
            const Accuracy a = accuracy(vowel, r);
            EXPECT_LT(a.grossErrorRate, 0.05) << standard.name << " method " << static_cast<int>(method);
            EXPECT_LT(a.unvoicedRate, 0.25) << standard.name << " method " << static_cast<int>(method);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, PitchAccuracy, testing::Values(11025.0, 16000.0, 22050.0));

TEST(AutocorrelationPitch, SubSampleAccuracyAndVoicing) {
    synth::VowelRecipe vowel;
    vowel.f0 = {{0.0, 137.3}};
    const auto s = synth::synthesizeVowel(vowel);
    const double f = AutocorrelationPitch(s.data(), 0, static_cast<double>(s.size()), 3000, 385, 11025, 50, 500);
    EXPECT_NEAR(f, 137.3, 0.5);
    std::vector<std::int16_t> hiss(11025);
    std::uint32_t state = 9;
    for (auto& v : hiss) {
        state = state * 1664525u + 1013904223u;
        v = static_cast<std::int16_t>(static_cast<int>(state >> 20) - 2048);
    }
    EXPECT_EQ(AutocorrelationPitch(hiss.data(), 0, 11025, 3000, 385, 11025, 50, 500), 0.0);
}

}  // namespace
}  // namespace sonmetra
