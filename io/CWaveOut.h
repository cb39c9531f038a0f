// CWaveOut: plays a stretch of mono 16-bit samples through wave-output
// device 0 and moves a one-pixel play cursor over a rectangle meanwhile.
//
// Calling order: SetProgress, Load, Play, Restart at once; Pause then Stop
// to end early. Load takes its own copy of the samples.
// - Streaming mode: two buffers of (rate × 2048) / 10000 samples (0.2048 s)
//   are written at Play; a time-critical worker refills the one the device
//   has finished (Refill) and steps the cursor (StepProgress). Slots past the
//   end are zero, and playback ends (pause, then stop) when the silent buffer
//   after the last samples has been played, so that exactly the requested
//   samples sound: nothing left over from earlier buffers, no tail cut off.
// - Single-buffer mode (short signals): the whole stretch goes to the device
//   as one buffer with no worker and no cursor. A stretch longer than the two
//   buffers together is played in streaming mode instead.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "document/SampleBlock.h"
#include "io/IWaveDisplay.h"
#include "io/WaveDevice.h"

namespace sonmetra {

class AutoResetEvent;

class CWaveOut {
public:
    static constexpr int kBufferCapacity = 32768;  // samples per playback buffer
    static constexpr int kClearCount = 2048;

    // (rate × 2048) / 10000, truncated, and never more than a buffer holds.
    static int bufferLengthForRate(unsigned rateHz);

    explicit CWaveOut(std::shared_ptr<IWaveDriver> driver = waveDriver());
    virtual ~CWaveOut();
    CWaveOut(const CWaveOut&) = delete;
    CWaveOut& operator=(const CWaveOut&) = delete;

    // Zeroes the first 2048 samples of each playback buffer.
    virtual void ClearBuffer();
    // Moves the play cursor on by one buffer (worker thread).
    virtual void StepProgress(void* unused);

    // Copies `count` samples from `firstSample` of `source` (limited to what
    // it holds) and fills the buffers. A running playback is stopped first.
    // After "error in memory" nothing is loaded.
    void Load(const SampleBlock& source, int firstSample, int count, unsigned rateHz, int singleBuffer,
              std::intptr_t callerValue);
    void SetProgress(IWaveDisplay* window, int enabled, int left, int top, int right, int bottom);
    // 0 on success, and also when there is no output device at all (after
    // "No Sound Output Device").
    MmResult Play();
    MmResult Pause();
    MmResult Restart();
    // Stops and closes; harmless when repeated, from either thread.
    MmResult Stop();

    unsigned sampleRate() const { return m_sampleRateHz; }
    int bufferLength() const { return m_bufferLength; }
    int total() const { return m_total; }
    bool singleBuffer() const { return m_singleBuffer != 0; }
    int buffersPlayed() const { return m_buffersPlayed.load(); }
    std::intptr_t callerValue() const { return m_callerValue; }
    // True from a successful Play until the device has been closed.
    bool isOpen() const;

protected:
    // Refills the buffer the device has just finished, or ends the playback.
    void Refill();
    std::int16_t* playBuffer(int index) { return m_playBuffers.data() + index * kBufferCapacity; }

private:
    void workerMain(std::shared_ptr<AutoResetEvent> event);
    void setUpHeader(int index, int samples);
    // Copies the next buffer length of samples from the position into
    // buffer `index`, zero past the total, and advances the position.
    void fillNextBuffer(int index);
    // Prepares and writes header `index` at Play; false after its message.
    bool writeAtPlay(int index, MmResult& result);
    std::shared_ptr<IWaveOutDevice> device() const;
    // Joins a worker that is not the calling thread.
    void joinWorker();

    // Written by the worker (Refill) or Load, read by the device thread while queued.
    std::array<std::int16_t, 2 * kBufferCapacity> m_playBuffers;
    WaveCaps m_caps;  // UI thread only
    mutable std::mutex m_deviceMutex;
    std::shared_ptr<IWaveOutDevice> m_device;  // guarded by m_deviceMutex; Play opens, Stop (either thread) closes
    std::array<WaveHeader, 2> m_headers;       // UI at Play, then worker (Refill)
    WaveFormat m_format;                       // UI thread only
    std::shared_ptr<AutoResetEvent> m_event;   // UI creates at Play and drops after joining; Stop sets it
    std::thread m_worker;                      // UI thread only
    std::atomic<std::thread::id> m_workerId;   // UI writes at Play, Stop reads on either thread
    std::atomic<int> m_stop{0};                // Stop writes (either thread), worker reads around each wait
    unsigned m_sampleRateHz = 11025;           // UI (Load)
    int m_bufferLength = 2048;                 // UI (Load), worker reads
    int m_currentLength = 0;                   // whoever sets up a header: UI at Play, then worker
    SampleBlock m_data;                        // UI (Load) writes; worker reads while playing
    int m_total = 0;                           // UI (Load), worker reads
    int m_position = 0;                        // UI (Load), then worker (Refill)
    int m_singleBuffer = 0;                    // UI thread only
    std::intptr_t m_callerValue = 0;           // UI thread only; kept for the caller
    std::shared_ptr<IWaveDriver> m_driver;     // UI thread only
    IWaveDisplay* m_window = nullptr;          // UI (SetProgress), worker draws through it
    int m_cursorEnabled = 0;                   // UI (SetProgress), worker reads
    WaveRect m_cursorRect;                     // UI (SetProgress), worker reads
    std::atomic<int> m_buffersPlayed{0};       // UI resets at Play, worker counts
    std::int16_t m_currentIndex = 0;           // UI at Play, then worker
};

}  // namespace sonmetra
