// The picture of the pitch window: one function of the results, the
// settings and the size, used by the window's paint event, its bitmap, its
// printout and `sonmetra --render pitch`.
//
// Top to bottom, on one time axis: a title line; the waveform of the tracked
// channel ("Add audio"); the pitch track in Hz over the display range, with
// the frequency grid; the frames' intensity in dB ("Add Intensity"); the
// channel's labels ("Add Labels"); the ruler of times. The time grid runs
// through every pane (spacing 0: a 1-2-5 step that follows the zoom). Frames
// without pitch are gaps in the track. Selection and cursor cross all panes.
#pragma once

#include <QRect>
#include <QSize>
#include <QString>
#include <optional>
#include <utility>
#include <vector>

#include "analysis/AnalysisSettings.h"
#include "document/CLabel.h"
#include "view/panes/TimeAxis.h"

class QPainter;
struct PitchResults;

struct PitchPicture {
    const PitchResults* results = nullptr;  // null: no track to show (yet)
    sonmetra::PitchSettings settings;
    const std::vector<sonmetra::CLabel>* labels = nullptr;
    double startMs = 0.0;  // the shown range
    double endMs = 0.0;
    std::optional<double> cursorMs;
    std::optional<std::pair<double, double>> selectionMs;
    QString title;    // left of the title line
    QString message;  // in the pitch pane when there is no track
};

struct PitchLayout {
    TimeAxis axis;
    QRect title, waveform, pitch, intensity, labels, ruler;  // empty when not drawn
    // From the top of the first pane to the bottom of the last, over the axis.
    QRect plotArea() const;
};

PitchLayout pitchLayout(QSize size, const sonmetra::PitchSettings& settings, double startMs, double endMs);

void drawPitchPicture(QPainter& p, QSize size, const PitchPicture& picture);
// The picture in two layers, drawPitchPicture being the one over the other:
// what the cursor and the selection leave alone (grids, waveform, track,
// intensity, labels, ruler), which the window keeps as an image while the
// cursor moves, and what they change (the readout of the title line, the
// selection, the cursor and the panes' frames).
void drawPitchBackground(QPainter& p, QSize size, const PitchPicture& picture);
void drawPitchOverlay(QPainter& p, QSize size, const PitchPicture& picture);
