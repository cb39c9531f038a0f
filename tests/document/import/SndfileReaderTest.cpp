// The libsndfile reader: the families it adds, the conversion to 16 bits,
// and the clipping report.
#include <gtest/gtest.h>

#include <cmath>

#include "ImportTestSupport.h"
#include "document/DocumentOpener.h"
#include "document/readers/SndfileReader.h"

namespace sonmetra::test {
namespace {

class SndfileReader : public ::testing::Test {
protected:
    RecordingMessageService m_messages;
    ScopedMessageService m_install{&m_messages};
    ScriptedDialogs m_dialogs;
    CKestruneDoc m_doc;

    bool open(const std::string& name) { return openDocument(m_doc, fixture(name), m_dialogs); }
};

TEST_F(SndfileReader, LosslessFamiliesGiveTheSamplesBack) {
    const std::pair<const char*, double> cases[] = {
        {"flac-16-1ch-11025.flac", 11025.0},
        {"caf-16-1ch-11025.caf", 11025.0},
        {"au-16-1ch-8000.au", 8000.0},
    };
    for (const auto& [name, rate] : cases) {
        m_doc.clearChannels();
        ASSERT_TRUE(open(name)) << name;
        EXPECT_EQ(m_doc.readerName(), "sndfile") << name;
        EXPECT_EQ(m_doc.channel(0).m_name, name);
        EXPECT_DOUBLE_EQ(m_doc.channel(0).m_rateHz, rate) << name;
        EXPECT_EQ(m_doc.channel(0).m_units, "bits");
        EXPECT_TRUE(m_doc.foreignMark());
        EXPECT_EQ(samplesOf(m_doc), rampSamples(1000)) << name;
    }
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(SndfileReader, OggVorbisDecodes) {
    ASSERT_TRUE(open("ogg-1ch-11025.ogg"));
    EXPECT_EQ(m_doc.readerName(), "sndfile");
    EXPECT_DOUBLE_EQ(m_doc.channel(0).m_rateHz, 11025.0);
    EXPECT_EQ(m_doc.channel(0).m_samples.size(), 1000u);
}

TEST_F(SndfileReader, TwentyFourBitsRoundToSixteen) {
    ASSERT_TRUE(open("wav-24-1ch-44100.wav"));
    EXPECT_EQ(m_doc.readerName(), "sndfile");
    // 24-bit values: 0x7FFFFF, 0x80, 0x7F, -128, -129, -0x800000, 0x12345, 0x17F, 0x180, 0.
    const std::vector<std::int16_t> expected = {32767, 1, 0, 0, -1, -32768, 291, 1, 2, 0};
    EXPECT_EQ(samplesOf(m_doc), expected);
    EXPECT_TRUE(m_messages.texts().empty()) << "rounding is not clipping";
}

TEST_F(SndfileReader, FloatsAreScaledClippedAndCounted) {
    ASSERT_TRUE(open("wav-float32-1ch-16000.wav"));
    const std::vector<std::int16_t> s = samplesOf(m_doc);
    ASSERT_EQ(s.size(), 1000u);
    const double x = static_cast<double>(static_cast<float>(std::sin(2 * M_PI * 7 / 50) * 0.9));
    EXPECT_EQ(s[7], static_cast<std::int16_t>(std::nearbyint(x * 32767.0)));
    // The last five: 1.5, -2.0, 1.0001, -1.0001, 7.0.
    EXPECT_EQ(std::vector<std::int16_t>(s.end() - 5, s.end()),
              (std::vector<std::int16_t>{32767, -32767, 32767, -32767, 32767}));
    ASSERT_EQ(m_messages.texts().size(), 1u);
    EXPECT_EQ(m_messages.lastText(), "5 samples were beyond 16-bit full scale and have been clipped.");

    bool clipped = false;
    EXPECT_EQ(scaleFloatTo16(1.0, clipped), 32767);
    EXPECT_EQ(scaleFloatTo16(-1.0, clipped), -32767);
    EXPECT_FALSE(clipped);
    EXPECT_EQ(scaleFloatTo16(std::nan(""), clipped), 0);
    EXPECT_TRUE(clipped);
}

TEST_F(SndfileReader, ExtensibleStereoAsksForTheChannel) {
    m_dialogs.channelAnswer = 1;
    ASSERT_TRUE(open("wav-extensible-16-2ch-48000.wav"));
    EXPECT_EQ(m_doc.readerName(), "sndfile");
    EXPECT_EQ(m_dialogs.channelQuestions, std::vector<int>{2});
    const std::vector<std::int16_t> s = samplesOf(m_doc);
    ASSERT_EQ(s.size(), 1000u);
    for (std::size_t i = 0; i < s.size(); ++i) ASSERT_EQ(s[i], second16(i)) << i;

    CKestruneDoc cancelled;
    m_dialogs.channelAnswer = -1;
    EXPECT_FALSE(openDocument(cancelled, fixture("wav-extensible-16-2ch-48000.wav"), m_dialogs));
    EXPECT_EQ(m_dialogs.genericQuestions, 1);
}

TEST_F(SndfileReader, FloatAifcIsLeftToLibsndfile) {
    ASSERT_TRUE(open("aifc-fl32-1ch-22050.aifc"));
    EXPECT_EQ(m_doc.readerName(), "sndfile");
    EXPECT_EQ(m_doc.channel(0).m_samples[10],
              static_cast<std::int16_t>(std::nearbyint(static_cast<float>(0.5 * std::sin(1.0)) * 32767.0)));
}

}  // namespace
}  // namespace sonmetra::test
