// The windows that show a document besides its waveform views: the label
// list, the spectrum, pitch and spectrogram windows. The document itself
// knows no window, so the view layer keeps them here, keyed by the document
// and by the window's role, at most one window per role and document. A
// window attaches itself with the hooks it wants called:
//   - when the samples were replaced as a whole (Undo, Paste, Cut, Smooth,
//     a new recording): the pitch track is recomputed, for example;
//   - when labels changed: the label list refreshes;
//   - at each mouse step of a waveform view of the document, with the view's
//     cursor time, so that the window's cursor follows;
//   - when the last waveform view of the document closes: the window lets go
//     of the document and closes.
// The hooks are plain functions, so that this record never depends on the
// windows that use it.
#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>
#include <functional>

namespace sonmetra {
class CKestruneDoc;
}

namespace windowrole {
inline const QString kLabelList = QStringLiteral("labels");
inline const QString kSpectrum = QStringLiteral("spectrum");
inline const QString kAverageSpectrum = QStringLiteral("average spectrum");
inline const QString kPitch = QStringLiteral("pitch");
inline const QString kSpectrogram = QStringLiteral("spectrogram");
}  // namespace windowrole

struct AttachedWindow {
    QPointer<QWidget> frame;  // the window's child frame
    std::function<void()> samplesReplaced;
    std::function<void()> labelsChanged;
    // step: 0 press, 1 move, 2 release (CKestruneView::MouseStep); cursor time in ms.
    std::function<void(int step, double ms)> cursorStep;
    // Must let go of the document; the record forgets the window afterwards.
    std::function<void()> documentClosing;
};

// Attaches `window` in `role`, in place of any window attached there before.
void attachWindow(const sonmetra::CKestruneDoc* doc, const QString& role, AttachedWindow window);
// Forgets the window of `role` (the window is closing); harmless when none.
void detachWindow(const sonmetra::CKestruneDoc* doc, const QString& role);
// The frame attached in `role`, or null.
QWidget* attachedWindow(const sonmetra::CKestruneDoc* doc, const QString& role);

// A waveform view of the document opened or closed; when the last one closes,
// every attached window is told and the record goes.
void viewOpened(const sonmetra::CKestruneDoc* doc);
void viewClosed(const sonmetra::CKestruneDoc* doc);

// After Undo, Paste, Cut, Smooth and a new recording.
void documentReplaced(const sonmetra::CKestruneDoc* doc);
// After any change of a label, or of the samples that carry labels.
void labelsChanged(const sonmetra::CKestruneDoc* doc);
// A mouse step of a waveform view of the document.
void cursorStepped(const sonmetra::CKestruneDoc* doc, int step, double ms);
