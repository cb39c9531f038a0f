// CWaveOut on the simulated device: the device plays only when the test says.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <numeric>

#include "document/MessageService.h"
#include "document/SampleBlock.h"
#include "io/CWaveOut.h"
#include "io/SimulatedWaveDevice.h"
#include "tests/io/RecordingDisplay.h"

namespace sonmetra {
namespace {

using namespace std::chrono_literals;
using Op = SimulatedWaveDriver::Op;
using test::RecordingDisplay;

constexpr int kLength8000 = 1638;  // buffer length at 8000 Hz

SampleBlock ramp(std::size_t count, int start = 1) {
    SampleBlock block;
    EXPECT_TRUE(block.resize(count));
    std::iota(block.begin(), block.end(), static_cast<std::int16_t>(start));
    return block;
}

class WaveOutTest : public ::testing::Test {
protected:
    // Plays buffer after buffer until the engine closes the device itself.
    void playToTheEnd() {
        for (int guard = 0; guard < 1000 && m_sim->outputOpen(); ++guard) {
            const std::size_t written = m_sim->writtenBytes().size();
            if (!m_sim->completeOutputBuffer()) break;
            ASSERT_TRUE(
                m_sim->waitUntil([&] { return !m_sim->outputOpen() || m_sim->writtenBytes().size() > written; }, 5s));
        }
        ASSERT_TRUE(m_sim->waitUntil([&] { return !m_sim->outputOpen(); }, 5s));
    }

    std::shared_ptr<SimulatedWaveDriver> m_sim = SimulatedWaveDriver::create();
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
};

TEST(WaveOutArithmetic, BufferLengthIsTwoTenthsOfASecondOfTheRate) {
    EXPECT_EQ(CWaveOut::bufferLengthForRate(8000), 1638);
    EXPECT_EQ(CWaveOut::bufferLengthForRate(11025), 2257);
    EXPECT_EQ(CWaveOut::bufferLengthForRate(22050), 4515);
    EXPECT_EQ(CWaveOut::bufferLengthForRate(44100), 9031);
    EXPECT_EQ(CWaveOut::bufferLengthForRate(192000), CWaveOut::kBufferCapacity);
}

// Whatever the length, the device gets the requested samples and nothing
// but silence after them: no stale samples from an earlier playback in the
// last buffer, no lost tail, and the end comes only once the buffer after
// the last requested sample has been played.
TEST_F(WaveOutTest, PlaysExactlyTheRequestedSamplesThenSilence) {
    CWaveOut engine(m_sim);
    // A first playback leaves its samples in both playback buffers.
    const SampleBlock earlier = ramp(3 * kLength8000, -20000);
    engine.Load(earlier, 0, static_cast<int>(earlier.size()), 8000, 0, 0);
    ASSERT_EQ(engine.Play(), kWaveNoError);
    playToTheEnd();

    const int totals[] = {
        1000, kLength8000 - 1, kLength8000, kLength8000 + 1, 2 * kLength8000, 2 * kLength8000 + kLength8000 / 2, 16000};
    for (const int total : totals) {
        const SampleBlock source = ramp(static_cast<std::size_t>(total) + 7, 1);
        const std::size_t before = m_sim->played().size();
        engine.Load(source, 7, total, 8000, 0, 0);
        ASSERT_EQ(engine.Play(), kWaveNoError);
        ASSERT_EQ(engine.Restart(), kWaveNoError);
        playToTheEnd();
        const auto all = m_sim->played();
        const std::vector<std::int16_t> played(all.begin() + static_cast<std::ptrdiff_t>(before), all.end());
        ASSERT_GE(played.size(), static_cast<std::size_t>(total)) << "tail lost at total " << total;
        for (int i = 0; i < total; ++i) ASSERT_EQ(played[i], source[i + 7]) << "total " << total << ", sample " << i;
        for (std::size_t i = total; i < played.size(); ++i) ASSERT_EQ(played[i], 0) << "total " << total << ", " << i;
        // At most the rest of the last buffer and one buffer of silence.
        EXPECT_LE(played.size(), static_cast<std::size_t>(total) + 2u * kLength8000) << total;
        EXPECT_FALSE(engine.isOpen()) << "the engine closes the device itself at the end";
    }
    EXPECT_TRUE(m_messages.texts().empty());
    EXPECT_EQ(engine.Stop(), kWaveNoError);  // a second Stop is harmless
}

// The engine plays its own copy, and the end is found at a buffer's
// completion even when the device has already run into the next one.
TEST_F(WaveOutTest, PlaysItsOwnCopyAndEndsOnlyAfterTheLastSamplesSounded) {
    const int total = 2 * kLength8000;
    SampleBlock source = ramp(static_cast<std::size_t>(total));
    CWaveOut engine(m_sim);
    engine.Load(source, 0, total, 8000, 0, 0);
    source[0] = -1;
    ASSERT_EQ(engine.Play(), kWaveNoError);
    engine.Restart();
    ASSERT_TRUE(m_sim->completeOutputBuffer());
    ASSERT_TRUE(m_sim->waitUntil([&] { return m_sim->writtenBytes().size() == 3; }, 5s));
    // Buffer 1 and half of the refilled buffer 0 in one step: buffer 1 held
    // the last samples, so playback goes on through the silent refill.
    m_sim->playOutput(kLength8000 + kLength8000 / 2);
    ASSERT_TRUE(m_sim->waitUntil([&] { return m_sim->writtenBytes().size() == 4; }, 5s));
    EXPECT_TRUE(engine.isOpen());
    playToTheEnd();
    const auto played = m_sim->played();
    ASSERT_GE(played.size(), 3u * kLength8000);
    EXPECT_EQ(played[0], 1);
    for (int i = 1; i < total; ++i) ASSERT_EQ(played[i], static_cast<std::int16_t>(i + 1)) << i;
    for (std::size_t i = total; i < played.size(); ++i) ASSERT_EQ(played[i], 0) << i;
}

TEST_F(WaveOutTest, TheCursorStepsAcrossAndIsErasedAtTheEnd) {
    const int total = 2 * kLength8000 + kLength8000 / 2;  // 2.5 blocks: step = 200 / 2.5 = 80 pixels
    SampleBlock source = ramp(static_cast<std::size_t>(total));
    RecordingDisplay display;
    CWaveOut engine(m_sim);
    engine.SetProgress(&display, 1, 20, 10, 220, 60);
    engine.Load(source, 0, total, 8000, 0, 0);
    ASSERT_EQ(engine.Play(), kWaveNoError);
    playToTheEnd();
    engine.Stop();

    // The steps after the cursor has been erased (the silence that follows
    // the last samples) draw nothing.
    auto strip = [](int x) { return WaveRect{x, 10, x + 1, 110}; };
    const std::vector<WaveRect> expected = {strip(100), strip(100), strip(180), strip(180), strip(260), strip(260)};
    EXPECT_EQ(display.inversions(), expected);
    EXPECT_TRUE(display.visible().empty());
    EXPECT_GE(engine.buffersPlayed(), 3);
}

TEST_F(WaveOutTest, ATotalOfZeroWritesTwoSilentBuffersAndStopsAtTheFirstRefill) {
    RecordingDisplay display;
    CWaveOut engine(m_sim);
    engine.SetProgress(&display, 1, 0, 0, 100, 10);
    engine.Load(SampleBlock{}, 0, 0, 8000, 0, 0);
    ASSERT_EQ(engine.Play(), kWaveNoError);
    EXPECT_EQ(m_sim->writtenBytes(), (std::vector<std::uint32_t>(2, 2 * kLength8000)));
    playToTheEnd();
    engine.Stop();
    EXPECT_EQ(m_sim->writtenBytes().size(), 2u);
    for (const std::int16_t s : m_sim->played()) ASSERT_EQ(s, 0);
    // Zero blocks make the step infinite: every cursor lies past the play area.
    EXPECT_FALSE(display.inversions().empty());
    for (const WaveRect& r : display.inversions()) EXPECT_GT(r.left, 100);
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(WaveOutTest, SingleBufferModeWritesTheWholeStretchOnceWithoutAWorker) {
    SampleBlock source = ramp(5000, -2500);
    RecordingDisplay display;
    CWaveOut engine(m_sim);
    engine.SetProgress(&display, 1, 0, 0, 100, 10);
    engine.Load(source, 1000, 3000, 8000, 1, 77);
    EXPECT_EQ(engine.callerValue(), 77);
    ASSERT_EQ(engine.Play(), kWaveNoError);
    EXPECT_FALSE(m_sim->outputHasEvent());
    EXPECT_EQ(m_sim->writtenBytes(), std::vector<std::uint32_t>{6000});
    ASSERT_TRUE(m_sim->completeOutputBuffer());
    const auto played = m_sim->played();
    ASSERT_EQ(played.size(), 3000u);
    EXPECT_EQ(played.front(), source[1000]);
    EXPECT_EQ(played.back(), source[3999]);
    engine.Stop();
    EXPECT_FALSE(m_sim->outputOpen());
    EXPECT_TRUE(display.inversions().empty());

    // More than the two buffers hold is streamed instead.
    SampleBlock longer = ramp(70000);
    engine.Load(longer, 0, 70000, 8000, 1, 0);
    EXPECT_FALSE(engine.singleBuffer());
    ASSERT_EQ(engine.Play(), kWaveNoError);
    EXPECT_EQ(m_sim->writtenBytes().back(), 2u * kLength8000);
}

TEST_F(WaveOutTest, LoadKeepsTheRangeInsideTheSource) {
    SampleBlock source = ramp(100);
    CWaveOut engine(m_sim);
    engine.Load(source, 90, 50, 8000, 1, 0);
    EXPECT_EQ(engine.total(), 10);
    engine.Load(source, -5, 20, 8000, 1, 0);
    EXPECT_EQ(engine.total(), 20);
    ASSERT_EQ(engine.Play(), kWaveNoError);
    ASSERT_TRUE(m_sim->completeOutputBuffer());
    EXPECT_EQ(m_sim->played().front(), source[0]);
}

TEST_F(WaveOutTest, NoOutputDeviceReportsAndReturnsSuccess) {
    m_sim->setDeviceCounts(1, 0);
    CWaveOut engine(m_sim);
    engine.Load(ramp(10), 0, 10, 8000, 1, 0);
    EXPECT_EQ(engine.Play(), kWaveNoError);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"No Sound Output Device"});
    EXPECT_NE(engine.Pause(), kWaveNoError);
    EXPECT_EQ(engine.Stop(), kWaveNoError);
}

TEST_F(WaveOutTest, EveryPlayFailureShowsItsTextAndReturnsItsResult) {
    struct Case {
        Op op;
        int skip;
        const char* text;
        MmResult expected;
    };
    const Case cases[] = {
        {Op::OutputOpen, 0, "Sound output Cannot Open Device!", kWaveError},
        {Op::OutputPrepare, 1, " Sound Output Cannot Prepare Header !", kWaveError},
        {Op::OutputPrepareFlags, 0, " Sound Output Cannot Prepare Header !", kWaveNoError},
        {Op::OutputWrite, 0, " Sound Output Cannot Write Buffer !", kWaveError},
    };
    SampleBlock source = ramp(20000);
    for (int single = 0; single <= 1; ++single) {
        for (const Case& c : cases) {
            m_messages.clear();
            m_sim->failNext(c.op, kWaveError, single ? 0 : c.skip);
            CWaveOut engine(m_sim);
            engine.Load(source, 0, 20000, 8000, single, 0);
            EXPECT_EQ(engine.Play(), c.expected) << c.text;
            EXPECT_EQ(m_messages.texts(), std::vector<std::string>{c.text});
            engine.Stop();
            EXPECT_FALSE(m_sim->outputOpen());
        }
    }
    m_messages.clear();
    m_sim->failNext(Op::OutputCaps);
    CWaveOut engine(m_sim);
    engine.Load(source, 0, 100, 8000, 1, 0);
    EXPECT_EQ(engine.Play(), kWaveNoError);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"Sound output Cannot determine card capabilities !"});
}

TEST_F(WaveOutTest, RefillFailuresAreReportedAndPlaybackCanStillBeStopped) {
    const std::pair<Op, std::vector<std::string>> cases[] = {
        {Op::OutputUnprepare, {"Sound output Cannot UnPrepareHeader !"}},
        // A header left unprepared cannot be written either.
        {Op::OutputPrepare, {"Sound output Cannot Prepare Header !", "Sound output Cannot Add Buffer !"}},
        {Op::OutputWrite, {"Sound output Cannot Add Buffer !"}},
    };
    SampleBlock source = ramp(20000);
    for (const auto& [op, texts] : cases) {
        m_messages.clear();
        CWaveOut engine(m_sim);
        engine.Load(source, 0, 20000, 8000, 0, 0);
        ASSERT_EQ(engine.Play(), kWaveNoError);
        m_sim->failNext(op);
        ASSERT_TRUE(m_sim->completeOutputBuffer());
        ASSERT_TRUE(m_sim->waitUntil([&, n = texts.size()] { return m_messages.texts().size() == n; }, 5s));
        EXPECT_EQ(m_messages.texts(), texts);
        EXPECT_EQ(engine.Pause(), kWaveNoError);
        EXPECT_EQ(engine.Stop(), kWaveNoError);
        EXPECT_FALSE(m_sim->outputOpen());
        EXPECT_EQ(engine.Stop(), kWaveNoError);
    }
}

TEST_F(WaveOutTest, ALoadDuringPlaybackStopsItFirst) {
    SampleBlock source = ramp(20000);
    CWaveOut engine(m_sim);
    engine.Load(source, 0, 20000, 8000, 0, 0);
    ASSERT_EQ(engine.Play(), kWaveNoError);
    ASSERT_TRUE(m_sim->completeOutputBuffer());
    engine.Load(source, 100, 5000, 11025, 0, 0);
    EXPECT_FALSE(m_sim->outputOpen());
    ASSERT_EQ(engine.Play(), kWaveNoError);
    EXPECT_EQ(m_sim->lastOutputFormat().samplesPerSec, 11025u);
    playToTheEnd();
    EXPECT_TRUE(m_messages.texts().empty());
}

}  // namespace
}  // namespace sonmetra
