#include "SpectrogramDrawing.h"

#include <QFontMetrics>
#include <QLineF>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <vector>

#include "document/CKestruneDoc.h"
#include "res/StringTable.h"
#include "view/LabelFont.h"
#include "view/TimeBase.h"
#include "view/spectrogram/SpectrogramData.h"
#include "view/spectrogram/SpectrogramLayout.h"

namespace {

constexpr int kMinTimeLabelSpacingPx = 70;
constexpr int kMinFrequencyLabelSpacingPx = 16;

struct Style {
    QColor grid;
    QColor cursor;
    QColor dots;
    QColor trace;
    QColor curve;
    QColor highlight;
    bool dotsOutlined = false;
};

Style styleFor(const SpectrogramScene& scene, bool colourTable) {
    Style s;
    if (scene.blackWhite) {
        s.grid = QColor(0, 0, 0, 150);
        s.cursor = Qt::black;
        s.dots = Qt::white;
        s.trace = Qt::black;
        s.curve = Qt::black;
        s.highlight = QColor(0, 0, 0, 45);
        s.dotsOutlined = true;
        return s;
    }
    s.grid = colourTable ? QColor(255, 255, 255, 110) : QColor(40, 110, 255, 150);
    s.cursor = QColor(220, 0, 0);
    s.dots = QColor(230, 0, 0);
    s.trace = QColor(20, 20, 20);
    s.curve = QColor(0, 0, 255);
    s.highlight = QColor(120, 170, 255, 90);
    return s;
}

QString numberText(double v, double step) {
    const int decimals = step >= 1.0 ? 0 : std::min(6, static_cast<int>(std::ceil(-std::log10(step))));
    return QString::number(v, 'f', decimals);
}

// A 1-2-5 step of at least `minValue`.
double niceStep(double minValue) {
    if (!(minValue > 0.0)) return 1.0;
    const double decade = std::pow(10.0, std::floor(std::log10(minValue)));
    for (double m : {1.0, 2.0, 5.0, 10.0})
        if (m * decade >= minValue) return m * decade;
    return 10.0 * decade;
}

void drawFrequencyAxis(QPainter& p, const SpectrogramLayout& l, const sonmetra::SpectrogramSettings& s,
                       const Style& style) {
    const double rangeHz = s.frequencyRangeHz;
    if (!(rangeHz > 0.0) || l.image.height() <= 0) return;
    const double pxPerHz = l.image.height() / rangeHz;
    const bool grid = s.frequencyGrid != 0 && s.frequencyGridHz > 0;
    if (grid && s.frequencyGridHz * pxPerHz >= 3.0) {
        p.setPen(QPen(style.grid, 1.0, Qt::DotLine));
        for (double hz = s.frequencyGridHz; hz < rangeHz; hz += s.frequencyGridHz) {
            const double y = l.hzToY(hz, rangeHz);
            p.drawLine(QLineF(l.image.left(), y, l.image.left() + l.image.width(), y));
        }
    }
    // Labels at the grid lines, every k-th one when they would crowd.
    double step = grid ? s.frequencyGridHz : niceStep(kMinFrequencyLabelSpacingPx / pxPerHz);
    if (step * pxPerHz < kMinFrequencyLabelSpacingPx) step *= std::ceil(kMinFrequencyLabelSpacingPx / (step * pxPerHz));
    p.setPen(QPen(Qt::black, 1.0));
    const QFontMetrics fm(p.font());
    for (double hz = 0.0; hz <= rangeHz + 1e-6; hz += step) {
        const double y = l.hzToY(hz, rangeHz);
        p.drawLine(QLineF(l.image.left() - 4, y, l.image.left(), y));
        const QRectF box(SpectrogramLayout::kAxisTitleWidth, y - fm.height() / 2.0,
                         l.image.left() - 6 - SpectrogramLayout::kAxisTitleWidth, fm.height());
        p.drawText(box, Qt::AlignRight | Qt::AlignVCenter, numberText(hz, step));
    }
    // The axis title runs up the left edge beside the image, clear of the
    // numbers and of the panes above and below.
    const QString title = fm.horizontalAdvance(QStringLiteral("Frequency (Hz)")) + 8 < l.image.height()
                              ? QStringLiteral("Frequency (Hz)")
                              : QStringLiteral("Hz");
    p.save();
    p.translate(0.0, l.image.top() + l.image.height() / 2.0);
    p.rotate(-90.0);
    p.drawText(QRectF(-l.image.height() / 2.0, 1.0, l.image.height(), fm.height()), Qt::AlignCenter, title);
    p.restore();
}

void drawTimeAxis(QPainter& p, const SpectrogramLayout& l, const sonmetra::SpectrogramSettings& s, double startMs,
                  double endMs, const Style& style) {
    const double lengthMs = endMs - startMs;
    const QRect area = l.timeArea();
    if (!(lengthMs > 0.0) || area.width() <= 0) return;
    const double pxPerMs = area.width() / lengthMs;
    // A fixed spacing that would pack the lines closer than a few pixels
    // (an hour at 500 ms) gives way to the automatic one.
    double gridStep = 0.0;
    if (s.timeGrid != 0) {
        gridStep = s.timeGridMs > 0 ? s.timeGridMs : timebase::gridStepMs(0.0, lengthMs, area.width());
        if (gridStep * pxPerMs < 4.0) gridStep = timebase::gridStepMs(0.0, lengthMs, area.width());
    }
    const auto firstAt = [startMs](double step) { return std::ceil(startMs / step - 1e-9) * step; };
    if (gridStep > 0.0) {
        p.setPen(QPen(style.grid, 1.0, Qt::DotLine));
        for (double t = firstAt(gridStep); t <= endMs + 1e-9; t += gridStep) {
            const double x = l.msToX(t, startMs, endMs);
            p.drawLine(QLineF(x, area.top(), x, area.top() + area.height()));
        }
    }
    double step = gridStep > 0.0 ? gridStep : timebase::gridStepMs(0.0, lengthMs, area.width());
    if (step * pxPerMs < kMinTimeLabelSpacingPx) step *= std::ceil(kMinTimeLabelSpacingPx / (step * pxPerMs));
    p.setPen(QPen(Qt::black, 1.0));
    const QFontMetrics fm(p.font());
    const double bottom = area.top() + area.height();
    for (double t = firstAt(step); t <= endMs + 1e-9; t += step) {
        const double x = l.msToX(t, startMs, endMs);
        p.drawLine(QLineF(x, bottom, x, bottom + 4));
        const QString text = numberText(t, step);
        const double w = fm.horizontalAdvance(text);
        p.drawText(QRectF(x - w / 2.0 - 2, bottom + 4, w + 4, fm.height()), Qt::AlignCenter, text);
    }
    p.drawText(QRectF(0, bottom + 4, l.image.left() - 6, fm.height()), Qt::AlignRight | Qt::AlignVCenter,
               QStringLiteral("ms"));
}

void drawFormants(QPainter& p, const SpectrogramLayout& l, const SpectrogramData& d, const Style& style) {
    const double rangeHz = d.settings.frequencyRangeHz;
    const int columns = d.columns();
    QPolygonF dots;
    dots.reserve(columns * 5);
    for (int i = 0; i < columns; ++i) {
        const double x = l.image.left() + (i + 0.5) * l.image.width() / columns;
        for (int f : d.formantsAt(i))
            if (f > 0 && f <= rangeHz) dots << QPointF(x, l.hzToY(f, rangeHz));
    }
    if (dots.isEmpty()) return;
    p.save();
    p.setRenderHint(QPainter::Antialiasing, true);
    if (style.dotsOutlined) {
        p.setPen(QPen(Qt::black, 4.0, Qt::SolidLine, Qt::RoundCap));
        p.drawPoints(dots);
    }
    p.setPen(QPen(style.dots, style.dotsOutlined ? 2.2 : 3.0, Qt::SolidLine, Qt::RoundCap));
    p.drawPoints(dots);
    p.restore();
}

void drawWavePane(QPainter& p, const QRect& pane, const SpectrogramData& d, const Style& style) {
    const int columns = d.columns();
    if (pane.isEmpty() || d.waveMin.size() != static_cast<std::size_t>(columns)) return;
    float peak = 1.0f;
    for (int i = 0; i < columns; ++i)
        peak = std::max(
            {peak, std::abs(d.waveMin[static_cast<std::size_t>(i)]), std::abs(d.waveMax[static_cast<std::size_t>(i)])});
    const double mid = pane.top() + pane.height() / 2.0;
    const double scale = (pane.height() / 2.0 - 1.0) / peak;
    std::vector<QLineF> lines;
    lines.reserve(static_cast<std::size_t>(columns));
    for (int i = 0; i < columns; ++i) {
        const double x = pane.left() + (i + 0.5) * pane.width() / columns;
        const double top = mid - d.waveMax[static_cast<std::size_t>(i)] * scale;
        const double bottom = mid - d.waveMin[static_cast<std::size_t>(i)] * scale;
        // A column of one level is still drawn one pixel high.
        lines.emplace_back(x, top - 0.5, x, std::max(bottom, top) + 0.5);
    }
    p.setPen(QPen(style.trace, 1.0));
    p.drawLines(lines.data(), static_cast<int>(lines.size()));
}

void drawIntensityPane(QPainter& p, const QRect& pane, const SpectrogramData& d, const Style& style) {
    const int columns = d.columns();
    if (pane.isEmpty() || d.intensityDb.size() != static_cast<std::size_t>(columns)) return;
    const double low = d.intensityLowDb, high = d.intensityHighDb;
    QPolygonF curve;
    curve.reserve(columns);
    for (int i = 0; i < columns; ++i) {
        const double v = std::clamp<double>(d.intensityDb[static_cast<std::size_t>(i)], low, high);
        // Inside the pane's frame, so that silence does not vanish under its bottom line.
        curve << QPointF(pane.left() + (i + 0.5) * pane.width() / columns,
                         pane.bottom() - 1.0 - (v - low) / (high - low) * (pane.height() - 3.0));
    }
    p.setPen(QPen(style.curve, 1.0));
    p.drawPolyline(curve);
    p.setPen(QPen(Qt::black, 1.0));
    const QFontMetrics fm(p.font());
    const QRectF labels(0, pane.top(), pane.left() - 6, pane.height());
    p.drawText(labels, Qt::AlignRight | Qt::AlignTop, QString::number(high, 'f', 0) + QStringLiteral(" dB"));
    if (pane.height() >= 2 * fm.height())
        p.drawText(labels, Qt::AlignRight | Qt::AlignBottom, QString::number(low, 'f', 0));
}

void drawLabelPane(QPainter& p, const SpectrogramLayout& l, const SpectrogramScene& scene, double startMs, double endMs,
                   int channel) {
    const QRect& pane = l.labelPane;
    if (pane.isEmpty() || scene.doc == nullptr || channel < 0 || channel >= scene.doc->channelCount()) return;
    p.save();
    p.setClipRect(pane);
    QFont font = p.font();
    font.setPixelSize(std::max(8, pane.height() - 8));
    p.setFont(font);
    for (const sonmetra::CLabel& label : scene.doc->channel(channel).m_labels) {
        if (label.timeMs < startMs || label.timeMs > endMs) continue;
        const double x = l.msToX(label.timeMs, startMs, endMs);
        const QColor colour = scene.blackWhite ? QColor(Qt::black) : labelColor(label);
        p.setPen(QPen(colour, 1.0));
        p.drawLine(QLineF(x, pane.top(), x, pane.top() + pane.height()));
        p.drawText(QRectF(x + 3, pane.top(), pane.right() - x, pane.height()), Qt::AlignLeft | Qt::AlignVCenter,
                   QString::fromUtf8(label.text.c_str()));
    }
    p.restore();
}

void drawMarks(QPainter& p, const SpectrogramLayout& l, const SpectrogramScene& scene, double startMs, double endMs,
               double rangeHz, const Style& style) {
    const QRect area = l.timeArea();
    p.save();
    p.setClipRect(area.adjusted(0, 0, 1, 1));
    if (scene.selectionMs) {
        const double x0 = l.msToX(std::min(scene.selectionMs->first, scene.selectionMs->second), startMs, endMs);
        const double x1 = l.msToX(std::max(scene.selectionMs->first, scene.selectionMs->second), startMs, endMs);
        p.fillRect(QRectF(x0, area.top(), std::max(1.0, x1 - x0), area.height()), style.highlight);
    }
    if (scene.cursorMs) {
        const double x = l.msToX(*scene.cursorMs, startMs, endMs);
        p.setPen(QPen(style.cursor, 1.0));
        p.drawLine(QLineF(x, area.top(), x, area.top() + area.height()));
    }
    if (scene.cursorHz && l.image.height() > 0) {
        const double y = l.hzToY(*scene.cursorHz, rangeHz);
        p.setPen(QPen(style.cursor, 1.0, Qt::DashLine));
        p.drawLine(QLineF(l.image.left(), y, l.image.left() + l.image.width(), y));
    }
    p.restore();
}

}  // namespace

void drawSpectrogram(QPainter& p, QSize size, const SpectrogramScene& scene) {
    const SpectrogramData* data = scene.data != nullptr && scene.data->columns() > 0 ? scene.data : nullptr;
    const sonmetra::SpectrogramSettings& s = data != nullptr ? data->settings : scene.settings;
    const bool colourTable = s.colourMap != 0 && !scene.blackWhite;
    const Style style = styleFor(scene, colourTable);
    const SpectrogramLayout l = spectrogramLayout(size, s);
    p.save();
    p.fillRect(QRect(QPoint(0, 0), size), Qt::white);
    QFont font = p.font();
    font.setPixelSize(11);
    p.setFont(font);

    if (data == nullptr) {
        p.setPen(QPen(Qt::black, 1.0));
        p.drawRect(l.image.adjusted(0, 0, -1, -1));
        p.drawText(l.image, Qt::AlignCenter | Qt::TextWordWrap, scene.message);
        p.restore();
        return;
    }
    const double startMs = data->range.startMs(), endMs = data->range.endMs();
    if (!l.image.isEmpty()) {
        const QImage& levels = data->levelsImage(colourTable);
        if (levels.isNull()) {
            p.setPen(QPen(Qt::black, 1.0));
            p.drawText(l.image, Qt::AlignCenter | Qt::TextWordWrap,
                       QString::fromLatin1(sonmetra::loadString(sonmetra::IDS_NO_MEMORY)));
        } else {
            p.drawImage(QRectF(l.image), levels);
        }
    }
    drawFrequencyAxis(p, l, s, style);
    drawWavePane(p, l.wavePane, *data, style);
    drawIntensityPane(p, l.intensityPane, *data, style);
    drawLabelPane(p, l, scene, startMs, endMs, data->channel);
    drawTimeAxis(p, l, s, startMs, endMs, style);
    if (data->formantsTracked && !l.image.isEmpty()) drawFormants(p, l, *data, style);
    drawMarks(p, l, scene, startMs, endMs, s.frequencyRangeHz, style);

    p.setPen(QPen(Qt::black, 1.0));
    p.setBrush(Qt::NoBrush);
    for (const QRect& r : {l.image, l.wavePane, l.intensityPane, l.labelPane})
        if (!r.isEmpty()) p.drawRect(QRectF(r).adjusted(-0.5, -0.5, 0.5, 0.5));
    p.restore();
}
