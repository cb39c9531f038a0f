// End to end through real sound software: CWaveOut plays into a null sink of
// a private PulseAudio daemon while CWaveIn records the sink's monitor, both
// through PortAudio and ALSA's pulse plugin. Sink, playback and recording
// share one rate, so what was played comes back sample for sample.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <numbers>
#include <thread>
#include <vector>

#include "document/MessageService.h"
#include "document/SampleBlock.h"
#include "io/AutoResetEvent.h"
#include "io/CWaveIn.h"
#include "io/CWaveOut.h"
#include "io/PortAudioWaveDevice.h"
#include "tests/io/PulseFixture.h"
#include "tests/io/ToneAnalysis.h"

namespace sonmetra {
namespace {

using namespace std::chrono_literals;
constexpr unsigned kRateHz = 44100;

SampleBlock tone(double frequencyHz, double seconds) {
    SampleBlock block;
    EXPECT_TRUE(block.resize(static_cast<std::size_t>(seconds * kRateHz)));
    for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<std::int16_t>(12000.0 * std::sin(2.0 * std::numbers::pi * frequencyHz * i / kRateHz));
    return block;
}

class Loopback : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_driver = PortAudioWaveDriver::create();
        warmUp();
    }
    // A fresh daemon takes a second or two to deliver the first sound of
    // its monitor; one short capture through the device layer gets that
    // out of the way, so that the tests measure the engines only.
    static void warmUp() {
        auto event = std::make_shared<AutoResetEvent>();
        std::unique_ptr<IWaveInDevice> device;
        const WaveFormat format{kWaveFormatPcm, 1, kRateHz, 2 * kRateHz, 2, 16, 0};
        if (s_driver->inputDeviceCount() == 0 || s_driver->openInput(0, format, event, device) != kWaveNoError) return;
        std::vector<std::int16_t> samples(4410);
        WaveHeader header;
        header.data = samples.data();
        header.bufferLengthBytes = static_cast<std::uint32_t>(2 * samples.size());
        device->prepareHeader(header);
        device->addBuffer(header);
        device->start();
        event->wait();  // the open signal
        event->waitFor(10s);
        device->reset();
        device->close();
    }
    static void TearDownTestSuite() { s_driver.reset(); }
    void SetUp() override {
        ASSERT_TRUE(s_driver->initialised());
        ASSERT_EQ(s_driver->inputDeviceCount(), 1u) << "no default input through the pulse plugin";
        ASSERT_EQ(s_driver->outputDeviceCount(), 1u) << "no default output through the pulse plugin";
    }
    std::shared_ptr<IWaveDriver> driver() { return s_driver; }

    // Records while `out` plays: until a streamed playback has ended by
    // itself (at most `playTime`), or for `playTime` in single-buffer mode.
    void recordWhilePlaying(CWaveIn& in, CWaveOut& out, std::chrono::milliseconds playTime) {
        ASSERT_EQ(in.OpenMic(), kWaveNoError);
        ASSERT_EQ(in.Start(), kWaveNoError);
        // A new capture stream takes a while to deliver; playing starts
        // only once sound flows, so that the recording holds all of it.
        const auto flowing = std::chrono::steady_clock::now() + 10s;
        while (in.buffersAppended() < 1 && std::chrono::steady_clock::now() < flowing)
            std::this_thread::sleep_for(10ms);
        ASSERT_GE(in.buffersAppended(), 1) << "the capture delivered nothing";
        ASSERT_EQ(out.Play(), kWaveNoError);
        ASSERT_EQ(out.Restart(), kWaveNoError);
        const auto deadline = std::chrono::steady_clock::now() + playTime;
        while (std::chrono::steady_clock::now() < deadline && (out.singleBuffer() || out.isOpen()))
            std::this_thread::sleep_for(20ms);
        out.Pause();
        out.Stop();
        std::this_thread::sleep_for(500ms);
        in.Stop();
        in.Close();
    }

    static inline std::shared_ptr<PortAudioWaveDriver> s_driver;
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
};

// The loudest whole capture buffer of a recording, which must hold the tone.
void expectTone(const SampleBlock& recording, int bufferLength, double frequencyHz) {
    const std::size_t buffers = recording.size() / static_cast<std::size_t>(bufferLength);
    std::size_t loudest = 0;
    double loudestRms = 0.0;
    for (std::size_t b = 0; b < buffers; ++b) {
        const double level = test::rms(recording.data() + b * bufferLength, static_cast<std::size_t>(bufferLength));
        if (level > loudestRms) {
            loudestRms = level;
            loudest = b;
        }
    }
    ASSERT_GT(loudestRms, 1000.0) << "the tone did not reach the recording";
    const auto peak =
        test::strongestPeak(recording.data() + loudest * bufferLength, static_cast<std::size_t>(bufferLength), kRateHz);
    EXPECT_LE(std::fabs(peak.frequencyHz - frequencyHz), peak.binWidthHz)
        << "peak at " << peak.frequencyHz << " Hz, bin " << peak.binWidthHz << " Hz";
}

// A signal with no zero sample, so that its first sample marks where it
// begins in a recording of otherwise silent monitor sound.
SampleBlock noise(std::size_t count) {
    SampleBlock block;
    EXPECT_TRUE(block.resize(count));
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        const auto v = static_cast<std::int16_t>(static_cast<std::int32_t>(state >> 16) % 24000 - 12000);
        block[i] = v == 0 ? std::int16_t{1} : v;
    }
    return block;
}

// The recording holds silence, then exactly source[first, first + count),
// then silence to its end.
void expectExactly(const SampleBlock& recording, const SampleBlock& source, int first, int count) {
    std::size_t onset = 0;
    while (onset < recording.size() && recording[onset] == 0) ++onset;
    ASSERT_LT(onset, recording.size()) << "nothing was recorded";
    ASSERT_GE(recording.size() - onset, static_cast<std::size_t>(count)) << "the recording ends before the playback";
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(recording[onset + i], source[first + i]) << "sample " << i << " of " << count;
    for (std::size_t i = onset + count; i < recording.size(); ++i)
        ASSERT_EQ(recording[i], 0) << "played " << i - onset - count << " samples past the request";
}

// Streamed stretches shorter than a buffer, between one and two, an exact
// multiple of the buffer length and a long one, each recorded through the
// sink's monitor and compared sample by sample.
TEST_F(Loopback, StreamedPlaybackSoundsExactlyTheRequestedSamples) {
    const SampleBlock source = noise(3 * kRateHz);
    const int length = CWaveOut::bufferLengthForRate(kRateHz);
    const std::pair<int, int> stretches[] = {
        {1000, kRateHz / 8}, {5000, 3 * kRateHz / 10}, {20000, 2 * length}, {0, 2 * kRateHz}};
    for (const auto& [first, count] : stretches) {
        SCOPED_TRACE(count);
        SampleBlock recording;
        CWaveIn in(driver());
        in.Init(&recording, kRateHz, 16, nullptr);
        CWaveOut out(driver());
        out.Load(source, first, count, kRateHz, 0, 0);
        recordWhilePlaying(in, out, 8s);
        EXPECT_TRUE(m_messages.texts().empty()) << m_messages.lastText();
        EXPECT_EQ(recording.size(), in.samplesRecorded());
        expectExactly(recording, source, first, count);
    }
}

TEST_F(Loopback, ShortToneGoesOutAsOneBuffer) {
    const SampleBlock source = tone(660.0, 0.9);
    SampleBlock recording;
    CWaveIn in(driver());
    in.Init(&recording, kRateHz, 16, nullptr);
    CWaveOut out(driver());
    out.Load(source, 0, static_cast<int>(source.size()), kRateHz, 1, 0);
    ASSERT_TRUE(out.singleBuffer());
    recordWhilePlaying(in, out, 2500ms);

    EXPECT_TRUE(m_messages.texts().empty()) << m_messages.lastText();
    EXPECT_EQ(recording.size(), in.samplesRecorded());
    expectTone(recording, in.bufferLength(), 660.0);

    // The same as noise: exactly the samples asked for.
    const SampleBlock exact = noise(kRateHz);
    SampleBlock second;
    CWaveIn in2(driver());
    in2.Init(&second, kRateHz, 16, nullptr);
    CWaveOut out2(driver());
    out2.Load(exact, 100, 30000, kRateHz, 1, 0);
    recordWhilePlaying(in2, out2, 2000ms);
    expectExactly(second, exact, 100, 30000);
}

}  // namespace
}  // namespace sonmetra

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // The daemon first: PortAudio reads the environment when it starts.
    sonmetra::test::PulseAudioDaemon daemon;
    if (!daemon.startOrExplain()) return sonmetra::test::kNoPulseAudioExitCode;
    return RUN_ALL_TESTS();
}
