// Source-filter vowel synthesiser for tests and benchmarks: a glottal flow
// derivative (KLGLOTT88 pulse shape, continuous phase so that every period has
// exactly the length of the F0 contour at its time) through a cascade of
// two-pole formant resonators, with optional white noise. Everything about the
// result is known: the F0 at every instant, the formant frequencies and the
// bandwidths.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace sonmetra::synth {

struct VowelRecipe {
    double rateHz = 11025.0;
    double seconds = 1.0;
    // F0 breakpoints (time s, Hz), linear between them, constant outside.
    std::vector<std::pair<double, double>> f0 = {{0.0, 120.0}};
    std::array<double, 5> formantHz = {730, 1090, 2440, 3400, 4500};
    std::array<double, 5> bandwidthHz = {60, 90, 120, 180, 250};
    double openQuotient = 0.6;
    double noiseLevel = 0.0;  // noise RMS relative to the signal's peak
    double peak = 16000.0;    // output peak, 16-bit units
    std::uint32_t seed = 1;
};

// The F0 of the contour at time t (s).
double f0At(const VowelRecipe& vowel, double t);

// Samples of the vowel; formants at or above half the rate are left out.
std::vector<std::int16_t> synthesizeVowel(const VowelRecipe& vowel);

// Five classic vowels (formants of adult male speech).
struct NamedVowel {
    const char* name;
    std::array<double, 5> formantHz;
};
const std::vector<NamedVowel>& standardVowels();

// Writes 16-bit mono PCM WAV; false on failure.
bool writeWav(const std::string& path, const std::vector<std::int16_t>& samples, double rateHz);

}  // namespace sonmetra::synth
