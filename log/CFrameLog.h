// The child frame of a measurement log in the main frame's workspace. Its
// title follows the log's (with the modified mark), activating it makes its
// log the one that entries go to, and closing a modified log asks first.
#pragma once

#include <QMdiSubWindow>

class CFormLog;
class QMdiArea;

class CFrameLog : public QMdiSubWindow {
    Q_OBJECT
public:
    explicit CFrameLog(CFormLog* form, QWidget* parent = nullptr);
    CFormLog* form() const { return m_form; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    CFormLog* m_form;
};

// The main frame's "New log": an empty log window in the workspace.
CFormLog* newLog(QMdiArea* area);
// The main frame's "Open log": a file dialog, then the file loaded into a
// new log window; null when cancelled or refused (after its message).
CFormLog* openLog(QMdiArea* area, QWidget* parent);
// Opens a given log file into a new window (the dialog already answered).
CFormLog* openLogFile(QMdiArea* area, const QString& path);
