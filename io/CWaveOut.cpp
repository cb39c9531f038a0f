#include "CWaveOut.h"

#include <algorithm>
#include <chrono>

#include "document/MessageService.h"
#include "io/AutoResetEvent.h"
#include "io/SoundMath.h"
#include "io/ThreadPriority.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

// Each of Stop's two pauses gives the other thread time to see the flag.
constexpr std::chrono::milliseconds kStopSleep{50};

}  // namespace

int CWaveOut::bufferLengthForRate(unsigned rateHz) {
    const auto length = static_cast<std::uint64_t>(rateHz) * 2048u / 10000u;
    return static_cast<int>(std::min<std::uint64_t>(length, kBufferCapacity));
}

CWaveOut::CWaveOut(std::shared_ptr<IWaveDriver> driver) : m_driver(std::move(driver)) {}

CWaveOut::~CWaveOut() { Stop(); }

void CWaveOut::ClearBuffer() {
    std::fill_n(playBuffer(0), kClearCount, std::int16_t{0});
    std::fill_n(playBuffer(1), kClearCount, std::int16_t{0});
}

std::shared_ptr<IWaveOutDevice> CWaveOut::device() const {
    std::lock_guard lock(m_deviceMutex);
    return m_device;
}

bool CWaveOut::isOpen() const { return device() != nullptr; }

void CWaveOut::SetProgress(IWaveDisplay* window, int enabled, int left, int top, int right, int bottom) {
    m_window = window;
    m_cursorEnabled = enabled;
    m_cursorRect = WaveRect{left, top, right, bottom};
}

void CWaveOut::Load(const SampleBlock& source, int firstSample, int count, unsigned rateHz, int singleBuffer,
                    std::intptr_t callerValue) {
    // The worker of a previous playback reads the copy that is replaced here.
    if (isOpen() || m_worker.joinable()) Stop();

    const auto available = static_cast<std::int64_t>(source.size());
    const std::int64_t first = std::clamp<std::int64_t>(firstSample, 0, available);
    count = static_cast<int>(std::clamp<std::int64_t>(count, 0, available - first));
    // The two buffers together are all a single buffer can hold.
    if (singleBuffer != 0 && count > 2 * kBufferCapacity) singleBuffer = 0;

    m_singleBuffer = singleBuffer;
    m_callerValue = callerValue;
    m_sampleRateHz = rateHz;
    m_total = count;
    m_bufferLength = bufferLengthForRate(rateHz);

    m_data.clear();
    if (!m_data.resize(static_cast<std::size_t>(count))) {
        m_total = 0;
        showMessage(IDS_WAVEOUT_NO_MEMORY);
        return;
    }
    std::copy_n(source.data() + first, count, m_data.data());

    if (m_singleBuffer != 0) {
        std::copy_n(m_data.data(), count, playBuffer(0));
        return;
    }
    m_position = 0;
    for (int index = 0; index < 2; ++index) fillNextBuffer(index);
}

void CWaveOut::fillNextBuffer(int index) {
    // Slots past the end are silence, never what an earlier buffer left there.
    std::int16_t* slots = playBuffer(index);
    const std::int16_t* samples = m_data.data();
    for (int i = 0; i < m_bufferLength; ++i) {
        slots[i] = m_position < m_total ? samples[m_position] : std::int16_t{0};
        ++m_position;
    }
}

void CWaveOut::setUpHeader(int index, int samples) {
    m_currentLength = samples;
    WaveHeader& header = m_headers[static_cast<std::size_t>(index)];
    header.data = playBuffer(index);
    header.bufferLengthBytes = static_cast<std::uint32_t>(2 * samples);
    header.loops = 0;
    header.flags = 0;
}

bool CWaveOut::writeAtPlay(int index, MmResult& result) {
    WaveHeader& header = m_headers[static_cast<std::size_t>(index)];
    const auto dev = device();
    result = dev->prepareHeader(header);
    if (result != kWaveNoError || header.flags != kHeaderPrepared) {
        showMessage(IDS_WAVEOUT_PREPARE_PLAY_FAILED);
        return false;
    }
    result = dev->write(header);
    if (result != kWaveNoError) {
        showMessage(IDS_WAVEOUT_WRITE_PLAY_FAILED);
        return false;
    }
    return true;
}

MmResult CWaveOut::Play() {
    // Replaying on the same engine first ends the previous playback.
    if (isOpen() || m_worker.joinable()) Stop();
    m_buffersPlayed = 0;
    if (m_driver == nullptr || m_driver->outputDeviceCount() == 0) {
        showMessage(IDS_NO_SOUND_OUTPUT_DEVICE);
        return kWaveNoError;
    }
    if (m_driver->outputCaps(0, m_caps) != kWaveNoError) showMessage(IDS_WAVEOUT_CAPS_FAILED);

    m_format = WaveFormat{kWaveFormatPcm, 1, m_sampleRateHz, 2 * m_sampleRateHz, 2, 16, 0};
    std::unique_ptr<IWaveOutDevice> opened;
    MmResult result = kWaveNoError;

    if (m_singleBuffer != 0) {
        result = m_driver->openOutput(0, m_format, nullptr, opened);
        if (result != kWaveNoError) {
            showMessage(IDS_WAVEOUT_OPEN_FAILED);
            return result;
        }
        {
            std::lock_guard lock(m_deviceMutex);
            m_device = std::move(opened);
        }
        m_currentIndex = 0;
        setUpHeader(0, m_total);
        writeAtPlay(0, result);
        return result;
    }

    m_stop = 0;
    auto event = std::make_shared<AutoResetEvent>("WaveOutThreadEvent");
    m_event = event;
    result = m_driver->openOutput(0, m_format, event, opened);
    if (result != kWaveNoError) {
        showMessage(IDS_WAVEOUT_OPEN_FAILED);
        return result;
    }
    {
        std::lock_guard lock(m_deviceMutex);
        m_device = std::move(opened);
    }
    for (int index = 0; index < 2; ++index) {
        m_currentIndex = static_cast<std::int16_t>(index);
        setUpHeader(index, m_bufferLength);
        if (!writeAtPlay(index, result)) return result;
    }
    // The worker starts only now that both buffers are at the device.
    m_worker = std::thread(&CWaveOut::workerMain, this, event);
    m_workerId = m_worker.get_id();
    return kWaveNoError;
}

MmResult CWaveOut::Pause() {
    const auto dev = device();
    return dev ? dev->pause() : kWaveInvalidHandle;
}

MmResult CWaveOut::Restart() {
    const auto dev = device();
    return dev ? dev->restart() : kWaveInvalidHandle;
}

MmResult CWaveOut::Stop() {
    if (const auto dev = device()) dev->pause();
    std::this_thread::sleep_for(kStopSleep);
    m_stop = 1;
    // The worker needs no waking when it stops itself, and only the
    // interface thread may touch m_event (it drops it after joining).
    const std::shared_ptr<AutoResetEvent> event = std::this_thread::get_id() == m_workerId.load() ? nullptr : m_event;
    if (event) event->set();
    std::this_thread::sleep_for(kStopSleep);

    std::shared_ptr<IWaveOutDevice> closing;
    {
        std::lock_guard lock(m_deviceMutex);
        closing = std::move(m_device);
    }
    MmResult closed = kWaveNoError;
    if (closing) {
        closing->reset();
        closed = closing->close();
    }
    joinWorker();
    return closed;
}

void CWaveOut::joinWorker() {
    // The worker may end the playback itself; it is joined later by the
    // interface thread (the next Stop, Load, Play or the destructor).
    if (std::this_thread::get_id() == m_workerId.load()) return;
    if (m_worker.joinable()) {
        if (m_event) m_event->close();
        m_worker.join();
    }
    m_workerId = std::thread::id();
    m_event.reset();
}

void CWaveOut::workerMain(std::shared_ptr<AutoResetEvent> event) {
    requestTimeCriticalPriority();
    event->wait();  // the signal given when the device opened
    if (m_stop != 0) return;
    do {
        if (!event->wait() || m_stop != 0) return;
        Refill();
        StepProgress(nullptr);
    } while (m_stop == 0);
    // Refill met the end: the last step erases the cursor.
    StepProgress(nullptr);
}

void CWaveOut::Refill() {
    // The buffer just played is the one before the newest two. Playback ends
    // once it lies wholly past the total: then the buffer that held the last
    // samples has been played out, and only silence is still queued. (A
    // device reports a buffer played when it has taken it; the silent
    // buffer after it gives the sound system time to sound it before the
    // pause drops what it still holds.)
    if (static_cast<std::int64_t>(m_position) - 2 * m_bufferLength >= m_total) {
        Pause();
        Stop();
        return;
    }
    const auto dev = device();
    if (!dev) return;
    // During a Stop from the interface thread a failing call is expected.
    auto report = [this](int stringId) {
        if (m_stop == 0) showMessage(stringId);
    };

    m_currentIndex = static_cast<std::int16_t>(1 - m_currentIndex);
    WaveHeader& header = m_headers[static_cast<std::size_t>(m_currentIndex)];
    if (dev->unprepareHeader(header) != kWaveNoError) {
        report(IDS_WAVEOUT_UNPREPARE_FAILED);
        return;
    }
    fillNextBuffer(m_currentIndex);
    setUpHeader(m_currentIndex, m_bufferLength);
    if (dev->prepareHeader(header) != kWaveNoError || header.flags != kHeaderPrepared)
        report(IDS_WAVEOUT_PREPARE_FAILED);
    if (dev->write(header) != kWaveNoError) report(IDS_WAVEOUT_ADD_FAILED);
}

void CWaveOut::StepProgress(void*) {
    if (m_window == nullptr || m_cursorEnabled == 0) return;
    const WaveRect& r = m_cursorRect;
    const double blocks = static_cast<double>(m_data.size()) / static_cast<double>(m_bufferLength);
    const double step = static_cast<double>(r.right - r.left) / blocks;
    // The strip reaches as far below the bottom as the bottom lies below the top.
    auto cursorAt = [&](int played) {
        const int x = r.left + truncToPixel(played * step);
        return WaveRect{x, r.top, x + 1, 2 * r.bottom - r.top};
    };
    int played = m_buffersPlayed;
    // Past the end the cursor has been erased; the silent buffers that
    // follow the last samples draw nothing.
    if (played > truncToPixel(blocks)) {
        m_buffersPlayed = played + 1;
        return;
    }
    if (played >= 1) m_window->invertRect(cursorAt(played));
    played += 1;
    m_buffersPlayed = played;
    const WaveRect cursor = cursorAt(played);
    m_window->invertRect(cursor);
    if (played > truncToPixel(blocks)) m_window->invertRect(cursor);
}

}  // namespace sonmetra
