// The child frame of a document's spectrogram window, titled with the
// document's title and "::Spectrogram"; at most one per document
// (windowrole::kSpectrogram). Its content is the CSpectrogramView on which
// the window's menu commands act (command context "spectrogram").
#pragma once

#include <QMdiSubWindow>

class CKestruneView;
class CSpectrogramView;
struct SpectrogramRange;

namespace sonmetra {
class CKestruneDoc;
}

inline const QString kSpectrogramContext = QStringLiteral("spectrogram");

class CSpectrogramFrame : public QMdiSubWindow {
    Q_OBJECT
public:
    explicit CSpectrogramFrame(sonmetra::CKestruneDoc* doc, QWidget* parent = nullptr);
    ~CSpectrogramFrame() override;

    CSpectrogramView* view() const { return m_view; }
    sonmetra::CKestruneDoc* document() const { return m_doc; }

    // The document's spectrogram window over `range`: the open one brought to
    // the front, or a new one, computed before it returns. Null after the
    // message when the document has no audio channel or the range no samples,
    // and when the first computation of a new window was cancelled or failed
    // (the window is then closed again).
    static CSpectrogramFrame* open(sonmetra::CKestruneDoc& doc, const SpectrogramRange& range, CKestruneView* waveform);
    // The document's open spectrogram window, or null.
    static CSpectrogramFrame* of(const sonmetra::CKestruneDoc* doc);

private:
    sonmetra::CKestruneDoc* m_doc;
    CSpectrogramView* m_view;
};
