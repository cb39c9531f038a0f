#include "view/FileDialogs.h"

#include <QFileDialog>

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
        if (!r.defaultSuffix.isEmpty()) dialog.setDefaultSuffix(r.defaultSuffix);
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
