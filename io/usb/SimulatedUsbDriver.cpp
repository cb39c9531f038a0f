#include "SimulatedUsbDriver.h"

#include <chrono>
#include <thread>

namespace sonmetra::usb {
namespace {

using Clock = std::chrono::steady_clock;

class SimulatedTransport : public IUsbTransport {
public:
    SimulatedTransport(std::shared_ptr<UnitFirmware> firmware, bool realTime)
        : m_firmware(std::move(firmware)), m_realTime(realTime) {}

    bool controlRequest(const ControlPacket& packet, std::uint8_t* data, std::uint32_t length,
                        std::uint32_t& moved) override {
        const long n =
            m_firmware->controlRequest(packet.toHost(), packet.request, packet.value, packet.index, data, length);
        moved = n > 0 ? static_cast<std::uint32_t>(n) : 0;
        if (packet.request == kRequestStart || packet.request == kRequestPlay) {
            m_started = Clock::now();
            m_paced = 0.0;
        }
        return n >= 0;
    }

    bool bulkRead(std::uint32_t pipe, std::uint8_t* data, std::uint32_t length, std::uint32_t& moved) override {
        if (pipe != kReadPipe) return false;
        const BulkResult r = m_firmware->bulkIn(data, length);
        moved = static_cast<std::uint32_t>(r.bytes);
        pace(r.bytes / m_firmware->streamBytesPerSecond());
        return r.end == BulkEnd::Complete || r.end == BulkEnd::ShortPacket;
    }

    bool bulkWrite(std::uint32_t pipe, const std::uint8_t* data, std::uint32_t length, std::uint32_t& moved) override {
        if (pipe != kWritePipe) return false;
        const BulkResult r = m_firmware->bulkOut(data, length);
        moved = static_cast<std::uint32_t>(r.bytes);
        const double rate = m_firmware->playRateHz();
        if (rate > 0.0) pace(r.bytes / 2.0 / rate);
        return r.end == BulkEnd::Complete || r.end == BulkEnd::ShortPacket;
    }

private:
    // Waits until the transfers since the start took as long as the unit would.
    void pace(double seconds) {
        if (!m_realTime || !(seconds > 0.0)) return;
        m_paced += seconds;
        std::this_thread::sleep_until(
            m_started + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(m_paced)));
    }

    std::shared_ptr<UnitFirmware> m_firmware;
    bool m_realTime;
    Clock::time_point m_started = Clock::now();
    double m_paced = 0.0;  // seconds of unit time delivered since the start
};

}  // namespace

SimulatedUsbDriver::SimulatedUsbDriver(std::shared_ptr<UnitFirmware> firmware, bool realTime)
    : m_firmware(std::move(firmware)), m_realTime(realTime) {}

void SimulatedUsbDriver::failOpens(int count, int skip) {
    m_failSkip = skip;
    m_failCount = count;
}

std::unique_ptr<IUsbTransport> SimulatedUsbDriver::openUnit(const std::string&) {
    ++m_opens;
    if (!m_plugged) return nullptr;
    if (m_failCount > 0) {
        if (m_failSkip > 0) {
            --m_failSkip;
        } else {
            --m_failCount;
            return nullptr;
        }
    }
    return std::make_unique<SimulatedTransport>(m_firmware, m_realTime);
}

std::string SimulatedUsbDriver::unitDescription(const std::string&) const {
    return "Simulated unit (" + std::to_string(m_firmware->unitChannels()) + " channels)";
}

std::string SimulatedUsbDriver::lastError() const {
    return m_plugged ? std::string() : "the simulated unit is unplugged";
}

}  // namespace sonmetra::usb
