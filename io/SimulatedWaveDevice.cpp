#include "SimulatedWaveDevice.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "io/AutoResetEvent.h"

namespace sonmetra {

class SimulatedWaveIn : public IWaveInDevice {
public:
    SimulatedWaveIn(std::shared_ptr<SimulatedWaveDriver> driver, int generation)
        : m_driver(std::move(driver)), m_generation(generation) {}
    ~SimulatedWaveIn() override { forceClose(); }

    MmResult prepareHeader(WaveHeader& header) override {
        using Op = SimulatedWaveDriver::Op;
        return m_driver->inputCall(m_generation, Op::InputPrepare, [&](SimulatedWaveDriver::Port&) -> MmResult {
            if (m_driver->takeFailure(Op::InputPrepareFlags) == kWaveNoError) {
                if (header.data == nullptr || header.bufferLengthBytes == 0) return kWaveInvalidParam;
                header.flags |= kHeaderPrepared;
            }
            return kWaveNoError;
        });
    }
    MmResult unprepareHeader(WaveHeader& header) override {
        return m_driver->inputCall(m_generation, SimulatedWaveDriver::Op::InputUnprepare,
                                   [&](SimulatedWaveDriver::Port&) -> MmResult {
                                       if (header.flags & kHeaderInQueue) return kWaveStillPlaying;
                                       header.flags &= ~kHeaderPrepared;
                                       return kWaveNoError;
                                   });
    }
    MmResult addBuffer(WaveHeader& header) override {
        return m_driver->inputCall(m_generation, SimulatedWaveDriver::Op::InputAdd,
                                   [&](SimulatedWaveDriver::Port& port) -> MmResult {
                                       if (!(header.flags & kHeaderPrepared)) return kWaveUnprepared;
                                       if (header.flags & kHeaderInQueue) return kWaveStillPlaying;
                                       header.flags = (header.flags & ~kHeaderDone) | kHeaderInQueue;
                                       header.bytesRecorded = 0;
                                       port.queue.push_back(&header);
                                       return kWaveNoError;
                                   });
    }
    MmResult start() override {
        return m_driver->inputCall(m_generation, SimulatedWaveDriver::Op::InputStart,
                                   [](SimulatedWaveDriver::Port& port) -> MmResult {
                                       port.running = true;
                                       return kWaveNoError;
                                   });
    }
    MmResult stop() override {
        return m_driver->inputCall(m_generation, std::nullopt, [](SimulatedWaveDriver::Port& port) -> MmResult {
            port.running = false;
            if (!port.queue.empty() && port.headOffsetBytes > 0) {
                WaveHeader* head = port.queue.front();
                head->bytesRecorded = static_cast<std::uint32_t>(port.headOffsetBytes);
                head->flags = (head->flags & ~kHeaderInQueue) | kHeaderDone;
                port.queue.pop_front();
                port.headOffsetBytes = 0;
            }
            return kWaveNoError;
        });
    }
    MmResult reset() override {
        return m_driver->inputCall(m_generation, std::nullopt, [](SimulatedWaveDriver::Port& port) -> MmResult {
            port.running = false;
            SimulatedWaveDriver::returnAll(port);
            return kWaveNoError;
        });
    }
    MmResult close() override {
        return m_driver->inputCall(m_generation, std::nullopt, [](SimulatedWaveDriver::Port& port) -> MmResult {
            if (!port.queue.empty()) return kWaveStillPlaying;
            SimulatedWaveDriver::closePort(port);
            return kWaveNoError;
        });
    }

private:
    void forceClose() {
        m_driver->inputCall(m_generation, std::nullopt, [](SimulatedWaveDriver::Port& port) -> MmResult {
            SimulatedWaveDriver::returnAll(port);
            SimulatedWaveDriver::closePort(port);
            return kWaveNoError;
        });
    }
    std::shared_ptr<SimulatedWaveDriver> m_driver;
    const int m_generation;
};

class SimulatedWaveOut : public IWaveOutDevice {
public:
    SimulatedWaveOut(std::shared_ptr<SimulatedWaveDriver> driver, int generation)
        : m_driver(std::move(driver)), m_generation(generation) {}
    ~SimulatedWaveOut() override { forceClose(); }

    MmResult prepareHeader(WaveHeader& header) override {
        using Op = SimulatedWaveDriver::Op;
        return m_driver->outputCall(m_generation, Op::OutputPrepare, [&](SimulatedWaveDriver::Port&) -> MmResult {
            if (m_driver->takeFailure(Op::OutputPrepareFlags) == kWaveNoError) {
                if (header.data == nullptr && header.bufferLengthBytes > 0) return kWaveInvalidParam;
                header.flags |= kHeaderPrepared;
            }
            return kWaveNoError;
        });
    }
    MmResult unprepareHeader(WaveHeader& header) override {
        return m_driver->outputCall(m_generation, SimulatedWaveDriver::Op::OutputUnprepare,
                                    [&](SimulatedWaveDriver::Port&) -> MmResult {
                                        if (header.flags & kHeaderInQueue) return kWaveStillPlaying;
                                        header.flags &= ~kHeaderPrepared;
                                        return kWaveNoError;
                                    });
    }
    MmResult write(WaveHeader& header) override {
        return m_driver->outputCall(m_generation, SimulatedWaveDriver::Op::OutputWrite,
                                    [&](SimulatedWaveDriver::Port& port) -> MmResult {
                                        if (!(header.flags & kHeaderPrepared)) return kWaveUnprepared;
                                        if (header.flags & kHeaderInQueue) return kWaveStillPlaying;
                                        header.flags = (header.flags & ~kHeaderDone) | kHeaderInQueue;
                                        port.queue.push_back(&header);
                                        m_driver->m_writtenBytes.push_back(header.bufferLengthBytes);
                                        return kWaveNoError;
                                    });
    }
    MmResult pause() override { return setRunning(false); }
    MmResult restart() override { return setRunning(true); }
    MmResult reset() override {
        return m_driver->outputCall(m_generation, std::nullopt, [](SimulatedWaveDriver::Port& port) -> MmResult {
            SimulatedWaveDriver::returnAll(port);
            return kWaveNoError;
        });
    }
    MmResult close() override {
        return m_driver->outputCall(m_generation, std::nullopt, [](SimulatedWaveDriver::Port& port) -> MmResult {
            if (!port.queue.empty()) return kWaveStillPlaying;
            SimulatedWaveDriver::closePort(port);
            return kWaveNoError;
        });
    }

private:
    MmResult setRunning(bool running) {
        return m_driver->outputCall(m_generation, std::nullopt, [running](SimulatedWaveDriver::Port& port) {
            port.running = running;
            return kWaveNoError;
        });
    }
    void forceClose() {
        m_driver->outputCall(m_generation, std::nullopt, [](SimulatedWaveDriver::Port& port) -> MmResult {
            SimulatedWaveDriver::returnAll(port);
            SimulatedWaveDriver::closePort(port);
            return kWaveNoError;
        });
    }
    std::shared_ptr<SimulatedWaveDriver> m_driver;
    const int m_generation;
};

std::shared_ptr<SimulatedWaveDriver> SimulatedWaveDriver::create(Clock clock, double speed) {
    std::shared_ptr<SimulatedWaveDriver> driver(new SimulatedWaveDriver(speed));
    if (clock == Clock::RealTime) driver->m_clockThread = std::thread(&SimulatedWaveDriver::clockMain, driver.get());
    return driver;
}

SimulatedWaveDriver::SimulatedWaveDriver(double speed) : m_signal(constant(0)), m_speed(speed > 0.0 ? speed : 1.0) {}

SimulatedWaveDriver::~SimulatedWaveDriver() {
    {
        std::lock_guard lock(m_mutex);
        m_clockStop = true;
    }
    m_changed.notify_all();
    if (m_clockThread.joinable()) m_clockThread.join();
}

void SimulatedWaveDriver::setDeviceCounts(unsigned inputs, unsigned outputs) {
    std::lock_guard lock(m_mutex);
    m_inputs = inputs;
    m_outputs = outputs;
}

void SimulatedWaveDriver::setInputSignal(Signal signal) {
    std::lock_guard lock(m_mutex);
    m_signal = std::move(signal);
}

SimulatedWaveDriver::Signal SimulatedWaveDriver::sine(double frequencyHz, double amplitude) {
    return [frequencyHz, amplitude](std::uint64_t frame, unsigned rateHz) {
        const double t = static_cast<double>(frame) / std::max(1u, rateHz);
        return static_cast<std::int16_t>(std::lround(amplitude * std::sin(2.0 * std::numbers::pi * frequencyHz * t)));
    };
}

SimulatedWaveDriver::Signal SimulatedWaveDriver::constant(std::int16_t value) {
    return [value](std::uint64_t, unsigned) { return value; };
}

void SimulatedWaveDriver::setCompletionSignals(bool on) {
    std::lock_guard lock(m_mutex);
    m_completionSignals = on;
}

void SimulatedWaveDriver::failNext(Op op, MmResult result, int skip) {
    std::lock_guard lock(m_mutex);
    m_failures.push_back(Failure{op, result, skip});
}

MmResult SimulatedWaveDriver::takeFailure(Op op) {
    for (auto it = m_failures.begin(); it != m_failures.end(); ++it) {
        if (it->op != op) continue;
        if (it->skip > 0) {
            --it->skip;
            return kWaveNoError;
        }
        const MmResult result = it->result;
        m_failures.erase(it);
        return result;
    }
    return kWaveNoError;
}

void SimulatedWaveDriver::returnAll(Port& port) {
    bool head = true;
    for (WaveHeader* header : port.queue) {
        header->bytesRecorded = head ? static_cast<std::uint32_t>(port.headOffsetBytes) : 0;
        header->flags = (header->flags & ~kHeaderInQueue) | kHeaderDone;
        head = false;
    }
    port.queue.clear();
    port.headOffsetBytes = 0;
}

void SimulatedWaveDriver::closePort(Port& port) {
    port.open = false;
    port.running = false;
    port.event.reset();
    ++port.generation;
}

MmResult SimulatedWaveDriver::inputCall(int generation, std::optional<Op> op,
                                        const std::function<MmResult(Port&)>& action) {
    std::lock_guard lock(m_mutex);
    if (!m_in.open || m_in.generation != generation) return kWaveInvalidHandle;
    if (op) {
        if (const MmResult failure = takeFailure(*op)) return failure;
    }
    const MmResult result = action(m_in);
    changedLocked();
    return result;
}

MmResult SimulatedWaveDriver::outputCall(int generation, std::optional<Op> op,
                                         const std::function<MmResult(Port&)>& action) {
    std::lock_guard lock(m_mutex);
    if (!m_out.open || m_out.generation != generation) return kWaveInvalidHandle;
    if (op) {
        if (const MmResult failure = takeFailure(*op)) return failure;
    }
    const MmResult result = action(m_out);
    changedLocked();
    return result;
}

unsigned SimulatedWaveDriver::inputDeviceCount() {
    std::lock_guard lock(m_mutex);
    return m_inputs;
}

unsigned SimulatedWaveDriver::outputDeviceCount() {
    std::lock_guard lock(m_mutex);
    return m_outputs;
}

MmResult SimulatedWaveDriver::inputCaps(unsigned deviceId, WaveCaps& caps) {
    std::lock_guard lock(m_mutex);
    if (deviceId >= m_inputs) return kWaveBadDeviceId;
    if (const MmResult failure = takeFailure(Op::InputCaps)) return failure;
    caps = WaveCaps{"Simulated input", 2};
    return kWaveNoError;
}

MmResult SimulatedWaveDriver::outputCaps(unsigned deviceId, WaveCaps& caps) {
    std::lock_guard lock(m_mutex);
    if (deviceId >= m_outputs) return kWaveBadDeviceId;
    if (const MmResult failure = takeFailure(Op::OutputCaps)) return failure;
    caps = WaveCaps{"Simulated output", 2};
    return kWaveNoError;
}

MmResult SimulatedWaveDriver::openInput(unsigned deviceId, const WaveFormat& format,
                                        std::shared_ptr<AutoResetEvent> event, std::unique_ptr<IWaveInDevice>& device) {
    std::lock_guard lock(m_mutex);
    if (deviceId >= m_inputs) return kWaveBadDeviceId;
    if (const MmResult failure = takeFailure(Op::InputOpen)) return failure;
    if (!isSupportedPcmFormat(format)) return kWaveBadFormat;
    if (m_in.open) return kWaveAllocated;
    m_in.open = true;
    m_in.running = false;
    m_in.format = format;
    m_in.event = std::move(event);
    device = std::make_unique<SimulatedWaveIn>(shared_from_this(), m_in.generation);
    if (m_in.event) m_in.event->set();
    changedLocked();
    return kWaveNoError;
}

MmResult SimulatedWaveDriver::openOutput(unsigned deviceId, const WaveFormat& format,
                                         std::shared_ptr<AutoResetEvent> event,
                                         std::unique_ptr<IWaveOutDevice>& device) {
    std::lock_guard lock(m_mutex);
    if (deviceId >= m_outputs) return kWaveBadDeviceId;
    if (const MmResult failure = takeFailure(Op::OutputOpen)) return failure;
    if (!isSupportedPcmFormat(format)) return kWaveBadFormat;
    if (m_out.open) return kWaveAllocated;
    m_out.open = true;
    m_out.running = true;  // an output device plays what it is given at once
    m_out.format = format;
    m_out.event = std::move(event);
    device = std::make_unique<SimulatedWaveOut>(shared_from_this(), m_out.generation);
    if (m_out.event) m_out.event->set();
    changedLocked();
    return kWaveNoError;
}

int SimulatedWaveDriver::feedInputLocked(std::size_t frames) {
    if (!m_in.open || !m_in.running) return 0;
    const std::size_t frameBytes = std::max<std::size_t>(2, m_in.format.blockAlign);
    const unsigned channels = std::max<unsigned>(1, m_in.format.channels);
    int completed = 0;
    for (std::size_t n = 0; n < frames; ++n) {
        const std::int16_t sample = m_signal(m_inputFrame++, m_in.format.samplesPerSec);
        if (m_in.queue.empty()) continue;  // nothing queued: the sound is lost
        WaveHeader* head = m_in.queue.front();
        for (unsigned c = 0; c < channels; ++c) head->data[m_in.headOffsetBytes / 2 + c] = sample;
        m_in.headOffsetBytes += frameBytes;
        if (m_in.headOffsetBytes + frameBytes > head->bufferLengthBytes) {
            head->bytesRecorded = static_cast<std::uint32_t>(m_in.headOffsetBytes);
            head->flags = (head->flags & ~kHeaderInQueue) | kHeaderDone;
            m_in.queue.pop_front();
            m_in.headOffsetBytes = 0;
            ++completed;
            if (m_in.event && m_completionSignals) m_in.event->set();
        }
    }
    if (frames > 0) changedLocked();
    return completed;
}

int SimulatedWaveDriver::playOutputLocked(std::size_t frames) {
    if (!m_out.open || !m_out.running) return 0;
    const std::size_t frameBytes = std::max<std::size_t>(2, m_out.format.blockAlign);
    int completed = 0;
    for (std::size_t n = 0; n < frames && !m_out.queue.empty(); ++n) {
        WaveHeader* head = m_out.queue.front();
        if (m_out.headOffsetBytes + frameBytes <= head->bufferLengthBytes) {
            if (m_played.size() < kMaxPlayed) m_played.push_back(head->data[m_out.headOffsetBytes / 2]);
            m_out.headOffsetBytes += frameBytes;
        }
        if (m_out.headOffsetBytes + frameBytes > head->bufferLengthBytes) {
            head->flags = (head->flags & ~kHeaderInQueue) | kHeaderDone;
            m_out.queue.pop_front();
            m_out.headOffsetBytes = 0;
            ++completed;
            if (m_out.event && m_completionSignals) m_out.event->set();
        }
    }
    if (frames > 0) changedLocked();
    return completed;
}

void SimulatedWaveDriver::waitForSignalTaken(std::unique_lock<std::mutex>& lock, const Port& port) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (port.event && port.event->pending() && std::chrono::steady_clock::now() < deadline) {
        lock.unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        lock.lock();
    }
}

bool SimulatedWaveDriver::completeInputBuffer() {
    std::unique_lock lock(m_mutex);
    waitForSignalTaken(lock, m_in);
    if (!m_in.open || !m_in.running || m_in.queue.empty()) return false;
    const std::size_t frameBytes = std::max<std::size_t>(2, m_in.format.blockAlign);
    const std::size_t remaining = m_in.queue.front()->bufferLengthBytes - m_in.headOffsetBytes;
    return feedInputLocked((remaining + frameBytes - 1) / frameBytes) == 1;
}

int SimulatedWaveDriver::feedInput(std::size_t frames) {
    std::lock_guard lock(m_mutex);
    return feedInputLocked(frames);
}

bool SimulatedWaveDriver::completeOutputBuffer() {
    std::unique_lock lock(m_mutex);
    waitForSignalTaken(lock, m_out);
    if (!m_out.open || !m_out.running || m_out.queue.empty()) return false;
    const std::size_t frameBytes = std::max<std::size_t>(2, m_out.format.blockAlign);
    const std::size_t remaining = m_out.queue.front()->bufferLengthBytes - m_out.headOffsetBytes;
    // A zero-length buffer completes on the first frame step too.
    return playOutputLocked(std::max<std::size_t>(1, (remaining + frameBytes - 1) / frameBytes)) >= 1;
}

int SimulatedWaveDriver::playOutput(std::size_t frames) {
    std::lock_guard lock(m_mutex);
    return playOutputLocked(frames);
}

bool SimulatedWaveDriver::inputOpen() const {
    std::lock_guard lock(m_mutex);
    return m_in.open;
}
bool SimulatedWaveDriver::inputStarted() const {
    std::lock_guard lock(m_mutex);
    return m_in.open && m_in.running;
}
bool SimulatedWaveDriver::outputOpen() const {
    std::lock_guard lock(m_mutex);
    return m_out.open;
}
bool SimulatedWaveDriver::outputPaused() const {
    std::lock_guard lock(m_mutex);
    return m_out.open && !m_out.running;
}
int SimulatedWaveDriver::queuedInputBuffers() const {
    std::lock_guard lock(m_mutex);
    return static_cast<int>(m_in.queue.size());
}
int SimulatedWaveDriver::queuedOutputBuffers() const {
    std::lock_guard lock(m_mutex);
    return static_cast<int>(m_out.queue.size());
}
std::vector<std::int16_t> SimulatedWaveDriver::played() const {
    std::lock_guard lock(m_mutex);
    return m_played;
}
std::vector<std::uint32_t> SimulatedWaveDriver::writtenBytes() const {
    std::lock_guard lock(m_mutex);
    return m_writtenBytes;
}
WaveFormat SimulatedWaveDriver::lastInputFormat() const {
    std::lock_guard lock(m_mutex);
    return m_in.format;
}
WaveFormat SimulatedWaveDriver::lastOutputFormat() const {
    std::lock_guard lock(m_mutex);
    return m_out.format;
}
bool SimulatedWaveDriver::outputHasEvent() const {
    std::lock_guard lock(m_mutex);
    return m_out.event != nullptr;
}

bool SimulatedWaveDriver::waitUntil(const std::function<bool()>& predicate, std::chrono::milliseconds timeout) {
    // The predicate may call this driver's observers, so it runs unlocked;
    // the short wait below covers a change that slips in between.
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!predicate()) {
        const auto now = std::chrono::steady_clock::now();
        if (now >= deadline) return false;
        std::unique_lock lock(m_mutex);
        m_changed.wait_until(lock, std::min(deadline, now + std::chrono::milliseconds(5)));
    }
    return true;
}

void SimulatedWaveDriver::clockMain() {
    using namespace std::chrono;
    auto last = steady_clock::now();
    double inCarry = 0.0;
    double outCarry = 0.0;
    std::unique_lock lock(m_mutex);
    while (!m_clockStop) {
        m_changed.wait_for(lock, milliseconds(5));
        const auto now = steady_clock::now();
        const double seconds = duration<double>(now - last).count() * m_speed;
        last = now;
        // Time passes only for a running device; a stopped one starts afresh.
        inCarry = (m_in.open && m_in.running) ? inCarry + seconds * m_in.format.samplesPerSec : 0.0;
        outCarry = (m_out.open && m_out.running) ? outCarry + seconds * m_out.format.samplesPerSec : 0.0;
        const auto inFrames = static_cast<std::size_t>(inCarry);
        const auto outFrames = static_cast<std::size_t>(outCarry);
        inCarry -= static_cast<double>(inFrames);
        outCarry -= static_cast<double>(outFrames);
        feedInputLocked(inFrames);
        playOutputLocked(outFrames);
    }
}

}  // namespace sonmetra
