#include "PortAudioWaveDevice.h"

#include <portaudio.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "document/QuietStderr.h"
#include "io/AutoResetEvent.h"

namespace sonmetra {
namespace {

// Frames moved per blocking call: short enough that stop and pause act
// within about 20 ms, long enough to keep the calls few.
constexpr unsigned long kChunkFrames = 1024;
// Least device latency asked for: room for a busy machine to be late with
// a chunk, yet small beside the 0.2 s playback buffers.
constexpr double kMinimumLatencySeconds = 0.1;
// Pause after a stream error, so that a broken device does not spin.
constexpr std::chrono::milliseconds kErrorBackoff{20};

// Runs `action` with standard error sent to /dev/null.
template <typename Action>
auto withQuietStderr(Action action) {
    QuietStderr quiet;
    return action();
}

MmResult toWaveResult(PaError error) {
    switch (error) {
        case paNoError:
            return kWaveNoError;
        case paInsufficientMemory:
            return kWaveNoMemory;
        case paInvalidSampleRate:
        case paInvalidChannelCount:
        case paSampleFormatNotSupported:
            return kWaveBadFormat;
        case paDeviceUnavailable:
            return kWaveAllocated;
        case paInvalidDevice:
            return kWaveBadDeviceId;
        default:
            return kWaveError;
    }
}

void markDone(WaveHeader& header) { header.flags = (header.flags & ~kHeaderInQueue) | kHeaderDone; }

// The header bookkeeping that input and output share; guarded by m_mutex.
class PortAudioDeviceBase {
protected:
    PortAudioDeviceBase(std::shared_ptr<PortAudioWaveDriver> driver, PaStream* stream, const WaveFormat& format,
                        std::shared_ptr<AutoResetEvent> event)
        : m_driver(std::move(driver)),
          m_stream(stream),
          m_frameBytes(std::max<std::size_t>(2, format.blockAlign)),
          m_event(std::move(event)) {}

    MmResult prepare(WaveHeader& header) {
        std::lock_guard lock(m_mutex);
        if (m_closed) return kWaveInvalidHandle;
        if (header.data == nullptr && header.bufferLengthBytes > 0) return kWaveInvalidParam;
        header.flags |= kHeaderPrepared;
        return kWaveNoError;
    }
    MmResult unprepare(WaveHeader& header) {
        std::lock_guard lock(m_mutex);
        if (m_closed) return kWaveInvalidHandle;
        if (header.flags & kHeaderInQueue) return kWaveStillPlaying;
        header.flags &= ~kHeaderPrepared;
        return kWaveNoError;
    }
    MmResult enqueue(WaveHeader& header) {
        {
            std::lock_guard lock(m_mutex);
            if (m_closed) return kWaveInvalidHandle;
            if (!(header.flags & kHeaderPrepared)) return kWaveUnprepared;
            if (header.flags & kHeaderInQueue) return kWaveStillPlaying;
            header.flags = (header.flags & ~kHeaderDone) | kHeaderInQueue;
            header.bytesRecorded = 0;
            m_queue.push_back(&header);
        }
        m_wake.notify_all();
        return kWaveNoError;
    }
    // Returns every queued header, the head with what it holds. Holds m_mutex.
    void returnAllLocked() {
        bool head = true;
        for (WaveHeader* header : m_queue) {
            header->bytesRecorded = head ? static_cast<std::uint32_t>(m_headOffset) : 0;
            markDone(*header);
            head = false;
        }
        m_queue.clear();
        m_headOffset = 0;
        ++m_resetCount;
    }
    MmResult closeDevice() {
        {
            std::lock_guard lock(m_mutex);
            if (m_closed) return kWaveInvalidHandle;
            if (!m_queue.empty()) return kWaveStillPlaying;
            m_closed = true;
        }
        shutDown();
        return kWaveNoError;
    }
    // Ends the thread and closes the stream; used by close and the destructor.
    void shutDown() {
        {
            std::lock_guard lock(m_mutex);
            m_closed = true;
            returnAllLocked();
        }
        m_wake.notify_all();
        if (m_thread.joinable()) m_thread.join();
        if (m_stream != nullptr) {
            Pa_CloseStream(m_stream);
            m_stream = nullptr;
        }
    }

    std::shared_ptr<PortAudioWaveDriver> m_driver;  // keeps PortAudio initialised
    PaStream* m_stream;                             // device thread while it runs; shutDown afterwards
    const std::size_t m_frameBytes;
    std::shared_ptr<AutoResetEvent> m_event;  // device thread sets it
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_closed = false;            // guarded by m_mutex
    bool m_running = false;           // guarded by m_mutex: input started / output not paused
    std::deque<WaveHeader*> m_queue;  // guarded by m_mutex
    std::size_t m_headOffset = 0;     // guarded by m_mutex: bytes done in the head buffer
    std::uint64_t m_resetCount = 0;   // guarded by m_mutex: tells the thread its head was taken away
    std::thread m_thread;             // started by the constructor of the derived class
};

}  // namespace

class PortAudioWaveIn : public IWaveInDevice, private PortAudioDeviceBase {
public:
    PortAudioWaveIn(std::shared_ptr<PortAudioWaveDriver> driver, PaStream* stream, const WaveFormat& format,
                    std::shared_ptr<AutoResetEvent> event)
        : PortAudioDeviceBase(std::move(driver), stream, format, std::move(event)) {
        m_thread = std::thread(&PortAudioWaveIn::threadMain, this);
    }
    ~PortAudioWaveIn() override { shutDown(); }

    MmResult prepareHeader(WaveHeader& header) override { return prepare(header); }
    MmResult unprepareHeader(WaveHeader& header) override { return unprepare(header); }
    MmResult addBuffer(WaveHeader& header) override { return enqueue(header); }
    MmResult start() override { return setRunning(true); }
    MmResult stop() override {
        std::lock_guard lock(m_mutex);
        if (m_closed) return kWaveInvalidHandle;
        m_running = false;
        if (!m_queue.empty() && m_headOffset > 0) {
            m_queue.front()->bytesRecorded = static_cast<std::uint32_t>(m_headOffset);
            markDone(*m_queue.front());
            m_queue.pop_front();
            m_headOffset = 0;
        }
        return kWaveNoError;
    }
    MmResult reset() override {
        std::lock_guard lock(m_mutex);
        if (m_closed) return kWaveInvalidHandle;
        m_running = false;
        returnAllLocked();
        return kWaveNoError;
    }
    MmResult close() override { return closeDevice(); }

private:
    MmResult setRunning(bool running) {
        {
            std::lock_guard lock(m_mutex);
            if (m_closed) return kWaveInvalidHandle;
            m_running = running;
        }
        m_wake.notify_all();
        return kWaveNoError;
    }

    // Copies a chunk into the queued buffers. Holds m_mutex.
    void deliverLocked(const std::int16_t* frames, std::size_t bytes) {
        const auto* source = reinterpret_cast<const unsigned char*>(frames);
        while (bytes > 0 && !m_queue.empty()) {
            WaveHeader* head = m_queue.front();
            const std::size_t room = head->bufferLengthBytes - m_headOffset;
            const std::size_t n = std::min(room, bytes);
            std::memcpy(reinterpret_cast<unsigned char*>(head->data) + m_headOffset, source, n);
            m_headOffset += n;
            source += n;
            bytes -= n;
            if (m_headOffset + m_frameBytes > head->bufferLengthBytes) {
                head->bytesRecorded = static_cast<std::uint32_t>(m_headOffset);
                markDone(*head);
                m_queue.pop_front();
                m_headOffset = 0;
                if (m_event) m_event->set();
            }
        }
        // With no buffer queued the sound is lost, as on any sound card.
    }

    void threadMain() {
        std::vector<std::int16_t> chunk(kChunkFrames * m_frameBytes / 2);
        bool streaming = false;
        std::unique_lock lock(m_mutex);
        while (!m_closed) {
            if (!m_running) {
                if (streaming) {
                    lock.unlock();
                    Pa_StopStream(m_stream);
                    lock.lock();
                    streaming = false;
                    continue;
                }
                m_wake.wait(lock, [this] { return m_closed || m_running; });
                continue;
            }
            lock.unlock();
            PaError error = paNoError;
            if (!streaming) {
                error = Pa_StartStream(m_stream);
                streaming = error == paNoError;
            }
            if (streaming) error = Pa_ReadStream(m_stream, chunk.data(), kChunkFrames);
            if (error == paInputOverflowed) ++m_driver->m_inputOverflows;
            if (error != paNoError && error != paInputOverflowed) std::this_thread::sleep_for(kErrorBackoff);
            lock.lock();
            if (m_running && (error == paNoError || error == paInputOverflowed))
                deliverLocked(chunk.data(), kChunkFrames * m_frameBytes);
        }
        lock.unlock();
        if (streaming) Pa_AbortStream(m_stream);
    }
};

class PortAudioWaveOut : public IWaveOutDevice, private PortAudioDeviceBase {
public:
    PortAudioWaveOut(std::shared_ptr<PortAudioWaveDriver> driver, PaStream* stream, const WaveFormat& format,
                     std::shared_ptr<AutoResetEvent> event)
        : PortAudioDeviceBase(std::move(driver), stream, format, std::move(event)) {
        m_running = true;  // an output device plays what it is given at once
        m_thread = std::thread(&PortAudioWaveOut::threadMain, this);
    }
    ~PortAudioWaveOut() override { shutDown(); }

    MmResult prepareHeader(WaveHeader& header) override { return prepare(header); }
    MmResult unprepareHeader(WaveHeader& header) override { return unprepare(header); }
    MmResult write(WaveHeader& header) override { return enqueue(header); }
    MmResult pause() override { return setRunning(false); }
    MmResult restart() override { return setRunning(true); }
    MmResult reset() override {
        {
            std::lock_guard lock(m_mutex);
            if (m_closed) return kWaveInvalidHandle;
            returnAllLocked();
        }
        m_wake.notify_all();
        return kWaveNoError;
    }
    MmResult close() override { return closeDevice(); }

private:
    MmResult setRunning(bool running) {
        {
            std::lock_guard lock(m_mutex);
            if (m_closed) return kWaveInvalidHandle;
            m_running = running;
        }
        m_wake.notify_all();
        return kWaveNoError;
    }

    void threadMain() {
        std::vector<std::int16_t> chunk(kChunkFrames * m_frameBytes / 2);
        bool streaming = false;
        std::unique_lock lock(m_mutex);
        while (!m_closed) {
            if (!m_running) {
                if (streaming) {
                    // Pausing drops what PortAudio still holds, so the sound stops now.
                    lock.unlock();
                    Pa_AbortStream(m_stream);
                    lock.lock();
                    streaming = false;
                    continue;
                }
                m_wake.wait(lock, [this] { return m_closed || m_running; });
                continue;
            }
            if (m_queue.empty()) {
                m_wake.wait(lock, [this] { return m_closed || !m_running || !m_queue.empty(); });
                continue;
            }
            WaveHeader* head = m_queue.front();
            const std::uint64_t resets = m_resetCount;
            const std::size_t left = head->bufferLengthBytes - m_headOffset;
            const std::size_t frames = std::min<std::size_t>(kChunkFrames, left / m_frameBytes);
            const std::size_t bytes = frames * m_frameBytes;
            std::memcpy(chunk.data(), reinterpret_cast<const unsigned char*>(head->data) + m_headOffset, bytes);
            m_headOffset += bytes;
            const bool finished = m_headOffset + m_frameBytes > head->bufferLengthBytes;
            lock.unlock();

            PaError error = paNoError;
            if (!streaming) {
                error = Pa_StartStream(m_stream);
                streaming = error == paNoError;
            }
            if (streaming && frames > 0) error = Pa_WriteStream(m_stream, chunk.data(), frames);
            if (error == paOutputUnderflowed) ++m_driver->m_outputUnderflows;
            if (error != paNoError && error != paOutputUnderflowed) std::this_thread::sleep_for(kErrorBackoff);

            lock.lock();
            // A reset meanwhile has already returned the header.
            if (finished && resets == m_resetCount && !m_queue.empty() && m_queue.front() == head) {
                markDone(*head);
                m_queue.pop_front();
                m_headOffset = 0;
                if (m_event) m_event->set();
            }
        }
        lock.unlock();
        if (streaming) Pa_AbortStream(m_stream);
    }
};

std::shared_ptr<PortAudioWaveDriver> PortAudioWaveDriver::create() {
    // Probing must not start a JACK server nor wait for one.
    setenv("JACK_NO_START_SERVER", "1", 0);
    setenv("JACK_NO_AUDIO_RESERVATION", "1", 0);
    std::shared_ptr<PortAudioWaveDriver> driver(new PortAudioWaveDriver());
    driver->m_initialised = withQuietStderr([] { return Pa_Initialize(); }) == paNoError;
    return driver;
}

PortAudioWaveDriver::~PortAudioWaveDriver() {
    if (m_initialised) Pa_Terminate();
}

unsigned PortAudioWaveDriver::inputDeviceCount() {
    return m_initialised && Pa_GetDefaultInputDevice() != paNoDevice ? 1u : 0u;
}

unsigned PortAudioWaveDriver::outputDeviceCount() {
    return m_initialised && Pa_GetDefaultOutputDevice() != paNoDevice ? 1u : 0u;
}

namespace {

MmResult capsOf(PaDeviceIndex index, bool input, WaveCaps& caps) {
    if (index == paNoDevice) return kWaveBadDeviceId;
    const PaDeviceInfo* info = Pa_GetDeviceInfo(index);
    if (info == nullptr) return kWaveError;
    caps.name = info->name ? info->name : "";
    caps.channels = static_cast<std::uint16_t>(input ? info->maxInputChannels : info->maxOutputChannels);
    return kWaveNoError;
}

// Opens a blocking stream on the default device of one direction.
MmResult openStream(bool input, const WaveFormat& format, PaStream*& stream) {
    if (!isSupportedPcmFormat(format)) return kWaveBadFormat;
    const PaDeviceIndex index = input ? Pa_GetDefaultInputDevice() : Pa_GetDefaultOutputDevice();
    if (index == paNoDevice) return kWaveBadDeviceId;
    const PaDeviceInfo* info = Pa_GetDeviceInfo(index);
    if (info == nullptr) return kWaveError;
    PaStreamParameters parameters{};
    parameters.device = index;
    parameters.channelCount = format.channels;
    parameters.sampleFormat = paInt16;
    // The engines keep 0.2 to 0.4 s queued themselves; a roomy device
    // latency costs nothing and keeps a busy machine from dropping sound.
    parameters.suggestedLatency =
        std::max(kMinimumLatencySeconds, input ? info->defaultHighInputLatency : info->defaultHighOutputLatency);
    const PaStreamParameters* in = input ? &parameters : nullptr;
    const PaStreamParameters* out = input ? nullptr : &parameters;
    return withQuietStderr([&] {
        if (Pa_IsFormatSupported(in, out, format.samplesPerSec) != paFormatIsSupported) return kWaveBadFormat;
        return toWaveResult(
            Pa_OpenStream(&stream, in, out, format.samplesPerSec, kChunkFrames, paClipOff, nullptr, nullptr));
    });
}

}  // namespace

MmResult PortAudioWaveDriver::inputCaps(unsigned deviceId, WaveCaps& caps) {
    if (deviceId >= inputDeviceCount()) return kWaveBadDeviceId;
    return capsOf(Pa_GetDefaultInputDevice(), true, caps);
}

MmResult PortAudioWaveDriver::outputCaps(unsigned deviceId, WaveCaps& caps) {
    if (deviceId >= outputDeviceCount()) return kWaveBadDeviceId;
    return capsOf(Pa_GetDefaultOutputDevice(), false, caps);
}

MmResult PortAudioWaveDriver::openInput(unsigned deviceId, const WaveFormat& format,
                                        std::shared_ptr<AutoResetEvent> event, std::unique_ptr<IWaveInDevice>& device) {
    if (deviceId >= inputDeviceCount()) return kWaveBadDeviceId;
    PaStream* stream = nullptr;
    if (const MmResult opened = openStream(true, format, stream)) return opened;
    device = std::make_unique<PortAudioWaveIn>(shared_from_this(), stream, format, event);
    if (event) event->set();
    return kWaveNoError;
}

MmResult PortAudioWaveDriver::openOutput(unsigned deviceId, const WaveFormat& format,
                                         std::shared_ptr<AutoResetEvent> event,
                                         std::unique_ptr<IWaveOutDevice>& device) {
    if (deviceId >= outputDeviceCount()) return kWaveBadDeviceId;
    PaStream* stream = nullptr;
    if (const MmResult opened = openStream(false, format, stream)) return opened;
    device = std::make_unique<PortAudioWaveOut>(shared_from_this(), stream, format, event);
    if (event) event->set();
    return kWaveNoError;
}

}  // namespace sonmetra
