// Shared pieces of the record/play window and calibration tests: a fresh
// simulated unit installed as the workstation installs it, documents to
// work on, the view commands by menu text, and a main() that keeps the
// settings in a folder of the test's own.
#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>
#include <chrono>
#include <cmath>
#include <memory>
#include <thread>

#include "document/CKestruneDoc.h"
#include "io/usb/SimulatedUsbDriver.h"
#include "io/usb/UsbProtocol.h"
#include "view/CKestruneView.h"
#include "view/ViewCommands.h"
#include "view/recordplay/UsbUnitSetup.h"

namespace rptest {

// A new simulated unit of `channels`, answering at once.
inline std::shared_ptr<sonmetra::usb::SimulatedUsbDriver> useSimulatedUnit(int channels) {
    sonmetra::usb::UsbUnitSettings settings;
    settings.simulatedChannels = channels;
    settings.simulatedRealTime = false;
    applyUsbUnitSettings(settings, true);
    sonmetra::usb::setDriverSetting(0);
    return std::dynamic_pointer_cast<sonmetra::usb::SimulatedUsbDriver>(sonmetra::usb::usbDriver());
}

// One channel "Audio" of a tone with a step in it, at rateHz.
inline void fillTone(sonmetra::CKestruneDoc& doc, double rateHz, std::size_t samples) {
    sonmetra::CChannel& ch = doc.channel(0);
    ch.m_name = "Audio";
    ch.m_audio = 1;
    ch.m_inUse = 1;
    ch.m_rateHz = rateHz;
    (void)ch.m_samples.resize(samples);
    for (std::size_t i = 0; i < samples; ++i)
        ch.m_samples[i] = static_cast<std::int16_t>(9000 * std::sin(0.05 * static_cast<double>(i)) + (i % 7) * 100);
    ch.setSampleCountFromBlock();
    ch.resetDisplayToWhole();
    doc.setChannelCount(1);
    doc.setHoldsData(true);
}

inline const ViewCommand& command(const QString& text) {
    for (const auto& c : ViewCommandRegistry::instance().commands())
        if (c.text == text) return c;
    qFatal("no command %s", qPrintable(text));
}

template <typename Pred>
bool waitFor(Pred done, int timeoutMs = 10000) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
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
