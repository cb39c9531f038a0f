// "Calibration..." through its widgets beside a real view: the table of
// names, units and coefficients, the two-point calibration from stretches
// selected in the view, OK with Undo, the status window's calibrated values,
// refusals, and the unit's identification.
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>

#include "RecordPlayFixture.h"
#include "document/MessageService.h"
#include "frame/CStatusWindow.h"
#include "frame/CalibrationDialog.h"
#include "frame/FrameViewCommands.h"
#include "log/CDatatbl5.h"
#include "view/AppServices.h"
#include "view/EditCommands.h"
#include "view/ViewReadouts.h"

using namespace sonmetra;
using namespace rptest;

namespace {

// Audio, and "Airflow" at 1000 Hz: 1000 samples near raw 1000, then 1000 near raw 3000.
std::shared_ptr<CKestruneDoc> airflowDocument() {
    auto doc = std::make_shared<CKestruneDoc>();
    fillTone(*doc, 2000.0, 4000);
    fillChannel(*doc, 1, "Airflow", 1000.0, 2000, [](std::size_t i) {
        return static_cast<std::int16_t>((i < 1000 ? 1000 : 3000) + (i % 2 == 0 ? 2 : -2));
    });
    doc->setTitle("calibrate.kvd");
    return doc;
}

}  // namespace

class CalibrationDialogTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::shared_ptr<CKestruneDoc> m_doc;
    std::unique_ptr<CKestruneView> m_view;
    std::unique_ptr<CStatusWindow> m_status;
    std::unique_ptr<RecordingMessageService> m_messages;
    std::unique_ptr<ScopedMessageService> m_scope;

    CalibrationDialog* openDialog() {
        viewCommand("Calibration...").run(*m_view);
        auto* dialog = m_view->findChild<CalibrationDialog*>();
        if (dialog) dialog->pointChannel()->setCurrentText("Airflow");
        return dialog;
    }
    void select(double fromMs, double toMs) {
        m_view->mouseDownAtMs(fromMs);
        m_view->mouseMoveAtMs(toMs);
        m_view->mouseUpAtMs(toMs);
    }

private slots:
    void initTestCase() {
        registerFrameViewCommands();
        registerEditCommands();
    }

    void init() {
        AppServices::instance().tempFolder = m_dir.path().toStdString() + "/";
        m_status = std::make_unique<CStatusWindow>();
        AppServices::instance().readouts = m_status.get();
        m_messages = std::make_unique<RecordingMessageService>();
        m_scope = std::make_unique<ScopedMessageService>(m_messages.get());
        useSimulatedUnit(9);
        m_doc = airflowDocument();
        m_view = shownView(m_doc.get(), QSize(900, 500));
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }

    void cleanup() {
        m_view.reset();
        m_status.reset();
        m_scope.reset();
        AppServices::instance() = AppServices{};
    }

    void showsEveryChannelWithItsCalibration() {
        CalibrationDialog* dialog = openDialog();
        QVERIFY(dialog != nullptr);
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->windowTitle(), QString("Calibration"));
        CDatatbl5* table = dialog->table();
        QCOMPARE(table->rowCount(), 2);
        QCOMPARE(table->text(1, CalibrationDialog::kName), QString("Airflow"));
        QCOMPARE(table->text(1, CalibrationDialog::kUnits), QString("mv"));
        QCOMPARE(table->text(1, CalibrationDialog::kC1), QString("1"));
        QCOMPARE(table->text(1, CalibrationDialog::kC3), QString("0"));
        // The command raises the open dialog rather than making a second.
        viewCommand("Calibration...").run(*m_view);
        QCOMPARE(m_view->findChildren<CalibrationDialog*>().size(), 1);
    }

    void twoPointsGiveC1AndC0AndTheStatusWindowShowsPhysicalValues() {
        CalibrationDialog* dialog = openDialog();
        select(100.0, 900.0);
        dialog->takeButton(0)->click();
        dialog->knownValue(0)->setValue(10.0);
        select(1100.0, 1900.0);
        dialog->takeButton(1)->click();
        dialog->knownValue(1)->setValue(50.0);
        // Converted means: (2500 / 32768) x raw / gain 8, the +-2 ripple averaging out
        // (to within one sample's worth over the few hundred selected).
        QVERIFY(std::fabs(*dialog->takenReading(0) - 2500.0 / 32768.0 * 1000.0 / 8.0) < 1e-4);
        QVERIFY(std::fabs(*dialog->takenReading(1) - 2500.0 / 32768.0 * 3000.0 / 8.0) < 1e-4);
        QVERIFY(dialog->reading(0)->text().contains("raw 1000.0"));
        dialog->computeButton()->click();
        // c1 = (50 - 10) / (x2 - x1), c0 = 10 - c1 x1, shown in full.
        const double c1 = 40.0 / (2500.0 / 32768.0 * 2000.0 / 8.0);
        QVERIFY(std::fabs(dialog->table()->text(1, CalibrationDialog::kC1).toDouble() - c1) < 1e-4);
        QVERIFY(std::fabs(dialog->table()->text(1, CalibrationDialog::kC0).toDouble() + 10.0) < 1e-2);
        QVERIFY(dialog->table()->text(1, CalibrationDialog::kC1).size() > 6);
        dialog->table()->setText(1, CalibrationDialog::kUnits, "l/s");
        shoot(dialog, "calibration-dialog");
        dialog->accept();
        QVERIFY(m_messages->texts().empty());

        const CChannel& flow = m_doc->channel(1);
        QVERIFY(std::fabs(flow.m_c1 - c1) < 1e-4);
        QVERIFY(std::fabs(flow.m_c0 + 10.0) < 1e-2);
        QCOMPARE(flow.m_units, std::string("l/s"));
        QVERIFY(m_doc->isModified());

        // The cursor on the upper stretch reads 50 l/s.
        m_view->mouseDownAtMs(1500.0);
        m_view->mouseUpAtMs(1500.0);
        const double raw = flow.m_samples[1500];
        QCOMPARE(m_status->cellText(1, kColumnCursorValue),
                 QString("%1, %2").arg(raw, 0, 'f', 2).arg(flow.calibrated(raw), 0, 'f', 2));
        QVERIFY(std::fabs(flow.calibrated(raw) - 50.0) < 0.1);
        QCOMPARE(m_status->cellText(1, kColumnUnits), QString("l/s"));

        // Edit > Undo brings the calibration back.
        viewCommand("&Undo\tCtrl+Z").run(*m_view);
        QCOMPARE(m_doc->channel(1).m_c1, 1.0);
        QCOMPARE(m_doc->channel(1).m_c0, 0.0);
        QCOMPARE(m_doc->channel(1).m_units, std::string("mv"));
    }

    void namesAndCoefficientsThatCannotBeTakenAreRefused() {
        CalibrationDialog* dialog = openDialog();
        dialog->table()->setText(1, CalibrationDialog::kC2, "steep");
        dialog->accept();
        QCOMPARE(m_messages->lastText(), std::string("The calibration coefficients of channel 2 must be numbers."));
        QVERIFY(dialog->isVisible());
        dialog->table()->setText(1, CalibrationDialog::kC2, "0.5");
        dialog->table()->setText(0, CalibrationDialog::kName, "");
        dialog->accept();
        QCOMPARE(m_messages->lastText(),
                 std::string("The name of channel 1 must have 1 to 63 characters and its units at most 63."));
        QCOMPARE(m_doc->channel(1).m_c2, 0.0);
        QVERIFY(!m_doc->isModified());

        // Points on other channels, or of one level, give no calibration.
        m_messages->clear();
        dialog->pointChannel()->setCurrentText("Audio");
        dialog->takeButton(0)->click();
        dialog->pointChannel()->setCurrentText("Airflow");
        dialog->takeButton(1)->click();
        dialog->computeButton()->click();
        QCOMPARE(m_messages->lastText(), std::string("Take both points on the channel 'Airflow' first."));
        select(100.0, 200.0);
        dialog->takeButton(0)->click();
        select(300.0, 400.0);
        dialog->takeButton(1)->click();
        dialog->computeButton()->click();
        QCOMPARE(m_messages->lastText(),
                 std::string("The two points read the same value; take them on stretches of different level."));
    }

    void identifySaysWhichUnitAnswers() {
        CalibrationDialog* dialog = openDialog();
        QCOMPARE(dialog->unitLabel()->text(), QString("Simulated unit (9 channels)"));
        usb::UsbUnitSettings real;
        real.ids["Rvm-0"] = usb::UsbId{0x1209, 0x7ffe};
        applyUsbUnitSettings(real, true);
        dialog->identifyButton()->click();
        QCOMPARE(dialog->unitLabel()->text(), QString("USB unit Rvm-0 (1209:7ffe): not found"));
        useSimulatedUnit(16);
        dialog->identifyButton()->click();
        QCOMPARE(dialog->unitLabel()->text(), QString("Simulated unit (16 channels)"));
        QVERIFY(m_messages->texts().empty());
    }
};

int main(int argc, char** argv) { return rptest::runWithOwnSettings<CalibrationDialogTest>(argc, argv); }

#include "CalibrationDialogTest.moc"
