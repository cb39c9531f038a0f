// The sample rates this program works with: finite, from 1 Hz to 1 MHz.
//
// Every setting derived from a rate (window lengths in samples, FFT bin
// widths, LPC orders, buffer lengths) and every analysis assumes a rate in
// this range: below it the frame and step counts of a signal become
// astronomically large, above it (or infinite) the derived whole numbers
// overflow. Readers refuse files outside it; the document format can still
// hold any value, and whatever would use such a channel's rate refuses it.
#pragma once

#include <cmath>

namespace sonmetra {

inline constexpr double kMinRateHz = 1.0;
inline constexpr double kMaxRateHz = 1.0e6;

inline bool rateInRange(double rateHz) { return std::isfinite(rateHz) && rateHz >= kMinRateHz && rateHz <= kMaxRateHz; }

}  // namespace sonmetra
