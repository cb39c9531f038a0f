#include "SpectrumCommands.h"

#include "CFFTLPCFrame.h"
#include "CFFTLPCView.h"
#include "SpectrumRenderKind.h"
#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"

namespace {

bool hasData(const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); }

void addAnalysisCommand(const QString& text, const QString& tip, int order, bool average,
                        std::function<bool(const CKestruneView&)> enabled) {
    ViewCommand c;
    c.menu = QStringLiteral("&Analysis");
    c.text = text;
    c.statusTip = tip;
    c.order = order;
    c.run = [average](CKestruneView& v) { CFFTLPCFrame::openFor(v.document(), average); };
    c.enabled = std::move(enabled);
    ViewCommandRegistry::instance().add(std::move(c));
}

void addWindowCommand(const QString& menu, const QString& text, const QString& tip, int order,
                      std::function<void(CFFTLPCView&)> run, std::function<bool(const CFFTLPCView&)> enabled = {},
                      bool separatorBefore = false) {
    WindowCommandRegistry::instance().add(windowCommand<CFFTLPCView>(
        kSpectrumContext, menu, text, tip, order, std::move(run), std::move(enabled), separatorBefore));
}

}  // namespace

void registerSpectrumWindow() {
    static bool registered = false;
    if (registered) return;
    registered = true;

    addAnalysisCommand(QStringLiteral("FFT/LPC\tCtrl+F"), QStringLiteral("Perform FFT & LPC analysis\nFFT/LPC"), 10,
                       false, [](const CKestruneView& v) { return hasData(v) && v.cursorPlaced(); });
    addAnalysisCommand(QStringLiteral("FFT/LPC Selection"),
                       QStringLiteral("Perform average FFT & LPC analysis for a selection\nFFT/LPC average"), 11, true,
                       [](const CKestruneView& v) { return hasData(v) && v.selectionPresent(); });

    const QString view = QStringLiteral("&View"), log = QStringLiteral("&Log");
    addWindowCommand(view, QStringLiteral("Save As bmp..."),
                     QStringLiteral("Writes the spectrum at the print size as a bitmap"), 100,
                     [](CFFTLPCView& v) { v.saveAsBitmap(); });
    addWindowCommand(
        view, QStringLiteral("Print..."), QStringLiteral("Prints the spectrum at the print size"), 110,
        [](CFFTLPCView& v) { v.printSpectrum(); }, {}, true);
    addWindowCommand(view, QStringLiteral("Print Preview"), QStringLiteral("Shows the printed page"), 111,
                     [](CFFTLPCView& v) { v.previewSpectrum(); });
    addWindowCommand(
        view, QStringLiteral("Copy\tCtrl+C"),
        QStringLiteral("Copies frequency, FFT and LPC levels as tab-separated text"), 120,
        [](CFFTLPCView& v) { v.copySpectrum(); }, [](const CFFTLPCView& v) { return !v.result().empty(); }, true);

    addWindowCommand(
        log, QStringLiteral("Enter at Marker\tCtrl+T"),
        QStringLiteral("Sends the marker's frequency and levels to the log"), 10,
        [](CFFTLPCView& v) { v.enterAtMarker(); }, [](const CFFTLPCView& v) { return v.canEnterAtMarker(); });
    addWindowCommand(
        log, QStringLiteral("Enter Formants and Bandwidths"),
        QStringLiteral("Sends F1 to F5 and their bandwidths to the log"), 11, [](CFFTLPCView& v) { v.enterFormants(); },
        [](const CFFTLPCView& v) { return v.canEnterFrame(); });
    addWindowCommand(
        log, QStringLiteral("Enter All FFT/LPC Frame"),
        QStringLiteral("Sends the spectrum to the log, one row per frequency step"), 12,
        [](CFFTLPCView& v) { v.enterAllFrame(); }, [](const CFFTLPCView& v) { return v.canEnterFrame(); });

    registerSpectrumRenderKind();
}
