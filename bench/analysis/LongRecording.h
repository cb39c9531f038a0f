// The benchmarks' long recording: synthetic vowels of 0.4 s with changing F0
// and formants, separated by 0.1 s of faint noise, at the given rate.
#pragma once

#include <cstdint>
#include <vector>

#include "VowelSynth.h"

namespace sonmetra::bench {

inline std::vector<std::int16_t> longRecording(double rateHz, double seconds) {
    std::vector<std::int16_t> out;
    out.reserve(static_cast<std::size_t>(rateHz * seconds) + 1);
    const auto& vowels = synth::standardVowels();
    std::uint32_t noise = 7;
    for (int k = 0; out.size() < static_cast<std::size_t>(rateHz * seconds); ++k) {
        synth::VowelRecipe vowel;
        vowel.rateHz = rateHz;
        vowel.seconds = 0.4;
        vowel.formantHz = vowels[static_cast<std::size_t>(k) % vowels.size()].formantHz;
        const double base = 90.0 + (k * 37) % 160;
        vowel.f0 = {{0.0, base}, {0.4, base * (k % 2 ? 1.3 : 0.8)}};
        vowel.noiseLevel = 0.003;
        vowel.seed = static_cast<std::uint32_t>(k + 1);
        const auto v = synth::synthesizeVowel(vowel);
        out.insert(out.end(), v.begin(), v.end());
        for (int i = 0; i < static_cast<int>(0.1 * rateHz); ++i) {
            noise = noise * 1664525u + 1013904223u;
            out.push_back(static_cast<std::int16_t>(static_cast<int>(noise >> 26) - 32));
        }
    }
    out.resize(static_cast<std::size_t>(rateHz * seconds));
    return out;
}

}  // namespace sonmetra::bench
