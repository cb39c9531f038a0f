// The measurement log: a table of entries sent from the waveform and
// analysis windows, kept in a CDatatbl5 grid and saved as a TAB-separated
// text file (LogFile.h).
//
// Layout of the table: the row titles ("Entry 1", "Entry 2", ...) stand in
// the vertical header, the column headings in the horizontal header; column
// 0 holds the kind of entry ("Marker Entry: time", ...), the columns after it
// the entry's values. In the file the first line carries the headings and
// the first cell of every line the row title.
//
// Entries may name their values ("Audio time (ms)", "Airflow (ml/s)"). The
// first entry's names become the column headings; an entry whose names
// differ from those above it gets a heading row first, titled "Columns",
// that holds its names, so that every entry stands under the names of its
// own values in the window and in the file. Values without a name are
// "Value 1", "Value 2", ...
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>
#include <vector>

#include "LogFile.h"

class CDatatbl5;
class QPushButton;

class CFormLog : public QWidget {
    Q_OBJECT
public:
    explicit CFormLog(QWidget* parent = nullptr);
    ~CFormLog() override;

    // The open log that entries go to: the one activated last; null when no
    // log window is open.
    static CFormLog* activeLog();
    // Makes this the log that entries go to (its window was activated).
    void makeActive();
    // Its window is closing: entries no longer go to it.
    void markClosed();

    // The file dialogs of the log (QFileDialog unless a test installed its
    // own): returns the chosen path, empty for Cancel.
    using FileDialogHook =
        std::function<QString(QWidget* parent, const QString& title, const QString& filter, bool save)>;
    static void setFileDialogHook(FileDialogHook hook);
    static QString askFileName(QWidget* parent, const QString& title, const QString& filter, bool save);

    // Appends one entry: its row title "Entry %d", the kind of entry in
    // column 0 and the values after it; the log becomes modified.
    void addEntry(const QString& kind, const std::vector<double>& values);
    // The same with the names of the values (one per value; missing ones
    // are "Value N"), shown as described above.
    void addEntry(const QString& kind, const std::vector<double>& values, const QStringList& headings);
    // The title of a heading row.
    static QString headingRowTitle() { return QStringLiteral("Columns"); }

    // Loads a log file in place of the table, with a progress dialog; false
    // after the message when the file is refused.
    bool loadFile(const QString& path);
    bool save();
    bool saveAs();
    bool saveAsText();
    // The question asked when a modified log closes; true when it may close.
    bool queryClose();

    QString title() const { return m_title; }
    QString filePath() const { return m_path; }
    bool isModified() const { return m_modified; }
    int entryCount() const { return m_entryCount; }
    CDatatbl5* grid() const { return m_grid; }
    // The table as file rows: the headings first, then one row per entry.
    std::vector<sonmetra::LogRow> rows() const;

signals:
    void titleChanged(const QString& title);
    void modifiedChanged(bool modified);

private:
    bool writeTo(const QString& path);
    void setModified(bool on);
    void setTitle(const QString& title);
    void ensureValueColumns(int columns);
    void appendHeadingRow(const QStringList& names);
    void markHeadingRow(int row);

    CDatatbl5* m_grid;
    QPushButton* m_saveButton;
    QPushButton* m_saveAsButton;
    QPushButton* m_saveTextButton;
    QString m_title;
    QString m_path;
    QString m_cornerTitle = "Entry";
    bool m_modified = false;
    bool m_filling = false;
    int m_entryCount = 0;
    QStringList m_headingsInForce;  // names of the value columns for the rows at the bottom
};
