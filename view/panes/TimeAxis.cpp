#include "TimeAxis.h"

#include <QPainter>
#include <QString>
#include <algorithm>
#include <cmath>

#include "view/TimeBase.h"

namespace {
// Fewer lines than this many pixels apart would merge into a grey band.
constexpr double kMinGridSpacingPx = 3.0;
}  // namespace

PaneStyle paneStyle(bool color) {
    PaneStyle s;
    s.color = color;
    if (color) {
        s.grid = QColor(200, 200, 200);
        s.text = QColor(70, 70, 70);
        s.frame = QColor(Qt::black);
        s.trace = QColor(Qt::black);
        s.curve = QColor(0, 140, 0);
        s.track = QColor(0, 70, 220);
        s.cursor = QColor(220, 0, 0);
        s.selection = QColor(160, 200, 255, 110);
        s.gridLine = Qt::SolidLine;
    } else {
        s.grid = QColor(Qt::black);
        s.text = s.frame = s.trace = s.curve = s.track = s.cursor = QColor(Qt::black);
        s.selection = QColor(0, 0, 0, 40);
        s.gridLine = Qt::DotLine;
    }
    return s;
}

double TimeAxis::msToX(double ms) const {
    const double length = lengthMs();
    if (!(length > 0.0)) return left;
    return left + (ms - startMs) * (right - left) / length;
}

double TimeAxis::xToMs(double x) const {
    if (!(right > left)) return startMs;
    return startMs + (x - left) * lengthMs() / (right - left);
}

double timeGridStepMs(double fixedStepMs, const TimeAxis& axis) {
    return timebase::gridStepMs(fixedStepMs, axis.lengthMs(), axis.right - axis.left);
}

namespace {

// Calls draw(t, x) for every multiple of step inside the axis, or nothing
// when the lines would stand closer than a few pixels.
template <class F>
void forEachGridTime(const TimeAxis& axis, double stepMs, F draw) {
    const double width = axis.right - axis.left;
    if (!(stepMs > 0.0) || !(axis.lengthMs() > 0.0) || width <= 0.0) return;
    if (axis.lengthMs() / stepMs > width / kMinGridSpacingPx) return;
    const double first = std::ceil(axis.startMs / stepMs - 1e-9);
    for (double k = first;; k += 1.0) {
        const double t = k * stepMs;
        if (t > axis.endMs + 1e-9 * stepMs) break;
        draw(std::abs(t) < stepMs * 1e-6 ? 0.0 : t, std::floor(axis.msToX(t)) + 0.5);
    }
}

}  // namespace

void drawTimeGrid(QPainter& p, const TimeAxis& axis, const QRect& area, double stepMs, const PaneStyle& style) {
    p.save();
    p.setPen(QPen(style.grid, 1.0, style.gridLine));
    forEachGridTime(axis, stepMs, [&](double, double x) {
        p.drawLine(QPointF(x, area.top()), QPointF(x, area.top() + area.height() - 1));
    });
    p.restore();
}

void drawTimeRuler(QPainter& p, const TimeAxis& axis, const QRect& ruler, double stepMs, const PaneStyle& style) {
    p.save();
    const bool seconds = stepMs >= 1000.0;
    double lastRight = -1e9;
    forEachGridTime(axis, stepMs, [&](double t, double x) {
        p.setPen(QPen(style.frame, 1.0));
        p.drawLine(QPointF(x, ruler.top()), QPointF(x, ruler.top() + 4));
        const QString text = seconds ? axisNumber(t / 1000.0) : axisNumber(t);
        const double w = p.fontMetrics().horizontalAdvance(text);
        // A time that would run into the one before it is left out.
        if (x - w / 2 < lastRight + 4) return;
        lastRight = x + w / 2;
        p.setPen(style.text);
        p.drawText(QRectF(x - w / 2 - 2, ruler.top() + 4, w + 4, ruler.height() - 4), Qt::AlignHCenter | Qt::AlignTop,
                   text);
    });
    // The unit stands left of the axis, under the value scales.
    p.setPen(style.text);
    p.drawText(QRectF(ruler.left() + 2, ruler.top() + 4, axis.left - ruler.left() - 8, ruler.height() - 4),
               Qt::AlignRight | Qt::AlignTop, seconds ? QStringLiteral("s") : QStringLiteral("ms"));
    p.restore();
}

void drawSelectionAndCursor(QPainter& p, const TimeAxis& axis, const QRect& area,
                            std::optional<std::pair<double, double>> selectionMs, std::optional<double> cursorMs,
                            const PaneStyle& style) {
    p.save();
    const QRectF clip(axis.left, area.top(), axis.right - axis.left + 1, area.height());
    p.setClipRect(clip);
    if (selectionMs) {
        double x0 = axis.msToX(selectionMs->first), x1 = axis.msToX(selectionMs->second);
        if (x1 < x0) std::swap(x0, x1);
        p.fillRect(QRectF(x0, area.top(), std::max(1.0, x1 - x0), area.height()), style.selection);
    }
    if (cursorMs) {
        const double x = std::floor(axis.msToX(*cursorMs)) + 0.5;
        p.setPen(QPen(style.cursor, 1.0));
        p.drawLine(QPointF(x, area.top()), QPointF(x, area.top() + area.height() - 1));
    }
    p.restore();
}

QString axisNumber(double value, int decimals) {
    QString s = QString::number(value, 'f', decimals);
    if (s.contains('.')) {
        while (s.endsWith('0')) s.chop(1);
        if (s.endsWith('.')) s.chop(1);
    }
    if (s == "-0") s = "0";
    return s;
}
