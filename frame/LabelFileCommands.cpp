#include "LabelFileCommands.h"

#include <QFileInfo>

#include "CChildFrame.h"
#include "LabelFileDialogs.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "document/labels/LabelTransfer.h"
#include "view/CKestruneView.h"
#include "view/DocumentWindows.h"
#include "view/EditCommands.h"
#include "view/FileDialogs.h"
#include "view/LabelController.h"

using namespace sonmetra;

namespace {

const QStringList kLabelFilters = {"TextGrid files (*.TextGrid)", "Label text files (*.txt)", "All files (*)"};

bool anyLabels(const CKestruneDoc& doc) {
    for (int i = 0; i < doc.channelCount(); ++i)
        if (!doc.channel(i).m_labels.empty()) return true;
    return false;
}

}  // namespace

void addLabelFileCommands(QWidget* parent, std::function<CChildFrame*()> activeFrame, const FileMenuAdder& add) {
    auto doc = [activeFrame]() -> CKestruneDoc* {
        CChildFrame* f = activeFrame();
        return f ? f->document() : nullptr;
    };
    add(
        "Import Labels...", [parent, activeFrame, doc] { importLabels(parent, *doc(), activeFrame()->kestruneView()); },
        [doc] { return doc() && doc()->holdsData(); });
    add(
        "Export Labels...", [parent, doc] { exportLabels(parent, *doc()); },
        [doc] { return doc() && doc()->holdsData() && anyLabels(*doc()); });
}

void importLabels(QWidget* parent, CKestruneDoc& doc, CKestruneView* view) {
    FileDialogRequest request;
    request.title = "Import Labels";
    request.filters = kLabelFilters;
    const auto answer = fileDialogs().ask(parent, request);
    if (!answer) return;
    const std::string path = answer->path.toStdString();
    const QString fileName = QFileInfo(answer->path).fileName();
    const auto file = readLabelFile(path);
    if (!file) return;
    if (file->tiers.empty()) {
        showMessage("'" + fileName.toStdString() + "' holds no tiers.", MsgButtons::Ok, MsgIcon::Information);
        return;
    }
    CImportLabelsDialog dialog(*file, doc, fileName, parent);
    if (dialog.exec() != QDialog::Accepted) return;

    // New labels take the font, colour and justification of the last label
    // entered in the view, and a line, so that interval boundaries show.
    CLabel style;
    if (view)
        if (const auto* labels = view->extension<LabelController>()) style = labels->labelTemplate();
    style.setLineFlag(true);
    auto prepared = prepareLabelImport(doc, *file, dialog.assignments(), style, fileName.toStdString());
    if (!prepared) return;
    if (view)
        if (auto* edit = view->extension<EditController>())
            if (!edit->undo().saveForUndo(doc)) return;
    applyLabelImport(doc, std::move(*prepared));
    if (view) view->requestRedraw();
    labelsChanged(&doc);
}

void exportLabels(QWidget* parent, const CKestruneDoc& doc) {
    CExportLabelsDialog dialog(doc, parent);
    if (dialog.exec() != QDialog::Accepted) return;
    const auto tiers = dialog.tiers();

    FileDialogRequest request;
    request.save = true;
    request.title = "Export Labels";
    request.defaultName = QFileInfo(QString::fromStdString(doc.title())).completeBaseName();
    request.defaultSuffix = "TextGrid";
    request.filters = kLabelFilters.mid(0, 2);
    const auto answer = fileDialogs().ask(parent, request);
    if (!answer) return;
    const std::string path = answer->path.toStdString();
    // The file's ending decides; without a known one, the filter chosen does.
    auto format = labelFileFormatFor(path);
    if (!format) format = answer->filterIndex == 2 ? LabelFileFormat::LabelTrack : LabelFileFormat::TextGrid;
    exportLabelFile(doc, tiers, *format, path);
}
