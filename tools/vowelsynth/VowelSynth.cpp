#include "VowelSynth.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace sonmetra::synth {

double f0At(const VowelRecipe& vowel, double t) {
    const auto& p = vowel.f0;
    if (p.empty()) return 100.0;
    if (t <= p.front().first) return p.front().second;
    for (std::size_t i = 1; i < p.size(); ++i) {
        if (t <= p[i].first) {
            const double u = (t - p[i - 1].first) / (p[i].first - p[i - 1].first);
            return p[i - 1].second + u * (p[i].second - p[i - 1].second);
        }
    }
    return p.back().second;
}

std::vector<std::int16_t> synthesizeVowel(const VowelRecipe& vowel) {
    const std::size_t count = static_cast<std::size_t>(vowel.seconds * vowel.rateHz);
    std::vector<double> x(count, 0.0);
    // Glottal flow u(φ) = (φ/OQ)²·(1 − φ/OQ) in the open phase; its derivative
    // (flow derivative, which includes the lip radiation) drives the filter.
    double phase = 0.0;
    const double oq = vowel.openQuotient;
    for (std::size_t n = 0; n < count; ++n) {
        const double t = static_cast<double>(n) / vowel.rateHz;
        const double q = phase / oq;
        x[n] = phase < oq ? (2.0 * q - 3.0 * q * q) / oq : 0.0;
        phase += f0At(vowel, t) / vowel.rateHz;
        if (phase >= 1.0) phase -= 1.0;
    }
    for (std::size_t k = 0; k < vowel.formantHz.size(); ++k) {
        const double f = vowel.formantHz[k], b = vowel.bandwidthHz[k];
        if (!(f > 0.0) || f >= vowel.rateHz / 2.0) continue;
        const double r = std::exp(-std::numbers::pi * b / vowel.rateHz);
        const double a1 = 2.0 * r * std::cos(2.0 * std::numbers::pi * f / vowel.rateHz);
        const double a2 = -r * r;
        const double g = 1.0 - a1 - a2;
        double y1 = 0.0, y2 = 0.0;
        for (std::size_t n = 0; n < count; ++n) {
            const double y = g * x[n] + a1 * y1 + a2 * y2;
            y2 = y1;
            y1 = y;
            x[n] = y;
        }
    }
    double peak = 0.0;
    for (const double v : x) peak = std::max(peak, std::fabs(v));
    const double scale = peak > 0.0 ? vowel.peak / peak : 0.0;
    std::uint32_t state = vowel.seed ? vowel.seed : 1;
    const auto uniform = [&state] {
        state = state * 1664525u + 1013904223u;
        return (state >> 8) / 16777216.0;
    };
    std::vector<std::int16_t> out(count);
    for (std::size_t n = 0; n < count; ++n) {
        double v = x[n] * scale;
        if (vowel.noiseLevel > 0.0) {
            // Sum of 12 uniforms: unit-variance, nearly Gaussian.
            double s = -6.0;
            for (int i = 0; i < 12; ++i) s += uniform();
            v += s * vowel.noiseLevel * vowel.peak;
        }
        v = std::clamp(std::round(v), -32768.0, 32767.0);
        out[n] = static_cast<std::int16_t>(v);
    }
    return out;
}

const std::vector<NamedVowel>& standardVowels() {
    static const std::vector<NamedVowel> vowels = {
        {"a", {730, 1090, 2440, 3400, 4500}}, {"i", {270, 2290, 3010, 3700, 4500}}, {"u", {300, 870, 2240, 3400, 4500}},
        {"e", {530, 1840, 2480, 3500, 4500}}, {"o", {570, 840, 2410, 3400, 4500}},
    };
    return vowels;
}

bool writeWav(const std::string& path, const std::vector<std::int16_t>& samples, double rateHz) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    const auto u32 = [f](std::uint32_t v) {
        const unsigned char b[4] = {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8),
                                    static_cast<unsigned char>(v >> 16), static_cast<unsigned char>(v >> 24)};
        std::fwrite(b, 1, 4, f);
    };
    const auto u16 = [f](std::uint16_t v) {
        const unsigned char b[2] = {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8)};
        std::fwrite(b, 1, 2, f);
    };
    const std::uint32_t bytes = static_cast<std::uint32_t>(samples.size() * 2);
    const std::uint32_t rate = static_cast<std::uint32_t>(rateHz);
    std::fwrite("RIFF", 1, 4, f);
    u32(36 + bytes);
    std::fwrite("WAVEfmt ", 1, 8, f);
    u32(16);
    u16(1);
    u16(1);
    u32(rate);
    u32(rate * 2);
    u16(2);
    u16(16);
    std::fwrite("data", 1, 4, f);
    u32(bytes);
    for (const std::int16_t s : samples) u16(static_cast<std::uint16_t>(s));
    return std::fclose(f) == 0;
}

}  // namespace sonmetra::synth
