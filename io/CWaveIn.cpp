#include "CWaveIn.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "document/MessageService.h"
#include "document/SampleBlock.h"
#include "document/UserException.h"
#include "io/AutoResetEvent.h"
#include "io/SoundMath.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

// Time Close gives the worker to see the stop flag before the device goes.
constexpr std::chrono::milliseconds kCloseSleep{500};

[[noreturn]] void failOnWorker(int stringId) {
    showMessage(stringId);
    throw UserException();
}

}  // namespace

int CWaveIn::bufferLengthForRate(unsigned rateHz) {
    const auto length = static_cast<std::uint64_t>(rateHz) * 4096u / 10000u;
    return static_cast<int>(std::min<std::uint64_t>(length, kBufferCapacity));
}

CWaveIn::CWaveIn(std::shared_ptr<IWaveDriver> driver) : m_driver(std::move(driver)) {}

CWaveIn::~CWaveIn() { Close(); }

int CWaveIn::ClearBuffer() {
    std::fill_n(captureBuffer(m_currentIndex), kClearCount, std::int16_t{0});
    return kClearCount;
}

void CWaveIn::Init(SampleBlock* block, unsigned rateHz, int bitsPerSample, IWaveDisplay* window, std::int32_t,
                   std::int32_t, std::int32_t, std::int32_t) {
    m_block = block;
    m_window = window;
    m_sampleRateHz = rateHz;
    m_column = 0;
    m_buffersAppended = 0;
    m_partialSamples = 0;
    m_currentIndex = 0;
    m_bufferLength = bufferLengthForRate(rateHz);
    SetFormat(1, rateHz, bitsPerSample);
    m_clientRect = window ? window->clientRect() : WaveRect{};
}

void CWaveIn::SetFormat(int channels, unsigned rateHz, int bitsPerSample) {
    m_format.formatTag = kWaveFormatPcm;
    m_format.channels = static_cast<std::uint16_t>(channels);
    m_format.samplesPerSec = rateHz;
    m_format.bitsPerSample = static_cast<std::uint16_t>(bitsPerSample);
    m_format.blockAlign = static_cast<std::uint16_t>(channels * bitsPerSample / 8);
    m_format.avgBytesPerSec = static_cast<std::uint32_t>(static_cast<std::uint64_t>(channels) *
                                                         static_cast<std::uint64_t>(bitsPerSample) * rateHz / 8);
    m_format.extraSize = 0;
}

void CWaveIn::setUpHeader(int index) {
    m_currentLength = m_bufferLength;
    WaveHeader& header = m_headers[static_cast<std::size_t>(index)];
    header.data = captureBuffer(index);
    header.bufferLengthBytes = static_cast<std::uint32_t>(2 * m_bufferLength);
    header.bytesRecorded = 0;
    header.flags = 0;
}

bool CWaveIn::queueBufferAtOpen(int index, MmResult& result) {
    setUpHeader(index);
    WaveHeader& header = m_headers[static_cast<std::size_t>(index)];
    result = m_device->prepareHeader(header);
    // A header the device did not mark exactly "prepared" is refused too;
    // then the result is the prepare's own, which may be 0.
    if (result != kWaveNoError || header.flags != kHeaderPrepared) {
        showMessage(IDS_WAVEIN_PREPARE_OPEN_FAILED);
        return false;
    }
    result = m_device->addBuffer(header);
    if (result != kWaveNoError) {
        showMessage(IDS_WAVEIN_ADD_OPEN_FAILED);
        return false;
    }
    return true;
}

MmResult CWaveIn::OpenMic() {
    // A second open of the same engine first ends the first one.
    if (m_worker.joinable() || m_device) Close();
    m_openCalled = true;

    if (m_driver == nullptr || m_driver->inputDeviceCount() == 0) {
        showMessage(IDS_NO_SOUND_DEVICE);
        return kWaveNoError;
    }
    if (m_driver->inputCaps(0, m_caps) != kWaveNoError) showMessage(IDS_WAVEIN_CAPS_FAILED);

    m_event = std::make_shared<AutoResetEvent>("WaveInThreadEvent");
    m_stop = 0;
    m_workerFailed = false;
    m_worker = std::thread(&CWaveIn::workerMain, this, m_event);

    SetFormat(1, m_sampleRateHz, 16);
    const MmResult opened = m_driver->openInput(0, m_format, m_event, m_device);
    if (opened != kWaveNoError) {
        m_device.reset();
        showMessage(IDS_WAVEIN_OPEN_FAILED);
        return opened;
    }
    for (int index = 0; index < 2; ++index) {
        MmResult queued = kWaveNoError;
        if (!queueBufferAtOpen(index, queued)) return queued;
    }
    const MmResult started = m_device->start();
    if (started != kWaveNoError) {
        showMessage(IDS_WAVEIN_START_OPEN_FAILED);
        return started;
    }
    return kWaveNoError;
}

MmResult CWaveIn::Start() { return m_device ? m_device->start() : kWaveInvalidHandle; }

MmResult CWaveIn::Stop() {
    if (!m_device) return kWaveInvalidHandle;
    m_device->stop();
    return m_device->reset();
}

MmResult CWaveIn::Close() {
    // Nothing opened since the last Close: nothing to wait for.
    if (!m_openCalled) return kWaveNoError;
    m_openCalled = false;
    m_stop = 1;
    if (m_event) {
        m_event->reset();
        // Closing makes the worker's wait fail, so its exit is certain.
        m_event->close();
    }
    // The worker touches the block and the device; both stay valid until it
    // has ended, so that the caller may read the block as soon as we return.
    if (m_worker.joinable()) m_worker.join();
    m_event.reset();
    std::this_thread::sleep_for(kCloseSleep);
    MmResult closed = kWaveNoError;
    if (m_device) {
        m_device->reset();
        m_device->stop();
        appendUnprocessed();
        closed = m_device->close();
        m_device.reset();
    }
    return closed;
}

void CWaveIn::appendUnprocessed() {
    // The worker has ended and the device has handed every buffer back. The
    // current buffer is the one the worker would have taken next; if it holds
    // sound (the buffer still filling at the stop, or a full one whose signal
    // came after the stop flag), it follows the block, and only after a full
    // one can the other buffer hold sound as well. After a failed re-queue
    // the headers no longer say which buffer came first: the block stays as
    // the worker left it.
    if (m_workerFailed) return;
    for (int k = 0; k < 2; ++k) {
        const int index = (m_currentIndex + k) % 2;
        const WaveHeader& header = m_headers[static_cast<std::size_t>(index)];
        if ((header.flags & kHeaderDone) == 0 || header.bytesRecorded < 2) return;
        const std::size_t filled = std::min<std::size_t>(header.bytesRecorded / 2, m_currentLength);
        const std::size_t at = samplesRecorded();
        if (m_block == nullptr || !m_block->resize(at + filled)) return;
        std::int16_t* samples = captureBuffer(index);
        std::int16_t* destination = m_block->data() + at;
        for (std::size_t i = 0; i < filled; ++i) destination[i] = correctSample(samples[i], m_dcOffset, m_gain);
        if (filled < static_cast<std::size_t>(m_bufferLength)) {
            m_partialSamples += filled;
            return;
        }
        m_buffersAppended = m_buffersAppended + 1;
    }
}

void CWaveIn::workerMain(std::shared_ptr<AutoResetEvent> event) {
    try {
        event->wait();  // the signal given when the device opened
        while (m_stop == 0) {
            if (!event->wait() || m_stop != 0) break;
            const int full = m_currentIndex;
            AddBuffer();
            ProcessBuffer(captureBuffer(full));
        }
    } catch (...) {
        // A failure has been reported; the recording ends here and the
        // device stays open until Close.
        m_workerFailed = true;
    }
}

void CWaveIn::AddBuffer() {
    if (!m_device) return;
    WaveHeader& header = m_headers[static_cast<std::size_t>(m_currentIndex)];
    if (m_device->unprepareHeader(header) != kWaveNoError) failOnWorker(IDS_WAVEIN_UNPREPARE_FAILED);
    setUpHeader(m_currentIndex);
    if (m_device->prepareHeader(header) != kWaveNoError || header.flags != kHeaderPrepared)
        failOnWorker(IDS_WAVEIN_PREPARE_FAILED);
    if (m_device->addBuffer(header) != kWaveNoError) failOnWorker(IDS_WAVEIN_ADD_FAILED);
    if (m_device->start() != kWaveNoError) failOnWorker(IDS_WAVEIN_START_FAILED);
    m_currentIndex = 1 - m_currentIndex;
}

void CWaveIn::ProcessBuffer(std::int16_t* samples) {
    const int appended = m_buffersAppended + 1;
    const auto length = static_cast<std::size_t>(m_bufferLength);
    if (m_block == nullptr || !m_block->resize(static_cast<std::size_t>(appended) * length)) {
        // Nothing was added, so the count still describes the block.
        throw UserException();
    }
    m_buffersAppended = appended;

    std::int16_t* destination = m_block->data() + static_cast<std::size_t>(appended - 1) * length;
    for (std::size_t i = 0; i < length; ++i) {
        const std::int16_t corrected = correctSample(samples[i], m_dcOffset, m_gain);
        samples[i] = corrected;
        destination[i] = corrected;
    }

    if (m_window == nullptr) return;
    const int height = m_clientRect.bottom - m_clientRect.top;
    const double scale = height * 1.52587890625e-5;
    const int middle = height / 2;
    int maxY = -999999;
    int minY = 1000000;
    for (std::size_t i = 0; i < length; ++i) {
        const int y = static_cast<int>(samples[i] * scale);
        maxY = std::max(maxY, y);
        minY = std::min(minY, y);
        // Every column is at least two pixels tall, even over silence.
        if (maxY == minY) {
            minY -= 1;
            maxY += 1;
        }
    }
    m_window->drawCaptureColumn(m_column, middle, middle - maxY, middle - minY);
    if (m_column >= m_clientRect.right) m_column = 0;
    m_column += 1;
}

}  // namespace sonmetra
