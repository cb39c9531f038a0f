#include "SpectrumRenderKind.h"

#include "CFFTLPCView.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "view/RenderKinds.h"

namespace {

// A spectrum view that is never shown; its client image is the plot's picture.
class RenderedSpectrum : public IRenderedWindow {
public:
    RenderedSpectrum(sonmetra::CKestruneDoc* doc, bool average) : m_view(doc, average) { m_view.setInteractive(false); }
    bool compute() {
        double start = 0.0, end = 0.0;
        spectrumRangeOf(*m_view.document(), m_view.isAverage(), start, end);
        return m_view.setup(start, end, CFFTLPCView::settingsInForce(*m_view.document()));
    }
    QImage clientImage(QSize size) override { return m_view.screenImage(size); }
    void printPage(QPrinter& printer) override { m_view.printOn(printer); }

private:
    CFFTLPCView m_view;
};

}  // namespace

void registerSpectrumRenderKind() {
    registerRenderKind("spectrum", [](const RenderRequest& request) -> std::unique_ptr<IRenderedWindow> {
        if (!request.cursorMs && !request.hasSelection()) {
            sonmetra::showMessage(
                "The spectrum needs --cursor MS (FFT/LPC at the cursor) or --from MS --to MS (averaged over the "
                "selection).");
            return nullptr;
        }
        auto window = std::make_unique<RenderedSpectrum>(request.doc, request.hasSelection());
        if (!window->compute()) return nullptr;
        return window;
    });
}
