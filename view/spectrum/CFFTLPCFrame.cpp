#include "CFFTLPCFrame.h"

#include <QPointer>

#include "CFFTLPCView.h"
#include "SpectrumAnalysis.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "res/StringTable.h"
#include "view/AttachedFrames.h"
#include "view/WindowCommands.h"

namespace {

const QString& roleOf(bool average) { return average ? windowrole::kAverageSpectrum : windowrole::kSpectrum; }

}  // namespace

CFFTLPCFrame::CFFTLPCFrame(sonmetra::CKestruneDoc* doc, bool average, QWidget* parent)
    : QMdiSubWindow(parent), m_doc(doc), m_view(new CFFTLPCView(doc, average)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setCommandContext(this, QStringLiteral("spectrum"));
    setWidget(m_view);
    setWindowTitle(m_view->titleText());
    resize(820, 560);
}

CFFTLPCFrame::~CFFTLPCFrame() { detachIfAttached(this, m_doc, roleOf(m_view->isAverage())); }

CFFTLPCFrame* CFFTLPCFrame::openFor(sonmetra::CKestruneDoc* doc, bool average) {
    double start = 0.0, end = 0.0;
    if (doc == nullptr || !spectrumRangeOf(*doc, average, start, end)) {
        sonmetra::beep();
        sonmetra::showMessage(sonmetra::IDS_FFT_NO_AUDIO_CHANNEL);
        return nullptr;
    }
    auto* frame = qobject_cast<CFFTLPCFrame*>(attachedWindow(doc, roleOf(average)));
    if (frame != nullptr) {
        frame->setWindowTitle(frame->m_view->titleText());
        frame->m_view->setup(start, end, CFFTLPCView::settingsInForce(*doc));
        bringToFront(frame);
        return frame;
    }
    // Computed before it is shown, so that a failure shows no empty window.
    auto fresh = std::make_unique<CFFTLPCFrame>(doc, average);
    if (!fresh->m_view->setup(start, end, CFFTLPCView::settingsInForce(*doc))) return nullptr;
    frame = fresh.release();
    AttachedWindow hooks;
    QPointer<CFFTLPCFrame> guard(frame);
    hooks.samplesReplaced = [guard] {
        if (!guard) return;
        double s = 0.0, e = 0.0;
        // Without an audio channel there is nothing left to show.
        if (!spectrumRangeOf(*guard->m_doc, guard->m_view->isAverage(), s, e))
            guard->close();
        else
            guard->m_view->recompute();
    };
    hooks.documentClosing = [guard] {
        if (!guard) return;
        guard->m_view->detachDocument();
        guard->close();
    };
    openAttachedFrame(frame, doc, roleOf(average), std::move(hooks));
    return frame;
}
