// The configuration record: its size, checks and the values rewritten when
// a document at another audio rate is opened.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "TestFiles.h"
#include "document/AppConfig.h"
#include "document/AudioRate.h"
#include "document/ByteOrder.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

AppConfig::Record baseRecord() {
    AppConfig c;
    return c.toRecord();
}

void putText(AppConfig::Record& r, std::size_t at, const char* s) {
    std::memset(r.data() + at, 0, 16);
    std::memcpy(r.data() + at, s, std::strlen(s));
}

}  // namespace

TEST(AppConfigTest, BuiltInChannelTable) {
    AppConfig c;
    EXPECT_EQ(c.m_rows[0].rateHz, 0);
    EXPECT_EQ(c.m_rows[1].rateHz, 11000);
    EXPECT_EQ(c.m_rows[6].bandwidthHz, 4000);
    EXPECT_EQ(c.m_rows[7].rateHz, 5500);
    EXPECT_EQ(c.m_rows[8].bandwidthHz, 2000);
    EXPECT_EQ(c.m_rows[8].gain, 1);
    EXPECT_EQ(c.audioRateHz(), 11000.0);
}

TEST(AppConfigTest, InputLineAndSourceAreComparedExactly) {
    AppConfig::Record r = baseRecord();
    putText(r, cfg::kInputLine, "Line");
    AppConfig c;
    ASSERT_TRUE(c.fromRecord(r));
    EXPECT_EQ(c.m_inputLine, "Line");
    putText(r, cfg::kInputLine, "line");
    std::memcpy(r.data() + cfg::kSource, "external hardware", 18);
    ASSERT_TRUE(c.fromRecord(r));
    EXPECT_EQ(c.m_inputLine, "Mic");
    EXPECT_EQ(c.m_source, "Computer");
}

TEST(AppConfigTest, RowValuesAreTakenOnlyInsideTheirRanges) {
    struct Case {
        std::size_t at;
        std::int32_t value;
        bool taken;
    };
    const Case cases[] = {{cfg::kRowRates, 45000, true},      {cfg::kRowRates, 45001, false},
                          {cfg::kRowRates, 1000, true},       {cfg::kRowRates, 999, false},
                          {cfg::kRowGains, 350, true},        {cfg::kRowGains, 351, false},
                          {cfg::kRowGains, 0, false},         {cfg::kRowBandwidths, 8000, true},
                          {cfg::kRowBandwidths, 8001, false}, {cfg::kRowBandwidths, 0, false}};
    for (const Case& k : cases) {
        AppConfig::Record r = baseRecord();
        putI32(r.data() + k.at + 4 * 3, k.value);  // row 3
        AppConfig c;
        const ChannelRow before = c.m_rows[3];
        ASSERT_TRUE(c.fromRecord(r));
        const std::int32_t got = k.at == cfg::kRowRates   ? c.m_rows[3].rateHz
                                 : k.at == cfg::kRowGains ? c.m_rows[3].gain
                                                          : c.m_rows[3].bandwidthHz;
        const std::int32_t old = k.at == cfg::kRowRates   ? before.rateHz
                                 : k.at == cfg::kRowGains ? before.gain
                                                          : before.bandwidthHz;
        EXPECT_EQ(got, k.taken ? k.value : old) << k.at << " " << k.value;
    }
}

TEST(AppConfigTest, AnotherVersionIsNotTaken) {
    AppConfig::Record r = baseRecord();
    putText(r, cfg::kInputLine, "Line");
    putText(r, cfg::kVersionText, "8.9.2");
    AppConfig c;
    EXPECT_FALSE(c.fromRecord(r));
    EXPECT_EQ(c.m_inputLine, "Mic");
}

TEST(AppConfigTest, FileRoundTripKeepsEverySettingAndTheSize) {
    TempDir dir;
    AppConfig c;
    c.m_inputLine = "Line";
    c.m_source = "External Hardware";
    c.m_rows[4] = {9, 22050, 8000, 350};
    c.m_zoomRangeMs = 250.0;
    c.m_analysis.pitch.method = PitchMethod::AutoCorrelation;
    c.m_analysis.spectrogram.preEmphasis = 0.5;
    c.m_channelSettings[19].smoothingLength = 9.0;
    ASSERT_TRUE(c.writeFile(dir.file("c.cfg")));
    EXPECT_EQ(readBytes(dir.file("c.cfg")).size(), 2224u);
    AppConfig back;
    ASSERT_TRUE(back.readFile(dir.file("c.cfg")));
    EXPECT_EQ(back.toRecord(), c.toRecord());
    EXPECT_EQ(back.m_analysis.pitch.method, PitchMethod::AutoCorrelation);
    EXPECT_EQ(back.m_rows[4].gain, 350);

    writeBytes(dir.file("short.cfg"), std::vector<std::uint8_t>(100, 0));
    EXPECT_FALSE(back.readFile(dir.file("short.cfg")));
}

TEST(AppConfigTest, OpeningADocumentAtAnotherRateRewritesTheDerivedValues) {
    RecordingMessageService messages;
    ScopedMessageService install(&messages);
    TempDir dir;
    AppConfig config;
    config.setFilePath(dir.file("SonmetraConf.cfg"));
    setAudioRateInForce(config.audioRateHz());

    CKestruneDoc doc;
    fillSampleDocument(doc);
    doc.channel(0).m_rateHz = 44100.0;
    doc.channel(0).setSampleCountFromBlock();
    ASSERT_TRUE(doc.saveAs(dir.file("fast.kvd"), 1));

    CKestruneDoc opened;
    DefaultImportDialogs dialogs;
    ASSERT_TRUE(openDocument(opened, dir.file("fast.kvd"), dialogs, &config));
    const auto bytes = readBytes(dir.file("SonmetraConf.cfg"));
    ASSERT_EQ(bytes.size(), 2224u);
    EXPECT_EQ(getI32(bytes.data() + 560, false), 5);      // cut(256000 / 44100)
    EXPECT_EQ(getI32(bytes.data() + 568, false), 44000);  // cut(44.1) × 1000
    EXPECT_EQ(getI32(bytes.data() + 960, false), 22000);  // cut(22.05) × 1000
    EXPECT_EQ(getI32(bytes.data() + 980, false), 48);     // largest even <= 4 + 44
    EXPECT_EQ(audioRateInForce(), 44100.0);
    EXPECT_EQ(opened.m_analysis.fftLpc.lpcOrder, 48);
    EXPECT_EQ(opened.m_analysis.fftLpc.frequencyRangeHz, 22000);
    setAudioRateInForce(11000.0);
}

TEST(AppConfigTest, TheUnitsDriverSettingAndMultiplexTypeHaveTheirPlaces) {
    AppConfig c;
    EXPECT_EQ(c.m_multiplexType, 2);
    c.m_driverSetting = 7;
    c.m_multiplexType = 3;
    c.m_rows[4].word = ChannelRow::kSelected | 0x100;
    AppConfig::Record r = c.toRecord();
    EXPECT_EQ(getI32(r.data() + cfg::kDriverSetting, false), 7);
    EXPECT_EQ(getI32(r.data() + cfg::kMultiplexType, false), 3);
    AppConfig back;
    ASSERT_TRUE(back.fromRecord(r));
    EXPECT_EQ(back.m_driverSetting, 7);
    EXPECT_EQ(back.m_multiplexType, 3);
    EXPECT_TRUE(back.m_rows[4].selected());
    EXPECT_EQ(back.m_rows[4].word, ChannelRow::kSelected | 0x100);  // other bits kept as read
    EXPECT_FALSE(back.m_rows[5].selected());
    putI32(r.data() + cfg::kMultiplexType, 4);
    ASSERT_TRUE(back.fromRecord(r));
    EXPECT_EQ(back.m_multiplexType, 3);  // out of range: the value before stays
}

// Every rate of the range comes into force and is written so that it reads
// back with its derived values; a rate outside it (as a damaged file holds)
// is reported when the workstation opens the file, and derives nothing: no
// overflowed number reaches the configuration record.
TEST(AppConfigTest, OnlyRatesOfTheRangeComeIntoForceAndEachReadsBack) {
    RecordingMessageService messages;
    ScopedMessageService install(&messages);
    TempDir dir;
    const std::string configPath = dir.file("SonmetraConf.cfg");
    for (const double rate : {1.0, 250.0, 1102.5, 44100.0, 1.0e6}) {
        AppConfig config;
        config.setFilePath(configPath);
        config.takeAudioRate(rate);
        AppConfig back;
        ASSERT_TRUE(back.readFile(configPath)) << rate;
        EXPECT_EQ(back.audioRateHz(), std::trunc(rate));
        EXPECT_EQ(back.m_analysis.fftLpc.appliedWindowMs, AppConfig::analysisFrameMs(rate)) << rate;
        EXPECT_EQ(back.m_analysis.fftLpc.frequencyRangeHz, AppConfig::displayFrequencyRangeHz(rate)) << rate;
        EXPECT_EQ(back.m_analysis.fftLpc.lpcOrder, AppConfig::analysisOrder(rate)) << rate;
        EXPECT_LE(AppConfig::analysisOrder(rate), 400);
    }
    setAudioRateInForce(11000.0);

    const double bad[] = {0.0, -1.0, std::nan(""), HUGE_VAL, 1e300, 6.103515625e-305, 1.0e6 + 1};
    for (const double rate : bad) {
        std::remove(configPath.c_str());
        AppConfig config;
        config.setFilePath(configPath);
        CKestruneDoc doc;
        fillSampleDocument(doc);
        doc.channel(0).m_rateHz = rate;
        ASSERT_TRUE(doc.saveAs(dir.file("bad.kvd"), 1));
        CKestruneDoc opened;
        DefaultImportDialogs dialogs;
        messages.clear();
        ASSERT_TRUE(openDocument(opened, dir.file("bad.kvd"), dialogs, &config)) << rate;
        ASSERT_EQ(messages.texts().size(), 1u) << rate;
        EXPECT_EQ(messages.texts()[0].rfind("The sample rate of channel 1 (Audio) ", 0), 0u) << messages.texts()[0];
        EXPECT_EQ(audioRateInForce(), 11000.0) << rate;
        EXPECT_EQ(config.audioRateHz(), 11000.0) << rate;
        EXPECT_FALSE(std::filesystem::exists(configPath)) << rate;
        EXPECT_EQ(opened.m_analysis.fftLpc.lpcOrder, AnalysisSettings::defaultsForRate(11000.0).fftLpc.lpcOrder);
        config.takeAudioRate(rate);
        setAudioRateInForce(rate);
        EXPECT_EQ(config.audioRateHz(), 11000.0) << rate;
        EXPECT_EQ(audioRateInForce(), 11000.0) << rate;
    }
}
