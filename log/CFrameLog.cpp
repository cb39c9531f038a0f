#include "CFrameLog.h"

#include <QCloseEvent>
#include <QMdiArea>

#include "CFormLog.h"

CFrameLog::CFrameLog(CFormLog* form, QWidget* parent) : QMdiSubWindow(parent), m_form(form) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWidget(form);
    auto updateTitle = [this] {
        setWindowTitle(m_form->title() + "[*]");
        setWindowModified(m_form->isModified());
    };
    updateTitle();
    connect(form, &CFormLog::titleChanged, this, updateTitle);
    connect(form, &CFormLog::modifiedChanged, this, updateTitle);
    connect(this, &QMdiSubWindow::windowStateChanged, this, [this](Qt::WindowStates, Qt::WindowStates now) {
        if (now & Qt::WindowActive) m_form->makeActive();
    });
    resize(640, 360);
}

void CFrameLog::closeEvent(QCloseEvent* event) {
    if (!m_form->queryClose()) {
        event->ignore();
        return;
    }
    m_form->markClosed();
    QMdiSubWindow::closeEvent(event);
}

namespace {
CFormLog* showInArea(QMdiArea* area, CFormLog* form) {
    auto* frame = new CFrameLog(form);
    if (area) area->addSubWindow(frame);
    frame->show();
    form->makeActive();
    return form;
}
}  // namespace

CFormLog* newLog(QMdiArea* area) { return showInArea(area, new CFormLog); }

CFormLog* openLogFile(QMdiArea* area, const QString& path) {
    auto* form = new CFormLog;
    if (!form->loadFile(path)) {
        delete form;
        return nullptr;
    }
    return showInArea(area, form);
}

CFormLog* openLog(QMdiArea* area, QWidget* parent) {
    const QString path =
        CFormLog::askFileName(parent, QObject::tr("Open Log"), "Log files (*.log);;All files (*)", false);
    if (path.isEmpty()) return nullptr;
    return openLogFile(area, path);
}
