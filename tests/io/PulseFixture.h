// A PulseAudio daemon of the test's own, with one null sink, made the sound
// server of this process and ALSA's default device (through the pulse
// plugin), so that PortAudio's default input records the sink's monitor
// and its default output plays into the sink. No sound card is needed.
#pragma once

#include <sys/types.h>

#include <string>

namespace sonmetra::test {

// The exit code of a test program that cannot run for want of PulseAudio;
// ctest reports it as "Skipped" (SKIP_RETURN_CODE), never as "Passed".
inline constexpr int kNoPulseAudioExitCode = 77;

class PulseAudioDaemon {
public:
    PulseAudioDaemon() = default;
    ~PulseAudioDaemon() { stop(); }
    PulseAudioDaemon(const PulseAudioDaemon&) = delete;
    PulseAudioDaemon& operator=(const PulseAudioDaemon&) = delete;

    // Starts the daemon and sets the environment (HOME, PULSE_SERVER,
    // PULSE_SINK, PULSE_SOURCE, ...). Call before PortAudio is initialised.
    // On failure `whyNot` says what went wrong.
    bool start(std::string& whyNot);
    void stop();
    const std::string& directory() const { return m_directory; }
    // For a test program's main: starts the daemon, or says why it cannot
    // and returns false (the program then exits with kNoPulseAudioExitCode).
    bool startOrExplain();

private:
    pid_t m_pid = -1;
    std::string m_directory;
};

}  // namespace sonmetra::test
