// CWaveIn: records one mono 16-bit channel from wave-input device 0.
//
// Sequence: Init (block, rate, window) -> OpenMic (event, worker thread,
// device, two buffers queued, started) -> Start -> Stop -> Close (the
// destructor). Each capture buffer holds (rate × 4096) / 10000 samples,
// 0.4096 s. The device sets the event once on open and once per full buffer;
// the worker then re-queues that buffer first (AddBuffer) and only then
// corrects it (DC offset, gain, 16-bit wrap), appends it to the caller's
// recording block and draws its min/max column into the strip chart.
//
// While recording, the block holds buffersAppended() × bufferLength()
// samples. Close adds what the device had captured into a buffer that was
// still filling when the recording stopped, so after Close the block holds
// samplesRecorded() samples. The engine knows nothing of documents; its
// only product is that block.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

#include "io/IWaveDisplay.h"
#include "io/WaveDevice.h"

namespace sonmetra {

class AutoResetEvent;
class SampleBlock;

class CWaveIn {
public:
    static constexpr int kBufferCapacity = 65536;  // samples per capture buffer
    static constexpr int kClearCount = 4096;

    // Samples per capture buffer at a rate: (rate × 4096) / 10000, truncated,
    // and never more than a capture buffer holds.
    static int bufferLengthForRate(unsigned rateHz);

    explicit CWaveIn(std::shared_ptr<IWaveDriver> driver = waveDriver());
    virtual ~CWaveIn();
    CWaveIn(const CWaveIn&) = delete;
    CWaveIn& operator=(const CWaveIn&) = delete;

    // Zeroes the first 4096 samples of the current capture buffer.
    virtual int ClearBuffer();
    // Handles one full buffer on the worker thread (see the file comment).
    virtual void ProcessBuffer(std::int16_t* samples);

    // `block` is owned by the caller and must outlive the recording; the
    // window may be null (no strip chart). The four trailing values are
    // accepted for the caller's convenience and not used.
    void Init(SampleBlock* block, unsigned rateHz, int bitsPerSample, IWaveDisplay* window, std::int32_t = 0,
              std::int32_t = 0, std::int32_t = 0, std::int32_t = 0);
    void SetFormat(int channels, unsigned rateHz, int bitsPerSample);
    // 0 on success, and also when there is no input device at all (after
    // "No Sound Device"), so that the caller goes on with an empty recording.
    MmResult OpenMic();
    MmResult Start();
    MmResult Stop();
    // Ends the worker and closes the device. A repeated Close, with no
    // OpenMic since, returns at once.
    MmResult Close();

    // Correction applied to every sample; set before OpenMic.
    void SetDcOffset(std::int16_t offset) { m_dcOffset = offset; }
    void SetGain(double gain) { m_gain = gain; }

    unsigned sampleRate() const { return m_sampleRateHz; }
    int bufferLength() const { return m_bufferLength; }
    int buffersAppended() const { return m_buffersAppended.load(); }
    // Samples in the recording block: the whole buffers, then after Close
    // the part of the last buffer that was filled when recording stopped.
    std::size_t samplesRecorded() const {
        return static_cast<std::size_t>(m_buffersAppended.load()) * static_cast<std::size_t>(m_bufferLength) +
               m_partialSamples;
    }
    const WaveFormat& format() const { return m_format; }

protected:
    // Re-queues the current buffer at the device and toggles the current
    // index; a failure shows its message and throws UserException.
    void AddBuffer();
    std::int16_t* captureBuffer(int index) { return m_captureBuffers.data() + index * kBufferCapacity; }

private:
    void workerMain(std::shared_ptr<AutoResetEvent> event);
    // Sets up header `index` for capture buffer `index`.
    void setUpHeader(int index);
    // Prepares and queues buffer `index` at open; false after its message.
    bool queueBufferAtOpen(int index, MmResult& result);
    // At Close: appends, corrected, what the device captured into buffers
    // the worker did not process, so that a stop loses no sound.
    void appendUnprocessed();

    // Filled by the device thread while queued, corrected in place by the worker.
    std::array<std::int16_t, 2 * kBufferCapacity> m_captureBuffers;
    WaveCaps m_caps;  // UI thread only
    // Set by OpenMic and cleared by Close (UI thread); used by the worker's
    // AddBuffer in between, ordered by the device's lock and the event.
    std::unique_ptr<IWaveInDevice> m_device;
    std::array<WaveHeader, 2> m_headers;      // header i describes capture buffer i; UI at open, then worker
    WaveFormat m_format;                      // UI thread only
    std::int16_t m_dcOffset = 0;              // UI writes before OpenMic, worker reads
    double m_gain = 1.0;                      // UI writes before OpenMic, worker reads
    std::shared_ptr<AutoResetEvent> m_event;  // UI creates and closes; device sets; worker waits on its own copy
    std::thread m_worker;                     // UI thread only
    std::atomic<int> m_stop{0};               // UI writes (Close), worker reads around each wait
    unsigned m_sampleRateHz = 11025;          // UI at Init, worker reads
    int m_bufferLength = 4096;                // UI at Init, worker reads
    int m_currentLength = 0;                  // whoever sets up a header: UI at open, then worker
    int m_currentIndex = 0;                   // UI at open, then worker (AddBuffer)
    SampleBlock* m_block = nullptr;           // worker grows and fills it; caller reads after Close
    std::shared_ptr<IWaveDriver> m_driver;    // UI thread only
    IWaveDisplay* m_window = nullptr;         // UI at Init, worker draws through it
    WaveRect m_clientRect;                    // UI at Init, worker reads
    int m_column = 0;                         // worker only after Init
    std::atomic<int> m_buffersAppended{0};    // worker writes; UI reads (final after Close)
    bool m_openCalled = false;                // UI thread only: Close has something to end
    std::atomic<bool> m_workerFailed{false};  // worker sets it when it ends on a failure; Close reads it
    std::size_t m_partialSamples = 0;         // UI thread: set by Close once the worker has ended
};

}  // namespace sonmetra
