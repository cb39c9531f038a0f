#include "view/FileDialogs.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QRegularExpression>

#include "document/MessageService.h"
#include "res/StringTable.h"

namespace {

class QtFileDialogs : public IFileDialogs {
public:
    std::optional<FileDialogAnswer> ask(QWidget* parent, const FileDialogRequest& r) override {
        QFileDialog dialog(parent, r.title);
        dialog.setAcceptMode(r.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
        dialog.setFileMode(r.save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
        dialog.setNameFilters(r.filters);
        if (r.filterIndex >= 1 && r.filterIndex <= r.filters.size())
            dialog.selectNameFilter(r.filters.at(r.filterIndex - 1));
        if (!r.defaultSuffix.isEmpty()) {
            // A name typed without a suffix gets the one of the filter chosen
            // at that moment, so that the dialog's own replace question is
            // about the file that will be written.
            const QString initial = r.filterIndex >= 1 && r.filterIndex <= r.filters.size()
                                        ? filterSuffix(r.filters.at(r.filterIndex - 1))
                                        : QString();
            dialog.setDefaultSuffix(initial.isEmpty() ? r.defaultSuffix : initial);
            QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog, &r](const QString& filter) {
                const QString suffix = filterSuffix(filter);
                dialog.setDefaultSuffix(suffix.isEmpty() ? r.defaultSuffix : suffix);
            });
        }
        if (!r.defaultName.isEmpty()) dialog.selectFile(r.defaultName);
        if (r.save) dialog.setOption(QFileDialog::ReadOnly, false);
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
        return FileDialogAnswer{dialog.selectedFiles().first(),
                                static_cast<int>(r.filters.indexOf(dialog.selectedNameFilter())) + 1};
    }
};

QtFileDialogs g_qtDialogs;
IFileDialogs* g_dialogs = nullptr;

}  // namespace

IFileDialogs& fileDialogs() { return g_dialogs ? *g_dialogs : g_qtDialogs; }

IFileDialogs* setFileDialogs(IFileDialogs* dialogs) {
    IFileDialogs* previous = g_dialogs;
    g_dialogs = dialogs;
    return previous;
}

QString filterSuffix(const QString& filter) {
    static const QRegularExpression pattern(QStringLiteral("\\*\\.([A-Za-z0-9]+)"));
    const QRegularExpressionMatch m = pattern.match(filter);
    return m.hasMatch() ? m.captured(1) : QString();
}

namespace {

// Suffixes that name a kind of file the program reads or writes; a name
// ending in one of them under another filter is a contradiction.
bool isFileTypeSuffix(const QString& suffix, const QStringList& filters) {
    static const QStringList known = {"kvd", "wav",  "wave", "nsp", "aif", "aiff",    "aifc", "au",
                                      "snd", "flac", "ogg",  "txt", "raw", "dat",     "bmp",  "png",
                                      "pdf", "cfg",  "log",  "csv", "tsv", "textgrid"};
    if (known.contains(suffix, Qt::CaseInsensitive)) return true;
    for (const QString& f : filters)
        if (filterSuffix(f).compare(suffix, Qt::CaseInsensitive) == 0) return true;
    return false;
}

}  // namespace

QString pathForFilter(const QString& path, const QStringList& filters, int filterIndex) {
    if (filterIndex < 1 || filterIndex > filters.size() || path.isEmpty()) return path;
    const QString wanted = filterSuffix(filters.at(filterIndex - 1));
    if (wanted.isEmpty()) return path;
    const QFileInfo info(path);
    const QString suffix = info.suffix();
    if (suffix.compare(wanted, Qt::CaseInsensitive) == 0) return path;
    // A name of dots alone (".wav") is a name, not a suffix.
    if (!suffix.isEmpty() && !info.completeBaseName().isEmpty() && isFileTypeSuffix(suffix, filters))
        return path.left(path.size() - suffix.size()) + wanted;
    return path + "." + wanted;
}

std::optional<FileDialogAnswer> askSaveFile(QWidget* parent, const FileDialogRequest& request) {
    std::optional<FileDialogAnswer> answer = fileDialogs().ask(parent, request);
    if (!answer || answer->path.isEmpty()) return std::nullopt;
    const QString path = pathForFilter(answer->path, request.filters, answer->filterIndex);
    if (path != answer->path && QFileInfo::exists(path)) {
        const std::string question = sonmetra::formatString(sonmetra::IDS_REPLACE_FILE_Q, path.toStdString());
        if (sonmetra::showMessage(question, sonmetra::MsgButtons::YesNo, sonmetra::MsgIcon::Question) !=
            sonmetra::MsgAnswer::Yes)
            return std::nullopt;
    }
    answer->path = path;
    return answer;
}
