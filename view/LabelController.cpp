#include "LabelController.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <algorithm>
#include <exception>
#include <vector>

#include "CKestruneView.h"
#include "DocumentWindows.h"
#include "LabelEntryDialog.h"
#include "LabelFont.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "res/StringTable.h"

using sonmetra::CLabel;

LabelController::LabelController(CKestruneView& view) : m_view(view), m_doc(view.document()) { viewOpened(m_doc); }

LabelController::~LabelController() = default;

void LabelController::viewClosing() { viewClosed(m_doc); }

bool LabelController::hitTest(QPoint p, int* channel, int* index) const {
    for (int ch = 0; ch < m_doc->channelCount(); ++ch) {
        const auto& labels = m_doc->channel(ch).m_labels;
        // The label drawn last lies on top.
        for (int i = static_cast<int>(labels.size()) - 1; i >= 0; --i) {
            const int* r = labels[static_cast<std::size_t>(i)].placement;
            if (r[2] > r[0] && p.x() >= r[0] && p.x() < r[2] && p.y() >= r[1] && p.y() < r[3]) {
                *channel = ch;
                *index = i;
                return true;
            }
        }
    }
    return false;
}

void LabelController::paintChannel(QPainter& painter, int index, const QRect& strip) {
    if (index < 0 || index >= m_doc->channelCount()) return;
    try {
        auto& labels = m_doc->channel(index).m_labels;
        const QRect trace = m_view.traceArea();
        const int top = strip.top() + QFontMetrics(m_view.labelFont()).height() + 2;
        std::vector<QRect> placed;
        for (CLabel& l : labels) {
            std::fill(std::begin(l.placement), std::end(l.placement), 0);
            const int x = m_view.msToX(l.timeMs);
            if (x < trace.left() || x > trace.right()) continue;

            const QFont font = qFontFromLogFont(l.font);
            const QFontMetrics metrics(font);
            const QString text = QString::fromUtf8(l.text.c_str());
            const QRect size = metrics.boundingRect(QRect(0, 0, 4000, 4000), Qt::AlignLeft | Qt::AlignTop, text);
            int left = x + 2;
            int align = Qt::AlignLeft;
            if (l.justification == static_cast<int>(sonmetra::Justification::Center)) {
                left = x - size.width() / 2;
                align = Qt::AlignHCenter;
            } else if (l.justification == static_cast<int>(sonmetra::Justification::Right)) {
                left = x - size.width() - 2;
                align = Qt::AlignRight;
            }
            QRect box(left, top, size.width(), size.height());
            // A label that would cover one already drawn goes below it.
            for (bool moved = true; moved;) {
                moved = false;
                for (const QRect& other : placed) {
                    if (other.intersects(box) && other.bottom() + 1 + box.height() < strip.bottom()) {
                        box.moveTop(other.bottom() + 1);
                        moved = true;
                    }
                }
            }
            placed.push_back(box);
            const QColor color = labelColor(l);
            painter.setPen(color);
            painter.setFont(font);
            painter.drawText(box, align | Qt::AlignTop, text);
            if (l.lineFlag()) {
                // A centred text sits over its time: the line starts below it.
                const int from = align == Qt::AlignHCenter ? box.bottom() + 1 : box.top();
                painter.drawLine(x, from, x, strip.bottom());
            }
            l.placement[0] = box.left();
            l.placement[1] = box.top();
            l.placement[2] = box.right() + 1;
            l.placement[3] = box.bottom() + 1;
        }
    } catch (const std::exception&) {
        reportDrawingFailure();
    }
}

void LabelController::reportDrawingFailure() {
    if (m_failureReported) return;
    m_failureReported = true;
    // Never a dialog from inside a paint: the message follows it.
    QTimer::singleShot(0, [] { sonmetra::showMessage(sonmetra::IDS_LABEL_DRAW_FAILED); });
}

bool LabelController::mousePress(QMouseEvent* event) {
    m_hitChannel = m_hitIndex = -1;
    if (m_labelMode) hitTest(event->position().toPoint(), &m_hitChannel, &m_hitIndex);
    return false;
}

void LabelController::mouseRelease(QMouseEvent* event) {
    if (!m_labelMode || !m_doc->holdsData()) return;
    const QPoint p = event->position().toPoint();
    if (!m_view.clientRect().contains(p)) return;
    if (m_view.selectionPresent()) {
        // A drag selects; it enters no label.
        m_view.setCursorPlaced(false);
        m_view.requestRedraw();
        return;
    }
    const int hitChannel = m_hitChannel;
    const int hitIndex = m_hitIndex;
    m_hitChannel = m_hitIndex = -1;
    if (hitChannel >= 0 && hitChannel < m_doc->channelCount() &&
        hitIndex < static_cast<int>(m_doc->channel(hitChannel).m_labels.size())) {
        editLabel(hitChannel, hitIndex);
        return;
    }
    // The strip under the click; between strips, the strip clicked last.
    int channel = m_view.channelAt(p);
    if (channel < 0) channel = m_view.clickedChannel();
    if (channel >= 0 && channel < m_doc->channelCount()) enterNewLabel(channel);
}

void LabelController::enterNewLabel(int channel) {
    CLabel proposal = m_template;
    proposal.text.clear();
    LabelEntryDialog dialog(proposal, &m_view);
    if (dialog.exec() != QDialog::Accepted) return;
    CLabel entered = dialog.label();
    if (entered.text.empty()) return;
    entered.timeMs = m_view.cursorMs();
    auto& labels = m_doc->channel(channel).m_labels;
    const auto at = std::upper_bound(labels.begin(), labels.end(), entered.timeMs,
                                     [](double t, const CLabel& l) { return t < l.timeMs; });
    labels.insert(at, entered);
    m_template = entered;
    m_template.text.clear();
    afterChange();
}

void LabelController::editLabel(int channel, int index) {
    auto& labels = m_doc->channel(channel).m_labels;
    LabelEntryDialog dialog(labels[static_cast<std::size_t>(index)], &m_view);
    if (dialog.exec() != QDialog::Accepted) return;
    const CLabel edited = dialog.label();
    if (edited.text.empty()) {
        labels.erase(labels.begin() + index);
    } else {
        labels[static_cast<std::size_t>(index)] = edited;
    }
    afterChange();
}

void LabelController::afterChange() {
    m_doc->setModified(true);
    m_view.requestRedraw();
    labelsChanged(m_doc);
}

void LabelController::clearForRecording() {
    m_labelMode = false;
    for (int ch = 0; ch < m_doc->channelCount(); ++ch) m_doc->channel(ch).m_labels.clear();
    labelsChanged(m_doc);
}
