// The cursor/duration bar of the main frame's status bar: "Cursor(ms): " and
// "Duration (ms): " of the active waveform view.
#pragma once

#include <QWidget>

#include "view/IViewReadouts.h"

class QLabel;

class CursorDurationBar : public QWidget {
    Q_OBJECT
public:
    explicit CursorDurationBar(QWidget* parent = nullptr);
    void setTimes(const CursorTimes& times);
    QString cursorText() const;
    QString durationText() const;

private:
    QLabel* m_cursor;
    QLabel* m_duration;
};
