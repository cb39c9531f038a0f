#include "DocumentCommands.h"

#include <QApplication>
#include <QCursor>

#include "view/FileDialogs.h"
#include "document/CKestruneDoc.h"

namespace DocumentCommands {
namespace {

const QStringList kSaveFilters = {"Sonmetra files (*.kvd)", "Wave files (*.wav)"};
const QStringList kKvdFilter = {"Sonmetra files (*.kvd)"};

std::optional<FileDialogAnswer> askSave(QWidget* parent, const QString& title, const QString& name,
                                        const QStringList& filters, int filterIndex) {
    FileDialogRequest request;
    request.save = true;
    request.title = title;
    request.defaultName = name;
    request.defaultSuffix = "kvd";
    request.filters = filters;
    request.filterIndex = filterIndex;
    return fileDialogs().ask(parent, request);
}

// Shows the wait cursor while a file is written.
class WaitCursor {
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
};

}  // namespace

bool save(QWidget* parent, sonmetra::CKestruneDoc& doc) {
    doc.setSelectionFlag(false);
    if (doc.needsSaveAs()) return saveAs(parent, doc);
    WaitCursor wait;
    return doc.save();
}

bool saveAs(QWidget* parent, sonmetra::CKestruneDoc& doc) {
    const auto answer = askSave(parent, "Save file As", "Untitled", kSaveFilters, doc.fileTypeIndex());
    if (!answer) return false;
    WaitCursor wait;
    return doc.saveAs(answer->path.toStdString(), answer->filterIndex == 2 ? 2 : 1);
}

bool saveCopyAs(QWidget* parent, sonmetra::CKestruneDoc& doc) {
    const QString title = QString::fromStdString(doc.title());
    const auto answer = askSave(parent, "Save a Copy As", "Copy of " + title, kKvdFilter, 1);
    if (!answer) return false;
    WaitCursor wait;
    return doc.saveCopyAs(answer->path.toStdString());
}

bool saveSelectionAs(QWidget* parent, sonmetra::CKestruneDoc& doc) {
    const QString title = QString::fromStdString(doc.title());
    const auto answer = askSave(parent, "Save Selection As", "Selection of " + title, kKvdFilter, 1);
    if (!answer) return false;
    WaitCursor wait;
    return doc.saveSelectionAs(answer->path.toStdString());
}

}  // namespace DocumentCommands
