// sonmetra-cli as a user runs it: outputs, exit codes and messages.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zlib.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "../document/TestFiles.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"
#include "tests/support/CommandRun.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

// A command that hangs fails (exit 124) instead of stopping the tests.
CommandRun run(const std::string& args, const TempDir& dir) {
    return runCommand("timeout 60 " + std::string(SONMETRA_CLI) + " " + args, dir.file("stderr.txt"));
}

class CliTest : public SampleFileTest {};

}  // namespace

TEST_F(CliTest, InfoDescribesEveryChannel) {
    const CommandRun r = run("info " + sample, dir);
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
    const CommandRun r = run("samples " + sample + " --channel 3", dir);
    ASSERT_EQ(r.status, 0);
    std::string expected;
    for (std::int16_t s : doc.channel(2).m_samples) expected += std::to_string(s) + "\n";
    EXPECT_EQ(r.out, expected);
    // Default: the audio channel.
    const CommandRun audio = run("samples " + sample, dir);
    EXPECT_EQ(audio.out.substr(0, audio.out.find('\n')), std::to_string(doc.channel(0).m_samples[0]));
}

TEST_F(CliTest, ConvertWritesTheSelectionAsSaveSelectionAsDoes) {
    const std::string out = dir.file("part.kvd");
    const CommandRun r = run("convert " + sample + " " + out + " --from-ms 100 --to-ms 250.5", dir);
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

    const CommandRun whole = run("convert " + sample + " " + dir.file("whole.kvd"), dir);
    ASSERT_EQ(whole.status, 0);
    EXPECT_EQ(readBytes(dir.file("whole.kvd")), readBytes(sample));

    const CommandRun wav = run("convert " + sample + " " + dir.file("ch2.wav") + " --channel 2", dir);
    ASSERT_EQ(wav.status, 0);
    EXPECT_EQ(readBytes(dir.file("ch2.wav")).size(), 44u + 2 * 441);
}

TEST_F(CliTest, FailuresShowTheWorkstationsMessageAndBadUsageExitsTwo) {
    writeBytes(dir.file("junk.bin"), std::vector<std::uint8_t>(100, 0xff));
    const CommandRun junk = run("info " + dir.file("junk.bin"), dir);
    EXPECT_EQ(junk.status, 1);
    EXPECT_EQ(junk.err, "Wrong file type.\n");

    writeBytes(dir.file("empty.kvd"), {});
    EXPECT_EQ(run("info " + dir.file("empty.kvd"), dir).err, "The file has zero length.\n");

    const CommandRun missing = run("info " + dir.file("missing.kvd"), dir);
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("Cannot open the file"), std::string::npos);

    for (const std::string& bad : {std::string("frobnicate ") + sample, std::string("info"),
                                   "samples " + sample + " --channel 9", "samples " + sample + " --channel x",
                                   "convert " + sample + " out.txt", "convert " + sample + " o.kvd --from-ms 5"}) {
        const CommandRun r = run(bad, dir);
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
    const CommandRun r = run("info " + words + " --raw-rate 8000", dir);
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
    const CommandRun noise = run("info " + dir.file("noise.mp3"), dir);
    EXPECT_EQ(noise.status, 1);
    EXPECT_EQ(noise.err, "Wrong file type.\n");

    const std::string fifo = dir.file("f.wav");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const CommandRun pipe = run("info " + fifo, dir);
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

    const CommandRun r = run("info " + path, dir);
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
            const CommandRun r = run(command, dir);
            EXPECT_EQ(r.status, 1) << command << " at " << what;
            EXPECT_EQ(r.err, message) << command;
            EXPECT_TRUE(r.out.empty()) << command;
        }
        const CommandRun info = run("info " + path, dir);
        EXPECT_EQ(info.status, 0) << what;
        EXPECT_TRUE(info.err.empty()) << info.err;
        // The other channels, at their own rates, are analysed as usual.
        EXPECT_EQ(run("intensity " + path + " --channel 2 --every 1000", dir).status, 0) << what;
    }
}

// A window and step that would take billions of sums are refused at once,
// saying what to change, instead of keeping the terminal busy for hours.
TEST_F(CliTest, IntensityRefusesAContourOfCountlessSums) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    const std::string path = dir.file("sample.kvd");
    ASSERT_TRUE(doc.saveAs(path, 1));
    const CommandRun r = run("intensity " + path + " --window-ms 200 --step-ms 0.0002", dir);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err,
              "The intensity contour of channel 1 (Audio) would sum 2.2e+09 samples (a window of 200 ms every 0.0002 "
              "ms), too many to compute. Make the window shorter or the step longer.\n");
    EXPECT_TRUE(r.out.empty());
    EXPECT_EQ(run("intensity " + path + " --window-ms 200 --step-ms 0.01", dir).status, 0);
}

namespace {

// The level table of the spectrogram command: one row of doubles per column.
std::vector<std::vector<double>> levelTable(const std::string& out) {
    std::vector<std::vector<double>> rows;
    std::istringstream in(out);
    std::string line;
    std::getline(in, line);  // heading
    while (std::getline(in, line) && line.rfind("frame", 0) != 0) {
        std::vector<double> row;
        const char* p = line.c_str();
        std::strtol(p, const_cast<char**>(&p), 10);  // column number
        while (*p == '\t') row.push_back(std::strtod(p + 1, const_cast<char**>(&p)));
        rows.push_back(row);
    }
    return rows;
}

std::uint32_t be32(const std::vector<std::uint8_t>& b, std::size_t at) {
    return static_cast<std::uint32_t>(b[at]) << 24 | static_cast<std::uint32_t>(b[at + 1]) << 16 |
           static_cast<std::uint32_t>(b[at + 2]) << 8 | b[at + 3];
}

struct Picture {
    std::uint32_t width = 0, height = 0;
    int colourType = -1;
    std::vector<std::uint8_t> rows;  // filter byte and pixels of every row
};

// A PNG read the long way: every chunk's CRC checked, the IDAT stream inflated.
Picture readPng(const std::vector<std::uint8_t>& b) {
    Picture pic;
    EXPECT_EQ(std::memcmp(b.data(), "\x89PNG\r\n\x1a\n", 8), 0);
    std::vector<std::uint8_t> stream;
    bool ended = false;
    for (std::size_t at = 8; at + 12 <= b.size();) {
        const std::uint32_t n = be32(b, at);
        const std::string type(reinterpret_cast<const char*>(&b[at + 4]), 4);
        EXPECT_EQ(crc32(0, &b[at + 4], n + 4), be32(b, at + 8 + n)) << type;
        if (type == "IHDR") {
            pic.width = be32(b, at + 8);
            pic.height = be32(b, at + 12);
            pic.colourType = b[at + 17];
        } else if (type == "IDAT") {
            stream.insert(stream.end(), b.begin() + static_cast<long>(at + 8),
                          b.begin() + static_cast<long>(at + 8 + n));
        } else if (type == "IEND") {
            ended = true;
        }
        at += 12 + n;
    }
    EXPECT_TRUE(ended);
    uLongf size = pic.height * (pic.width * (pic.colourType == 2 ? 3 : 1) + 1);
    pic.rows.resize(size);
    EXPECT_EQ(uncompress(pic.rows.data(), &size, stream.data(), stream.size()), Z_OK);
    EXPECT_EQ(size, pic.rows.size());
    return pic;
}

}  // namespace

TEST_F(CliTest, SpectrogramWritesItsLevelsAsTableNumPyArrayAndPicture) {
    const std::string args = "spectrogram " + sample + " --columns 40 --points 16 --formants";
    const CommandRun table = run(args, dir);
    ASSERT_EQ(table.status, 0) << table.err;
    const auto levels = levelTable(table.out);
    ASSERT_EQ(levels.size(), 40u);
    ASSERT_EQ(levels[0].size(), 16u);

    // The array: float32, shape (columns, points), each level the float nearest its double.
    const CommandRun files = run(args + " --npy " + dir.file("l.npy") + " --png " + dir.file("l.png"), dir);
    ASSERT_EQ(files.status, 0) << files.err;
    EXPECT_TRUE(files.out.empty());
    const auto npy = readBytes(dir.file("l.npy"));
    ASSERT_GT(npy.size(), 10u);
    EXPECT_EQ(std::memcmp(npy.data(), "\x93NUMPY\x01\x00", 8), 0);
    const std::size_t headerLength = npy[8] | npy[9] << 8;
    EXPECT_EQ((10 + headerLength) % 64, 0u);
    const std::string header(reinterpret_cast<const char*>(&npy[10]), headerLength);
    EXPECT_NE(header.find("'descr': '<f4', 'fortran_order': False, 'shape': (40, 16)"), std::string::npos) << header;
    ASSERT_EQ(npy.size(), 10 + headerLength + 40 * 16 * 4);
    for (int c = 0; c < 40; ++c)
        for (int k = 0; k < 16; ++k) {
            const std::size_t at =
                10 + headerLength + 4 * (16 * static_cast<std::size_t>(c) + static_cast<std::size_t>(k));
            const std::uint32_t u =
                npy[at] | npy[at + 1] << 8 | npy[at + 2] << 16 | static_cast<std::uint32_t>(npy[at + 3]) << 24;
            ASSERT_EQ(std::bit_cast<float>(u), static_cast<float>(levels[c][k])) << c << " " << k;
        }

    // The picture: time left to right, 0 Hz at the bottom, grey from the
    // level over the 35 dB range; formants red.
    const auto expectPicture = [](const Picture& pic, const std::vector<std::vector<double>>& levels, bool colour) {
        const std::size_t columns = levels.size(), points = levels.empty() ? 0 : levels[0].size();
        ASSERT_EQ(pic.width, columns);
        ASSERT_EQ(pic.height, points);
        ASSERT_EQ(pic.colourType, colour ? 2 : 0);
        const std::size_t channels = colour ? 3 : 1;
        int red = 0, wrong = 0;
        for (std::size_t y = 0; y < points; ++y) {
            const std::uint8_t* row = &pic.rows[y * (columns * channels + 1)];
            EXPECT_EQ(row[0], 0);
            for (std::size_t c = 0; c < columns; ++c) {
                const std::uint8_t* px = row + 1 + channels * c;
                if (colour && px[0] == 255 && px[1] == 0 && px[2] == 0) {
                    ++red;
                    continue;
                }
                const double v = std::clamp(levels[c][points - 1 - y] * 255.0 / 35.0, 0.0, 255.0);
                const int grey = 255 - static_cast<int>(v + 0.5);
                if (px[0] != grey || (colour && (px[1] != grey || px[2] != grey))) {
                    if (++wrong <= 5) ADD_FAILURE() << "column " << c << " row " << y;
                }
            }
        }
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(red > 0, colour);
    };
    expectPicture(readPng(readBytes(dir.file("l.png"))), levels, true);

    // Pictures of thousands of columns are made in bands of rows, each band's
    // columns in two halves: a colour one and a grey one of several bands,
    // with a part-filled group of columns at each half's end.
    for (const bool colour : {true, false}) {
        const std::string wide =
            "spectrogram " + sample +
            (colour ? " --columns 9000 --points 100 --formants" : " --columns 21000 --points 110") + " --output table";
        const CommandRun picture = run(wide + " --png " + dir.file("w.png"), dir);
        ASSERT_EQ(picture.status, 0) << picture.err;
        expectPicture(readPng(readBytes(dir.file("w.png"))), levelTable(picture.out), colour);
    }

    const CommandRun none = run(args + " --output none", dir);
    EXPECT_EQ(none.status, 0);
    EXPECT_TRUE(none.out.empty());
    const CommandRun both = run(args + " --output table --npy " + dir.file("m.npy"), dir);
    EXPECT_EQ(both.out, table.out);
    EXPECT_EQ(readBytes(dir.file("m.npy")), npy);

    const CommandRun bad = run(args + " --output csv", dir);
    EXPECT_EQ(bad.status, 2);
    EXPECT_NE(bad.err.find("--output takes table or none"), std::string::npos);
    for (const char* option : {" --npy ", " --png "}) {
        const CommandRun unwritable = run(args + option + dir.file("no/such/folder.out"), dir);
        EXPECT_EQ(unwritable.status, 1) << option;
        EXPECT_EQ(unwritable.err, "Error in save operation.\n") << option;
    }
}
