// What lies under the unit's protocol: a driver that opens the unit by its
// device name, and an open connection with three operations, a vendor
// control request, a bulk read and a bulk write. The protocol (UsbProtocol.h)
// knows only these; the real transport is libusb (LibusbDriver.h), the
// simulated unit answers from its firmware model (SimulatedUsbDriver.h), and
// a tracing wrapper logs every transfer (TraceTransport.h).
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace sonmetra::usb {

// The 10-byte control request packet, little-endian:
//   0 direction (1 unit to host, 0 host to unit), 1 request type (2 vendor),
//   2 recipient (0 device), 3 reserved, 4 request code, 5 reserved,
//   6-7 value, 8-9 index (the low 16 bits of the data length).
struct ControlPacket {
    std::uint8_t direction = 0;
    std::uint8_t requestType = 2;
    std::uint8_t recipient = 0;
    std::uint8_t request = 0;
    std::uint16_t value = 0;
    std::uint16_t index = 0;

    std::array<std::uint8_t, 10> bytes() const {
        return {direction,
                requestType,
                recipient,
                0,
                request,
                0,
                static_cast<std::uint8_t>(value & 0xFF),
                static_cast<std::uint8_t>(value >> 8),
                static_cast<std::uint8_t>(index & 0xFF),
                static_cast<std::uint8_t>(index >> 8)};
    }
    bool toHost() const { return direction != 0; }
};

// One open connection to the unit; destroying it closes it. Each operation
// returns whether the driver call succeeded and, in `moved`, how many bytes
// went across (also when it failed part-way). The protocol decides what
// counts as a failure.
class IUsbTransport {
public:
    virtual ~IUsbTransport() = default;
    // `data` holds `length` bytes to send (host to unit) or room for them.
    virtual bool controlRequest(const ControlPacket& packet, std::uint8_t* data, std::uint32_t length,
                                std::uint32_t& moved) = 0;
    virtual bool bulkRead(std::uint32_t pipe, std::uint8_t* data, std::uint32_t length, std::uint32_t& moved) = 0;
    virtual bool bulkWrite(std::uint32_t pipe, const std::uint8_t* data, std::uint32_t length,
                           std::uint32_t& moved) = 0;
    // Lets go of the unit; false when the driver reports a failure.
    virtual bool closeConnection() { return true; }
};

// Opens units by device name.
class IUsbDriver {
public:
    virtual ~IUsbDriver() = default;
    // Null when the unit cannot be opened; lastError() then says why.
    virtual std::unique_ptr<IUsbTransport> openUnit(const std::string& deviceName) = 0;
    // What the interface shows about the unit behind a name, e.g.
    // "Simulated unit (9 channels)" or "USB unit 1209:0001".
    virtual std::string unitDescription(const std::string& deviceName) const = 0;
    virtual bool simulated() const { return false; }
    // The reason of the last failed open or transfer, for diagnostics.
    virtual std::string lastError() const { return {}; }
};

}  // namespace sonmetra::usb
