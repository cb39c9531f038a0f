// The plot area of the spectrum window: paints the window's picture (kept as
// an image until the picture or the size changes), reports mouse moves and
// clicks, and shows the frequency and level under the mouse in a small
// tooltip-style box beside it.
#pragma once

#include <QImage>
#include <QWidget>
#include <functional>

#include "view/PictureOutput.h"

class QLabel;

class SpectrumPlotWidget : public QWidget {
    Q_OBJECT
public:
    explicit SpectrumPlotWidget(PictureDrawer draw, QWidget* parent = nullptr);

    // The picture changed: drawn again at the next paint.
    void invalidate();
    // Shows `text` in the box beside `pos`; an empty text hides it.
    void showNote(QPoint pos, const QString& text);
    QString noteText() const;
    bool noteVisible() const;

    std::function<void(QPointF pos)> mouseMoved;
    std::function<void()> mouseLeft;
    std::function<void(QPointF pos)> clicked;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    PictureDrawer m_draw;
    QImage m_image;  // the picture at the current size and pixel ratio
    bool m_stale = true;
    QLabel* m_note;
};
