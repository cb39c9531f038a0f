// A wave driver without sound hardware: one input and one output device
// whose time is advanced either by the caller (Clock::Manual, for tests that
// step it buffer by buffer) or by a clock thread (Clock::RealTime, for the
// program and the demonstrations when SONMETRA_SOUND=simulated).
//
// The input device fills its queued buffers, in order, from a configurable
// signal; the output device keeps every sample it plays. Any call can be
// made to fail once with a chosen result, to exercise the engines' messages.
// It never touches PortAudio.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "io/WaveDevice.h"

namespace sonmetra {

class SimulatedWaveDriver : public IWaveDriver, public std::enable_shared_from_this<SimulatedWaveDriver> {
public:
    enum class Clock { Manual, RealTime };
    // Calls that can be made to fail.
    enum class Op {
        InputCaps,
        InputOpen,
        InputPrepare,
        InputPrepareFlags,
        InputUnprepare,
        InputAdd,
        InputStart,
        OutputCaps,
        OutputOpen,
        OutputPrepare,
        OutputPrepareFlags,
        OutputUnprepare,
        OutputWrite
    };
    // The sample at frame n (counted from the first frame the device ever delivered).
    using Signal = std::function<std::int16_t(std::uint64_t frame, unsigned rateHz)>;

    static std::shared_ptr<SimulatedWaveDriver> create(Clock clock = Clock::Manual, double speed = 1.0);
    ~SimulatedWaveDriver() override;

    // Configuration.
    void setDeviceCounts(unsigned inputs, unsigned outputs);
    void setInputSignal(Signal signal);
    static Signal sine(double frequencyHz, double amplitude);
    static Signal constant(std::int16_t value);
    // When off, completed buffers no longer set the event (the open signal
    // still comes): a benchmark then drives the engine's steps itself.
    void setCompletionSignals(bool on);
    // The (skip + 1)-th next call of `op` fails with `result`; for the
    // *PrepareFlags operations the prepare returns 0 but leaves the header
    // not marked prepared.
    void failNext(Op op, MmResult result = kWaveError, int skip = 0);

    // Manual stepping. Each completed buffer sets the device's event.
    // Signals are not counted, so the two complete...Buffer steps first wait
    // (up to 5 s) until the previous signal has been taken, as the time a
    // real buffer takes would ensure; feedInput and playOutput do not.
    // Fills the head input buffer completely; false when the device is not
    // open and started or no buffer is queued.
    bool completeInputBuffer();
    // Delivers `frames` frames into the queue, completing buffers as they
    // fill; returns how many were completed.
    int feedInput(std::size_t frames);
    // Plays the head output buffer completely; false when none is queued or
    // the device is paused.
    bool completeOutputBuffer();
    int playOutput(std::size_t frames);

    // Observation.
    bool inputOpen() const;
    bool inputStarted() const;
    bool outputOpen() const;
    bool outputPaused() const;
    int queuedInputBuffers() const;
    int queuedOutputBuffers() const;
    std::vector<std::int16_t> played() const;
    std::vector<std::uint32_t> writtenBytes() const;  // length of every buffer written, in order
    WaveFormat lastInputFormat() const;
    WaveFormat lastOutputFormat() const;
    bool outputHasEvent() const;
    // Waits until `predicate` (called under the driver's lock, after every
    // change) holds; false on time-out.
    bool waitUntil(const std::function<bool()>& predicate, std::chrono::milliseconds timeout);

    // IWaveDriver.
    unsigned inputDeviceCount() override;
    unsigned outputDeviceCount() override;
    MmResult inputCaps(unsigned deviceId, WaveCaps& caps) override;
    MmResult outputCaps(unsigned deviceId, WaveCaps& caps) override;
    MmResult openInput(unsigned deviceId, const WaveFormat& format, std::shared_ptr<AutoResetEvent> event,
                       std::unique_ptr<IWaveInDevice>& device) override;
    MmResult openOutput(unsigned deviceId, const WaveFormat& format, std::shared_ptr<AutoResetEvent> event,
                        std::unique_ptr<IWaveOutDevice>& device) override;

private:
    friend class SimulatedWaveIn;
    friend class SimulatedWaveOut;
    struct Failure {
        Op op;
        MmResult result;
        int skip;
    };
    struct Port {
        bool open = false;
        int generation = 0;    // a handle of an older generation is closed
        bool running = false;  // input: started; output: not paused
        std::deque<WaveHeader*> queue;
        std::size_t headOffsetBytes = 0;
        WaveFormat format;
        std::shared_ptr<AutoResetEvent> event;
    };

    static constexpr std::size_t kMaxPlayed = std::size_t{1} << 24;

    explicit SimulatedWaveDriver(double speed);
    // Returns the injected failure for `op`, or 0. Caller holds m_mutex.
    MmResult takeFailure(Op op);
    int feedInputLocked(std::size_t frames);
    // Waits until the event of `port` holds no signal; returns with the lock held.
    void waitForSignalTaken(std::unique_lock<std::mutex>& lock, const Port& port);
    int playOutputLocked(std::size_t frames);
    void changedLocked() { m_changed.notify_all(); }
    void clockMain();

    // Device operations for the handles: under m_mutex, refused for a
    // closed handle, failing first when a failure of `op` is pending.
    MmResult inputCall(int generation, std::optional<Op> op, const std::function<MmResult(Port&)>& action);
    MmResult outputCall(int generation, std::optional<Op> op, const std::function<MmResult(Port&)>& action);
    // Marks every queued header done (the head with what it holds).
    static void returnAll(Port& port);
    static void closePort(Port& port);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_inputs = 1;                      // guarded by m_mutex
    unsigned m_outputs = 1;                     // guarded by m_mutex
    Signal m_signal;                            // guarded by m_mutex
    std::uint64_t m_inputFrame = 0;             // guarded by m_mutex
    std::vector<Failure> m_failures;            // guarded by m_mutex
    Port m_in;                                  // guarded by m_mutex; headers in its queue belong to the device
    Port m_out;                                 // guarded by m_mutex; headers in its queue belong to the device
    std::vector<std::int16_t> m_played;         // guarded by m_mutex; at most kMaxPlayed samples
    std::vector<std::uint32_t> m_writtenBytes;  // guarded by m_mutex
    const double m_speed;
    bool m_clockStop = false;         // guarded by m_mutex
    bool m_completionSignals = true;  // guarded by m_mutex
    std::thread m_clockThread;        // started by create(), joined by the destructor
};

}  // namespace sonmetra
