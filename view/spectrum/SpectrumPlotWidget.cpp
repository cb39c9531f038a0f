#include "SpectrumPlotWidget.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

SpectrumPlotWidget::SpectrumPlotWidget(PictureDrawer draw, QWidget* parent)
    : QWidget(parent), m_draw(std::move(draw)), m_note(new QLabel(this)) {
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(200, 150);
    setCursor(Qt::CrossCursor);
    // Looks like a tooltip but stays with the mouse without the tooltip's delays.
    m_note->setPalette(QToolTip::palette());
    m_note->setAutoFillBackground(true);
    m_note->setFrameShape(QFrame::Box);
    m_note->setMargin(3);
    m_note->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_note->hide();
}

void SpectrumPlotWidget::invalidate() {
    m_stale = true;
    update();
}

void SpectrumPlotWidget::showNote(QPoint pos, const QString& text) {
    if (text.isEmpty()) {
        m_note->hide();
        return;
    }
    m_note->setText(text);
    m_note->adjustSize();
    // Right of and below the mouse, turned to the other side near an edge.
    QPoint at = pos + QPoint(14, 16);
    if (at.x() + m_note->width() > width()) at.setX(pos.x() - 10 - m_note->width());
    if (at.y() + m_note->height() > height()) at.setY(pos.y() - 10 - m_note->height());
    m_note->move(at);
    m_note->show();
    m_note->raise();
}

QString SpectrumPlotWidget::noteText() const { return m_note->text(); }

bool SpectrumPlotWidget::noteVisible() const { return m_note->isVisible(); }

void SpectrumPlotWidget::paintEvent(QPaintEvent*) {
    const double ratio = devicePixelRatioF();
    if (m_stale || m_image.size() != size() * ratio || m_image.devicePixelRatio() != ratio) {
        m_image = pictureImage(size(), m_draw, ratio);
        m_stale = false;
    }
    QPainter painter(this);
    painter.drawImage(QPoint(0, 0), m_image);
}

void SpectrumPlotWidget::mouseMoveEvent(QMouseEvent* event) {
    if (mouseMoved) mouseMoved(event->position());
}

void SpectrumPlotWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && clicked) clicked(event->position());
}

void SpectrumPlotWidget::leaveEvent(QEvent*) {
    m_note->hide();
    if (mouseLeft) mouseLeft();
}
