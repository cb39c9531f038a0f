// A simulated unit behind a tracing driver, installed for one test, with the
// messages recorded: what the protocol sent, what the unit saw and what the
// user was told.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "document/MessageService.h"
#include "io/usb/SimulatedUsbDriver.h"
#include "io/usb/TraceTransport.h"
#include "io/usb/UsbProtocol.h"

namespace sonmetra::usb::test {

class SimulatedUnitTest : public ::testing::Test {
protected:
    void SetUp() override {
        setDriverSetting(0);
        setUsbDriver(std::make_shared<TracingDriver>(m_driver, m_trace));
    }
    void TearDown() override { setUsbDriver(nullptr); }

    std::vector<std::string> traceLines() const {
        std::vector<std::string> lines;
        std::istringstream in(m_trace.str());
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    void clearTrace() { m_trace.str({}); }
    UnitFirmware& firmware() { return m_driver->firmware(); }

    std::shared_ptr<SimulatedUsbDriver> m_driver =
        std::make_shared<SimulatedUsbDriver>(std::make_shared<UnitFirmware>(9));
    std::ostringstream m_trace;
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
};

inline const char* kOpenError =
    "Error in opening the requested USB device.\nPlease unplug the device, wait a few seconds and replug the device.";
inline const char* kRequestError = "Request send command failed.";
inline const char* kReadError = "Error in reading the incoming data.";
inline const char* kStopLine = "control out request=0xB4 value=0 index=0 length=0";

}  // namespace sonmetra::usb::test
