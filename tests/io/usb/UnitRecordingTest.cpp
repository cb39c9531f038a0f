// A recording from the simulated unit into a document: the unit count rule,
// the channels with their rates, each holding exactly its input's signal,
// and the time check. (Saving and reopening such a document, and refusals
// of the plan, are tested through the workstation and sonmetra-cli.)
#include <gtest/gtest.h>

#include <cmath>

#include "UsbTestSupport.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "io/usb/UnitRecording.h"

using namespace sonmetra;
using namespace sonmetra::usb;
using namespace sonmetra::usb::test;

namespace {

AppConfig nineChannelConfig(int type, int timeMs) {
    AppConfig config;  // the built-in table: rows 1-6 at 11000 Hz, 7-8 at 5500 Hz
    config.m_multiplexType = type;
    config.m_recordTimeMs = timeMs;
    config.m_externalRateHz = 11000;
    for (int r = 1; r <= 8; ++r) config.m_rows[static_cast<std::size_t>(r)].word |= ChannelRow::kSelected;
    return config;
}

// Records with the plan into a document, as the Record command does.
UnitRecordingPlan recordInto(CKestruneDoc& doc, const AppConfig& config, int unitChannels) {
    const UnitRecordingPlan plan = PlanUnitRecording(config, unitChannels);
    std::vector<std::uint8_t> stream(plan.streamBytes());
    RecordFromDevice(stream, kRecordingUnitBytes, plan.unitCount, 16, plan.block.data(), kParameterBlockBytes);
    EXPECT_TRUE(FillDocumentFromUnit(doc, plan, stream));
    return plan;
}

}  // namespace

TEST(UnitRecordingPlan, WholeUnitsCoverTheRequestedTime) {
    // 5 s at 11000 Hz with two audio slots a row: 27,500 rows, 880,000 bytes, 5 units.
    EXPECT_EQ(RecordingUnitCount(5000.0, 11000.0, 2), 5u);
    // 1 ms: one unit.
    EXPECT_EQ(RecordingUnitCount(1.0, 11000.0, 2), 1u);
    // Exactly one unit's worth of audio (5504 rows x 4 audio slots).
    EXPECT_EQ(RecordingUnitCount(22016.0 / 11.0, 11000.0, 4), 1u);
    EXPECT_EQ(RecordingUnitCount(22017.0 / 11.0, 11000.0, 4), 2u);
}

using UnitRecordingTest = SimulatedUnitTest;

TEST_F(UnitRecordingTest, ChannelsGetTheirOwnRatesAndTheirInputsSignals) {
    CKestruneDoc doc;
    const AppConfig config = nineChannelConfig(2, 2000);
    const UnitRecordingPlan plan = recordInto(doc, config, 9);
    EXPECT_TRUE(plan.timesMatch());
    ASSERT_EQ(doc.channelCount(), 9);
    EXPECT_TRUE(doc.holdsData());
    EXPECT_TRUE(doc.isModified());
    for (int input = 0; input < 9; ++input) {
        const CChannel& ch = doc.channel(input);
        const double rate = input == 0 || input <= 6 ? 11000.0 : 5500.0;
        EXPECT_EQ(ch.m_name, input == 0 ? "Audio" : "ch" + std::to_string(input));
        EXPECT_EQ(ch.m_audio, input == 0 ? 1 : 0);
        EXPECT_EQ(ch.m_rateHz, rate) << input;
        EXPECT_EQ(ch.m_sampleCount, 2.0 * rate) << input;
        EXPECT_DOUBLE_EQ(ch.m_durationMs, 2000.0) << input;
        EXPECT_EQ(ch.m_inUse, 1);
        EXPECT_EQ(ch.m_gain, 1.0);
        // Every sample is the k-th sample of its own input at the rate the unit was told.
        const double unitRate = firmware().inputRateHz(input);
        int wrong = 0;
        for (std::size_t k = 0; k < ch.m_samples.size(); ++k)
            wrong += ch.m_samples[k] != UnitFirmware::InputSample(input, k, unitRate) ? 1 : 0;
        EXPECT_EQ(wrong, 0) << "input " << input;
    }
    EXPECT_EQ(doc.channel(7).m_bandwidthHz, 2000.0);
}

TEST_F(UnitRecordingTest, OnlySelectedRowsThatTheRowSamplesBecomeChannels) {
    AppConfig config = nineChannelConfig(2, 500);
    config.m_rows[3].word = 0;
    config.m_rows[12].word = ChannelRow::kSelected;  // a 9-channel unit has no input 12
    CKestruneDoc doc;
    recordInto(doc, config, 9);
    std::vector<std::string> names;
    for (int i = 0; i < doc.channelCount(); ++i) names.push_back(doc.channel(i).m_name);
    EXPECT_EQ(names, (std::vector<std::string>{"Audio", "ch1", "ch2", "ch4", "ch5", "ch6", "ch7", "ch8"}));
}

TEST_F(UnitRecordingTest, RatesTheRowCannotCarryMakeTheTimesDiffer) {
    // Type 1 carries inputs 1-4 at half the audio rate, but their rows ask for 11000 Hz.
    const UnitRecordingPlan plan = PlanUnitRecording(nineChannelConfig(1, 1000), 9);
    EXPECT_FALSE(plan.timesMatch());
    ASSERT_EQ(plan.channels.size(), 9u);
    EXPECT_EQ(plan.channels[1].carriedRateHz, 5500.0);
    EXPECT_EQ(plan.channels[1].samples, 5500u);
    EXPECT_FALSE(plan.channels[1].timeMatches);
    EXPECT_EQ(plan.channels[5].carriedRateHz, 2750.0);
    EXPECT_FALSE(plan.channels[5].timeMatches);
    EXPECT_TRUE(plan.channels[0].timeMatches);
}

TEST_F(UnitRecordingTest, ARowWithoutARateTakesTheCarriedRate) {
    AppConfig config = nineChannelConfig(2, 1000);
    config.m_rows[7].rateHz = 0;
    const UnitRecordingPlan plan = PlanUnitRecording(config, 9);
    EXPECT_EQ(plan.channels[7].rateHz, 5500.0);
    EXPECT_TRUE(plan.timesMatch());
}
