#include "CKestruneView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "AppServices.h"
#include "ViewReadouts.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "res/StringTable.h"

namespace {
std::function<void(sonmetra::CKestruneDoc&, int)>& derivedRecompute() {
    static std::function<void(sonmetra::CKestruneDoc&, int)> f;
    return f;
}
}  // namespace

void CKestruneView::setDerivedCurveRecompute(std::function<void(sonmetra::CKestruneDoc&, int)> recompute) {
    derivedRecompute() = std::move(recompute);
}

CKestruneView::CKestruneView(sonmetra::CKestruneDoc* doc, QWidget* parent)
    : QWidget(parent),
      m_doc(doc),
      m_hScroll(new QScrollBar(Qt::Horizontal, this)),
      m_vScroll(new QScrollBar(Qt::Vertical, this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(120, 80);
    // Channel names are written in the program's shared font; a view made
    // without the application (tests, tools) builds the same font itself.
    if (const QFont* shared = AppServices::instance().defaultFont) {
        m_labelFont = *shared;
    } else {
        m_labelFont = QFont(QStringLiteral("Arial"));
        m_labelFont.setStyleHint(QFont::SansSerif);
        m_labelFont.setPixelSize(14);
        m_labelFont.setWeight(QFont::Normal);
    }
    connect(m_hScroll, &QScrollBar::actionTriggered, this, &CKestruneView::onHBarAction);
    connect(m_hScroll, &QScrollBar::sliderReleased, this,
            [this] { hScroll(timebase::ScrollRequest::ThumbPosition, m_hScroll->sliderPosition()); });
    connect(m_vScroll, &QScrollBar::actionTriggered, this, &CKestruneView::onVBarAction);
    try {
        for (const auto& factory : viewExtensionFactories()) {
            if (auto ext = factory(*this)) m_extensions.push_back(std::move(ext));
        }
    } catch (const std::exception&) {
        // The view stays, empty of the feature that failed.
        sonmetra::beep();
        sonmetra::showMessage(sonmetra::IDS_VIEW_INIT_FAILED);
    }
    if (m_doc != nullptr && m_doc->holdsData()) {
        scrollBarFromRange();
    } else {
        // Nothing to scroll: the bar stands idle, as with a whole signal in view.
        updateScrollBars();
    }
}

CKestruneView::~CKestruneView() {
    for (auto& e : m_extensions) e->viewClosing();
}

void CKestruneView::setSelectionPresent(bool on) {
    m_selectionPresent = on;
    if (m_doc != nullptr) m_doc->setSelectionFlag(on);
}

QRect CKestruneView::clientRect() const {
    const int w = width() - (m_vBarShown ? m_vScroll->sizeHint().width() : 0);
    const int h = height() - m_hScroll->sizeHint().height();
    return QRect(0, 0, std::max(w, 1), std::max(h, 1));
}

TraceGeometry CKestruneView::geometry() const {
    if (m_renderGeometry) return *m_renderGeometry;
    TraceGeometry g;
    const QRect c = clientRect();
    g.clientWidth = c.width();
    g.clientHeight = c.height();
    g.dpr = devicePixelRatioF();
    g.scrollOffset = m_vOffset;
    return g;
}

QRect CKestruneView::traceArea() const {
    const TraceGeometry g = geometry();
    return QRect(g.traceLeft(), 0, g.traceWidth(), g.clientHeight);
}

int CKestruneView::msToX(double ms) const { return static_cast<int>(std::floor(::msToX(*m_doc, geometry(), ms))); }

double CKestruneView::xToMs(int x) const { return ::xToMs(*m_doc, geometry(), x); }

int CKestruneView::channelAt(QPoint p) const {
    for (int i = 0; i < static_cast<int>(m_strips.size()); ++i) {
        const QRect& r = m_strips[static_cast<std::size_t>(i)];
        if (!r.isEmpty() && r.translated(0, m_vOffset).contains(p)) return i;
    }
    return -1;
}

void CKestruneView::requestRedraw() {
    m_redrawNeeded = true;
    update();
}

void CKestruneView::channelsEdited() {
    m_summaries.invalidateAll();
    layout();
    requestRedraw();
}

void CKestruneView::refreshReadouts() { publishReadouts(AppServices::instance().readouts, *m_doc, m_selectionPresent); }

// Which channels take a strip; a change (a paste into an empty document, a
// recording) needs a new layout even if nobody said so.
std::uint32_t CKestruneView::layoutSignature() const {
    std::uint32_t present = static_cast<std::uint32_t>(m_doc->channelCount()) << 24;
    for (int i = 0; i < m_doc->channelCount(); ++i) present |= m_doc->channel(i).present() ? (1u << i) : 0u;
    return present;
}

void CKestruneView::layoutIfChanged() {
    if (layoutSignature() != m_layoutSignature || m_strips.size() != static_cast<std::size_t>(m_doc->channelCount())) {
        layout();
    }
}

// Lays the strips out for the client size and sets the vertical bar; the
// column scrolls only when it is taller than the client area.
void CKestruneView::layout() {
    m_layoutSignature = layoutSignature();
    m_redrawNeeded = true;
    const int barH = m_hScroll->sizeHint().height();
    const int barW = m_vScroll->sizeHint().width();
    int clientW = width();
    const int clientH = std::max(1, height() - barH);
    m_strips = layoutStrips(*m_doc, clientW, clientH);
    int column = columnHeight(m_strips);
    const bool needV = column > clientH;
    if (needV) {
        clientW = std::max(1, width() - barW);
        m_strips = layoutStrips(*m_doc, clientW, clientH);
        column = columnHeight(m_strips);
    }
    for (int i = 0; i < m_doc->channelCount() && i < static_cast<int>(m_strips.size()); ++i) {
        const QRect& r = m_strips[static_cast<std::size_t>(i)];
        m_doc->channel(i).m_strip = {r.left(), r.top(), r.left() + r.width(), r.top() + r.height()};
    }
    m_hScroll->setGeometry(0, clientH, clientW, barH);
    m_vBarShown = needV;
    m_vScroll->setVisible(needV);
    m_updatingBars = true;
    if (needV) {
        m_vScroll->setGeometry(clientW, 0, barW, clientH);
        m_vScroll->setRange(0, column - clientH);
        m_vScroll->setPageStep(clientH);
        m_vScroll->setSingleStep(std::max(1, clientH / 10));
        m_vOffset = -std::clamp(-m_vOffset, 0, column - clientH);
        m_vScroll->setValue(-m_vOffset);
    } else {
        m_vOffset = 0;
    }
    m_updatingBars = false;
}

void CKestruneView::ensureLayers() {
    const QRect c = clientRect();
    const double dpr = devicePixelRatioF();
    const QSize dev(static_cast<int>(std::ceil(c.width() * dpr)), static_cast<int>(std::ceil(c.height() * dpr)));
    if (m_traceLayer.size() == dev) return;
    // Opaque layers: the blit to the screen is a plain copy, with no blending.
    m_traceLayer = QImage(dev, QImage::Format_RGB32);
    m_redrawNeeded = true;
}

void CKestruneView::resizeEvent(QResizeEvent*) {
    layout();
    ensureLayers();
    m_redrawNeeded = true;
}

void CKestruneView::render() {
    ensureLayers();
    if (m_traceLayer.isNull()) return;  // no memory for the layer: the view stays blank
    const TraceGeometry g = geometry();
    RenderOptions options;
    options.gridStepMs = m_doc->m_timeGridStepMs;
    // The screen always shows the grid, in colour.
    ChannelPaintHook hook;
    if (!m_extensions.empty()) {
        hook = [this](QPainter& p, int index, const QRect& strip) {
            for (auto& e : m_extensions) {
                p.save();
                e->paintChannel(p, index, strip);
                p.restore();
            }
        };
    }
    if (m_doc->holdsData()) {
        renderTraceLayer(m_traceLayer, *m_doc, m_summaries, m_strips, g, options, m_labelFont, hook);
    } else {
        m_traceLayer.fill(Qt::white);
    }
    m_redrawNeeded = false;
}

// Highlight, cursor and overlays over whatever holds the trace layer: the
// composite image or the screen. Both get the same strokes.
void CKestruneView::paintMarks(QPainter& p) const {
    if (m_doc->holdsData()) {
        const TraceGeometry g = geometry();
        const int bottom = std::min(g.clientHeight, stripsBottom(m_strips) + m_vOffset);
        const int first = m_doc->firstPresentIndex();
        double x0 = 0, x1 = 0;
        if (m_selectionPresent && first >= 0) {
            const auto& ch = m_doc->channel(first);
            x0 = ::msToX(*m_doc, g, ch.m_selStartMs);
            x1 = ::msToX(*m_doc, g, ch.m_selEndMs);
        }
        const double cursorX = m_cursorPlaced ? ::msToX(*m_doc, g, m_cursorMs) : -1.0;
        const bool cursorShown = cursorX >= g.traceLeft() && cursorX <= g.traceRight();
        paintSelectionAndCursor(p, g, m_selectionPresent && first >= 0, x0, x1, cursorShown ? cursorX : -1.0, bottom,
                                true);
    }
    for (auto& e : m_extensions) {
        p.save();
        e->paintOverlay(p);
        p.restore();
    }
}

void CKestruneView::compose() {
    // Same size by construction (ensureLayers): copy the bytes, no new image.
    if (m_composite.size() != m_traceLayer.size() || m_composite.format() != m_traceLayer.format()) {
        m_composite = QImage(m_traceLayer.size(), m_traceLayer.format());
    }
    std::memcpy(m_composite.bits(), m_traceLayer.constBits(), static_cast<std::size_t>(m_traceLayer.sizeInBytes()));
    QPainter p(&m_composite);
    p.scale(devicePixelRatioF(), devicePixelRatioF());
    paintMarks(p);
}

const QImage& CKestruneView::renderNow() {
    layoutIfChanged();
    // A move to a screen of another pixel ratio needs layers of another size.
    ensureLayers();
    if (m_redrawNeeded || m_traceLayer.isNull()) render();
    compose();
    return m_composite;
}

// The screen gets the trace layer and the marks drawn straight over it: a
// composite copy per paint would cost a full image of memory traffic on
// every mouse move of a drag.
void CKestruneView::paintEvent(QPaintEvent*) {
    layoutIfChanged();
    ensureLayers();
    if (m_redrawNeeded || m_traceLayer.isNull()) render();
    QPainter p(this);
    const QRect c = clientRect();
    p.drawImage(c, m_traceLayer);
    p.setClipRect(c);
    paintMarks(p);
    p.setClipping(false);
    // The corner between the two bars.
    if (m_vBarShown)
        p.fillRect(QRect(c.width(), c.height(), width() - c.width(), height() - c.height()), palette().window());
}

QImage CKestruneView::compositeImage() const {
    QImage image = const_cast<CKestruneView*>(this)->renderNow();
    image.setDevicePixelRatio(devicePixelRatioF());
    return image;
}

QImage CKestruneView::renderImage(QSize sizePx, const RenderOptions& options, double dpr) const {
    QImage image(
        QSize(static_cast<int>(std::ceil(sizePx.width() * dpr)), static_cast<int>(std::ceil(sizePx.height() * dpr))),
        QImage::Format_RGB32);
    image.fill(Qt::white);
    {
        QPainter p(&image);
        p.scale(dpr, dpr);
        paintPicture(p, sizePx, options, &image, dpr);
    }
    image.setDevicePixelRatio(dpr);
    return image;
}

void CKestruneView::paintPicture(QPainter& p, QSize sizePx, const RenderOptions& options, QImage* raster,
                                 double dpr) const {
    if (!m_doc->holdsData()) return;
    TraceGeometry g;
    g.clientWidth = sizePx.width();
    g.clientHeight = sizePx.height();
    g.dpr = dpr;
    // Strips fit the whole picture: a printout shows every channel.
    int present = 0;
    for (int i = 0; i < m_doc->channelCount(); ++i) present += m_doc->channel(i).present() ? 1 : 0;
    std::vector<QRect> strips = layoutStrips(*m_doc, g.clientWidth, g.clientHeight);
    if (present > 0 && columnHeight(strips) > g.clientHeight) {
        const int pitch = std::max(8, (g.clientHeight - TraceGeometry::kRulerHeight) / std::max(1, present));
        int top = TraceGeometry::kRulerHeight;
        for (QRect& r : strips) {
            if (r.isEmpty()) continue;
            r = QRect(r.left(), top, r.width(), pitch - TraceGeometry::kStripGap);
            top += pitch;
        }
    }
    const int first = m_doc->firstPresentIndex();
    const bool selection = m_selectionPresent && first >= 0;
    const double x0 = selection ? ::msToX(*m_doc, g, m_doc->channel(first).m_selStartMs) : 0.0;
    const double x1 = selection ? ::msToX(*m_doc, g, m_doc->channel(first).m_selEndMs) : 0.0;
    const int bottom = stripsBottom(strips);
    if (selection && raster == nullptr) {
        // A page cannot AND colours: the tint goes under the traces instead,
        // which keeps them as visible as on the screen.
        paintSelectionAndCursor(p, g, true, x0, x1, -1.0, bottom, options.color, false);
    }
    auto& summaries = const_cast<ChannelSummaries&>(m_summaries);  // a cache: rendering fills it
    ChannelPaintHook hook = [this](QPainter& painter, int index, const QRect& strip) {
        for (auto& e : m_extensions) {
            painter.save();
            e->paintChannel(painter, index, strip);
            painter.restore();
        }
    };
    m_renderGeometry = g;
    paintTraces(p, raster, *m_doc, summaries, strips, g, options, m_labelFont, hook);
    m_renderGeometry.reset();
    const double cursorX = m_cursorPlaced && first >= 0 ? ::msToX(*m_doc, g, m_cursorMs) : -1.0;
    paintSelectionAndCursor(p, g, selection && raster != nullptr, x0, x1, cursorX, bottom, options.color);
}

void CKestruneView::showEvent(QShowEvent* e) {
    refreshReadouts();
    QWidget::showEvent(e);
}

void CKestruneView::focusInEvent(QFocusEvent* e) {
    // The status window follows the view that has the focus.
    refreshReadouts();
    QWidget::focusInEvent(e);
}

void CKestruneView::setReferenceAll() {
    timebase::setReferenceAll(*m_doc);
    refreshReadouts();
    requestRedraw();
}

void CKestruneView::setReferenceForClicked() {
    timebase::setReferenceFor(*m_doc, m_clickedChannel);
    refreshReadouts();
    requestRedraw();
}

void CKestruneView::setReferenceAllToZero() {
    auto& recompute = derivedRecompute();
    timebase::setReferenceAllToZero(*m_doc, [this, &recompute](int i) {
        if (recompute) recompute(*m_doc, i);
    });
    refreshReadouts();
    requestRedraw();
}
