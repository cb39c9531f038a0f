#include "AttachedFrames.h"

#include <QMdiArea>
#include <QMdiSubWindow>

#include "AppServices.h"

void openAttachedFrame(QMdiSubWindow* frame, const sonmetra::CKestruneDoc* doc, const QString& role,
                       AttachedWindow hooks) {
    if (QMdiArea* area = AppServices::instance().mdiArea) area->addSubWindow(frame);
    hooks.frame = frame;
    if (!hooks.documentClosing) {
        QPointer<QMdiSubWindow> guard(frame);
        hooks.documentClosing = [guard] {
            if (guard) guard->close();
        };
    }
    attachWindow(doc, role, std::move(hooks));
    bringToFront(frame);
}

void bringToFront(QMdiSubWindow* frame) {
    if (!frame) return;
    frame->show();
    frame->raise();
    if (QMdiArea* area = frame->mdiArea()) area->setActiveSubWindow(frame);
}

void detachIfAttached(const QMdiSubWindow* frame, const sonmetra::CKestruneDoc* doc, const QString& role) {
    if (doc && attachedWindow(doc, role) == frame) detachWindow(doc, role);
}
