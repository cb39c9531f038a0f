// Cursor and selection with the mouse, and the same steps driven by a time.
#include <QMouseEvent>
#include <QWheelEvent>
#include <cmath>

#include "CKestruneView.h"
#include "DocumentWindows.h"
#include "document/CKestruneDoc.h"

using timebase::ScrollRequest;

void CKestruneView::mousePressEvent(QMouseEvent* e) {
    if (e->button() != Qt::LeftButton) return QWidget::mousePressEvent(e);
    if (m_doc == nullptr) return;
    const QPoint p = e->position().toPoint();
    if (!clientRect().contains(p)) return;
    // A feature may take the press: a press during recording stops it, even
    // in a new document that holds no data yet.
    for (auto& ext : m_extensions) {
        if (ext->mousePress(e)) return;
    }
    if (!m_doc->holdsData()) return;
    const int channel = channelAt(p);
    if (channel >= 0) m_clickedChannel = channel;
    pressAt(p);
}

void CKestruneView::mouseMoveEvent(QMouseEvent* e) {
    if (!m_dragging) return;
    dragTo(e->position().toPoint());
}

void CKestruneView::mouseReleaseEvent(QMouseEvent* e) {
    if (e->button() != Qt::LeftButton || !m_dragging) return;
    releaseAt(e->position().toPoint());
    for (auto& ext : m_extensions) ext->mouseRelease(e);
}

void CKestruneView::wheelEvent(QWheelEvent* e) {
    // The wheel scrolls by one line; it never zooms.
    const int delta = e->angleDelta().y() != 0 ? e->angleDelta().y() : e->angleDelta().x();
    if (delta > 0) {
        hScroll(ScrollRequest::LineForward);
    } else if (delta < 0) {
        hScroll(ScrollRequest::LineBack);
    }
    e->ignore();
}

void CKestruneView::setCursorPlaced(bool on) {
    m_cursorPlaced = on;
    const int first = m_doc ? m_doc->firstPresentIndex() : -1;
    if (on && first >= 0) m_cursorMs = m_doc->channel(first).m_cursorMs;
}

void CKestruneView::pressAt(QPoint p) {
    const double ms = xToMs(p.x());
    timebase::placeCursor(*m_doc, ms);
    const int first = m_doc->firstPresentIndex();
    m_cursorMs = first >= 0 ? m_doc->channel(first).m_cursorMs : ms;
    m_cursorPlaced = true;
    setSelectionPresent(false);
    m_dragging = true;
    m_pressX = p.x();
    m_pressMs = m_cursorMs;
    afterMouseStep(MouseStep::Down);
}

void CKestruneView::dragTo(QPoint p) {
    // Dragging past either end of the time axis pulls the range along.
    if (scrollable()) {
        const TraceGeometry g = geometry();
        if (p.x() < g.traceLeft()) {
            hScroll(ScrollRequest::LineBack);
        } else if (p.x() > g.traceRight()) {
            hScroll(ScrollRequest::LineForward);
        }
    }
    extendTo(p);
    afterMouseStep(MouseStep::Move);
}

void CKestruneView::extendTo(QPoint p) {
    if (!timebase::isSelectionDrag(m_pressX, p.x())) {
        // Still a click: the cursor stands, with an empty selection on it.
        timebase::placeCursor(*m_doc, m_pressMs);
        setSelectionPresent(false);
        m_cursorPlaced = true;
    } else {
        timebase::selectRange(*m_doc, m_pressMs, xToMs(p.x()));
        setSelectionPresent(true);
        m_cursorPlaced = false;
    }
}

void CKestruneView::releaseAt(QPoint p) {
    // The release point counts for the selection but does not scroll again.
    if (m_dragging) extendTo(p);
    m_dragging = false;
    afterMouseStep(MouseStep::Up);
}

void CKestruneView::afterMouseStep(MouseStep step) {
    refreshReadouts();
    update();  // selection and cursor are composed over the unchanged trace layer
    // A follower that drives this view back by time must not start another round.
    if (m_notifying) return;
    m_notifying = true;
    emit cursorStep(static_cast<int>(step), m_cursorMs);
    cursorStepped(m_doc, static_cast<int>(step), m_cursorMs);
    m_notifying = false;
}

void CKestruneView::mouseDownAtMs(double ms) {
    if (m_doc == nullptr || !m_doc->holdsData()) return;
    pressAt(QPoint(msToX(ms), 0));
}

void CKestruneView::mouseMoveAtMs(double ms) {
    if (m_dragging) dragTo(QPoint(msToX(ms), 0));
}

void CKestruneView::mouseUpAtMs(double ms) {
    if (m_dragging) releaseAt(QPoint(msToX(ms), 0));
}
