// Every key of the main frame: the entries live at one time (the File,
// Window and Help menus, the menus of the window in front, and the system
// menus of the workspace's windows) never share a key, and every key
// reaches its entry when pressed.
#include <QAction>
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include "app/CKestruneApp.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "frame/CommandMenus.h"
#include "tests/support/GuiTestSupport.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/FileDialogs.h"
#include "view/TimeBase.h"
#include "view/WindowCommands.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

void collect(const QList<QAction*>& actions, QList<QAction*>& into) {
    for (QAction* a : actions) {
        if (a->menu()) {
            emit a->menu()->aboutToShow();  // menus filled when they open (Window)
            collect(a->menu()->actions(), into);
            emit a->menu()->aboutToHide();
        } else if (!a->isSeparator()) {
            into.push_back(a);
        }
    }
}

QString nameOf(const QAction* a) { return a->text().remove('&') + " (" + a->shortcut().toString() + ")"; }

// A window of the context, whose widget takes the keys; commands find no
// view or window of their type in it and do nothing.
QMdiSubWindow* addWindow(QMdiArea* area, const QString& context) {
    auto* window = new QMdiSubWindow;
    window->setAttribute(Qt::WA_DeleteOnClose);
    auto* content = new QWidget;
    content->setFocusPolicy(Qt::StrongFocus);
    window->setWidget(content);
    if (!context.isEmpty()) setCommandContext(window, context);
    area->addSubWindow(window);
    window->showMaximized();  // as documents open
    return window;
}

}  // namespace

// No answers are scripted: every file dialog is cancelled.
class ShortcutsTest : public AnsweringTest<ScriptedFileDialogs> {
    Q_OBJECT

private slots:
    void initTestCase() {
        // Recent files and the configuration record go to folders of the test.
        keepSettingsIn(m_settingsDir.path());
        AppServices::instance().workingFolder = m_work.path().toStdString();
        AppServices::instance().tempFolder = m_work.path().toStdString() + "/";
        CKestruneApp::registerFeatures();
    }
    void cleanupTestCase() { AppServices::instance() = AppServices{}; }

    void everyKeyIsUniqueInItsContextAndReachesItsEntry() {
        CMainFrame frame;
        frame.resize(1000, 700);
        frame.show();
        QVERIFY(QTest::qWaitForWindowActive(&frame));
        CommandMenus* menus = frame.commandMenus();
        QStringList contexts = {QString()};
        contexts += WindowCommandRegistry::instance().contexts();

        QSet<QMenu*> contextMenus;
        for (const QString& c : contexts)
            for (QMenu* m : menus->menus(c)) contextMenus.insert(m);
        QList<QAction*> global;
        for (QAction* top : frame.menuBar()->actions())
            if (top->menu() && !contextMenus.contains(top->menu())) collect({top}, global);
        QVERIFY(!global.isEmpty());

        QSet<QString> pressed;
        for (const QString& context : contexts) {
            QMdiSubWindow* front = addWindow(frame.mdiArea(), context);
            QMdiSubWindow* other = addWindow(frame.mdiArea(), context);
            frame.mdiArea()->setActiveSubWindow(front);
            QCOMPARE(menus->activeContext(), context);

            // The menus' keys hold in every window; a system menu's keys in
            // its own window only, so each is checked with the menus alone.
            const QList<QAction*> commands = global + menus->actions(context);
            for (QMdiSubWindow* w : {front, other}) {
                QMap<QString, QAction*> owner;
                for (QAction* a : commands + w->systemMenu()->actions()) {
                    for (const QKeySequence& k : a->shortcuts()) {
                        const QString key = k.toString();
                        if (owner.contains(key) && owner[key] != a)
                            QFAIL(qPrintable("context '" + context + "': " + nameOf(owner[key]) + " and " + nameOf(a) +
                                             " share " + key));
                        owner.insert(key, a);
                    }
                }
            }

            // Each menu key fires its entry once; a window a command opened
            // is closed again so that the next key goes to the same window.
            for (QAction* a : commands) {
                if (a->shortcut().isEmpty()) continue;
                QSignalSpy fired(a, &QAction::triggered);
                front->widget()->setFocus();
                QTest::keySequence(front->widget(), a->shortcut());
                QVERIFY2(fired.count() == 1, qPrintable("context '" + context + "': " + nameOf(a) + " did not fire"));
                pressed.insert(a->shortcut().toString());
                for (QMdiSubWindow* w : frame.mdiArea()->subWindowList())
                    if (w != front && w != other) w->close();
                QApplication::processEvents();
                frame.mdiArea()->setActiveSubWindow(front);
            }
            // The window's own keys close it; none of them is a menu's.
            QVERIFY(front->systemMenu()->actions().size() > 0);
            front->widget()->setFocus();
            const QPointer<QMdiSubWindow> closing = front;
            QTest::keyClick(front->widget(), Qt::Key_F4, Qt::ControlModifier);
            QTRY_VERIFY(closing.isNull());
            other->close();
            QTRY_VERIFY(frame.mdiArea()->subWindowList().isEmpty());
        }
        // The walk reached the waveform view's keys, the clashing one among them.
        QVERIFY(pressed.contains("Ctrl+W"));
        QVERIFY(pressed.contains("Ctrl+0"));
    }

    // The three zoom keys act on a real document's view.
    void zoomKeysWorkInTheWaveformView() {
        CMainFrame frame;
        frame.show();
        QVERIFY(QTest::qWaitForWindowActive(&frame));
        CChildFrame* child = frame.openDocumentFile(SONMETRA_DEMO);
        QVERIFY(child);
        CKestruneView* view = child->kestruneView();
        CKestruneDoc& doc = *child->document();
        view->setFocus();
        doc.m_zoomRangeMs = 250.0;
        view->mouseDownAtMs(1000.0);
        view->mouseUpAtMs(1000.0);
        const double whole = view->displayEndMs();

        QTest::keyClick(view, Qt::Key_W, Qt::ControlModifier);  // From Cursor for Duration
        QVERIFY(std::abs(view->displayStartMs() - view->cursorMs()) < 0.5);
        QVERIFY(std::abs(view->displayEndMs() - view->displayStartMs() - 250.0) < 0.5);
        QTest::keyClick(view, Qt::Key_0, Qt::ControlModifier);  // Home
        QCOMPARE(view->displayStartMs(), 0.0);
        QVERIFY(std::abs(view->displayEndMs() - whole) < 1e-6);
        QTest::keyClick(view, Qt::Key_Backspace, Qt::ControlModifier);  // UnZoom: back before Home
        QVERIFY(std::abs(view->displayEndMs() - view->displayStartMs() - 250.0) < 0.5);
        QVERIFY(m_messages.texts().empty());
    }

private:
    QTemporaryDir m_settingsDir;
    QTemporaryDir m_work;
};

QTEST_MAIN(ShortcutsTest)
#include "ShortcutsTest.moc"
