// Records through the null sink of a private PulseAudio daemon for a given
// time (60 s by default) at 44100 Hz and counts the capture buffers against
// the wall clock. A lost buffer shows as a shortfall and as a gap of about
// twice the buffer time between two arrivals.
//
//   sound_capture_loss_check [seconds]
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <numbers>
#include <thread>
#include <vector>

#include "document/SampleBlock.h"
#include "io/CWaveIn.h"
#include "io/CWaveOut.h"
#include "io/PortAudioWaveDevice.h"
#include "tests/io/PulseFixture.h"

namespace {

using Clock = std::chrono::steady_clock;

// Notes the arrival time of every buffer before the normal processing.
class TimedWaveIn : public sonmetra::CWaveIn {
public:
    using CWaveIn::CWaveIn;
    void ProcessBuffer(std::int16_t* samples) override {
        {
            std::lock_guard lock(m_mutex);
            m_arrivals.push_back(Clock::now());
        }
        CWaveIn::ProcessBuffer(samples);
    }
    std::vector<Clock::time_point> arrivals() {
        std::lock_guard lock(m_mutex);
        return m_arrivals;
    }

private:
    std::mutex m_mutex;
    std::vector<Clock::time_point> m_arrivals;
};

}  // namespace

int main(int argc, char** argv) {
    using namespace sonmetra;
    const double seconds = argc > 1 ? std::atof(argv[1]) : 60.0;
    constexpr unsigned kRateHz = 44100;

    test::PulseAudioDaemon daemon;
    std::string whyNot;
    if (!daemon.start(whyNot)) {
        std::fprintf(stderr, "PulseAudio cannot start: %s\n", whyNot.c_str());
        return 2;
    }
    std::shared_ptr<PortAudioWaveDriver> driver = PortAudioWaveDriver::create();

    // A tone plays into the sink throughout, so the monitor carries sound.
    SampleBlock tone;
    if (!tone.resize(static_cast<std::size_t>((seconds + 2.0) * kRateHz))) return 2;
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = static_cast<std::int16_t>(8000.0 * std::sin(2.0 * std::numbers::pi * 440.0 * i / kRateHz));
    CWaveOut out(driver);
    out.Load(tone, 0, static_cast<int>(tone.size()), kRateHz, 0, 0);

    SampleBlock recording;
    auto in = std::make_unique<TimedWaveIn>(driver);
    in->Init(&recording, kRateHz, 16, nullptr);
    if (in->OpenMic() != kWaveNoError || out.Play() != kWaveNoError) return 1;
    in->Start();
    out.Restart();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    in->Stop();
    in->Close();
    out.Pause();
    out.Stop();

    const auto arrivals = in->arrivals();
    if (arrivals.size() < 2) {
        std::printf("only %zu buffers arrived\n", arrivals.size());
        return 1;
    }
    const double bufferSeconds = in->bufferLength() / static_cast<double>(kRateHz);
    const double span = std::chrono::duration<double>(arrivals.back() - arrivals.front()).count();
    double longestGap = 0.0;
    for (std::size_t i = 1; i < arrivals.size(); ++i)
        longestGap = std::max(longestGap, std::chrono::duration<double>(arrivals[i] - arrivals[i - 1]).count());
    const double expectedIntervals = span / bufferSeconds;
    const long lost = std::lround(expectedIntervals) - static_cast<long>(arrivals.size() - 1);
    std::printf("recorded %.1f s at %u Hz: %d buffers of %d samples (%.4f s each)\n", seconds, kRateHz,
                in->buffersAppended(), in->bufferLength(), bufferSeconds);
    std::printf("first to last buffer: %.3f s = %.2f buffer times for %zu intervals\n", span, expectedIntervals,
                arrivals.size() - 1);
    std::printf("longest gap between buffers: %.3f s; device overflows: %llu\n", longestGap,
                static_cast<unsigned long long>(driver->inputOverflows()));
    std::printf("playback underflows meanwhile: %llu\n", static_cast<unsigned long long>(driver->outputUnderflows()));
    std::printf("lost buffers: %ld\n", lost);
    return lost == 0 && driver->inputOverflows() == 0 ? 0 : 1;
}
