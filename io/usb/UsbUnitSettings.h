// Which unit the workstation talks to and how: the simulated unit (with its
// size) or the real one over USB, the vendor/product id of each device name,
// and how long a silent unit is waited for.
//
// The workstation keeps these in its settings (QSettings organisation
// "Melvarco", application "Sonmetra", group "UsbUnit", keys below);
// sonmetra-cli reads the same settings file, so a unit set up in the
// workstation is the one the command line uses. The environment variable
// SONMETRA_UNIT ("simulated:N" or "usb") overrides the choice of unit for
// both. Which device name is used is the driver setting of the
// configuration record (UsbProtocol.h).
#pragma once

#include <map>
#include <memory>
#include <string>

#include "LibusbDriver.h"
#include "UsbTransport.h"

namespace sonmetra::usb {

inline constexpr char kSettingsGroup[] = "UsbUnit";
inline constexpr char kSettingsSimulated[] = "Simulated";  // 0 real unit; 5, 9, 13, 16 simulated
inline constexpr char kSettingsRealTime[] = "SimulatedRealTime";
inline constexpr char kSettingsIdleTimeout[] = "IdleTimeoutMs";
// The id of each device name is kept under the name itself ("Rvm-0", "Ezusb-0").

struct UsbUnitSettings {
    int simulatedChannels = 0;
    bool simulatedRealTime = true;
    int idleTimeoutMs = 2000;
    std::map<std::string, UsbId> ids = defaultIds();

    static std::map<std::string, UsbId> defaultIds();
    bool simulated() const { return simulatedChannels != 0; }
};

// A simulated size is one of 5, 9, 13, 16.
bool validSimulatedChannels(int channels);
// "simulated:9" -> 9, "usb" -> 0; false for anything else.
bool parseUnitChoice(const std::string& text, int& simulatedChannels);
std::string formatUnitChoice(int simulatedChannels);

std::shared_ptr<IUsbDriver> makeUsbDriver(const UsbUnitSettings& settings);
// The settings with SONMETRA_UNIT applied when it is set and valid.
UsbUnitSettings usbSettingsFromEnvironment(UsbUnitSettings settings);

// The workstation's settings file: $XDG_CONFIG_HOME (or ~/.config) +
// "/Melvarco/Sonmetra.conf".
std::string settingsFilePath();
// Reads group "UsbUnit" of a settings file written by the workstation, and
// its working folder ("General Strings Section/Temp Directory") when asked.
// Keys that are missing or unreadable keep the values of `settings`.
UsbUnitSettings readUsbSettingsFile(const std::string& path, UsbUnitSettings settings,
                                    std::string* workingFolder = nullptr);

}  // namespace sonmetra::usb
