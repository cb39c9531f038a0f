// Label files of other tools: TextGrids written by Praat (fixtures/, made
// by make_fixtures.praat) read in both text formats and in UTF-16, carried
// through a document and written back byte for byte; tab-separated label
// texts; and damaged or unfitting files refused with nothing changed.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include "../TestFiles.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"
#include "document/labels/LabelTrackFormat.h"
#include "document/labels/LabelTransfer.h"
#include "document/labels/TextDecoding.h"
#include "document/labels/TextGridFormat.h"
#include "tests/support/TestDocument.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

std::string fixture(const std::string& name) { return std::string(SONMETRA_LABEL_FIXTURES) + "/" + name; }

std::string bytesOf(const std::string& path) {
    const auto b = readBytes(path);
    return std::string(b.begin(), b.end());
}

void writeText(const std::string& path, const std::string& text) {
    writeBytes(path, std::vector<std::uint8_t>(text.begin(), text.end()));
}

std::string decoded(const std::string& path) {
    std::string error;
    const auto text = decodeTextFile(bytesOf(path), error);
    EXPECT_TRUE(text) << error;
    return text.value_or("");
}

// Three channels of exactly 2.5 s named after the fixture's tiers, so that
// an export names its tiers and spans its grid as the fixture does.
void fillGridDocument(CKestruneDoc& doc) {
    doc.clearChannels();
    const char* names[] = {"words", "events", "phones"};
    for (int i = 0; i < 3; ++i) {
        fillChannel(doc.channel(i), i == 0 ? 10000.0 : 1000.0, i == 0 ? 25000 : 2500, i + 1);
        doc.channel(i).m_name = names[i];
    }
    doc.channel(0).m_audio = 1;
    doc.setChannelCount(3);
    doc.setHoldsData(true);
}

CLabel lineStyle() {
    CLabel style;
    style.setLineFlag(true);
    return style;
}

// Every tier of the file to the channel of the same position.
bool importAll(CKestruneDoc& doc, const LabelFile& file) {
    std::vector<TierAssignment> all;
    for (std::size_t t = 0; t < file.tiers.size(); ++t) all.push_back({t, static_cast<int>(t)});
    auto prepared = prepareLabelImport(doc, file, all, lineStyle(), "test");
    if (!prepared) return false;
    applyLabelImport(doc, std::move(*prepared));
    return true;
}

class LabelFilesTest : public ::testing::Test {
protected:
    TempDir dir;
    RecordingMessageService messages;
    ScopedMessageService install{&messages};
    CKestruneDoc doc;
    void SetUp() override { fillGridDocument(doc); }
};

}  // namespace

TEST_F(LabelFilesTest, LongAndShortFormatsReadAlike) {
    const auto longFile = readLabelFile(fixture("words_long.TextGrid"));
    const auto shortFile = readLabelFile(fixture("words_short.TextGrid"));
    ASSERT_TRUE(longFile && shortFile) << messages.lastText();
    ASSERT_EQ(longFile->tiers.size(), 3u);
    const LabelTier& words = longFile->tiers[0];
    EXPECT_EQ(words.name, "words");
    EXPECT_EQ(words.kind, TierKind::Interval);
    ASSERT_EQ(words.items.size(), 5u);
    EXPECT_EQ(words.items[1].text, "say \"hello\"");
    EXPECT_EQ(words.items[1].endS, 1.2000000000000002);
    EXPECT_EQ(words.items[3].text, "two\nlines");
    EXPECT_EQ(longFile->tiers[1].kind, TierKind::Point);
    EXPECT_EQ(longFile->tiers[1].items[0].startS, 1e-7);

    for (std::size_t t = 0; t < 3; ++t) {
        const LabelTier &a = longFile->tiers[t], &b = shortFile->tiers[t];
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(a.kind, b.kind);
        ASSERT_EQ(a.items.size(), b.items.size());
        for (std::size_t k = 0; k < a.items.size(); ++k) {
            EXPECT_EQ(a.items[k].startS, b.items[k].startS);
            EXPECT_EQ(a.items[k].endS, b.items[k].endS);
            EXPECT_EQ(a.items[k].text, b.items[k].text);
        }
    }
}

TEST_F(LabelFilesTest, IntervalsBecomeLabelsAtTheirStartWithAnEmptyLabelWhereNothingFollows) {
    const auto file = readLabelFile(fixture("words_long.TextGrid"));
    ASSERT_TRUE(file && importAll(doc, *file)) << messages.lastText();
    using L = std::vector<std::pair<double, std::string>>;
    EXPECT_EQ(labelsOf(doc.channel(0)),
              (L{{350, "say \"hello\""}, {msFromSeconds(1.2000000000000002), ""}, {1500, "two\nlines"}, {2250, ""}}));
    EXPECT_EQ(labelsOf(doc.channel(1)),
              (L{{msFromSeconds(1e-7), "tiny"}, {700, "click"}, {msFromSeconds(0.7000000000000001), "again"}}));
    EXPECT_EQ(labelsOf(doc.channel(2)), (L{{0, "a"}, {800, "b"}, {1650, "c"}, {2500, ""}}));
    EXPECT_TRUE(doc.channel(0).m_labels[0].lineFlag());
    EXPECT_TRUE(doc.isModified());
}

// Praat's file in, the document, Praat's file out: the same bytes, through
// the document file as well; the short format and UTF-16 come out as the
// long format in UTF-8.
TEST_F(LabelFilesTest, RoundTripsGiveBackPraatsLongFormat) {
    for (const char* input : {"words_long.TextGrid", "words_short.TextGrid", "words_utf16.TextGrid"}) {
        SCOPED_TRACE(input);
        const std::string expected = std::string(input) == "words_utf16.TextGrid"
                                         ? decoded(fixture(input))
                                         : bytesOf(fixture("words_long.TextGrid"));
        CKestruneDoc d;
        fillGridDocument(d);
        const auto file = readLabelFile(fixture(input));
        ASSERT_TRUE(file && importAll(d, *file)) << messages.lastText();

        const std::string kvd = dir.file("labels.kvd");
        ASSERT_TRUE(d.saveAs(kvd, 1));
        CKestruneDoc reopened;
        DefaultImportDialogs dialogs;
        ASSERT_TRUE(openDocument(reopened, kvd, dialogs));

        const std::string out = dir.file("out.TextGrid");
        ASSERT_TRUE(exportLabelFile(reopened, defaultTierExports(reopened), LabelFileFormat::TextGrid, out));
        EXPECT_EQ(bytesOf(out), expected);
    }
}

TEST_F(LabelFilesTest, TextEncodings) {
    const std::string utf8 = decoded(fixture("words_utf16.TextGrid"));
    ASSERT_NE(utf8.find("sæg \"\"wörld\"\" 日本"), std::string::npos);
    ASSERT_NE(utf8.find("😀"), std::string::npos);  // a surrogate pair in UTF-16

    // The same text as UTF-16 little-endian with and without its mark, and as UTF-8 with a mark.
    const std::string be = bytesOf(fixture("words_utf16.TextGrid"));
    std::string le = be;
    for (std::size_t i = 0; i + 1 < le.size(); i += 2) std::swap(le[i], le[i + 1]);
    std::string error;
    EXPECT_EQ(decodeTextFile(le, error).value_or(""), utf8);
    EXPECT_EQ(decodeTextFile(le.substr(2), error).value_or(""), utf8);
    EXPECT_EQ(decodeTextFile(be.substr(2), error).value_or(""), utf8);
    EXPECT_EQ(decodeTextFile("\xef\xbb\xbf" + utf8, error).value_or(""), utf8);
    // Neither UTF-16 nor UTF-8: each byte is an ISO 8859-1 character.
    EXPECT_EQ(decodeTextFile("caf\xe9", error).value_or(""), "caf\xc3\xa9");

    EXPECT_FALSE(decodeTextFile(be.substr(0, be.size() - 1), error));                 // half a character
    EXPECT_FALSE(decodeTextFile(std::string("\xfe\xff\xd8\x3d\x00\x41", 6), error));  // high surrogate alone
    EXPECT_FALSE(isValidUtf8("\xc0\xaf"));                                            // overlong
    EXPECT_FALSE(isValidUtf8("\xed\xa0\x80"));                                        // a surrogate
    EXPECT_FALSE(isValidUtf8("ab\xe6\x97"));                                          // cut off
}

// Times go from the file's seconds to ms and back: a time a file holds
// comes back with the same digits, and a label's time in ms comes back
// from the file within a nanosecond, and the same after one trip.
TEST_F(LabelFilesTest, TimesSurviveTheTripThroughMilliseconds) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> dist(0.0, 7200.0);
    for (int i = 0; i < 20000; ++i) {
        const std::string written = praatNumber(std::stod(praatNumber(dist(rng)).substr(0, 1 + i % 16)));
        const double ms = msFromSeconds(std::stod(written));
        ASSERT_EQ(praatNumber(secondsFromMs(ms)), written);
        const double sampleMs = (i * 7919) * 1000.0 / 44100.0;
        const double back = msFromSeconds(std::stod(praatNumber(secondsFromMs(sampleMs))));
        ASSERT_NEAR(back, sampleMs, 1e-6) << sampleMs;
        ASSERT_EQ(msFromSeconds(std::stod(praatNumber(secondsFromMs(back)))), back);
    }
}

TEST_F(LabelFilesTest, DamagedTextGridsAreRefusedWithTheirReason) {
    const std::string good = bytesOf(fixture("words_short.TextGrid"));
    auto reason = [&](const std::string& text) {
        messages.clear();
        writeText(dir.file("bad.TextGrid"), text);
        EXPECT_FALSE(readLabelFile(dir.file("bad.TextGrid"))) << text;
        return messages.lastText();
    };
    // Cut off after every line but the last: never accepted, always a message.
    for (std::size_t at = good.find('\n'); at + 1 < good.size(); at = good.find('\n', at + 1)) {
        const std::string message = reason(good.substr(0, at + 1));
        EXPECT_EQ(message.rfind("'bad.TextGrid' cannot be read as a TextGrid:\n", 0), 0u) << message;
    }
    EXPECT_NE(
        reason(good.substr(0, good.size() / 2)).find("the file ends in tier 1 \"words\" after 3 of its 5 intervals"),
        std::string::npos);

    std::string more = good;  // the words tier claims a sixth interval
    more.replace(more.find("\n5\n"), 3, "\n6\n");
    EXPECT_NE(reason(more).find("tier 1 \"words\" holds fewer intervals than its count (6)"), std::string::npos);
    std::string fewer = good;
    fewer.replace(fewer.find("\n5\n"), 3, "\n4\n");
    EXPECT_NE(reason(fewer).find("tier 1 holds more items than its count says"), std::string::npos);
    std::string huge = good;
    huge.replace(huge.find("\n5\n"), 3, "\n5000000000\n");
    EXPECT_NE(reason(huge).find("tier 1 \"words\" holds fewer intervals than its count (5000000000)"),
              std::string::npos);

    std::string backwards = good;  // an interval that ends before it starts
    backwards.replace(backwards.find("\n0.35\n"), 6, "\n0.45\n");
    EXPECT_NE(reason(backwards).find("starts before the interval before it ends"), std::string::npos);
    EXPECT_NE(reason("File type = \"ooTextFile\"\nObject class = \"Pitch 1\"\n").find("holds a Praat Pitch 1"),
              std::string::npos);
    EXPECT_NE(reason("ooBinaryFile\x08TextGrid").find("binary Praat file"), std::string::npos);
    std::string word = good;
    word.replace(word.find("\n2.5\n"), 5, "\n2,5\n");
    EXPECT_NE(reason(word).find("'2,5' is not a number"), std::string::npos);
    EXPECT_NE(
        reason("File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n0\n1\n<exists>\n1\n\"IntervalTier\"\n\"w")
            .find("never closed by a quote"),
        std::string::npos);
}

TEST_F(LabelFilesTest, TiersThatDoNotFitTheChannelsChangeNothing) {
    fillSampleDocument(doc);  // labels on the audio channel, 400 ms of signal
    const auto before = labelsOf(doc.channel(0));
    auto refused = [&](const std::string& text, const std::vector<TierAssignment>& to) {
        messages.clear();
        writeText(dir.file("t.TextGrid"), text);
        const auto file = readLabelFile(dir.file("t.TextGrid"));
        EXPECT_TRUE(file) << messages.lastText();
        if (!file) return std::string();
        doc.setModified(false);
        EXPECT_FALSE(prepareLabelImport(doc, *file, to, lineStyle(), "t.TextGrid"));
        EXPECT_EQ(labelsOf(doc.channel(0)), before);
        EXPECT_FALSE(doc.isModified());
        return messages.lastText();
    };
    const std::string head = "File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n0\n1\n<exists>\n";
    auto tier = [](const std::string& a, const std::string& b, const std::string& text) {
        return "\"IntervalTier\"\n\"w\"\n0\n1\n3\n0\n" + a + "\n\"\"\n" + a + "\n" + b + "\n\"" + text + "\"\n" + b +
               "\n1\n\"\"\n";
    };
    EXPECT_EQ(
        refused(head + "1\n" + tier("0.1", "0.5", "late"), {{0, 0}}),
        "No labels were imported from 't.TextGrid':\nfor channel 1 \"Audio\", the interval \"late\" of tier \"w\" "
        "reaches 0.5 s, past the end of the signal at 0.4 s.");
    // The second tier fails: the first, which fits, is not imported either.
    const std::string longText(255, 'x');
    EXPECT_NE(refused(head + "2\n" + tier("0.1", "0.2", "fits") + tier("0.1", "0.2", longText), {{0, 0}, {1, 1}})
                  .find("holds 255 bytes of text; a label holds at most 254"),
              std::string::npos);
    EXPECT_NE(refused(head + "2\n" + tier("0.1", "0.2", "a") + tier("0.1", "0.2", "b"), {{0, 0}, {1, 0}})
                  .find("two tiers were chosen for channel 1 \"Audio\""),
              std::string::npos);

    // Within a sample of the end counts as the end.
    messages.clear();
    writeText(dir.file("t.TextGrid"), head + "1\n" + tier("0.1", "0.4000500", "edge"));
    const auto edge = readLabelFile(dir.file("t.TextGrid"));
    ASSERT_TRUE(edge);
    auto prepared = prepareLabelImport(doc, *edge, {{0, 0}}, lineStyle(), "t.TextGrid");
    ASSERT_TRUE(prepared) << messages.lastText();
    applyLabelImport(doc, std::move(*prepared));
    EXPECT_EQ(labelsOf(doc.channel(0)), (std::vector<std::pair<double, std::string>>{{100, "edge"}, {400, ""}}));
}

TEST_F(LabelFilesTest, ExportRefusesLabelsTheFileCannotHoldAndKeepsTheOldFile) {
    const std::string out = dir.file("out.TextGrid");
    writeText(out, "old");
    CLabel bad;
    bad.timeMs = 10;
    bad.text = "caf\xe9";  // ISO 8859-1 from an old document, not UTF-8
    doc.channel(0).m_labels = {bad};
    EXPECT_FALSE(exportLabelFile(doc, defaultTierExports(doc), LabelFileFormat::TextGrid, out));
    EXPECT_EQ(messages.lastText(),
              "The labels were not exported:\nthe label at 10 ms in channel 1 \"words\" is not UTF-8 text, which a "
              "TextGrid cannot hold.");
    EXPECT_EQ(bytesOf(out), "old");

    CLabel a, b;
    a.timeMs = b.timeMs = 20;
    a.text = "one";
    b.text = "two";
    doc.channel(0).m_labels = {a, b};
    std::vector<TierExport> tiers = {{0, "w", TierKind::Interval}};
    EXPECT_FALSE(exportLabelFile(doc, tiers, LabelFileFormat::TextGrid, out));
    EXPECT_NE(messages.lastText().find("two labels of channel 1 \"words\" stand at 20 ms, and an interval tier"),
              std::string::npos);
    tiers[0].kind = TierKind::Point;  // Praat would keep only one of the two points
    EXPECT_FALSE(exportLabelFile(doc, tiers, LabelFileFormat::TextGrid, out));
    EXPECT_NE(messages.lastText().find("stand at 20 ms, and a TextGrid cannot hold both"), std::string::npos);
    EXPECT_EQ(bytesOf(out), "old");
    ASSERT_TRUE(exportLabelFile(doc, tiers, LabelFileFormat::LabelTrack, dir.file("out.txt")));
    EXPECT_EQ(bytesOf(dir.file("out.txt")), "0.02\t0.02\tone\n0.02\t0.02\ttwo\n");
    doc.channel(0).m_labels[1].text = "two\nlines";
    EXPECT_FALSE(exportLabelFile(doc, tiers, LabelFileFormat::LabelTrack, dir.file("out.txt")));
    EXPECT_NE(messages.lastText().find("holds a tab or a line break"), std::string::npos);

    doc.channel(0).m_labels.clear();
    EXPECT_FALSE(exportLabelFile(doc, defaultTierExports(doc), LabelFileFormat::TextGrid, out));
    EXPECT_EQ(messages.lastText(), "The labels were not exported:\nthe document holds no labels.");
}

// The tab-separated form of audio editors: points and intervals, with the
// frequency lines some editors add, back to the same text.
TEST_F(LabelFilesTest, LabelTextsRoundTrip) {
    const std::string intervals = "0.1\t0.25\tone\n\\\t100\t2000\n0.25\t0.5\ttwo words\n0.9\t1.2\t\xc3\xa9t\xc3\xa9\n";
    writeText(dir.file("in.txt"), intervals);
    auto file = readLabelFile(dir.file("in.txt"));
    ASSERT_TRUE(file) << messages.lastText();
    EXPECT_EQ(file->tiers[0].name, "in");
    ASSERT_TRUE(importAll(doc, *file));
    using L = std::vector<std::pair<double, std::string>>;
    EXPECT_EQ(labelsOf(doc.channel(0)),
              (L{{100, "one"}, {250, "two words"}, {500, ""}, {900, "\xc3\xa9t\xc3\xa9"}, {1200, ""}}));
    ASSERT_TRUE(exportLabelFile(doc, {{0, "in", suggestedTierKind(doc.channel(0))}}, LabelFileFormat::LabelTrack,
                                dir.file("out.txt")));
    EXPECT_EQ(bytesOf(dir.file("out.txt")), "0.1\t0.25\tone\n0.25\t0.5\ttwo words\n0.9\t1.2\t\xc3\xa9t\xc3\xa9\n");

    writeText(dir.file("points.txt"), "1.5\t1.5\tb\r\n0.5\t0.5\ta\r\n");  // out of order, CRLF
    file = readLabelFile(dir.file("points.txt"));
    ASSERT_TRUE(file && importAll(doc, *file));
    EXPECT_EQ(labelsOf(doc.channel(0)), (L{{500, "a"}, {1500, "b"}}));
    ASSERT_TRUE(exportLabelFile(doc, defaultTierExports(doc), LabelFileFormat::LabelTrack, dir.file("out.txt")));
    EXPECT_EQ(bytesOf(dir.file("out.txt")), "0.5\t0.5\ta\n1.5\t1.5\tb\n");
    // The same points as a TextGrid are a point tier.
    ASSERT_TRUE(exportLabelFile(doc, defaultTierExports(doc), LabelFileFormat::TextGrid, dir.file("p.TextGrid")));
    const auto grid = readLabelFile(dir.file("p.TextGrid"));
    ASSERT_TRUE(grid);
    EXPECT_EQ(grid->tiers[0].kind, TierKind::Point);

    auto reason = [&](const std::string& text) {
        writeText(dir.file("bad.txt"), text);
        EXPECT_FALSE(readLabelFile(dir.file("bad.txt")));
        return messages.lastText();
    };
    EXPECT_EQ(reason("0.1\t0.2\ta\n0.15 0.3 b\n"),
              "'bad.txt' cannot be read as a label text:\nline 2 is not \"start<TAB>end<TAB>text\": it holds no tab.");
    EXPECT_NE(reason("0.1\tx\ta\n").find("line 1 does not start with two times in seconds"), std::string::npos);
    EXPECT_NE(reason("0.5\t0.4\ta\n").find("line 1 ends (0.4 s) before it starts (0.5 s)"), std::string::npos);
    EXPECT_NE(reason("0.1\t0.5\ta\n0.3\t0.6\tb\n").find("the label on line 2 overlaps the one on line 1"),
              std::string::npos);
}
