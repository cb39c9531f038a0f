// Accuracy on synthetic vowels with known F0 and formants, at 11025, 16000
// and 22050 Hz: the gross pitch error rate (voiced frames more than 20 % off)
// and the share of frames left unvoiced, for both pitch methods; the mean
// formant error of the spectrogram's formant tracking and of the spectrum
// window's LPC formants (F1..F3, taken in order).
#include <cmath>
#include <cstdio>
#include <vector>

#include "VowelSynth.h"
#include "analysis/PitchTrack.h"
#include "analysis/Spectrogram.h"
#include "analysis/SpectrumWindow.h"

namespace {

using namespace sonmetra;

struct Tally {
    long frames = 0, judged = 0, gross = 0, unvoiced = 0;
    void add(const Tally& o) {
        frames += o.frames;
        judged += o.judged;
        gross += o.gross;
        unvoiced += o.unvoiced;
    }
};

struct FormantTally {
    double absError[3] = {};
    double relError[3] = {};
    long count[3] = {};
    void add(int k, double got, double want) {
        absError[k] += std::fabs(got - want);
        relError[k] += std::fabs(got - want) / want;
        ++count[k];
    }
};

Tally pitchTally(const synth::VowelRecipe& vowel, const std::vector<std::int16_t>& s, PitchMethod method) {
    PitchTrackInput in;
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.endSample = in.sampleCount;
    in.rateHz = vowel.rateHz;
    PitchSettings settings;
    settings.method = method;
    PitchTrackResult r;
    ComputePitchTrack(in, settings, r);
    Tally t;
    for (int i = 1; i + 1 < r.frameCount; ++i) {
        const double centre = (i * r.stepSamples + r.windowSamples / 2.0) / vowel.rateHz;
        if (centre < 0.05 || centre > vowel.seconds - 0.05) continue;
        ++t.frames;
        const double f = r.track[static_cast<std::size_t>(i)];
        if (f == 0.0) {
            ++t.unvoiced;
            continue;
        }
        ++t.judged;
        const double truth = synth::f0At(vowel, centre);
        if (std::fabs(f - truth) > 0.2 * truth) ++t.gross;
    }
    return t;
}

void formantTallies(const synth::VowelRecipe& vowel, const std::vector<std::int16_t>& s, FormantTally& track,
                    FormantTally& window) {
    const AnalysisSettings settings = AnalysisSettings::defaultsForRate(vowel.rateHz);
    SpectrogramInput in;
    in.samples = s.data();
    in.sampleCount = static_cast<double>(s.size());
    in.endSample = in.sampleCount;
    in.rateHz = vowel.rateHz;
    const int columns = static_cast<int>(vowel.seconds * 200);
    SpectrogramResult r;
    ComputeSpectrogram(in, settings.spectrogram, columns, 256, true, r);
    for (int c = columns / 10; c < columns * 9 / 10; ++c)
        for (int k = 0; k < 3; ++k)
            track.add(k, r.formants[static_cast<std::size_t>(c)][static_cast<std::size_t>(k)],
                      vowel.formantHz[static_cast<std::size_t>(k)]);
    SpectrumWindowInput w;
    w.samples = s.data();
    w.sampleCount = in.sampleCount;
    w.rateHz = vowel.rateHz;
    for (int p = 1; p <= 8; ++p) {
        w.startSample = w.endSample = std::floor(in.sampleCount * p / 10.0);
        SpectrumWindowState st;
        ComputeSpectrumWindow(w, settings.fftLpc, {}, st);
        for (int k = 0; k < 3; ++k)
            window.add(k, st.formantHz[static_cast<std::size_t>(k)] - 0.5,
                       vowel.formantHz[static_cast<std::size_t>(k)]);
    }
}

}  // namespace

int main() {
    const double rates[] = {11025.0, 16000.0, 22050.0};
    const std::vector<std::vector<std::pair<double, double>>> contours = {
        {{0.0, 90.0}, {1.5, 140.0}},
        {{0.0, 180.0}, {0.75, 260.0}, {1.5, 200.0}},
        {{0.0, 100.0}, {0.75, 300.0}, {1.5, 150.0}},
    };
    std::printf("Pitch on synthetic vowels (5 vowels x 3 F0 contours, 1.5 s each; noise RMS in %% of the peak)\n");
    std::printf("%8s %6s %-16s %10s %14s %12s\n", "rate", "noise", "method", "frames", "gross err %", "unvoiced %");
    std::vector<std::pair<double, FormantTally>> trackResults, windowResults;
    for (const double noise : {0.005, 0.03})
        for (const double rate : rates) {
            Tally cep, ac;
            FormantTally track, window;
            for (const auto& contour : contours) {
                for (const auto& standard : synth::standardVowels()) {
                    synth::VowelRecipe vowel;
                    vowel.rateHz = rate;
                    vowel.seconds = 1.5;
                    vowel.f0 = contour;
                    vowel.formantHz = standard.formantHz;
                    vowel.noiseLevel = noise;
                    const auto s = synth::synthesizeVowel(vowel);
                    cep.add(pitchTally(vowel, s, PitchMethod::Cepstral));
                    ac.add(pitchTally(vowel, s, PitchMethod::AutoCorrelation));
                    if (noise < 0.01) formantTallies(vowel, s, track, window);
                }
            }
            for (const auto& [name, t] : {std::pair{"cepstral", cep}, std::pair{"autocorrelation", ac}})
                std::printf("%8.0f %5.1f%% %-16s %10ld %14.2f %12.2f\n", rate, 100.0 * noise, name, t.frames,
                            t.judged ? 100.0 * t.gross / t.judged : 0.0, 100.0 * t.unvoiced / t.frames);
            if (noise < 0.01) {
                trackResults.emplace_back(rate, track);
                windowResults.emplace_back(rate, window);
            }
        }
    std::printf("\nFormants at noise 0.5 %%, mean absolute error in Hz (and %%), F1..F3 in order\n");
    std::printf("%8s %-22s %16s %16s %16s\n", "rate", "source", "F1", "F2", "F3");
    for (std::size_t i = 0; i < trackResults.size(); ++i) {
        for (const auto& [name, t] : {std::pair{"spectrogram tracking", trackResults[i].second},
                                      std::pair{"spectrum window LPC", windowResults[i].second}}) {
            std::printf("%8.0f %-22s", trackResults[i].first, name);
            for (int k = 0; k < 3; ++k)
                std::printf(" %8.1f (%4.1f%%)", t.absError[k] / t.count[k], 100.0 * t.relError[k] / t.count[k]);
            std::printf("\n");
        }
    }
    return 0;
}
