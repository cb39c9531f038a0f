#include "WaveformPane.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <vector>

#include "document/MinMaxSummary.h"

namespace {

sonmetra::SampleRange extremes(const WaveformSource& s, std::size_t first, std::size_t last) {
    sonmetra::SampleRange r;
    if (s.summary != nullptr && s.summary->sampleCount() == s.count) {
        if (s.summary->range(s.samples, first, last, r)) return r;
        return {};
    }
    last = std::min(last, s.count);
    if (first >= last) return {};
    r.min = r.max = s.samples[first];
    for (std::size_t i = first + 1; i < last; ++i) {
        r.min = std::min(r.min, s.samples[i]);
        r.max = std::max(r.max, s.samples[i]);
    }
    return r;
}

}  // namespace

double waveformPeak(const WaveformSource& s) {
    if (s.samples == nullptr || s.count == 0) return 1.0;
    const sonmetra::SampleRange r = extremes(s, 0, s.count);
    const double peak = std::max(std::abs(r.max - s.zeroLevel), std::abs(r.min - s.zeroLevel));
    return std::max(1.0, peak);
}

void drawWaveformPane(QPainter& p, const QRect& pane, const TimeAxis& axis, const WaveformSource& s,
                      const PaneStyle& style) {
    p.save();
    const double mid = pane.top() + pane.height() / 2.0;
    p.setPen(QPen(style.grid, 1.0, style.gridLine));
    p.drawLine(QPointF(axis.left, mid), QPointF(axis.right, mid));
    if (s.samples == nullptr || s.count == 0 || !(s.msPerSample > 0.0) || !(axis.lengthMs() > 0.0)) {
        p.restore();
        return;
    }
    p.setClipRect(QRectF(axis.left, pane.top(), axis.right - axis.left + 1, pane.height()));
    const double half = (pane.height() - 4) / 2.0;
    const double perCount = half / waveformPeak(s);
    auto y = [&](double v) { return mid - (v - s.zeroLevel) * perCount; };
    const double firstSample = std::max(0.0, axis.startMs / s.msPerSample);
    const double lastSample = std::min(static_cast<double>(s.count), axis.endMs / s.msPerSample);
    if (lastSample <= firstSample) {
        p.restore();
        return;
    }
    const double width = axis.right - axis.left;
    const double samplesPerPx = (lastSample - firstSample) / width;
    p.setPen(QPen(style.trace, 1.0));
    if (samplesPerPx > 2.0) {
        // One min-max line per pixel column; neighbouring columns overlap by
        // one sample so that a steep edge has no gaps.
        std::vector<QLineF> lines;
        lines.reserve(static_cast<std::size_t>(width) + 1);
        const int columns = static_cast<int>(std::ceil(width));
        for (int c = 0; c < columns; ++c) {
            const double t0 = axis.xToMs(axis.left + c) / s.msPerSample;
            const double t1 = axis.xToMs(axis.left + c + 1) / s.msPerSample;
            if (t1 <= 0.0 || t0 >= static_cast<double>(s.count)) continue;
            const auto first = static_cast<std::size_t>(std::max(0.0, std::floor(t0)));
            const auto last = static_cast<std::size_t>(std::min(static_cast<double>(s.count), std::ceil(t1) + 1.0));
            const sonmetra::SampleRange r = extremes(s, first, last);
            const double x = axis.left + c + 0.5;
            lines.emplace_back(QPointF(x, y(r.max) - 0.5), QPointF(x, y(r.min) + 0.5));
        }
        p.drawLines(lines.data(), static_cast<int>(lines.size()));
    } else {
        QPolygonF line;
        const auto first = static_cast<std::size_t>(std::floor(firstSample));
        const auto last = std::min(s.count, static_cast<std::size_t>(std::ceil(lastSample)) + 1);
        for (std::size_t i = first; i < last; ++i) line << QPointF(axis.msToX(i * s.msPerSample), y(s.samples[i]));
        p.drawPolyline(line);
    }
    p.restore();
}
