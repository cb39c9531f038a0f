// The wave driver on PortAudio. Device 0 is PortAudio's default input or
// output device; there is no other. Each open device runs its own thread
// that reads (or writes) the stream with PortAudio's blocking calls in short
// chunks, fills (or drains) the queued buffers in order and sets the event
// when a buffer is complete. Only that thread touches the stream while it
// runs, so start, stop, pause and reset take effect at the next chunk.
//
// Initialising PortAudio probes every host it knows (ALSA cards, JACK, OSS);
// the complaints of absent ones go to standard error, which is silenced for
// the duration, and JACK is told not to start a server.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "io/WaveDevice.h"

namespace sonmetra {

class PortAudioWaveDriver : public IWaveDriver, public std::enable_shared_from_this<PortAudioWaveDriver> {
public:
    // Initialises PortAudio. A failure leaves a driver with no devices.
    static std::shared_ptr<PortAudioWaveDriver> create();
    ~PortAudioWaveDriver() override;

    bool initialised() const { return m_initialised; }
    // Input chunks the system dropped because they were not read in time,
    // over every input device of this driver.
    std::uint64_t inputOverflows() const { return m_inputOverflows.load(); }
    // Output chunks played late (the device ran dry meanwhile).
    std::uint64_t outputUnderflows() const { return m_outputUnderflows.load(); }

    unsigned inputDeviceCount() override;
    unsigned outputDeviceCount() override;
    MmResult inputCaps(unsigned deviceId, WaveCaps& caps) override;
    MmResult outputCaps(unsigned deviceId, WaveCaps& caps) override;
    MmResult openInput(unsigned deviceId, const WaveFormat& format, std::shared_ptr<AutoResetEvent> event,
                       std::unique_ptr<IWaveInDevice>& device) override;
    MmResult openOutput(unsigned deviceId, const WaveFormat& format, std::shared_ptr<AutoResetEvent> event,
                        std::unique_ptr<IWaveOutDevice>& device) override;

private:
    friend class PortAudioWaveIn;
    friend class PortAudioWaveOut;
    PortAudioWaveDriver() = default;

    bool m_initialised = false;                        // set once by create()
    std::atomic<std::uint64_t> m_inputOverflows{0};    // device threads count, anyone reads
    std::atomic<std::uint64_t> m_outputUnderflows{0};  // device threads count, anyone reads
};

}  // namespace sonmetra
