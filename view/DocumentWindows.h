// The windows that exist at most once per document besides its views: the
// pitch window and the label list. The document itself knows no window, so
// the view layer keeps them here, keyed by the document, and tells them
// when the document's contents change as a whole (Undo, Paste).
#pragma once

namespace sonmetra {
class CKestruneDoc;
}
class CFrameLabelView;

// What editing needs of the pitch window: recompute its track for the
// first channel whose channel kind is 1, and repaint.
class IPitchWindow {
public:
    virtual ~IPitchWindow() = default;
    virtual void recomputePitch() = 0;
};

struct DocumentWindows {
    IPitchWindow* pitch = nullptr;         // set by the pitch window while it is open
    CFrameLabelView* labelList = nullptr;  // set by the label list while it is open
    int views = 0;                         // waveform views of the document
};

// The record of a document (made on first use).
DocumentWindows& documentWindows(const sonmetra::CKestruneDoc* doc);
// The last view of the document is gone: its label list closes and the record goes.
void forgetDocumentWindows(const sonmetra::CKestruneDoc* doc);

// After Undo and Paste: the pitch window recomputes, the label list refreshes.
void documentReplaced(const sonmetra::CKestruneDoc* doc);
// After any change of a label, or of the samples that carry labels.
void labelsChanged(const sonmetra::CKestruneDoc* doc);
