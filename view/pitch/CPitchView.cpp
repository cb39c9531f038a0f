#include "CPitchView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "PitchComputation.h"
#include "PitchSettingsInForce.h"
#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"
#include "view/StretchPlayer.h"

using timebase::ScrollRequest;

namespace {
constexpr int kBarUnits = timebase::HScrollBar::kMax;
}  // namespace

CPitchView::CPitchView(sonmetra::CKestruneDoc* doc, QWidget* parent)
    : QWidget(parent), m_doc(doc), m_hScroll(new QScrollBar(Qt::Horizontal, this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(false);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(240, 160);
    m_player = std::make_unique<StretchPlayer>(*this, [this] { return playArea(); });
    connect(m_hScroll, &QScrollBar::actionTriggered, this, &CPitchView::onScrollAction);
    connect(m_hScroll, &QScrollBar::valueChanged, this, [this](int value) {
        if (m_updatingBar) return;
        const double total = signalMs();
        const double length = m_endMs - m_startMs;
        const double start = std::clamp(value * total / kBarUnits, 0.0, std::max(0.0, total - length));
        m_startMs = start;
        m_endMs = start + length;
        update();
    });
    if (m_doc != nullptr) {
        const int audio = m_doc->audioChannelIndex();
        if (audio >= 0) m_endMs = m_doc->channel(audio).m_durationMs;
    }
    updateScrollBar();
}

CPitchView::~CPitchView() = default;

void CPitchView::detachDocument() {
    m_player->stop();
    m_doc = nullptr;
    m_waveform = nullptr;
    m_backgroundValid = false;
    update();
}

void CPitchView::setWaveformView(CKestruneView* view) { m_waveform = view; }

double CPitchView::signalMs() const {
    if (m_results) return m_results->durationMs;
    if (m_doc != nullptr) {
        const int audio = m_doc->audioChannelIndex();
        if (audio >= 0) return m_doc->channel(audio).m_durationMs;
    }
    return 0.0;
}

void CPitchView::setResults(std::shared_ptr<const PitchResults> results) {
    const double before = signalMs();
    const bool hadResults = m_results != nullptr;
    m_results = std::move(results);
    m_backgroundValid = false;
    const double total = signalMs();
    if (!hadResults || total != before || m_endMs <= m_startMs) {
        m_startMs = m_prevStartMs = 0.0;
        m_endMs = m_prevEndMs = total;
    }
    updateScrollBar();
    update();
}

void CPitchView::setMessage(const QString& text) {
    m_message = text;
    m_backgroundValid = false;
    update();
}

QRect CPitchView::pictureRect() const {
    return QRect(0, 0, width(), std::max(1, height() - m_hScroll->sizeHint().height()));
}

PitchLayout CPitchView::layout() const {
    return pitchLayout(pictureRect().size(), pitchSettingsInForce(), m_startMs, m_endMs);
}

std::optional<std::pair<double, double>> CPitchView::selectionMs() const {
    if (!m_selection || m_doc == nullptr) return std::nullopt;
    const int channel = playedChannel();
    if (channel < 0) return std::nullopt;
    const sonmetra::CChannel& ch = m_doc->channel(channel);
    return std::make_pair(ch.m_selStartMs, ch.m_selEndMs);
}

PitchPicture CPitchView::picture() const {
    PitchPicture pic;
    pic.results = m_results.get();
    pic.settings = pitchSettingsInForce();
    pic.startMs = m_startMs;
    pic.endMs = m_endMs;
    pic.message = m_message;
    if (m_doc != nullptr) {
        pic.title = QString::fromStdString(m_doc->title());
        const int channel = playedChannel();
        if (channel >= 0) pic.labels = &m_doc->channel(channel).m_labels;
        pic.cursorMs = m_selection ? std::nullopt : m_cursorMs;
        pic.selectionMs = selectionMs();
    }
    return pic;
}

void CPitchView::drawPicture(QPainter& painter, QSize size) const { drawPitchPicture(painter, size, picture()); }

bool CPitchView::BackgroundKey::operator==(const BackgroundKey& o) const {
    return size == o.size && pixelRatio == o.pixelRatio && results == o.results &&
           std::memcmp(&settings, &o.settings, sizeof settings) == 0 && startMs == o.startMs && endMs == o.endMs &&
           title == o.title && message == o.message && labels == o.labels;
}

CPitchView::BackgroundKey CPitchView::backgroundKey(const PitchPicture& pic, QSize size, qreal pixelRatio) const {
    BackgroundKey key;
    key.size = size;
    key.pixelRatio = pixelRatio;
    key.results = pic.results;
    key.settings = pic.settings;
    key.startMs = pic.startMs;
    key.endMs = pic.endMs;
    key.title = pic.title;
    key.message = pic.message;
    key.labels = pic.labels;
    return key;
}

void CPitchView::labelsChanged() {
    m_backgroundValid = false;
    update();
}

// The background layer is drawn once into an image and kept while only the
// cursor or the selection move (a long track takes tens of milliseconds to
// draw whole); the overlay goes over it at every paint. The two layers drawn
// one over the other are drawPitchPicture, so the window shows what the
// bitmap, the printout and the render show.
void CPitchView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QRect area = pictureRect();
    const PitchPicture pic = picture();
    const qreal ratio = devicePixelRatioF();
    const BackgroundKey key = backgroundKey(pic, area.size(), ratio);
    if (!m_backgroundValid || !(key == m_backgroundKey)) {
        m_background = QImage(area.size() * ratio, QImage::Format_ARGB32_Premultiplied);
        m_background.setDevicePixelRatio(ratio);
        m_background.fill(Qt::white);
        QPainter bp(&m_background);
        drawPitchBackground(bp, area.size(), pic);
        bp.end();
        m_backgroundKey = key;
        m_backgroundValid = true;
    }
    p.setClipRect(area);
    p.drawImage(QPoint(0, 0), m_background);
    drawPitchOverlay(p, area.size(), pic);
    m_player->paint(p);
}

void CPitchView::resizeEvent(QResizeEvent*) {
    const int h = m_hScroll->sizeHint().height();
    m_hScroll->setGeometry(0, height() - h, width(), h);
}

void CPitchView::showRange(double startMs, double endMs) {
    if (!(endMs > startMs)) return;
    m_startMs = startMs;
    m_endMs = endMs;
    updateScrollBar();
    update();
}

void CPitchView::zoom(int mode) {
    const double total = signalMs();
    if (!(total > 0.0)) return;
    double start = m_startMs, end = m_endMs;
    switch (mode) {
        case 0:
            start = m_prevStartMs;
            end = m_prevEndMs;
            break;
        case 1: {
            const double q = (end - start) * 0.25;
            start += q;
            end -= q;
            break;
        }
        case 2: {
            const double h = (end - start) * 0.5;
            start = std::max(0.0, start - h);
            end = std::min(total, end + h);
            break;
        }
        case 3:
            if (const auto sel = selectionMs()) {
                start = std::min(sel->first, sel->second);
                end = std::max(sel->first, sel->second);
            }
            break;
        case 5:
            start = 0.0;
            end = total;
            break;
        default:
            return;
    }
    if (!(end > start)) return;
    if (mode != 0) {
        m_prevStartMs = m_startMs;
        m_prevEndMs = m_endMs;
    }
    showRange(start, end);
}

bool CPitchView::scrollable() const {
    const double total = signalMs();
    return total > 0.0 && (m_startMs > 0.0 || m_endMs < total);
}

void CPitchView::updateScrollBar() {
    const double total = signalMs();
    m_updatingBar = true;
    if (!(total > 0.0) || !scrollable()) {
        m_hScroll->setRange(0, 0);
        m_hScroll->setEnabled(false);
    } else {
        const int page = std::max(1, static_cast<int>(std::lround((m_endMs - m_startMs) / total * kBarUnits)));
        m_hScroll->setEnabled(true);
        m_hScroll->setRange(0, std::max(0, kBarUnits - page));
        m_hScroll->setPageStep(page);
        m_hScroll->setSingleStep(std::max(1, page / 10));
        m_hScroll->setValue(static_cast<int>(std::lround(m_startMs / total * kBarUnits)));
    }
    m_updatingBar = false;
}

void CPitchView::hScroll(ScrollRequest request, int trackPosition) {
    const double total = signalMs();
    if (!(total > 0.0)) return;
    const double length = m_endMs - m_startMs;
    timebase::HScrollBar bar;
    bar.page = length / total * kBarUnits;
    bar.position = m_startMs / total * kBarUnits;
    const double position = timebase::hScrollTarget(bar, request, trackPosition);
    const double start = std::clamp(position * total / kBarUnits, 0.0, std::max(0.0, total - length));
    m_startMs = start;
    m_endMs = start + length;
    updateScrollBar();
    update();
}

void CPitchView::onScrollAction(int action) {
    switch (action) {
        case QAbstractSlider::SliderSingleStepAdd:
            return hScroll(ScrollRequest::LineForward);
        case QAbstractSlider::SliderSingleStepSub:
            return hScroll(ScrollRequest::LineBack);
        case QAbstractSlider::SliderPageStepAdd:
            return hScroll(ScrollRequest::PageForward);
        case QAbstractSlider::SliderPageStepSub:
            return hScroll(ScrollRequest::PageBack);
        default:
            return;  // dragging the thumb arrives through valueChanged
    }
}

void CPitchView::wheelEvent(QWheelEvent* e) {
    const int delta = e->angleDelta().y() != 0 ? e->angleDelta().y() : e->angleDelta().x();
    if (delta > 0) {
        hScroll(ScrollRequest::LineForward);
    } else if (delta < 0) {
        hScroll(ScrollRequest::LineBack);
    }
    e->accept();
}

void CPitchView::followCursor(int step, double ms) {
    if (m_doc == nullptr) return;
    (void)step;
    // While a drag selects, the document says so; otherwise the step places the cursor.
    m_selection = m_doc->selectionFlag();
    m_cursorMs = ms;
    update();
}

void CPitchView::syncCursorFromWaveform() {
    if (m_waveform == nullptr) {
        m_cursorMs.reset();
        m_selection = false;
    } else {
        m_selection = m_waveform->selectionPresent();
        if (m_waveform->cursorPlaced()) {
            m_cursorMs = m_waveform->cursorMs();
        } else {
            m_cursorMs.reset();
        }
    }
    update();
}

void CPitchView::mousePressEvent(QMouseEvent* e) {
    if (e->button() != Qt::LeftButton || m_doc == nullptr || !m_doc->holdsData()) return QWidget::mousePressEvent(e);
    const PitchLayout l = layout();
    const QPoint p = e->position().toPoint();
    if (!l.plotArea().contains(p) || p.x() < l.axis.left || p.x() > l.axis.right) return;
    m_dragging = true;
    const double ms = l.axis.xToMs(p.x());
    if (m_waveform != nullptr) {
        m_waveform->mouseDownAtMs(ms);
    } else {
        timebase::placeCursor(*m_doc, ms);
        m_doc->setSelectionFlag(false);
        followCursor(0, ms);
    }
}

void CPitchView::mouseMoveEvent(QMouseEvent* e) {
    if (!m_dragging || m_doc == nullptr) return;
    const double ms = layout().axis.xToMs(e->position().x());
    if (m_waveform != nullptr) m_waveform->mouseMoveAtMs(ms);
}

void CPitchView::mouseReleaseEvent(QMouseEvent* e) {
    if (e->button() != Qt::LeftButton || !m_dragging) return;
    m_dragging = false;
    if (m_doc == nullptr) return;
    const double ms = layout().axis.xToMs(e->position().x());
    if (m_waveform != nullptr) m_waveform->mouseUpAtMs(ms);
}

int CPitchView::playedChannel() const {
    if (m_doc == nullptr) return -1;
    if (m_results && m_results->channel >= 0 && m_results->channel < m_doc->channelCount()) return m_results->channel;
    return StretchPlayer::playedChannel(*m_doc);
}

void CPitchView::playStretch(double fromMs, double toMs) {
    const int channel = playedChannel();
    if (channel < 0 || !(toMs > fromMs)) return;
    const sonmetra::CChannel& ch = m_doc->channel(channel);
    const double msPerSample = ch.msPerSample();
    if (!(msPerSample > 0.0)) return;
    const auto first = static_cast<long long>(std::max(0.0, fromMs) / msPerSample);
    const auto last = std::min(static_cast<long long>(toMs / msPerSample), static_cast<long long>(ch.m_samples.size()));
    if (last <= first) return;
    m_playFromMs = first * msPerSample;
    m_playToMs = last * msPerSample;
    m_player->play(*m_doc, channel, static_cast<int>(first), static_cast<int>(last - first));
}

QRect CPitchView::playArea() const {
    // From the played stretch's times, so that the play position stays right
    // when the view zooms or scrolls while it plays.
    const PitchLayout l = layout();
    const QRect plot = l.plotArea();
    const int x0 = static_cast<int>(std::lround(l.axis.msToX(m_playFromMs)));
    const int x1 = static_cast<int>(std::lround(l.axis.msToX(m_playToMs)));
    return QRect(QPoint(x0, plot.top()), QPoint(std::max(x0 + 1, x1), plot.bottom()));
}

void CPitchView::playAll() {
    if (m_doc == nullptr) return;
    const int channel = playedChannel();
    if (channel >= 0) playStretch(0.0, m_doc->channel(channel).m_durationMs);
}

void CPitchView::playSelection() {
    if (const auto sel = selectionMs())
        playStretch(std::min(sel->first, sel->second), std::max(sel->first, sel->second));
}

void CPitchView::playWindow() { playStretch(m_startMs, m_endMs); }

void CPitchView::stopPlaying() { m_player->stop(); }

bool CPitchView::playing() const { return m_player->playing(); }
