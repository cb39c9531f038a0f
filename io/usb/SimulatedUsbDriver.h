// The simulated unit: a driver whose connections go straight to a firmware
// model (UnitFirmware.h) in this process. It answers to both device names.
// With real time on, bulk transfers take as long as the unit would need
// for them, so that a recording in the workstation shows its progress.
#pragma once

#include <atomic>
#include <memory>

#include "UnitFirmware.h"
#include "UsbTransport.h"

namespace sonmetra::usb {

class SimulatedUsbDriver : public IUsbDriver {
public:
    explicit SimulatedUsbDriver(std::shared_ptr<UnitFirmware> firmware, bool realTime = false);

    std::unique_ptr<IUsbTransport> openUnit(const std::string& deviceName) override;
    std::string unitDescription(const std::string& deviceName) const override;
    bool simulated() const override { return true; }
    std::string lastError() const override;

    UnitFirmware& firmware() { return *m_firmware; }
    std::shared_ptr<UnitFirmware> firmwarePtr() const { return m_firmware; }
    // A unplugged unit cannot be opened.
    void setPlugged(bool plugged) { m_plugged = plugged; }
    // The next `count` opens fail after the first `skip` succeed.
    void failOpens(int count, int skip = 0);
    int opens() const { return m_opens; }

private:
    std::shared_ptr<UnitFirmware> m_firmware;
    bool m_realTime;
    std::atomic<bool> m_plugged{true};
    std::atomic<int> m_failSkip{0};
    std::atomic<int> m_failCount{0};
    std::atomic<int> m_opens{0};
};

}  // namespace sonmetra::usb
