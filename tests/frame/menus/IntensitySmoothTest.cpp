// "Intensity", "Smooth" and "Intensity/Smooth Options" driven through the
// main frame's menus on documents written for the test, with the message
// boxes and file dialogs answered: the contours and their offset, the
// failure texts, Smooth's question with each answer and its Undo, the grid
// dialog's round trip through the configuration file, and the contour drawn
// over the demo recording. With SONMETRA_SHOTS set to a folder, the
// frame with the contours and the dialog are saved there.
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QToolBar>

#include "MenuFixture.h"
#include "app/CKestruneApp.h"
#include "document/AppConfig.h"
#include "document/ChannelAnalysis.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "frame/IntensitySmoothDialog.h"
#include "log/CDatatbl5.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/DocumentWindows.h"
#include "view/WaveformRenderer.h"

using namespace sonmetra;
using namespace menutest;

namespace {

// Pixels of the contour's blue inside a strip of the view's picture.
int contourPixels(const QImage& image, const QRect& strip) {
    int n = 0;
    const QRect inside = strip.intersected(image.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            if (image.pixelColor(x, y) == kDerivedCurveColor) ++n;
    return n;
}

}  // namespace

class IntensitySmoothTest : public AnsweringTest<ScriptedFileDialogs> {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        keepFilesIn(m_dir.path());
        CKestruneApp::registerFeatures();
    }
    void cleanupTestCase() { AppServices::instance().config = nullptr; }
    void init() {
        m_config = std::make_unique<AppConfig>();
        m_config->setFilePath(m_dir.filePath("SonmetraConf.cfg").toStdString());
        AppServices::instance().config = m_config.get();
        m_messages.clear();
        m_dialogs.requests.clear();
        m_dialogs.answers.clear();
    }

    void intensityMeasuresEachChannelFromItsReference() {
        // 11025 Hz with the 20 ms window: 221 samples summed, divided by 221.
        const QString path = m_dir.filePath("constant.kvd");
        QVERIFY(writeDocument(path, {{"Audio", constant(3000, 100), true}, {"Flow", constant(3000, 500)}}, 11025.0));
        CMainFrame frame;
        frame.resize(900, 600);
        frame.show();
        CChildFrame* child = frame.openDocumentFile(path);
        QVERIFY(child);
        CKestruneDoc& doc = *child->document();
        CKestruneView* view = child->kestruneView();

        // The data channel's offset is its reference, here set to its level at the cursor.
        QTest::mouseClick(view, Qt::LeftButton, {}, QPoint(view->msToX(100.0), view->height() / 2));
        QVERIFY(view->cursorPlaced());
        QAction* setReference = findAction(frame.menuBar(), "&Edit", "Set Reference All");
        QVERIFY(setReference && setReference->isEnabled());
        setReference->trigger();
        QCOMPARE(doc.channel(1).m_reference, 500.0);
        QCOMPARE(doc.channel(0).m_reference, 0.0);  // the audio channel keeps its zero

        QAction* intensity = findAction(frame.menuBar(), "&Analysis", "Intensity");
        QVERIFY(intensity && intensity->isEnabled());
        QCOMPARE(intensity->shortcut(), QKeySequence("Ctrl+I"));
        QCOMPARE(intensity->statusTip(), QString("Perform power intensity of the waveform"));
        // Through its shortcut, as a user at the keyboard runs it.
        QVERIFY(QTest::qWaitForWindowActive(&frame));
        QTest::keyClick(view, Qt::Key_I, Qt::ControlModifier);
        QVERIFY(m_messages.texts().empty());
        for (int ch = 0; ch < 2; ++ch) {
            QCOMPARE(doc.channel(ch).m_intensityValid, 1);
            QCOMPARE(doc.channel(ch).m_intensityShown, 1);
            QCOMPARE(doc.channel(ch).m_intensity.size(), std::size_t{3000});
        }
        for (std::size_t i = 0; i < 3000; ++i) {
            QCOMPARE(doc.channel(0).m_intensity[i], 40.0);
            QCOMPARE(doc.channel(1).m_intensity[i], 0.0);
        }

        // "Set Reference All to Zero" measures the data channel from zero again: 10·log10(500²).
        findAction(frame.menuBar(), "&Edit", "Set Reference All to Zero")->trigger();
        QCOMPARE(doc.channel(1).m_intensity[1500], 20.0 * std::log10(500.0));
    }

    void commandsNeedData() {
        CMainFrame frame;
        frame.show();
        QVERIFY(frame.newDocument());
        for (const auto& [menu, text] : {std::pair{"&Analysis", "Intensity"}, std::pair{"&Analysis", "Smooth"},
                                         std::pair{"&Options", "Intensity/Smooth"}}) {
            QAction* a = findAction(frame.menuBar(), menu, text);
            QVERIFY2(a && !a->isEnabled(), text);
        }
    }

    void intensityStopsAtTheFailingChannel() {
        const QString path = m_dir.filePath("three.kvd");
        QVERIFY(writeDocument(
            path, {{"Audio", constant(2000, 100), true}, {"A", constant(2000, 50)}, {"B", constant(2000, 70)}},
            11025.0));
        CMainFrame frame;
        CChildFrame* child = frame.openDocumentFile(path);
        QVERIFY(child);
        // A step of 0 cannot come from the dialog or the file, but the command must survive it.
        m_config->m_channelSettings[1].intensityStepMs = 0.0;
        findAction(frame.menuBar(), "&Analysis", "Intensity")->trigger();
        QCOMPARE(QString::fromStdString(m_messages.lastText()), QString(" Intensity function failed "));
        const CKestruneDoc& doc = *child->document();
        QCOMPARE(doc.channel(0).m_intensityValid, 1);
        QCOMPARE(doc.channel(1).m_intensityValid, 0);
        QCOMPARE(doc.channel(2).m_intensityValid, 0);
    }

    void smoothAsksSmoothsAndUndoes() {
        const QString path = m_dir.filePath("ramp.kvd");
        const std::vector<std::int16_t> ramp = {0, 10, 20, 30};
        QVERIFY(writeDocument(path, {{"Audio", ramp, true}, {"Flow", ramp}, {"Pressure", ramp}}, 11025.0));
        CMainFrame frame;
        frame.show();
        CChildFrame* child = frame.openDocumentFile(path);
        QVERIFY(child);
        CKestruneDoc& doc = *child->document();
        // Out of the box the audio channel is left alone and the data channels are smoothed.
        QCOMPARE(m_config->m_channelSettings[0].smoothingOn, 0);
        QCOMPARE(m_config->m_channelSettings[1].smoothingOn, 1);
        m_config->m_channelSettings[0].smoothingOn = 1;
        m_config->m_channelSettings[0].smoothingLength = 2.0;
        m_config->m_channelSettings[1].smoothingLength = 2.0;
        m_config->m_channelSettings[2].smoothingOn = 0;
        int replaced = 0;
        QWidget pitchWindow;
        attachWindow(&doc, windowrole::kPitch, AttachedWindow{&pitchWindow, [&replaced] { ++replaced; }, {}, {}, {}});

        QAction* smooth = findAction(frame.menuBar(), "&Analysis", "Smooth");
        QVERIFY(smooth && smooth->isEnabled());
        QCOMPARE(smooth->shortcut(), QKeySequence("Ctrl+K"));

        // Cancel: nothing changes, nothing is kept for Undo.
        m_messages.queueAnswer(MsgAnswer::Cancel);
        smooth->trigger();
        QCOMPARE(QString::fromStdString(m_messages.lastText()),
                 QString("This operation will replace the existing data.\nDo you wish to save this data first?"));
        QCOMPARE(samplesOf(doc.channel(0)), ramp);
        QVERIFY(!doc.isModified());
        QVERIFY(!findAction(frame.menuBar(), "&Edit", "&Undo")->isEnabled());
        QCOMPARE(replaced, 0);

        // Yes, and the Save As dialog cancelled: still nothing changes.
        m_messages.queueAnswer(MsgAnswer::Yes);
        smooth->trigger();
        QCOMPARE(m_dialogs.requests.size(), 1);
        QCOMPARE(m_dialogs.requests.last().title, QString("Save file As"));
        QCOMPARE(samplesOf(doc.channel(0)), ramp);

        // No: smoothed at once, Undo brings the exact samples back.
        m_messages.queueAnswer(MsgAnswer::No);
        smooth->trigger();
        QCOMPARE(samplesOf(doc.channel(0)), (std::vector<std::int16_t>{5, 15, 20, 30}));
        QCOMPARE(samplesOf(doc.channel(1)), (std::vector<std::int16_t>{5, 15, 20, 30}));
        QCOMPARE(samplesOf(doc.channel(2)), ramp);  // its flag is off
        QVERIFY(doc.isModified());
        QCOMPARE(replaced, 1);  // an open pitch window recomputes
        QAction* undo = findAction(frame.menuBar(), "&Edit", "&Undo");
        QVERIFY(undo && undo->isEnabled());
        undo->trigger();
        for (int ch = 0; ch < 3; ++ch) QCOMPARE(samplesOf(doc.channel(ch)), ramp);

        // Yes with a name: the data as it was are saved first, then smoothed.
        const QString copy = m_dir.filePath("ramp-before.kvd");
        m_dialogs.answers.push_back(FileDialogAnswer{copy, 1});
        m_messages.queueAnswer(MsgAnswer::Yes);
        smooth->trigger();
        QCOMPARE(samplesOf(doc.channel(0)), (std::vector<std::int16_t>{5, 15, 20, 30}));
        CKestruneDoc saved;
        DefaultImportDialogs defaults;
        QVERIFY(openDocument(saved, copy.toStdString(), defaults));
        QCOMPARE(samplesOf(saved.channel(0)), ramp);
        detachWindow(&doc, windowrole::kPitch);
    }

    void smoothFailureIsReported() {
        const QString path = m_dir.filePath("fail.kvd");
        QVERIFY(writeDocument(path, {{"Audio", {0, 10, 20, 30}, true}, {"Flow", {0, 10, 20, 30}}}, 11025.0));
        CMainFrame frame;
        frame.show();
        QVERIFY(QTest::qWaitForWindowActive(&frame));
        CChildFrame* child = frame.openDocumentFile(path);
        QVERIFY(child);
        m_config->m_channelSettings[1].smoothingLength = 0.0;  // no average to take
        m_messages.queueAnswer(MsgAnswer::No);
        QTest::keyClick(child->kestruneView(), Qt::Key_K, Qt::ControlModifier);
        QCOMPARE(QString::fromStdString(m_messages.lastText()), QString(" Smmoth function failed "));
        QCOMPARE(samplesOf(child->document()->channel(1)), (std::vector<std::int16_t>{0, 10, 20, 30}));
    }

    void optionsGridRoundTripSurvivesARestart() {
        const QString path = m_dir.filePath("grid.kvd");
        QVERIFY(writeDocument(
            path, {{"Audio", constant(500, 1), true}, {"Airflow", constant(500, 2)}, {"Pressure", constant(500, 3)}},
            11025.0));
        CMainFrame frame;
        frame.show();
        CChildFrame* child = frame.openDocumentFile(path);
        QVERIFY(child);
        m_config->m_channelSettings[1].intensityWindowMs = 25.7;  // shown cut to 25
        QAction* options = findAction(frame.menuBar(), "&Options", "Intensity/Smooth");
        QVERIFY(options && options->isEnabled());

        bool checked = false;
        whenModal<IntensitySmoothDialog>([&](IntensitySmoothDialog* d) {
            CDatatbl5* g = d->grid();
            QCOMPARE(d->windowTitle(), QString("Intensity/Smooth Options"));
            QCOMPARE(g->rowCount(), 3);
            QCOMPARE(g->columnCount(), 6);
            QCOMPARE(g->rowTitle(0), QString("Audio"));
            QCOMPARE(g->rowTitle(2), QString("3"));
            QCOMPARE(g->text(1, IntensitySmoothDialog::kName), QString("Airflow"));
            QCOMPARE(g->displayText(1, IntensitySmoothDialog::kWindow), QString("25"));
            QCOMPARE(g->displayText(1, IntensitySmoothDialog::kStep), QString("10"));
            QCOMPARE(g->displayText(1, IntensitySmoothDialog::kLength), QString("5"));
            QVERIFY(!g->isChecked(0, IntensitySmoothDialog::kSmoothing));
            QVERIFY(g->isChecked(1, IntensitySmoothDialog::kSmoothing));
            shoot(d, "intensity-smooth-options");

            // A cell being edited keeps the dialog open, on OK and on Cancel.
            g->setCurrentCell(2, IntensitySmoothDialog::kWindow);
            g->editItem(g->item(2, IntensitySmoothDialog::kWindow));
            QVERIFY(g->editingInProgress());
            press(d, QDialogButtonBox::Ok);
            QVERIFY(d->isVisible());
            QVERIFY(QString::fromStdString(m_messages.lastText()).startsWith("Editing is in progress in the table.\n"));
            press(d, QDialogButtonBox::Cancel);
            QVERIFY(d->isVisible());
            auto* box = g->viewport()->findChild<QSpinBox*>();
            QVERIFY2(box, "whole-number cells edit in a spin box");
            box->setValue(40);
            g->commitEditing();
            QVERIFY(!g->editingInProgress());

            // A step of 0 ms is refused where it can still be corrected.
            g->item(1, IntensitySmoothDialog::kStep)->setData(Qt::EditRole, 0);
            m_messages.clear();
            press(d, QDialogButtonBox::Ok);
            QVERIFY(d->isVisible());
            QCOMPARE(
                QString::fromStdString(m_messages.lastText()),
                QString("The intensity window and step of channel 2 must be whole numbers of ms from 1 to 1000000."));
            // Text where a number belongs.
            g->item(1, IntensitySmoothDialog::kStep)->setData(Qt::EditRole, QString("five"));
            press(d, QDialogButtonBox::Ok);
            QCOMPARE(QString::fromStdString(m_messages.lastText()), QString("Error in getting data from table"));
            QVERIFY(d->isVisible());

            g->item(1, IntensitySmoothDialog::kStep)->setData(Qt::EditRole, 7);
            g->setCheck(0, IntensitySmoothDialog::kNormalise, true);
            g->setCheck(0, IntensitySmoothDialog::kSmoothing, true);
            g->item(2, IntensitySmoothDialog::kLength)->setData(Qt::EditRole, 9);
            checked = true;
            press(d, QDialogButtonBox::Ok);
        });
        options->trigger();
        QVERIFY(checked);

        const auto expectSettings = [](const AppConfig& c) {
            QCOMPARE(c.m_channelSettings[0].normalise, 1);
            QCOMPARE(c.m_channelSettings[0].smoothingOn, 1);
            QCOMPARE(c.m_channelSettings[1].intensityWindowMs, 25.0);  // read back as cut
            QCOMPARE(c.m_channelSettings[1].intensityStepMs, 7.0);
            QCOMPARE(c.m_channelSettings[2].intensityWindowMs, 40.0);
            QCOMPARE(c.m_channelSettings[2].smoothingLength, 9.0);
        };
        expectSettings(*m_config);
        QCOMPARE(child->document()->channel(2).m_smoothingLength, 9.0);

        // A new start reads the same settings from the file, and the dialog shows them.
        AppConfig restarted;
        QVERIFY(restarted.readFile(m_config->filePath()));
        expectSettings(restarted);
        AppServices::instance().config = &restarted;
        whenModal<IntensitySmoothDialog>([](IntensitySmoothDialog* d) {
            QCOMPARE(d->grid()->displayText(2, IntensitySmoothDialog::kWindow), QString("40"));
            QVERIFY(d->grid()->isChecked(0, IntensitySmoothDialog::kNormalise));
            // Cancel keeps everything as it was.
            d->grid()->item(2, IntensitySmoothDialog::kWindow)->setData(Qt::EditRole, 90);
            press(d, QDialogButtonBox::Cancel);
        });
        findAction(frame.menuBar(), "&Options", "Intensity/Smooth")->trigger();
        QCOMPARE(restarted.m_channelSettings[2].intensityWindowMs, 40.0);
        AppServices::instance().config = m_config.get();
    }

    void contourIsDrawnOverTheDemoRecording() {
        const QString path = m_dir.filePath("demo.kvd");
        QFile::remove(path);
        QVERIFY(QFile::copy(SONMETRA_DEMO, path));
        CMainFrame frame;
        frame.resize(1100, 700);
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        CChildFrame* child = frame.openDocumentFile(path);
        QVERIFY(child);
        CKestruneView* view = child->kestruneView();
        CKestruneDoc& doc = *child->document();
        const QImage before = view->renderNow().copy();
        findAction(frame.menuBar(), "&Analysis", "Intensity")->trigger();
        const QImage& after = view->renderNow();
        const qreal dpr = after.devicePixelRatio();
        for (int ch = 0; ch < doc.channelCount(); ++ch) {
            const StripRect& s = doc.channel(ch).m_strip;
            const QRect strip(QPoint(int(s.left * dpr), int(s.top * dpr)),
                              QPoint(int(s.right * dpr), int(s.bottom * dpr)));
            QCOMPARE(contourPixels(before, strip), 0);
            // A curve across the strip: at least one point per few columns.
            QVERIFY2(contourPixels(after, strip) > strip.width() / 4, doc.channel(ch).m_name.c_str());
        }
        QTest::qWait(50);
        shoot(&frame, "intensity-over-demo");
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<AppConfig> m_config;
};

QTEST_MAIN(IntensitySmoothTest)
#include "IntensitySmoothTest.moc"
