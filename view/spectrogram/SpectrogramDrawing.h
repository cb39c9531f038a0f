// The spectrogram window's picture: one function of the document, the
// computed data, the settings and the size, used by the window's paint
// event, "Save As bmp...", printing and `sonmetra --render spectrogram`.
//
//   - the levels as an image, grey (white = quietest, black = loudest) or
//     through the colour table, 0 Hz at the bottom of the image;
//   - formant tracks as dots, F1 … F5 of every column that has them;
//   - frequency grid and labels on the left, time grid and labels below;
//   - the waveform, intensity and labels panes on the same time axis;
//   - the selection, the vertical time cursor and the horizontal frequency cursor.
// Black-and-white print takes the grey table, draws the dots white with a
// black edge (they sit on dark formant bands) and every line in black.
#pragma once

#include <QSize>
#include <QString>
#include <optional>
#include <utility>

#include "analysis/AnalysisSettings.h"

class QPainter;
struct SpectrogramData;

namespace sonmetra {
class CKestruneDoc;
}

struct SpectrogramScene {
    const sonmetra::CKestruneDoc* doc = nullptr;  // its labels go in the labels pane
    const SpectrogramData* data = nullptr;        // null: the message in place of the image
    sonmetra::SpectrogramSettings settings;       // in force; the data's own settings win where there are data
    bool blackWhite = false;
    std::optional<double> cursorMs;
    std::optional<double> cursorHz;
    std::optional<std::pair<double, double>> selectionMs;
    QString message;
};

void drawSpectrogram(QPainter& painter, QSize size, const SpectrogramScene& scene);
