// The pitch window of a document: a child frame titled "<title>::Pitch" with
// a CPitchView, at most one per document. It computes the pitch track of the
// audio channel over the whole signal from the pitch settings in force, with
// a progress dialog that can cancel, and again whenever the samples are
// replaced (Undo, Paste, Cut, Smooth, a new recording), the settings change
// or the Pitch command is given once more.
//
// The computation runs on a worker (PitchComputation.h). Until a new track
// is complete the previous one stays shown; a cancelled computation leaves
// it as it was; a failed one shows "Error in Pitch routine" and leaves no
// track. A window length that the computation lowered stays in force.
#pragma once

#include <QMdiSubWindow>
#include <QPointer>
#include <QProgressDialog>
#include <memory>

#include "PitchComputation.h"

class QTimer;
class CKestruneView;
class CPitchView;

namespace sonmetra {
class CKestruneDoc;
}

// The exact text of every failure of the computation.
inline constexpr char kPitchRoutineError[] = "Error in Pitch routine";
// A document without an audio channel has nothing to track.
inline constexpr char kPitchNoAudioChannel[] =
    "The pitch track is computed on the audio channel, and this document has none.";

class CPitchFrame : public QMdiSubWindow {
    Q_OBJECT
public:
    // The Pitch command of a waveform view: opens the document's pitch
    // window, or brings the open one to the front, and (re)computes. Null
    // after a message when the document has no audio channel.
    static CPitchFrame* showFor(CKestruneView& view);
    // The document's pitch window, or null.
    static CPitchFrame* of(const sonmetra::CKestruneDoc* doc);
    // The settings changed: every open pitch window computes its track again.
    static void recomputeAll();

    CPitchFrame(sonmetra::CKestruneDoc* doc, CKestruneView* waveform, QWidget* parent = nullptr);
    ~CPitchFrame() override;

    sonmetra::CKestruneDoc* document() const { return m_doc; }
    CPitchView* view() const { return m_view; }

    // Starts the computation from the settings in force, in place of one in
    // progress.
    void computePitchTrack();
    bool computing() const { return m_computation.running(); }
    // What the progress dialog's Cancel does.
    void cancelComputation();
    QProgressDialog* progressDialog() const { return m_progress; }

private:
    void finished(sonmetra::AnalysisStatus status, std::shared_ptr<PitchResults> results);
    void showProgress();
    void closeProgress();
    void detachDocument();

    sonmetra::CKestruneDoc* m_doc;
    CPitchView* m_view;
    PitchComputation m_computation;
    QPointer<QProgressDialog> m_progress;
    QTimer* m_progressTimer;
};
