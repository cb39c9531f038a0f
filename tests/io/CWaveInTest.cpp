// CWaveIn on the simulated device, stepped one buffer at a time.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "document/MessageService.h"
#include "document/SampleBlock.h"
#include "io/CWaveIn.h"
#include "io/SimulatedWaveDevice.h"
#include "tests/io/RecordingDisplay.h"

namespace sonmetra {
namespace {

using namespace std::chrono_literals;
using Op = SimulatedWaveDriver::Op;
using test::Column;
using test::RecordingDisplay;

class WaveInTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_sim->setInputSignal([](std::uint64_t frame, unsigned) { return static_cast<std::int16_t>(frame % 30000); });
    }

    // Opens an engine at `rateHz` recording into m_block.
    std::unique_ptr<CWaveIn> open(unsigned rateHz, IWaveDisplay* window = nullptr, double gain = 1.0,
                                  std::int16_t offset = 0) {
        auto engine = std::make_unique<CWaveIn>(m_sim);
        engine->SetGain(gain);
        engine->SetDcOffset(offset);
        engine->Init(&m_block, rateHz, 16, window);
        EXPECT_EQ(engine->OpenMic(), kWaveNoError);
        EXPECT_EQ(engine->Start(), kWaveNoError);
        return engine;
    }
    // Completes one capture buffer and waits until the worker has re-queued
    // it and appended it as buffer number `appended`.
    void completeBuffer(const CWaveIn& engine, int appended) {
        ASSERT_TRUE(m_sim->completeInputBuffer());
        ASSERT_TRUE(m_sim->waitUntil(
            [&] { return engine.buffersAppended() == appended && m_sim->queuedInputBuffers() == 2; }, 5s))
            << "appended " << engine.buffersAppended() << ", queued " << m_sim->queuedInputBuffers();
    }

    std::shared_ptr<SimulatedWaveDriver> m_sim = SimulatedWaveDriver::create();
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
    SampleBlock m_block;
};

TEST(WaveInArithmetic, BufferLengthIsFourTenthsOfASecondOfTheRate) {
    EXPECT_EQ(CWaveIn::bufferLengthForRate(8000), 3276);
    EXPECT_EQ(CWaveIn::bufferLengthForRate(11025), 4515);
    EXPECT_EQ(CWaveIn::bufferLengthForRate(22050), 9031);
    EXPECT_EQ(CWaveIn::bufferLengthForRate(44100), 18063);
    EXPECT_EQ(CWaveIn::bufferLengthForRate(160000), 65536);
    // Beyond what a capture buffer holds the length stops at its size.
    EXPECT_EQ(CWaveIn::bufferLengthForRate(192000), CWaveIn::kBufferCapacity);
}

TEST_F(WaveInTest, InitSetsTheFormatAndOpenForcesMono16Bit) {
    CWaveIn engine(m_sim);
    engine.Init(&m_block, 22050, 8, nullptr);
    EXPECT_EQ(engine.format().bitsPerSample, 8);
    ASSERT_EQ(engine.OpenMic(), kWaveNoError);
    const WaveFormat opened = m_sim->lastInputFormat();
    EXPECT_EQ(opened.channels, 1);
    EXPECT_EQ(opened.bitsPerSample, 16);
    EXPECT_EQ(opened.samplesPerSec, 22050u);
    EXPECT_EQ(opened.avgBytesPerSec, 44100u);
    EXPECT_EQ(m_sim->queuedInputBuffers(), 2);
    EXPECT_TRUE(m_sim->inputStarted());
    EXPECT_TRUE(m_messages.texts().empty());
}

// What was captured when the user stops is kept: whole buffers in order,
// then the part of the buffer that was still filling, corrected like the rest.
TEST_F(WaveInTest, BlockHoldsWholeBuffersInOrderAndThePartialLastOne) {
    auto engine = open(11025);
    for (int n = 1; n <= 3; ++n) completeBuffer(*engine, n);
    EXPECT_EQ(m_sim->feedInput(2000), 0);
    EXPECT_EQ(engine->Stop(), kWaveNoError);
    engine->Close();

    EXPECT_EQ(engine->buffersAppended(), 3);
    EXPECT_EQ(engine->samplesRecorded(), 3u * 4515u + 2000u);
    ASSERT_EQ(m_block.size(), 3u * 4515u + 2000u);
    for (std::size_t i = 0; i < m_block.size(); ++i) ASSERT_EQ(m_block[i], static_cast<std::int16_t>(i % 30000)) << i;
    EXPECT_FALSE(m_sim->inputOpen());
    EXPECT_TRUE(m_messages.texts().empty());

    // Closed without a Stop (the engine deleted while recording), with the
    // gain applied: the partial buffer is corrected too.
    m_sim->setInputSignal(SimulatedWaveDriver::constant(1000));
    SampleBlock second;
    CWaveIn engine2(m_sim);
    engine2.SetGain(3.0);
    engine2.Init(&second, 8000, 16, nullptr);
    ASSERT_EQ(engine2.OpenMic(), kWaveNoError);
    ASSERT_TRUE(m_sim->completeInputBuffer());
    ASSERT_TRUE(
        m_sim->waitUntil([&] { return engine2.buffersAppended() == 1 && m_sim->queuedInputBuffers() == 2; }, 5s));
    EXPECT_EQ(m_sim->feedInput(10), 0);
    engine2.Close();
    ASSERT_EQ(second.size(), 3276u + 10u);
    EXPECT_EQ(second[3276 + 9], 3000);

    // Stopped exactly at a buffer's end: nothing partial to add.
    SampleBlock third;
    CWaveIn engine3(m_sim);
    engine3.Init(&third, 8000, 16, nullptr);
    ASSERT_EQ(engine3.OpenMic(), kWaveNoError);
    ASSERT_TRUE(m_sim->completeInputBuffer());
    ASSERT_TRUE(
        m_sim->waitUntil([&] { return engine3.buffersAppended() == 1 && m_sim->queuedInputBuffers() == 2; }, 5s));
    engine3.Stop();
    engine3.Close();
    EXPECT_EQ(third.size(), 3276u);
}

TEST_F(WaveInTest, OffsetAndGainWrapInsteadOfClipping) {
    m_sim->setInputSignal(SimulatedWaveDriver::constant(20000));
    auto engine = open(8000, nullptr, 2.0);
    completeBuffer(*engine, 1);
    engine->Close();
    ASSERT_EQ(m_block.size(), 3276u);
    EXPECT_EQ(m_block[0], -25536);
    EXPECT_EQ(m_block[3275], -25536);

    // The offset wraps in 16 bits before the gain: 32700 + 100 -> -32736.
    m_sim->setInputSignal(SimulatedWaveDriver::constant(32700));
    SampleBlock second;
    CWaveIn shifted(m_sim);
    shifted.SetDcOffset(100);
    shifted.SetGain(-0.5);
    shifted.Init(&second, 8000, 16, nullptr);
    ASSERT_EQ(shifted.OpenMic(), kWaveNoError);
    ASSERT_TRUE(m_sim->completeInputBuffer());
    ASSERT_TRUE(m_sim->waitUntil([&] { return shifted.buffersAppended() == 1; }, 5s));
    shifted.Close();
    ASSERT_EQ(second.size(), 3276u);
    EXPECT_EQ(second[0], 16368);  // -32736 × -0.5
}

TEST_F(WaveInTest, StripChartDrawsOneColumnPerBufferAndWrapsToXOne) {
    // A square wave of ±30000 in a 200-pixel window: y = ±trunc(30000 × 200 / 65536) = ±91.
    // The first sample (-30000) alone has max == min, which widens the
    // column there by one pixel: the minimum ends at -92.
    m_sim->setInputSignal([](std::uint64_t frame, unsigned) { return std::int16_t(frame % 2 ? 30000 : -30000); });
    RecordingDisplay display(WaveRect{0, 0, 3, 200});
    auto engine = open(8000, &display);
    for (int n = 1; n <= 6; ++n) completeBuffer(*engine, n);
    engine->Close();

    const auto columns = display.columns();
    ASSERT_EQ(columns.size(), 6u);
    const int xs[] = {0, 1, 2, 3, 1, 2};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        EXPECT_EQ(columns[i], (Column{xs[i], 100, 100 - 91, 100 + 92})) << i;
    }
}

TEST_F(WaveInTest, SilenceDrawsTwoPixelColumnsAndAFlatWindowStillAdvances) {
    m_sim->setInputSignal(SimulatedWaveDriver::constant(0));
    RecordingDisplay silent(WaveRect{0, 0, 50, 100});
    auto engine = open(8000, &silent);
    completeBuffer(*engine, 1);
    completeBuffer(*engine, 2);
    engine->Close();
    EXPECT_EQ(silent.columns(), (std::vector<Column>{{0, 50, 49, 51}, {1, 50, 49, 51}}));

    RecordingDisplay flat(WaveRect{0, 0, 50, 0});
    m_block.clear();
    auto flatEngine = open(8000, &flat);
    completeBuffer(*flatEngine, 1);
    completeBuffer(*flatEngine, 2);
    flatEngine->Close();
    EXPECT_EQ(flat.columns(), (std::vector<Column>{{0, 0, -1, 1}, {1, 0, -1, 1}}));
}

TEST_F(WaveInTest, NoInputDeviceReportsAndStillReturnsSuccess) {
    m_sim->setDeviceCounts(0, 1);
    CWaveIn engine(m_sim);
    engine.Init(&m_block, 11025, 16, nullptr);
    EXPECT_EQ(engine.OpenMic(), kWaveNoError);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"No Sound Device"});
    EXPECT_FALSE(m_sim->inputOpen());
    EXPECT_NE(engine.Start(), kWaveNoError);
    EXPECT_EQ(engine.Close(), kWaveNoError);
    EXPECT_EQ(engine.buffersAppended(), 0);
}

struct OpenFailure {
    Op op;
    int skip;
    MmResult code;
    const char* text;
    MmResult expected;
};

TEST_F(WaveInTest, EveryOpenFailureShowsItsTextAndReturnsItsResult) {
    const OpenFailure cases[] = {
        {Op::InputOpen, 0, kWaveAllocated, "Cannot Open Sound Input Device!", kWaveAllocated},
        {Op::InputPrepare, 0, kWaveNoMemory, "Cannot Prepare Header (Open Mic)!", kWaveNoMemory},
        {Op::InputPrepareFlags, 1, kWaveNoError, "Cannot Prepare Header (Open Mic)!", kWaveNoError},
        {Op::InputAdd, 0, kWaveInvalidParam, "Cannot Add Buffer (Open Mic)!", kWaveInvalidParam},
        {Op::InputAdd, 1, kWaveInvalidParam, "Cannot Add Buffer (Open Mic)!", kWaveInvalidParam},
        {Op::InputStart, 0, kWaveError, "Cannot Start Wave In (Open Mic)!", kWaveError},
    };
    for (const OpenFailure& c : cases) {
        m_messages.clear();
        m_sim->failNext(c.op, c.code == kWaveNoError ? kWaveError : c.code, c.skip);
        CWaveIn engine(m_sim);
        engine.Init(&m_block, 8000, 16, nullptr);
        EXPECT_EQ(engine.OpenMic(), c.expected) << c.text;
        EXPECT_EQ(m_messages.texts(), std::vector<std::string>{c.text});
        engine.Close();
        EXPECT_FALSE(m_sim->inputOpen());
    }
    // A capabilities failure is reported and recording goes on.
    m_messages.clear();
    m_sim->failNext(Op::InputCaps);
    auto engine = open(8000);
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"Cannot determine sound card capabilities !"});
    completeBuffer(*engine, 1);
}

TEST_F(WaveInTest, AFailedRequeueReportsAndEndsTheWorker) {
    const std::pair<Op, const char*> cases[] = {
        {Op::InputUnprepare, "Cannot UnPrepareHeader !"},
        {Op::InputPrepare, "Cannot Prepare Header !"},
        {Op::InputAdd, "Cannot Add Buffer (Add Buffer)!"},
        {Op::InputStart, "Cannot Start Wave In (Add Buffer)!"},
    };
    for (const auto& [op, text] : cases) {
        m_messages.clear();
        m_block.clear();
        auto engine = open(8000);
        m_sim->failNext(op);
        ASSERT_TRUE(m_sim->completeInputBuffer());
        ASSERT_TRUE(m_sim->waitUntil([&] { return !m_messages.texts().empty(); }, 5s)) << text;
        EXPECT_EQ(m_messages.texts(), std::vector<std::string>{text});
        // The worker has ended: the next buffer is not taken.
        ASSERT_TRUE(m_sim->completeInputBuffer());
        engine->Close();
        EXPECT_EQ(engine->buffersAppended(), 0) << text;
        EXPECT_TRUE(m_block.empty());
        EXPECT_FALSE(m_sim->inputOpen());
    }
}

TEST_F(WaveInTest, CloseEndsAWaitingWorkerAndASecondCloseIsHarmless) {
    auto engine = open(44100);
    EXPECT_EQ(engine->Close(), kWaveNoError);
    EXPECT_FALSE(m_sim->inputOpen());
    EXPECT_EQ(engine->Close(), kWaveNoError);
    EXPECT_EQ(engine->buffersAppended(), 0);
}

}  // namespace
}  // namespace sonmetra
