#include "QtMessageService.h"

#include <QApplication>
#include <QMessageBox>
#include <QMetaObject>
#include <QThread>

#include "view/AppServices.h"

using namespace sonmetra;

namespace {

MsgAnswer showOnGuiThread(const std::string& text, MsgButtons buttons, MsgIcon icon) {
    QMessageBox box(AppServices::instance().mainWindow);
    box.setWindowTitle("Sonmetra");
    box.setText(QString::fromStdString(text));
    switch (icon) {
        case MsgIcon::Information:
            box.setIcon(QMessageBox::Information);
            break;
        case MsgIcon::Warning:
            box.setIcon(QMessageBox::Warning);
            break;
        case MsgIcon::Error:
            box.setIcon(QMessageBox::Critical);
            break;
        case MsgIcon::Question:
            box.setIcon(QMessageBox::Question);
            break;
        case MsgIcon::None:
            break;
    }
    switch (buttons) {
        case MsgButtons::Ok:
            box.setStandardButtons(QMessageBox::Ok);
            break;
        case MsgButtons::OkCancel:
            box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
            break;
        case MsgButtons::YesNo:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
            break;
        case MsgButtons::YesNoCancel:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
            break;
    }
    switch (box.exec()) {
        case QMessageBox::Yes:
            return MsgAnswer::Yes;
        case QMessageBox::No:
            return MsgAnswer::No;
        case QMessageBox::Ok:
            return MsgAnswer::Ok;
        default:
            return buttons == MsgButtons::YesNo ? MsgAnswer::No : MsgAnswer::Cancel;
    }
}

}  // namespace

MsgAnswer QtMessageService::show(const std::string& text, MsgButtons buttons, MsgIcon icon) {
    // A worker thread's report is shown by the interface thread; the worker
    // waits for the answer.
    if (QThread::currentThread() != qApp->thread()) {
        // A report with only OK is shown later by the interface thread and
        // the worker goes on at once: the interface thread may be waiting to
        // join that worker, and must never wait on it in turn.
        if (buttons == MsgButtons::Ok) {
            QMetaObject::invokeMethod(
                qApp, [text, icon] { showOnGuiThread(text, MsgButtons::Ok, icon); }, Qt::QueuedConnection);
            return MsgAnswer::Ok;
        }
        MsgAnswer answer = MsgAnswer::Cancel;
        QMetaObject::invokeMethod(
            qApp, [&] { answer = showOnGuiThread(text, buttons, icon); }, Qt::BlockingQueuedConnection);
        return answer;
    }
    return showOnGuiThread(text, buttons, icon);
}

void QtMessageService::beep() { QApplication::beep(); }
