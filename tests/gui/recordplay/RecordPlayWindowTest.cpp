// The Record/Play options window and the Record and play commands with the
// source "External Hardware", on the simulated unit, driven through the
// main frame's command, the form's widgets and the view's commands.
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMenuBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QTimer>

#include "RecordPlayFixture.h"
#include "document/AppConfig.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "io/SimulatedWaveDevice.h"
#include "io/usb/UsbUnitSettings.h"
#include "log/CDatatbl5.h"
#include "view/AppServices.h"
#include "view/CRecordPlay.h"
#include "view/pitch/CPitchFrame.h"
#include "view/pitch/CPitchView.h"
#include "view/pitch/PitchComputation.h"
#include "view/recordplay/CFormRecordPlay.h"
#include "view/recordplay/CFrameRecordPlay.h"

using namespace sonmetra;
using namespace rptest;

namespace {

// Blank rows of the view's picture inside strip `index` (white = nothing drawn).
int inkedRows(const QImage& img, const CKestruneView& view, int index) {
    int rows = 0;
    for (int y = 0; y < img.height(); ++y) {
        if (view.channelAt(QPoint(img.width() / 2, y)) != index) continue;
        bool ink = false;
        for (int x = view.traceArea().left() + 5; x < view.traceArea().right() - 5 && !ink; x += 3)
            ink = qGray(img.pixel(x, y)) < 100;
        rows += ink ? 1 : 0;
    }
    return rows;
}

const char* kMismatch =
    "Error occured during sampling process.\nThe requested and recorded times are not the same.\nPlease RE-SELECT the "
    "audio sample rate and check the recording time in the \nOptions->Record/Play and try again.\nThis data is not "
    "valid.";

}  // namespace

class RecordPlayWindowTest : public UnitWindowTest {
    Q_OBJECT

    usb::UnitFirmware& firmware() { return m_unit->firmware(); }
    CFormRecordPlay* openForm() {
        CFrameRecordPlay* frame = CFrameRecordPlay::instance();
        if (frame == nullptr || frame->isHidden()) frame = CFrameRecordPlay::toggle(m_area.get());
        return frame->form();
    }
    // The form set to record `seconds` from the unit with rows 1-8 selected.
    CFormRecordPlay* formForUnitRecording(int ms, int multiplexType) {
        CFormRecordPlay* form = openForm();
        form->sourceBox()->setCurrentText("External Hardware");
        form->recordTimeBox()->setValue(ms);
        form->multiplexBox()->setCurrentText(QString::number(multiplexType));
        for (int r = 1; r <= 8; ++r) form->channelTable()->setCheck(r, CFormRecordPlay::kSelected, true);
        return form;
    }
    void record(CKestruneView& view) {
        viewCommand("Record\tCtrl+R").run(view);
        auto* feature = view.extension<CRecordPlay>();
        // Timer 1 starts the transfer, which has ended when the timer's handler returns.
        QVERIFY(waitFor([&] { return !feature->recordPending() && QApplication::activeModalWidget() == nullptr; }));
    }

private slots:
    void initTestCase() { registerRecordPlayCommands(); }

    void init() { startSession(QSize(1000, 800)); }

    void cleanup() {
        m_area.reset();  // takes the options window with it
        QVERIFY(CFrameRecordPlay::instance() == nullptr);
        QVERIFY(CFormRecordPlay::openForm() == nullptr);
        endSession();
    }

    void theMainFramesCommandTogglesTheWindowInPlace() {
        m_area.reset();
        CMainFrame frame;
        frame.resize(1100, 800);
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        QAction* toggle = findAction(frame.menuBar(), "&Options", "Record/Play");
        QVERIFY(toggle != nullptr);

        toggle->trigger();
        CFrameRecordPlay* window = CFrameRecordPlay::instance();
        QVERIFY(window != nullptr);
        QVERIFY(window->isVisible());
        QCOMPARE(window->windowTitle(), QString("Record/Play"));
        QCOMPARE(window->form()->unitStatus()->text(), QString("Simulated unit (9 channels)"));
        window->setGeometry(40, 30, 700, 520);
        const QRect placed = window->geometry();

        toggle->trigger();
        QVERIFY(window->isHidden());
        QCOMPARE(CFrameRecordPlay::instance(), window);  // hidden, not gone

        // Another window on top; the command brings the options back above it, where they were.
        frame.newDocument();
        QVERIFY(frame.mdiArea()->activeSubWindow() != window);
        toggle->trigger();
        QVERIFY(window->isVisible());
        QCOMPARE(window->geometry(), placed);
        QCOMPARE(frame.mdiArea()->activeSubWindow(), window);

        // Closing hides it as well.
        window->close();
        QVERIFY(window->isHidden());
        QCOMPARE(CFrameRecordPlay::instance(), window);

        // The menu's Record in a new document, with the window open beside it, records from the unit.
        toggle->trigger();
        formForUnitRecording(700, 2);
        window->setGeometry(560, 0, 520, 560);
        CChildFrame* child = frame.newDocument();
        child->setGeometry(0, 0, 560, 560);
        QAction* recordAction = findAction(frame.menuBar(), "&Record/Play", "Record");
        QVERIFY(recordAction != nullptr);
        recordAction->trigger();
        QVERIFY(waitFor([&] { return child->document()->holdsData(); }));
        QCOMPARE(child->document()->channelCount(), 9);
        QCOMPARE(child->document()->channel(8).m_name, std::string("ch8"));
        QVERIFY2(m_messages->texts().empty(), m_messages->lastText().c_str());
        shoot(&frame, "main-frame-unit-recording");
    }

    void theFormEditsTheRecordOptions() {
        CFormRecordPlay* form = openForm();
        QCOMPARE(form->sourceBox()->currentText(), QString("Computer"));
        QVERIFY(!form->inputLineBox()->isEnabled());
        form->sourceBox()->setCurrentText("External Hardware");
        QVERIFY(form->inputLineBox()->isEnabled());
        form->inputLineBox()->setCurrentText("Line");
        form->recordTimeBox()->setValue(2500);
        form->lineRateBox()->setValue(22050);
        form->externalRateBox()->setValue(16000);
        form->multiplexBox()->setCurrentText("1");
        form->deviceBox()->setCurrentText("Ezusb-0");
        CDatatbl5* table = form->channelTable();
        QCOMPARE(table->rowTitle(0), QString("Audio"));
        QCOMPARE(table->rowTitle(16), QString("ch16"));
        QCOMPARE(table->displayText(0, CFormRecordPlay::kRate), QString("16000"));  // the unit's audio rate
        table->setCheck(3, CFormRecordPlay::kSelected, true);
        table->setWholeNumber(3, CFormRecordPlay::kRate, 2750);
        table->setWholeNumber(3, CFormRecordPlay::kBandwidth, 1000);
        table->setWholeNumber(3, CFormRecordPlay::kGain, 20);
        form->takeSettings();
        shoot(CFrameRecordPlay::instance(), "record-play-window");

        QCOMPARE(m_config->m_source, std::string("External Hardware"));
        QCOMPARE(m_config->m_inputLine, std::string("Line"));
        QCOMPARE(m_config->m_recordTimeMs, 2500);
        QCOMPARE(m_config->m_lineRateHz, 22050);
        QCOMPARE(m_config->m_externalRateHz, 16000);
        QCOMPARE(m_config->m_multiplexType, 1);
        QCOMPARE(m_config->m_driverSetting, 1);
        QCOMPARE(usb::currentDeviceName(), std::string("\\\\.\\Ezusb-0"));
        QVERIFY(m_config->m_rows[3].selected());
        QVERIFY(!m_config->m_rows[4].selected());
        QCOMPARE(m_config->m_rows[3].rateHz, 2750);
        QCOMPARE(m_config->m_rows[3].bandwidthHz, 1000);
        QCOMPARE(m_config->m_rows[3].gain, 20);

        // "Line" records the sound card's line input: source "Computer" with input line "Line".
        form->sourceBox()->setCurrentText("Line");
        form->takeSettings();
        QCOMPARE(m_config->m_source, std::string("Computer"));
        QCOMPARE(m_config->m_inputLine, std::string("Line"));

        // Apply writes the configuration file, which reads back the same.
        form->applyButton()->click();
        AppConfig back;
        QVERIFY(back.readFile(m_config->filePath()));
        QCOMPARE(back.m_multiplexType, 1);
        QCOMPARE(back.m_driverSetting, 1);
        QCOMPARE(back.m_rows[3].word, m_config->m_rows[3].word);
        QCOMPARE(back.m_inputLine, std::string("Line"));
        QVERIFY(m_messages->texts().empty());
    }

    void aRefusedValueTakesNothingAndKeepsTheWindowShown() {
        CFormRecordPlay* form = openForm();
        form->recordTimeBox()->setValue(777);
        form->channelTable()->setWholeNumber(2, CFormRecordPlay::kRate, 500);
        QVERIFY_THROWS_EXCEPTION(UserException, form->takeSettings());
        QCOMPARE(m_messages->lastText(), std::string("The sample rate of ch2 must be 0 (the rate the multiplex row "
                                                     "gives) or a whole number of Hz from 1000 to 45000."));
        QVERIFY(m_config->m_recordTimeMs != 777);
        QVERIFY(!CFrameRecordPlay::instance()->hideTakingSettings());
        QVERIFY(CFrameRecordPlay::instance()->isVisible());

        form->channelTable()->setText(2, CFormRecordPlay::kRate, "fast");
        QVERIFY(!CFormRecordPlay::takeOpenFormSettings());
        form->channelTable()->setWholeNumber(2, CFormRecordPlay::kRate, 11000);
        form->channelTable()->setWholeNumber(5, CFormRecordPlay::kGain, 351);
        QVERIFY(!CFormRecordPlay::takeOpenFormSettings());
        QCOMPARE(m_messages->lastText(), std::string("The gain of ch5 must be a whole number from 0 to 350."));
        form->channelTable()->setWholeNumber(5, CFormRecordPlay::kGain, 1);
        form->usbIdEdit(0)->setText("12:34");
        QVERIFY(!CFormRecordPlay::takeOpenFormSettings());
        QCOMPARE(m_messages->lastText(),
                 std::string("The USB id of Rvm-0 must be four hexadecimal digits of the vendor, a colon and four of "
                             "the product, e.g. 1209:0001; '12:34' is not."));
        form->usbIdEdit(0)->setText("1209:0001");
        QVERIFY(CFormRecordPlay::takeOpenFormSettings());
        QCOMPARE(m_config->m_recordTimeMs, 777);
    }

    void unitSettingsAreKeptWhereTheCommandLineReadsThem() {
        CFormRecordPlay* form = openForm();
        form->unitBox()->setCurrentIndex(form->unitBox()->findData(13));
        form->usbIdEdit(0)->setText("abcd:0123");
        form->identifyButton()->click();
        QCOMPARE(form->identifiedSize(), 13);
        QCOMPARE(form->unitStatus()->text(), QString("Simulated unit (13 channels)"));
        QCOMPARE(QSettings().value("UsbUnit/Simulated").toInt(), 13);
        QCOMPARE(QSettings().value("UsbUnit/Rvm-0").toString(), QString("abcd:0123"));
        // sonmetra-cli reads the same file, and the working folder from it.
        QSettings().setValue("General Strings Section/Temp Directory", "/home/phonetics/Sonmetra data");
        QSettings().sync();
        std::string workingFolder;
        const usb::UsbUnitSettings cli = usb::readUsbSettingsFile(usb::settingsFilePath(), {}, &workingFolder);
        QCOMPARE(workingFolder, std::string("/home/phonetics/Sonmetra data"));
        QCOMPARE(cli.simulatedChannels, 13);
        QVERIFY((cli.ids.at("Rvm-0") == usb::UsbId{0xabcd, 0x0123}));
        QVERIFY((cli.ids.at("Ezusb-0") == usb::UsbId{0x04b4, 0x8613}));

        // The real unit: said plainly, and that none answers.
        form->unitBox()->setCurrentIndex(0);
        form->identifyButton()->click();
        QCOMPARE(form->identifiedSize(), -1);
        QCOMPARE(form->unitStatus()->text(), QString("USB unit Rvm-0 (abcd:0123): not found"));
        QVERIFY(m_messages->texts().empty());
    }

    void recordingFromTheUnitFillsTheDocumentThatSavesAndReopens() {
        formForUnitRecording(1000, 2);
        CKestruneDoc doc;
        CKestruneView view(&doc);
        view.resize(900, 700);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        record(view);
        QVERIFY2(m_messages->texts().empty(), m_messages->lastText().c_str());
        QCOMPARE(doc.channelCount(), 9);
        QVERIFY(doc.holdsData());
        QVERIFY(doc.isModified());
        for (int i = 0; i < 9; ++i) {
            const CChannel& ch = doc.channel(i);
            QCOMPARE(ch.m_name, i == 0 ? std::string("Audio") : "ch" + std::to_string(i));
            QCOMPARE(ch.m_rateHz, i <= 6 ? 11000.0 : 5500.0);
            QCOMPARE(ch.m_sampleCount, i <= 6 ? 11000.0 : 5500.0);
            QCOMPARE(ch.m_audio, i == 0 ? 1 : 0);
        }
        const auto block = firmware().parameterBlock();
        QVERIFY(block.has_value());
        QCOMPARE((*block)[8 + 7], std::uint8_t{8});  // the 9-channel type-2 row: ... 6 8

        // Every channel shows its trace.
        const QImage shot = view.grab().toImage().convertToFormat(QImage::Format_RGB32);
        shoot(shot, "unit-recording");
        for (int i = 0; i < 9; ++i) QVERIFY2(inkedRows(shot, view, i) > 5, qPrintable(QString::number(i)));

        const std::string path = m_dir.filePath("unit.kvd").toStdString();
        QVERIFY(doc.saveAs(path, 1));
        CKestruneDoc back;
        DefaultImportDialogs dialogs;
        QVERIFY(openDocument(back, path, dialogs));
        QCOMPARE(back.channelCount(), 9);
        for (int i = 0; i < 9; ++i) {
            QCOMPARE(back.channel(i).m_name, doc.channel(i).m_name);
            QCOMPARE(back.channel(i).m_rateHz, doc.channel(i).m_rateHz);
            QVERIFY(std::equal(back.channel(i).m_samples.begin(), back.channel(i).m_samples.end(),
                               doc.channel(i).m_samples.begin(), doc.channel(i).m_samples.end()));
        }
    }

    void theRecordingShowsItsElapsedTime() {
        usb::UsbUnitSettings realTime = usbUnitSettingsInForce();
        realTime.simulatedRealTime = true;
        applyUsbUnitSettings(realTime, true);
        formForUnitRecording(300, 2);
        CKestruneDoc doc;
        CKestruneView view(&doc);
        view.show();
        QString seen;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            const auto* p = view.findChild<QProgressDialog*>();
            if (p != nullptr && p->isVisible() && p->isModal()) seen = p->labelText();
        });
        watch.start(20);
        record(view);
        QVERIFY2(m_messages->texts().empty(), m_messages->lastText().c_str());
        QVERIFY2(seen.startsWith("Recording from Simulated unit (9 channels)...\nElapsed: "), qPrintable(seen));
        QVERIFY2(seen.endsWith(" of 0.3 s"), qPrintable(seen));
        QCOMPARE(doc.channel(0).m_sampleCount, 3300.0);
    }

    void aFailedAcquisitionLeavesTheDocumentAsItWas() {
        formForUnitRecording(500, 2);
        CKestruneDoc doc;
        fillTone(doc, 8000.0, 4000);
        CKestruneView view(&doc);
        view.show();
        firmware().refuseRequest(usb::kRequestSetup);
        record(view);
        QCOMPARE(m_messages->texts(),
                 (std::vector<std::string>{"Request send command failed.", "Sample routine failed."}));
        QCOMPARE(m_messages->beeps(), 1);
        QCOMPARE(firmware().requestLog().back(), usb::kRequestStop);
        QCOMPARE(doc.channelCount(), 1);
        QCOMPARE(doc.channel(0).m_sampleCount, 4000.0);
        QCOMPARE(doc.channel(0).m_rateHz, 8000.0);

        // A unit that will not open: its message and the same ending.
        m_messages->clear();
        firmware().clearFaults();
        m_unit->setPlugged(false);
        record(view);
        QCOMPARE(m_messages->texts(),
                 (std::vector<std::string>{"Error in opening the requested USB device.\nPlease unplug the device, "
                                           "wait a few seconds and replug the device.",
                                           "Sample routine failed."}));
        QCOMPARE(doc.channel(0).m_sampleCount, 4000.0);
    }

    void aRowTheUnitHasNotIsRefusedBeforeItRuns() {
        formForUnitRecording(500, 3);
        CKestruneDoc doc;
        CKestruneView view(&doc);
        view.show();
        record(view);
        QCOMPARE(m_messages->texts(), std::vector<std::string>{"Unknown multiplex type."});
        // Only identified (by the form when it opened, and by Record): the unit never ran.
        for (const std::uint8_t request : firmware().requestLog()) QCOMPARE(request, usb::kRequestIdentify);
        QVERIFY(!doc.holdsData());
    }

    void ratesTheRowCannotCarryBringTheSamplingWarning() {
        formForUnitRecording(500, 1);  // carries ch1-4 at 5500 Hz, the rows ask 11000
        CKestruneDoc doc;
        CKestruneView view(&doc);
        view.show();
        record(view);
        QCOMPARE(m_messages->texts(), std::vector<std::string>{kMismatch});
        QCOMPARE(doc.channelCount(), 9);
        QCOMPARE(doc.channel(1).m_rateHz, 11000.0);
        QCOMPARE(doc.channel(1).m_durationMs, 250.0);
    }

    void playingGoesThroughTheUnitWithTheSourceExternalHardware() {
        CFormRecordPlay* form = openForm();
        form->sourceBox()->setCurrentText("External Hardware");
        CKestruneDoc doc;
        fillTone(doc, 11025.0, 30000);
        CKestruneView view(&doc);
        view.show();
        viewCommand("Play All\tCtrl+Y").run(view);
        QVERIFY(waitFor([] { return QApplication::activeModalWidget() == nullptr; }));
        QCOMPARE(firmware().playClockValue(), std::uint16_t{75});
        auto played = firmware().playedSamples();
        QCOMPARE(played.size(), std::size_t{29984});  // 60,000 bytes: one block and 15,936 of the 15,968 left
        QVERIFY(std::equal(played.begin(), played.end(), doc.channel(0).m_samples.begin()));

        // Play Selection plays the selection, its tail cut to whole 64 bytes.
        CChannel& ch = doc.channel(0);
        ch.m_selStartSample = 1000;
        ch.m_selEndSample = 1000 + 100;
        view.setSelectionPresent(true);
        viewCommand("Play Selection\tCtrl+U").run(view);
        played = firmware().playedSamples();
        QCOMPARE(played.size(), std::size_t{96});
        QVERIFY(std::equal(played.begin(), played.end(), ch.m_samples.begin() + 1000));
        QVERIFY(m_messages->texts().empty());
    }

    void soundCardSourcesRecordAtTheirOwnRates() {
        auto sound = SimulatedWaveDriver::create();
        setWaveDriver(sound);
        CFormRecordPlay* form = openForm();
        form->sourceBox()->setCurrentText("Line");
        form->lineRateBox()->setValue(22050);
        CKestruneDoc doc;
        CKestruneView view(&doc);
        view.show();
        viewCommand("Record\tCtrl+R").run(view);
        auto* feature = view.extension<CRecordPlay>();
        QVERIFY(waitFor([&] { return feature->recording(); }));
        QCOMPARE(sound->lastInputFormat().samplesPerSec, 22050u);
        feature->stopRecording();
        QCOMPARE(firmware().streamedBytes(), std::uint64_t{0});

        form->sourceBox()->setCurrentText("Computer");
        form->computerRateBox()->setValue(16000);
        m_messages->queueAnswer(MsgAnswer::No);  // no saving of the first recording
        viewCommand("Record\tCtrl+R").run(view);
        QVERIFY(waitFor([&] { return feature->recording(); }));
        QCOMPARE(sound->lastInputFormat().samplesPerSec, 16000u);
        feature->stopRecording();
        setWaveDriver(nullptr);
    }

    // A finished recording replaces the samples: an open pitch window
    // tracks the new ones.
    void pitchWindowTracksANewRecording() {
        auto sound = SimulatedWaveDriver::create();
        setWaveDriver(sound);
        CFormRecordPlay* form = openForm();
        form->sourceBox()->setCurrentText("Computer");
        form->computerRateBox()->setValue(11025);
        CKestruneDoc doc;
        CKestruneView view(&doc);
        view.show();
        auto* feature = view.extension<CRecordPlay>();
        sound->setInputSignal(SimulatedWaveDriver::sine(150.0, 8000.0));
        auto recordFor = [&](std::size_t frames) {
            viewCommand("Record\tCtrl+R").run(view);
            QVERIFY(waitFor([&] { return feature->recording(); }));
            QVERIFY(sound->feedInput(frames) > 0);
            QTest::qWait(200);  // the capture thread takes the buffers
            feature->stopRecording();
        };
        recordFor(11025 / 2);
        QVERIFY(doc.holdsData());
        CPitchFrame* pitch = CPitchFrame::showFor(view);
        QVERIFY(pitch != nullptr);
        QVERIFY(waitFor([&] { return !pitch->computing(); }));
        const PitchResults* first = pitch->view()->results();
        QVERIFY(first != nullptr);
        QCOMPARE(first->durationMs, doc.channel(0).m_durationMs);

        m_messages->queueAnswer(MsgAnswer::No);  // no saving of the first recording
        recordFor(11025 * 3 / 2);
        QVERIFY(pitch->computing() || pitch->view()->results() != first);
        QVERIFY(waitFor([&] { return !pitch->computing(); }));
        const PitchResults* second = pitch->view()->results();
        QVERIFY(second != nullptr && second != first);
        QCOMPARE(second->durationMs, doc.channel(0).m_durationMs);
        QVERIFY(second->durationMs > first->durationMs);
        delete pitch;
        setWaveDriver(nullptr);
    }
};

int main(int argc, char** argv) { return rptest::runWithOwnSettings<RecordPlayWindowTest>(argc, argv); }

#include "RecordPlayWindowTest.moc"
