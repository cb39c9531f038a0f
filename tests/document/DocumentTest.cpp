// The document's channels, cursor rules and save commands.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <filesystem>

#include "TestFiles.h"
#include "document/AppConfig.h"
#include "document/AtomicFileWriter.h"
#include "document/DocumentOpener.h"
#include "document/FileText.h"
#include "document/MessageService.h"
#include "document/labels/TextDecoding.h"

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

namespace {

// The messages a save in a child process showed, and whether it succeeded.
// When the tests run as the superuser the child first becomes "nobody", so
// that folder permissions apply to it.
struct ChildSave {
    bool ok = false;
    std::vector<std::string> texts;
};

ChildSave saveInUnprivilegedChild(const std::string& path) {
    int fds[2];
    EXPECT_EQ(pipe(fds), 0);
    const pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(3);
        RecordingMessageService childMessages;
        ScopedMessageService install(&childMessages);
        CKestruneDoc doc;
        fillSampleDocument(doc);
        const bool ok = doc.saveAs(path, 1);
        std::string all;
        for (const std::string& t : childMessages.texts()) all += t + '\x1e';
        (void)!write(fds[1], all.data(), all.size());
        _exit(ok ? 0 : 1);
    }
    close(fds[1]);
    std::string all;
    char buf[4096];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;) all.append(buf, static_cast<std::size_t>(n));
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    ChildSave result;
    result.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 3) << "could not become an ordinary user";
    for (std::size_t at = 0, end; (end = all.find('\x1e', at)) != std::string::npos; at = end + 1)
        result.texts.push_back(all.substr(at, end - at));
    return result;
}

std::vector<std::string> entriesOf(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(folder)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

// A read-only file is not silently replaced, even where its folder would
// allow it: the save is refused with the failed-save report.
TEST_F(DocumentTest, SavingOverAReadOnlyFileIsRefused) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    const std::string path = dir.file("locked.kvd");
    ASSERT_TRUE(doc.saveAs(path, 1));
    const auto before = readBytes(path);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    doc.channel(0).m_name = "changed";
    doc.setModified(true);
    messages.clear();
    EXPECT_FALSE(doc.save());
    EXPECT_EQ(messages.texts(),
              (std::vector<std::string>{"Cannot create the file '" + path + "':\nthe file is read-only",
                                        "Error in save operation."}));
    EXPECT_EQ(readBytes(path), before);
    EXPECT_TRUE(doc.isModified());
    struct stat st {};
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0444u);
    EXPECT_EQ(entriesOf(dir.path()), std::vector<std::string>{"locked.kvd"});
}

// A writable file in a folder that allows no new file cannot be replaced
// safely; the report names the folder as the cause, not the file.
TEST_F(DocumentTest, AnUnwritableFolderIsNamedAsTheCause) {
    const std::filesystem::path folder = dir.path() / "shelf";
    std::filesystem::create_directory(folder);
    const std::string path = (folder / "take.kvd").string();
    CKestruneDoc doc;
    fillSampleDocument(doc);
    ASSERT_TRUE(doc.saveAs(path, 1));
    const auto before = readBytes(path);
    ASSERT_EQ(chmod(dir.path().c_str(), 0755), 0);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(folder.c_str(), 65534, 65534), 0);
        ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
    }
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0555), 0);

    const ChildSave save = saveInUnprivilegedChild(path);
    chmod(folder.c_str(), 0755);
    EXPECT_FALSE(save.ok);
    EXPECT_EQ(save.texts,
              (std::vector<std::string>{"Cannot create the file '" + path + "':\nthe folder '" + folder.string() +
                                            "' does not allow a new file in it (Permission denied); a "
                                            "save writes the new file beside the old one",
                                        "Error in save operation."}));
    EXPECT_EQ(readBytes(path), before);
}

// A save killed half way leaves no file anyone sees: the new file has no
// name while it is written. Where the filesystem needs a name, it is a
// hidden one that the next save of the same file removes, unless a save
// still running holds it.
TEST_F(DocumentTest, AKilledSaveLeavesNoVisibleTemporary) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    const std::string path = dir.file("big.kvd");
    ASSERT_TRUE(doc.saveAs(path, 1));
    const auto before = readBytes(path);

    for (const bool named : {false, true}) {
        SCOPED_TRACE(named ? "named temporaries" : "unnamed temporaries");
        const pid_t pid = fork();
        if (pid == 0) {
            useNamedTemporariesOnly(named);
            writeFileAtomically(path, [](std::FILE* f) {
                const std::vector<char> block(1 << 20, 'x');
                std::fwrite(block.data(), 1, block.size(), f);
                std::fflush(f);
                raise(SIGKILL);
                return true;
            });
            _exit(0);
        }
        int status = 0;
        waitpid(pid, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(readBytes(path), before);
        std::vector<std::string> visible;
        std::vector<std::string> hidden;
        for (const std::string& name : entriesOf(dir.path())) (name[0] == '.' ? hidden : visible).push_back(name);
        EXPECT_EQ(visible, std::vector<std::string>{"big.kvd"});
        if (!named) {
            EXPECT_TRUE(hidden.empty());
            continue;
        }
        ASSERT_EQ(hidden.size(), 1u);
        EXPECT_EQ(hidden[0].rfind(".big.kvd.sonmetra-", 0), 0u) << hidden[0];
        // Left by a save killed a minute ago: the next save removes it; one
        // that a running save holds (locked) stays.
        const std::string stale = (dir.path() / hidden[0]).string();
        const std::string busy = (dir.path() / ".big.kvd.sonmetra-BUSY00").string();
        writeBytes(busy, {1, 2, 3});
        const int busyFd = open(busy.c_str(), O_RDONLY);
        ASSERT_EQ(flock(busyFd, LOCK_EX), 0);
        const timespec minuteAgo[2] = {{time(nullptr) - 60, 0}, {time(nullptr) - 60, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, stale.c_str(), minuteAgo, 0), 0);
        ASSERT_EQ(utimensat(AT_FDCWD, busy.c_str(), minuteAgo, 0), 0);
        useNamedTemporariesOnly(true);
        EXPECT_TRUE(doc.save());
        useNamedTemporariesOnly(false);
        EXPECT_EQ(entriesOf(dir.path()), (std::vector<std::string>{".big.kvd.sonmetra-BUSY00", "big.kvd"}));
        close(busyFd);
        std::remove(busy.c_str());
    }
}

// Saving through a symbolic link replaces the file it names and keeps the link.
TEST_F(DocumentTest, ASaveThroughALinkKeepsTheLink) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    const std::string real = dir.file("real.kvd");
    const std::string link = dir.file("link.kvd");
    ASSERT_TRUE(doc.saveAs(real, 1));
    std::filesystem::create_symlink("real.kvd", link);
    doc.channel(0).m_name = "through the link";
    ASSERT_TRUE(doc.saveAs(link, 1));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    CKestruneDoc back;
    DefaultImportDialogs dialogs;
    ASSERT_TRUE(openDocument(back, real, dialogs));
    EXPECT_EQ(back.channel(0).m_name, "through the link");
}
