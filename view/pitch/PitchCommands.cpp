#include "PitchCommands.h"

#include <QFileInfo>
#include <QPainter>
#include <QPrinter>

#include "CPitchFrame.h"
#include "CPitchView.h"
#include "PitchComputation.h"
#include "PitchEntries.h"
#include "PitchRenderKind.h"
#include "PitchSettingsInForce.h"
#include "PitchTrackExport.h"
#include "document/CKestruneDoc.h"
#include "log/CFormLog.h"
#include "view/CKestruneView.h"
#include "view/FileDialogs.h"
#include "view/PictureOutput.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"

namespace {

QString documentTitle(const CPitchView& view) {
    return view.document() != nullptr ? QString::fromStdString(view.document()->title()) : QStringLiteral("Untitled");
}

bool hasTrack(const CPitchView& v) { return v.results() != nullptr && v.document() != nullptr; }
bool logOpen() { return CFormLog::activeLog() != nullptr; }

bool sendRows(const std::vector<MeasurementRow>& rows) {
    if (rows.empty() || !logOpen()) return false;
    for (const MeasurementRow& row : rows) sendToLog(row);
    return true;
}

PictureDrawer drawerOf(const CPitchView& view) {
    const PitchPicture picture = view.picture();
    // The results are shared so that the drawing outlives a recomputation.
    return [picture, keep = view.sharedResults()](QPainter& p, QSize size) { drawPitchPicture(p, size, picture); };
}

void add(const QString& menu, const QString& text, const QString& tip, int order, std::function<void(CPitchView&)> run,
         std::function<bool(const CPitchView&)> enabled = {}, bool separator = false) {
    WindowCommandRegistry::instance().add(windowCommand<CPitchView>(kPitchContext, menu, text, tip, order,
                                                                    std::move(run), std::move(enabled), separator));
}

}  // namespace

void savePitchBitmap(CPitchView& view) {
    const QString proposal = QStringLiteral("Bitmap-PitchTrack of") + documentTitle(view);
    const auto path = askBitmapPath(&view, QStringLiteral("Save As bmp"), proposal);
    if (!path) return;
    const double dpi = view.logicalDpiX() > 0 ? view.logicalDpiX() : 96.0;
    writeBitmap(pictureImage(printSizePx(pitchSettingsInForce().print, dpi), drawerOf(view)), *path);
}

void exportPitchTrackCommand(CPitchView& view) {
    if (!hasTrack(view)) return;
    FileDialogRequest request;
    request.save = true;
    request.title = QStringLiteral("Export Track");
    request.defaultName = QFileInfo(documentTitle(view)).completeBaseName() + QStringLiteral("-pitch.tsv");
    request.defaultSuffix = QStringLiteral("tsv");
    request.filters = {QStringLiteral("Tab-separated text (*.tsv *.txt)"), QStringLiteral("All files (*)")};
    const auto answer = fileDialogs().ask(&view, request);
    if (!answer || answer->path.isEmpty()) return;
    exportPitchTrack(*view.results(), answer->path);
}

void printPitchView(CPitchView& view) {
    const PictureDrawer draw = drawerOf(view);
    runPrintDialog(&view, [draw](QPrinter& printer) { printPicture(printer, pitchSettingsInForce().print, draw); });
}

void printPreviewPitchView(CPitchView& view) {
    const PictureDrawer draw = drawerOf(view);
    runPrintPreview(&view, [draw](QPrinter& printer) { printPicture(printer, pitchSettingsInForce().print, draw); });
}

bool enterPitchAtMarker(CPitchView& view) {
    if (!hasTrack(view) || !view.cursorMs() || view.selectionPresent()) return false;
    return sendRows(pitchMarkerEntry(*view.results(), *view.cursorMs()));
}

bool enterPitchSelection(CPitchView& view) {
    const auto selection = view.selectionMs();
    if (!hasTrack(view) || !selection) return false;
    return sendRows(pitchSelectionEntries(*view.results(), selection->first, selection->second));
}

bool enterPitchAll(CPitchView& view) {
    if (!hasTrack(view)) return false;
    return sendRows(pitchAllEntries(*view.results()));
}

void registerPitchWindow() {
    static bool registered = false;
    if (registered) return;
    registered = true;

    ViewCommand open;
    open.menu = QStringLiteral("&Analysis");
    open.text = kPitchCommandText;
    open.statusTip = QStringLiteral("Extract fundamental frequency");
    open.order = 60;
    open.run = [](CKestruneView& v) { CPitchFrame::showFor(v); };
    open.enabled = [](const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); };
    ViewCommandRegistry::instance().add(std::move(open));

    const QString view = QStringLiteral("&View");
    add(view, "In\tCtrl+B", "Shows half the time around the centre", 10, [](CPitchView& v) { v.zoom(1); });
    add(
        view, "Out\tCtrl+E", "Shows twice the time", 11, [](CPitchView& v) { v.zoom(2); },
        [](const CPitchView& v) { return v.scrollable(); });
    add(view, "Home", "Shows the whole track", 12, [](CPitchView& v) { v.zoom(5); });
    add(
        view, "Selection\tCtrl+Q", "Shows the selection", 13, [](CPitchView& v) { v.zoom(3); },
        [](const CPitchView& v) { return v.selectionPresent(); });
    add(view, "UnZoom", "Returns to the range before the last zoom", 14, [](CPitchView& v) { v.zoom(0); });
    add(view, "Save As bmp...", "Saves the picture as a bitmap at the print size", 100, savePitchBitmap, {}, true);
    add(view, "Export Track...", "Writes time (ms) and F0 (Hz) of every frame as tab-separated text", 101,
        exportPitchTrackCommand, hasTrack);
    add(view, "Print...", "Prints the picture at the print size", 110, printPitchView, {}, true);
    add(view, "Print Preview", "Shows the printout", 111, printPreviewPitchView);

    const QString log = QStringLiteral("&Log");
    add(
        log, "Enter Pitch at Marker\tCtrl+M", "Time, F0 and intensity of the frame at the cursor", 10,
        [](CPitchView& v) { enterPitchAtMarker(v); },
        [](const CPitchView& v) { return hasTrack(v) && logOpen() && v.cursorMs() && !v.selectionPresent(); });
    add(
        log, "Enter Pitch Selection", "Time, F0 and intensity of every frame in the selection", 20,
        [](CPitchView& v) { enterPitchSelection(v); },
        [](const CPitchView& v) { return hasTrack(v) && logOpen() && v.selectionPresent(); });
    add(
        log, "Enter Pitch All", "Time, F0 and intensity of every frame", 30, [](CPitchView& v) { enterPitchAll(v); },
        [](const CPitchView& v) { return hasTrack(v) && logOpen(); });

    const QString play = QStringLiteral("&Play");
    add(play, "Play All\tCtrl+Y", "Plays the whole signal", 10, [](CPitchView& v) { v.playAll(); });
    add(
        play, "Play Selection\tCtrl+U", "Plays the selection", 20, [](CPitchView& v) { v.playSelection(); },
        [](const CPitchView& v) { return v.selectionPresent(); });
    add(play, "Play Window", "Plays the stretch shown", 30, [](CPitchView& v) { v.playWindow(); });
    add(
        play, "Stop", "Stops playing", 40, [](CPitchView& v) { v.stopPlaying(); },
        [](const CPitchView& v) { return v.playing(); }, true);

    registerPitchRenderKind();
}
