#include "ViewWaveDisplay.h"

#include <QMetaObject>
#include <QPainter>

#include "CKestruneView.h"

ViewWaveDisplay::ViewWaveDisplay(CKestruneView& view)
    : ViewWaveDisplay(view, [v = &view] { return v->clientRect(); }) {}

ViewWaveDisplay::ViewWaveDisplay(QWidget& window, std::function<QRect()> clientArea)
    : m_view(&window), m_clientArea(std::move(clientArea)) {}

sonmetra::WaveRect ViewWaveDisplay::clientRect() {
    if (!m_view) return {};
    const QRect c = m_clientArea();
    return sonmetra::WaveRect{0, 0, c.width(), c.height()};
}

void ViewWaveDisplay::drawCaptureColumn(int x, int startY, int maxY, int minY) {
    QMetaObject::invokeMethod(
        this, [this, x, startY, maxY, minY] { applyColumn(x, startY, maxY, minY); }, Qt::QueuedConnection);
}

void ViewWaveDisplay::invertRect(const sonmetra::WaveRect& r) {
    const QRect rect(QPoint(r.left, r.top), QPoint(r.right - 1, r.bottom - 1));
    QMetaObject::invokeMethod(
        this, [this, rect] { applyInversion(rect); }, Qt::QueuedConnection);
}

void ViewWaveDisplay::startStripChart() {
    const QRect c = m_view ? m_clientArea() : QRect();
    m_stripChart = QImage(c.size().expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied);
    m_stripChart.fill(Qt::transparent);
}

void ViewWaveDisplay::clearStripChart() { m_stripChart = QImage(); }

void ViewWaveDisplay::clearCursor() {
    m_inverted.clear();
    if (m_view) m_view->update();
}

void ViewWaveDisplay::applyColumn(int x, int startY, int maxY, int minY) {
    if (m_stripChart.isNull()) return;
    QPainter p(&m_stripChart);
    p.setPen(Qt::black);
    p.drawLine(x, startY, x, maxY);
    p.drawLine(x, maxY, x, minY);
    p.end();
    if (m_view) m_view->update();
}

void ViewWaveDisplay::applyInversion(const QRect& rect) {
    // Inverting twice restores the pixels: the strip leaves the set.
    if (m_inverted.erase(rect) == 0) m_inverted.emplace(rect, 1);
    if (m_view) m_view->update();
}

void ViewWaveDisplay::paint(QPainter& painter) const {
    if (!m_stripChart.isNull()) painter.drawImage(QPoint(0, 0), m_stripChart);
    if (m_inverted.empty()) return;
    painter.save();
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    for (const auto& [rect, shown] : m_inverted) painter.fillRect(rect, Qt::white);
    painter.restore();
}
