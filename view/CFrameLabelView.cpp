#include "CFrameLabelView.h"

#include "AttachedFrames.h"
#include "CFormLabelView.h"
#include "document/CKestruneDoc.h"

CFrameLabelView::CFrameLabelView(sonmetra::CKestruneDoc* doc, QWidget* parent)
    : QMdiSubWindow(parent), m_doc(doc), m_form(new CFormLabelView(doc)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWidget(m_form);
    refresh();
    resize(560, 300);
}

CFrameLabelView::~CFrameLabelView() { detachIfAttached(this, m_doc, windowrole::kLabelList); }

void CFrameLabelView::refresh() {
    if (m_doc) setWindowTitle(QString("Labels::") + QString::fromStdString(m_doc->title()));
    m_form->refresh();
}

void CFrameLabelView::detachDocument() {
    m_doc = nullptr;
    m_form->detachDocument();
}

CFrameLabelView* CFrameLabelView::showFor(sonmetra::CKestruneDoc* doc) {
    auto* list = qobject_cast<CFrameLabelView*>(attachedWindow(doc, windowrole::kLabelList));
    if (!list) {
        list = new CFrameLabelView(doc);
        AttachedWindow hooks;
        hooks.samplesReplaced = [list] { list->refresh(); };
        hooks.labelsChanged = [list] { list->refresh(); };
        hooks.documentClosing = [list] {
            list->detachDocument();
            list->close();
        };
        openAttachedFrame(list, doc, windowrole::kLabelList, std::move(hooks));
    }
    list->refresh();
    bringToFront(list);
    return list;
}
