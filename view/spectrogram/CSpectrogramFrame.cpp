#include "CSpectrogramFrame.h"

#include <QMdiArea>
#include <algorithm>

#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "view/AppServices.h"
#include "view/AttachedFrames.h"
#include "view/CKestruneView.h"
#include "view/WindowCommands.h"
#include "view/spectrogram/CSpectrogramView.h"

namespace {

constexpr int kDefaultWidth = 900;
constexpr int kDefaultHeight = 600;

}  // namespace

CSpectrogramFrame::CSpectrogramFrame(sonmetra::CKestruneDoc* doc, QWidget* parent)
    : QMdiSubWindow(parent), m_doc(doc), m_view(new CSpectrogramView(doc)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWidget(m_view);
    setWindowTitle(QString::fromStdString(doc->title()) + QStringLiteral("::Spectrogram"));
    setCommandContext(this, kSpectrogramContext);
}

CSpectrogramFrame::~CSpectrogramFrame() {
    m_view->stopPlaying();
    detachIfAttached(this, m_doc, windowrole::kSpectrogram);
}

CSpectrogramFrame* CSpectrogramFrame::of(const sonmetra::CKestruneDoc* doc) {
    return qobject_cast<CSpectrogramFrame*>(attachedWindow(doc, windowrole::kSpectrogram));
}

CSpectrogramFrame* CSpectrogramFrame::open(sonmetra::CKestruneDoc& doc, const SpectrogramRange& range,
                                           CKestruneView* waveform) {
    if (doc.audioChannelIndex() < 0) {
        sonmetra::beep();
        sonmetra::showMessage(kNoAudioChannelText);
        return nullptr;
    }
    if (range.empty()) {
        sonmetra::beep();
        sonmetra::showMessage(kEmptyRangeText);
        return nullptr;
    }
    if (CSpectrogramFrame* frame = of(&doc)) {
        frame->m_view->setRange(range);
        if (waveform != nullptr) frame->m_view->setWaveformView(waveform);
        bringToFront(frame);
        frame->m_view->recompute();
        frame->m_view->takeWaveformMarks();
        return frame;
    }
    auto* frame = new CSpectrogramFrame(&doc);
    frame->m_view->setRange(range);
    frame->m_view->setWaveformView(waveform);
    if (QMdiArea* area = AppServices::instance().mdiArea) {
        const QSize room = area->viewport()->size();
        frame->resize(std::min(kDefaultWidth, std::max(room.width() * 3 / 4, 480)),
                      std::min(kDefaultHeight, std::max(room.height() * 3 / 4, 320)));
    } else {
        frame->resize(kDefaultWidth, kDefaultHeight);
    }
    AttachedWindow hooks;
    CSpectrogramView* view = frame->m_view;
    hooks.samplesReplaced = [view] { view->samplesReplaced(); };
    hooks.labelsChanged = [view] { view->update(); };
    hooks.cursorStep = [view](int step, double ms) { view->followWaveformCursor(step, ms); };
    openAttachedFrame(frame, &doc, windowrole::kSpectrogram, std::move(hooks));
    if (!view->recompute()) {
        // The window goes at once: a second command must not find it.
        detachWindow(&doc, windowrole::kSpectrogram);
        frame->close();
        return nullptr;
    }
    view->takeWaveformMarks();
    return frame;
}
