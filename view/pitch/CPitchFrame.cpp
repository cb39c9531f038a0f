#include "CPitchFrame.h"

#include <QApplication>
#include <QProgressDialog>
#include <QTimer>
#include <new>

#include "CPitchView.h"
#include "PitchSettingsInForce.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "view/AttachedFrames.h"
#include "view/CKestruneView.h"
#include "view/WindowCommands.h"

namespace {

constexpr int kProgressPollMs = 50;
// Short computations finish before the dialog would show.
constexpr int kProgressDelayMs = 300;

}  // namespace

CPitchFrame* CPitchFrame::of(const sonmetra::CKestruneDoc* doc) {
    return qobject_cast<CPitchFrame*>(attachedWindow(doc, windowrole::kPitch));
}

void CPitchFrame::recomputeAll() {
    for (QWidget* w : QApplication::allWidgets())
        if (auto* frame = qobject_cast<CPitchFrame*>(w)) {
            frame->m_view->update();
            frame->computePitchTrack();
        }
}

CPitchFrame* CPitchFrame::showFor(CKestruneView& view) {
    sonmetra::CKestruneDoc* doc = view.document();
    if (doc == nullptr || !doc->holdsData()) return nullptr;
    if (doc->audioChannelIndex() < 0) {
        sonmetra::showMessage(kPitchNoAudioChannel);
        return nullptr;
    }
    CPitchFrame* frame = of(doc);
    if (frame == nullptr) {
        frame = new CPitchFrame(doc, &view);
        QPointer<CPitchFrame> guard(frame);
        AttachedWindow hooks;
        hooks.samplesReplaced = [guard] {
            if (!guard) return;
            guard->m_view->labelsChanged();  // the labels moved with the samples
            guard->m_view->syncCursorFromWaveform();
            guard->computePitchTrack();
        };
        hooks.labelsChanged = [guard] {
            if (guard) guard->m_view->labelsChanged();
        };
        hooks.cursorStep = [guard](int step, double ms) {
            if (guard) guard->m_view->followCursor(step, ms);
        };
        hooks.documentClosing = [guard] {
            if (!guard) return;
            guard->detachDocument();
            guard->close();
        };
        openAttachedFrame(frame, doc, windowrole::kPitch, std::move(hooks));
    } else {
        frame->m_view->setWaveformView(&view);
        bringToFront(frame);
    }
    frame->m_view->syncCursorFromWaveform();
    frame->computePitchTrack();
    return frame;
}

CPitchFrame::CPitchFrame(sonmetra::CKestruneDoc* doc, CKestruneView* waveform, QWidget* parent)
    : QMdiSubWindow(parent), m_doc(doc), m_view(new CPitchView(doc)), m_progressTimer(new QTimer(this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setCommandContext(this, QStringLiteral("pitch"));
    setWidget(m_view);
    m_view->setWaveformView(waveform);
    setWindowTitle(QString::fromStdString(doc->title()) + QStringLiteral("::Pitch"));
    resize(760, 520);
    m_progressTimer->setInterval(kProgressPollMs);
    connect(m_progressTimer, &QTimer::timeout, this, [this] {
        if (!m_progress) return;
        const int total = m_computation.framesTotal();
        if (total > 0 && m_progress->maximum() != total) m_progress->setMaximum(total);
        m_progress->setValue(std::min(m_computation.framesDone(), std::max(total, 0)));
    });
}

CPitchFrame::~CPitchFrame() {
    m_computation.abandon();
    detachIfAttached(this, m_doc, windowrole::kPitch);
}

void CPitchFrame::detachDocument() {
    m_computation.abandon();
    closeProgress();
    m_view->detachDocument();
    m_doc = nullptr;
}

void CPitchFrame::computePitchTrack() {
    if (m_doc == nullptr) return;
    setWindowTitle(QString::fromStdString(m_doc->title()) + QStringLiteral("::Pitch"));
    const int audio = m_doc->audioChannelIndex();
    if (audio < 0 || !m_doc->holdsData()) {
        m_computation.abandon();
        closeProgress();
        m_view->setResults(nullptr);
        m_view->setMessage(QString::fromUtf8(kPitchNoAudioChannel));
        return;
    }
    PitchJob job;
    try {
        job = makePitchJob(*m_doc, audio, pitchSettingsInForce());
    } catch (const std::bad_alloc&) {
        m_computation.abandon();
        finished(sonmetra::AnalysisStatus::Failed, nullptr);
        return;
    }
    if (m_view->results() == nullptr) m_view->setMessage(QStringLiteral("Computing the pitch track..."));
    m_computation.start(std::move(job), [this](sonmetra::AnalysisStatus status, std::shared_ptr<PitchResults> r) {
        finished(status, std::move(r));
    });
    showProgress();
}

void CPitchFrame::cancelComputation() {
    if (m_computation.running()) m_computation.cancel();
}

void CPitchFrame::showProgress() {
    if (!m_progress) {
        m_progress =
            new QProgressDialog(QStringLiteral("Computing the pitch track..."), QStringLiteral("Cancel"), 0, 1, this);
        m_progress->setWindowTitle(QStringLiteral("Pitch"));
        // Modeless: the waveform view and this window stay usable meanwhile.
        m_progress->setWindowModality(Qt::NonModal);
        m_progress->setAutoClose(false);
        m_progress->setAutoReset(false);
        m_progress->setMinimumDuration(kProgressDelayMs);
        connect(m_progress, &QProgressDialog::canceled, this, &CPitchFrame::cancelComputation);
    }
    m_progress->setMaximum(1);
    m_progress->setValue(0);
    m_progressTimer->start();
}

void CPitchFrame::closeProgress() {
    m_progressTimer->stop();
    if (m_progress) {
        m_progress->disconnect(this);
        m_progress->hide();
        m_progress->deleteLater();
        m_progress = nullptr;
    }
}

void CPitchFrame::finished(sonmetra::AnalysisStatus status, std::shared_ptr<PitchResults> results) {
    closeProgress();
    switch (status) {
        case sonmetra::AnalysisStatus::Ok: {
            // A window length the routine had to lower stays in force, so
            // that the dialog shows the value used.
            sonmetra::PitchSettings& inForce = pitchSettingsInForce();
            if (results->settings.windowMs != inForce.windowMs) inForce.windowMs = results->settings.windowMs;
            m_view->setMessage(QString());
            m_view->setResults(std::move(results));
            break;
        }
        case sonmetra::AnalysisStatus::Cancelled:
            // The track shown before (or none) stays.
            if (m_view->results() == nullptr) m_view->setMessage(QStringLiteral("Cancelled: no pitch track"));
            break;
        case sonmetra::AnalysisStatus::Failed:
            m_view->setResults(nullptr);
            m_view->setMessage(QStringLiteral("No pitch track"));
            // Shown once this call has returned: the window may close while the box is up.
            QTimer::singleShot(0, [] { sonmetra::showMessage(kPitchRoutineError); });
            break;
    }
}
