// The child frame of one document inside the main frame's workspace. It
// owns the document, shows its view, and asks before a modified document
// is closed.
#pragma once

#include <QMdiSubWindow>
#include <memory>

namespace sonmetra {
class CKestruneDoc;
}
class CKestruneView;

class CChildFrame : public QMdiSubWindow {
    Q_OBJECT
public:
    explicit CChildFrame(std::shared_ptr<sonmetra::CKestruneDoc> doc, QWidget* parent = nullptr);
    ~CChildFrame() override;

    sonmetra::CKestruneDoc* document() const { return m_doc.get(); }
    std::shared_ptr<sonmetra::CKestruneDoc> sharedDocument() const { return m_doc; }
    // The waveform view of the document, when the frame shows one.
    CKestruneView* kestruneView() const;
    // Title and modified mark follow the document.
    void updateTitle();
    // The document's contents changed as a whole (opened, recorded, pasted).
    void documentChanged();
    // Asks to save a modified document; false when the user cancels or the
    // save fails, so that the frame stays open.
    bool canClose();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    std::shared_ptr<sonmetra::CKestruneDoc> m_doc;
    CKestruneView* m_view = nullptr;
};
