// Small arithmetic shared by the sound engines: the 16-bit wrap of a
// corrected sample and pixel positions that stay finite.
#pragma once

#include <cmath>
#include <cstdint>

namespace sonmetra {

// The low 16 bits of a value truncated toward zero, as a signed sample:
// 40000.0 -> -25536. No clipping, on purpose; NaN gives 0.
inline std::int16_t wrapToInt16(double value) {
    if (std::isnan(value)) return 0;
    double whole = std::trunc(value);
    if (!(std::fabs(whole) < 9.0e18)) whole = std::fmod(whole, 65536.0);
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(static_cast<std::int64_t>(whole)));
}

// A sample after the capture correction: the offset added with 16-bit wrap,
// then multiplied by the gain and wrapped again.
inline std::int16_t correctSample(std::int16_t sample, std::int16_t dcOffset, double gain) {
    const auto shifted = static_cast<std::int16_t>(static_cast<std::uint16_t>(sample + dcOffset));
    return wrapToInt16(static_cast<double>(shifted) * gain);
}

// Truncation toward zero into an int, saturating far outside any screen so
// that an infinite step (a play of zero blocks) still gives a position.
inline int truncToPixel(double value) {
    if (std::isnan(value)) return 0;
    if (value > 1.0e9) return 1000000000;
    if (value < -1.0e9) return -1000000000;
    return static_cast<int>(value);
}

}  // namespace sonmetra
