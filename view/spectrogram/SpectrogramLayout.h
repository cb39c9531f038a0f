// Where the parts of a spectrogram picture go in a picture of a given size:
// the frequency axis on the left, the time axis at the bottom, and from top
// to bottom the waveform pane, the image of the levels, the intensity pane
// and the labels pane, all on one time axis.
#pragma once

#include <QRect>
#include <QSize>

#include "analysis/AnalysisSettings.h"

struct SpectrogramLayout {
    static constexpr int kAxisTitleWidth = 14;                // "Frequency (Hz)" turned upright
    static constexpr int kLeftMargin = 52 + kAxisTitleWidth;  // and the frequency labels
    static constexpr int kRightMargin = 12;
    static constexpr int kTopMargin = 8;
    static constexpr int kBottomMargin = 22;  // time labels
    static constexpr int kPaneGap = 4;
    static constexpr int kLabelPaneHeight = 22;

    QRect image;  // the levels, formant dots and frequency grid
    QRect wavePane;
    QRect intensityPane;
    QRect labelPane;

    // From the top of the first pane to the bottom of the last, over the
    // image's width: where the time cursor, the selection and the time grid go.
    QRect timeArea() const;

    // Time and frequency on the image (x over the whole time area).
    double msToX(double ms, double startMs, double endMs) const;
    double xToMs(double x, double startMs, double endMs) const;
    double hzToY(double hz, double rangeHz) const;
    double yToHz(double y, double rangeHz) const;
};

SpectrogramLayout spectrogramLayout(QSize size, const sonmetra::SpectrogramSettings& settings);
