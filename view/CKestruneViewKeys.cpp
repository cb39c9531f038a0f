// The keyboard: Left/Right step the cursor, Page Up/Down page through the
// signal, Home/End go to its start and end; other keys (Space and Escape
// for playback) go to the view's features.
#include <QKeyEvent>
#include <algorithm>
#include <cmath>

#include "CKestruneView.h"
#include "document/CKestruneDoc.h"

using timebase::ScrollRequest;

void CKestruneView::keyPressEvent(QKeyEvent* e) {
    const bool plain = (e->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (plain && m_doc != nullptr && m_doc->holdsData() && !m_dragging) {
        switch (e->key()) {
            case Qt::Key_Left:
                return stepCursor(-1);
            case Qt::Key_Right:
                return stepCursor(1);
            case Qt::Key_PageUp:
                return hScroll(ScrollRequest::PageBack);
            case Qt::Key_PageDown:
                return hScroll(ScrollRequest::PageForward);
            case Qt::Key_Home:
                return hScroll(ScrollRequest::ThumbTrack, 0);
            case Qt::Key_End:
                return hScroll(ScrollRequest::ThumbTrack, static_cast<int>(std::ceil(m_hBar.maxPosition())));
            default:
                break;
        }
    }
    for (auto& ext : m_extensions)
        if (ext->keyPress(e)) return;
    QWidget::keyPressEvent(e);
}

void CKestruneView::stepCursor(int direction) {
    const int first = m_doc->firstPresentIndex();
    if (first < 0) return;
    const sonmetra::CChannel& lead = m_doc->channel(first);
    const TraceGeometry g = geometry();
    double ms = 0.0;
    if (m_selectionPresent) {
        // A selection collapses to the end the arrow points at.
        ms =
            direction < 0 ? std::min(lead.m_selStartMs, lead.m_selEndMs) : std::max(lead.m_selStartMs, lead.m_selEndMs);
    } else if (!m_cursorPlaced) {
        ms = direction < 0 ? lead.m_viewEndMs : lead.m_viewStartMs;
    } else {
        // One pixel column, and never less than one sample, so that a range
        // zoomed in far still moves sample by sample.
        const double columnMs = g.traceWidth() > 0 ? lead.viewLengthMs() / g.traceWidth() : 0.0;
        ms = m_cursorMs + direction * std::max(columnMs, lead.msPerSample());
    }
    ms = std::clamp(ms, 0.0, lead.m_durationMs);
    timebase::placeCursor(*m_doc, ms);
    m_cursorMs = lead.m_cursorMs;
    m_cursorPlaced = true;
    setSelectionPresent(false);
    scrollToShow(m_cursorMs);
    afterMouseStep(MouseStep::Down);
    afterMouseStep(MouseStep::Up);
}

// Brings a time that lies outside the display range to the middle of it.
void CKestruneView::scrollToShow(double ms) {
    if (!scrollable() || (ms >= m_displayStartMs && ms <= m_displayEndMs)) return;
    const int first = m_doc->firstPresentIndex();
    const sonmetra::CChannel& lead = m_doc->channel(first);
    if (!(lead.m_durationMs > 0.0)) return;
    const double centre = ms / lead.m_durationMs * timebase::HScrollBar::kMax - m_hBar.page / 2.0;
    hScroll(ScrollRequest::ThumbTrack, static_cast<int>(std::lround(std::clamp(centre, 0.0, m_hBar.maxPosition()))));
}
