// The real transport: the unit on libusb-1.0.
//
// A device name maps to a vendor/product id (kept in the settings); opening
// takes the first device with that id, claims the first interface that has a
// bulk IN and a bulk OUT endpoint (detaching a kernel driver if one holds it),
// and maps pipe 8 to that IN endpoint and pipe 1 to that OUT endpoint.
// Control packets become vendor control transfers with their direction,
// request, value and index.
//
// A unit that stops answering: every transfer waits at most the idle time
// for data to move. A long bulk read goes on as long as data keep coming
// (a slow stream may take minutes for its 2 MiB), and fails once nothing
// has arrived for the idle time, so a silent unit is reported within seconds.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "UsbTransport.h"

struct libusb_context;

namespace sonmetra::usb {

struct UsbId {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    bool operator==(const UsbId&) const = default;
};

class LibusbDriver : public IUsbDriver {
public:
    // ids: by short device name ("Rvm-0", "Ezusb-0").
    explicit LibusbDriver(std::map<std::string, UsbId> ids, int idleTimeoutMs = 2000);
    ~LibusbDriver() override;
    LibusbDriver(const LibusbDriver&) = delete;
    LibusbDriver& operator=(const LibusbDriver&) = delete;

    std::unique_ptr<IUsbTransport> openUnit(const std::string& deviceName) override;
    std::string unitDescription(const std::string& deviceName) const override;
    std::string lastError() const override;

    int idleTimeoutMs() const { return m_idleTimeoutMs; }

    // The libusb context and the last error, shared with the open
    // connections, which may outlive the driver that opened them.
    struct Shared;

private:
    const UsbId* idFor(const std::string& deviceName) const;

    std::map<std::string, UsbId> m_ids;
    int m_idleTimeoutMs;
    std::shared_ptr<Shared> m_shared;
};

// "1209:0001" <-> UsbId; nullopt-like false for text that is not two hex numbers.
bool parseUsbId(const std::string& text, UsbId& id);
std::string formatUsbId(const UsbId& id);

}  // namespace sonmetra::usb
