#include "SpectrumOptionCommands.h"

#include "FftLpcOptionDialog.h"
#include "LogOptionDialog.h"
#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"
#include "view/spectrum/CFFTLPCView.h"
#include "view/spectrum/SpectrumCommands.h"

namespace {

bool hasData(const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); }

void addViewOption(const QString& text, const QString& tip, int order, std::function<void(CKestruneView&)> run) {
    ViewCommand c;
    c.menu = QStringLiteral("&Options");
    c.text = text;
    c.statusTip = tip;
    c.order = order;
    c.run = std::move(run);
    c.enabled = hasData;
    ViewCommandRegistry::instance().add(std::move(c));
}

}  // namespace

void registerSpectrumOptionCommands() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    const QString fftTip = QStringLiteral("Settings of the FFT/LPC spectrum window");
    const QString logTip = QStringLiteral("The frequency step of entering a whole spectrum into the log");
    addViewOption(QStringLiteral("FFT/LPC..."), fftTip, 200,
                  [](CKestruneView& v) { runFftLpcOptions(v.document(), &v); });
    addViewOption(QStringLiteral("Log..."), logTip, 330, [](CKestruneView& v) { runLogOptions(&v); });

    auto& windows = WindowCommandRegistry::instance();
    const QString options = QStringLiteral("&Options");
    windows.add(windowCommand<CFFTLPCView>(
        kSpectrumContext, options, QStringLiteral("FFT/LPC..."), fftTip, 10,
        [](CFFTLPCView& v) { runFftLpcOptions(v.document(), &v); },
        [](const CFFTLPCView& v) { return v.document() != nullptr; }));
    windows.add(windowCommand<CFFTLPCView>(kSpectrumContext, options, QStringLiteral("Log..."), logTip, 20,
                                           [](CFFTLPCView& v) { runLogOptions(&v); }));
}
