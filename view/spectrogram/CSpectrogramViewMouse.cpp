// The spectrogram view's mouse, cursor, selection, readouts and playback.
#include <QMouseEvent>
#include <algorithm>

#include "CSpectrogramView.h"
#include "analysis/FftSpectrum.h"
#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"
#include "view/StretchPlayer.h"
#include "view/TimeBase.h"
#include "view/spectrogram/SpectrogramReadoutBar.h"

void CSpectrogramView::setWaveformView(CKestruneView* view) { m_waveform = view; }

void CSpectrogramView::takeWaveformMarks() {
    if (!m_waveform || m_doc == nullptr || channel() < 0) return;
    const sonmetra::CChannel& c = m_doc->channel(channel());
    if (m_waveform->selectionPresent() && c.m_selEndMs > c.m_selStartMs) {
        select(c.m_selStartMs, c.m_selEndMs);
    } else if (m_waveform->cursorPlaced()) {
        placeCursor(c.m_cursorMs, std::nullopt);
    }
}

void CSpectrogramView::placeCursor(double ms, std::optional<double> hz) {
    m_cursorMs = ms;
    if (hz) m_cursorHz = hz;
    m_selectionMs.reset();
    refreshReadouts();
    update();
}

void CSpectrogramView::select(double aMs, double bMs) {
    m_selectionMs = std::make_pair(std::min(aMs, bMs), std::max(aMs, bMs));
    m_cursorMs.reset();
    refreshReadouts();
    update();
}

void CSpectrogramView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
    mouseStep(Step::Down, event->position().toPoint());
}

void CSpectrogramView::mouseMoveEvent(QMouseEvent* event) {
    if (m_dragging) {
        mouseStep(Step::Move, event->position().toPoint());
    } else {
        refreshReadouts(event->position().toPoint());
    }
}

void CSpectrogramView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !m_dragging) return QWidget::mouseReleaseEvent(event);
    mouseStep(Step::Up, event->position().toPoint());
}

void CSpectrogramView::leaveEvent(QEvent* event) {
    refreshReadouts();
    QWidget::leaveEvent(event);
}

// A press inside the time area places the cursor (and, inside the image, the
// frequency cursor); a drag of six pixels or more selects, as in the
// waveform view.
void CSpectrogramView::mouseStep(Step step, QPoint at) {
    if (!m_data) return;
    const SpectrogramLayout l = layoutNow();
    const double startMs = m_data->range.startMs(), endMs = m_data->range.endMs();
    const double ms = std::clamp(l.xToMs(at.x(), startMs, endMs), startMs, endMs);
    if (step == Step::Down) {
        if (!l.timeArea().contains(at)) return;
        m_dragging = true;
        m_pressX = at.x();
        m_pressMs = ms;
        std::optional<double> hz;
        if (l.image.contains(at))
            hz = std::clamp(l.yToHz(at.y(), m_data->settings.frequencyRangeHz), 0.0,
                            double(m_data->settings.frequencyRangeHz));
        placeCursor(ms, hz);
    } else if (timebase::isSelectionDrag(m_pressX, at.x())) {
        select(m_pressMs, ms);
    } else {
        placeCursor(m_pressMs, std::nullopt);
    }
    if (step == Step::Up) m_dragging = false;
    forwardToWaveform(step, step == Step::Down ? m_pressMs : ms);
    refreshReadouts(at);
}

void CSpectrogramView::forwardToWaveform(Step step, double ms) {
    if (!m_waveform) return;
    m_forwarding = true;
    switch (step) {
        case Step::Down:
            m_waveform->mouseDownAtMs(ms);
            break;
        case Step::Move:
            m_waveform->mouseMoveAtMs(ms);
            break;
        case Step::Up:
            m_waveform->mouseUpAtMs(ms);
            break;
    }
    m_forwarding = false;
}

void CSpectrogramView::followWaveformCursor(int step, double ms) {
    if (m_forwarding || m_doc == nullptr || channel() < 0) return;
    const sonmetra::CChannel& c = m_doc->channel(channel());
    // A press is always a click; later steps show the selection the
    // waveform view has made of the drag, if any.
    if (step != 0 && m_doc->selectionFlag() && c.m_selEndMs > c.m_selStartMs) {
        select(c.m_selStartMs, c.m_selEndMs);
    } else {
        placeCursor(ms, std::nullopt);
    }
}

void CSpectrogramView::refreshReadouts(std::optional<QPoint> hover) {
    SpectrogramReadoutBar::Analysis a;
    if (m_data) {
        a.rateHz = m_data->range.rateHz;
        a.lpcOrder = m_data->settings.lpcOrder;
        a.windowPoints = sonmetra::FftSizeOfIndex(m_data->settings.fftSizeIndex);
        a.dynamicRangeDb = m_data->settings.dynamicRangeDb;
        a.preEmphasis = m_data->settings.preEmphasis;
    }
    m_readouts->setAnalysis(a);
    std::optional<double> timeMs = m_cursorMs, hz = m_cursorHz;
    if (m_data && hover) {
        // Over the picture the time and frequency under the mouse.
        const SpectrogramLayout l = layoutNow();
        if (l.timeArea().contains(*hover)) timeMs = l.xToMs(hover->x(), m_data->range.startMs(), m_data->range.endMs());
        if (l.image.contains(*hover)) hz = l.yToHz(hover->y(), m_data->settings.frequencyRangeHz);
    }
    m_readouts->setTime(timeMs);
    m_readouts->setFrequency(hz);
    m_readouts->setDuration(m_selectionMs ? std::optional<double>(m_selectionMs->second - m_selectionMs->first)
                                          : std::nullopt);
}

void CSpectrogramView::playSpan(double startMs, double endMs) {
    const int ch = m_doc != nullptr ? StretchPlayer::playedChannel(*m_doc) : -1;
    if (ch < 0 || !m_data) return;
    const sonmetra::CChannel& c = m_doc->channel(ch);
    const double perMs = c.m_sampleCount / c.m_durationMs;
    const auto first = static_cast<int>(std::clamp(startMs * perMs, 0.0, c.m_sampleCount));
    const auto last = static_cast<int>(std::clamp(endMs * perMs, 0.0, c.m_sampleCount));
    // The play cursor runs over the stretch's span of the time axis, which
    // for Play All may reach beyond the picture.
    const SpectrogramLayout l = layoutNow();
    const QRect area = l.timeArea();
    const double x0 = l.msToX(startMs, m_data->range.startMs(), m_data->range.endMs());
    const double x1 = l.msToX(endMs, m_data->range.startMs(), m_data->range.endMs());
    m_playArea = QRect(static_cast<int>(x0), area.top(), std::max(1, static_cast<int>(x1 - x0)), area.height());
    m_player->play(*m_doc, ch, first, last - first);
}

void CSpectrogramView::playAll() {
    const int ch = m_doc != nullptr ? StretchPlayer::playedChannel(*m_doc) : -1;
    if (ch >= 0) playSpan(0.0, m_doc->channel(ch).m_durationMs);
}

void CSpectrogramView::playSelection() {
    if (m_selectionMs) playSpan(m_selectionMs->first, m_selectionMs->second);
}

void CSpectrogramView::playWindow() {
    if (m_data) playSpan(m_data->range.startMs(), m_data->range.endMs());
}

void CSpectrogramView::stopPlaying() { m_player->stop(); }

bool CSpectrogramView::playing() const { return m_player->playing(); }
