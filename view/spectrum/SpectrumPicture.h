// The drawing of the FFT/LPC spectrum window: one function of the computed
// spectrum, the window's settings and the size it fills, used by the window
// on screen, "Save As bmp...", printing and `sonmetra --render spectrum`.
//
// Layout: two header lines (the window's title and what was analysed on the
// left, the legend and the formants on the right), the plot with its power
// axis on the left and frequency axis below. The frequency axis runs from 0 Hz
// to the frequency range (at most half the rate). The power axis:
//   - Absolute: from 0 dB (a sine of one sample unit) to the fixed top level;
//   - Relative: 0 dB at the highest point drawn (spectrum or envelope), down
//     to the spectrum's lowest level in the band, rounded out to the power
//     grid's spacing (10 dB without a grid), at most 150 dB.
// Curves beyond the axis are clipped at the plot's edge.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QString>
#include <optional>

#include "SpectrumAnalysis.h"

class QPainter;

struct SpectrumPicture {
    const SpectrumResult* result = nullptr;
    sonmetra::FftLpcSettings settings;
    QString title;  // "demo.kvd::FFT/LPC"
    QString where;  // what was analysed: "at 1234.5 ms, 256 pts, LPC 14"
    std::optional<int> markerBin;
    bool colour = true;
};

// Where frequencies and levels lie in a picture of a given size.
class SpectrumAxes {
public:
    SpectrumAxes(const SpectrumPicture& picture, QSize size);

    QRectF plot() const { return m_plot; }
    bool usable() const { return m_plot.width() >= 8 && m_plot.height() >= 8; }
    double rangeHz() const { return m_rangeHz; }
    // Absolute levels (dB re one sample unit) at the top and bottom edge.
    double topLevelDb() const { return m_topDb; }
    double bottomLevelDb() const { return m_bottomDb; }
    // What the axis labels subtract from a level: 0 in the Absolute format,
    // the highest point drawn in the Relative one.
    double labelReferenceDb() const { return m_referenceDb; }

    double xOfHz(double hz) const;
    double hzAtX(double x) const;
    double yOfLevel(double levelDb) const;
    // The level as the axis labels it, at a height.
    double labelDbAtY(double y) const;

private:
    QRectF m_plot;
    double m_rangeHz = 1.0;
    double m_topDb = 80.0, m_bottomDb = 0.0, m_referenceDb = 0.0;
};

void drawSpectrumPicture(QPainter& painter, QSize size, const SpectrumPicture& picture);
