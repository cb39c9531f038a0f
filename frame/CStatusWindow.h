// The status window: one row per present channel of the active waveform
// view with its value at the cursor and its selection, above a line with the
// cursor time and the displayed window. One per application, docked in the
// main frame; it also feeds the cursor/duration bar.
#pragma once

#include <QDockWidget>

#include "view/IViewReadouts.h"

class QLabel;
class QMainWindow;
class QTableWidget;
class CursorDurationBar;

class CStatusWindow : public QDockWidget, public IViewReadouts {
    Q_OBJECT
public:
    explicit CStatusWindow(QWidget* parent = nullptr);
    ~CStatusWindow() override;

    void setCursorBar(CursorDurationBar* bar) { m_bar = bar; }
    CursorDurationBar* cursorBar() const { return m_bar; }

    void setRows(const std::vector<ReadoutRow>& rows) override;
    void setCell(int row, int column, double first, double second) override;
    void setCursorTime(const CursorTimes& times) override;

    QTableWidget* table() const { return m_table; }
    QString cellText(int row, int column) const;
    QString timeText() const;

private:
    QTableWidget* m_table;
    QLabel* m_time;
    CursorDurationBar* m_bar = nullptr;
};

// Creates the status window docked at the bottom of the main window, puts a
// cursor/duration bar into its status bar, and makes the pair the readouts
// that every waveform view feeds.
CStatusWindow* createStatusWindow(QMainWindow* mainWindow);
