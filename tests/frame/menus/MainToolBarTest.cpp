// The main frame's toolbar and the View menu's toggles, with every feature
// of the build registered: each button against the menu entry it stands
// for (enabled alike in every state, running the same command), buttons
// following another kind of window in front, the bundled icons at two pixel
// ratios, and the toolbar and status window shown again from any window's
// View menu. With SONMETRA_SHOTS set to a folder, the frame with its
// toolbar is saved there.
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QSettings>
#include <QTemporaryDir>

#include "MenuFixture.h"
#include "app/CKestruneApp.h"
#include "document/MessageService.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "frame/CStatusWindow.h"
#include "frame/CommandMenus.h"
#include "frame/MainToolBar.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/WindowCommands.h"

using namespace sonmetra;
using namespace menutest;

namespace {

// A kind of window with a View menu of its own, and one without.
const QString kPlotContext = QStringLiteral("toolbar-test-plot");
const QString kPlayContext = QStringLiteral("toolbar-test-player");
int g_plotPrints = 0;

// The analysis entries other parts of the build may or may not bring.
bool optionalInThisBuild(const QString& text) {
    return text == "FFT/LPC" || text == "Spectrogram All" || text == "Pitch";
}

}  // namespace

class MainToolBarTest : public AnsweringTest<ScriptedFileDialogs> {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        keepFilesIn(m_dir.path());
        auto& windows = WindowCommandRegistry::instance();
        windows.add(windowCommand<QLabel>(kPlotContext, "&View", "Print...", "Prints the plot", 10,
                                          [](QLabel&) { ++g_plotPrints; }));
        windows.add(windowCommand<QLabel>(
            kPlotContext, "&Edit", "&Copy\tCtrl+C", "", 10, [](QLabel&) {}, [](const QLabel&) { return false; }));
        windows.add(windowCommand<QLabel>(kPlayContext, "&Play", "Play All", "", 10, [](QLabel&) {}));
        CKestruneApp::registerFeatures();
        m_demo = m_dir.filePath("demo.kvd");
        QVERIFY(QFile::copy(SONMETRA_DEMO, m_demo));
    }

    void buttonsStandForTheirMenuEntries() {
        CMainFrame frame;
        MainToolBar* bar = frame.toolBar();
        QVERIFY(bar);
        for (const MainToolBar::Item& item : MainToolBar::items()) {
            QAction* button = bar->button(item.text);
            if (optionalInThisBuild(item.text))
                QCOMPARE(button != nullptr, frame.commandMenus()->action(QString(), item.text) != nullptr);
            else
                QVERIFY2(button, qPrintable(item.text));
            if (button == nullptr) continue;
            QAction* entry = bar->entryFor(button);
            QVERIFY2(entry, qPrintable(item.text));
            QCOMPARE(entry->text().remove('&'), item.text);
            QVERIFY(!button->toolTip().isEmpty());
            QVERIFY(!button->icon().isNull());
        }
        const QString tip = bar->button("Intensity")->toolTip();
        QVERIFY2(tip.contains("Perform power intensity of the waveform") && tip.contains("Ctrl+I"), qPrintable(tip));
    }

    void enablingFollowsTheMenusThroughAnEditSession() {
        CMainFrame frame;
        frame.resize(1000, 650);
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        MainToolBar* bar = frame.toolBar();

        sameAsMenus(frame, "no document");
        QVERIFY(bar->button("New")->isEnabled() && bar->button("Open...")->isEnabled());
        QVERIFY(!bar->button("Print...")->isEnabled() && !bar->button("Play All")->isEnabled());

        CChildFrame* child = frame.openDocumentFile(m_demo);
        QVERIFY(child);
        CKestruneView* view = child->kestruneView();
        sameAsMenus(frame, "opened");
        QVERIFY(bar->button("Print...")->isEnabled() && bar->button("Intensity")->isEnabled());
        QVERIFY(!bar->button("Cut")->isEnabled() && !bar->button("Save")->isEnabled());
        QVERIFY(!bar->button("Out")->isEnabled());  // the whole signal is shown
        QVERIFY(!bar->button("Stop")->isEnabled());

        // A selection made with the mouse reaches the buttons without being asked.
        const int y = view->height() / 3;
        QTest::mousePress(view, Qt::LeftButton, {}, QPoint(view->msToX(1000.0), y));
        QTest::mouseMove(view, QPoint(view->msToX(1500.0), y));
        QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(view->msToX(2000.0), y));
        QVERIFY(view->selectionPresent());
        QTRY_VERIFY(bar->button("Cut")->isEnabled());
        sameAsMenus(frame, "selection");
        QVERIFY(bar->button("Play Selection")->isEnabled() && bar->button("Selection")->isEnabled());

        // The buttons run the menus' commands.
        const CKestruneDoc& doc = *child->document();
        const double durationMs = doc.channel(0).m_durationMs;
        bar->button("Cut")->trigger();
        QVERIFY(doc.channel(0).m_durationMs < durationMs - 900.0);
        sameAsMenus(frame, "after cut");
        QVERIFY(bar->button("Undo")->isEnabled() && bar->button("Paste")->isEnabled() &&
                bar->button("Save")->isEnabled());
        bar->button("Undo")->trigger();
        QCOMPARE(doc.channel(0).m_durationMs, durationMs);

        bar->button("In")->trigger();
        QCOMPARE(doc.channel(0).viewLengthSamples(), doc.channel(0).m_sampleCount / 2);
        sameAsMenus(frame, "zoomed in");
        QVERIFY(bar->button("Out")->isEnabled() && bar->button("UnZoom")->isEnabled());
        bar->button("Intensity")->trigger();
        QCOMPARE(doc.channel(0).m_intensityValid, 1);
        QTest::qWait(20);
        shoot(&frame, "toolbar-with-contour");
    }

    void buttonsFollowAnotherKindOfWindowInFront() {
        CMainFrame frame;
        frame.resize(900, 600);
        frame.show();
        MainToolBar* bar = frame.toolBar();
        QVERIFY(frame.openDocumentFile(m_demo));
        auto* plot = new QMdiSubWindow;
        plot->setWidget(new QLabel("plot"));
        setCommandContext(plot, kPlotContext);
        frame.mdiArea()->addSubWindow(plot);
        plot->show();
        frame.mdiArea()->setActiveSubWindow(plot);
        QCOMPARE(frame.commandMenus()->activeContext(), kPlotContext);

        sameAsMenus(frame, "plot in front");
        // The plot's own Print... and Copy; nothing of the waveform view's.
        QCOMPARE(bar->entryFor(bar->button("Print...")), frame.commandMenus()->action(kPlotContext, "Print..."));
        QVERIFY(bar->button("Print...")->isEnabled());
        QVERIFY(!bar->button("Copy")->isEnabled());  // its rule says no
        QVERIFY(!bar->button("Intensity")->isEnabled() && !bar->button("In")->isEnabled());
        QVERIFY(bar->button("New")->isEnabled());
        g_plotPrints = 0;
        bar->button("Print...")->trigger();
        QCOMPARE(g_plotPrints, 1);
    }

    void bundledIconsAreDrawnAtTheScreensPixelRatio() {
        for (const MainToolBar::Item& item : MainToolBar::items()) {
            const QIcon icon = toolbarIcon(QString(), item.bundledIcon);
            QVERIFY2(!icon.isNull(), qPrintable(item.bundledIcon));
            for (const qreal dpr : {1.0, 2.0}) {
                const QImage image = icon.pixmap(QSize(24, 24), dpr).toImage();
                // Drawn for the device pixels, not scaled up from a small picture.
                QCOMPARE(image.size(), QSize(24, 24) * dpr);
                int drawn = 0;
                for (int y = 0; y < image.height(); ++y)
                    for (int x = 0; x < image.width(); ++x) drawn += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
                QVERIFY2(drawn > 20 * dpr * dpr, qPrintable(item.bundledIcon));
            }
        }
    }

    void viewMenuBringsToolbarAndStatusWindowBack() {
        {
            CMainFrame frame;
            frame.show();
            QVERIFY(QTest::qWaitForWindowExposed(&frame));
            QVERIFY(frame.statusWindow()->isVisible());
            frame.statusWindow()->close();  // its own close button
            QVERIFY(!frame.statusWindow()->isVisible());
            QAction* status = findAction(frame.menuBar(), "&View", "&Status Window");
            QVERIFY(status && status->isEnabled() && status->isCheckable());
            QVERIFY(!status->isChecked());
            status->trigger();
            QVERIFY(frame.statusWindow()->isVisible());

            QAction* toolbar = findAction(frame.menuBar(), "&View", "&Toolbar");
            QVERIFY(toolbar && toolbar->isChecked());
            toolbar->trigger();
            QVERIFY(!frame.toolBar()->isVisible());
        }
        {
            // The user's choice holds at the next start, and every kind of
            // window's View menu has both toggles.
            CMainFrame frame;
            frame.show();
            QVERIFY(!frame.toolBar()->isVisible());
            QVERIFY(frame.statusWindow()->isVisible());
            auto* player = new QMdiSubWindow;
            player->setWidget(new QLabel("player"));
            setCommandContext(player, kPlayContext);
            frame.mdiArea()->addSubWindow(player);
            player->show();
            frame.mdiArea()->setActiveSubWindow(player);
            QStringList titles;
            for (QAction* top : frame.menuBar()->actions())
                if (top->isVisible()) titles << top->text();
            QCOMPARE(titles, (QStringList{"&File", "&View", "&Play", "&Window", "&Help"}));
            QAction* toolbar = findAction(frame.menuBar(), "&View", "&Toolbar");
            QVERIFY(toolbar && findAction(frame.menuBar(), "&View", "&Status Window"));
            toolbar->trigger();
            QVERIFY(frame.toolBar()->isVisible());
        }
        CMainFrame again;
        again.show();
        QVERIFY(again.toolBar()->isVisible());
    }

private:
    // Each button is enabled exactly when its entry is in the menu as it
    // shows on opening.
    void sameAsMenus(CMainFrame& frame, const char* state) {
        MainToolBar* bar = frame.toolBar();
        frame.updateCommandStates();
        bar->refresh();
        for (QAction* button : bar->buttons()) {
            QAction* entry = bar->entryFor(button);
            const bool expected = entry != nullptr && entry->isEnabled();
            QVERIFY2(button->isEnabled() == expected, qPrintable(QString("%1: %2").arg(state, button->text())));
        }
        frame.armShortcuts();
    }

    QTemporaryDir m_dir;
    QString m_demo;
    ScopedConfig m_config;
};

QTEST_MAIN(MainToolBarTest)
#include "MainToolBarTest.moc"
