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
