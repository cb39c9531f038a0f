// The WAV, CSL NSP and AIFF/AIFC readers, the open sequence around them, and
// Export Channel As.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "ImportTestSupport.h"
#include "document/ByteOrder.h"
#include "document/DocumentOpener.h"
#include "document/readers/AiffReader.h"
#include "document/readers/ChannelExport.h"

namespace sonmetra::test {
namespace {

class FormatReaders : public ::testing::Test {
protected:
    RecordingMessageService m_messages;
    ScopedMessageService m_install{&m_messages};
    ScriptedDialogs m_dialogs;
    CKestruneDoc m_doc;

    bool open(const std::string& name) { return openDocument(m_doc, fixture(name), m_dialogs); }
    ReadStatus read(const std::string& reader, const std::string& name) {
        return readWith(reader, fixture(name), m_doc, m_dialogs);
    }
};

TEST_F(FormatReaders, MonoWavFillsChannelOneWithTheImportDefaults) {
    ASSERT_TRUE(open("wav-16-1ch-11025.wav"));
    EXPECT_EQ(m_doc.readerName(), "WAV");
    EXPECT_EQ(m_doc.channelCount(), 1);
    const CChannel& ch = m_doc.channel(0);
    EXPECT_EQ(samplesOf(m_doc), rampSamples(1000));
    EXPECT_EQ(ch.m_audio, 1);
    EXPECT_EQ(ch.m_inUse, 1);
    EXPECT_EQ(ch.m_number, 1);
    EXPECT_EQ(ch.m_bitsPerSample, 16);
    EXPECT_DOUBLE_EQ(ch.m_rateHz, 11025.0);
    EXPECT_DOUBLE_EQ(ch.m_sampleCount, 1000.0);
    EXPECT_DOUBLE_EQ(ch.m_durationMs, 1000.0 * 1000.0 / 11025.0);
    EXPECT_EQ(ch.m_units, "bits");
    EXPECT_EQ(ch.m_name, "wav-16-1ch-11025.wav");
    EXPECT_DOUBLE_EQ(ch.m_gain, 1.0);
    EXPECT_DOUBLE_EQ(ch.m_bandwidthHz, 5512.5);
    EXPECT_DOUBLE_EQ(ch.m_reference, 0.0);
    EXPECT_DOUBLE_EQ(ch.m_c0, 0.0);
    EXPECT_EQ(ch.m_reservedB, 100);
    EXPECT_EQ(ch.m_reservedD, 1);
    EXPECT_DOUBLE_EQ(ch.m_viewEndSample, 1000.0);
    EXPECT_DOUBLE_EQ(ch.m_viewEndMs, ch.m_durationMs);
    EXPECT_TRUE(m_doc.foreignMark());
    EXPECT_TRUE(m_doc.needsSaveAs());
    EXPECT_TRUE(m_doc.holdsData());
    EXPECT_FALSE(m_doc.isModified());
    EXPECT_EQ(m_doc.title(), "wav-16-1ch-11025.wav");
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(FormatReaders, MultiChannelFilesAskWhichChannelToTake) {
    m_dialogs.channelAnswer = 1;
    ASSERT_TRUE(open("wav-16-2ch-22050.wav"));
    EXPECT_EQ(m_dialogs.channelQuestions, std::vector<int>{2});
    ASSERT_EQ(m_doc.channel(0).m_samples.size(), 1000u);
    for (std::size_t i = 0; i < 1000; ++i) ASSERT_EQ(m_doc.channel(0).m_samples[i], second16(i)) << i;

    CKestruneDoc three;
    m_dialogs.channelAnswer = 0;
    ASSERT_TRUE(openDocument(three, fixture("wav-16-3ch-8000.wav"), m_dialogs));
    EXPECT_EQ(m_dialogs.channelQuestions.back(), 3);
    EXPECT_EQ(samplesOf(three), rampSamples(1000));

    CKestruneDoc aiff;
    m_dialogs.channelAnswer = 1;
    ASSERT_TRUE(openDocument(aiff, fixture("aiff-16-2ch-22050.aiff"), m_dialogs));
    EXPECT_EQ(aiff.readerName(), "AIFF");
    EXPECT_EQ(aiff.channel(0).m_samples[7], second16(7));
}

// Cancel in the channel selection makes WAV decline; NSP, AIFF and sndfile
// decline too (sndfile without asking a second time), and the generic dialog
// follows. Its Cancel ends in "Wrong file type.", its "Yes" in the raw reader.
TEST_F(FormatReaders, StereoCancelLeadsOnToTheGenericDialog) {
    m_dialogs.channelAnswer = -1;
    EXPECT_FALSE(open("wav-16-2ch-22050.wav"));
    EXPECT_EQ(m_dialogs.channelQuestions, std::vector<int>{2});
    EXPECT_EQ(m_dialogs.genericQuestions, 1);
    EXPECT_EQ(m_messages.lastText(), "Wrong file type.");
    EXPECT_EQ(m_messages.beeps(), 1);

    CKestruneDoc raw;
    m_dialogs.genericAnswer = true;
    ASSERT_TRUE(openDocument(raw, fixture("aiff-16-2ch-22050.aiff"), m_dialogs));
    EXPECT_EQ(raw.readerName(), "int_binary");
    EXPECT_EQ(raw.channel(0).m_name, "int_binary file");
    EXPECT_EQ(m_dialogs.genericQuestions, 2);
}

TEST_F(FormatReaders, EightBitAndMuLawBecomeSixteenBits) {
    ASSERT_EQ(read("WAV", "wav-8-1ch-8000.wav"), ReadStatus::Accepted);
    for (std::size_t i = 0; i < 1000; ++i) ASSERT_EQ(m_doc.channel(0).m_samples[i], (byte8(i) - 128) * 256) << i;

    ASSERT_EQ(read("AIFF", "aiff-8-1ch-11025.aiff"), ReadStatus::Accepted);
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(m_doc.channel(0).m_samples[i], static_cast<std::int8_t>(byte8(i)) * 256) << i;

    // The mu-law file holds every code 0..255 in order.
    ASSERT_EQ(read("WAV", "wav-mulaw-1ch-8000.wav"), ReadStatus::Accepted);
    const SampleBlock& s = m_doc.channel(0).m_samples;
    ASSERT_EQ(s.size(), 256u);
    EXPECT_EQ(s[0x00], -32124);
    EXPECT_EQ(s[0x80], 32124);
    EXPECT_EQ(s[0x7F], 0);
    EXPECT_EQ(s[0xFF], 0);
    EXPECT_EQ(s[0x70], -120);
    EXPECT_EQ(s[0xF0], 120);
    for (int c = 0; c < 256; ++c) ASSERT_EQ(s[c], -s[c ^ 0x80]) << c;
    for (int c = 1; c < 128; ++c) ASSERT_GT(s[c], s[c - 1]) << c;
}

TEST_F(FormatReaders, WavChunkLayouts) {
    for (const char* name : {"wav-16-1ch-16000-odd-chunk.wav", "wav-16-1ch-8000-data-before-fmt.wav"}) {
        ASSERT_EQ(read("WAV", name), ReadStatus::Accepted) << name;
        EXPECT_EQ(samplesOf(m_doc), rampSamples(1000)) << name;
    }
    // A data chunk that claims more than the file holds yields what is there.
    ASSERT_EQ(read("WAV", "wav-16-1ch-8000-truncated-data.wav"), ReadStatus::Accepted);
    EXPECT_EQ(samplesOf(m_doc), rampSamples(1000));
}

TEST_F(FormatReaders, ImpossibleHeadersAreNotOfTheType) {
    const std::pair<const char*, const char*> cases[] = {
        {"WAV", "wav-16-0ch-8000.wav"},
        {"WAV", "wav-16-1ch-rate0.wav"},
        {"WAV", "wav-16-1ch-rate2000000.wav"},
        {"WAV", "wav-short-fmt.wav"},
        {"AIFF", "aiff-16-1ch-rate-inf.aiff"},
        {"AIFF", "aiff-16-1ch-rate-nan.aiff"},
        {"AIFF", "aiff-16-1ch-rate0.aiff"},
        {"AIFF", "aiff-16-1ch-rate2000000.aiff"},
        {"AIFF", "aiff-16-0ch-8000.aiff"},
        {"AIFF", "aiff-16-30000ch-8000.aiff"},
        {"NSP", "nsp-rate0.nsp"},
        {"NSP", "nsp-no-data.nsp"},
        {"NSP", "nsp-data-before-header.nsp"},
    };
    for (const auto& [reader, name] : cases) {
        EXPECT_EQ(read(reader, name), ReadStatus::NotMyType) << name;
        // libsndfile must not take them either: they end in the generic dialog.
        EXPECT_EQ(read("sndfile", name), ReadStatus::NotMyType) << name;
    }
    EXPECT_TRUE(m_dialogs.channelQuestions.empty());
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(FormatReaders, NspChunks) {
    ASSERT_TRUE(open("nsp-16-1ch-10000.nsp"));
    EXPECT_EQ(m_doc.readerName(), "NSP");
    EXPECT_EQ(m_doc.channel(0).m_name, "NSP file");
    EXPECT_EQ(m_doc.channel(0).m_reservedB, 100);
    EXPECT_DOUBLE_EQ(m_doc.channel(0).m_rateHz, 10000.0);
    EXPECT_DOUBLE_EQ(m_doc.channel(0).m_bandwidthHz, 5000.0);
    EXPECT_EQ(samplesOf(m_doc), rampSamples(1000));

    for (const char* name :
         {"nsp-hdr8-8000.nsp", "nsp-odd-chunk.nsp", "nsp-two-data-chunks.nsp", "nsp-truncated-data.nsp"}) {
        ASSERT_EQ(read("NSP", name), ReadStatus::Accepted) << name;
        EXPECT_EQ(samplesOf(m_doc), rampSamples(1000)) << name;
    }
}

TEST_F(FormatReaders, AiffVariants) {
    const std::pair<const char*, double> cases[] = {
        {"aiff-16-1ch-44100.aiff", 44100.0},
        {"aifc-sowt-1ch-8000.aifc", 8000.0},
        {"aifc-none-1ch-16000.aifc", 16000.0},
        {"aiff-16-1ch-8000-skipped-chunks.aiff", 8000.0},
        {"aiff-16-1ch-8000-frames-past-end.aiff", 8000.0},
    };
    for (const auto& [name, rate] : cases) {
        m_doc.clearChannels();
        ASSERT_TRUE(open(name)) << name;
        EXPECT_EQ(m_doc.readerName(), "AIFF") << name;
        EXPECT_EQ(m_doc.channel(0).m_name, name);
        EXPECT_DOUBLE_EQ(m_doc.channel(0).m_rateHz, rate) << name;
        EXPECT_EQ(samplesOf(m_doc), rampSamples(1000)) << name;
    }
}

TEST(Extended80, DecodesRatesWrittenByOtherPrograms) {
    // Sample-rate fields as AIFF writers store them.
    const std::uint8_t r44100[10] = {0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0};
    const std::uint8_t r8000[10] = {0x40, 0x0B, 0xFA, 0x00, 0, 0, 0, 0, 0, 0};
    const std::uint8_t r22050[10] = {0x40, 0x0D, 0xAC, 0x44, 0, 0, 0, 0, 0, 0};
    const std::uint8_t r11025_5[10] = {0x40, 0x0C, 0xAC, 0x46, 0, 0, 0, 0, 0, 0};
    const std::uint8_t minusHalf[10] = {0xBF, 0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0};
    const std::uint8_t zero[10] = {};
    const std::uint8_t huge[10] = {0x7F, 0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0};
    const std::uint8_t inf[10] = {0x7F, 0xFF, 0x80, 0, 0, 0, 0, 0, 0, 0};
    const std::uint8_t nan[10] = {0x7F, 0xFF, 0xC0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(decodeExtended80(r44100), 44100.0);
    EXPECT_EQ(decodeExtended80(r8000), 8000.0);
    EXPECT_EQ(decodeExtended80(r22050), 22050.0);
    EXPECT_EQ(decodeExtended80(r11025_5), 11025.5);
    EXPECT_EQ(decodeExtended80(minusHalf), -0.5);
    EXPECT_EQ(decodeExtended80(zero), 0.0);
    EXPECT_TRUE(std::isinf(decodeExtended80(huge)));  // beyond a double's range
    EXPECT_TRUE(std::isinf(decodeExtended80(inf)));
    EXPECT_TRUE(std::isnan(decodeExtended80(nan)));
}

TEST_F(FormatReaders, ExportWritesTheWholeChannelWhileASelectionExists) {
    ASSERT_TRUE(open("wav-16-1ch-11025.wav"));
    CChannel& ch = m_doc.channel(0);
    ch.m_selStartSample = 100;
    ch.m_selEndSample = 200;
    ch.m_selStartMs = 100 * ch.msPerSample();
    ch.m_selEndMs = 200 * ch.msPerSample();
    m_doc.setSelectionFlag(true);

    const std::string path = tempPath("export.wav");
    ASSERT_TRUE(exportChannelWav(ch, path));
    const std::vector<std::uint8_t> bytes = fileBytes(path);
    std::remove(path.c_str());
    ASSERT_EQ(bytes.size(), 44u + 2000u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "RIFF");
    EXPECT_EQ(getLe32(&bytes[4]), 36u + 2000u);
    EXPECT_EQ(getLe32(&bytes[24]), 11025u);
    EXPECT_EQ(getLe32(&bytes[40]), 2000u);
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(static_cast<std::int16_t>(getLe16(&bytes[44 + 2 * i])), ramp16(i)) << i;

    // The exported file reads back through the sequence as the same channel.
    CKestruneDoc back;
    writeBytes(path, bytes);
    ASSERT_TRUE(openDocument(back, path, m_dialogs));
    std::remove(path.c_str());
    EXPECT_EQ(samplesOf(back), rampSamples(1000));
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(FormatReaders, ExportFailureLeavesTheTargetAndSaysSo) {
    ASSERT_TRUE(open("wav-16-1ch-11025.wav"));
    EXPECT_FALSE(exportChannelWav(m_doc.channel(0), "/nonexistent-folder/x.wav"));
    EXPECT_EQ(m_messages.lastText(), "Error in save operation.");
    EXPECT_GE(m_messages.beeps(), 1);
}

}  // namespace
}  // namespace sonmetra::test
