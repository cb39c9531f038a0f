#include "SpectrumPicture.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <algorithm>
#include <cmath>

namespace {

constexpr double kLeftPx = 56, kRightPx = 16, kTopPx = 42, kBottomPx = 36;
constexpr double kMaxRelativeSpanDb = 150.0;
constexpr int kFontPx = 11;
// Room above a Relative plot's highest point for the formant marks and their labels.
constexpr double kMarkRoomPx = 28;

// 1, 2 or 5 times a power of ten, at least `raw`.
double niceStep(double raw) {
    if (!(raw > 0.0)) return 1.0;
    const double decade = std::pow(10.0, std::floor(std::log10(raw)));
    for (const double m : {1.0, 2.0, 5.0, 10.0})
        if (m * decade >= raw) return m * decade;
    return 10.0 * decade;
}

// Every how many lines of `spacingPx` one is drawn so that they stand at
// least `minimumPx` apart.
int everyNth(double spacingPx, double minimumPx) {
    if (!(spacingPx > 0.0)) return 1;
    return std::max(1, static_cast<int>(std::ceil(minimumPx / spacingPx)));
}

QFont pictureFont(bool bold = false) {
    QFont font;
    font.setPixelSize(kFontPx);
    font.setBold(bold);
    return font;
}

struct Palette {
    QColor fft, lpc, formant, marker, grid, axis;
};

Palette paletteFor(bool colour) {
    if (colour)
        return {QColor(20, 60, 200), QColor(210, 30, 30),   QColor(0, 120, 60),
                QColor(190, 0, 190), QColor(215, 215, 215), Qt::black};
    return {Qt::black, Qt::black, Qt::black, QColor(90, 90, 90), QColor(200, 200, 200), Qt::black};
}

QPen lpcPen(const Palette& p, bool colour) {
    QPen pen(p.lpc, 2.0);
    if (!colour) pen.setStyle(Qt::DashLine);
    return pen;
}

// The envelope's highest point over the band, sampled finely enough to catch
// a formant peak between bins.
double envelopeMaximum(const SpectrumResult& r, double rangeHz) {
    const int samples = std::max(512, 4 * static_cast<int>(rangeHz / r.binHz()));
    double top = -HUGE_VAL;
    for (int i = 0; i <= samples; ++i) top = std::max(top, r.envelopeAt(rangeHz * i / samples));
    return top;
}

bool drawsEnvelope(const SpectrumPicture& p) {
    return p.result != nullptr && p.settings.drawLpc != 0 && p.result->hasEnvelope && !p.result->empty();
}

void drawHeader(QPainter& painter, QSize size, const SpectrumPicture& picture, const Palette& palette) {
    const QFont plain = pictureFont(), bold = pictureFont(true);
    const QFontMetrics fm(plain);
    const int lineH = fm.height() + 3;
    const double right = size.width() - kRightPx;

    // Right side first: the legend, and below it the formants.
    QString formants;
    if (drawsEnvelope(picture)) {
        for (int k = 0; k < 5; ++k) {
            const double f = picture.result->formantHz[static_cast<std::size_t>(k)];
            if (f > 1.0) formants += QStringLiteral("F%1 %2  ").arg(k + 1).arg(static_cast<long>(f));
        }
        if (!formants.isEmpty()) formants = formants.trimmed() + QStringLiteral(" Hz");
    }
    painter.setFont(plain);
    double legendLeft = right;
    auto legendEntry = [&](const QString& text, const QPen& pen) {
        const double w = fm.horizontalAdvance(text);
        legendLeft -= w;
        painter.setPen(palette.axis);
        painter.drawText(QPointF(legendLeft, 4 + fm.ascent()), text);
        legendLeft -= 22;
        painter.setPen(pen);
        const double y = 4 + fm.ascent() - fm.xHeight() / 2.0;
        painter.drawLine(QPointF(legendLeft, y), QPointF(legendLeft + 18, y));
        legendLeft -= 12;
    };
    if (picture.settings.drawLpc != 0) legendEntry(QStringLiteral("LPC"), lpcPen(palette, picture.colour));
    legendEntry(QStringLiteral("FFT"), QPen(palette.fft, 1.0));
    const double formantsWidth = fm.horizontalAdvance(formants);
    painter.setPen(palette.formant);
    painter.drawText(QPointF(right - formantsWidth, 4 + lineH + fm.ascent()), formants);

    painter.setPen(palette.axis);
    painter.setFont(bold);
    const QFontMetrics bm(bold);
    const int titleRoom = std::max(0, static_cast<int>(legendLeft - 8 - 4));
    painter.drawText(QPointF(4, 4 + bm.ascent()), bm.elidedText(picture.title, Qt::ElideRight, titleRoom));
    painter.setFont(plain);
    const int whereRoom = std::max(0, static_cast<int>(right - formantsWidth - 12 - 4));
    painter.drawText(QPointF(4, 4 + lineH + fm.ascent()), fm.elidedText(picture.where, Qt::ElideRight, whereRoom));
}

void drawFrequencyAxis(QPainter& painter, const SpectrumAxes& axes, const SpectrumPicture& picture,
                       const Palette& palette) {
    const QRectF plot = axes.plot();
    const bool grid = picture.settings.frequencyGrid != 0 && picture.settings.frequencyGridHz > 0;
    const double step =
        grid ? picture.settings.frequencyGridHz : niceStep(axes.rangeHz() / std::max(1.0, plot.width() / 80.0));
    const double spacingPx = plot.width() * step / axes.rangeHz();
    const int lineEvery = everyNth(spacingPx, 3.0);
    const int labelEvery = everyNth(spacingPx, 48.0);
    const QFontMetrics fm(painter.font());
    const int count = static_cast<int>(std::floor(axes.rangeHz() / step + 1e-9));
    for (int i = 0; i <= count; ++i) {
        const double x = axes.xOfHz(i * step);
        if (i % lineEvery == 0) {
            painter.setPen(grid ? QPen(palette.grid, 1.0) : QPen(palette.axis, 1.0));
            if (grid)
                painter.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
            else
                painter.drawLine(QPointF(x, plot.bottom()), QPointF(x, plot.bottom() + 4));
        }
        if (i % labelEvery == 0) {
            const QString text = QString::number(std::lround(i * step));
            const double width = fm.horizontalAdvance(text);
            // Centred under its line, but never past the picture's right edge.
            const double left = std::min(x - width / 2.0, plot.right() + kRightPx - 1 - width);
            painter.setPen(palette.axis);
            painter.drawText(QPointF(left, plot.bottom() + 5 + fm.ascent()), text);
        }
    }
    const QString caption = QStringLiteral("Frequency (Hz)");
    painter.drawText(
        QPointF(plot.center().x() - fm.horizontalAdvance(caption) / 2.0, plot.bottom() + 7 + fm.height() + fm.ascent()),
        caption);
}

void drawPowerAxis(QPainter& painter, const SpectrumAxes& axes, const SpectrumPicture& picture,
                   const Palette& palette) {
    const QRectF plot = axes.plot();
    const bool grid = picture.settings.powerGrid != 0 && picture.settings.powerGridDb > 0;
    const double ref = axes.labelReferenceDb();
    const double top = axes.topLevelDb() - ref, bottom = axes.bottomLevelDb() - ref;
    const double step =
        grid ? picture.settings.powerGridDb : niceStep((top - bottom) / std::max(1.0, plot.height() / 40.0));
    const double spacingPx = plot.height() * step / (top - bottom);
    const int lineEvery = everyNth(spacingPx, 3.0);
    const int labelEvery = everyNth(spacingPx, 16.0);
    const QFontMetrics fm(painter.font());
    const long first = static_cast<long>(std::ceil(bottom / step - 1e-9));
    const long last = static_cast<long>(std::floor(top / step + 1e-9));
    for (long i = first; i <= last; ++i) {
        const double y = axes.yOfLevel(i * step + ref);
        if (i % lineEvery == 0) {
            painter.setPen(grid ? QPen(palette.grid, 1.0) : QPen(palette.axis, 1.0));
            if (grid)
                painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
            else
                painter.drawLine(QPointF(plot.left() - 4, y), QPointF(plot.left(), y));
        }
        if (i % labelEvery == 0) {
            const long value = std::lround(i * step);
            const QString text = QString::number(value == 0 ? 0 : value);
            painter.setPen(palette.axis);
            painter.drawText(QPointF(plot.left() - 6 - fm.horizontalAdvance(text), y + fm.ascent() / 2.0 - 1), text);
        }
    }
    painter.save();
    painter.translate(4 + fm.ascent(), plot.center().y());
    painter.rotate(-90);
    const QString caption = QStringLiteral("Power (dB)");
    painter.drawText(QPointF(-fm.horizontalAdvance(caption) / 2.0, 0), caption);
    painter.restore();
}

void drawCurves(QPainter& painter, const SpectrumAxes& axes, const SpectrumPicture& picture, const Palette& palette) {
    const SpectrumResult& r = *picture.result;
    const QRectF plot = axes.plot();
    painter.save();
    painter.setClipRect(plot);
    painter.setRenderHint(QPainter::Antialiasing, true);

    // The spectrum through its bins, one bin past the range so that the line reaches the edge.
    QPolygonF fft;
    const int last = std::min(r.bins() - 1, static_cast<int>(axes.rangeHz() / r.binHz()) + 1);
    for (int k = 0; k <= last; ++k)
        fft << QPointF(axes.xOfHz(k * r.binHz()), axes.yOfLevel(r.levelDb[static_cast<std::size_t>(k)]));
    painter.setPen(QPen(palette.fft, 1.0));
    painter.drawPolyline(fft);

    if (drawsEnvelope(picture)) {
        QPolygonF envelope;
        for (double x = plot.left(); x <= plot.right() + 0.5; x += 1.0)
            envelope << QPointF(x, axes.yOfLevel(r.envelopeAt(axes.hzAtX(x))));
        painter.setPen(lpcPen(palette, picture.colour));
        painter.drawPolyline(envelope);

        painter.setFont(pictureFont());
        const QFontMetrics fm(painter.font());
        for (int k = 0; k < 5; ++k) {
            const double f = r.formantHz[static_cast<std::size_t>(k)];
            if (!(f > 1.0) || f > axes.rangeHz()) continue;
            const double x = axes.xOfHz(f);
            const double y = std::min(axes.yOfLevel(r.envelopeAt(f)), plot.bottom());
            const QString label = QStringLiteral("F%1").arg(k + 1);
            const double labelX = x - fm.horizontalAdvance(label) / 2.0;
            QPolygonF tip;
            painter.setPen(QPen(palette.formant, 1.0));
            painter.setBrush(palette.formant);
            if (y - 13 - fm.height() >= plot.top()) {
                // Above the peak, pointing down at it.
                tip << QPointF(x, y - 3) << QPointF(x - 4, y - 11) << QPointF(x + 4, y - 11);
                painter.drawPolygon(tip);
                painter.drawText(QPointF(labelX, y - 13 - fm.descent()), label);
            } else {
                // No room above (the peak is at or beyond the top): below it, pointing up.
                const double below = std::max(y, plot.top());
                tip << QPointF(x, below + 3) << QPointF(x - 4, below + 11) << QPointF(x + 4, below + 11);
                painter.drawPolygon(tip);
                painter.drawText(QPointF(labelX, below + 13 + fm.ascent()), label);
            }
            painter.setBrush(Qt::NoBrush);
        }
    }

    if (picture.markerBin) {
        const double hz = *picture.markerBin * r.binHz();
        const double x = axes.xOfHz(hz);
        QPen pen(palette.marker, 1.0, Qt::DashLine);
        painter.setPen(pen);
        painter.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
        painter.setFont(pictureFont());
        const QFontMetrics fm(painter.font());
        const QString label = QStringLiteral("%1 Hz").arg(std::lround(hz));
        const double w = fm.horizontalAdvance(label);
        const double lx = x + 4 + w <= plot.right() ? x + 4 : x - 4 - w;
        painter.drawText(QPointF(lx, plot.top() + 2 + fm.ascent()), label);
    }
    painter.restore();
}

}  // namespace

SpectrumAxes::SpectrumAxes(const SpectrumPicture& picture, QSize size) {
    m_plot = QRectF(kLeftPx, kTopPx, std::max(0.0, size.width() - kLeftPx - kRightPx),
                    std::max(0.0, size.height() - kTopPx - kBottomPx));
    const SpectrumResult* r = picture.result;
    const bool data = r != nullptr && !r->empty();
    m_rangeHz = data ? displayRangeHz(picture.settings, r->rateHz)
                     : std::max(1.0, static_cast<double>(picture.settings.frequencyRangeHz));
    if (picture.settings.absoluteLevel != 0 || !data) {
        m_topDb = picture.settings.absoluteLevelDb;
        m_bottomDb = m_topDb > 0.0 ? 0.0 : m_topDb - 100.0;
        m_referenceDb = 0.0;
        return;
    }
    const int last = std::min(r->bins() - 1, static_cast<int>(m_rangeHz / r->binHz()));
    const auto first = r->levelDb.begin();
    double highest = *std::max_element(first, first + last + 1);
    const double lowest = *std::min_element(first, first + last + 1);
    if (drawsEnvelope(picture)) highest = std::max(highest, envelopeMaximum(*r, m_rangeHz));
    const double step =
        picture.settings.powerGrid != 0 && picture.settings.powerGridDb > 0 ? picture.settings.powerGridDb : 10.0;
    const double span =
        std::clamp(std::ceil((highest - lowest) / step - 1e-9) * step, step, std::max(step, kMaxRelativeSpanDb));
    m_referenceDb = highest;
    m_bottomDb = highest - span;
    // 0 dB stands a little below the top edge, so that a formant at the
    // highest point is marked above it like every other one.
    const double levelPx = m_plot.height() - kMarkRoomPx;
    m_topDb = levelPx > kMarkRoomPx ? highest + span * kMarkRoomPx / levelPx : highest;
}

double SpectrumAxes::xOfHz(double hz) const { return m_plot.left() + m_plot.width() * hz / m_rangeHz; }

double SpectrumAxes::hzAtX(double x) const { return (x - m_plot.left()) / m_plot.width() * m_rangeHz; }

double SpectrumAxes::yOfLevel(double levelDb) const {
    return m_plot.bottom() - m_plot.height() * (levelDb - m_bottomDb) / (m_topDb - m_bottomDb);
}

double SpectrumAxes::labelDbAtY(double y) const {
    return m_bottomDb + (m_plot.bottom() - y) / m_plot.height() * (m_topDb - m_bottomDb) - m_referenceDb;
}

void drawSpectrumPicture(QPainter& painter, QSize size, const SpectrumPicture& picture) {
    const Palette palette = paletteFor(picture.colour);
    painter.save();
    painter.fillRect(QRect(QPoint(0, 0), size), Qt::white);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    drawHeader(painter, size, picture, palette);
    const SpectrumAxes axes(picture, size);
    if (axes.usable()) {
        painter.setFont(pictureFont());
        drawPowerAxis(painter, axes, picture, palette);
        drawFrequencyAxis(painter, axes, picture, palette);
        if (picture.result != nullptr && !picture.result->empty()) drawCurves(painter, axes, picture, palette);
        painter.setPen(QPen(palette.axis, 1.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(axes.plot());
    }
    painter.restore();
}
