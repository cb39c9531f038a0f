// The document file: byte-exact round trips, both byte orders, the channel
// count bound, short data, the audio-channel rule and selection saves.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <optional>

#include "TestFiles.h"
#include "document/ByteOrder.h"
#include "document/DocumentOpener.h"
#include "document/KvdFormat.h"
#include "document/MessageService.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

class KvdFormatTest : public ::testing::Test {
protected:
    RecordingMessageService messages;
    ScopedMessageService install{&messages};
    TempDir dir;
    DefaultImportDialogs dialogs;

    bool open(CKestruneDoc& doc, const std::string& path) { return openDocument(doc, path, dialogs); }
};

// A hand-built file in either byte order, independent of the program's writer.
struct FileBuilder {
    bool bigEndian;
    std::vector<std::uint8_t> bytes;

    void i32(std::int32_t v) {
        for (int k = 0; k < 4; ++k) {
            const int shift = bigEndian ? 8 * (3 - k) : 8 * k;
            bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(v) >> shift));
        }
    }
    void f64(double v) {
        const auto u = std::bit_cast<std::uint64_t>(v);
        for (int k = 0; k < 8; ++k) {
            const int shift = bigEndian ? 8 * (7 - k) : 8 * k;
            bytes.push_back(static_cast<std::uint8_t>(u >> shift));
        }
    }
    void text(const std::string& s, std::size_t width) {
        for (std::size_t k = 0; k < width; ++k) bytes.push_back(k < s.size() ? static_cast<std::uint8_t>(s[k]) : 0);
    }
    void fileHeader(const std::string& marker, std::int32_t channels) {
        text(marker, 8);
        i32(channels);
        bytes.resize(bytes.size() + 500, 0);
    }
    void channel(double rate, const std::vector<std::int16_t>& samples, int audio, const std::string& name,
                 int labels = 0, std::optional<double> countOverride = {}) {
        const double count = countOverride.value_or(static_cast<double>(samples.size()));
        f64(count * 1000.0 / rate);
        f64(rate);
        f64(count);
        for (double v : {3.0, 0.0, 0.5, 2.0, -1.0}) f64(v);  // reference, c3..c0
        for (std::int32_t v : {audio, 16, 1, 2, 7, 8, 4000, labels, 3, 4, 5, 6, 9}) i32(v);
        text(name, 64);
        text("mv", 64);
        i32(0);
        for (int k = 0; k < labels; ++k) label(10.0 * (k + 1), "word" + std::to_string(k));
        for (std::int16_t s : samples) {
            const auto u = static_cast<std::uint16_t>(s);
            if (bigEndian) {
                bytes.push_back(static_cast<std::uint8_t>(u >> 8));
                bytes.push_back(static_cast<std::uint8_t>(u));
            } else {
                bytes.push_back(static_cast<std::uint8_t>(u));
                bytes.push_back(static_cast<std::uint8_t>(u >> 8));
            }
        }
    }
    void label(double t, const std::string& s) {
        f64(t);
        f64(0.0);
        for (std::int32_t v : {1, 1, 0, 0, 0, 0}) i32(v);
        for (std::int32_t v : {0x1234ff, 0x80, 0x7f}) i32(v);  // colour words
        i32(-20);                                              // font height
        bytes.resize(bytes.size() + 56, 0xab);                 // rest of the font record
        text(s, 256);
    }
};

}  // namespace

TEST_F(KvdFormatTest, WrittenFileReadsBackAndRewritesByteForByte) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    const std::string first = dir.file("first.kvd"), second = dir.file("second.kvd");
    ASSERT_TRUE(doc.saveAs(first, 1));

    CKestruneDoc back;
    ASSERT_TRUE(open(back, first));
    EXPECT_EQ(back.readerName(), "RVM_PC");
    ASSERT_EQ(back.channelCount(), 3);
    for (int i = 0; i < 3; ++i) {
        const CChannel &a = doc.channel(i), &b = back.channel(i);
        EXPECT_EQ(a.m_name, b.m_name);
        EXPECT_EQ(a.m_units, b.m_units);
        EXPECT_EQ(a.m_rateHz, b.m_rateHz);
        EXPECT_EQ(a.m_durationMs, b.m_durationMs);
        EXPECT_EQ(a.m_reservedG, b.m_reservedG);
        EXPECT_EQ(a.m_reservedC, b.m_reservedC);
        EXPECT_EQ(a.m_c2, b.m_c2);
        EXPECT_TRUE(std::equal(a.m_samples.begin(), a.m_samples.end(), b.m_samples.begin(), b.m_samples.end()));
        EXPECT_EQ(b.m_viewEndSample, b.m_sampleCount);
        EXPECT_EQ(b.m_viewEndMs, b.m_durationMs);
    }
    ASSERT_EQ(back.channel(0).m_labels.size(), 4u);
    EXPECT_EQ(back.channel(0).m_labels[2].font, doc.channel(0).m_labels[2].font);
    EXPECT_EQ(back.channel(0).m_labels[2].text, "label at 250");
    EXPECT_FALSE(back.isModified());
    EXPECT_FALSE(back.needsSaveAs());

    ASSERT_TRUE(back.saveAs(second, 1));
    EXPECT_EQ(readBytes(first), readBytes(second));
    EXPECT_EQ(readBytes(first).size(), 512 + 3 * 248 + 4 * 368 + 2 * (4410 + 441 + 441));
}

TEST_F(KvdFormatTest, BigEndianFileOpensWithSameContentAndSavesLittleEndian) {
    const std::vector<std::int16_t> samples = {1, -2, 300, -32768, 32767, 0x1234};
    for (bool big : {false, true}) {
        FileBuilder b{big, {}};
        b.fileHeader(big ? "RVM_Mac" : "RVM_PC", 2);
        b.channel(11025.0, samples, 1, "Voice", 2);
        b.channel(500.0, {7, 8}, 0, "Flow");
        const std::string path = dir.file(big ? "mac.kvd" : "pc.kvd");
        writeBytes(path, b.bytes);

        CKestruneDoc doc;
        ASSERT_TRUE(open(doc, path)) << messages.lastText();
        EXPECT_EQ(doc.readerName(), big ? "RVM_Mac" : "RVM_PC");
        const CChannel& c = doc.channel(0);
        EXPECT_EQ(c.m_name, "Voice");
        EXPECT_EQ(c.m_gain, 8.0);
        EXPECT_EQ(c.m_bandwidthHz, 4000.0);
        EXPECT_EQ(c.m_reference, 3.0);
        EXPECT_EQ(c.m_reservedA, 1);
        EXPECT_EQ(c.m_reservedG, 9);
        EXPECT_TRUE(std::equal(samples.begin(), samples.end(), c.m_samples.begin(), c.m_samples.end()));
        ASSERT_EQ(c.m_labels.size(), 2u);
        EXPECT_EQ(c.m_labels[1].timeMs, 20.0);
        EXPECT_EQ(c.m_labels[1].text, "word1");
        EXPECT_EQ(c.m_labels[0].font.height, -20);
        if (big) {
            // Colour from the low byte of each word; only the font height is taken.
            EXPECT_EQ(c.m_labels[0].red, 0xff);
            EXPECT_EQ(c.m_labels[0].font.face(), "Arial");
            EXPECT_TRUE(doc.foreignMark());
            EXPECT_TRUE(doc.needsSaveAs());
        } else {
            EXPECT_EQ(c.m_labels[0].red, 0x1234ff);
            EXPECT_EQ(c.m_labels[0].font.faceName[0], static_cast<char>(0xab));
            EXPECT_FALSE(doc.needsSaveAs());
        }
        const std::string out = dir.file("out.kvd");
        ASSERT_TRUE(doc.saveAs(out, 1));
        const auto bytes = readBytes(out);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.data())), "RVM_PC");
        EXPECT_FALSE(doc.needsSaveAs());
    }
}

// A channel long enough to be read by several threads (each part converted
// on its own), followed by a short one that must start where the long one
// ends; an odd count leaves a tail beyond the eight-sample steps of the swap.
TEST_F(KvdFormatTest, LongChannelsReadInPartsKeepEverySampleInPlace) {
    std::vector<std::int16_t> samples(std::size_t{17} * 1024 * 1024 + 13);
    std::uint32_t x = 5;
    for (auto& v : samples) {
        x = x * 1664525u + 1013904223u;
        v = static_cast<std::int16_t>(x >> 16);
    }
    for (bool big : {false, true}) {
        FileBuilder b{big, {}};
        b.fileHeader(big ? "RVM_Mac" : "RVM_PC", 2);
        b.channel(44100.0, samples, 1, "Long");
        b.channel(500.0, {7, -8, 9}, 0, "After", 1);
        const std::string path = dir.file("long.kvd");
        writeBytes(path, b.bytes);
        CKestruneDoc doc;
        ASSERT_TRUE(open(doc, path)) << messages.lastText();
        EXPECT_TRUE(std::equal(samples.begin(), samples.end(), doc.channel(0).m_samples.begin(),
                               doc.channel(0).m_samples.end()))
            << big;
        EXPECT_EQ(doc.channel(1).m_name, "After");
        EXPECT_EQ(doc.channel(1).m_samples[1], -8);
        ASSERT_EQ(doc.channel(1).m_labels.size(), 1u);

        // Cut inside the long channel's last part: short data, as before.
        b.bytes.resize(512 + 248 + samples.size() * 2 - 1000);
        writeBytes(path, b.bytes);
        CKestruneDoc cut;
        messages.clear();
        EXPECT_FALSE(open(cut, path));
    }
}

TEST_F(KvdFormatTest, ChannelCountBoundIsNineteen) {
    for (int count : {19, 20, 0, -1}) {
        FileBuilder b{false, {}};
        b.fileHeader("RVM_PC", count);
        for (int i = 0; i < std::max(count, 0); ++i) b.channel(8000.0, {1, 2, 3}, 0, "c" + std::to_string(i));
        const std::string path = dir.file("n.kvd");
        writeBytes(path, b.bytes);
        CKestruneDoc doc;
        messages.clear();
        const bool ok = open(doc, path);
        EXPECT_EQ(ok, count == 19) << count;
        if (!ok) {
            EXPECT_EQ(messages.lastText(), "Wrong channel number.\nEither is zero or is more than 20.");
        }
    }
}

TEST_F(KvdFormatTest, ShortDataIsReportedForPcAndSilentForMac) {
    for (bool big : {false, true}) {
        // A sample count far beyond the file: short data, never an allocation of that size.
        for (double count : {7.0, 1e15, -4.0, 2.5}) {
            FileBuilder b{big, {}};
            b.fileHeader(big ? "RVM_Mac" : "RVM_PC", 1);
            b.channel(11025.0, {1, 2, 3, 4, 5, 6}, 1, "x", 0, count);
            const std::string path = dir.file("short.kvd");
            writeBytes(path, b.bytes);
            CKestruneDoc doc;
            messages.clear();
            EXPECT_FALSE(open(doc, path)) << big << " " << count << " read by " << doc.readerName();
            if (big) {
                EXPECT_TRUE(messages.texts().empty());
            } else {
                EXPECT_EQ(messages.lastText(), "Incorrect number of data was read");
            }
        }
    }
    // A label count past the end of the file is short data too.
    FileBuilder b{false, {}};
    b.fileHeader("RVM_PC", 1);
    b.channel(11025.0, {1, 2}, 1, "x", 0);
    std::memcpy(b.bytes.data() + 512 + 92, "\xff\xff\xff\x7f", 4);
    writeBytes(dir.file("labels.kvd"), b.bytes);
    CKestruneDoc doc;
    EXPECT_FALSE(open(doc, dir.file("labels.kvd")));
    EXPECT_EQ(messages.lastText(), "Incorrect number of data was read");
}

// Only short sample data is silent for a Mac file: a channel header or a
// label record cut short is reported in both byte orders.
TEST_F(KvdFormatTest, CutHeadersAndLabelsAreReportedInBothByteOrders) {
    for (bool big : {false, true}) {
        FileBuilder b{big, {}};
        b.fileHeader(big ? "RVM_Mac" : "RVM_PC", 2);
        b.channel(11025.0, {1, 2, 3}, 1, "first", 2);
        b.channel(11025.0, {4, 5}, 0, "second", 1);
        const std::size_t secondHeader = 512 + 248 + 2 * 368 + 6;
        const std::size_t cuts[] = {512 + 100, 512 + 248 + 368 + 17, secondHeader + 247, secondHeader + 248 + 200};
        for (const std::size_t cut : cuts) {
            writeBytes(dir.file("cut.kvd"), std::vector<std::uint8_t>(b.bytes.begin(), b.bytes.begin() + cut));
            CKestruneDoc doc;
            messages.clear();
            EXPECT_FALSE(open(doc, dir.file("cut.kvd"))) << big << " cut at " << cut;
            EXPECT_EQ(messages.texts(), std::vector<std::string>{"Incorrect number of data was read"})
                << big << " cut at " << cut;
        }
        // A label count beyond the end of the file.
        std::vector<std::uint8_t> bytes = b.bytes;
        const std::uint8_t huge[4] = {0x00, 0x10, 0x00, 0x00};
        std::memcpy(bytes.data() + 512 + 92, huge, 4);
        writeBytes(dir.file("labels.kvd"), bytes);
        CKestruneDoc doc;
        messages.clear();
        EXPECT_FALSE(open(doc, dir.file("labels.kvd")));
        EXPECT_EQ(messages.texts(), std::vector<std::string>{"Incorrect number of data was read"}) << big;
    }
}

TEST_F(KvdFormatTest, AudioChannelRuleTakesFirstChannelAbove8000Hz) {
    for (double rate : {8000.0, 8001.0}) {
        FileBuilder b{false, {}};
        b.fileHeader("RVM_PC", 3);
        b.channel(1000.0, {1}, 0, "a");
        b.channel(rate, {1}, 0, "b");
        b.channel(9000.0, {1}, 0, "c");
        writeBytes(dir.file("rule.kvd"), b.bytes);
        CKestruneDoc doc;
        ASSERT_TRUE(open(doc, dir.file("rule.kvd")));
        EXPECT_EQ(doc.audioChannelIndex(), rate > 8000.0 ? 1 : 2);
    }
    FileBuilder none{false, {}};
    none.fileHeader("RVM_PC", 2);
    none.channel(8000.0, {1}, 0, "a");
    none.channel(500.0, {1}, 0, "b");
    writeBytes(dir.file("none.kvd"), none.bytes);
    CKestruneDoc doc;
    ASSERT_TRUE(open(doc, dir.file("none.kvd")));
    EXPECT_EQ(doc.audioChannelIndex(), -1);
}

TEST_F(KvdFormatTest, SelectionSaveRebasesDurationsSamplesAndLabelsWithBothEndsIncluded) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    for (int i = 0; i < 3; ++i) {
        CChannel& c = doc.channel(i);
        c.m_selStartMs = 100.0;
        c.m_selEndMs = 250.5;
        c.m_selStartSample = 100.0 * c.m_rateHz / 1000.0;
        c.m_selEndSample = 250.5 * c.m_rateHz / 1000.0;
    }
    doc.channel(2).m_inUse = 0;  // not stored, not counted
    doc.setSelectionFlag(true);
    ASSERT_TRUE(doc.saveSelectionAs(dir.file("sel.kvd")));
    EXPECT_EQ(doc.path(), "");  // the document's own path does not change

    CKestruneDoc back;
    ASSERT_TRUE(open(back, dir.file("sel.kvd")));
    ASSERT_EQ(back.channelCount(), 2);
    const CChannel& c = back.channel(0);
    EXPECT_DOUBLE_EQ(c.m_durationMs, 150.5);
    EXPECT_EQ(c.m_sampleCount, std::trunc(250.5 * 11.025 - 1102.5));
    EXPECT_EQ(c.m_samples[0], doc.channel(0).m_samples[1102]);
    ASSERT_EQ(c.m_labels.size(), 2u);  // at 100 (start) and at 250.5 (end)
    EXPECT_EQ(c.m_labels[0].timeMs, 0.0);
    EXPECT_EQ(c.m_labels[1].timeMs, 150.5);
}

TEST_F(KvdFormatTest, ForeignMarkersAndGarbageAreNotMyType) {
    CKestruneDoc doc;
    writeBytes(dir.file("x.kvd"), std::vector<std::uint8_t>(600, 'R'));
    EXPECT_FALSE(open(doc, dir.file("x.kvd")));
    EXPECT_EQ(messages.lastText(), "Wrong file type.");
    EXPECT_EQ(messages.beeps(), 1);

    writeBytes(dir.file("empty.kvd"), {});
    EXPECT_FALSE(open(doc, dir.file("empty.kvd")));
    EXPECT_EQ(messages.lastText(), "The file has zero length.");
}
