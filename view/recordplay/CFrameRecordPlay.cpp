#include "CFrameRecordPlay.h"

#include <QCloseEvent>
#include <QMdiArea>

#include "CFormRecordPlay.h"
#include "document/UserException.h"

namespace {
CFrameRecordPlay* g_frame = nullptr;
}

CFrameRecordPlay::CFrameRecordPlay(QWidget* parent) : QMdiSubWindow(parent), m_form(new CFormRecordPlay) {
    g_frame = this;
    setWidget(m_form);
    setWindowTitle(QStringLiteral("Record/Play"));
    resize(760, 640);
}

CFrameRecordPlay::~CFrameRecordPlay() {
    if (g_frame == this) g_frame = nullptr;
}

CFrameRecordPlay* CFrameRecordPlay::instance() { return g_frame; }

CFrameRecordPlay* CFrameRecordPlay::toggle(QMdiArea* area) {
    CFrameRecordPlay* frame = g_frame;
    if (frame == nullptr) {
        frame = new CFrameRecordPlay;
        if (area) area->addSubWindow(frame);
        frame->show();
        if (area) area->setActiveSubWindow(frame);
        return frame;
    }
    if (frame->isHidden()) {
        // Back where it was, at its size, on top of the others.
        frame->form()->loadSettings();
        frame->show();
        frame->raise();
        if (QMdiArea* owner = frame->mdiArea()) owner->setActiveSubWindow(frame);
        return frame;
    }
    frame->hideTakingSettings();
    return frame;
}

bool CFrameRecordPlay::hideTakingSettings() {
    try {
        m_form->takeSettings();
    } catch (const sonmetra::UserException&) {
        return false;
    }
    m_form->saveSettings();
    hide();
    return true;
}

void CFrameRecordPlay::closeEvent(QCloseEvent* event) {
    event->ignore();
    hideTakingSettings();
}
