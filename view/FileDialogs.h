// The file dialogs of every window behind one small interface, so that
// GUI tests can answer them like a user would without a native dialog.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

class QWidget;

struct FileDialogRequest {
    bool save = false;
    QString title;
    QString defaultName;    // file name the dialog starts with
    QString defaultSuffix;  // appended when the user types none
    QStringList filters;    // "Sonmetra files (*.kvd)", ...
    int filterIndex = 1;    // 1-based, as the file type index counts
};

struct FileDialogAnswer {
    QString path;
    int filterIndex = 1;  // 1-based index of the filter chosen
};

class IFileDialogs {
public:
    virtual ~IFileDialogs() = default;
    virtual std::optional<FileDialogAnswer> ask(QWidget* parent, const FileDialogRequest& request) = 0;
};

// The dialogs in force (QFileDialog unless a test installed its own).
IFileDialogs& fileDialogs();
IFileDialogs* setFileDialogs(IFileDialogs* dialogs);

// The suffix a filter stands for: "wav" for "Wave files (*.wav)", empty for
// a filter that matches any name ("(*)").
QString filterSuffix(const QString& filter);
// `path` made to end in the suffix of filter `filterIndex` (1-based): the
// suffix is added to a name without one, and replaces a suffix of another
// file type ("take1.kvd" under "Wave files" becomes "take1.wav"). A suffix
// that names no file type ("take.1") stays, with the filter's added after it.
QString pathForFilter(const QString& path, const QStringList& filters, int filterIndex);
// A save dialog whose answer always carries the chosen filter's suffix, so
// that the contents written and the name never disagree. When that changes
// the name the user confirmed and a file of the new name exists, the user
// is asked before it is replaced; "No" counts as Cancel.
std::optional<FileDialogAnswer> askSaveFile(QWidget* parent, const FileDialogRequest& request);
