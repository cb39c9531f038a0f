// sonmetra-cli as a user runs it: outputs, exit codes and messages.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "../document/TestFiles.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

struct Result {
    int status;
    std::string out;
    std::string err;
};

Result run(const std::string& args, const TempDir& dir) {
    const std::string errFile = dir.file("stderr.txt");
    // A command that hangs fails (exit 124) instead of stopping the tests.
    const std::string command = "timeout 60 " + std::string(SONMETRA_CLI) + " " + args + " 2>" + errFile;
    std::FILE* pipe = popen(command.c_str(), "r");
    Result r{-1, {}, {}};
    char buf[4096];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) r.out.append(buf, n);
    const int status = pclose(pipe);
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    const auto err = readBytes(errFile);
    r.err.assign(err.begin(), err.end());
    return r;
}

class CliTest : public ::testing::Test {
protected:
    TempDir dir;
    RecordingMessageService messages;
    ScopedMessageService install{&messages};
    std::string sample;

    void SetUp() override {
        CKestruneDoc doc;
        fillSampleDocument(doc);
        sample = dir.file("sample.kvd");
        ASSERT_TRUE(doc.saveAs(sample, 1));
    }
};

}  // namespace

TEST_F(CliTest, InfoDescribesEveryChannel) {
    const Result r = run("info " + sample, dir);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("\"reader\": \"RVM_PC\""), std::string::npos);
    EXPECT_NE(r.out.find("\"name\": \"Airflow\", \"units\": \"ml/s\", \"audio\": 0, \"rate\": 1102.5"),
              std::string::npos);
    EXPECT_NE(r.out.find("\"calibration\": [0.001, -0.25, 2.5, -10]"), std::string::npos);
    EXPECT_NE(r.out.find("\"reserved\": {\"A\": 11, \"B\": 22, \"C\": -33, \"D\": 44, \"E\": 55, \"F\": 66, "
                         "\"G\": 2147483647}"),
              std::string::npos);
    EXPECT_NE(r.out.find("{\"time_ms\": 250.5, \"text\": \"label at 250\"}"), std::string::npos);
}

TEST_F(CliTest, SamplesPrintsTheChosenChannel) {
    CKestruneDoc doc;
    DefaultImportDialogs dialogs;
    ASSERT_TRUE(openDocument(doc, sample, dialogs));
    const Result r = run("samples " + sample + " --channel 3", dir);
    ASSERT_EQ(r.status, 0);
    std::string expected;
    for (std::int16_t s : doc.channel(2).m_samples) expected += std::to_string(s) + "\n";
    EXPECT_EQ(r.out, expected);
    // Default: the audio channel.
    const Result audio = run("samples " + sample, dir);
    EXPECT_EQ(audio.out.substr(0, audio.out.find('\n')), std::to_string(doc.channel(0).m_samples[0]));
}

TEST_F(CliTest, ConvertWritesTheSelectionAsSaveSelectionAsDoes) {
    const std::string out = dir.file("part.kvd");
    const Result r = run("convert " + sample + " " + out + " --from-ms 100 --to-ms 250.5", dir);
    ASSERT_EQ(r.status, 0) << r.err;

    CKestruneDoc doc;
    DefaultImportDialogs dialogs;
    ASSERT_TRUE(openDocument(doc, sample, dialogs));
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& c = doc.channel(i);
        c.m_selStartMs = 100.0;
        c.m_selEndMs = 250.5;
        c.m_selStartSample = std::trunc(100.0 * c.m_sampleCount / c.m_durationMs);
        c.m_selEndSample = std::trunc(250.5 * c.m_sampleCount / c.m_durationMs);
    }
    ASSERT_TRUE(doc.saveSelectionAs(dir.file("expected.kvd")));
    EXPECT_EQ(readBytes(out), readBytes(dir.file("expected.kvd")));

    const Result whole = run("convert " + sample + " " + dir.file("whole.kvd"), dir);
    ASSERT_EQ(whole.status, 0);
    EXPECT_EQ(readBytes(dir.file("whole.kvd")), readBytes(sample));

    const Result wav = run("convert " + sample + " " + dir.file("ch2.wav") + " --channel 2", dir);
    ASSERT_EQ(wav.status, 0);
    EXPECT_EQ(readBytes(dir.file("ch2.wav")).size(), 44u + 2 * 441);
}

TEST_F(CliTest, FailuresShowTheWorkstationsMessageAndBadUsageExitsTwo) {
    writeBytes(dir.file("junk.bin"), std::vector<std::uint8_t>(100, 0xff));
    const Result junk = run("info " + dir.file("junk.bin"), dir);
    EXPECT_EQ(junk.status, 1);
    EXPECT_EQ(junk.err, "Wrong file type.\n");

    writeBytes(dir.file("empty.kvd"), {});
    EXPECT_EQ(run("info " + dir.file("empty.kvd"), dir).err, "The file has zero length.\n");

    const Result missing = run("info " + dir.file("missing.kvd"), dir);
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("Cannot open the file"), std::string::npos);

    for (const std::string& bad : {std::string("frobnicate ") + sample, std::string("info"),
                                   "samples " + sample + " --channel 9", "samples " + sample + " --channel x",
                                   "convert " + sample + " out.txt", "convert " + sample + " o.kvd --from-ms 5"}) {
        const Result r = run(bad, dir);
        EXPECT_EQ(r.status, 2) << bad;
        EXPECT_NE(r.err.find("usage: sonmetra-cli"), std::string::npos) << bad;
    }
}

// Files a user may hand the tool by mistake: each gets the workstation's
// own message on standard error and exit 1, and nothing else.
TEST_F(CliTest, FilesOfTheWrongKindGetTheirMessage) {
    const std::string words = dir.file("words.txt");
    const std::string text = "the quick brown fox\njumps over the lazy dog\n";
    writeBytes(words, std::vector<std::uint8_t>(text.begin(), text.end()));
    const Result r = run("info " + words + " --raw-rate 8000", dir);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err,
              "The file is not a pure ascii file. Make sure that this file does not contain and header and does not "
              "have any formatting.\n");
    EXPECT_TRUE(r.out.empty());

    // An MPEG frame header over noise: libsndfile's MPEG decoder probes it
    // and complains; the user sees only the workstation's message.
    std::vector<std::uint8_t> mpeg = {0xff, 0xfb, 0x90, 0x64};
    std::uint32_t state = 99;
    for (int i = 0; i < 3000; ++i) {
        state = state * 1664525u + 1013904223u;
        mpeg.push_back(static_cast<std::uint8_t>(state >> 24));
    }
    writeBytes(dir.file("noise.mp3"), mpeg);
    const Result noise = run("info " + dir.file("noise.mp3"), dir);
    EXPECT_EQ(noise.status, 1);
    EXPECT_EQ(noise.err, "Wrong file type.\n");

    const std::string fifo = dir.file("f.wav");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const Result pipe = run("info " + fifo, dir);
    EXPECT_EQ(pipe.status, 1);
    EXPECT_EQ(pipe.err, "Cannot open the file '" + fifo + "':\nit is a pipe (FIFO), not a regular file\n");
}

// `info` is valid JSON for every file it accepts: numbers a file can hold
// but JSON cannot (NaN, infinities) are null, and names, units and labels
// in the 8-bit encoding of the format's home system become UTF-8.
TEST_F(CliTest, InfoIsValidJsonForNonFiniteNumbersAndEightBitText) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    CChannel& c = doc.channel(0);
    c.m_name =
        "D\xe9"
        "bit \xab"
        "1\xbb";                                 // "Débit «1»" in Windows-1252
    c.m_units = "\xb5V";                         // "µV"
    c.m_labels[0].text = "5 \x80, caf\xc3\xa9";  // "5 €, " then UTF-8 "café", not valid as a whole
    doc.channel(1).m_name = "na\xc3\xafve";      // already UTF-8: kept as it is
    doc.channel(1).m_labels.clear();
    c.m_c2 = std::nan("");
    c.m_reference = HUGE_VAL;
    c.m_c0 = -HUGE_VAL;
    const std::string path = dir.file("odd.kvd");
    ASSERT_TRUE(doc.saveAs(path, 1));

    const Result r = run("info " + path, dir);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("\"name\": \"D\xc3\xa9"
                         "bit \xc2\xab"
                         "1\xc2\xbb\", \"units\": \"\xc2\xb5V\""),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("\"text\": \"5 \xe2\x82\xac, caf\xc3\x83\xc2\xa9\""), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("\"name\": \"na\xc3\xafve\""), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("\"reference\": null, \"calibration\": [0.001, null, 2.5, null]"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("nan"), std::string::npos);
    EXPECT_EQ(r.out.find("inf"), std::string::npos);

    // A strict parser (no NaN, no Infinity, UTF-8 only) takes the whole output.
    const std::string json = dir.file("info.json");
    writeBytes(json, std::vector<std::uint8_t>(r.out.begin(), r.out.end()));
    const std::string check =
        "python3 -c 'import json,sys\n"
        "def bad(c): raise ValueError(c)\n"
        "json.loads(open(sys.argv[1], encoding=\"utf-8\", errors=\"strict\").read(), parse_constant=bad)' " +
        json;
    EXPECT_EQ(std::system(check.c_str()), 0) << r.out;
}

// A channel whose rate no analysis can use (a flipped bit in the rate, a
// rate of 0, NaN, -1, infinity or 1e300): every analysis refuses it at once
// with what is wrong, `info` still describes the file, and nothing hangs
// or overflows.
TEST_F(CliTest, AnalysesRefuseARateOutsideTheRangeAndSayWhatIsWrong) {
    const std::pair<double, std::string> rates[] = {
        {std::bit_cast<double>(std::bit_cast<std::uint64_t>(11025.0) ^ (std::uint64_t{0x40} << 56)),
         "is 6.132859823e-305 Hz"},
        {0.0, "is 0 Hz (no rate at all)"},
        {std::nan(""), "is not a number"},
        {-1.0, "is -1 Hz (a negative rate)"},
        {HUGE_VAL, "is infinite"},
        {1e300, "is 1e+300 Hz"},
    };
    for (const auto& [rate, what] : rates) {
        CKestruneDoc doc;
        fillSampleDocument(doc);
        doc.channel(0).m_rateHz = rate;
        const std::string path = dir.file("rate.kvd");
        ASSERT_TRUE(doc.saveAs(path, 1));
        const std::string message = "The sample rate of channel 1 (" + doc.channel(0).m_name + ") " + what +
                                    ". A channel's sample rate must be a number from 1 Hz to 1000000 Hz.\n";
        for (const std::string& command :
             {"intensity " + path, "pitch " + path, "spectrum " + path + " --at-ms 100", "lpc " + path + " --at-ms 100",
              "spectrogram " + path + " --columns 10 --points 16"}) {
            const Result r = run(command, dir);
            EXPECT_EQ(r.status, 1) << command << " at " << what;
            EXPECT_EQ(r.err, message) << command;
            EXPECT_TRUE(r.out.empty()) << command;
        }
        const Result info = run("info " + path, dir);
        EXPECT_EQ(info.status, 0) << what;
        EXPECT_TRUE(info.err.empty()) << info.err;
        // The other channels, at their own rates, are analysed as usual.
        EXPECT_EQ(run("intensity " + path + " --channel 2 --every 1000", dir).status, 0) << what;
    }
}
