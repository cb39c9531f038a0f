// A recording from the simulated unit into a document: the unit count rule,
// the channels with their rates, each holding exactly its input's signal,
// the time check, and the document written and read back.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "UsbTestSupport.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/DocumentOpener.h"
#include "document/UserException.h"
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

TEST_F(UnitRecordingTest, TheRecordingSavesAndReopensWithItsChannels) {
    firmware().setUnitChannels(5);
    AppConfig config;
    config.setBuiltInChannelTable(5);
    config.m_multiplexType = 1;
    config.m_recordTimeMs = 800;
    config.m_externalRateHz = 16000;
    for (int r = 1; r <= 4; ++r) config.m_rows[static_cast<std::size_t>(r)].word = ChannelRow::kSelected;
    CKestruneDoc doc;
    recordInto(doc, config, 5);
    ASSERT_EQ(doc.channelCount(), 5);
    EXPECT_EQ(doc.channel(0).m_sampleCount, 12800.0);
    EXPECT_EQ(doc.channel(2).m_rateHz, 4000.0);  // two of the eight audio slots' share
    EXPECT_EQ(doc.channel(2).m_sampleCount, 3200.0);

    const auto dir = std::filesystem::temp_directory_path() / ("sonmetra-unit-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "unit.kvd").string();
    ASSERT_TRUE(doc.saveAs(path, 1));
    CKestruneDoc back;
    DefaultImportDialogs dialogs;
    ASSERT_TRUE(openDocument(back, path, dialogs));
    std::filesystem::remove_all(dir);
    ASSERT_EQ(back.channelCount(), 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(back.channel(i).m_name, doc.channel(i).m_name);
        EXPECT_EQ(back.channel(i).m_rateHz, doc.channel(i).m_rateHz);
        ASSERT_EQ(back.channel(i).m_samples.size(), doc.channel(i).m_samples.size());
        EXPECT_TRUE(std::equal(back.channel(i).m_samples.begin(), back.channel(i).m_samples.end(),
                               doc.channel(i).m_samples.begin()));
    }
    EXPECT_EQ(back.audioChannelIndex(), 0);
}

TEST_F(UnitRecordingTest, AFailedPlanLeavesNothingSent) {
    AppConfig config = nineChannelConfig(3, 1000);
    EXPECT_THROW(PlanUnitRecording(config, 9), UserException);
    config.m_multiplexType = 2;
    config.m_inputLine = "Computer";
    EXPECT_THROW(PlanUnitRecording(config, 9), UserException);
    EXPECT_TRUE(traceLines().empty());
    EXPECT_EQ(m_messages.texts().size(), 2u);
}
