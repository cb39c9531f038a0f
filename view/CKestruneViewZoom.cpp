// Zoom, scrolling and the commands that change the display state.
#include <QScrollBar>
#include <cmath>

#include "CKestruneView.h"
#include "document/CKestruneDoc.h"

using timebase::ScrollRequest;

void CKestruneView::zoom(int mode) {
    if (m_doc == nullptr || !m_doc->holdsData() || mode < 0 || mode > 5) return;
    timebase::zoom(*m_doc, static_cast<timebase::ZoomMode>(mode));
    scrollBarFromRange();
    requestRedraw();
}

void CKestruneView::scrollBarFromRange() {
    m_hBar = timebase::scrollBarFromRange(*m_doc);
    updateScrollBars();
    copyDisplayRange();
    refreshReadouts();  // the window shown in the status window
    m_redrawNeeded = true;
    update();
}

void CKestruneView::rangeFromScrollBar() {
    recomputeRangeFromBar();
    update();
}

void CKestruneView::recomputeRangeFromBar() {
    timebase::rangeFromScrollBar(*m_doc, m_hBar);
    copyDisplayRange();
    m_redrawNeeded = true;
}

void CKestruneView::copyDisplayRange() {
    const int first = m_doc->firstPresentIndex();
    if (first < 0) {
        m_displayStartMs = m_displayEndMs = 0.0;
        return;
    }
    m_displayStartMs = m_doc->channel(first).m_viewStartMs;
    m_displayEndMs = m_doc->channel(first).m_viewEndMs;
}

// The widget shows the bar in whole units; the fractional state stays here.
void CKestruneView::updateScrollBars() {
    m_updatingBars = true;
    const int page = static_cast<int>(std::lround(std::min<double>(m_hBar.page, timebase::HScrollBar::kMax)));
    m_hScroll->setRange(0, std::max(0, timebase::HScrollBar::kMax - page));
    m_hScroll->setPageStep(std::max(1, page));
    m_hScroll->setSingleStep(std::max(1, page / 10));
    m_hScroll->setSliderPosition(static_cast<int>(std::lround(m_hBar.position)));
    m_hScroll->setEnabled(m_hBar.scrollable());
    m_updatingBars = false;
}

void CKestruneView::hScroll(ScrollRequest request, int trackPosition) {
    if (!m_hBar.scrollable()) return;
    m_hBar.position = timebase::hScrollTarget(m_hBar, request, trackPosition);
    m_updatingBars = true;
    m_hScroll->setSliderPosition(static_cast<int>(std::lround(m_hBar.position)));
    m_updatingBars = false;
    recomputeRangeFromBar();
    refreshReadouts();
    // The end of a thumb drag only updates the range; the track steps before it have repainted.
    if (timebase::hScrollRepaints(request)) update();
}

void CKestruneView::onHBarAction(int action) {
    if (m_updatingBars) return;
    switch (action) {
        case QAbstractSlider::SliderSingleStepAdd:
            hScroll(ScrollRequest::LineForward);
            break;
        case QAbstractSlider::SliderSingleStepSub:
            hScroll(ScrollRequest::LineBack);
            break;
        case QAbstractSlider::SliderPageStepAdd:
            hScroll(ScrollRequest::PageForward);
            break;
        case QAbstractSlider::SliderPageStepSub:
            hScroll(ScrollRequest::PageBack);
            break;
        case QAbstractSlider::SliderMove:
            hScroll(ScrollRequest::ThumbTrack, m_hScroll->sliderPosition());
            break;
        case QAbstractSlider::SliderToMinimum:
            hScroll(ScrollRequest::Top);
            break;
        case QAbstractSlider::SliderToMaximum:
            hScroll(ScrollRequest::Bottom);
            break;
        default:
            break;
    }
}

void CKestruneView::vScroll(ScrollRequest request, int trackPosition) {
    if (!m_vBarShown) return;
    const int column = columnHeight(m_strips);
    const int page = clientRect().height();
    const int position = timebase::vScrollTarget(-m_vOffset, column, page, request, trackPosition);
    m_vOffset = -position;
    m_updatingBars = true;
    m_vScroll->setSliderPosition(position);
    m_updatingBars = false;
    requestRedraw();
}

void CKestruneView::onVBarAction(int action) {
    if (m_updatingBars) return;
    switch (action) {
        case QAbstractSlider::SliderSingleStepAdd:
            vScroll(ScrollRequest::LineForward);
            break;
        case QAbstractSlider::SliderSingleStepSub:
            vScroll(ScrollRequest::LineBack);
            break;
        case QAbstractSlider::SliderPageStepAdd:
            vScroll(ScrollRequest::PageForward);
            break;
        case QAbstractSlider::SliderPageStepSub:
            vScroll(ScrollRequest::PageBack);
            break;
        case QAbstractSlider::SliderMove:
            vScroll(ScrollRequest::ThumbTrack, m_vScroll->sliderPosition());
            break;
        case QAbstractSlider::SliderToMinimum:
            vScroll(ScrollRequest::Top);
            break;
        case QAbstractSlider::SliderToMaximum:
            vScroll(ScrollRequest::Bottom);
            break;
        default:
            break;
    }
}

void CKestruneView::selectWindow() {
    if (!m_doc->holdsData()) return;
    timebase::selectWindow(*m_doc);
    setSelectionPresent(true);
    m_cursorPlaced = false;
    refreshReadouts();
    requestRedraw();
}

void CKestruneView::selectAll() {
    if (!m_doc->holdsData()) return;
    timebase::selectAll(*m_doc);
    setSelectionPresent(true);
    m_cursorPlaced = false;
    refreshReadouts();
    requestRedraw();
}
