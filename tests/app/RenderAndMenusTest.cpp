// The menus of a window's command context, and `sonmetra --render` run as
// a program the way a script runs it.
#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QtTest>

#include "app/CKestruneApp.h"
#include "document/MessageService.h"
#include "frame/CMainFrame.h"
#include "frame/CommandMenus.h"
#include "tests/support/GuiTestSupport.h"
#include "view/AppServices.h"
#include "view/WindowCommands.h"

namespace {

using namespace sonmetra::test;

ProgramRun render(const QTemporaryDir& home, const QStringList& arguments) {
    return runProgram(SONMETRA_BIN, QStringList{"--render"} + arguments, home);
}

}  // namespace

class RenderAndMenusTest : public QObject {
    Q_OBJECT

private slots:
    // A shortcut that two kinds of window use reaches the one in front, and
    // each context's menus show only while one of its windows is active.
    void menusFollowTheActiveWindowsContext() {
        sonmetra::RecordingMessageService messages;
        sonmetra::ScopedMessageService scoped(&messages);
        int probes = 0;
        WindowCommand probe;
        probe.context = "probe";
        probe.menu = "&View";
        probe.text = "Probe\tCtrl+T";
        probe.run = [&probes](QWidget&) { ++probes; };
        WindowCommandRegistry::instance().add(probe);
        CKestruneApp::registerFeatures();

        CMainFrame frame;
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        frame.newDocument();
        QCOMPARE(frame.commandMenus()->activeContext(), QString());
        QVERIFY(shownMenu(frame.menuBar(), "&Label") != nullptr);
        QAction* probeAction = frame.commandMenus()->action("probe", "Probe");
        QVERIFY(probeAction != nullptr);
        QVERIFY(!probeAction->isEnabled());

        auto* window = new QMdiSubWindow;
        window->setWidget(new QWidget);
        setCommandContext(window, "probe");
        frame.mdiArea()->addSubWindow(window);
        window->show();
        frame.mdiArea()->setActiveSubWindow(window);
        QCOMPARE(frame.commandMenus()->activeContext(), QString("probe"));
        QVERIFY(shownMenu(frame.menuBar(), "&Label") == nullptr);
        QMenu* view = shownMenu(frame.menuBar(), "&View");
        QVERIFY(view != nullptr);
        QVERIFY(view->actions().contains(probeAction));
        QVERIFY(probeAction->isEnabled());
        for (QAction* a : frame.commandMenus()->actions(QString())) QVERIFY(!a->isEnabled());

        QTest::keyClick(frame.mdiArea()->currentSubWindow()->widget(), Qt::Key_T, Qt::ControlModifier);
        QCOMPARE(probes, 1);
        QVERIFY(messages.texts().empty());
    }

    void renderWritesTheWindowsPicture() {
        QTemporaryDir home;
        const QString png = home.filePath("selection.png");
        ProgramRun run =
            render(home, {"waveform", SONMETRA_DEMO, "-o", png, "--size", "640x480", "--from", "1000", "--to", "2000"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.errors.isEmpty(), qPrintable(run.errors));
        const QImage image(png);
        QCOMPARE(image.size(), QSize(640, 480));
        // The selection's highlight covers its span of the time axis, and
        // nothing right of it. The demo lasts 5693 ms over 620 pixels from x = 20.
        auto highlighted = [&image](int x) { return image.pixelColor(x, 470).blue() > image.pixelColor(x, 470).red(); };
        const double pxPerMs = (640 - 20) / 5693.33;
        QVERIFY(highlighted(20 + static_cast<int>(1500 * pxPerMs)));
        QVERIFY(!highlighted(20 + static_cast<int>(3000 * pxPerMs)));

        const QString bmp = home.filePath("view.bmp");
        QCOMPARE(render(home, {"waveform", SONMETRA_DEMO, "-o", bmp}).exitCode, 0);
        QCOMPARE(QImage(bmp, "BMP").size(), QSize(800, 600));
        const QString pdf = home.filePath("view.pdf");
        QCOMPARE(render(home, {"waveform", SONMETRA_DEMO, "-o", pdf, "--cursor", "500"}).exitCode, 0);
        QFile page(pdf);
        QVERIFY(page.open(QIODevice::ReadOnly));
        QVERIFY(page.read(4) == "%PDF");
    }

    void renderRefusesBadRequestsAndWritesNothing() {
        QTemporaryDir home;
        const QString out = home.filePath("out.png");
        const struct {
            QStringList arguments;
            QString message;
        } cases[] = {
            {{"nosuchwindow", SONMETRA_DEMO, "-o", out}, "Unknown window kind 'nosuchwindow'"},
            {{"waveform", home.filePath("missing.kvd"), "-o", out}, "Cannot open the file"},
            {{"waveform", SONMETRA_DEMO, "-o", out, "--cursor", "99999"}, "lies outside the signal"},
            {{"waveform", SONMETRA_DEMO, "-o", out, "--from", "300"}, "--from and --to go together"},
            {{"waveform", SONMETRA_DEMO, "-o", home.filePath("out.gif")}, "must end in .png, .bmp or .pdf"},
            {{"waveform", SONMETRA_DEMO, "-o", out, "--size", "big"}, "is not of the form WxH"},
        };
        for (const auto& c : cases) {
            const ProgramRun run = render(home, c.arguments);
            QCOMPARE(run.exitCode, 1);
            QVERIFY2(run.errors.contains(c.message), qPrintable(run.errors));
        }
        QCOMPARE(QDir(home.path()).entryList(QDir::Files | QDir::Hidden).size(), 0);
    }
};

QTEST_MAIN(RenderAndMenusTest)
#include "RenderAndMenusTest.moc"
