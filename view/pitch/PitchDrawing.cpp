#include "PitchDrawing.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "PitchComputation.h"
#include "view/panes/FrameCurve.h"
#include "view/panes/LabelPane.h"
#include "view/panes/WaveformPane.h"

namespace {

constexpr int kLeftMargin = 52;  // room for "1000" and the tick
constexpr int kRightMargin = 14;
constexpr int kTitleHeight = 20;
constexpr int kRulerHeight = 22;
constexpr int kLabelBandHeight = 24;
constexpr int kGap = 6;
constexpr double kTrackPenPx = 2.0;

QFont pictureFont() {
    QFont f;
    f.setPixelSize(11);
    return f;
}

QString methodName(const sonmetra::PitchSettings& s) {
    return s.method == sonmetra::PitchMethod::AutoCorrelation ? QStringLiteral("AutoCorrolation")
                                                              : QStringLiteral("Cepstral");
}

// What the title line says on the right: the method and frames, and the
// value under the cursor.
QString titleReadout(const PitchPicture& pic) {
    QString text;
    if (pic.results != nullptr) {
        const sonmetra::PitchSettings& used = pic.results->settings;
        text = QString("%1, window %2 ms, step %3 ms").arg(methodName(used)).arg(used.windowMs).arg(used.stepMs);
        if (pic.cursorMs) {
            const int frame = pic.results->frameAt(*pic.cursorMs);
            if (frame >= 0) {
                const double f0 = pic.results->track.track[static_cast<std::size_t>(frame)];
                text += QString("   |   %1 ms: %2")
                            .arg(axisNumber(pic.results->frameMs(frame), 1))
                            .arg(f0 > 0.0 ? axisNumber(f0, 1) + " Hz" : QStringLiteral("no pitch"));
            }
        }
    }
    return text;
}

void framePane(QPainter& p, const QRect& pane, const TimeAxis& axis, const PaneStyle& style) {
    p.save();
    p.setPen(QPen(style.frame, 1.0));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(axis.left - 0.5, pane.top() - 0.5, axis.right - axis.left + 1.0, pane.height()));
    p.restore();
}

}  // namespace

QRect PitchLayout::plotArea() const {
    QRect all;
    for (const QRect& r : {waveform, pitch, intensity, labels})
        if (!r.isEmpty()) all = all.united(r);
    return all;
}

PitchLayout pitchLayout(QSize size, const sonmetra::PitchSettings& s, double startMs, double endMs) {
    PitchLayout l;
    l.axis.startMs = startMs;
    l.axis.endMs = endMs;
    l.axis.left = kLeftMargin;
    l.axis.right = std::max(kLeftMargin + 1, size.width() - kRightMargin);
    const int width = size.width();
    l.title = QRect(0, 0, width, kTitleHeight);
    l.ruler = QRect(0, size.height() - kRulerHeight, width, kRulerHeight);
    int top = kTitleHeight;
    const int bottom = l.ruler.top() - 2;
    const int available = std::max(0, bottom - top);
    const int waveformHeight = s.drawWaveform ? available * 22 / 100 : 0;
    const int intensityHeight = s.drawIntensity ? available * 18 / 100 : 0;
    const int labelHeight = s.drawLabels ? kLabelBandHeight : 0;
    const int gaps = kGap * ((s.drawWaveform ? 1 : 0) + (s.drawIntensity ? 1 : 0) + (s.drawLabels ? 1 : 0));
    const int pitchHeight = std::max(10, available - waveformHeight - intensityHeight - labelHeight - gaps);
    auto band = [&](int height) {
        const QRect r(0, top, width, height);
        top += height + kGap;
        return r;
    };
    if (s.drawWaveform) l.waveform = band(waveformHeight);
    l.pitch = band(pitchHeight);
    if (s.drawIntensity) l.intensity = band(intensityHeight);
    if (s.drawLabels) l.labels = band(labelHeight);
    return l;
}

namespace {

int titleWidthPx(const QPainter& p, const PitchLayout& l, const QString& title) {
    return std::min(p.fontMetrics().horizontalAdvance(title) + 4, l.title.width() / 2);
}

}  // namespace

void drawPitchBackground(QPainter& p, QSize size, const PitchPicture& pic) {
    const sonmetra::PitchSettings& s = pic.settings;
    const PaneStyle style = paneStyle(s.print.color != 0);
    const PitchLayout l = pitchLayout(size, s, pic.startMs, pic.endMs);
    const TimeAxis& axis = l.axis;
    p.save();
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setRenderHint(QPainter::TextAntialiasing, true);
    p.setFont(pictureFont());

    // Title line (the readout on its right belongs to the overlay).
    p.setPen(style.text);
    const int titleWidth = titleWidthPx(p, l, pic.title);
    p.drawText(QRect(l.title.left() + 4, 0, titleWidth, kTitleHeight - 2), Qt::AlignLeft | Qt::AlignVCenter,
               p.fontMetrics().elidedText(pic.title, Qt::ElideRight, titleWidth));

    const double gridStep = timeGridStepMs(s.timeGridMs, axis);
    const double rulerStep = timeGridStepMs(s.timeGrid ? s.timeGridMs : 0, axis);
    for (const QRect& pane : {l.waveform, l.pitch, l.intensity, l.labels})
        if (!pane.isEmpty() && s.timeGrid) drawTimeGrid(p, axis, pane, gridStep, style);

    const PitchResults* r = pic.results;
    if (!l.waveform.isEmpty() && r != nullptr && r->samples) {
        WaveformSource source;
        source.samples = r->samples->data();
        source.count = r->samples->size();
        source.msPerSample = r->msPerSample;
        source.summary = &r->summary;
        source.zeroLevel = r->zeroLevel;
        drawWaveformPane(p, l.waveform, axis, source, style);
    }

    // The pitch pane: frequency scale (grid lines only when asked for), track.
    ValueScale hz;
    hz.low = s.displayLowHz;
    hz.high = s.displayHighHz > s.displayLowHz ? s.displayHighHz : s.displayLowHz + 1;
    const double hzStep =
        s.frequencyGrid && s.frequencyGridHz > 0 ? s.frequencyGridHz : valueStep(hz, l.pitch.height());
    if (s.frequencyGrid) drawValueGrid(p, l.pitch, axis, hz, hzStep, style);
    // Values on every grid line that leaves room for its text, else on a coarser 1-2-5 step.
    const double labelStep = std::max(hzStep, valueStep(hz, l.pitch.height(), 1.6 * p.fontMetrics().height()));
    drawValueScale(p, l.pitch, axis, hz, labelStep, QString(), style);
    p.setPen(style.text);
    p.drawText(QRect(2, l.pitch.top(), kLeftMargin - 8, 14), Qt::AlignLeft | Qt::AlignTop, QStringLiteral("Hz"));
    if (r != nullptr && r->frameCount() > 0) {
        const FrameCurve track{r->track.track.data(), r->frameCount(), 0.0, r->stepMs()};
        drawFrameCurve(p, l.pitch, axis, track, hz, style.track, kTrackPenPx);
    } else if (!pic.message.isEmpty()) {
        p.setPen(style.text);
        p.drawText(QRectF(axis.left, l.pitch.top(), axis.right - axis.left, l.pitch.height()), Qt::AlignCenter,
                   pic.message);
    }

    if (!l.intensity.isEmpty()) {
        if (r != nullptr && !r->levelDb.empty()) {
            const FrameCurve levels{r->levelDb.data(), static_cast<int>(r->levelDb.size()), 0.0, r->stepMs()};
            drawIntensityPane(p, l.intensity, axis, levels, style);
        }
        p.setPen(style.text);
        p.drawText(QRect(2, l.intensity.top(), kLeftMargin - 8, 14), Qt::AlignLeft | Qt::AlignTop,
                   QStringLiteral("dB"));
    }
    if (!l.labels.isEmpty() && pic.labels != nullptr) drawLabelPane(p, l.labels, axis, *pic.labels, style);

    p.setFont(pictureFont());
    drawTimeRuler(p, axis, l.ruler, rulerStep, style);
    p.restore();
}

void drawPitchOverlay(QPainter& p, QSize size, const PitchPicture& pic) {
    const sonmetra::PitchSettings& s = pic.settings;
    const PaneStyle style = paneStyle(s.print.color != 0);
    const PitchLayout l = pitchLayout(size, s, pic.startMs, pic.endMs);
    const TimeAxis& axis = l.axis;
    p.save();
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setRenderHint(QPainter::TextAntialiasing, true);
    p.setFont(pictureFont());

    // The readout takes what room the title leaves.
    p.setPen(style.text);
    const int readoutLeft = l.title.left() + titleWidthPx(p, l, pic.title) + 16;
    const int readoutWidth = std::max(0, static_cast<int>(axis.right) - readoutLeft);
    p.drawText(QRect(readoutLeft, 0, readoutWidth, kTitleHeight - 2), Qt::AlignRight | Qt::AlignVCenter,
               p.fontMetrics().elidedText(titleReadout(pic), Qt::ElideLeft, readoutWidth));

    for (const QRect& pane : {l.waveform, l.pitch, l.intensity, l.labels})
        if (!pane.isEmpty()) {
            drawSelectionAndCursor(p, axis, pane, pic.selectionMs, pic.cursorMs, style);
            framePane(p, pane, axis, style);
        }
    p.restore();
}

void drawPitchPicture(QPainter& p, QSize size, const PitchPicture& pic) {
    drawPitchBackground(p, size, pic);
    drawPitchOverlay(p, size, pic);
}
