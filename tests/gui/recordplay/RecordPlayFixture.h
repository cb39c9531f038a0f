// Shared pieces of the record/play window, scope and calibration tests: a
// fresh simulated unit installed as the workstation installs it, the state
// every test function of the unit's windows starts from, documents to work
// on, and a main() that keeps the settings in a folder of the test's own.
#pragma once

#include <QApplication>
#include <QMdiArea>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>
#include <memory>

#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "io/usb/SimulatedUsbDriver.h"
#include "io/usb/UsbProtocol.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/ViewCommands.h"
#include "view/recordplay/UsbUnitSetup.h"

namespace rptest {

using namespace sonmetra::test;

// A new simulated unit of `channels`, answering at once.
inline std::shared_ptr<sonmetra::usb::SimulatedUsbDriver> useSimulatedUnit(int channels) {
    sonmetra::usb::UsbUnitSettings settings;
    settings.simulatedChannels = channels;
    settings.simulatedRealTime = false;
    applyUsbUnitSettings(settings, true);
    sonmetra::usb::setDriverSetting(0);
    return std::dynamic_pointer_cast<sonmetra::usb::SimulatedUsbDriver>(sonmetra::usb::usbDriver());
}

// What a test function of the unit's windows starts from: a configuration
// record of its own (its file in the test's folder), the messages shown kept,
// a fresh simulated unit of 9 channels and a shown workspace.
class UnitWindowTest : public QObject {
protected:
    void startSession(QSize areaSize) {
        m_config = std::make_unique<sonmetra::AppConfig>();
        m_config->setFilePath(m_dir.filePath("SonmetraConf.cfg").toStdString());
        AppServices::instance().config = m_config.get();
        m_messages = std::make_unique<sonmetra::RecordingMessageService>();
        m_scope = std::make_unique<sonmetra::ScopedMessageService>(m_messages.get());
        m_unit = useSimulatedUnit(9);
        m_area = std::make_unique<QMdiArea>();
        m_area->resize(areaSize);
        m_area->show();
    }
    // After the workspace has gone.
    void endSession() {
        m_scope.reset();
        AppServices::instance() = AppServices{};
    }

    QTemporaryDir m_dir;
    std::unique_ptr<sonmetra::AppConfig> m_config;
    std::unique_ptr<sonmetra::RecordingMessageService> m_messages;
    std::unique_ptr<sonmetra::ScopedMessageService> m_scope;
    std::shared_ptr<sonmetra::usb::SimulatedUsbDriver> m_unit;
    std::unique_ptr<QMdiArea> m_area;
};

// One channel "Audio" of a tone with a step in it, at rateHz.
inline void fillTone(sonmetra::CKestruneDoc& doc, double rateHz, std::size_t samples) {
    fillChannel(
        doc, 0, "Audio", rateHz, samples,
        [](std::size_t i) {
            return static_cast<std::int16_t>(9000 * std::sin(0.05 * static_cast<double>(i)) + (i % 7) * 100);
        },
        true);
    doc.setChannelCount(1);
}

// Runs the test object with the settings (QSettings and the command line's
// settings file alike) in a temporary folder.
template <class T>
int runWithOwnSettings(int argc, char** argv) {
    QTemporaryDir settingsHome;
    qputenv("XDG_CONFIG_HOME", settingsHome.path().toUtf8());
    qunsetenv("SONMETRA_UNIT");
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? QByteArray("offscreen") : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Melvarco");
    QApplication::setApplicationName("Sonmetra");
    T test;
    return QTest::qExec(&test, argc, argv);
}

}  // namespace rptest
