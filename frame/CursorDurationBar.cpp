#include "CursorDurationBar.h"

#include <QHBoxLayout>
#include <QLabel>

CursorDurationBar::CursorDurationBar(QWidget* parent)
    : QWidget(parent), m_cursor(new QLabel(this)), m_duration(new QLabel(this)) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(4, 0, 4, 0);
    row->addWidget(m_cursor);
    row->addSpacing(16);
    row->addWidget(m_duration);
    // Wide enough for an hour in ms, so the bar does not jump while dragging.
    m_cursor->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("Cursor(ms): 0000000.00")));
    m_duration->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("Duration (ms): 0000000.00")));
    setTimes(CursorTimes{});
}

void CursorDurationBar::setTimes(const CursorTimes& times) {
    m_cursor->setText(QStringLiteral("Cursor(ms): ") + QString::number(times.cursorMs, 'f', 2));
    m_duration->setText(QStringLiteral("Duration (ms): ") + QString::number(times.durationMs(), 'f', 2));
}

QString CursorDurationBar::cursorText() const { return m_cursor->text(); }
QString CursorDurationBar::durationText() const { return m_duration->text(); }
