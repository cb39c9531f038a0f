#include "LabelPane.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "view/LabelFont.h"

void drawLabelPane(QPainter& p, const QRect& pane, const TimeAxis& axis, const std::vector<sonmetra::CLabel>& labels,
                   const PaneStyle& style) {
    p.save();
    p.setClipRect(QRectF(axis.left, pane.top(), axis.right - axis.left + 1, pane.height()));
    std::vector<QRectF> placed;
    for (const sonmetra::CLabel& label : labels) {
        if (label.timeMs < axis.startMs || label.timeMs > axis.endMs) continue;
        const double x = std::floor(axis.msToX(label.timeMs)) + 0.5;
        const QColor color = style.color ? labelColor(label) : QColor(Qt::black);
        QFont font = qFontFromLogFont(label.font);
        // A label's own font may be larger than the band: it is shrunk to fit.
        const int room = std::max(6, pane.height() - 4);
        if (QFontMetrics(font).height() > room) font.setPixelSize(std::max(6, room * 3 / 4));
        p.setFont(font);
        const QString text = QString::fromUtf8(label.text.c_str());
        const double w = p.fontMetrics().horizontalAdvance(text);
        const double h = p.fontMetrics().height();
        double left = x + 3;
        if (label.justification == static_cast<int>(sonmetra::Justification::Center)) {
            left = x - w / 2;
        } else if (label.justification == static_cast<int>(sonmetra::Justification::Right)) {
            left = x - w - 3;
        }
        QRectF box(left, pane.top() + 1, w, h);
        for (bool moved = true; moved;) {
            moved = false;
            for (const QRectF& other : placed)
                if (other.intersects(box) && other.bottom() + h <= pane.top() + pane.height()) {
                    box.moveTop(other.bottom());
                    moved = true;
                }
        }
        placed.push_back(box);
        p.setPen(QPen(color, 1.0));
        p.drawLine(QPointF(x, pane.top()), QPointF(x, pane.top() + pane.height() - 1));
        if (!text.isEmpty()) p.drawText(box, Qt::AlignLeft | Qt::AlignTop, text);
    }
    p.restore();
}
