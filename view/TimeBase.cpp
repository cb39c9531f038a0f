#include "TimeBase.h"

#include <algorithm>
#include <cmath>

#include "document/CKestruneDoc.h"

using sonmetra::CChannel;
using sonmetra::CKestruneDoc;

namespace timebase {
namespace {

void updateMsRange(CChannel& ch) {
    const double ratio = ch.msPerSample();
    ch.m_viewStartMs = ch.m_viewStartSample * ratio;
    ch.m_viewEndMs = ch.m_viewEndSample * ratio;
}

double toSample(const CChannel& ch, double tMs) {
    return ch.m_durationMs > 0.0 ? std::clamp(tMs * ch.m_sampleCount / ch.m_durationMs, 0.0, ch.m_sampleCount) : 0.0;
}

}  // namespace

void zoom(CKestruneDoc& doc, ZoomMode mode) {
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& ch = doc.channel(i);
        double start = ch.m_viewStartSample;
        double end = ch.m_viewEndSample;
        // UnZoom does not remember the range it leaves: only one level is kept.
        if (mode != ZoomMode::UnZoom) {
            ch.m_prevViewStartSample = start;
            ch.m_prevViewEndSample = end;
        }
        switch (mode) {
            case ZoomMode::UnZoom:
                start = ch.m_prevViewStartSample;
                end = ch.m_prevViewEndSample;
                break;
            case ZoomMode::In: {
                const double q = (end - start) * 0.25;
                start += q;
                end -= q;
                break;
            }
            case ZoomMode::Out: {
                const double h = (end - start) * 0.5;
                start -= h;
                end += h;
                break;
            }
            case ZoomMode::Selection:
                start = ch.m_selStartSample;
                end = ch.m_selEndSample;
                break;
            case ZoomMode::FromCursor:
                start = ch.m_cursorSample;
                end = ch.m_cursorSample + ch.m_rateHz * doc.m_zoomRangeMs * 0.001;
                break;
            case ZoomMode::Home:
                start = 0.0;
                end = ch.m_sampleCount;
                break;
        }
        // Only the relative modes are kept inside the signal; From Cursor near
        // the end really shows a range that runs past the last sample.
        if (mode == ZoomMode::UnZoom || mode == ZoomMode::In || mode == ZoomMode::Out) {
            if (start < 0.0) start = 0.0;
            if (end > ch.m_sampleCount) end = ch.m_sampleCount;
        }
        ch.m_viewStartSample = start;
        ch.m_viewEndSample = end;
        updateMsRange(ch);
    }
}

HScrollBar scrollBarFromRange(const CKestruneDoc& doc) {
    HScrollBar bar;
    const int first = doc.firstPresentIndex();
    if (first < 0) return bar;
    const CChannel& ch = doc.channel(first);
    const double f = HScrollBar::kMax / ch.m_sampleCount;
    bar.position = f * ch.m_viewStartSample;
    bar.page = f * ch.viewLengthSamples();
    if (std::lround(bar.page) == HScrollBar::kMax) bar.page = HScrollBar::kMax + 1;
    return bar;
}

void rangeFromScrollBar(CKestruneDoc& doc, const HScrollBar& bar) {
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& ch = doc.channel(i);
        const double perUnit = ch.m_sampleCount * (1.0 / HScrollBar::kMax);
        ch.m_viewStartSample = bar.position * perUnit;
        ch.m_viewEndSample = ch.m_viewStartSample + bar.page * perUnit;
        updateMsRange(ch);
    }
}

double hScrollTarget(const HScrollBar& bar, ScrollRequest request, double trackPosition) {
    double p = bar.position;
    switch (request) {
        case ScrollRequest::LineBack:
            p -= bar.page / 10.0;
            break;
        case ScrollRequest::LineForward:
            p += bar.page / 10.0;
            break;
        case ScrollRequest::PageBack:
            p -= bar.page;
            break;
        case ScrollRequest::PageForward:
            p += bar.page;
            break;
        case ScrollRequest::ThumbTrack:
            p = trackPosition;
            break;
        default:
            break;
    }
    return std::clamp(p, 0.0, bar.maxPosition());
}

bool hScrollRepaints(ScrollRequest request) {
    switch (request) {
        case ScrollRequest::LineBack:
        case ScrollRequest::LineForward:
        case ScrollRequest::PageBack:
        case ScrollRequest::PageForward:
        case ScrollRequest::ThumbTrack:
            return true;
        default:
            return false;
    }
}

int vScrollTarget(int position, int range, int page, ScrollRequest request, int trackPosition) {
    const int last = std::max(0, range - page);
    int step = 0;
    switch (request) {
        case ScrollRequest::LineBack:
            step = -(page / 10);
            break;
        case ScrollRequest::LineForward:
            step = page / 10;
            break;
        case ScrollRequest::PageBack:
            step = -page;
            break;
        case ScrollRequest::PageForward:
            step = page;
            break;
        case ScrollRequest::ThumbTrack:
        case ScrollRequest::ThumbPosition:
            return std::clamp(trackPosition, 0, last);
        case ScrollRequest::Top:
            return 0;
        case ScrollRequest::Bottom:
            return last;
        case ScrollRequest::EndScroll:
            return std::clamp(position, 0, last);
    }
    const int target = position + step;
    // A step that would leave the column is not taken at all.
    return (target >= 0 && target <= last) ? target : position;
}

void placeCursor(CKestruneDoc& doc, double tMs) {
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& ch = doc.channel(i);
        if (ch.present()) ch.setCursorTime(tMs);
    }
}

void selectRange(CKestruneDoc& doc, double aMs, double bMs) {
    const double from = std::min(aMs, bMs);
    const double to = std::max(aMs, bMs);
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& ch = doc.channel(i);
        if (!ch.present()) continue;
        ch.m_selStartMs = std::clamp(from, 0.0, ch.m_durationMs);
        ch.m_selEndMs = std::clamp(to, 0.0, ch.m_durationMs);
        ch.m_selStartSample = toSample(ch, from);
        ch.m_selEndSample = toSample(ch, to);
    }
}

void selectWindow(CKestruneDoc& doc) {
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& ch = doc.channel(i);
        ch.m_selStartSample = ch.m_viewStartSample;
        ch.m_selEndSample = ch.m_viewEndSample;
        ch.m_selStartMs = ch.m_viewStartMs;
        ch.m_selEndMs = ch.m_viewEndMs;
    }
}

void selectAll(CKestruneDoc& doc) {
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& ch = doc.channel(i);
        ch.m_selStartSample = 0.0;
        ch.m_selEndSample = ch.m_sampleCount;
        ch.m_selStartMs = 0.0;
        ch.m_selEndMs = ch.m_durationMs;
    }
}

double valueAtCursor(const CKestruneDoc& doc, int channel) {
    const CChannel& ch = doc.channel(channel);
    if (ch.m_samples.empty()) return 0.0;
    const double last = static_cast<double>(ch.m_samples.size() - 1);
    const double index = std::clamp(std::trunc(ch.m_cursorSample), 0.0, last);
    return ch.m_samples[static_cast<std::size_t>(index)];
}

void setReferenceFor(CKestruneDoc& doc, int channel) {
    if (channel < 0 || channel >= doc.channelCount()) return;
    CChannel& ch = doc.channel(channel);
    ch.m_reference = valueAtCursor(doc, channel);
    ch.m_currentReading = 0.0;  // the reading is the sample less the reference
}

void setReferenceAll(CKestruneDoc& doc) {
    for (int i = 0; i < doc.channelCount(); ++i) {
        if (doc.channel(i).m_audio != 1) setReferenceFor(doc, i);
    }
}

void setReferenceAllToZero(CKestruneDoc& doc, const std::function<void(int)>& recomputeDerived) {
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& ch = doc.channel(i);
        ch.m_reference = 0.0;
        ch.m_currentReading = valueAtCursor(doc, i);
    }
    if (!recomputeDerived) return;
    for (int i = 0; i < doc.channelCount(); ++i) {
        if (doc.channel(i).m_intensityValid != 0) recomputeDerived(i);
    }
}

double gridStepMs(double fixedStepMs, double displayMs, double widthPx, double minSpacingPx) {
    if (fixedStepMs > 0.0) return fixedStepMs;
    if (!(displayMs > 0.0) || !(widthPx > 0.0)) return 0.0;
    const double minStep = displayMs * minSpacingPx / widthPx;
    if (minStep > 5000.0 && minStep < 5.0 * 3600000.0) {
        // Lines on whole minutes read well under minutes:seconds labels.
        for (double s : {10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0, 7200.0, 18000.0})
            if (s * 1000.0 >= minStep) return s * 1000.0;
    }
    const double decade = std::pow(10.0, std::floor(std::log10(minStep)));
    for (double m : {1.0, 2.0, 5.0, 10.0}) {
        if (m * decade >= minStep) return m * decade;
    }
    return 10.0 * decade;
}

namespace {

// Decimals that show a step of `stepUnits` (in the unit shown) exactly, up to 3.
int decimalsFor(double stepUnits) {
    for (int d = 0; d < 3; ++d) {
        const double scaled = stepUnits * std::pow(10.0, d);
        if (std::abs(scaled - std::round(scaled)) < 1e-6 * std::max(1.0, scaled)) return d;
    }
    return 3;
}

}  // namespace

QString gridLabel(double ms, double stepMs, double displayMs) {
    constexpr double kSecondsFrom = 10000.0;
    constexpr double kMinutesFrom = 600000.0;
    if (std::abs(ms) < stepMs * 1e-6) ms = 0.0;  // no "-0" from rounding
    if (displayMs < kSecondsFrom) return QString::number(ms, 'g', 10);
    const int decimals = decimalsFor(stepMs / 1000.0);
    if (displayMs < kMinutesFrom) return QString::number(ms / 1000.0, 'f', decimals) + " s";
    // Rounded once to the decimals shown, so that 59.95 s never reads "0:60.0".
    const double scale = std::pow(10.0, decimals);
    const double total = std::round(std::abs(ms) / 1000.0 * scale) / scale;
    const long long whole = static_cast<long long>(std::floor(total));
    const long long hours = whole / 3600;
    const long long minutes = (whole / 60) % 60;
    const double seconds = total - static_cast<double>(hours * 3600 + (whole / 60 % 60) * 60);
    QString secondsText = QString::number(seconds, 'f', decimals);
    if (seconds < 10.0) secondsText.prepend('0');
    const QString sign = ms < 0.0 ? "-" : "";
    if (hours > 0) return sign + QString("%1:%2:%3").arg(hours).arg(minutes, 2, 10, QChar('0')).arg(secondsText);
    return sign + QString("%1:%2").arg(minutes).arg(secondsText);
}

}  // namespace timebase
