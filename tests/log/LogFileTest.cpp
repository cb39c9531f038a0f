// The log file: format, round trip and refusals.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>

#include "document/MessageService.h"
#include "log/LogFile.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

class LogFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_folder =
            std::filesystem::temp_directory_path() / ("sonmetra-logfile-" + std::to_string(::getpid()) + "-" +
                                                      ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(m_folder);
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }
    std::string write(const std::string& name, const std::string& bytes) {
        const auto path = (m_folder / name).string();
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

    std::filesystem::path m_folder;
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
};

TEST_F(LogFileTest, NumbersAreWrittenWithThirtyWideTwoDecimalsAndRowsEndWithCrLf) {
    const std::vector<LogRow> rows = {
        {LogCell::makeText("Entry"), LogCell::makeText("Measurement"), LogCell::makeText("Value 1")},
        {LogCell::makeText("Entry 1"), LogCell::makeText("Marker Entry: time"), LogCell::makeNumber(1234.5678)},
        {LogCell::makeText("Entry 2"), LogCell(), LogCell::makeNumber(-0.005)},
    };
    const std::string text = formatLogText(rows);
    const std::string expected =
        "Entry\tMeasurement\tValue 1\t\r\n"
        "Entry 1\tMarker Entry: time\t" +
        std::string(23, ' ') +
        "1234.57\t\r\n"
        "Entry 2\t\t" +
        std::string(25, ' ') + "-0.01\t\r\n";
    EXPECT_EQ(text, expected);
}

TEST_F(LogFileTest, OneEntryWrittenAndReadBackKeepsItsValuesToTwoDecimals) {
    const auto path = (m_folder / "one.log").string();
    const std::vector<LogRow> rows = {
        {LogCell::makeText("Entry"), LogCell::makeText("Measurement"), LogCell::makeText("Value 1"),
         LogCell::makeText("Value 2")},
        {LogCell::makeText("Entry 1"), LogCell::makeText("Duration Entry: start, end, duration"),
         LogCell::makeNumber(12.346), LogCell::makeNumber(98765.4321)},
    };
    ASSERT_TRUE(writeLogFile(path, rows));

    LogText back;
    ASSERT_TRUE(readLogFile(path, back));
    ASSERT_EQ(back.lines.size(), 2u);
    EXPECT_EQ(back.columns, 4);
    EXPECT_EQ(back.lines[1][1], "Duration Entry: start, end, duration");
    double v = 0;
    ASSERT_TRUE(parseLogNumber(back.lines[1][2], v));
    EXPECT_DOUBLE_EQ(v, 12.35);
    ASSERT_TRUE(parseLogNumber(back.lines[1][3], v));
    EXPECT_DOUBLE_EQ(v, 98765.43);
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(LogFileTest, BareLineFeedsAndEmptyLinesReadLikeCrLf) {
    const std::string body = "Entry\tMeasurement\tValue 1\t\nEntry 1\tMarker Entry: time\t   5.00\t\n";
    std::string crlf = body;
    for (std::size_t at = 0; (at = crlf.find('\n', at)) != std::string::npos; at += 2) crlf.insert(at, "\r");
    LogText lf, both, oldMac;
    ASSERT_EQ(readLogText(write("lf.log", "\n\n" + body + "\n"), lf), LogReadStatus::Ok);
    ASSERT_EQ(readLogText(write("crlf.log", crlf), both), LogReadStatus::Ok);
    std::string cr = body;
    std::replace(cr.begin(), cr.end(), '\n', '\r');
    ASSERT_EQ(readLogText(write("cr.log", cr), oldMac), LogReadStatus::Ok);
    EXPECT_EQ(lf.lines, both.lines);
    EXPECT_EQ(cr.size(), body.size());
    EXPECT_EQ(oldMac.lines, both.lines);
    EXPECT_EQ(both.lines.size(), 2u);
    EXPECT_EQ(both.lines[1][2], "   5.00");
}

TEST_F(LogFileTest, RefusalsShowTheirMessages) {
    LogText out;
    EXPECT_FALSE(readLogFile((m_folder / "absent.log").string(), out));
    EXPECT_EQ(m_messages.lastText(), loadString(IDS_FILE_OPEN_ERROR));

    EXPECT_FALSE(readLogFile(write("empty.log", ""), out));
    EXPECT_EQ(m_messages.lastText(), loadString(IDS_ZERO_LENGTH_FILE));
    EXPECT_EQ(m_messages.beeps(), 1);

    // Two TABs in every line is not enough, however many lines.
    EXPECT_FALSE(readLogFile(write("two.txt", "a\tb\tc\r\n1\t2\t3\r\n\r\nx\ty\tz\n"), out));
    EXPECT_EQ(m_messages.lastText(), loadString(IDS_INVALID_LOG_FILE));
    EXPECT_TRUE(out.lines.empty());

    // Three TABs in one line is.
    EXPECT_TRUE(readLogFile(write("three.txt", "a\tb\r\n1\t2\t3\t\r\n"), out));
    EXPECT_EQ(out.columns, 3);
    EXPECT_EQ(m_messages.texts().size(), 3u);
}

TEST_F(LogFileTest, LastCellWithoutItsTabIsKept) {
    LogText out;
    ASSERT_EQ(readLogText(write("notab.log", "h\ta\tb\tc\r\nr\t1\t2\t3\t4"), out), LogReadStatus::Ok);
    EXPECT_EQ(out.columns, 5);
    EXPECT_EQ(out.lines[1].back(), "4");
}

}  // namespace
}  // namespace sonmetra

namespace sonmetra {
namespace {

// A read-only log file is not replaced: the save is refused with the
// failed-save report and the file keeps what it held.
TEST_F(LogFileTest, AReadOnlyLogIsNotReplaced) {
    const std::string path = write("kept.txt", "old\tlog\tfile\there\r\n");
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    LogRow row(4);
    row[0].kind = LogCell::Kind::Text;
    row[0].text = "new";
    EXPECT_FALSE(writeLogFile(path, {row}));
    EXPECT_EQ(m_messages.texts(),
              std::vector<std::string>{"Cannot create the file '" + path + "':\nthe file is read-only"});
    std::ifstream in(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "old\tlog\tfile\there\r\n");
}

// Opening a pipe as a log file fails at once instead of waiting for a writer.
TEST_F(LogFileTest, APipeIsRefusedAtOnce) {
    const std::string fifo = (m_folder / "log.txt").string();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    LogText text;
    auto done = std::async(std::launch::async, [&] { return readLogText(fifo, text); });
    if (done.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        ADD_FAILURE() << "the read waited on the pipe";
        while (done.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
            const int fd = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
            if (fd >= 0) ::close(fd);
        }
    }
    EXPECT_EQ(done.get(), LogReadStatus::OpenError);
}

}  // namespace
}  // namespace sonmetra
