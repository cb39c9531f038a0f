// The auto-reset event the engines' workers wait on, and the device
// contract they rely on (checked on the simulated device).
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "document/SampleBlock.h"
#include "io/AutoResetEvent.h"
#include "io/CWaveIn.h"
#include "io/CWaveOut.h"
#include "io/SimulatedWaveDevice.h"

namespace sonmetra {
namespace {

using namespace std::chrono_literals;

TEST(AutoResetEvent, OneSetLetsExactlyOneWaitThrough) {
    AutoResetEvent event("WaveInThreadEvent");
    event.set();
    event.set();  // two sets before a wait count as one
    EXPECT_TRUE(event.waitFor(1ms));
    EXPECT_FALSE(event.waitFor(10ms));
    event.set();
    event.reset();
    EXPECT_FALSE(event.waitFor(10ms));
    EXPECT_EQ(event.name(), "WaveInThreadEvent");
}

TEST(AutoResetEvent, ClosingReleasesABlockedWaiterWithNotSignalled) {
    AutoResetEvent event;
    bool result = true;
    std::thread waiter([&] { result = event.wait(); });
    std::this_thread::sleep_for(20ms);
    event.close();
    waiter.join();
    EXPECT_FALSE(result);
    event.set();
    EXPECT_FALSE(event.wait());
    EXPECT_TRUE(event.closed());
}

TEST(SimulatedWaveDevice, SignalsOnOpenAndPerFullBufferOnly) {
    auto sim = SimulatedWaveDriver::create();
    sim->setInputSignal(SimulatedWaveDriver::constant(7));
    auto event = std::make_shared<AutoResetEvent>();
    std::unique_ptr<IWaveInDevice> device;
    const WaveFormat format{kWaveFormatPcm, 1, 8000, 16000, 2, 16, 0};
    ASSERT_EQ(sim->openInput(0, format, event, device), kWaveNoError);
    EXPECT_TRUE(event->waitFor(1ms));
    EXPECT_EQ(sim->openInput(0, format, event, device), kWaveAllocated);

    std::int16_t buffer[2][100] = {};
    WaveHeader headers[2];
    for (int i = 0; i < 2; ++i) {
        headers[i].data = buffer[i];
        headers[i].bufferLengthBytes = sizeof buffer[i];
        EXPECT_EQ(device->addBuffer(headers[i]), kWaveUnprepared);
        ASSERT_EQ(device->prepareHeader(headers[i]), kWaveNoError);
        EXPECT_EQ(headers[i].flags, kHeaderPrepared);
        ASSERT_EQ(device->addBuffer(headers[i]), kWaveNoError);
    }
    EXPECT_EQ(sim->feedInput(150), 0);  // not started: nothing recorded
    ASSERT_EQ(device->start(), kWaveNoError);
    EXPECT_EQ(sim->feedInput(150), 1);
    EXPECT_TRUE(event->waitFor(1ms));
    EXPECT_EQ(headers[0].flags, kHeaderPrepared | kHeaderDone);
    EXPECT_EQ(headers[0].bytesRecorded, 200u);
    EXPECT_EQ(device->unprepareHeader(headers[1]), kWaveStillPlaying);

    // Stopping returns the half-filled buffer without a signal.
    ASSERT_EQ(device->stop(), kWaveNoError);
    EXPECT_FALSE(event->waitFor(1ms));
    EXPECT_EQ(headers[1].bytesRecorded, 100u);
    EXPECT_EQ(buffer[1][49], 7);
    EXPECT_EQ(device->close(), kWaveNoError);
    EXPECT_EQ(device->start(), kWaveInvalidHandle);
}

TEST(SimulatedWaveDevice, TheRealTimeClockRecordsAndPlaysByItself) {
    // Twenty times faster than real time: a capture buffer every 20 ms.
    auto sim = SimulatedWaveDriver::create(SimulatedWaveDriver::Clock::RealTime, 20.0);
    sim->setInputSignal(SimulatedWaveDriver::constant(1234));
    SampleBlock recording;
    CWaveIn in(sim);
    in.Init(&recording, 8000, 16, nullptr);
    ASSERT_EQ(in.OpenMic(), kWaveNoError);
    ASSERT_TRUE(sim->waitUntil([&] { return in.buffersAppended() >= 3; }, 5s));
    in.Stop();
    in.Close();
    ASSERT_EQ(recording.size(), in.samplesRecorded());
    ASSERT_GE(recording.size(), static_cast<std::size_t>(in.buffersAppended()) * 3276u);
    EXPECT_EQ(recording[recording.size() - 1], 1234);

    SampleBlock tone;
    ASSERT_TRUE(tone.resize(3 * 1638));
    CWaveOut out(sim);
    out.Load(tone, 0, 3 * 1638, 8000, 0, 0);
    ASSERT_EQ(out.Play(), kWaveNoError);
    ASSERT_TRUE(sim->waitUntil([&] { return !sim->outputOpen(); }, 5s));
    EXPECT_GE(sim->played().size(), 3u * 1638u);
}

}  // namespace
}  // namespace sonmetra
