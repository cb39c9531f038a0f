#include "SpectrogramCommands.h"

#include <QFileInfo>
#include <QPrinter>

#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "log/CFormLog.h"
#include "view/CKestruneView.h"
#include "view/FileDialogs.h"
#include "view/PictureOutput.h"
#include "view/RenderKinds.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"
#include "view/spectrogram/CSpectrogramFrame.h"
#include "view/spectrogram/CSpectrogramView.h"
#include "view/spectrogram/SpectrogramEntries.h"

namespace {

bool hasData(const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); }

void addAnalysis(const QString& text, const QString& tip, int order, SpectrogramSpan span,
                 std::function<bool(const CKestruneView&)> enabled) {
    ViewCommand c;
    c.menu = QStringLiteral("&Analysis");
    c.text = text;
    c.statusTip = tip;
    c.order = order;
    c.run = [span](CKestruneView& v) { openSpectrogram(v, span); };
    c.enabled = std::move(enabled);
    ViewCommandRegistry::instance().add(std::move(c));
}

void add(const QString& menu, const QString& text, const QString& tip, int order,
         std::function<void(CSpectrogramView&)> run, std::function<bool(const CSpectrogramView&)> enabled = {},
         bool separatorBefore = false) {
    WindowCommandRegistry::instance().add(windowCommand<CSpectrogramView>(
        kSpectrogramContext, menu, text, tip, order, std::move(run), std::move(enabled), separatorBefore));
}

bool logOpen() { return CFormLog::activeLog() != nullptr; }
bool computed(const CSpectrogramView& v) { return v.data() != nullptr; }

// A window of the render command: a view that is never shown, over the whole
// signal or the request's selection.
class RenderedSpectrogram : public IRenderedWindow {
public:
    explicit RenderedSpectrogram(const RenderRequest& request) : m_view(request.doc) {
        sonmetra::CKestruneDoc& doc = *request.doc;
        const sonmetra::CChannel& audio = doc.channel(doc.audioChannelIndex());
        m_view.setShowsProgress(false);
        m_view.setRange(request.hasSelection() ? SpectrogramRange::selection(audio) : SpectrogramRange::whole(audio));
        if (request.cursorMs) m_view.placeCursor(*request.cursorMs, std::nullopt);
    }
    QImage clientImage(QSize size) override { return m_view.pictureImage(size); }
    void printPage(QPrinter& printer) override { m_view.printPicture(printer); }

private:
    CSpectrogramView m_view;
};

std::unique_ptr<IRenderedWindow> makeRenderedSpectrogram(const RenderRequest& request) {
    if (request.doc->audioChannelIndex() < 0) {
        sonmetra::showMessage(kNoAudioChannelText);
        return nullptr;
    }
    return std::make_unique<RenderedSpectrogram>(request);
}

}  // namespace

void openSpectrogram(CKestruneView& view, SpectrogramSpan span) {
    sonmetra::CKestruneDoc* doc = view.document();
    if (doc == nullptr) return;
    const int audio = doc->audioChannelIndex();
    SpectrogramRange range;
    if (audio >= 0) {
        const sonmetra::CChannel& c = doc->channel(audio);
        range = span == SpectrogramSpan::All         ? SpectrogramRange::whole(c)
                : span == SpectrogramSpan::Selection ? SpectrogramRange::selection(c)
                                                     : SpectrogramRange::displayed(c);
    }
    CSpectrogramFrame::open(*doc, range, &view);
}

void saveSpectrogramBitmap(CSpectrogramView& view) {
    const QString title = QString::fromStdString(view.document()->title());
    const auto path = askBitmapPath(&view, QStringLiteral("Save As bmp"), bitmapFileName(title));
    if (!path) return;
    const sonmetra::PrintSize print = view.settingsInForce().print;
    const double dpi = view.logicalDpiX() > 0 ? view.logicalDpiX() : 96.0;
    writeBitmap(view.pictureImage(printSizePx(print, dpi), print.color == 0), *path);
}

void exportSpectrogramFormants(CSpectrogramView& view) {
    if (!view.hasFormants()) return;
    FileDialogRequest request;
    request.save = true;
    request.title = QStringLiteral("Export Formants");
    request.defaultName = QFileInfo(QString::fromStdString(view.document()->title())).completeBaseName() +
                          QStringLiteral("-formants.txt");
    request.defaultSuffix = QStringLiteral("txt");
    request.filters = {QStringLiteral("Text files (*.txt *.tsv)"), QStringLiteral("All files (*)")};
    const auto answer = fileDialogs().ask(&view, request);
    if (answer && !answer->path.isEmpty()) writeFormantTable(*view.data(), answer->path);
}

void enterSpectrogramMarker(CSpectrogramView& view) {
    if (view.cursorMs()) sendToLog(spectrogramMarkerEntry(*view.cursorMs(), view.cursorHz().value_or(0.0)));
}

void enterSpectrogramDuration(CSpectrogramView& view) {
    if (const auto s = view.selectionMs()) sendToLog(spectrogramDurationEntry(s->first, s->second));
}

void enterSpectrogramFormantsAtMarker(CSpectrogramView& view) {
    if (view.hasFormants() && view.cursorMs())
        sendToLog(spectrogramFormantsMarkerEntry(*view.data(), *view.cursorMs()));
}

void enterSpectrogramFormantsSelection(CSpectrogramView& view) {
    const auto s = view.selectionMs();
    if (!view.hasFormants() || !s) return;
    for (const MeasurementRow& row : spectrogramFormantsSelectionEntries(*view.data(), s->first, s->second))
        sendToLog(row);
}

void registerSpectrogramCommands() {
    static bool registered = false;
    if (registered) return;
    registered = true;

    addAnalysis(QStringLiteral("Spectrogram All\tCtrl+G"), QStringLiteral("Spectrogram of the whole signal"), 20,
                SpectrogramSpan::All, hasData);
    addAnalysis(QStringLiteral("Spectrogram Selection\tCtrl+H"), QStringLiteral("Spectrogram of the selection"), 21,
                SpectrogramSpan::Selection, [](const CKestruneView& v) { return hasData(v) && v.selectionPresent(); });
    addAnalysis(QStringLiteral("Spectrogram Window"), QStringLiteral("Spectrogram of the displayed stretch"), 22,
                SpectrogramSpan::Window, hasData);

    const QString view = QStringLiteral("&View"), log = QStringLiteral("&Log"), play = QStringLiteral("&Play");
    add(view, "Save As bmp...", "Saves the picture at the print size as a bitmap", 100, saveSpectrogramBitmap,
        computed);
    add(
        view, "Print...", "Prints the picture", 110,
        [](CSpectrogramView& v) { runPrintDialog(&v, [&v](QPrinter& p) { v.printPicture(p); }); }, computed, true);
    add(
        view, "Print Preview", "Shows the printout", 111,
        [](CSpectrogramView& v) { runPrintPreview(&v, [&v](QPrinter& p) { v.printPicture(p); }); }, computed);
    add(
        view, "Export Formants...", "Writes the formant tracks as tab-separated text", 120, exportSpectrogramFormants,
        [](const CSpectrogramView& v) { return v.hasFormants(); }, true);

    add(log, "Enter at Marker\tCtrl+T", "Sends the cursor's time and frequency to the log", 10, enterSpectrogramMarker,
        [](const CSpectrogramView& v) { return logOpen() && v.cursorMs().has_value(); });
    add(log, "Enter Duration\tCtrl+D", "Sends the selection to the log", 11, enterSpectrogramDuration,
        [](const CSpectrogramView& v) { return logOpen() && v.selectionMs().has_value(); });
    add(log, "Enter Formants at Marker\tCtrl+J", "Sends the formants at the cursor to the log", 12,
        enterSpectrogramFormantsAtMarker,
        [](const CSpectrogramView& v) { return logOpen() && v.hasFormants() && v.cursorMs().has_value(); });
    add(log, "Enter Formants Selection", "Sends the formants of every frame in the selection to the log", 13,
        enterSpectrogramFormantsSelection,
        [](const CSpectrogramView& v) { return logOpen() && v.hasFormants() && v.selectionMs().has_value(); });

    add(
        play, "Play All\tCtrl+Y", "Plays the whole signal", 20, [](CSpectrogramView& v) { v.playAll(); }, computed);
    add(
        play, "Play Selection\tCtrl+U", "Plays the selection", 30, [](CSpectrogramView& v) { v.playSelection(); },
        [](const CSpectrogramView& v) { return computed(v) && v.selectionMs().has_value(); });
    add(
        play, "Play Window", "Plays the analysed stretch", 40, [](CSpectrogramView& v) { v.playWindow(); }, computed);
    add(
        play, "Stop", "Stops playing", 50, [](CSpectrogramView& v) { v.stopPlaying(); },
        [](const CSpectrogramView& v) { return v.playing(); });

    registerRenderKind(QStringLiteral("spectrogram"), makeRenderedSpectrogram);
}
