// A driver that writes one line per transfer of another driver's
// connections, in order, before the transfer is made (so that a transfer
// that hangs is the last line):
//   control out request=0xB1 value=0 index=320 length=320 data=00 01 02 03 ...
//   bulk in pipe=8 length=1921024
//   bulk out pipe=1 length=44032 data=FE FF ...
// Words are lower case, numbers decimal except the request code; `data=`
// gives the first 16 bytes sent as upper-case hex pairs and is left out
// when nothing is sent (reads, requests without data).
#pragma once

#include <memory>
#include <ostream>

#include "UsbTransport.h"

namespace sonmetra::usb {

class TracingDriver : public IUsbDriver {
public:
    // `out` must outlive every connection opened through this driver.
    TracingDriver(std::shared_ptr<IUsbDriver> inner, std::ostream& out);

    std::unique_ptr<IUsbTransport> openUnit(const std::string& deviceName) override;
    std::string unitDescription(const std::string& deviceName) const override;
    bool simulated() const override { return m_inner->simulated(); }
    std::string lastError() const override { return m_inner->lastError(); }

private:
    std::shared_ptr<IUsbDriver> m_inner;
    std::ostream& m_out;
};

// The line for a control request and for a bulk transfer (sent: its data, or null).
std::string traceControlLine(const ControlPacket& packet, const std::uint8_t* data, std::uint32_t length);
std::string traceBulkLine(bool in, std::uint32_t pipe, const std::uint8_t* sent, std::uint32_t length);

}  // namespace sonmetra::usb
