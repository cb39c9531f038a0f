// The document's channels, cursor rules and save commands.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "TestFiles.h"
#include "document/AppConfig.h"
#include "document/AtomicFileWriter.h"
#include "document/DocumentOpener.h"
#include "document/FileText.h"
#include "document/MessageService.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

class DocumentTest : public ::testing::Test {
protected:
    RecordingMessageService messages;
    ScopedMessageService install{&messages};
    TempDir dir;
};

}  // namespace

TEST(ChannelTest, DefaultsOfANewChannelAndDocument) {
    const CChannel c;
    EXPECT_EQ(c.m_rateHz, 11025.0);
    EXPECT_EQ(c.m_reservedB, 100);
    EXPECT_EQ(c.m_units, "mv");
    EXPECT_EQ(c.m_gain, 8.0);
    EXPECT_EQ(c.m_bandwidthHz, 5500.0);
    EXPECT_EQ(c.m_converterRange, 2500.0);
    EXPECT_EQ(c.m_converterFullScale, 32768.0);
    EXPECT_EQ(c.m_c1, 1.0);
    const CKestruneDoc doc;
    EXPECT_EQ(doc.channelCount(), 0);
    EXPECT_TRUE(doc.untitledMark());
    EXPECT_FALSE(doc.foreignMark());
    EXPECT_EQ(doc.fileTypeIndex(), 1);
    EXPECT_FALSE(doc.holdsData());
}

TEST(ChannelTest, CursorIsLimitedToTheChannelAndCollapsesTheSelection) {
    CChannel c;
    fillChannel(c, 1000.0, 100, 5);  // 100 ms
    c.m_reference = 10.0;
    c.m_selStartMs = 5.0;
    c.m_selEndMs = 50.0;
    c.setCursorTime(250.0);
    EXPECT_EQ(c.m_cursorSample, 100.0);
    EXPECT_EQ(c.m_cursorMs, 100.0);
    EXPECT_EQ(c.m_selStartMs, c.m_selEndMs);
    EXPECT_EQ(c.m_currentReading, c.m_samples[99] - 10.0);
    c.setCursorTime(-3.0);
    EXPECT_EQ(c.m_cursorSample, 0.0);
    EXPECT_EQ(c.m_cursorMs, 0.0);
    c.setCursorSample(42.0);
    EXPECT_EQ(c.m_cursorMs, 42.0);
    EXPECT_EQ(c.m_currentReading, c.m_samples[42] - 10.0);
    // sample at time: truncation of t × count ÷ duration, stored as the reading
    EXPECT_EQ(c.sampleAt(42.9), c.m_samples[42]);
    EXPECT_EQ(c.m_currentReading, c.m_samples[42]);

    CChannel empty;  // duration 0: no time-to-sample mapping, nothing moves
    empty.setCursorTime(5.0);
    EXPECT_EQ(empty.m_cursorSample, 0.0);
    EXPECT_EQ(empty.sampleAt(1.0), 0.0);
}

TEST(ChannelTest, CalibratedValueAppliesRangeGainAndCubic) {
    CChannel c;
    c.m_converterRange = 2500.0;
    c.m_converterFullScale = 32768.0;
    c.m_gain = 2.0;
    c.m_c3 = 1.0;
    c.m_c2 = 2.0;
    c.m_c1 = 3.0;
    c.m_c0 = 4.0;
    const double x = 2500.0 / 32768.0 * 1000.0 / 2.0;
    EXPECT_DOUBLE_EQ(c.calibrated(1000.0), x * x * x + 2 * x * x + 3 * x + 4);
}

TEST(ChannelTest, AssignmentIsADeepCopy) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    CChannel copy;
    copy = doc.channel(0);
    ASSERT_EQ(copy.m_samples.size(), doc.channel(0).m_samples.size());
    EXPECT_NE(copy.m_samples.data(), doc.channel(0).m_samples.data());
    copy.m_samples[0] = static_cast<std::int16_t>(doc.channel(0).m_samples[0] + 1);
    copy.m_labels[0].text = "changed";
    EXPECT_NE(doc.channel(0).m_labels[0].text, "changed");
    EXPECT_EQ(copy.m_reservedG, doc.channel(0).m_reservedG);
}

TEST_F(DocumentTest, SaveCopyAsKeepsPathAndTitleButClearsModifiedAndForeignMark) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    ASSERT_TRUE(doc.saveAs(dir.file("a.kvd"), 1));
    doc.setModified(true);
    doc.setForeignMark(true);
    ASSERT_TRUE(doc.saveCopyAs(dir.file("copy.kvd")));
    EXPECT_EQ(doc.path(), dir.file("a.kvd"));
    EXPECT_EQ(doc.title(), "a.kvd");
    EXPECT_FALSE(doc.isModified());
    EXPECT_FALSE(doc.foreignMark());
    EXPECT_EQ(readBytes(dir.file("a.kvd")), readBytes(dir.file("copy.kvd")));
}

TEST_F(DocumentTest, FailedSaveKeepsTheOldFileAndTheModifiedFlag) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    const std::string path = dir.file("keep.kvd");
    ASSERT_TRUE(doc.saveAs(path, 1));
    const auto before = readBytes(path);

    doc.setModified(true);
    EXPECT_FALSE(doc.saveAs(dir.file("no-such-folder/x.kvd"), 1));
    ASSERT_GE(messages.texts().size(), 2u);
    EXPECT_EQ(messages.lastText(), "Error in save operation.");
    EXPECT_EQ(messages.beeps(), 1);
    EXPECT_TRUE(doc.isModified());
    EXPECT_EQ(doc.path(), path);

    // A write that fails half way leaves the previous file whole and no temporary behind.
    EXPECT_FALSE(writeFileAtomically(path, [](std::FILE* f) {
        std::fputs("partial", f);
        return false;
    }));
    EXPECT_EQ(readBytes(path), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

TEST_F(DocumentTest, FileTypeIndexTwoWritesTheFirstChannelAsWav) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    ASSERT_TRUE(doc.saveAs(dir.file("first.wav"), 2));
    const auto bytes = readBytes(dir.file("first.wav"));
    ASSERT_EQ(bytes.size(), 44u + 2 * 4410);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "RIFF");
    EXPECT_EQ(bytes[24] | (bytes[25] << 8), 11025);
    std::int16_t s0;
    std::memcpy(&s0, bytes.data() + 44, 2);
    EXPECT_EQ(s0, doc.channel(0).m_samples[0]);
}

// A pipe, a device or a folder given as a document (or found where the
// configuration file should be) is refused at once with a reason, never
// waited on.
TEST_F(DocumentTest, OpeningAPipeADeviceOrAFolderFailsAtOnceWithTheReason) {
    const std::string fifo = dir.file("f.wav");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    DefaultImportDialogs dialogs;
    CKestruneDoc doc;
    bool opened = true;
    ASSERT_TRUE(returnsWithin([&] { opened = openDocument(doc, fifo, dialogs); }, fifo)) << "the open waited";
    EXPECT_FALSE(opened);
    EXPECT_EQ(messages.texts(), std::vector<std::string>{"Cannot open the file '" + fifo +
                                                         "':\nit is a pipe (FIFO), not a regular file"});

    messages.clear();
    EXPECT_FALSE(openDocument(doc, "/dev/zero", dialogs));
    EXPECT_EQ(messages.lastText(), "Cannot open the file '/dev/zero':\nit is a device, not a regular file");
    EXPECT_FALSE(openDocument(doc, dir.path().string(), dialogs));
    EXPECT_EQ(messages.lastText(), "Cannot open the file '" + dir.path().string() + "':\nit is a folder");

    AppConfig config;
    bool read = true;
    ASSERT_TRUE(returnsWithin([&] { read = config.readFile(fifo); }, fifo)) << "the configuration read waited";
    EXPECT_FALSE(read);
}

TEST(FileTextTest, Utf8IsKeptAndEverythingElseIsReadAsWindows1252) {
    EXPECT_EQ(fileTextToUtf8("plain"), "plain");
    EXPECT_EQ(fileTextToUtf8("\xe2\x82\xac \xf0\x9f\x8e\xa4"), "\xe2\x82\xac \xf0\x9f\x8e\xa4");
    // Not UTF-8: a cut character, an overlong form, a surrogate, a lone byte.
    EXPECT_EQ(fileTextToUtf8("a\xe2\x82"), "a\xc3\xa2\xe2\x80\x9a");
    EXPECT_EQ(fileTextToUtf8("\xc0\xaf"), "\xc3\x80\xc2\xaf");
    EXPECT_EQ(fileTextToUtf8("\xed\xa0\x80"), "\xc3\xad\xc2\xa0\xe2\x82\xac");
    EXPECT_EQ(fileTextToUtf8("\x81\x9f\xff"), "\xc2\x81\xc5\xb8\xc3\xbf");
    for (const char* s : {"a\xe2\x82", "\xc0\xaf", "\xed\xa0\x80", "\x81\x9f\xff", "\xf4\x90\x80\x80"})
        EXPECT_TRUE(isValidUtf8(fileTextToUtf8(s))) << s;
}
