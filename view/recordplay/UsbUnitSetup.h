// The workstation's side of the unit settings: kept in QSettings (group
// "UsbUnit", see io/usb/UsbUnitSettings.h for the keys), turned into the
// driver the protocol uses, and described for the interface so that it
// always says which unit it talks to, the simulated one included.
#pragma once

#include <QString>

#include "io/usb/UsbUnitSettings.h"

namespace sonmetra {
class AppConfig;
}

// The settings as stored, with SONMETRA_UNIT applied.
sonmetra::usb::UsbUnitSettings loadUsbUnitSettings();
void saveUsbUnitSettings(const sonmetra::usb::UsbUnitSettings& settings);
// Installs the driver the settings describe: a new one when they changed
// or when asked for (a fresh simulated unit).
void applyUsbUnitSettings(const sonmetra::usb::UsbUnitSettings& settings, bool newDriver = false);
const sonmetra::usb::UsbUnitSettings& usbUnitSettingsInForce();
// Start-up: the stored settings applied, the device name from the configuration record.
void installUsbUnitFromSettings(const sonmetra::AppConfig& config);

// The device name of the configuration record in force (before each use of the unit).
void takeDriverSetting(const sonmetra::AppConfig* config);
// "Simulated unit (9 channels)", "USB unit Rvm-0 (1209:0001)"; with a size
// from IdentifyDevice also what it found: ": 9 channels", ": not found".
QString unitStatusText(int identifiedSize = 0);
