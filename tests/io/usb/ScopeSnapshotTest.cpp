// The live scope's snapshot: which channels it shows, how it splits a
// stream (the 9-channel type-1 exception included), what it does with units
// it cannot split, what it asks of the unit, and that other operations on the
// unit wait for a snapshot under way.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "UsbTestSupport.h"
#include "document/AppConfig.h"
#include "document/UserException.h"
#include "io/usb/ScopeSnapshot.h"
#include "io/usb/UnitRecording.h"

using namespace sonmetra;
using namespace sonmetra::usb;
using namespace sonmetra::usb::test;

namespace {

// A stream whose word w holds w (16-bit wrap), so a sample tells where it came from.
std::vector<std::uint8_t> numberedStream() {
    std::vector<std::uint8_t> stream(kScopeStreamBytes);
    for (std::size_t w = 0; w < stream.size() / 2; ++w) {
        stream[2 * w] = static_cast<std::uint8_t>(w & 0xFF);
        stream[2 * w + 1] = static_cast<std::uint8_t>((w >> 8) & 0xFF);
    }
    return stream;
}

std::int16_t word(std::size_t w) { return static_cast<std::int16_t>(static_cast<std::uint16_t>(w & 0xFFFF)); }

ParameterBlock blockFor(int unitChannels, int type) {
    AppConfig config;
    config.m_multiplexType = type;
    return BuildParameterBlock(AcquisitionFromConfig(config, unitChannels));
}

// Checks that channel samples [k] are the words at row k / slots.size(), slot slots[k % size].
void expectSlots(const std::vector<std::int16_t>& samples, const std::vector<int>& slots, const char* what) {
    const std::size_t rows = kScopeStreamBytes / kRowBytes;
    ASSERT_EQ(samples.size(), rows * slots.size()) << what;
    int wrong = 0;
    for (std::size_t k = 0; k < samples.size(); ++k)
        wrong += samples[k] != word(k / slots.size() * 16 + static_cast<std::size_t>(slots[k % slots.size()])) ? 1 : 0;
    EXPECT_EQ(wrong, 0) << what;
}

}  // namespace

TEST(ScopeShownChannels, AudioAlwaysThenTheSelectedChannelsOfTheUnit) {
    AppConfig config;
    for (auto& row : config.m_rows) row.word &= ~ChannelRow::kSelected;
    EXPECT_EQ(ScopeShownChannels(config, 9), (std::vector<int>{0}));
    config.m_rows[3].word |= ChannelRow::kSelected;
    config.m_rows[8].word |= ChannelRow::kSelected;
    config.m_rows[12].word |= ChannelRow::kSelected;  // beyond a 9-channel unit
    EXPECT_EQ(ScopeShownChannels(config, 9), (std::vector<int>{0, 3, 8}));
    EXPECT_EQ(ScopeShownChannels(config, 16), (std::vector<int>{0, 3, 8, 12}));
    EXPECT_EQ(ScopeShownChannels(config, 5), (std::vector<int>{0, 3}));
    EXPECT_TRUE(ScopeShownChannels(config, -1).empty());  // no unit found
}

TEST(ScopeSplit, EachChannelTakesTheWordsOfItsSlots) {
    const std::vector<std::uint8_t> stream = numberedStream();
    ScopeChannels channels;
    // 5 channels, type 2: 0 1 2 3 0 1 2 4 ...
    ASSERT_TRUE(SplitScopeStream(stream, blockFor(5, 2), 5, 2, channels));
    expectSlots(channels[0], {0, 4, 8, 12}, "audio");
    expectSlots(channels[1], {1, 5, 9, 13}, "ch1");
    expectSlots(channels[3], {3, 11}, "ch3");
    expectSlots(channels[4], {7, 15}, "ch4");
    EXPECT_EQ(channels[4].size(), 44032u * 2 / 16);
    EXPECT_TRUE(channels[5].empty());

    // 9 channels, type 2: channel 4 has its own slots 4 and 12, channel 8 slot 15.
    ASSERT_TRUE(SplitScopeStream(stream, blockFor(9, 2), 9, 2, channels));
    expectSlots(channels[0], {0, 8}, "audio, type 2");
    expectSlots(channels[4], {4, 12}, "ch4, type 2");
    expectSlots(channels[7], {7}, "ch7, type 2");
    expectSlots(channels[8], {15}, "ch8, type 2");
}

TEST(ScopeSplit, NineChannelsOfTypeOneShowTheAudioSlotsAsChannelFour) {
    // Row 0 1 2 3 0 4 5 6 0 1 2 3 0 4 7 8: channel 4 is sampled in slots 5 and
    // 13, but the scope has always shown slots 4 and 12 (audio) there.
    ScopeChannels channels;
    ASSERT_TRUE(SplitScopeStream(numberedStream(), blockFor(9, 1), 9, 1, channels));
    expectSlots(channels[0], {0, 4, 8, 12}, "audio");
    expectSlots(channels[4], {4, 12}, "ch4");
    expectSlots(channels[5], {6}, "ch5");
    expectSlots(channels[6], {7}, "ch6");
    expectSlots(channels[7], {14}, "ch7");
    expectSlots(channels[8], {15}, "ch8");
    expectSlots(channels[1], {1, 9}, "ch1");
}

TEST(ScopeSplit, UnitsOfThirteenAndSixteenChannelsKeepWhatTheChannelsHeld) {
    for (const int size : {13, 16, -1}) {
        ScopeChannels channels;
        channels[0] = {1, 2, 3};
        EXPECT_FALSE(SplitScopeStream(numberedStream(), blockFor(size, 1), size, 1, channels)) << size;
        EXPECT_EQ(channels[0], (std::vector<std::int16_t>{1, 2, 3})) << size;
        EXPECT_TRUE(channels[1].empty()) << size;
    }
}

using ScopeAcquisitionTest = SimulatedUnitTest;

TEST_F(ScopeAcquisitionTest, OneSnapshotIsTwoUnitsOfTheStreamInOneRead) {
    const ParameterBlock block = blockFor(9, 1);
    const std::vector<std::uint8_t> stream = AcquireScopeStream(block);
    ASSERT_EQ(stream.size(), 88064u);
    const std::vector<std::string> lines = traceLines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].rfind("control out request=0xB1 value=0 index=320 length=320", 0), 0u);
    EXPECT_EQ(lines[1], "control out request=0xB2 value=0 index=0 length=0");
    EXPECT_EQ(lines[2], "bulk in pipe=8 length=88064");
    EXPECT_EQ(lines[3], kStopLine);
    EXPECT_TRUE(m_messages.texts().empty());

    // Each channel shows its input's own waveform, channel 4 the audio's.
    ScopeChannels channels;
    ASSERT_TRUE(SplitScopeStream(stream, block, 9, 1, channels));
    const double audioRate = firmware().inputRateHz(0);
    int wrong = 0;
    for (std::size_t k = 0; k < channels[0].size(); ++k)
        wrong += channels[0][k] != UnitFirmware::InputSample(0, k, audioRate) ? 1 : 0;
    for (int input = 5; input <= 8; ++input)
        for (std::size_t k = 0; k < channels[static_cast<std::size_t>(input)].size(); ++k)
            wrong += channels[static_cast<std::size_t>(input)][k] !=
                             UnitFirmware::InputSample(input, k, firmware().inputRateHz(input))
                         ? 1
                         : 0;
    // Audio's slots 4 and 12 are its samples 1 and 3 of each row.
    for (std::size_t j = 0; j < channels[4].size(); ++j)
        wrong += channels[4][j] != UnitFirmware::InputSample(0, j / 2 * 4 + (j % 2 == 0 ? 1 : 3), audioRate) ? 1 : 0;
    EXPECT_EQ(wrong, 0);
}

TEST_F(ScopeAcquisitionTest, AFailedSnapshotReportsAndStopsTheUnit) {
    firmware().endStreamAfter(1000, BulkEnd::NoAnswer);
    EXPECT_THROW(AcquireScopeStream(blockFor(9, 2)), UserException);
    EXPECT_EQ(m_messages.texts(), (std::vector<std::string>{kReadError}));
    EXPECT_EQ(traceLines().back(), kStopLine);
}

TEST(ScopeUnitTurns, AnotherOperationWaitsForASnapshotUnderWay) {
    // A unit in real time: the snapshot takes half a second of its time.
    auto unit = std::make_shared<SimulatedUsbDriver>(std::make_shared<UnitFirmware>(9), true);
    setDriverSetting(0);
    setUsbDriver(unit);
    RecordingMessageService messages;
    ScopedMessageService scope(&messages);
    std::atomic<bool> done{false};
    std::thread snapshot([&] {
        AcquireScopeStream(blockFor(9, 2));
        done = true;
    });
    while (!unit->firmware().streaming() && !done) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(IdentifyDevice(), 9);
    snapshot.join();
    // The identify came after the snapshot's stop, not in the middle of its stream.
    EXPECT_EQ(unit->firmware().requestLog(),
              (std::vector<std::uint8_t>{kRequestSetup, kRequestStart, kRequestStop, kRequestIdentify}));
    EXPECT_TRUE(messages.texts().empty());
    setUsbDriver(nullptr);
}
