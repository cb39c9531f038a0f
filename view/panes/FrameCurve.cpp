#include "FrameCurve.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {
constexpr double kIntensityRangeDb = 60.0;
}  // namespace

double ValueScale::toY(const QRect& pane, double v) const {
    const double span = high - low;
    if (!(span > 0.0)) return pane.top() + pane.height() / 2.0;
    return pane.top() + (high - v) * (pane.height() - 1) / span;
}

void drawFrameCurve(QPainter& p, const QRect& pane, const TimeAxis& axis, const FrameCurve& curve,
                    const ValueScale& scale, const QColor& color, double widthPx) {
    if (curve.values == nullptr || curve.count <= 0 || !(curve.stepMs > 0.0) || !(axis.lengthMs() > 0.0)) return;
    p.save();
    p.setClipRect(QRectF(axis.left, pane.top(), axis.right - axis.left + 1, pane.height()));
    QPen pen(color, widthPx, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    // Only the frames on the axis (and one either side, so lines leave the edge).
    const double count = curve.count;
    const int first =
        static_cast<int>(std::clamp(std::floor((axis.startMs - curve.firstMs) / curve.stepMs) - 1, 0.0, count));
    const int last =
        static_cast<int>(std::clamp(std::ceil((axis.endMs - curve.firstMs) / curve.stepMs) + 1, 0.0, count));
    QPolygonF run;
    auto flush = [&] {
        if (run.size() == 1) {
            // A lone voiced frame: a dash over its frame, so that it shows.
            const QPointF a = run.front();
            const double w = std::max(1.0, axis.msToX(curve.stepMs) - axis.msToX(0.0));
            p.drawLine(a, QPointF(a.x() + w, a.y()));
        } else if (run.size() > 1) {
            p.drawPolyline(run);
        }
        run.clear();
    };
    const double pxPerFrame = axis.msToX(curve.stepMs) - axis.msToX(0.0);
    if (pxPerFrame >= 0.5) {
        for (int i = first; i < last; ++i) {
            const double v = curve.values[i];
            if (v == 0.0 || !std::isfinite(v)) {
                flush();
                continue;
            }
            run << QPointF(axis.msToX(curve.timeMs(i)), scale.toY(pane, v));
        }
        flush();
        p.restore();
        return;
    }
    // Round joins cost a curve at every point; at this density nobody sees them.
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::BevelJoin);
    p.setPen(pen);
    // Many frames to a pixel column: each column of a run is drawn through
    // its first, lowest, highest and last value, so that the cost follows the
    // width of the pane and no excursion is lost.
    int column = std::numeric_limits<int>::min();
    double firstValue = 0.0, lastValue = 0.0, lowest = 0.0, highest = 0.0;
    bool open = false;
    auto closeColumn = [&] {
        if (!open) return;
        const double x = column + 0.5;
        run << QPointF(x, scale.toY(pane, firstValue));
        if (lowest != highest) run << QPointF(x, scale.toY(pane, lowest)) << QPointF(x, scale.toY(pane, highest));
        run << QPointF(x, scale.toY(pane, lastValue));
        open = false;
    };
    for (int i = first; i < last; ++i) {
        const double v = curve.values[i];
        if (v == 0.0 || !std::isfinite(v)) {
            closeColumn();
            flush();
            continue;
        }
        const int x = static_cast<int>(std::floor(axis.msToX(curve.timeMs(i))));
        if (x != column || !open) {
            closeColumn();
            column = x;
            firstValue = lowest = highest = v;
            open = true;
        }
        lastValue = v;
        lowest = std::min(lowest, v);
        highest = std::max(highest, v);
    }
    closeColumn();
    flush();
    p.restore();
}

double valueStep(const ValueScale& scale, int heightPx, double minSpacingPx) {
    const double span = scale.high - scale.low;
    if (!(span > 0.0) || heightPx <= 0) return 0.0;
    const double minStep = span * minSpacingPx / heightPx;
    const double decade = std::pow(10.0, std::floor(std::log10(minStep)));
    for (double m : {1.0, 2.0, 5.0, 10.0})
        if (m * decade >= minStep) return m * decade;
    return 10.0 * decade;
}

namespace {

template <class F>
void forEachValueLine(const ValueScale& scale, double step, int heightPx, F draw) {
    const double span = scale.high - scale.low;
    if (!(step > 0.0) || !(span > 0.0) || span / step > heightPx / 3.0) return;
    for (double k = std::ceil(scale.low / step - 1e-9);; k += 1.0) {
        const double v = k * step;
        if (v > scale.high + 1e-9 * step) break;
        draw(v);
    }
}

}  // namespace

void drawValueGrid(QPainter& p, const QRect& pane, const TimeAxis& axis, const ValueScale& scale, double step,
                   const PaneStyle& style) {
    p.save();
    p.setPen(QPen(style.grid, 1.0, style.gridLine));
    forEachValueLine(scale, step, pane.height(), [&](double v) {
        const double y = std::floor(scale.toY(pane, v)) + 0.5;
        p.drawLine(QPointF(axis.left, y), QPointF(axis.right, y));
    });
    p.restore();
}

void drawValueScale(QPainter& p, const QRect& pane, const TimeAxis& axis, const ValueScale& scale, double step,
                    const QString& unit, const PaneStyle& style) {
    p.save();
    const QFontMetrics fm = p.fontMetrics();
    const double textHeight = fm.height();
    double lastTop = 1e9;  // labels go upwards; one that would overlap the last is left out
    forEachValueLine(scale, step, pane.height(), [&](double v) {
        const double y = scale.toY(pane, v);
        p.setPen(QPen(style.frame, 1.0));
        p.drawLine(QPointF(axis.left - 4, std::floor(y) + 0.5), QPointF(axis.left, std::floor(y) + 0.5));
        const double top = std::clamp(y - textHeight / 2, static_cast<double>(pane.top()),
                                      static_cast<double>(pane.top() + pane.height()) - textHeight);
        if (top + textHeight > lastTop) return;
        lastTop = top;
        p.setPen(style.text);
        p.drawText(QRectF(0, top, axis.left - 6, textHeight), Qt::AlignRight | Qt::AlignVCenter, axisNumber(v));
    });
    if (!unit.isEmpty()) {
        p.setPen(style.text);
        p.drawText(QRectF(2, pane.top() - textHeight - 1, axis.left + 40, textHeight), Qt::AlignLeft | Qt::AlignBottom,
                   unit);
    }
    p.restore();
}

void drawIntensityPane(QPainter& p, const QRect& pane, const TimeAxis& axis, const FrameCurve& levelsDb,
                       const PaneStyle& style) {
    double loudest = 0.0;
    for (int i = 0; i < levelsDb.count; ++i)
        if (std::isfinite(levelsDb.values[i])) loudest = std::max(loudest, levelsDb.values[i]);
    if (!(loudest > 0.0)) return;
    ValueScale scale;
    scale.high = std::ceil(loudest / 10.0) * 10.0;
    scale.low = std::max(0.0, scale.high - kIntensityRangeDb);
    const double step = valueStep(scale, pane.height(), 14.0);
    drawValueGrid(p, pane, axis, scale, step, style);
    // Values on a coarser 1-2-5 step where the grid lines are too close for
    // text, so that the scale reads evenly rather than skipping a line.
    const double labelStep = std::max(step, valueStep(scale, pane.height(), 1.6 * p.fontMetrics().height()));
    drawValueScale(p, pane, axis, scale, labelStep, QString(), style);
    drawFrameCurve(p, pane, axis, levelsDb, scale, style.curve, 1.0);
}
