#include "WaveformRenderKind.h"

#include "ViewPrinting.h"
#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"
#include "view/RenderKinds.h"

namespace {

// A waveform view that is never shown, with the request's cursor or selection.
class RenderedWaveform : public IRenderedWindow {
public:
    explicit RenderedWaveform(const RenderRequest& request) : m_view(request.doc) {
        m_view.setCursorPlaced(request.cursorMs.has_value());
        m_view.setSelectionPresent(request.hasSelection());
        m_view.resize(request.size);
    }
    QImage clientImage(QSize size) override {
        // The client area, without the scroll bars, is what takes the size.
        m_view.resize(size);
        m_view.resize(size + (size - m_view.clientRect().size()));
        m_view.scrollBarFromRange();
        QImage image = m_view.renderNow().copy(QRect(QPoint(0, 0), m_view.clientRect().size()));
        return image;
    }
    void printPage(QPrinter& printer) override { printView(m_view, printer); }

private:
    CKestruneView m_view;
};

}  // namespace

void registerWaveformRenderKind() {
    registerRenderKind("waveform", [](const RenderRequest& request) -> std::unique_ptr<IRenderedWindow> {
        return std::make_unique<RenderedWaveform>(request);
    });
}
