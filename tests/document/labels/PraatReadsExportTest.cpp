// Praat itself reads the TextGrids the workstation exports: its report of
// tiers, intervals and points (report_textgrid.praat) must be what was
// exported, and the file it saves again must be the one it read.
#include <gtest/gtest.h>

#include <string>

#include "../TestFiles.h"
#include "document/MessageService.h"
#include "document/labels/LabelTransfer.h"
#include "document/labels/TextDecoding.h"
#include "document/labels/TextGridFormat.h"
#include "tests/support/CommandRun.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

// Praat's report, with its messages, as it prints them.
CommandRun runPraat(const std::string& args) {
    return runCommand(std::string(SONMETRA_PRAAT) + " --run " + args + " 2>&1");
}

// The report the script prints, made from what was exported.
std::string expectedReport(const LabelFile& file) {
    std::string r = "tiers\t" + std::to_string(file.tiers.size()) + "\n";
    for (const LabelTier& t : file.tiers) {
        const bool intervals = t.kind == TierKind::Interval;
        r += std::string(intervals ? "IntervalTier\t" : "TextTier\t") + t.name + "\t" + std::to_string(t.items.size()) +
             "\n";
        for (const TierItem& it : t.items)
            r += praatNumber(it.startS) + "\t" + (intervals ? praatNumber(it.endS) + "\t" : "") + it.text + "\n";
    }
    return r;
}

CLabel label(double ms, const std::string& text) {
    CLabel l;
    l.timeMs = ms;
    l.text = text;
    return l;
}

}  // namespace

TEST(PraatReadsExportTest, PraatReportsWhatWasExportedAndSavesItUnchanged) {
    ASSERT_STRNE(SONMETRA_PRAAT, "") << "praat is not installed: 'make deps' installs it";
    TempDir dir;
    RecordingMessageService messages;
    ScopedMessageService install(&messages);

    CKestruneDoc doc;
    fillSampleDocument(doc);  // 400 ms of audio, two data channels
    doc.channel(0).m_labels = {label(0, "start"), label(12.3456789, "say \"hi\""), label(100.25, ""),
                               label(250.5, "two\nlines"), label(400, "")};
    doc.channel(1).m_labels = {label(37.5, "caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac"), label(37.55, "next"),
                               label(399.9999, "\xf0\x9f\x98\x80")};
    doc.channel(2).m_labels.clear();

    const std::string exported = dir.file("export.TextGrid");
    const auto tiers = defaultTierExports(doc);
    ASSERT_EQ(tiers.size(), 2u);
    EXPECT_EQ(tiers[0].kind, TierKind::Interval);
    EXPECT_EQ(tiers[1].kind, TierKind::Point);
    ASSERT_TRUE(exportLabelFile(doc, tiers, LabelFileFormat::TextGrid, exported)) << messages.lastText();
    std::string error;
    const auto file = tiersFromChannels(doc, tiers, LabelFileFormat::TextGrid, error);
    ASSERT_TRUE(file) << error;

    const std::string resaved = dir.file("resaved.TextGrid");
    const CommandRun praat =
        runPraat(std::string(SONMETRA_LABEL_SCRIPTS) + "/report_textgrid.praat " + exported + " " + resaved);
    ASSERT_EQ(praat.status, 0) << praat.out;
    EXPECT_EQ(praat.out, expectedReport(*file));
    EXPECT_EQ(praat.out.substr(0, 29), "tiers\t2\nIntervalTier\tAudio\t4\n");

    // Praat writes UTF-16 when a text needs more than ASCII; the text is the same.
    const auto ours = readBytes(exported), theirs = readBytes(resaved);
    const auto text = decodeTextFile(std::string(theirs.begin(), theirs.end()), error);
    ASSERT_TRUE(text) << error;
    EXPECT_EQ(*text, std::string(ours.begin(), ours.end()));
}
