#include "UsbUnitSettings.h"

#include <charconv>
#include <cstdlib>
#include <fstream>

#include "SimulatedUsbDriver.h"

namespace sonmetra::usb {
namespace {

// Undoes the %XX escapes of group and key names in the settings file.
std::string unescape(const std::string& s) {
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '%' && i + 2 < s.size()) {
            int v = 0;
            const auto [end, ec] = std::from_chars(s.data() + i + 1, s.data() + i + 3, v, 16);
            if (ec == std::errc() && end == s.data() + i + 3) {
                out += static_cast<char>(v);
                i += 2;
                continue;
            }
        }
        out += s[i];
    }
    return out;
}

std::string trim(const std::string& s) {
    const auto first = s.find_first_not_of(" \t\r");
    if (first == std::string::npos) return {};
    const auto last = s.find_last_not_of(" \t\r");
    return s.substr(first, last - first + 1);
}

// A plain or quoted value as the settings file holds a text.
std::string unquote(const std::string& v) {
    if (v.size() >= 2 && v.front() == '"' && v.back() == '"') return v.substr(1, v.size() - 2);
    return v;
}

bool toInt(const std::string& s, int& out) {
    int v = 0;
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || end != s.data() + s.size()) return false;
    out = v;
    return true;
}

}  // namespace

std::map<std::string, UsbId> UsbUnitSettings::defaultIds() {
    // Ezusb-0: a Cypress EZ-USB FX2 as it enumerates without firmware;
    // Rvm-0: the pid.codes test id. A real unit's ids are set in the settings.
    return {{"Ezusb-0", UsbId{0x04b4, 0x8613}}, {"Rvm-0", UsbId{0x1209, 0x0001}}};
}

bool validSimulatedChannels(int channels) { return channels == 5 || channels == 9 || channels == 13 || channels == 16; }

bool parseUnitChoice(const std::string& text, int& simulatedChannels) {
    if (text == "usb") {
        simulatedChannels = 0;
        return true;
    }
    const std::string prefix = "simulated:";
    if (text.rfind(prefix, 0) != 0) return false;
    int n = 0;
    if (!toInt(text.substr(prefix.size()), n) || !validSimulatedChannels(n)) return false;
    simulatedChannels = n;
    return true;
}

std::string formatUnitChoice(int simulatedChannels) {
    return simulatedChannels == 0 ? "usb" : "simulated:" + std::to_string(simulatedChannels);
}

std::shared_ptr<IUsbDriver> makeUsbDriver(const UsbUnitSettings& settings) {
    if (settings.simulated())
        return std::make_shared<SimulatedUsbDriver>(std::make_shared<UnitFirmware>(settings.simulatedChannels),
                                                    settings.simulatedRealTime);
    return std::make_shared<LibusbDriver>(settings.ids, settings.idleTimeoutMs);
}

UsbUnitSettings usbSettingsFromEnvironment(UsbUnitSettings settings) {
    if (const char* choice = std::getenv("SONMETRA_UNIT")) {
        int n = 0;
        if (parseUnitChoice(choice, n)) settings.simulatedChannels = n;
    }
    return settings;
}

std::string settingsFilePath() {
    std::string base;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg != nullptr && *xdg == '/') {
        base = xdg;
    } else if (const char* home = std::getenv("HOME")) {
        base = std::string(home) + "/.config";
    } else {
        return {};
    }
    return base + "/Melvarco/Sonmetra.conf";
}

UsbUnitSettings readUsbSettingsFile(const std::string& path, UsbUnitSettings settings, std::string* workingFolder) {
    std::ifstream in(path);
    std::string line, group;
    while (std::getline(in, line)) {
        line = trim(line);
        if (line.empty() || line[0] == ';' || line[0] == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            group = unescape(line.substr(1, line.size() - 2));
            continue;
        }
        const auto eq = line.find('=');
        if (eq == std::string::npos) continue;
        const std::string key = unescape(trim(line.substr(0, eq)));
        const std::string value = unquote(trim(line.substr(eq + 1)));
        if (group == "General Strings Section" && key == "Temp Directory" && workingFolder != nullptr) {
            *workingFolder = value;
        } else if (group == kSettingsGroup) {
            int n = 0;
            UsbId id;
            if (key == kSettingsSimulated && toInt(value, n) && (n == 0 || validSimulatedChannels(n))) {
                settings.simulatedChannels = n;
            } else if (key == kSettingsRealTime) {
                settings.simulatedRealTime = value == "true" || value == "1";
            } else if (key == kSettingsIdleTimeout && toInt(value, n) && n > 0) {
                settings.idleTimeoutMs = n;
            } else if (parseUsbId(value, id)) {
                settings.ids[key] = id;
            }
        }
    }
    return settings;
}

}  // namespace sonmetra::usb
