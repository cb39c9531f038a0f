// The child frame of the FFT/LPC spectrum window, titled with the document's
// title and "::FFT/LPC" (at the cursor) or "::Average FFT/LPC" (over the
// selection). A document has at most one of each; the opening commands reuse
// it and compute again. It follows the document's samples when they are
// replaced (Undo, Paste, Cut...) and closes with the document.
#pragma once

#include <QMdiSubWindow>

namespace sonmetra {
class CKestruneDoc;
}
class CFFTLPCView;

class CFFTLPCFrame : public QMdiSubWindow {
    Q_OBJECT
public:
    CFFTLPCFrame(sonmetra::CKestruneDoc* doc, bool average, QWidget* parent = nullptr);
    ~CFFTLPCFrame() override;

    CFFTLPCView* view() const { return m_view; }

    // "FFT/LPC" (average false) and "FFT/LPC Selection": the document's window
    // of that kind, made or brought to the front, computed on the audio
    // channel's cursor or selection. Null after the message when there is no
    // window to show.
    static CFFTLPCFrame* openFor(sonmetra::CKestruneDoc* doc, bool average);

private:
    sonmetra::CKestruneDoc* m_doc;
    CFFTLPCView* m_view;
};
