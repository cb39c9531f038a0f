// The child frame of a document's label list, titled "Labels::" and the
// document's title. At most one exists per document; closing it clears the
// document's record of it.
#pragma once

#include <QMdiSubWindow>

namespace sonmetra {
class CKestruneDoc;
}
class CFormLabelView;

class CFrameLabelView : public QMdiSubWindow {
    Q_OBJECT
public:
    explicit CFrameLabelView(sonmetra::CKestruneDoc* doc, QWidget* parent = nullptr);
    ~CFrameLabelView() override;

    CFormLabelView* form() const { return m_form; }
    void refresh();
    void detachDocument();

    // "View Labels": brings the document's list to the top, or makes it in
    // the main frame's workspace.
    static CFrameLabelView* showFor(sonmetra::CKestruneDoc* doc);

private:
    sonmetra::CKestruneDoc* m_doc;
    CFormLabelView* m_form;
};
