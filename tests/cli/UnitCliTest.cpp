// "sonmetra-cli unit ..." as a user runs it, on the simulated unit: what it
// prints, the trace of its transfers, the document it records, its messages
// and exit codes. The settings folder is the test's own.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "../document/TestFiles.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"
#include "tests/support/CommandRun.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

class UnitCliTest : public ::testing::Test {
protected:
    CommandRun run(const std::string& args) {
        return runCommand(
            "env -u SONMETRA_UNIT XDG_CONFIG_HOME=" + dir.path().string() + " " + SONMETRA_CLI + " " + args,
            dir.file("stderr.txt"));
    }
    std::vector<std::string> trace() const {
        std::ifstream in(dir.file("trace.txt"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    std::string traceOption() const { return " --trace " + dir.file("trace.txt"); }

    TempDir dir;
    RecordingMessageService messages;
    ScopedMessageService install{&messages};
};

const char* kWrongSource =
    "Wrong input source.\nPlease refer to the Record/Play window to select a proper\ninput source.\n";

}  // namespace

TEST_F(UnitCliTest, IdentifyPrintsTheSizeAndTracesOneRequest) {
    for (const int size : {5, 9, 13, 16}) {
        const CommandRun r = run("unit identify --unit simulated:" + std::to_string(size) + traceOption());
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, std::to_string(size) + "\n");
        EXPECT_EQ(trace(), std::vector<std::string>{"control in request=0xB7 value=0 index=64 length=64"});
    }
}

TEST_F(UnitCliTest, IdentifyWithoutAUnitPrintsMinusOneAndSaysWhy) {
    // The settings name an id that no device has.
    std::filesystem::create_directories(dir.path() / "Melvarco");
    std::ofstream(dir.path() / "Melvarco" / "Sonmetra.conf") << "[UsbUnit]\nRvm-0=1209:7fff\n";
    const CommandRun r = run("unit identify --unit usb" + traceOption());
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "-1\n");
    EXPECT_NE(r.err.find("1209:7fff"), std::string::npos) << r.err;
    EXPECT_TRUE(trace().empty());
}

TEST_F(UnitCliTest, TheDeviceNameAndIdsComeFromTheWorkstationsSettings) {
    // The workstation's settings name its working folder, whose configuration record chooses Ezusb-0.
    AppConfig config;
    config.m_driverSetting = 1;
    ASSERT_TRUE(config.writeFile(dir.file("SonmetraConf.cfg")));
    std::filesystem::create_directories(dir.path() / "Melvarco");
    std::ofstream(dir.path() / "Melvarco" / "Sonmetra.conf")
        << "[General%20Strings%20Section]\nTemp%20Directory=" << dir.path().string()
        << "\n\n[UsbUnit]\nEzusb-0=1209:7ffd\nSimulated=0\n";
    const CommandRun r = run("unit identify");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "-1\n");
    EXPECT_NE(r.err.find("USB unit Ezusb-0 (1209:7ffd) at \\\\.\\Ezusb-0"), std::string::npos) << r.err;
    // --unit chooses the simulated unit over the settings.
    const CommandRun simulated = run("unit identify --unit simulated:5");
    EXPECT_EQ(simulated.out, "5\n");
}

TEST_F(UnitCliTest, RecordWritesEveryInputOfTheRowAtItsRate) {
    const std::string out = dir.file("unit.kvd");
    const CommandRun r =
        run("unit record " + out + " --ms 1500 --mux 2 --source Line --unit simulated:5" + traceOption());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out,
              "channel\tname\trate_hz\tsamples\n1\tAudio\t11000\t16500\n2\tch1\t11000\t16500\n"
              "3\tch2\t11000\t16500\n4\tch3\t5500\t8250\n5\tch4\t5500\t8250\n");
    const auto lines = trace();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "control in request=0xB7 value=0 index=64 length=64");
    EXPECT_EQ(lines[1],
              "control out request=0xB1 value=0 index=320 length=320 data=00 01 02 03 00 01 02 04 00 01 "
              "02 03 00 01 02 04");
    EXPECT_EQ(lines[2], "control out request=0xB2 value=0 index=0 length=0");
    EXPECT_EQ(lines[3], "bulk in pipe=8 length=176128");  // 4125 rows of 5504 a unit
    EXPECT_EQ(lines[4], "control out request=0xB4 value=0 index=0 length=0");

    CKestruneDoc doc;
    DefaultImportDialogs dialogs;
    ASSERT_TRUE(openDocument(doc, out, dialogs));
    ASSERT_EQ(doc.channelCount(), 5);
    EXPECT_EQ(doc.channel(0).m_name, "Audio");
    EXPECT_EQ(doc.channel(0).m_audio, 1);
    EXPECT_EQ(doc.channel(4).m_name, "ch4");
    EXPECT_DOUBLE_EQ(doc.channel(4).m_durationMs, 1500.0);
}

TEST_F(UnitCliTest, PlaySendsTheAudioChannelInBlocks) {
    CKestruneDoc doc;
    fillSampleDocument(doc);  // audio at 11025 Hz
    const std::string file = dir.file("sample.kvd");
    ASSERT_TRUE(doc.saveAs(file, 1));
    const CommandRun r = run("unit play " + file + " --unit simulated:9" + traceOption());
    ASSERT_EQ(r.status, 0) << r.err;
    const auto lines = trace();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines.front(), "control out request=0xB3 value=75 index=0 length=0");
    EXPECT_EQ(lines.back(), "control out request=0xB4 value=0 index=0 length=0");
    const auto bytes = static_cast<std::size_t>(2 * doc.channel(doc.audioChannelIndex()).m_sampleCount);
    std::size_t blocks = 0;
    for (const auto& line : lines) blocks += line.rfind("bulk out pipe=1 length=44032 ", 0) == 0 ? 1 : 0;
    EXPECT_EQ(blocks, bytes / 44032);
    EXPECT_EQ(lines.size(), 2 + bytes / 44032 + ((bytes % 44032) >= 64 ? 1 : 0));
}

TEST_F(UnitCliTest, RefusalsShowTheirMessagesAndExitOne) {
    const std::string out = dir.file("never.kvd");
    CommandRun r = run("unit record " + out + " --ms 100 --mux 3 --unit simulated:9" + traceOption());
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "Unknown multiplex type.\n");
    EXPECT_EQ(trace(), std::vector<std::string>{"control in request=0xB7 value=0 index=64 length=64"});
    r = run("unit record " + out + " --ms 100 --source Computer --unit simulated:9");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, kWrongSource);
    r = run("unit record " + out + " --ms 100 --unit usb");  // no device with the built-in id
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err.rfind("Error in opening the requested USB device.\nPlease unplug the device, wait a few seconds "
                          "and replug the device.\n",
                          0),
              0u)
        << r.err;
    EXPECT_FALSE(std::filesystem::exists(out));

    for (const char* bad : {"unit", "unit fly", "unit identify extra", "unit record " /* no file */,
                            "unit record x.kvd", "unit record x.kvd --ms 0", "unit record x.kvd --ms 10 --mux 4",
                            "unit identify --unit simulated:7", "unit identify --unit simulated"}) {
        r = run(bad);
        EXPECT_EQ(r.status, 2) << bad;
        EXPECT_NE(r.err.find("usage:"), std::string::npos) << bad;
    }
}
