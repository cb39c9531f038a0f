// The "FFT/LPC Option" and "Log..." dialogs: defaults at two rates, the
// enabling of their fields, the range checks of OK, the configuration record
// surviving a restart, and open spectrum windows following the new settings.
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

#include "SpectrumFixture.h"
#include "analysis/FftSpectrum.h"
#include "document/ByteOrder.h"
#include "document/MessageService.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "frame/CommandMenus.h"
#include "frame/FftLpcOptionDialog.h"
#include "frame/LogOptionDialog.h"
#include "log/CFormLog.h"
#include "view/CKestruneView.h"
#include "view/DocumentWindows.h"
#include "view/TimeBase.h"
#include "view/spectrum/CFFTLPCFrame.h"
#include "view/spectrum/CFFTLPCView.h"
#include "view/spectrum/SpectrumReadoutBar.h"

using namespace spectrumtest;

namespace {

QPushButton* buttonNamed(QDialog& dialog, const QString& text) {
    for (auto* b : dialog.findChildren<QPushButton*>())
        if (b->text() == text) return b;
    return nullptr;
}

QStringList labelTexts(QDialog& dialog) {
    QStringList texts;
    for (auto* l : dialog.findChildren<QLabel*>()) texts << l->text();
    for (auto* b : dialog.findChildren<QAbstractButton*>()) texts << b->text();
    return texts;
}

}  // namespace

class SpectrumOptionsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { registerAll(); }

    void defaultSizeFollowsTheRate() {
        const struct {
            double rate;
            int applied, range, order;
        } cases[] = {{11025.0, 23, 5000, 14}, {44100.0, 5, 22000, 48}};
        for (const auto& c : cases) {
            sonmetra::FftLpcSettings odd;
            odd.fftSizeIndex = 7;
            odd.appliedWindowMs = 2;
            odd.frequencyRangeHz = 300;
            odd.averageStepMs = 77;
            odd.lpcOrder = 90;
            odd.drawLpc = 0;
            odd.absoluteLevel = 0;
            odd.absoluteLevelDb = 120;
            odd.print = {2.5, 1.5, 0, 0};
            odd.frequencyGrid = 0;
            odd.frequencyGridHz = 250;
            odd.powerGrid = 0;
            odd.powerGridDb = 5;
            FftLpcOptionDialog dialog(odd, c.rate);
            QCOMPARE(dialog.windowTitle(), QString("FFT/LPC Option"));
            QCOMPARE(dialog.fftSizeField()->count(), 8);
            for (int i = 0; i < 8; ++i)
                QCOMPARE(dialog.fftSizeField()->itemText(i), QString::fromStdString(sonmetra::FftSizeLabel(i, c.rate)));
            QPushButton* defaults = buttonNamed(dialog, "Default size");
            QVERIFY(defaults != nullptr);
            defaults->click();
            const sonmetra::FftLpcSettings s = dialog.settings();
            QCOMPARE(s.fftSizeIndex, 3);
            QCOMPARE(s.appliedWindowMs, c.applied);
            QCOMPARE(s.frequencyRangeHz, c.range);
            QCOMPARE(s.averageStepMs, 10);
            QCOMPARE(s.lpcOrder, c.order);
            QCOMPARE(s.drawLpc, 1);
            QCOMPARE(s.absoluteLevel, 1);
            QCOMPARE(s.absoluteLevelDb, 80);
            QCOMPARE(s.print.width, 6.0);
            QCOMPARE(s.print.height, 4.0);
            QCOMPARE(s.print.inches, 1);
            QCOMPARE(s.print.color, 1);
            QCOMPARE(s.frequencyGrid, 1);
            QCOMPARE(s.frequencyGridHz, 1000);
            QCOMPARE(s.powerGrid, 1);
            QCOMPARE(s.powerGridDb, 20);
        }
        FftLpcOptionDialog dialog({}, 11025.0);
        QCOMPARE(dialog.fftSizeField()->itemText(3), QString("  43  Hz   ( 256 pts)"));
        const QStringList texts = labelTexts(dialog);
        for (const char* label :
             {"Bandwidth (Window Length ) = ", "Applied window length (ms)  = ", "Frequency range (Hz) = ",
              "Average step size (ms) = ", "LPC number of coefficients = ", "Draw LPC",
              "Absolute  (dB)  = ", "Relative ", "Width  = ", "Height =", "inches", "cm", "Color", "Black / White",
              "Add Frequency grid with spacing (Hz) = ", "Add Power grid with spacing (dB)       = "})
            QVERIFY2(texts.contains(label), label);
    }

    void fieldsAreEnabledByTheirChecks() {
        FftLpcOptionDialog dialog({}, 11025.0);
        shoot(&dialog, "options");
        QVERIFY(dialog.absoluteLevelField()->isEnabled());
        dialog.relativeField()->setChecked(true);
        QVERIFY(!dialog.absoluteLevelField()->isEnabled());
        dialog.absoluteField()->setChecked(true);
        QVERIFY(dialog.absoluteLevelField()->isEnabled());
        QVERIFY(dialog.frequencyGridSpacingField()->isEnabled());
        dialog.frequencyGridField()->setChecked(false);
        QVERIFY(!dialog.frequencyGridSpacingField()->isEnabled());
        QVERIFY(dialog.powerGridSpacingField()->isEnabled());
        dialog.powerGridField()->setChecked(false);
        QVERIFY(!dialog.powerGridSpacingField()->isEnabled());
        QCOMPARE(dialog.lpcOrderField()->minimum(), 4);
        QCOMPARE(dialog.lpcOrderField()->maximum(), 100);
    }

    void okAdjustsOutOfRangeValuesToTheMaximum() {
        sonmetra::RecordingMessageService messages;
        sonmetra::ScopedMessageService scoped(&messages);
        FftLpcOptionDialog dialog(sonmetra::AnalysisSettings::defaultsForRate(11025.0).fftLpc, 11025.0);
        dialog.appliedWindowField()->setValue(100);
        dialog.frequencyRangeField()->setValue(9000);
        dialog.accept();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        const std::vector<std::string> expected = {
            "Selected applied window is out of range.\nIt will be adjusted to maximum.",
            "Selected display frequency is out of range.\nIt will be adjusted to maximum. "};
        QCOMPARE(messages.texts(), expected);
        QCOMPARE(dialog.settings().appliedWindowMs, 23);
        QCOMPARE(dialog.settings().frequencyRangeHz, 5512);

        // The maximum follows the chosen FFT size: 1024 points last 92 ms.
        messages.clear();
        FftLpcOptionDialog larger(sonmetra::AnalysisSettings::defaultsForRate(11025.0).fftLpc, 11025.0);
        larger.fftSizeField()->setCurrentIndex(5);
        larger.appliedWindowField()->setValue(92);
        larger.accept();
        QVERIFY(messages.texts().empty());
        QCOMPARE(larger.settings().appliedWindowMs, 92);
    }

    // OK writes the record; a new configuration read from the file has the
    // same values, and the open window computes again with them.
    void settingsSurviveARestartAndOpenWindowsFollow() {
        RateConfig config;
        sonmetra::RecordingMessageService messages;
        sonmetra::ScopedMessageService scoped(&messages);
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        timebase::placeCursor(*doc, 300.0);
        view.setCursorPlaced(true);
        viewCommand("FFT/LPC\tCtrl+F").run(view);
        auto* frame = qobject_cast<CFFTLPCFrame*>(attachedWindow(doc.get(), windowrole::kSpectrum));
        QVERIFY(frame != nullptr);

        whenModal<FftLpcOptionDialog>([](FftLpcOptionDialog* d) {
            d->fftSizeField()->setCurrentIndex(4);
            d->appliedWindowField()->setValue(46);
            d->lpcOrderField()->setValue(20);
            d->relativeField()->setChecked(true);
            d->widthField()->setValue(12.5);
            d->cmField()->setChecked(true);
            d->blackWhiteField()->setChecked(true);
            d->powerGridSpacingField()->setValue(10);
            d->accept();
        });
        windowCommand("FFT/LPC...").run(*frame->view());
        QVERIFY(messages.texts().empty());
        QCOMPARE(frame->view()->readoutBar()->text(SpectrumReadoutBar::Readout::WindowLength),
                 QString("Window Length (pts) =  512"));
        QCOMPARE(frame->view()->readoutBar()->text(SpectrumReadoutBar::Readout::LpcCoefficients),
                 QString("LPC Coefficients  = 20"));
        QCOMPARE(frame->view()->result().bins(), 256);
        QCOMPARE(doc->m_analysis.fftLpc.lpcOrder, 20);

        sonmetra::AppConfig restarted;
        QVERIFY(restarted.readFile(config.config.filePath()));
        const sonmetra::FftLpcSettings& s = restarted.m_analysis.fftLpc;
        QCOMPARE(s.fftSizeIndex, 4);
        QCOMPARE(s.appliedWindowMs, 46);
        QCOMPARE(s.lpcOrder, 20);
        QCOMPARE(s.absoluteLevel, 0);
        QCOMPARE(s.print.width, 12.5);
        QCOMPARE(s.print.inches, 0);
        QCOMPARE(s.print.color, 0);
        QCOMPARE(s.powerGridDb, 10);
        delete frame;
    }

    void logOptionIsKeptAtItsPlaceInTheRecord() {
        RateConfig config;
        whenModal<LogOptionDialog>([](LogOptionDialog* d) {
            QCOMPARE(d->frameStepField()->minimum(), 1);
            QCOMPARE(d->frameStepField()->maximum(), 5000);
            d->frameStepField()->setValue(250);
            d->accept();
        });
        auto doc = makeDocument(sonmetra::synth::synthesizeVowel(vowelRecipe()), 11025.0);
        CKestruneView view(doc.get());
        viewCommand("Log...").run(view);
        QCOMPARE(config.config.m_logFrameStepHz, 250);
        QFile file(QString::fromStdString(config.config.filePath()));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QCOMPARE(bytes.size(), 2224);
        QCOMPARE(sonmetra::getI32(reinterpret_cast<const std::uint8_t*>(bytes.constData()) + 408, false), 250);
        sonmetra::AppConfig restarted;
        QVERIFY(restarted.readFile(config.config.filePath()));
        QCOMPARE(restarted.m_logFrameStepHz, 250);
    }

    // In the workspace: the commands stand in their menus, Ctrl+F in the
    // waveform view opens the window there, its context's menus take over,
    // and Ctrl+T reaches its marker entry.
    void theWindowOpensInTheWorkspaceWithItsMenus() {
        RateConfig config;
        sonmetra::RecordingMessageService messages;
        sonmetra::ScopedMessageService scoped(&messages);
        CMainFrame frame;
        CommandMenus* menus = frame.commandMenus();
        QAction* fft = menus->action(QString(), "FFT/LPC");
        QVERIFY(fft != nullptr);
        QCOMPARE(fft->shortcut(), QKeySequence("Ctrl+F"));
        // The prompt's first line goes to the status bar, its second to the tooltip.
        QCOMPARE(fft->statusTip(), QString("Perform FFT & LPC analysis"));
        QCOMPARE(fft->toolTip(), QString("FFT/LPC"));
        QCOMPARE(menus->action(QString(), "FFT/LPC Selection")->statusTip(),
                 QString("Perform average FFT & LPC analysis for a selection"));
        for (const char* text : {"FFT/LPC Selection", "FFT/LPC...", "Log..."})
            QVERIFY2(menus->action(QString(), text) != nullptr, text);
        for (const char* text : {"Save As bmp...", "Print...", "Print Preview", "Copy", "Enter at Marker",
                                 "Enter Formants and Bandwidths", "Enter All FFT/LPC Frame", "FFT/LPC...", "Log..."})
            QVERIFY2(menus->action(kSpectrumContext, text) != nullptr, text);
        QCOMPARE(menus->action(kSpectrumContext, "Enter at Marker")->shortcut(), QKeySequence("Ctrl+T"));
        frame.resize(1200, 800);
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        QVERIFY(frame.openDocumentFile(SONMETRA_DEMO) != nullptr);
        CKestruneView* view = frame.activeView();
        QVERIFY(view != nullptr);
        timebase::placeCursor(*view->document(), 700.0);
        view->setCursorPlaced(true);
        QTest::keyClick(view, Qt::Key_F, Qt::ControlModifier);
        QMdiSubWindow* active = frame.mdiArea()->activeSubWindow();
        auto* spectrum = qobject_cast<CFFTLPCFrame*>(active);
        QVERIFY(spectrum != nullptr);
        QCOMPARE(spectrum->windowTitle(), QString("demo.kvd::FFT/LPC"));
        QCOMPARE(menus->activeContext(), kSpectrumContext);
        bool logMenuShown = false;
        for (QAction* top : frame.menuBar()->actions())
            if (top->text() == "&Log" && top->isVisible()) logMenuShown = true;
        QVERIFY(logMenuShown);

        spectrum->showMaximized();
        CFormLog log;
        log.makeActive();
        spectrum->view()->placeMarkerAtHz(1575.0);
        QTest::keyClick(spectrum->view(), Qt::Key_T, Qt::ControlModifier);
        QCOMPARE(log.entryCount(), 1);
        shoot(&frame, "workspace");
        shoot(spectrum, "window");
        QVERIFY(messages.texts().empty());
    }
};

QTEST_MAIN(SpectrumOptionsTest)
#include "SpectrumOptionsTest.moc"
