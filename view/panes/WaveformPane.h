// A channel's waveform in a pane of an analysis window, on the window's
// time axis.
//
// The pane is scaled to the largest excursion of the whole signal from its
// zero level, so that a quiet recording still fills its pane and the scale
// does not jump while zooming. Where a pixel column spans more than a couple
// of samples it is drawn as one min-max line taken from the min/max summary
// (the cost follows the width of the pane, not the length of the signal);
// otherwise as a line through the samples.
#pragma once

#include <QRect>
#include <cstddef>
#include <cstdint>

#include "TimeAxis.h"

namespace sonmetra {
class MinMaxSummary;
}

class QPainter;

struct WaveformSource {
    const std::int16_t* samples = nullptr;
    std::size_t count = 0;
    double msPerSample = 0.0;
    const sonmetra::MinMaxSummary* summary = nullptr;  // built from these samples; null: scan them
    double zeroLevel = 0.0;                            // drawn on the middle line (the channel's reference)
};

// The largest |sample − zero level| of the signal (at least 1).
double waveformPeak(const WaveformSource& source);

void drawWaveformPane(QPainter& p, const QRect& pane, const TimeAxis& axis, const WaveformSource& source,
                      const PaneStyle& style);
