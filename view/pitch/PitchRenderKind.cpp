#include "PitchRenderKind.h"

#include <QPainter>

#include "CPitchFrame.h"
#include "CPitchView.h"
#include "PitchComputation.h"
#include "PitchSettingsInForce.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "view/PictureOutput.h"
#include "view/RenderKinds.h"

namespace {

// A pitch view that is never shown, with the request's cursor or selection.
class RenderedPitch : public IRenderedWindow {
public:
    RenderedPitch(const RenderRequest& request, std::shared_ptr<const PitchResults> results) : m_view(request.doc) {
        m_view.setResults(std::move(results));
        if (request.hasSelection()) {
            request.doc->setSelectionFlag(true);
            m_view.followCursor(2, *request.toMs);
        } else if (request.cursorMs) {
            request.doc->setSelectionFlag(false);
            m_view.followCursor(0, *request.cursorMs);
        }
    }
    QImage clientImage(QSize size) override {
        return pictureImage(size, [this](QPainter& p, QSize s) { m_view.drawPicture(p, s); });
    }
    void printPage(QPrinter& printer) override {
        printPicture(printer, pitchSettingsInForce().print, [this](QPainter& p, QSize s) { m_view.drawPicture(p, s); });
    }

private:
    CPitchView m_view;
};

}  // namespace

void registerPitchRenderKind() {
    registerRenderKind("pitch", [](const RenderRequest& request) -> std::unique_ptr<IRenderedWindow> {
        const int audio = request.doc->audioChannelIndex();
        if (audio < 0) {
            sonmetra::showMessage(kPitchNoAudioChannel);
            return nullptr;
        }
        auto results = std::make_shared<PitchResults>();
        sonmetra::AnalysisStatus status = sonmetra::AnalysisStatus::Failed;
        try {
            status = PitchComputation::runAndWait(makePitchJob(*request.doc, audio, pitchSettingsInForce()), *results);
        } catch (const std::bad_alloc&) {
            status = sonmetra::AnalysisStatus::Failed;
        }
        if (status != sonmetra::AnalysisStatus::Ok) {
            sonmetra::showMessage(kPitchRoutineError);
            return nullptr;
        }
        return std::make_unique<RenderedPitch>(request, std::move(results));
    });
}
