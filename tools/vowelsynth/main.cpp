// vowelsynth OUT.wav [--rate HZ] [--seconds S] [--f0 T:HZ,T:HZ,...]
//                    [--vowel a|i|u|e|o] [--noise LEVEL] [--seed N]
// Writes a synthetic vowel with a known F0 contour, formants and bandwidths.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "VowelSynth.h"

using namespace sonmetra::synth;

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs(
            "usage: vowelsynth OUT.wav [--rate HZ] [--seconds S] [--f0 T:HZ,...] [--vowel a|i|u|e|o] "
            "[--noise LEVEL] [--seed N]\n",
            stderr);
        return 2;
    }
    VowelRecipe vowel;
    for (int i = 2; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const std::string value = argv[i + 1];
        if (name == "--rate") {
            vowel.rateHz = std::atof(value.c_str());
        } else if (name == "--seconds") {
            vowel.seconds = std::atof(value.c_str());
        } else if (name == "--noise") {
            vowel.noiseLevel = std::atof(value.c_str());
        } else if (name == "--seed") {
            vowel.seed = static_cast<std::uint32_t>(std::atol(value.c_str()));
        } else if (name == "--vowel") {
            for (const auto& v : standardVowels())
                if (value == v.name) vowel.formantHz = v.formantHz;
        } else if (name == "--f0") {
            vowel.f0.clear();
            std::stringstream ss(value);
            std::string item;
            while (std::getline(ss, item, ',')) {
                const auto colon = item.find(':');
                if (colon == std::string::npos) continue;
                vowel.f0.emplace_back(std::atof(item.substr(0, colon).c_str()),
                                      std::atof(item.substr(colon + 1).c_str()));
            }
        } else {
            std::fprintf(stderr, "vowelsynth: unknown option %s\n", name.c_str());
            return 2;
        }
    }
    if (!writeWav(argv[1], synthesizeVowel(vowel), vowel.rateHz)) {
        std::fprintf(stderr, "vowelsynth: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
