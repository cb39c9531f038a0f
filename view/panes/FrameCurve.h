// Curves of one value per analysis frame (a pitch track, a frame intensity)
// in a pane on the window's time axis, with the value grid and scale.
//
// A frame's value stands at its frame time, firstMs + i × stepMs. A value of
// exactly 0.0 means "none" (unvoiced, silent): the curve has a gap there and
// never a line down to zero; a lone frame with a value is drawn as a short
// dash one frame wide.
#pragma once

#include <QColor>
#include <QRect>
#include <QString>

#include "TimeAxis.h"

class QPainter;

struct FrameCurve {
    const double* values = nullptr;
    int count = 0;
    double firstMs = 0.0;
    double stepMs = 0.0;
    double timeMs(int i) const { return firstMs + i * stepMs; }
};

// The value range [low, high] mapped onto a pane, high at the top.
struct ValueScale {
    double low = 0.0;
    double high = 1.0;
    double toY(const QRect& pane, double v) const;
};

void drawFrameCurve(QPainter& p, const QRect& pane, const TimeAxis& axis, const FrameCurve& curve,
                    const ValueScale& scale, const QColor& color, double widthPx);

// Horizontal lines at the multiples of `step` inside the scale.
void drawValueGrid(QPainter& p, const QRect& pane, const TimeAxis& axis, const ValueScale& scale, double step,
                   const PaneStyle& style);
// The values of the grid lines (every line that has room for its text) to
// the left of x = axis.left, and `unit` above the pane's top value.
void drawValueScale(QPainter& p, const QRect& pane, const TimeAxis& axis, const ValueScale& scale, double step,
                    const QString& unit, const PaneStyle& style);

// A 1-2-5 step with at least `minSpacingPx` between lines over the pane's height.
double valueStep(const ValueScale& scale, int heightPx, double minSpacingPx = 18.0);

// The intensity pane: the frames' levels in dB (0.0 = silence, left out)
// over the 60 dB below the loudest frame, with its scale.
void drawIntensityPane(QPainter& p, const QRect& pane, const TimeAxis& axis, const FrameCurve& levelsDb,
                       const PaneStyle& style);
