// Documents with known signals for the view's tests and benchmark.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "document/CKestruneDoc.h"
#include "tests/support/TestDocument.h"

namespace synthetic {

// fillChannel(doc, index, name, rateHz, count, f, audio): slot `index` holds
// f(0), f(1), ... at rateHz.
using sonmetra::test::fillChannel;

inline std::int16_t sine(std::size_t i, double rateHz, double hz, double amplitude) {
    return static_cast<std::int16_t>(
        std::lround(amplitude * std::sin(2.0 * M_PI * hz * static_cast<double>(i) / rateHz)));
}

// Audio (a 220 Hz tone whose loudness swells every 1.4 s and over half an
// hour) plus two slow data channels,
// all lasting `seconds`.
inline std::unique_ptr<sonmetra::CKestruneDoc> speechLike(double seconds, double audioRateHz = 44100.0,
                                                          double dataRateHz = 1000.0) {
    auto doc = std::make_unique<sonmetra::CKestruneDoc>();
    const auto audioCount = static_cast<std::size_t>(seconds * audioRateHz);
    const auto dataCount = static_cast<std::size_t>(seconds * dataRateHz);
    // One second of the tone repeats exactly (220 whole periods); the swell
    // changes every 10 ms. Computing two sines per sample of an hour would
    // take longer than everything the benchmark measures.
    const auto perSecond = static_cast<std::size_t>(audioRateHz);
    std::vector<float> tone(perSecond);
    for (std::size_t i = 0; i < perSecond; ++i)
        tone[i] = static_cast<float>(std::sin(2.0 * M_PI * 220.0 * i / audioRateHz));
    const std::size_t swellBlock = perSecond / 100;
    fillChannel(
        *doc, 0, "Audio", audioRateHz, audioCount,
        [&, swell = 0.0, block = std::size_t(-1)](std::size_t i) mutable {
            if (i / swellBlock != block) {
                block = i / swellBlock;
                const double t = static_cast<double>(i) / audioRateHz;
                // A slow envelope too, so that a whole hour is not one flat band.
                const double envelope = 0.3 + 0.7 * std::abs(std::sin(2.0 * M_PI * t / 1800.0));
                swell = 20000.0 * envelope * (0.55 + 0.45 * std::sin(2.0 * M_PI * 0.7 * t));
            }
            return static_cast<std::int16_t>(std::lround(swell * tone[i % perSecond]));
        },
        true);
    fillChannel(*doc, 1, "ch1", dataRateHz, dataCount,
                [&](std::size_t i) { return sine(i, dataRateHz, 1.3, 12000.0); });
    fillChannel(*doc, 2, "ch2", dataRateHz, dataCount, [&](std::size_t i) {
        return static_cast<std::int16_t>((i / static_cast<std::size_t>(dataRateHz / 2)) % 2 == 0 ? 8000 : -8000);
    });
    return doc;
}

}  // namespace synthetic
