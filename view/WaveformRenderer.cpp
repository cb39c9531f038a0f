#include "WaveformRenderer.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "ChannelSummaries.h"
#include "TimeBase.h"

using sonmetra::CChannel;
using sonmetra::CKestruneDoc;

namespace {

// Columns wider than this many samples read the summary; narrower ones scan
// the samples directly, which is cheaper than the summary's bookkeeping.
constexpr double kSummaryThresholdSamples = 256.0;

struct VerticalScale {
    double zeroY = 0.0;     // device y of the reference level
    double perCount = 0.0;  // device pixels per sample count
    double reference = 0.0;
    int top = 0, bottom = 0;  // inner rows that may be drawn

    double y(double v) const { return zeroY - (v - reference) * perCount; }
    int row(double v) const {
        const double r = std::floor(y(v));
        return static_cast<int>(std::clamp(r, static_cast<double>(top), static_cast<double>(bottom)));
    }
};

VerticalScale scaleFor(const CChannel& ch, const QRect& stripDev) {
    VerticalScale s;
    const int bits = (ch.m_bitsPerSample == 8 || ch.m_bitsPerSample == 12) ? ch.m_bitsPerSample : 16;
    const double h = stripDev.height();
    // Reference code -1 puts the zero level on the bottom edge, 0 in the
    // middle, 1 on the top edge (fraction of the height from the top).
    const double fraction = ch.m_referenceCode < 0 ? 1.0 : (ch.m_referenceCode > 0 ? 0.0 : 0.5);
    s.zeroY = stripDev.top() + fraction * h;
    s.perCount = h / std::ldexp(1.0, bits);
    s.reference = ch.m_reference;
    s.top = stripDev.top() + 1;
    s.bottom = stripDev.top() + stripDev.height() - 2;
    return s;
}

QRect toDevice(const QRect& r, double dpr) {
    const int l = static_cast<int>(std::lround(r.left() * dpr));
    const int t = static_cast<int>(std::lround(r.top() * dpr));
    const int rr = static_cast<int>(std::lround((r.left() + r.width()) * dpr));
    const int b = static_cast<int>(std::lround((r.top() + r.height()) * dpr));
    return QRect(l, t, rr - l, b - t);
}

// Fills, row by row, every pixel of a row that lies inside its column's
// span. Writing the spans column by column touches one memory page per row
// and is several times slower on a large image.
void fillSpans(QImage& img, int left, const std::vector<std::int32_t>& tops, const std::vector<std::int32_t>& bottoms,
               int firstRow, int lastRow, QRgb color) {
    const int count = static_cast<int>(tops.size());
    for (int y = firstRow; y <= lastRow; ++y) {
        auto* row = reinterpret_cast<QRgb*>(img.scanLine(y)) + left;
        int c = 0;
#if defined(__SSE2__)
        const __m128i vy = _mm_set1_epi32(y);
        const __m128i vcolor = _mm_set1_epi32(static_cast<int>(color));
        for (; c + 4 <= count; c += 4) {
            const __m128i t = _mm_loadu_si128(reinterpret_cast<const __m128i*>(tops.data() + c));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bottoms.data() + c));
            const __m128i outside = _mm_or_si128(_mm_cmpgt_epi32(t, vy), _mm_cmpgt_epi32(vy, b));
            const __m128i px = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + c));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(row + c),
                             _mm_or_si128(_mm_and_si128(outside, px), _mm_andnot_si128(outside, vcolor)));
        }
#endif
        for (; c < count; ++c) {
            if (tops[static_cast<std::size_t>(c)] <= y && y <= bottoms[static_cast<std::size_t>(c)]) row[c] = color;
        }
    }
}

// One vertical min–max line per device column, each joined to its
// neighbour so that steep stretches stay one line.
void drawDenseTrace(QImage& img, const CChannel& ch, const sonmetra::MinMaxSummary* summary, const VerticalScale& vs,
                    int left, int width, double start, double perColumn, QRgb color) {
    const std::int16_t* samples = ch.m_samples.data();
    const std::size_t n = ch.m_samples.size();
    left = std::max(left, 0);
    width = std::min(width, img.width() - left);
    if (width <= 0) return;
    thread_local std::vector<std::int32_t> tops, bottoms;
    tops.assign(static_cast<std::size_t>(width), std::numeric_limits<std::int32_t>::max());
    bottoms.assign(static_cast<std::size_t>(width), -1);
    int firstRow = std::numeric_limits<int>::max(), lastRow = -1;
    // Past this many samples per column a block of the summary is under 1/64
    // of a column, far below what a pixel can show.
    constexpr std::size_t kBlock = sonmetra::MinMaxSummary::kBaseBlock;
    const bool snap = summary != nullptr && perColumn >= 64.0 * kBlock;
    bool havePrev = false;
    int prevTop = 0, prevBottom = 0;
    for (int c = 0; c < width; ++c) {
        const double a = start + c * perColumn;
        const double b = a + perColumn;
        if (b <= 0.0 || a >= static_cast<double>(n)) {
            havePrev = false;
            continue;
        }
        std::size_t first = static_cast<std::size_t>(std::max(0.0, std::floor(a)));
        std::size_t last = static_cast<std::size_t>(std::min(static_cast<double>(n), std::floor(b)));
        if (snap) {
            // Column edges on whole summary blocks: the raw samples at the
            // ragged ends would cost more than the rest of the column.
            first = static_cast<std::size_t>(std::max(0.0, std::round(a / kBlock))) * kBlock;
            last = std::min(n, static_cast<std::size_t>(std::max(0.0, std::round(b / kBlock))) * kBlock);
        }
        if (last <= first) last = first + 1;
        sonmetra::SampleRange r;
        if (summary != nullptr) {
            if (!summary->range(samples, first, last, r)) continue;
        } else {
            int lo = samples[first], hi = lo;
            for (std::size_t i = first + 1; i < last && i < n; ++i) {
                lo = std::min<int>(lo, samples[i]);
                hi = std::max<int>(hi, samples[i]);
            }
            r = {static_cast<std::int16_t>(lo), static_cast<std::int16_t>(hi)};
        }
        const int top = vs.row(r.max);
        const int bottom = vs.row(r.min);
        const int drawTop = havePrev ? std::min(top, prevBottom) : top;
        const int drawBottom = havePrev ? std::max(bottom, prevTop) : bottom;
        tops[static_cast<std::size_t>(c)] = drawTop;
        bottoms[static_cast<std::size_t>(c)] = drawBottom;
        firstRow = std::min(firstRow, drawTop);
        lastRow = std::max(lastRow, drawBottom);
        prevTop = top;
        prevBottom = bottom;
        havePrev = true;
    }
    if (lastRow >= firstRow) fillSpans(img, left, tops, bottoms, firstRow, lastRow, color);
}

void drawSparseTrace(QPainter& p, const CChannel& ch, const VerticalScale& vs, int left, double start, double perColumn,
                     double right, const QColor& color) {
    const std::size_t n = ch.m_samples.size();
    if (n == 0) return;
    const double pxPerSample = 1.0 / perColumn;
    const double firstD = std::max(0.0, std::floor(start));
    const double lastD = std::min(static_cast<double>(n - 1), std::ceil(start + (right - left) * perColumn));
    if (lastD < firstD) return;
    QPolygonF line;
    line.reserve(static_cast<int>(lastD - firstD) + 1);
    for (double i = firstD; i <= lastD; i += 1.0) {
        const double x = left + (i - start) * pxPerSample;
        line << QPointF(x + 0.5, std::clamp(vs.y(ch.m_samples[static_cast<std::size_t>(i)]),
                                            static_cast<double>(vs.top), static_cast<double>(vs.bottom)) +
                                     0.5);
    }
    // Far apart, the samples themselves are marked.
    if (pxPerSample >= 8.0) {
        p.setBrush(color);
        p.setPen(Qt::NoPen);
        for (const QPointF& pt : line) {
            if (pt.x() >= left - 2 && pt.x() <= right + 2)
                p.fillRect(QRectF(pt.x() - 1.5, pt.y() - 1.5, 3.0, 3.0), color);
        }
        p.setBrush(Qt::NoBrush);
    }
    // Zoomed far in, the samples on either side of the view lie millions of
    // pixels away; the end segments are cut at the edges of the strip.
    const auto cut = [](QPointF& outer, const QPointF& inner, double x) {
        if (inner.x() == outer.x()) return;
        const double t = (x - inner.x()) / (outer.x() - inner.x());
        outer = QPointF(x, inner.y() + t * (outer.y() - inner.y()));
    };
    if (line.size() >= 2) {
        if (line.front().x() < left - 2) cut(line.front(), line[1], left - 2);
        if (line.back().x() > right + 2) cut(line.back(), line[line.size() - 2], right + 2);
    }
    p.setPen(QPen(color, 0));
    p.drawPolyline(line);
}

// The derived curve (the intensity contour, one value per sample) scaled
// from its minimum at the strip's bottom to its maximum at the top. It is
// two pixels wide, so that it stays readable where it crosses a dense trace
// of one-pixel lines.
void drawDerivedCurve(QPainter& p, const CChannel& ch, const QRect& stripDev, int left, int width, double start,
                      double perColumn, const QColor& color, double dpr) {
    const std::size_t n = ch.m_intensity.size();
    const double span = ch.m_intensityMax - ch.m_intensityMin;
    if (n == 0 || !(span > 0.0)) return;
    QPolygonF curve;
    // One point per column, or per sample when samples are sparser than columns.
    const double step = perColumn < 1.0 ? 1.0 / perColumn : 1.0;
    for (double c = 0.0; c < width; c += step) {
        const double s = std::floor(start + (c + 0.5 * step) * perColumn);
        if (s < 0.0 || s >= static_cast<double>(n)) continue;
        const double v = (ch.m_intensity[static_cast<std::size_t>(s)] - ch.m_intensityMin) / span;
        curve << QPointF(left + c + 0.5, stripDev.bottom() - std::clamp(v, 0.0, 1.0) * (stripDev.height() - 2));
    }
    p.setPen(QPen(color, std::max(1.0, std::round(2.0 * dpr)), Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    p.drawPolyline(curve);
}

}  // namespace

std::vector<QRect> layoutStrips(const CKestruneDoc& doc, int clientWidth, int clientHeight) {
    std::vector<QRect> strips(static_cast<std::size_t>(doc.channelCount()));
    int present = 0;
    for (int i = 0; i < doc.channelCount(); ++i) present += doc.channel(i).present() ? 1 : 0;
    if (present == 0) return strips;
    const int available = clientHeight - TraceGeometry::kRulerHeight;
    const int pitch = std::max(TraceGeometry::kMinStripHeight, available / present);
    const int left = TraceGeometry::kLeftMargin;
    const int width = std::max(1, clientWidth - TraceGeometry::kRightMargin - left);
    int top = TraceGeometry::kRulerHeight;
    for (int i = 0; i < doc.channelCount(); ++i) {
        if (!doc.channel(i).present()) continue;
        strips[static_cast<std::size_t>(i)] = QRect(left, top, width, pitch - TraceGeometry::kStripGap);
        top += pitch;
    }
    return strips;
}

int columnHeight(const std::vector<QRect>& strips) {
    int bottom = TraceGeometry::kRulerHeight;
    for (const QRect& r : strips) {
        if (!r.isEmpty()) bottom = std::max(bottom, r.top() + r.height() + TraceGeometry::kStripGap);
    }
    return bottom;
}

double msToX(const CKestruneDoc& doc, const TraceGeometry& g, double ms) {
    const int first = doc.firstPresentIndex();
    if (first < 0) return g.traceLeft();
    const CChannel& ch = doc.channel(first);
    const double len = ch.viewLengthMs();
    if (!(len > 0.0)) return g.traceLeft();
    return g.traceLeft() + (ms - ch.m_viewStartMs) / len * g.traceWidth();
}

double xToMs(const CKestruneDoc& doc, const TraceGeometry& g, double x) {
    const int first = doc.firstPresentIndex();
    if (first < 0 || g.traceWidth() <= 0) return 0.0;
    const CChannel& ch = doc.channel(first);
    return ch.m_viewStartMs + (x - g.traceLeft()) / g.traceWidth() * ch.viewLengthMs();
}

void renderTraceLayer(QImage& layer, const CKestruneDoc& doc, ChannelSummaries& summaries,
                      const std::vector<QRect>& strips, const TraceGeometry& g, const RenderOptions& options,
                      const QFont& labelFont, const ChannelPaintHook& hook) {
    layer.fill(Qt::white);
    const double dpr = g.dpr;
    const int first = doc.firstPresentIndex();
    if (first < 0) return;
    const QColor gridColor = options.color ? kGridColor : QColor(Qt::black);
    const QColor curveColor = options.color ? kDerivedCurveColor : QColor(Qt::black);
    const QPen gridPen(gridColor, 0, options.color ? Qt::SolidLine : Qt::DotLine);

    QPainter p(&layer);
    p.scale(dpr, dpr);
    QFont rulerFont = labelFont;
    rulerFont.setPixelSize(std::max(8, labelFont.pixelSize() > 0 ? labelFont.pixelSize() - 1 : 10));

    // Time grid: ticks and times across the top of the column, lines over the strips.
    const CChannel& lead = doc.channel(first);
    const double step = timebase::gridStepMs(options.gridStepMs, lead.viewLengthMs(), g.traceWidth());
    if (options.grid && step > 0.0 && lead.viewLengthMs() > 0.0 && lead.viewLengthMs() / step < g.traceWidth()) {
        p.setFont(rulerFont);
        const double firstLine = std::ceil(lead.m_viewStartMs / step) * step;
        for (double t = firstLine; t <= lead.m_viewEndMs + 1e-9; t += step) {
            const double x = std::floor(msToX(doc, g, t)) + 0.5;
            p.setPen(gridPen);
            for (const QRect& r : strips) {
                if (!r.isEmpty())
                    p.drawLine(QPointF(x, r.top() + g.scrollOffset), QPointF(x, r.bottom() + g.scrollOffset));
            }
            const double rulerTop = g.scrollOffset;
            p.drawLine(QPointF(x, rulerTop + TraceGeometry::kRulerHeight - 5),
                       QPointF(x, rulerTop + TraceGeometry::kRulerHeight));
            p.setPen(options.color ? QColor(90, 90, 90) : QColor(Qt::black));
            const double shown = std::abs(t) < step * 1e-6 ? 0.0 : t;
            p.drawText(QRectF(x - 60, rulerTop, 120, TraceGeometry::kRulerHeight - 5), Qt::AlignCenter,
                       QString::number(shown, 'g', 10));
        }
    }

    const QRgb traceColor = qRgb(0, 0, 0);
    for (int i = 0; i < doc.channelCount(); ++i) {
        const CChannel& ch = doc.channel(i);
        const QRect& column = strips[static_cast<std::size_t>(i)];
        if (!ch.present() || column.isEmpty()) continue;
        const QRect strip = column.translated(0, g.scrollOffset);
        if (strip.bottom() < 0 || strip.top() > g.clientHeight) continue;  // off screen
        const QRect stripDev = toDevice(strip, dpr);
        VerticalScale vs = scaleFor(ch, stripDev);
        // A strip partly scrolled out of the image is drawn only where the image is.
        vs.top = std::max(vs.top, 0);
        vs.bottom = std::min(vs.bottom, layer.height() - 1);
        if (vs.bottom < vs.top) continue;

        // Zero line of the strip (the reference level), part of the grid.
        if (options.grid) {
            p.setPen(gridPen);
            const double zeroY = std::clamp(vs.zeroY, double(vs.top), double(vs.bottom)) / dpr;
            p.drawLine(QPointF(strip.left(), zeroY), QPointF(strip.right(), zeroY));
        }

        const int leftDev = static_cast<int>(std::lround(g.traceLeft() * dpr));
        const int widthDev = static_cast<int>(std::lround(g.traceRight() * dpr)) - leftDev;
        const double perColumn = ch.viewLengthSamples() / std::max(1, widthDev);
        if (widthDev > 0 && perColumn > 0.0) {
            if (perColumn > 1.0) {
                const sonmetra::MinMaxSummary* summary =
                    perColumn >= kSummaryThresholdSamples ? &summaries.forChannel(i, ch) : nullptr;
                drawDenseTrace(layer, ch, summary, vs, leftDev, widthDev, ch.m_viewStartSample, perColumn, traceColor);
            } else {
                p.save();
                p.resetTransform();
                p.setClipRect(stripDev.adjusted(1, 1, -1, -1));
                drawSparseTrace(p, ch, vs, leftDev, ch.m_viewStartSample, perColumn, leftDev + widthDev,
                                QColor(traceColor));
                p.restore();
            }
            if (ch.m_intensityShown != 0 && ch.m_intensityValid != 0) {
                p.save();
                p.resetTransform();
                p.setClipRect(stripDev.adjusted(1, 1, -1, -1));
                drawDerivedCurve(p, ch, stripDev, leftDev, widthDev, ch.m_viewStartSample, perColumn, curveColor, dpr);
                p.restore();
            }
        }

        p.setPen(Qt::black);
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRectF(strip).adjusted(0.5 / dpr, 0.5 / dpr, -0.5 / dpr, -0.5 / dpr));
        p.setFont(labelFont);
        p.drawText(QRect(strip.left() + 2, strip.top() + 1, strip.width() - 4, strip.height() - 2),
                   Qt::AlignLeft | Qt::AlignTop, QString::fromStdString(ch.m_name));
        if (hook) hook(p, i, strip);
    }
}

void renderSelectionAndCursor(QImage& composite, const TraceGeometry& g, bool selection, double x0, double x1,
                              double cursorX, int bottom, bool color) {
    QPainter p(&composite);
    p.scale(g.dpr, g.dpr);
    paintSelectionAndCursor(p, g, selection, x0, x1, cursorX, bottom, color);
}

void paintSelectionAndCursor(QPainter& p, const TraceGeometry& g, bool selection, double x0, double x1, double cursorX,
                             int bottom, bool color) {
    if (selection) {
        const double l = std::max<double>(std::min(x0, x1), 0.0);
        const double r = std::min<double>(std::max(x0, x1), g.clientWidth);
        if (r > l) {
            // AND keeps black traces black and tints the white background.
            p.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
            p.fillRect(QRectF(l, 0.0, std::max(r - l, 1.0 / g.dpr), bottom),
                       color ? kHighlightColor : QColor(200, 200, 200));
            p.setCompositionMode(QPainter::CompositionMode_SourceOver);
        }
    }
    if (cursorX >= 0.0) {
        p.setPen(QPen(color ? kCursorColor : QColor(Qt::black), 1.0));
        const double x = std::floor(cursorX) + 0.5;
        p.drawLine(QPointF(x, 0.0), QPointF(x, bottom));
    }
}
