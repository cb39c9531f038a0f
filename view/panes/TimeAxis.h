// The time axis that the panes of an analysis window share (the pitch and
// spectrogram windows): a range in ms mapped onto an x span, the vertical
// time grid, the ruler of times under the panes, and the selection and
// cursor drawn across them.
//
// Everything is drawn with a QPainter in logical pixels and pens at least one
// pixel wide, so that the same calls make the screen, a bitmap and a vector
// printout.
#pragma once

#include <QColor>
#include <QRect>
#include <optional>
#include <utility>

class QPainter;

// The colours of a picture in colour or in black and white.
struct PaneStyle {
    bool color = true;
    QColor grid, text, frame, trace, curve, track, cursor, selection;
    Qt::PenStyle gridLine = Qt::SolidLine;  // dotted in black and white, to tell it from the curves
};
PaneStyle paneStyle(bool color);

struct TimeAxis {
    double startMs = 0.0;  // shown at x = left
    double endMs = 0.0;    // shown at x = right
    double left = 0.0;
    double right = 0.0;

    double lengthMs() const { return endMs - startMs; }
    double msToX(double ms) const;
    double xToMs(double x) const;
};

// The step of the time grid: `fixedStepMs` when positive, otherwise a 1-2-5
// step that leaves at least 80 pixels between lines.
double timeGridStepMs(double fixedStepMs, const TimeAxis& axis);

// Vertical lines at every multiple of `stepMs` inside `area`.
void drawTimeGrid(QPainter& p, const TimeAxis& axis, const QRect& area, double stepMs, const PaneStyle& style);
// Ticks and times (ms, or s once the step reaches a second) in the band `ruler`.
void drawTimeRuler(QPainter& p, const TimeAxis& axis, const QRect& ruler, double stepMs, const PaneStyle& style);

// The selection (a translucent band) and the cursor (a line) over `area`;
// either may be absent. Parts outside the axis are clipped.
void drawSelectionAndCursor(QPainter& p, const TimeAxis& axis, const QRect& area,
                            std::optional<std::pair<double, double>> selectionMs, std::optional<double> cursorMs,
                            const PaneStyle& style);

// A number as a short axis label: no trailing zeros, at most `decimals` decimals.
QString axisNumber(double value, int decimals = 3);
