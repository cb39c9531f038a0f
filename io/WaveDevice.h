// The wave device layer under the sound engines: device counts and
// capabilities, opening device 0 with a PCM format and a notification event,
// buffer headers that are prepared, queued, completed and unprepared, and the
// transport commands. Result codes are 0 for success.
//
// Contract every implementation keeps:
// - open sets the event once; after that the event is set once per buffer
//   that is completely recorded or completely played. Stop, reset and pause
//   never set it, so a buffer cut short by them is never reported full.
// - a header handed to addBuffer/write stays owned by the device (flag
//   kHeaderInQueue) until it is done; the engine only touches it again after
//   the event told it so, or after reset.
// - a closed device answers every call with kWaveInvalidHandle.
// - every call may come from any thread; devices lock internally.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace sonmetra {

class AutoResetEvent;

using MmResult = std::uint32_t;

inline constexpr MmResult kWaveNoError = 0;
inline constexpr MmResult kWaveError = 1;
inline constexpr MmResult kWaveBadDeviceId = 2;
inline constexpr MmResult kWaveAllocated = 4;
inline constexpr MmResult kWaveInvalidHandle = 5;
inline constexpr MmResult kWaveNoDriver = 6;
inline constexpr MmResult kWaveNoMemory = 7;
inline constexpr MmResult kWaveInvalidParam = 11;
inline constexpr MmResult kWaveBadFormat = 32;
inline constexpr MmResult kWaveStillPlaying = 33;
inline constexpr MmResult kWaveUnprepared = 34;

// Header flags.
inline constexpr std::uint32_t kHeaderDone = 0x01;
inline constexpr std::uint32_t kHeaderPrepared = 0x02;
inline constexpr std::uint32_t kHeaderInQueue = 0x10;

inline constexpr std::uint16_t kWaveFormatPcm = 1;

struct WaveFormat {
    std::uint16_t formatTag = kWaveFormatPcm;
    std::uint16_t channels = 1;
    std::uint32_t samplesPerSec = 11025;
    std::uint32_t avgBytesPerSec = 22050;
    std::uint16_t blockAlign = 2;
    std::uint16_t bitsPerSample = 16;
    std::uint16_t extraSize = 0;
};

// One buffer handed to a device. The engine owns the memory; the device
// reads or fills it while the header is queued.
struct WaveHeader {
    std::int16_t* data = nullptr;
    std::uint32_t bufferLengthBytes = 0;
    std::uint32_t bytesRecorded = 0;  // input: bytes filled when done
    std::uint32_t flags = 0;
    std::uint32_t loops = 0;
};

struct WaveCaps {
    std::string name;
    std::uint16_t channels = 0;
};

class IWaveInDevice {
public:
    virtual ~IWaveInDevice() = default;
    virtual MmResult prepareHeader(WaveHeader& header) = 0;
    virtual MmResult unprepareHeader(WaveHeader& header) = 0;
    virtual MmResult addBuffer(WaveHeader& header) = 0;
    virtual MmResult start() = 0;
    // Stops filling; the buffer being filled leaves the queue marked done
    // with what it holds, without a signal. Empty queued buffers stay.
    virtual MmResult stop() = 0;
    // Stops and returns every queued buffer marked done, without a signal.
    virtual MmResult reset() = 0;
    virtual MmResult close() = 0;
};

class IWaveOutDevice {
public:
    virtual ~IWaveOutDevice() = default;
    virtual MmResult prepareHeader(WaveHeader& header) = 0;
    virtual MmResult unprepareHeader(WaveHeader& header) = 0;
    // Queues a buffer; an open, unpaused device plays it at once.
    virtual MmResult write(WaveHeader& header) = 0;
    virtual MmResult pause() = 0;
    virtual MmResult restart() = 0;
    // Stops and returns every queued buffer marked done, without a signal.
    virtual MmResult reset() = 0;
    virtual MmResult close() = 0;
};

// The sound system: counts, capabilities, and opening devices.
class IWaveDriver {
public:
    virtual ~IWaveDriver() = default;
    virtual unsigned inputDeviceCount() = 0;
    virtual unsigned outputDeviceCount() = 0;
    virtual MmResult inputCaps(unsigned deviceId, WaveCaps& caps) = 0;
    virtual MmResult outputCaps(unsigned deviceId, WaveCaps& caps) = 0;
    // On success `device` holds the open device and the event has been set once.
    virtual MmResult openInput(unsigned deviceId, const WaveFormat& format, std::shared_ptr<AutoResetEvent> event,
                               std::unique_ptr<IWaveInDevice>& device) = 0;
    // A null event means no notification at all (the single-buffer playback).
    virtual MmResult openOutput(unsigned deviceId, const WaveFormat& format, std::shared_ptr<AutoResetEvent> event,
                                std::unique_ptr<IWaveOutDevice>& device) = 0;
};

// True when the format is one the devices of this program can take: PCM,
// mono or stereo, 16 bits, a rate from 1 Hz to 192 kHz, consistent sizes.
bool isSupportedPcmFormat(const WaveFormat& format);

// The driver the engines use: the one installed with setWaveDriver, else the
// PortAudio driver, or the real-time simulated driver when the environment
// variable SONMETRA_SOUND is "simulated".
std::shared_ptr<IWaveDriver> waveDriver();
// Installs a driver for the whole program (nullptr returns to the default).
void setWaveDriver(std::shared_ptr<IWaveDriver> driver);

}  // namespace sonmetra
