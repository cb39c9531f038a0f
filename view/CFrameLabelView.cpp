#include "CFrameLabelView.h"

#include <QMdiArea>

#include "AppServices.h"
#include "CFormLabelView.h"
#include "DocumentWindows.h"
#include "document/CKestruneDoc.h"

CFrameLabelView::CFrameLabelView(sonmetra::CKestruneDoc* doc, QWidget* parent)
    : QMdiSubWindow(parent), m_doc(doc), m_form(new CFormLabelView(doc)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWidget(m_form);
    refresh();
    resize(560, 300);
}

CFrameLabelView::~CFrameLabelView() {
    if (m_doc) {
        DocumentWindows& w = documentWindows(m_doc);
        if (w.labelList == this) w.labelList = nullptr;
    }
}

void CFrameLabelView::refresh() {
    if (m_doc) setWindowTitle(QString("Labels::") + QString::fromStdString(m_doc->title()));
    m_form->refresh();
}

void CFrameLabelView::detachDocument() {
    m_doc = nullptr;
    m_form->detachDocument();
}

CFrameLabelView* CFrameLabelView::showFor(sonmetra::CKestruneDoc* doc) {
    DocumentWindows& w = documentWindows(doc);
    if (!w.labelList) {
        auto* frame = new CFrameLabelView(doc);
        if (QMdiArea* area = AppServices::instance().mdiArea) area->addSubWindow(frame);
        w.labelList = frame;
    }
    w.labelList->refresh();
    w.labelList->show();
    w.labelList->raise();
    if (QMdiArea* area = w.labelList->mdiArea()) area->setActiveSubWindow(w.labelList);
    return w.labelList;
}
