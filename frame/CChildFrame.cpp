#include "CChildFrame.h"

#include <QCloseEvent>

#include "DocumentCommands.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "res/StringTable.h"
#include "view/CKestruneView.h"

using sonmetra::CKestruneDoc;

CChildFrame::CChildFrame(std::shared_ptr<CKestruneDoc> doc, QWidget* parent)
    : QMdiSubWindow(parent), m_doc(std::move(doc)) {
    setAttribute(Qt::WA_DeleteOnClose);
    m_view = new CKestruneView(m_doc.get(), this);
    setWidget(m_view);
    updateTitle();
    resize(900, 520);
}

CChildFrame::~CChildFrame() = default;

CKestruneView* CChildFrame::kestruneView() const { return m_view; }

void CChildFrame::updateTitle() {
    const QString title = QString::fromStdString(m_doc->title()) + "[*]";
    if (windowTitle() != title) setWindowTitle(title);
    if (isWindowModified() != m_doc->isModified()) setWindowModified(m_doc->isModified());
}

void CChildFrame::documentChanged() {
    // A new content: the bar follows its display range, the strips are laid out again.
    m_view->scrollBarFromRange();
    m_view->channelsEdited();
    m_view->refreshReadouts();
    updateTitle();
}

bool CChildFrame::canClose() {
    if (!m_doc->isModified()) return true;
    const std::string question = sonmetra::formatString(sonmetra::IDS_SAVE_CHANGES_Q, m_doc->title());
    switch (sonmetra::showMessage(question, sonmetra::MsgButtons::YesNoCancel, sonmetra::MsgIcon::Question)) {
        case sonmetra::MsgAnswer::Yes:
            return DocumentCommands::save(this, *m_doc);
        case sonmetra::MsgAnswer::No:
            m_doc->setModified(false);
            return true;
        default:
            return false;
    }
}

void CChildFrame::closeEvent(QCloseEvent* event) {
    if (canClose())
        QMdiSubWindow::closeEvent(event);
    else
        event->ignore();
}
