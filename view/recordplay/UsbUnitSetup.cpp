#include "UsbUnitSetup.h"

#include <QSettings>

#include "document/AppConfig.h"
#include "io/usb/UsbProtocol.h"

using namespace sonmetra::usb;

namespace {

UsbUnitSettings& inForce() {
    static UsbUnitSettings settings;
    return settings;
}
bool& applied() {
    static bool once = false;
    return once;
}

bool sameSettings(const UsbUnitSettings& a, const UsbUnitSettings& b) {
    return a.simulatedChannels == b.simulatedChannels && a.simulatedRealTime == b.simulatedRealTime &&
           a.idleTimeoutMs == b.idleTimeoutMs && a.ids == b.ids;
}

}  // namespace

UsbUnitSettings loadUsbUnitSettings() {
    UsbUnitSettings s;
    QSettings settings;
    settings.beginGroup(kSettingsGroup);
    const int simulated = settings.value(kSettingsSimulated, 0).toInt();
    if (simulated == 0 || validSimulatedChannels(simulated)) s.simulatedChannels = simulated;
    s.simulatedRealTime = settings.value(kSettingsRealTime, true).toBool();
    const int timeout = settings.value(kSettingsIdleTimeout, s.idleTimeoutMs).toInt();
    if (timeout > 0) s.idleTimeoutMs = timeout;
    for (auto& [name, id] : s.ids) {
        UsbId stored;
        if (parseUsbId(settings.value(QString::fromStdString(name)).toString().toStdString(), stored)) id = stored;
    }
    return usbSettingsFromEnvironment(s);
}

void saveUsbUnitSettings(const UsbUnitSettings& s) {
    QSettings settings;
    settings.beginGroup(kSettingsGroup);
    settings.setValue(kSettingsSimulated, s.simulatedChannels);
    settings.setValue(kSettingsRealTime, s.simulatedRealTime);
    settings.setValue(kSettingsIdleTimeout, s.idleTimeoutMs);
    for (const auto& [name, id] : s.ids)
        settings.setValue(QString::fromStdString(name), QString::fromStdString(formatUsbId(id)));
}

void applyUsbUnitSettings(const UsbUnitSettings& settings, bool newDriver) {
    if (!newDriver && applied() && sameSettings(settings, inForce())) return;
    inForce() = settings;
    applied() = true;
    setUsbDriver(makeUsbDriver(settings));
}

const UsbUnitSettings& usbUnitSettingsInForce() { return inForce(); }

void installUsbUnitFromSettings(const sonmetra::AppConfig& config) {
    applyUsbUnitSettings(loadUsbUnitSettings());
    setDriverSetting(config.m_driverSetting);
}

void takeDriverSetting(const sonmetra::AppConfig* config) {
    if (config != nullptr) setDriverSetting(config->m_driverSetting);
}

QString unitStatusText(int identifiedSize) {
    const auto driver = usbDriver();
    QString text = QString::fromStdString(driver->unitDescription(currentDeviceName()));
    // The simulated unit's description already says its size.
    if (driver->simulated()) return text;
    if (identifiedSize > 0) text += QStringLiteral(": %1 channels").arg(identifiedSize);
    if (identifiedSize < 0) text += QStringLiteral(": not found");
    return text;
}
