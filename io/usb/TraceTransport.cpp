#include "TraceTransport.h"

#include <algorithm>
#include <cstdio>

namespace sonmetra::usb {
namespace {

std::string dataField(const std::uint8_t* data, std::uint32_t length) {
    if (data == nullptr || length == 0) return {};
    std::string s = " data=";
    const std::uint32_t n = std::min<std::uint32_t>(length, 16);
    for (std::uint32_t i = 0; i < n; ++i) {
        char b[4];
        std::snprintf(b, sizeof b, "%02X", data[i]);
        if (i > 0) s += ' ';
        s += b;
    }
    return s;
}

class TracingTransport : public IUsbTransport {
public:
    TracingTransport(std::unique_ptr<IUsbTransport> inner, std::ostream& out) : m_inner(std::move(inner)), m_out(out) {}

    bool controlRequest(const ControlPacket& packet, std::uint8_t* data, std::uint32_t length,
                        std::uint32_t& moved) override {
        m_out << traceControlLine(packet, data, length) << '\n' << std::flush;
        return m_inner->controlRequest(packet, data, length, moved);
    }
    bool bulkRead(std::uint32_t pipe, std::uint8_t* data, std::uint32_t length, std::uint32_t& moved) override {
        m_out << traceBulkLine(true, pipe, nullptr, length) << '\n' << std::flush;
        return m_inner->bulkRead(pipe, data, length, moved);
    }
    bool bulkWrite(std::uint32_t pipe, const std::uint8_t* data, std::uint32_t length, std::uint32_t& moved) override {
        m_out << traceBulkLine(false, pipe, data, length) << '\n' << std::flush;
        return m_inner->bulkWrite(pipe, data, length, moved);
    }
    bool closeConnection() override { return m_inner->closeConnection(); }

private:
    std::unique_ptr<IUsbTransport> m_inner;
    std::ostream& m_out;
};

}  // namespace

std::string traceControlLine(const ControlPacket& packet, const std::uint8_t* data, std::uint32_t length) {
    char head[96];
    std::snprintf(head, sizeof head, "control %s request=0x%02X value=%u index=%u length=%u",
                  packet.toHost() ? "in" : "out", packet.request, packet.value, packet.index, length);
    return head + (packet.toHost() ? std::string() : dataField(data, length));
}

std::string traceBulkLine(bool in, std::uint32_t pipe, const std::uint8_t* sent, std::uint32_t length) {
    char head[64];
    std::snprintf(head, sizeof head, "bulk %s pipe=%u length=%u", in ? "in" : "out", pipe, length);
    return head + (in ? std::string() : dataField(sent, length));
}

TracingDriver::TracingDriver(std::shared_ptr<IUsbDriver> inner, std::ostream& out)
    : m_inner(std::move(inner)), m_out(out) {}

std::unique_ptr<IUsbTransport> TracingDriver::openUnit(const std::string& deviceName) {
    auto inner = m_inner->openUnit(deviceName);
    if (!inner) return nullptr;
    return std::make_unique<TracingTransport>(std::move(inner), m_out);
}

std::string TracingDriver::unitDescription(const std::string& deviceName) const {
    return m_inner->unitDescription(deviceName);
}

}  // namespace sonmetra::usb
